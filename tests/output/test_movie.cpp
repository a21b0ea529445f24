// Movie and animation commands through the module: image sequences and AVI movies of the
// example scene's clip, written into a temporary folder.

#include "test_snapshot_support.h"

#include "oxController.h"
#include "oxMessage.h"
#include "oxMovieCommands.h"
#include "oxRenderSettings.h"
#include "oxSceneGraph.h"
#include "oxSceneServices.h"

#include <array>

namespace {

using MovieTest = oxSnapshotModuleTest;

const char kClip[] = "Product Spin";

std::vector<std::string> names(std::initializer_list<const char*> list)
{
    return std::vector<std::string>(list.begin(), list.end());
}

} // namespace

TEST_F(MovieTest, UnnamedFormsWriteNumberedImagesAndEndWithAWhiteBackground)
{
    createMovie(dir.file("seq.png").c_str(), 8, 6, 25, 2, 4, 0, false, 0.1f, 0.2f, 0.3f, true);
    EXPECT_EQ(filesIn(dir.path()), names({"seq.0002.png", "seq.0003.png", "seq.0004.png"}));
    EXPECT_EQ(readImage(dir.file("seq.0003.png")).width, 8);

    oxCallTrace::clear();
    createMovie(dir.file("step.jpg").c_str(), 8, 6, 25, 1, 5, 1, false, 0, 0, 0, true, true, 2);
    createMovie(dir.file("every.png").c_str(), 8, 6, 25, 1, 2, 1, false, 0, 0, 0, true, true, 0,
                true);
    EXPECT_EQ(filesIn(dir.path()),
              names({"every.0001.png", "every.0002.png", "seq.0002.png", "seq.0003.png",
                     "seq.0004.png", "step.0001.jpg", "step.0003.jpg", "step.0005.jpg"}));
    EXPECT_EQ(oxTraced("oxImageWriter::exportImages"),
              (std::vector<std::string>{dir.file("step.jpg") + ",1,5,2",
                                        dir.file("every.png") + ",1,2,1"}));
    EXPECT_EQ(oxTraced("oxImageWriter::setAlphaColor").back(), "1.000000,1.000000,1.000000");
    EXPECT_EQ(oxTraced("oxRaytracer::setPremultiply"),
              (std::vector<std::string>{"true", "false", "true", "false"}));
    EXPECT_TRUE(oxTraced("oxAnimManager::setMotionBlurObjectID").empty());
    EXPECT_FALSE(oxController::isBusy());
}

TEST_F(MovieTest, NamedMovieOfTypeOneIsAnAVIWithTheFramesAndRate)
{
    const osg::NodePtr clip = oxAnimManager::the()->find(kClip);
    ASSERT_NE(clip, nullptr);
    const std::string movie = dir.file("spin.avi");
    createMovie(kClip, movie.c_str(), 32, 24, 10, 0, 4, 0, false, "1,1,1", true, false, 1, false,
                1);
    EXPECT_EQ(filesIn(dir.path()), names({"spin.avi"}));
    const oxProcessResult probe =
        oxRunProcess("ffprobe", {"-v", "error", "-count_frames", "-select_streams", "v:0",
                                 "-show_entries", "stream=codec_name,nb_read_frames,r_frame_rate",
                                 "-of", "default=noprint_wrappers=1", movie});
    ASSERT_EQ(probe.exitCode, 0) << probe.err;
    EXPECT_NE(probe.out.find("codec_name=mjpeg"), std::string::npos) << probe.out;
    EXPECT_NE(probe.out.find("r_frame_rate=10/1"), std::string::npos) << probe.out;
    EXPECT_NE(probe.out.find("nb_read_frames=5"), std::string::npos) << probe.out;

    // The animation drives motion blur for the time of the call only; the background ends
    // mid grey on this route.
    EXPECT_EQ(oxTraced("oxAnimManager::setMotionBlurObjectID"),
              std::vector<std::string>{std::to_string(clip->getId())});
    EXPECT_EQ(oxTraced("oxAnimManager::resetMotionBlurObjectID").size(), 1u);
    EXPECT_EQ(oxAnimManager::the()->getMotionBlurObjectID(), 0u);
    EXPECT_EQ(
        oxTraced("oxImageWriter::setAlphaColor"),
        (std::vector<std::string>{"1.000000,1.000000,1.000000", "0.500000,0.500000,0.500000"}));
    EXPECT_FALSE(oxController::isBusy());
}

TEST_F(MovieTest, ClipRangeComesFromAKnownAnimationOnly)
{
    int start = 0, stop = 0;
    ASSERT_TRUE(
        oxAnimManager::the()->getFrameBounds(oxAnimManager::the()->find(kClip), start, stop));
    createMovie(kClip, dir.file("clip.png").c_str(), 2, 2, 25, 40, 41, 0, false, "0,0,0", true,
                false, 1, true, 0);
    EXPECT_EQ(oxTraced("oxImageWriter::exportImages"),
              std::vector<std::string>{dir.file("clip.png") + "," + std::to_string(start) + "," +
                                       std::to_string(stop) + ",1"});
    EXPECT_EQ(filesIn(dir.path()).size(), size_t(stop - start + 1));

    // An unknown name keeps the given range and renders without an animation object.
    oxCallTrace::clear();
    createMovie("No Such Clip", dir.file("unknown.png").c_str(), 2, 2, 25, 3, 4, 0, false, "0,0,0",
                true, false, -2, true, 0);
    EXPECT_EQ(oxTraced("oxImageWriter::exportImages"),
              std::vector<std::string>{dir.file("unknown.png") + ",3,4,1"});
    EXPECT_EQ(oxTraced("oxAnimManager::setMotionBlurObjectID"), std::vector<std::string>{"0"});
}

TEST_F(MovieTest, CommaSeparatedTextsSplitOnlyWhenTheCountIsExact)
{
    // One comma separates a cluster host; more belong to the file name.
    createMovie(kClip, (dir.file("hosted.png") + ",render01").c_str(), 4, 4, 25, 1, 1, 0, false,
                "0.25,0.5,1", true, false, 1, false, 0);
    createMovie(kClip, dir.file("a,b,c.png").c_str(), 4, 4, 25, 1, 1, 0, false, "1,2", true, false,
                1, false, 0);
    EXPECT_EQ(filesIn(dir.path()), names({"a,b,c.0001.png", "hosted.0001.png"}));
    EXPECT_EQ(
        oxTraced("oxImageWriter::setAlphaColor"),
        (std::vector<std::string>{"0.250000,0.500000,1.000000", "0.500000,0.500000,0.500000",
                                  "0.000000,0.000000,0.000000", "0.500000,0.500000,0.500000"}));
    // Three parts exactly, each a number or 0.
    const std::pair<const char*, std::array<float, 3>> colours[] = {
        {"1,2,3,4", {0, 0, 0}}, {"x,0.5,y", {0, 0.5f, 0}}, {nullptr, {0, 0, 0}}};
    for (const auto& [text, expected] : colours) {
        std::array<float, 3> rgb{-1, -1, -1};
        parseAlphaRGB(text, rgb[0], rgb[1], rgb[2]);
        EXPECT_EQ(rgb, expected) << (text ? text : "null");
    }
}

TEST_F(MovieTest, AnimationCommandsAndOtherExportTypesRenderImagesByStep)
{
    createMovie(kClip, dir.file("two.png").c_str(), 4.7f, 4.2f, 10, 0, 1, 0, false, "0,0,0", true,
                false, 1, true, false, 2);
    renderAnimation(kClip, dir.file("anim.png").c_str(), 4, 4, 25, 0, 2, 0, false, 0, 0, 0, true,
                    false);
    renderStepAnimation(kClip, dir.file("step.png").c_str(), 4, 4, 25, 0, 4, 0, false, 0, 0, 0,
                        true, false, 2);
    renderStepAnimation(kClip, dir.file("all.png").c_str(), 4, 4, 25, 0, 1, 0, false, 0, 0, 0, true,
                        false, -3);
    EXPECT_EQ(
        filesIn(dir.path()),
        names({"all.0000.png", "all.0001.png", "anim.0000.png", "anim.0001.png", "anim.0002.png",
               "step.0000.png", "step.0002.png", "step.0004.png", "two.0000.png", "two.0001.png"}));
    EXPECT_EQ(readImage(dir.file("two.0001.png")).width, 4);
    EXPECT_TRUE(oxTraced("oxImageWriter::exportAVI").empty());
}

TEST_F(MovieTest, MissingNamesDoNothing)
{
    createMovie(nullptr, 8, 6, 25, 0, 1, 0, false, 0, 0, 0, true);
    createMovie(nullptr, dir.file("x.png").c_str(), 8, 6, 25, 0, 1, 0, false, "0,0,0", true, false,
                1, false, 1);
    createMovie(kClip, nullptr, 8, 6, 25, 0, 1, 0, false, "0,0,0", true, false, 1, false, 1);
    renderAnimation(kClip, nullptr, 8, 6, 25, 0, 1, 0, false, 0, 0, 0, true, false);
    EXPECT_TRUE(oxCallTrace::calls().empty());
    EXPECT_TRUE(filesIn(dir.path()).empty());
}

TEST_F(MovieTest, ExportMovieCallbackSetsTheWindowsRangeAndRate)
{
    oxRenderSettingsPreset& settings = module->getRenderSettingsWindow()->getCurrentPreset();
    settings.startFrame = 1;
    settings.stopFrame = 2;
    settings.fps = 25;
    oxMessage nothing;
    ASSERT_TRUE(oxController::call("oxMovieExport::exportMovie", nothing));
    EXPECT_EQ(settings.startFrame, 1);
    EXPECT_EQ(settings.stopFrame, 2);
    EXPECT_EQ(settings.fps, 25);

    oxMessage message;
    message.set("start", 10);
    message.set("fps", 30);
    ASSERT_TRUE(oxController::call("oxMovieExport::exportMovie", message));
    EXPECT_EQ(settings.startFrame, 10);
    EXPECT_EQ(settings.stopFrame, 60);
    EXPECT_EQ(settings.fps, 30);
    EXPECT_EQ(oxTraced("QOXDockWindowManager::undock"),
              (std::vector<std::string>{"RenderSettings", "RenderSettings"}));
    EXPECT_TRUE(oxTraced("oxImageWriter::exportImages").empty());
}

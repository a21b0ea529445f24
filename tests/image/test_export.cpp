#include "oxDisplayCurve.h"
#include "oxExampleScene.h"
#include "oxFile.h"
#include "oxImageWriterTest.h"
#include "oxOSGImage.h"
#include "oxRaytracerSource.h"
#include "oxRenderParameter.h"
#include "oxScene.h"
#include "oxTestSupport.h"

#include <OpenImageIO/imageio.h>

#include <QDir>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <set>

using namespace OIIO;

namespace {

struct ReadBack {
    ImageSpec spec;
    std::vector<float> pixels;
    bool ok = false;
};

ReadBack readImage(const std::string& path, int subimage = 0)
{
    ReadBack result;
    ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1); // the stored values, not premultiplied
    auto in = ImageInput::open(path, &config);
    if (!in)
        return result;
    if (subimage > 0 && !in->seek_subimage(subimage, 0))
        return result;
    result.spec = in->spec();
    result.pixels.resize(result.spec.image_pixels() * size_t(result.spec.nchannels));
    result.ok = in->read_image(subimage, 0, 0, result.spec.nchannels, TypeDesc::FLOAT,
                               result.pixels.data());
    return result;
}

std::set<std::string> filesIn(const std::string& folder)
{
    std::set<std::string> names;
    for (const QString& name :
         QDir(QString::fromStdString(folder)).entryList(QDir::Files | QDir::Hidden))
        names.insert(name.toStdString());
    return names;
}

std::set<std::string> fileNames(const QStringList& paths)
{
    std::set<std::string> names;
    for (const QString& path : paths)
        names.insert(QFileInfo(path).fileName().toStdString());
    return names;
}

bool isInteger(const ReadBack& image)
{
    return image.spec.format == TypeDesc::UINT8 || image.spec.format == TypeDesc::UINT16;
}

// The pattern as a file of that sample format holds it: integer files hold colours through
// the sRGB curve, data passes and alpha as they are.
float expected(const ReadBack& image, int x, int y, int c, unsigned pass, int frame)
{
    const float value = oxPatternSource::value(x, y, c, pass, frame);
    return isInteger(image) && c < 3 && !oxImagePasses::isData(pass)
               ? oxDisplayCurve::sRGBEncode(value)
               : value;
}

// Largest difference between the file and the pattern over the channels the file holds.
float patternError(const ReadBack& image, unsigned pass, int frame, int channels)
{
    float worst = 0.0f;
    const int n = image.spec.nchannels;
    for (int y = 0; y < image.spec.height; ++y)
        for (int x = 0; x < image.spec.width; ++x)
            for (int c = 0; c < channels; ++c)
                worst = std::max(
                    worst, std::fabs(image.pixels[size_t((y * image.spec.width + x) * n + c)] -
                                     expected(image, x, y, c, pass, frame)));
    return worst;
}

using ImageExport = oxImageWriterTest;

} // namespace

TEST_F(ImageExport, RefusedExportsSayWhyAndRenderAndWriteNothing)
{
    const std::string bad = dir.file("a.xyz");
    const std::string png = dir.file("a.png");
    expectLog(oxLog::Error,
              "Image writer: can't write '" + bad + "': the format 'xyz' is not supported.");
    EXPECT_FALSE(still(bad));
    expectLog(oxLog::Error, "Image writer: can't render '" + png + "': the size 0x8 is not valid.");
    EXPECT_FALSE(still(png, 0, 8));
    EXPECT_TRUE(source.requests.empty());

    oxImageSource::setCurrent(nullptr);
    expectLog(oxLog::Error, "Image writer: can't render '" + png + "': no renderer is available.");
    osg_image_file_handler_errno = 0;
    EXPECT_FALSE(still(png));
    EXPECT_NE(osg_image_file_handler_errno, 0);
    EXPECT_TRUE(filesIn(dir.path()).empty());
}

TEST_F(ImageExport, EveryWritableFormatRoundTripsPixelsAndAlpha)
{
    const std::set<std::string> lossy = {"jpeg", "webp", "heif", "gif", "jpeg2000"};
    const std::set<std::string> formats = oxImageWriter::getFormatsOpenSG();
    ASSERT_TRUE(formats.count("png") && formats.count("exr") && formats.count("tif") &&
                formats.count("jpg"));
    // Pseudo formats that make no image file are not offered.
    EXPECT_FALSE(formats.count("null") || formats.count("term") || formats.count("zfile"));
    std::set<std::string> tested;
    for (const std::string& extension : formats) {
        const std::string path = dir.file("rt." + extension);
        ASSERT_TRUE(still(path, 64, 48)) << extension;
        auto in = ImageInput::open(path);
        ASSERT_TRUE(in) << extension;
        const std::string format = in->format_name();
        in.reset();
        const ReadBack image = readImage(path);
        ASSERT_TRUE(image.ok) << extension;
        tested.insert(format);
        EXPECT_EQ(image.spec.width, 64) << extension;
        EXPECT_EQ(image.spec.height, 48) << extension;
        const bool hasAlpha = ImageOutput::create(format)->supports("alpha") && format != "jpeg" &&
                              format != "hdr" && format != "pnm";
        EXPECT_EQ(image.spec.nchannels, hasAlpha ? 4 : 3) << extension;
        const int channels = std::min(image.spec.nchannels, 4);
        if (lossy.count(format)) {
            // Lossy formats can't keep this noisy pattern pixel by pixel; each channel's mean
            // shows that channels, order and levels survived.
            // GIF's transparency is one bit; lossy WebP alters the colours of translucent
            // pixels, so of its RGBA only the alpha is compared.
            for (int c = format == "webp" ? 3 : 0; c < (format == "gif" ? 3 : channels); ++c) {
                double got = 0.0, want = 0.0;
                for (int p = 0; p < 64 * 48; ++p) {
                    got += image.pixels[size_t(p * image.spec.nchannels + c)];
                    want += expected(image, p % 64, p / 64, c, 0, 0);
                }
                EXPECT_NEAR(got / (64 * 48), want / (64 * 48), 0.03) << extension << " " << c;
            }
        } else {
            EXPECT_LE(patternError(image, 0, 0, channels), format == "hdr" ? 0.01f : 0.5f / 255.0f)
                << extension;
        }
    }
    EXPECT_GE(tested.size(), 10u);
}

TEST_F(ImageExport, ChannelsAndSampleFormatsFollowTheSwitches)
{
    auto write = [&](const std::string& name, int alpha) {
        const std::string path = dir.file(name);
        EXPECT_TRUE(still(path, 16, 8, alpha)) << name;
        return readImage(path);
    };
    EXPECT_EQ(write("opaque.png", 0).spec.nchannels, 3);
    // -1 keeps the last setting.
    ASSERT_TRUE(writer.exportImage(QString::fromStdString(dir.file("opaque.png")), 8, 8, -1, -1,
                                   -1.0f, false, "", false, false));
    EXPECT_EQ(readImage(dir.file("opaque.png")).spec.nchannels, 3);
    EXPECT_FALSE(source.requests.back().alpha);

    const ReadBack half = write("half.exr", 1);
    EXPECT_EQ(half.spec.format, TypeDesc::HALF);
    EXPECT_LE(patternError(half, 0, 0, 4), 1e-3f);
    writer.setExportExrHalf(false);
    const ReadBack full = write("float.exr", 1);
    EXPECT_EQ(full.spec.format, TypeDesc::FLOAT);
    EXPECT_EQ(patternError(full, 0, 0, 4), 0.0f);

    writer.setExportTiffHDR(true);
    EXPECT_EQ(write("hdr.tif", 1).spec.format, TypeDesc::FLOAT);
    writer.resetExportSettings();
    EXPECT_EQ(write("hdr.tif", 1).spec.format, TypeDesc::UINT8);
}

// Integer files are display-referred through the curve of the profile they carry; float files
// and data passes keep the renderer's values.
TEST_F(ImageExport, IntegerFilesHoldDisplayValuesOfColourPassesOnly)
{
    activate({oxImagePasses::Beauty, oxImagePasses::Depth});
    ASSERT_TRUE(still(dir.file("curve.png"), 16, 8, 1, true));
    const ReadBack beauty = readImage(dir.file("curve.beauty.png"));
    const ReadBack depth = readImage(dir.file("curve.depth.png"));
    ASSERT_TRUE(beauty.ok && depth.ok);
    // Pixel (1, 0) of the beauty's red is 7/255 linear: far from its sRGB code value.
    const float linear = oxPatternSource::value(1, 0, 0, oxImagePasses::Beauty, 0);
    EXPECT_NEAR(beauty.pixels[4], oxDisplayCurve::sRGBEncode(linear), 0.5f / 255.0f);
    EXPECT_GT(std::fabs(beauty.pixels[4] - linear), 0.05f);
    EXPECT_LE(patternError(beauty, oxImagePasses::Beauty, 0, 4), 0.5f / 255.0f);
    EXPECT_LE(patternError(depth, oxImagePasses::Depth, 0, 4), 0.5f / 255.0f);

    writer.setExportExrHalf(false);
    ASSERT_TRUE(still(dir.file("curve.exr"), 16, 8, 1, true));
    EXPECT_EQ(patternError(readImage(dir.file("curve.beauty.exr")), oxImagePasses::Beauty, 0, 4),
              0.0f);

    // Adobe RGB (1998) has a pure power curve of 563/256.
    writer.setICCProfile(2);
    activate({});
    ASSERT_TRUE(still(dir.file("adobe.png")));
    const ReadBack adobe = readImage(dir.file("adobe.png"));
    ASSERT_TRUE(adobe.ok);
    EXPECT_NEAR(adobe.pixels[4], std::pow(linear, 256.0f / 563.0f), 1.0f / 255.0f);
}

TEST_F(ImageExport, MultiLayerExrHasAChannelSetPerPass)
{
    activate({0, 31, 34});
    writer.setExportMultiLayer(true);
    const std::string path = dir.file("layers.exr");
    ASSERT_TRUE(still(path, 16, 8, 1, true));
    EXPECT_EQ(filesIn(dir.path()), std::set<std::string>{"layers.exr"});
    const ReadBack image = readImage(path);
    ASSERT_TRUE(image.ok);
    std::set<std::string> channels(image.spec.channelnames.begin(), image.spec.channelnames.end());
    EXPECT_EQ(channels,
              (std::set<std::string>{"beauty.R", "beauty.G", "beauty.B", "beauty.A", "albedo.R",
                                     "albedo.G", "albedo.B", "albedo.A", "cryptoObject00.R",
                                     "cryptoObject00.G", "cryptoObject00.B", "cryptoObject00.A"}));
    // Ids keep all 32 bits although the colour layers are half floats.
    const int n = image.spec.nchannels;
    const auto at = std::find(image.spec.channelnames.begin(), image.spec.channelnames.end(),
                              "cryptoObject00.R") -
                    image.spec.channelnames.begin();
    EXPECT_EQ(image.spec.channelformat(int(at)), TypeDesc::FLOAT);
    EXPECT_EQ(image.pixels[size_t(at)], oxCryptomatte::idOf("/root/car"));
    EXPECT_EQ(image.pixels[size_t(15 * n + at)], oxCryptomatte::idOf("/root/wheel"));
    // The manifest decodes the id back to its object.
    bool found = false;
    for (const ParamValue& attribute : image.spec.extra_attribs)
        if (attribute.name().string().find("/manifest") != std::string::npos) {
            found = true;
            EXPECT_NE(image.spec.get_string_attribute(attribute.name()).find("/root/wheel"),
                      std::string::npos);
        }
    EXPECT_TRUE(found);
}

TEST_F(ImageExport, MultiLayerTiffHasASubimagePerPass)
{
    activate({0, 32});
    writer.setExportMultiLayer(true);
    const std::string path = dir.file("layers.tif");
    ASSERT_TRUE(still(path, 16, 8, 1, true));
    const ReadBack first = readImage(path, 0);
    const ReadBack second = readImage(path, 1);
    ASSERT_TRUE(first.ok && second.ok);
    EXPECT_LE(patternError(first, 0, 0, 4), 0.5f / 255.0f);
    EXPECT_LE(patternError(second, 32, 0, 4), 0.5f / 255.0f);
}

TEST_F(ImageExport, NamesReturnedAreTheFilesWritten)
{
    int round = 0;
    for (bool passes : {false, true})
        for (bool multiLayer : {false, true})
            for (const char* extension : {"png", "exr"})
                for (int kind = 0; kind < 3; ++kind) { // still, sequence, movie
                    oxTempDir out;
                    const bool movie = kind == 2;
                    const QString path = QString::fromStdString(
                        out.file("job" + std::to_string(round++) + "." +
                                 (movie ? std::string("avi") : std::string(extension))));
                    const std::vector<unsigned> ids = {0, 30, 37};
                    activate(ids);
                    writer.setExportMultiLayer(multiLayer);
                    QStringList expected;
                    bool ok = false;
                    if (kind == 0) {
                        expected = writer.getExportedImageFilenames(
                            path, passes ? ids : std::vector<unsigned>(), multiLayer);
                        ok = writer.exportImage(path, 8, 4, 0, 1, 72.0f, passes, "", false, false);
                    } else if (kind == 1) {
                        expected = writer.getExportedImageFilenames(
                            path, passes ? ids : std::vector<unsigned>(), multiLayer, 1, 5, 2);
                        ok = writer.exportImages(path, 8, 4, 25, 1, 5, 0, 1, passes, -1, "", 2,
                                                 false);
                    } else {
                        expected = QStringList{path};
                        ok = writer.exportAVI(path, 8, 4, 25, 1, 3, 0, -1, "", true);
                    }
                    ASSERT_TRUE(ok) << path.toStdString();
                    EXPECT_EQ(filesIn(out.path()), fileNames(expected)) << path.toStdString();
                }
}

TEST_F(ImageExport, SequencesRenderEachFrame)
{
    const std::string path = dir.file("seq.png");
    ASSERT_TRUE(writer.exportImages(QString::fromStdString(path), 8, 4, 25, 3, 7, 3, 1, false, 42,
                                    "", 2, false));
    ASSERT_EQ(source.requests.size(), 3u);
    EXPECT_EQ(source.requests[1].frame, 5);
    EXPECT_TRUE(source.requests[1].animation);
    EXPECT_EQ(source.requests[1].motionBlurObjectId, 42);
    EXPECT_EQ(source.requests[1].supersampling, 3);
    EXPECT_LE(patternError(readImage(dir.file("seq.0005.png")), 0, 5, 4), 0.5f / 255.0f);
    EXPECT_GE(oxImageWriter::getLastRenderTime(), 0.0);
}

TEST_F(ImageExport, CancelInASequenceLeavesOnlyCompleteFiles)
{
    source.beforeRender = [this](const oxRenderRequest& request) {
        if (request.frame == 3)
            writer.cancel();
        return true;
    };
    const std::string path = dir.file("c.exr");
    expectLog(oxLog::Info, "Image writer: export of '" + path + "' cancelled after frame 3.");
    EXPECT_FALSE(writer.exportImages(QString::fromStdString(path), 8, 4, 25, 1, 6, 0, 1, false, -1,
                                     "", 1, false));
    EXPECT_TRUE(writer.wasExportCanceled());
    EXPECT_EQ(filesIn(dir.path()),
              (std::set<std::string>{"c.0001.exr", "c.0002.exr", "c.0003.exr"}));
    for (const char* name : {"c.0001.exr", "c.0002.exr", "c.0003.exr"})
        EXPECT_TRUE(readImage(dir.file(name)).ok) << name;

    // Ctrl-C in headless mode does the same, and the next export starts afresh.
    oxTempDir second;
    source.beforeRender = [](const oxRenderRequest& request) {
        if (request.frame == 2)
            std::raise(SIGINT);
        return true;
    };
    const std::string movie = second.file("m.avi");
    expectLog(oxLog::Info, "Image writer: export of '" + movie + "' cancelled after frame 2.");
    EXPECT_FALSE(writer.exportAVI(QString::fromStdString(movie), 8, 4, 25, 1, 5, 0, -1, "", true));
    EXPECT_TRUE(writer.wasExportCanceled());
    EXPECT_TRUE(filesIn(second.path()).empty());
    source.beforeRender = nullptr;
    EXPECT_TRUE(still(second.file("ok.png"), 4, 4));
    EXPECT_FALSE(writer.wasExportCanceled());
}

// With a renderer that refines in rounds a cancel stops inside the image: none of that frame's
// files appear (not even under a temporary name) and the frames before stay whole.
TEST_F(ImageExport, ACancelDuringAnImageLeavesOnlyCompleteFiles)
{
    auto example = std::make_unique<oxScene>();
    std::string error;
    ASSERT_TRUE(oxExampleScene::build(*example, error)) << error;
    std::unique_ptr<oxScene> previous = oxScene::replaceCurrent(std::move(example));
    oxImageSource* previousSource = oxImageSource::current();
    oxImageSource::setCurrent(&oxRaytracerSource::the());
    oxRenderParameter::setImageSamples(8); // rounds of 1, 2, 4 and 8 samples
    activate({0, 33});                     // beauty and depth, a file each

    std::vector<oxImageWriter::ProgressInfo> seen;
    auto cancelIn = [&](size_t image, bool interrupt) {
        seen.clear();
        writer.setProgressCallback([&, image, interrupt](const oxImageWriter::ProgressInfo& info) {
            seen.push_back(info);
            if (info.image == image && info.round == 1) {
                if (interrupt)
                    std::raise(SIGINT);
                else
                    writer.cancel();
            }
        });
    };
    const std::string path = dir.file("r.png");
    auto exportFrames = [&] {
        return writer.exportImages(QString::fromStdString(path), 16, 12, 25, 1, 3, 3, 1, true, -1,
                                   "", 1, false);
    };

    cancelIn(0, false);
    expectLog(oxLog::Info, "Image writer: export of '" + path +
                               "' cancelled during frame 1; the frame was not written.");
    EXPECT_FALSE(exportFrames());
    EXPECT_TRUE(writer.wasExportCanceled());
    EXPECT_TRUE(filesIn(dir.path()).empty());
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].images, 3u);
    EXPECT_EQ(seen[0].rounds, 4);

    // Ctrl-C in the second frame keeps the first frame's files whole.
    cancelIn(1, true);
    expectLog(oxLog::Info, "Image writer: export of '" + path +
                               "' cancelled during frame 2; the frame was not written.");
    EXPECT_FALSE(exportFrames());
    EXPECT_TRUE(writer.wasExportCanceled());
    EXPECT_EQ(filesIn(dir.path()),
              (std::set<std::string>{"r.beauty.0001.png", "r.depth.0001.png"}));
    EXPECT_TRUE(readImage(dir.file("r.beauty.0001.png")).ok);
    EXPECT_EQ(seen.size(), 5u); // four rounds of the first frame, one of the second

    // Unless cancelled, every round of every frame is reported and the export completes.
    writer.setProgressCallback(
        [&](const oxImageWriter::ProgressInfo& info) { seen.push_back(info); });
    seen.clear();
    EXPECT_TRUE(exportFrames());
    EXPECT_FALSE(writer.wasExportCanceled());
    EXPECT_EQ(seen.size(), 12u);
    EXPECT_EQ(seen.back().image, 2u);
    EXPECT_EQ(seen.back().round, 4);
    EXPECT_EQ(filesIn(dir.path()).size(), 6u);

    writer.setProgressCallback(nullptr);
    oxRenderParameter::resetToDefaults();
    oxImageSource::setCurrent(previousSource);
    oxScene::replaceCurrent(std::move(previous));
}

// A failed render leaves no file of its own and keeps an old one; a bad folder is reported.
TEST_F(ImageExport, AFailedExportLeavesNoNewFileAndKeepsTheOldOne)
{
    source.beforeRender = [](const oxRenderRequest& request) { return request.frame != 2; };
    expectLog(oxLog::Error,
              "Image writer: rendering '" + dir.file("f.0002.png") + "' failed: test failure.");
    EXPECT_FALSE(writer.exportImages(QString::fromStdString(dir.file("f.png")), 8, 4, 25, 1, 3, 0,
                                     1, false, -1, "", 1, false));
    EXPECT_EQ(filesIn(dir.path()), std::set<std::string>{"f.0001.png"});

    const std::string path = dir.file("keep.png");
    ASSERT_TRUE(oxFile::writeAtomically(path, "old"));
    source.beforeRender = [](const oxRenderRequest&) { return false; };
    expectLog(oxLog::Error, "Image writer: rendering '" + path + "' failed: test failure.");
    EXPECT_FALSE(still(path, 4, 4));
    EXPECT_EQ(oxReadFile(path), "old");
    EXPECT_EQ(filesIn(dir.path()), (std::set<std::string>{"f.0001.png", "keep.png"}));

    const std::string inFile = path + "/sub/x.png";
    expectLog(oxLog::Error,
              "Image writer: can't create the folder '" + path + "/sub' for '" + inFile + "'.");
    EXPECT_FALSE(still(inFile, 4, 4));
}

TEST_F(ImageExport, ExistingFilesAreOverwrittenHeadlessWithALogLine)
{
    const std::string path = dir.file("o.png");
    ASSERT_TRUE(still(path, 4, 4));
    writer.setNoOverwriteMessage(false);
    expectLog(oxLog::Info, "Image writer: overwriting '" + path + "'.");
    ASSERT_TRUE(still(path, 4, 4));
}

TEST_F(ImageExport, MovieHasTheFramesAndRate)
{
    const std::string path = dir.file("movie.avi");
    ASSERT_TRUE(writer.exportAVI(QString::fromStdString(path), 64, 48, 12, 1, 10, 0, -1, "", true));
    const oxProcessResult probe =
        oxRunProcess("ffprobe", {"-v", "error", "-count_frames", "-select_streams", "v:0",
                                 "-show_entries", "stream=codec_name,nb_read_frames,r_frame_rate",
                                 "-of", "default=noprint_wrappers=1", path});
    ASSERT_EQ(probe.exitCode, 0) << probe.err;
    EXPECT_NE(probe.out.find("codec_name=mjpeg"), std::string::npos) << probe.out;
    EXPECT_NE(probe.out.find("r_frame_rate=12/1"), std::string::npos) << probe.out;
    EXPECT_NE(probe.out.find("nb_read_frames=10"), std::string::npos) << probe.out;
}

TEST_F(ImageExport, FastSnapshots)
{
    const std::string path = dir.file("fast.png");
    expectLog(oxLog::Error, "Image writer: can't write '" + path +
                                "': fast snapshots were not initialised (exportImageFastInit).");
    EXPECT_FALSE(writer.exportImageFast(QString::fromStdString(path)));
    ASSERT_TRUE(writer.exportImageFastInit(20, 10, 1));
    osg_image_file_handler_errno = 0;
    EXPECT_TRUE(writer.exportImageFast(QString::fromStdString(path)));
    EXPECT_EQ(osg_image_file_handler_errno, 0);
    EXPECT_EQ(readImage(path).spec.width, 20);
    EXPECT_EQ(source.requests.back().supersampling, 3);
    writer.exportImageFastTerminate();
    expectLog(oxLog::Error, "Image writer: can't write '" + path +
                                "': fast snapshots were not initialised (exportImageFastInit).");
    EXPECT_FALSE(writer.exportImageFast(QString::fromStdString(path)));
}

TEST_F(ImageExport, HeadlessProgressIsOnePlainLinePerImage)
{
    writer.setNoProgress(false);
    const std::string path = dir.file("p.png");
    testing::internal::CaptureStderr();
    ASSERT_TRUE(writer.exportImages(QString::fromStdString(path), 4, 4, 25, 1, 2, 0, 1, false, -1,
                                    "", 1, false));
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("Image writer: 1/2 written '" + dir.file("p.0001.png") + "', ETA "),
              std::string::npos)
        << err;
    EXPECT_NE(err.find("Image writer: 2/2 written '" + dir.file("p.0002.png") + "', ETA 0 s\n"),
              std::string::npos)
        << err;
}

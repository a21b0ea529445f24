// Snapshots through the module: the createSnapshot forms, fast series, the snapshot callback
// and the quick snapshot, rendered from the example scene into real files.

#include "test_snapshot_support.h"

#include "oxController.h"
#include "oxDialogResponder.h"
#include "oxRenderSettings.h"
#include "oxSnapshots.h"

#include <QAction>
#include <QRegularExpression>
#include <QtTest/QTest>

#include <array>
#include <functional>

namespace {

using SnapshotTest = oxSnapshotModuleTest;
using Strings = std::vector<std::string>;

// The beauty and depth passes as an active pass override.
std::vector<bool> beautyAndDepth()
{
    std::vector<bool> passes(47, false);
    passes[0] = passes[33] = true;
    return passes;
}

} // namespace

TEST_F(SnapshotTest, FileFormsWriteImagesOfTheAskedSizeWithOrWithoutAlpha)
{
    ASSERT_TRUE(createSnapshot(dir.file("plain.png").c_str(), 40, 30));
    ASSERT_TRUE(createSnapshot(dir.file("alpha.png").c_str(), 24, 16, 0, true));
    // The float form truncates the size.
    ASSERT_TRUE(createSnapshot(dir.file("float.exr").c_str(), 20.9f, 10.2f, 1, true, 0.0f, 0.0f,
                               0.0f, 150.0f, true, false, true, false, "render-host"));
    const ImageInfo plain = readImage(dir.file("plain.png"));
    EXPECT_EQ(plain.width, 40);
    EXPECT_EQ(plain.height, 30);
    EXPECT_EQ(plain.channels, 3);
    EXPECT_EQ(readImage(dir.file("alpha.png")).channels, 4);
    const ImageInfo exr = readImage(dir.file("float.exr"));
    EXPECT_EQ(exr.format, "openexr");
    EXPECT_EQ(exr.width, 20);
    EXPECT_EQ(exr.height, 10);
    EXPECT_EQ(exr.channels, 4);
    EXPECT_FALSE(oxController::isBusy());
}

TEST_F(SnapshotTest, EachFormHandsItsDefaultsToTheWriter)
{
    const std::string f = dir.file("s.png");
    const char* name = f.c_str();
    // What the writer gets after "NAME,8,6,": supersampling mode, alpha, dpi, passes.
    const std::pair<std::function<bool()>, std::string> cases[] = {
        {[&] { return createSnapshot(name, 8, 6); }, "-1,-1,-1.000000,false"},
        {[&] { return createSnapshot(name, 8, 6, 1); }, "3,-1,-1.000000,false"},
        {[&] { return createSnapshot(name, 8, 6, 50); }, "3,-1,-1.000000,false"},
        {[&] { return createSnapshot(name, 8, 6, -4); }, "0,-1,-1.000000,false"},
        {[&] { return createSnapshot(name, 8, 6, 2, true); }, "3,1,-1.000000,false"},
        {[&] { return createSnapshot(name, 8, 6, 0, false, 300.0f); }, "0,0,300.000000,false"},
    };
    for (const auto& [snapshot, arguments] : cases) {
        oxCallTrace::clear();
        EXPECT_TRUE(snapshot());
        EXPECT_EQ(oxTraced("oxImageWriter::exportImage"), Strings{f + ",8,6," + arguments});
    }
    // With an active pass override the file forms write passes.
    oxImageRenderWidget::setActiveRenderPasses(beautyAndDepth());
    EXPECT_TRUE(createSnapshot(name, 8, 6, 0));
    EXPECT_EQ(readImage(dir.file("s.depth.png")).width, 8);
}

TEST_F(SnapshotTest, LongFormsLeaveTheirSwitchesButRestoreColourAndPremultiply)
{
    const std::string f = dir.file("long.png");
    ASSERT_TRUE(
        createSnapshot(f.c_str(), 8, 6, 0, true, 0.25f, 0.5f, 0.75f, 72.0f, true, false, true));
    Strings calls;
    for (const oxCallTrace::Call& call : oxCallTrace::calls())
        if (call.name.rfind("oxImageWriter::", 0) == 0 ||
            call.name == "oxRaytracer::setPremultiply")
            calls.push_back(call.name + "(" + call.arguments + ")");
    const Strings expected = {
        "oxRaytracer::setPremultiply(true)",
        "oxImageWriter::setAlphaColor(0.250000,0.500000,0.750000)",
        "oxImageWriter::setNoOverwriteMessage(true)",
        "oxImageWriter::setNoShowImage(true)",
        "oxImageWriter::exportImage(" + f + ",8,6,0,1,72.000000,false)",
        "oxImageWriter::setAlphaColor(1.000000,1.000000,1.000000)",
        "oxRaytracer::setPremultiply(false)",
    };
    EXPECT_EQ(calls, expected);
    EXPECT_FALSE(oxRaytracer::getPremultiply());
    EXPECT_FALSE(oxController::isBusy());

    // A short form touches neither switch; a fast snapshot puts both back to false.
    oxCallTrace::clear();
    ASSERT_TRUE(createSnapshot(f.c_str(), 8, 6));
    EXPECT_TRUE(oxTraced("oxImageWriter::setNoShowImage").empty());
    createSnapshotFastInit(8, 6);
    ASSERT_TRUE(createSnapshotFast(f.c_str()));
    createSnapshotFastTerminate();
    EXPECT_EQ(oxTraced("oxImageWriter::setNoShowImage"), (Strings{"true", "false"}));
    EXPECT_EQ(oxTraced("oxImageWriter::setNoOverwriteMessage"), (Strings{"true", "false"}));
}

TEST_F(SnapshotTest, NullUnsupportedOrModulelessSnapshotsFail)
{
    EXPECT_FALSE(createSnapshot(nullptr, 8, 6));
    EXPECT_FALSE(
        createSnapshot(nullptr, 8, 6, 1, true, 1, 1, 1, 72.0f, true, true, true, true, "host"));
    EXPECT_FALSE(createSnapshotFast(nullptr));
    EXPECT_TRUE(oxCallTrace::calls().empty());

    const std::string unsupported = dir.file("x.xyz");
    expectLog(oxLog::Error, "Image writer: can't write '" + unsupported +
                                "': the format 'xyz' is not supported.");
    EXPECT_FALSE(createSnapshot(unsupported.c_str(), 8, 6, 0, false, 1, 1, 1, 72.0f, true, false));
    EXPECT_FALSE(oxController::isBusy());

    unloadModule();
    expectLog(oxLog::Error,
              "createSnapshot: the render settings module is not loaded, nothing was exported.");
    EXPECT_FALSE(createSnapshot(dir.file("none.png").c_str(), 8, 6));
    EXPECT_TRUE(filesIn(dir.path()).empty());
}

TEST_F(SnapshotTest, DialogFormsWriteToTheChosenName)
{
    // Headless, the window's output name is taken; a movie name is offered as a still, and
    // passes stay off on this route.
    oxRenderSettingsPreset& settings = module->getRenderSettingsWindow()->getCurrentPreset();
    settings.filename = dir.file("dialog.AVI");
    oxImageRenderWidget::setActiveRenderPasses(beautyAndDepth());
    createSnapshot(16, 12);
    createSnapshot(16, 12, 5, true, 96.0f);
    EXPECT_EQ(oxTraced("oxImageWriter::exportImage"),
              (Strings{dir.file("dialog.png") + ",16,12,0,-1,-1.000000,false",
                       dir.file("dialog.png") + ",16,12,3,1,96.000000,false"}));
    EXPECT_EQ(readImage(dir.file("dialog.png")).width, 16);

    oxCallTrace::clear();
    settings.filename = dir.file("dialog.xyz");
    expectLog(oxLog::Error, "Image format not supported!");
    createSnapshot(16, 12, 0, false);
    EXPECT_TRUE(oxTraced("oxImageWriter::exportImage").empty());
    EXPECT_FALSE(oxController::isBusy());

    // With a GUI the user's choice counts; a cancelled dialog gives a null name.
    oxController::setNoGUI(false);
    oxDialogResponder::setForced(true);
    oxDialogResponder::queueAnswer(QString::fromStdString(dir.file("chosen.jpg")));
    const QString chosen =
        module->runImageFileDialog(module->getRenderSettingsWindow()->getCurrentRenderSettings());
    const QString cancelled =
        module->runImageFileDialog(module->getRenderSettingsWindow()->getCurrentRenderSettings());
    oxDialogResponder::setForced(false);
    oxDialogResponder::clear();
    oxController::setNoGUI(true);
    EXPECT_EQ(chosen.toStdString(), dir.file("chosen.jpg"));
    EXPECT_TRUE(cancelled.isNull());
}

TEST_F(SnapshotTest, FastSeriesWritesEveryImageAtTheInitialisedSize)
{
    createSnapshotFastInit(20, 10);
    for (const char* name : {"a.png", "b.png", "c.jpg"})
        EXPECT_TRUE(createSnapshotFast(dir.file(name).c_str())) << name;
    createSnapshotFastTerminate();
    for (const char* name : {"a.png", "b.png", "c.jpg"}) {
        EXPECT_EQ(readImage(dir.file(name)).width, 20) << name;
        EXPECT_EQ(readImage(dir.file(name)).height, 10) << name;
    }
    const std::string late = dir.file("late.png");
    expectLog(oxLog::Error, "Image writer: can't write '" + late +
                                "': fast snapshots were not initialised (exportImageFastInit).");
    EXPECT_FALSE(createSnapshotFast(late.c_str()));
}

TEST_F(SnapshotTest, FastInitWaitsASecondWhileAScriptLoadsAProject)
{
    oxFileIO::setLoadingProjectWhileRunningScript(true);
    createSnapshotFastInit(8, 8);
    createSnapshotFastInit(20, 10, 5);
    QTest::qWait(500);
    EXPECT_TRUE(oxTraced("oxImageWriter::exportImageFastInit").empty());
    QTest::qWait(1000);
    // Each deferral fires, both with the last values asked for.
    EXPECT_EQ(oxTraced("oxImageWriter::exportImageFastInit"), (Strings{"20,10,3", "20,10,3"}));
    EXPECT_TRUE(createSnapshotFast(dir.file("deferred.png").c_str()));
    EXPECT_EQ(readImage(dir.file("deferred.png")).width, 20);
}

TEST_F(SnapshotTest, SnapshotCallbackWritesOneFastImage)
{
    oxController::setPlaySoundOnExport(true);
    oxMessage message;
    message.set("filename", QString::fromStdString(dir.file("callback.png")));
    message.set("height", 16);
    message.set("alpha", true);
    message.set("forceNoSound", true);
    ASSERT_TRUE(oxController::call("oxMovieExport::exportSnapshot", message));
    // Width falls back to 240; alpha has no effect on this route.
    const ImageInfo info = readImage(dir.file("callback.png"));
    EXPECT_EQ(info.width, 240);
    EXPECT_EQ(info.height, 16);
    EXPECT_EQ(info.channels, 3);
    EXPECT_TRUE(oxController::playSoundOnExport());
    EXPECT_EQ(oxCallTrace::names().back(), "oxImageWriter::exportImageFastTerminate");
}

TEST_F(SnapshotTest, QuickSnapshotWritesADatedFileIntoThePreferencePath)
{
    const std::string folder = dir.file("shots");
    oxPreferences::getData().set("SnapshotExport path", folder);
    oxOSGWidget::setViewWidth(32);
    oxOSGWidget::setViewHeight(24);
    oxOSGWidget::setImageSamples(1);
    oxRenderParameter::setImageSamples(1);
    module->getExportSnapshotAction()->trigger();
    // The callback without a file name takes the same road.
    oxOSGWidget::setRGB16F(true);
    oxMessage message;
    oxController::call("oxMovieExport::exportSnapshot", message);

    const Strings files = filesIn(folder);
    ASSERT_EQ(files.size(), 2u);
    const QRegularExpression dated(QStringLiteral("^snapshot-\\d\\d-\\d\\d-\\d{4}-\\d{6}\\.png$"));
    for (const std::string& file : files) {
        const QString png = QString::fromStdString(file).replace(QStringLiteral(".exr"), ".png");
        EXPECT_TRUE(dated.match(png).hasMatch()) << file;
        EXPECT_EQ(readImage(folder + "/" + file).width, 32) << file;
        EXPECT_TRUE(log().contains(oxLog::Info, "Snapshot: wrote '" + folder + "\\" + file + "'."));
    }
    EXPECT_NE(files[0].substr(files[0].size() - 4), files[1].substr(files[1].size() - 4));

    const std::string blocked = dir.file("shots/" + files[0] + "/sub");
    oxPreferences::getData().set("SnapshotExport path", blocked);
    expectLog(oxLog::Error, "Snapshot: path '" + blocked + "' doesn't exist!");
    module->exportSnapshot();
    EXPECT_EQ(filesIn(folder).size(), 2u);
}

TEST_F(SnapshotTest, MetaDataChoicesMapToTheWritersFlags)
{
    const std::pair<std::array<bool, 5>, int> cases[] = {
        {{false, false, false, false, false}, 0}, {{true, false, false, false, false}, 120},
        {{false, true, false, false, false}, 1},  {{false, false, true, false, false}, 2},
        {{false, false, false, true, false}, 4},  {{false, false, false, false, true}, 128},
        {{true, true, true, true, true}, 255},
    };
    for (const auto& [c, flags] : cases) {
        setSnapshotEmbedMetaData(c[0], c[1], c[2], c[3], c[4]);
        EXPECT_EQ(module->getImageWriter()->getMetaDataFlags(), flags);
    }
}

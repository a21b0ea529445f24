// The render queue hand-off: the job record the window builds, the button and the named
// callback that hand it on, and a job's settings coming back from the queue.

#include "oxQueueTestSupport.h"

#include "QOXDockWindowManager.h"
#include "oxRenderJobMessage.h"
#include "oxRenderJobPresets.h"
#include "oxRenderParameter.h"
#include "oxRenderPasses.h"
#include "oxScene.h"
#include "oxSceneIO.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include <fstream>

namespace {

class QueueHandOffTest : public oxQueueTest {
protected:
    void TearDown() override
    {
        oxRenderParameter::resetToDefaults();
        oxQueueTest::TearDown();
    }

    template <typename T>
    T value(const oxMessage& job, const char* key)
    {
        T result{};
        EXPECT_TRUE(job.get(key, result)) << key;
        return result;
    }
};

} // namespace

TEST_F(QueueHandOffTest, JobRecordHoldsTheWindowsSettingsTyped)
{
    start();
    oxRenderSettingsPreset& preset = window()->getCurrentPreset();
    preset.variantSetsUsed = true;
    preset.filename = "/out/job.png";
    preset.pixel_width = 800.0f;
    preset.pixel_height = 600.0f;
    preset.ssFactor = 3;
    preset.renderAnimation = true;
    preset.exportType = 1;
    preset.startFrame = 2;
    preset.stopFrame = 48;
    preset.renderpasses = true;
    for (const oxRenderPassFlagInfo& info : kPassFlags)
        preset.passFlag(info.flag) = info.flag == PassFlag::Depth;
    oxRenderParameter::setImageSamples(77);
    oxRenderParameter::setRenderTimeInSeconds(120u);
    window()->_totalRenderCount->setText(QStringLiteral("12"));
    window()->_totalFileCount->setText(QStringLiteral("24"));
    window()->_variantSetCount->setText(QStringLiteral("not a number"));
    window()->_cluster->setChecked(false);
    window()->_cluster_hosts->setText(QStringLiteral("node1"));

    window()->buildRenderJobMessage();
    ASSERT_EQ(queue->jobCount(), 1);
    const oxMessage& job = queue->job(0);

    EXPECT_EQ(job.id(), 0u);
    // Every attribute of the table, the master switch and each pass flag, and the hosts.
    EXPECT_EQ(job.getMap().size(), kRenderJobAttributes.size() + 1 + kPassFlagCount + 1);
    EXPECT_TRUE(value<bool>(job, "VariantSetsUsed"));
    EXPECT_EQ(value<std::string>(job, "MovieExport Filename"), "/out/job.png");
    EXPECT_EQ(value<float>(job, "ImageExport floatwidth"), 800.0f);
    EXPECT_EQ(value<int>(job, "MovieExport ssfactor"), 3);
    // Raytracing values are the renderer's, the time limit as a signed number.
    EXPECT_EQ(value<int>(job, "Maximum Antialiasing Samples"), 77);
    EXPECT_EQ(value<int>(job, "Maximum Rendering Time"), 120);
    // A movie is told by the format 1, whatever the export type's own value.
    EXPECT_EQ(value<int>(job, "MovieExport Animation Format"), 1);
    EXPECT_EQ(value<std::string>(job, "Image Size Preset String"),
              window()->_imageSizes->currentText().toStdString());
    EXPECT_EQ(value<int>(job, "ImageExport statistics total renders"), 12);
    EXPECT_EQ(value<int>(job, "ImageExport statistics toal files"), 24);
    EXPECT_EQ(value<int>(job, "ImageExport statistics variantsets"), 0);
    EXPECT_TRUE(value<bool>(job, "MovieExport renderpasses"));
    for (const oxRenderPassFlagInfo& info : kPassFlags)
        EXPECT_EQ(value<bool>(job, info.sceneKey), info.flag == PassFlag::Depth) << info.sceneKey;
    // With the cluster off the hosts are there, and empty.
    EXPECT_EQ(value<std::string>(job, "Export cluster hosts"), "");

    window()->_cluster->setChecked(true);
    preset.renderAnimation = false;
    window()->buildRenderJobMessage();
    ASSERT_EQ(queue->jobCount(), 2);
    EXPECT_EQ(value<std::string>(queue->job(1), "Export cluster hosts"), "node1");
    EXPECT_EQ(value<int>(queue->job(1), "MovieExport Animation Format"), 0);
}

TEST_F(QueueHandOffTest, ButtonAndCallbackHandTheJobToTheQueue)
{
    start();
    oxTempDir dir;
    window()->getCurrentPreset().filename = dir.file("shot.png");
    QOXDockWidget* dock = mainWindow->dockWindowManager()->getDockWidget("Render Queue");
    ASSERT_NE(dock, nullptr);
    EXPECT_TRUE(dock->isHidden());

    window()->_addToRenderQueue->click();
    ASSERT_EQ(queue->jobCount(), 1);
    EXPECT_EQ(queue->jobList()->topLevelItemCount(), 1);
    std::string filename;
    EXPECT_TRUE(queue->job(0).get("MovieExport Filename", filename));
    EXPECT_EQ(filename, dir.file("shot.png"));
    EXPECT_FALSE(dock->isHidden());
    EXPECT_EQ(senders(), (std::vector<std::string>{"Add to cluster queue"}));

    // Other modules press the button by name.
    oxMessage message;
    EXPECT_TRUE(oxController::call("oxMovieExport::clickedAddToRenderQueue", message, 0));
    EXPECT_EQ(queue->jobCount(), 2);
    EXPECT_EQ(senders().size(), 2u);
}

TEST_F(QueueHandOffTest, FileChecksRunEvenWithoutAQueueWindow)
{
    start(false);
    oxTempDir dir;
    const std::string existing = dir.file("shot.png");
    std::ofstream(existing) << "old";
    window()->getCurrentPreset().filename = existing;

    // The user is asked about the existing file and lets it be overwritten; then, with no
    // queue window to show, nothing more happens.
    oxDialogResponder::queueAnswer(QStringLiteral("Overwrite"));
    window()->_addToRenderQueue->click();
    ASSERT_EQ(oxDialogResponder::history().size(), 1);
    EXPECT_TRUE(oxDialogResponder::history().front().question.contains(
        QStringLiteral("overwrite existing files")));
    EXPECT_EQ(queue->jobCount(), 0);
    EXPECT_TRUE(senders().empty());
}

TEST_F(QueueHandOffTest, QueuedJobSettingsComeBackIntoTheWindow)
{
    start();
    registerRenderJobPresetCallbacks();
    oxRenderSettingsPreset& preset = window()->getCurrentPreset();
    preset.filename = "/out/first.exr";
    preset.pixel_width = 1024.0f;
    preset.useClipRange = true;
    window()->buildRenderJobMessage();

    preset.filename = "/out/other.png";
    preset.pixel_width = 32.0f;
    preset.useClipRange = false;
    // The record holds the time limit signed, the window reads it unsigned: it stays as it is
    // (with a complaint on standard error).
    testing::internal::CaptureStderr();
    EXPECT_TRUE(queue->returnJobSettings(0));
    const std::string complaint = testing::internal::GetCapturedStderr();
    EXPECT_NE(complaint.find("'Maximum Rendering Time' has wrong type"), std::string::npos);
    EXPECT_EQ(preset.filename, "/out/first.exr");
    EXPECT_EQ(preset.pixel_width, 1024.0f);
    EXPECT_TRUE(preset.useClipRange);
    EXPECT_FALSE(queue->returnJobSettings(1));
    unregisterRenderJobPresetCallbacks();
}

TEST_F(QueueHandOffTest, JobPresetsTravelWithTheProject)
{
    start();
    registerRenderJobPresetCallbacks();
    window()->getCurrentPreset().filename = "/out/queued.png";
    window()->addRQPreset("queued job");
    // The preset text holds no print size: it is derived again when the size changes.
    oxRenderSettingsPreset saved = *window()->getRQPreset("queued job");
    saved.printWidth = saved.printHeight = 0.0f;

    // Saved with the scene, gone with a new scene, back with the project.
    oxTempDir dir;
    std::unique_ptr<oxScene> previous = oxScene::replaceCurrent(std::make_unique<oxScene>());
    ASSERT_TRUE(oxSceneIO::save(dir.file("queued.oxp")));
    oxMessage newScene(oxController::MessageNewScene);
    oxController::broadcastMessage(newScene);
    EXPECT_TRUE(window()->getRQPresets().empty());
    ASSERT_TRUE(oxSceneIO::open(dir.file("queued.oxp")));
    oxScene::replaceCurrent(std::move(previous));
    ASSERT_EQ(window()->getRQPresets().size(), 1u);
    EXPECT_EQ(*window()->getRQPresets().front(), saved);
    unregisterRenderJobPresetCallbacks();
}

// The render queue renders its jobs on this machine: in order, paused and resumed, past a
// failing job, and kept with the project.

#include "oxQueueTestSupport.h"

#include "oxRenderJobPresets.h"
#include "oxSceneIO.h"

#include <OpenImageIO/imageio.h>

#include <QEventLoop>
#include <QFileInfo>
#include <QTreeWidget>

#include <fstream>

namespace {

using State = oxRenderQueue::State;

class RenderQueueRunTest : public oxQueueTest {
protected:
    void SetUp() override
    {
        oxQueueTest::SetUp();
        start();
        registerRenderJobPresetCallbacks();
        module->getImageWriter()->setNoProgress(true);
    }

    // Hands the window's settings, writing into file, to the queue as the button would.
    void addJob(const std::string& file)
    {
        oxRenderSettingsPreset& preset = window()->getCurrentPreset();
        preset.filename = file;
        preset.pixel_width = 24.0f;
        preset.pixel_height = 16.0f;
        window()->buildRenderJobMessage();
    }
    // Starts the queue and runs the event loop until it stops.
    void runQueue()
    {
        QEventLoop loop;
        QObject::connect(queue.get(), &oxRenderQueue::queueStopped, &loop, &QEventLoop::quit);
        ASSERT_TRUE(queue->start());
        loop.exec();
    }
    std::vector<State> states() const
    {
        std::vector<State> result;
        for (int index = 0; index < queue->jobCount(); ++index)
            result.push_back(queue->jobEntry(index).state);
        return result;
    }
    static bool isImage(const std::string& file, int width, int height)
    {
        auto input = OIIO::ImageInput::open(file);
        return input && input->spec().width == width && input->spec().height == height;
    }
};

} // namespace

TEST_F(RenderQueueRunTest, JobsRenderInOrderAndAFailureDoesNotStopTheNext)
{
    const std::string blocker = dir.file("blocker");
    std::ofstream(blocker) << "a file where a folder should be";
    addJob(dir.file("first.png"));
    addJob(blocker + "/second.png");
    addJob(dir.file("third.png"));
    // The settings of each job were kept: the window has moved on since.
    window()->getCurrentPreset().filename = dir.file("elsewhere.png");

    std::vector<int> finished;
    QObject::connect(queue.get(), &oxRenderQueue::jobFinished,
                     [&](int index) { finished.push_back(index); });
    const std::string second = blocker + "/second.png";
    const std::string reason =
        "1 of the 1 files weren't written (the log says why), the first: " + second;
    expectLog(oxLog::Error,
              "Image writer: can't create the folder '" + blocker + "' for '" + second + "'.");
    expectLog(oxLog::Error, "Render queue: job '" + second + "' failed: " + reason + ".");
    runQueue();

    EXPECT_EQ(finished, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(states(), (std::vector<State>{State::Done, State::Failed, State::Done}));
    EXPECT_EQ(queue->jobEntry(1).reason, reason);
    EXPECT_EQ(queue->jobList()->topLevelItem(1)->text(1).toStdString(), "Failed: " + reason);
    EXPECT_TRUE(isImage(dir.file("first.png"), 24, 16));
    EXPECT_TRUE(isImage(dir.file("third.png"), 24, 16));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(dir.file("elsewhere.png"))));
    // Nothing waits: Start has nothing to do.
    EXPECT_FALSE(queue->start());
}

TEST_F(RenderQueueRunTest, PauseLetsTheRunningJobFinishAndStartResumes)
{
    addJob(dir.file("one.png"));
    addJob(dir.file("two.png"));
    QObject::connect(queue.get(), &oxRenderQueue::jobFinished, [this](int index) {
        if (index == 0)
            queue->pause();
    });
    runQueue();
    EXPECT_EQ(states(), (std::vector<State>{State::Done, State::Waiting}));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(dir.file("two.png"))));
    EXPECT_FALSE(queue->isRunning());

    runQueue();
    EXPECT_EQ(states(), (std::vector<State>{State::Done, State::Done}));
    EXPECT_TRUE(isImage(dir.file("two.png"), 24, 16));
}

TEST_F(RenderQueueRunTest, CancelledJobStopsTheQueue)
{
    addJob(dir.file("cancelled.png"));
    addJob(dir.file("after.png"));
    // Cancel as the progress dialog's button does, during the first job's first image.
    oxImageWriter* writer = module->getImageWriter();
    writer->setProgressCallback([writer](const oxImageWriter::ProgressInfo&) { writer->cancel(); });
    runQueue();
    writer->setProgressCallback(nullptr);
    EXPECT_EQ(states(), (std::vector<State>{State::Cancelled, State::Waiting}));
    EXPECT_EQ(queue->jobList()->topLevelItem(0)->text(1), QStringLiteral("Cancelled"));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(dir.file("cancelled.png"))));
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(dir.file("after.png"))));
}

TEST_F(RenderQueueRunTest, ExistingFilesAreAskedAboutOnceBeforeTheFirstJob)
{
    addJob(dir.file("kept.png"));
    std::ofstream(dir.file("kept.png")) << "old";
    oxDialogResponder::queueAnswer(QStringLiteral("Cancel"));
    EXPECT_FALSE(queue->start());
    ASSERT_EQ(oxDialogResponder::history().size(), 1);
    EXPECT_TRUE(oxDialogResponder::history().front().question.contains(
        QString::fromStdString(dir.file("kept.png"))));
    EXPECT_EQ(states(), (std::vector<State>{State::Waiting}));

    // Overwrite: the job replaces the old file with its image.
    oxDialogResponder::queueAnswer(QStringLiteral("Overwrite"));
    runQueue();
    EXPECT_EQ(states(), (std::vector<State>{State::Done}));
    EXPECT_TRUE(isImage(dir.file("kept.png"), 24, 16));
}

TEST_F(RenderQueueRunTest, QueueIsKeptWithTheProjectAndRendersAfterALoad)
{
    addJob(dir.file("saved-a.png"));
    addJob(dir.file("saved-b.png"));
    queue->moveJob(1, 0);
    const std::string project = dir.file("queue.oxp");
    ASSERT_TRUE(oxSceneIO::save(project));

    // A new scene empties the queue; opening the project brings both jobs back, in order.
    oxMessage newScene(oxController::MessageNewScene);
    oxController::broadcastMessage(newScene);
    EXPECT_EQ(queue->jobCount(), 0);
    ASSERT_TRUE(oxSceneIO::open(project));
    ASSERT_EQ(queue->jobCount(), 2);
    EXPECT_EQ(queue->jobList()->topLevelItem(0)->toolTip(0),
              QString::fromStdString(dir.file("saved-b.png")));
    window()->getCurrentPreset().filename = dir.file("elsewhere.png");

    runQueue();
    EXPECT_EQ(states(), (std::vector<State>{State::Done, State::Done}));
    EXPECT_TRUE(isImage(dir.file("saved-a.png"), 24, 16));
    EXPECT_TRUE(isImage(dir.file("saved-b.png"), 24, 16));
}

TEST_F(RenderQueueRunTest, HeadlessRunRendersTheProjectsQueue)
{
    addJob(dir.file("headless-a.png"));
    addJob(dir.file("headless-b.png"));
    std::ofstream(dir.file("headless-b.png")) << "old";
    const std::string project = dir.file("headless.oxp");
    ASSERT_TRUE(oxSceneIO::save(project));
    const std::string oxlin = std::string(OX_TEST_BINARY_DIR) + "/bin/oxlin";

    // An existing file fails its job without --overwrite; the other job still renders.
    oxProcessResult result = oxRunProcess(
        oxlin, {"--no-gui", "--prefs-dir", dir.path(), project, "--render-queue"}, 120000);
    EXPECT_EQ(result.exitCode, 1) << result.err;
    EXPECT_NE(result.out.find("Render queue: 1 job done, 1 failed."), std::string::npos)
        << result.out;
    EXPECT_TRUE(isImage(dir.file("headless-a.png"), 24, 16));
    EXPECT_EQ(oxReadFile(dir.file("headless-b.png")), "old");

    result = oxRunProcess(
        oxlin, {"--no-gui", "--prefs-dir", dir.path(), project, "--render-queue", "--overwrite"},
        120000);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(isImage(dir.file("headless-b.png"), 24, 16));
}

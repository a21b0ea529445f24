// The cluster hand-off: the host's cluster manager (a spool folder of queues) and the button
// that sends the current scene state to it.

#include "oxQueueTestSupport.h"

#include "oxFile.h"
#include "oxMessageRW.h"
#include "oxPlatform.h"
#include "oxPreferences.h"
#include "oxScene.h"
#include "oxSceneIO.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QPushButton>
#include <QTimer>

#include <functional>

namespace {

class ClusterQueueTest : public oxQueueTest {
protected:
    void TearDown() override
    {
        cluster.logout();
        oxQueueTest::TearDown();
    }

    QString folder(const QString& queue = {}) const
    {
        return QDir(QString::fromStdString(spool.path())).filePath(queue);
    }
    int jobsIn(const QString& queue = {}) const
    {
        return QDir(folder(queue))
            .entryList({QStringLiteral("job-*")}, QDir::Dirs | QDir::NoDotAndDotDot)
            .size();
    }
    // Presses the cluster button. When a queue menu opens, beforeChoice runs, the action of
    // queue (if any) is triggered and the menu closes; true when a menu opened.
    bool send(const QString& queue = {}, const std::function<void()>& beforeChoice = {})
    {
        bool menuSeen = false;
        QTimer::singleShot(0, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            menuSeen = true;
            for (QAction* action : menu->actions())
                offered << action->text();
            if (beforeChoice)
                beforeChoice();
            for (QAction* action : menu->actions()) {
                if (action->text() == queue)
                    action->trigger();
            }
            menu->close();
        });
        window()->_sendToClusterQueue->click();
        QCoreApplication::processEvents();
        return menuSeen;
    }
    QString lastQuestion() const
    {
        const auto& history = oxDialogResponder::history();
        return history.isEmpty() ? QString() : history.back().question;
    }

    oxTempDir spool;
    QStringList offered;
};

} // namespace

TEST_F(ClusterQueueTest, LoggedOutUserIsToldToLogIn)
{
    start();
    window()->_sendToClusterQueue->click();
    ASSERT_EQ(oxDialogResponder::history().size(), 1);
    EXPECT_EQ(oxDialogResponder::history().front().title, oxPlatform::getAppVersionName());
    EXPECT_EQ(lastQuestion(), QStringLiteral("Please login to the cluster manager module"));
    EXPECT_TRUE(senders().empty());

    // The service refuses on its own too, and says how to log in.
    expectLog(oxLog::Error, "Can't create a cluster job: not logged in to a cluster spool folder "
                            "(set the preference \"Cluster Spool Folder\" or start oxlin with "
                            "--cluster-spool DIR).");
    EXPECT_FALSE(cluster.createRenderJob(nullptr, QString()));

    // Logged in by the preference.
    oxPreferences::getData().set(oxClusterManagerService::kSpoolPreference, spool.path());
    oxClusterManagerService configured;
    oxPreferences::getData().remove(oxClusterManagerService::kSpoolPreference);
    EXPECT_TRUE(configured.isLoggedIn());
}

TEST_F(ClusterQueueTest, JobLandsInTheSpoolFolderWithTheSceneState)
{
    start();
    ASSERT_TRUE(cluster.login(spool.path()));
    window()->getCurrentPreset().filename = "/out/cluster.png";
    const std::string sceneFile = oxScene::current().fileName;
    oxController::setModified(true);

    // No queue: no menu, the job goes into the spool folder itself, and nothing
    // half-written is left beside it.
    EXPECT_FALSE(send());
    EXPECT_EQ(senders(), (std::vector<std::string>{"Send to cluster queue"}));
    ASSERT_EQ(jobsIn(), 1);
    EXPECT_EQ(QDir(folder()).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);

    // The scene state loads as a project, with the plug-in's settings in its record.
    const QDir job(QString::fromStdString(cluster.getLastJobFolder()));
    oxMessage record;
    ASSERT_NE(oxSceneIO::load(job.filePath("scene.oxp").toStdString(), &record), nullptr);
    std::string filename;
    EXPECT_TRUE(record.get("MovieExport Filename", filename));
    EXPECT_EQ(filename, "/out/cluster.png");
    oxMessage jobRecord;
    EXPECT_TRUE(oxMessageRW::read(jobRecord, job.filePath("job.xml").toUtf8().constData(), ""));
    EXPECT_TRUE(jobRecord.has("queue"));

    // The open scene keeps its own file and state.
    EXPECT_EQ(oxScene::current().fileName, sceneFile);
    EXPECT_TRUE(oxController::isModified());
    oxController::setModified(false);

    // With one queue it takes the job, still without a menu.
    ASSERT_TRUE(QDir(folder()).mkpath(QStringLiteral("render")));
    EXPECT_FALSE(send());
    EXPECT_EQ(jobsIn(QStringLiteral("render")), 1);
    EXPECT_TRUE(oxDialogResponder::history().isEmpty());
}

TEST_F(ClusterQueueTest, SeveralQueuesAreOfferedInAMenu)
{
    start();
    for (const char* queue : {"beta", "alpha"})
        ASSERT_TRUE(QDir(folder()).mkpath(QString::fromLatin1(queue)));
    ASSERT_TRUE(cluster.login(spool.path()));

    EXPECT_TRUE(send(QStringLiteral("beta")));
    EXPECT_EQ(offered, (QStringList{QStringLiteral("alpha"), QStringLiteral("beta")}));
    EXPECT_EQ(jobsIn(QStringLiteral("beta")), 1);
    EXPECT_EQ(jobsIn(QStringLiteral("alpha")), 0);

    // Closing the menu creates no job, though the notice went out before it opened.
    senders().clear();
    EXPECT_TRUE(send());
    EXPECT_EQ(senders().size(), 1u);
    EXPECT_EQ(jobsIn(QStringLiteral("alpha")) + jobsIn(QStringLiteral("beta")), 1);

    // A queue that vanished while the menu was open refuses the job, and the user is told.
    expectLog(oxLog::Error, "Can't create a cluster job: the spool folder '" +
                                QDir(folder()).absolutePath().toStdString() +
                                "' has no queue 'alpha'.");
    EXPECT_TRUE(send(QStringLiteral("alpha"),
                     [&] { QDir(folder(QStringLiteral("alpha"))).removeRecursively(); }));
    EXPECT_EQ(lastQuestion(), QStringLiteral("Unable to create job for cluster queue"));
}

TEST(ClusterSpoolOptionTest, UnusableSpoolFolderStopsTheHost)
{
    // A file where the spool folder should be: oxlin names it and exits before loading.
    oxTempDir dir;
    const std::string file = dir.file("spool");
    ASSERT_TRUE(oxFile::writeAtomically(file, "not a folder"));
    const oxProcessResult result =
        oxRunProcess(std::string(OX_TEST_BINARY_DIR) + "/bin/oxlin",
                     {"--no-gui", "--prefs-dir", dir.path(), "--cluster-spool", file});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find("Can't use '" + file + "' as the cluster spool folder"),
              std::string::npos)
        << result.err;
}

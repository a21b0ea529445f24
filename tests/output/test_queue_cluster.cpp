// The cluster hand-off on a real one-node Slurm cluster: the button sends the scene state as
// one job array, the tasks render exactly the job's files, jobs are cancelled, and a
// controller that stops answers means logged out.

#include "oxQueueTestSupport.h"
#include "oxSlurmTestCluster.h"

#include "oxMessageRW.h"
#include "oxPlatform.h"
#include "oxRenderPasses.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QDirIterator>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>

namespace {

using JobState = oxClusterManagerService::JobState;

class ClusterQueueTest : public oxQueueTest {
protected:
    // Starts Slurm with partitions and the host; false (the test then skips) when Slurm
    // can't run here.
    bool startCluster(const QStringList& partitions = {QStringLiteral("render")})
    {
        skipReason = slurm.start(partitions);
        if (!skipReason.empty())
            return false;
        cluster.setJobFolder(jobs.path());
        cluster.setRenderProgram(std::string(OX_TEST_BINARY_DIR) + "/bin/oxlin");
        start();
        oxRenderSettingsPreset& preset = window()->getCurrentPreset();
        preset.filename = output.file("showroom.png");
        preset.pixel_width = 32.0f;
        preset.pixel_height = 18.0f;
        return true;
    }
    // Presses the cluster button; in a queue menu the action of queue (if any) is triggered.
    // True when a menu opened.
    bool send(const QString& queue = {})
    {
        bool menuSeen = false;
        QTimer::singleShot(0, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            menuSeen = true;
            offered.clear();
            for (QAction* action : menu->actions())
                offered << action->text();
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
    oxClusterManagerService::JobStatus waitForEnd(const std::string& folder)
    {
        oxClusterManagerService::JobStatus status;
        oxSlurmTestCluster::waitFor(
            [&] {
                status = cluster.getJobStatus(folder);
                return status.state == JobState::Completed || status.state == JobState::Failed;
            },
            180000);
        return status;
    }
    static QStringList filesBelow(const std::string& folder)
    {
        QStringList files;
        QDirIterator it(QString::fromStdString(folder), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            files << QDir::cleanPath(it.next());
        files.sort();
        return files;
    }

    oxSlurmTestCluster slurm;
    std::string skipReason;
    oxTempDir jobs;
    oxTempDir output;
    QStringList offered;
};

} // namespace

TEST_F(ClusterQueueTest, ConfiguratorJobRendersExactlyItsFilesAsOneArray)
{
    if (!startCluster())
        GTEST_SKIP() << "no Slurm cluster: " << skipReason;
    // The configurator job of the example, small: paint and rim variants crossed, two passes.
    oxRenderSettingsPreset& preset = window()->getCurrentPreset();
    preset.variantSetsUsed = true;
    preset.variantSets = {oxRenderAutomationVariantSetGroup("Paint"),
                          oxRenderAutomationVariantSetGroup("Rims")};
    preset.variantSets[0].setActiveVariantSetNames({"Paint Red", "Paint Blue"});
    preset.variantSets[1].setActiveVariantSetNames({"Rims Sport", "Rims Classic"});
    preset.renderpasses = true;
    for (const oxRenderPassFlagInfo& info : kPassFlags)
        preset.passFlag(info.flag) = info.flag == PassFlag::Beauty || info.flag == PassFlag::Depth;
    oxRenderParameter::setImageSamples(1);
    // The tasks are kept to the cluster hosts: here the one node.
    char host[256] = {};
    ::gethostname(host, sizeof(host) - 1);
    window()->_cluster->setChecked(true);
    window()->_cluster_hosts->setText(QString::fromLocal8Bit(host).section('.', 0, 0));
    const std::string sceneFile = oxScene::current().fileName;

    oxCallTrace::setEnabled(true);
    EXPECT_FALSE(send()); // one queue: no menu
    EXPECT_EQ(senders(), (std::vector<std::string>{"Send to cluster queue"}));
    const std::string folder = cluster.getLastJobFolder();
    ASSERT_FALSE(folder.empty());
    EXPECT_EQ(oxScene::current().fileName, sceneFile);

    oxMessage record;
    ASSERT_TRUE(oxMessageRW::read(record, (folder + "/job.xml").c_str(), ""));
    std::string id;
    int tasks = 0;
    std::vector<std::string> listed;
    EXPECT_TRUE(record.get("slurmJobId", id));
    EXPECT_TRUE(record.get("taskCount", tasks));
    EXPECT_TRUE(record.get("files", listed));
    EXPECT_EQ(tasks, 4); // 2 paints x 2 rims
    EXPECT_EQ(listed.size(), 8u);

    const oxClusterManagerService::JobStatus status = waitForEnd(folder);
    ASSERT_EQ(status.state, JobState::Completed) << status.failure;
    EXPECT_EQ(status.id, id);
    EXPECT_EQ(status.tasksDone, 4);
    QStringList expected;
    for (const std::string& file : listed)
        expected << QDir::cleanPath(QString::fromStdString(file));
    expected.sort();
    EXPECT_EQ(filesBelow(output.path()), expected);
    queue->refreshClusterJobs();
    EXPECT_EQ(queue->clusterJobList()->topLevelItem(0)->text(2), QStringLiteral("Completed"));
    EXPECT_EQ(queue->clusterJobList()->topLevelItem(0)->text(3), QStringLiteral("4/4"));

    // Rendered on this machine in one go, the job gives the same bytes.
    std::vector<std::string> fromCluster;
    for (const std::string& file : listed)
        fromCluster.push_back(oxReadFile(file));
    const oxProcessResult local = oxRunProcess(
        std::string(OX_TEST_BINARY_DIR) + "/bin/oxlin",
        {"--no-gui", "--prefs-dir", jobs.path(), folder + "/scene.oxp", "--render", "--overwrite"},
        120000);
    ASSERT_EQ(local.exitCode, 0) << local.err;
    for (size_t i = 0; i < listed.size(); ++i)
        EXPECT_TRUE(oxReadFile(listed[i]) == fromCluster[i]) << listed[i];
}

TEST_F(ClusterQueueTest, QueuesArePartitionsAndJobsAreCancelledOrRefusedWhole)
{
    if (!startCluster({QStringLiteral("render"), QStringLiteral("held:DOWN"),
                       QStringLiteral("closed:INACTIVE")}))
        GTEST_SKIP() << "no Slurm cluster: " << skipReason;

    // A partition whose nodes never run anything holds the job pending until cancelled.
    EXPECT_TRUE(send(QStringLiteral("held")));
    EXPECT_EQ(offered, (QStringList{QStringLiteral("render"), QStringLiteral("held"),
                                    QStringLiteral("closed")}));
    const std::string folder = cluster.getLastJobFolder();
    ASSERT_FALSE(folder.empty());
    // The queue dock shows it, and cancels it.
    queue->refreshClusterJobs();
    QTreeWidget* list = queue->clusterJobList();
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(list->topLevelItem(0)->text(2), QStringLiteral("Pending"));
    EXPECT_EQ(list->topLevelItem(0)->text(3), QStringLiteral("0/1"));
    list->setCurrentItem(list->topLevelItem(0));
    queue->getMainWidget()->findChild<QPushButton*>(QStringLiteral("_cancelClusterJob"))->click();
    EXPECT_EQ(list->topLevelItem(0)->text(2), QStringLiteral("Cancelled"));
    EXPECT_EQ(cluster.getJobStatus(folder).state, JobState::Cancelled);
    const oxSlurm::ArrayState array = oxSlurm::arrayState(cluster.getJobStatus(folder).id);
    EXPECT_EQ(array.pending + array.running, 0);

    // Cluster hosts the cluster doesn't have: no job.
    window()->_cluster->setChecked(true);
    window()->_cluster_hosts->setText(QStringLiteral("nowhere"));
    expectLog(oxLog::Error, "Can't create a cluster job: the cluster has no node 'nowhere' "
                            "(check the cluster hosts of the render settings).");
    EXPECT_TRUE(send(QStringLiteral("render")));
    EXPECT_EQ(lastQuestion(), QStringLiteral("Unable to create job for cluster queue"));
    window()->_cluster->setChecked(false);

    // A partition that takes no jobs: one message, and no job folder is left behind.
    const QStringList before =
        QDir(QString::fromStdString(jobs.path()))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    allowLogPrefix("Can't create a cluster job in '" + jobs.path() + "': Slurm refused the job (");
    EXPECT_TRUE(send(QStringLiteral("closed")));
    EXPECT_EQ(lastQuestion(), QStringLiteral("Unable to create job for cluster queue"));
    EXPECT_EQ(QDir(QString::fromStdString(jobs.path()))
                  .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              before);
    EXPECT_EQ(cluster.getLastJobFolder(), folder);
}

TEST_F(ClusterQueueTest, StoppedControllerMeansLoggedOut)
{
    if (!startCluster())
        GTEST_SKIP() << "no Slurm cluster: " << skipReason;
    EXPECT_TRUE(cluster.isLoggedIn());
    EXPECT_EQ(cluster.getQueueNames(), QStringList{QStringLiteral("render")});

    slurm.stopController();
    window()->_sendToClusterQueue->click();
    const std::string problem = cluster.getLoginProblem();
    EXPECT_FALSE(problem.empty());
    expectLog(oxLog::Warning,
              "Cluster manager: logged out, no Slurm controller answers (" + problem +
                  "). Check that slurmctld runs and that SLURM_CONF or the preference "
                  "\"Cluster Slurm Configuration\" names its configuration.");
    // The warning names the reason.
    EXPECT_EQ(lastQuestion().toStdString(),
              "Please login to the cluster manager module " + problem);
    EXPECT_TRUE(senders().empty());
    EXPECT_TRUE(cluster.getQueueNames().isEmpty());
}

TEST_F(ClusterQueueTest, FailedTasksShowTheEndOfTheirLogs)
{
    if (!startCluster())
        GTEST_SKIP() << "no Slurm cluster: " << skipReason;
    // Nodes without the program: every task fails, and its log says why.
    cluster.setRenderProgram(jobs.file("missing/oxlin"));
    EXPECT_FALSE(send());
    const oxClusterManagerService::JobStatus status = waitForEnd(cluster.getLastJobFolder());
    EXPECT_EQ(status.state, JobState::Failed);
    EXPECT_EQ(status.tasksDone, 0);
    EXPECT_EQ(status.failure.rfind("Task 0:\n", 0), 0u) << status.failure;
    EXPECT_NE(status.failure.find(jobs.file("missing/oxlin")), std::string::npos) << status.failure;
    queue->refreshClusterJobs();
    EXPECT_TRUE(queue->clusterJobList()->topLevelItem(0)->text(2).startsWith("Failed: Task 0:"));
}

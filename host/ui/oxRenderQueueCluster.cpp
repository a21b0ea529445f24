// The render queue's list of cluster jobs: what the cluster manager submitted in this session,
// with the state Slurm and the tasks report, and Cancel.

#include "oxRenderQueue.h"

#include "oxClusterManagerService.h"
#include "oxKernelServiceFactory.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QTreeWidget>

#include <array>

namespace {

// How often the shown list asks Slurm.
constexpr int kClusterPollMs = 3000;

using JobState = oxClusterManagerService::JobState;

struct ClusterStateEntry {
    JobState state;
    const char* name;
};
constexpr std::array<ClusterStateEntry, 6> kClusterStates{{
    {JobState::Pending, "Pending"},
    {JobState::Running, "Running"},
    {JobState::Completed, "Completed"},
    {JobState::Failed, "Failed"},
    {JobState::Cancelled, "Cancelled"},
    {JobState::Unknown, "Unknown"},
}};

QString clusterStateName(JobState state)
{
    for (const ClusterStateEntry& entry : kClusterStates) {
        if (entry.state == state)
            return QString::fromLatin1(entry.name);
    }
    return QString();
}

oxClusterManagerService* clusterManager()
{
    return oxKernelServiceFactory::the()->getService<oxClusterManagerService>();
}

} // namespace

void oxRenderQueue::createClusterList(QWidget* parent)
{
    auto* label = new QLabel(tr("Cluster jobs"), parent);
    m_clusterList = new QTreeWidget(parent);
    m_clusterList->setObjectName(QStringLiteral("_clusterJobs"));
    m_clusterList->setRootIsDecorated(false);
    m_clusterList->setHeaderLabels({tr("Job"), tr("Slurm Job"), tr("State"), tr("Tasks")});
    m_clusterList->header()->setStretchLastSection(true);
    m_clusterList->setMinimumHeight(90);
    auto* cancel = new QPushButton(tr("Cancel Cluster Job"), parent);
    cancel->setObjectName(QStringLiteral("_cancelClusterJob"));
    connect(cancel, &QPushButton::clicked, this, [this] {
        cancelClusterJob(m_clusterList->indexOfTopLevelItem(m_clusterList->currentItem()));
    });
    auto* buttons = new QHBoxLayout();
    buttons->addStretch(1);
    buttons->addWidget(cancel);
    auto* layout = static_cast<QBoxLayout*>(parent->layout());
    layout->addWidget(label);
    layout->addWidget(m_clusterList, 1);
    layout->addLayout(buttons);

    m_clusterTimer.setInterval(kClusterPollMs);
    connect(&m_clusterTimer, &QTimer::timeout, this, [this] {
        if (m_widget && m_widget->isVisible())
            refreshClusterJobs();
    });
    m_clusterTimer.start();
}

void oxRenderQueue::refreshClusterJobs()
{
    oxClusterManagerService* cluster = clusterManager();
    m_clusterFolders = cluster ? cluster->getJobFolders() : std::vector<std::string>();
    while (m_clusterList->topLevelItemCount() > int(m_clusterFolders.size()))
        delete m_clusterList->takeTopLevelItem(m_clusterList->topLevelItemCount() - 1);
    for (int row = 0; row < int(m_clusterFolders.size()); ++row) {
        const oxClusterManagerService::JobStatus status =
            cluster->getJobStatus(m_clusterFolders[size_t(row)]);
        QTreeWidgetItem* item = m_clusterList->topLevelItem(row);
        if (!item) {
            item = new QTreeWidgetItem();
            m_clusterList->addTopLevelItem(item);
        }
        item->setText(0, QString::fromStdString(status.folder).section('/', -1));
        item->setText(1, QString::fromStdString(status.id));
        item->setText(2, tr(clusterStateName(status.state).toUtf8().constData()));
        item->setText(3, QStringLiteral("%1/%2").arg(status.tasksDone).arg(status.tasksTotal));
        // The failing tasks' logs, where the user looks for the reason.
        const QString failure = QString::fromStdString(status.failure).trimmed();
        item->setToolTip(0, QString::fromStdString(status.folder));
        item->setToolTip(2, failure);
        if (status.state == JobState::Failed && !failure.isEmpty())
            item->setText(2, item->text(2) + QStringLiteral(": ") +
                                 failure.section('\n', 0, 1).replace('\n', ' '));
    }
}

bool oxRenderQueue::cancelClusterJob(int row)
{
    oxClusterManagerService* cluster = clusterManager();
    if (!cluster || row < 0 || row >= int(m_clusterFolders.size()))
        return false;
    const bool cancelled = cluster->cancelJob(m_clusterFolders[size_t(row)]);
    refreshClusterJobs();
    return cancelled;
}

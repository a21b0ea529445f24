#include "oxRenderQueue.h"

#include "QOXDockWindowManager.h"
#include "oxCallTrace.h"
#include "oxController.h"
#include "oxFileIO.h"
#include "oxLog.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <string>

namespace {

oxRenderQueue* gRenderQueue = nullptr;

void addRenderJobCB(oxMessage& message)
{
    if (gRenderQueue)
        gRenderQueue->addJob(message);
}

// A typed value of the job for its row; a missing or differently typed value shows nothing.
template <typename T>
bool jobValue(const oxMessage& job, const char* key, T& value)
{
    const boost::any& stored = job.get(key);
    if (stored.empty() || !oxMessage::sameType(stored.type(), typeid(T)))
        return false;
    value = boost::any_cast<T>(stored);
    return true;
}

QString jobText(const oxMessage& job, const char* key)
{
    std::string text;
    return jobValue(job, key, text) ? QString::fromStdString(text) : QString();
}

QString jobNumber(const oxMessage& job, const char* key)
{
    int number = 0;
    return jobValue(job, key, number) ? QString::number(number) : QString();
}

} // namespace

oxRenderQueue::oxRenderQueue() : oxModuleBase("RenderQueue", "Rendering", 0, nullptr)
{
    gRenderQueue = this;
    m_widget = new QWidget();
    m_widget->setObjectName(QStringLiteral("oxRenderQueue"));
    m_list = new QTreeWidget(m_widget);
    m_list->setObjectName(QStringLiteral("_jobs"));
    m_list->setRootIsDecorated(false);
    m_list->setHeaderLabels(
        {tr("Output"), tr("Size"), tr("Frames"), tr("Renders"), tr("Files"), tr("Cluster Hosts")});
    m_list->header()->setStretchLastSection(true);

    auto* remove = new QPushButton(tr("Remove"), m_widget);
    remove->setObjectName(QStringLiteral("_removeJob"));
    auto* clear = new QPushButton(tr("Clear"), m_widget);
    clear->setObjectName(QStringLiteral("_clearJobs"));
    auto* settings = new QPushButton(tr("Load Settings"), m_widget);
    settings->setObjectName(QStringLiteral("_loadJobSettings"));
    settings->setToolTip(tr("Puts the selected job's settings back into the render settings"));
    connect(remove, &QPushButton::clicked, this,
            [this] { removeJob(m_list->indexOfTopLevelItem(m_list->currentItem())); });
    connect(clear, &QPushButton::clicked, this, &oxRenderQueue::clearJobs);
    connect(settings, &QPushButton::clicked, this,
            [this] { returnJobSettings(m_list->indexOfTopLevelItem(m_list->currentItem())); });

    auto* buttons = new QHBoxLayout();
    buttons->addWidget(settings);
    buttons->addStretch(1);
    buttons->addWidget(remove);
    buttons->addWidget(clear);
    auto* layout = new QVBoxLayout(m_widget);
    layout->addWidget(m_list);
    layout->addLayout(buttons);

    if (QOXDockWindowManager* manager = oxController::getDockWindowManager())
        m_dock =
            manager->add(QString::fromLatin1(kDockName), tr("Render Queue"), m_widget, QString(),
                         QStringLiteral("StartRendering"), tr("Render Queue"), 0, false, nullptr);
    oxController::addCB(kAddJobCallback, addRenderJobCB);
}

oxRenderQueue::~oxRenderQueue()
{
    oxController::subCB(kAddJobCallback, addRenderJobCB);
    delete m_widget.data();
    if (gRenderQueue == this)
        gRenderQueue = nullptr;
}

oxRenderQueue* oxRenderQueue::instance() { return gRenderQueue; }

QWidget* oxRenderQueue::getMainWidget() { return m_widget; }

QOXDockWidget* oxRenderQueue::dockWidget() const { return m_dock; }

void oxRenderQueue::addJob(const oxMessage& job)
{
    oxCallTrace::record("oxRenderQueue::addJob",
                        jobText(job, "MovieExport Filename").toStdString());
    m_jobs.push_back(job);
    addRow(job);
    oxLog::info("Render queue: added job %d ('%s').", jobCount(),
                jobText(job, "MovieExport Filename").toUtf8().constData());
}

void oxRenderQueue::addRow(const oxMessage& job)
{
    float width = 0.0f;
    float height = 0.0f;
    const bool sized = jobValue(job, "ImageExport floatwidth", width) &&
                       jobValue(job, "ImageExport floatheight", height);
    bool animation = false;
    jobValue(job, "MovieExport Render Animation", animation);
    const QString frames = animation
                               ? jobNumber(job, "MovieExport start frame") + QStringLiteral("-") +
                                     jobNumber(job, "MovieExport stop frame")
                               : QString();
    auto* item = new QTreeWidgetItem(
        {jobText(job, "MovieExport Filename"),
         sized ? QStringLiteral("%1 x %2").arg(double(width)).arg(double(height)) : QString(),
         frames, jobNumber(job, "ImageExport statistics total renders"),
         // The job record spells its file count key so.
         jobNumber(job, "ImageExport statistics toal files"),
         jobText(job, "Export cluster hosts")});
    m_list->addTopLevelItem(item);
}

void oxRenderQueue::removeJob(int index)
{
    if (index < 0 || index >= jobCount())
        return;
    oxCallTrace::record("oxRenderQueue::removeJob", std::to_string(index));
    m_jobs.erase(m_jobs.begin() + index);
    delete m_list->takeTopLevelItem(index);
}

void oxRenderQueue::clearJobs()
{
    oxCallTrace::record("oxRenderQueue::clearJobs");
    m_jobs.clear();
    m_list->clear();
}

bool oxRenderQueue::returnJobSettings(int index)
{
    if (index < 0 || index >= jobCount())
        return false;
    // The receiver may fill the message; the queue's own record stays as it came.
    oxMessage settings = m_jobs[size_t(index)];
    return oxController::call(kReturnSettingsCallback, settings, 0);
}

int oxRenderQueue::receivedMessage(oxMessage& message)
{
    if (message.id() == oxController::MessageNewScene) {
        oxMessage clear;
        oxController::call("clearRQPresets", clear, 0);
        return 0;
    }
    if (message.id() != oxController::MessageProjectReadWrite)
        return 0;
    oxMessage& project = oxFileIO::getProject();
    bool loading = false;
    if (!jobValue(project, "_loading", loading))
        return 0;
    if (!loading) {
        oxMessage save;
        oxController::call("saveRenderJobPresets", save, 0);
        return 0;
    }
    // A project without job presets has none: the previous scene's must not stay.
    std::string text;
    oxMessage load;
    if (jobValue(project, kJobPresetsAttribute, text)) {
        load.set("presets", text, true);
        oxController::call("loadRenderJobPresets", load, 0);
    } else {
        oxController::call("clearRQPresets", load, 0);
    }
    return 0;
}

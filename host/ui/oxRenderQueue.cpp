#include "oxRenderQueue.h"

#include "QOXDockWindowManager.h"
#include "oxCallTrace.h"
#include "oxController.h"
#include "oxFileIO.h"
#include "oxLog.h"

#include "oxMessageRW.h"

#include <QDropEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
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

// Keys a job keeps beside its record when the queue is stored in the project.
constexpr const char* kPresetKey = "RenderQueue Preset";
constexpr const char* kStateKey = "RenderQueue State";
constexpr const char* kReasonKey = "RenderQueue Reason";

struct StateEntry {
    oxRenderQueue::State state;
    const char* name;
};
constexpr std::array<StateEntry, 5> kStates{{
    {oxRenderQueue::State::Waiting, "Waiting"},
    {oxRenderQueue::State::Rendering, "Rendering"},
    {oxRenderQueue::State::Done, "Done"},
    {oxRenderQueue::State::Failed, "Failed"},
    {oxRenderQueue::State::Cancelled, "Cancelled"},
}};

// The job list: rows are dragged to a new place, and the queue moves the job along.
class JobList : public QTreeWidget {
public:
    JobList(QWidget* parent, oxRenderQueue& queue) : QTreeWidget(parent), m_queue(queue)
    {
        setDragDropMode(QAbstractItemView::InternalMove);
        setSelectionMode(QAbstractItemView::SingleSelection);
    }

protected:
    void dropEvent(QDropEvent* event) override
    {
        const int from = indexOfTopLevelItem(currentItem());
        QTreeWidgetItem* target = itemAt(event->pos());
        int to = target ? indexOfTopLevelItem(target) : topLevelItemCount() - 1;
        if (target && dropIndicatorPosition() == QAbstractItemView::BelowItem && to < from)
            ++to;
        else if (target && dropIndicatorPosition() == QAbstractItemView::AboveItem && to > from)
            --to;
        // The queue rebuilds the rows; Qt's own move would change only the view.
        event->setDropAction(Qt::IgnoreAction);
        event->accept();
        if (from >= 0)
            m_queue.moveJob(from, to);
    }

private:
    oxRenderQueue& m_queue;
};

} // namespace

oxRenderQueue::oxRenderQueue() : oxModuleBase("RenderQueue", "Rendering", 0, nullptr)
{
    gRenderQueue = this;
    m_widget = new QWidget();
    m_widget->setObjectName(QStringLiteral("oxRenderQueue"));
    m_list = new JobList(m_widget, *this);
    m_list->setObjectName(QStringLiteral("_jobs"));
    m_list->setRootIsDecorated(false);
    m_list->setHeaderLabels({tr("Output"), tr("State"), tr("Size"), tr("Frames"), tr("Renders"),
                             tr("Files"), tr("Cluster Hosts")});
    m_list->header()->setStretchLastSection(true);
    // The state (with a failure's reason) says the most and gets the room.
    m_list->setColumnWidth(0, 160);
    m_list->setColumnWidth(1, 260);
    m_list->setMinimumHeight(150);

    auto button = [this](const QString& text, const char* name) {
        auto* pushButton = new QPushButton(text, m_widget);
        pushButton->setObjectName(QString::fromLatin1(name));
        return pushButton;
    };
    m_start = button(tr("Start"), "_startQueue");
    m_pause = button(tr("Pause"), "_pauseQueue");
    m_pause->setToolTip(tr("The running job finishes; the next ones wait"));
    m_stop = button(tr("Stop"), "_stopQueue");
    m_stop->setToolTip(tr("Cancels the running job"));
    QPushButton* requeue = button(tr("Render Again"), "_requeueJob");
    QPushButton* remove = button(tr("Remove"), "_removeJob");
    QPushButton* clear = button(tr("Clear"), "_clearJobs");
    QPushButton* settings = button(tr("Load Settings"), "_loadJobSettings");
    settings->setToolTip(tr("Puts the selected job's settings back into the render settings"));
    auto selected = [this] { return m_list->indexOfTopLevelItem(m_list->currentItem()); };
    connect(m_start, &QPushButton::clicked, this, &oxRenderQueue::start);
    connect(m_pause, &QPushButton::clicked, this, &oxRenderQueue::pause);
    connect(m_stop, &QPushButton::clicked, this, &oxRenderQueue::stop);
    connect(requeue, &QPushButton::clicked, this, [this, selected] { requeueJob(selected()); });
    connect(remove, &QPushButton::clicked, this, [this, selected] { removeJob(selected()); });
    connect(clear, &QPushButton::clicked, this, &oxRenderQueue::clearJobs);
    connect(settings, &QPushButton::clicked, this,
            [this, selected] { returnJobSettings(selected()); });

    auto* run = new QHBoxLayout();
    run->addWidget(m_start);
    run->addWidget(m_pause);
    run->addWidget(m_stop);
    run->addStretch(1);
    auto* edit = new QHBoxLayout();
    edit->addWidget(settings);
    edit->addWidget(requeue);
    edit->addStretch(1);
    edit->addWidget(remove);
    edit->addWidget(clear);
    auto* layout = new QVBoxLayout(m_widget);
    layout->addLayout(run);
    layout->addWidget(m_list, 3);
    layout->addLayout(edit);
    createClusterList(m_widget);
    updateButtons();

    m_progressTimer.setInterval(250);
    connect(&m_progressTimer, &QTimer::timeout, this, &oxRenderQueue::pollProgress);

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

QString oxRenderQueue::stateName(State state)
{
    for (const StateEntry& entry : kStates) {
        if (entry.state == state)
            return QString::fromLatin1(entry.name);
    }
    return QString();
}

QWidget* oxRenderQueue::getMainWidget() { return m_widget; }

QOXDockWidget* oxRenderQueue::dockWidget() const { return m_dock; }

std::string oxRenderQueue::newPresetName() const
{
    // Names stay unique within the queue, also after removals and a project load.
    for (int number = jobCount() + 1;; ++number) {
        const std::string name = "Render Queue Job " + std::to_string(number);
        const bool taken = std::any_of(m_jobs.begin(), m_jobs.end(),
                                       [&](const Job& job) { return job.preset == name; });
        if (!taken)
            return name;
    }
}

void oxRenderQueue::addJob(const oxMessage& record)
{
    oxCallTrace::record("oxRenderQueue::addJob",
                        jobText(record, "MovieExport Filename").toStdString());
    Job job;
    job.record = record;
    // The job's settings are those of the moment it arrives: whoever renders keeps them.
    oxMessage keep;
    const std::string name = newPresetName();
    keep.set("preset", name);
    if (oxController::call("addRQPreset", keep, 0))
        job.preset = name;
    m_jobs.push_back(job);
    addRow(m_jobs.back());
    updateButtons();
    oxController::setModified(true);
    oxLog::info("Render queue: added job %d ('%s').", jobCount(),
                jobText(record, "MovieExport Filename").toUtf8().constData());
}

void oxRenderQueue::addRow(const Job& job)
{
    auto* item = new QTreeWidgetItem();
    item->setFlags(item->flags() | Qt::ItemIsDragEnabled);
    item->setFlags(item->flags() & ~Qt::ItemIsDropEnabled);
    m_list->addTopLevelItem(item);
    updateRow(int(&job - m_jobs.data()));
}

void oxRenderQueue::updateRow(int index)
{
    QTreeWidgetItem* item = m_list->topLevelItem(index);
    if (!item)
        return;
    const Job& entry = m_jobs[size_t(index)];
    const oxMessage& job = entry.record;
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
    QString state = tr(stateName(entry.state).toUtf8().constData());
    if (entry.state == State::Rendering && entry.filesTotal > 0)
        state += QStringLiteral(" %1/%2").arg(entry.filesDone).arg(entry.filesTotal);
    if (entry.state == State::Failed && !entry.reason.empty())
        state += QStringLiteral(": ") + QString::fromStdString(entry.reason);
    // The file name shows; the whole path is the tooltip.
    const QString output = jobText(job, "MovieExport Filename");
    const QStringList texts{
        output.section(QLatin1Char('/'), -1), state,
        sized ? QStringLiteral("%1 x %2").arg(double(width)).arg(double(height)) : QString(),
        frames, jobNumber(job, "ImageExport statistics total renders"),
        // The job record spells its file count key so.
        jobNumber(job, "ImageExport statistics toal files"), jobText(job, "Export cluster hosts")};
    for (int column = 0; column < texts.size(); ++column)
        item->setText(column, texts[column]);
    item->setToolTip(0, output);
    item->setToolTip(1, QString::fromStdString(entry.reason));
}

void oxRenderQueue::updateButtons()
{
    const bool waiting = std::any_of(m_jobs.begin(), m_jobs.end(),
                                     [](const Job& job) { return job.state == State::Waiting; });
    m_start->setEnabled(!m_running && waiting);
    m_pause->setEnabled(m_running && !m_paused);
    m_stop->setEnabled(m_running);
}

void oxRenderQueue::removeJob(int index)
{
    if (index < 0 || index >= jobCount() || index == m_renderingJob)
        return;
    oxCallTrace::record("oxRenderQueue::removeJob", std::to_string(index));
    if (!m_jobs[size_t(index)].preset.empty()) {
        oxMessage forget;
        forget.set("preset", m_jobs[size_t(index)].preset);
        oxController::call("deleteRQPreset", forget, 0);
    }
    m_jobs.erase(m_jobs.begin() + index);
    delete m_list->takeTopLevelItem(index);
    if (m_renderingJob > index)
        --m_renderingJob;
    updateButtons();
    oxController::setModified(true);
}

void oxRenderQueue::moveJob(int from, int to)
{
    if (from < 0 || from >= jobCount())
        return;
    to = std::clamp(to, 0, jobCount() - 1);
    if (from == to)
        return;
    oxCallTrace::record("oxRenderQueue::moveJob", std::to_string(from) + " " + std::to_string(to));
    Job moved = std::move(m_jobs[size_t(from)]);
    m_jobs.erase(m_jobs.begin() + from);
    m_jobs.insert(m_jobs.begin() + to, std::move(moved));
    delete m_list->takeTopLevelItem(from);
    auto* item = new QTreeWidgetItem();
    item->setFlags((item->flags() | Qt::ItemIsDragEnabled) & ~Qt::ItemIsDropEnabled);
    m_list->insertTopLevelItem(to, item);
    updateRow(to);
    m_list->setCurrentItem(item);
    if (m_renderingJob == from)
        m_renderingJob = to;
    else if (from < m_renderingJob && to >= m_renderingJob)
        --m_renderingJob;
    else if (from > m_renderingJob && to <= m_renderingJob && m_renderingJob >= 0)
        ++m_renderingJob;
    oxController::setModified(true);
}

void oxRenderQueue::clearJobs()
{
    oxCallTrace::record("oxRenderQueue::clearJobs");
    for (int index = jobCount() - 1; index >= 0; --index)
        removeJob(index);
}

void oxRenderQueue::forgetJobs()
{
    m_jobs.clear();
    m_list->clear();
    updateButtons();
}

void oxRenderQueue::requeueJob(int index)
{
    if (index < 0 || index >= jobCount() || index == m_renderingJob)
        return;
    Job& job = m_jobs[size_t(index)];
    job.state = State::Waiting;
    job.reason.clear();
    updateRow(index);
    updateButtons();
}

bool oxRenderQueue::returnJobSettings(int index)
{
    if (index < 0 || index >= jobCount())
        return false;
    // The receiver may fill the message; the queue's own record stays as it came.
    oxMessage settings = m_jobs[size_t(index)].record;
    return oxController::call(kReturnSettingsCallback, settings, 0);
}

void oxRenderQueue::saveToProject(oxMessage& project) const
{
    std::vector<std::string> jobs;
    for (const Job& job : m_jobs) {
        oxMessage stored = job.record;
        stored.set(kPresetKey, job.preset);
        // A job interrupted by the save renders again after a load.
        const State state = job.state == State::Rendering ? State::Waiting : job.state;
        stored.set(kStateKey, stateName(state).toStdString());
        stored.set(kReasonKey, job.reason);
        std::string text;
        if (!oxMessageRW::write(stored, text)) {
            oxLog::error("Render queue: job '%s' can't be stored in the project (its record "
                         "holds a value of an unknown type); it is left out.",
                         jobText(job.record, "MovieExport Filename").toUtf8().constData());
            continue;
        }
        jobs.push_back(text);
    }
    project.set(kJobsAttribute, jobs);
}

void oxRenderQueue::loadFromProject(const oxMessage& project)
{
    forgetJobs();
    std::vector<std::string> jobs;
    if (!jobValue(project, kJobsAttribute, jobs))
        return;
    for (const std::string& text : jobs) {
        oxMessage stored;
        if (!oxMessageRW::read(stored, nullptr, text)) {
            oxLog::warning("Render queue: a job of the project can't be read (%s); it is left "
                           "out.",
                           oxMessageRW::lastError().c_str());
            continue;
        }
        Job job;
        jobValue(stored, kPresetKey, job.preset);
        jobValue(stored, kReasonKey, job.reason);
        std::string state;
        jobValue(stored, kStateKey, state);
        for (const StateEntry& entry : kStates) {
            if (state == entry.name)
                job.state = entry.state;
        }
        for (const char* key : {kPresetKey, kStateKey, kReasonKey})
            stored.remove(key);
        job.record = stored;
        m_jobs.push_back(job);
        addRow(m_jobs.back());
    }
    updateButtons();
}

int oxRenderQueue::receivedMessage(oxMessage& message)
{
    if (message.id() == oxController::MessageNewScene) {
        forgetJobs();
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
        saveToProject(project);
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
    loadFromProject(project);
    return 0;
}

#pragma once

#include "oxMessage.h"
#include "oxModuleBase.h"

#include <QDateTime>
#include <QPointer>
#include <QTimer>

#include <string>
#include <vector>

class QPushButton;
class QTreeWidget;
class QWidget;
class QOXDockWidget;

/// The host's render queue: a module that collects render jobs handed to it by name
/// ("addRenderJobProxy", whose message is the job record), lists them in its dock window
/// "Render Queue" and renders them one after the other on this machine.
///
/// The queue renders nothing itself. Each job's settings are kept by whoever answers the
/// render job preset callbacks ("addRQPreset" when a job arrives, under a name of the queue's
/// choosing); a job renders through "oxMovieExport::renderOutputFiles" with that name, after
/// the files of all waiting jobs went through "checkFileWritingForPresets". The jobs, their
/// order and states are kept in the project ("RenderQueueJobs"), their settings beside them
/// ("RenderJobsPresets").
class oxRenderQueue : public oxModuleBase {
    Q_OBJECT
public:
    /// The dock window's name and the named function that adds a job.
    static constexpr const char* kDockName = "Render Queue";
    static constexpr const char* kAddJobCallback = "addRenderJobProxy";
    static constexpr const char* kReturnSettingsCallback = "receiveRenderSettingsFromRenderQueue";
    /// The project attribute that holds the render job presets as text.
    static constexpr const char* kJobPresetsAttribute = "RenderJobsPresets";
    /// The project attribute that holds the queue's jobs, one record text each, in order.
    static constexpr const char* kJobsAttribute = "RenderQueueJobs";

    /// Where a job stands.
    enum class State { Waiting, Rendering, Done, Failed, Cancelled };

    /// One job: the record as it came, the name its settings are kept under ("" when nobody
    /// kept them), its state, the reason of a failure, and the files of its last render.
    struct Job {
        oxMessage record;
        std::string preset;
        State state = State::Waiting;
        std::string reason;
        int filesDone = 0;
        int filesTotal = 0;
    };

    /// Creates the list window, docks it (hidden) when the host has a dock window manager,
    /// and answers "addRenderJobProxy" until destroyed.
    oxRenderQueue();
    ~oxRenderQueue() override;

    /// The queue while one exists, else null.
    static oxRenderQueue* instance();
    /// The text a state is shown and stored with.
    static QString stateName(State state);

    QWidget* getMainWidget() override;
    /// Keeps the queue with the scene: on a project save the jobs go into "RenderQueueJobs"
    /// and their settings are asked for ("saveRenderJobPresets"); on a project load both come
    /// back ("loadRenderJobPresets"); a new scene empties the queue ("clearRQPresets").
    int receivedMessage(oxMessage& message) override;
    QTreeWidget* jobList() const { return m_list; }
    /// The queue's dock window, null when the host had no dock window manager.
    QOXDockWidget* dockWidget() const;

    /// Appends a copy of job, waiting, and keeps the current render settings for it.
    void addJob(const oxMessage& job);
    int jobCount() const { return int(m_jobs.size()); }
    /// The record of job index (0 is the oldest); index must be valid.
    const oxMessage& job(int index) const { return m_jobs.at(size_t(index)).record; }
    /// The whole job index; index must be valid.
    const Job& jobEntry(int index) const { return m_jobs.at(size_t(index)); }
    /// Removes job index and its kept settings; an invalid index or the rendering job does
    /// nothing.
    void removeJob(int index);
    /// Moves job from to position to (both clamped); the rendering job may move too.
    void moveJob(int from, int to);
    /// Removes every job that isn't rendering.
    void clearJobs();
    /// Puts a finished, failed or cancelled job back to waiting.
    void requeueJob(int index);
    /// Hands job index's settings back through "receiveRenderSettingsFromRenderQueue"; false
    /// for an invalid index or when nobody answers that name.
    bool returnJobSettings(int index);

    /// Starts rendering the waiting jobs in order, each in its own turn of the event loop.
    /// First the files of all waiting jobs are checked in one question; false when the user
    /// cancels there, when nothing waits or when the queue is running already.
    bool start();
    /// The running job finishes; the next ones wait until start().
    void pause();
    /// Cancels the running job (it ends cancelled) and stops the queue.
    void stop();
    bool isRunning() const { return m_running; }
    bool isPaused() const { return m_paused; }

    /// The cluster jobs of this session (from the host's cluster manager) with their state as
    /// Slurm and the tasks report it; refreshed every few seconds while the dock is shown.
    QTreeWidget* clusterJobList() const { return m_clusterList; }
    void refreshClusterJobs();
    /// Cancels the cluster job of row; false when there is none or Slurm refuses.
    bool cancelClusterJob(int row);

    /// Renders every waiting job in order, now, without questions: existing files fail a job
    /// unless overwrite. A failing job doesn't stop the next. The number of jobs that didn't
    /// end done.
    int renderAll(bool overwrite);

signals:
    /// A job has ended (done, failed or cancelled).
    void jobFinished(int index);
    /// The queue stopped: nothing waits, or it was paused or stopped.
    void queueStopped();

private:
    void addRow(const Job& job);
    void updateRow(int index);
    void updateButtons();
    std::string newPresetName() const;
    void runNext();
    bool renderJob(int index, bool overwrite);
    void pollProgress();
    void saveToProject(oxMessage& project) const;
    void loadFromProject(const oxMessage& project);
    void forgetJobs();
    void createClusterList(QWidget* parent);

    std::vector<Job> m_jobs;
    QPointer<QWidget> m_widget;
    QTreeWidget* m_list = nullptr;
    QPushButton* m_start = nullptr;
    QPushButton* m_pause = nullptr;
    QPushButton* m_stop = nullptr;
    QPointer<QOXDockWidget> m_dock;
    QTreeWidget* m_clusterList = nullptr;
    QTimer m_clusterTimer;
    std::vector<std::string> m_clusterFolders;
    QTimer m_progressTimer;
    std::vector<std::string> m_renderingFiles;
    QDateTime m_renderStart;
    int m_renderingJob = -1;
    bool m_running = false;
    bool m_paused = false;
    bool m_stopRequested = false;
};

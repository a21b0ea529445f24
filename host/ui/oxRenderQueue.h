#pragma once

#include "oxMessage.h"
#include "oxModuleBase.h"

#include <QPointer>

#include <vector>

class QTreeWidget;
class QWidget;
class QOXDockWidget;

/// The host's render queue: a module that collects render jobs handed to it by name
/// ("addRenderJobProxy", whose message is the job record) and lists them in its dock window
/// "Render Queue". It holds the records as they came and can hand a job's settings back to
/// whoever answers "receiveRenderSettingsFromRenderQueue".
class oxRenderQueue : public oxModuleBase {
    Q_OBJECT
public:
    /// The dock window's name and the named function that adds a job.
    static constexpr const char* kDockName = "Render Queue";
    static constexpr const char* kAddJobCallback = "addRenderJobProxy";
    static constexpr const char* kReturnSettingsCallback = "receiveRenderSettingsFromRenderQueue";
    /// The project attribute that holds the render job presets as text.
    static constexpr const char* kJobPresetsAttribute = "RenderJobsPresets";

    /// Creates the list window, docks it (hidden) when the host has a dock window manager,
    /// and answers "addRenderJobProxy" until destroyed.
    oxRenderQueue();
    ~oxRenderQueue() override;

    /// The queue while one exists, else null.
    static oxRenderQueue* instance();

    QWidget* getMainWidget() override;
    /// Keeps the render job presets with the scene: on a project save they are asked for
    /// ("saveRenderJobPresets" fills "RenderJobsPresets" of the project record), on a project
    /// load handed back ("loadRenderJobPresets"), and a new scene clears them
    /// ("clearRQPresets").
    int receivedMessage(oxMessage& message) override;
    QTreeWidget* jobList() const { return m_list; }
    /// The queue's dock window, null when the host had no dock window manager.
    QOXDockWidget* dockWidget() const;

    /// Appends a copy of job and a row for it.
    void addJob(const oxMessage& job);
    int jobCount() const { return int(m_jobs.size()); }
    /// The record of job index (0 is the oldest); index must be valid.
    const oxMessage& job(int index) const { return m_jobs.at(size_t(index)); }
    /// Removes job index; an invalid index does nothing.
    void removeJob(int index);
    void clearJobs();
    /// Hands job index's settings back through "receiveRenderSettingsFromRenderQueue"; false
    /// for an invalid index or when nobody answers that name.
    bool returnJobSettings(int index);

private:
    void addRow(const oxMessage& job);

    std::vector<oxMessage> m_jobs;
    QPointer<QWidget> m_widget;
    QTreeWidget* m_list = nullptr;
    QPointer<QOXDockWidget> m_dock;
};

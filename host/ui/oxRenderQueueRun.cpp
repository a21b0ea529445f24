// Rendering the render queue's jobs: the checks before a run, one job after the other, and
// what a job's end does to its row.

#include "oxRenderQueue.h"

#include "oxCallTrace.h"
#include "oxController.h"
#include "oxImageWriter.h"
#include "oxLog.h"

#include <QDateTime>
#include <QFileInfo>
#include <QPushButton>

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

namespace {

// The callbacks of the render settings plug-in that list and render a job's files.
constexpr const char* kListCallback = "oxMovieExport::listOutputFiles";
constexpr const char* kRenderCallback = "oxMovieExport::renderOutputFiles";
constexpr const char* kCheckCallback = "checkFileWritingForPresets";

std::string outputName(const oxMessage& job)
{
    std::string name;
    const boost::any& stored = job.get("MovieExport Filename");
    if (!stored.empty() && oxMessage::sameType(stored.type(), typeid(std::string)))
        name = boost::any_cast<std::string>(stored);
    return name;
}

} // namespace

bool oxRenderQueue::start()
{
    if (m_running)
        return false;
    std::vector<std::pair<std::string, std::string>> waiting;
    for (const Job& job : m_jobs) {
        if (job.state == State::Waiting && !job.preset.empty())
            waiting.emplace_back(outputName(job.record), job.preset);
    }
    const bool anyWaiting = std::any_of(m_jobs.begin(), m_jobs.end(),
                                        [](const Job& job) { return job.state == State::Waiting; });
    if (!anyWaiting)
        return false;
    oxCallTrace::record("oxRenderQueue::start");
    // One question for the files of all waiting jobs, before the first image.
    if (!waiting.empty()) {
        oxMessage check;
        check.set("presets", waiting);
        bool cancel = false;
        if (oxController::call(kCheckCallback, check, 0) && check.get("cancel", cancel) && cancel) {
            oxLog::info("Render queue: not started; the file check was cancelled.");
            return false;
        }
    }
    m_running = true;
    m_paused = false;
    m_stopRequested = false;
    updateButtons();
    QTimer::singleShot(0, this, &oxRenderQueue::runNext);
    return true;
}

void oxRenderQueue::pause()
{
    if (!m_running || m_paused)
        return;
    oxCallTrace::record("oxRenderQueue::pause");
    m_paused = true;
    updateButtons();
    // Between jobs nothing else would notice.
    if (m_renderingJob < 0)
        QTimer::singleShot(0, this, &oxRenderQueue::runNext);
}

void oxRenderQueue::stop()
{
    if (!m_running)
        return;
    oxCallTrace::record("oxRenderQueue::stop");
    m_stopRequested = true;
    if (m_renderingJob >= 0) {
        for (oxImageWriter* writer : oxImageWriter::getAll())
            writer->cancel();
    } else {
        QTimer::singleShot(0, this, &oxRenderQueue::runNext);
    }
}

void oxRenderQueue::runNext()
{
    if (!m_running)
        return;
    const auto next = std::find_if(m_jobs.begin(), m_jobs.end(),
                                   [](const Job& job) { return job.state == State::Waiting; });
    if (m_paused || m_stopRequested || next == m_jobs.end()) {
        m_running = false;
        updateButtons();
        emit queueStopped();
        return;
    }
    // The user agreed to replace existing files when the run started.
    renderJob(int(next - m_jobs.begin()), true);
    QTimer::singleShot(0, this, &oxRenderQueue::runNext);
}

int oxRenderQueue::renderAll(bool overwrite)
{
    int total = 0;
    for (const Job& job : m_jobs)
        total += job.state == State::Waiting ? 1 : 0;
    int failed = 0;
    int number = 0;
    for (int index = 0; index < jobCount(); ++index) {
        if (m_jobs[size_t(index)].state != State::Waiting)
            continue;
        std::printf("Render queue job %d of %d: %s\n", ++number, total,
                    outputName(m_jobs[size_t(index)].record).c_str());
        std::fflush(stdout);
        if (!renderJob(index, overwrite))
            ++failed;
    }
    return failed;
}

bool oxRenderQueue::renderJob(int index, bool overwrite)
{
    Job& job = m_jobs[size_t(index)];
    const std::string name = outputName(job.record);
    oxCallTrace::record("oxRenderQueue::renderJob", name);
    auto finish = [&](State state, const std::string& reason) {
        Job& ended = m_jobs[size_t(m_renderingJob)];
        const int endedIndex = m_renderingJob;
        m_renderingJob = -1;
        m_progressTimer.stop();
        ended.state = state;
        ended.reason = reason;
        updateRow(endedIndex);
        updateButtons();
        if (state == State::Failed)
            oxLog::error("Render queue: job '%s' failed: %s.", name.c_str(), reason.c_str());
        else
            oxLog::info("Render queue: job '%s' %s.", name.c_str(),
                        state == State::Done ? "is done" : "was cancelled");
        emit jobFinished(endedIndex);
        return state == State::Done;
    };
    m_renderingJob = index;
    job.state = State::Rendering;
    job.reason.clear();
    job.filesDone = 0;
    job.filesTotal = 0;
    updateRow(index);
    if (job.preset.empty())
        return finish(State::Failed, "its render settings weren't kept (the Render Settings "
                                     "plug-in wasn't loaded when it was added)");

    oxMessage list;
    list.set("jobPreset", job.preset);
    std::vector<std::string> files;
    if (!oxController::call(kListCallback, list, 0))
        return finish(State::Failed, "the Render Settings plug-in isn't loaded");
    list.get("files", files);
    m_renderingFiles = files;
    m_renderStart = QDateTime::currentDateTime();
    job.filesTotal = int(files.size());
    updateRow(index);
    m_progressTimer.start();

    oxMessage render;
    render.set("jobPreset", job.preset);
    render.set("overwrite", overwrite);
    oxController::call(kRenderCallback, render, 0);
    bool canceled = false;
    render.get("canceled", canceled);
    std::string error;
    render.get("error", error);
    if (canceled || m_stopRequested) {
        // A job cancelled in its progress dialog stops the queue as Stop does.
        m_stopRequested = true;
        return finish(State::Cancelled, std::string());
    }
    if (!error.empty())
        return finish(State::Failed, error);
    m_jobs[size_t(m_renderingJob)].filesDone = int(files.size());
    return finish(State::Done, std::string());
}

void oxRenderQueue::pollProgress()
{
    if (m_renderingJob < 0)
        return;
    // A file counts once it was written during this job's render.
    int done = 0;
    for (const std::string& file : m_renderingFiles) {
        const QFileInfo info(QString::fromStdString(file));
        if (info.exists() && info.lastModified() >= m_renderStart.addSecs(-1))
            ++done;
    }
    m_jobs[size_t(m_renderingJob)].filesDone = done;
    updateRow(m_renderingJob);
}

// The render job of the window's settings for the host's command line (oxlin --list-outputs,
// --render): named callbacks, so that the host reaches them without knowing the plug-in.

#include "oxMovieExport.h"
#include "oxMovieExportCallbacks.h"
#include "oxRenderSettings.h"

#include "oxImageWriter.h"
#include "oxRenderTasks.h"

#include <QDateTime>
#include <QFileInfo>

#include <optional>
#include <string>
#include <vector>

namespace {

// Takes the preset the message names into the window: "jobPreset" names a render queue
// job's settings (applied with their file name and variant sets, as the queue stored them),
// "preset" one of the preset file (applied as choosing it from the preset menu does). True
// when there is none to take or it was taken; sets "error" otherwise.
bool takePreset(oxRenderSettings& window, oxMessage& message)
{
    std::string jobPreset;
    if (message.get("jobPreset", jobPreset) && !jobPreset.empty()) {
        if (!window.getRQPreset(jobPreset.c_str())) {
            message.set("error",
                        "the render queue holds no job settings named '" + jobPreset + "'");
            return false;
        }
        window.applyRQPresetByName(jobPreset.c_str());
        return true;
    }
    QString name;
    if (!getFromMessage(message, "preset", name) || name.isEmpty())
        return true;
    const std::string wanted = name.toStdString();
    if (!window.findPreset(wanted, window.getPresets())) {
        std::string known;
        for (const oxRenderSettingsPresetSPtr& preset : window.getPresets())
            known += (known.empty() ? "" : ", ") + preset->name;
        message.set("error", "the preset file has no preset named '" + wanted + "' (it has: " +
                                 (known.empty() ? std::string("none") : known) + ")");
        return false;
    }
    window.applyPresetByName(wanted);
    return true;
}

std::vector<std::string> toStrings(const QStringList& list)
{
    std::vector<std::string> strings;
    for (const QString& text : list)
        strings.push_back(text.toStdString());
    return strings;
}

// The window of the loaded module, or null after setting "error".
oxRenderSettings* windowFor(oxMessage& message)
{
    oxRenderSettings* window = theMovieExport ? theMovieExport->getRenderSettingsWindow() : nullptr;
    if (!window)
        message.set("error", std::string("the Render Settings window doesn't exist"));
    return window;
}

// The task of a split job the message names ("task", with "framesPerTask"), if any.
std::optional<oxRenderTask> taskOf(const oxMessage& message)
{
    int index = -1;
    if (!message.has("task") || !message.get("task", index) || index < 0)
        return std::nullopt;
    oxRenderTask task;
    task.index = index;
    message.get("framesPerTask", task.framesPerTask);
    return task;
}

// Limits the walks of a callback to the message's task while it runs.
struct TaskLimit {
    explicit TaskLimit(const oxMessage& message) : task(taskOf(message))
    {
        if (task)
            scope.emplace(*task);
    }
    std::optional<oxRenderTask> task;
    std::optional<oxRenderTaskScope> scope;
};

} // namespace

void listOutputFilesCB(oxMessage& message)
{
    oxRenderSettings* window = windowFor(message);
    if (!window || !takePreset(*window, message))
        return;
    // How many tasks the job splits into, for whoever hands it to several machines.
    int framesPerTask = 1;
    message.get("framesPerTask", framesPerTask);
    message.set("taskCount",
                int(renderTaskCount(window->getCurrentRenderSettings(), framesPerTask)));
    message.set("clusterHosts", window->clusterHosts().toStdString());
    const TaskLimit limit(message);
    message.set("files", toStrings(theMovieExport->getRenderOutputFilenames()));
}

void renderOutputFilesCB(oxMessage& message)
{
    oxRenderSettings* window = windowFor(message);
    if (!window || !takePreset(*window, message))
        return;
    bool overwrite = false;
    getFromMessage(message, "overwrite", overwrite);
    const TaskLimit limit(message);
    const QStringList files = theMovieExport->getRenderOutputFilenames();
    if (files.isEmpty()) {
        message.set("error", std::string("the render settings give no file to write"));
        return;
    }
    // A file counts as written when it is new, or when its modification time changed: a file
    // left from an earlier job must not look written, and isn't removed before the render.
    QStringList existing;
    std::vector<QDateTime> before;
    for (const QString& file : files) {
        const QFileInfo info(file);
        before.push_back(info.exists() ? info.lastModified() : QDateTime());
        if (info.exists())
            existing.append(file);
    }
    if (!overwrite && !existing.isEmpty()) {
        message.set("error", QStringLiteral("%1 of the %2 files exist already (--overwrite "
                                            "replaces them), the first: %3")
                                 .arg(existing.size())
                                 .arg(files.size())
                                 .arg(existing.first())
                                 .toStdString());
        return;
    }
    theMovieExport->startRenderToFile(true);
    if (theMovieExport->getImageWriter()->wasExportCanceled()) {
        message.set("canceled", true);
        message.set("error", std::string("the render was cancelled"));
        return;
    }
    QStringList missing;
    for (int i = 0; i < files.size(); ++i) {
        const QFileInfo info(files[i]);
        if (!info.exists() ||
            (before[size_t(i)].isValid() && info.lastModified() == before[size_t(i)]))
            missing.append(files[i]);
    }
    if (!missing.isEmpty()) {
        message.set("error", QStringLiteral("%1 of the %2 files weren't written (the log says "
                                            "why), the first: %3")
                                 .arg(missing.size())
                                 .arg(files.size())
                                 .arg(missing.first())
                                 .toStdString());
        return;
    }
    message.set("files", toStrings(files));
}

// The module's render jobs, snapshots and callbacks: each reaches the output subsystem with
// the module's writer and what the window holds.

#include "oxMovieExport.h"

#include "QOXDockWindowManager.h"
#include "oxController.h"
#include "oxFileChecks.h"
#include "oxFileIO.h"
#include "oxImageWriter.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxMovieExportCallbacks.h"
#include "oxRenderSettings.h"
#include "oxRenderToFile.h"
#include "oxSnapshots.h"

#include <QTimer>

#include <string>
#include <utility>
#include <vector>

namespace {

// Frames the window's range spans when another module sets its start.
constexpr int kExportMovieFrameSpan = 50;
// The dock that the exportMovie callback brings out.
const char kRenderSettingsDockName[] = "RenderSettings";

// The render job preset of that name; an empty name never matches.
oxRenderSettingsPresetSPtr findRenderJobPreset(const std::string& name)
{
    oxRenderSettings* window = oxRenderSettings::instance();
    return window ? window->getRQPreset(name.c_str()) : nullptr;
}

} // namespace

QString oxMovieExport::clusterHosts() const
{
    return renderSettingsWindow ? renderSettingsWindow->clusterHosts() : QString();
}

oxRenderSettingsPresetSPtr oxMovieExport::captureWindowSettings()
{
    return renderSettingsWindow ? renderSettingsWindow->getCurrentRenderSettings() : nullptr;
}

oxRenderSettingsPreset* oxMovieExport::windowSettings()
{
    return renderSettingsWindow ? &renderSettingsWindow->getCurrentPreset() : nullptr;
}

void oxMovieExport::refreshWindow()
{
    if (renderSettingsWindow)
        renderSettingsWindow->updateGUI();
}

bool oxMovieExport::walkRenderPlan(const oxRenderSettingsPresetSPtr& record, QStringList& list,
                                   PlanFlags flags)
{
    return ::walkRenderPlan(*imageWriter, record, list, flags, clusterHosts());
}

bool oxMovieExport::renderPresetToFile(const oxRenderSettingsPresetSPtr& record)
{
    return ::renderPresetToFile(*imageWriter, record, windowSettings(), clusterHosts());
}

bool oxMovieExport::checkOutputFiles(const oxRenderSettingsPresetSPtr& record, bool askForName)
{
    return ::checkOutputFiles(
        *imageWriter, record, askForName, [&] { return chooseOutputFile(record); },
        renderSettingsWindow);
}

bool oxMovieExport::chooseOutputFile(const oxRenderSettingsPresetSPtr& record)
{
    const QString name = chooseOutputFileName(record);
    if (name.isEmpty())
        return false;
    record->filename = oxFileIO::toUtf8std(name);
    if (oxRenderSettings* window = renderSettingsWindow) {
        window->getCurrentPreset().filename = record->filename;
        window->updateGUI();
    }
    return true;
}

void oxMovieExport::openFileDialog()
{
    if (oxRenderSettings* window = renderSettingsWindow)
        chooseOutputFile(window->getCurrentRenderSettings());
}

oxRenderSettingsPresetSPtr oxMovieExport::settledWindowSettings()
{
    if (!renderSettingsWindow)
        return nullptr;
    const oxRenderSettingsPresetSPtr record = renderSettingsWindow->getCurrentRenderSettings();
    return checkOutputFiles(record, true) ? record : nullptr;
}

void oxMovieExport::clickedRender()
{
    const oxRenderSettingsPresetSPtr record = settledWindowSettings();
    if (!record)
        return;
    // The user has just decided about every existing file: the writer must not ask again.
    imageWriter->setNoOverwriteMessage(true);
    renderPresetToFile(record);
    // Listeners are told after the job, despite the notice's name.
    if (renderSettingsWindow)
        renderSettingsWindow->notifyRenderStarted("Render");
    imageWriter->setNoOverwriteMessage(false);
}

void oxMovieExport::startRenderToFile(bool alwaysOverride)
{
    // Unlike the Render button, nobody is told: the script started it and knows.
    ::startRenderToFile(*imageWriter, captureWindowSettings(), windowSettings(), clusterHosts(),
                        alwaysOverride);
}

QStringList oxMovieExport::getRenderOutputFilenames()
{
    const oxRenderSettingsPresetSPtr record = captureWindowSettings();
    return record ? renderOutputFilenames(*imageWriter, record) : QStringList();
}

void oxMovieExport::applyFirstSettings()
{
    oxRenderSettings* window = renderSettingsWindow;
    if (!window)
        return;
    QStringList unused;
    walkRenderPlan(window->getCurrentRenderSettings(), unused, PlanApplyFirst);
}

QString oxMovieExport::runImageFileDialog(const oxRenderSettingsPresetSPtr& record)
{
    return ::runImageFileDialog(record);
}

void oxMovieExport::initFastSnapshots(int width, int height, int supersamplingMode)
{
    if (!oxFileIO::isLoadingProjectWhileRunningScript()) {
        imageWriter->exportImageFastInit(width, height, supersamplingMode);
        return;
    }
    // The render view isn't ready while a project loads: start a second later, with the last
    // values asked for.
    pendingFastWidth = width;
    pendingFastHeight = height;
    pendingFastSupersampling = supersamplingMode;
    QTimer::singleShot(1000, this, &oxMovieExport::deferredCreateSnapshotFastInit);
}

void oxMovieExport::deferredCreateSnapshotFastInit()
{
    imageWriter->exportImageFastInit(pendingFastWidth, pendingFastHeight, pendingFastSupersampling);
}

void oxMovieExport::exportSnapshot() { exportDatedSnapshot(); }

void checkFileWritingForPresetCB(oxMessage& message)
{
    std::string name;
    if (!theMovieExport || !message.get("preset", name))
        return;
    const oxRenderSettingsPresetSPtr preset = findRenderJobPreset(name);
    if (!preset)
        return;
    const bool goOn = theMovieExport->checkOutputFiles(preset, false);
    message.set("cancel", !goOn);
    message.set("filename", preset->filename);
}

void checkFileWritingForPresetsCB(oxMessage& message)
{
    using NamedPresets = std::vector<std::pair<std::string, std::string>>;
    NamedPresets presets;
    if (!theMovieExport || !message.get("presets", presets))
        return;
    QWidget* parent = theMovieExport->getRenderSettingsWindow();
    for (;;) {
        QStringList unwritableReport;
        QStringList existingReport;
        for (const auto& [shownText, presetName] : presets) {
            const oxRenderSettingsPresetSPtr preset = findRenderJobPreset(presetName);
            if (!preset)
                continue;
            QStringList list;
            theMovieExport->walkRenderPlan(preset, list, PlanCollect);
            const QStringList existing = filterExistingFiles(list);
            const QStringList unwritable = filterUnwritableFiles(list);
            // The presets' texts stand as headers above their files.
            if (!unwritable.isEmpty())
                unwritableReport << QString::fromStdString(shownText) << unwritable;
            if (!existing.isEmpty())
                existingReport << QString::fromStdString(shownText) << existing;
        }
        if (!existingReport.isEmpty() &&
            askOverwrite(existingReport, false, parent) == CancelOverwrite) {
            message.set("cancel", true);
            return;
        }
        if (!unwritableReport.isEmpty()) {
            const oxWriteChoice choice = askUnwritable(unwritableReport, false, parent);
            if (choice == RetryWrite)
                continue;
            if (choice == CancelWrite) {
                message.set("cancel", true);
                return;
            }
        }
        message.set("cancel", false);
        return;
    }
}

void exportSnapshotCB(oxMessage& message)
{
    if (!theMovieExport)
        return;
    QString filename;
    if (!getFromMessage(message, "filename", filename) || filename.isEmpty()) {
        theMovieExport->exportSnapshot();
        return;
    }
    int width = 240;
    int height = 240;
    bool alpha = false;
    getFromMessage(message, "width", width);
    getFromMessage(message, "height", height);
    // Read for the record's sake: fast snapshots keep the writer's alpha setting.
    getFromMessage(message, "alpha", alpha);

    const bool playSound = oxController::playSoundOnExport();
    bool forceNoSound = false;
    getFromMessage(message, "forceNoSound", forceNoSound);
    if (forceNoSound)
        oxController::setPlaySoundOnExport(false);

    theMovieExport->initFastSnapshots(width, height, 0);
    createSnapshotFast(filename.toUtf8().constData());
    theMovieExport->getImageWriter()->exportImageFastTerminate();

    if (forceNoSound)
        oxController::setPlaySoundOnExport(playSound);
}
void exportMovieCB(oxMessage& message)
{
    oxRenderSettings* window = theMovieExport ? theMovieExport->getRenderSettingsWindow() : nullptr;
    if (!window)
        return;
    oxRenderSettingsPreset& settings = window->getCurrentPreset();
    int start = 0;
    if (getFromMessage(message, "start", start)) {
        settings.startFrame = start;
        settings.stopFrame = start + kExportMovieFrameSpan;
    }
    int fps = 0;
    if (getFromMessage(message, "fps", fps))
        settings.fps = fps;
    window->updateGUI();
    if (QOXDockWindowManager* docks = oxController::getDockWindowManager())
        docks->undock(QString::fromLatin1(kRenderSettingsDockName));
}

#pragma once

#include "oxModuleBase.h"
#include "oxOutputHost.h"
#include "oxRenderPlan.h"
#include "oxRenderSettingsPreset.h"

#include <QPointer>
#include <QStringList>

class QAction;
class QOXDockWidget;
class oxImageWriter;
class oxRenderSettings;

/// The plug-in's one module: owns the image writer, answers the host's messages and is the
/// output subsystem's way to the writer and the window.
class oxMovieExport : public oxModuleBase, public oxOutputHost {
    Q_OBJECT
public:
    oxMovieExport();
    ~oxMovieExport() override;

    /// The module has nothing to do when brought to the front.
    void activateModule() override;
    /// Handles 16 (new scene), 8192 (project read or written) and 32768 (refresh); returns 0.
    int receivedMessage(oxMessage& message) override;

    oxImageWriter* getImageWriter() const override { return imageWriter; }
    oxRenderSettingsPresetSPtr captureWindowSettings() override;
    oxRenderSettingsPreset* windowSettings() override;
    void refreshWindow() override;

    /// The image file dialog of snapshots and of the output file chooser: starts from the
    /// record's file name, returns the chosen name, empty when the user cancelled.
    QString runImageFileDialog(const oxRenderSettingsPresetSPtr& record);
    /// Starts a fast snapshot series of that size at once, or, while a script loads a
    /// project, one second later with the last values asked for.
    void initFastSnapshots(int width, int height, int supersamplingMode) override;
    /// The Render Settings window.
    QWidget* getMainWidget() override;
    oxRenderSettings* getRenderSettingsWindow() const;
    /// The "Export Snapshot" action; null when the host has no "File" menu.
    QAction* getExportSnapshotAction() const { return exportSnapshotAction; }

    // Render jobs: also reached by the script modules and the queue hand-off.

    /// The output subsystem's walkRenderPlan with the module's writer and the window's cluster
    /// hosts.
    bool walkRenderPlan(const oxRenderSettingsPresetSPtr& record, QStringList& list,
                        PlanFlags flags);
    /// Renders the whole job of record to files and restores the render state afterwards;
    /// true when it was cancelled.
    bool renderPresetToFile(const oxRenderSettingsPresetSPtr& record);
    /// Asks for the output name (always with askForName, else after a Rename) and about
    /// existing and unwritable files of the job until the user settles; true to go on.
    bool checkOutputFiles(const oxRenderSettingsPresetSPtr& record, bool askForName);
    /// Lets the user choose the output file of record; true when a name was taken, which
    /// then is the record's and the window's file name.
    bool chooseOutputFile(const oxRenderSettingsPresetSPtr& record);
    /// Renders the window's current settings to files for a script: no dialogs, and existing
    /// files stop the job unless alwaysOverride. Nothing without a window.
    void startRenderToFile(bool alwaysOverride);
    /// The files a render of the window's current settings would write, as scripts see them;
    /// empty without a window.
    QStringList getRenderOutputFilenames();

public slots:
    /// Renders the current settings' whole job to files (the _render button, QuickRender).
    void clickedRender();
    /// Hands the current settings to the render queue, or to the cluster queue, as a job.
    void clickedAddToRenderQueue();
    void clickedSendToClusterQueue();
    /// Lets the user choose the output file of the current settings.
    void openFileDialog();
    /// Kept for the host's interface; it has no effect.
    void exportImageDialog(int result);
    /// Starts a fast snapshot series that was asked for before the render view was ready.
    void deferredCreateSnapshotFastInit();
    /// Writes what the render view shows into a dated file (the "Export Snapshot" action).
    void exportSnapshot();

private slots:
    /// Applies the first camera step and variant tuple of the current settings to the scene,
    /// after a render queue job's settings came back into the window.
    void applyFirstSettings();

private:
    void handleMessage(oxMessage& message);
    void createWindow();
    void dockWindow();
    void createActions();
    void connectWindow();
    void dressFileChooser();
    void registerCallbacks();

    /// The window's current settings once the user settled their output name and files;
    /// null without a window or when the user cancelled.
    oxRenderSettingsPresetSPtr settledWindowSettings();
    /// The window's cluster hosts (empty without a window or with the cluster off).
    QString clusterHosts() const;

    // Created first and never freed: the host keeps using the writer after unload.
    oxImageWriter* imageWriter = nullptr;
    QAction* exportSnapshotAction = nullptr;
    QOXDockWidget* renderDockHandle = nullptr;
    // Owned; the pointer follows the window if the host's main window deletes it first.
    QPointer<oxRenderSettings> renderSettingsWindow;
    int pendingFastWidth = 0;
    int pendingFastHeight = 0;
    int pendingFastSupersampling = 0;
};

/// The module instance while the plug-in is loaded.
extern oxMovieExport* theMovieExport;

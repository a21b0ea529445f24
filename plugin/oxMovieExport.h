#pragma once

#include "oxModuleBase.h"
#include "oxRenderPlan.h"
#include "oxRenderSettingsPreset.h"

#include <QPointer>
#include <QStringList>

#include <array>

class QAction;
class QOXDockWidget;
class oxImageWriter;
class oxRenderSettings;

/// The plug-in's one module: owns the image writer and answers the host's messages.
class oxMovieExport : public oxModuleBase {
    Q_OBJECT
public:
    oxMovieExport();
    ~oxMovieExport() override;

    /// The module has nothing to do when brought to the front.
    void activateModule() override;
    /// Handles 16 (new scene), 8192 (project read or written) and 32768 (refresh); returns 0.
    int receivedMessage(oxMessage& message) override;

    oxImageWriter* getImageWriter() const { return imageWriter; }

    /// The image file dialog of snapshots and of the output file chooser: starts from the
    /// record's file name, returns the chosen name, empty when the user cancelled.
    QString runImageFileDialog(const oxRenderSettingsPresetSPtr& record);
    /// Starts a fast snapshot series of that size at once, or, while a script loads a
    /// project, one second later with the last values asked for.
    void initFastSnapshots(int width, int height, int supersamplingMode);
    /// The Render Settings window.
    QWidget* getMainWidget() override;
    oxRenderSettings* getRenderSettingsWindow() const;
    /// The "Export Snapshot" action; null when the host has no "File" menu.
    QAction* getExportSnapshotAction() const { return exportSnapshotAction; }

    // Render jobs: also reached by the script modules and the queue hand-off.

    /// Walks the job of record: each camera step, inside it each variant set tuple, and
    /// appends every file name the unit writes to list; flags say what else happens
    /// (PlanFlags). With PlanExport the result is whether the writer was cancelled, else
    /// false. A bad file name or a directory that can't be created leaves list untouched.
    bool walkRenderPlan(const oxRenderSettingsPresetSPtr& record, QStringList& list,
                        PlanFlags flags);
    /// Renders the whole job of record to files and restores the render state afterwards;
    /// true when it was cancelled.
    bool renderPresetToFile(const oxRenderSettingsPresetSPtr& record);
    /// The entries of list that exist, or that can't be written, as absolute native paths.
    QStringList filterExistingFiles(const QStringList& list) const;
    QStringList filterUnwritableFiles(const QStringList& list) const;
    /// Asks for the output name (always with askForName, else after a Rename) and about
    /// existing and unwritable files of the job until the user settles; true to go on.
    bool checkOutputFiles(const oxRenderSettingsPresetSPtr& record, bool askForName);
    /// Lets the user choose the output file of record; true when a name was taken, which
    /// then is the record's and the window's file name.
    bool chooseOutputFile(const oxRenderSettingsPresetSPtr& record);

    /// Answers of the question about existing files.
    enum OverwriteChoice : int {
        OverwriteFiles = 0,
        RenameFiles = 1,
        CancelOverwrite = 2,
        NothingToOverwrite = 3
    };
    /// Answers of the question about files that can't be written.
    enum WriteChoice : int {
        RetryWrite = 0,
        IgnoreUnwritable = 1,
        RenameUnwritable = 2,
        CancelWrite = 3,
        NothingUnwritable = 4
    };

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

    // Render jobs: checks of the output and the steps of a render to file.
    bool validateOutputFilename(const oxRenderSettingsPresetSPtr& record) const;
    QString prepareOutputDirectory(const oxRenderSettingsPresetSPtr& record) const;
    OverwriteChoice askOverwrite(const QStringList& list, bool allowRename);
    WriteChoice askUnwritable(const QStringList& list, bool allowRename);
    OverwriteChoice checkOverwrite(const QStringList& list);
    WriteChoice checkWriteAccess(const QStringList& list);
    std::array<float, 4> applyRenderRegion(const oxRenderSettingsPresetSPtr& record) const;
    void applyActivePasses(const oxRenderSettingsPresetSPtr& record) const;
    void pushExportSettings(const oxRenderSettingsPresetSPtr& record) const;
    QString clusterHosts() const;
    friend void checkFileWritingForPresetsCB(oxMessage& message);
    friend void checkFileWritingForPresetCB(oxMessage& message);

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

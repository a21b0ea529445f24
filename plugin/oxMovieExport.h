#pragma once

#include "oxModuleBase.h"

#include <QPointer>

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
    /// The Render Settings window.
    QWidget* getMainWidget() override;
    oxRenderSettings* getRenderSettingsWindow() const;
    /// The "Export Snapshot" action; null when the host has no "File" menu.
    QAction* getExportSnapshotAction() const { return exportSnapshotAction; }

public slots:
    /// Kept for the host's interface; it has no effect.
    void exportImageDialog(int result);

private:
    void handleMessage(oxMessage& message);
    void createWindow();
    void dockWindow();
    void createActions();

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

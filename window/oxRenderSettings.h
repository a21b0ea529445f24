#pragma once

#include "oxRenderSettingsPreset.h"
#include "ui_oxRenderSettingsGUI.h"

#include <QMainWindow>
#include <QTimer>

class QAction;
class QActionGroup;
class QTreeWidget;
class oxImageWriter;
class oxMovieExport;
class oxPresetGUII;

/// The Render Settings window: the form of every output and raytracing setting, docked into
/// the host by the module. There is one window at a time; instance() reaches it.
class oxRenderSettings : public QMainWindow, public Ui_oxRenderSettingsGUI {
    Q_OBJECT
public:
    /// title names the window in the host's window menu (windowAction); imageWriter is the
    /// module's writer, module the module that owns the window (may be null in tests).
    oxRenderSettings(const QString& title, oxImageWriter* imageWriter,
                     oxMovieExport* module = nullptr, QWidget* parent = nullptr);
    ~oxRenderSettings() override;

    /// The window while one exists, else null.
    static oxRenderSettings* instance();

    /// The window itself, as the host's module interface wants a widget.
    QWidget* getWidget() { return this; }
    oxImageWriter* getImageWriter() const { return imageWriter; }
    oxMovieExport* getMovieExport() const { return movieExport; }

    /// Entry of the window in the host's window menu.
    QAction* getWindowAction() const { return windowAction; }
    /// Placeholder of the variant set tree, in _variantTreeLayout.
    QTreeWidget* getVariantSetTree() const { return variantSetTree; }
    oxPresetGUII* getPresetGUI() const { return presetGUI; }
    QActionGroup* getPresetActionGroup() const { return presetActionGroup; }

    bool isGuiUpdateLocked() const { return guiUpdateLock; }

    /// The settings the window shows: the output fields live here, the raytracing fields are
    /// a copy of the host's services.
    oxRenderSettingsPreset& getCurrentPreset() { return currentPreset; }
    /// The user's named presets and the render job presets, in insertion order.
    oxRenderSettingsPresets& getPresets() { return presets; }
    oxRenderSettingsPresets& getRQPresets() { return rqPresets; }

    QTimer& getVariantGuiTimer() { return variantGuiTimer; }
    QTimer& getStatisticsTimer() { return statisticsTimer; }
    QTimer& getVariantListTimer() { return variantListTimer; }

public slots:
    /// Brings the window's dock to the user.
    void triggeredWindowAction();
    /// Requests a refresh of the variant set display, the statistics and the read-back of the
    /// variant set tree; requests coalesce within one turn of the event loop.
    void updateVariantSetGUI();
    void updateRenderStatistics();
    void updateVariantSetList();

signals:
    /// A render queue job's settings were applied to the window.
    void renderQueuePresetApplied();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void setupWidgets();
    void fitTabsToContents();

    // In the order the window's data are laid out; see the constructor for the order of
    // construction.
    QTreeWidget* variantSetTree = nullptr;
    QAction* windowAction = nullptr;
    oxMovieExport* movieExport = nullptr;
    oxImageWriter* imageWriter = nullptr;
    bool regionSyncLock = false;
    bool guiUpdateLock = false;
    oxRenderSettingsPreset currentPreset;
    oxRenderSettingsPresets presets;
    oxRenderSettingsPresets rqPresets;
    oxPresetGUII* presetGUI = nullptr;
    QActionGroup* presetActionGroup = nullptr;
    QTimer variantGuiTimer;
    QTimer statisticsTimer;
    QTimer variantListTimer;
};

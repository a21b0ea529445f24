#pragma once

#include <QMainWindow>
#include <QPointer>

class QMenu;
class QToolBar;
class QOXDockWindowManager;
class oxRenderView;
class oxScriptEditor;
class oxVariantSetBrowser;

/// The host's main window: menu bar, central render view and dock areas. Its menus are
/// published by name through oxController::getMenu ("File", "Export", "Edit", "Window"); its dock
/// window manager, which also owns the quick-access tool bar, through
/// oxController::getDockWindowManager.
class oxMainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit oxMainWindow(QWidget* parent = nullptr);
    ~oxMainWindow() override;

    QMenu* fileMenu() const { return m_fileMenu; }
    QMenu* exportMenu() const { return m_exportMenu; }
    QMenu* editMenu() const { return m_editMenu; }
    QMenu* windowMenu() const { return m_windowMenu; }
    QToolBar* quickAccessToolBar() const { return m_quickAccess; }
    QOXDockWindowManager* dockWindowManager() const { return m_dockWindowManager; }
    /// The Script Editor, docked as "ScriptEditor" (hidden until chosen in the Window menu).
    oxScriptEditor* scriptEditor() const;
    /// The scene's variant sets, docked as "VariantSets" (hidden until chosen).
    oxVariantSetBrowser* variantSetBrowser() const;
    /// The central view of the scene through the raytracer.
    oxRenderView* renderView() const;
    /// Edit > Preferences: the preferences dialog, modal, showing page when it is named.
    /// Gives the dialog's result (QDialog::Accepted after OK).
    int showPreferences(const QString& page = QString());

private:
    // File > Open, Save and Save As: project and model files of oxSceneIO.
    void openScene();
    void saveScene();
    void saveSceneAs();

    QMenu* m_fileMenu = nullptr;
    QMenu* m_exportMenu = nullptr;
    QMenu* m_editMenu = nullptr;
    QMenu* m_windowMenu = nullptr;
    QToolBar* m_quickAccess = nullptr;
    QOXDockWindowManager* m_dockWindowManager = nullptr;
    QPointer<oxScriptEditor> m_scriptEditor;
    QPointer<oxVariantSetBrowser> m_variantSetBrowser;
    oxRenderView* m_renderView = nullptr;
};

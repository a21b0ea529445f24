#pragma once

#include <QDockWidget>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QToolBar>

class QAction;
class QMainWindow;
#include <QMenu>
#include <QMainWindow>

/// A dock window of the host, made by QOXDockWindowManager::add.
class QOXDockWidget : public QDockWidget {
    Q_OBJECT
public:
    QOXDockWidget(const QString& name, const QString& title, QWidget* parent = nullptr);

    /// The short text under which the dock is offered ("Rendering").
    QString text() const { return m_text; }
    void setText(const QString& text) { m_text = text; }
    /// The name of the tool clip (help card) shown for the dock.
    QString toolClip() const { return m_toolClip; }
    void setToolClip(const QString& toolClip) { m_toolClip = toolClip; }

private:
    QString m_text;
    QString m_toolClip;
};

/// Docks module windows into the main window, keeps them by name, and owns the main window's
/// quick-access tool bar. The main window creates the one manager and registers it with
/// oxController::setDockWindowManager.
class QOXDockWindowManager : public QObject {
    Q_OBJECT
public:
    /// windowMenu, when given, receives a show/hide entry for each dock.
    QOXDockWindowManager(QMainWindow* mainWindow, QToolBar* quickAccessBar,
                         QMenu* windowMenu = nullptr);
    ~QOXDockWindowManager() override;

    /// Docks widget under name. text is the dock's short text, toolClip its help card, icon
    /// an oxIconManager name, title the dock's window title; area 0 lets the manager choose
    /// (right side); visible says whether the dock starts shown. The entry for the dock goes
    /// into menu, or into the manager's window menu when menu is null. A second add under a
    /// used name replaces the old dock. When widget is destroyed its dock goes away too.
    QOXDockWidget* add(const QString& name, const QString& text, QWidget* widget,
                       const QString& toolClip, const QString& icon, const QString& title, int area,
                       bool visible, QMenu* menu);
    /// The dock docked under name, or null.
    QOXDockWidget* getDockWidget(const QString& name) const;
    /// Brings the dock of name to the user: shown, floating and raised. False for an unknown
    /// name.
    bool undock(const QString& name);
    /// Puts action on the quick-access tool bar under name (its object name). The action
    /// leaves the bar when it is destroyed.
    void addQuickAccessAction(QAction* action, const QString& name);
    /// The quick-access action of name, or null.
    QAction* getQuickAccessAction(const QString& name) const;
    QToolBar* quickAccessToolBar() const { return m_quickAccess; }
    QStringList dockNames() const { return m_docks.keys(); }

private:
    void forget(const QString& name, QOXDockWidget* dock);

    QPointer<QMainWindow> m_mainWindow;
    QPointer<QToolBar> m_quickAccess;
    QPointer<QMenu> m_windowMenu;
    QMap<QString, QPointer<QOXDockWidget>> m_docks;
};

#include "QOXDockWindowManager.h"

#include "oxCallTrace.h"
#include "oxIconManager.h"
#include "oxLog.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QToolBar>

QOXDockWidget::QOXDockWidget(const QString& name, const QString& title, QWidget* parent)
    : QDockWidget(title, parent)
{
    setObjectName(name);
}

QOXDockWindowManager::QOXDockWindowManager(QMainWindow* mainWindow, QToolBar* quickAccessBar,
                                           QMenu* windowMenu)
    : QObject(mainWindow), m_mainWindow(mainWindow), m_quickAccess(quickAccessBar),
      m_windowMenu(windowMenu)
{
    setObjectName(QStringLiteral("QOXDockWindowManager"));
}

QOXDockWindowManager::~QOXDockWindowManager() = default;

QOXDockWidget* QOXDockWindowManager::add(const QString& name, const QString& text, QWidget* widget,
                                         const QString& toolClip, const QString& icon,
                                         const QString& title, int area, bool visible, QMenu* menu)
{
    oxCallTrace::record("QOXDockWindowManager::add", name.toStdString());
    if (!m_mainWindow || !widget) {
        oxLog::error("Dock window '%s' can't be added: %s.", qPrintable(name),
                     widget ? "the main window is gone" : "there is no widget");
        return nullptr;
    }
    if (QOXDockWidget* old = getDockWidget(name)) {
        forget(name, old);
        old->deleteLater();
    }

    auto* dock = new QOXDockWidget(name, title, m_mainWindow);
    dock->setText(text);
    dock->setToolClip(toolClip);
    dock->setWindowIcon(oxIconManager::getIcon(icon, QString()));
    dock->setWidget(widget);
    const auto dockArea =
        area == 0 ? Qt::RightDockWidgetArea : static_cast<Qt::DockWidgetArea>(area);
    m_mainWindow->addDockWidget(dockArea, dock);
    dock->setVisible(visible);

    QAction* toggle = dock->toggleViewAction();
    toggle->setText(title);
    toggle->setIcon(dock->windowIcon());
    if (QMenu* target = menu ? menu : m_windowMenu.data())
        target->addAction(toggle);

    m_docks.insert(name, dock);
    // A module deletes its window at unload; the dock must not linger empty in the main window.
    connect(widget, &QObject::destroyed, this, [this, name, dock]() { forget(name, dock); });
    return dock;
}

void QOXDockWindowManager::forget(const QString& name, QOXDockWidget* dock)
{
    const auto it = m_docks.find(name);
    if (it != m_docks.end() && it.value() == dock)
        m_docks.erase(it);
    if (!dock)
        return;
    if (m_mainWindow)
        m_mainWindow->removeDockWidget(dock);
    dock->hide();
    // The dock may be running the destruction of its own child right now.
    dock->deleteLater();
}

QOXDockWidget* QOXDockWindowManager::getDockWidget(const QString& name) const
{
    return m_docks.value(name).data();
}

bool QOXDockWindowManager::undock(const QString& name)
{
    oxCallTrace::record("QOXDockWindowManager::undock", name.toStdString());
    QOXDockWidget* dock = getDockWidget(name);
    if (!dock)
        return false;
    dock->setFloating(true);
    dock->show();
    dock->raise();
    return true;
}

void QOXDockWindowManager::addQuickAccessAction(QAction* action, const QString& name)
{
    oxCallTrace::record("QOXDockWindowManager::addQuickAccessAction", name.toStdString());
    if (!action || !m_quickAccess)
        return;
    action->setObjectName(name);
    m_quickAccess->addAction(action);
}

QAction* QOXDockWindowManager::getQuickAccessAction(const QString& name) const
{
    if (!m_quickAccess)
        return nullptr;
    for (QAction* action : m_quickAccess->actions()) {
        if (action->objectName() == name)
            return action;
    }
    return nullptr;
}

#pragma once

#include <QMainWindow>

class QMenu;

/// The host's main window: menu bar, central render view and dock areas. Its menus are
/// published by name through oxController::getMenu ("File", "Export").
class oxMainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit oxMainWindow(QWidget* parent = nullptr);
    ~oxMainWindow() override;

    QMenu* fileMenu() const { return m_fileMenu; }
    QMenu* exportMenu() const { return m_exportMenu; }

private:
    QMenu* m_fileMenu = nullptr;
    QMenu* m_exportMenu = nullptr;
};

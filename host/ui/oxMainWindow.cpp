#include "oxMainWindow.h"

#include "oxController.h"
#include "oxPlatform.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>

oxMainWindow::oxMainWindow(QWidget* parent) : QMainWindow(parent)
{
    setObjectName(QStringLiteral("oxMainWindow"));
    setWindowTitle(oxPlatform::getAppVersionName());
    resize(1280, 800);

    m_fileMenu = menuBar()->addMenu(tr("&File"));
    m_fileMenu->setObjectName(QStringLiteral("File"));
    m_exportMenu = m_fileMenu->addMenu(tr("Export"));
    m_exportMenu->setObjectName(QStringLiteral("Export"));
    m_fileMenu->addSeparator();
    QAction* quit = m_fileMenu->addAction(tr("&Quit"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &QWidget::close);

    auto* view = new QLabel(tr("Render view"), this);
    view->setObjectName(QStringLiteral("renderView"));
    view->setAlignment(Qt::AlignCenter);
    view->setMinimumSize(320, 240);
    setCentralWidget(view);

    oxController::registerMenu("File", m_fileMenu);
    oxController::registerMenu("Export", m_exportMenu);
    oxController::setMainWindow(this);
}

oxMainWindow::~oxMainWindow()
{
    oxController::registerMenu("File", nullptr);
    oxController::registerMenu("Export", nullptr);
    if (oxController::getMainWindow() == this)
        oxController::setMainWindow(nullptr);
}

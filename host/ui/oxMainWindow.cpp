#include "oxMainWindow.h"

#include "QOXDockWindowManager.h"
#include "oxController.h"
#include "oxPlatform.h"
#include "oxPreferencesDialog.h"
#include "oxRenderView.h"
#include "oxScene.h"
#include "oxSceneIO.h"
#include "oxScriptEditor.h"
#include "oxVariantSetBrowser.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QFileDialog>
#include <QMessageBox>
#include <QToolBar>

oxMainWindow::oxMainWindow(QWidget* parent) : QMainWindow(parent)
{
    setObjectName(QStringLiteral("oxMainWindow"));
    setWindowTitle(oxPlatform::getAppVersionName());
    resize(1280, 800);

    m_fileMenu = menuBar()->addMenu(tr("&File"));
    m_fileMenu->setObjectName(QStringLiteral("File"));
    QAction* open = m_fileMenu->addAction(tr("&Open..."));
    open->setShortcut(QKeySequence::Open);
    connect(open, &QAction::triggered, this, &oxMainWindow::openScene);
    QAction* save = m_fileMenu->addAction(tr("&Save"));
    save->setShortcut(QKeySequence::Save);
    connect(save, &QAction::triggered, this, &oxMainWindow::saveScene);
    QAction* saveAs = m_fileMenu->addAction(tr("Save &As..."));
    saveAs->setShortcut(QKeySequence::SaveAs);
    connect(saveAs, &QAction::triggered, this, &oxMainWindow::saveSceneAs);
    m_fileMenu->addSeparator();
    m_exportMenu = m_fileMenu->addMenu(tr("Export"));
    m_exportMenu->setObjectName(QStringLiteral("Export"));
    m_fileMenu->addSeparator();
    QAction* quit = m_fileMenu->addAction(tr("&Quit"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &QWidget::close);

    m_editMenu = menuBar()->addMenu(tr("&Edit"));
    m_editMenu->setObjectName(QStringLiteral("Edit"));
    QAction* preferences = m_editMenu->addAction(tr("&Preferences..."));
    preferences->setObjectName(QStringLiteral("Preferences"));
    preferences->setShortcut(QKeySequence::Preferences);
    preferences->setMenuRole(QAction::PreferencesRole);
    connect(preferences, &QAction::triggered, this, [this] { showPreferences(); });

    m_renderView = new oxRenderView(this);
    setCentralWidget(m_renderView);

    m_windowMenu = menuBar()->addMenu(tr("&Window"));
    m_windowMenu->setObjectName(QStringLiteral("Window"));
    m_quickAccess = addToolBar(tr("Quick Access"));
    m_quickAccess->setObjectName(QStringLiteral("QuickAccessToolBar"));
    m_quickAccess->setIconSize(
        QSize(oxPlatform::getMediumIconSizeX(), oxPlatform::getMediumIconSizeY()));
    m_quickAccess->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_windowMenu->addAction(m_quickAccess->toggleViewAction());
    m_windowMenu->addSeparator();
    setDockOptions(dockOptions() | QMainWindow::AllowTabbedDocks);
    m_dockWindowManager = new QOXDockWindowManager(this, m_quickAccess, m_windowMenu);
    oxController::setDockWindowManager(m_dockWindowManager);
    oxController::registerMenu("Window", m_windowMenu);

    // Scripts are written and run in a dock of its own, hidden until asked for.
    m_scriptEditor = new oxScriptEditor(this);
    m_dockWindowManager->add(QStringLiteral("ScriptEditor"), tr("Script Editor"), m_scriptEditor,
                             QString(), QStringLiteral("StartRendering"), tr("Script Editor"),
                             Qt::BottomDockWidgetArea, false, nullptr);

    // The scene's variant sets, to apply, rename and drag into other views.
    m_variantSetBrowser = new oxVariantSetBrowser(this);
    m_dockWindowManager->add(QStringLiteral("VariantSets"), tr("Variant Sets"), m_variantSetBrowser,
                             QString(), QStringLiteral("CreateNew"), tr("Variant Sets"),
                             Qt::LeftDockWidgetArea, false, nullptr);

    oxController::registerMenu("File", m_fileMenu);
    oxController::registerMenu("Export", m_exportMenu);
    oxController::registerMenu("Edit", m_editMenu);
    oxController::setMainWindow(this);
}

oxMainWindow::~oxMainWindow()
{
    oxController::registerMenu("File", nullptr);
    oxController::registerMenu("Export", nullptr);
    oxController::registerMenu("Window", nullptr);
    oxController::registerMenu("Edit", nullptr);
    if (oxController::getDockWindowManager() == m_dockWindowManager)
        oxController::setDockWindowManager(nullptr);
    if (oxController::getMainWindow() == this)
        oxController::setMainWindow(nullptr);
}

void oxMainWindow::openScene()
{
    const QString file = QFileDialog::getOpenFileName(
        this, tr("Open"), QString(), tr("Scenes (*.oxp *.gltf *.glb);;All files (*)"));
    if (file.isEmpty())
        return;
    if (!oxSceneIO::open(file.toStdString()))
        QMessageBox::warning(this, oxPlatform::getAppVersionName(),
                             tr("\"%1\" couldn't be opened; the log says why. The scene is "
                                "unchanged.")
                                 .arg(file));
}

void oxMainWindow::saveScene()
{
    const std::string& current = oxScene::current().fileName;
    if (current.size() < 4 || current.compare(current.size() - 4, 4, ".oxp") != 0) {
        saveSceneAs(); // a model or the built-in scene is saved as a new project
        return;
    }
    if (!oxSceneIO::save(current))
        QMessageBox::warning(this, oxPlatform::getAppVersionName(),
                             tr("The project couldn't be saved; the log says why."));
}

void oxMainWindow::saveSceneAs()
{
    QString file =
        QFileDialog::getSaveFileName(this, tr("Save As"), QString(), tr("Projects (*.oxp)"));
    if (file.isEmpty())
        return;
    if (!file.endsWith(QStringLiteral(".oxp")))
        file += QStringLiteral(".oxp");
    if (!oxSceneIO::save(file.toStdString()))
        QMessageBox::warning(this, oxPlatform::getAppVersionName(),
                             tr("\"%1\" couldn't be saved; the log says why.").arg(file));
}

oxScriptEditor* oxMainWindow::scriptEditor() const { return m_scriptEditor; }

oxVariantSetBrowser* oxMainWindow::variantSetBrowser() const { return m_variantSetBrowser; }

oxRenderView* oxMainWindow::renderView() const { return m_renderView; }

int oxMainWindow::showPreferences(const QString& page)
{
    oxPreferencesDialog dialog(this);
    if (!page.isEmpty())
        dialog.selectPage(page);
    return dialog.exec();
}

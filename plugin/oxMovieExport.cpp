#include "oxMovieExport.h"

#include "QOXCollapsibleFrame.h"
#include "QOXDockWindowManager.h"
#include "oxController.h"
#include "oxFileIO.h"
#include "oxIconManager.h"
#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxMovieExportCallbacks.h"
#include "oxPlatform.h"
#include "oxRenderSettings.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QPushButton>

#include <cstdio>

oxMovieExport* theMovieExport = nullptr;

namespace {
// The module's flag value in the host's module registry.
constexpr uint64_t kModuleFlags = 40976;
// The window's dock: its name, short text, help card and icon.
const char kDockName[] = "Render Settings";
const char kDockText[] = "Rendering";
const char kDockToolClip[] = "Toolclip_Render";
const char kWindowIcon[] = "CreateImage";
const char kQuickRenderName[] = "QuickRender";
// Width of the first column of the window's sections, and of the render pass tabs.
constexpr int kSectionLabelWidth = 130;
constexpr int kPassTabLabelWidth = 120;
} // namespace

oxMovieExport::oxMovieExport() : oxModuleBase("MovieExport", "IGNORE", kModuleFlags, nullptr)
{
    imageWriter = new oxImageWriter();
    theMovieExport = this;
    try {
        createWindow();
        renderSettingsWindow->loadDefaultSettings(false);
        connectWindow();
        dressFileChooser();
        dockWindow();
        createActions();
        registerCallbacks();
        QOXCollapsibleFrame::fixLayouts(renderSettingsWindow, kSectionLabelWidth, nullptr);
        for (QWidget* tab :
             {static_cast<QWidget*>(renderSettingsWindow->RenderpassesTab),
              renderSettingsWindow->combinedChannelsTab, renderSettingsWindow->separateChannelsTab})
            QOXCollapsibleFrame::fixLayout(tab, kPassTabLabelWidth);
    } catch (...) {
        // What was built goes again; the writer stays, as it always does.
        delete exportSnapshotAction;
        exportSnapshotAction = nullptr;
        delete renderSettingsWindow.data();
        renderSettingsWindow = nullptr;
        theMovieExport = nullptr;
        throw;
    }
}

void oxMovieExport::createWindow()
{
    renderSettingsWindow =
        new oxRenderSettings(QStringLiteral("Render Settings"), imageWriter, this);
}

void oxMovieExport::connectWindow()
{
    oxRenderSettings* window = renderSettingsWindow;
    connect(window->_render, &QPushButton::clicked, this, &oxMovieExport::clickedRender);
    connect(window->_addToRenderQueue, &QPushButton::clicked, this,
            &oxMovieExport::clickedAddToRenderQueue);
    connect(window->_sendToClusterQueue, &QPushButton::clicked, this,
            &oxMovieExport::clickedSendToClusterQueue);
    connect(window, &oxRenderSettings::renderQueuePresetApplied, this,
            &oxMovieExport::applyFirstSettings);
    connect(window->_choose_filename, &QPushButton::clicked, this, &oxMovieExport::openFileDialog);
}

void oxMovieExport::registerCallbacks() { addCallbacks(kMovieExportCallbacks); }

void oxMovieExport::dressFileChooser()
{
    // The file chooser is an icon button of the host's medium icon size.
    QPushButton* chooser = renderSettingsWindow->_choose_filename;
    const QSize iconSize(oxPlatform::getMediumIconSizeX(), oxPlatform::getMediumIconSizeY());
    chooser->setIconSize(iconSize);
    chooser->setMinimumSize(iconSize + QSize(2, 2));
    chooser->setMaximumSize(iconSize + QSize(2, 2));
    chooser->setIcon(oxIconManager::getIcon(QStringLiteral("FileOpen"), QString()));
    // The button is too small for its text, which still tells what it does as a tool tip.
    if (chooser->toolTip().isEmpty())
        chooser->setToolTip(chooser->text());
    chooser->setText(QString());
}

void oxMovieExport::dockWindow()
{
    QOXDockWindowManager* manager = oxController::getDockWindowManager();
    if (!manager) {
        oxLog::debug("oxMovieExport: the host has no dock window manager; the Render Settings "
                     "window stays undocked.");
        return;
    }
    renderDockHandle =
        manager->add(QString::fromLatin1(kDockName), QString::fromLatin1(kDockText),
                     renderSettingsWindow, QString::fromLatin1(kDockToolClip),
                     QString::fromLatin1(kWindowIcon), tr("Render"), 0, true, nullptr);
}

void oxMovieExport::createActions()
{
    auto* quickRender = new QAction(
        oxIconManager::getIcon(QStringLiteral("StartRendering"), QString()), tr("Render"), this);
    quickRender->setIconText(tr("Render"));
    quickRender->setToolTip(tr("Renders with actual export settings"));
    connect(quickRender, &QAction::triggered, this, &oxMovieExport::clickedRender);
    if (QOXDockWindowManager* manager = oxController::getDockWindowManager())
        manager->addQuickAccessAction(quickRender, QString::fromLatin1(kQuickRenderName));
    else
        quickRender->setObjectName(QString::fromLatin1(kQuickRenderName));

    QMenu* fileMenu = oxController::getMenu("File");
    if (!fileMenu)
        return;
    exportSnapshotAction =
        new QAction(oxIconManager::getIcon(QString::fromLatin1(kWindowIcon), QString()),
                    tr("Export Snapshot"), this);
    exportSnapshotAction->setObjectName(QStringLiteral("Export Snapshot"));
    exportSnapshotAction->setShortcut(QKeySequence(QKeySequence::Print));
    connect(exportSnapshotAction, &QAction::triggered, this, &oxMovieExport::exportSnapshot);
    QMenu* exportMenu = oxController::getMenu("Export");
    if (!exportMenu)
        return;
    // Right behind the "Export" submenu in the File menu, unless the submenu is one of the
    // File menu's last two entries: then inside the submenu.
    const QList<QAction*> fileActions = fileMenu->actions();
    const int next = fileActions.indexOf(exportMenu->menuAction()) + 1;
    if (next < fileActions.size() - 1)
        fileMenu->insertAction(fileActions.at(next), exportSnapshotAction);
    else
        exportMenu->addAction(exportSnapshotAction);
}

QWidget* oxMovieExport::getMainWidget() { return renderSettingsWindow; }

oxRenderSettings* oxMovieExport::getRenderSettingsWindow() const { return renderSettingsWindow; }

oxMovieExport::~oxMovieExport()
{
    std::printf("oxMovieExport::~oxMovieExport\n");
    std::fflush(stdout);

    // The snapshot action is taken out of the "Export" menu, wherever it was put.
    if (QMenu* exportMenu = oxController::getMenu("Export")) {
        if (exportSnapshotAction)
            exportMenu->removeAction(exportSnapshotAction);
        if (renderSettingsWindow && renderSettingsWindow->getWindowAction())
            exportMenu->removeAction(renderSettingsWindow->getWindowAction());
    }
    // At process exit after the application object is gone, no widget can be destroyed.
    if (QCoreApplication::instance())
        delete renderSettingsWindow.data();
    renderSettingsWindow = nullptr;
    removeCallbacks(kMovieExportCallbacks);
    if (theMovieExport == this)
        theMovieExport = nullptr;
}

void oxMovieExport::activateModule() {}

int oxMovieExport::receivedMessage(oxMessage& message)
{
    try {
        handleMessage(message);
    } catch (...) {
        oxLog::error("oxMovieExport::receivedMessage : An unknown exception occurred!");
    }
    return 0;
}

void oxMovieExport::handleMessage(oxMessage& message)
{
    switch (message.id()) {
    case oxController::MessageRefresh:
        if (!renderSettingsWindow)
            return;
        renderSettingsWindow->updateGUI();
        if (renderSettingsWindow->isVisible())
            renderSettingsWindow->_view->update();
        return;
    case oxController::MessageProjectReadWrite: {
        oxMessage& project = oxFileIO::getProject();
        bool loading = false;
        if (!getFromMessage(project, "_loading", loading) || !renderSettingsWindow)
            return;
        if (loading) {
            renderSettingsWindow->loadSettings(project);
            const oxRenderSettingsPreset& settings = renderSettingsWindow->getCurrentPreset();
            imageWriter->setExportTiffHDR(settings.tiffHDR);
            imageWriter->setExportExrHalf(settings.exrHalf);
            imageWriter->setExportMultiLayer(settings.multiLayer);
        } else {
            renderSettingsWindow->saveSettings(project);
        }
        return;
    }
    case oxController::MessageNewScene:
        if (renderSettingsWindow)
            renderSettingsWindow->loadDefaultSettings(true);
        imageWriter->resetExportSettings();
        return;
    default:
        return;
    }
}

void oxMovieExport::exportImageDialog(int) {}

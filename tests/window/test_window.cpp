// The Render Settings window as the module builds it, docked into the host's main window.

#include "QOXDockWindowManager.h"
#include "oxCallTrace.h"
#include "oxController.h"
#include "oxImageWriter.h"
#include "oxMainWindow.h"
#include "oxMovieExport.h"
#include "oxPresetGUII.h"
#include "oxRenderSettings.h"
#include "oxRenderSettingsForm.h"
#include "oxVariantSetTree.h"

#include "oxQtPrinters.h"
#include "oxModuleTest.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QMenu>
#include <QTabBar>
#include <QToolBar>
#include <QTreeWidget>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

// A module made and unloaded inside one test, in a host main window of its own.
class WindowTest : public oxModuleTest {
protected:
    void SetUp() override
    {
        oxModuleTest::SetUp();
        mainWindow = std::make_unique<oxMainWindow>();
    }
    void TearDown() override
    {
        unload();
        oxModuleTest::TearDown();
    }
    void unload()
    {
        if (module) {
            EXPECT_EQ(unloadModule(), "oxMovieExport::~oxMovieExport\n");
        }
    }
};

QStringList actionTexts(const QMenu* menu)
{
    QStringList texts;
    for (const QAction* action : menu->actions())
        texts << (action->isSeparator() ? QStringLiteral("-") : action->text());
    return texts;
}

} // namespace

TEST_F(WindowTest, ModuleDocksItsWindowAndPublishesTheQuickRenderAction)
{
    load();
    ASSERT_NE(window(), nullptr);
    EXPECT_EQ(oxRenderSettings::instance(), window());
    EXPECT_EQ(module->getMainWidget(), window());
    EXPECT_EQ(window()->getImageWriter(), module->getImageWriter());
    EXPECT_EQ(window()->getMovieExport(), module.get());

    QOXDockWindowManager* manager = oxController::getDockWindowManager();
    ASSERT_EQ(manager, mainWindow->dockWindowManager());
    QOXDockWidget* dock = manager->getDockWidget("Render Settings");
    ASSERT_NE(dock, nullptr);
    EXPECT_EQ(dock->widget(), window());
    EXPECT_EQ(dock->windowTitle(), "Render");
    EXPECT_EQ(dock->text(), "Rendering");
    EXPECT_EQ(dock->toolClip(), "Toolclip_Render");
    EXPECT_FALSE(dock->windowIcon().isNull());
    EXPECT_EQ(mainWindow->dockWidgetArea(dock), Qt::RightDockWidgetArea);
    EXPECT_TRUE(mainWindow->windowMenu()->actions().contains(dock->toggleViewAction()));

    QAction* quick = manager->getQuickAccessAction("QuickRender");
    ASSERT_NE(quick, nullptr);
    EXPECT_EQ(quick->text(), "Render");
    EXPECT_EQ(quick->iconText(), "Render");
    EXPECT_EQ(quick->toolTip(), "Renders with actual export settings");
    EXPECT_FALSE(quick->icon().isNull());
    EXPECT_EQ(quick->parent(), module.get());

    // The file chooser is an icon button of medium icon size plus 2.
    QPushButton* chooser = window()->_choose_filename;
    EXPECT_FALSE(chooser->icon().isNull());
    EXPECT_EQ(chooser->maximumSize(), chooser->iconSize() + QSize(2, 2));
    EXPECT_EQ(chooser->minimumSize(), chooser->maximumSize());

    // The window action brings the dock out.
    window()->getWindowAction()->trigger();
    EXPECT_TRUE(dock->isFloating());

    // Unloading takes the window, its dock and its actions away; loading builds them anew.
    QPointer<oxRenderSettings> gone = window();
    QPointer<QOXDockWidget> goneDock = dock;
    const int toolBarActions = mainWindow->quickAccessToolBar()->actions().size();
    const int fileActions = mainWindow->fileMenu()->actions().size();
    unload();
    EXPECT_TRUE(gone.isNull());
    EXPECT_EQ(oxRenderSettings::instance(), nullptr);
    EXPECT_TRUE(goneDock.isNull());
    EXPECT_EQ(manager->getDockWidget("Render Settings"), nullptr);
    EXPECT_EQ(manager->getQuickAccessAction("QuickRender"), nullptr);
    EXPECT_EQ(mainWindow->quickAccessToolBar()->actions().size(), toolBarActions - 1);
    EXPECT_EQ(mainWindow->fileMenu()->actions().size(), fileActions - 1);
    EXPECT_EQ(theMovieExport, nullptr);
    load();
    EXPECT_NE(manager->getDockWidget("Render Settings"), nullptr);
    EXPECT_NE(manager->getQuickAccessAction("QuickRender"), nullptr);
}

TEST_F(WindowTest, ExportSnapshotStandsBehindTheExportSubmenuUnlessItIsNearTheEnd)
{
    QMenu* file = mainWindow->fileMenu();
    QMenu* exportMenu = mainWindow->exportMenu();
    // What follows the Export submenu in the File menu, and where the action then stands.
    struct Case {
        QStringList after;
        QStringList fileWithAction;
        QStringList exportWithAction;
    };
    const std::vector<Case> cases = {
        {{"-", "Quit"}, {"Open", "Export", "Export Snapshot", "-", "Quit"}, {}},
        {{"Quit"}, {"Open", "Export", "Quit"}, {"Export Snapshot"}},
        {{}, {"Open", "Export"}, {"Export Snapshot"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.after.join(' ').toStdString());
        file->clear();
        file->addAction("Open");
        file->addMenu(exportMenu);
        for (const QString& text : c.after)
            text == "-" ? file->addSeparator() : file->addAction(text);
        const QStringList before = actionTexts(file);
        load();
        QAction* snapshot = module->getExportSnapshotAction();
        ASSERT_NE(snapshot, nullptr);
        EXPECT_EQ(snapshot->shortcut(), QKeySequence(QKeySequence::Print));
        EXPECT_EQ(snapshot->parent(), module.get());
        EXPECT_EQ(actionTexts(file), c.fileWithAction);
        EXPECT_EQ(actionTexts(exportMenu), c.exportWithAction);
        unload();
        EXPECT_EQ(actionTexts(file), before);
        EXPECT_TRUE(exportMenu->actions().isEmpty());
    }
}

TEST_F(WindowTest, WithoutFileMenuThereIsNoSnapshotAction)
{
    oxController::registerMenu("File", nullptr);
    load();
    EXPECT_EQ(module->getExportSnapshotAction(), nullptr);
    EXPECT_TRUE(mainWindow->exportMenu()->actions().isEmpty());

    // A File menu without an "Export" submenu: the action exists but stands nowhere.
    unload();
    oxController::registerMenu("File", mainWindow->fileMenu());
    oxController::registerMenu("Export", nullptr);
    const QStringList before = actionTexts(mainWindow->fileMenu());
    load();
    ASSERT_NE(module->getExportSnapshotAction(), nullptr);
    EXPECT_TRUE(module->getExportSnapshotAction()->associatedWidgets().isEmpty());
    EXPECT_EQ(actionTexts(mainWindow->fileMenu()), before);
}

TEST_F(WindowTest, ButtonsReachTheModuleAndCallbacksComeAndGoInOrder)
{
    oxCallTrace::clear();
    oxCallTrace::setEnabled(true);
    load();
    const std::vector<std::string> expected = {
        "checkFileWritingForPresets", "checkFileWritingForPreset", "oxMovieExport::exportMovie",
        "oxMovieExport::exportSnapshot", "oxMovieExport::clickedAddToRenderQueue"};
    // The window registers callbacks of its own; the module's come after them, in order.
    auto moduleCallbacks = [&expected](const char* operation) {
        std::vector<std::string> names;
        for (const oxCallTrace::Call& call : oxCallTrace::calls())
            if (call.name == operation &&
                std::find(expected.begin(), expected.end(), call.arguments) != expected.end())
                names.push_back(call.arguments);
        return names;
    };
    EXPECT_EQ(moduleCallbacks("oxController::addCB"), expected);
    for (const std::string& name : expected)
        EXPECT_TRUE(oxController::hasCB(name.c_str())) << name;
    EXPECT_TRUE(oxController::hasCB("oxRenderSettings::update"));

    // disconnect() answers whether the connection was there.
    oxRenderSettings* w = window();
    oxMovieExport* m = module.get();
    EXPECT_TRUE(
        QObject::disconnect(w->_render, &QPushButton::clicked, m, &oxMovieExport::clickedRender));
    EXPECT_TRUE(QObject::disconnect(w->_addToRenderQueue, &QPushButton::clicked, m,
                                    &oxMovieExport::clickedAddToRenderQueue));
    EXPECT_TRUE(QObject::disconnect(w->_sendToClusterQueue, &QPushButton::clicked, m,
                                    &oxMovieExport::clickedSendToClusterQueue));
    EXPECT_TRUE(QObject::disconnect(w->_choose_filename, &QPushButton::clicked, m,
                                    &oxMovieExport::openFileDialog));
    QAction* quick = oxController::getDockWindowManager()->getQuickAccessAction("QuickRender");
    EXPECT_TRUE(QObject::disconnect(quick, &QAction::triggered, m, &oxMovieExport::clickedRender));
    EXPECT_TRUE(QObject::disconnect(m->getExportSnapshotAction(), &QAction::triggered, m,
                                    &oxMovieExport::exportSnapshot));

    oxCallTrace::clear();
    unload();
    EXPECT_EQ(moduleCallbacks("oxController::subCB"), expected);
    for (const std::string& name : expected)
        EXPECT_FALSE(oxController::hasCB(name.c_str())) << name;
    // The window's own callbacks go with it.
    EXPECT_FALSE(oxController::hasCB("oxRenderSettings::update"));
    EXPECT_FALSE(oxController::hasCB("renderRegionChanged"));
    // But for the job presets' names, which the render queue may still ask for.
    EXPECT_TRUE(oxController::hasCB("getRQPresetNames"));
    oxCallTrace::setEnabled(false);
    oxCallTrace::clear();
}

TEST_F(WindowTest, WindowFillsWhatTheFormCannotHold)
{
    load();
    oxRenderSettings* w = window();

    // Combo boxes whose items carry user data.
    auto expectItems = [](QComboBox* box, const auto& table) {
        ASSERT_EQ(box->count(), static_cast<int>(table.size()));
        for (int i = 0; i < box->count(); ++i) {
            EXPECT_EQ(box->itemText(i), table[i].label);
            EXPECT_EQ(box->itemData(i).toInt(), table[i].value);
        }
    };
    expectItems(w->_filtertype, kPixelFilterTypes);
    expectItems(w->_denoiser_filter, kDenoiseFilterItems);
    EXPECT_EQ(w->_filtertype->itemText(3), "Mitchell Netravali");
    EXPECT_EQ(w->_denoiser_filter->itemText(1), "Deep Learning Stillframe");

    // The window starts from a constructed record and empty preset lists.
    EXPECT_TRUE(w->getCurrentPreset().useRaySplitting);
    EXPECT_TRUE(w->getCurrentPreset().denoiseAlpha);
    EXPECT_TRUE(w->getCurrentPreset().name.empty());
    EXPECT_TRUE(w->getPresets().empty());
    EXPECT_TRUE(w->getRQPresets().empty());
    EXPECT_EQ(w->_denoiser_filter->itemData(1).toInt(), 2);
    for (QComboBox* box :
         {w->_render_mode, w->_interactiveQualityMode, w->_stillFrameQualityMode}) {
        ASSERT_EQ(box->count(), 5);
        EXPECT_EQ(box->itemText(0), "Precomputed");
        EXPECT_EQ(box->itemData(0).toInt(), -1);
        EXPECT_EQ(box->itemText(4), "Full Global Illumination");
        EXPECT_EQ(box->itemData(4).toInt(), 3);
    }

    for (const oxFormWheelRange& range : kWheelRanges) {
        auto* wheel = w->findChild<QOXWheelPrec*>(range.widget);
        ASSERT_NE(wheel, nullptr) << range.widget;
        EXPECT_DOUBLE_EQ(wheel->minimum(), range.minimum) << range.widget;
        if (range.maximum > 0) {
            EXPECT_DOUBLE_EQ(wheel->maximum(), range.maximum) << range.widget;
        }
        EXPECT_DOUBLE_EQ(wheel->singleStep(), range.singleStep) << range.widget;
    }
    // The gamma field shows and keeps hundredths.
    w->_gammaSlider->setValue(2.2);
    EXPECT_DOUBLE_EQ(w->_gammaSlider->value(), 2.2);

    // Spin boxes beside sliders have one fixed width.
    int fixed = 0;
    for (QSpinBox* box : w->findChildren<QSpinBox*>()) {
        if (box->minimumWidth() != box->maximumWidth())
            continue;
        ++fixed;
        EXPECT_EQ(box->minimumWidth(), w->_image_samples_spinbox->minimumWidth());
    }
    EXPECT_EQ(fixed, static_cast<int>(kSliderSpinBoxes.size()));
    EXPECT_GE(w->_interactive_depth_spinbox->maximumHeight(),
              w->_interactive_depth_spinbox->minimumHeight());

    // Button group ids, tab bar, hidden basic section, members.
    EXPECT_EQ(w->_time_or_samples_group->id(w->_use_time), 0);
    EXPECT_EQ(w->_time_or_samples_group->id(w->_use_image_samples), 1);
    EXPECT_FALSE(w->RenderSettingsTabWidget->tabBar()->expanding());
    EXPECT_TRUE(w->_basic_trace_depth_settings->isHidden());
    EXPECT_FALSE(w->_quality_override_groupbox->isHidden());
    EXPECT_EQ(w->getWindowAction()->text(), "Render Settings");
    EXPECT_FALSE(w->getWindowAction()->icon().isNull());
    ASSERT_NE(w->getVariantSetTree(), nullptr);
    EXPECT_EQ(w->_variantTreeLayout->indexOf(w->getVariantSetTree()), 0);
    ASSERT_NE(w->getPresetGUI(), nullptr);
    EXPECT_TRUE(w->getPresetActionGroup()->isExclusive());
    EXPECT_FALSE(w->isGuiUpdateLocked());
}

TEST_F(WindowTest, SectionsLineUpAndFoldedContentsStayFolded)
{
    load();
    oxRenderSettings* w = window();
    // The first columns of the sections line up, on the render pass tabs too.
    auto* imageGrid = qobject_cast<QGridLayout*>(w->_imageCFPage->layout());
    auto* passGrid = qobject_cast<QGridLayout*>(w->combinedChannelsTab->layout());
    ASSERT_TRUE(imageGrid && passGrid);
    EXPECT_GE(imageGrid->columnMinimumWidth(0), 130);
    EXPECT_GE(passGrid->columnMinimumWidth(0), 120);
    EXPECT_LT(passGrid->columnMinimumWidth(0), imageGrid->columnMinimumWidth(0));
    // A folded section hides its page; opening shows it.
    EXPECT_TRUE(w->_clusterCF->isCollapsed());
    EXPECT_TRUE(w->_clusterCFPage->isHidden());
    w->_clusterCF->setCollapsed(false);
    EXPECT_FALSE(w->_clusterCFPage->isHidden());
    EXPECT_FALSE(w->_imageCFPage->isHidden());
}

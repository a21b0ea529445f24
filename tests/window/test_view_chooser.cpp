// The view chooser: its menu lists the scene's cameras, a choice is the record's view, undo
// brings the view before it back, and the choice survives the project and a deleted camera.

#include "oxMenuComboBox.h"
#include "oxNodeService.h"
#include "oxObjectService.h"
#include "oxSettingsWindowSupport.h"
#include "oxUndoStack.h"

#include <QAction>
#include <QCoreApplication>

namespace {

class ViewChooserTest : public oxSettingsWindowTest {
protected:
    void SetUp() override
    {
        oxSettingsWindowTest::SetUp();
        oxUndoStack::the()->clear();
    }
    void TearDown() override
    {
        oxUndoStack::the()->clear();
        oxSettingsWindowTest::TearDown();
    }

    static osg::NodePtr node(const std::string& name)
    {
        return oxNodeUtils::findNode(oxUberCameraPool::the()->getRoot(), name);
    }
    // What a pick from the menu does.
    void pick(const std::string& name) { window()._view->change(QVariant(node(name)->getId())); }
    std::string shown() { return window()._view->currentText().toStdString(); }
};

// The entries of a menu, separators left out; a submenu as "name>" followed by its entries.
QStringList entries(const QMenu& menu)
{
    QStringList texts;
    for (QAction* action : menu.actions()) {
        if (action->isSeparator())
            continue;
        if (action->menu()) {
            texts << action->text() + ">";
            texts << entries(*action->menu());
        } else {
            texts << action->text() + (action->isChecked() ? "*" : "");
        }
    }
    return texts;
}

} // namespace

TEST_F(ViewChooserTest, MenuListsTheCamerasWithTheirViewpointsAndTracksAndMarksTheChoice)
{
    const oxComboboxMenu menu(oxMenuComboBox::kCurrentText, node("Side")->getId());
    EXPECT_EQ(entries(menu), QStringList({"Current", "Perspective>", "Perspective", "Front",
                                          "Side*", "Rear Three-Quarter", "Top", "Turntable"}));
    // Only the chosen entry can carry a check mark.
    int checkable = 0;
    for (QAction* action : menu.findChildren<QAction*>())
        checkable += action->isCheckable() ? 1 : 0;
    EXPECT_EQ(checkable, 1);
    // A camera of the scene's own comes after the built-in ones, behind a separator.
    oxScene::current().addCamera("Studio");
    const oxComboboxMenu withCustom(oxMenuComboBox::kCurrentText, 0);
    EXPECT_EQ(entries(withCustom).first(), "Current*");
    EXPECT_EQ(entries(withCustom).last(), "Studio");
}

TEST_F(ViewChooserTest, ChoiceIsTheRecordsViewAndUndoBringsTheViewBeforeItBack)
{
    pick("Front");
    EXPECT_EQ(current().getViewNode(), node("Front"));
    EXPECT_EQ(window().getSelectedViewNode(), node("Front"));
    pick("Turntable");
    EXPECT_EQ(current().getViewNode(), node("Turntable"));
    EXPECT_FALSE(window()._animType->isEnabled()) << "a track brings its own animation";

    oxUndoStack::the()->performUndo();
    EXPECT_EQ(current().getViewNode(), node("Front"));
    EXPECT_EQ(shown(), "Front");
    oxUndoStack::the()->performUndo();
    EXPECT_TRUE(current().view.empty());
    EXPECT_EQ(shown(), "Current");
    oxUndoStack::the()->performRedo();
    EXPECT_EQ(shown(), "Front");
    EXPECT_EQ(window().getCurrentView(), node("Front"));
}

TEST_F(ViewChooserTest, RefreshShowsTheRecordsViewAndAMissingViewAsCurrent)
{
    current().view = oxNodeUtils::getUniquePath(node("Top"), oxUberCameraPool::the()->getRoot());
    window().updateGUI();
    EXPECT_EQ(shown(), "Top");
    current().view = "Perspective/Gone";
    expectLog(oxLog::Error, "oxRenderSettingsPreset: Unable to find view 'Gone'.");
    window().updateGUI();
    EXPECT_EQ(shown(), "Current");
}

TEST_F(ViewChooserTest, ChoiceTravelsWithTheProject)
{
    pick("Rear Three-Quarter");
    oxMessage project;
    window().saveSettings(project);
    pick("Top");
    window().loadSettings(project);
    EXPECT_EQ(current().getViewNode(), node("Rear Three-Quarter"));
    EXPECT_EQ(shown(), "Rear Three-Quarter");
}

TEST_F(ViewChooserTest, DeletedCameraFallsBackToCurrentAndComesBackWithUndo)
{
    pick("Side");
    const osg::NodePtr side = node("Side");
    ASSERT_TRUE(oxNodeService::the()->deleteNode(side));
    EXPECT_EQ(shown(), "Current");
    EXPECT_TRUE(current().view.empty());

    oxUndoStack::the()->performUndo();
    EXPECT_EQ(shown(), "Side");
    EXPECT_EQ(current().getViewNode(), side);
    EXPECT_EQ(oxUndoStack::the()->index(), 1) << "following the scene adds no undo step";
}

TEST_F(ViewChooserTest, ChangedTrackRefreshesTheStatisticsOnlyWhileTheTrackIsTheView)
{
    const oxdCameraTrackNode track(node("Turntable"));
    QCoreApplication::processEvents();
    oxObjectService::the()->notifyPropertyChanged(track, "viewpoints");
    EXPECT_FALSE(window().getStatisticsTimer().isActive());
    pick("Turntable");
    QCoreApplication::processEvents();
    oxObjectService::the()->notifyPropertyChanged(oxdViewpointNode(node("Front")), "name");
    EXPECT_FALSE(window().getStatisticsTimer().isActive());
    oxObjectService::the()->notifyPropertyChanged(track, "viewpoints");
    EXPECT_TRUE(window().getStatisticsTimer().isActive());
}

// The Variant Sets section on the example scene: sets and groups dropped in from the variant set
// module, ticked in the tree, ordered, saved and loaded as a configuration, and kept in line
// with the module as it changes.

#include "oxSettingsWindowSupport.h"

#include "oxCallTrace.h"
#include "oxPlatform.h"
#include "oxRenderPlan.h"
#include "oxVariantSetTree.h"
#include "oxVariants.h"

#include <QAction>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QMenu>
#include <QSignalSpy>

namespace {

using Names = std::vector<std::string>;

class VariantSetTreeTest : public oxSettingsWindowTest {
protected:
    oxVariantSetTree* tree() { return window().getVariantSetTree(); }

    // Timers of the window run in the next turns of the event loop.
    static void settle()
    {
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
    }

    // A real drop of module objects on the tree, as a drag from the variant set module ends:
    // the drag enters (which makes the tree the drop target), then drops.
    void drop(const QList<oxdVariantSetBase>& objects)
    {
        std::unique_ptr<QMimeData> data(oxMimeUtils::createVariantSetMimeData(objects));
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, data.get(), Qt::LeftButton,
                              Qt::NoModifier);
        QCoreApplication::sendEvent(tree()->viewport(), &enter);
        ASSERT_TRUE(enter.isAccepted());
        QDropEvent event(QPointF(5, 5), Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(tree()->viewport(), &event);
        settle();
    }
    void dropGroup(const char* name) { drop({oxVariants::findVariantGroup(name)}); }
    void dropSet(const char* name) { drop({oxVariants::findVariantSet(name)}); }

    QTreeWidgetItem* groupItem(const QString& name)
    {
        const auto items = tree()->findItems(name, Qt::MatchExactly, 0);
        return items.size() == 1 ? items.front() : nullptr;
    }
    // The user ticks an item: its check state changes in the tree.
    void tick(QTreeWidgetItem* item, bool on)
    {
        ASSERT_NE(item, nullptr);
        item->setData(0, Qt::CheckStateRole, on ? Qt::Checked : Qt::Unchecked);
        settle();
    }
    QTreeWidgetItem* setItem(const QString& group, const QString& set)
    {
        QTreeWidgetItem* parent = groupItem(group);
        for (int i = 0; parent && i < parent->childCount(); ++i)
            if (parent->child(i)->text(0) == set)
                return parent->child(i);
        return nullptr;
    }
    Names active(const std::string& group) { return window().getActiveVariantSets(group); }

    QString path(const char* name) const
    {
        return QString::fromStdString(dir().path()) + QLatin1Char('/') + QLatin1String(name);
    }
    static void writeFile(const QString& name, const QByteArray& text)
    {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
};

TEST_F(VariantSetTreeTest, TickedSetsGiveTheRenderStepsAndFileNames)
{
    dropGroup("Paint");
    dropSet("Rims Sport");
    EXPECT_EQ(window().getVariantSetGroupNames(), (Names{"Paint", "Rims"}));
    EXPECT_EQ(active("Rims"), Names{"Rims Sport"}); // a dropped set is chosen
    EXPECT_EQ(tree()->topLevelItemCount(), 2);
    EXPECT_EQ(groupItem("Paint")->childCount(), 3); // the group's sets from the module

    // Ticking the group ticks its sets; the record reads the sets' states back.
    tick(groupItem("Paint"), true);
    EXPECT_EQ(active("Paint"), (Names{"Paint Red", "Paint Blue", "Paint Silver"}));
    tick(setItem("Paint", "Paint Blue"), false);
    EXPECT_EQ(active("Paint"), (Names{"Paint Red", "Paint Silver"}));
    EXPECT_EQ(setItem("Paint", "Paint Silver")->data(0, Qt::CheckStateRole).toInt(), 2);

    // The tick box switches the crossing on; the names and the example follow.
    window()._variantSetsUsed->setChecked(true);
    settle();
    EXPECT_TRUE(current().variantSetsUsed);
    EXPECT_TRUE(window()._variantSetViewpointsUsed->isEnabled());
    current().filename = dir().path() + "/out/car.png";
    window().updateVariantSetGUI();
    settle();
    EXPECT_EQ(window()._variantSetExampleName->text(), "car_Paint Red_Rims Sport.png");
    EXPECT_EQ(window()._variantSetExampleNamingScheme->text(), "car_$Paint_$Rims.png");
    QStringList names;
    for (const QString& name :
         renderOutputFilenames(*window().getImageWriter(), window().getCurrentRenderSettings()))
        names << QFileInfo(name).fileName();
    EXPECT_EQ(names,
              (QStringList{"car_Paint Red_Rims Sport.png", "car_Paint Silver_Rims Sport.png"}));
    EXPECT_EQ(window()._totalFileCount->text(), "2");

    // Double-clicking a set applies it in the scene, without its view unless asked for.
    oxCallTrace::clear();
    oxCallTrace::setEnabled(true);
    emit tree()->itemDoubleClicked(setItem("Paint", "Paint Blue"), 0);
    oxCallTrace::setEnabled(false);
    const auto& calls = oxCallTrace::calls();
    EXPECT_TRUE(std::any_of(calls.begin(), calls.end(), [](const oxCallTrace::Call& call) {
        return call.name == "oxVariants::selectVariantSet" && call.arguments == "Paint Blue,true";
    }));
}

TEST_F(VariantSetTreeTest, ContextMenuDeletesClearsAddsAllAndOrdersGroups)
{
    EXPECT_FALSE(tree()->getClearAction()->isEnabled());
    EXPECT_FALSE(tree()->getSaveAction()->isEnabled());
    tree()->getAddAllAction()->trigger();
    settle();
    EXPECT_EQ(window().getVariantSetGroupNames(), (Names{"Paint", "Rims"}));
    dropSet("Floor Shown");
    EXPECT_EQ(window().getVariantSetGroupNames(), (Names{"Paint", "Rims", "ungrouped"}));
    EXPECT_TRUE(tree()->getClearAction()->isEnabled());

    // Set items can't be deleted; groups can, the pseudo group only reports an empty name.
    setItem("Paint", "Paint Red")->setSelected(true);
    EXPECT_TRUE(tree()->getActiveAction()->isEnabled());
    EXPECT_FALSE(tree()->getDeleteAction()->isEnabled());
    tree()->clearSelection();
    QSignalSpy removed(tree(), &oxVariantSetTree::variantSetGroupRemoved);
    groupItem("Rims")->setSelected(true);
    groupItem("ungrouped")->setSelected(true);
    EXPECT_TRUE(tree()->getDeleteAction()->isEnabled());
    tree()->getDeleteAction()->trigger();
    settle();
    ASSERT_EQ(removed.size(), 2);
    EXPECT_EQ(removed[1][0].toString(), QString());
    EXPECT_EQ(window().getVariantSetGroupNames(), (Names{"Paint", "ungrouped"}));

    // "Active" ticks the selection.
    groupItem("Paint")->setSelected(true);
    tree()->getActiveAction()->trigger();
    settle();
    EXPECT_EQ(active("Paint").size(), 3u);

    // A dragged group: the record takes the tree's order, unless the two disagree.
    QTreeWidgetItem* moved = tree()->takeTopLevelItem(1);
    tree()->insertTopLevelItem(0, moved);
    emit tree()->orderChanged();
    settle();
    EXPECT_EQ(window().getVariantSetGroupNames(), (Names{"ungrouped", "Paint"}));
    EXPECT_EQ(active("Paint").size(), 3u);
    delete tree()->takeTopLevelItem(0);
    emit tree()->orderChanged();
    EXPECT_EQ(window().getVariantSetGroupNames(), (Names{"ungrouped", "Paint"}));

    tree()->getClearAction()->trigger();
    settle();
    EXPECT_TRUE(window().getVariantSetGroupNames().empty());
    EXPECT_EQ(tree()->topLevelItemCount(), 0);
}

TEST_F(VariantSetTreeTest, ConfigurationFileRoundTripsAndBadFilesChangeNothing)
{
    dropSet("Paint Blue");
    dropSet("Rims Classic");
    dropSet("Hero Shot");
    const oxVariantSetGroups chosen = current().variantSets;

    oxDialogResponder::queueAnswer(path("selection.xml"));
    tree()->getSaveAction()->trigger();
    tree()->getClearAction()->trigger();
    settle();
    oxDialogResponder::queueAnswer(path("selection.xml"));
    tree()->getLoadAction()->trigger();
    settle();
    EXPECT_EQ(current().variantSets, chosen);
    EXPECT_EQ(setItem("Rims", "Rims Classic")->data(0, Qt::CheckStateRole).toInt(), 2);

    QFile saved(path("selection.xml"));
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    const QByteArray text = saved.readAll();
    struct Bad {
        const char* name;
        QByteArray content;
        const char* reason;
    };
    const Bad bad[] = {
        {"truncated.xml", text.left(text.size() / 2), "truncated"},
        {"root.xml", "<?xml version=\"1.0\"?><presets/>", "the root element isn't <oxMessage>"},
    };
    for (const Bad& file : bad) {
        writeFile(path(file.name), file.content);
        allowLogPrefix("oxRenderSettings: the variant set configuration '" +
                       path(file.name).toStdString());
        EXPECT_FALSE(window().loadVariantSetConfiguration(path(file.name))) << file.name;
        EXPECT_EQ(current().variantSets, chosen) << file.name;
    }

    // Names the scene doesn't have are dropped with a line each; the rest is taken.
    QByteArray unknown = text;
    unknown.replace("Paint Blue", "Paint Gold").replace("Rims", "Wheels");
    writeFile(path("unknown.xml"), unknown);
    expectLog(oxLog::Error, "Variant set with name 'Paint Gold' not found in group 'Paint'. "
                            "Removed it from render settings");
    expectLog(oxLog::Error,
              "Variant set group 'Wheels' not found. Removed it from render settings");
    EXPECT_TRUE(window().loadVariantSetConfiguration(path("unknown.xml")));
    EXPECT_EQ(window().getVariantSetGroupNames(), (Names{"Paint", "ungrouped"}));
    EXPECT_TRUE(active("Paint").empty());
    EXPECT_EQ(active("ungrouped"), Names{"Hero Shot"});

    expectLog(oxLog::Error, "Couldn't write varinat set configuration!");
    EXPECT_FALSE(window().saveVariantSetConfiguration(path("missing/folder/selection.xml")));
}

TEST_F(VariantSetTreeTest, ChangesInTheModuleKeepTheSelectionInLine)
{
    dropGroup("Paint");
    dropSet("Paint Red");
    dropSet("Floor Hidden");

    // Renames are followed: the set stays ticked under its new name.
    EXPECT_TRUE(oxVariants::renameVariantSet("Paint Red", "Paint Crimson"));
    EXPECT_TRUE(oxVariants::renameVariantGroup("Paint", "Colour"));
    settle();
    EXPECT_EQ(window().getVariantSetGroupNames(), (Names{"Colour", "ungrouped"}));
    EXPECT_EQ(active("Colour"), Names{"Paint Crimson"});
    EXPECT_EQ(setItem("Colour", "Paint Crimson")->data(0, Qt::CheckStateRole).toInt(), 2);

    // A new name that can't be part of a file name leaves the set out, with the warning box.
    oxDialogResponder::clear();
    EXPECT_TRUE(oxVariants::renameVariantSet("Floor Hidden", "Floor: Hidden"));
    settle();
    EXPECT_TRUE(active("ungrouped").empty());
    ASSERT_EQ(oxDialogResponder::history().size(), 1);
    EXPECT_EQ(oxDialogResponder::history()[0].title, oxPlatform::getAppVersionName());
    EXPECT_EQ(oxDialogResponder::history()[0].question,
              "Unable to use variant sets for rendering to file, they contain characters that "
              "can not be used within a filename, e.g. \\ / : * ? \" < > |");

    // A set moved to another group, and a group removed, leave the selection.
    expectLog(oxLog::Error, "Variant set with name 'Paint Crimson' not found in group 'Colour'. "
                            "Removed it from render settings");
    EXPECT_TRUE(oxVariants::moveVariantSet("Paint Crimson", ""));
    EXPECT_TRUE(active("Colour").empty());
    expectLog(oxLog::Error, "Variant set group 'Colour' not found. Removed it from render "
                            "settings");
    EXPECT_TRUE(oxVariants::removeVariantGroup("Colour"));
    settle();
    EXPECT_EQ(window().getVariantSetGroupNames(), Names{"ungrouped"});
    EXPECT_EQ(tree()->topLevelItemCount(), 1);
}

TEST_F(VariantSetTreeTest, HostHandsOverSetsAndGroups)
{
    oxMessage message;
    message.set("variantSetBaseObjects",
                QList<oxdVariantSetBase>{oxVariants::findVariantGroup("Rims"),
                                         oxVariants::findVariantSet("Paint Silver")},
                true);
    EXPECT_TRUE(oxController::call("addVariantSetsToRenderSettings", message));
    settle();
    EXPECT_EQ(window().getVariantSetGroupNames(), (Names{"Rims", "Paint"}));
    EXPECT_EQ(active("Paint"), Names{"Paint Silver"});
    EXPECT_TRUE(active("Rims").empty());
}

} // namespace

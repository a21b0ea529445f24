// The variant set module's dock on the example scene: it lists the module, renames in place,
// drags the sets and groups it holds, and hands them to the Render Settings.

#include "oxController.h"
#include "oxMessage.h"
#include "oxSceneIO.h"
#include "oxVariantSetBrowser.h"
#include "oxVariants.h"

#include "oxTestSupport.h"

#include <QAction>
#include <QMimeData>

#include <memory>

namespace {

class VariantSetBrowserTest : public oxTest {
protected:
    void SetUp() override { oxSceneIO::newScene(); }

    QTreeWidgetItem* item(const QString& name)
    {
        const auto found = browser.findItems(name, Qt::MatchExactly | Qt::MatchRecursive, 0);
        return found.size() == 1 ? found.front() : nullptr;
    }
    static QStringList names(const QList<oxdVariantSetBase>& objects)
    {
        QStringList list;
        for (const oxdVariantSetBase& object : objects)
            list << QString::fromStdString(object.getName());
        return list;
    }

    oxVariantSetBrowser browser;
};

std::vector<std::string> renames;
void hearRename(oxMessage& message)
{
    std::string oldName, newName, groupName;
    message.get("oldName", oldName);
    message.get("newName", newName);
    message.get("groupName", groupName);
    renames.push_back(oldName + ">" + newName + "@" + groupName);
}

QStringList handedOver;
void hearHandOver(oxMessage& message)
{
    QList<oxdVariantSetBase> objects;
    message.get("variantSetBaseObjects", objects);
    for (const oxdVariantSetBase& object : objects)
        handedOver << QString::fromStdString(object.getName());
}

TEST_F(VariantSetBrowserTest, ListsTheModuleAndRenamesInPlace)
{
    // Groups with their sets, then the sets without group.
    ASSERT_EQ(browser.topLevelItemCount(), 5);
    EXPECT_EQ(browser.topLevelItem(0)->text(0), "Paint");
    EXPECT_EQ(browser.topLevelItem(0)->childCount(), 3);
    EXPECT_EQ(browser.topLevelItem(4)->text(0), "Hero Shot");

    renames.clear();
    oxController::addCB("variantSetRenamed", hearRename);
    item("Paint Red")->setText(0, "Paint Crimson");
    EXPECT_TRUE(oxVariants::findVariantSet("Paint Crimson").isValid());
    EXPECT_EQ(renames, std::vector<std::string>{"Paint Red>Paint Crimson@Paint"});
    // The module's change rebuilt the list under the new name.
    EXPECT_NE(item("Paint Crimson"), nullptr);

    // A name that is taken is refused and the item shows the old one again.
    expectLog(oxLog::Error,
              "oxVariants: there is already a variant set named 'Paint Blue'; choose another "
              "name.");
    item("Paint Silver")->setText(0, "Paint Blue");
    EXPECT_NE(item("Paint Silver"), nullptr);
    EXPECT_TRUE(oxVariants::findVariantSet("Paint Silver").isValid());
    oxController::subCB("variantSetRenamed", hearRename);
    EXPECT_EQ(renames.size(), 1u);
}

TEST_F(VariantSetBrowserTest, DragsAndHandsOverItsSelection)
{
    item("Rims")->setSelected(true);
    item("Paint Blue")->setSelected(true);
    EXPECT_EQ(names(browser.selectedObjects()), (QStringList{"Paint Blue", "Rims"}));

    // What a drag carries: the model asks the view for the data of the dragged rows.
    std::unique_ptr<QMimeData> data(
        browser.model()->mimeData(browser.selectionModel()->selectedIndexes()));
    ASSERT_TRUE(oxMimeUtils::canHandleVariantSets(data.get()));
    EXPECT_EQ(names(oxMimeUtils::extractVariantSetBaseObjects(data.get())).size(), 2);

    handedOver.clear();
    oxController::addCB("addVariantSetsToRenderSettings", hearHandOver);
    browser.getAddToRenderSettingsAction()->trigger();
    oxController::subCB("addVariantSetsToRenderSettings", hearHandOver);
    EXPECT_EQ(handedOver, (QStringList{"Paint Blue", "Rims"}));
}

} // namespace

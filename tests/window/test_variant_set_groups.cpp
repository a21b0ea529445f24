// Variant set groups chosen by name: the record names groups only, so a name that stands for
// more than one group of the scene, or clashes with the pseudo group of ungrouped sets, is
// refused.

#include "oxScene.h"

#include "oxWindowBindingSupport.h"

#include <string>
#include <vector>

namespace {

class VariantSetGroupTest : public oxWindowBindingTest {
protected:
    void TearDown() override
    {
        auto& groups = oxScene::current().variantGroups;
        groups.resize(groups.size() - added);
        oxWindowBindingTest::TearDown();
    }

    void addSceneGroup(const std::string& name)
    {
        auto group = std::make_unique<oxVariantSetGroup>();
        group->name = name;
        oxScene::current().variantGroups.push_back(std::move(group));
        ++added;
    }

    size_t added = 0;
};

using Names = std::vector<std::string>;

TEST_F(VariantSetGroupTest, AmbiguousAndReservedNamesAreRefused)
{
    addSceneGroup("Twice");
    addSceneGroup("Twice");
    addSceneGroup("ungrouped");
    addSceneGroup("Once");

    expectLog(oxLog::Error, "oxRenderSettings: group 'Twice' exist more than once in the variant "
                            "set module. The names of groups used in the render settings must "
                            "be unique.");
    expectLog(oxLog::Error, "oxRenderSettings: internal group 'ungrouped' already exist in the "
                            "variant set module. The names of groups used in the render "
                            "settings must be unique.");
    window->setActiveVariantSets("Twice", {"A"});
    window->setActiveVariantSets("ungrouped", {"B"});
    window->setActiveVariantSets("Once", {"C"});
    EXPECT_EQ(window->getVariantSetGroupNames(), Names{"Once"});

    // Adding again keeps the one entry and its sets.
    EXPECT_TRUE(window->addVariantSetGroup("Once"));
    EXPECT_EQ(window->getVariantSetGroupNames(), Names{"Once"});
    EXPECT_EQ(window->getActiveVariantSets("Once"), Names{"C"});
}

TEST_F(VariantSetGroupTest, UngroupedSetsNeedNoGroupOfTheScene)
{
    window->setActiveVariantSets("ungrouped", {"Floor Shown"});
    EXPECT_EQ(record().variantSets.size(), 1u);
    EXPECT_EQ(window->getActiveVariantSets("ungrouped"), Names{"Floor Shown"});
}

} // namespace

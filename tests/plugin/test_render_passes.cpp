#include "oxRenderPasses.h"

#include "oxTestSupport.h"

#include <algorithm>
#include <set>
#include <string>

namespace {

using RenderPassTableTest = oxTest;

template <typename Order>
void expectPermutationOfAllFlags(const Order& order, size_t expected)
{
    std::set<PassFlag> seen(order.begin(), order.end());
    EXPECT_EQ(seen.size(), order.size());
    EXPECT_EQ(order.size(), expected);
}

size_t positionIn(const std::array<PassFlag, kPassFlagCount>& order, PassFlag flag)
{
    return static_cast<size_t>(std::find(order.begin(), order.end(), flag) - order.begin());
}

} // namespace

TEST_F(RenderPassTableTest, RowsAreInEnumOrderAndNamesAreUnique)
{
    // Column and scene key names are checked unique by the file round trips, widgets by the
    // form's pass tables.
    std::set<std::string> slots, scriptNames;
    for (size_t i = 0; i < kPassFlags.size(); ++i) {
        const oxRenderPassFlagInfo& info = kPassFlags[i];
        EXPECT_EQ(static_cast<size_t>(info.flag), i);
        EXPECT_TRUE(slots.insert(info.slot).second) << info.slot;
        if (const char* name = info.scriptName()) {
            EXPECT_TRUE(scriptNames.insert(name).second) << name;
        }
    }
    EXPECT_EQ(kPassFlags.size(), 42u);
    EXPECT_EQ(scriptNames.size(), 41u);
    EXPECT_EQ(std::set<std::string>(kPassNames.begin(), kPassNames.end()).size(), kPassCount);
}

TEST_F(RenderPassTableTest, EveryIdButTheLastTwoBelongsToExactlyOneFlag)
{
    std::vector<int> owners(kPassCount, 0);
    for (const oxRenderPassFlagInfo& info : kPassFlags)
        for (unsigned i = 0; i < info.idCount; ++i)
            ++owners[info.firstId + i];
    for (unsigned id = 0; id < kPassCount; ++id)
        EXPECT_EQ(owners[id], id >= PassMotionVector ? 0 : 1) << kPassNames[id];

    EXPECT_FALSE(passFlagInfo(PassFlag::SpecularLight).hasPassId());
    EXPECT_EQ(passFlagInfo(PassFlag::SpecularLight).scriptName(), nullptr);
    EXPECT_EQ(passFlagInfo(PassFlag::SpecularLight).widget, nullptr);
}

// The plug-in asks the host for passes by the host's ids and names: each flag's ids must be
// the host passes its column names. Those whose host name isn't the column's stay as they are.
TEST_F(RenderPassTableTest, FlagsSelectTheHostPassesTheyName)
{
    EXPECT_EQ(&kPassNames, &oxImagePasses::names);
    std::string differing;
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        std::string passes;
        for (unsigned i = 0; i < info.idCount; ++i)
            passes +=
                std::string(passes.empty() ? "" : ",") + oxImagePasses::name(info.firstId + i);
        const std::string column = info.column;
        if (info.hasPassId() && passes != column.substr(0, column.size() - 5))
            differing += column + ":" + passes + "\n";
    }
    EXPECT_EQ(differing, "specular_ibl_pass:specular_reflection\n"
                         "crypto_object_pass:cryptoObject00,cryptoObject01,cryptoObject02\n"
                         "crypto_material_pass:cryptoMaterial00,cryptoMaterial01,cryptoMaterial02\n"
                         "material_id_pass:materialID\n"
                         "view_vector_pass:view\n"
                         "specular_reflection_pass:specular_indirect_illumination\n"
                         "frontplate_pass:frontplates\n"
                         "backplate_pass:backplates\n");
}

TEST_F(RenderPassTableTest, OrdersOfKeysColumnsAndScriptNames)
{
    expectPermutationOfAllFlags(kPassFlagSceneKeyOrder, 42);
    expectPermutationOfAllFlags(kPassFlagColumnOrder, 42);
    expectPermutationOfAllFlags(kPassFlagScriptOrder, 41);
    EXPECT_EQ(std::count(kPassFlagScriptOrder.begin(), kPassFlagScriptOrder.end(),
                         PassFlag::SpecularLight),
              0);

    // Both stores start and end alike and differ only in where the image processing flags
    // stand against mask, position and view vector.
    for (size_t i = 0; i < 19; ++i)
        EXPECT_EQ(kPassFlagSceneKeyOrder[i], kPassFlagColumnOrder[i]);
    for (size_t i = 26; i < 42; ++i)
        EXPECT_EQ(kPassFlagSceneKeyOrder[i], kPassFlagColumnOrder[i]);
    EXPECT_LT(positionIn(kPassFlagSceneKeyOrder, PassFlag::ViewVector),
              positionIn(kPassFlagSceneKeyOrder, PassFlag::Fog));
    EXPECT_LT(positionIn(kPassFlagColumnOrder, PassFlag::Backplate),
              positionIn(kPassFlagColumnOrder, PassFlag::Mask));
    EXPECT_EQ(kPassFlagSceneKeyOrder.front(), PassFlag::Beauty);
    EXPECT_EQ(kPassFlagColumnOrder.back(), PassFlag::SpecularReflection);

    std::vector<std::string> names;
    for (PassFlag flag : kPassFlagScriptOrder)
        names.push_back(passFlagInfo(flag).scriptName());
    EXPECT_EQ(names.front(), "beauty");
    EXPECT_EQ(names[7], "specular_reflection");
    EXPECT_EQ(names[31], "cryptoObjectMatte");
    EXPECT_EQ(names[33], "materialID");
    EXPECT_EQ(names.back(), "backplates");
}

TEST_F(RenderPassTableTest, ScriptNamesFindTheirFlags)
{
    PassFlag flag = PassFlag::Beauty;
    EXPECT_TRUE(findPassFlagByScriptName("cryptoMaterialMatte", flag));
    EXPECT_EQ(flag, PassFlag::CryptoMaterial);
    EXPECT_TRUE(findPassFlagByScriptName("view", flag));
    EXPECT_EQ(flag, PassFlag::ViewVector);
    for (const char* unknown :
         {"cryptoObject00", "motion_vector", "gpu_depth", "specular_light", "Beauty", ""}) {
        flag = PassFlag::Beauty;
        EXPECT_FALSE(findPassFlagByScriptName(unknown, flag)) << unknown;
    }
}

TEST_F(RenderPassTableTest, WindowGroupsUseEveryCheckBoxOnce)
{
    std::multiset<std::string> boxes;
    for (const oxRenderPassGroup& group : kPassGroups) {
        const bool separated = std::string(group.tabObjectName) == "separateChannelsTab";
        for (PassFlag flag : group.flags) {
            const oxRenderPassFlagInfo& info = passFlagInfo(flag);
            ASSERT_NE(info.widget, nullptr);
            // A flag shown on both tabs uses its twin check box on the second one.
            boxes.insert(separated && info.twinWidget ? info.twinWidget : info.widget);
        }
    }
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        if (info.widget) {
            EXPECT_EQ(boxes.count(info.widget), 1u) << info.widget;
        }
        if (info.twinWidget) {
            EXPECT_EQ(boxes.count(info.twinWidget), 1u) << info.twinWidget;
        }
    }
}

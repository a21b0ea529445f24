// Crossing the chosen variant sets of render groups into tuples.

#include "oxRenderAutomationVariantSetGroupsAccess.h"
#include "oxTestSupport.h"

namespace {

oxRenderAutomationVariantSetGroup group(const std::string& name, std::vector<std::string> sets)
{
    oxRenderAutomationVariantSetGroup g(name);
    g.setActiveVariantSetNames(sets);
    return g;
}

} // namespace

TEST(VariantTuples, FirstGroupOutermostAndEmptyGroupsSkipped)
{
    const oxRenderAutomationVariantSetGroupsAccess access(
        {group("Paint", {"Red", "Blue"}), group("Empty", {}),
         group("Rims", {"Sport", "Classic", "Steel"})});
    ASSERT_EQ(access.getVariantSetTupleCount(), 6u);
    const std::vector<std::vector<std::string>> expected = {{"Red", "Sport"},    {"Red", "Classic"},
                                                            {"Red", "Steel"},    {"Blue", "Sport"},
                                                            {"Blue", "Classic"}, {"Blue", "Steel"}};
    for (uint64_t i = 0; i < access.getVariantSetTupleCount(); ++i)
        EXPECT_EQ(access.getVariantSetTuple(i), expected[i]) << i;
    EXPECT_TRUE(access.getVariantSetTuple(6).empty());
}

TEST(VariantTuples, NoChosenSetsMeansNoTuples)
{
    EXPECT_EQ(oxRenderAutomationVariantSetGroupsAccess({}).getVariantSetTupleCount(), 0u);
    const oxRenderAutomationVariantSetGroupsAccess empty({group("Paint", {}), group("Rims", {})});
    EXPECT_EQ(empty.getVariantSetTupleCount(), 0u);
    EXPECT_TRUE(empty.getVariantSetTuple(0).empty());
    const oxRenderAutomationVariantSetGroupsAccess single({group("ungrouped", {"Floor Hidden"})});
    EXPECT_EQ(single.getVariantSetTupleCount(), 1u);
    EXPECT_EQ(single.getVariantSetTuple(0), std::vector<std::string>{"Floor Hidden"});
}

TEST(VariantTuples, NamesThatCantBeFileNamesAreRefused)
{
    oxRenderAutomationVariantSetGroup g("Paint");
    for (char c : std::string("\\/:*?\"<>|"))
        EXPECT_FALSE(g.addActiveVariantSetName(std::string("Red") + c)) << c;
    EXPECT_TRUE(g.addActiveVariantSetName("Red Metallic"));
    EXPECT_FALSE(g.addActiveVariantSetName("Red Metallic"));
    EXPECT_EQ(g.getActiveVariantSetNames(), std::vector<std::string>{"Red Metallic"});
}

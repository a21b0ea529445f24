#include "oxRenderAutomationVariantSetGroupsAccess.h"

oxRenderAutomationVariantSetGroupsAccess::oxRenderAutomationVariantSetGroupsAccess(
    const std::vector<oxRenderAutomationVariantSetGroup>& groups)
{
    for (const oxRenderAutomationVariantSetGroup& group : groups)
        if (group.hasActiveVariantSets())
            m_sets.push_back(group.getActiveVariantSetNames());
}

uint64_t oxRenderAutomationVariantSetGroupsAccess::getVariantSetTupleCount() const
{
    if (m_sets.empty())
        return 0;
    uint64_t count = 1;
    for (const auto& names : m_sets)
        count *= names.size();
    return count;
}

std::vector<std::string>
oxRenderAutomationVariantSetGroupsAccess::getVariantSetTuple(uint64_t index) const
{
    std::vector<std::string> tuple;
    if (index >= getVariantSetTupleCount())
        return tuple;
    tuple.resize(m_sets.size());
    // Mixed-radix digits of index, the last group being the lowest digit.
    for (size_t g = m_sets.size(); g-- > 0;) {
        tuple[g] = m_sets[g][index % m_sets[g].size()];
        index /= m_sets[g].size();
    }
    return tuple;
}

#pragma once

#include "oxRenderAutomationVariantSetGroup.h"

#include <cstdint>
#include <string>
#include <vector>

/// The crossing of the chosen variant sets of several groups into tuples.
///
/// Order: groups without chosen sets are skipped; of the others, the first group is the
/// outermost loop and the last group the innermost, so tuple 0 takes the first chosen set of
/// every group and the last group's set changes fastest. With no chosen set at all there are
/// no tuples.
class oxRenderAutomationVariantSetGroupsAccess {
public:
    explicit oxRenderAutomationVariantSetGroupsAccess(
        const std::vector<oxRenderAutomationVariantSetGroup>& groups);

    uint64_t getVariantSetTupleCount() const;
    /// One set name per contributing group, in group order; empty when index is out of range.
    std::vector<std::string> getVariantSetTuple(uint64_t index) const;

private:
    std::vector<std::vector<std::string>> m_sets; // chosen names of the contributing groups
};

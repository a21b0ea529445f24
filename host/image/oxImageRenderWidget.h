#pragma once

#include <vector>

/// The render view's settings that exports read. Holds the active render pass override: a
/// flag per pass id, or empty for no override (the export then renders its usual passes).
class oxImageRenderWidget {
public:
    static const std::vector<bool>& getActiveRenderPasses();
    /// Replaces the override; an empty list ends it.
    static void setActiveRenderPasses(const std::vector<bool>& passes);
    /// True when an override is set.
    static bool hasActiveRenderPasses();
};

#include "oxImageRenderWidget.h"

#include "oxCallTrace.h"

#include <string>

namespace {
std::vector<bool>& activePasses()
{
    static std::vector<bool> passes;
    return passes;
}
} // namespace

const std::vector<bool>& oxImageRenderWidget::getActiveRenderPasses() { return activePasses(); }

void oxImageRenderWidget::setActiveRenderPasses(const std::vector<bool>& passes)
{
    if (oxCallTrace::isEnabled()) {
        std::string flags;
        for (bool flag : passes)
            flags += flag ? '1' : '0';
        oxCallTrace::record("oxImageRenderWidget::setActiveRenderPasses", flags);
    }
    activePasses() = passes;
}

bool oxImageRenderWidget::hasActiveRenderPasses() { return !activePasses().empty(); }

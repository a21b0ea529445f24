#include "oxRenderAutomationVariantSetGroup.h"

#include <algorithm>

namespace {
const char kUngrouped[] = "ungrouped";
const char kForbiddenInFileNames[] = "\\/:*?\"<>|";
} // namespace

oxRenderAutomationVariantSetGroup::oxRenderAutomationVariantSetGroup(const std::string& groupName)
    : m_groupName(groupName)
{}

void oxRenderAutomationVariantSetGroup::init() {}

const char* oxRenderAutomationVariantSetGroup::ungroupedName() { return kUngrouped; }

bool oxRenderAutomationVariantSetGroup::isValidFileNamePart(const std::string& name)
{
    return name.find_first_of(kForbiddenInFileNames) == std::string::npos;
}

bool oxRenderAutomationVariantSetGroup::addActiveVariantSetName(const std::string& name)
{
    if (!isValidFileNamePart(name) || hasActiveVariantSetName(name))
        return false;
    m_activeNames.push_back(name);
    return true;
}

bool oxRenderAutomationVariantSetGroup::removeActiveVariantSetName(const std::string& name)
{
    const auto it = std::find(m_activeNames.begin(), m_activeNames.end(), name);
    if (it == m_activeNames.end())
        return false;
    m_activeNames.erase(it);
    return true;
}

bool oxRenderAutomationVariantSetGroup::hasActiveVariantSetName(const std::string& name) const
{
    return std::find(m_activeNames.begin(), m_activeNames.end(), name) != m_activeNames.end();
}

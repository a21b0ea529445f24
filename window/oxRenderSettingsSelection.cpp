// What a job renders besides the scene as it stands: the view and the variant set groups of the
// current record, set by name. The record is the truth; the form follows it on refresh.

#include "oxRenderSettings.h"

#include "QOXMultiLevelComboBox.h"
#include "oxLog.h"
#include "oxRenderAutomationVariantSetGroup.h"
#include "oxSceneServices.h"
#include "oxVariants.h"

#include <algorithm>

namespace {

const char kInternalGroupMessage[] =
    "oxRenderSettings: internal group '%s' already exist in the variant set module. The names of "
    "groups used in the render settings must be unique.";
const char kAmbiguousGroupMessage[] =
    "oxRenderSettings: group '%s' exist more than once in the variant set module. The names of "
    "groups used in the render settings must be unique.";

bool hasName(const oxRenderAutomationVariantSetGroup& group, const std::string& name)
{
    return group.getGroupName() == name;
}

} // namespace

void oxRenderSettings::setView(osg::NodePtr viewNode)
{
    osg::NodePtr root = nullptr;
    if (viewNode) {
        if (oxUberCameraPool* cameras = oxUberCameraPool::the())
            root = cameras->getRoot();
    }
    currentPreset.view = root ? oxNodeUtils::getUniquePath(viewNode, root) : std::string();
    updateGUI();
}

void oxRenderSettings::setViewByName(const std::string& viewName)
{
    oxUberCameraPool* cameras = oxUberCameraPool::the();
    setView(cameras ? oxNodeUtils::findNode(cameras->getRoot(), viewName) : nullptr);
}

std::string oxRenderSettings::getViewName() const
{
    // The chooser can only show "Current" until it has a menu of the scene's cameras, so the
    // record's node names the view.
    if (!currentPreset.view.empty()) {
        if (osg::NodePtr node = currentPreset.getViewNode())
            return oxNodeUtils::getName(node);
    }
    return _view->currentText().toStdString();
}

bool oxRenderSettings::addVariantSetGroup(const std::string& groupName)
{
    // The record names groups only, so a name must stand for one group of the scene; and the
    // pseudo group of ungrouped sets must not meet a real group of its name.
    if (groupName == oxRenderAutomationVariantSetGroup::ungroupedName() &&
        oxVariants::findVariantGroup(groupName).isValid()) {
        oxLog::error(kInternalGroupMessage, groupName.c_str());
        return false;
    }
    if (oxVariants::countVariantGroup(groupName) >= 2) {
        oxLog::error(kAmbiguousGroupMessage, groupName.c_str());
        return false;
    }
    oxVariantSetGroups& groups = currentPreset.variantSets;
    const auto found = std::find_if(groups.begin(), groups.end(),
                                    [&](const auto& group) { return hasName(group, groupName); });
    if (found == groups.end())
        groups.emplace_back(groupName);
    updateVariantSetGUI();
    return true;
}

void oxRenderSettings::setActiveVariantSets(const std::string& groupName,
                                            const std::vector<std::string>& names)
{
    if (!addVariantSetGroup(groupName))
        return;
    for (oxRenderAutomationVariantSetGroup& group : currentPreset.variantSets) {
        if (hasName(group, groupName)) {
            group.setActiveVariantSetNames(names);
            break;
        }
    }
    updateGUI();
}

std::vector<std::string> oxRenderSettings::getActiveVariantSets(const std::string& groupName) const
{
    for (const oxRenderAutomationVariantSetGroup& group : currentPreset.variantSets) {
        if (hasName(group, groupName))
            return group.getActiveVariantSetNames();
    }
    return {};
}

void oxRenderSettings::removeVariantSetGroup(const std::string& groupName)
{
    oxVariantSetGroups& groups = currentPreset.variantSets;
    const size_t before = groups.size();
    groups.erase(std::remove_if(groups.begin(), groups.end(),
                                [&](const auto& group) { return hasName(group, groupName); }),
                 groups.end());
    if (groups.size() != before)
        updateVariantSetGUI();
}

void oxRenderSettings::clearVariantSetGroups()
{
    currentPreset.variantSets.clear();
    updateVariantSetGUI();
}

std::vector<std::string> oxRenderSettings::getVariantSetGroupNames() const
{
    std::vector<std::string> names;
    for (const oxRenderAutomationVariantSetGroup& group : currentPreset.variantSets)
        names.push_back(group.getGroupName());
    return names;
}

// Changes to the variant set module of the current scene. Listeners learn of each change
// through named functions and the service's signal; a rename is announced before the general
// change, so that a listener holding names can follow the rename before it checks its names
// against the module.

#include "oxVariants.h"

#include "oxCallTrace.h"
#include "oxController.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxScene.h"

#include <algorithm>

namespace {

const char kSet[] = "variant set";
const char kGroup[] = "variant set group";

oxVariantSet* findSet(const std::string& name)
{
    for (const auto& set : oxScene::current().variantSets)
        if (set->name == name)
            return set.get();
    return nullptr;
}

oxVariantSetGroup* findGroup(const std::string& name)
{
    for (const auto& group : oxScene::current().variantGroups)
        if (group->name == name)
            return group.get();
    return nullptr;
}

void announce(const char* change)
{
    oxCallTrace::record("oxVariants::announce", change);
    oxMessage message;
    oxController::call(change, message);
    oxVariantSetsService::the()->notifyHierarchyChanged();
    oxController::setModified(true);
}

void detach(oxVariantSet* set)
{
    if (!set->group)
        return;
    auto& sets = set->group->sets;
    sets.erase(std::remove(sets.begin(), sets.end(), set), sets.end());
    set->group = nullptr;
}

void attach(oxVariantSet* set, oxVariantSetGroup* group)
{
    set->group = group;
    if (group)
        group->sets.push_back(set);
}

// A set or group name must be new and not empty.
bool checkNewName(const char* kind, const std::string& name, bool taken)
{
    if (name.empty()) {
        oxLog::error("oxVariants: a %s needs a name.", kind);
        return false;
    }
    if (taken) {
        oxLog::error("oxVariants: there is already a %s named '%s'; choose another "
                     "name.",
                     kind, name.c_str());
        return false;
    }
    return true;
}

bool reportMissing(const char* kind, const std::string& name)
{
    oxLog::error("oxVariants: no %s named '%s'.", kind, name.c_str());
    return false;
}

// "" stands for no group; any other name must be a group of the module.
bool resolveGroup(const std::string& groupName, oxVariantSetGroup*& group)
{
    group = groupName.empty() ? nullptr : findGroup(groupName);
    return groupName.empty() || group || reportMissing(kGroup, groupName);
}

} // namespace

bool oxVariants::renameVariantSet(const std::string& oldName, const std::string& newName)
{
    oxVariantSet* set = findSet(oldName);
    if (!set)
        return reportMissing(kSet, oldName);
    if (oldName == newName)
        return true;
    if (!checkNewName(kSet, newName, findSet(newName) != nullptr))
        return false;
    set->name = newName;
    oxMessage message;
    message.set("oldName", oldName, true);
    message.set("newName", newName, true);
    message.set("groupName", set->group ? set->group->name : std::string(), true);
    oxController::call("variantSetRenamed", message);
    announce("variantSetChanged");
    return true;
}

bool oxVariants::renameVariantGroup(const std::string& oldName, const std::string& newName)
{
    oxVariantSetGroup* group = findGroup(oldName);
    if (!group)
        return reportMissing(kGroup, oldName);
    if (oldName == newName)
        return true;
    if (!checkNewName(kGroup, newName, findGroup(newName) != nullptr))
        return false;
    group->name = newName;
    oxMessage message;
    message.set("oldName", oldName, true);
    message.set("newName", newName, true);
    oxController::call("variantGroupRenamed", message);
    announce("variantGroupChanged");
    return true;
}

bool oxVariants::moveVariantSet(const std::string& name, const std::string& groupName)
{
    oxVariantSet* set = findSet(name);
    oxVariantSetGroup* group = nullptr;
    if (!set)
        return reportMissing(kSet, name);
    if (!resolveGroup(groupName, group))
        return false;
    if (set->group == group)
        return true;
    detach(set);
    attach(set, group);
    announce("variantSetChanged");
    return true;
}

bool oxVariants::addVariantSet(const std::string& name, const std::string& groupName)
{
    oxVariantSetGroup* group = nullptr;
    if (!checkNewName(kSet, name, findSet(name) != nullptr) || !resolveGroup(groupName, group))
        return false;
    auto& sets = oxScene::current().variantSets;
    sets.push_back(std::make_unique<oxVariantSet>());
    sets.back()->name = name;
    attach(sets.back().get(), group);
    announce("variantSetAdded");
    return true;
}

bool oxVariants::addVariantGroup(const std::string& name)
{
    if (!checkNewName(kGroup, name, findGroup(name) != nullptr))
        return false;
    auto& groups = oxScene::current().variantGroups;
    groups.push_back(std::make_unique<oxVariantSetGroup>());
    groups.back()->name = name;
    announce("variantGroupAdded");
    return true;
}

bool oxVariants::removeVariantSet(const std::string& name)
{
    oxVariantSet* set = findSet(name);
    if (!set)
        return reportMissing(kSet, name);
    detach(set);
    auto& sets = oxScene::current().variantSets;
    sets.erase(std::find_if(sets.begin(), sets.end(),
                            [set](const auto& candidate) { return candidate.get() == set; }));
    announce("variantSetRemoved");
    return true;
}

bool oxVariants::removeVariantGroup(const std::string& name)
{
    oxVariantSetGroup* group = findGroup(name);
    if (!group)
        return reportMissing(kGroup, name);
    for (oxVariantSet* set : std::vector<oxVariantSet*>(group->sets))
        detach(set);
    auto& groups = oxScene::current().variantGroups;
    groups.erase(std::find_if(groups.begin(), groups.end(),
                              [group](const auto& candidate) { return candidate.get() == group; }));
    announce("variantGroupRemoved");
    return true;
}

#pragma once

#include <string>
#include <vector>

/// One group of variant sets chosen for rendering: the group's name and the names of the sets
/// chosen in it, in order. The reserved group name "ungrouped" holds sets without a group.
class oxRenderAutomationVariantSetGroup {
public:
    oxRenderAutomationVariantSetGroup() = default;
    explicit oxRenderAutomationVariantSetGroup(const std::string& groupName);

    /// Prepares class-wide state; safe to call more than once.
    static void init();
    /// The name of the pseudo group of sets that belong to no group.
    static const char* ungroupedName();
    /// True when name holds none of the characters a file name can't hold (\ / : * ? " < > |).
    static bool isValidFileNamePart(const std::string& name);

    const std::string& getGroupName() const { return m_groupName; }
    void setGroupName(const std::string& name) { m_groupName = name; }

    const std::vector<std::string>& getActiveVariantSetNames() const { return m_activeNames; }
    void setActiveVariantSetNames(const std::vector<std::string>& names) { m_activeNames = names; }

    /// Adds a name at the end; false when it is already there or can't be part of a file name.
    bool addActiveVariantSetName(const std::string& name);
    /// Removes a name; false when it wasn't there.
    bool removeActiveVariantSetName(const std::string& name);
    bool hasActiveVariantSetName(const std::string& name) const;
    bool hasActiveVariantSets() const { return !m_activeNames.empty(); }
    void clearActiveVariantSetNames() { m_activeNames.clear(); }

    bool operator==(const oxRenderAutomationVariantSetGroup& other) const
    {
        return m_groupName == other.m_groupName && m_activeNames == other.m_activeNames;
    }
    bool operator!=(const oxRenderAutomationVariantSetGroup& other) const
    {
        return !(*this == other);
    }

private:
    std::string m_groupName;
    std::vector<std::string> m_activeNames;
};

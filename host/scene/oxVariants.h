#pragma once

#include "oxKernelServiceFactory.h"
#include "oxdObject.h"

#include <QList>
#include <QMimeData>
#include <QObject>
#include <QSize>

#include <string>

/// The variant sets of the current scene: lookup and selection.
class oxVariants {
public:
    /// The set of that name (the first, should names repeat); an invalid handle if none.
    static oxdVariantSet findVariantSet(const std::string& name);
    /// The group of that name (the first); an invalid handle if none.
    static oxdVariantSetGroup findVariantGroup(const std::string& name);
    /// How many groups bear that name.
    static int countVariantGroup(const std::string& name);
    /// The groups in order.
    static QList<oxdVariantSetGroup> getVariantSetGroups();
    /// The sets that belong to no group, in order.
    static QList<oxdVariantSet> getUngroupedVariantSets();
    /// Every set, in order.
    static QList<oxdVariantSet> getVariantSets();

    /// Applies the set's changes to the scene in order: material variants, visibility,
    /// switch choices, then (unless skipView) its viewpoint. False when there is no such set;
    /// targets that no longer exist are skipped with a warning.
    static bool selectVariantSet(const char* name, bool skipView);

    // Editing the variant set module. Each change marks the scene modified, calls the named
    // functions that announce it ("variantSetRenamed", "variantGroupRenamed" first, with
    // "oldName", "newName" and for a set "groupName"; then one of "variantSetAdded",
    // "variantSetChanged", "variantSetRemoved", "variantGroupAdded", "variantGroupChanged",
    // "variantGroupRemoved") and emits oxVariantSetsService::variantSetHierarchyChanged.
    // A refused change logs why and returns false.

    /// Renames a set; refused for an unknown or empty name or one another set bears.
    static bool renameVariantSet(const std::string& oldName, const std::string& newName);
    /// Renames a group; refused for an unknown or empty name or one another group bears.
    static bool renameVariantGroup(const std::string& oldName, const std::string& newName);
    /// Moves a set into the group groupName ("" for no group); refused for an unknown set or
    /// group.
    static bool moveVariantSet(const std::string& name, const std::string& groupName);
    /// A new set without changes at the end of group groupName ("" for no group).
    static bool addVariantSet(const std::string& name, const std::string& groupName);
    /// A new empty group at the end.
    static bool addVariantGroup(const std::string& name);
    /// Removes a set, or a group (its sets stay, without group).
    static bool removeVariantSet(const std::string& name);
    static bool removeVariantGroup(const std::string& name);
};

/// The variant set module as a service: tells listeners when sets or groups change.
class oxVariantSetsService : public QObject, public oxBaseService {
    Q_OBJECT
public:
    /// The service (registered with oxKernelServiceFactory as oxVariantSetsService).
    static oxVariantSetsService* the();
    /// The size of the preview icons of the sets.
    QSize getIconSize() const { return QSize(64, 64); }
    /// Emits variantSetHierarchyChanged.
    void notifyHierarchyChanged() { emit variantSetHierarchyChanged(); }

signals:
    void variantSetHierarchyChanged();
};

/// Drag and drop data of variant sets and groups.
class oxMimeUtils {
public:
    /// The MIME type variant sets travel in.
    static const char* variantSetMimeType();
    /// New drag data holding the objects (sets and groups) by id.
    static QMimeData* createVariantSetMimeData(const QList<oxdVariantSetBase>& objects);
    static bool canHandleVariantSets(const QMimeData* data);
    /// The live sets and groups in data (sets as oxdVariantSet, groups as oxdVariantSetGroup,
    /// each sliced to oxdVariantSetBase; test with isTypeOf).
    static QList<oxdVariantSetBase> extractVariantSetBaseObjects(const QMimeData* data);
};

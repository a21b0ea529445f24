#pragma once

// Value handles on scene objects. Copying a handle copies a reference. A handle remembers the
// object by id, so a handle on a destroyed object is simply invalid.
//
// To get a handle of a wanted type from a general one: default-construct the wanted type,
// ask the general one isTypeOf(Wanted::staticMetaObject), and only then assign it.

#include "oxSceneGraph.h"

#include <QImage>
#include <QList>
#include <QMetaObject>
#include <QObject>

#include <cstdint>
#include <string>

class oxVariantSet;
class oxVariantSetGroup;

class oxdObject {
    Q_GADGET
public:
    oxdObject() { initialize(staticMetaObject); }
    virtual ~oxdObject() = default;
    oxdObject(const oxdObject&) = default;
    oxdObject& operator=(const oxdObject&) = default;

    /// True when the object held is a meta (or derived) object; false for an empty handle.
    bool isTypeOf(const QMetaObject& meta) const;
    /// Takes other's object when it is of this handle's type; false (handle unchanged) else.
    bool assign(const oxdObject& other);
    /// The field container id of the object (0 for an empty handle).
    osg::UInt32 getObjectId() const { return m_id; }
    /// The class of this handle.
    const QMetaObject* getHandleType() const { return m_type; }
    /// The handle class the held object really is; null when nothing live is held.
    const QMetaObject* getObjectType() const;

    bool operator==(const oxdObject& other) const { return m_id == other.m_id; }
    bool operator!=(const oxdObject& other) const { return m_id != other.m_id; }

protected:
    /// Records the handle's class; every constructor of the chain calls it with its own.
    void initialize(const QMetaObject& meta) { m_type = &meta; }
    osg::FieldContainer* container() const;
    void setObjectId(osg::UInt32 id) { m_id = id; }

private:
    friend class oxdObjectManager;
    osg::UInt32 m_id = 0;
    const QMetaObject* m_type = nullptr;
};

class oxdSceneObject : public oxdObject {
    Q_GADGET
public:
    oxdSceneObject() { initialize(staticMetaObject); }
    /// True when the handle holds a live object of its type.
    bool isValid() const;
};

class oxdNode : public oxdSceneObject {
    Q_GADGET
public:
    oxdNode() { initialize(staticMetaObject); }
    explicit oxdNode(osg::NodePtr node);
    /// The node, or null when the handle is invalid.
    osg::NodePtr getNode() const;
    std::string getName() const;
};

class oxdTransformNode : public oxdNode {
    Q_GADGET
public:
    oxdTransformNode() { initialize(staticMetaObject); }
    explicit oxdTransformNode(osg::NodePtr node) : oxdNode(node) { initialize(staticMetaObject); }
};

class oxdCameraNode : public oxdTransformNode {
    Q_GADGET
public:
    oxdCameraNode() { initialize(staticMetaObject); }
    explicit oxdCameraNode(osg::NodePtr node) : oxdTransformNode(node)
    {
        initialize(staticMetaObject);
    }
    /// Makes this camera the one the renderer uses; false for an invalid handle.
    bool activate() const;
};

class oxdViewpointNode : public oxdTransformNode {
    Q_GADGET
public:
    oxdViewpointNode() { initialize(staticMetaObject); }
    explicit oxdViewpointNode(osg::NodePtr node) : oxdTransformNode(node)
    {
        initialize(staticMetaObject);
    }
    /// Moves the viewpoint's camera to this view and activates it. The camera jumps; there
    /// is no transition (animated is accepted for callers that ask for one).
    bool activate(bool activateCamera = true, bool animated = false) const;
};

class oxdCameraTrackNode : public oxdNode {
    Q_GADGET
public:
    oxdCameraTrackNode() { initialize(staticMetaObject); }
    explicit oxdCameraTrackNode(osg::NodePtr node) : oxdNode(node) { initialize(staticMetaObject); }
    /// The track's viewpoints in play order.
    QList<oxdViewpointNode> getViewpoints() const;
    int getViewpointCount() const;
};

class oxdVariantSetBase : public oxdSceneObject {
    Q_GADGET
public:
    oxdVariantSetBase() { initialize(staticMetaObject); }
    std::string getName() const;
};

class oxdVariantSet : public oxdVariantSetBase {
    Q_GADGET
public:
    oxdVariantSet() { initialize(staticMetaObject); }
    explicit oxdVariantSet(const oxVariantSet* set);
    /// The name of the set's group, "" for an ungrouped set.
    std::string getGroupName() const;
    /// A small picture of the set (swatch of its look), null image for an invalid handle.
    QImage getPreview() const;
};

class oxdVariantSetGroup : public oxdVariantSetBase {
    Q_GADGET
public:
    oxdVariantSetGroup() { initialize(staticMetaObject); }
    explicit oxdVariantSetGroup(const oxVariantSetGroup* group);
    QList<oxdVariantSet> getVariantSets() const;
};

/// Types of handles and of the scene objects they stand for.
class oxdObjectManager {
public:
    static oxdObjectManager* the();

    /// The id of a handle class by its class name; 0 when unknown.
    uint64_t getTypeId(const char* className) const;
    /// A handle of the class typeId on node; an unknown id gives an empty oxdNode.
    oxdNode create(uint64_t typeId, osg::NodePtr node) const;

    /// The external type id of a scene object (its core's type for a node).
    static uint64_t getExternalTypeId(const osg::FieldContainer* object);
    /// A handle of type T on object of the given external type. An unregistered type or one
    /// that isn't a T logs a critical line and gives an empty handle.
    template <typename T>
    T createFromExternal(uint64_t externalType, osg::NodePtr node) const
    {
        T handle;
        if (checkExternal(externalType, T::staticMetaObject))
            handle.setObjectId(node ? node->getId() : 0);
        return handle;
    }
    oxdNode createFromExternal(uint64_t externalType, osg::NodePtr node) const
    {
        return createFromExternal<oxdNode>(externalType, node);
    }

private:
    bool checkExternal(uint64_t externalType, const QMetaObject& wanted) const;
};

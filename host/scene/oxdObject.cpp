#include "oxdObject.h"

#include "oxScene.h"
#include "oxSceneServices.h"

#include <QPainter>
#include <QtGlobal>

#include <cstring>

namespace {

// Every handle class; a class's type id is its position here plus one.
const QMetaObject* const kHandleTypes[] = {
    &oxdObject::staticMetaObject,
    &oxdSceneObject::staticMetaObject,
    &oxdNode::staticMetaObject,
    &oxdTransformNode::staticMetaObject,
    &oxdCameraNode::staticMetaObject,
    &oxdViewpointNode::staticMetaObject,
    &oxdCameraTrackNode::staticMetaObject,
    &oxdVariantSetBase::staticMetaObject,
    &oxdVariantSet::staticMetaObject,
    &oxdVariantSetGroup::staticMetaObject,
};

// External types: the type names of scene objects and the handle class that stands for them.
struct ExternalType {
    const char* typeName;
    const QMetaObject* handle;
};
const ExternalType kExternalTypes[] = {
    {"Node", &oxdNode::staticMetaObject},
    {"Group", &oxdNode::staticMetaObject},
    {"Switch", &oxdNode::staticMetaObject},
    {"Geometry", &oxdNode::staticMetaObject},
    {"Light", &oxdNode::staticMetaObject},
    {"Transform", &oxdTransformNode::staticMetaObject},
    {"UberCamera", &oxdCameraNode::staticMetaObject},
    {"CameraTrack", &oxdCameraTrackNode::staticMetaObject},
    {"VariantSet", &oxdVariantSet::staticMetaObject},
    {"VariantSetGroup", &oxdVariantSetGroup::staticMetaObject},
};

// FNV-1a of the type name: stable across runs, so ids may be stored.
uint64_t typeNameId(const char* name)
{
    uint64_t hash = 1469598103934665603ull;
    for (; *name; ++name)
        hash = (hash ^ uint8_t(*name)) * 1099511628211ull;
    return hash;
}

template <typename T>
T* live(osg::UInt32 id)
{
    return dynamic_cast<T*>(osg::FieldContainerFactory::the()->getContainer(id));
}

} // namespace

osg::FieldContainer* oxdObject::container() const
{
    return m_id ? osg::FieldContainerFactory::the()->getContainer(m_id) : nullptr;
}

const QMetaObject* oxdObject::getObjectType() const
{
    osg::FieldContainer* object = container();
    if (!object)
        return nullptr;
    if (dynamic_cast<oxVariantSet*>(object))
        return &oxdVariantSet::staticMetaObject;
    if (dynamic_cast<oxVariantSetGroup*>(object))
        return &oxdVariantSetGroup::staticMetaObject;
    auto* node = dynamic_cast<osg::Node*>(object);
    if (!node)
        return &oxdSceneObject::staticMetaObject;
    if (oxNodeUtils::isViewpoint(node))
        return &oxdViewpointNode::staticMetaObject;
    if (oxNodeUtils::isCamera(node))
        return &oxdCameraNode::staticMetaObject;
    if (oxNodeUtils::isCameraTrack(node))
        return &oxdCameraTrackNode::staticMetaObject;
    if (node->getCoreAs<osg::Transform>())
        return &oxdTransformNode::staticMetaObject;
    return &oxdNode::staticMetaObject;
}

bool oxdObject::isTypeOf(const QMetaObject& meta) const
{
    const QMetaObject* type = getObjectType();
    return type && type->inherits(&meta);
}

bool oxdObject::assign(const oxdObject& other)
{
    if (!other.isTypeOf(*m_type))
        return false;
    m_id = other.m_id;
    return true;
}

bool oxdSceneObject::isValid() const
{
    const QMetaObject* type = getObjectType();
    return type && type->inherits(getHandleType());
}

oxdNode::oxdNode(osg::NodePtr node)
{
    initialize(staticMetaObject);
    setObjectId(node ? node->getId() : 0);
}

osg::NodePtr oxdNode::getNode() const
{
    return isValid() ? dynamic_cast<osg::Node*>(container()) : nullptr;
}

std::string oxdNode::getName() const { return oxNodeUtils::getName(getNode()); }

bool oxdCameraNode::activate() const
{
    return isValid() && oxCameraService::the()->activateCamera(getNode());
}

bool oxdViewpointNode::activate(bool, bool) const
{
    return isValid() && oxCameraService::the()->activateViewpoint(getNode());
}

QList<oxdViewpointNode> oxdCameraTrackNode::getViewpoints() const
{
    QList<oxdViewpointNode> viewpoints;
    for (osg::NodePtr node : oxUberCameraUtils::getViewpointNodes(getNode()))
        viewpoints.append(oxdViewpointNode(node));
    return viewpoints;
}

int oxdCameraTrackNode::getViewpointCount() const
{
    return int(oxUberCameraUtils::getViewpointNodes(getNode()).size());
}

std::string oxdVariantSetBase::getName() const
{
    if (!isValid())
        return std::string();
    if (auto* set = live<oxVariantSet>(getObjectId()))
        return set->name;
    if (auto* group = live<oxVariantSetGroup>(getObjectId()))
        return group->name;
    return std::string();
}

oxdVariantSet::oxdVariantSet(const oxVariantSet* set)
{
    initialize(staticMetaObject);
    setObjectId(set ? set->getId() : 0);
}

std::string oxdVariantSet::getGroupName() const
{
    const auto* set = isValid() ? live<oxVariantSet>(getObjectId()) : nullptr;
    return set && set->group ? set->group->name : std::string();
}

QImage oxdVariantSet::getPreview() const
{
    const auto* set = isValid() ? live<oxVariantSet>(getObjectId()) : nullptr;
    if (!set)
        return QImage();
    QImage image(64, 64, QImage::Format_ARGB32);
    image.fill(set->previewColor);
    return image;
}

oxdVariantSetGroup::oxdVariantSetGroup(const oxVariantSetGroup* group)
{
    initialize(staticMetaObject);
    setObjectId(group ? group->getId() : 0);
}

QList<oxdVariantSet> oxdVariantSetGroup::getVariantSets() const
{
    QList<oxdVariantSet> sets;
    if (const auto* group = isValid() ? live<oxVariantSetGroup>(getObjectId()) : nullptr)
        for (const oxVariantSet* set : group->sets)
            sets.append(oxdVariantSet(set));
    return sets;
}

oxdObjectManager* oxdObjectManager::the()
{
    static oxdObjectManager manager;
    return &manager;
}

uint64_t oxdObjectManager::getTypeId(const char* className) const
{
    for (size_t i = 0; i < std::size(kHandleTypes); ++i)
        if (className && std::strcmp(kHandleTypes[i]->className(), className) == 0)
            return i + 1;
    return 0;
}

oxdNode oxdObjectManager::create(uint64_t typeId, osg::NodePtr node) const
{
    oxdNode handle;
    if (typeId == 0 || typeId > std::size(kHandleTypes))
        return handle;
    handle.setObjectId(node ? node->getId() : 0);
    handle.initialize(*kHandleTypes[typeId - 1]);
    return handle;
}

uint64_t oxdObjectManager::getExternalTypeId(const osg::FieldContainer* object)
{
    if (!object)
        return 0;
    if (auto* node = dynamic_cast<const osg::Node*>(object))
        return typeNameId(node->getCore() ? node->getCore()->getTypeName() : node->getTypeName());
    return typeNameId(object->getTypeName());
}

bool oxdObjectManager::checkExternal(uint64_t externalType, const QMetaObject& wanted) const
{
    for (const ExternalType& type : kExternalTypes) {
        if (typeNameId(type.typeName) != externalType)
            continue;
        if (type.handle->inherits(&wanted))
            return true;
        QMessageLogger().critical(
            "oxdObjectManager::createFromExternal: externalType '%llu' is not a type of '%s'!",
            static_cast<unsigned long long>(externalType), wanted.className());
        return false;
    }
    QMessageLogger().critical(
        "oxdObjectManager::createFromExternal: externalType %llu is not registered!",
        static_cast<unsigned long long>(externalType));
    return false;
}

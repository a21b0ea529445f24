#include "oxVariants.h"

#include "oxCallTrace.h"
#include "oxController.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxScene.h"
#include "oxSceneServices.h"

#include <QDataStream>

#include <functional>

namespace {

const char kVariantSetMimeType[] = "application/oxlin-variant-sets";

// "getSortedVariantSetGroups": the group names in the module's order.
void getSortedVariantSetGroups(oxMessage& message)
{
    std::vector<std::string> names;
    for (const auto& group : oxScene::current().variantGroups)
        names.push_back(group->name);
    message.set("variantSetGroups", names, true);
}

struct Registrar {
    Registrar()
    {
        oxKernelServiceFactory::the()->registerService<oxVariantSetsService>(
            oxVariantSetsService::the());
        oxController::addCB("getSortedVariantSetGroups", getSortedVariantSetGroups);
    }
} registrar;

void applyMaterialVariant(osg::NodePtr node, int variant)
{
    if (auto* geometry = node->getCoreAs<osg::Geometry>()) {
        std::shared_ptr<osg::Material> material = geometry->defaultMaterial;
        for (const auto& entry : geometry->variantMaterials)
            if (entry.first == variant)
                material = entry.second;
        geometry->material = material;
    }
    for (size_t i = 0; i < node->getNChildren(); ++i)
        applyMaterialVariant(node->getChild(i), variant);
}

} // namespace

oxdVariantSet oxVariants::findVariantSet(const std::string& name)
{
    for (const auto& set : oxScene::current().variantSets)
        if (set->name == name)
            return oxdVariantSet(set.get());
    return oxdVariantSet();
}

oxdVariantSetGroup oxVariants::findVariantGroup(const std::string& name)
{
    for (const auto& group : oxScene::current().variantGroups)
        if (group->name == name)
            return oxdVariantSetGroup(group.get());
    return oxdVariantSetGroup();
}

int oxVariants::countVariantGroup(const std::string& name)
{
    int count = 0;
    for (const auto& group : oxScene::current().variantGroups)
        count += group->name == name ? 1 : 0;
    return count;
}

QList<oxdVariantSetGroup> oxVariants::getVariantSetGroups()
{
    QList<oxdVariantSetGroup> groups;
    for (const auto& group : oxScene::current().variantGroups)
        groups.append(oxdVariantSetGroup(group.get()));
    return groups;
}

QList<oxdVariantSet> oxVariants::getUngroupedVariantSets()
{
    QList<oxdVariantSet> sets;
    for (const auto& set : oxScene::current().variantSets)
        if (!set->group)
            sets.append(oxdVariantSet(set.get()));
    return sets;
}

QList<oxdVariantSet> oxVariants::getVariantSets()
{
    QList<oxdVariantSet> sets;
    for (const auto& set : oxScene::current().variantSets)
        sets.append(oxdVariantSet(set.get()));
    return sets;
}

bool oxVariants::selectVariantSet(const char* name, bool skipView)
{
    oxCallTrace::record("oxVariants::selectVariantSet",
                        std::string(name ? name : "") + "," + (skipView ? "true" : "false"));
    oxScene& scene = oxScene::current();
    const oxVariantSet* set = nullptr;
    for (const auto& candidate : scene.variantSets)
        if (name && candidate->name == name && !set)
            set = candidate.get();
    if (!set) {
        oxLog::warning("oxVariants: no variant set '%s'.", name ? name : "");
        return false;
    }
    for (const oxVariantChange& change : set->changes) {
        if (change.kind == oxVariantChange::MaterialVariant) {
            applyMaterialVariant(scene.getRoot(), change.value);
            continue;
        }
        osg::NodePtr node = oxScenegraph::findUniquePath(scene.getRoot(), change.target);
        auto* switchCore = node ? node->getCoreAs<osg::Switch>() : nullptr;
        if (!node || (change.kind == oxVariantChange::SwitchChoice && !switchCore)) {
            oxLog::warning("oxVariants: variant set '%s' changes '%s', which isn't in the scene.",
                           set->name.c_str(), change.target.c_str());
            continue;
        }
        if (change.kind == oxVariantChange::Visibility)
            node->setActive(change.value != 0);
        else
            switchCore->setChoice(change.value);
    }
    if (!skipView && !set->viewpoint.empty()) {
        osg::NodePtr viewpoint = nullptr;
        for (osg::NodePtr node : oxNodeUtils::findNodes(scene.getCameraRoot(), set->viewpoint))
            if (!viewpoint && oxNodeUtils::isViewpoint(node))
                viewpoint = node;
        if (viewpoint)
            oxCameraService::the()->activateViewpoint(viewpoint);
        else
            oxLog::warning(
                "oxVariants: variant set '%s' shows viewpoint '%s', which isn't in the scene.",
                set->name.c_str(), set->viewpoint.c_str());
    }
    oxController::setModified(true);
    oxController::updateRender();
    return true;
}

oxVariantSetsService* oxVariantSetsService::the()
{
    // Never destroyed: listeners may still disconnect during static destruction.
    static oxVariantSetsService* service = new oxVariantSetsService();
    return service;
}

const char* oxMimeUtils::variantSetMimeType() { return kVariantSetMimeType; }

QMimeData* oxMimeUtils::createVariantSetMimeData(const QList<oxdVariantSetBase>& objects)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    for (const oxdVariantSetBase& object : objects)
        stream << quint32(object.getObjectId());
    auto* data = new QMimeData();
    data->setData(QString::fromLatin1(kVariantSetMimeType), bytes);
    return data;
}

bool oxMimeUtils::canHandleVariantSets(const QMimeData* data)
{
    return data && data->hasFormat(QString::fromLatin1(kVariantSetMimeType));
}

QList<oxdVariantSetBase> oxMimeUtils::extractVariantSetBaseObjects(const QMimeData* data)
{
    QList<oxdVariantSetBase> objects;
    if (!canHandleVariantSets(data))
        return objects;
    const QByteArray bytes = data->data(QString::fromLatin1(kVariantSetMimeType));
    QDataStream stream(bytes);
    while (!stream.atEnd()) {
        quint32 id = 0;
        stream >> id;
        if (stream.status() != QDataStream::Ok)
            break;
        auto* object = osg::FieldContainerFactory::the()->getContainer(id);
        if (auto* set = dynamic_cast<oxVariantSet*>(object))
            objects.append(oxdVariantSet(set));
        else if (auto* group = dynamic_cast<oxVariantSetGroup*>(object))
            objects.append(oxdVariantSetGroup(group));
    }
    return objects;
}

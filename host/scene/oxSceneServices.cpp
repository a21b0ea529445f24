#include "oxSceneServices.h"

#include "oxCallTrace.h"
#include "oxController.h"
#include "oxLog.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace {

oxScene& scene() { return oxScene::current(); }

std::string escapeName(const std::string& name)
{
    std::string out;
    for (char c : name) {
        if (c == '\\' || c == '/' || c == '[')
            out += '\\';
        out += c;
    }
    return out;
}

struct PathElement {
    std::string name;
    int index = 1;
};

// Splits a unique path into its elements; false when it is malformed.
bool parsePath(const std::string& path, std::vector<PathElement>& elements)
{
    elements.assign(1, PathElement());
    for (size_t i = 0; i < path.size(); ++i) {
        const char c = path[i];
        if (c == '\\') {
            if (++i >= path.size())
                return false;
            elements.back().name += path[i];
        } else if (c == '/') {
            elements.emplace_back();
        } else if (c == '[') {
            const size_t close = path.find(']', i);
            if (close == std::string::npos || close == i + 1)
                return false;
            const std::string digits = path.substr(i + 1, close - i - 1);
            if (digits.find_first_not_of("0123456789") != std::string::npos || digits.size() > 6)
                return false;
            elements.back().index = std::stoi(digits);
            i = close;
            if (i + 1 < path.size() && path[i + 1] != '/')
                return false;
        } else {
            elements.back().name += c;
        }
    }
    return true;
}

void visitNodes(osg::NodePtr root, const std::function<void(osg::NodePtr)>& visit)
{
    if (!root)
        return;
    visit(root);
    for (size_t i = 0; i < root->getNChildren(); ++i)
        visitNodes(root->getChild(i), visit);
}

const osg::UberCamera* cameraCore(osg::NodePtr node)
{
    return node ? node->getCoreAs<osg::UberCamera>() : nullptr;
}

osg::Light* lightCore(osg::NodePtr node) { return node ? node->getCoreAs<osg::Light>() : nullptr; }

std::string nodeArg(osg::NodePtr node) { return oxNodeUtils::getName(node); }

// The camera a track or viewpoint belongs to: the nearest camera above it.
osg::NodePtr owningCamera(osg::NodePtr node)
{
    for (osg::NodePtr parent = node ? node->getParent() : nullptr; parent;
         parent = parent->getParent())
        if (oxNodeUtils::isCamera(parent))
            return parent;
    return nullptr;
}

struct CameraServiceRegistrar {
    CameraServiceRegistrar()
    {
        oxKernelServiceFactory::the()->registerService<oxCameraService>(oxCameraService::the());
    }
} cameraServiceRegistrar;

} // namespace

osg::NodePtr oxScenegraph::getRoot() { return scene().getRoot(); }

osg::NodePtr oxScenegraph::findUniquePath(osg::NodePtr root, const std::string& path)
{
    std::vector<PathElement> elements;
    if (!root || path.empty() || !parsePath(path, elements))
        return nullptr;
    osg::NodePtr node = root;
    for (const PathElement& element : elements) {
        osg::NodePtr next = nullptr;
        int seen = 0;
        for (size_t i = 0; i < node->getNChildren() && !next; ++i)
            if (node->getChild(i)->getName() == element.name && ++seen == element.index)
                next = node->getChild(i);
        if (!next)
            return nullptr;
        node = next;
    }
    return node;
}

std::string oxScenegraph::getUniquePathLeaf(const std::string& path)
{
    std::vector<PathElement> elements;
    if (!parsePath(path, elements))
        return path.substr(path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1);
    return elements.back().name;
}

void oxScenegraph::resetHeadlight()
{
    oxCallTrace::record("oxScenegraph::resetHeadlight");
    osg::Light* light = lightCore(scene().getHeadlightNode());
    light->type = osg::Light::Directional;
    light->color = {1, 1, 1};
    light->value = 1.0f;
    light->unit = osg::Light::Unitless;
    light->physicallyBased = false;
    light->attenuation = 0;
    osg::commitChanges(light, ~osg::BitVector(0));
}

osg::NodePtr oxScenegraph::getHeadlightNode() { return scene().getHeadlightNode(); }

std::string oxNodeUtils::getName(osg::NodePtr node)
{
    return node ? node->getName() : std::string();
}

osg::NodePtr oxNodeUtils::findNode(osg::NodePtr root, const std::string& name)
{
    const std::vector<osg::NodePtr> nodes = findNodes(root, name);
    return nodes.empty() ? nullptr : nodes.front();
}

std::vector<osg::NodePtr> oxNodeUtils::findNodes(osg::NodePtr root, const std::string& name)
{
    std::vector<osg::NodePtr> found;
    visitNodes(root, [&](osg::NodePtr node) {
        if (node->getName() == name)
            found.push_back(node);
    });
    return found;
}

std::string oxNodeUtils::getUniquePath(osg::NodePtr node, osg::NodePtr root)
{
    std::vector<std::string> elements;
    for (; node && node != root; node = node->getParent()) {
        osg::NodePtr parent = node->getParent();
        if (!parent)
            return std::string(); // not below root
        int index = 0;
        for (size_t i = 0; i < parent->getNChildren(); ++i) {
            if (parent->getChild(i)->getName() == node->getName())
                ++index;
            if (parent->getChild(i) == node)
                break;
        }
        std::string element = escapeName(node->getName());
        if (index > 1)
            element += "[" + std::to_string(index) + "]";
        elements.push_back(element);
    }
    if (!node)
        return std::string();
    std::string path;
    for (auto it = elements.rbegin(); it != elements.rend(); ++it)
        path += (path.empty() ? "" : "/") + *it;
    return path;
}

bool oxNodeUtils::isCameraTrack(osg::NodePtr node)
{
    return node && node->getCoreAs<osg::CameraTrack>() != nullptr;
}

bool oxNodeUtils::isViewpoint(osg::NodePtr node)
{
    const osg::UberCamera* camera = cameraCore(node);
    return camera && camera->isViewpoint();
}

bool oxNodeUtils::isCamera(osg::NodePtr node)
{
    const osg::UberCamera* camera = cameraCore(node);
    return camera && !camera->isViewpoint();
}

osg::NodePtr oxOpenSGUtils::getSuperRoot() { return scene().getSuperRoot(); }
osg::NodePtr oxOpenSGUtils::getRoot() { return scene().getRoot(); }

oxUberCameraPool* oxUberCameraPool::the()
{
    static oxUberCameraPool pool;
    return &pool;
}

osg::NodePtr oxUberCameraPool::getRoot() const { return scene().getCameraRoot(); }

std::vector<osg::NodePtr> oxUberCameraPool::getDefaultCameras() const
{
    return {scene().getDefaultCamera()};
}

std::vector<osg::NodePtr> oxUberCameraPool::getCustomCameras() const
{
    std::vector<osg::NodePtr> cameras;
    osg::NodePtr root = getRoot();
    for (size_t i = 0; i < root->getNChildren(); ++i)
        if (oxNodeUtils::isCamera(root->getChild(i)) &&
            root->getChild(i) != scene().getDefaultCamera())
            cameras.push_back(root->getChild(i));
    return cameras;
}

std::vector<osg::NodePtr> oxUberCameraPool::getUnassignedViewpoints() const
{
    return oxUberCameraUtils::getViewpointNodes(getRoot());
}

std::vector<osg::UberCameraBase*> oxUberCameraPool::getContentPtrs(bool activeOnly,
                                                                   bool skipViewpoints) const
{
    std::vector<osg::UberCameraBase*> cameras;
    if (activeOnly) {
        cameras.push_back(getActiveCamera()->getCoreAs<osg::UberCameraBase>());
        return cameras;
    }
    visitNodes(getRoot(), [&](osg::NodePtr node) {
        auto* camera = node->getCoreAs<osg::UberCamera>();
        if (camera && !(skipViewpoints && camera->isViewpoint()))
            cameras.push_back(camera);
    });
    return cameras;
}

osg::NodePtr oxUberCameraPool::getActiveCamera() const { return scene().getActiveCamera(); }

std::vector<osg::NodePtr>
oxUberCameraPool::filterNullPointer(const std::vector<osg::NodePtr>& nodes)
{
    std::vector<osg::NodePtr> out;
    std::copy_if(nodes.begin(), nodes.end(), std::back_inserter(out),
                 [](osg::NodePtr node) { return node != nullptr; });
    return out;
}

std::vector<osg::NodePtr> oxUberCameraUtils::getViewpointNodes(osg::NodePtr camera)
{
    std::vector<osg::NodePtr> viewpoints;
    for (size_t i = 0; camera && i < camera->getNChildren(); ++i)
        if (oxNodeUtils::isViewpoint(camera->getChild(i)))
            viewpoints.push_back(camera->getChild(i));
    return viewpoints;
}

std::vector<osg::NodePtr> oxUberCameraUtils::getCameraTrackNodes(osg::NodePtr camera)
{
    std::vector<osg::NodePtr> tracks;
    for (size_t i = 0; camera && i < camera->getNChildren(); ++i)
        if (oxNodeUtils::isCameraTrack(camera->getChild(i)))
            tracks.push_back(camera->getChild(i));
    return tracks;
}

oxCameraService* oxCameraService::the()
{
    static oxCameraService service;
    return &service;
}

// Looking through another camera, or playing an animation, changes the picture but not the
// document: these ask for a new render without marking the scene modified.
bool oxCameraService::activateCamera(osg::NodePtr camera)
{
    oxCallTrace::record("oxCameraService::activateCamera", nodeArg(camera));
    if (!oxNodeUtils::isCamera(camera))
        return false;
    scene().setActiveCamera(camera);
    oxController::updateRender();
    return true;
}

bool oxCameraService::activateViewpoint(osg::NodePtr viewpoint)
{
    oxCallTrace::record("oxCameraService::activateViewpoint", nodeArg(viewpoint));
    if (!oxNodeUtils::isViewpoint(viewpoint))
        return false;
    osg::NodePtr camera = owningCamera(viewpoint);
    if (!camera)
        camera = scene().getActiveCamera();
    camera->getCoreAs<osg::UberCameraBase>()->copyView(
        *viewpoint->getCoreAs<osg::UberCameraBase>());
    scene().setActiveCamera(camera);
    oxController::updateRender();
    return true;
}

osg::NodePtr oxCameraService::getActiveCamera() const { return scene().getActiveCamera(); }

oxAnimManager* oxAnimManager::the()
{
    static oxAnimManager manager;
    return &manager;
}

osg::NodePtr oxAnimManager::clipStructureRoot() const { return scene().getClipRoot(); }

osg::NodePtr oxAnimManager::findClip(const std::string& name) const
{
    osg::NodePtr root = clipStructureRoot();
    for (size_t i = 0; i < root->getNChildren(); ++i)
        if (root->getChild(i)->getName() == name)
            return root->getChild(i);
    return nullptr;
}

osg::NodePtr oxAnimManager::find(const std::string& name)
{
    if (osg::NodePtr clip = findClip(name))
        return clip;
    for (osg::NodePtr node : oxNodeUtils::findNodes(scene().getCameraRoot(), name))
        if (oxNodeUtils::isCameraTrack(node))
            return getCameraTrackBlock(node);
    return nullptr;
}

bool oxAnimManager::getFrameBounds(osg::NodePtr animation, int& start, int& stop) const
{
    if (!animation)
        return false;
    if (auto* clip = animation->getCoreAs<oxAnimClip>())
        return clip->getFrameBounds(start, stop);
    if (auto* block = animation->getCoreAs<oxCameraTrackBlock>()) {
        auto* track =
            dynamic_cast<osg::Node*>(osg::FieldContainerFactory::the()->getContainer(block->track));
        if (!track)
            return false;
        const size_t count = oxUberCameraUtils::getViewpointNodes(track).size();
        if (count == 0)
            return false;
        start = 0;
        stop = int(count - 1) * track->getCoreAs<osg::CameraTrack>()->framesPerViewpoint;
        return true;
    }
    return false;
}

osg::NodePtr oxAnimManager::getCameraTrackBlock(osg::NodePtr track)
{
    if (!oxNodeUtils::isCameraTrack(track) || oxUberCameraUtils::getViewpointNodes(track).empty())
        return nullptr;
    osg::NodePtr root = scene().getBlockRoot();
    for (size_t i = 0; i < root->getNChildren(); ++i) {
        auto* block = root->getChild(i)->getCoreAs<oxCameraTrackBlock>();
        if (block && block->track == track->getId())
            return root->getChild(i);
    }
    auto block = std::make_shared<oxCameraTrackBlock>();
    block->track = track->getId();
    return root->addChild(std::make_unique<osg::Node>(block, track->getName()));
}

bool oxAnimManager::evaluate(osg::NodePtr animation, float frame)
{
    oxCallTrace::record("oxAnimManager::evaluate",
                        nodeArg(animation) + "," + std::to_string(frame));
    if (!animation)
        return false;
    if (auto* clip = animation->getCoreAs<oxAnimClip>()) {
        clip->evaluate(frame);
        oxController::updateRender();
        return true;
    }
    auto* block = animation->getCoreAs<oxCameraTrackBlock>();
    auto* track = block ? dynamic_cast<osg::Node*>(
                              osg::FieldContainerFactory::the()->getContainer(block->track))
                        : nullptr;
    if (!track)
        return false;
    const std::vector<osg::NodePtr> viewpoints = oxUberCameraUtils::getViewpointNodes(track);
    if (viewpoints.empty())
        return false;
    const int perViewpoint = std::max(1, track->getCoreAs<osg::CameraTrack>()->framesPerViewpoint);
    const float position =
        std::min(std::max(0.0f, frame) / float(perViewpoint), float(viewpoints.size()));
    const size_t index = std::min(size_t(position), viewpoints.size() - 1);
    const float blend = index + 1 < viewpoints.size() ? position - float(index) : 0.0f;
    const auto* a = viewpoints[index]->getCoreAs<osg::UberCameraBase>();
    const auto* b =
        viewpoints[std::min(index + 1, viewpoints.size() - 1)]->getCoreAs<osg::UberCameraBase>();
    osg::NodePtr cameraNode = owningCamera(track);
    if (!cameraNode)
        cameraNode = scene().getActiveCamera();
    auto* camera = cameraNode->getCoreAs<osg::UberCameraBase>();
    camera->copyView(*a);
    for (int i = 0; i < 3; ++i)
        camera->position[size_t(i)] =
            a->position[size_t(i)] + (b->position[size_t(i)] - a->position[size_t(i)]) * blend;
    camera->orientation = osg::slerp(a->orientation, b->orientation, blend);
    camera->setFov(a->getFov() + (b->getFov() - a->getFov()) * blend);
    scene().setActiveCamera(cameraNode);
    oxController::updateRender();
    return true;
}

void oxAnimManager::setMotionBlurObjectID(unsigned id)
{
    oxCallTrace::record("oxAnimManager::setMotionBlurObjectID", std::to_string(id));
    m_motionBlurObjectID = id;
}

void oxAnimManager::resetMotionBlurObjectID()
{
    oxCallTrace::record("oxAnimManager::resetMotionBlurObjectID");
    m_motionBlurObjectID = 0;
}

osg::MaterialPool* oxMaterials::findMaterialPool(osg::NodePtr root, bool, bool, int)
{
    return root ? scene().getMaterialPool() : nullptr;
}

std::shared_ptr<osg::Material> oxMaterials::getRealMaterial(const std::shared_ptr<osg::Material>& m)
{
    return m;
}

std::vector<std::shared_ptr<osg::Material>> oxMaterials::getAuxiliaryMaterials()
{
    const auto& auxiliary = scene().auxiliaryMaterials();
    return std::vector<std::shared_ptr<osg::Material>>(auxiliary.begin(), auxiliary.end());
}

void oxMaterials::getAllMaterials(osg::NodePtr root,
                                  std::vector<std::shared_ptr<osg::Material>>& list, int)
{
    auto add = [&list](const std::shared_ptr<osg::Material>& material) {
        if (material && std::find(list.begin(), list.end(), material) == list.end())
            list.push_back(material);
    };
    for (const auto& material : scene().getMaterialPool()->get())
        add(material);
    visitNodes(root, [&](osg::NodePtr node) {
        if (auto* geometry = node->getCoreAs<osg::Geometry>()) {
            add(geometry->material);
            add(geometry->defaultMaterial);
            for (const auto& variant : geometry->variantMaterials)
                add(variant.second);
        }
    });
}

void oxLights::getLights(osg::NodePtr root, std::vector<osg::NodePtr>& list)
{
    visitNodes(root, [&](osg::NodePtr node) {
        if (isLight(node))
            list.push_back(node);
    });
}

bool oxLights::isLight(osg::NodePtr node) { return lightCore(node) != nullptr; }

float oxLights::getLightValue(osg::NodePtr node)
{
    const osg::Light* light = lightCore(node);
    return light ? light->value : 0.0f;
}

void oxLights::setLightValue(osg::NodePtr node, float value)
{
    oxCallTrace::record("oxLights::setLightValue", nodeArg(node) + "," + std::to_string(value));
    if (osg::Light* light = lightCore(node)) {
        light->value = value;
        osg::commitChanges(light, ~osg::BitVector(0));
    }
}

void oxLights::setDefaultLightUnit(osg::NodePtr node)
{
    oxCallTrace::record("oxLights::setDefaultLightUnit", nodeArg(node));
    if (osg::Light* light = lightCore(node)) {
        light->unit = !light->physicallyBased                  ? osg::Light::Unitless
                      : light->type == osg::Light::Directional ? osg::Light::Lux
                                                               : osg::Light::Candela;
        osg::commitChanges(light, ~osg::BitVector(0));
    }
}

void oxLights::setIsPhysicallyBased(osg::NodePtr node, bool physicallyBased)
{
    oxCallTrace::record("oxLights::setIsPhysicallyBased",
                        nodeArg(node) + "," + (physicallyBased ? "true" : "false"));
    if (osg::Light* light = lightCore(node)) {
        light->physicallyBased = physicallyBased;
        osg::commitChanges(light, ~osg::BitVector(0));
    }
}

void oxLights::setAttenuation(osg::NodePtr node, int attenuation)
{
    oxCallTrace::record("oxLights::setAttenuation",
                        nodeArg(node) + "," + std::to_string(attenuation));
    if (osg::Light* light = lightCore(node)) {
        light->attenuation = attenuation;
        osg::commitChanges(light, ~osg::BitVector(0));
    }
}

void oxLights::setAreaLightRealisticFalloff(osg::NodePtr node, int falloff)
{
    oxCallTrace::record("oxLights::setAreaLightRealisticFalloff",
                        nodeArg(node) + "," + std::to_string(falloff));
    if (osg::Light* light = lightCore(node)) {
        light->areaRealisticFalloff = falloff;
        osg::commitChanges(light, ~osg::BitVector(0));
    }
}

osg::IESProfileAttachment* oxLights::getIESProfileAttachment(osg::NodePtr node)
{
    const osg::Light* light = lightCore(node);
    return light ? light->ies.get() : nullptr;
}

oxSceneData* oxSceneDataManager::getSceneData(int index)
{
    return index == 0 ? &scene().sceneData() : nullptr;
}

osg::UEnvironmentMaterialBase* oxUberMaterialUtils::getDefaultOXEnvironment()
{
    return scene().getEnvironment();
}

void osg::USphereEnvironmentMaterial::resetDefaultEnvironment(bool photometric)
{
    oxCallTrace::record("USphereEnvironmentMaterial::resetDefaultEnvironment",
                        photometric ? "true" : "false");
    UEnvironmentMaterialBase* environment = scene().getEnvironment();
    const UEnvironmentMaterialBase defaults;
    environment->skyColor = defaults.skyColor;
    environment->groundColor = defaults.groundColor;
    environment->setLuminanceMapping(photometric ? 100.0f : 1.0f);
    commitChanges(environment, ~BitVector(0));
}

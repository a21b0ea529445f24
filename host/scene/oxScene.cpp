#include "oxScene.h"

#include "oxCallTrace.h"
#include "oxUndoStack.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace {

std::unique_ptr<oxScene>& currentScene()
{
    static std::unique_ptr<oxScene> scene;
    return scene;
}

// Index of the last key at or before frame, and the blend towards the next one.
void locate(const std::vector<float>& frames, float frame, size_t& index, float& blend)
{
    const auto it = std::upper_bound(frames.begin(), frames.end(), frame);
    if (it == frames.begin()) {
        index = 0;
        blend = 0;
        return;
    }
    index = size_t(it - frames.begin()) - 1;
    if (index + 1 >= frames.size()) {
        blend = 0;
        return;
    }
    const float span = frames[index + 1] - frames[index];
    blend = span > 0 ? (frame - frames[index]) / span : 0.0f;
}

} // namespace

void oxSceneData::setPhotometric(uint8_t photometric)
{
    oxCallTrace::record("oxSceneData::setPhotometric", std::to_string(photometric));
    m_photometric = photometric;
}

bool oxAnimClip::getFrameBounds(int& start, int& stop) const
{
    bool any = false;
    float first = 0, last = 0;
    for (const oxAnimChannel& channel : channels) {
        if (channel.frames.empty())
            continue;
        first = any ? std::min(first, channel.frames.front()) : channel.frames.front();
        last = any ? std::max(last, channel.frames.back()) : channel.frames.back();
        any = true;
    }
    if (!any)
        return false;
    // Frames beyond the int range can't be rendered anyway; keep the conversion defined.
    start = int(std::clamp(std::floor(first), -2.0e9f, 2.0e9f));
    stop = int(std::clamp(std::ceil(last), -2.0e9f, 2.0e9f));
    return true;
}

void oxAnimClip::evaluate(float frame) const
{
    for (const oxAnimChannel& channel : channels) {
        auto* node = dynamic_cast<osg::Node*>(
            osg::FieldContainerFactory::the()->getContainer(channel.target));
        auto* transform = node ? node->getCoreAs<osg::Transform>() : nullptr;
        if (!transform || channel.frames.empty())
            continue;
        size_t index = 0;
        float blend = 0;
        locate(channel.frames, frame, index, blend);
        if (channel.step)
            blend = 0;
        const size_t width = channel.path == oxAnimChannel::Rotation ? 4 : 3;
        if (channel.values.size() < channel.frames.size() * width)
            continue;
        const float* a = &channel.values[index * width];
        const float* b = blend > 0 ? a + width : a;
        if (channel.path == oxAnimChannel::Rotation) {
            transform->rotation =
                osg::slerp({a[0], a[1], a[2], a[3]}, {b[0], b[1], b[2], b[3]}, blend);
        } else {
            osg::Vec3f& target = channel.path == oxAnimChannel::Translation ? transform->translation
                                                                            : transform->scale;
            for (size_t i = 0; i < 3; ++i)
                target[i] = a[i] + (b[i] - a[i]) * blend;
        }
    }
}

oxScene::oxScene()
    : m_superRoot(std::make_unique<osg::Node>(std::make_shared<osg::Group>(), "SuperRoot")),
      m_cameraRoot(std::make_unique<osg::Node>(std::make_shared<osg::Group>(), "Cameras")),
      m_clipRoot(std::make_unique<osg::Node>(std::make_shared<osg::Group>(), "Clips")),
      m_blockRoot(std::make_unique<osg::Node>(std::make_shared<osg::Group>(), "Blocks")),
      m_materialPool(std::make_unique<osg::MaterialPool>()),
      m_environment(std::make_shared<osg::USphereEnvironmentMaterial>())
{
    m_root =
        m_superRoot->addChild(std::make_unique<osg::Node>(std::make_shared<osg::Group>(), "Root"));
    auto headlight = std::make_shared<osg::Light>();
    headlight->type = osg::Light::Directional;
    m_headlight = m_superRoot->addChild(std::make_unique<osg::Node>(headlight, "Headlight"));
    m_environment->name = "Default Environment";
    // The renderer's own helper material: the shadow the product casts on an invisible floor.
    auto shadow = std::make_shared<osg::UBRDFMaterialBase>();
    shadow->name = "Shadow Catcher";
    m_auxiliaryMaterials.push_back(shadow);
    m_defaultCamera = m_cameraRoot->addChild(
        std::make_unique<osg::Node>(std::make_shared<osg::UberCamera>(false), "Perspective"));
    auto* camera = m_defaultCamera->getCoreAs<osg::UberCamera>();
    camera->position = {0, 1.5f, 6};
    m_activeCamera = m_defaultCamera->getId();
}

oxScene::~oxScene() = default;

oxScene& oxScene::current()
{
    if (!currentScene())
        currentScene() = std::make_unique<oxScene>();
    return *currentScene();
}

namespace {
std::map<int, std::function<void()>>& replaceListeners()
{
    static std::map<int, std::function<void()>> listeners;
    return listeners;
}
} // namespace

int oxScene::addReplaceListener(std::function<void()> listener)
{
    static int next = 0;
    replaceListeners()[++next] = std::move(listener);
    return next;
}

void oxScene::removeReplaceListener(int handle) { replaceListeners().erase(handle); }

std::unique_ptr<oxScene> oxScene::replaceCurrent(std::unique_ptr<oxScene> scene)
{
    // Commands on the undo stack hold nodes of the scene that goes.
    oxUndoStack::the()->clear();
    for (auto& entry : replaceListeners())
        entry.second();
    std::unique_ptr<oxScene> previous = std::move(currentScene());
    currentScene() = std::move(scene);
    return previous;
}

osg::NodePtr oxScene::getActiveCamera() const
{
    auto* node =
        dynamic_cast<osg::Node*>(osg::FieldContainerFactory::the()->getContainer(m_activeCamera));
    return node ? node : m_defaultCamera;
}

void oxScene::setActiveCamera(osg::NodePtr camera)
{
    m_activeCamera = camera ? camera->getId() : m_defaultCamera->getId();
}

osg::Matrix oxScene::getWorldMatrix(osg::NodePtr node)
{
    osg::Matrix m = osg::identityMatrix();
    for (; node; node = node->getParent())
        if (auto* transform = node->getCoreAs<osg::Transform>())
            m = osg::multiply(transform->getMatrix(), m);
    return m;
}

namespace {

struct Flattener {
    oxSceneSnapshot& out;
    std::vector<std::pair<const osg::Material*, uint32_t>> materialIndex;

    uint32_t materialId(const osg::Material* material)
    {
        for (const auto& entry : materialIndex)
            if (entry.first == material)
                return entry.second;
        const auto id = uint32_t(out.materials.size());
        out.materials.push_back(material);
        materialIndex.emplace_back(material, id);
        return id;
    }

    void visit(osg::NodePtr node, const osg::Matrix& parent)
    {
        if (!node->getActive())
            return;
        osg::Matrix world = parent;
        if (auto* transform = node->getCoreAs<osg::Transform>())
            world = osg::multiply(parent, transform->getMatrix());
        if (auto* geometry = node->getCoreAs<osg::Geometry>()) {
            const auto base = uint32_t(out.positions.size() / 3);
            for (size_t i = 0; i + 2 < geometry->positions.size(); i += 3) {
                const osg::Vec3f p =
                    osg::transformPoint(world, {geometry->positions[i], geometry->positions[i + 1],
                                                geometry->positions[i + 2]});
                out.positions.insert(out.positions.end(), p.begin(), p.end());
            }
            const bool normals = geometry->normals.size() == geometry->positions.size();
            for (size_t i = 0; i + 2 < geometry->positions.size(); i += 3) {
                osg::Vec3f n{0, 0, 0};
                if (normals) {
                    n = osg::transformVector(world, {geometry->normals[i], geometry->normals[i + 1],
                                                     geometry->normals[i + 2]});
                    const float length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
                    for (float& c : n)
                        c = length > 0.0f ? c / length : 0.0f;
                }
                out.normals.insert(out.normals.end(), n.begin(), n.end());
            }
            for (uint32_t index : geometry->indices)
                out.indices.push_back(base + index);
            const uint32_t material = materialId(geometry->material.get());
            out.triangleMaterial.insert(out.triangleMaterial.end(), geometry->getTriangleCount(),
                                        material);
            out.triangleObject.insert(out.triangleObject.end(), geometry->getTriangleCount(),
                                      node->getId());
        }
        if (auto* light = node->getCoreAs<osg::Light>()) {
            const osg::Vec3f position = osg::transformPoint(world, {0, 0, 0});
            const osg::Vec3f direction = osg::transformVector(world, {0, 0, -1});
            out.lights.push_back({light, position, direction});
        }
        const auto* switchCore = node->getCoreAs<osg::Switch>();
        for (size_t i = 0; i < node->getNChildren(); ++i) {
            if (switchCore && switchCore->getChoice() != osg::Switch::ALL &&
                switchCore->getChoice() != int(i))
                continue;
            visit(node->getChild(i), world);
        }
    }
};

} // namespace

void oxScene::snapshot(oxSceneSnapshot& snapshot) const
{
    snapshot = oxSceneSnapshot();
    Flattener flattener{snapshot, {}};
    flattener.visit(m_superRoot.get(), osg::identityMatrix());
    snapshot.camera = getActiveCamera()->getCoreAs<osg::UberCameraBase>();
    snapshot.environment = m_environment.get();
}

size_t oxScene::getTriangleCount() const
{
    size_t count = 0;
    std::vector<osg::NodePtr> stack{m_root};
    while (!stack.empty()) {
        osg::NodePtr node = stack.back();
        stack.pop_back();
        if (auto* geometry = node->getCoreAs<osg::Geometry>())
            count += geometry->getTriangleCount();
        for (size_t i = 0; i < node->getNChildren(); ++i)
            stack.push_back(node->getChild(i));
    }
    return count;
}

osg::NodePtr oxScene::addCamera(const std::string& name)
{
    return m_cameraRoot->addChild(
        std::make_unique<osg::Node>(std::make_shared<osg::UberCamera>(false), name));
}

osg::NodePtr oxScene::addViewpoint(const std::string& name, osg::NodePtr parent)
{
    return parent->addChild(
        std::make_unique<osg::Node>(std::make_shared<osg::UberCamera>(true), name));
}

osg::NodePtr oxScene::addCameraTrack(const std::string& name, osg::NodePtr camera)
{
    return camera->addChild(
        std::make_unique<osg::Node>(std::make_shared<osg::CameraTrack>(), name));
}

oxAnimClip* oxScene::addClip(const std::string& name)
{
    auto clip = std::make_shared<oxAnimClip>();
    m_clipRoot->addChild(std::make_unique<osg::Node>(clip, name));
    return clip.get();
}

#include "oxSceneIO.h"

#include "oxCallTrace.h"
#include "oxController.h"
#include "oxExampleScene.h"
#include "oxFile.h"
#include "oxFileIO.h"
#include "oxFileRescue.h"
#include "oxInputLimits.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxPathText.h"
#include "oxSceneServices.h"
#include "oxSceneValues.h"
#include "oxVariants.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <sstream>

namespace {

// Entries of a project record. Per-object lists are parallel vectors indexed alike; clips and
// variant sets keep their variable-length parts under numbered keys ("clip.0.frames").
namespace key {
const char kType[] = "type";
const char kTypeValue[] = "oxlinProject";
const char kVersion[] = "version";
const char kModel[] = "model";
const char kFps[] = "fps";
const char kPhotometric[] = "photometric";
const char kActiveCamera[] = "activeCamera";
const char kEnvironment[] = "environment"; // sky rgb, ground rgb, luminance mapping
const char kEnvironmentName[] = "environmentName";
const char kCameraNames[] = "cameraNames";
const char kCameraViews[] = "cameraViews";
const char kTrackNames[] = "trackNames";
const char kTrackCameras[] = "trackCameras";
const char kTrackFrames[] = "trackFramesPerViewpoint";
const char kViewpointNames[] = "viewpointNames";
const char kViewpointOwners[] = "viewpointOwners";
const char kViewpointViews[] = "viewpointViews";
const char kClipNames[] = "clipNames";
const char kClipPrefix[] = "clip.";
const char kClipTargets[] = ".targets";
const char kClipChannels[] = ".channels"; // path, step, key count per channel
const char kClipFrames[] = ".frames";
const char kClipValues[] = ".values";
const char kGroupNames[] = "variantGroupNames";
const char kSetNames[] = "variantSetNames";
const char kSetGroups[] = "variantSetGroupOf";
const char kSetViewpoints[] = "variantSetViewpoints";
const char kSetPreviews[] = "variantSetPreviews"; // rgb per set
const char kSetPrefix[] = "variantSet.";
const char kSetKinds[] = ".kinds";
const char kSetTargets[] = ".targets";
const char kSetValues[] = ".values";
const char kLightPaths[] = "lightPaths";
const char kLightSettings[] = "lightSettings"; // value, unit, pb, attenuation, falloff
const char kLightIES[] = "lightIES";
const char kPluginRecord[] = "pluginRecord";
} // namespace key

constexpr size_t kViewFloats = 18; // position 3, orientation 4, fov, fov mode, near, far,
                                   // whitepoint, glow 3, glare 3
static_assert(kViewFloats == oxSceneValues::kViewValues);
constexpr size_t kLightFloats = 5;
constexpr int kProjectVersion = 1;
constexpr char kLoading[] = "_loading";

// Whole numbers stored as floats in a file may be anything; out of range they saturate.
int toInt(float value)
{
    if (!(value > -2.0e9f))
        return value > 0 ? 2000000000 : -2000000000; // NaN lands here too, as the negative end
    return value < 2.0e9f ? int(value) : 2000000000;
}

void putView(const osg::UberCameraBase& camera, std::vector<float>& out)
{
    const osg::TonemappingSettingsBase* tone = camera.getTonemappingSettings();
    const float values[kViewFloats] = {camera.position[0],
                                       camera.position[1],
                                       camera.position[2],
                                       camera.orientation[0],
                                       camera.orientation[1],
                                       camera.orientation[2],
                                       camera.orientation[3],
                                       camera.getFov(),
                                       float(camera.getFovMode()),
                                       camera.getNear(),
                                       camera.getFar(),
                                       tone->getWhitepoint(),
                                       tone->getGlowParameter()[0],
                                       tone->getGlowParameter()[1],
                                       tone->getGlowParameter()[2],
                                       tone->getGlareParameter()[0],
                                       tone->getGlareParameter()[1],
                                       tone->getGlareParameter()[2]};
    out.insert(out.end(), values, values + kViewFloats);
}

void takeView(const float* v, osg::UberCameraBase& camera)
{
    camera.position = {v[0], v[1], v[2]};
    camera.orientation = {v[3], v[4], v[5], v[6]};
    camera.setFov(v[7]);
    camera.setFovMode(toInt(v[8]));
    camera.setNear(v[9]);
    camera.setFar(v[10]);
    osg::TonemappingSettingsBase* tone = camera.getTonemappingSettings();
    tone->setWhitepoint(v[11]);
    tone->setGlowParameter({v[12], v[13], v[14]});
    tone->setGlareParameter({v[15], v[16], v[17]});
}

// Typed read of a project entry that must be there once its section is.
template <typename T>
bool need(const oxMessage& project, const std::string& name, T& value, std::string& error)
{
    // The type is checked first: a wrong one is the file's fault, not a programming error
    // worth the message's own complaint and stack trace.
    const auto entry = project.getMap().find(name);
    if (entry != project.getMap().end() && oxMessage::sameType(entry->second.type(), typeid(T)) &&
        project.get(name, value))
        return true;
    error = "the entry '" + name + "' is missing or has the wrong type";
    return false;
}

// Typed read of an entry a project may leave out; present, it must have the right type.
template <typename T>
bool optional(const oxMessage& project, const std::string& name, T& value, std::string& error)
{
    return !project.has(name) || need(project, name, value, error);
}

bool sizeIs(size_t actual, size_t expected, const std::string& name, std::string& error)
{
    if (actual == expected)
        return true;
    error = "the entry '" + name + "' has " + std::to_string(actual) + " values instead of " +
            std::to_string(expected);
    return false;
}

// A list of numbers the renderer takes as they are: each must be finite and of sane size.
bool valuesUsable(const std::vector<float>& values, const std::string& name, std::string& error)
{
    const std::string bad = oxSceneValues::firstUnusable(values.data(), values.size());
    if (bad.empty())
        return true;
    error = "the entry '" + name + "' holds the unusable value " + bad;
    return false;
}

// A view's numbers before they reach a camera; what says whose view it is.
bool viewUsable(const float* view, const std::string& what, std::string& error)
{
    const std::string bad = oxSceneValues::checkView(view);
    if (bad.empty())
        return true;
    error = what + " has an unusable " + bad;
    return false;
}

void clearChildren(osg::NodePtr node, osg::NodePtr keep = nullptr)
{
    for (size_t i = node->getNChildren(); i-- > 0;)
        if (node->getChild(i) != keep)
            node->subChild(node->getChild(i));
}

bool readCameras(const oxMessage& project, oxScene& scene, std::string& error)
{
    std::vector<std::string> cameraNames, trackNames, trackCameras, viewpointNames, owners;
    std::vector<float> cameraViews, viewpointViews;
    std::vector<int> trackFrames;
    if (!need(project, key::kCameraNames, cameraNames, error) ||
        !need(project, key::kCameraViews, cameraViews, error) ||
        !need(project, key::kTrackNames, trackNames, error) ||
        !need(project, key::kTrackCameras, trackCameras, error) ||
        !need(project, key::kTrackFrames, trackFrames, error) ||
        !need(project, key::kViewpointNames, viewpointNames, error) ||
        !need(project, key::kViewpointOwners, owners, error) ||
        !need(project, key::kViewpointViews, viewpointViews, error))
        return false;
    if (!sizeIs(cameraViews.size(), cameraNames.size() * kViewFloats, key::kCameraViews, error) ||
        !sizeIs(trackCameras.size(), trackNames.size(), key::kTrackCameras, error) ||
        !sizeIs(trackFrames.size(), trackNames.size(), key::kTrackFrames, error) ||
        !sizeIs(owners.size(), viewpointNames.size(), key::kViewpointOwners, error) ||
        !sizeIs(viewpointViews.size(), viewpointNames.size() * kViewFloats, key::kViewpointViews,
                error))
        return false;
    if (cameraNames.empty() || cameraNames.front() != scene.getDefaultCamera()->getName()) {
        error = "the first camera isn't the default camera '" +
                scene.getDefaultCamera()->getName() + "'";
        return false;
    }
    for (size_t i = 0; i < cameraNames.size(); ++i)
        if (!viewUsable(&cameraViews[i * kViewFloats],
                        "the camera '" + oxInputLimits::quoted(cameraNames[i]) + "'", error))
            return false;
    for (size_t i = 0; i < viewpointNames.size(); ++i)
        if (!viewUsable(&viewpointViews[i * kViewFloats],
                        "the viewpoint '" + oxInputLimits::quoted(viewpointNames[i]) + "'", error))
            return false;
    osg::NodePtr root = scene.getCameraRoot();
    clearChildren(root, scene.getDefaultCamera());
    clearChildren(scene.getDefaultCamera());
    for (size_t i = 0; i < cameraNames.size(); ++i) {
        osg::NodePtr camera = i == 0 ? scene.getDefaultCamera() : scene.addCamera(cameraNames[i]);
        takeView(&cameraViews[i * kViewFloats], *camera->getCoreAs<osg::UberCameraBase>());
    }
    for (size_t i = 0; i < trackNames.size(); ++i) {
        osg::NodePtr camera = oxScenegraph::findUniquePath(root, trackCameras[i]);
        if (!oxNodeUtils::isCamera(camera)) {
            error = "camera track '" + trackNames[i] + "' belongs to the unknown camera '" +
                    trackCameras[i] + "'";
            return false;
        }
        osg::NodePtr track = scene.addCameraTrack(trackNames[i], camera);
        track->getCoreAs<osg::CameraTrack>()->framesPerViewpoint = std::max(1, trackFrames[i]);
    }
    for (size_t i = 0; i < viewpointNames.size(); ++i) {
        osg::NodePtr owner =
            owners[i].empty() ? root : oxScenegraph::findUniquePath(root, owners[i]);
        if (!oxNodeUtils::isCamera(owner) && !oxNodeUtils::isCameraTrack(owner) && owner != root) {
            error = "viewpoint '" + viewpointNames[i] +
                    "' belongs to the unknown camera or track '" + owners[i] + "'";
            return false;
        }
        osg::NodePtr viewpoint = scene.addViewpoint(viewpointNames[i], owner);
        takeView(&viewpointViews[i * kViewFloats], *viewpoint->getCoreAs<osg::UberCameraBase>());
    }
    std::string active;
    if (!optional(project, key::kActiveCamera, active, error))
        return false;
    if (!active.empty())
        scene.setActiveCamera(oxScenegraph::findUniquePath(root, active));
    return true;
}

bool readClips(const oxMessage& project, oxScene& scene, std::string& error)
{
    std::vector<std::string> names;
    if (!need(project, key::kClipNames, names, error))
        return false;
    clearChildren(scene.getClipRoot());
    for (size_t c = 0; c < names.size(); ++c) {
        const std::string prefix = key::kClipPrefix + std::to_string(c);
        std::vector<std::string> targets;
        std::vector<int> channels;
        std::vector<float> frames, values;
        if (!need(project, prefix + key::kClipTargets, targets, error) ||
            !need(project, prefix + key::kClipChannels, channels, error) ||
            !need(project, prefix + key::kClipFrames, frames, error) ||
            !need(project, prefix + key::kClipValues, values, error) ||
            !sizeIs(channels.size(), targets.size() * 3, prefix + key::kClipChannels, error) ||
            !valuesUsable(frames, prefix + key::kClipFrames, error) ||
            !valuesUsable(values, prefix + key::kClipValues, error))
            return false;
        oxAnimClip* clip = scene.addClip(names[c]);
        size_t frameAt = 0, valueAt = 0;
        for (size_t i = 0; i < targets.size(); ++i) {
            oxAnimChannel channel;
            osg::NodePtr target = oxScenegraph::findUniquePath(scene.getRoot(), targets[i]);
            const int path = channels[i * 3];
            const size_t keys = size_t(std::max(0, channels[i * 3 + 2]));
            const size_t width = path == oxAnimChannel::Rotation ? 4 : 3;
            if (!target || !target->getCoreAs<osg::Transform>() || path < 0 || path > 2 ||
                frameAt + keys > frames.size() || valueAt + keys * width > values.size()) {
                error = "clip '" + names[c] + "' has a channel on the unknown node '" + targets[i] +
                        "' or too few keys";
                return false;
            }
            channel.target = target->getId();
            channel.path = oxAnimChannel::Path(path);
            channel.step = channels[i * 3 + 1] != 0;
            channel.frames.assign(frames.begin() + long(frameAt),
                                  frames.begin() + long(frameAt + keys));
            channel.values.assign(values.begin() + long(valueAt),
                                  values.begin() + long(valueAt + keys * width));
            if (!std::is_sorted(channel.frames.begin(), channel.frames.end())) {
                error = "clip '" + names[c] + "' has keys out of order";
                return false;
            }
            frameAt += keys;
            valueAt += keys * width;
            clip->channels.push_back(std::move(channel));
        }
    }
    return true;
}

bool readVariants(const oxMessage& project, oxScene& scene, std::string& error)
{
    std::vector<std::string> groupNames, setNames, setGroups, setViewpoints;
    std::vector<float> previews;
    if (!need(project, key::kGroupNames, groupNames, error) ||
        !need(project, key::kSetNames, setNames, error) ||
        !need(project, key::kSetGroups, setGroups, error) ||
        !need(project, key::kSetViewpoints, setViewpoints, error) ||
        !need(project, key::kSetPreviews, previews, error) ||
        !sizeIs(setGroups.size(), setNames.size(), key::kSetGroups, error) ||
        !sizeIs(setViewpoints.size(), setNames.size(), key::kSetViewpoints, error) ||
        !sizeIs(previews.size(), setNames.size() * 3, key::kSetPreviews, error))
        return false;
    scene.variantSets.clear();
    scene.variantGroups.clear();
    for (const std::string& name : groupNames) {
        scene.variantGroups.push_back(std::make_unique<oxVariantSetGroup>());
        scene.variantGroups.back()->name = name;
    }
    for (size_t s = 0; s < setNames.size(); ++s) {
        const std::string prefix = key::kSetPrefix + std::to_string(s);
        std::vector<int> kinds, values;
        std::vector<std::string> targets;
        if (!need(project, prefix + key::kSetKinds, kinds, error) ||
            !need(project, prefix + key::kSetTargets, targets, error) ||
            !need(project, prefix + key::kSetValues, values, error) ||
            !sizeIs(targets.size(), kinds.size(), prefix + key::kSetTargets, error) ||
            !sizeIs(values.size(), kinds.size(), prefix + key::kSetValues, error))
            return false;
        auto set = std::make_unique<oxVariantSet>();
        set->name = setNames[s];
        set->viewpoint = setViewpoints[s];
        set->previewColor = QColor::fromRgbF(std::clamp(previews[s * 3], 0.0f, 1.0f),
                                             std::clamp(previews[s * 3 + 1], 0.0f, 1.0f),
                                             std::clamp(previews[s * 3 + 2], 0.0f, 1.0f));
        for (size_t i = 0; i < kinds.size(); ++i) {
            if (kinds[i] < 0 || kinds[i] > oxVariantChange::SwitchChoice) {
                error = "variant set '" + set->name + "' has a change of unknown kind";
                return false;
            }
            set->changes.push_back({oxVariantChange::Kind(kinds[i]), targets[i], values[i]});
        }
        if (!setGroups[s].empty()) {
            for (const auto& group : scene.variantGroups)
                if (group->name == setGroups[s] && !set->group)
                    set->group = group.get();
            if (!set->group) {
                error = "variant set '" + set->name + "' belongs to the unknown group '" +
                        setGroups[s] + "'";
                return false;
            }
            set->group->sets.push_back(set.get());
        }
        scene.variantSets.push_back(std::move(set));
    }
    return true;
}

bool readLights(const oxMessage& project, oxScene& scene, std::string& error)
{
    std::vector<std::string> paths, ies;
    std::vector<float> settings;
    if (!need(project, key::kLightPaths, paths, error) ||
        !need(project, key::kLightSettings, settings, error) ||
        !need(project, key::kLightIES, ies, error) ||
        !sizeIs(settings.size(), paths.size() * kLightFloats, key::kLightSettings, error) ||
        !sizeIs(ies.size(), paths.size(), key::kLightIES, error) ||
        !valuesUsable(settings, key::kLightSettings, error))
        return false;
    for (size_t i = 0; i < paths.size(); ++i) {
        osg::NodePtr node = oxScenegraph::findUniquePath(scene.getSuperRoot(), paths[i]);
        auto* light = node ? node->getCoreAs<osg::Light>() : nullptr;
        if (!light) {
            error = "the light '" + paths[i] + "' isn't in the model";
            return false;
        }
        const float* v = &settings[i * kLightFloats];
        light->value = v[0];
        light->unit = osg::Light::Unit(std::clamp(toInt(v[1]), 0, int(osg::Light::Candela)));
        light->physicallyBased = v[2] != 0;
        light->attenuation = toInt(v[3]);
        light->areaRealisticFalloff = toInt(v[4]);
        if (!ies[i].empty()) {
            light->ies = std::make_shared<osg::IESProfileAttachment>();
            light->ies->fileName = ies[i];
        }
    }
    return true;
}

std::string unsupportedVersion(const char* what, int version, int supported)
{
    return std::string("it was written in ") + what + " version " + std::to_string(version) +
           ", which this oxlin doesn't support (it reads version " + std::to_string(supported) +
           "); open it with a newer oxlin";
}

std::string lowerExtension(const std::string& fileName)
{
    std::string extension = oxFile::getExtension(fileName);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return extension;
}

} // namespace

void oxSceneIO::writeProject(const oxScene& scene, const std::string& modelPath, oxMessage& project)
{
    project.addAttribute(key::kType, key::kTypeValue);
    project.addAttribute(key::kVersion, std::to_string(kProjectVersion));
    project.set(key::kModel, modelPath, true);
    project.set(key::kFps, scene.fps, true);
    oxScene& mutableScene = const_cast<oxScene&>(scene); // scene data has no const reader
    project.set(key::kPhotometric, mutableScene.sceneData().getPhotometric() != 0, true);
    const osg::UEnvironmentMaterialBase* environment = scene.getEnvironment();
    project.set(key::kEnvironment,
                std::vector<float>{environment->skyColor[0], environment->skyColor[1],
                                   environment->skyColor[2], environment->groundColor[0],
                                   environment->groundColor[1], environment->groundColor[2],
                                   environment->getLuminanceMapping()},
                true);
    project.set(key::kEnvironmentName, environment->name, true);

    osg::NodePtr root = scene.getCameraRoot();
    project.set(key::kActiveCamera, oxNodeUtils::getUniquePath(scene.getActiveCamera(), root),
                true);
    std::vector<std::string> cameraNames, trackNames, trackCameras, viewpointNames, owners;
    std::vector<float> cameraViews, viewpointViews;
    std::vector<int> trackFrames;
    // The default camera first, so that a reader can recognise it.
    std::vector<osg::NodePtr> cameras{scene.getDefaultCamera()};
    for (size_t i = 0; i < root->getNChildren(); ++i)
        if (oxNodeUtils::isCamera(root->getChild(i)) &&
            root->getChild(i) != scene.getDefaultCamera())
            cameras.push_back(root->getChild(i));
    auto addViewpoints = [&](osg::NodePtr owner) {
        for (osg::NodePtr viewpoint : oxUberCameraUtils::getViewpointNodes(owner)) {
            viewpointNames.push_back(viewpoint->getName());
            owners.push_back(oxNodeUtils::getUniquePath(owner, root));
            putView(*viewpoint->getCoreAs<osg::UberCameraBase>(), viewpointViews);
        }
    };
    for (osg::NodePtr camera : cameras) {
        cameraNames.push_back(camera->getName());
        putView(*camera->getCoreAs<osg::UberCameraBase>(), cameraViews);
        addViewpoints(camera);
        for (osg::NodePtr track : oxUberCameraUtils::getCameraTrackNodes(camera)) {
            trackNames.push_back(track->getName());
            trackCameras.push_back(oxNodeUtils::getUniquePath(camera, root));
            trackFrames.push_back(track->getCoreAs<osg::CameraTrack>()->framesPerViewpoint);
            addViewpoints(track);
        }
    }
    addViewpoints(root);
    project.set(key::kCameraNames, cameraNames, true);
    project.set(key::kCameraViews, cameraViews, true);
    project.set(key::kTrackNames, trackNames, true);
    project.set(key::kTrackCameras, trackCameras, true);
    project.set(key::kTrackFrames, trackFrames, true);
    project.set(key::kViewpointNames, viewpointNames, true);
    project.set(key::kViewpointOwners, owners, true);
    project.set(key::kViewpointViews, viewpointViews, true);

    std::vector<std::string> clipNames;
    osg::NodePtr clips = scene.getClipRoot();
    for (size_t c = 0; c < clips->getNChildren(); ++c) {
        const auto* clip = clips->getChild(c)->getCoreAs<oxAnimClip>();
        const std::string prefix = key::kClipPrefix + std::to_string(clipNames.size());
        std::vector<std::string> targets;
        std::vector<int> channels;
        std::vector<float> frames, values;
        for (const oxAnimChannel& channel : clip->channels) {
            auto* target = dynamic_cast<osg::Node*>(
                osg::FieldContainerFactory::the()->getContainer(channel.target));
            if (!target)
                continue;
            targets.push_back(oxNodeUtils::getUniquePath(target, scene.getRoot()));
            channels.insert(channels.end(),
                            {int(channel.path), channel.step ? 1 : 0, int(channel.frames.size())});
            frames.insert(frames.end(), channel.frames.begin(), channel.frames.end());
            values.insert(values.end(), channel.values.begin(), channel.values.end());
        }
        clipNames.push_back(clips->getChild(c)->getName());
        project.set(prefix + key::kClipTargets, targets, true);
        project.set(prefix + key::kClipChannels, channels, true);
        project.set(prefix + key::kClipFrames, frames, true);
        project.set(prefix + key::kClipValues, values, true);
    }
    project.set(key::kClipNames, clipNames, true);

    std::vector<std::string> groupNames, setNames, setGroups, setViewpoints;
    std::vector<float> previews;
    for (const auto& group : scene.variantGroups)
        groupNames.push_back(group->name);
    for (size_t s = 0; s < scene.variantSets.size(); ++s) {
        const oxVariantSet& set = *scene.variantSets[s];
        const std::string prefix = key::kSetPrefix + std::to_string(s);
        setNames.push_back(set.name);
        setGroups.push_back(set.group ? set.group->name : std::string());
        setViewpoints.push_back(set.viewpoint);
        previews.insert(previews.end(),
                        {float(set.previewColor.redF()), float(set.previewColor.greenF()),
                         float(set.previewColor.blueF())});
        std::vector<int> kinds, values;
        std::vector<std::string> targets;
        for (const oxVariantChange& change : set.changes) {
            kinds.push_back(int(change.kind));
            targets.push_back(change.target);
            values.push_back(change.value);
        }
        project.set(prefix + key::kSetKinds, kinds, true);
        project.set(prefix + key::kSetTargets, targets, true);
        project.set(prefix + key::kSetValues, values, true);
    }
    project.set(key::kGroupNames, groupNames, true);
    project.set(key::kSetNames, setNames, true);
    project.set(key::kSetGroups, setGroups, true);
    project.set(key::kSetViewpoints, setViewpoints, true);
    project.set(key::kSetPreviews, previews, true);

    std::vector<osg::NodePtr> lights;
    oxLights::getLights(scene.getRoot(), lights);
    std::vector<std::string> lightPaths, ies;
    std::vector<float> settings;
    for (osg::NodePtr node : lights) {
        const auto* light = node->getCoreAs<osg::Light>();
        lightPaths.push_back(oxNodeUtils::getUniquePath(node, scene.getSuperRoot()));
        settings.insert(settings.end(),
                        {light->value, float(light->unit), light->physicallyBased ? 1.0f : 0.0f,
                         float(light->attenuation), float(light->areaRealisticFalloff)});
        ies.push_back(light->ies ? light->ies->fileName : std::string());
    }
    project.set(key::kLightPaths, lightPaths, true);
    project.set(key::kLightSettings, settings, true);
    project.set(key::kLightIES, ies, true);
}

bool oxSceneIO::readProject(const oxMessage& project, oxScene& scene, std::string& error)
{
    float fps = 0;
    bool photometric = false;
    if (!optional(project, key::kFps, fps, error) ||
        !optional(project, key::kPhotometric, photometric, error) ||
        !optional(project, key::kEnvironmentName, scene.getEnvironment()->name, error))
        return false;
    if (fps > 0 && oxSceneValues::usable(fps))
        scene.fps = fps;
    if (project.has(key::kPhotometric))
        scene.sceneData().setPhotometric(photometric ? 1 : 0);
    std::vector<float> environment;
    if (project.has(key::kEnvironment)) {
        if (!need(project, key::kEnvironment, environment, error) ||
            !sizeIs(environment.size(), 7, key::kEnvironment, error) ||
            !valuesUsable(environment, key::kEnvironment, error))
            return false;
        osg::UEnvironmentMaterialBase* sky = scene.getEnvironment();
        sky->skyColor = {environment[0], environment[1], environment[2]};
        sky->groundColor = {environment[3], environment[4], environment[5]};
        sky->setLuminanceMapping(environment[6]);
    }
    if (project.has(key::kCameraNames) && !readCameras(project, scene, error))
        return false;
    if (project.has(key::kClipNames) && !readClips(project, scene, error))
        return false;
    if (project.has(key::kSetNames) && !readVariants(project, scene, error))
        return false;
    if (project.has(key::kLightPaths) && !readLights(project, scene, error))
        return false;
    return true;
}

std::unique_ptr<oxScene> oxSceneIO::load(const std::string& fileName, oxMessage* pluginRecord)
{
    const std::string path = oxFile::expandFilename(fileName);
    const std::string extension = lowerExtension(path);
    auto fail = [&](const std::string& problem) {
        oxLog::error("Can't open '%s': %s.", fileName.c_str(), problem.c_str());
        return nullptr;
    };
    if (extension != "oxp" && extension != "gltf" && extension != "glb")
        return fail("unknown file type '" + extension +
                    "' (oxlin opens .oxp projects and .gltf or .glb models)");
    if (!oxFile::exists(path, true))
        return fail("the file doesn't exist");

    auto scene = std::make_unique<oxScene>();
    scene->fileName = path;
    std::string error;
    if (extension != "oxp") {
        if (!importGltf(path, *scene, error))
            return fail(error);
        scene->modelFile =
            oxPathText::fromQString(QFileInfo(oxPathText::toQString(path)).absoluteFilePath());
        return scene;
    }

    oxMessage project;
    std::string type, model;
    if (!oxMessageRW::read(project, path.c_str(), std::string())) {
        if (oxMessageRW::lastFormatVersion() > oxMessageRW::formatVersion)
            return fail(unsupportedVersion("record format", oxMessageRW::lastFormatVersion(),
                                           oxMessageRW::formatVersion));
        return fail("the project file is malformed, truncated or unreadable");
    }
    if (project.getAttibute(key::kType) != key::kTypeValue)
        return fail("this is no oxlin project");
    const std::string version = project.getAttibute(key::kVersion);
    if (!version.empty() && version != std::to_string(kProjectVersion)) {
        int number = 0;
        const auto [end, problem] =
            std::from_chars(version.data(), version.data() + version.size(), number);
        if (problem != std::errc() || end != version.data() + version.size() || number < 1)
            return fail("its project format version '" + oxInputLimits::quoted(version) +
                        "' is not a number");
        if (number > kProjectVersion)
            return fail(unsupportedVersion("project format", number, kProjectVersion));
    }
    if (!optional(project, key::kModel, model, error))
        return fail(error);
    if (model.empty())
        return fail("the project names no model");
    // Paths pass through QString with their bytes kept (oxPathText::toQString): a project in a
    // folder whose name isn't UTF-8 still finds its model.
    const QDir folder = QFileInfo(oxPathText::toQString(path)).absoluteDir();
    const std::string modelPath = oxPathText::fromQString(
        QFileInfo(folder, oxPathText::toQString(oxFile::convertSeparators(model)))
            .absoluteFilePath());
    if (!oxFile::exists(modelPath, true))
        return fail("the model '" + model + "' it references doesn't exist");
    if (!importGltf(modelPath, *scene, error))
        return fail("its model '" + model + "': " + error);
    scene->modelFile = modelPath;
    if (!readProject(project, *scene, error))
        return fail(error);
    std::string pluginText;
    if (!optional(project, key::kPluginRecord, pluginText, error))
        return fail(error);
    if (pluginRecord && !pluginText.empty() &&
        !oxMessageRW::read(*pluginRecord, nullptr, pluginText))
        return fail("the plug-ins' record in it is malformed");
    return scene;
}

bool oxSceneIO::open(const std::string& fileName)
{
    oxCallTrace::record("oxSceneIO::open", fileName);
    oxMessage pluginRecord;
    std::unique_ptr<oxScene> scene = load(fileName, &pluginRecord);
    if (!scene)
        return false;
    // Only now, with everything read, does anything of the running session change.
    std::unique_ptr<oxScene> previous = oxScene::replaceCurrent(std::move(scene));
    oxFileIO::clearProject();
    oxMessage& project = oxFileIO::getProject();
    for (const auto& entry : pluginRecord.getMap())
        project.set(entry.first, entry.second, true);
    for (const auto& attribute : pluginRecord.getAttributes())
        project.addAttribute(attribute.first, attribute.second);
    project.set(kLoading, true, true);
    oxMessage message(oxController::MessageProjectReadWrite);
    oxController::broadcastMessage(message);
    oxVariantSetsService::the()->notifyHierarchyChanged();
    oxController::setModified(false);
    oxController::updateRender();
    previous.reset();
    oxLog::info("Opened '%s'.", fileName.c_str());
    return true;
}

void oxSceneIO::newScene()
{
    auto scene = std::make_unique<oxScene>();
    std::string error;
    if (!oxExampleScene::build(*scene, error))
        oxLog::error("The built-in scene couldn't be built: %s.", error.c_str());
    oxScene::replaceCurrent(std::move(scene));
    oxFileIO::clearProject();
    oxVariantSetsService::the()->notifyHierarchyChanged();
    oxController::setModified(false);
}

bool oxSceneIO::save(const std::string& fileName)
{
    oxCallTrace::record("oxSceneIO::save", fileName);
    const std::string path = oxFile::expandFilename(fileName);
    if (lowerExtension(path) != "oxp") {
        oxLog::error("Can't save '%s': projects are saved as .oxp files.", fileName.c_str());
        return false;
    }
    oxScene& scene = oxScene::current();
    const QDir folder = QFileInfo(oxPathText::toQString(path)).absoluteDir();
    std::string modelFile = scene.modelFile;
    if (modelFile.empty()) {
        // The built-in scene has no model file yet: it goes next to the project.
        std::string error;
        const std::string base = oxFile::getBaseName(path);
        if (!oxExampleScene::writeModel(oxPathText::fromQString(folder.absolutePath()), base,
                                        error)) {
            oxLog::error("Can't save '%s': %s.", fileName.c_str(), error.c_str());
            return false;
        }
        modelFile =
            oxPathText::fromQString(folder.absoluteFilePath(oxPathText::toQString(base + ".gltf")));
    }

    oxMessage& pluginProject = oxFileIO::getProject();
    pluginProject.set(kLoading, false, true);
    oxMessage message(oxController::MessageProjectReadWrite);
    oxController::broadcastMessage(message);
    oxMessage pluginRecord = pluginProject;
    pluginRecord.remove(kLoading);

    oxMessage project;
    writeProject(scene,
                 oxPathText::fromQString(folder.relativeFilePath(oxPathText::toQString(modelFile))),
                 project);
    std::string pluginText;
    if (!oxMessageRW::write(pluginRecord, pluginText)) {
        oxLog::error("Can't save '%s': a plug-in stored a value of a type projects can't hold.",
                     fileName.c_str());
        return false;
    }
    project.set(key::kPluginRecord, pluginText, true);
    // A file there that can't be read (damaged, or of a newer oxlin) may hold work that exists
    // nowhere else: it is kept beside itself rather than replaced.
    oxMessage existing;
    if (oxFile::exists(path, true) && !oxMessageRW::read(existing, path.c_str(), std::string())) {
        const std::string kept = oxFileRescue::keepBeside(path);
        if (!kept.empty())
            oxLog::warning("'%s' couldn't be read; it is kept as '%s' and the project is saved "
                           "in its place.",
                           fileName.c_str(), kept.c_str());
    }
    if (!oxMessageRW::write(project, path.c_str())) {
        oxLog::error("Can't save '%s': the file can't be written (check the folder's permissions "
                     "and free space).",
                     fileName.c_str());
        return false;
    }
    scene.fileName = path;
    scene.modelFile = modelFile;
    oxController::setModified(false);
    oxLog::info("Saved '%s'.", fileName.c_str());
    return true;
}

std::string oxSceneIO::describe(const oxScene& scene)
{
    std::ostringstream out;
    osg::NodePtr root = scene.getCameraRoot();
    auto viewpointList = [&](osg::NodePtr owner, const char* indent) {
        for (osg::NodePtr viewpoint : oxUberCameraUtils::getViewpointNodes(owner))
            out << indent << "viewpoint " << viewpoint->getName() << "\n";
    };
    out << "Cameras:\n";
    for (size_t i = 0; i < root->getNChildren(); ++i) {
        osg::NodePtr camera = root->getChild(i);
        if (!oxNodeUtils::isCamera(camera))
            continue;
        out << "  " << camera->getName() << (camera == scene.getDefaultCamera() ? " (default)" : "")
            << (camera == scene.getActiveCamera() ? " (active)" : "") << "\n";
        viewpointList(camera, "    ");
        for (osg::NodePtr track : oxUberCameraUtils::getCameraTrackNodes(camera)) {
            out << "    camera track " << track->getName() << " ("
                << oxUberCameraUtils::getViewpointNodes(track).size() << " viewpoints)\n";
            viewpointList(track, "      ");
        }
    }
    if (!oxUberCameraUtils::getViewpointNodes(root).empty()) {
        out << "Unassigned viewpoints:\n";
        viewpointList(root, "  ");
    }
    out << "Clips:\n";
    for (size_t i = 0; i < scene.getClipRoot()->getNChildren(); ++i) {
        osg::NodePtr clip = scene.getClipRoot()->getChild(i);
        int start = 0, stop = 0;
        clip->getCoreAs<oxAnimClip>()->getFrameBounds(start, stop);
        out << "  " << clip->getName() << " frames " << start << "-" << stop << "\n";
    }
    out << "Variant set groups:\n";
    for (const auto& group : scene.variantGroups) {
        out << "  " << group->name << "\n";
        for (const oxVariantSet* set : group->sets)
            out << "    " << set->name << "\n";
    }
    out << "Ungrouped variant sets:\n";
    for (const auto& set : scene.variantSets)
        if (!set->group)
            out << "  " << set->name << "\n";
    out << "Materials:\n";
    for (const auto& material : scene.getMaterialPool()->get()) {
        out << "  " << material->name;
        const auto* uber = dynamic_cast<const osg::UberMaterialBase*>(material.get());
        if (const osg::RaytracingAttachment* raytracing =
                uber ? uber->getRaytracingAttachment() : nullptr;
            raytracing && raytracing->overridesAnything()) {
            const char* separator = " (overrides";
#define OX_DESCRIBE_OVERRIDE(Setting, start)                                                       \
    if (raytracing->getOverride##Setting()) {                                                      \
        out << separator << " " #Setting " " << raytracing->get##Setting();                        \
        separator = ",";                                                                           \
    }
            OX_RAYTRACING_OVERRIDES(OX_DESCRIBE_OVERRIDE)
#undef OX_DESCRIBE_OVERRIDE
            out << ")";
        }
        out << "\n";
    }
    out << "Lights:\n";
    std::vector<osg::NodePtr> lights;
    oxLights::getLights(scene.getRoot(), lights);
    static const char* const kLightTypes[] = {"directional", "point", "spot"};
    for (osg::NodePtr node : lights) {
        const auto* light = node->getCoreAs<osg::Light>();
        out << "  " << node->getName() << " (" << kLightTypes[light->type] << ", value "
            << light->value << ")\n";
    }
    out << "Environment: " << scene.getEnvironment()->name << "\n";
    return out.str();
}

#pragma once

#include "oxScene.h"

#include <memory>
#include <string>

class oxMessage;

/// Scene files: glTF 2.0 models (.gltf, .glb) and oxlin projects (.oxp).
///
/// A project is an oxMessageRW record that names its glTF model by a path relative to the
/// project's folder and holds what glTF can't: cameras, viewpoints, camera tracks, clips,
/// variant sets and groups, light settings, the environment and the plug-ins' project record.
/// A bare glTF opens too: its cameras become unassigned viewpoints, its material variants
/// ungrouped variant sets and its animations clips.
///
/// A glTF material's raytracing overrides stand in its extras, as an object under
/// kRaytracingOverridesExtra with a number per overridden setting, named as in
/// OX_RAYTRACING_OVERRIDES: {"raytracingOverrides": {"TraceDepth": 12}}.
class oxSceneIO {
public:
    static constexpr const char* kRaytracingOverridesExtra = "raytracingOverrides";

    /// Builds a scene from a file. Null, with one error line naming the file and the problem,
    /// when it can't be read; the current scene is never touched. With pluginRecord given, a
    /// project's plug-in record is read into it.
    static std::unique_ptr<oxScene> load(const std::string& fileName,
                                         oxMessage* pluginRecord = nullptr);

    /// Opens a file as the current scene: builds it aside, swaps it in only when complete,
    /// puts the plug-ins' record into oxFileIO::getProject() and broadcasts message 8192 with
    /// "_loading" true. False (current scene and project record untouched) on failure.
    static bool open(const std::string& fileName);

    /// Makes the built-in example scene current with an empty project record (no message;
    /// the caller announces the new scene).
    static void newScene();

    /// Saves the current scene as a project: broadcasts 8192 with "_loading" false so that the
    /// plug-ins store their entries, then writes the project atomically. A scene without a
    /// model file (the built-in one) gets its model written next to the project first.
    static bool save(const std::string& fileName);

    /// Imports a glTF file (.gltf or .glb) into scene; false with error set on failure.
    static bool importGltf(const std::string& fileName, oxScene& scene, std::string& error);
    /// Imports glTF JSON text whose buffers are data URIs.
    static bool importGltfText(const std::string& text, oxScene& scene, std::string& error);
    /// Imports the bytes of a binary glTF file whose buffers are its own chunk or data URIs.
    static bool importGltfBinary(const std::string& data, oxScene& scene, std::string& error);

    /// Writes scene's project entries into project (model path as given).
    static void writeProject(const oxScene& scene, const std::string& modelPath,
                             oxMessage& project);
    /// Reads project entries into a scene built from the project's model; false with error
    /// set when an entry is inconsistent.
    static bool readProject(const oxMessage& project, oxScene& scene, std::string& error);

    /// What a scene offers to a render job, as text: cameras, viewpoints, camera tracks with
    /// their viewpoints, clips with frame bounds, variant groups and sets, materials with
    /// their raytracing overrides, lights.
    static std::string describe(const oxScene& scene);
};

#pragma once

#include "oxSceneGraph.h"

#include <QColor>

#include <functional>

#include <memory>
#include <string>
#include <vector>

/// Scene-wide flags kept with the scene.
class oxSceneData {
public:
    /// 1 when the scene's light and display values are photometric, else 0.
    uint8_t getPhotometric() const { return m_photometric; }
    void setPhotometric(uint8_t photometric);

private:
    uint8_t m_photometric = 0;
};

/// One keyframed channel of a clip: a node's translation, rotation or scale over frames.
struct oxAnimChannel {
    enum Path { Translation = 0, Rotation = 1, Scale = 2 };
    osg::UInt32 target = 0; ///< node id
    Path path = Translation;
    bool step = false;         ///< step interpolation instead of linear
    std::vector<float> frames; ///< ascending
    std::vector<float> values; ///< 3 (or 4 for rotation) per frame
};

/// A clip: named channels played over a frame range (the core of a clip node).
class oxAnimClip : public osg::NodeCore {
public:
    const char* getTypeName() const override { return "AnimClip"; }
    std::vector<oxAnimChannel> channels;
    /// First and last keyframe, rounded outwards; false without keys.
    bool getFrameBounds(int& start, int& stop) const;
    /// Sets every target to its value at frame (targets outside the scene are skipped).
    void evaluate(float frame) const;
};

/// The animation of a camera track: its viewpoints in sequence (the core of a block node).
class oxCameraTrackBlock : public osg::NodeCore {
public:
    const char* getTypeName() const override { return "CameraTrackBlock"; }
    osg::UInt32 track = 0; ///< node id of the track
};

/// One change a variant set makes when selected.
struct oxVariantChange {
    enum Kind { MaterialVariant = 0, Visibility = 1, SwitchChoice = 2 };
    Kind kind = MaterialVariant;
    std::string target; ///< unique path below the scene root; unused for MaterialVariant
    int value = 0;      ///< variant index, 0/1 for hidden/shown, or the switch choice
};

class oxVariantSetGroup;

/// A named, ordered set of scene changes, optionally with a viewpoint.
class oxVariantSet : public osg::FieldContainer {
public:
    const char* getTypeName() const override { return "VariantSet"; }
    std::string name;
    oxVariantSetGroup* group = nullptr;
    std::vector<oxVariantChange> changes;
    std::string viewpoint; ///< viewpoint name, or empty
    QColor previewColor{128, 128, 128};
};

class oxVariantSetGroup : public osg::FieldContainer {
public:
    const char* getTypeName() const override { return "VariantSetGroup"; }
    std::string name;
    std::vector<oxVariantSet*> sets; ///< in order
};

/// Flat, world-space view of a scene for a renderer: triangles, materials, lights, camera.
struct oxSceneSnapshot {
    std::vector<float> positions;           ///< x, y, z per vertex, world space
    std::vector<uint32_t> indices;          ///< three per triangle
    std::vector<float> normals;             ///< x, y, z per vertex, world space; 0 when unknown
    std::vector<uint32_t> triangleMaterial; ///< index into materials, per triangle
    std::vector<uint32_t> triangleObject;   ///< node id, per triangle
    std::vector<const osg::Material*> materials;
    struct Light {
        const osg::Light* light;
        osg::Vec3f position;
        osg::Vec3f direction; ///< where it shines (the node's -Z)
    };
    std::vector<Light> lights;
    const osg::UberCameraBase* camera = nullptr;
    const osg::UEnvironmentMaterialBase* environment = nullptr;
};

/// A whole scene: model tree, cameras, clips, materials, variant sets. The host has one
/// current scene; a new one is built aside and swapped in complete.
class oxScene {
public:
    oxScene();
    ~oxScene();
    oxScene(const oxScene&) = delete;
    oxScene& operator=(const oxScene&) = delete;

    /// The current scene (an empty one before any was set).
    static oxScene& current();
    /// Makes scene current and returns the previous one.
    static std::unique_ptr<oxScene> replaceCurrent(std::unique_ptr<oxScene> scene);
    /// Calls listener on the GUI thread just before the current scene is replaced, so that
    /// readers of the scene on other threads can stop. Returns a handle for removal.
    static int addReplaceListener(std::function<void()> listener);
    static void removeReplaceListener(int handle);

    /// Root above the model and the headlight.
    osg::NodePtr getSuperRoot() const { return m_superRoot.get(); }
    /// Root of the model.
    osg::NodePtr getRoot() const { return m_root; }
    osg::NodePtr getHeadlightNode() const { return m_headlight; }
    /// Root of the cameras: default and custom cameras, and unassigned viewpoints.
    osg::NodePtr getCameraRoot() const { return m_cameraRoot.get(); }
    osg::NodePtr getClipRoot() const { return m_clipRoot.get(); }
    osg::NodePtr getBlockRoot() const { return m_blockRoot.get(); }
    osg::MaterialPool* getMaterialPool() const { return m_materialPool.get(); }
    std::vector<std::shared_ptr<osg::UBRDFMaterialBase>>& auxiliaryMaterials()
    {
        return m_auxiliaryMaterials;
    }
    osg::UEnvironmentMaterialBase* getEnvironment() const { return m_environment.get(); }
    oxSceneData& sceneData() { return m_sceneData; }

    /// The camera the renderer uses.
    osg::NodePtr getActiveCamera() const;
    void setActiveCamera(osg::NodePtr camera);
    /// The built-in camera "Perspective".
    osg::NodePtr getDefaultCamera() const { return m_defaultCamera; }

    /// Adds a custom camera below the camera root.
    osg::NodePtr addCamera(const std::string& name);
    /// Adds a viewpoint below parent: a camera, a camera track, or the camera root
    /// (unassigned).
    osg::NodePtr addViewpoint(const std::string& name, osg::NodePtr parent);
    osg::NodePtr addCameraTrack(const std::string& name, osg::NodePtr camera);
    /// Adds a clip node below the clip root.
    oxAnimClip* addClip(const std::string& name);

    std::vector<std::string> materialVariantNames;
    std::vector<std::unique_ptr<oxVariantSet>> variantSets;
    std::vector<std::unique_ptr<oxVariantSetGroup>> variantGroups;
    /// Frames per second of the clips.
    float fps = 25.0f;
    /// The file the scene came from ("" for a new one).
    std::string fileName;
    /// The glTF model the scene was built from ("" for the built-in scene).
    std::string modelFile;

    /// World matrix of a node of the model tree.
    static osg::Matrix getWorldMatrix(osg::NodePtr node);
    /// Fills snapshot from the visible geometry, lights and the active camera.
    void snapshot(oxSceneSnapshot& snapshot) const;
    size_t getTriangleCount() const;

private:
    std::unique_ptr<osg::Node> m_superRoot;
    osg::NodePtr m_root = nullptr;
    osg::NodePtr m_headlight = nullptr;
    std::unique_ptr<osg::Node> m_cameraRoot;
    std::unique_ptr<osg::Node> m_clipRoot;
    std::unique_ptr<osg::Node> m_blockRoot;
    osg::NodePtr m_defaultCamera = nullptr;
    osg::UInt32 m_activeCamera = 0;
    std::unique_ptr<osg::MaterialPool> m_materialPool;
    std::vector<std::shared_ptr<osg::UBRDFMaterialBase>> m_auxiliaryMaterials;
    std::shared_ptr<osg::USphereEnvironmentMaterial> m_environment;
    oxSceneData m_sceneData;
};

#pragma once

// Services of the host on its current scene (oxScene::current()): node lookup and unique
// paths, cameras, animation, materials, lights and scene data.

#include "oxKernelServiceFactory.h"
#include "oxScene.h"

#include <string>
#include <vector>

/// Unique paths: the names from below the root to the node, joined by "/". In a name, "\",
/// "/" and "[" are escaped with "\". The n-th of several siblings with the same name (n >= 2,
/// counted from 1 in child order) carries "[n]" after its name: "Cameras/Front[2]".
class oxScenegraph {
public:
    /// The root of the model tree.
    static osg::NodePtr getRoot();
    /// The node at path below root; null when there is none or the path is empty or malformed.
    static osg::NodePtr findUniquePath(osg::NodePtr root, const std::string& path);
    /// The name the last element of path stands for (unescaped, without its index).
    static std::string getUniquePathLeaf(const std::string& path);
    /// Resets the headlight to a standard directional light of value 1.
    static void resetHeadlight();
    static osg::NodePtr getHeadlightNode();
};

class oxNodeUtils {
public:
    /// The node's name, "" for null.
    static std::string getName(osg::NodePtr node);
    /// The first node named name in pre-order below and including root; null if none.
    static osg::NodePtr findNode(osg::NodePtr root, const std::string& name);
    /// All nodes named name below and including root, in pre-order.
    static std::vector<osg::NodePtr> findNodes(osg::NodePtr root, const std::string& name);
    /// The unique path of node relative to root ("" when node is root or not below it).
    static std::string getUniquePath(osg::NodePtr node, osg::NodePtr root);
    static bool isCameraTrack(osg::NodePtr node);
    static bool isViewpoint(osg::NodePtr node);
    static bool isCamera(osg::NodePtr node);
};

class oxOpenSGUtils {
public:
    static osg::NodePtr getSuperRoot();
    static osg::NodePtr getRoot();
};

/// The cameras of the current scene.
class oxUberCameraPool {
public:
    static oxUberCameraPool* the();
    osg::NodePtr getRoot() const;
    /// The built-in cameras ("Perspective").
    std::vector<osg::NodePtr> getDefaultCameras() const;
    /// Cameras the scene added.
    std::vector<osg::NodePtr> getCustomCameras() const;
    /// Viewpoints that belong to no camera.
    std::vector<osg::NodePtr> getUnassignedViewpoints() const;
    /// Every camera and viewpoint core; with skipViewpoints only cameras, with activeOnly
    /// only the active camera.
    std::vector<osg::UberCameraBase*> getContentPtrs(bool activeOnly, bool skipViewpoints) const;
    osg::NodePtr getActiveCamera() const;
    static std::vector<osg::NodePtr> filterNullPointer(const std::vector<osg::NodePtr>& nodes);
};

class oxUberCameraUtils {
public:
    /// The viewpoints directly below camera, in order.
    static std::vector<osg::NodePtr> getViewpointNodes(osg::NodePtr camera);
    /// The camera tracks below camera, in order.
    static std::vector<osg::NodePtr> getCameraTrackNodes(osg::NodePtr camera);
};

/// Activation of cameras and viewpoints: what the renderer looks through.
class oxCameraService : public oxBaseService {
public:
    static oxCameraService* the();
    /// Makes camera (a camera node) the one the renderer uses.
    bool activateCamera(osg::NodePtr camera);
    /// Moves the viewpoint's camera (its owner, else the active camera) to the viewpoint's
    /// pose and lens and activates that camera.
    bool activateViewpoint(osg::NodePtr viewpoint);
    osg::NodePtr getActiveCamera() const;
};

/// Clips, camera track blocks, their frame ranges and their evaluation.
class oxAnimManager {
public:
    static oxAnimManager* the();
    /// The node whose children are the clips.
    osg::NodePtr clipStructureRoot() const;
    /// The clip of that name, or null.
    osg::NodePtr findClip(const std::string& name) const;
    /// A clip of that name, else the block of a camera track of that name; null if neither.
    osg::NodePtr find(const std::string& name);
    /// The frame range of a clip or block; false (bounds untouched) for anything else.
    bool getFrameBounds(osg::NodePtr animation, int& start, int& stop) const;
    /// The block that plays the viewpoints of track in sequence; null when track is no
    /// camera track or has no viewpoints.
    osg::NodePtr getCameraTrackBlock(osg::NodePtr track);
    /// Sets the scene to frame of the animation (a clip or a block); false for anything else.
    bool evaluate(osg::NodePtr animation, float frame);
    /// The object whose animation drives motion blur (0: none).
    void setMotionBlurObjectID(unsigned id);
    void resetMotionBlurObjectID();
    unsigned getMotionBlurObjectID() const { return m_motionBlurObjectID; }

private:
    unsigned m_motionBlurObjectID = 0;
};

class oxMaterials {
public:
    /// The material pool of the scene that root belongs to; null for a null root.
    static osg::MaterialPool* findMaterialPool(osg::NodePtr root, bool create, bool recursive,
                                               int flags);
    /// The material that renders for an entry (materials here are never indirect).
    static std::shared_ptr<osg::Material> getRealMaterial(const std::shared_ptr<osg::Material>& m);
    /// Materials the host uses beside the scene's (shadow and helper materials).
    static std::vector<std::shared_ptr<osg::Material>> getAuxiliaryMaterials();
    /// The pool's materials, then every material of the geometry below root (variant
    /// alternatives included), each once, in order of first appearance.
    static void getAllMaterials(osg::NodePtr root,
                                std::vector<std::shared_ptr<osg::Material>>& list, int flags);
};

/// Light sources. Every setter runs the change protocol.
class oxLights {
public:
    /// Appends the light nodes below and including root, in pre-order.
    static void getLights(osg::NodePtr root, std::vector<osg::NodePtr>& list);
    static bool isLight(osg::NodePtr node);
    static float getLightValue(osg::NodePtr node);
    static void setLightValue(osg::NodePtr node, float value);
    /// Sets the unit a light of this kind has in its mode: unitless, or lux for directional
    /// and candela for other physically-based lights.
    static void setDefaultLightUnit(osg::NodePtr node);
    static void setIsPhysicallyBased(osg::NodePtr node, bool physicallyBased);
    static void setAttenuation(osg::NodePtr node, int attenuation);
    static void setAreaLightRealisticFalloff(osg::NodePtr node, int falloff);
    /// The light's IES profile, or null.
    static osg::IESProfileAttachment* getIESProfileAttachment(osg::NodePtr node);
};

class oxSceneDataManager {
public:
    /// Scene data of the current scene for index 0; null for any other index.
    static oxSceneData* getSceneData(int index);
};

class oxUberMaterialUtils {
public:
    /// The default environment of the current scene.
    static osg::UEnvironmentMaterialBase* getDefaultOXEnvironment();
};

#pragma once

// The host's scene graph: field containers with ids, nodes with shared cores, and the cores
// of transforms, switches, geometry, cameras, lights and uber materials.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace osg {

using UInt32 = uint32_t;
using BitVector = uint64_t;
using Vec3f = std::array<float, 3>;
using Vec4f = std::array<float, 4>;
/// Quaternion x, y, z, w.
using Quaternion = std::array<float, 4>;
/// 4x4 matrix, column-major (as glTF stores it).
using Matrix = std::array<float, 16>;

Matrix identityMatrix();
Matrix multiply(const Matrix& a, const Matrix& b);
Matrix matrixFromTRS(const Vec3f& t, const Quaternion& r, const Vec3f& s);
Vec3f transformPoint(const Matrix& m, const Vec3f& p);
Vec3f transformVector(const Matrix& m, const Vec3f& v);
/// Translation, rotation and scale of an affine matrix without shear.
void decompose(const Matrix& m, Vec3f& t, Quaternion& r, Vec3f& s);
Quaternion slerp(const Quaternion& a, Quaternion b, float t);

/// Base of every scene object with an id. Ids are never reused, so an id of a destroyed
/// container finds nothing.
class FieldContainer {
public:
    FieldContainer();
    virtual ~FieldContainer();
    FieldContainer(const FieldContainer&) = delete;
    FieldContainer& operator=(const FieldContainer&) = delete;

    UInt32 getId() const { return m_id; }
    virtual const char* getTypeName() const = 0;

    /// Called after fields changed (the mask names them): marks the scene modified and asks
    /// the render view for a new image.
    virtual void changed(BitVector whichField, UInt32 origin);

private:
    UInt32 m_id;
};

/// Change protocol switch: while set, changes aren't passed to FieldContainer::changed.
struct FieldContainerPtr {
    static bool _ignore_change;
};

/// The containers changed since the list was last cleared, with their field masks.
class ChangeList {
public:
    struct Entry {
        UInt32 id;
        BitVector mask;
    };
    void addChanged(const FieldContainer* container, BitVector mask);
    const std::vector<Entry>& getChanged() const { return m_entries; }
    void clear() { m_entries.clear(); }

private:
    std::vector<Entry> m_entries;
};

struct WinThreadBase {
    /// The change list of the GUI thread; never null.
    static ChangeList* getCurrentChangeList();
};

/// Runs the change protocol for container: records it in the current change list, then
/// calls its changed() unless FieldContainerPtr::_ignore_change is set.
void commitChanges(FieldContainer* container, BitVector mask);

/// Id to container registry.
class FieldContainerFactory {
public:
    static FieldContainerFactory* the();
    /// The live container of that id, or null.
    FieldContainer* getContainer(UInt32 id) const;
    UInt32 registerContainer(FieldContainer* container);
    void unregisterContainer(UInt32 id);
    size_t getNumContainers() const;
};

class NodeCore : public FieldContainer {};

class Node;
using NodePtr = Node*;
constexpr NodePtr NullFC = nullptr;

/// A named node of the tree. Owns its children; its core may be shared with other nodes.
class Node : public FieldContainer {
public:
    explicit Node(std::shared_ptr<NodeCore> core = {}, const std::string& name = {});
    const char* getTypeName() const override { return "Node"; }

    const std::string& getName() const { return m_name; }
    void setName(const std::string& name) { m_name = name; }

    NodeCore* getCore() const { return m_core.get(); }
    const std::shared_ptr<NodeCore>& getCoreShared() const { return m_core; }
    void setCore(std::shared_ptr<NodeCore> core) { m_core = std::move(core); }
    template <typename T>
    T* getCoreAs() const
    {
        return dynamic_cast<T*>(m_core.get());
    }

    NodePtr getParent() const { return m_parent; }
    size_t getNChildren() const { return m_children.size(); }
    NodePtr getChild(size_t index) const { return m_children[index].get(); }
    /// Appends child and returns it.
    NodePtr addChild(std::unique_ptr<Node> child);
    /// Detaches child; null when it isn't a child of this node.
    std::unique_ptr<Node> subChild(NodePtr child);

    /// Whether the node and its subtree are shown.
    bool getActive() const { return m_active; }
    void setActive(bool active) { m_active = active; }

private:
    std::string m_name;
    std::shared_ptr<NodeCore> m_core;
    NodePtr m_parent = nullptr;
    std::vector<std::unique_ptr<Node>> m_children;
    bool m_active = true;
};

class Group : public NodeCore {
public:
    const char* getTypeName() const override { return "Group"; }
};

/// Local transform as translation, rotation and scale; animation channels drive these.
class Transform : public NodeCore {
public:
    static constexpr BitVector MatrixFieldMask = 1;
    const char* getTypeName() const override { return "Transform"; }
    Vec3f translation{0, 0, 0};
    Quaternion rotation{0, 0, 0, 1};
    Vec3f scale{1, 1, 1};
    Matrix getMatrix() const { return matrixFromTRS(translation, rotation, scale); }
};

/// Shows one child (choice >= 0), none (-1) or all (-2).
class Switch : public NodeCore {
public:
    static constexpr int NONE = -1;
    static constexpr int ALL = -2;
    const char* getTypeName() const override { return "Switch"; }
    int getChoice() const { return m_choice; }
    void setChoice(int choice) { m_choice = choice; }

private:
    int m_choice = ALL;
};

class Material;

/// Indexed triangles with one material; per material variant an alternative material.
class Geometry : public NodeCore {
public:
    const char* getTypeName() const override { return "Geometry"; }
    std::vector<float> positions;  ///< x, y, z per vertex
    std::vector<float> normals;    ///< empty or x, y, z per vertex
    std::vector<uint32_t> indices; ///< three per triangle
    std::shared_ptr<Material> material;
    std::shared_ptr<Material> defaultMaterial;
    /// Material variant index -> material.
    std::vector<std::pair<int, std::shared_ptr<Material>>> variantMaterials;
    size_t getTriangleCount() const { return indices.size() / 3; }
};

class TonemappingSettingsBase : public FieldContainer {
public:
    static constexpr BitVector WhitepointFieldMask = 1;
    static constexpr BitVector GlowParameterFieldMask = 2;
    static constexpr BitVector GlareParameterFieldMask = 4;
    const char* getTypeName() const override { return "TonemappingSettings"; }
    float getWhitepoint() const { return m_whitepoint; }
    void setWhitepoint(float value) { m_whitepoint = value; }
    /// Glow: radius, strength, intensity threshold (the third scales with luminance).
    const Vec3f& getGlowParameter() const { return m_glow; }
    void setGlowParameter(const Vec3f& value) { m_glow = value; }
    /// Glare: size, strength, intensity threshold (the third scales with luminance).
    const Vec3f& getGlareParameter() const { return m_glare; }
    void setGlareParameter(const Vec3f& value) { m_glare = value; }

private:
    float m_whitepoint = 1.0f;
    Vec3f m_glow{0.1f, 0.0f, 1.0f};
    Vec3f m_glare{0.1f, 0.0f, 1.0f};
};
using TonemappingSettings = TonemappingSettingsBase;

class PerspectiveCameraBase : public NodeCore {
public:
    /// 0: the field of view is vertical; otherwise horizontal.
    int getFovMode() const { return m_fovMode; }
    void setFovMode(int mode) { m_fovMode = mode; }
    /// Field of view in degrees.
    float getFov() const { return m_fov; }
    void setFov(float fov) { m_fov = fov; }
    float getNear() const { return m_near; }
    void setNear(float value) { m_near = value; }
    float getFar() const { return m_far; }
    void setFar(float value) { m_far = value; }

private:
    int m_fovMode = 0;
    float m_fov = 45.0f;
    float m_near = 0.05f;
    float m_far = 1000.0f;
};

/// A camera or a viewpoint (a stored camera pose): world pose, lens and tone mapping.
class UberCameraBase : public PerspectiveCameraBase {
public:
    UberCameraBase();
    const char* getTypeName() const override { return "UberCamera"; }
    Vec3f position{0, 0, 0};
    Quaternion orientation{0, 0, 0, 1};
    TonemappingSettingsBase* getTonemappingSettings() const { return m_tonemapping.get(); }
    /// Copies pose, lens and tone mapping values from another camera.
    void copyView(const UberCameraBase& other);

protected:
    std::shared_ptr<TonemappingSettingsBase> m_tonemapping;
};

class UberCamera : public UberCameraBase {
public:
    explicit UberCamera(bool viewpoint = false) : m_viewpoint(viewpoint) {}
    bool isViewpoint() const { return m_viewpoint; }

private:
    bool m_viewpoint;
};

/// Ordered viewpoints (the node's children) played in sequence.
class CameraTrack : public NodeCore {
public:
    const char* getTypeName() const override { return "CameraTrack"; }
    int framesPerViewpoint = 25;
};

class IESProfileAttachmentBase : public FieldContainer {
public:
    const char* getTypeName() const override { return "IESProfileAttachment"; }
    UInt32 getVersion() const { return m_version; }
    void setVersion(UInt32 version) { m_version = version; }
    std::string fileName;

private:
    UInt32 m_version = 1;
};

class IESProfileAttachment : public IESProfileAttachmentBase {
public:
    static constexpr UInt32 IES_PROFILE_VERSION = 2;
};

class Light : public NodeCore {
public:
    enum Type { Directional = 0, Point = 1, Spot = 2 };
    enum Unit { Unitless = 0, Lux = 1, Candela = 2 };
    const char* getTypeName() const override { return "Light"; }
    Type type = Point;
    Vec3f color{1, 1, 1};
    float value = 1.0f;
    Unit unit = Unitless;
    bool physicallyBased = false;
    /// 0 none, 1 linear, 2 inverse square.
    int attenuation = 0;
    int areaRealisticFalloff = 0;
    float spotAngle = 45.0f;
    std::shared_ptr<IESProfileAttachment> ies;
};

class Material : public FieldContainer {
public:
    const char* getTypeName() const override { return "Material"; }
    std::string name;
};

// The raytracing settings a material may override for itself, one row each:
// X(Name, value while not overridden). Quality levels are in [0, 4], illumination modes in
// [-1, 3] (precomputed to full global illumination), trace depths in reflections.
#define OX_RAYTRACING_OVERRIDES(X)                                                                 \
    X(ReflectionQuality, 1)                                                                        \
    X(IBLQuality, 1)                                                                               \
    X(IlluminationMode, 3)                                                                         \
    X(TraceDepth, 8)

/// A material's own raytracing settings: for each row of OX_RAYTRACING_OVERRIDES a switch
/// (getOverrideName) and the value that counts while it is on (getName). A material without
/// this attachment follows the global settings.
class RaytracingAttachment : public FieldContainer {
public:
    const char* getTypeName() const override { return "RaytracingAttachment"; }
#define OX_RAYTRACING_OVERRIDE_ACCESS(name, start)                                                 \
    bool getOverride##name() const { return m_override##name; }                                    \
    void setOverride##name(bool on) { m_override##name = on; }                                     \
    int get##name() const { return m_##name; }                                                     \
    void set##name(int value) { m_##name = value; }
    OX_RAYTRACING_OVERRIDES(OX_RAYTRACING_OVERRIDE_ACCESS)
#undef OX_RAYTRACING_OVERRIDE_ACCESS
    /// Whether any override is on.
    bool overridesAnything() const;

private:
#define OX_RAYTRACING_OVERRIDE_MEMBER(name, start)                                                 \
    bool m_override##name = false;                                                                 \
    int m_##name = start;
    OX_RAYTRACING_OVERRIDES(OX_RAYTRACING_OVERRIDE_MEMBER)
#undef OX_RAYTRACING_OVERRIDE_MEMBER
};

class UberMaterialBase : public Material {
public:
    static constexpr BitVector RenderModeFieldMask = 1;
    static constexpr BitVector RaytracingFieldMask = 8;
    const char* getTypeName() const override { return "UberMaterial"; }
    UInt32 getRenderMode() const { return m_renderMode; }
    void setRenderMode(UInt32 mode) { m_renderMode = mode; }

    /// The material's raytracing overrides, or null when it has none.
    RaytracingAttachment* getRaytracingAttachment() const { return m_raytracing.get(); }
    void setRaytracingAttachment(std::shared_ptr<RaytracingAttachment> attachment)
    {
        m_raytracing = std::move(attachment);
    }
    /// Switch one override of the raytracing attachment on or off; a material without an
    /// attachment stays without one. A change runs the change protocol with
    /// RaytracingFieldMask. Each call is recorded in oxCallTrace with the material's name.
    /// The getters say false without an attachment.
#define OX_RAYTRACING_OVERRIDE_SWITCH(name, start)                                                 \
    void setOverride##name(bool on);                                                               \
    bool getOverride##name() const;
    OX_RAYTRACING_OVERRIDES(OX_RAYTRACING_OVERRIDE_SWITCH)
#undef OX_RAYTRACING_OVERRIDE_SWITCH

private:
    UInt32 m_renderMode = 0;
    std::shared_ptr<RaytracingAttachment> m_raytracing;
};

/// Class-wide BRDF behaviour of the material system and the render-mode bits that carry it.
class UberMaterial : public UberMaterialBase {
public:
    static constexpr UInt32 fresnel_respects_glossy_color = 1u << 4;
    static constexpr UInt32 use_ggx_brdf = 1u << 5;
    static int getBrdfMode();
    static void setBrdfMode(int mode);
    static UInt32 getRenderingMode();
    static void setRenderingMode(UInt32 mode);
};

class UBRDFMaterialBase : public UberMaterial {
public:
    static constexpr BitVector IncandescenceColorFieldMask = 2;
    const char* getTypeName() const override { return "UBRDFMaterial"; }
    Vec3f diffuseColor{0.8f, 0.8f, 0.8f};
    Vec3f glossyColor{0.04f, 0.04f, 0.04f};
    float roughness = 0.5f;
    float metallic = 0.0f;
    /// The share of light that passes through the surface (glass), refracted by ior.
    float transmission = 0.0f;
    float ior = 1.5f;
    /// A clear lacquer over the base (car paint): its strength and roughness.
    float clearcoat = 0.0f;
    float clearcoatRoughness = 0.03f;
    /// Colour and intensity (fourth component).
    const Vec4f& getIncandescenceColor() const { return m_incandescence; }
    void setIncandescenceColor(const Vec4f& color) { m_incandescence = color; }

private:
    Vec4f m_incandescence{0, 0, 0, 0};
};

class UEnvironmentMaterialBase : public UberMaterial {
public:
    static constexpr BitVector LuminanceMappingFieldMask = 4;
    const char* getTypeName() const override { return "UEnvironmentMaterial"; }
    float getLuminanceMapping() const { return m_luminanceMapping; }
    void setLuminanceMapping(float value) { m_luminanceMapping = value; }
    Vec3f skyColor{0.45f, 0.6f, 0.9f};
    Vec3f groundColor{0.3f, 0.28f, 0.25f};

private:
    float m_luminanceMapping = 1.0f;
};

class USphereEnvironmentMaterial : public UEnvironmentMaterialBase {
public:
    /// Resets the open scene's default environment to its start values, with the luminance
    /// mapping of the photometric (100) or standard (1) mode.
    static void resetDefaultEnvironment(bool photometric);
};

/// The scene's materials in insertion order.
class MaterialPool : public FieldContainer {
public:
    const char* getTypeName() const override { return "MaterialPool"; }
    const std::vector<std::shared_ptr<Material>>& get() const { return m_materials; }
    void add(std::shared_ptr<Material> material) { m_materials.push_back(std::move(material)); }

private:
    std::vector<std::shared_ptr<Material>> m_materials;
};

} // namespace osg

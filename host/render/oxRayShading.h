#pragma once

#include "oxPixelFilterKernels.h"
#include "oxRayBSDF.h"
#include "oxRayMath.h"
#include "oxRaytracer.h"
#include "oxSampleSequence.h"
#include "oxScene.h"

#include <embree3/rtcore.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

// Shading: what the raytracer takes from the scene's materials, objects and lights, and what a
// camera sample sees where its primary ray ends.
namespace oxRay {

struct ShadeLight {
    osg::Light::Type type = osg::Light::Directional;
    Vec3 position{0, 0, 0};
    Vec3 direction{0, 0, -1}; // where it shines
    Vec3 radiance{1, 1, 1};
    int attenuation = 0;
    float cosOuter = 0.0f;
    float cosInner = 0.0f;
};

// The environment's radiance seen along direction (black without an environment).
Vec3 environmentColor(const osg::UEnvironmentMaterialBase* environment, const Vec3& direction);

// The channels a camera sample's light is split into: by the lobe of the first surface that
// sent it on (diffuse, glossy, glass reflection, glass refraction) and by where it came from
// (the environment, a light, other surfaces), and the first surface's own glow. They add up
// to the beauty.
enum LightChannel : unsigned {
    ChDiffuseIBL,
    ChDiffuseLight,
    ChDiffuseIndirect,
    ChGlossyIBL,
    ChGlossyLight,
    ChGlossyIndirect,
    ChSpecular,
    ChTranslucencyIBL,
    ChTranslucencyLight,
    ChTranslucencyIndirect,
    ChIncandescence,
    kLightChannels
};
// The first surface's colour behind each lobe: its light channels are that colour times the
// light the lobe received (its illumination).
enum ColourChannel : unsigned {
    ColDiffuse,
    ColGlossy,
    ColSpecular,
    ColTranslucency,
    ColTransparency,
    kColourChannels
};

// What one camera sample saw.
struct SampleResult {
    bool hit = false;
    Vec3 beauty{0, 0, 0};
    std::array<Vec3, kLightChannels> channels{};
    std::array<Vec3, kColourChannels> colours{};
    Vec3 background{0, 0, 0};
    Vec3 albedo{0, 0, 0};
    Vec3 normal{0, 0, 0};
    Vec3 cameraNormal{0, 0, 0};
    Vec3 position{0, 0, 0};
    Vec3 view{0, 0, 0};
    Vec3 idColor{0, 0, 0};
    float depth = 0.0f;
    float occlusion = 1.0f;
    float objectId = 0.0f;
    float materialId = 0.0f;
};

// What a primary ray hit.
struct PrimaryHit {
    bool hit = false;
    float distance = 0.0f;
    uint32_t primitive = 0;
    Vec3 normal{0, 0, 1};     // geometric, not normalised
    float u = 0.0f, v = 0.0f; // barycentric coordinates of the hit in its triangle
};

// Which light paths an illumination mode traces.
struct IlluminationMode {
    bool shadows = true;      // lights cast shadows
    bool iblOcclusion = true; // the environment is shadowed by the scene
    bool reflections = true;  // glossy and glass surfaces show the scene
    bool indirect = true;     // diffuse surfaces are lit by the scene (global illumination)

    /// The mode of a mode number: -1 precomputed, 0 with reflections, 1 with shadows, 2 with
    /// image-based light, 3 full global illumination.
    static IlluminationMode of(int mode);
};

// A surface point a ray found.
struct SurfacePoint {
    Vec3 point{0, 0, 0};
    Vec3 geometric{0, 0, 1}; // unit, facing where the ray came from
    Vec3 shading{0, 0, 1};   // unit, interpolated from the vertex normals, same side
    bool front = true;       // the ray meets the triangle's front (counter-clockwise) side
    uint32_t triangle = 0;
};

// Which passes a render needs, by what they cost.
struct PassNeeds {
    bool beauty = false;
    bool occlusion = false;
    bool cryptoObject = false;
    bool cryptoMaterial = false;
    bool data = false; // any pass of the surface's data (albedo, normal, depth, ...)
    bool background = false;
    bool view = false;
    bool behind = false; // the environment shows behind the beauty's uncovered parts
    bool light = false;  // any pass of the light channels, their colours or illuminations
};

// Everything the tiles share during one render.
struct RenderContext {
    RTCScene scene = nullptr;
    const oxSceneSnapshot* snapshot = nullptr;
    oxRaytracerCamera camera;
    Vec3 cameraRight{1, 0, 0}; // unit vectors of the camera's image plane
    Vec3 cameraUp{0, 1, 0};
    std::vector<ShadeMaterial> materials;
    std::vector<float> triangleObjectIds; // Cryptomatte id of each triangle's object
    std::vector<ShadeLight> lights;
    const FilterSampler* filter = nullptr;
    PassNeeds needs;
    int occlusionRays = 1;
    const std::vector<std::vector<uint32_t>>* triangleOf = nullptr;
    bool motion = false;   // samples carry a time within the shutter interval
    float exposure = 1.0f; // display values per unit of light and incandescence
    IlluminationMode mode;
    int traceDepth = 16; // surfaces a path visits at most

    // The snapshot's triangle that a primitive of a geometry stands for.
    uint32_t triangle(unsigned geometry, unsigned primitive) const
    {
        return triangleOf->empty() ? primitive : (*triangleOf)[geometry][primitive];
    }

    /// Fills materials from the snapshot's, and materialNames with their distinct names.
    void loadMaterials(const oxSceneSnapshot& snapshot, std::vector<std::string>& materialNames);
    /// Fills triangleObjectIds, and objectNames with the distinct paths of the objects below
    /// scene's root.
    void loadObjects(const oxSceneSnapshot& snapshot, const oxScene& scene,
                     std::vector<std::string>& objectNames);
    /// Fills lights from the snapshot's; the headlight only when the scene has no lights of
    /// its own. Needs camera.
    void loadLights(const oxSceneSnapshot& snapshot, const oxScene& scene);

    bool occluded(const Vec3& origin, const Vec3& direction, float distance, float time) const;

    // The surface point of a hit: geometric and smooth normals facing the ray's origin.
    SurfacePoint surfaceAt(const Vec3& origin, const Vec3& direction, float distance,
                           uint32_t triangle, const Vec3& geometric, float u, float v) const;
    // The first surface along a ray; false when it escapes.
    bool trace(const Vec3& origin, const Vec3& direction, float time, SurfacePoint& hit) const;
    // The light a path from the camera carries back from its first surface: emission, light
    // and environment sampled at each surface and combined with the surface's own samples by
    // multiple importance sampling, as the illumination mode and trace depth allow.
    // Sets result's beauty and light channels.
    void pathRadiance(const Vec3& direction, const SurfacePoint& first, const Sampler& sampler,
                      float time, SampleResult& result) const;

    // The primary ray through direction, clipped to the camera's near and far distances.
    void primaryRay(const Vec3& direction, float& tnear, float& tfar) const
    {
        const float inverseCosine = 1.0f / std::max(1e-4f, dot(direction, camera.forward));
        tnear = camera.nearDistance * inverseCosine;
        tfar = std::min(camera.farDistance * inverseCosine, std::numeric_limits<float>::max());
    }

    // Shades what the primary ray along direction found at the sample's time.
    void shade(const Vec3& direction, const PrimaryHit& hit, const Sampler& sampler, float time,
               SampleResult& result) const;
};

} // namespace oxRay

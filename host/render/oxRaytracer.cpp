#include "oxRaytracer.h"

#include "oxCryptomatte.h"
#include "oxImagePasses.h"
#include "oxImageSource.h"
#include "oxPixelfilterFactory.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderServiceSupport.h"
#include "oxScene.h"
#include "oxSceneServices.h"

#include <embree3/rtcore.h>
#include <tbb/blocked_range2d.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <unordered_map>

namespace {

constexpr float kPi = 3.14159265358979f;

using Vec3 = std::array<float, 3>;

inline Vec3 operator+(const Vec3& a, const Vec3& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
inline Vec3 operator-(const Vec3& a, const Vec3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Vec3 operator*(const Vec3& a, float s) { return {a[0] * s, a[1] * s, a[2] * s}; }
inline Vec3 operator*(const Vec3& a, const Vec3& b)
{
    return {a[0] * b[0], a[1] * b[1], a[2] * b[2]};
}
inline float dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline Vec3 cross(const Vec3& a, const Vec3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline Vec3 normalize(const Vec3& v)
{
    const float length = std::sqrt(dot(v, v));
    return length > 0.0f ? v * (1.0f / length) : Vec3{0, 0, 1};
}
inline Vec3 lerp(const Vec3& a, const Vec3& b, float t) { return a * (1.0f - t) + b * t; }

// Two unit vectors perpendicular to n and to each other.
void basis(const Vec3& n, Vec3& t, Vec3& b)
{
    t = normalize(std::fabs(n[0]) > 0.9f ? cross(n, Vec3{0, 1, 0}) : cross(n, Vec3{1, 0, 0}));
    b = cross(n, t);
}

// --- Deterministic sampling ---------------------------------------------------------------
// Every random number is a hash of (pixel, sample, dimension). Sample sequences are the R2
// low-discrepancy sequence, rotated per pixel and dimension, so few samples already stratify.

inline uint32_t hash32(uint32_t v)
{
    const uint32_t state = v * 747796405u + 2891336453u;
    const uint32_t word = ((state >> ((state >> 28u) + 4u)) ^ state) * 277803737u;
    return (word >> 22u) ^ word;
}

inline float hashFloat(uint32_t a, uint32_t b)
{
    return float(hash32(a ^ hash32(b + 0x9e3779b9u)) >> 8) * (1.0f / 16777216.0f);
}

// The sub-pixel position follows the R2 low-discrepancy sequence, rotated per pixel, so that
// few samples already cover the pixel evenly. Every other dimension is an independent hash:
// sharing the sequence would tie each sample's light and occlusion rays to its place in the
// pixel, which the filter's weights then turn into blotches.
struct Sampler {
    uint32_t pixel;
    uint32_t sample;

    // A point of [0, 1)^2 for a dimension pair of this sample.
    void get(uint32_t dimension, float& u, float& v) const
    {
        if (dimension == 0 && sample < (1u << 20)) {
            const float s = float(sample);
            u = hashFloat(pixel, 1u) + 0.7548776662f * s;
            v = hashFloat(pixel, 2u) + 0.5698402910f * s;
            u -= std::floor(u);
            v -= std::floor(v);
            return;
        }
        const uint32_t key = hash32(pixel ^ hash32(sample * 0x9e3779b1u + dimension));
        u = hashFloat(key, 1u);
        v = hashFloat(key, 2u);
    }
};

// The passes this raytracer renders (with the Cryptomatte layers, which isHostPass adds).
const oxImagePasses::Id kHostPasses[] = {oxImagePasses::Beauty,      oxImagePasses::BackgroundColor,
                                         oxImagePasses::Occlusion,   oxImagePasses::Albedo,
                                         oxImagePasses::Normal,      oxImagePasses::Depth,
                                         oxImagePasses::MaterialID,  oxImagePasses::Mask,
                                         oxImagePasses::Position,    oxImagePasses::ViewVector,
                                         oxImagePasses::CameraNormal};

enum Dimension : uint32_t { DimPixel = 0, DimEnvironment = 1, DimReflection = 2, DimLights = 3 };
constexpr uint32_t kTimeDimension = 1u << 15; // above any light's dimension
constexpr uint32_t kAODimensionBase = 1u << 16;

// --- Pixel filters ------------------------------------------------------------------------
// Separable filters over the normalised footprint x in [-1, 1], keyed by the pixel filter id.

float cubic(float x, float b, float c)
{
    x = std::fabs(x);
    if (x < 1.0f)
        return ((12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + (6 - 2 * b)) /
               6.0f;
    if (x < 2.0f)
        return ((-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x +
                (8 * b + 24 * c)) /
               6.0f;
    return 0.0f;
}

float sinc(float x)
{
    if (std::fabs(x) < 1e-5f)
        return 1.0f;
    return std::sin(kPi * x) / (kPi * x);
}

struct PixelFilterEntry {
    int id;
    float (*weight)(float x);
};

const PixelFilterEntry kPixelFilters[oxRaytracer::pixelFilterCount] = {
    {0, [](float) { return 1.0f; }},                                        // box
    {1, [](float x) { return 1.0f - std::fabs(x); }},                       // triangle
    {2, [](float x) { return std::exp(-4.0f * x * x) - std::exp(-4.0f); }}, // Gaussian
    {3, [](float x) { return cubic(2.0f * x, 1.0f / 3.0f, 1.0f / 3.0f); }}, // Mitchell-Netravali
    {4, [](float x) { return sinc(3.0f * x) * sinc(x); }},                  // Lanczos (three lobes)
    {5, [](float x) { return cubic(2.0f * x, 1.0f, 0.0f); }},               // B-spline
    {6, [](float x) { return cubic(2.0f * x, 0.0f, 0.5f); }},               // Catmull-Rom
    {7, [](float x) { return (1.0f - std::fabs(x)) * (1.0f - std::fabs(x)); }}, // sharp triangle
    {8, [](float x) { return std::exp(-9.0f * x * x) - std::exp(-9.0f); }},     // sharp Gaussian
    {9,
     [](float x) {
         const float w = cubic(2.0f * x, 1.0f, 0.0f) * 1.5f;
         return w * w;
     }}, // sharp B-spline
};

const PixelFilterEntry* findFilter(int id)
{
    for (const PixelFilterEntry& entry : kPixelFilters)
        if (entry.id == id)
            return &entry;
    return nullptr;
}

// Samples a filter by importance: sub-pixel offsets are drawn in proportion to |f|, so that each
// sample weighs only its sign and no sample is wasted where the filter is small.
class FilterSampler {
public:
    explicit FilterSampler(const PixelFilterEntry& filter) : m_filter(filter)
    {
        m_cdf[0] = 0.0f;
        for (int i = 0; i < kSize; ++i) {
            const float x = -1.0f + 2.0f * (float(i) + 0.5f) / float(kSize);
            m_cdf[size_t(i) + 1] = m_cdf[size_t(i)] + std::fabs(filter.weight(x));
        }
        const float total = m_cdf[kSize];
        for (float& c : m_cdf)
            c = total > 0.0f ? c / total : 0.0f;
    }

    // The offset in [-1, 1] for u in [0, 1), and the sign of the filter there.
    float sample(float u, float& sign) const
    {
        const auto upper = std::upper_bound(m_cdf.begin() + 1, m_cdf.end() - 1, u);
        const size_t i = size_t(upper - m_cdf.begin()) - 1;
        const float width = m_cdf[i + 1] - m_cdf[i];
        const float t = width > 0.0f ? (u - m_cdf[i]) / width : 0.5f;
        const float x = -1.0f + 2.0f * (float(i) + std::clamp(t, 0.0f, 1.0f)) / float(kSize);
        sign = m_filter.weight(x) < 0.0f ? -1.0f : 1.0f;
        return x;
    }

private:
    static constexpr int kSize = 256;
    const PixelFilterEntry& m_filter;
    std::array<float, kSize + 1> m_cdf;
};

// --- Scene data for shading ---------------------------------------------------------------

struct ShadeMaterial {
    Vec3 albedo{0.8f, 0.8f, 0.8f};
    Vec3 diffuse{0.8f, 0.8f, 0.8f};
    Vec3 specular{0.04f, 0.04f, 0.04f};
    float shininess = 20.0f;
    float roughness = 0.5f;
    Vec3 emission{0, 0, 0};
    Vec3 idColor{0.5f, 0.5f, 0.5f};
    float cryptoId = 0.0f;
};

struct ShadeLight {
    osg::Light::Type type = osg::Light::Directional;
    Vec3 position{0, 0, 0};
    Vec3 direction{0, 0, -1}; // where it shines
    Vec3 radiance{1, 1, 1};
    int attenuation = 0;
    float cosOuter = 0.0f;
    float cosInner = 0.0f;
};

// The sun's angular radius and the radius of point and spot lights: what makes shadows soft.
constexpr float kDirectionalSpread = 0.03f;
constexpr float kLightRadius = 0.1f;
constexpr float kOcclusionDistance = 1.5f;

// A stable colour of a material: from the hash of its name, kept away from black.
Vec3 idColorOf(const std::string& name)
{
    const uint32_t hash = oxCryptomatte::murmurHash3(name);
    auto channel = [&](int shift) { return 0.2f + 0.8f * float((hash >> shift) & 0xffu) / 255.0f; };
    return {channel(0), channel(8), channel(16)};
}

Vec3 environmentColor(const osg::UEnvironmentMaterialBase* environment, const Vec3& direction)
{
    if (!environment)
        return {0, 0, 0};
    const Vec3 sky{environment->skyColor[0], environment->skyColor[1], environment->skyColor[2]};
    const Vec3 ground{environment->groundColor[0], environment->groundColor[1],
                      environment->groundColor[2]};
    const float t = std::clamp(direction[1] * 4.0f + 0.5f, 0.0f, 1.0f);
    return lerp(ground, sky, t);
}

// What one camera sample saw.
struct SampleResult {
    bool hit = false;
    Vec3 beauty{0, 0, 0};
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
    Vec3 normal{0, 0, 1}; // geometric, not normalised
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
};

} // namespace

// --- Camera -------------------------------------------------------------------------------

oxRaytracerCamera oxRaytracerCamera::fromSnapshot(const oxSceneSnapshot& snapshot, int width,
                                                  int height)
{
    oxRaytracerCamera camera;
    camera.width = std::max(1, width);
    camera.height = std::max(1, height);
    const float aspect = float(camera.width) / float(camera.height);
    float fov = 45.0f;
    int fovMode = 0;
    osg::Quaternion orientation{0, 0, 0, 1};
    if (const osg::UberCameraBase* source = snapshot.camera) {
        camera.origin = source->position;
        orientation = source->orientation;
        fov = source->getFov();
        fovMode = source->getFovMode();
        camera.nearDistance = std::max(0.0f, source->getNear());
        camera.farDistance = source->getFar() > camera.nearDistance ? source->getFar() : 1e30f;
    }
    const osg::Matrix rotation = osg::matrixFromTRS({0, 0, 0}, orientation, {1, 1, 1});
    const float half = std::tan(std::clamp(fov, 1e-3f, 179.0f) * kPi / 360.0f);
    const float halfHeight = fovMode == 0 ? half : half / aspect;
    const float halfWidth = fovMode == 0 ? half * aspect : half;
    camera.right = normalize(osg::transformVector(rotation, {1, 0, 0})) * halfWidth;
    camera.up = normalize(osg::transformVector(rotation, {0, 1, 0})) * halfHeight;
    camera.forward = normalize(osg::transformVector(rotation, {0, 0, -1}));
    return camera;
}

// --- Settings -----------------------------------------------------------------------------

namespace {
bool& premultiplyFlag()
{
    static bool premultiply = false;
    return premultiply;
}
} // namespace

oxRaytracer::Settings oxRaytracer::Settings::fromHost(int width, int height, bool fullSamples)
{
    Settings settings;
    settings.width = width;
    settings.height = height;
    settings.samples = fullSamples ? std::max(1, oxRenderParameter::getImageSamples()) : 1;
    // The filter the raytracer took over last; the store's own when no utilities are active.
    if (oxRaytracingUtilsBase* utilities = oxRaytracingManager::getRaytracingUtils()) {
        const oxRaytracingUtilsBase::PixelFilter filter = utilities->getActivePixelFilter();
        settings.filterType = filter.type;
        settings.filterWidth = filter.width;
        settings.filterHeight = filter.height;
    } else {
        settings.filterType = oxPixelfilterFactory::getPixelFilterType();
        settings.filterWidth = oxPixelfilterFactory::getPixelFilterWidth();
        settings.filterHeight = oxPixelfilterFactory::getPixelFilterHeight();
    }
    settings.region = oxRenderParameter::getRaytracingRenderRegion();
    settings.premultiply = premultiplyFlag();
    settings.clamping = oxRenderParameter::getClamping();
    settings.clampValue = oxRenderParameter::getReflectionClampValue();
    settings.sampleOffset = oxRenderParameter::getRaytracingSampleOffset();
    return settings;
}

// --- Raytracer ----------------------------------------------------------------------------

struct oxRaytracer::Impl {
    RTCDevice device = nullptr;
    RTCScene scene = nullptr;
    // The vertex positions of each pose of the last build (one without motion blur).
    std::vector<std::vector<float>> stepPositions;
    std::vector<uint32_t> indices;
    // The snapshot's triangle behind each primitive, by geometry id; empty when the one
    // geometry holds every triangle in snapshot order.
    std::vector<std::vector<uint32_t>> triangleOf;
    bool built = false;
    int buildCount = 0;
    std::string deviceError; // the first error Embree reported since the last look

    Impl()
    {
        device = rtcNewDevice(nullptr);
        if (device)
            rtcSetDeviceErrorFunction(
                device,
                [](void* self, RTCError, const char* text) {
                    std::string& error = static_cast<Impl*>(self)->deviceError;
                    if (error.empty())
                        error = text ? text : "unknown error";
                },
                this);
    }
    ~Impl()
    {
        if (scene)
            rtcReleaseScene(scene);
        if (device)
            rtcReleaseDevice(device);
    }

    // A triangle geometry of the given triangles (all when list is null), with one time step
    // per pose; vertices are renumbered so that a geometry holds only those it uses.
    RTCGeometry makeGeometry(const std::vector<const std::vector<float>*>& poses,
                             const std::vector<uint32_t>& all, const std::vector<uint32_t>* list)
    {
        const size_t triangleCount = list ? list->size() : all.size() / 3;
        std::vector<uint32_t> vertexOf;  // geometry vertex -> snapshot vertex
        std::vector<uint32_t> triangles; // geometry indices
        std::unordered_map<uint32_t, uint32_t> renumbered;
        triangles.reserve(triangleCount * 3);
        if (!list) {
            triangles = all;
        } else {
            for (uint32_t triangle : *list) {
                for (size_t k = 0; k < 3; ++k) {
                    const uint32_t vertex = all[size_t(triangle) * 3 + k];
                    auto found = renumbered.emplace(vertex, uint32_t(vertexOf.size()));
                    if (found.second)
                        vertexOf.push_back(vertex);
                    triangles.push_back(found.first->second);
                }
            }
        }
        const size_t vertexCount = list ? vertexOf.size() : poses.front()->size() / 3;
        RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
        if (poses.size() > 1)
            rtcSetGeometryTimeStepCount(geometry, unsigned(poses.size()));
        for (size_t step = 0; step < poses.size(); ++step) {
            auto* vertices = static_cast<float*>(
                rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, unsigned(step),
                                        RTC_FORMAT_FLOAT3, 3 * sizeof(float), vertexCount));
            const std::vector<float>& source = *poses[step];
            if (!list)
                std::memcpy(vertices, source.data(), vertexCount * 3 * sizeof(float));
            else
                for (size_t v = 0; v < vertexCount; ++v)
                    std::memcpy(vertices + v * 3, source.data() + size_t(vertexOf[v]) * 3,
                                3 * sizeof(float));
        }
        auto* target = static_cast<uint32_t*>(
            rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                                    3 * sizeof(uint32_t), triangleCount));
        std::memcpy(target, triangles.data(), triangleCount * 3 * sizeof(uint32_t));
        rtcCommitGeometry(geometry);
        return geometry;
    }

    void attach(RTCGeometry geometry, std::vector<uint32_t> triangles)
    {
        const unsigned id = rtcAttachGeometry(scene, geometry);
        rtcReleaseGeometry(geometry);
        if (triangleOf.size() <= id)
            triangleOf.resize(size_t(id) + 1);
        triangleOf[id] = std::move(triangles);
    }

    // Builds the BVH when the triangles differ from those of the last build. poses holds one
    // snapshot, or one per time step of motion blur.
    bool update(const std::vector<oxSceneSnapshot>& poses, std::string& error)
    {
        if (!device) {
            error = "the ray tracing device could not be created";
            return false;
        }
        const oxSceneSnapshot& first = poses.front();
        bool same = built && poses.size() == stepPositions.size() && first.indices == indices;
        for (size_t step = 0; same && step < poses.size(); ++step)
            same = poses[step].positions == stepPositions[step];
        if (same)
            return true;
        const size_t vertexCount = first.positions.size() / 3;
        for (uint32_t index : first.indices) {
            if (index >= vertexCount) {
                error = "the scene has a triangle with a vertex index out of range";
                return false;
            }
        }
        for (const oxSceneSnapshot& pose : poses) {
            if (pose.indices != first.indices || pose.positions.size() != first.positions.size()) {
                error = "the scene's geometry changes within the shutter interval";
                return false;
            }
        }
        if (scene)
            rtcReleaseScene(scene);
        scene = rtcNewScene(device);
        triangleOf.clear();
        const size_t triangleCount = first.indices.size() / 3;
        std::vector<const std::vector<float>*> positions;
        for (const oxSceneSnapshot& pose : poses)
            positions.push_back(&pose.positions);
        if (triangleCount > 0 && poses.size() == 1) {
            RTCGeometry geometry = makeGeometry(positions, first.indices, nullptr);
            rtcAttachGeometry(scene, geometry);
            rtcReleaseGeometry(geometry);
        } else if (triangleCount > 0) {
            // Only what moves pays for motion: still triangles keep a plain geometry.
            std::vector<bool> moves(vertexCount, false);
            for (size_t step = 1; step < poses.size(); ++step)
                for (size_t v = 0; v < vertexCount; ++v)
                    for (size_t c = 0; c < 3; ++c)
                        if (poses[step].positions[v * 3 + c] != first.positions[v * 3 + c])
                            moves[v] = true;
            std::vector<uint32_t> still, moving;
            for (uint32_t t = 0; t < uint32_t(triangleCount); ++t) {
                const uint32_t* corner = &first.indices[size_t(t) * 3];
                (moves[corner[0]] || moves[corner[1]] || moves[corner[2]] ? moving : still)
                    .push_back(t);
            }
            if (!still.empty()) {
                RTCGeometry geometry = makeGeometry({positions.front()}, first.indices, &still);
                attach(geometry, std::move(still));
            }
            if (!moving.empty()) {
                RTCGeometry geometry = makeGeometry(positions, first.indices, &moving);
                attach(geometry, std::move(moving));
            }
        }
        rtcCommitScene(scene);
        if (!deviceError.empty()) {
            error = "the ray tracing library failed: " + deviceError;
            deviceError.clear();
            rtcReleaseScene(scene);
            scene = nullptr;
            built = false;
            return false;
        }
        stepPositions.clear();
        for (const oxSceneSnapshot& pose : poses)
            stepPositions.push_back(pose.positions);
        indices = first.indices;
        built = true;
        ++buildCount;
        return true;
    }
};

oxRaytracer::oxRaytracer() : m_impl(std::make_unique<Impl>()) {}
oxRaytracer::~oxRaytracer() = default;

oxRaytracer& oxRaytracer::the()
{
    static oxRaytracer raytracer;
    return raytracer;
}

void oxRaytracer::setPremultiply(bool premultiply)
{
    oxTraceCall("oxRaytracer::setPremultiply", premultiply);
    premultiplyFlag() = premultiply;
}

bool oxRaytracer::getPremultiply() { return premultiplyFlag(); }

bool oxRaytracer::isHostPass(unsigned passId)
{
    return oxImagePasses::isCryptomatte(passId) ||
           std::find(std::begin(kHostPasses), std::end(kHostPasses), passId) !=
               std::end(kHostPasses);
}

int oxRaytracer::getBuildCount() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_impl->buildCount;
}

namespace {

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
    bool motion = false; // samples carry a time within the shutter interval

    // The snapshot's triangle that a primitive of a geometry stands for.
    uint32_t triangle(unsigned geometry, unsigned primitive) const
    {
        return triangleOf->empty() ? primitive : (*triangleOf)[geometry][primitive];
    }

    bool occluded(const Vec3& origin, const Vec3& direction, float distance, float time) const
    {
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        RTCRay ray;
        ray.org_x = origin[0];
        ray.org_y = origin[1];
        ray.org_z = origin[2];
        ray.tnear = 0.0f;
        ray.dir_x = direction[0];
        ray.dir_y = direction[1];
        ray.dir_z = direction[2];
        ray.time = time;
        ray.tfar = distance;
        ray.mask = 0xffffffffu;
        ray.id = 0;
        ray.flags = 0;
        rtcOccluded1(scene, &context, &ray);
        return ray.tfar < 0.0f;
    }

    // Diffuse and highlight from every light, with one shadow ray each.
    Vec3 directLight(const Vec3& point, const Vec3& normal, const Vec3& toEye,
                     const ShadeMaterial& material, const Sampler& sampler, float time) const
    {
        Vec3 sum{0, 0, 0};
        for (size_t i = 0; i < lights.size(); ++i) {
            const ShadeLight& light = lights[i];
            float u, v;
            sampler.get(DimLights + uint32_t(i), u, v);
            Vec3 toLight;
            float distance = std::numeric_limits<float>::infinity();
            float scale = 1.0f;
            if (light.type == osg::Light::Directional) {
                Vec3 t, b;
                const Vec3 axis = light.direction * -1.0f;
                basis(axis, t, b);
                const float r = kDirectionalSpread * std::sqrt(u);
                const float phi = 2.0f * kPi * v;
                toLight = normalize(axis + t * (r * std::cos(phi)) + b * (r * std::sin(phi)));
            } else {
                const float z = 1.0f - 2.0f * u;
                const float rr = std::sqrt(std::max(0.0f, 1.0f - z * z));
                const Vec3 offset{rr * std::cos(2.0f * kPi * v), rr * std::sin(2.0f * kPi * v), z};
                const Vec3 target = light.position + offset * kLightRadius;
                const Vec3 delta = target - point;
                distance = std::sqrt(dot(delta, delta));
                if (distance <= 1e-6f)
                    continue;
                toLight = delta * (1.0f / distance);
                if (light.attenuation == 1)
                    scale = 1.0f / std::max(distance, 1e-3f);
                else if (light.attenuation == 2)
                    scale = 1.0f / std::max(distance * distance, 1e-6f);
                if (light.type == osg::Light::Spot) {
                    const float c = dot(toLight * -1.0f, light.direction);
                    if (c <= light.cosOuter)
                        continue;
                    if (c < light.cosInner)
                        scale *= (c - light.cosOuter) / (light.cosInner - light.cosOuter);
                }
                distance *= 0.999f;
            }
            const float cosine = dot(normal, toLight);
            if (cosine <= 0.0f || occluded(point, toLight, distance, time))
                continue;
            const Vec3 halfway = normalize(toLight + toEye);
            const float highlight =
                (material.shininess + 2.0f) / (8.0f * kPi) *
                std::pow(std::max(0.0f, dot(normal, halfway)), material.shininess);
            const Vec3 brdf = material.diffuse * (1.0f / kPi) + material.specular * highlight;
            sum = sum + brdf * light.radiance * (cosine * scale);
        }
        return sum;
    }

    // The primary ray through direction, clipped to the camera's near and far distances.
    void primaryRay(const Vec3& direction, float& tnear, float& tfar) const
    {
        const float inverseCosine = 1.0f / std::max(1e-4f, dot(direction, camera.forward));
        tnear = camera.nearDistance * inverseCosine;
        tfar = std::min(camera.farDistance * inverseCosine, std::numeric_limits<float>::max());
    }

    // Shades what the primary ray along direction found at the sample's time.
    void shade(const Vec3& direction, const PrimaryHit& hit, const Sampler& sampler, float time,
               SampleResult& result) const
    {
        result.view = direction * -1.0f;
        if (needs.background)
            result.background = environmentColor(snapshot->environment, direction);
        if (!hit.hit)
            return;

        result.hit = true;
        const uint32_t triangle = hit.primitive;
        const ShadeMaterial& material = materials[snapshot->triangleMaterial[triangle]];
        const float t = hit.distance;
        const Vec3 point = camera.origin + direction * t;
        Vec3 normal = normalize(hit.normal);
        if (dot(normal, direction) > 0.0f)
            normal = normal * -1.0f;
        result.position = point;
        result.normal = normal;
        result.cameraNormal = {dot(normal, cameraRight), dot(normal, cameraUp),
                               -dot(normal, camera.forward)};
        result.depth = t * dot(direction, camera.forward);
        result.albedo = material.albedo;
        result.idColor = material.idColor;
        result.materialId = material.cryptoId;
        result.objectId = triangleObjectIds[triangle];

        if (!needs.beauty && !needs.occlusion)
            return;
        const float scale =
            1.0f + std::max({std::fabs(point[0]), std::fabs(point[1]), std::fabs(point[2])});
        const Vec3 origin = point + normal * (2e-4f * scale);
        Vec3 tangent, bitangent;
        basis(normal, tangent, bitangent);
        auto cosineDirection = [&](float u, float v) {
            const float r = std::sqrt(u);
            const float phi = 2.0f * kPi * v;
            return normalize(tangent * (r * std::cos(phi)) + bitangent * (r * std::sin(phi)) +
                             normal * std::sqrt(std::max(0.0f, 1.0f - u)));
        };

        if (needs.occlusion) {
            int open = 0;
            for (int i = 0; i < occlusionRays; ++i) {
                float u, v;
                sampler.get(kAODimensionBase + uint32_t(i), u, v);
                if (!occluded(origin, cosineDirection(u, v), kOcclusionDistance, time))
                    ++open;
            }
            result.occlusion = float(open) / float(occlusionRays);
        }

        if (needs.beauty) {
            const Vec3 toEye = direction * -1.0f;
            Vec3 color =
                material.emission + directLight(origin, normal, toEye, material, sampler, time);
            float u, v;
            // Sky light: one cosine-weighted ray, whose weight cancels the Lambert factor.
            sampler.get(DimEnvironment, u, v);
            const Vec3 skyDirection = cosineDirection(u, v);
            if (snapshot->environment && !occluded(origin, skyDirection, 1e30f, time))
                color = color +
                        material.diffuse * environmentColor(snapshot->environment, skyDirection);
            // Reflection of the environment, blurred by roughness.
            sampler.get(DimReflection, u, v);
            const Vec3 mirror = direction - normal * (2.0f * dot(direction, normal));
            const float spread = material.roughness * material.roughness;
            Vec3 reflected = normalize(mirror + (tangent * (u - 0.5f) + bitangent * (v - 0.5f)) *
                                                    (2.0f * spread));
            if (dot(reflected, normal) > 0.0f && snapshot->environment &&
                !occluded(origin, reflected, 1e30f, time))
                color =
                    color + material.specular * environmentColor(snapshot->environment, reflected);
            result.beauty = color;
        }
    }
};

// Filtered sums of one pixel.
struct PixelSums {
    float weight = 0.0f;       // all samples, signed filter weights
    float absWeight = 0.0f;    // all samples, |weights|
    float hitWeight = 0.0f;    // hit samples, signed
    float hitAbsWeight = 0.0f; // hit samples, |weights|
    Vec3 beauty{0, 0, 0};      // hit samples, signed
    Vec3 background{0, 0, 0};  // all samples
    Vec3 view{0, 0, 0};        // all samples
    float occlusion = 0.0f;    // all samples
    Vec3 albedo{0, 0, 0}, normal{0, 0, 0}, cameraNormal{0, 0, 0}, position{0, 0, 0},
        idColor{0, 0, 0}; // hit samples, |weights|
    float depth = 0.0f;
};

// Cryptomatte coverage of one pixel, (id, |weight|); kept per tile to spare allocations.
struct CoverageLists {
    std::vector<std::pair<float, float>> objects;
    std::vector<std::pair<float, float>> materials;
};

void addCoverage(std::vector<std::pair<float, float>>& list, float id, float weight)
{
    for (auto& entry : list) {
        if (entry.first == id) {
            entry.second += weight;
            return;
        }
    }
    list.emplace_back(id, weight);
}

// Ranked by coverage, ties by id, so that the order never depends on sample order.
void rank(std::vector<std::pair<float, float>>& list)
{
    if (list.size() < 2)
        return;
    std::sort(list.begin(), list.end(), [](const auto& a, const auto& b) {
        if (a.second != b.second)
            return a.second > b.second;
        uint32_t ia, ib;
        std::memcpy(&ia, &a.first, 4);
        std::memcpy(&ib, &b.first, 4);
        return ia < ib;
    });
}

// Visits the sums of a pixel that the requested passes read, in a fixed order: what a pixel
// keeps between refinement rounds. The rest never reaches an image.
template <typename Visit>
void forEachKeptSum(PixelSums& sums, const PassNeeds& needs, Visit&& visit)
{
    visit(sums.weight);
    visit(sums.absWeight);
    visit(sums.hitWeight);
    visit(sums.hitAbsWeight);
    if (needs.beauty)
        for (float& c : sums.beauty)
            visit(c);
    if (needs.background)
        for (float& c : sums.background)
            visit(c);
    if (needs.view)
        for (float& c : sums.view)
            visit(c);
    if (needs.occlusion)
        visit(sums.occlusion);
    if (needs.data) {
        for (Vec3* v :
             {&sums.albedo, &sums.normal, &sums.cameraNormal, &sums.position, &sums.idColor})
            for (float& c : *v)
                visit(c);
        visit(sums.depth);
    }
}

size_t keptSumCount(const PassNeeds& needs)
{
    PixelSums sums;
    size_t count = 0;
    forEachKeptSum(sums, needs, [&](float&) { ++count; });
    return count;
}

void put(float* pixel, const Vec3& rgb, float alpha)
{
    pixel[0] = rgb[0];
    pixel[1] = rgb[1];
    pixel[2] = rgb[2];
    pixel[3] = alpha;
}

} // namespace

std::vector<int> oxRaytracer::refinementRounds(int samples)
{
    samples = std::max(1, samples);
    std::vector<int> rounds;
    for (int taken = 1; taken < samples; taken *= 2)
        rounds.push_back(taken);
    rounds.push_back(samples);
    return rounds;
}

bool oxRaytracer::render(const oxScene& scene, const Settings& settings, oxRenderedImage& image,
                         std::string& error, bool* stopped)
{
    if (stopped)
        *stopped = false;
    if (settings.width <= 0 || settings.height <= 0) {
        error = "the image size " + std::to_string(settings.width) + "x" +
                std::to_string(settings.height) + " is not positive";
        return false;
    }
    if (settings.passIds.empty()) {
        error = "no render pass was requested";
        return false;
    }
    for (unsigned id : settings.passIds) {
        if (!isHostPass(id)) {
            const char* name = oxImagePasses::name(id);
            error = name ? "the render pass '" + std::string(name) +
                               "' is not rendered by this host yet"
                         : "the render pass id " + std::to_string(id) + " is unknown";
            return false;
        }
    }
    const PixelFilterEntry* filter = findFilter(settings.filterType);
    if (!filter) {
        error = "the pixel filter type " + std::to_string(settings.filterType) + " is unknown";
        return false;
    }
    if (!(settings.filterWidth > 0.0f) || !(settings.filterHeight > 0.0f) ||
        !std::isfinite(settings.filterWidth) || !std::isfinite(settings.filterHeight)) {
        error = "the pixel filter size must be positive and finite";
        return false;
    }
    if (settings.motionClip && !(std::isfinite(settings.shutter) && settings.shutter >= 0.0f &&
                                 std::isfinite(settings.motionFrame))) {
        error = "the shutter interval of motion blur must be finite and not negative";
        return false;
    }

    std::lock_guard<std::mutex> lock(m_mutex);
    // One pose of the scene, or one per time step of the shutter interval; shading takes
    // materials, lights and camera from the first, the shutter's opening.
    std::vector<oxSceneSnapshot> poses(settings.motionClip ? size_t(motionTimeSteps) : 1u);
    if (settings.motionClip) {
        for (size_t step = 0; step < poses.size(); ++step) {
            settings.motionClip->evaluate(settings.motionFrame +
                                          settings.shutter * float(step) / float(poses.size() - 1));
            scene.snapshot(poses[step]);
        }
        settings.motionClip->evaluate(settings.motionFrame);
    } else {
        scene.snapshot(poses.front());
    }
    const oxSceneSnapshot& snapshot = poses.front();
    if (!m_impl->update(poses, error))
        return false;

    RenderContext context;
    context.scene = m_impl->scene;
    context.snapshot = &snapshot;
    context.triangleOf = &m_impl->triangleOf;
    context.motion = settings.motionClip != nullptr;
    context.camera = oxRaytracerCamera::fromSnapshot(snapshot, settings.width, settings.height);
    context.cameraRight = normalize(context.camera.right);
    context.cameraUp = normalize(context.camera.up);
    const FilterSampler filterSampler(*filter);
    context.filter = &filterSampler;
    const int samples = std::max(1, settings.samples);
    context.occlusionRays = std::clamp(64 / samples, 1, 16);
    for (unsigned id : settings.passIds) {
        context.needs.beauty |= id == oxImagePasses::Beauty;
        context.needs.occlusion |= id == oxImagePasses::Occlusion;
        context.needs.data |= id == oxImagePasses::Albedo || id == oxImagePasses::Normal ||
                              id == oxImagePasses::Depth || id == oxImagePasses::MaterialID ||
                              id == oxImagePasses::Position || id == oxImagePasses::CameraNormal;
        context.needs.background |= id == oxImagePasses::BackgroundColor;
        context.needs.view |= id == oxImagePasses::ViewVector;
        context.needs.cryptoObject |=
            id >= oxImagePasses::cryptoObjectFirst && id < oxImagePasses::cryptoMaterialFirst;
        context.needs.cryptoMaterial |=
            id >= oxImagePasses::cryptoMaterialFirst &&
            id < oxImagePasses::cryptoMaterialFirst + oxImagePasses::cryptoLayersPerType;
    }

    std::vector<std::string> materialNames;
    for (const osg::Material* source : snapshot.materials) {
        ShadeMaterial material;
        const std::string name = source ? source->name : std::string();
        if (const auto* brdf = dynamic_cast<const osg::UBRDFMaterialBase*>(source)) {
            const Vec3 base = brdf->diffuseColor;
            const float metallic = std::clamp(brdf->metallic, 0.0f, 1.0f);
            material.albedo = base;
            material.diffuse = base * (1.0f - metallic);
            material.specular = lerp(brdf->glossyColor, base, metallic);
            material.roughness = std::clamp(brdf->roughness, 0.02f, 1.0f);
            const float r4 = std::pow(material.roughness, 4.0f);
            material.shininess = std::clamp(2.0f / r4 - 2.0f, 1.0f, 10000.0f);
            const osg::Vec4f& glow = brdf->getIncandescenceColor();
            material.emission = Vec3{glow[0], glow[1], glow[2]} * glow[3];
        }
        material.idColor = idColorOf(name);
        material.cryptoId = oxCryptomatte::idOf(name);
        context.materials.push_back(material);
        if (std::find(materialNames.begin(), materialNames.end(), name) == materialNames.end())
            materialNames.push_back(name);
    }
    if (context.materials.empty())
        context.materials.emplace_back();

    // Objects are named by their unique path below the model root.
    std::vector<std::string> objectNames;
    std::unordered_map<uint32_t, float> objectIds;
    context.triangleObjectIds.reserve(snapshot.triangleObject.size());
    for (uint32_t nodeId : snapshot.triangleObject) {
        auto found = objectIds.find(nodeId);
        if (found == objectIds.end()) {
            auto* node =
                dynamic_cast<osg::Node*>(osg::FieldContainerFactory::the()->getContainer(nodeId));
            const std::string path = oxNodeUtils::getUniquePath(node, scene.getRoot());
            if (std::find(objectNames.begin(), objectNames.end(), path) == objectNames.end())
                objectNames.push_back(path);
            found = objectIds.emplace(nodeId, oxCryptomatte::idOf(path)).first;
        }
        context.triangleObjectIds.push_back(found->second);
    }

    // The headlight lights a scene that has no lights of its own.
    const osg::Light* headlight =
        scene.getHeadlightNode() ? scene.getHeadlightNode()->getCoreAs<osg::Light>() : nullptr;
    const bool ownLights = std::any_of(snapshot.lights.begin(), snapshot.lights.end(),
                                       [&](const auto& light) { return light.light != headlight; });
    for (const oxSceneSnapshot::Light& source : snapshot.lights) {
        if (!source.light || (ownLights && source.light == headlight))
            continue;
        ShadeLight light;
        light.type = source.light->type;
        light.position = source.position;
        light.direction =
            source.light == headlight ? context.camera.forward : normalize(source.direction);
        light.radiance = Vec3(source.light->color) * source.light->value;
        light.attenuation = source.light->attenuation;
        const float half = std::clamp(source.light->spotAngle, 0.0f, 179.0f) * kPi / 360.0f;
        light.cosOuter = std::cos(half);
        light.cosInner = std::cos(half * 0.8f);
        context.lights.push_back(light);
    }

    const int width = settings.width;
    const int height = settings.height;
    const size_t pixelCount = size_t(width) * size_t(height);
    // The region in pixels; its y runs up from the bottom row.
    oxRenderRegion region = settings.region;
    for (float& edge : region)
        edge = std::isfinite(edge) ? std::clamp(edge, 0.0f, 1.0f) : 0.0f;
    const int x0 = std::clamp(int(std::floor(region[0] * float(width) + 0.5f)), 0, width);
    const int x1 = std::clamp(int(std::floor(region[2] * float(width) + 0.5f)), 0, width);
    const int y0 =
        std::clamp(height - int(std::floor(region[3] * float(height) + 0.5f)), 0, height);
    const int y1 =
        std::clamp(height - int(std::floor(region[1] * float(height) + 0.5f)), 0, height);

    const bool fullRegion = x0 == 0 && y0 == 0 && x1 == width && y1 == height;
    std::vector<oxRenderedPass> passes;
    for (unsigned id : settings.passIds) {
        if (std::any_of(passes.begin(), passes.end(),
                        [&](const oxRenderedPass& pass) { return pass.passId == id; }))
            continue;
        oxRenderedPass pass;
        pass.passId = id;
        // The buffers of the image's previous passes are reused: fresh pages cost more to map
        // than to fill. Pixels in the region are all written, so only those outside are cleared.
        if (!image.passes.empty()) {
            pass.rgba = std::move(image.passes.back().rgba);
            image.passes.pop_back();
        }
        if (fullRegion)
            pass.rgba.resize(pixelCount * 4);
        else
            pass.rgba.assign(pixelCount * 4, 0.0f);
        passes.push_back(std::move(pass));
    }

    // The image is assembled before the first round: each round leaves it finished.
    image = oxRenderedImage();
    image.width = width;
    image.height = height;
    image.passes = std::move(passes);
    if (context.needs.cryptoObject)
        image.cryptoObjectNames = objectNames;
    if (context.needs.cryptoMaterial)
        image.cryptoMaterialNames = materialNames;
    if (snapshot.camera) {
        const osg::UberCameraBase& camera = *snapshot.camera;
        image.cameraData = {
            {"fov", std::to_string(camera.getFov())},
            {"position", std::to_string(camera.position[0]) + " " +
                             std::to_string(camera.position[1]) + " " +
                             std::to_string(camera.position[2])},
        };
    }

    const float clampValue = settings.clamping ? settings.clampValue : 0.0f;
    const uint32_t offset = uint32_t(settings.sampleOffset);
    auto accumulate = [&](PixelSums& sums, CoverageLists& lists, const SampleResult& result,
                          float w) {
        const float aw = std::fabs(w);
        sums.weight += w;
        sums.absWeight += aw;
        if (context.needs.background)
            sums.background = sums.background + result.background * w;
        if (context.needs.view)
            sums.view = sums.view + result.view * aw;
        sums.occlusion += result.occlusion * aw;
        if (!result.hit)
            return;
        Vec3 beauty = result.beauty;
        if (clampValue > 0.0f)
            for (float& c : beauty)
                c = std::min(c, clampValue);
        sums.hitWeight += w;
        sums.hitAbsWeight += aw;
        sums.beauty = sums.beauty + beauty * w;
        if (context.needs.data) {
            sums.albedo = sums.albedo + result.albedo * aw;
            sums.normal = sums.normal + result.normal * aw;
            sums.cameraNormal = sums.cameraNormal + result.cameraNormal * aw;
            sums.position = sums.position + result.position * aw;
            sums.idColor = sums.idColor + result.idColor * aw;
            sums.depth += result.depth * aw;
        }
        if (context.needs.cryptoObject)
            addCoverage(lists.objects, result.objectId, aw);
        if (context.needs.cryptoMaterial)
            addCoverage(lists.materials, result.materialId, aw);
    };

    auto finish = [&](int x, int y, const PixelSums& sums, CoverageLists& lists) {
        const float norm = std::fabs(sums.weight) > 1e-12f ? 1.0f / sums.weight : 0.0f;
        const float absNorm = sums.absWeight > 0.0f ? 1.0f / sums.absWeight : 0.0f;
        const float hitNorm = sums.hitAbsWeight > 0.0f ? 1.0f / sums.hitAbsWeight : 0.0f;
        const float coverage = std::clamp(sums.hitWeight * norm, 0.0f, 1.0f);
        const float dataAlpha = settings.alpha ? coverage : 1.0f;
        if (context.needs.cryptoObject)
            rank(lists.objects);
        if (context.needs.cryptoMaterial)
            rank(lists.materials);
        const size_t index = (size_t(y) * size_t(width) + size_t(x)) * 4;
        for (oxRenderedPass& pass : image.passes) {
            float* pixel = pass.rgba.data() + index;
            switch (pass.passId) {
            case oxImagePasses::Beauty: {
                const Vec3 premultiplied = sums.beauty * norm;
                if (!settings.alpha) {
                    const Vec3 behind{settings.alphaColor[0], settings.alphaColor[1],
                                      settings.alphaColor[2]};
                    put(pixel, premultiplied + behind * (1.0f - coverage), 1.0f);
                } else if (settings.premultiply) {
                    put(pixel, premultiplied, coverage);
                } else {
                    put(pixel, coverage > 0.0f ? premultiplied * (1.0f / coverage) : Vec3{0, 0, 0},
                        coverage);
                }
                break;
            }
            case oxImagePasses::BackgroundColor:
                put(pixel, sums.background * norm, 1.0f);
                break;
            case oxImagePasses::Occlusion:
                put(pixel, Vec3{1, 1, 1} * (sums.occlusion * absNorm), dataAlpha);
                break;
            case oxImagePasses::Albedo:
                put(pixel, sums.albedo * hitNorm, dataAlpha);
                break;
            case oxImagePasses::Normal:
                put(pixel, sums.normal * hitNorm, dataAlpha);
                break;
            case oxImagePasses::Depth:
                put(pixel, Vec3{1, 1, 1} * (sums.depth * hitNorm), dataAlpha);
                break;
            case oxImagePasses::MaterialID:
                put(pixel, sums.idColor * hitNorm, dataAlpha);
                break;
            case oxImagePasses::Mask:
                put(pixel, Vec3{1, 1, 1} * coverage, coverage);
                break;
            case oxImagePasses::Position:
                put(pixel, sums.position * hitNorm, dataAlpha);
                break;
            case oxImagePasses::ViewVector:
                put(pixel, normalize(sums.view * absNorm), dataAlpha);
                break;
            case oxImagePasses::CameraNormal:
                put(pixel, sums.cameraNormal * hitNorm, dataAlpha);
                break;
            default: {
                const bool objects = pass.passId < oxImagePasses::cryptoMaterialFirst;
                const auto& list = objects ? lists.objects : lists.materials;
                const unsigned layer = pass.passId - (objects ? oxImagePasses::cryptoObjectFirst
                                                              : oxImagePasses::cryptoMaterialFirst);
                for (unsigned k = 0; k < 2; ++k) {
                    const size_t r = layer * 2 + k;
                    pixel[k * 2] = r < list.size() ? list[r].first : 0.0f;
                    pixel[k * 2 + 1] = r < list.size() ? list[r].second * absNorm : 0.0f;
                }
                break;
            }
            }
        }
    };

    // Rounds of samples [begin, end) over the region. What a pixel has summed so far waits
    // between rounds in keptSums (and its Cryptomatte coverage in keptLists); a render of one
    // round keeps nothing.
    const std::vector<int> rounds =
        settings.refine ? refinementRounds(samples) : std::vector<int>{samples};
    const size_t keptCount = rounds.size() > 1 ? keptSumCount(context.needs) : 0;
    const bool crypto = context.needs.cryptoObject || context.needs.cryptoMaterial;
    std::vector<float> keptSums(rounds.size() > 1 ? pixelCount * keptCount : 0);
    std::vector<CoverageLists> keptLists(rounds.size() > 1 && crypto ? pixelCount : 0);

    // Tiles shoot their primary rays in packets of eight neighbouring pixels, one sample
    // index at a time; everything after the first hit is traced ray by ray.
    constexpr int kTile = 16;
    constexpr int kPacket = 8;
    auto renderRound = [&](int begin, int end, bool firstRound, bool lastRound) {
        tbb::parallel_for(
            tbb::blocked_range2d<int>(y0, y1, kTile, x0, x1, kTile),
            [&](const tbb::blocked_range2d<int>& tile) {
                const int left = tile.cols().begin();
                const int top = tile.rows().begin();
                const int tileWidth = int(tile.cols().size());
                const int count = tileWidth * int(tile.rows().size());
                auto pixelOf = [&](int i) {
                    return size_t(top + i / tileWidth) * size_t(width) +
                           size_t(left + i % tileWidth);
                };
                // Each thread keeps its tile buffers from tile to tile.
                thread_local std::vector<PixelSums> sums;
                thread_local std::vector<CoverageLists> lists;
                sums.assign(static_cast<size_t>(count), PixelSums());
                if (lists.size() < static_cast<size_t>(count))
                    lists.resize(static_cast<size_t>(count));
                if (firstRound && crypto) {
                    for (int i = 0; i < count; ++i) {
                        lists[size_t(i)].objects.clear();
                        lists[size_t(i)].materials.clear();
                    }
                }
                if (!firstRound) {
                    for (int i = 0; i < count; ++i) {
                        const float* kept = keptSums.data() + pixelOf(i) * keptCount;
                        forEachKeptSum(sums[size_t(i)], context.needs,
                                       [&](float& value) { value = *kept++; });
                        if (crypto)
                            std::swap(lists[size_t(i)], keptLists[pixelOf(i)]);
                    }
                }
                RTCIntersectContext intersect;
                rtcInitIntersectContext(&intersect);
                intersect.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
                for (int s = begin; s < end; ++s) {
                    for (int base = 0; base < count; base += kPacket) {
                        alignas(32) RTCRayHit8 packet;
                        alignas(32) int valid[kPacket];
                        float weights[kPacket];
                        float times[kPacket];
                        Vec3 directions[kPacket];
                        Sampler samplers[kPacket];
                        for (int lane = 0; lane < kPacket; ++lane) {
                            const int i = base + lane;
                            valid[lane] = i < count ? -1 : 0;
                            packet.hit.geomID[lane] = RTC_INVALID_GEOMETRY_ID;
                            if (i >= count)
                                continue;
                            const int x = left + i % tileWidth;
                            const int y = top + i / tileWidth;
                            const uint32_t pixelKey = uint32_t(y) * uint32_t(width) + uint32_t(x);
                            samplers[lane] = Sampler{hash32(pixelKey), uint32_t(s) + offset};
                            // A single sample sits at the pixel's centre; more spread over the
                            // filter.
                            float fx = 0.0f, fy = 0.0f, signX = 1.0f, signY = 1.0f;
                            if (samples > 1 || offset != 0) {
                                float u, v;
                                samplers[lane].get(DimPixel, u, v);
                                fx = context.filter->sample(u, signX);
                                fy = context.filter->sample(v, signY);
                            }
                            times[lane] = 0.0f;
                            if (context.motion) {
                                float v;
                                samplers[lane].get(kTimeDimension, times[lane], v);
                            }
                            weights[lane] = signX * signY;
                            directions[lane] = context.camera.direction(
                                float(x) + 0.5f + fx * 0.5f * settings.filterWidth,
                                float(y) + 0.5f + fy * 0.5f * settings.filterHeight);
                            float tnear, tfar;
                            context.primaryRay(directions[lane], tnear, tfar);
                            packet.ray.org_x[lane] = context.camera.origin[0];
                            packet.ray.org_y[lane] = context.camera.origin[1];
                            packet.ray.org_z[lane] = context.camera.origin[2];
                            packet.ray.dir_x[lane] = directions[lane][0];
                            packet.ray.dir_y[lane] = directions[lane][1];
                            packet.ray.dir_z[lane] = directions[lane][2];
                            packet.ray.tnear[lane] = tnear;
                            packet.ray.tfar[lane] = tfar;
                            packet.ray.time[lane] = times[lane];
                            packet.ray.mask[lane] = 0xffffffffu;
                            packet.ray.id[lane] = unsigned(lane);
                            packet.ray.flags[lane] = 0;
                            packet.hit.instID[0][lane] = RTC_INVALID_GEOMETRY_ID;
                        }
                        rtcIntersect8(valid, context.scene, &intersect, &packet);
                        for (int lane = 0; lane < kPacket && base + lane < count; ++lane) {
                            PrimaryHit hit;
                            hit.hit = packet.hit.geomID[lane] != RTC_INVALID_GEOMETRY_ID;
                            hit.distance = packet.ray.tfar[lane];
                            if (hit.hit)
                                hit.primitive = context.triangle(packet.hit.geomID[lane],
                                                                 packet.hit.primID[lane]);
                            hit.normal = {packet.hit.Ng_x[lane], packet.hit.Ng_y[lane],
                                          packet.hit.Ng_z[lane]};
                            SampleResult result;
                            context.shade(directions[lane], hit, samplers[lane], times[lane],
                                          result);
                            accumulate(sums[size_t(base + lane)], lists[size_t(base + lane)],
                                       result, weights[lane]);
                        }
                    }
                }
                for (int i = 0; i < count; ++i)
                    finish(left + i % tileWidth, top + i / tileWidth, sums[size_t(i)],
                           lists[size_t(i)]);
                if (!lastRound) {
                    for (int i = 0; i < count; ++i) {
                        float* kept = keptSums.data() + pixelOf(i) * keptCount;
                        forEachKeptSum(sums[size_t(i)], context.needs,
                                       [&](float& value) { *kept++ = value; });
                        if (crypto)
                            std::swap(lists[size_t(i)], keptLists[pixelOf(i)]);
                    }
                }
            },
            tbb::simple_partitioner());
    };

    int taken = 0;
    for (size_t round = 0; round < rounds.size(); ++round) {
        const bool lastRound = round + 1 == rounds.size();
        if (x0 < x1 && y0 < y1)
            renderRound(taken, rounds[round], round == 0, lastRound);
        taken = rounds[round];
        const bool goOn =
            !settings.onRound || settings.onRound(int(round) + 1, int(rounds.size()), image);
        if (!goOn && !lastRound) {
            error = "the render was stopped after " + std::to_string(taken) + " of " +
                    std::to_string(samples) + " samples per pixel";
            if (stopped)
                *stopped = true;
            return false;
        }
    }
    return true;
}

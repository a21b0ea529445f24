#include "oxRayFile.h"

#include "oxEmbreeScene.h"
#include "oxRayShading.h"
#include "oxSampleSequence.h"
#include "oxScene.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <limits>

namespace oxRay {

namespace {

// The sun's angular radius, as the renderer's soft shadows have it.
constexpr float kSunSpread = 0.03f;
// Photons are traced in blocks of this many; each block keeps its rays in photon order, so
// joining the blocks in order makes the file independent of the threads.
constexpr uint32_t kBlock = 1024;

// The dimensions a photon draws from: which emitter, where on it, which way, and per hit the
// choice of bounce and the new direction.
enum PhotonDimension : uint32_t {
    DimEmitter = 1,
    DimOrigin = 2,
    DimDirection = 3,
    DimHitBase = 4, // two per hit: bounce choice, then direction
};

float mean(const Vec3& v) { return (v[0] + v[1] + v[2]) / 3.0f; }

Vec3 uniformSphere(float u, float v)
{
    const float z = 1.0f - 2.0f * u;
    const float r = std::sqrt(std::max(0.0f, 1.0f - z * z));
    return {r * std::cos(2.0f * kPi * v), r * std::sin(2.0f * kPi * v), z};
}

// A point of the unit disk, as the offsets along two axes.
void uniformDisk(float u, float v, float& x, float& y)
{
    const float r = std::sqrt(u);
    x = r * std::cos(2.0f * kPi * v);
    y = r * std::sin(2.0f * kPi * v);
}

// Something that sends photons: one of the renderer's lights, or the environment.
struct Emitter {
    const ShadeLight* light = nullptr; // null: the environment
    Vec3 flux{0, 0, 0};                // estimated total power, for choosing among emitters
};

struct Bounds {
    Vec3 centre{0, 0, 0};
    float radius = 0.0f;
};

Bounds boundsOf(const std::vector<float>& positions)
{
    Bounds bounds;
    if (positions.empty())
        return bounds;
    Vec3 low{positions[0], positions[1], positions[2]};
    Vec3 high = low;
    for (size_t i = 0; i + 2 < positions.size(); i += 3) {
        for (size_t c = 0; c < 3; ++c) {
            low[c] = std::min(low[c], positions[i + c]);
            high[c] = std::max(high[c], positions[i + c]);
        }
    }
    bounds.centre = (low + high) * 0.5f;
    const Vec3 half = (high - low) * 0.5f;
    bounds.radius = std::sqrt(dot(half, half));
    return bounds;
}

class PhotonTracer {
public:
    PhotonTracer(const RenderContext& context, const Bounds& bounds, const RayFileRequest& request)
        : m_context(context), m_bounds(bounds), m_request(request)
    {
        const float disk = kPi * bounds.radius * bounds.radius;
        for (const ShadeLight& light : context.lights) {
            Emitter emitter;
            emitter.light = &light;
            if (light.type == osg::Light::Directional)
                emitter.flux = light.radiance * disk;
            else if (light.type == osg::Light::Spot)
                emitter.flux = light.radiance * (2.0f * kPi * (1.0f - light.cosOuter));
            else
                emitter.flux = light.radiance * (4.0f * kPi);
            m_emitters.push_back(emitter);
        }
        // The environment shines when no lights were picked out.
        if (request.lights.empty() && context.snapshot->environment) {
            // Sky above and ground below the horizon, each over half the sphere.
            const Vec3 average = (environmentColor(context.snapshot->environment, {0, 1, 0}) +
                                  environmentColor(context.snapshot->environment, {0, -1, 0})) *
                                 0.5f;
            m_emitters.push_back({nullptr, average * (4.0f * kPi * disk)});
        }
        for (const Emitter& emitter : m_emitters)
            m_total += std::max(0.0f, mean(emitter.flux));
    }

    // Follows photon number index and appends the rays it leaves.
    void trace(uint32_t index, std::vector<RayFileRay>& rays) const
    {
        if (!(m_total > 0.0f) || !(m_bounds.radius > 0.0f))
            return;
        const Sampler sampler{hash32(index ^ 0x6a09e667u), index};
        Vec3 origin, direction, power;
        if (!emit(sampler, origin, direction, power))
            return;
        RTCIntersectContext intersect;
        rtcInitIntersectContext(&intersect);
        for (uint32_t depth = 0; depth < m_request.maxDepth; ++depth) {
            RTCRayHit ray;
            ray.ray.org_x = origin[0];
            ray.ray.org_y = origin[1];
            ray.ray.org_z = origin[2];
            ray.ray.dir_x = direction[0];
            ray.ray.dir_y = direction[1];
            ray.ray.dir_z = direction[2];
            ray.ray.tnear = 0.0f;
            ray.ray.tfar = std::numeric_limits<float>::infinity();
            ray.ray.time = 0.0f;
            ray.ray.mask = 0xffffffffu;
            ray.ray.id = 0;
            ray.ray.flags = 0;
            ray.hit.geomID = RTC_INVALID_GEOMETRY_ID;
            ray.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
            rtcIntersect1(m_context.scene, &intersect, &ray);
            if (ray.hit.geomID == RTC_INVALID_GEOMETRY_ID)
                return;

            const uint32_t triangle = m_context.triangle(ray.hit.geomID, ray.hit.primID);
            const ShadeMaterial& material =
                m_context.materials[m_context.snapshot->triangleMaterial[triangle]];
            const Vec3 point = origin + direction * ray.ray.tfar;
            Vec3 normal = normalize({ray.hit.Ng_x, ray.hit.Ng_y, ray.hit.Ng_z});
            if (dot(normal, direction) > 0.0f)
                normal = normal * -1.0f;
            const bool diffuse = material.diffuse[0] > 0.0f || material.diffuse[1] > 0.0f ||
                                 material.diffuse[2] > 0.0f;
            if (diffuse || m_request.everyHit)
                rays.push_back({point, direction, power});

            // Russian roulette between diffuse and glossy reflection and absorption keeps the
            // photons' powers even.
            const float pd = std::clamp(mean(material.diffuse), 0.0f, 1.0f);
            const float ps = std::clamp(mean(material.specular), 0.0f, 1.0f - pd);
            float choice, unused;
            sampler.get(DimHitBase + 2 * depth, choice, unused);
            float u, v;
            sampler.get(DimHitBase + 2 * depth + 1, u, v);
            Vec3 tangent, bitangent;
            basis(normal, tangent, bitangent);
            if (choice < pd) {
                const float r = std::sqrt(u);
                const float phi = 2.0f * kPi * v;
                direction =
                    normalize(tangent * (r * std::cos(phi)) + bitangent * (r * std::sin(phi)) +
                              normal * std::sqrt(std::max(0.0f, 1.0f - u)));
                power = power * material.diffuse * (1.0f / pd);
            } else if (choice < pd + ps) {
                // The glossy lobe of the renderer's reflections.
                const Vec3 mirror = direction - normal * (2.0f * dot(direction, normal));
                const float spread = material.roughness * material.roughness;
                direction = normalize(mirror + (tangent * (u - 0.5f) + bitangent * (v - 0.5f)) *
                                                   (2.0f * spread));
                if (dot(direction, normal) <= 0.0f)
                    return;
                power = power * material.specular * (1.0f / ps);
            } else {
                return;
            }
            const float scale =
                1.0f + std::max({std::fabs(point[0]), std::fabs(point[1]), std::fabs(point[2])});
            origin = point + normal * (2e-4f * scale);
        }
    }

private:
    // Starts a photon on an emitter chosen by power; false when it carries nothing.
    bool emit(const Sampler& sampler, Vec3& origin, Vec3& direction, Vec3& power) const
    {
        float choice, spare;
        sampler.get(DimEmitter, choice, spare);
        const Emitter* chosen = &m_emitters.back();
        float sum = 0.0f;
        for (const Emitter& emitter : m_emitters) {
            sum += std::max(0.0f, mean(emitter.flux));
            if (choice * m_total < sum) {
                chosen = &emitter;
                break;
            }
        }
        const float probability = mean(chosen->flux) / m_total;
        if (!(probability > 0.0f))
            return false;
        const float share = 1.0f / (probability * float(m_request.photons));
        float u, v;
        sampler.get(DimDirection, u, v);
        const ShadeLight* light = chosen->light;
        if (!light || light->type == osg::Light::Directional) {
            // Parallel light across a disk that covers the scene, from outside it.
            Vec3 scale = chosen->flux;
            if (light) {
                Vec3 t, b;
                const Vec3 axis = light->direction * -1.0f;
                basis(axis, t, b);
                float x, y;
                uniformDisk(u, v, x, y);
                direction = normalize(axis + (t * x + b * y) * kSunSpread) * -1.0f;
            } else {
                const Vec3 toSky = uniformSphere(u, v);
                direction = toSky * -1.0f;
                const float disk = kPi * m_bounds.radius * m_bounds.radius;
                scale =
                    environmentColor(m_context.snapshot->environment, toSky) * (4.0f * kPi * disk);
            }
            Vec3 t, b;
            basis(direction, t, b);
            float x, y;
            sampler.get(DimOrigin, u, v);
            uniformDisk(u, v, x, y);
            origin = m_bounds.centre - direction * (2.0f * m_bounds.radius) +
                     (t * x + b * y) * m_bounds.radius;
            power = scale * share;
        } else {
            origin = light->position;
            direction = uniformSphere(u, v);
            float falloff = 1.0f;
            if (light->type == osg::Light::Spot) {
                // Spots send their photons into the cone only.
                const Vec3 axis = normalize(light->direction);
                Vec3 t, b;
                basis(axis, t, b);
                const float z = 1.0f - u * (1.0f - light->cosOuter);
                const float r = std::sqrt(std::max(0.0f, 1.0f - z * z));
                direction = normalize(t * (r * std::cos(2.0f * kPi * v)) +
                                      b * (r * std::sin(2.0f * kPi * v)) + axis * z);
                if (z < light->cosInner && light->cosInner > light->cosOuter)
                    falloff = (z - light->cosOuter) / (light->cosInner - light->cosOuter);
            }
            power = chosen->flux * (share * falloff);
        }
        return mean(power) > 0.0f;
    }

    const RenderContext& m_context;
    Bounds m_bounds;
    const RayFileRequest& m_request;
    std::vector<Emitter> m_emitters;
    float m_total = 0.0f;
};

} // namespace

bool traceRayFile(const oxScene& scene, const RayFileRequest& request,
                  std::vector<RayFileRay>& rays, std::string& error)
{
    rays.clear();
    std::vector<oxSceneSnapshot> poses(1);
    oxSceneSnapshot& snapshot = poses.front();
    scene.snapshot(snapshot);
    if (!request.lights.empty()) {
        // Only the lights asked for, by the cores of their nodes.
        std::vector<oxSceneSnapshot::Light> chosen;
        for (const oxSceneSnapshot::Light& light : snapshot.lights) {
            for (const osg::Node* node : request.lights) {
                if (node && node->getCore() == light.light) {
                    chosen.push_back(light);
                    break;
                }
            }
        }
        snapshot.lights = chosen;
    }
    EmbreeScene embree;
    if (!embree.update(poses, error))
        return false;

    RenderContext context;
    context.scene = embree.scene;
    context.snapshot = &snapshot;
    context.triangleOf = &embree.triangleOf;
    context.camera = oxRaytracerCamera::fromSnapshot(snapshot, 1, 1);
    std::vector<std::string> materialNames;
    context.loadMaterials(snapshot, materialNames);
    context.loadLights(snapshot, scene);

    const Bounds bounds = boundsOf(snapshot.positions);
    PhotonTracer tracer(context, bounds, request);
    if (request.photons == 0 || request.maxDepth == 0 || !embree.scene)
        return true;

    const uint32_t blocks = (request.photons + kBlock - 1) / kBlock;
    std::vector<std::vector<RayFileRay>> found(blocks);
    tbb::parallel_for(tbb::blocked_range<uint32_t>(0, blocks),
                      [&](const tbb::blocked_range<uint32_t>& range) {
                          for (uint32_t block = range.begin(); block != range.end(); ++block) {
                              const uint32_t end = std::min(request.photons, (block + 1) * kBlock);
                              for (uint32_t photon = block * kBlock; photon < end; ++photon)
                                  tracer.trace(photon, found[block]);
                          }
                      });
    size_t total = 0;
    for (const auto& block : found)
        total += block.size();
    rays.reserve(total);
    for (auto& block : found)
        rays.insert(rays.end(), block.begin(), block.end());
    return true;
}

std::string formatRayFile(const RayFileRequest& request, const std::vector<RayFileRay>& rays)
{
    std::string text;
    text.reserve(64 + rays.size() * 96);
    char line[256];
    std::snprintf(line, sizeof(line), "oxlin-rays 1 %zu %" PRIu32 " %" PRIu32 "\n", rays.size(),
                  request.photons, request.maxDepth);
    text += line;
    for (const RayFileRay& ray : rays) {
        std::snprintf(line, sizeof(line), "%.7g %.7g %.7g %.7g %.7g %.7g %.7g %.7g %.7g\n",
                      double(ray.origin[0]), double(ray.origin[1]), double(ray.origin[2]),
                      double(ray.direction[0]), double(ray.direction[1]), double(ray.direction[2]),
                      double(ray.power[0]), double(ray.power[1]), double(ray.power[2]));
        text += line;
    }
    return text;
}

} // namespace oxRay

#include "oxRayShading.h"

#include "oxBrdfIntegration.h"
#include "oxCryptomatte.h"
#include "oxSceneServices.h"

#include <unordered_map>

namespace oxRay {

namespace {

constexpr float kOcclusionDistance = 1.5f;

// A stable colour of a material: from the hash of its name, kept away from black.
Vec3 idColorOf(const std::string& name)
{
    const uint32_t hash = oxCryptomatte::murmurHash3(name);
    auto channel = [&](int shift) { return 0.2f + 0.8f * float((hash >> shift) & 0xffu) / 255.0f; };
    return {channel(0), channel(8), channel(16)};
}

} // namespace

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

void RenderContext::loadMaterials(const oxSceneSnapshot& snapshot,
                                  std::vector<std::string>& materialNames)
{
    for (const osg::Material* source : snapshot.materials) {
        ShadeMaterial material;
        const std::string name = source ? source->name : std::string();
        if (const auto* brdf = dynamic_cast<const osg::UBRDFMaterialBase*>(source)) {
            const Vec3 base = brdf->diffuseColor;
            const float metallic = std::clamp(brdf->metallic, 0.0f, 1.0f);
            material.albedo = base;
            material.diffuse = base * (1.0f - metallic);
            material.specular = lerp(brdf->glossyColor, base, metallic);
            material.roughness = std::clamp(brdf->roughness, 0.0f, 1.0f);
            // The BRDF bits of the material's render mode. Without Fresnel the reflectance stays
            // the glossy colour at every angle. Without GGX (per material, or scene-wide through
            // the BRDF integration type) the lobe is the compact one: half the width, without
            // the long tails that make GGX highlights glow. Below the smallest width the lobe is
            // too sharp for its samples' floats.
            const osg::UInt32 mode = brdf->getRenderMode();
            material.fresnel = (mode & osg::UberMaterial::fresnel_respects_glossy_color) != 0;
            const bool ggx = (mode & osg::UberMaterial::use_ggx_brdf) != 0 &&
                             oxBrdfIntegration::getBrdfType() == 2;
            material.alpha =
                std::max(material.roughness * material.roughness * (ggx ? 1.0f : 0.5f), 2e-3f);
            material.transmission = std::clamp(brdf->transmission, 0.0f, 1.0f) * (1.0f - metallic);
            material.ior = std::clamp(brdf->ior, 1.0f, 3.0f);
            material.clearcoat = std::clamp(brdf->clearcoat, 0.0f, 1.0f);
            material.clearcoatAlpha =
                std::max(brdf->clearcoatRoughness * brdf->clearcoatRoughness, 2e-3f);
            const osg::Vec4f& glow = brdf->getIncandescenceColor();
            material.emission = Vec3{glow[0], glow[1], glow[2]} * (glow[3] * exposure);
        }
        material.idColor = idColorOf(name);
        material.cryptoId = oxCryptomatte::idOf(name);
        materials.push_back(material);
        if (std::find(materialNames.begin(), materialNames.end(), name) == materialNames.end())
            materialNames.push_back(name);
    }
    if (materials.empty())
        materials.emplace_back();
}

void RenderContext::loadObjects(const oxSceneSnapshot& snapshot, const oxScene& scene,
                                std::vector<std::string>& objectNames)
{
    // Objects are named by their unique path below the model root.
    std::unordered_map<uint32_t, float> objectIds;
    triangleObjectIds.reserve(snapshot.triangleObject.size());
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
        triangleObjectIds.push_back(found->second);
    }
}

void RenderContext::loadLights(const oxSceneSnapshot& snapshot, const oxScene& scene)
{
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
        light.direction = source.light == headlight ? camera.forward : normalize(source.direction);
        light.radiance = Vec3(source.light->color) * (source.light->value * exposure);
        light.attenuation = source.light->attenuation;
        const float half = std::clamp(source.light->spotAngle, 0.0f, 179.0f) * kPi / 360.0f;
        light.cosOuter = std::cos(half);
        light.cosInner = std::cos(half * 0.8f);
        lights.push_back(light);
    }
}

bool RenderContext::occluded(const Vec3& origin, const Vec3& direction, float distance,
                             float time) const
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

void RenderContext::shade(const Vec3& direction, const PrimaryHit& hit, const Sampler& sampler,
                          float time, SampleResult& result) const
{
    result.view = direction * -1.0f;
    if (needs.background || needs.behind)
        result.background = environmentColor(snapshot->environment, direction);
    if (!hit.hit)
        return;

    result.hit = true;
    const uint32_t triangle = hit.primitive;
    const ShadeMaterial& material = materials[snapshot->triangleMaterial[triangle]];
    const float t = hit.distance;
    const SurfacePoint surface =
        surfaceAt(camera.origin, direction, t, triangle, hit.normal, hit.u, hit.v);
    const Vec3& point = surface.point;
    const Vec3& normal = surface.shading;
    result.position = point;
    result.normal = normal;
    result.cameraNormal = {dot(normal, cameraRight), dot(normal, cameraUp),
                           -dot(normal, camera.forward)};
    result.depth = t * dot(direction, camera.forward);
    result.albedo = material.albedo;
    result.idColor = material.idColor;
    result.materialId = material.cryptoId;
    result.objectId = triangleObjectIds[triangle];

    if (!needs.beauty && !needs.light && !needs.occlusion)
        return;
    const float scale =
        1.0f + std::max({std::fabs(point[0]), std::fabs(point[1]), std::fabs(point[2])});
    const Vec3 origin = point + surface.geometric * (2e-4f * scale);
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

    if (needs.beauty || needs.light) {
        pathRadiance(direction, surface, sampler, time, result);
        const float opaque = 1.0f - material.transmission;
        result.colours[ColDiffuse] = material.diffuse * opaque;
        result.colours[ColGlossy] = material.specular * opaque;
        result.colours[ColSpecular] = Vec3{1, 1, 1} * material.transmission;
        result.colours[ColTranslucency] = material.albedo * material.transmission;
        result.colours[ColTransparency] = material.albedo * material.transmission;
    }
}

} // namespace oxRay

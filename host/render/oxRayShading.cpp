#include "oxRayShading.h"

#include "oxBrdfIntegration.h"
#include "oxCryptomatte.h"
#include "oxSceneServices.h"

#include <unordered_map>

namespace oxRay {

namespace {

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

// The specular colour at an angle whose cosine is cosine: constant without Fresnel, else
// Schlick's curve from the glossy colour towards that colour's own hue at full strength.
Vec3 specularColor(const ShadeMaterial& material, float cosine)
{
    if (!material.fresnel)
        return material.specular;
    const Vec3& f0 = material.specular;
    const float peak = std::max({f0[0], f0[1], f0[2], 1e-6f});
    const Vec3 grazing = f0 * (1.0f / peak);
    const float weight = std::pow(1.0f - std::clamp(cosine, 0.0f, 1.0f), 5.0f);
    return f0 + (grazing - f0) * weight;
}

// The normalised specular lobe for light arriving along toLight: Blinn-Phong, or GGX with
// its masking term.
float highlight(const ShadeMaterial& material, const Vec3& normal, const Vec3& halfway,
                const Vec3& toLight, const Vec3& toEye)
{
    const float nh = std::max(0.0f, dot(normal, halfway));
    if (!material.ggx)
        return (material.shininess + 2.0f) / (8.0f * kPi) * std::pow(nh, material.shininess);
    const float alpha = material.roughness * material.roughness;
    const float a2 = alpha * alpha;
    const float d = nh * nh * (a2 - 1.0f) + 1.0f;
    const float distribution = a2 / (kPi * d * d);
    const float nl = std::max(1e-4f, dot(normal, toLight));
    const float nv = std::max(1e-4f, dot(normal, toEye));
    const float k = alpha * 0.5f;
    const float masking = (nl / (nl * (1.0f - k) + k)) * (nv / (nv * (1.0f - k) + k));
    return distribution * masking / (4.0f * nl * nv);
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
            material.roughness = std::clamp(brdf->roughness, 0.02f, 1.0f);
            const float r4 = std::pow(material.roughness, 4.0f);
            material.shininess = std::clamp(2.0f / r4 - 2.0f, 1.0f, 10000.0f);
            const osg::UInt32 mode = brdf->getRenderMode();
            material.fresnel = (mode & osg::UberMaterial::fresnel_respects_glossy_color) != 0;
            material.ggx = (mode & osg::UberMaterial::use_ggx_brdf) != 0;
            if (material.ggx) {
                const float reflected =
                    std::max({material.specular[0], material.specular[1], material.specular[2]});
                material.diffuse = material.diffuse * (1.0f - std::clamp(reflected, 0.0f, 1.0f));
            }
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

Vec3 RenderContext::directLight(const Vec3& point, const Vec3& normal, const Vec3& toEye,
                                const ShadeMaterial& material, const Sampler& sampler,
                                float time) const
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
        const Vec3 brdf = material.diffuse * (1.0f / kPi) +
                          specularColor(material, dot(toEye, halfway)) *
                              highlight(material, normal, halfway, toLight, toEye);
        sum = sum + brdf * light.radiance * (cosine * scale);
    }
    return sum;
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
            color =
                color + material.diffuse * environmentColor(snapshot->environment, skyDirection);
        // Reflection of the environment, blurred by roughness.
        sampler.get(DimReflection, u, v);
        const Vec3 mirror = direction - normal * (2.0f * dot(direction, normal));
        // GGX integration keeps the lobe's long tails: a wider blur for the same roughness.
        const float spread = oxBrdfIntegration::getBrdfType() == 2
                                 ? material.roughness
                                 : material.roughness * material.roughness;
        Vec3 reflected =
            normalize(mirror + (tangent * (u - 0.5f) + bitangent * (v - 0.5f)) * (2.0f * spread));
        if (dot(reflected, normal) > 0.0f && snapshot->environment &&
            !occluded(origin, reflected, 1e30f, time))
            color = color + specularColor(material, dot(toEye, normal)) *
                                environmentColor(snapshot->environment, reflected);
        result.beauty = color;
    }
}

} // namespace oxRay

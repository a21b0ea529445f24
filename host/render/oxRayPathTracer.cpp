#include "oxRayShading.h"

// Path tracing: what light a camera path carries back. At each surface the path samples the
// lights and the environment and, separately, the surface's own scattering; multiple
// importance sampling (the power heuristic) weighs the two wherever both can find the same
// light, so that neither small glossy highlights nor broad sky light turn into noise.
namespace oxRay {

namespace {

// The sun's angular radius and the radius of point and spot lights: what makes shadows soft.
constexpr float kDirectionalSpread = 0.03f;
constexpr float kLightRadius = 0.1f;
// Random dimensions of a path: a block per surface, above those of the camera sample.
constexpr uint32_t kPathDimensionBase = 1u << 17;
constexpr uint32_t kPathDimensionStride = 1u << 12;
enum : uint32_t {
    DimLobe = 0,
    DimGlass = 1,
    DimDirection = 2,
    DimSky = 3,
    DimRoulette = 4,
    DimLight = 8
};
// The lobes that send a path on, where the light comes from, and the channel of each pair.
enum Lobe { LobeDiffuse, LobeGlossy, LobeSpecular, LobeTranslucency };
enum Source { Sky, Light, Indirect };
constexpr LightChannel kChannelOf[4][3] = {
    {ChDiffuseIBL, ChDiffuseLight, ChDiffuseIndirect},
    {ChGlossyIBL, ChGlossyLight, ChGlossyIndirect},
    {ChSpecular, ChSpecular, ChSpecular},
    {ChTranslucencyIBL, ChTranslucencyLight, ChTranslucencyIndirect},
};
// GGX lobes narrower than this reflect the sun as a caustic after a diffuse bounce.
constexpr float kSharpAlpha = 0.05f;
// Paths longer than this many surfaces go on only by Russian roulette.
constexpr int kRouletteStart = 3;

float powerHeuristic(float a, float b)
{
    const float a2 = a * a;
    const float b2 = b * b;
    return a2 + b2 > 0.0f ? a2 / (a2 + b2) : 0.0f;
}

// A local frame around a unit normal.
struct Frame {
    Vec3 t, b, n;
    explicit Frame(const Vec3& normal) : n(normal) { basis(n, t, b); }
    Vec3 toLocal(const Vec3& v) const { return {dot(v, t), dot(v, b), dot(v, n)}; }
    Vec3 toWorld(const Vec3& v) const { return t * v[0] + b * v[1] + n * v[2]; }
};

Vec3 cosineSample(float u, float v)
{
    const float r = std::sqrt(u);
    const float phi = 2.0f * kPi * v;
    return {r * std::cos(phi), r * std::sin(phi), std::sqrt(std::max(0.0f, 1.0f - u))};
}

// The solid angle of the sun's disc.
const float kSunSolidAngle = 2.0f * kPi * (1.0f - std::cos(kDirectionalSpread));

} // namespace

IlluminationMode IlluminationMode::of(int mode)
{
    IlluminationMode result;
    result.reflections = mode >= 0;
    result.shadows = mode >= 1;
    result.iblOcclusion = mode >= 2;
    result.indirect = mode >= 3;
    return result;
}

SurfacePoint RenderContext::surfaceAt(const Vec3& origin, const Vec3& direction, float distance,
                                      uint32_t triangle, const Vec3& geometric, float u,
                                      float v) const
{
    SurfacePoint surface;
    surface.triangle = triangle;
    surface.point = origin + direction * distance;
    surface.geometric = normalize(geometric);
    if (dot(surface.geometric, direction) > 0.0f)
        surface.geometric = surface.geometric * -1.0f;
    surface.shading = surface.geometric;
    // The front is the side from which the vertices run counter-clockwise (glTF's outside).
    const uint32_t* index = snapshot->indices.data() + size_t(triangle) * 3;
    auto position = [&](int k) {
        const float* p = snapshot->positions.data() + size_t(index[k]) * 3;
        return Vec3{p[0], p[1], p[2]};
    };
    surface.front =
        dot(cross(position(1) - position(0), position(2) - position(0)), direction) <= 0.0f;
    const std::vector<float>& normals = snapshot->normals;
    if (normals.size() != snapshot->positions.size())
        return surface;
    const float weights[3] = {1.0f - u - v, u, v};
    Vec3 n{0, 0, 0};
    for (int k = 0; k < 3; ++k) {
        const float* vertex = normals.data() + size_t(index[k]) * 3;
        n = n + Vec3{vertex[0], vertex[1], vertex[2]} * weights[k];
    }
    if (dot(n, n) < 1e-8f)
        return surface;
    n = normalize(n);
    if (dot(n, surface.geometric) < 0.0f)
        n = n * -1.0f;
    // A smooth normal that turns away from the viewer would shade the back of the surface.
    if (dot(n, direction) < -1e-3f)
        surface.shading = n;
    return surface;
}

bool RenderContext::trace(const Vec3& origin, const Vec3& direction, float time,
                          SurfacePoint& hit) const
{
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    RTCRayHit query;
    query.ray.org_x = origin[0];
    query.ray.org_y = origin[1];
    query.ray.org_z = origin[2];
    query.ray.tnear = 0.0f;
    query.ray.dir_x = direction[0];
    query.ray.dir_y = direction[1];
    query.ray.dir_z = direction[2];
    query.ray.time = time;
    query.ray.tfar = std::numeric_limits<float>::infinity();
    query.ray.mask = 0xffffffffu;
    query.ray.id = 0;
    query.ray.flags = 0;
    query.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    query.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    rtcIntersect1(scene, &context, &query);
    if (query.hit.geomID == RTC_INVALID_GEOMETRY_ID)
        return false;
    hit = surfaceAt(origin, direction, query.ray.tfar, triangle(query.hit.geomID, query.hit.primID),
                    {query.hit.Ng_x, query.hit.Ng_y, query.hit.Ng_z}, query.hit.u, query.hit.v);
    return true;
}

void RenderContext::pathRadiance(const Vec3& direction, const SurfacePoint& first,
                                 const Sampler& sampler, float time, SampleResult& result) const
{
    const osg::UEnvironmentMaterialBase* environment = snapshot->environment;
    Vec3 throughput{1, 1, 1};
    // Light reaches the channel of the first surface's lobe that sent the path on (its
    // indirect light once the path has gone further), or the channel of its own sample.
    int firstLobe = -1;
    auto add = [&](const Vec3& light, int lobe, Source source) {
        if (firstLobe >= 0) {
            lobe = firstLobe;
            source = Indirect;
        }
        result.channels[kChannelOf[lobe][source]] =
            result.channels[kChannelOf[lobe][source]] + light;
        result.beauty = result.beauty + light;
    };
    Vec3 dir = direction;
    SurfacePoint surface = first;
    // Once a path has scattered diffusely, the sun seen through glass, mirrors and polished
    // lacquer is a caustic: found only by chance, as rare bright specks. Caustics are left to
    // photon tracing.
    bool scattered = false;
    for (int depth = 0;; ++depth) {
        const ShadeMaterial& material = materials[snapshot->triangleMaterial[surface.triangle]];
        if (depth == 0)
            result.channels[ChIncandescence] = result.channels[ChIncandescence] + material.emission;
        else
            add(throughput * material.emission, LobeDiffuse, Indirect);
        if (depth == 0)
            result.beauty = result.beauty + material.emission;
        const uint32_t dimension = kPathDimensionBase + uint32_t(depth) * kPathDimensionStride;
        const Frame frame(surface.shading);
        const Vec3 wo = frame.toLocal(dir * -1.0f);
        const Lobes lobes(material, wo[2]);
        if (lobes.sum <= 0.0f)
            break;
        const float scale =
            1.0f + std::max({std::fabs(surface.point[0]), std::fabs(surface.point[1]),
                             std::fabs(surface.point[2])});
        const float offset = 2e-4f * scale;
        const Vec3 above = surface.point + surface.geometric * offset;
        const bool scatters = lobes.sum > lobes.glass; // has lobes that lights can be sampled for

        // Lights and environment sampled towards the surface.
        if (scatters) {
            for (size_t i = 0; i < lights.size(); ++i) {
                const ShadeLight& light = lights[i];
                float u, v;
                sampler.get(dimension + DimLight + uint32_t(i), u, v);
                Vec3 toLight;
                float distance = std::numeric_limits<float>::infinity();
                float weight = 1.0f;
                if (light.type == osg::Light::Directional) {
                    Vec3 t, b;
                    const Vec3 axis = light.direction * -1.0f;
                    basis(axis, t, b);
                    // Uniform over the sun's disc: the same density a surface sample meets.
                    const float cosTheta = 1.0f - u * (1.0f - std::cos(kDirectionalSpread));
                    const float sinTheta = std::sqrt(std::max(0.0f, 1.0f - cosTheta * cosTheta));
                    const float phi = 2.0f * kPi * v;
                    toLight = normalize(axis * cosTheta + t * (sinTheta * std::cos(phi)) +
                                        b * (sinTheta * std::sin(phi)));
                    const float surfacePdf = pdfBSDF(material, lobes, wo, frame.toLocal(toLight));
                    weight = powerHeuristic(1.0f / kSunSolidAngle, surfacePdf);
                } else {
                    const float z = 1.0f - 2.0f * u;
                    const float rr = std::sqrt(std::max(0.0f, 1.0f - z * z));
                    const Vec3 offsetOnLight{rr * std::cos(2.0f * kPi * v),
                                             rr * std::sin(2.0f * kPi * v), z};
                    const Vec3 delta = light.position + offsetOnLight * kLightRadius - above;
                    distance = std::sqrt(dot(delta, delta));
                    if (distance <= 1e-6f)
                        continue;
                    toLight = delta * (1.0f / distance);
                    if (light.attenuation == 1)
                        weight = 1.0f / std::max(distance, 1e-3f);
                    else if (light.attenuation == 2)
                        weight = 1.0f / std::max(distance * distance, 1e-6f);
                    if (light.type == osg::Light::Spot) {
                        const float c = dot(toLight * -1.0f, light.direction);
                        if (c <= light.cosOuter)
                            continue;
                        if (c < light.cosInner)
                            weight *= (c - light.cosOuter) / (light.cosInner - light.cosOuter);
                    }
                    distance *= 0.999f;
                }
                Vec3 diffuse, glossy;
                evalBSDFParts(material, wo, frame.toLocal(toLight), diffuse, glossy);
                const Vec3 f = diffuse + glossy;
                if (f[0] + f[1] + f[2] <= 0.0f || dot(toLight, surface.geometric) <= 0.0f)
                    continue;
                if (mode.shadows && occluded(above, toLight, distance, time))
                    continue;
                add(throughput * diffuse * light.radiance * weight, LobeDiffuse, Light);
                add(throughput * glossy * light.radiance * weight, LobeGlossy, Light);
            }
            if (environment) {
                // Cosine-weighted about the normal: the sky's share of diffuse light.
                float u, v;
                sampler.get(dimension + DimSky, u, v);
                const Vec3 local = cosineSample(u, v);
                const Vec3 toSky = frame.toWorld(local);
                const float skyPdf = local[2] / kPi;
                Vec3 diffuse, glossy;
                evalBSDFParts(material, wo, local, diffuse, glossy);
                const Vec3 f = diffuse + glossy;
                if (skyPdf > 0.0f && f[0] + f[1] + f[2] > 0.0f &&
                    dot(toSky, surface.geometric) > 0.0f &&
                    !(mode.iblOcclusion && occluded(above, toSky, 1e30f, time))) {
                    const float w = powerHeuristic(skyPdf, pdfBSDF(material, lobes, wo, local));
                    const Vec3 sky =
                        throughput * environmentColor(environment, toSky) * (w / skyPdf);
                    add(sky * diffuse, LobeDiffuse, Sky);
                    add(sky * glossy, LobeGlossy, Sky);
                }
            }
        }

        // The surface's own sample: which lobe, then a direction from it.
        float u, v;
        sampler.get(dimension + DimLobe, u, v);
        const float pick = u * lobes.sum;
        Vec3 next, weight;
        float surfacePdf = 0.0f;
        bool delta = false, diffuse = false, sharp = false;
        int lobe = LobeGlossy;
        Vec3 nextOrigin = above;
        if (pick < lobes.glass) {
            // Smooth glass reflects or refracts by its Fresnel reflectance; what passes
            // takes the glass's colour.
            delta = true;
            const float eta = surface.front ? 1.0f / material.ior : material.ior;
            const float cosI = std::max(wo[2], 0.0f);
            const float share = lobes.sum / lobes.glass * lobes.coatKeeps * material.transmission;
            if (v < fresnelDielectric(cosI, eta)) {
                next = frame.toWorld({-wo[0], -wo[1], wo[2]});
                weight = Vec3{1, 1, 1} * share;
                lobe = LobeSpecular;
            } else {
                const float cosT =
                    std::sqrt(std::max(0.0f, 1.0f - eta * eta * (1.0f - cosI * cosI)));
                next = normalize(frame.toWorld(Vec3{-wo[0] * eta, -wo[1] * eta, -cosT}));
                weight = material.albedo * share;
                lobe = LobeTranslucency;
                nextOrigin = surface.point - surface.geometric * offset;
            }
        } else {
            const float rest = pick - lobes.glass;
            float u2, v2;
            sampler.get(dimension + DimDirection, u2, v2);
            Vec3 local;
            if (rest < lobes.diffuse) {
                local = cosineSample(u2, v2);
                diffuse = true;
                lobe = LobeDiffuse;
            } else {
                const float alpha = rest < lobes.diffuse + lobes.specular ? material.alpha
                                                                          : material.clearcoatAlpha;
                sharp = alpha < kSharpAlpha;
                const Vec3 h = sampleGGXVisibleNormal(wo, alpha, u2, v2);
                local = h * (2.0f * dot(wo, h)) - wo;
            }
            surfacePdf = pdfBSDF(material, lobes, wo, local);
            if (local[2] <= 0.0f || surfacePdf <= 0.0f)
                break;
            weight = evalBSDF(material, wo, local) * (1.0f / surfacePdf);
            next = frame.toWorld(local);
            if (dot(next, surface.geometric) <= 0.0f)
                break;
        }
        throughput = throughput * weight;
        if (std::max({throughput[0], throughput[1], throughput[2]}) <= 0.0f)
            break;

        // The light a sample finds where it escapes: the environment, and the sun's disc.
        // Where the surface sampled lights too, both weigh it as multiple importance
        // sampling says.
        const bool weighed = scatters && !delta;
        const Vec3 normal = surface.shading;
        auto escaped = [&](const Vec3& d) {
            if (environment) {
                const float skyPdf = std::max(0.0f, dot(d, normal)) / kPi;
                add(throughput * environmentColor(environment, d) *
                        (weighed ? powerHeuristic(surfacePdf, skyPdf) : 1.0f),
                    lobe, Sky);
            }
            if ((delta || sharp) && scattered)
                return;
            const float cosSun = std::cos(kDirectionalSpread);
            const float sunWeight =
                (weighed ? powerHeuristic(surfacePdf, 1.0f / kSunSolidAngle) : 1.0f) /
                kSunSolidAngle;
            for (const ShadeLight& light : lights)
                if (light.type == osg::Light::Directional &&
                    dot(d, light.direction * -1.0f) >= cosSun)
                    add(throughput * light.radiance * sunWeight, lobe, Light);
        };

        const bool goOn = depth + 1 < traceDepth && (diffuse ? mode.indirect : mode.reflections);
        if (!goOn) {
            // The path ends here, but its last sample still sees what lies straight along it.
            if (!(mode.iblOcclusion && occluded(nextOrigin, next, 1e30f, time)))
                escaped(next);
            break;
        }
        SurfacePoint found;
        if (!trace(nextOrigin, next, time, found)) {
            escaped(next);
            break;
        }
        if (depth == 0)
            firstLobe = lobe;
        surface = found;
        dir = next;
        scattered |= diffuse;
        if (depth + 1 >= kRouletteStart) {
            const float keep =
                std::min(0.95f, std::max({throughput[0], throughput[1], throughput[2]}));
            sampler.get(dimension + DimRoulette, u, v);
            if (u >= keep)
                break;
            throughput = throughput * (1.0f / keep);
        }
    }
}

} // namespace oxRay

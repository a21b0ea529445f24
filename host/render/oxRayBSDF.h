#pragma once

#include "oxRayMath.h"

#include <algorithm>
#include <cmath>

// The surface model of the raytracer: the metallic-roughness model of glTF 2.0. A diffuse
// base under a GGX specular layer whose Fresnel reflectance runs from the dielectric's to the
// base colour as the surface turns metallic; a clear lacquer on top with a GGX lobe of its
// own; and smooth glass that reflects and refracts by its index of refraction.
//
// Directions are in the shading frame: z is the shading normal, wo points to the viewer and
// wi to the light, both unit length.
namespace oxRay {

struct ShadeMaterial {
    Vec3 albedo{0.8f, 0.8f, 0.8f};      // base colour
    Vec3 diffuse{0.8f, 0.8f, 0.8f};     // the diffuse share of the base colour
    Vec3 specular{0.04f, 0.04f, 0.04f}; // reflectance at normal incidence (F0)
    float roughness = 0.5f;
    float alpha = 0.25f; // GGX width: roughness squared
    bool fresnel = true; // reflectance rises towards grazing angles (else the glossy colour)
    float transmission = 0.0f;
    float ior = 1.5f;
    float clearcoat = 0.0f;
    float clearcoatAlpha = 0.001f;
    Vec3 emission{0, 0, 0};
    Vec3 idColor{0.5f, 0.5f, 0.5f};
    float cryptoId = 0.0f;
};

inline float luminance(const Vec3& c) { return 0.2126f * c[0] + 0.7152f * c[1] + 0.0722f * c[2]; }

inline Vec3 schlick(const Vec3& f0, float cosine)
{
    const float m = std::pow(std::clamp(1.0f - cosine, 0.0f, 1.0f), 5.0f);
    return f0 + (Vec3{1, 1, 1} - f0) * m;
}

// Unpolarised Fresnel reflectance of a dielectric; eta is the ratio of the indices (outside
// over inside for a ray entering). 1 on total internal reflection.
inline float fresnelDielectric(float cosI, float eta)
{
    cosI = std::clamp(cosI, 0.0f, 1.0f);
    const float sin2T = eta * eta * (1.0f - cosI * cosI);
    if (sin2T >= 1.0f)
        return 1.0f;
    const float cosT = std::sqrt(1.0f - sin2T);
    const float rs = (eta * cosI - cosT) / (eta * cosI + cosT);
    const float rp = (cosI - eta * cosT) / (cosI + eta * cosT);
    return 0.5f * (rs * rs + rp * rp);
}

inline float ggxD(float cosH, float alpha)
{
    const float a2 = alpha * alpha;
    const float d = cosH * cosH * (a2 - 1.0f) + 1.0f;
    return a2 / (kPi * d * d);
}

inline float ggxLambda(float cosine, float alpha)
{
    const float c2 = std::max(cosine * cosine, 1e-8f);
    return 0.5f * (std::sqrt(1.0f + alpha * alpha * (1.0f - c2) / c2) - 1.0f);
}

inline float ggxG1(float cosine, float alpha) { return 1.0f / (1.0f + ggxLambda(cosine, alpha)); }

// Visible normal sampling (the distribution of normals seen from wo), in the shading frame.
inline Vec3 sampleGGXVisibleNormal(const Vec3& wo, float alpha, float u, float v)
{
    const Vec3 vh = normalize(Vec3{alpha * wo[0], alpha * wo[1], wo[2]});
    const float lensq = vh[0] * vh[0] + vh[1] * vh[1];
    const Vec3 t1 = lensq > 0.0f ? Vec3{-vh[1], vh[0], 0.0f} * (1.0f / std::sqrt(lensq))
                                 : Vec3{1.0f, 0.0f, 0.0f};
    const Vec3 t2 = cross(vh, t1);
    const float r = std::sqrt(u);
    const float phi = 2.0f * kPi * v;
    const float p1 = r * std::cos(phi);
    float p2 = r * std::sin(phi);
    const float s = 0.5f * (1.0f + vh[2]);
    p2 = (1.0f - s) * std::sqrt(std::max(0.0f, 1.0f - p1 * p1)) + s * p2;
    const Vec3 nh = t1 * p1 + t2 * p2 + vh * std::sqrt(std::max(0.0f, 1.0f - p1 * p1 - p2 * p2));
    return normalize(Vec3{alpha * nh[0], alpha * nh[1], std::max(1e-6f, nh[2])});
}

// The pdf of a reflected direction wi sampled through sampleGGXVisibleNormal.
inline float ggxReflectionPdf(const Vec3& wo, const Vec3& wi, float alpha)
{
    const Vec3 h = normalize(wo + wi);
    if (wo[2] <= 0.0f || h[2] <= 0.0f)
        return 0.0f;
    return ggxG1(wo[2], alpha) * ggxD(h[2], alpha) / (4.0f * wo[2]);
}

// The base layer's reflectance seen at an angle whose cosine is cosine.
inline Vec3 baseReflectance(const ShadeMaterial& m, float cosine)
{
    return m.fresnel ? schlick(m.specular, cosine) : m.specular;
}

// A GGX reflection lobe of Fresnel reflectance f0 (constant without fresnel), times the cosine
// at wi.
inline Vec3 ggxReflection(const Vec3& wo, const Vec3& wi, float alpha, const Vec3& f0,
                          bool fresnel = true)
{
    if (wo[2] <= 0.0f || wi[2] <= 0.0f)
        return {0, 0, 0};
    const Vec3 h = normalize(wo + wi);
    const float g = 1.0f / (1.0f + ggxLambda(wo[2], alpha) + ggxLambda(wi[2], alpha));
    const Vec3 f = fresnel ? schlick(f0, dot(wo, h)) : f0;
    return f * (ggxD(h[2], alpha) * g / (4.0f * wo[2]));
}

// How the layers share the light at one point seen from wo: the weights by which a sample
// chooses a lobe, and what each lower layer keeps of the light after the ones above it.
struct Lobes {
    float coat = 0.0f;      // chance of the clearcoat lobe
    float specular = 0.0f;  // of the base's GGX lobe
    float diffuse = 0.0f;   // of the diffuse base
    float glass = 0.0f;     // of smooth glass (a delta lobe)
    float coatKeeps = 1.0f; // what passes the lacquer, both ways
    float sum = 0.0f;

    Lobes(const ShadeMaterial& m, float cosO)
    {
        const float coatF = m.clearcoat * schlick(Vec3{0.04f, 0.04f, 0.04f}, cosO)[0];
        coatKeeps = 1.0f - coatF;
        coat = coatF;
        const float opaque = 1.0f - m.transmission;
        specular = coatKeeps * opaque * std::max(luminance(baseReflectance(m, cosO)), 0.02f);
        diffuse = coatKeeps * opaque * luminance(m.diffuse) * (1.0f - luminance(m.specular));
        glass = coatKeeps * m.transmission * std::max(luminance(m.albedo), 0.05f);
        sum = coat + specular + diffuse + glass;
    }
};

// The non-delta lobes times the cosine at wi: the diffuse base, and the glossy lobes (coat
// and specular).
inline void evalBSDFParts(const ShadeMaterial& m, const Vec3& wo, const Vec3& wi, Vec3& diffuse,
                          Vec3& glossy)
{
    diffuse = glossy = Vec3{0, 0, 0};
    if (wo[2] <= 0.0f || wi[2] <= 0.0f)
        return;
    const float coatO = m.clearcoat * schlick(Vec3{0.04f, 0.04f, 0.04f}, wo[2])[0];
    const float coatI = m.clearcoat * schlick(Vec3{0.04f, 0.04f, 0.04f}, wi[2])[0];
    // Glass reflects through its own (delta) lobe; the GGX lobe is the opaque share's.
    const float opaque = 1.0f - m.transmission;
    glossy = ggxReflection(wo, wi, m.alpha, m.specular, m.fresnel) * (opaque * (1.0f - coatO));
    // The diffuse base sees what the specular layer lets through, both ways.
    const float through = (1.0f - luminance(baseReflectance(m, wo[2]))) *
                          (1.0f - luminance(baseReflectance(m, wi[2]))) /
                          std::max(1.0f - luminance(m.specular), 1e-3f);
    diffuse = m.diffuse * (opaque * through * (1.0f - coatO) * (1.0f - coatI) * wi[2] / kPi);
    if (m.clearcoat > 0.0f)
        glossy = glossy +
                 ggxReflection(wo, wi, m.clearcoatAlpha, Vec3{0.04f, 0.04f, 0.04f}) * m.clearcoat;
}

inline Vec3 evalBSDF(const ShadeMaterial& m, const Vec3& wo, const Vec3& wi)
{
    Vec3 diffuse, glossy;
    evalBSDFParts(m, wo, wi, diffuse, glossy);
    return diffuse + glossy;
}

// The pdf of wi under the non-delta lobes, as sampleBSDF chooses them.
inline float pdfBSDF(const ShadeMaterial& m, const Lobes& lobes, const Vec3& wo, const Vec3& wi)
{
    if (lobes.sum <= 0.0f || wi[2] <= 0.0f)
        return 0.0f;
    float pdf = lobes.diffuse * wi[2] / kPi + lobes.specular * ggxReflectionPdf(wo, wi, m.alpha);
    if (lobes.coat > 0.0f)
        pdf += lobes.coat * ggxReflectionPdf(wo, wi, m.clearcoatAlpha);
    return pdf / lobes.sum;
}

} // namespace oxRay

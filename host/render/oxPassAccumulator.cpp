#include "oxPassAccumulator.h"

#include "oxImagePasses.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace oxRay {

namespace {

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

void put(float* pixel, const Vec3& rgb, float alpha)
{
    pixel[0] = rgb[0];
    pixel[1] = rgb[1];
    pixel[2] = rgb[2];
    pixel[3] = alpha;
}

// The passes written besides the Cryptomatte layers.
const oxImagePasses::Id kPasses[] = {oxImagePasses::Beauty,       oxImagePasses::BackgroundColor,
                                     oxImagePasses::Occlusion,    oxImagePasses::Albedo,
                                     oxImagePasses::Normal,       oxImagePasses::Depth,
                                     oxImagePasses::MaterialID,   oxImagePasses::Mask,
                                     oxImagePasses::Position,     oxImagePasses::ViewVector,
                                     oxImagePasses::CameraNormal, oxImagePasses::GPUDepth};

constexpr unsigned bit(LightChannel channel) { return 1u << channel; }
constexpr int kCombined = -1;

// The light passes: the channels each adds up, and the colour it is or divides them by.
// A combined channel is a sum of channels; a colour pass has no channels; an illumination
// is its channels divided by its colour, so that colour times illumination gives the
// combined channel back.
struct LightPass {
    oxImagePasses::Id id;
    unsigned channels;
    int colour;
};
const LightPass kLightPasses[] = {
    {oxImagePasses::DiffuseIBL, bit(ChDiffuseIBL), kCombined},
    {oxImagePasses::DiffuseLight, bit(ChDiffuseLight), kCombined},
    {oxImagePasses::GlossyIBL, bit(ChGlossyIBL), kCombined},
    {oxImagePasses::GlossyLight, bit(ChGlossyLight), kCombined},
    {oxImagePasses::SpecularReflection, bit(ChSpecular), kCombined},
    {oxImagePasses::Translucency,
     bit(ChTranslucencyIBL) | bit(ChTranslucencyLight) | bit(ChTranslucencyIndirect), kCombined},
    {oxImagePasses::Incandescence, bit(ChIncandescence), kCombined},
    {oxImagePasses::DiffuseIndirect, bit(ChDiffuseIndirect), kCombined},
    {oxImagePasses::GlossyIndirect, bit(ChGlossyIndirect), kCombined},
    {oxImagePasses::DiffuseColor, 0, ColDiffuse},
    {oxImagePasses::GlossyColor, 0, ColGlossy},
    {oxImagePasses::SpecularColor, 0, ColSpecular},
    {oxImagePasses::TranslucencyColor, 0, ColTranslucency},
    {oxImagePasses::TransparencyColor, 0, ColTransparency},
    {oxImagePasses::DiffuseIBLIllumination, bit(ChDiffuseIBL), ColDiffuse},
    {oxImagePasses::GlossyIBLIllumination, bit(ChGlossyIBL), ColGlossy},
    {oxImagePasses::TranslucencyIBLIllumination, bit(ChTranslucencyIBL), ColTranslucency},
    {oxImagePasses::DiffuseLightIllumination, bit(ChDiffuseLight), ColDiffuse},
    {oxImagePasses::GlossyLightIllumination, bit(ChGlossyLight), ColGlossy},
    {oxImagePasses::TranslucencyLightIllumination, bit(ChTranslucencyLight), ColTranslucency},
    {oxImagePasses::DiffuseIndirectIllumination, bit(ChDiffuseIndirect), ColDiffuse},
    {oxImagePasses::GlossyIndirectIllumination, bit(ChGlossyIndirect), ColGlossy},
    {oxImagePasses::SpecularIndirectIllumination, bit(ChSpecular), ColSpecular},
    {oxImagePasses::TranslucencyIndirectIllumination, bit(ChTranslucencyIndirect), ColTranslucency},
};
static_assert(std::size(kLightPasses) == lightPassCount, "one sum per light pass");

// The light pass of an id, or -1.
int lightPassOf(unsigned passId)
{
    for (size_t i = 0; i < std::size(kLightPasses); ++i)
        if (kLightPasses[i].id == passId)
            return int(i);
    return -1;
}

// What one sample gives a light pass.
Vec3 lightPassValue(const LightPass& pass, const SampleResult& result)
{
    Vec3 sum{0, 0, 0};
    for (unsigned c = 0; c < kLightChannels; ++c)
        if (pass.channels & (1u << c))
            sum = sum + result.channels[c];
    if (pass.colour == kCombined)
        return sum;
    const Vec3& colour = result.colours[size_t(pass.colour)];
    if (pass.channels == 0)
        return colour;
    Vec3 illumination;
    for (size_t c = 0; c < 3; ++c)
        illumination[c] = colour[c] > 1e-4f ? sum[c] / colour[c] : 0.0f;
    return illumination;
}

} // namespace

bool writesPass(unsigned passId)
{
    return oxImagePasses::isCryptomatte(passId) || lightPassOf(passId) >= 0 ||
           std::find(std::begin(kPasses), std::end(kPasses), passId) != std::end(kPasses);
}

PassNeeds passNeeds(const std::vector<unsigned>& passIds)
{
    PassNeeds needs;
    for (unsigned id : passIds) {
        needs.beauty |= id == oxImagePasses::Beauty;
        needs.occlusion |= id == oxImagePasses::Occlusion;
        needs.data |= id == oxImagePasses::Albedo || id == oxImagePasses::Normal ||
                      id == oxImagePasses::Depth || id == oxImagePasses::MaterialID ||
                      id == oxImagePasses::Position || id == oxImagePasses::CameraNormal ||
                      id == oxImagePasses::GPUDepth;
        needs.background |= id == oxImagePasses::BackgroundColor;
        needs.view |= id == oxImagePasses::ViewVector;
        needs.light |= lightPassOf(id) >= 0;
        needs.cryptoObject |=
            id >= oxImagePasses::cryptoObjectFirst && id < oxImagePasses::cryptoMaterialFirst;
        needs.cryptoMaterial |=
            id >= oxImagePasses::cryptoMaterialFirst &&
            id < oxImagePasses::cryptoMaterialFirst + oxImagePasses::cryptoLayersPerType;
    }
    return needs;
}

size_t keptSumCount(const PassNeeds& needs)
{
    PixelSums sums;
    size_t count = 0;
    forEachKeptSum(sums, needs, [&](float&) { ++count; });
    return count;
}

PassAccumulator::PassAccumulator(const PassNeeds& needs, const oxRaytracer::Settings& settings)
    : m_needs(needs), m_clampValue(settings.clamping ? settings.clampValue : 0.0f),
      m_alpha(settings.alpha), m_alphaColor(settings.alphaColor),
      m_premultiply(settings.premultiply)
{}

void PassAccumulator::setDepthRange(float nearDistance, float farDistance)
{
    // A camera without a near plane gets one a millimetre away, as rasterisers need one.
    m_near = nearDistance > 0.0f ? nearDistance : 1e-3f;
    m_far = std::max(farDistance, m_near * 2.0f);
}

void PassAccumulator::accumulate(PixelSums& sums, CoverageLists& lists, const SampleResult& result,
                                 float w) const
{
    const float aw = std::fabs(w);
    sums.weight += w;
    sums.absWeight += aw;
    if (m_needs.background)
        sums.background = sums.background + result.background * w;
    if (m_needs.view)
        sums.view = sums.view + result.view * aw;
    sums.occlusion += result.occlusion * aw;
    if (!result.hit) {
        if (m_needs.behind)
            sums.behind = sums.behind + result.background * w;
        return;
    }
    Vec3 beauty = result.beauty;
    if (m_clampValue > 0.0f)
        for (float& c : beauty)
            c = std::min(c, m_clampValue);
    sums.hitWeight += w;
    sums.hitAbsWeight += aw;
    sums.beauty = sums.beauty + beauty * w;
    if (m_needs.data) {
        sums.albedo = sums.albedo + result.albedo * aw;
        sums.normal = sums.normal + result.normal * aw;
        sums.cameraNormal = sums.cameraNormal + result.cameraNormal * aw;
        sums.position = sums.position + result.position * aw;
        sums.idColor = sums.idColor + result.idColor * aw;
        sums.depth += result.depth * aw;
    }
    if (m_needs.light)
        for (size_t i = 0; i < lightPassCount; ++i)
            sums.light[i] = sums.light[i] + lightPassValue(kLightPasses[i], result) *
                                                (kLightPasses[i].colour == kCombined ? w : aw);
    if (m_needs.cryptoObject)
        addCoverage(lists.objects, result.objectId, aw);
    if (m_needs.cryptoMaterial)
        addCoverage(lists.materials, result.materialId, aw);
}

void PassAccumulator::finish(oxRenderedImage& image, int x, int y, const PixelSums& sums,
                             CoverageLists& lists) const
{
    const float norm = std::fabs(sums.weight) > 1e-12f ? 1.0f / sums.weight : 0.0f;
    const float absNorm = sums.absWeight > 0.0f ? 1.0f / sums.absWeight : 0.0f;
    const float hitNorm = sums.hitAbsWeight > 0.0f ? 1.0f / sums.hitAbsWeight : 0.0f;
    const float coverage = std::clamp(sums.hitWeight * norm, 0.0f, 1.0f);
    const float dataAlpha = m_alpha ? coverage : 1.0f;
    if (m_needs.cryptoObject)
        rank(lists.objects);
    if (m_needs.cryptoMaterial)
        rank(lists.materials);
    const size_t index = (size_t(y) * size_t(image.width) + size_t(x)) * 4;
    for (oxRenderedPass& pass : image.passes) {
        float* pixel = pass.rgba.data() + index;
        switch (pass.passId) {
        case oxImagePasses::Beauty: {
            // Without alpha the camera sees the environment past the objects. With
            // premultiplied alpha the background colour is the matte the colours are
            // premultiplied against: black gives the usual colour times coverage.
            const Vec3 premultiplied = sums.beauty * norm;
            const Vec3 matte{m_alphaColor[0], m_alphaColor[1], m_alphaColor[2]};
            if (!m_alpha) {
                put(pixel,
                    premultiplied +
                        (m_needs.behind ? sums.behind * norm : matte * (1.0f - coverage)),
                    1.0f);
            } else if (m_premultiply) {
                put(pixel, premultiplied + matte * (1.0f - coverage), coverage);
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
        case oxImagePasses::GPUDepth: {
            // What a rasteriser's depth buffer holds: 1 / depth, linear from the near plane
            // (0) to the far plane (1), where everything missed lies.
            const float depth = sums.hitAbsWeight > 0.0f ? sums.depth * hitNorm : m_far;
            const float value = std::clamp((1.0f / m_near - 1.0f / std::max(depth, m_near)) /
                                               (1.0f / m_near - 1.0f / m_far),
                                           0.0f, 1.0f);
            put(pixel, Vec3{1, 1, 1} * value, dataAlpha);
            break;
        }
        case oxImagePasses::CameraNormal:
            put(pixel, sums.cameraNormal * hitNorm, dataAlpha);
            break;
        default: {
            if (const int light = lightPassOf(pass.passId); light >= 0) {
                // Combined channels are premultiplied as the beauty; the rest as the albedo.
                if (kLightPasses[light].colour == kCombined)
                    put(pixel, sums.light[size_t(light)] * norm, m_alpha ? coverage : 1.0f);
                else
                    put(pixel, sums.light[size_t(light)] * hitNorm, dataAlpha);
                break;
            }
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
}

} // namespace oxRay

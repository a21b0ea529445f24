#pragma once

#include "oxImageSource.h"
#include "oxRayMath.h"
#include "oxRayShading.h"
#include "oxRaytracer.h"

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

// Pass accumulation: the filtered sums of each pixel's samples, what of them a pixel keeps
// between refinement rounds, and the pixels of every requested pass made from them.
namespace oxRay {

/// The passes made of the light channels: the combined channels, the colours behind them and
/// their illuminations (lightPassCount of them, in the order of the table in the .cpp file).
constexpr size_t lightPassCount = 24;

// Filtered sums of one pixel.
struct PixelSums {
    float weight = 0.0f;       // all samples, signed filter weights
    float absWeight = 0.0f;    // all samples, |weights|
    float hitWeight = 0.0f;    // hit samples, signed
    float hitAbsWeight = 0.0f; // hit samples, |weights|
    Vec3 beauty{0, 0, 0};      // hit samples, signed
    Vec3 background{0, 0, 0};  // all samples
    Vec3 behind{0, 0, 0};      // missed samples, signed: the environment past the objects
    Vec3 view{0, 0, 0};        // all samples
    float occlusion = 0.0f;    // all samples
    Vec3 albedo{0, 0, 0}, normal{0, 0, 0}, cameraNormal{0, 0, 0}, position{0, 0, 0},
        idColor{0, 0, 0}; // hit samples, |weights|
    float depth = 0.0f;
    // The light passes: combined channels hit samples, signed (as the beauty); colours and
    // illuminations hit samples, |weights| (as the albedo).
    std::array<Vec3, lightPassCount> light{};
};

// Cryptomatte coverage of one pixel, (id, |weight|); kept per tile to spare allocations.
struct CoverageLists {
    std::vector<std::pair<float, float>> objects;
    std::vector<std::pair<float, float>> materials;
};

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
    if (needs.behind)
        for (float& c : sums.behind)
            visit(c);
    if (needs.occlusion)
        visit(sums.occlusion);
    if (needs.light)
        for (Vec3& v : sums.light)
            for (float& c : v)
                visit(c);
    if (needs.data) {
        for (Vec3* v :
             {&sums.albedo, &sums.normal, &sums.cameraNormal, &sums.position, &sums.idColor})
            for (float& c : *v)
                visit(c);
        visit(sums.depth);
    }
}

/// How many floats forEachKeptSum visits for these needs.
size_t keptSumCount(const PassNeeds& needs);

/// True for the pass ids that PassAccumulator writes.
bool writesPass(unsigned passId);
/// What the passes of these ids need of each sample.
PassNeeds passNeeds(const std::vector<unsigned>& passIds);

/// Sums camera samples into pixels and writes the pixels of the requested passes.
class PassAccumulator {
public:
    PassAccumulator(const PassNeeds& needs, const oxRaytracer::Settings& settings);

    /// Adds one sample of filter weight w to a pixel's sums.
    void accumulate(PixelSums& sums, CoverageLists& lists, const SampleResult& result,
                    float w) const;
    /// The camera's near and far planes, for the depth buffer pass.
    void setDepthRange(float nearDistance, float farDistance);
    /// Writes pixel (x, y) of every pass of image from its sums; ranks its coverage lists.
    void finish(oxRenderedImage& image, int x, int y, const PixelSums& sums,
                CoverageLists& lists) const;

private:
    PassNeeds m_needs;
    float m_clampValue;
    bool m_alpha;
    std::array<float, 3> m_alphaColor;
    bool m_premultiply;
    float m_near = 1e-3f;
    float m_far = 1e30f;
};

} // namespace oxRay

#pragma once

#include "oxRaytracer.h"

#include <algorithm>
#include <array>
#include <cstddef>

// The pixel filters: separable weights over the normalised footprint x in [-1, 1], keyed by
// the pixel filter id, and their importance sampling.
namespace oxRay {

struct PixelFilterEntry {
    int id;
    float (*weight)(float x);
};

/// The filters by id: box, triangle, Gaussian, Mitchell-Netravali, Lanczos, B-spline,
/// Catmull-Rom, sharp triangle, sharp Gaussian, sharp B-spline.
extern const PixelFilterEntry kPixelFilters[oxRaytracer::pixelFilterCount];

/// The filter of an id, or null for an unknown id.
const PixelFilterEntry* findFilter(int id);

// Samples a filter by importance: sub-pixel offsets are drawn in proportion to |f|, so that each
// sample weighs only its sign and no sample is wasted where the filter is small.
class FilterSampler {
public:
    explicit FilterSampler(const PixelFilterEntry& filter);

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

} // namespace oxRay

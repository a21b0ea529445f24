#include "oxPixelFilterKernels.h"

#include "oxRayMath.h"

#include <cmath>

namespace oxRay {

namespace {

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

} // namespace

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

FilterSampler::FilterSampler(const PixelFilterEntry& filter) : m_filter(filter)
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

} // namespace oxRay

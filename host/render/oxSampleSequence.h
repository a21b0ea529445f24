#pragma once

#include <cmath>
#include <cstdint>

// Deterministic sampling: every random number is a hash of (pixel, sample, dimension), never
// shared random state, so that a render doesn't depend on the order in which threads take
// their tiles.
namespace oxRay {

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

// The dimensions a sample draws from: the sub-pixel position, the sky and reflection rays,
// one per light from DimLights on, the time within the shutter interval and one per
// occlusion ray from kAODimensionBase on.
enum Dimension : uint32_t { DimPixel = 0, DimEnvironment = 1, DimReflection = 2, DimLights = 3 };
constexpr uint32_t kTimeDimension = 1u << 15; // above any light's dimension
constexpr uint32_t kAODimensionBase = 1u << 16;

} // namespace oxRay

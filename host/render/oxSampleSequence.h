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

inline uint32_t reverseBits(uint32_t v)
{
    v = ((v >> 1) & 0x55555555u) | ((v & 0x55555555u) << 1);
    v = ((v >> 2) & 0x33333333u) | ((v & 0x33333333u) << 2);
    v = ((v >> 4) & 0x0f0f0f0fu) | ((v & 0x0f0f0f0fu) << 4);
    v = ((v >> 8) & 0x00ff00ffu) | ((v & 0x00ff00ffu) << 8);
    return (v >> 16) | (v << 16);
}

// A random permutation of the binary digits' tree, each bit flipped by a hash of the bits
// above it (Owen scrambling); on reversed bits a hash that mixes only upwards does that.
inline uint32_t owenScramble(uint32_t v, uint32_t seed)
{
    v = reverseBits(v);
    v += seed;
    v ^= v * 0x6c50b47cu;
    v ^= v * 0xb82f1e52u;
    v ^= v * 0xc7afe638u;
    v ^= v * 0x8d22f6e6u;
    return reverseBits(v);
}

// The second dimension of the Sobol sequence (the first is the bit-reversed index).
inline uint32_t sobolSecond(uint32_t index)
{
    uint32_t result = 0;
    for (uint32_t v = 1u << 31; index != 0; index >>= 1, v ^= v >> 1)
        if (index & 1u)
            result ^= v;
    return result;
}

// The sub-pixel position follows the R2 low-discrepancy sequence, rotated per pixel, so that
// few samples already cover the pixel evenly. Every other dimension pair is a 2D Sobol
// sequence, Owen-scrambled and with its sample order shuffled by a hash of (pixel, dimension):
// each pair on its own is stratified as well as the sample count allows (the first 2^k
// samples of a pixel fill every cell of a 2^k grid of elementary intervals), while different
// pairs stay independent of each other and of the sub-pixel position, so that light and
// surface rays aren't tied to a sample's place in the pixel.
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
        const uint32_t seed = hash32(pixel ^ hash32(dimension * 0x9e3779b1u + 0x85ebca6bu));
        const uint32_t index = owenScramble(sample, seed);
        const uint32_t x = owenScramble(reverseBits(index), hash32(seed ^ 0x27d4eb2fu));
        const uint32_t y = owenScramble(sobolSecond(index), hash32(seed ^ 0x165667b1u));
        u = float(x >> 8) * (1.0f / 16777216.0f);
        v = float(y >> 8) * (1.0f / 16777216.0f);
    }
};

// The dimensions a sample draws from: the sub-pixel position, the sky and reflection rays,
// one per light from DimLights on, the time within the shutter interval and one per
// occlusion ray from kAODimensionBase on.
enum Dimension : uint32_t { DimPixel = 0, DimEnvironment = 1, DimReflection = 2, DimLights = 3 };
constexpr uint32_t kTimeDimension = 1u << 15; // above any light's dimension
constexpr uint32_t kAODimensionBase = 1u << 16;

} // namespace oxRay

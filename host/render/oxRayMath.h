#pragma once

#include <array>
#include <cmath>

/// oxRay holds the raytracer's parts, each in a file pair of its own: vector math (here),
/// sample sequences, pixel filters, shading, pass accumulation and the Embree scene.
/// oxRaytracer.cpp puts them together in its render loop.
namespace oxRay {

constexpr float kPi = 3.14159265358979f;

using Vec3 = std::array<float, 3>;

inline Vec3 operator+(const Vec3& a, const Vec3& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
inline Vec3 operator-(const Vec3& a, const Vec3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Vec3 operator*(const Vec3& a, float s) { return {a[0] * s, a[1] * s, a[2] * s}; }
inline Vec3 operator*(const Vec3& a, const Vec3& b)
{
    return {a[0] * b[0], a[1] * b[1], a[2] * b[2]};
}
inline float dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline Vec3 cross(const Vec3& a, const Vec3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline Vec3 normalize(const Vec3& v)
{
    const float length = std::sqrt(dot(v, v));
    return length > 0.0f ? v * (1.0f / length) : Vec3{0, 0, 1};
}
inline Vec3 lerp(const Vec3& a, const Vec3& b, float t) { return a * (1.0f - t) + b * t; }

// Two unit vectors perpendicular to n and to each other.
inline void basis(const Vec3& n, Vec3& t, Vec3& b)
{
    t = normalize(std::fabs(n[0]) > 0.9f ? cross(n, Vec3{0, 1, 0}) : cross(n, Vec3{1, 0, 0}));
    b = cross(n, t);
}

} // namespace oxRay

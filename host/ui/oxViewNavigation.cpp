#include "oxViewNavigation.h"

#include <algorithm>
#include <cmath>

namespace {

using osg::Quaternion;
using osg::Vec3f;

Vec3f vadd(const Vec3f& a, const Vec3f& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Vec3f vsub(const Vec3f& a, const Vec3f& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Vec3f scale(const Vec3f& a, float s) { return {a[0] * s, a[1] * s, a[2] * s}; }
float dot(const Vec3f& a, const Vec3f& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
float length(const Vec3f& a) { return std::sqrt(dot(a, a)); }

Quaternion multiply(const Quaternion& a, const Quaternion& b)
{
    return {a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1],
            a[3] * b[1] - a[0] * b[2] + a[1] * b[3] + a[2] * b[0],
            a[3] * b[2] + a[0] * b[1] - a[1] * b[0] + a[2] * b[3],
            a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2]};
}

Quaternion axisAngle(const Vec3f& axis, float angle)
{
    const float len = length(axis);
    if (len < 1e-12f)
        return {0, 0, 0, 1};
    const float s = std::sin(angle * 0.5f) / len;
    return {axis[0] * s, axis[1] * s, axis[2] * s, std::cos(angle * 0.5f)};
}

Quaternion normalized(Quaternion q)
{
    const float len = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    if (len < 1e-12f)
        return {0, 0, 0, 1};
    for (float& v : q)
        v /= len;
    return q;
}

Vec3f rotate(const Quaternion& q, const Vec3f& v)
{
    return osg::transformVector(osg::matrixFromTRS({0, 0, 0}, q, {1, 1, 1}), v);
}

const Vec3f kWorldUp{0, 1, 0};
// How close to straight up or down a pitch may turn the view (cosine of the angle).
constexpr float kMaxPitchCosine = 0.995f;

// The pitch limited so that the forward axis never lines up with world up, where yaw would
// lose its meaning and the image would roll.
float limitPitch(const oxViewPose& pose, float pitch)
{
    const Vec3f f = oxViewNavigation::forward(pose);
    const float current = std::asin(std::clamp(dot(f, kWorldUp), -1.0f, 1.0f));
    const float limit = std::acos(kMaxPitchCosine);
    const float top = float(M_PI) * 0.5f - limit;
    return std::clamp(current + pitch, -top, top) - current;
}

} // namespace

void oxViewBounds::add(const osg::Vec3f& point)
{
    if (empty) {
        min = max = point;
        empty = false;
        return;
    }
    for (int i = 0; i < 3; ++i) {
        min[i] = std::min(min[i], point[i]);
        max[i] = std::max(max[i], point[i]);
    }
}

osg::Vec3f oxViewBounds::center() const { return scale(vadd(min, max), 0.5f); }

float oxViewBounds::radius() const { return empty ? 0.0f : 0.5f * length(vsub(max, min)); }

namespace oxViewNavigation {

Vec3f forward(const oxViewPose& pose) { return rotate(pose.orientation, {0, 0, -1}); }
Vec3f right(const oxViewPose& pose) { return rotate(pose.orientation, {1, 0, 0}); }
Vec3f up(const oxViewPose& pose) { return rotate(pose.orientation, {0, 1, 0}); }

oxViewPose look(const oxViewPose& pose, float yaw, float pitch)
{
    pitch = limitPitch(pose, pitch);
    const Quaternion turn = multiply(axisAngle(kWorldUp, yaw), axisAngle(right(pose), pitch));
    oxViewPose result = pose;
    result.orientation = normalized(multiply(turn, pose.orientation));
    return result;
}

oxViewPose orbit(const oxViewPose& pose, const osg::Vec3f& pivot, float yaw, float pitch)
{
    pitch = limitPitch(pose, pitch);
    const Quaternion turn = multiply(axisAngle(kWorldUp, yaw), axisAngle(right(pose), pitch));
    oxViewPose result;
    result.position = vadd(pivot, rotate(turn, vsub(pose.position, pivot)));
    result.orientation = normalized(multiply(turn, pose.orientation));
    return result;
}

oxViewPose pan(const oxViewPose& pose, float dx, float dy)
{
    oxViewPose result = pose;
    result.position = vadd(pose.position, vadd(scale(right(pose), dx), scale(up(pose), dy)));
    return result;
}

oxViewPose dolly(const oxViewPose& pose, const osg::Vec3f& pivot, float fraction)
{
    // A step never takes more than 90% of the way, so the pivot stays ahead of the camera.
    fraction = std::min(fraction, 0.9f);
    oxViewPose result = pose;
    result.position = vadd(pose.position, scale(vsub(pivot, pose.position), fraction));
    return result;
}

oxViewPose fly(const oxViewPose& pose, float forwardDistance, float rightDistance, float upDistance)
{
    oxViewPose result = pose;
    result.position = vadd(
        pose.position, vadd(scale(forward(pose), forwardDistance),
                            vadd(scale(right(pose), rightDistance), scale(up(pose), upDistance))));
    return result;
}

oxViewPose frame(const oxViewPose& pose, const oxViewBounds& bounds, float verticalFov,
                 float aspect)
{
    if (bounds.empty)
        return pose;
    const float halfV = std::clamp(verticalFov, 1.0f, 170.0f) * float(M_PI) / 360.0f;
    const float halfH = std::atan(std::tan(halfV) * std::max(aspect, 1e-3f));
    const float half = std::min(halfV, halfH);
    // 5% margin around the sphere, so the silhouette doesn't touch the image's edge.
    const float distance = std::max(bounds.radius(), 1e-3f) * 1.05f / std::sin(half);
    oxViewPose result = pose;
    result.position = vsub(bounds.center(), scale(forward(pose), distance));
    return result;
}

oxViewPose interpolate(const oxViewPose& a, const oxViewPose& b, float t)
{
    t = std::clamp(t, 0.0f, 1.0f);
    const float eased = t * t * (3.0f - 2.0f * t);
    oxViewPose result;
    result.position = vadd(a.position, scale(vsub(b.position, a.position), eased));
    result.orientation = osg::slerp(a.orientation, b.orientation, eased);
    return result;
}

} // namespace oxViewNavigation

#pragma once

#include "oxSceneGraph.h"

/// A camera pose in world space: the camera looks down its local -Z with +Y up.
struct oxViewPose {
    osg::Vec3f position{0, 0, 0};
    osg::Quaternion orientation{0, 0, 0, 1};
};

/// An axis-aligned box in world space; empty until a point is added.
struct oxViewBounds {
    osg::Vec3f min{0, 0, 0};
    osg::Vec3f max{0, 0, 0};
    bool empty = true;
    void add(const osg::Vec3f& point);
    osg::Vec3f center() const;
    /// Half the box's diagonal: the radius of a sphere around it.
    float radius() const;
};

/// The camera moves of the render view, as pure functions of a pose. World up is +Y; angles
/// are in radians. The pivot is the point the camera orbits and zooms towards.
namespace oxViewNavigation {

osg::Vec3f forward(const oxViewPose& pose);
osg::Vec3f right(const oxViewPose& pose);
osg::Vec3f up(const oxViewPose& pose);

/// Turns the camera around pivot: yaw about world up, pitch about the camera's right axis.
/// The distance to the pivot is kept; pitch stops short of looking straight up or down.
oxViewPose orbit(const oxViewPose& pose, const osg::Vec3f& pivot, float yaw, float pitch);
/// Shifts the camera (and the pivot with it) along its right and up axes.
oxViewPose pan(const oxViewPose& pose, float dx, float dy);
/// Moves the camera towards the pivot by fraction of the distance (negative: away); it never
/// reaches or passes the pivot.
oxViewPose dolly(const oxViewPose& pose, const osg::Vec3f& pivot, float fraction);
/// Moves the camera in its own frame: forward, right and up distances.
oxViewPose fly(const oxViewPose& pose, float forwardDistance, float rightDistance,
               float upDistance);
/// Turns the camera in place: yaw about world up, pitch about its right axis.
oxViewPose look(const oxViewPose& pose, float yaw, float pitch);
/// Keeps the direction and moves the camera back along it until the sphere around bounds fits
/// the smaller of the two fields of view (degrees) with a small margin.
oxViewPose frame(const oxViewPose& pose, const oxViewBounds& bounds, float verticalFov,
                 float aspect);
/// The pose at t in [0, 1] on the way from a to b, eased in and out.
oxViewPose interpolate(const oxViewPose& a, const oxViewPose& b, float t);

} // namespace oxViewNavigation

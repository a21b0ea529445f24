#pragma once

#include "oxRenderServiceSupport.h"

#include <vector>

namespace osg {
class Node;
}

// The NURBS raytracing settings of the raytracer, one row each: X(type, Name, start value);
// virtual getName() and setName(value).
#define OX_RAYTRACING_NURBS_SETTINGS(X)                                                            \
    X(int, NurbsMode, 0)                                                                           \
    X(float, NurbsEpsilon, 0.01f)                                                                  \
    X(float, NurbsNewtonEpsilon, 0.005f)                                                           \
    X(bool, NurbsUsePreclassification, true)                                                       \
    X(int, NurbsMinDepthSurface, 2)                                                                \
    X(int, NurbsMaxDepthSurface, 8)                                                                \
    X(float, NurbsThresholdSurface, 0.975f)                                                        \
    X(int, NurbsMinDepthCurve, 0)                                                                  \
    X(int, NurbsMaxDepthCurve, 6)                                                                  \
    X(float, NurbsThresholdCurve, 0.975f)

/// The raytracer's utilities: its NURBS raytracing settings and the hand-over of the pixel
/// filter. The host's own raytracer uses this class as it stands; another raytracer may
/// derive from it.
///
/// Setters record their call in oxCallTrace and tell the listeners the setting's name when the
/// value changed.
class oxRaytracingUtilsBase {
public:
    /// The pixel filter the raytracer renders with.
    struct PixelFilter {
        int type = 7;
        float width = 1.0f;
        float height = 1.0f;
    };

    oxRaytracingUtilsBase() = default;
    virtual ~oxRaytracingUtilsBase() = default;
    oxRaytracingUtilsBase(const oxRaytracingUtilsBase&) = delete;
    oxRaytracingUtilsBase& operator=(const oxRaytracingUtilsBase&) = delete;

#define OX_RAYTRACING_UTILS_DECLARE(type, name, start)                                             \
    virtual type get##name() const;                                                                \
    virtual void set##name(type value);
    OX_RAYTRACING_NURBS_SETTINGS(OX_RAYTRACING_UTILS_DECLARE)
#undef OX_RAYTRACING_UTILS_DECLARE

    /// Makes the raytracer take over the current filter of oxPixelfilterFactory.
    virtual void updatePixelFilter();
    /// The filter taken over by the last updatePixelFilter (the start filter before).
    PixelFilter getActivePixelFilter() const { return m_activeFilter; }

    /// Traces numPhotons photons from the current scene's lights, each for up to maxDepth
    /// surface hits, and writes the rays that land to filename as an ASCII ray file (format in
    /// oxRayFile.h), atomically. lights: the light nodes to trace from, empty for all lights
    /// and the environment; everyHit: keep a ray at every hit, not only where a surface has a
    /// diffuse part. The same scene gives the same file. False, with an error in the log that
    /// names the file, when the scene can't be traced or the file can't be written. Records
    /// the call.
    virtual bool generateRayFile(const char* filename, unsigned numPhotons, unsigned maxDepth,
                                 const std::vector<const osg::Node*>& lights, bool everyHit);

    /// Back to the start settings, without trace and without notice.
    virtual void resetToDefaults();

    int addListener(oxServiceListeners::Listener listener);
    void removeListener(int handle);

private:
#define OX_RAYTRACING_UTILS_MEMBER(type, name, start) type m_##name = start;
    OX_RAYTRACING_NURBS_SETTINGS(OX_RAYTRACING_UTILS_MEMBER)
#undef OX_RAYTRACING_UTILS_MEMBER
    PixelFilter m_activeFilter;
    oxServiceListeners m_listeners;
};

#pragma once

#include "oxRenderServiceSupport.h"

// The render view's state, one row each: X(type, Name, start value); getName() and setName().
#define OX_OSG_WIDGET_STATE(X)                                                                     \
    X(int, SamplesThreshold, 1)                                                                    \
    X(int, ImageSamples, 256)                                                                      \
    X(float, DisplayLuminance, 100.0f)                                                             \
    X(float, Sim2LuminanceMapping, 1.0f)                                                           \
    X(bool, Raytracing, true)                                                                      \
    X(bool, MotionBlur, true)

/// The host's main render view: the display side of raytracing (the sample count it refines
/// to, the sample at which it starts updating, display luminance, whether it raytraces at all).
///
/// Setters record their call in oxCallTrace and tell the listeners the state's name when the
/// value changed.
class oxOSGWidget {
public:
#define OX_OSG_WIDGET_DECLARE(type, name, start)                                                   \
    static type get##name();                                                                       \
    static void set##name(type value);
    OX_OSG_WIDGET_STATE(OX_OSG_WIDGET_DECLARE)
#undef OX_OSG_WIDGET_DECLARE

    /// Depth of field of still frames.
    static void enableStillDOF(bool enable);
    static bool isStillDOFEnabled();

    /// Switches the raytracer between CPU and GPU and between RGB and spectral rendering.
    static void setRaytracingMode(bool spectral, bool gpu);
    static bool getGpuRaytracing();
    static bool getSpectralRaytracingMode();

    /// Back to the start state, without trace and without notice.
    static void resetToDefaults();

    static int addListener(oxServiceListeners::Listener listener);
    static void removeListener(int handle);
};

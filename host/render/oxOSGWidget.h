#pragma once

#include "oxRenderServiceSupport.h"

#include <QString>

// The render view's state, one row each: X(type, Name, start value); getName() and setName().
#define OX_OSG_WIDGET_STATE(X)                                                                     \
    X(int, SamplesThreshold, 1)                                                                    \
    X(int, ImageSamples, 256)                                                                      \
    X(float, DisplayLuminance, 100.0f)                                                             \
    X(float, Sim2LuminanceMapping, 1.0f)                                                           \
    X(bool, Raytracing, true)                                                                      \
    X(bool, MotionBlur, true)                                                                      \
    X(bool, RGB16F, false)                                                                         \
    X(int, ViewWidth, 1280)                                                                        \
    X(int, ViewHeight, 720)

/// The host's main render view: the display side of raytracing (the sample count it refines
/// to, the sample at which it starts updating, display luminance, whether it raytraces at all).
///
/// Setters record their call in oxCallTrace and tell the listeners the state's name when the
/// value changed. RGB16F: the view shows floating point (HDR) images; ViewWidth/ViewHeight: the
/// size of the view's image.
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

    /// The render view of that index; -1 (and 0) is the main view, which always exists.
    /// Null for any other index: this host has one view.
    static oxOSGWidget* getMGLW(int index);

    /// Renders what widget shows, at the view's size and with its samples, and writes it to
    /// fileName (any writable format; with RGB16F on, EXR keeps the floating point values).
    /// False, with the reason in the log, when nothing could be rendered or written.
    static bool writeImage(oxOSGWidget* widget, const QString& fileName);

    /// Back to the start state, without trace and without notice.
    static void resetToDefaults();

    static int addListener(oxServiceListeners::Listener listener);
    static void removeListener(int handle);
};

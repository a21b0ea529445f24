#pragma once

#include "oxRenderServiceSupport.h"

#include <QString>

#include <array>

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
    X(int, ViewHeight, 720)                                                                        \
    X(int, DisplayColorspace, 0)                                                                   \
    X(int, FovMode, 0)                                                                             \
    X(bool, ScreenSpaceAO, false)                                                                  \
    X(int, ScreenSpaceAOSamples, 2)                                                                \
    X(float, ScreenSpaceAOIntensity, 0.7f)                                                         \
    X(float, ScreenSpaceAORadius, 750.0f)                                                          \
    X(int, ScreenSpaceAOBlurAmount, 8)                                                             \
    X(float, ScreenSpaceAOCutoffAngle, 5.0f)                                                       \
    X(float, ScreenSpaceAOEdgePreservation, 0.2f)                                                  \
    X(bool, DepthPeelEnabled, false)                                                               \
    X(int, DepthPeelNumLayers, 8)

/// The host's main render view: the display side of raytracing (the sample count it refines
/// to, the sample at which it starts updating, display luminance, whether it raytraces at all).
///
/// Setters record their call in oxCallTrace and tell the listeners the state's name when the
/// value changed. RGB16F: the view shows floating point (HDR) images; ViewWidth/ViewHeight: the
/// size of the view's image; DisplayColorspace: the colour space the view displays in (0 sRGB);
/// FovMode: the field of view of the view's camera is horizontal (non-zero) or vertical (0);
/// ScreenSpaceAO*: the view's screen space ambient occlusion (on, sample quality, weight, sample
/// radius, blur filter size, cutoff angle in degrees, edge preservation); DepthPeel*:
/// transparency by depth peeling and its number of layers.
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

    /// Switches the raytracer between CPU and GPU and between RGB and spectral rendering. This
    /// host renders on the CPU whatever the mode: the GPU switch is kept and reported, and
    /// turning it on logs (once per switch-on) that rendering stays on the CPU.
    static void setRaytracingMode(bool spectral, bool gpu);
    static bool getGpuRaytracing();
    static bool getSpectralRaytracingMode();
    /// The GPUs (one bit each, bit 0 the first) that GPU raytracing may use; it takes effect
    /// when GPU raytracing is switched on. Kept and reported only: this host has no GPU
    /// raytracer. Records the call.
    static void setActiveGpuRaytracingMask(unsigned mask);
    static unsigned getActiveGpuRaytracingMask();

    /// The display gamma of the red, green and blue channels.
    static void setDisplayGamma(const std::array<float, 3>& gamma);
    static std::array<float, 3> getDisplayGamma();

    /// The view's post-processing, all flags at once. getPostprocessingFlags gives them as
    /// bits: 0 dithering, 1 dynamic tone mapping, 2 and 3 the two fixed stages, 4 histogram,
    /// 5 logarithmic histogram, 6 red, 7 green, 8 blue, 9 luminance.
    static void setPostprocessingFlags(bool dithering, bool dynamicToneMapping, bool stage2,
                                       bool stage3, bool histogram, bool histogramLog, bool red,
                                       bool green, bool blue, bool luminance);
    static int getPostprocessingFlags();

    /// Snapshot overlays drawn over the view: the frame of an image of width x height pixels,
    /// an inner frame inset by left/right/bottom/top (in percent when relative, else pixels),
    /// the render region's frame and the rule-of-thirds lines.
    static void setSnapshotFrame(bool enabled, int width, int height);
    static void setSnapshotInnerFrame(bool enabled, int left, int right, int bottom, int top,
                                      bool relative);
    static void setSnapshotRenderRegionFrame(bool enabled, int x0, int x1, int y0, int y1);
    static void setSnapshotRuleOfThirds(bool enabled);
    static bool getSnapshotFrame();
    /// The snapshot frame's image size (width, height) and the inner frame's insets (left,
    /// right, bottom, top, 1 when relative).
    static std::array<int, 2> getSnapshotFrameSize();
    static std::array<int, 5> getSnapshotInnerFrameInsets();
    static bool getSnapshotInnerFrame();
    static bool getSnapshotRenderRegionFrame();
    static bool getSnapshotRuleOfThirds();

    /// The region the user drew in the view, in view pixels (x0..x1, y0..y1). A region is valid
    /// once drawn and until invalidateRenderRegion.
    static void setUserDefinedRenderRegion(oxOSGWidget* widget, const std::array<float, 4>& region,
                                           int viewWidth, int viewHeight);
    static bool hasValidRegion();
    static std::array<float, 4> getUserDefinedRenderRegion();
    /// The view's region scaled to an image of width x height; all four 0 without a region.
    static void getResizedRenderRegion(oxOSGWidget* widget, int width, int height, int& x0, int& x1,
                                       int& y0, int& y1);
    /// Makes the raytracer render the user's region (or the whole view without one).
    static void updateRenderRegion(oxOSGWidget* widget);
    static void invalidateRenderRegion(oxOSGWidget* widget);
    /// Shows (show != 0) or hides the help text on region rendering over the view.
    static void displayRegionRenderHelpText(int index, int show);

    /// The render view of that index; -1 (and 0) is the main view, which always exists.
    /// Null for any other index: this host has one view.
    static oxOSGWidget* getMGLW(int index);

    /// Stops the view's ongoing refinement, so that an export starts from a still view: the
    /// listeners hear cancelAntialiasingNotice, and the view stops before this returns.
    static void cancelAntialiasing();
    static constexpr const char* cancelAntialiasingNotice = "CancelAntialiasing";
    /// The region the raytracer renders, relative to the image with y running up from the
    /// bottom (x start, y start, x end, y end). Off renders the whole image again.
    void setRenderRegion(bool enabled, float x0, float y0, float x1, float y1);

    /// Renders what widget shows, at the view's size and with its samples, and writes it to
    /// fileName (any writable format; with RGB16F on, EXR keeps the floating point values).
    /// False, with the reason in the log, when nothing could be rendered or written.
    static bool writeImage(oxOSGWidget* widget, const QString& fileName);

    /// Back to the start state, without trace and without notice.
    static void resetToDefaults();

    static int addListener(oxServiceListeners::Listener listener);
    static void removeListener(int handle);
};

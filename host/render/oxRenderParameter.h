#pragma once

#include "oxRenderServiceSupport.h"

#include <array>

/// A render region in relative coordinates: x start, y start, x end, y end, each in [0, 1].
using oxRenderRegion = std::array<float, 4>;

// Every raytracing parameter of the host, one row each: X(type, Name, start value).
// Each row gives a getter getName() and a setter setName(value). The start values are those of
// the preference defaults, so that a fresh host renders as a fresh installation does.
#define OX_RENDER_PARAMETERS(X)                                                                    \
    X(int, ImageSamples, 256)                                                                      \
    X(int, AdaptiveAAThresholdQuality, 5)                                                          \
    X(int, InteractiveReflectionDepth, 8)                                                          \
    X(int, StillFrameReflectionDepth, 16)                                                          \
    X(bool, Clamping, true)                                                                        \
    X(float, ReflectionClampValue, 16.0f)                                                          \
    X(bool, PBParameters, false)                                                                   \
    X(bool, SpectralRaytracing, false)                                                             \
    X(bool, GpuRaytracing, false)                                                                  \
    X(float, DisplayLuminance, 100.0f)                                                             \
    X(float, Sim2LuminanceMapping, 1.0f)                                                           \
    X(bool, IgnoreOverrideTraceDepth, false)                                                       \
    X(bool, IgnoreOverrideIlluminationMode, false)                                                 \
    X(bool, IgnoreOverrideReflectionQuality, false)                                                \
    X(bool, IgnoreOverrideIBLQuality, false)                                                       \
    X(bool, LightOptimizationMode, true)                                                           \
    X(int, BrdfMode, 2)                                                                            \
    X(int, InteractiveQualityMode, 1)                                                              \
    X(int, InteractiveQuality, 1)                                                                  \
    X(int, StillFrameQualityMode, 3)                                                               \
    X(int, StillFrameQuality, 1)                                                                   \
    X(int, EnvironmentInteractiveQuality, 1)                                                       \
    X(int, EnvironmentStillQuality, 1)                                                             \
    X(int, PhotonDispersionQuality, 1)                                                             \
    X(int, Renderer, 0)                                                                            \
    X(int, RaytracingSampleOffset, 0)                                                              \
    X(float, InteractiveTextureSharpness, 0.5f)                                                    \
    X(float, StillFrameTextureSharpness, 0.25f)                                                    \
    X(float, LightEvaluationThreshold, 0.001f)                                                     \
    X(bool, UseHighQualityTextureFiltering, true)                                                  \
    X(int, StillFrameSupersampling, 1)                                                             \
    X(int, PhotonMode, 0)                                                                          \
    X(int, PhotonTraceDepth, 32)                                                                   \
    X(int, PhotonNoiseReductionSteps, 0)                                                           \
    X(bool, PhotonUseAutomaticRadius, false)                                                       \
    X(int, PhotonLookupCount, 16)                                                                  \
    X(int, InteractiveFinalGatherQuality, 1)                                                       \
    X(int, StillFrameFinalGatherQuality, 1)                                                        \
    X(float, FinalGatherRadius, 25.0f)                                                             \
    X(bool, UseFinalGatherForGlossy, false)                                                        \
    X(float, IndirectPhotonRadius, 25.0f)                                                          \
    X(int, InteractivePhotonCount, 50000)                                                          \
    X(int, StillFramePhotonCount, 100000)                                                          \
    X(int, PhotonMapRefreshMode, 1)                                                                \
    X(int, PhotonMapFreezeMode, 0)                                                                 \
    X(int, Illuminant, 1)                                                                          \
    X(unsigned int, RenderTimeInSeconds, 90u)                                                      \
    X(bool, UseRenderTimeLimit, false)                                                             \
    X(bool, UseInfiniteRendering, true)                                                            \
    X(bool, UseRaySplitting, true)                                                                 \
    X(bool, UseTwoSampleImportanceSampling, false)                                                 \
    X(unsigned int, DenoiseFilter, 0u)                                                             \
    X(unsigned int, DenoiserType, 0u)                                                              \
    X(int, DenoiserInput, 0)                                                                       \
    X(bool, DenoiseAlpha, true)                                                                    \
    X(unsigned int, DenoiserModel, 0u)                                                             \
    X(oxRenderRegion, RaytracingRenderRegion, (oxRenderRegion{0.0f, 0.0f, 1.0f, 1.0f}))

/// The host's store of raytracing parameters: the live values the raytracer renders with.
///
/// Every setter records its call in oxCallTrace (when tracing is on) and, when the value
/// changed, tells the listeners the parameter's name ("ImageSamples" for setImageSamples). No
/// setter checks a range: the store holds what it is given.
class oxRenderParameter {
public:
#define OX_RENDER_PARAMETER_DECLARE(type, name, start)                                             \
    static type get##name();                                                                       \
    static void set##name(type value);
    OX_RENDER_PARAMETERS(OX_RENDER_PARAMETER_DECLARE)
#undef OX_RENDER_PARAMETER_DECLARE

    /// Puts every parameter back to its start value, without trace and without notice.
    static void resetToDefaults();

    /// Adds a listener of changes; the handle removes it.
    static int addListener(oxServiceListeners::Listener listener);
    static void removeListener(int handle);
};

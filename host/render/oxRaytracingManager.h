#pragma once

class oxRaytracingUtilsBase;

/// The host's raytracer as a whole: its utilities object and its modes.
class oxRaytracingManager {
public:
    /// The utilities of the active raytracer, or null when none is active. The host's own
    /// raytracer is active from the start.
    static oxRaytracingUtilsBase* getRaytracingUtils();
    /// Makes utilities (not owned; may be null) the active raytracer's utilities.
    static void setRaytracingUtils(oxRaytracingUtilsBase* utilities);
    /// Makes the host's own raytracer active again, with its settings reset to the start.
    static void resetRaytracingUtils();

    /// Whether the raytracer renders spectrally (oxRenderParameter's spectral switch).
    static bool isSpectralRaytracingEnable();
    /// Whether the raytracer runs on the GPU (oxRenderParameter's GPU switch).
    static bool isGpuRaytracingEnable();
};

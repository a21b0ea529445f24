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
    /// Makes the host's own raytracer active again, with its settings (the tile size too)
    /// reset to the start.
    static void resetRaytracingUtils();

    /// Whether the raytracer renders spectrally (oxRenderParameter's spectral switch).
    static bool isSpectralRaytracingEnable();
    /// Whether the raytracer runs on the GPU (oxRenderParameter's GPU switch).
    static bool isGpuRaytracingEnable();

    /// The bounds of the tile size and the size a fresh host starts with.
    static constexpr int minTileSize = 32;
    static constexpr int maxTileSize = 256;
    static constexpr int defaultTileSize = 32;
    /// The largest tile, in pixels on a side, into which the raytracer (and so each job of a
    /// cluster render) splits an image: clamped into [minTileSize, maxTileSize]. The tiling
    /// changes how the work is shared out, never the image. Records the call.
    static void setMaxClusterTileSize(int tileSize);
    static int getMaxClusterTileSize();
};

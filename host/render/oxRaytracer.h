#pragma once

#include "oxImagePasses.h"
#include "oxRaytracingManager.h"
#include "oxRenderParameter.h"

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

class oxAnimClip;
class oxScene;
struct oxSceneSnapshot;
struct oxRenderedImage;

/// A pinhole camera as the raytracer shoots its primary rays: pixel (x, y) of a width x height
/// image, top row first, sub-pixel position (sx, sy) in [0, 1).
struct oxRaytracerCamera {
    std::array<float, 3> origin{0, 0, 0};
    std::array<float, 3> right{1, 0, 0};    ///< scaled to half the image plane's width
    std::array<float, 3> up{0, 1, 0};       ///< scaled to half the image plane's height
    std::array<float, 3> forward{0, 0, -1}; ///< unit length
    int width = 1;
    int height = 1;
    float nearDistance = 0.0f;
    float farDistance = 1e30f;

    /// The camera of the snapshot (a default one looking down -Z when it has none).
    static oxRaytracerCamera fromSnapshot(const oxSceneSnapshot& snapshot, int width, int height);
    /// The unit direction through a point of the image.
    std::array<float, 3> direction(float x, float y) const
    {
        const float ndcX = 2.0f * x / float(width) - 1.0f;
        const float ndcY = 1.0f - 2.0f * y / float(height);
        std::array<float, 3> d;
        for (size_t i = 0; i < 3; ++i)
            d[i] = forward[i] + right[i] * ndcX + up[i] * ndcY;
        const float inverse = 1.0f / std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        for (float& c : d)
            c *= inverse;
        return d;
    }
};

/// The host's raytracer: Embree over the triangles of the current scene, shaded in parallel
/// tiles. Renders every pass id of the host's naming table that isHostPass accepts.
///
/// A render is a pure function of the scene, the settings and the sample offset: pixels are
/// sampled from a hash of (pixel, sample, dimension), never from shared random state, so two
/// renders of the same state are bit-identical whatever the number of threads.
///
/// Pixels are refined in rounds: the first round takes one sample per pixel, each further one
/// doubles the samples taken so far, the last one tops them up to the sample count. Each sample
/// keeps its index whatever the round, so the final image is bit-identical to one taken in a
/// single pass, and after each round every pass is a finished image of the samples so far.
///
/// Motion blur: with a motion clip, each sample sees the scene at its own time within the
/// shutter interval [motionFrame, motionFrame + shutter] (frames). The scene is posed at
/// motionTimeSteps evenly spaced times across the interval; the triangles that move between
/// them become one geometry with a time step per pose, between which they move linearly.
/// Without a motion clip nothing of this is built or traced.
class oxRaytracer {
public:
    /// The pixel filters by id, as the pixel filter store keys them (0 box ... 9 sharp B-spline).
    static constexpr int pixelFilterCount = 10;
    /// The shutter interval of motion blur in frames: open at the frame, closed half a frame
    /// later (a 180 degree shutter).
    static constexpr float motionBlurShutter = 0.5f;
    /// Poses of the scene across the shutter interval, both ends included.
    static constexpr int motionTimeSteps = 5;

    /// What one render needs beside the scene.
    struct Settings {
        int width = 0;
        int height = 0;
        std::vector<unsigned> passIds{oxImagePasses::Beauty};
        int samples = 1;
        int filterType = 7;
        float filterWidth = 1.0f;
        float filterHeight = 1.0f;
        /// Relative, y up: x start, y start, x end, y end.
        oxRenderRegion region{0.0f, 0.0f, 1.0f, 1.0f};
        /// Without alpha the environment fills the beauty behind the objects (the colour
        /// where the scene has none); with premultiplied alpha, colours are premultiplied
        /// against alphaColor (black: colour times coverage).
        bool alpha = false;
        std::array<float, 3> alphaColor{0.0f, 0.0f, 0.0f};
        bool premultiply = false;
        bool clamping = true;
        float clampValue = 16.0f;
        int sampleOffset = 0;
        /// -1 precomputed light without shadows, 0 with reflections, 1 with shadows, 2 with
        /// shadowed image-based light, 3 full global illumination (light between surfaces).
        int illuminationMode = 3;
        /// The most surfaces a path visits (1: what the camera sees, lit directly).
        int traceDepth = 16;
        /// false: all samples in one round, with nothing kept between rounds (the same image).
        bool refine = true;
        /// The largest tile in pixels on a side (at least 1); tiles are shaded in parallel.
        int tileSize = oxRaytracingManager::defaultTileSize;
        /// Called on the rendering thread after each refinement round with the rounds done,
        /// the rounds planned and the image so far. Returning false before the last round
        /// stops the render there: render then returns false, sets stopped and leaves the
        /// image of the rounds done in image. Must not start another render of this raytracer.
        std::function<bool(int done, int rounds, const oxRenderedImage& image)> onRound;
        /// The clip whose motion is blurred, or null for none. The render leaves the clip
        /// evaluated at motionFrame.
        const oxAnimClip* motionClip = nullptr;
        float motionFrame = 0.0f;
        float shutter = motionBlurShutter;
        /// Display values per unit of light and incandescence: 1 in standard mode; in
        /// photometric mode 1 / display luminance, so that a light as bright as the display
        /// luminance shows white.
        float exposure = 1.0f;

        /// The settings of the host's parameter store, pixel filter, tile size and
        /// premultiplication switch for an image of that size, with one sample or the store's
        /// image samples.
        static Settings fromHost(int width, int height, bool fullSamples);
    };

    oxRaytracer();
    ~oxRaytracer();
    oxRaytracer(const oxRaytracer&) = delete;
    oxRaytracer& operator=(const oxRaytracer&) = delete;

    /// The raytracer of the host's image exports.
    static oxRaytracer& the();

    /// Whether alpha images are written with premultiplied colour. Records the call.
    static void setPremultiply(bool premultiply);
    static bool getPremultiply();

    /// True for the pass ids this raytracer renders.
    static bool isHostPass(unsigned passId);

    /// Renders scene's active camera into image, one pass per settings.passIds. False with
    /// error set for bad settings or a pass it doesn't render; image is then unchanged. False
    /// with stopped set (when given) when settings.onRound stopped the render.
    bool render(const oxScene& scene, const Settings& settings, oxRenderedImage& image,
                std::string& error, bool* stopped = nullptr);

    /// The samples per pixel taken once each round is done: 1, 2, 4, ... and samples last.
    static std::vector<int> refinementRounds(int samples);

    /// How often the acceleration structure was built: once per scene change.
    int getBuildCount() const;
    /// The number of tiles the last render split its region into (0 before the first).
    int getLastTileCount() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
    mutable std::mutex m_mutex;
};

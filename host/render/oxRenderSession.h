#pragma once

#include "oxImageSource.h"
#include "oxRaytracer.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

/// A progressive render of the current scene on a thread of its own, for an interactive view.
///
/// A request renders the beauty pass of the scene's active camera: optionally first a quick
/// one-sample preview at a fraction of the size, then the full size in chunks of samples that
/// add up to the request's sample count. Every chunk continues the sample sequence of the
/// previous one (sample offsets), so the image after n samples holds samples 0..n-1 of the same
/// sequence an export of n samples takes. Chunks are sized to take about chunkBudget each, which
/// bounds how long a new request waits for the running one to give way.
///
/// The thread reads the current scene at the start of each chunk. Whoever changes the scene on
/// the GUI thread while a chunk may start calls stop() first (or start() afterwards, which
/// drops whatever was rendered from the old state). The session stops by itself before the
/// current scene is replaced.
class oxRenderSession {
public:
    struct Request {
        /// What to render at full size; samples is the count to refine to, passIds is ignored
        /// (the beauty pass only).
        oxRaytracer::Settings settings;
        /// Greater than 1: first a one-sample image at width / previewDivisor.
        int previewDivisor = 1;
    };

    /// One displayed image: RGBA floats, top row first.
    struct Frame {
        int width = 0;
        int height = 0;
        std::vector<float> rgba;
        /// Samples per pixel in this image, and the count the request refines to.
        int samples = 0;
        int targetSamples = 0;
        bool preview = false;
        /// Milliseconds from the request to this image.
        double milliseconds = 0.0;
        uint64_t generation = 0;
    };

    /// Called on the rendering thread whenever a new frame is ready.
    using FrameReady = std::function<void()>;

    explicit oxRenderSession(FrameReady frameReady);
    ~oxRenderSession();
    oxRenderSession(const oxRenderSession&) = delete;
    oxRenderSession& operator=(const oxRenderSession&) = delete;

    /// Replaces the running request: the current chunk finishes, its image is dropped and
    /// rendering starts over. Returns the request's generation, which its frames carry.
    uint64_t start(const Request& request);
    /// Drops the running request and waits until the thread no longer reads the scene.
    void stop();
    /// The newest frame; false before the first one.
    bool latestFrame(Frame& frame) const;
    /// True while a request is being rendered.
    bool isBusy() const;
    /// The last render error ("" when the last chunk succeeded).
    std::string lastError() const;

    /// How long a chunk should take at most, once the cost of a sample is known.
    static constexpr std::chrono::milliseconds chunkBudget{40};

private:
    void run();
    void render(const Request& request, uint64_t generation,
                std::chrono::steady_clock::time_point since);
    bool cancelled(uint64_t generation) const;
    void publish(Frame&& frame);

    FrameReady m_frameReady;
    oxRaytracer m_raytracer;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_idle;
    bool m_quit = false;
    bool m_pending = false;
    bool m_working = false;
    Request m_request;
    uint64_t m_generation = 0;
    std::chrono::steady_clock::time_point m_requested;
    Frame m_frame;
    bool m_hasFrame = false;
    std::string m_error;
    int m_sceneListener = 0;
    std::thread m_thread;
};

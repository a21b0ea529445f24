#include "oxRenderSession.h"

#include "oxImagePasses.h"
#include "oxScene.h"

#include <algorithm>
#include <cmath>

oxRenderSession::oxRenderSession(FrameReady frameReady) : m_frameReady(std::move(frameReady))
{
    m_sceneListener = oxScene::addReplaceListener([this] { stop(); });
    m_thread = std::thread([this] { run(); });
}

oxRenderSession::~oxRenderSession()
{
    oxScene::removeReplaceListener(m_sceneListener);
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_quit = true;
        ++m_generation;
    }
    m_wake.notify_all();
    m_thread.join();
}

uint64_t oxRenderSession::start(const Request& request)
{
    uint64_t generation;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_request = request;
        m_pending = true;
        generation = ++m_generation;
        m_requested = std::chrono::steady_clock::now();
    }
    m_wake.notify_all();
    return generation;
}

void oxRenderSession::stop()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_pending = false;
    ++m_generation;
    m_idle.wait(lock, [this] { return !m_working; });
}

bool oxRenderSession::latestFrame(Frame& frame) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_hasFrame)
        return false;
    frame = m_frame;
    return true;
}

bool oxRenderSession::isBusy() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_working || m_pending;
}

std::string oxRenderSession::lastError() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_error;
}

bool oxRenderSession::cancelled(uint64_t generation) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return generation != m_generation || m_quit;
}

void oxRenderSession::publish(Frame&& frame)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (frame.generation != m_generation)
            return; // a newer request already replaced this one
        m_frame = std::move(frame);
        m_hasFrame = true;
    }
    if (m_frameReady)
        m_frameReady();
}

void oxRenderSession::run()
{
    for (;;) {
        Request request;
        uint64_t generation;
        std::chrono::steady_clock::time_point since;
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_working = false;
            m_idle.notify_all();
            m_wake.wait(lock, [this] { return m_quit || m_pending; });
            if (m_quit)
                return;
            request = m_request;
            generation = m_generation;
            since = m_requested;
            m_pending = false;
            m_working = true;
        }
        render(request, generation, since);
    }
}

void oxRenderSession::render(const Request& request, uint64_t generation,
                             std::chrono::steady_clock::time_point since)
{
    using Clock = std::chrono::steady_clock;
    auto elapsedMs = [&since] {
        return std::chrono::duration<double, std::milli>(Clock::now() - since).count();
    };
    auto renderChunk = [&](oxRaytracer::Settings settings, oxRenderedImage& image) {
        settings.passIds = {oxImagePasses::Beauty};
        settings.refine = false;
        settings.onRound = nullptr;
        settings.motionClip = nullptr;
        std::string error;
        const bool ok = m_raytracer.render(oxScene::current(), settings, image, error);
        std::lock_guard<std::mutex> lock(m_mutex);
        m_error = ok ? std::string() : error;
        return ok;
    };

    const oxRaytracer::Settings& full = request.settings;
    const int target = std::max(1, full.samples);
    if (request.previewDivisor > 1) {
        oxRaytracer::Settings preview = full;
        preview.width = std::max(1, full.width / request.previewDivisor);
        preview.height = std::max(1, full.height / request.previewDivisor);
        preview.samples = 1;
        oxRenderedImage image;
        if (!renderChunk(preview, image))
            return;
        Frame frame;
        frame.width = image.width;
        frame.height = image.height;
        frame.rgba = std::move(image.passes.front().rgba);
        frame.samples = 1;
        frame.targetSamples = target;
        frame.preview = true;
        frame.milliseconds = elapsedMs();
        frame.generation = generation;
        publish(std::move(frame));
    }

    const size_t values = size_t(full.width) * size_t(full.height) * 4;
    std::vector<double> sums(values, 0.0);
    int taken = 0;
    // A lone sample sits at the pixel's centre, which an export of several samples never
    // takes; a first chunk of two keeps the sequence the export's.
    int chunk = std::min(2, target);
    while (taken < target) {
        if (cancelled(generation))
            return;
        oxRaytracer::Settings settings = full;
        settings.samples = std::min(chunk, target - taken);
        settings.sampleOffset = full.sampleOffset + taken;
        oxRenderedImage image;
        const auto started = Clock::now();
        if (!renderChunk(settings, image))
            return;
        const double chunkMs =
            std::chrono::duration<double, std::milli>(Clock::now() - started).count();
        const std::vector<float>& rgba = image.passes.front().rgba;
        for (size_t i = 0; i < values; ++i)
            sums[i] += double(rgba[i]) * settings.samples;
        taken += settings.samples;

        Frame frame;
        frame.width = full.width;
        frame.height = full.height;
        frame.rgba.resize(values);
        const double scale = 1.0 / taken;
        for (size_t i = 0; i < values; ++i)
            frame.rgba[i] = float(sums[i] * scale);
        frame.samples = taken;
        frame.targetSamples = target;
        frame.milliseconds = elapsedMs();
        frame.generation = generation;
        publish(std::move(frame));

        // The next chunk at most doubles the samples so far (the image keeps improving at a
        // steady pace) and stays within the budget at the cost measured for this one.
        const double perSample = chunkMs / settings.samples;
        const int affordable =
            perSample > 0.0 ? int(double(chunkBudget.count()) / perSample) : taken;
        chunk = std::clamp(affordable, 1, std::max(1, taken));
    }
}

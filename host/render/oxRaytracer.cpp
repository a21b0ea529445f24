#include "oxRaytracer.h"

#include "oxEmbreeScene.h"
#include "oxImagePasses.h"
#include "oxImageSource.h"
#include "oxPassAccumulator.h"
#include "oxPixelFilterKernels.h"
#include "oxPixelfilterFactory.h"
#include "oxRayMath.h"
#include "oxRayShading.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderServiceSupport.h"
#include "oxSampleSequence.h"
#include "oxScene.h"
#include "oxSceneServices.h"
#include "oxSceneValues.h"

#include <embree3/rtcore.h>
#include <tbb/blocked_range2d.h>
#include <tbb/parallel_for.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <new>

// The render loop: settings, scene poses and tiles. Vector math, sampling, filters, shading,
// pass accumulation and the Embree scene live in their own files under namespace oxRay.
using namespace oxRay;

// --- Camera -------------------------------------------------------------------------------

oxRaytracerCamera oxRaytracerCamera::fromSnapshot(const oxSceneSnapshot& snapshot, int width,
                                                  int height)
{
    oxRaytracerCamera camera;
    camera.width = std::max(1, width);
    camera.height = std::max(1, height);
    const float aspect = float(camera.width) / float(camera.height);
    float fov = 45.0f;
    int fovMode = 0;
    osg::Quaternion orientation{0, 0, 0, 1};
    if (const osg::UberCameraBase* source = snapshot.camera) {
        camera.origin = source->position;
        orientation = source->orientation;
        fov = source->getFov();
        fovMode = source->getFovMode();
        camera.nearDistance = std::max(0.0f, source->getNear());
        camera.farDistance = source->getFar() > camera.nearDistance ? source->getFar() : 1e30f;
    }
    const osg::Matrix rotation = osg::matrixFromTRS({0, 0, 0}, orientation, {1, 1, 1});
    const float half = std::tan(std::clamp(fov, 1e-3f, 179.0f) * kPi / 360.0f);
    const float halfHeight = fovMode == 0 ? half : half / aspect;
    const float halfWidth = fovMode == 0 ? half * aspect : half;
    camera.right = normalize(osg::transformVector(rotation, {1, 0, 0})) * halfWidth;
    camera.up = normalize(osg::transformVector(rotation, {0, 1, 0})) * halfHeight;
    camera.forward = normalize(osg::transformVector(rotation, {0, 0, -1}));
    return camera;
}

// --- Values the ray kernel takes ---------------------------------------------------------

namespace {

// The kernel ends the process on a ray whose origin or direction isn't finite or lies beyond
// about 1.8e18. Scene files are checked where they are read; what scripts and animations
// produce is checked here, before anything reaches the kernel.
bool usable(const Vec3& v)
{
    return oxSceneValues::usable(v[0]) && oxSceneValues::usable(v[1]) &&
           oxSceneValues::usable(v[2]);
}

bool geometryUsable(const std::vector<oxSceneSnapshot>& poses, std::string& error)
{
    for (const oxSceneSnapshot& pose : poses) {
        const std::string bad =
            oxSceneValues::firstUnusable(pose.positions.data(), pose.positions.size());
        if (!bad.empty()) {
            error = "the scene has a vertex at an unusable position (" + bad +
                    "); check the transforms and animations of the model";
            return false;
        }
    }
    return true;
}

bool cameraAndLightsUsable(const RenderContext& context, std::string& error)
{
    const oxRaytracerCamera& camera = context.camera;
    if (!usable(camera.origin) || !usable(camera.right) || !usable(camera.up) ||
        !usable(camera.forward) || std::isnan(camera.nearDistance) ||
        std::isnan(camera.farDistance)) {
        error = "the camera's position, orientation or field of view is not a usable number";
        return false;
    }
    for (const ShadeLight& light : context.lights) {
        if (!usable(light.position) || !usable(light.direction) ||
            !std::isfinite(light.radiance[0] + light.radiance[1] + light.radiance[2])) {
            error = "a light's position, direction or intensity is not a usable number";
            return false;
        }
    }
    return true;
}

// One buffer of four floats per pixel for each pass, the first ones taken over from the
// image's previous passes. Throws std::bad_alloc when the memory isn't there.
void allocatePasses(const std::vector<unsigned>& passIds, size_t pixelCount, bool fullRegion,
                    oxRenderedImage& image, std::vector<oxRenderedPass>& passes)
{
    for (unsigned id : passIds) {
        if (std::any_of(passes.begin(), passes.end(),
                        [&](const oxRenderedPass& pass) { return pass.passId == id; }))
            continue;
        oxRenderedPass pass;
        pass.passId = id;
        // The buffers of the image's previous passes are reused: fresh pages cost more to map
        // than to fill. Pixels in the region are all written, so only those outside are cleared.
        if (!image.passes.empty()) {
            pass.rgba = std::move(image.passes.back().rgba);
            image.passes.pop_back();
        }
        if (fullRegion)
            pass.rgba.resize(pixelCount * 4);
        else
            pass.rgba.assign(pixelCount * 4, 0.0f);
        passes.push_back(std::move(pass));
    }
}

} // namespace

// --- Settings -----------------------------------------------------------------------------

namespace {
bool& premultiplyFlag()
{
    static bool premultiply = false;
    return premultiply;
}
} // namespace

oxRaytracer::Settings oxRaytracer::Settings::fromHost(int width, int height, bool fullSamples)
{
    Settings settings;
    settings.width = width;
    settings.height = height;
    settings.samples = fullSamples ? std::max(1, oxRenderParameter::getImageSamples()) : 1;
    // The filter the raytracer took over last; the store's own when no utilities are active.
    if (oxRaytracingUtilsBase* utilities = oxRaytracingManager::getRaytracingUtils()) {
        const oxRaytracingUtilsBase::PixelFilter filter = utilities->getActivePixelFilter();
        settings.filterType = filter.type;
        settings.filterWidth = filter.width;
        settings.filterHeight = filter.height;
    } else {
        settings.filterType = oxPixelfilterFactory::getPixelFilterType();
        settings.filterWidth = oxPixelfilterFactory::getPixelFilterWidth();
        settings.filterHeight = oxPixelfilterFactory::getPixelFilterHeight();
    }
    settings.region = oxRenderParameter::getRaytracingRenderRegion();
    settings.premultiply = premultiplyFlag();
    settings.clamping = oxRenderParameter::getClamping();
    settings.clampValue = oxRenderParameter::getReflectionClampValue();
    settings.sampleOffset = oxRenderParameter::getRaytracingSampleOffset();
    settings.tileSize = oxRaytracingManager::getMaxClusterTileSize();
    if (oxRenderParameter::getPBParameters())
        settings.exposure = 1.0f / std::max(1e-6f, oxRenderParameter::getDisplayLuminance());
    settings.illuminationMode = oxRenderParameter::getStillFrameQualityMode();
    settings.traceDepth = oxRenderParameter::getStillFrameReflectionDepth();
    return settings;
}

// --- Raytracer ----------------------------------------------------------------------------

struct oxRaytracer::Impl {
    EmbreeScene embree;
    std::atomic<int> lastTileCount{0};
};

oxRaytracer::oxRaytracer() : m_impl(std::make_unique<Impl>()) {}
oxRaytracer::~oxRaytracer() = default;

oxRaytracer& oxRaytracer::the()
{
    static oxRaytracer raytracer;
    return raytracer;
}

void oxRaytracer::setPremultiply(bool premultiply)
{
    oxTraceCall("oxRaytracer::setPremultiply", premultiply);
    premultiplyFlag() = premultiply;
}

bool oxRaytracer::getPremultiply() { return premultiplyFlag(); }

bool oxRaytracer::isHostPass(unsigned passId) { return writesPass(passId); }

int oxRaytracer::getBuildCount() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_impl->embree.buildCount;
}

int oxRaytracer::getLastTileCount() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_impl->lastTileCount;
}

std::vector<int> oxRaytracer::refinementRounds(int samples)
{
    samples = std::max(1, samples);
    std::vector<int> rounds;
    for (int taken = 1; taken < samples; taken *= 2)
        rounds.push_back(taken);
    rounds.push_back(samples);
    return rounds;
}

bool oxRaytracer::render(const oxScene& scene, const Settings& settings, oxRenderedImage& image,
                         std::string& error, bool* stopped)
{
    if (stopped)
        *stopped = false;
    if (settings.width <= 0 || settings.height <= 0) {
        error = "the image size " + std::to_string(settings.width) + "x" +
                std::to_string(settings.height) + " is not positive";
        return false;
    }
    if (settings.passIds.empty()) {
        error = "no render pass was requested";
        return false;
    }
    for (unsigned id : settings.passIds) {
        if (!isHostPass(id)) {
            const char* name = oxImagePasses::name(id);
            error = name ? "the render pass '" + std::string(name) +
                               "' is not rendered by this host yet"
                         : "the render pass id " + std::to_string(id) + " is unknown";
            return false;
        }
    }
    const PixelFilterEntry* filter = findFilter(settings.filterType);
    if (!filter) {
        error = "the pixel filter type " + std::to_string(settings.filterType) + " is unknown";
        return false;
    }
    if (!(settings.filterWidth > 0.0f) || !(settings.filterHeight > 0.0f) ||
        !std::isfinite(settings.filterWidth) || !std::isfinite(settings.filterHeight)) {
        error = "the pixel filter size must be positive and finite";
        return false;
    }
    if (settings.motionClip && !(std::isfinite(settings.shutter) && settings.shutter >= 0.0f &&
                                 std::isfinite(settings.motionFrame))) {
        error = "the shutter interval of motion blur must be finite and not negative";
        return false;
    }

    std::lock_guard<std::mutex> lock(m_mutex);
    // One pose of the scene, or one per time step of the shutter interval; shading takes
    // materials, lights and camera from the first, the shutter's opening.
    std::vector<oxSceneSnapshot> poses(settings.motionClip ? size_t(motionTimeSteps) : 1u);
    if (settings.motionClip) {
        for (size_t step = 0; step < poses.size(); ++step) {
            settings.motionClip->evaluate(settings.motionFrame +
                                          settings.shutter * float(step) / float(poses.size() - 1));
            scene.snapshot(poses[step]);
        }
        settings.motionClip->evaluate(settings.motionFrame);
    } else {
        scene.snapshot(poses.front());
    }
    const oxSceneSnapshot& snapshot = poses.front();
    if (!geometryUsable(poses, error) || !m_impl->embree.update(poses, error))
        return false;

    RenderContext context;
    context.scene = m_impl->embree.scene;
    context.snapshot = &snapshot;
    context.triangleOf = &m_impl->embree.triangleOf;
    context.motion = settings.motionClip != nullptr;
    context.camera = oxRaytracerCamera::fromSnapshot(snapshot, settings.width, settings.height);
    context.cameraRight = normalize(context.camera.right);
    context.cameraUp = normalize(context.camera.up);
    const FilterSampler filterSampler(*filter);
    context.filter = &filterSampler;
    const int samples = std::max(1, settings.samples);
    context.occlusionRays = std::clamp(64 / samples, 1, 16);
    context.mode = IlluminationMode::of(settings.illuminationMode);
    context.traceDepth = std::max(1, settings.traceDepth);
    context.needs = passNeeds(settings.passIds);
    context.exposure = settings.exposure;
    context.needs.behind = context.needs.beauty && !settings.alpha && snapshot.environment;

    std::vector<std::string> materialNames, objectNames;
    context.loadMaterials(snapshot, materialNames);
    context.loadObjects(snapshot, scene, objectNames);
    context.loadLights(snapshot, scene);
    if (!cameraAndLightsUsable(context, error))
        return false;

    const int width = settings.width;
    const int height = settings.height;
    const size_t pixelCount = size_t(width) * size_t(height);
    // The region in pixels; its y runs up from the bottom row.
    oxRenderRegion region = settings.region;
    for (float& edge : region)
        edge = std::isfinite(edge) ? std::clamp(edge, 0.0f, 1.0f) : 0.0f;
    const int x0 = std::clamp(int(std::floor(region[0] * float(width) + 0.5f)), 0, width);
    const int x1 = std::clamp(int(std::floor(region[2] * float(width) + 0.5f)), 0, width);
    const int y0 =
        std::clamp(height - int(std::floor(region[3] * float(height) + 0.5f)), 0, height);
    const int y1 =
        std::clamp(height - int(std::floor(region[1] * float(height) + 0.5f)), 0, height);

    const bool fullRegion = x0 == 0 && y0 == 0 && x1 == width && y1 == height;
    std::vector<oxRenderedPass> passes;
    // Buffers larger than the machine's memory would be granted by the system and then end
    // the process when touched; they are refused before, and a failed allocation likewise.
    const size_t passBytes = pixelCount * 4 * sizeof(float);
    const size_t memory = size_t(::sysconf(_SC_PHYS_PAGES)) * size_t(::sysconf(_SC_PAGE_SIZE));
    bool allocated = passBytes <= memory / std::max<size_t>(1, settings.passIds.size());
    try {
        if (allocated)
            allocatePasses(settings.passIds, pixelCount, fullRegion, image, passes);
    } catch (const std::bad_alloc&) {
        allocated = false;
    }
    if (!allocated) {
        image = oxRenderedImage();
        error = "there is not enough memory for " + std::to_string(settings.passIds.size()) +
                " pass buffer(s) of " + std::to_string(width) + "x" + std::to_string(height) +
                " pixels (" + std::to_string(passBytes >> 20) + " MiB each; the machine has " +
                std::to_string(memory >> 20) + " MiB)";
        return false;
    }

    // The image is assembled before the first round: each round leaves it finished.
    image = oxRenderedImage();
    image.width = width;
    image.height = height;
    image.passes = std::move(passes);
    if (context.needs.cryptoObject)
        image.cryptoObjectNames = objectNames;
    if (context.needs.cryptoMaterial)
        image.cryptoMaterialNames = materialNames;
    if (snapshot.camera) {
        const osg::UberCameraBase& camera = *snapshot.camera;
        image.cameraData = {
            {"fov", std::to_string(camera.getFov())},
            {"position", std::to_string(camera.position[0]) + " " +
                             std::to_string(camera.position[1]) + " " +
                             std::to_string(camera.position[2])},
        };
    }

    const uint32_t offset = uint32_t(settings.sampleOffset);
    PassAccumulator film(context.needs, settings);
    film.setDepthRange(context.camera.nearDistance, context.camera.farDistance);

    // Rounds of samples [begin, end) over the region. What a pixel has summed so far waits
    // between rounds in keptSums (and its Cryptomatte coverage in keptLists); a render of one
    // round keeps nothing.
    const std::vector<int> rounds =
        settings.refine ? refinementRounds(samples) : std::vector<int>{samples};
    const size_t keptCount = rounds.size() > 1 ? keptSumCount(context.needs) : 0;
    const bool crypto = context.needs.cryptoObject || context.needs.cryptoMaterial;
    std::vector<float> keptSums(rounds.size() > 1 ? pixelCount * keptCount : 0);
    std::vector<CoverageLists> keptLists(rounds.size() > 1 && crypto ? pixelCount : 0);

    // Tiles shoot their primary rays in packets of eight neighbouring pixels, one sample
    // index at a time; everything after the first hit is traced ray by ray. Every pixel draws
    // its samples from its own key, so the tiling shares out the work without changing a bit
    // of the image.
    const size_t tileSize = size_t(std::max(1, settings.tileSize));
    constexpr int kPacket = 8;
    m_impl->lastTileCount = 0;
    auto renderRound = [&](int begin, int end, bool firstRound, bool lastRound) {
        tbb::parallel_for(
            tbb::blocked_range2d<int>(y0, y1, tileSize, x0, x1, tileSize),
            [&](const tbb::blocked_range2d<int>& tile) {
                if (firstRound)
                    ++m_impl->lastTileCount;
                const int left = tile.cols().begin();
                const int top = tile.rows().begin();
                const int tileWidth = int(tile.cols().size());
                const int count = tileWidth * int(tile.rows().size());
                auto pixelOf = [&](int i) {
                    return size_t(top + i / tileWidth) * size_t(width) +
                           size_t(left + i % tileWidth);
                };
                // Each thread keeps its tile buffers from tile to tile.
                thread_local std::vector<PixelSums> sums;
                thread_local std::vector<CoverageLists> lists;
                sums.assign(static_cast<size_t>(count), PixelSums());
                if (lists.size() < static_cast<size_t>(count))
                    lists.resize(static_cast<size_t>(count));
                if (firstRound && crypto) {
                    for (int i = 0; i < count; ++i) {
                        lists[size_t(i)].objects.clear();
                        lists[size_t(i)].materials.clear();
                    }
                }
                if (!firstRound) {
                    for (int i = 0; i < count; ++i) {
                        const float* kept = keptSums.data() + pixelOf(i) * keptCount;
                        forEachKeptSum(sums[size_t(i)], context.needs,
                                       [&](float& value) { value = *kept++; });
                        if (crypto)
                            std::swap(lists[size_t(i)], keptLists[pixelOf(i)]);
                    }
                }
                RTCIntersectContext intersect;
                rtcInitIntersectContext(&intersect);
                intersect.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
                for (int s = begin; s < end; ++s) {
                    for (int base = 0; base < count; base += kPacket) {
                        alignas(32) RTCRayHit8 packet;
                        alignas(32) int valid[kPacket];
                        float weights[kPacket];
                        float times[kPacket];
                        Vec3 directions[kPacket];
                        Sampler samplers[kPacket];
                        for (int lane = 0; lane < kPacket; ++lane) {
                            const int i = base + lane;
                            valid[lane] = i < count ? -1 : 0;
                            packet.hit.geomID[lane] = RTC_INVALID_GEOMETRY_ID;
                            if (i >= count)
                                continue;
                            const int x = left + i % tileWidth;
                            const int y = top + i / tileWidth;
                            const uint32_t pixelKey = uint32_t(y) * uint32_t(width) + uint32_t(x);
                            samplers[lane] = Sampler{hash32(pixelKey), uint32_t(s) + offset};
                            // A single sample sits at the pixel's centre; more spread over the
                            // filter.
                            float fx = 0.0f, fy = 0.0f, signX = 1.0f, signY = 1.0f;
                            if (samples > 1 || offset != 0) {
                                float u, v;
                                samplers[lane].get(DimPixel, u, v);
                                fx = context.filter->sample(u, signX);
                                fy = context.filter->sample(v, signY);
                            }
                            times[lane] = 0.0f;
                            if (context.motion) {
                                float v;
                                samplers[lane].get(kTimeDimension, times[lane], v);
                            }
                            weights[lane] = signX * signY;
                            directions[lane] = context.camera.direction(
                                float(x) + 0.5f + fx * 0.5f * settings.filterWidth,
                                float(y) + 0.5f + fy * 0.5f * settings.filterHeight);
                            float tnear, tfar;
                            context.primaryRay(directions[lane], tnear, tfar);
                            packet.ray.org_x[lane] = context.camera.origin[0];
                            packet.ray.org_y[lane] = context.camera.origin[1];
                            packet.ray.org_z[lane] = context.camera.origin[2];
                            packet.ray.dir_x[lane] = directions[lane][0];
                            packet.ray.dir_y[lane] = directions[lane][1];
                            packet.ray.dir_z[lane] = directions[lane][2];
                            packet.ray.tnear[lane] = tnear;
                            packet.ray.tfar[lane] = tfar;
                            packet.ray.time[lane] = times[lane];
                            packet.ray.mask[lane] = 0xffffffffu;
                            packet.ray.id[lane] = unsigned(lane);
                            packet.ray.flags[lane] = 0;
                            packet.hit.instID[0][lane] = RTC_INVALID_GEOMETRY_ID;
                        }
                        rtcIntersect8(valid, context.scene, &intersect, &packet);
                        for (int lane = 0; lane < kPacket && base + lane < count; ++lane) {
                            PrimaryHit hit;
                            hit.hit = packet.hit.geomID[lane] != RTC_INVALID_GEOMETRY_ID;
                            hit.distance = packet.ray.tfar[lane];
                            if (hit.hit)
                                hit.primitive = context.triangle(packet.hit.geomID[lane],
                                                                 packet.hit.primID[lane]);
                            hit.normal = {packet.hit.Ng_x[lane], packet.hit.Ng_y[lane],
                                          packet.hit.Ng_z[lane]};
                            hit.u = packet.hit.u[lane];
                            hit.v = packet.hit.v[lane];
                            SampleResult result;
                            context.shade(directions[lane], hit, samplers[lane], times[lane],
                                          result);
                            film.accumulate(sums[size_t(base + lane)], lists[size_t(base + lane)],
                                            result, weights[lane]);
                        }
                    }
                }
                for (int i = 0; i < count; ++i)
                    film.finish(image, left + i % tileWidth, top + i / tileWidth, sums[size_t(i)],
                                lists[size_t(i)]);
                if (!lastRound) {
                    for (int i = 0; i < count; ++i) {
                        float* kept = keptSums.data() + pixelOf(i) * keptCount;
                        forEachKeptSum(sums[size_t(i)], context.needs,
                                       [&](float& value) { *kept++ = value; });
                        if (crypto)
                            std::swap(lists[size_t(i)], keptLists[pixelOf(i)]);
                    }
                }
            },
            tbb::simple_partitioner());
    };

    int taken = 0;
    for (size_t round = 0; round < rounds.size(); ++round) {
        const bool lastRound = round + 1 == rounds.size();
        if (x0 < x1 && y0 < y1)
            renderRound(taken, rounds[round], round == 0, lastRound);
        taken = rounds[round];
        const bool goOn =
            !settings.onRound || settings.onRound(int(round) + 1, int(rounds.size()), image);
        if (!goOn && !lastRound) {
            error = "the render was stopped after " + std::to_string(taken) + " of " +
                    std::to_string(samples) + " samples per pixel";
            if (stopped)
                *stopped = true;
            return false;
        }
    }
    return true;
}

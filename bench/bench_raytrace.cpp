// Primary-ray throughput on the example scene at 1920x1080: the host's raytracer (one sample
// per pixel, the depth pass) against a bare Embree loop shooting the same camera rays. Both run
// on the same number of threads (the argument); rays/s is the counter to compare.
//
// refinement: a shaded 16-sample image at 480x270 in one round (argument 0) or in refinement
// rounds (1); what rounds cost is the difference. motionBlur: the same image with (1) and
// without (0) the blur of the example's clip, BVH build included.

#include "oxBenchScene.h"
#include "oxImageSource.h"
#include "oxRaytracer.h"
#include "oxScene.h"
#include "oxTBBInit.h"

#include <benchmark/benchmark.h>
#include <embree3/rtcore.h>
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <limits>

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

void raytracer(benchmark::State& state)
{
    oxTBBInit::the().setCoreUsageLimit(int(state.range(0)));
    oxRaytracer tracer;
    oxRaytracer::Settings settings;
    settings.width = kWidth;
    settings.height = kHeight;
    settings.samples = 1;
    settings.passIds = {33}; // depth: a primary ray and no shading rays
    oxRenderedImage image;
    std::string error;
    tracer.render(exampleScene(), settings, image, error); // builds the BVH outside the timing
    for (auto _ : state) {
        if (!tracer.render(exampleScene(), settings, image, error))
            state.SkipWithError(error.c_str());
        benchmark::DoNotOptimize(image.passes.data());
    }
    state.counters["rays/s"] = benchmark::Counter(double(kWidth) * kHeight * state.iterations(),
                                                  benchmark::Counter::kIsRate);
    oxTBBInit::the().setCoreUsageLimit(oxTBBInit::noLimit);
}

void bareEmbree(benchmark::State& state)
{
    oxTBBInit::the().setCoreUsageLimit(int(state.range(0)));
    oxSceneSnapshot snapshot;
    exampleScene().snapshot(snapshot);
    RTCDevice device = rtcNewDevice(nullptr);
    RTCScene scene = rtcNewScene(device);
    RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    const size_t vertices = snapshot.positions.size() / 3;
    const size_t triangles = snapshot.indices.size() / 3;
    auto* v = static_cast<float*>(rtcSetNewGeometryBuffer(
        geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, 3 * sizeof(float), vertices));
    auto* t = static_cast<uint32_t*>(rtcSetNewGeometryBuffer(
        geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 3 * sizeof(uint32_t), triangles));
    std::copy(snapshot.positions.begin(), snapshot.positions.end(), v);
    std::copy(snapshot.indices.begin(), snapshot.indices.end(), t);
    rtcCommitGeometry(geometry);
    rtcAttachGeometry(scene, geometry);
    rtcReleaseGeometry(geometry);
    rtcCommitScene(scene);

    const oxRaytracerCamera camera = oxRaytracerCamera::fromSnapshot(snapshot, kWidth, kHeight);
    std::vector<float> depth(size_t(kWidth) * kHeight);
    for (auto _ : state) {
        tbb::parallel_for(
            tbb::blocked_range<int>(0, kHeight), [&](const tbb::blocked_range<int>& rows) {
                RTCIntersectContext context;
                rtcInitIntersectContext(&context);
                for (int y = rows.begin(); y < rows.end(); ++y) {
                    for (int x = 0; x < kWidth; ++x) {
                        const auto d = camera.direction(float(x) + 0.5f, float(y) + 0.5f);
                        RTCRayHit hit;
                        hit.ray.org_x = camera.origin[0];
                        hit.ray.org_y = camera.origin[1];
                        hit.ray.org_z = camera.origin[2];
                        hit.ray.tnear = camera.nearDistance;
                        hit.ray.dir_x = d[0];
                        hit.ray.dir_y = d[1];
                        hit.ray.dir_z = d[2];
                        hit.ray.time = 0.0f;
                        hit.ray.tfar = std::numeric_limits<float>::infinity();
                        hit.ray.mask = 0xffffffffu;
                        hit.ray.id = 0;
                        hit.ray.flags = 0;
                        hit.hit.geomID = RTC_INVALID_GEOMETRY_ID;
                        hit.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
                        rtcIntersect1(scene, &context, &hit);
                        depth[size_t(y) * kWidth + size_t(x)] =
                            hit.hit.geomID == RTC_INVALID_GEOMETRY_ID ? 0.0f : hit.ray.tfar;
                    }
                }
            });
        benchmark::DoNotOptimize(depth.data());
    }
    state.counters["rays/s"] = benchmark::Counter(double(kWidth) * kHeight * state.iterations(),
                                                  benchmark::Counter::kIsRate);
    rtcReleaseScene(scene);
    rtcReleaseDevice(device);
    oxTBBInit::the().setCoreUsageLimit(oxTBBInit::noLimit);
}

oxRaytracer::Settings shadedSettings()
{
    oxRaytracer::Settings settings;
    settings.width = 480;
    settings.height = 270;
    settings.samples = 16;
    settings.passIds = {0};
    return settings;
}

void refinement(benchmark::State& state)
{
    oxRaytracer tracer;
    oxRaytracer::Settings settings = shadedSettings();
    settings.refine = state.range(0) != 0;
    oxRenderedImage image;
    std::string error;
    tracer.render(exampleScene(), settings, image, error);
    for (auto _ : state) {
        if (!tracer.render(exampleScene(), settings, image, error))
            state.SkipWithError(error.c_str());
        benchmark::DoNotOptimize(image.passes.data());
    }
}

void motionBlur(benchmark::State& state)
{
    const osg::NodePtr clips = exampleScene().getClipRoot();
    const oxAnimClip* clip =
        clips->getNChildren() > 0 ? clips->getChild(0)->getCoreAs<oxAnimClip>() : nullptr;
    if (!clip) {
        state.SkipWithError("the example scene has no clip");
        return;
    }
    oxRaytracer tracer;
    oxRaytracer::Settings settings = shadedSettings();
    settings.motionClip = state.range(0) != 0 ? clip : nullptr;
    oxRenderedImage image;
    std::string error;
    int frame = 0;
    for (auto _ : state) {
        // A new frame each time: the poses change, so the BVH is built as in an animation.
        settings.motionFrame = float(frame++ % 50);
        clip->evaluate(settings.motionFrame);
        if (!tracer.render(exampleScene(), settings, image, error))
            state.SkipWithError(error.c_str());
        benchmark::DoNotOptimize(image.passes.data());
    }
    clip->evaluate(0.0f);
}

} // namespace

BENCHMARK(refinement)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(motionBlur)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(raytracer)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(bareEmbree)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();

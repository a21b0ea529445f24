// Path tracing on the example scene with full global illumination.
//
// paths: 960x540 at 4 samples per pixel on the given number of threads; paths/s is the
// counter (a path is one camera sample followed through all its bounces). Compare 1 and 2
// threads for the scaling.
//
// noise: the RMSE of the beauty at 4, 16 and 64 samples (the argument) against a 1024-sample
// reference of the same 160x90 view: with an unbiased sampler it halves with every 4x.

#include "oxBenchScene.h"
#include "oxImagePasses.h"
#include "oxImageSource.h"
#include "oxRaytracer.h"
#include "oxScene.h"
#include "oxTBBInit.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

oxRaytracer::Settings settings(int width, int height, int samples)
{
    oxRaytracer::Settings s;
    s.width = width;
    s.height = height;
    s.samples = samples;
    s.refine = false;
    s.illuminationMode = 3;
    s.passIds = {oxImagePasses::Beauty};
    return s;
}

void paths(benchmark::State& state)
{
    oxTBBInit::the().setCoreUsageLimit(int(state.range(0)));
    oxRaytracer tracer;
    const oxRaytracer::Settings s = settings(960, 540, 4);
    oxRenderedImage image;
    std::string error;
    tracer.render(exampleScene(), settings(8, 8, 1), image, error); // the BVH, outside the timing
    for (auto _ : state) {
        if (!tracer.render(exampleScene(), s, image, error))
            state.SkipWithError(error.c_str());
        benchmark::DoNotOptimize(image.passes.data());
    }
    state.counters["paths/s"] = benchmark::Counter(960.0 * 540.0 * 4.0 * double(state.iterations()),
                                                   benchmark::Counter::kIsRate);
    oxTBBInit::the().setCoreUsageLimit(oxTBBInit::noLimit);
}

void noise(benchmark::State& state)
{
    static std::vector<float> reference;
    oxRaytracer tracer;
    std::string error;
    oxRenderedImage image;
    if (reference.empty()) {
        tracer.render(exampleScene(), settings(160, 90, 1024), image, error);
        reference = image.passes.front().rgba;
    }
    const oxRaytracer::Settings s = settings(160, 90, int(state.range(0)));
    for (auto _ : state) {
        if (!tracer.render(exampleScene(), s, image, error))
            state.SkipWithError(error.c_str());
    }
    double sum = 0.0;
    const std::vector<float>& rgba = image.passes.front().rgba;
    for (size_t i = 0; i < rgba.size(); ++i)
        if (i % 4 != 3)
            sum += double(rgba[i] - reference[i]) * double(rgba[i] - reference[i]);
    state.counters["rmse"] = std::sqrt(sum / double(rgba.size() / 4 * 3));
}

} // namespace

BENCHMARK(paths)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(noise)->Arg(4)->Arg(16)->Arg(64)->Iterations(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();

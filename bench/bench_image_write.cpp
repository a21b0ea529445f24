// Writing a 1920x1080 RGBA float image as PNG and as EXR through the host's encoder, against
// oiiotool writing the same pixels with the same settings (PNG level 1, EXR half with the
// library's default compression).
//
// The machine is shared, so the comparison is made in CPU seconds (all threads), which other
// processes disturb far less than wall time. Ours: the process CPU time of one write (the
// "CPU" column). oiiotool: the CPU time of its run from a float EXR to the format, minus its
// run that reads the same file and cuts one pixel out of it, so that process start and
// reading cancel out (the "Time" column of the oiiotool rows, measured manually). The read in
// the subtracted run goes through the library's cache and costs a little more than the read
// inside a conversion, so these rows understate oiiotool's writing a little. The rows
// OiioDirect write the same pixels with the library's writer straight into a file in this
// process, which is oiiotool's writing step without process start and reading.

#include "oxImageEncoder.h"

#include <OpenImageIO/imageio.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

const std::vector<float>& pixels()
{
    static const std::vector<float> data = [] {
        std::vector<float> rgba(size_t(kWidth) * kHeight * 4);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                float* p = &rgba[(size_t(y) * kWidth + size_t(x)) * 4];
                // Smooth shading with a little grain, as a rendered image has.
                const float grain = float((x * 7919 + y * 104729) % 17) / 1700.0f;
                p[0] = 0.5f + 0.5f * std::sin(float(x) * 0.01f) + grain;
                p[1] = float(y) / float(kHeight) + grain;
                p[2] = 0.5f + 0.4f * std::cos(float(x + y) * 0.004f);
                p[3] = x < kWidth / 8 ? 0.5f : 1.0f;
            }
        return rgba;
    }();
    return data;
}

std::string folder()
{
    static const std::string path = [] {
        char name[] = "/tmp/ox-bench-image-XXXXXX";
        const char* made = ::mkdtemp(name);
        return std::string(made ? made : "/tmp");
    }();
    return path;
}

std::string sourceExr()
{
    static const std::string path = [] {
        const std::string file = folder() + "/source.exr";
        oxEncodeSettings settings;
        settings.exrHalf = false;
        std::string error;
        if (!oxImageEncoder::writeFile(file, kWidth, kHeight, {{"", pixels().data(), false}},
                                       settings, error))
            std::fprintf(stderr, "can't write %s: %s\n", file.c_str(), error.c_str());
        return file;
    }();
    return path;
}

void writeOurs(benchmark::State& state, const char* extension)
{
    const std::string path = folder() + "/ours." + extension;
    oxEncodeSettings settings; // the writer's defaults: PNG level 1, EXR half
    std::vector<oxImageLayer> layers = {{"", pixels().data(), false}};
    for (auto _ : state) {
        std::string error;
        if (!oxImageEncoder::writeFile(path, kWidth, kHeight, layers, settings, error))
            state.SkipWithError(error.c_str());
    }
}

// CPU seconds (user and system) that command's processes used, or -1 when it failed.
double runCpuSeconds(const std::string& command)
{
    struct rusage before {};
    struct rusage after {};
    getrusage(RUSAGE_CHILDREN, &before);
    const int status = std::system(command.c_str());
    getrusage(RUSAGE_CHILDREN, &after);
    auto seconds = [](const struct rusage& usage) {
        return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
               double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
    };
    return status == 0 ? seconds(after) - seconds(before) : -1.0;
}

void writeOiiotool(benchmark::State& state, const char* extension, const char* options)
{
    const std::string source = sourceExr();
    const std::string write = "oiiotool " + source + " " + options + " -o " + folder() + "/oiio." +
                              extension + " >/dev/null 2>&1";
    const std::string readOnly =
        "oiiotool " + source + " --cut 1x1+0+0 -o " + folder() + "/pixel.exr >/dev/null 2>&1";
    for (auto _ : state) {
        const double full = runCpuSeconds(write);
        const double base = runCpuSeconds(readOnly);
        if (full < 0.0 || base < 0.0) {
            state.SkipWithError("oiiotool failed");
            break;
        }
        state.SetIterationTime(std::max(full - base, 1e-6));
    }
}

void writeDirect(benchmark::State& state, const char* extension)
{
    using namespace OIIO;
    const std::string path = folder() + "/direct." + extension;
    const bool png = std::string(extension) == "png";
    for (auto _ : state) {
        auto out = ImageOutput::create(path);
        ImageSpec spec(kWidth, kHeight, 4, png ? TypeDesc::UINT8 : TypeDesc::HALF);
        if (png)
            spec.attribute("png:compressionLevel", 1);
        if (!out || !out->open(path, spec) || !out->write_image(TypeDesc::FLOAT, pixels().data()) ||
            !out->close())
            state.SkipWithError("the library's writer failed");
    }
}

void BM_OxWritePNG(benchmark::State& state) { writeOurs(state, "png"); }
void BM_OiiotoolWritePNG(benchmark::State& state)
{
    writeOiiotool(state, "png", "-d uint8 --attrib png:compressionLevel 1");
}
void BM_OiioDirectWritePNG(benchmark::State& state) { writeDirect(state, "png"); }
void BM_OxWriteEXR(benchmark::State& state) { writeOurs(state, "exr"); }
void BM_OiioDirectWriteEXR(benchmark::State& state) { writeDirect(state, "exr"); }
void BM_OiiotoolWriteEXR(benchmark::State& state) { writeOiiotool(state, "exr", "-d half"); }

} // namespace

BENCHMARK(BM_OxWritePNG)->Unit(benchmark::kMillisecond)->MinTime(2.0)->MeasureProcessCPUTime();
BENCHMARK(BM_OiiotoolWritePNG)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(15);
BENCHMARK(BM_OiioDirectWritePNG)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0)
    ->MeasureProcessCPUTime();
BENCHMARK(BM_OxWriteEXR)->Unit(benchmark::kMillisecond)->MinTime(2.0)->MeasureProcessCPUTime();
BENCHMARK(BM_OiioDirectWriteEXR)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2.0)
    ->MeasureProcessCPUTime();
BENCHMARK(BM_OiiotoolWriteEXR)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(15);

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::error_code ignored;
    std::filesystem::remove_all(folder(), ignored);
    return 0;
}

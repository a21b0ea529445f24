// Writing and reading 1,000 presets through the preset file, each direction on its own.

#include "oxLog.h"
#include "oxRenderSettingsPresetFile.h"

#include <benchmark/benchmark.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace {

const int kPresetCount = 1000;

oxRenderSettingsPresets makePresets()
{
    oxRenderSettingsPresets presets;
    for (int i = 0; i < kPresetCount; ++i) {
        auto preset = std::make_shared<oxRenderSettingsPreset>();
        preset->name = "Preset " + std::to_string(i);
        preset->filename = "c:\\renders\\shot_" + std::to_string(i) + ".exr";
        preset->imageSamples = 256 + i;
        preset->pixel_width = 1920.0f + static_cast<float>(i);
        preset->pixel_height = 1080.0f;
        preset->reflectionClampValue = 16.0f + 0.001f * static_cast<float>(i);
        preset->beauty_pass = true;
        preset->depth_pass = i % 2 == 0;
        oxRenderAutomationVariantSetGroup group("Group " + std::to_string(i % 7));
        group.addActiveVariantSetName("Variant " + std::to_string(i));
        preset->variantSets = {group};
        presets.push_back(preset);
    }
    return presets;
}

std::string benchFile()
{
    const char* base = std::getenv("TMPDIR");
    return std::string(base && *base ? base : "/tmp") + "/oxlin-bench-presets-" +
           std::to_string(::getpid()) + ".xml";
}

void BM_WritePresetFile(benchmark::State& state)
{
    const oxRenderSettingsPresets presets = makePresets();
    const std::string path = benchFile();
    for (auto _ : state) {
        if (!writePresetFile(path, presets))
            state.SkipWithError("the preset file could not be written");
    }
    struct stat info {};
    ::stat(path.c_str(), &info);
    state.counters["file_bytes"] = static_cast<double>(info.st_size);
    state.counters["presets"] = kPresetCount;
    ::unlink(path.c_str());
}

void BM_ReadPresetFile(benchmark::State& state)
{
    const std::string path = benchFile();
    writePresetFile(path, makePresets());
    for (auto _ : state) {
        const oxRenderSettingsPresets read = readPresetsFromFile(path);
        if (read.size() != static_cast<size_t>(kPresetCount))
            state.SkipWithError("the preset file read back wrong");
        benchmark::DoNotOptimize(read.data());
    }
    state.counters["presets"] = kPresetCount;
    ::unlink(path.c_str());
}

} // namespace

BENCHMARK(BM_WritePresetFile)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_ReadPresetFile)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

int main(int argc, char** argv)
{
    // The reader logs the file's version on each read; keep the log out of the timing.
    oxLog::setLevel(oxLog::Warning);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

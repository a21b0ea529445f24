// The render job's own costs: listing the files of a job of a million names (100 variant sets
// with a viewpoint each x 100 tuples of two more groups x 100 frames), and what rendering a job
// to files costs per file beyond the image writer's own work (the same tiny images written by
// the writer directly).

#include "oxExampleScene.h"
#include "oxImageSource.h"
#include "oxImageWriter.h"
#include "oxMovieExport.h"
#include "oxBenchMain.h"
#include "oxRaytracerSource.h"
#include "oxRenderParameter.h"
#include "oxRenderSettings.h"
#include "oxScene.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <memory>
#include <string>
#include <vector>

namespace {

const int kTrackViewpoints = 100;
const int kSetsPerGroup = 10;
const char kTrack[] = "Bench Track";

// Adds a group of count sets named NAME0, NAME1, ... that change nothing; with viewpoints, set
// i moves the camera to "View i+1".
void addGroup(oxScene& scene, const std::string& name, int count, bool viewpoints)
{
    scene.variantGroups.push_back(std::make_unique<oxVariantSetGroup>());
    oxVariantSetGroup* group = scene.variantGroups.back().get();
    group->name = name;
    for (int i = 0; i < count; ++i) {
        scene.variantSets.push_back(std::make_unique<oxVariantSet>());
        oxVariantSet* set = scene.variantSets.back().get();
        set->name = name + std::to_string(i);
        set->group = group;
        if (viewpoints)
            set->viewpoint = "View " + std::to_string(i + 1);
        group->sets.push_back(set);
    }
}

// The example scene with a camera track of kTrackViewpoints viewpoints, a group "V" of as many
// sets that each choose one of them, and the groups "A" and "B" of kSetsPerGroup sets each.
void makeBenchScene()
{
    auto scene = std::make_unique<oxScene>();
    std::string error;
    oxExampleScene::build(*scene, error);
    osg::NodePtr track = scene->addCameraTrack(kTrack, scene->getDefaultCamera());
    for (int i = 0; i < kTrackViewpoints; ++i)
        scene->addViewpoint("View " + std::to_string(i + 1), track);
    addGroup(*scene, "V", kTrackViewpoints, true);
    addGroup(*scene, "A", kSetsPerGroup, false);
    addGroup(*scene, "B", kSetsPerGroup, false);
    oxScene::replaceCurrent(std::move(scene));
}

std::vector<std::string> setNames(const std::string& group, int count)
{
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back(group + std::to_string(i));
    return names;
}

// The module with a window whose record renders the bench track into folder.
struct BenchJob {
    explicit BenchJob(const QString& folder)
    {
        makeBenchScene();
        module = std::make_unique<oxMovieExport>();
        oxRenderSettings* window = module->getRenderSettingsWindow();
        window->setViewByName(kTrack);
        oxRenderSettingsPreset& record = *module->windowSettings();
        record.filename = QDir(folder).filePath(QStringLiteral("bench.png")).toStdString();
        record.pixel_width = 16.0f;
        record.pixel_height = 16.0f;
        record.ssFactor = 0;
        module->refreshWindow();
        oxRenderParameter::setImageSamples(1);
    }
    std::unique_ptr<oxMovieExport> module;
};

// Peak resident memory of the process so far, in MB.
double peakMegabytes()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

void BM_ListMillionOutputFiles(benchmark::State& state)
{
    QTemporaryDir folder;
    BenchJob job(folder.path());
    oxRenderSettings* window = job.module->getRenderSettingsWindow();
    window->setViewByName("Front");
    oxRenderSettingsPreset& record = *job.module->windowSettings();
    record.variantSetsUsed = true;
    window->setActiveVariantSets("V", setNames("V", kTrackViewpoints));
    window->setActiveVariantSets("A", setNames("A", kSetsPerGroup));
    window->setActiveVariantSets("B", setNames("B", kSetsPerGroup));
    record.renderAnimation = true;
    record.startFrame = 0;
    record.stopFrame = 99;
    job.module->refreshWindow();
    size_t count = 0;
    for (auto _ : state) {
        const QStringList files = job.module->getRenderOutputFilenames();
        count = size_t(files.size());
        benchmark::DoNotOptimize(files);
    }
    state.counters["files"] = double(count);
    state.counters["peak_MB"] = peakMegabytes();
}
BENCHMARK(BM_ListMillionOutputFiles)->Unit(benchmark::kMillisecond)->Iterations(3);

// The whole job to files: one 16x16 beauty image per viewpoint of the track.
void BM_RenderJobToFiles(benchmark::State& state)
{
    QTemporaryDir folder;
    BenchJob job(folder.path());
    for (auto _ : state)
        job.module->startRenderToFile(true);
    state.counters["files"] = kTrackViewpoints;
    state.counters["seconds_per_file"] =
        benchmark::Counter(double(kTrackViewpoints), benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}
BENCHMARK(BM_RenderJobToFiles)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);

// The same images written by the image writer directly, one call per file.
void BM_WriteSameImagesDirectly(benchmark::State& state)
{
    QTemporaryDir folder;
    BenchJob job(folder.path());
    oxImageWriter& writer = *job.module->getImageWriter();
    writer.setNoOverwriteMessage(true);
    writer.setNoShowImage(true);
    for (auto _ : state)
        for (int i = 0; i < kTrackViewpoints; ++i)
            writer.exportImage(folder.filePath(QStringLiteral("direct_%1.png").arg(i)), 16, 16, 0,
                               0, -1.0f, false, QString(), false, false);
    state.counters["files"] = kTrackViewpoints;
    state.counters["seconds_per_file"] =
        benchmark::Counter(double(kTrackViewpoints), benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}
BENCHMARK(BM_WriteSameImagesDirectly)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);

} // namespace

int main(int argc, char** argv)
{
    return oxRunHeadlessBenchmarks(argc, argv, [](const std::function<void()>& run) {
        oxImageSource::setCurrent(&oxRaytracerSource::the());
        run();
        oxImageSource::setCurrent(nullptr);
    });
}

// One refresh of the Variant Sets section and the render statistics for a scene of 200
// variant sets in 20 groups, every set chosen: the tree rebuilt from the selection, the tick
// boxes, the statistics and the example file name.

#include "oxExampleScene.h"
#include "oxImageWriter.h"
#include "oxBenchMain.h"
#include "oxRenderSettings.h"
#include "oxScene.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

namespace {

const int kGroups = 20;
const int kSetsPerGroup = 10;

// The example scene with kGroups groups "G0".. of kSetsPerGroup sets "G0 S0"...
void makeBenchScene()
{
    auto scene = std::make_unique<oxScene>();
    std::string error;
    oxExampleScene::build(*scene, error);
    for (int g = 0; g < kGroups; ++g) {
        scene->variantGroups.push_back(std::make_unique<oxVariantSetGroup>());
        oxVariantSetGroup* group = scene->variantGroups.back().get();
        group->name = "G" + std::to_string(g);
        for (int s = 0; s < kSetsPerGroup; ++s) {
            scene->variantSets.push_back(std::make_unique<oxVariantSet>());
            oxVariantSet* set = scene->variantSets.back().get();
            set->name = group->name + " S" + std::to_string(s);
            set->group = group;
            group->sets.push_back(set);
        }
    }
    oxScene::replaceCurrent(std::move(scene));
}

void BM_RefreshVariantSetsAndStatistics(benchmark::State& state)
{
    makeBenchScene();
    oxImageWriter writer;
    oxRenderSettings window(QStringLiteral("Render Settings"), &writer);
    window.getCurrentPreset().variantSetsUsed = true;
    for (int g = 0; g < kGroups; ++g) {
        std::vector<std::string> names;
        for (int s = 0; s < kSetsPerGroup; ++s)
            names.push_back("G" + std::to_string(g) + " S" + std::to_string(s));
        window.setActiveVariantSets("G" + std::to_string(g), names);
    }
    QCoreApplication::processEvents();
    for (auto _ : state)
        window.refreshVariantSetGui();
    state.counters["sets"] = double(kGroups * kSetsPerGroup);
    state.counters["files"] = window._totalFileCount->text().toDouble();
}
BENCHMARK(BM_RefreshVariantSetsAndStatistics)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) { return oxRunHeadlessBenchmarks(argc, argv); }

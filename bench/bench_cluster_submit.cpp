// Handing a job of 1,000 tasks (an image sequence of 1,000 frames, a frame a task) to a Slurm
// cluster: writing the job folder and submitting it as one job array. Needs a reachable
// controller (SLURM_CONF, or Slurm's default configuration) and skips otherwise. The tasks
// run /bin/true, so the cluster isn't kept busy; each job is cancelled after its submission.
//
//   bench_cluster_submit [--benchmark_...]   (OX_BENCH_PARTITION names a partition)

#include "oxClusterManagerService.h"
#include "oxExampleScene.h"
#include "oxMovieExport.h"
#include "oxBenchMain.h"
#include "oxRenderSettings.h"
#include "oxScene.h"
#include "oxSlurm.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

const int kFrames = 1000;

void BM_SubmitThousandTaskJob(benchmark::State& state)
{
    auto scene = std::make_unique<oxScene>();
    std::string error;
    oxExampleScene::build(*scene, error);
    oxScene::replaceCurrent(std::move(scene));
    auto module = std::make_unique<oxMovieExport>();
    QTemporaryDir jobs;
    QTemporaryDir output;
    oxRenderSettingsPreset& record = *module->windowSettings();
    record.filename = output.filePath(QStringLiteral("frame.png")).toStdString();
    record.renderAnimation = true;
    record.exportType = 0;
    record.startFrame = 0;
    record.stopFrame = kFrames - 1;
    record.stepFrame = 1;
    module->refreshWindow();

    oxClusterManagerService cluster;
    cluster.setJobFolder(jobs.path().toStdString());
    cluster.setRenderProgram("/bin/true");
    const char* partition = std::getenv("OX_BENCH_PARTITION");
    const QString queue = partition ? QString::fromLocal8Bit(partition) : QString();
    if (!cluster.isLoggedIn()) {
        state.SkipWithError("no Slurm controller answers (set SLURM_CONF)");
        return;
    }
    for (auto _ : state) {
        if (!cluster.createRenderJob(nullptr, queue)) {
            state.SkipWithError("the job wasn't created (see the log)");
            break;
        }
        state.PauseTiming();
        cluster.cancelJob(cluster.getLastJobFolder());
        state.ResumeTiming();
    }
    state.counters["tasks"] = kFrames;
}
BENCHMARK(BM_SubmitThousandTaskJob)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

} // namespace

int main(int argc, char** argv) { return oxRunHeadlessBenchmarks(argc, argv); }

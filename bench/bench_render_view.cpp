// The render view at 960x540 on the example scene: the time from a camera change (a small
// orbit, as one mouse move makes) to the first image on screen, and to 16 samples per pixel.
// The view renders on its own thread; the clock runs on the GUI thread, from the change to
// the moment the view has turned the frame into its displayed image.

#include "oxExampleScene.h"
#include "oxOSGWidget.h"
#include "oxPlatform.h"
#include "oxRenderView.h"
#include "oxScene.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLabel>
#include <QTimer>

#include <chrono>
#include <memory>

namespace {

constexpr int kWidth = 960;
constexpr int kHeight = 540;

// Runs the event loop until done() holds, without sleeping between checks longer than a
// millisecond.
template <typename Done>
void spinUntil(const Done& done)
{
    while (!done()) {
        QEventLoop loop;
        QTimer::singleShot(1, &loop, &QEventLoop::quit);
        loop.exec();
    }
}

std::unique_ptr<oxRenderView> makeView()
{
    auto scene = std::make_unique<oxScene>();
    std::string error;
    oxExampleScene::build(*scene, error);
    oxScene::replaceCurrent(std::move(scene));
    oxOSGWidget::setImageSamples(16);
    auto view = std::make_unique<oxRenderView>();
    const int status = view->findChild<QLabel*>("renderViewStatus")->sizeHint().height();
    view->resize(kWidth, kHeight + status);
    view->show();
    spinUntil([&] { return !view->isRefining(); });
    return view;
}

// Moves the camera a little around the pivot and runs the loop until the view shows an image
// that satisfies reached.
template <typename Reached>
void measure(benchmark::State& state, const Reached& reached)
{
    std::unique_ptr<oxRenderView> view = makeView();
    int shown = 0;
    QObject::connect(view.get(), &oxRenderView::frameShown, [&] { ++shown; });
    float direction = 1.0f;
    for (auto _ : state) {
        spinUntil([&] { return !view->isRefining(); });
        const oxViewPose pose = oxViewNavigation::orbit(oxRenderView::cameraPose(), view->pivot(),
                                                        0.01f * direction, 0.0f);
        direction = -direction;
        const int before = shown;
        const auto start = std::chrono::steady_clock::now();
        view->setCameraPose(pose);
        spinUntil([&] { return shown > before && reached(view->frameInfo()); });
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    state.counters["width"] = view->frameInfo().width;
    state.counters["samples"] = view->frameInfo().samples;
}

void BM_CameraChangeToFirstImage(benchmark::State& state)
{
    measure(state, [](const oxRenderSession::Frame&) { return true; });
}
BENCHMARK(BM_CameraChangeToFirstImage)
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);

void BM_CameraChangeTo16Samples(benchmark::State& state)
{
    measure(state, [](const oxRenderSession::Frame& frame) {
        return !frame.preview && frame.samples >= 16;
    });
}
BENCHMARK(BM_CameraChangeTo16Samples)
    ->UseManualTime()
    ->Iterations(4)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    oxPlatform::ensureRuntimeDir();
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

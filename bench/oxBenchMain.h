#pragma once

// The main of the benchmarks that need the host: a headless Qt application, preferences in a
// fresh folder, then every registered benchmark. around, when given, runs the benchmarks
// itself, so a benchmark program can set host state up before and take it down after.

#include "oxPlatform.h"
#include "oxPreferences.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QTemporaryDir>

#include <functional>

inline int
oxRunHeadlessBenchmarks(int argc, char** argv,
                        const std::function<void(const std::function<void()>&)>& around = nullptr)
{
    oxPlatform::prepareHeadless();
    QApplication application(argc, argv);
    QTemporaryDir preferences;
    oxPreferences::setPreferencesDir(preferences.path().toStdString());
    benchmark::Initialize(&argc, argv);
    const std::function<void()> run = [] { benchmark::RunSpecifiedBenchmarks(); };
    if (around)
        around(run);
    else
        run();
    benchmark::Shutdown();
    return 0;
}

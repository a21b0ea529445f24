// The embedded interpreter's costs: start-up of a headless oxlin that runs a script of one
// statement, against plain python3 on the same machine, and the cost of one call from a
// script into a plug-in command.

#include "oxPlatform.h"
#include "oxPluginLoader.h"
#include "oxScript.h"

#include <benchmark/benchmark.h>

#include <QApplication>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

extern char** environ;

namespace {

// The folder of this program, where oxlin is built too.
std::string programDir()
{
    char path[PATH_MAX] = {};
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof(path) - 1);
    const std::string self(path, length > 0 ? size_t(length) : 0);
    return self.substr(0, self.rfind('/'));
}

// Runs a program to its end with standard output and error discarded; false on failure.
bool runQuietly(std::vector<std::string> arguments)
{
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    return spawned == 0 && ::waitpid(pid, &status, 0) == pid && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

void BM_OxlinPythonStartup(benchmark::State& state)
{
    const std::string oxlin = programDir() + "/oxlin";
    const std::string prefs = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") +
                              "/oxlin-bench-script-prefs";
    for (auto _ : state)
        if (!runQuietly({oxlin, "--no-gui", "--prefs-dir", prefs, "--python", "pass"}))
            state.SkipWithError("oxlin --no-gui --python pass failed");
}
BENCHMARK(BM_OxlinPythonStartup)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3.0);

void BM_Python3Startup(benchmark::State& state)
{
    for (auto _ : state)
        if (!runQuietly({"/usr/bin/python3", "-c", "pass"}))
            state.SkipWithError("python3 -c pass failed");
}
BENCHMARK(BM_Python3Startup)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3.0);

// 100,000 calls of a getter of the movie export module, in one script.
void BM_GetterCalls100k(benchmark::State& state)
{
    if (!oxScript::start()) {
        state.SkipWithError("the interpreter did not start");
        return;
    }
    const std::string loop = "for _ in range(100000):\n    getExportTiffHDR()\n";
    for (auto _ : state)
        if (!oxScript::run(loop))
            state.SkipWithError("the getter loop failed");
    state.counters["calls"] = 100000;
}
BENCHMARK(BM_GetterCalls100k)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    oxPlatform::prepareHeadless();
    QApplication application(argc, argv);
    // The plug-ins are loaded as oxlin loads them, so their script modules' registrars are
    // known to the interpreter, and the getter asks the module's real image writer.
    oxPluginLoader::loadAll(programDir() + "/../plugins");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    oxScript::stop();
    oxPluginLoader::unloadAll();
    return 0;
}

// oxlin: the host program. Loads the plug-ins, opens the scene and runs the GUI, or runs
// headless with --no-gui.

#include "oxCallTrace.h"
#include "oxClusterManagerService.h"
#include "oxController.h"
#include "oxExampleScene.h"
#include "oxFileIO.h"
#include "oxImagePasses.h"
#include "oxImageRenderWidget.h"
#include "oxImageSource.h"
#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxMainWindow.h"
#include "oxMessage.h"
#include "oxPathText.h"
#include "oxPlatform.h"
#include "oxPluginLoader.h"
#include "oxPreferences.h"
#include "oxRaytracerSource.h"
#include "oxRenderParameter.h"
#include "oxRenderQueue.h"
#include "oxScene.h"
#include "oxScript.h"
#include "oxSceneIO.h"
#include "oxSceneServices.h"
#include "oxSlurm.h"

#include <QApplication>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <memory>
#include <string>
#include <vector>

namespace {

const char kUsage[] =
    "Usage: oxlin [options] [FILE] [--script SCRIPT | --python CODE] [-- ARG...]\n"
    "\n"
    "FILE is a project (.oxp) or a glTF 2.0 model (.gltf, .glb); without it oxlin starts with\n"
    "the example scene \"showroom\".\n"
    "\n"
    "Options:\n"
    "  --no-gui              run headless (no window; offscreen Qt platform)\n"
    "  --version             print the version and exit\n"
    "  --list-plugins        load the plug-ins, print their modules and versions, and exit\n"
    "  --plugin-dir DIR      load plug-ins from DIR instead of the installation's folder\n"
    "  --prefs-dir DIR       keep preferences in DIR instead of $XDG_CONFIG_HOME/oxlin\n"
    "  --log-file FILE       also write the log to FILE\n"
    "  --log-level LEVEL     error, warning, info (default) or debug\n"
    "  --trace-host-calls    log every call the host's services receive\n"
    "  --write-example DIR   write the example scene (showroom.gltf, .bin, .oxp) to DIR and exit\n"
    "  --list-scene          print the scene's cameras, viewpoints, tracks, clips, variant sets,\n"
    "                        materials and lights, and exit\n"
    "  --snapshot OUT        render the current view headless into the image OUT and exit\n"
    "  --size WxH            size of the snapshot (default 1280x720)\n"
    "  --passes LIST         comma-separated render passes of the snapshot (beauty, depth, ...);\n"
    "                        one file per pass, or one multi-layer file for EXR\n"
    "  --view NAME           render through the camera or viewpoint NAME\n"
    "  --samples N           samples per pixel of the snapshot (default: the image samples)\n"
    "  --cluster-jobs DIR    keep cluster jobs in the shared folder DIR (preference \"Cluster\n"
    "                        Job Folder\")\n"
    "  --slurm-conf FILE     reach the Slurm cluster of the configuration FILE (else SLURM_CONF)\n"
    "  --render-job JOB      with --task N: render task N of the cluster job whose record is\n"
    "                        JOB (job.xml) in the scene FILE, and exit\n"
    "  --task N              the task of --render-job, from 0\n"
    "  --script SCRIPT       run the Python file SCRIPT once the scene is open; headless, exit\n"
    "                        with its status (0, 1 after an uncaught exception, n for\n"
    "                        sys.exit(n)); sys.argv is SCRIPT and the ARGs after --\n"
    "  --python CODE         the same for the Python code CODE (sys.argv[0] is '-c')\n"
    "  --list-outputs        print the files a render to file of the scene's render settings\n"
    "                        would write, one per line in render order, and exit\n"
    "  --render              render those files (with a progress bar) and exit; non-zero when\n"
    "                        a file exists (unless --overwrite) or couldn't be written\n"
    "  --preset NAME         with --list-outputs or --render: the settings of the preset NAME\n"
    "                        of the preset file instead of the scene's\n"
    "  --render-queue        render the waiting jobs of the project's render queue in order and\n"
    "                        exit; non-zero when a job failed (the others still render)\n"
    "  --overwrite           with --render or --render-queue: replace existing files\n"
    "  --help                print this text and exit\n";

struct Options {
    bool noGUI = false;
    bool version = false;
    bool listPlugins = false;
    bool help = false;
    bool traceCalls = false;
    std::string pluginDir;
    std::string prefsDir;
    std::string logFile;
    std::string logLevel;
    std::string exampleDir;
    bool listScene = false;
    std::string sceneFile;
    std::string snapshot;
    std::string size;
    std::string passes;
    std::string view;
    std::string samples;
    std::string clusterJobs;
    std::string slurmConf;
    std::string renderJob;
    std::string task;
    std::string script;
    std::string python;
    bool hasPython = false;
    std::vector<std::string> scriptArguments;
    bool listOutputs = false;
    bool render = false;
    bool renderQueue = false;
    bool overwrite = false;
    std::string preset;
};

// Parses argv; false with a message on standard error for anything it doesn't know.
bool parseOptions(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](std::string& target) {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "oxlin: option %s needs a value\n", arg.c_str());
                return false;
            }
            target = argv[++i];
            return true;
        };
        if (arg == "--no-gui")
            options.noGUI = true;
        else if (arg == "--version")
            options.version = true;
        else if (arg == "--list-plugins")
            options.listPlugins = true;
        else if (arg == "--help" || arg == "-h")
            options.help = true;
        else if (arg == "--trace-host-calls")
            options.traceCalls = true;
        else if (arg == "--plugin-dir") {
            if (!value(options.pluginDir))
                return false;
        } else if (arg == "--prefs-dir") {
            if (!value(options.prefsDir))
                return false;
        } else if (arg == "--log-file") {
            if (!value(options.logFile))
                return false;
        } else if (arg == "--log-level") {
            if (!value(options.logLevel))
                return false;
        } else if (arg == "--write-example") {
            if (!value(options.exampleDir))
                return false;
        } else if (arg == "--cluster-jobs") {
            if (!value(options.clusterJobs))
                return false;
        } else if (arg == "--slurm-conf") {
            if (!value(options.slurmConf))
                return false;
        } else if (arg == "--render-job") {
            if (!value(options.renderJob))
                return false;
        } else if (arg == "--task") {
            if (!value(options.task))
                return false;
        } else if (arg == "--script") {
            if (!value(options.script))
                return false;
        } else if (arg == "--python") {
            if (!value(options.python))
                return false;
            options.hasPython = true;
        } else if (arg == "--") {
            options.scriptArguments.assign(argv + i + 1, argv + argc);
            break;
        } else if (arg == "--list-outputs") {
            options.listOutputs = true;
        } else if (arg == "--render") {
            options.render = true;
        } else if (arg == "--render-queue") {
            options.renderQueue = true;
        } else if (arg == "--overwrite") {
            options.overwrite = true;
        } else if (arg == "--preset") {
            if (!value(options.preset))
                return false;
        } else if (arg == "--list-scene") {
            options.listScene = true;
        } else if (arg == "--snapshot" || arg == "--size" || arg == "--passes" || arg == "--view" ||
                   arg == "--samples") {
            std::string& target = arg == "--snapshot" ? options.snapshot
                                  : arg == "--size"   ? options.size
                                  : arg == "--passes" ? options.passes
                                  : arg == "--view"   ? options.view
                                                      : options.samples;
            if (!value(target))
                return false;
        } else if (!arg.empty() && arg[0] != '-' && options.sceneFile.empty()) {
            options.sceneFile = arg;
        } else {
            std::fprintf(stderr, "oxlin: unknown argument '%s' (see oxlin --help)\n", arg.c_str());
            return false;
        }
    }
    if (!options.script.empty() && options.hasPython) {
        std::fprintf(stderr, "oxlin: --script and --python exclude each other\n");
        return false;
    }
    if (options.listOutputs && options.render) {
        std::fprintf(stderr, "oxlin: --list-outputs and --render exclude each other\n");
        return false;
    }
    if (options.renderJob.empty() != options.task.empty()) {
        std::fprintf(stderr, "oxlin: --render-job and --task go together\n");
        return false;
    }
    if (options.renderQueue && (options.listOutputs || options.render)) {
        std::fprintf(stderr, "oxlin: --render-queue excludes --list-outputs and --render\n");
        return false;
    }
    if (!options.preset.empty() && !options.listOutputs && !options.render) {
        std::fprintf(stderr, "oxlin: --preset goes with --list-outputs or --render\n");
        return false;
    }
    if (options.overwrite && !options.render && !options.renderQueue) {
        std::fprintf(stderr, "oxlin: --overwrite goes with --render or --render-queue\n");
        return false;
    }
    if (!options.scriptArguments.empty() && options.script.empty() && !options.hasPython) {
        std::fprintf(stderr, "oxlin: arguments after -- go to a --script or --python\n");
        return false;
    }
    return true;
}

bool applyLogLevel(const std::string& name)
{
    if (name.empty())
        return true;
    for (oxLog::Level level : {oxLog::Error, oxLog::Warning, oxLog::Info, oxLog::Debug}) {
        if (name == oxLog::levelName(level)) {
            oxLog::setLevel(level);
            return true;
        }
    }
    std::fprintf(stderr, "oxlin: unknown log level '%s' (error, warning, info or debug)\n",
                 name.c_str());
    return false;
}

void listPlugins()
{
    for (const oxPluginLoader::Plugin& plugin : oxPluginLoader::plugins()) {
        const std::string file = plugin.path.substr(plugin.path.rfind('/') + 1);
        if (plugin.modules.empty())
            std::printf("%s %s\n", file.c_str(), plugin.version.c_str());
        for (const std::string& module : plugin.modules)
            std::printf("%s %s (%s)\n", module.c_str(), plugin.version.c_str(), file.c_str());
    }
    std::fflush(stdout);
}

// A new scene (the built-in example): the project record is cleared and every module is told.
void newScene()
{
    oxSceneIO::newScene();
    oxFileIO::clearProject();
    oxMessage message(oxController::MessageNewScene);
    oxController::broadcastMessage(message);
}

constexpr int kMaxImageSide = 32768;

// One side of --size: decimal digits only (no sign, no spaces), 1 to kMaxImageSide. Parsed
// with a range check, so that no number wraps around into a small one.
bool parseSide(const char* begin, const char* end, int& side)
{
    if (begin == end || *begin < '0' || *begin > '9')
        return false;
    long long value = 0;
    const auto [stop, problem] = std::from_chars(begin, end, value);
    if (problem != std::errc() || stop != end || value < 1 || value > kMaxImageSide)
        return false;
    side = int(value);
    return true;
}

// "WxH" into width and height; false, leaving them, for anything else.
bool parseSize(const std::string& text, int& width, int& height)
{
    const size_t x = text.find('x');
    int w = 0, h = 0;
    if (x == std::string::npos || !parseSide(text.data(), text.data() + x, w) ||
        !parseSide(text.data() + x + 1, text.data() + text.size(), h))
        return false;
    width = w;
    height = h;
    return true;
}

// Renders the current (or named) view through the image writer; the exit status of oxlin.
int renderSnapshot(const Options& options)
{
    int width = 1280, height = 720;
    if (!options.size.empty() && !parseSize(options.size, width, height)) {
        std::fprintf(stderr,
                     "oxlin: bad size '%s' for --snapshot (expected WxH, each 1 to %d, e.g. "
                     "640x360)\n",
                     options.size.c_str(), kMaxImageSide);
        return 2;
    }
    if (!options.samples.empty()) {
        char* end = nullptr;
        const long samples = std::strtol(options.samples.c_str(), &end, 10);
        if (*end != '\0' || samples < 1 || samples > 65536) {
            std::fprintf(stderr, "oxlin: bad sample count '%s' (expected 1 to 65536)\n",
                         options.samples.c_str());
            return 2;
        }
        oxRenderParameter::setImageSamples(int(samples));
    }
    if (!options.view.empty()) {
        osg::NodePtr node = oxNodeUtils::findNode(oxScene::current().getCameraRoot(), options.view);
        const bool activated = node && (oxNodeUtils::isViewpoint(node)
                                            ? oxCameraService::the()->activateViewpoint(node)
                                            : oxNodeUtils::isCamera(node) &&
                                                  oxCameraService::the()->activateCamera(node));
        if (!activated) {
            std::fprintf(stderr, "oxlin: the scene has no camera or viewpoint named '%s'\n",
                         options.view.c_str());
            return 1;
        }
    }
    const bool passes = !options.passes.empty();
    std::vector<unsigned> passIds;
    if (passes) {
        std::vector<bool> flags(oxImagePasses::count, false);
        const QStringList names = QString::fromStdString(options.passes).split(',');
        for (const QString& name : names) {
            const std::string wanted = name.trimmed().toStdString();
            const auto found =
                std::find_if(oxImagePasses::names.begin(), oxImagePasses::names.end(),
                             [&](const char* known) { return wanted == known; });
            if (found == oxImagePasses::names.end()) {
                std::fprintf(stderr,
                             "oxlin: unknown render pass '%s'; the passes are:", wanted.c_str());
                for (const char* known : oxImagePasses::names)
                    std::fprintf(stderr, " %s", known);
                std::fputc('\n', stderr);
                return 2;
            }
            const auto id = unsigned(found - oxImagePasses::names.begin());
            if (!flags[id])
                passIds.push_back(id);
            flags[id] = true;
        }
        std::sort(passIds.begin(), passIds.end());
        oxImageRenderWidget::setActiveRenderPasses(flags);
    }

    const QString output = oxPathText::toQString(options.snapshot);
    oxImageWriter writer;
    writer.setNoOverwriteMessage(true);
    writer.setNoShowImage(true);
    writer.setExportMultiLayer(passes && oxImageWriter::isMultilayerSupported(output));
    if (!writer.exportImage(output, width, height, 3, 0, -1.0f, passes, QString(), false, false)) {
        std::fprintf(stderr, "oxlin: can't render the snapshot '%s' (see the log above)\n",
                     options.snapshot.c_str());
        return 1;
    }
    for (const QString& name :
         writer.getExportedImageFilenames(output, passIds, writer.getExportMultiLayer()))
        std::printf("Wrote '%s'.\n", oxPathText::fromQString(name).c_str());
    return 0;
}

// The whole text of the script file; false with one error line when it can't be read.
bool readScript(const std::string& path, std::string& code)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (file)
        text << file.rdbuf();
    if (!file || file.bad()) {
        std::fprintf(stderr, "oxlin: can't read the script '%s': %s\n", path.c_str(),
                     std::strerror(errno));
        return false;
    }
    code = text.str();
    return true;
}

// Runs the --script or --python of options in the interpreter; the script's exit status.
int runScript(const Options& options, const std::string& code)
{
    if (!oxScript::start())
        return 1;
    std::vector<std::string> arguments{options.hasPython ? std::string("-c") : options.script};
    arguments.insert(arguments.end(), options.scriptArguments.begin(),
                     options.scriptArguments.end());
    oxScript::setArguments(arguments);
    const oxScript::Outcome outcome = options.hasPython
                                          ? oxScript::execute(options.python, "<string>")
                                          : oxScript::execute(code, options.script);
    return outcome.exitCode;
}

// Lists or renders the files of the Render Settings plug-in's render job, through the named
// callbacks the plug-in offers for it; the exit status of oxlin.
int runRenderJob(const Options& options)
{
    const char* callback =
        options.listOutputs ? "oxMovieExport::listOutputFiles" : "oxMovieExport::renderOutputFiles";
    const char* option = options.listOutputs ? "--list-outputs" : "--render";
    oxMessage message;
    if (!options.preset.empty())
        message.set("preset", QString::fromStdString(options.preset));
    message.set("overwrite", options.overwrite);
    if (!oxController::call(callback, message)) {
        std::fprintf(stderr, "oxlin: %s needs the Render Settings plug-in, which isn't loaded\n",
                     option);
        return 1;
    }
    std::string error;
    if (message.has("error") && message.get("error", error) && !error.empty()) {
        std::fprintf(stderr, "oxlin: %s\n", error.c_str());
        return 1;
    }
    std::vector<std::string> files;
    message.get("files", files);
    if (options.listOutputs) {
        for (const std::string& file : files)
            std::printf("%s\n", file.c_str());
    } else {
        std::printf("Rendered %zu file%s.\n", files.size(), files.size() == 1 ? "" : "s");
    }
    std::fflush(stdout);
    return 0;
}

// Renders the waiting jobs of the project's render queue; the exit status of oxlin.
int runRenderQueue(oxRenderQueue& queue, bool overwrite)
{
    const int failed = queue.renderAll(overwrite);
    int done = 0;
    for (int index = 0; index < queue.jobCount(); ++index)
        done += queue.jobEntry(index).state == oxRenderQueue::State::Done ? 1 : 0;
    std::printf("Render queue: %d job%s done, %d failed.\n", done, done == 1 ? "" : "s", failed);
    std::fflush(stdout);
    return failed == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!parseOptions(argc, argv, options) || !applyLogLevel(options.logLevel)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    if (options.help) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (options.version) {
        std::printf("oxlin %s\n", OX_VERSION);
        return 0;
    }

    if (!options.exampleDir.empty()) {
        std::string error;
        if (!oxExampleScene::write(options.exampleDir, error)) {
            std::fprintf(stderr, "oxlin: can't write the example scene: %s\n", error.c_str());
            return 1;
        }
        std::printf("Wrote the example scene to '%s'.\n", options.exampleDir.c_str());
        return 0;
    }

    const bool runsScript = !options.script.empty() || options.hasPython;
    std::string scriptCode;
    if (!options.script.empty() && !readScript(options.script, scriptCode))
        return 2;

    if (!options.snapshot.empty() || options.listOutputs || options.render || options.renderQueue ||
        !options.renderJob.empty())
        options.noGUI = true;
    if (options.noGUI || options.listPlugins || options.listScene) {
        // Headless runs build the same widgets, on a platform that draws into memory.
        oxPlatform::prepareHeadless();
    }
    if (!options.logFile.empty() && !oxLog::setLogFile(options.logFile)) {
        std::fprintf(stderr, "oxlin: can't open the log file '%s'\n", options.logFile.c_str());
        return 2;
    }
    if (options.traceCalls) {
        oxCallTrace::setEnabled(true);
        oxCallTrace::setEcho(true);
    }

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("oxlin"));
    QApplication::setApplicationVersion(oxPlatform::getVersion());

    if (!options.prefsDir.empty())
        oxPreferences::setPreferencesDir(options.prefsDir);
    oxPreferences::load();

    auto mainWindow = std::make_unique<oxMainWindow>();
    // The render queue module and the cluster manager stand before the plug-ins, which use them.
    auto renderQueue = std::make_unique<oxRenderQueue>();
    if (!options.slurmConf.empty())
        oxSlurm::setConfigFile(options.slurmConf);
    oxClusterManagerService clusterManager;
    if (!options.clusterJobs.empty())
        clusterManager.setJobFolder(options.clusterJobs);
    oxKernelServiceFactory::the()->registerService(&clusterManager);
    // Exports render the current scene with the host's raytracer.
    oxImageSource::setCurrent(&oxRaytracerSource::the());

    const std::string pluginDir =
        options.pluginDir.empty() ? oxPluginLoader::defaultPluginDir() : options.pluginDir;
    oxPluginLoader::loadAll(pluginDir);

    int result = 0;
    if (options.listPlugins) {
        listPlugins();
    } else {
        newScene();
        if (!options.sceneFile.empty() && !oxSceneIO::open(options.sceneFile) &&
            (options.noGUI || options.listScene))
            result = 1;
        if (result == 0 && !options.snapshot.empty()) {
            result = renderSnapshot(options);
        } else if (result == 0 && options.listScene) {
            std::fputs(oxSceneIO::describe(oxScene::current()).c_str(), stdout);
            std::fflush(stdout);
        } else if (result == 0 && (options.listOutputs || options.render)) {
            result = runRenderJob(options);
        } else if (result == 0 && !options.renderJob.empty()) {
            char* end = nullptr;
            const long task = std::strtol(options.task.c_str(), &end, 10);
            if (*end != '\0' || task < 0 || task > 1000000000) {
                std::fprintf(stderr, "oxlin: bad task '%s' (expected a number from 0)\n",
                             options.task.c_str());
                result = 2;
            } else {
                result = oxClusterManagerService::runTask(options.renderJob, int(task));
            }
        } else if (result == 0 && options.renderQueue) {
            result = runRenderQueue(*renderQueue, options.overwrite);
        } else if (result == 0 && runsScript && options.noGUI) {
            result = runScript(options, scriptCode);
            // Work the script left for the event loop (deferred starts) still runs.
            QApplication::processEvents();
        } else if (result == 0 && !options.noGUI) {
            // The Script Editor needs the interpreter; a GUI without it still works.
            oxScript::start();
            mainWindow->show();
            if (runsScript)
                QTimer::singleShot(0, [&] { runScript(options, scriptCode); });
            result = application.exec();
        } else {
            QApplication::processEvents();
        }
    }

    // The interpreter goes before the plug-ins whose code its modules point into; plug-ins go
    // before the main window: their objects may refer to it and need the application.
    oxScript::stop();
    oxPluginLoader::unloadAll();
    oxImageSource::setCurrent(nullptr);
    oxKernelServiceFactory::the()->unregisterService<oxClusterManagerService>();
    renderQueue.reset();
    mainWindow.reset();
    oxLog::setLogFile(std::string());
    return result;
}

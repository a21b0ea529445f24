// Runs the real oxlin program, headless, as a user or a script would.

#include "oxTestSupport.h"

#include <fstream>
#include <sstream>
#include <string>

namespace {

const std::string kOxlin = std::string(OX_TEST_BINARY_DIR) + "/bin/oxlin";

class OxlinTest : public oxTest {
protected:
    oxProcessResult run(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {"--prefs-dir", prefs.path()});
        return oxRunProcess(kOxlin, arguments);
    }
    oxTempDir prefs;
};

} // namespace

TEST_F(OxlinTest, VersionAndHelp)
{
    oxProcessResult result = run({"--version"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "oxlin 15.3\n");

    result = run({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.out.find("--no-gui"), std::string::npos);
}

TEST_F(OxlinTest, HeadlessRunLoadsAndUnloadsThePlugin)
{
    oxProcessResult result = run({"--no-gui", "--list-plugins"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("MovieExport 15.3 (liboxMovieExport.so)\n"), std::string::npos)
        << result.out;

    // The window is docked into the offscreen main window, and the run ends by itself.
    result = run({"--no-gui", "--trace-host-calls"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.err.find("call QOXDockWindowManager::add(Render Settings)"), std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("call QOXDockWindowManager::addQuickAccessAction(QuickRender)"),
              std::string::npos);
    // Unloading the library destroys the module, which says so.
    EXPECT_NE(result.out.find("oxMovieExport::~oxMovieExport\n"), std::string::npos) << result.out;
    EXPECT_EQ(result.err.find("[error]"), std::string::npos) << result.err;
}

TEST_F(OxlinTest, BadArgumentsAreRefused)
{
    oxProcessResult result = run({"--no-gui", "--frobnicate"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find("unknown argument '--frobnicate'"), std::string::npos);

    result = run({"--no-gui", "--plugin-dir"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find("option --plugin-dir needs a value"), std::string::npos);

    result = run({"--no-gui", "--log-level", "loud"});
    EXPECT_EQ(result.exitCode, 2);
}

TEST_F(OxlinTest, BrokenPluginsAreSkippedWithAClearError)
{
    oxTempDir plugins;
    {
        std::ofstream fake(plugins.file("libbroken.so"));
        fake << "not a library";
    }
    oxTempDir logDir;
    const std::string logFile = logDir.file("run.log");
    oxProcessResult result =
        run({"--no-gui", "--plugin-dir", plugins.path(), "--log-file", logFile, "--list-plugins"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "");
    const std::string log = oxReadFile(logFile);
    EXPECT_NE(log.find("[error] Plug-in '" + plugins.file("libbroken.so") + "' can't be loaded"),
              std::string::npos)
        << log;

    result = run({"--no-gui", "--plugin-dir", plugins.file("missing")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find("can't be read; no plug-ins are loaded"), std::string::npos);
}

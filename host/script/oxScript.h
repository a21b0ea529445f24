#pragma once

#include <functional>
#include <string>
#include <vector>

/// The host's embedded Python. The interpreter starts once, after the plug-ins are loaded (so
/// that their registrars are known), runs every script in the namespace of __main__ on the GUI
/// thread, and stops before the plug-ins are unloaded, so that no Python object outlives the
/// plug-in code it points into.
class oxScript {
public:
    /// True while at least one script runs.
    static bool isRunning();

    /// Marks a script run from construction to destruction; runs may nest.
    class oxScriptRun {
    public:
        oxScriptRun();
        ~oxScriptRun();
        oxScriptRun(const oxScriptRun&) = delete;
        oxScriptRun& operator=(const oxScriptRun&) = delete;
    };

    /// Calls level 0 of every registrar, starts the interpreter, installs the host's converters
    /// and output streams, then calls level 1 of every registrar. False (after an error line)
    /// when the interpreter can't start; a second call does nothing and returns true.
    static bool start();
    /// Stops the interpreter; everything Python held is released. Does nothing when stopped.
    static void stop();
    static bool isStarted();

    /// How a script run ended.
    struct Outcome {
        enum Kind { Success, Exception, Exit };
        Kind kind = Success;
        /// Exit status: 0 on success, 1 after an uncaught exception, n for sys.exit(n).
        int exitCode = 0;
    };

    /// Executes code in __main__. An uncaught exception is logged as an error with its
    /// traceback; sys.exit ends the run (not the program) with its status.
    static Outcome execute(const std::string& code, const std::string& fileName = "<string>");
    /// execute, true exactly when the code ran to its end without an exception or sys.exit.
    static bool run(const std::string& code);
    /// Sets sys.argv (the first entry names the script).
    static void setArguments(const std::vector<std::string>& arguments);

    /// Where the text of print (Output) and of Python's standard error (Error) goes besides
    /// the process's standard output and error.
    enum Stream { Output, Error };
    using OutputListener = std::function<void(Stream, const std::string&)>;
    /// Registers a listener and returns its handle for removeOutputListener.
    static int addOutputListener(OutputListener listener);
    static void removeOutputListener(int handle);

    /// While on, a script that runs long lets the GUI repaint every 50 ms or so (user input
    /// stays blocked until the script ends). Off by default.
    static void setKeepResponsive(bool on);
    static bool isKeepResponsive();
};

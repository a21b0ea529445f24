#pragma once

/// The host's script runs. Whoever runs a script (the embedded interpreter, a batch job) marks
/// the run with oxScriptRun, so that code called from the script can tell that nobody is
/// there to answer a question.
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
};

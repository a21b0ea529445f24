#pragma once

#include <cstdarg>
#include <functional>
#include <string>

/// The host's log. Messages are printf-style; each goes to standard error, to the log file when
/// one is open, and to every registered sink (tests read messages through a sink).
class oxLog {
public:
    enum Level { Error = 0, Warning = 1, Info = 2, Debug = 3 };

    /// A sink receives the level and the formatted message (no trailing line end added).
    using Sink = std::function<void(Level, const std::string&)>;

    static void error(const char* format, ...) __attribute__((format(printf, 1, 2)));
    static void warning(const char* format, ...) __attribute__((format(printf, 1, 2)));
    static void info(const char* format, ...) __attribute__((format(printf, 1, 2)));
    static void debug(const char* format, ...) __attribute__((format(printf, 1, 2)));

    /// Formats and dispatches one message at the given level.
    static void write(Level level, const char* format, va_list args);

    /// Messages above this level are dropped (default: Info).
    static void setLevel(Level level);
    static Level getLevel();

    /// Whether messages are echoed to standard error (default: on).
    static void setStderrEnabled(bool enabled);

    /// Opens (appends to) a log file; an empty path closes it. False when it can't be opened.
    static bool setLogFile(const std::string& path);

    /// Registers a sink and returns its handle for removeSink.
    static int addSink(Sink sink);
    static void removeSink(int handle);

    /// "error", "warning", "info" or "debug".
    static const char* levelName(Level level);
};

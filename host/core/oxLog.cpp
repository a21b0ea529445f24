#include "oxLog.h"

#include <cstdio>
#include <map>
#include <mutex>
#include <vector>

namespace {

struct LogState {
    std::mutex mutex;
    oxLog::Level level = oxLog::Info;
    bool toStderr = true;
    FILE* file = nullptr;
    int nextSink = 1;
    std::map<int, oxLog::Sink> sinks;
};

LogState& state()
{
    static LogState s;
    return s;
}

std::string formatMessage(const char* format, va_list args)
{
    va_list copy;
    va_copy(copy, args);
    char buffer[1024];
    const int length = std::vsnprintf(buffer, sizeof(buffer), format, copy);
    va_end(copy);
    if (length < 0)
        return std::string(format);
    if (static_cast<size_t>(length) < sizeof(buffer))
        return std::string(buffer, static_cast<size_t>(length));
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, args);
    text.resize(static_cast<size_t>(length));
    return text;
}

} // namespace

#define OX_LOG_FORWARD(LEVEL)                                                                      \
    va_list args;                                                                                  \
    va_start(args, format);                                                                        \
    write(LEVEL, format, args);                                                                    \
    va_end(args)

void oxLog::error(const char* format, ...) { OX_LOG_FORWARD(Error); }
void oxLog::warning(const char* format, ...) { OX_LOG_FORWARD(Warning); }
void oxLog::info(const char* format, ...) { OX_LOG_FORWARD(Info); }
void oxLog::debug(const char* format, ...) { OX_LOG_FORWARD(Debug); }

#undef OX_LOG_FORWARD

void oxLog::write(Level level, const char* format, va_list args)
{
    LogState& s = state();
    const std::string text = formatMessage(format ? format : "", args);

    std::vector<Sink> sinks;
    {
        std::lock_guard<std::mutex> lock(s.mutex);
        // Sinks see every message, so that tests can check debug output too.
        for (const auto& entry : s.sinks)
            sinks.push_back(entry.second);
        if (level <= s.level) {
            // Messages often end with their own line end; don't double it.
            const bool hasEnd = !text.empty() && text.back() == '\n';
            if (s.toStderr)
                std::fprintf(stderr, "[%s] %s%s", levelName(level), text.c_str(),
                             hasEnd ? "" : "\n");
            if (s.file) {
                std::fprintf(s.file, "[%s] %s%s", levelName(level), text.c_str(),
                             hasEnd ? "" : "\n");
                std::fflush(s.file);
            }
        }
    }
    for (const Sink& sink : sinks)
        sink(level, text);
}

void oxLog::setLevel(Level level)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    state().level = level;
}

oxLog::Level oxLog::getLevel()
{
    std::lock_guard<std::mutex> lock(state().mutex);
    return state().level;
}

void oxLog::setStderrEnabled(bool enabled)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    state().toStderr = enabled;
}

bool oxLog::setLogFile(const std::string& path)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    LogState& s = state();
    if (s.file) {
        std::fclose(s.file);
        s.file = nullptr;
    }
    if (path.empty())
        return true;
    s.file = std::fopen(path.c_str(), "a");
    return s.file != nullptr;
}

int oxLog::addSink(Sink sink)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    const int handle = state().nextSink++;
    state().sinks[handle] = std::move(sink);
    return handle;
}

void oxLog::removeSink(int handle)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    state().sinks.erase(handle);
}

const char* oxLog::levelName(Level level)
{
    switch (level) {
    case Error:
        return "error";
    case Warning:
        return "warning";
    case Info:
        return "info";
    case Debug:
        return "debug";
    }
    return "log";
}

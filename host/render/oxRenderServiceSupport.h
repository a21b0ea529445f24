#pragma once

#include "oxCallTrace.h"

#include <array>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// A list of listeners of one render service. A listener is called with the name of the
/// parameter after its value changed; it may add or remove listeners while being called.
class oxServiceListeners {
public:
    using Listener = std::function<void(const char* parameter)>;

    /// Adds a listener; the handle removes it again.
    int add(Listener listener)
    {
        m_entries.push_back({++m_lastHandle, std::move(listener)});
        return m_lastHandle;
    }
    /// Removes a listener; an unknown handle does nothing.
    void remove(int handle)
    {
        for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
            if (it->first == handle) {
                m_entries.erase(it);
                return;
            }
        }
    }
    /// Calls every listener registered when the call starts.
    void notify(const char* parameter) const
    {
        const auto entries = m_entries;
        for (const auto& entry : entries)
            entry.second(parameter);
    }
    void clear() { m_entries.clear(); }

    /// Stores value in target and tells the listeners, when it is a change.
    template <typename T>
    void assign(T& target, T value, const char* parameter) const
    {
        if (target == value)
            return;
        target = value;
        notify(parameter);
    }

private:
    int m_lastHandle = 0;
    std::vector<std::pair<int, Listener>> m_entries;
};

/// The text of one traced argument.
std::string oxTraceArgument(bool value);
std::string oxTraceArgument(int value);
std::string oxTraceArgument(unsigned int value);
std::string oxTraceArgument(float value);
std::string oxTraceArgument(const std::string& value);
std::string oxTraceArgument(const std::array<float, 4>& value);

/// Records a call of a render service with its arguments, comma separated. The arguments are
/// only formatted while tracing is on, so that an untraced setter costs nothing extra.
template <typename... Args>
void oxTraceCall(const char* name, const Args&... args)
{
    if (!oxCallTrace::isEnabled())
        return;
    std::string text;
    bool first = true;
    auto append = [&](const std::string& argument) {
        text += first ? argument : ", " + argument;
        first = false;
    };
    (append(oxTraceArgument(args)), ...);
    (void)append; // a call without arguments expands to nothing
    oxCallTrace::record(name, text);
}

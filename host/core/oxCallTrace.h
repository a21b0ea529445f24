#pragma once

#include <string>
#include <vector>

/// A record of the calls the host's services receive, in order, for tests that check call
/// orders and for users debugging a script (oxlin --trace-host-calls). Off by default.
class oxCallTrace {
public:
    struct Call {
        std::string name;      ///< "class::operation"
        std::string arguments; ///< the arguments as text, comma separated
    };

    static void setEnabled(bool enabled);
    static bool isEnabled();
    /// With echo on, every recorded call is also written to the log at info level.
    static void setEcho(bool echo);

    /// Records one call when tracing is enabled.
    static void record(const std::string& name, const std::string& arguments = std::string());

    static const std::vector<Call>& calls();
    /// The names of the recorded calls, in order.
    static std::vector<std::string> names();
    static void clear();
};

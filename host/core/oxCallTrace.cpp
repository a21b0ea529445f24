#include "oxCallTrace.h"

#include "oxLog.h"

namespace {

struct TraceState {
    bool enabled = false;
    bool echo = false;
    std::vector<oxCallTrace::Call> calls;
};

TraceState& state()
{
    static TraceState s;
    return s;
}

} // namespace

void oxCallTrace::setEnabled(bool enabled) { state().enabled = enabled; }
bool oxCallTrace::isEnabled() { return state().enabled; }
void oxCallTrace::setEcho(bool echo) { state().echo = echo; }

void oxCallTrace::record(const std::string& name, const std::string& arguments)
{
    TraceState& s = state();
    if (!s.enabled)
        return;
    s.calls.push_back({name, arguments});
    if (s.echo)
        oxLog::info("call %s(%s)", name.c_str(), arguments.c_str());
}

const std::vector<oxCallTrace::Call>& oxCallTrace::calls() { return state().calls; }

std::vector<std::string> oxCallTrace::names()
{
    std::vector<std::string> result;
    for (const Call& call : state().calls)
        result.push_back(call.name);
    return result;
}

void oxCallTrace::clear() { state().calls.clear(); }

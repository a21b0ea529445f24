// The library's entry points, called by the host's plug-in loader.

#include "oxMovieExport.h"

namespace {
const char kPluginVersion[] = "15.3";
} // namespace

extern "C" {

__attribute__((visibility("default"))) const char* getPluginVersion() { return kPluginVersion; }

__attribute__((visibility("default"))) void initPlugin()
{
    // Constructed once, under the thread-safe guard of a local static, and destroyed when the
    // library is unloaded. A constructor that throws leaves the guard open for a later call.
    static oxMovieExport module;
    (void)module;
}

} // extern "C"

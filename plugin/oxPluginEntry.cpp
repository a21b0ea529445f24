// The library's entry points, called by the host's plug-in loader.

#include "oxMovieExport.h"
#include "oxRenderSettingsPreferencesGUII.h"

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

__attribute__((visibility("default"))) void initPreferencesPlugin()
{
    // The preferences page: its defaults go into the host's preference data now, and its keys
    // leave the data again when the library is unloaded and the page destroyed.
    static oxRenderSettingsPreferencesGUII page;
    (void)page;
}

} // extern "C"

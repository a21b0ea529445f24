#pragma once

#include <string>
#include <vector>

/// Loads plug-in libraries into the host process and unloads them again.
///
/// A plug-in library exports `const char* getPluginVersion()` and `void initPlugin()`, and may
/// export `void initPreferencesPlugin()`. Loading checks and calls them in that order.
class oxPluginLoader {
public:
    struct Plugin {
        std::string path;                 ///< the library file
        std::string version;              ///< what getPluginVersion returned
        std::vector<std::string> modules; ///< names of the modules its initPlugin created
        void* handle = nullptr;
    };

    /// The plug-in folder of this installation: "plugins" beside the program's folder.
    static std::string defaultPluginDir();

    /// Loads every "*.so" in folder, in name order; returns how many loaded. Failures are
    /// logged and skipped.
    static int loadAll(const std::string& folder);
    /// Loads one library; false (logged) when it can't be opened or lacks an entry point.
    static bool load(const std::string& path);
    /// Unloads every loaded plug-in, last loaded first; their static objects are destroyed.
    static void unloadAll();

    static const std::vector<Plugin>& plugins();
};

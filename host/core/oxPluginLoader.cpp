#include "oxPluginLoader.h"

#include "oxController.h"
#include "oxLog.h"
#include "oxModuleBase.h"

#include <dirent.h>
#include <dlfcn.h>
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <exception>

namespace {

using VersionFunction = const char* (*)();
using InitFunction = void (*)();

std::vector<oxPluginLoader::Plugin>& loaded()
{
    static std::vector<oxPluginLoader::Plugin> plugins;
    return plugins;
}

bool endsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

} // namespace

std::string oxPluginLoader::defaultPluginDir()
{
    char buffer[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof(buffer) - 1);
    if (length <= 0)
        return "plugins";
    std::string exe(buffer, static_cast<size_t>(length));
    const size_t slash = exe.rfind('/');
    const std::string binDir = slash == std::string::npos ? "." : exe.substr(0, slash);
    const size_t parent = binDir.rfind('/');
    return (parent == std::string::npos ? std::string(".") : binDir.substr(0, parent)) + "/plugins";
}

int oxPluginLoader::loadAll(const std::string& folder)
{
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) {
        oxLog::error("Plug-in folder '%s' can't be read; no plug-ins are loaded", folder.c_str());
        return 0;
    }
    std::vector<std::string> files;
    while (const dirent* entry = ::readdir(dir)) {
        const std::string name = entry->d_name;
        if (endsWith(name, ".so"))
            files.push_back(folder + "/" + name);
    }
    ::closedir(dir);
    std::sort(files.begin(), files.end());

    int count = 0;
    for (const std::string& file : files)
        count += load(file) ? 1 : 0;
    return count;
}

bool oxPluginLoader::load(const std::string& path)
{
    for (const Plugin& plugin : loaded())
        if (plugin.path == path)
            return true;

    void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        oxLog::error("Plug-in '%s' can't be loaded: %s", path.c_str(), ::dlerror());
        return false;
    }
    auto version = reinterpret_cast<VersionFunction>(::dlsym(handle, "getPluginVersion"));
    auto init = reinterpret_cast<InitFunction>(::dlsym(handle, "initPlugin"));
    auto initPreferences = reinterpret_cast<InitFunction>(::dlsym(handle, "initPreferencesPlugin"));
    if (!version || !init) {
        oxLog::error("Plug-in '%s' is not an Oxlin plug-in: it lacks %s", path.c_str(),
                     version ? "initPlugin" : "getPluginVersion");
        ::dlclose(handle);
        return false;
    }
    const char* versionText = version();
    if (!versionText || !*versionText) {
        oxLog::error("Plug-in '%s' gives no version; it is not loaded", path.c_str());
        ::dlclose(handle);
        return false;
    }

    Plugin plugin;
    plugin.path = path;
    plugin.version = versionText;
    plugin.handle = handle;
    const std::vector<oxModuleBase*> before = oxController::getModules();
    try {
        init();
        if (initPreferences)
            initPreferences();
    } catch (const std::exception& e) {
        oxLog::error("Plug-in '%s' failed to start: %s", path.c_str(), e.what());
    } catch (...) {
        oxLog::error("Plug-in '%s' failed to start with an unknown exception", path.c_str());
    }
    for (oxModuleBase* module : oxController::getModules())
        if (std::find(before.begin(), before.end(), module) == before.end())
            plugin.modules.push_back(module->getName());
    loaded().push_back(plugin);
    oxLog::debug("Loaded plug-in '%s' version %s", path.c_str(), versionText);
    return true;
}

void oxPluginLoader::unloadAll()
{
    auto& plugins = loaded();
    while (!plugins.empty()) {
        Plugin plugin = plugins.back();
        plugins.pop_back();
        if (::dlclose(plugin.handle) != 0)
            oxLog::error("Plug-in '%s' can't be unloaded: %s", plugin.path.c_str(), ::dlerror());
    }
}

const std::vector<oxPluginLoader::Plugin>& oxPluginLoader::plugins() { return loaded(); }

#include "oxPreferences.h"

#include "oxFile.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxPreferencesService.h"

#include <cstdlib>
#include <set>

namespace {

const char kPreferenceFileName[] = "preferences.xml";

struct PreferenceState {
    oxMessage data;
    std::string folder;
    bool folderChosen = false;
    std::set<std::string> unchanged;
};

PreferenceState& state()
{
    static PreferenceState s;
    return s;
}

std::string withSeparator(std::string folder)
{
    if (!folder.empty() && folder.back() != '/')
        folder += '/';
    return folder;
}

std::string defaultFolder()
{
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && *config)
        return withSeparator(config) + "oxlin/";
    return withSeparator(oxFile::homeDirectory()) + ".config/oxlin/";
}

} // namespace

oxPreferencesService* oxPreferencesService::the()
{
    static oxPreferencesService* service = [] {
        auto* created = new oxPreferencesService();
        oxKernelServiceFactory::the()->registerService<oxPreferencesService>(created);
        return created;
    }();
    return service;
}

oxMessage& oxPreferences::getData() { return state().data; }

std::string oxPreferences::getPreferencesDir()
{
    PreferenceState& s = state();
    if (!s.folderChosen) {
        s.folder = defaultFolder();
        s.folderChosen = true;
        oxFile::createPath(s.folder);
    }
    return s.folder;
}

void oxPreferences::setPreferencesDir(const std::string& folder)
{
    PreferenceState& s = state();
    s.folder = withSeparator(oxFile::expandFilename(folder));
    s.folderChosen = true;
    if (!s.folder.empty() && !oxFile::createPath(s.folder))
        oxLog::error("Preferences: can't create the folder '%s'", s.folder.c_str());
}

std::string oxPreferences::getPreferencesFile()
{
    const std::string folder = getPreferencesDir();
    return folder.empty() ? std::string() : folder + kPreferenceFileName;
}

bool oxPreferences::load()
{
    const std::string file = getPreferencesFile();
    if (file.empty() || !oxFile::exists(file, true)) {
        state().data.clear();
        return true;
    }
    oxMessage loaded;
    if (!oxMessageRW::read(loaded, file.c_str(), std::string())) {
        oxLog::error("Preferences: '%s' can't be read (%s); defaults are used and the file is "
                     "replaced at the next save",
                     file.c_str(), oxMessageRW::lastError().c_str());
        return false;
    }
    state().data = loaded;
    return true;
}

bool oxPreferences::save()
{
    const std::string file = getPreferencesFile();
    if (file.empty()) {
        oxLog::error("Preferences: no preferences folder, preferences are not saved");
        return false;
    }
    return oxMessageRW::write(state().data, file.c_str());
}

void oxPreferences::changedPreferences(const char* page)
{
    emit oxPreferencesService::the()->preferencesChanged(QString::fromUtf8(page ? page : ""));
}

bool oxPreferences::isChanged(const char* key) { return key && state().unchanged.count(key) == 0; }

void oxPreferences::addUnchanged(const char* key)
{
    if (key)
        state().unchanged.insert(key);
}

void oxPreferences::clearUnchanged() { state().unchanged.clear(); }

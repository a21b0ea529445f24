#include "oxPreferences.h"

#include "oxFile.h"
#include "oxFileRescue.h"
#include "oxInputLimits.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxPreferencesService.h"

#include <QString>
#include <QWidget>

#include <algorithm>
#include <cstdlib>
#include <set>

namespace {

const char kPreferenceFileName[] = "preferences.xml";

struct PreferenceState {
    oxMessage data;
    std::string folder;
    bool folderChosen = false;
    std::set<std::string> unchanged;
    std::vector<oxPreferences*> pages;
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

// Lets every page with a widget fill in its defaults after the data was replaced.
void fillPageDefaults(bool loaded)
{
    for (oxPreferences* page : state().pages) {
        if (!page->getPreferencesGUI())
            continue;
        page->setPreferenceDefaults(state().data, false);
        if (loaded)
            page->preferencesLoaded(state().data);
    }
}

// A file written by a newer host may mean keys of another meaning: it is not used.
std::string newerVersionProblem(const oxMessage& loaded)
{
    const auto& attributes = loaded.getAttributes();
    const auto it = attributes.find(oxPreferences::fileVersionAttribute);
    if (it == attributes.end())
        return {};
    const int version = std::atoi(it->second.c_str());
    if (version <= oxPreferences::fileVersion)
        return {};
    return "it was written by a newer version (preferences version " + it->second +
           ", this one reads up to " + std::to_string(oxPreferences::fileVersion) + ")";
}

// A value of another type than its page's default would make every later typed read complain
// with a stack trace: each is reported once, naming the key and the file, and left to the
// default.
void dropWronglyTyped(oxMessage& loaded, const std::string& file)
{
    oxMessage defaults;
    for (oxPreferences* page : state().pages)
        if (page->getPreferencesGUI())
            page->setPreferenceDefaults(defaults, true);
    for (const auto& [key, value] : defaults.getMap()) {
        const boost::any& stored = loaded.get(key);
        // Text is text in either string type: the pages read both.
        const auto text = [](const std::type_info& type) {
            return oxMessage::sameType(type, typeid(std::string)) ||
                   oxMessage::sameType(type, typeid(QString));
        };
        if (stored.empty() || oxMessage::sameType(stored.type(), value.type()) ||
            (text(stored.type()) && text(value.type())))
            continue;
        oxLog::warning("Preferences: '%s': the entry '%s' has the wrong type; its default is used",
                       file.c_str(), oxInputLimits::quoted(key).c_str());
        loaded.remove(key);
    }
}

} // namespace

oxPreferences::oxPreferences(const QString& name, const QString& description)
    : m_name(name), m_description(description)
{
    state().pages.push_back(this);
}

oxPreferences::~oxPreferences()
{
    auto& pages = state().pages;
    pages.erase(std::remove(pages.begin(), pages.end(), this), pages.end());
}

void oxPreferences::setPreferenceDefaults(oxMessage&, bool) {}
void oxPreferences::applyPreferences() {}
void oxPreferences::preferencesToWidgets() {}
void oxPreferences::widgetsToPreferences() {}
void oxPreferences::preferencesNewScene(oxMessage&) {}
void oxPreferences::preferencesLoaded(oxMessage&) {}
void oxPreferences::preferencesInitialApply(oxMessage&) {}

void oxPreferences::addPreferencesGUI(QWidget* widget)
{
    if (!widget)
        return;
    m_widget = widget;
    setPreferenceDefaults(getData(), false);
    preferencesInitialApply(getData());
}

void oxPreferences::subPreferencesGUI(QWidget* widget)
{
    if (!widget || widget != m_widget)
        return;
    // An open dialog holds the widget in its stack; the page deletes it after this.
    widget->setParent(nullptr);
    m_widget = nullptr;
}

const std::vector<oxPreferences*>& oxPreferences::getPages() { return state().pages; }

oxPreferences* oxPreferences::findPage(const QString& name)
{
    for (oxPreferences* page : state().pages)
        if (page->getName() == name)
            return page;
    return nullptr;
}

bool oxPreferences::confirm()
{
    // A copy: applying a page may make or remove pages.
    const std::vector<oxPreferences*> pages = state().pages;
    for (oxPreferences* page : pages) {
        if (!page->getPreferencesGUI())
            continue;
        clearUnchanged();
        page->widgetsToPreferences();
        page->applyPreferences();
        changedPreferences(page->getName().toUtf8().constData());
    }
    clearUnchanged();
    return save();
}

void oxPreferences::showDefaults(oxPreferences& page)
{
    oxMessage& data = getData();
    const oxMessage kept = data;
    page.setPreferenceDefaults(data, true);
    page.preferencesToWidgets();
    data = kept;
}

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
        fillPageDefaults(false);
        return true;
    }
    oxMessage loaded;
    std::string problem;
    if (!oxMessageRW::read(loaded, file.c_str(), std::string()))
        problem = oxMessageRW::lastError();
    else
        problem = newerVersionProblem(loaded);
    if (problem.empty()) {
        dropWronglyTyped(loaded, file);
        state().data = loaded;
        fillPageDefaults(true);
        return true;
    }

    // The file is set aside, not overwritten: the user may want to mend it or send it in.
    const std::string kept = oxFileRescue::keepBeside(file);
    if (!kept.empty())
        oxLog::error("Preferences: '%s' can't be read (%s); it was kept as '%s' and the "
                     "defaults are used",
                     file.c_str(), problem.c_str(), kept.c_str());
    else
        oxLog::error("Preferences: '%s' can't be read (%s) nor renamed; the defaults are used "
                     "and the file is replaced at the next save",
                     file.c_str(), problem.c_str());
    state().data.clear();
    fillPageDefaults(false);
    return false;
}

bool oxPreferences::save()
{
    const std::string file = getPreferencesFile();
    if (file.empty()) {
        oxLog::error("Preferences: no preferences folder, preferences are not saved");
        return false;
    }
    state().data.addAttribute(fileVersionAttribute, std::to_string(fileVersion));
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

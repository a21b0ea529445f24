#pragma once

#include <string>

class oxMessage;

/// The host's preference store: one oxMessage of key text to typed value, kept as XML in the
/// file "preferences.xml" in the preferences folder.
///
/// The folder is the one given with --prefs-dir, else $XDG_CONFIG_HOME/oxlin/, else
/// ~/.config/oxlin/.
class oxPreferences {
public:
    /// The preference data, alive for the whole run.
    static oxMessage& getData();

    /// The preferences folder, always ending with a separator; "" only when no folder could be
    /// determined.
    static std::string getPreferencesDir();
    /// Uses folder (created when missing) instead of the default one.
    static void setPreferencesDir(const std::string& folder);
    /// The full name of the preference file.
    static std::string getPreferencesFile();

    /// Replaces the data with the preference file's content. A missing file gives empty data
    /// and true; an unreadable one leaves the data, logs an error and gives false.
    static bool load();
    /// Writes the data to the preference file atomically; false (and an error in the log)
    /// when it can't be written.
    static bool save();

    /// Tells listeners that the keys of page were confirmed (oxPreferencesService signal).
    static void changedPreferences(const char* page);

    /// During a confirmation: whether key was changed. Keys are changed unless marked
    /// unchanged with addUnchanged since the last clearUnchanged.
    static bool isChanged(const char* key);
    static void addUnchanged(const char* key);
    static void clearUnchanged();
};

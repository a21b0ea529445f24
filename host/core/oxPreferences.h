#pragma once

#include <QString>

#include <string>
#include <vector>

class QWidget;
class oxMessage;

/// The host's preferences: one store of key text to typed value, kept as XML in the file
/// "preferences.xml" in the preferences folder, and the pages of the preferences dialog.
///
/// The folder is the one given with --prefs-dir, else $XDG_CONFIG_HOME/oxlin/, else
/// ~/.config/oxlin/.
///
/// A page is an object of a class derived from oxPreferences. It registers its widget with
/// addPreferencesGUI, which gives the store the page's defaults (setPreferenceDefaults with
/// overwrite false, then preferencesInitialApply). The dialog shows a page with
/// preferencesToWidgets; when the user confirms (OK or Apply), confirm() runs, for each page,
/// widgetsToPreferences, then applyPreferences, announces the page with changedPreferences and
/// saves the store. After every load the pages fill in what the file lacked and hear
/// preferencesLoaded.
class oxPreferences {
public:
    /// A page named name in the dialog's list; description is its tool tip there.
    explicit oxPreferences(const QString& name, const QString& description = QString());
    virtual ~oxPreferences();
    oxPreferences(const oxPreferences&) = delete;
    oxPreferences& operator=(const oxPreferences&) = delete;

    const QString& getName() const { return m_name; }
    const QString& getDescription() const { return m_description; }
    /// The widget registered with addPreferencesGUI; null before and after.
    QWidget* getPreferencesGUI() const { return m_widget; }

    /// Writes the page's keys with their defaults into data; with overwrite false a value
    /// already there stays.
    virtual void setPreferenceDefaults(oxMessage& data, bool overwrite);
    /// Makes changed keys take effect now (isChanged tells which changed).
    virtual void applyPreferences();
    /// Shows the store's values in the page's widgets.
    virtual void preferencesToWidgets();
    /// Writes the widgets' values into the store, marking equal ones with addUnchanged.
    virtual void widgetsToPreferences();
    /// A new scene starts; data is the store.
    virtual void preferencesNewScene(oxMessage& data);
    /// The store was read from the preference file.
    virtual void preferencesLoaded(oxMessage& data);
    /// The page's defaults are in the store for the first time.
    virtual void preferencesInitialApply(oxMessage& data);

    /// Makes widget the page's widget in the dialog and fills in the page's defaults.
    void addPreferencesGUI(QWidget* widget);
    /// Takes widget out of the dialog again (the page is going); the caller deletes it.
    void subPreferencesGUI(QWidget* widget);

    /// Every page alive, in the order in which they were made.
    static const std::vector<oxPreferences*>& getPages();
    /// The page of that name, or null.
    static oxPreferences* findPage(const QString& name);

    /// The user confirmed the dialog: each page with a widget writes its widgets into the
    /// store and applies what changed; then the store is saved. False when it couldn't be
    /// saved (logged).
    static bool confirm();
    /// Shows the defaults of page in its widgets without changing the store: a later confirm
    /// makes them the values, a cancel forgets them.
    static void showDefaults(oxPreferences& page);

    /// The preference data, alive for the whole run.
    static oxMessage& getData();

    /// The preferences folder, always ending with a separator; "" only when no folder could be
    /// determined.
    static std::string getPreferencesDir();
    /// Uses folder (created when missing) instead of the default one.
    static void setPreferencesDir(const std::string& folder);
    /// The full name of the preference file.
    static std::string getPreferencesFile();

    /// Replaces the data with the preference file's content, then lets the pages fill in their
    /// defaults. A missing file gives the defaults alone and true. A file that can't be read,
    /// or that a newer version wrote, is kept beside under the same name with ".bad" added
    /// (oxFileRescue) and reported in one error line; the data is then the defaults, and false
    /// is returned.
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

    /// The version of the preference file this host writes and reads; a file of a higher
    /// version is set aside.
    static constexpr int fileVersion = 1;
    /// The root attribute that holds it.
    static constexpr const char* fileVersionAttribute = "preferences_version";

private:
    QString m_name;
    QString m_description;
    QWidget* m_widget = nullptr;
};

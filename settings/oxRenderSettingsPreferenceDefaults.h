#pragma once

#include "oxRenderSettingsKeys.h"

#include <QString>

#include <string>
#include <variant>
#include <vector>

class oxMessage;

/// What confirming the preferences page does at once with a key that changed. Every other
/// key waits for the next new scene or the next read.
enum class oxPreferenceEffect {
    None,          ///< nothing now (a value that is only read later)
    Live,          ///< the row's field, into the window's record and every live host store of it
    ImageFilter,   ///< the pixel filter's type and sizes, set together if one of them changed
    Spectral,      ///< the window's spectral switch, which carries the other settings over
    BrdfMode,      ///< the BRDF switch over all materials
    DenoiseFilter, ///< the denoise filter, an older filter replaced as the window does
    Dithering,     ///< the render view's dithering, through the window
    PlaySound,     ///< the sound at the end of an export
};

/// A preference of the plug-in: its key, its value when it starts (its type when it has no
/// default), the widget of the preferences page that shows it and what a change does. A row of
/// a setting of the record names its field and takes the key under which the default
/// settings read that field.
struct oxPreferenceDefault {
    using Value =
        std::variant<bool, int, unsigned int, float, std::string, QString, std::vector<int>>;
    const char* key; ///< null: the key of field in kPreferenceKeys
    oxSettingField field;
    Value value;
    /// Object name of the page's widget; null for a key without one. Widgets that show the
    /// same value or a part of it follow the named one.
    const char* widget = nullptr;
    oxPreferenceEffect effect = oxPreferenceEffect::None;
    /// False: the key is written by the page only, never given a default.
    bool hasDefault = true;

    std::string keyName() const;
};

/// Every preference of the plug-in, in the order in which its default is written.
const std::vector<oxPreferenceDefault>& preferenceDefaults();

/// Writes every default into data; with overwrite false a value already there stays.
void setPreferenceDefaults(oxMessage& data, bool overwrite);
/// Removes every key of the table from data (the plug-in is unloaded).
void removePreferenceDefaults(oxMessage& data);

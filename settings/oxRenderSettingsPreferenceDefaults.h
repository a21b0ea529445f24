#pragma once

#include "oxRenderSettingsKeys.h"

#include <QString>

#include <string>
#include <variant>
#include <vector>

class oxMessage;

/// A preference of the plug-in with the value it starts with. A row of a setting of the
/// record names its field and takes the key under which the default settings read that field.
struct oxPreferenceDefault {
    using Value =
        std::variant<bool, int, unsigned int, float, std::string, QString, std::vector<int>>;
    const char* key; ///< null: the key of field in kPreferenceKeys
    oxSettingField field;
    Value value;

    std::string keyName() const;
};

/// Every preference of the plug-in, in the order in which its default is written.
const std::vector<oxPreferenceDefault>& preferenceDefaults();

/// Writes every default into data; with overwrite false a value already there stays.
void setPreferenceDefaults(oxMessage& data, bool overwrite);
/// Removes every key of the table from data (the plug-in is unloaded).
void removePreferenceDefaults(oxMessage& data);

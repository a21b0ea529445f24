#pragma once

#include "oxRenderSettingsPreset.h"

#include <string>
#include <variant>
#include <vector>

class oxMessage;

// The preset file store: a list of presets as one message, by columns. Each column is one
// attribute holding a list with an element per preset; a preset is the elements at one index.
// The message goes to "rendersettingstemplates.xml" in the preferences folder and, as text,
// into render job data.

constexpr const char* kPresetFileName = "rendersettingstemplates.xml";
/// The file of older versions: read when the new file is missing, never written or deleted.
constexpr const char* kLegacyPresetFileName = "raytracingtemplates.xml";
constexpr const char* kPresetVersionAttribute = "rendersettings_version";
/// The number of presets written, null entries included.
constexpr const char* kPresetCountAttribute = "oxRenderSettingsPreset";

constexpr const char* kPresetReadNotice = "Read Preset";
constexpr const char* kPresetLoadedVersionMessage = "Loaded version of rendersettings presets: %i";
constexpr const char* kPresetNameMissingMessage = "Couldn't read preset!";
constexpr const char* kPresetWriteFailedMessage = "Couldn't write raytracing templates file!";
constexpr const char* kPresetWrongTypeMessage =
    "The presets of %s: the entry '%s' has the wrong type and is left out.";
constexpr const char* kPresetFileKeptMessage =
    "The preset file '%s' couldn't be read; it is kept as '%s' and a new one is saved.";
constexpr const char* kPresetNewerVersionMessage =
    "Loaded version of the rendersettings templates file (renderdettings.xml) was created with "
    "a newer version of Oxlin!\nSaving of templates has been disabled. Please manually delete "
    "rendersettings.xml to reenable saving with this Oxlin version.";

/// What a preset gets for a field whose column is absent or shorter than the list.
enum class oxPresetColumnFallback {
    Required,    ///< the "name" column: without it nothing is read; it sets the preset count
    Constructed, ///< the field keeps its constructed value
    Live,        ///< the host's live value at the moment of the read
    AlwaysLive,  ///< the column is never read: the field always takes the live value
    Dropped,     ///< the column is read and dropped: the field keeps its constructed value
    SameAs,      ///< the value the same preset got for another field
};

/// How one column reaches its field. T is the element type of the column's list.
template <typename T>
struct oxPresetColumnField {
    /// The field; null for a column that is always written empty.
    T oxRenderSettingsPreset::*field = nullptr;
    /// The live value (Live, AlwaysLive).
    T (*live)() = nullptr;
    /// The field whose value a short column falls back to (SameAs).
    T oxRenderSettingsPreset::*sameAs = nullptr;
};

/// The element types of columns, in the order of oxPresetColumnType.
using oxPresetColumnAccess =
    std::variant<oxPresetColumnField<bool>, oxPresetColumnField<int>,
                 oxPresetColumnField<unsigned int>, oxPresetColumnField<float>,
                 oxPresetColumnField<std::string>, oxPresetColumnField<oxVariantSetGroups>>;

enum class oxPresetColumnType { Bool, Int, UInt, Float, String, VariantSetGroups };

/// One column of the preset file.
struct oxPresetColumn {
    const char* attribute;
    oxPresetColumnFallback fallback;
    oxPresetColumnAccess access;

    oxPresetColumnType type() const { return static_cast<oxPresetColumnType>(access.index()); }
    /// True when the column is always written empty.
    bool isAlwaysEmpty() const;
};

/// All columns, in the order in which they are written.
const std::vector<oxPresetColumn>& oxPresetColumns();

/// The presets as a new message: version, count and every column. Null entries are counted
/// but contribute to no column.
oxMessage writePresetsToMessage(const oxRenderSettingsPresets& presets);
/// The presets as text in the host's message form; false when the message can't be written.
bool writePresetsToString(const oxRenderSettingsPresets& presets, std::string& text);
/// Writes the presets to path, atomically; false when the file can't be written.
bool writePresetFile(const std::string& path, const oxRenderSettingsPresets& presets);
/// Writes the presets to the preset file in the preferences folder, unless a preset file of a
/// newer version was read in this process (then an error is logged and nothing is written).
void savePresetFile(const oxRenderSettingsPresets& presets);

/// The presets of a message. Nothing without a count or with a count of 0; an error and
/// nothing without a "name" column. Short or absent columns fall back as the column says.
oxRenderSettingsPresets readPresetsFromMessage(const oxMessage& message);
/// The presets of a file; an empty list without any message when it can't be parsed. A
/// successful parse sets the loaded file version.
oxRenderSettingsPresets readPresetsFromFile(const std::string& path);
/// The presets of a text, as readPresetsFromFile.
oxRenderSettingsPresets readPresetsFromString(const std::string& text);
/// The presets of the preferences folder: the preset file, or the legacy file when the preset
/// file doesn't exist. Prints "Read Preset" on standard output first.
oxRenderSettingsPresets readPresetFile();

#pragma once

#include "oxImageWriter.h"
#include "oxRenderSettingsPreset.h"

#include <array>
#include <string>
#include <variant>
#include <vector>

// The flat keys under which the current settings live in a scene's project record and in the
// host's preferences. Each table is walked by both its writer and its reader.

/// A field of the settings record, typed; the type of a field is the type of its key.
using oxSettingField =
    std::variant<bool oxRenderSettingsPreset::*, int oxRenderSettingsPreset::*,
                 unsigned int oxRenderSettingsPreset::*, float oxRenderSettingsPreset::*,
                 std::string oxRenderSettingsPreset::*,
                 oxVariantSetGroups oxRenderSettingsPreset::*>;

/// How a key falls back when it is absent, and what else is special about it.
enum class oxKeyRule {
    Plain,           ///< the fallback value
    DefaultFilename, ///< the default file name built from the snapshot preferences
    OldIntKey,       ///< the float size falls back to its older integer key, then the value
    IntKey,          ///< an integer key of a float field (the size in the preferences)
    RegionEndX,      ///< the image width in whole pixels
    RegionEndY,      ///< the image height in whole pixels
    SsFactor,        ///< fallback 3; a stored value above 0 counts as 3, any other as 0
    Denoise,         ///< merged with the older on/off flag, the legacy filter counts as 2
    Brdf,            ///< a scene's older mode may be kept or asked about
    SameAsField,     ///< the value another field has after all keys were read
    PassFlags,       ///< stands for the master switch and every pass flag key
    SavedOnly,       ///< written, never read (its field is read under another key)
    ReadOnly,        ///< read, never written
    Superseded,      ///< an old key that is read first and always overwritten by a newer one
    AsScene,         ///< a preference with the scene key's name, fallback and rule
};

struct oxSettingKey {
    /// The key text; in the preference table null means the scene key of the same field.
    const char* key;
    oxSettingField field;
    double fallback;
    oxKeyRule rule = oxKeyRule::Plain;
    /// SameAsField: the field whose value is taken; OldIntKey: unused.
    oxSettingField fallbackField = {};
    /// OldIntKey: the older integer key.
    const char* oldKey = nullptr;
};

/// The scene key texts that other records share (the render job record, the preset file's
/// columns); the scene key table and those records all name them from here.
namespace oxSceneKey {
constexpr const char VariantSetsUsed[] = "VariantSetsUsed";
constexpr const char RenderAnimation[] = "MovieExport Render Animation";
constexpr const char Clip[] = "MovieExport Clip";
constexpr const char Filename[] = "MovieExport Filename";
constexpr const char FloatWidth[] = "ImageExport floatwidth";
constexpr const char FloatHeight[] = "ImageExport floatheight";
constexpr const char Alpha[] = "MovieExport alpha";
constexpr const char TiffHDR[] = "ImageExport tiff hdr";
constexpr const char ExrHalf[] = "ImageExport exr half";
constexpr const char MultiLayer[] = "ImageExport multi layer exr";
constexpr const char SsFactor[] = "MovieExport ssfactor";
constexpr const char PremultiplyRed[] = "MovieExport Premultiply Red";
constexpr const char PremultiplyGreen[] = "MovieExport Premultiply Green";
constexpr const char PremultiplyBlue[] = "MovieExport Premultiply Blue";
constexpr const char Ppi[] = "MovieExport ppi";
constexpr const char Premultiply[] = "MovieExport Premultiply";
constexpr const char TonemapHDR[] = "MovieExport tonemap hdr";
constexpr const char ImageSamples[] = "Maximum Antialiasing Samples";
constexpr const char StillQualityMode[] = "Still Quality Mode";
constexpr const char RenderTime[] = "Maximum Rendering Time";
constexpr const char UseTimeLimit[] = "Use Rendering Time Limit Flag";
constexpr const char UseInfiniteRendering[] = "Use Infinite Rendering Flag";
constexpr const char UseRaySplitting[] = "Use Ray Splitting";
constexpr const char UseTwoSampleMIS[] = "Use Two Sample MIS";
constexpr const char DenoiseFilterType[] = "Denoise Filter Type";
constexpr const char DenoiserType[] = "Denoiser Type";
constexpr const char DenoiserInput[] = "Denoiser Input";
constexpr const char DenoiseAlpha[] = "Denoise Alpha";
constexpr const char Fps[] = "MovieExport fps";
constexpr const char StartFrame[] = "MovieExport start frame";
constexpr const char StopFrame[] = "MovieExport stop frame";
constexpr const char StepFrame[] = "MovieExport step frame";
constexpr const char AnimationFormat[] = "MovieExport Animation Format";
constexpr const char UseClipRange[] = "MovieExport Use Clip Range";
constexpr const char SampleOffset[] = "SampleOffset";
constexpr const char InteractiveTextureSharpness[] = "Interactive Texture Sharpness";
constexpr const char TextureSharpness[] = "Texture Sharpness";
constexpr const char LightEvaluationThreshold[] = "Light Evaluation Threshold";
constexpr const char HighQualityTextureFiltering[] = "High Quality Texture Filtering";
constexpr const char StillFrameSupersampling[] = "Still Frame Supersampling";
constexpr const char PhotonTraceDepth[] = "Photon Trace Depth";
constexpr const char PhotonLookupCount[] = "Photon Lookup Count";
constexpr const char UseFinalGatherForGlossy[] = "Use Final Gather for Glossy";
constexpr const char Illuminant[] = "Illuminant";
} // namespace oxSceneKey

/// Preferences of the renderer's multi-device sharing, also carried by render job records.
constexpr const char* kUseNVLinkTextureSharingKey = "Use NVLink Texture Sharing";
constexpr const char* kUseNVLinkGeometrySharingKey = "Use NVLink Geometry Sharing";

/// The older integer size keys: fallback of the scene's float sizes, the size in preferences.
constexpr const char* kOldWidthKey = "ImageExport width";
constexpr const char* kOldHeightKey = "ImageExport height";
/// The older on/off switch of the denoiser, read wherever "Denoise Filter Type" is read.
constexpr const char* kOldDenoiseFlagKey = "Use Denoise Filter Flag";

/// The scene keys in the order in which they are saved. The rows before the PassFlags row are
/// the output keys, those after it the raytracing keys.
extern const std::vector<oxSettingKey> kSceneKeys;
/// The preference keys of the default settings, in the order of reading. The rows before
/// kFirstRaytracingPreference are the output keys.
extern const std::vector<oxSettingKey> kPreferenceKeys;
extern const size_t kFirstRaytracingPreference;

/// The key text of a row: its own, or for a preference row without one the scene key of the
/// same field.
const char* settingKeyName(const oxSettingKey& row);
/// The scene row of a field; null when the scene has none.
const oxSettingKey* findSceneKey(const oxSettingField& field);

/// A setting of the render view that has no field in the record; scene and preferences both
/// keep it under the same key.
struct oxViewSettingKey {
    template <typename T>
    struct Access {
        T (*get)();
        void (*set)(T);
    };
    const char* key;
    std::variant<Access<bool>, Access<int>, Access<float>> access;
    double fallback;
};

/// Screen space ambient occlusion and depth peel, in the order in which the view is set.
extern const std::array<oxViewSettingKey, 9> kViewSettingKeys;

/// The three preferences read at the end of the default settings for controls outside the
/// record.
constexpr const char* kExportClusterPreference = "Export cluster";
constexpr const char* kExportClusterHostsPreference = "Export cluster hosts";
constexpr const char* kMovieExportAviPreference = "MovieExport avi";
/// Preferences behind the default file name.
constexpr const char* kSnapshotPathPreference = "SnapshotExport path";
/// The compression quality of written images (-1: the format's default); the image writer
/// reads it.
constexpr const char* kSnapshotQualityPreference = oxImageWriter::qualityKey;
constexpr const char* kDefaultFormatPreference = "ImageExport default format";
constexpr const char* kDefaultSnapshotPath = "c:\\oxlin-snapshots";
constexpr const char* kDefaultImageFormat = "png";
/// Preferences of the question about a scene's older BRDF mode.
constexpr const char* kCheckBrdfModePreference = "Render settings check BRDF mode";
constexpr const char* kUpdateBrdfModePreference = "Render settings update BRDF mode";
/// The page name under which changed preferences of this plug-in are announced.
constexpr const char* kPreferencesPage = "Render Settings";

/// Under which XMP property the image metadata writer stores each output setting: the
/// property name and the record field, whose scene key the writer files the value under.
struct oxXmpProperty {
    const char* xmp;
    oxSettingField field;
};
extern const std::array<oxXmpProperty, 26> kXmpProperties;

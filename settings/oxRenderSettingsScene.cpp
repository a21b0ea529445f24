#include "oxRenderSettingsScene.h"

#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxPreferences.h"
#include "oxRenderSettingsKeys.h"

#include <type_traits>
#include <vector>

using P = oxRenderSettingsPreset;

namespace {

bool readField(const oxMessage& message, const char* key, const oxSettingField& field, P& record)
{
    return std::visit([&](auto member) { return getFromMessage(message, key, record.*member); },
                      field);
}

void writeField(oxMessage& message, const char* key, const oxSettingField& field, const P& record)
{
    std::visit([&](auto member) { message.set(key, record.*member); }, field);
}

void setValue(const oxSettingField& field, P& record, double value)
{
    std::visit(
        [&](auto member) {
            using T = std::decay_t<decltype(record.*member)>;
            if constexpr (std::is_same_v<T, bool>)
                record.*member = value != 0.0;
            else if constexpr (std::is_arithmetic_v<T>)
                record.*member = static_cast<T>(value);
            else
                record.*member = T{};
        },
        field);
}

void copyField(const oxSettingField& to, const oxSettingField& from, P& record)
{
    std::visit(
        [&](auto target, auto source) {
            using T = std::decay_t<decltype(record.*target)>;
            using S = std::decay_t<decltype(record.*source)>;
            if constexpr (std::is_same_v<T, S>)
                record.*target = record.*source;
        },
        to, from);
}

template <typename T>
T preference(const char* key, T fallback)
{
    getFromMessage(oxPreferences::getData(), key, fallback);
    return fallback;
}

// Where a scene or the preferences name no output file: the snapshot folder's "image." in the
// default format.
std::string defaultFilename()
{
    return preference<std::string>(kSnapshotPathPreference, kDefaultSnapshotPath) + "\\image." +
           preference<std::string>(kDefaultFormatPreference, kDefaultImageFormat);
}

// The denoiser's older on/off flag turns it on for still frames; the legacy CPU denoiser is
// gone and becomes the still frame denoiser too.
unsigned int readDenoiseFilter(const oxMessage& message, const char* key)
{
    unsigned int type = 0;
    getFromMessage(message, key, type);
    bool oldFlag = false;
    getFromMessage(message, kOldDenoiseFlagKey, oldFlag);
    if (oldFlag || type == kLegacyDenoiseFilter)
        return kDenoiseFilterStillFrames;
    return type;
}

int supersamplingOf(int stored) { return stored > 0 ? 3 : 0; }

void readPassFlags(const oxMessage& message, P& record, bool withFallback)
{
    auto read = [&](bool& flag, const char* key) {
        if (!getFromMessage(message, key, flag) && withFallback)
            flag = false;
    };
    read(record.renderpasses, oxRenderPassMaster::sceneKey);
    for (PassFlag flag : kPassFlagSceneKeyOrder)
        read(record.passFlag(flag), passFlagInfo(flag).sceneKey);
}

void writePassFlags(oxMessage& message, const P& record)
{
    message.set(oxRenderPassMaster::sceneKey, record.renderpasses);
    for (PassFlag flag : kPassFlagSceneKeyOrder)
        message.set(passFlagInfo(flag).sceneKey, record.getPassFlag(flag));
}

// Reads one key with its fallback. SameAsField rows that miss are collected in deferred: their
// fallback is the other field's value once every key was read.
void readRow(const oxMessage& message, const oxSettingKey& row, P& record,
             std::vector<const oxSettingKey*>& deferred)
{
    const oxSettingKey* rule = &row;
    if (row.rule == oxKeyRule::AsScene)
        rule = findSceneKey(row.field);
    if (!rule)
        return;
    const char* key = settingKeyName(row);
    switch (rule->rule) {
    case oxKeyRule::SavedOnly:
    case oxKeyRule::Brdf:
    case oxKeyRule::AsScene:
        return;
    case oxKeyRule::PassFlags:
        readPassFlags(message, record, true);
        return;
    case oxKeyRule::Denoise:
        record.denoiseFilterType = readDenoiseFilter(message, key);
        return;
    case oxKeyRule::SsFactor: {
        int stored = static_cast<int>(rule->fallback);
        getFromMessage(message, key, stored);
        record.ssFactor = supersamplingOf(stored);
        return;
    }
    case oxKeyRule::IntKey: {
        int stored = static_cast<int>(rule->fallback);
        getFromMessage(message, key, stored);
        setValue(row.field, record, stored);
        return;
    }
    default:
        break;
    }
    if (readField(message, key, row.field, record))
        return;
    switch (rule->rule) {
    case oxKeyRule::DefaultFilename:
        record.filename = defaultFilename();
        return;
    case oxKeyRule::OldIntKey: {
        int stored = 0;
        if (getFromMessage(message, rule->oldKey, stored))
            setValue(row.field, record, stored);
        else
            setValue(row.field, record, rule->fallback);
        return;
    }
    case oxKeyRule::RegionEndX:
        record.region_end_x = record.getPixelWidth();
        return;
    case oxKeyRule::RegionEndY:
        record.region_end_y = record.getPixelHeight();
        return;
    case oxKeyRule::SameAsField:
        deferred.push_back(rule);
        return;
    default:
        setValue(row.field, record, rule->fallback);
        return;
    }
}

void resolveDeferred(const std::vector<const oxSettingKey*>& deferred, P& record)
{
    for (const oxSettingKey* row : deferred)
        copyField(row->field, row->fallbackField, record);
}

// The print size follows the pixels and the resolution, in centimetres.
void updatePrintSize(P& record)
{
    record.printWidth = static_cast<float>(static_cast<double>(record.pixel_width) /
                                           static_cast<double>(record.ppi) * 2.54);
    record.printHeight = static_cast<float>(static_cast<double>(record.pixel_height) /
                                            static_cast<double>(record.ppi) * 2.54);
}

void readViewSettings(const oxMessage& message)
{
    for (const oxViewSettingKey& row : kViewSettingKeys) {
        std::visit(
            [&](auto access) {
                using T = decltype(access.get());
                T value = static_cast<T>(row.fallback);
                getFromMessage(message, row.key, value);
                access.set(value);
            },
            row.access);
    }
}

void writeViewSettings(oxMessage& message)
{
    for (const oxViewSettingKey& row : kViewSettingKeys)
        std::visit([&](auto access) { message.set(row.key, access.get()); }, row.access);
}

// The output fields another module may hand in through "oxRenderSettings::loadSettings", in
// the order of reading; the keys are the scene's.
const oxSettingField kHandedInFields[] = {
    &P::pixel_width,
    &P::pixel_height,
    &P::ppi,
    &P::ssFactor,
    &P::use_render_region,
    &P::region_start_x,
    &P::region_start_y,
    &P::region_end_x,
    &P::region_end_y,
    &P::tonemap_hdr,
    &P::alpha,
    &P::premultiply,
    &P::backgroundColorR,
    &P::backgroundColorG,
    &P::backgroundColorB,
    &P::tiffHDR,
    &P::exrHalf,
    &P::multiLayer,
    &P::iccProfileID,
    &P::metaDataFlags,
    &P::animationType,
    &P::clip,
    &P::useClipRange,
    &P::renderAnimation,
    &P::exportType,
    &P::startFrame,
    &P::stopFrame,
    &P::stepFrame,
    &P::fps,
};

} // namespace

void readSceneSettings(const oxMessage& project, P& record,
                       const std::function<int(int reference)>& decideBrdfMode)
{
    const int brdfReference = record.brdfMode;
    std::vector<const oxSettingKey*> deferred;
    for (const oxSettingKey& row : kSceneKeys) {
        if (row.rule == oxKeyRule::Brdf)
            record.brdfMode = decideBrdfMode(brdfReference);
        else
            readRow(project, row, record, deferred);
    }
    resolveDeferred(deferred, record);
    updatePrintSize(record);
    readViewSettings(project);
}

void writeSceneSettings(oxMessage& project, const P& record)
{
    for (const oxSettingKey& row : kSceneKeys) {
        switch (row.rule) {
        case oxKeyRule::ReadOnly:
        case oxKeyRule::Superseded:
            break;
        case oxKeyRule::PassFlags:
            writePassFlags(project, record);
            break;
        default:
            writeField(project, row.key, row.field, record);
            break;
        }
    }
    writeViewSettings(project);
}

void readDefaultSettings(const oxMessage& preferences, P& record)
{
    record.name.clear();
    std::vector<const oxSettingKey*> deferred;
    for (size_t i = 0; i < kFirstRaytracingPreference; ++i)
        readRow(preferences, kPreferenceKeys[i], record, deferred);
    updatePrintSize(record);

    // What a scene chooses (view, animation, variant sets, passes) starts afresh.
    record.variantSetsUsed = false;
    record.variantSetViewpointsUsed = false;
    record.timeStamp = false;
    record.renderAnimation = false;
    record.useClipRange = false;
    record.variantSets.clear();
    record.view.clear();
    record.clip.clear();
    record.animationType = 0;
    record.exportType = 0;
    record.renderpasses = false;
    for (PassFlag flag : kPassFlagSceneKeyOrder)
        record.passFlag(flag) = false;
    record.beauty_pass = true;

    for (size_t i = kFirstRaytracingPreference; i < kPreferenceKeys.size(); ++i)
        readRow(preferences, kPreferenceKeys[i], record, deferred);
    resolveDeferred(deferred, record);
    readViewSettings(preferences);
}

void readHandedInSettings(const oxMessage& message, P& record)
{
    for (const oxSettingField& field : kHandedInFields) {
        const oxSettingKey* row = findSceneKey(field);
        if (row->rule == oxKeyRule::SsFactor) {
            int stored = 0;
            if (getFromMessage(message, row->key, stored))
                record.ssFactor = supersamplingOf(stored);
        } else {
            readField(message, row->key, field, record);
        }
        if (field == oxSettingField(&P::ppi))
            updatePrintSize(record);
    }
    readPassFlags(message, record, false);
}

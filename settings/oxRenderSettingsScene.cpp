// The current settings' life in the scene's project record and in the host's preferences:
// loading and saving a scene's keys, the default settings of a new scene, and the callbacks
// that hand settings in from other modules.

#include "oxRenderSettings.h"

#include "oxController.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxOSGWidget.h"
#include "oxPreferences.h"
#include "oxRenderParameter.h"
#include "oxRenderSettingsApply.h"
#include "oxRenderSettingsKeys.h"
#include "oxScript.h"

#include <QCheckBox>
#include <QMessageBox>

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

struct oxRenderSettingsCallback {
    const char* name;
    void (*function)(oxMessage&);
};

const oxRenderSettingsCallback kRenderSettingsCallbacks[] = {
    {"oxRenderSettings::loadSettings", oxRenderSettings::loadSettingsCallback},
};

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

void registerRenderSettingsCallbacks()
{
    // Removing first keeps a second registration from calling each function twice.
    for (const oxRenderSettingsCallback& callback : kRenderSettingsCallbacks) {
        oxController::subCB(callback.name, callback.function);
        oxController::addCB(callback.name, callback.function);
    }
}

void unregisterRenderSettingsCallbacks()
{
    for (const oxRenderSettingsCallback& callback : kRenderSettingsCallbacks)
        oxController::subCB(callback.name, callback.function);
}

int oxRenderSettings::decideBrdfMode(const oxMessage& project, int reference)
{
    const oxSettingKey* row = findSceneKey(&P::brdfMode);
    int loaded = static_cast<int>(row->fallback);
    if (!getFromMessage(project, row->key, loaded))
        return loaded;
    // A script can't answer, and a newer or equal mode needs no decision.
    if (oxScript::isRunning() || loaded >= reference)
        return loaded;

    bool check = true;
    bool keepOld = true;
    if (oxController::isNoGUI())
        check = false;
    else
        getFromMessage(oxPreferences::getData(), kCheckBrdfModePreference, check);
    getFromMessage(oxPreferences::getData(), kUpdateBrdfModePreference, keepOld);
    if (!check)
        return keepOld ? loaded : reference;

    QMessageBox box(QMessageBox::Question, tr("BRDF Mode"),
                    tr("The loaded file contains an older BRDF mode. Do you want to update to "
                       "the latest one?"),
                    QMessageBox::Yes | QMessageBox::No, oxController::getMainWindow(),
                    Qt::WindowFlags(0x103));
    auto* remember = new QCheckBox(tr("Remember my choice and don't show this message again."));
    box.setCheckBox(remember);
    box.exec();
    const bool keepScene = box.clickedButton() == box.button(QMessageBox::No);
    if (remember->isChecked()) {
        // The preference's sense is "take the file's mode", so a No is stored as true.
        oxMessage& preferences = oxPreferences::getData();
        preferences.set(kUpdateBrdfModePreference, keepScene);
        preferences.set(kCheckBrdfModePreference, false);
        oxPreferences::changedPreferences(kPreferencesPage);
        oxPreferences::save();
    }
    return keepScene ? loaded : reference;
}

void oxRenderSettings::loadSettings(oxMessage& project)
{
    guiUpdateLock = true;
    const int brdfReference = currentPreset.brdfMode;
    std::vector<const oxSettingKey*> deferred;
    for (const oxSettingKey& row : kSceneKeys) {
        if (row.rule == oxKeyRule::Brdf)
            currentPreset.brdfMode = decideBrdfMode(project, brdfReference);
        else
            readRow(project, row, currentPreset, deferred);
    }
    resolveDeferred(deferred, currentPreset);
    updatePrintSize(currentPreset);
    readViewSettings(project);

    guiUpdateLock = true;
    mergeAndPush(currentPreset, kApplyModeSceneLoad);
    guiUpdateLock = false;
    updatePresetMenu();
    updateGUI();

    // The push left the spectral switch out; it runs last, as it captures the pushed values.
    changedSpectralRaytracing(currentPreset.spectralRendering);
    oxRenderParameter::setUseHighQualityTextureFiltering(currentPreset.highQualityTextureFiltering);
    oxRenderParameter::setStillFrameSupersampling(currentPreset.stillFrameSupersampling);
    applyRenderRegion();
    applyHeadlightPhotometric(currentPreset.pbParameters);
    guiUpdateLock = false;
    updateGUI();
}

void oxRenderSettings::saveSettings(oxMessage& project)
{
    // The raytracing keys come from the live services, which the current record may lag.
    const P record = captureRenderSettings(currentPreset);
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

void oxRenderSettings::loadDefaultSettings(bool)
{
    guiUpdateLock = true;
    currentPreset.name.clear();
    const oxMessage& preferences = oxPreferences::getData();
    std::vector<const oxSettingKey*> deferred;
    for (size_t i = 0; i < kFirstRaytracingPreference; ++i)
        readRow(preferences, kPreferenceKeys[i], currentPreset, deferred);
    updatePrintSize(currentPreset);

    // What a scene chooses (view, animation, variant sets, passes) starts afresh.
    currentPreset.variantSetsUsed = false;
    currentPreset.variantSetViewpointsUsed = false;
    currentPreset.timeStamp = false;
    currentPreset.renderAnimation = false;
    currentPreset.useClipRange = false;
    currentPreset.variantSets.clear();
    currentPreset.view.clear();
    currentPreset.clip.clear();
    currentPreset.animationType = 0;
    currentPreset.exportType = 0;
    currentPreset.renderpasses = false;
    for (PassFlag flag : kPassFlagSceneKeyOrder)
        currentPreset.passFlag(flag) = false;
    currentPreset.beauty_pass = true;

    for (size_t i = kFirstRaytracingPreference; i < kPreferenceKeys.size(); ++i)
        readRow(preferences, kPreferenceKeys[i], currentPreset, deferred);
    resolveDeferred(deferred, currentPreset);
    readViewSettings(preferences);

    mergeAndPush(currentPreset, oxRenderSettingsPreset::ApplyAll);
    guiUpdateLock = false;
    updatePresetMenu();
    updateGUI();

    applyHeadlightPhotometric(false);
    switchPhotometricFlag(currentPreset.pbParameters);
    guiUpdateLock = false;
    updateGUI();

    bool cluster = false;
    if (getFromMessage(preferences, kExportClusterPreference, cluster))
        _cluster->setChecked(cluster);
    std::string hosts;
    if (getFromMessage(preferences, kExportClusterHostsPreference, hosts))
        _cluster_hosts->setText(QString::fromStdString(hosts));
    bool movie = false;
    if (getFromMessage(preferences, kMovieExportAviPreference, movie)) {
        const int index = _animFormatCB->findText(movie ? tr("Movie") : tr("Images"));
        if (index >= 0)
            _animFormatCB->setCurrentIndex(index);
    }
}

void oxRenderSettings::loadSettingsCallback(oxMessage& message)
{
    oxRenderSettings* window = instance();
    if (!window || message.getMap().empty())
        return;
    window->guiUpdateLock = true;
    P& record = window->currentPreset;
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
    if (record.use_render_region)
        window->applyRenderRegion();
    window->guiUpdateLock = false;
    window->updateGUI();
}

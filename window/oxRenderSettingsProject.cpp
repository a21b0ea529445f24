// The window's settings in the scene's project record and in the preferences: loading and
// saving a scene's settings, the default settings of a new scene, and the callback through
// which other modules hand settings in.

#include "oxRenderSettings.h"

#include "oxController.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxPreferences.h"
#include "oxRenderParameter.h"
#include "oxRenderSettingsApply.h"
#include "oxRenderSettingsKeys.h"
#include "oxRenderSettingsScene.h"
#include "oxScript.h"

#include <QCheckBox>
#include <QMessageBox>

using P = oxRenderSettingsPreset;

namespace {

const oxNamedCallback kRenderSettingsCallbacks[] = {
    {"oxRenderSettings::loadSettings", oxRenderSettings::loadSettingsCallback},
};

} // namespace

void registerRenderSettingsCallbacks() { addCallbacksOnce(kRenderSettingsCallbacks); }

void unregisterRenderSettingsCallbacks() { removeCallbacks(kRenderSettingsCallbacks); }

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
    {
        const oxScopedFlag lock(guiUpdateLock);
        readSceneSettings(project, currentPreset,
                          [&](int reference) { return decideBrdfMode(project, reference); });
        mergeAndPush(currentPreset, kApplyModeSceneLoad);
    }
    updatePresetMenu();
    updateGUI();

    // The push left the spectral switch out; it runs last, as it captures the pushed values.
    changedSpectralRaytracing(currentPreset.spectralRendering);
    oxRenderParameter::setUseHighQualityTextureFiltering(currentPreset.highQualityTextureFiltering);
    oxRenderParameter::setStillFrameSupersampling(currentPreset.stillFrameSupersampling);
    applyRenderRegion();
    applyHeadlightPhotometric(currentPreset.pbParameters);
    updateGUI();
}

void oxRenderSettings::saveSettings(oxMessage& project)
{
    // The raytracing keys come from the live services, which the current record may lag.
    writeSceneSettings(project, captureRenderSettings(currentPreset));
}

void oxRenderSettings::loadDefaultSettings(bool)
{
    const oxMessage& preferences = oxPreferences::getData();
    {
        const oxScopedFlag lock(guiUpdateLock);
        readDefaultSettings(preferences, currentPreset);
        mergeAndPush(currentPreset, oxRenderSettingsPreset::ApplyAll);
    }
    updatePresetMenu();
    updateGUI();

    applyHeadlightPhotometric(false);
    switchPhotometricFlag(currentPreset.pbParameters);
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
    {
        const oxScopedFlag lock(window->guiUpdateLock);
        readHandedInSettings(message, window->currentPreset);
        if (window->currentPreset.use_render_region)
            window->applyRenderRegion();
    }
    window->updateGUI();
}

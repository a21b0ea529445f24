// The window's apply operations: the record is merged and pushed by the settings layer, the
// window holds the update lock and follows with its menu and widgets.

#include "oxRenderSettings.h"

#include "oxOSGWidget.h"
#include "oxRenderSettingsApply.h"

#include <QAction>

oxRenderSettingsPresetSPtr oxRenderSettings::getCurrentRenderSettings()
{
    return std::make_shared<oxRenderSettingsPreset>(captureRenderSettings(currentPreset));
}

void oxRenderSettings::mergeAndPush(const oxRenderSettingsPreset& preset, int applyMode)
{
    mergeRenderSettings(currentPreset, preset, applyMode);
    const oxRenderSettingsPreset record = currentPreset;
    oxOSGWidget::setMotionBlur(true);
    oxOSGWidget::enableStillDOF(true);
    if (!(applyMode & oxRenderSettingsPreset::KeepSpectral)) {
        changedSpectralRaytracing(record.spectralRendering);
        // The switch brings back the live values it captured, which are those from before
        // this apply: the record being applied is the current one again.
        currentPreset = record;
    }
    pushRenderSettings(record);
}

void oxRenderSettings::applyPreset(const oxRenderSettingsPreset& preset,
                                   oxRenderSettingsPreset::ApplyPresetMode applyMode)
{
    {
        // Restores the lock's earlier state: an apply inside another leaves it held.
        const oxScopedFlag lock(guiUpdateLock);
        mergeAndPush(preset, applyMode);
    }
    updatePresetMenu();
    updateGUI();
}

void oxRenderSettings::applyPreset(const oxRenderSettingsPreset& preset)
{
    applyPreset(preset, oxRenderSettingsPreset::ApplyAll);
}

void oxRenderSettings::applyPresetByName(const std::string& name)
{
    const oxRenderSettingsPresetSPtr preset = findPreset(name, presets);
    if (!preset)
        return;
    // A copy: the record in the list must not change under the merge.
    const oxRenderSettingsPreset record = *preset;
    applyPreset(record, static_cast<oxRenderSettingsPreset::ApplyPresetMode>(kApplyModeByName));
}

void oxRenderSettings::applyPresetFromMenu()
{
    if (auto* action = qobject_cast<QAction*>(sender()))
        applyPresetByName(action->text().toStdString());
}

void oxRenderSettings::applyDefaultPreset()
{
    loadDefaultSettings(false);
    updatePresetMenu();
}

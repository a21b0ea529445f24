#include "oxRenderJobPresets.h"

#include "oxController.h"
#include "oxFileIO.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxRenderJobMessage.h"
#include "oxRenderParameter.h"
#include "oxRenderPasses.h"
#include "oxRenderSettings.h"
#include "oxRenderSettingsPresetFile.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>

#include <algorithm>
#include <string>
#include <vector>

namespace {

oxRenderSettings* window() { return oxRenderSettings::instance(); }

// The text of "preset" when the message has one.
bool presetName(const oxMessage& message, std::string& name)
{
    return getFromMessage(message, kRQPresetAttribute, name);
}

void addRQPresetCB(oxMessage& message)
{
    std::string name;
    if (window() && presetName(message, name))
        window()->addRQPreset(name.c_str());
}

void deleteRQPresetCB(oxMessage& message)
{
    std::string name;
    if (window() && presetName(message, name))
        window()->deleteRQPreset(name.c_str());
}

void saveRenderJobPresetsCB(oxMessage&)
{
    if (!window())
        return;
    std::string text;
    if (writePresetsToString(window()->getRQPresets(), text))
        oxFileIO::getProject().set(kRenderJobsPresetsAttribute, text, true);
}

void saveRenderJobPresetCB(oxMessage& message)
{
    std::string name;
    if (!window() || !presetName(message, name) || name.empty() || window()->getRQPresets().empty())
        return;
    const oxRenderSettingsPresets& list = window()->getRQPresets();
    const auto found = std::find_if(list.begin(), list.end(), [&](const auto& preset) {
        return preset && preset->name == name;
    });
    if (found == list.end())
        return;
    std::string text;
    if (writePresetsToString(oxRenderSettingsPresets{*found}, text))
        message.set(kRQPresetXmlAttribute, text, true);
}

void loadRenderJobPresetsCB(oxMessage& message)
{
    std::string text;
    if (window() && getFromMessage(message, kRQPresetsAttribute, text))
        window()->getRQPresets() = readPresetsFromString(text);
}

void loadRenderJobPresetCB(oxMessage& message)
{
    std::string text;
    std::string name;
    if (!window() || !getFromMessage(message, kRQPresetXmlAttribute, text) ||
        !presetName(message, name))
        return;
    const oxRenderSettingsPresets read = readPresetsFromString(text);
    if (read.empty() || !read.front())
        return;
    // The queue's name counts, whatever the text called the preset; an existing preset of
    // that name stays where it is, in front of the new one.
    read.front()->name = name;
    window()->getRQPresets().push_back(read.front());
}

void clearRQPresetsCB(oxMessage&)
{
    if (window())
        window()->getRQPresets().clear();
}

void getRQPresetNamesCB(oxMessage& message)
{
    if (!window())
        return;
    std::vector<std::string> names;
    for (const oxRenderSettingsPresetSPtr& preset : window()->getRQPresets())
        names.push_back(preset ? preset->name : std::string());
    message.set(kRQPresetsAttribute, names, true);
}

void receiveRenderSettingsFromRenderQueueCB(oxMessage& message)
{
    if (window())
        window()->receiveRenderSettingsFromRenderQueue(message);
}

} // namespace

const std::array<oxNamedCallback, 9> kRenderJobPresetCallbacks = {{
    {"addRQPreset", addRQPresetCB},
    {"deleteRQPreset", deleteRQPresetCB},
    {"saveRenderJobPresets", saveRenderJobPresetsCB},
    {"saveRenderJobPreset", saveRenderJobPresetCB},
    {"loadRenderJobPresets", loadRenderJobPresetsCB},
    {"loadRenderJobPreset", loadRenderJobPresetCB},
    {"clearRQPresets", clearRQPresetsCB},
    {"getRQPresetNames", getRQPresetNamesCB},
    {"receiveRenderSettingsFromRenderQueue", receiveRenderSettingsFromRenderQueueCB},
}};

void registerRenderJobPresetCallbacks() { addCallbacksOnce(kRenderJobPresetCallbacks); }

void unregisterRenderJobPresetCallbacks() { removeCallbacks(kRenderJobPresetCallbacks); }

void registerRQPresetNamesCallback()
{
    if (!oxController::hasCB("getRQPresetNames"))
        oxController::addCB("getRQPresetNames", getRQPresetNamesCB);
}

void oxRenderSettings::addRQPreset(const char* name)
{
    oxRenderSettingsPresetSPtr captured = getCurrentRenderSettings();
    captured->name = name ? name : "";
    // A preset of that name is replaced in place: the queue may hold on to the pointer.
    for (oxRenderSettingsPresetSPtr& preset : rqPresets) {
        if (preset && preset->name == captured->name) {
            *preset = *captured;
            return;
        }
    }
    rqPresets.push_back(captured);
}

void oxRenderSettings::deleteRQPreset(const char* name)
{
    if (!name || !*name)
        return;
    const auto found = std::find_if(rqPresets.begin(), rqPresets.end(), [&](const auto& preset) {
        return preset && preset->name == name;
    });
    if (found != rqPresets.end())
        rqPresets.erase(found);
}

oxRenderSettingsPresetSPtr oxRenderSettings::getRQPreset(const char* name)
{
    return findPreset(name ? name : "", rqPresets);
}

void oxRenderSettings::applyRQPresetByName(const char* name)
{
    const oxRenderSettingsPresetSPtr preset = getRQPreset(name);
    if (!preset)
        return;
    // The job's file, clip, variant sets and photometric values come along; the window's
    // settings are no named preset afterwards.
    applyPreset(*preset, oxRenderSettingsPreset::ClearName);
    emit renderQueuePresetApplied();
}

void oxRenderSettings::receiveRenderSettingsFromRenderQueue(const oxMessage& job)
{
    {
        const oxScopedFlag lock(guiUpdateLock);
        oxRenderSettingsPreset& preset = currentPreset;
        if (const std::optional<std::string> hosts = readRenderJobMessage(job, preset)) {
            const QSignalBlocker blockHosts(_cluster_hosts);
            const QSignalBlocker blockCluster(_cluster);
            _cluster_hosts->setText(QString::fromStdString(*hosts));
            _cluster->setChecked(!hosts->empty());
        }

        oxRenderParameter::setImageSamples(preset.imageSamples);
        oxRenderParameter::setStillFrameQualityMode(preset.stillQualityMode);
        oxRenderParameter::setRenderTimeInSeconds(preset.renderTime);
        oxRenderParameter::setUseRenderTimeLimit(preset.useTimeLimit);
        oxRenderParameter::setUseInfiniteRendering(preset.useInfiniteRendering);
        // The queue's hosts expect the denoiser pushed twice: once as read, once after the old
        // switch was settled (the read already settled it, so both are the same).
        oxRenderParameter::setDenoiseFilter(preset.denoiseFilterType);
        oxRenderParameter::setDenoiseFilter(preset.denoiseFilterType);
        oxRenderParameter::setDenoiseAlpha(preset.denoiseAlpha);
    }
    updateGUI();
}

oxRenderJobWindowValues oxRenderSettings::renderJobWindowValues() const
{
    oxRenderJobWindowValues values;
    values.imageSizePreset = _imageSizes->currentText().toStdString();
    values.totalRenders = _totalRenderCount->text().toInt();
    values.viewpoints = _viewpointCount->text().toInt();
    values.renderPasses = _renderPassesCount->text().toInt();
    values.animationRenders = _animationFrameCount->text().toInt();
    values.variantSets = _variantSetCount->text().toInt();
    values.variantSetRenders = _variantSetRenderCount->text().toInt();
    values.totalFiles = _totalFileCount->text().toInt();
    values.clusterHosts = clusterHosts().toStdString();
    return values;
}

QString oxRenderSettings::clusterHosts() const
{
    return _cluster->isChecked() ? _cluster_hosts->text() : QString();
}

void oxRenderSettings::buildRenderJobMessage()
{
    oxMessage message = makeRenderJobMessage(currentPreset, renderJobWindowValues());
    oxController::call("addRenderJobProxy", message, 0);
}

void oxRenderSettings::notifyRenderStarted(const char* sender)
{
    const auto record = std::make_shared<oxRenderSettingsPreset>(currentPreset);
    oxMessage message = writePresetsToMessage(oxRenderSettingsPresets{record});
    message.set("sender", boost::any(sender), true);
    oxController::call("oxRenderSettings::render", message, 0);
}

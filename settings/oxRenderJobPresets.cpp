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
#include <QLineEdit>
#include <QSignalBlocker>

#include <algorithm>
#include <string>
#include <vector>

namespace {

// The denoise type that an old "use denoise filter" flag stands for.
constexpr unsigned int kDeepLearningStillframe = 2;
// The supersampling factor the image writer takes for "on".
constexpr int kSupersamplingOn = 3;
constexpr double kCentimetresPerInch = 2.54;

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

// Reads key into the field when the job has it with the field's type.
struct FieldReader {
    const oxMessage& job;
    const char* key;
    oxRenderSettingsPreset& preset;

    template <typename T>
    bool operator()(T oxRenderSettingsPreset::*field) const
    {
        return getFromMessage(job, key, preset.*field);
    }
};

} // namespace

const std::array<oxRenderJobPresetCallback, 9> kRenderJobPresetCallbacks = {{
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

void registerRenderJobPresetCallbacks()
{
    // Removing first keeps a second registration from calling each function twice.
    for (const oxRenderJobPresetCallback& callback : kRenderJobPresetCallbacks) {
        oxController::subCB(callback.name, callback.function);
        oxController::addCB(callback.name, callback.function);
    }
}

void unregisterRenderJobPresetCallbacks()
{
    for (const oxRenderJobPresetCallback& callback : kRenderJobPresetCallbacks)
        oxController::subCB(callback.name, callback.function);
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
    guiUpdateLock = true;
    oxRenderSettingsPreset& preset = currentPreset;
    bool oldDenoiseFlag = false;
    for (const oxRenderJobReadKey& entry : kRenderJobReadKeys) {
        switch (entry.rule) {
        case oxJobReadRule::Plain:
            std::visit(FieldReader{job, entry.key, preset}, entry.field);
            break;
        case oxJobReadRule::PrintSize:
            std::visit(FieldReader{job, entry.key, preset}, entry.field);
            if (preset.ppi > 0.0f) {
                preset.printWidth =
                    float(double(preset.pixel_width) / double(preset.ppi) * kCentimetresPerInch);
                preset.printHeight =
                    float(double(preset.pixel_height) / double(preset.ppi) * kCentimetresPerInch);
            }
            break;
        case oxJobReadRule::Supersampling: {
            int factor = 0;
            if (getFromMessage(job, entry.key, factor))
                preset.ssFactor = factor > 0 ? kSupersamplingOn : 0;
            break;
        }
        case oxJobReadRule::DenoiseType:
            std::visit(FieldReader{job, entry.key, preset}, entry.field);
            break;
        case oxJobReadRule::DenoiseFlag:
            getFromMessage(job, entry.key, oldDenoiseFlag);
            // Old jobs switched the denoiser on by a flag; type 1 is an old name of 2.
            if (oldDenoiseFlag || preset.denoiseFilterType == 1)
                preset.denoiseFilterType = kDeepLearningStillframe;
            break;
        }
    }
    getFromMessage(job, oxRenderPassMaster::sceneKey, preset.renderpasses);
    for (PassFlag flag : kPassFlagSceneKeyOrder)
        getFromMessage(job, passFlagInfo(flag).sceneKey, preset.passFlag(flag));

    std::string hosts;
    if (getFromMessage(job, oxJobKey::ClusterHosts, hosts)) {
        const QSignalBlocker blockHosts(_cluster_hosts);
        const QSignalBlocker blockCluster(_cluster);
        _cluster_hosts->setText(QString::fromStdString(hosts));
        _cluster->setChecked(!hosts.empty());
    }

    oxRenderParameter::setImageSamples(preset.imageSamples);
    oxRenderParameter::setStillFrameQualityMode(preset.stillQualityMode);
    oxRenderParameter::setRenderTimeInSeconds(preset.renderTime);
    oxRenderParameter::setUseRenderTimeLimit(preset.useTimeLimit);
    oxRenderParameter::setUseInfiniteRendering(preset.useInfiniteRendering);
    oxRenderParameter::setDenoiseFilter(preset.denoiseFilterType);
    oxRenderParameter::setDenoiseFilter(oldDenoiseFlag ? kDeepLearningStillframe
                                                       : preset.denoiseFilterType);
    oxRenderParameter::setDenoiseAlpha(preset.denoiseAlpha);
    guiUpdateLock = false;
    updateGUI();
}

#include "oxRenderJobMessage.h"

#include "oxController.h"
#include "oxMessage.h"
#include "oxRenderParameter.h"
#include "oxRenderPasses.h"
#include "oxRenderSettings.h"
#include "oxRenderSettingsPresetFile.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

namespace {

using Preset = oxRenderSettingsPreset;

// The value of a record field, as the field's own type.
template <auto Field>
boost::any field(oxRenderSettings& window)
{
    return window.getCurrentPreset().*Field;
}

// A count of the render statistics, from the label that shows it.
template <auto Label>
boost::any count(oxRenderSettings& window)
{
    return (window.*Label)->text().toInt();
}

} // namespace

const std::array<oxRenderJobAttribute, 35> kRenderJobAttributes = {{
    {oxJobKey::VariantSetsUsed, field<&Preset::variantSetsUsed>},
    {oxJobKey::RenderAnimation, field<&Preset::renderAnimation>},
    {oxJobKey::Clip, field<&Preset::clip>},
    {oxJobKey::Filename, field<&Preset::filename>},
    {oxJobKey::FloatWidth, field<&Preset::pixel_width>},
    {oxJobKey::FloatHeight, field<&Preset::pixel_height>},
    {oxJobKey::Alpha, field<&Preset::alpha>},
    {oxJobKey::TiffHDR, field<&Preset::tiffHDR>},
    {oxJobKey::ExrHalf, field<&Preset::exrHalf>},
    {oxJobKey::MultiLayer, field<&Preset::multiLayer>},
    {oxJobKey::SsFactor, field<&Preset::ssFactor>},
    {oxJobKey::PremultiplyRed, field<&Preset::backgroundColorR>},
    {oxJobKey::PremultiplyGreen, field<&Preset::backgroundColorG>},
    {oxJobKey::PremultiplyBlue, field<&Preset::backgroundColorB>},
    {oxJobKey::Ppi, field<&Preset::ppi>},
    {oxJobKey::Premultiply, field<&Preset::premultiply>},
    {oxJobKey::TonemapHDR, field<&Preset::tonemap_hdr>},
    // The raytracing values come live from the renderer, not from the record.
    {oxJobKey::ImageSamples,
     [](oxRenderSettings&) -> boost::any { return oxRenderParameter::getImageSamples(); }},
    {oxJobKey::StillQualityMode,
     [](oxRenderSettings&) -> boost::any { return oxRenderParameter::getStillFrameQualityMode(); }},
    {oxJobKey::RenderTime,
     [](oxRenderSettings&) -> boost::any {
         return int(oxRenderParameter::getRenderTimeInSeconds());
     }},
    {oxJobKey::UseTimeLimit,
     [](oxRenderSettings&) -> boost::any { return oxRenderParameter::getUseRenderTimeLimit(); }},
    {oxJobKey::Fps, field<&Preset::fps>},
    {oxJobKey::StartFrame, field<&Preset::startFrame>},
    {oxJobKey::StopFrame, field<&Preset::stopFrame>},
    {oxJobKey::StepFrame, field<&Preset::stepFrame>},
    {oxJobKey::ImageSizePreset,
     [](oxRenderSettings& window) -> boost::any {
         return window._imageSizes->currentText().toStdString();
     }},
    // The queue tells movies from image series by this; it is not the export type.
    {oxJobKey::AnimationFormat,
     [](oxRenderSettings& window) -> boost::any {
         return window.getCurrentPreset().isMovieExport() ? 1 : 0;
     }},
    {oxJobKey::UseClipRange, field<&Preset::useClipRange>},
    {oxJobKey::TotalRenders, count<&oxRenderSettings::_totalRenderCount>},
    {oxJobKey::Viewpoints, count<&oxRenderSettings::_viewpointCount>},
    {oxJobKey::RenderPasses, count<&oxRenderSettings::_renderPassesCount>},
    {oxJobKey::AnimationRenders, count<&oxRenderSettings::_animationFrameCount>},
    {oxJobKey::VariantSets, count<&oxRenderSettings::_variantSetCount>},
    {oxJobKey::VariantSetRenders, count<&oxRenderSettings::_variantSetRenderCount>},
    {oxJobKey::TotalFiles, count<&oxRenderSettings::_totalFileCount>},
}};

const std::array<oxRenderJobReadKey, 36> kRenderJobReadKeys = {{
    {oxJobKey::RenderAnimation, &Preset::renderAnimation, oxJobReadRule::Plain},
    {oxJobKey::Clip, &Preset::clip, oxJobReadRule::Plain},
    {oxJobKey::Filename, &Preset::filename, oxJobReadRule::Plain},
    {oxJobKey::FloatWidth, &Preset::pixel_width, oxJobReadRule::Plain},
    {oxJobKey::FloatHeight, &Preset::pixel_height, oxJobReadRule::Plain},
    {oxJobKey::Ppi, &Preset::ppi, oxJobReadRule::PrintSize},
    {oxJobKey::SsFactor, &Preset::ssFactor, oxJobReadRule::Supersampling},
    {oxJobKey::Alpha, &Preset::alpha, oxJobReadRule::Plain},
    {oxJobKey::PremultiplyRed, &Preset::backgroundColorR, oxJobReadRule::Plain},
    {oxJobKey::PremultiplyGreen, &Preset::backgroundColorG, oxJobReadRule::Plain},
    {oxJobKey::PremultiplyBlue, &Preset::backgroundColorB, oxJobReadRule::Plain},
    {oxJobKey::Premultiply, &Preset::premultiply, oxJobReadRule::Plain},
    {oxJobKey::TiffHDR, &Preset::tiffHDR, oxJobReadRule::Plain},
    {oxJobKey::ExrHalf, &Preset::exrHalf, oxJobReadRule::Plain},
    {oxJobKey::MultiLayer, &Preset::multiLayer, oxJobReadRule::Plain},
    {oxJobKey::TonemapHDR, &Preset::tonemap_hdr, oxJobReadRule::Plain},
    {oxJobKey::ImageSamples, &Preset::imageSamples, oxJobReadRule::Plain},
    {oxJobKey::StillQualityMode, &Preset::stillQualityMode, oxJobReadRule::Plain},
    // Read as unsigned, although the record above sets a signed value: a job's time comes
    // back only from queues that store it unsigned.
    {oxJobKey::RenderTime, &Preset::renderTime, oxJobReadRule::Plain},
    {oxJobKey::UseTimeLimit, &Preset::useTimeLimit, oxJobReadRule::Plain},
    {oxJobKey::UseInfiniteRendering, &Preset::useInfiniteRendering, oxJobReadRule::Plain},
    {oxJobKey::UseRaySplitting, &Preset::useRaySplitting, oxJobReadRule::Plain},
    {oxJobKey::UseTwoSampleMIS, &Preset::useTwoSampleMIS, oxJobReadRule::Plain},
    {oxJobKey::UseNVLinkTextureSharing, &Preset::useNVLinkTextureSharing, oxJobReadRule::Plain},
    {oxJobKey::UseNVLinkGeometrySharing, &Preset::useNVLinkGeometrySharing, oxJobReadRule::Plain},
    {oxJobKey::DenoiseFilterType, &Preset::denoiseFilterType, oxJobReadRule::DenoiseType},
    {oxJobKey::UseDenoiseFilterFlag, &Preset::denoiseFilterType, oxJobReadRule::DenoiseFlag},
    {oxJobKey::DenoiserType, &Preset::denoiserType, oxJobReadRule::Plain},
    {oxJobKey::DenoiserInput, &Preset::denoiserInput, oxJobReadRule::Plain},
    {oxJobKey::DenoiseAlpha, &Preset::denoiseAlpha, oxJobReadRule::Plain},
    {oxJobKey::Fps, &Preset::fps, oxJobReadRule::Plain},
    {oxJobKey::StartFrame, &Preset::startFrame, oxJobReadRule::Plain},
    {oxJobKey::StopFrame, &Preset::stopFrame, oxJobReadRule::Plain},
    {oxJobKey::StepFrame, &Preset::stepFrame, oxJobReadRule::Plain},
    {oxJobKey::AnimationFormat, &Preset::exportType, oxJobReadRule::Plain},
    {oxJobKey::UseClipRange, &Preset::useClipRange, oxJobReadRule::Plain},
}};

oxMessage makeRenderJobMessage(oxRenderSettings& window)
{
    oxMessage message(0);
    for (const oxRenderJobAttribute& attribute : kRenderJobAttributes)
        message.set(attribute.key, attribute.value(window), true);
    const oxRenderSettingsPreset& preset = window.getCurrentPreset();
    message.set(oxRenderPassMaster::sceneKey, preset.renderpasses, true);
    for (PassFlag flag : kPassFlagSceneKeyOrder)
        message.set(passFlagInfo(flag).sceneKey, preset.getPassFlag(flag), true);
    // Present even when the cluster is off, so that the queue never falls back to old hosts.
    const std::string hosts =
        window._cluster->isChecked() ? window._cluster_hosts->text().toStdString() : std::string();
    message.set(oxJobKey::ClusterHosts, hosts, true);
    return message;
}

void oxRenderSettings::buildRenderJobMessage()
{
    oxMessage message = makeRenderJobMessage(*this);
    oxController::call("addRenderJobProxy", message, 0);
}

void oxRenderSettings::notifyRenderStarted(const char* sender)
{
    const auto record = std::make_shared<oxRenderSettingsPreset>(currentPreset);
    oxMessage message = writePresetsToMessage(oxRenderSettingsPresets{record});
    message.set("sender", boost::any(sender), true);
    oxController::call("oxRenderSettings::render", message, 0);
}

#include "oxRenderJobMessage.h"

#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxRenderParameter.h"
#include "oxRenderPasses.h"

namespace {

using Preset = oxRenderSettingsPreset;

using Values = oxRenderJobWindowValues;

// The value of a record field, as the field's own type.
template <auto Field>
boost::any field(const Preset& record, const Values&)
{
    return record.*Field;
}

// A value the window gives, as the queue expects its type.
template <auto Value>
boost::any value(const Preset&, const Values& window)
{
    return window.*Value;
}

// The denoise type that an old "use denoise filter" flag stands for.
constexpr unsigned int kDeepLearningStillframe = 2;
// The supersampling factor the image writer takes for "on".
constexpr int kSupersamplingOn = 3;
constexpr double kCentimetresPerInch = 2.54;

// Reads key into the field when the job has it with the field's type.
struct FieldReader {
    const oxMessage& job;
    const char* key;
    Preset& preset;

    template <typename T>
    bool operator()(T Preset::*member) const
    {
        return getFromMessage(job, key, preset.*member);
    }
};

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
     [](const Preset&, const Values&) -> boost::any {
         return oxRenderParameter::getImageSamples();
     }},
    {oxJobKey::StillQualityMode,
     [](const Preset&, const Values&) -> boost::any {
         return oxRenderParameter::getStillFrameQualityMode();
     }},
    {oxJobKey::RenderTime,
     [](const Preset&, const Values&) -> boost::any {
         return int(oxRenderParameter::getRenderTimeInSeconds());
     }},
    {oxJobKey::UseTimeLimit,
     [](const Preset&, const Values&) -> boost::any {
         return oxRenderParameter::getUseRenderTimeLimit();
     }},
    {oxJobKey::Fps, field<&Preset::fps>},
    {oxJobKey::StartFrame, field<&Preset::startFrame>},
    {oxJobKey::StopFrame, field<&Preset::stopFrame>},
    {oxJobKey::StepFrame, field<&Preset::stepFrame>},
    {oxJobKey::ImageSizePreset, value<&Values::imageSizePreset>},
    // The queue tells movies from image series by this; it is not the export type.
    {oxJobKey::AnimationFormat,
     [](const Preset& record, const Values&) -> boost::any {
         return record.isMovieExport() ? 1 : 0;
     }},
    {oxJobKey::UseClipRange, field<&Preset::useClipRange>},
    {oxJobKey::TotalRenders, value<&Values::totalRenders>},
    {oxJobKey::Viewpoints, value<&Values::viewpoints>},
    {oxJobKey::RenderPasses, value<&Values::renderPasses>},
    {oxJobKey::AnimationRenders, value<&Values::animationRenders>},
    {oxJobKey::VariantSets, value<&Values::variantSets>},
    {oxJobKey::VariantSetRenders, value<&Values::variantSetRenders>},
    {oxJobKey::TotalFiles, value<&Values::totalFiles>},
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

oxMessage makeRenderJobMessage(const oxRenderSettingsPreset& record,
                               const oxRenderJobWindowValues& window)
{
    oxMessage message(0);
    for (const oxRenderJobAttribute& attribute : kRenderJobAttributes)
        message.set(attribute.key, attribute.value(record, window), true);
    message.set(oxRenderPassMaster::sceneKey, record.renderpasses, true);
    for (PassFlag flag : kPassFlagSceneKeyOrder)
        message.set(passFlagInfo(flag).sceneKey, record.getPassFlag(flag), true);
    // Present even when the cluster is off, so that the queue never falls back to old hosts.
    message.set(oxJobKey::ClusterHosts, window.clusterHosts, true);
    return message;
}

std::optional<std::string> readRenderJobMessage(const oxMessage& job,
                                                oxRenderSettingsPreset& preset)
{
    for (const oxRenderJobReadKey& entry : kRenderJobReadKeys) {
        switch (entry.rule) {
        case oxJobReadRule::Plain:
        case oxJobReadRule::DenoiseType:
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
        case oxJobReadRule::DenoiseFlag: {
            bool oldDenoiseFlag = false;
            getFromMessage(job, entry.key, oldDenoiseFlag);
            // Old jobs switched the denoiser on by a flag; type 1 is an old name of 2.
            if (oldDenoiseFlag || preset.denoiseFilterType == 1)
                preset.denoiseFilterType = kDeepLearningStillframe;
            break;
        }
        }
    }
    getFromMessage(job, oxRenderPassMaster::sceneKey, preset.renderpasses);
    for (PassFlag flag : kPassFlagSceneKeyOrder)
        getFromMessage(job, passFlagInfo(flag).sceneKey, preset.passFlag(flag));
    std::string hosts;
    if (!getFromMessage(job, oxJobKey::ClusterHosts, hosts))
        return std::nullopt;
    return hosts;
}

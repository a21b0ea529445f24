#include "oxRenderSettingsPresetFile.h"

#include "oxFile.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxMessageRW.h"
#include "oxOSGWidget.h"
#include "oxPixelfilterFactory.h"
#include "oxPreferences.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderSettingsKeys.h"
#include "oxRenderParameter.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace {

using P = oxRenderSettingsPreset;
using R = oxRenderParameter;
using Fallback = oxPresetColumnFallback;

// Keeps T out of deduction, so that a getter of another signature (a lambda) converts.
template <typename T>
struct Same {
    using type = T;
};
template <typename T>
using Getter = typename Same<T>::type (*)();

template <typename T>
oxPresetColumn constructed(const char* attribute, T P::*field)
{
    return {attribute, Fallback::Constructed, oxPresetColumnField<T>{field, nullptr, nullptr}};
}

template <typename T>
oxPresetColumn live(const char* attribute, T P::*field, Getter<T> getter)
{
    return {attribute, Fallback::Live, oxPresetColumnField<T>{field, getter, nullptr}};
}

template <typename T>
oxPresetColumn alwaysLive(const char* attribute, T P::*field, Getter<T> getter)
{
    return {attribute, Fallback::AlwaysLive, oxPresetColumnField<T>{field, getter, nullptr}};
}

template <typename T>
oxPresetColumn dropped(const char* attribute, T P::*field)
{
    return {attribute, Fallback::Dropped, oxPresetColumnField<T>{field, nullptr, nullptr}};
}

template <typename T>
oxPresetColumn alwaysEmpty(const char* attribute)
{
    return {attribute, Fallback::Dropped, oxPresetColumnField<T>{}};
}

template <typename T>
oxPresetColumn sameAs(const char* attribute, T P::*field, T P::*other)
{
    return {attribute, Fallback::SameAs, oxPresetColumnField<T>{field, nullptr, other}};
}

// The live NURBS values come from the raytracer's utilities; without a raytracer the field
// keeps its constructed value, which is what T() gives for all of them.
template <typename T, T (oxRaytracingUtilsBase::*get)() const>
T nurbs()
{
    const oxRaytracingUtilsBase* utilities = oxRaytracingManager::getRaytracingUtils();
    return utilities ? (utilities->*get)() : T();
}

using U = oxRaytracingUtilsBase;

std::vector<oxPresetColumn> buildColumns()
{
    std::vector<oxPresetColumn> columns = {
        {"name", Fallback::Required, oxPresetColumnField<std::string>{&P::name}},
        constructed("timeStamp", &P::timeStamp),
        live("filterType", &P::filterType, &oxPixelfilterFactory::getPixelFilterType),
        live("filterWidth", &P::filterWidth, &oxPixelfilterFactory::getPixelFilterWidth),
        live("filterHeight", &P::filterHeight, &oxPixelfilterFactory::getPixelFilterHeight),
        live("imageSamples", &P::imageSamples, &R::getImageSamples),
        live("samplesThreshold", &P::samplesThreshold, &oxOSGWidget::getSamplesThreshold),
        alwaysEmpty<int>("adaptiveSamples"),
        live("aaThresholdQuality", &P::aaThresholdQuality, &R::getAdaptiveAAThresholdQuality),
        live("maxReflectionDepth", &P::maxReflectionDepth, &R::getInteractiveReflectionDepth),
        sameAs("stillFrameReflectionDepth", &P::stillFrameReflectionDepth, &P::maxReflectionDepth),
        live("enableClamping", &P::enableClamping, &R::getClamping),
        live("reflectionClampValue", &P::reflectionClampValue, &R::getReflectionClampValue),
        live("pbParameters", &P::pbParameters, &R::getPBParameters),
        live("spectralRendering", &P::spectralRendering, &R::getSpectralRaytracing),
        live("displayLuminance", &P::displayLuminance, &R::getDisplayLuminance),
        live("sim2LuminanceMapping", &P::sim2LuminanceMapping, &R::getSim2LuminanceMapping),
        live("ignoreOverrideTraceDepth", &P::ignoreOverrideTraceDepth,
             &R::getIgnoreOverrideTraceDepth),
        live("ignoreOverrideIlluminationMode", &P::ignoreOverrideIlluminationMode,
             &R::getIgnoreOverrideIlluminationMode),
        live("ignoreOverrideReflectionQuality", &P::ignoreOverrideReflectionQuality,
             &R::getIgnoreOverrideReflectionQuality),
        live("ignoreOverrideIBLQuality", &P::ignoreOverrideIBLQuality,
             &R::getIgnoreOverrideIBLQuality),
        // The host holds the light optimisation as a switch, the record as a number.
        live(
            "lightOptimizationMode", &P::lightOptimizationMode,
            +[]() -> int { return R::getLightOptimizationMode() ? 1 : 0; }),
        live("brdfMode", &P::brdfMode, &R::getBrdfMode),
        live("interactiveQualityMode", &P::interactiveQualityMode, &R::getInteractiveQualityMode),
        live("interactiveQuality", &P::interactiveQuality, &R::getInteractiveQuality),
        live("stillQualityMode", &P::stillQualityMode, &R::getStillFrameQualityMode),
        live("stillQuality", &P::stillQuality, &R::getStillFrameQuality),
        live("environmentInteractiveQuality", &P::environmentInteractiveQuality,
             &R::getEnvironmentInteractiveQuality),
        live("environmentStillQuality", &P::environmentStillQuality,
             &R::getEnvironmentStillQuality),
        live("photonDispersionQuality", &P::photonDispersionQuality,
             &R::getPhotonDispersionQuality),
        live("nurbsMode", &P::nurbsMode, &nurbs<int, &U::getNurbsMode>),
        live("nurbsEpsilon", &P::nurbsEpsilon, &nurbs<float, &U::getNurbsEpsilon>),
        live("nurbsNewtonEpsilon", &P::nurbsNewtonEpsilon,
             &nurbs<float, &U::getNurbsNewtonEpsilon>),
        live("nurbsUsePreclassification", &P::nurbsUsePreclassification,
             &nurbs<bool, &U::getNurbsUsePreclassification>),
        live("nurbsMinDepthSurface", &P::nurbsMinDepthSurface,
             &nurbs<int, &U::getNurbsMinDepthSurface>),
        live("nurbsMaxDepthSurface", &P::nurbsMaxDepthSurface,
             &nurbs<int, &U::getNurbsMaxDepthSurface>),
        live("nurbsThresholdSurface", &P::nurbsThresholdSurface,
             &nurbs<float, &U::getNurbsThresholdSurface>),
        live("nurbsMinDepthCurve", &P::nurbsMinDepthCurve, &nurbs<int, &U::getNurbsMinDepthCurve>),
        live("nurbsMaxDepthCurve", &P::nurbsMaxDepthCurve, &nurbs<int, &U::getNurbsMaxDepthCurve>),
        live("nurbsThresholdCurve", &P::nurbsThresholdCurve,
             &nurbs<float, &U::getNurbsThresholdCurve>),
        live("renderer", &P::renderer, &R::getRenderer),
        live("SampleOffset", &P::sampleOffset, &R::getRaytracingSampleOffset),
        live("Interactive Texture Sharpness", &P::interactiveTextureSharpness,
             &R::getInteractiveTextureSharpness),
        live("Texture Sharpness", &P::textureSharpness, &R::getStillFrameTextureSharpness),
        live("Light Evaluation Threshold", &P::lightEvaluationThreshold,
             &R::getLightEvaluationThreshold),
        live("High Quality Texture Filtering", &P::highQualityTextureFiltering,
             &R::getUseHighQualityTextureFiltering),
        live("Still Frame Supersampling", &P::stillFrameSupersampling,
             &R::getStillFrameSupersampling),
        live("photonMode", &P::photonMode, &R::getPhotonMode),
        live("Photon Trace Depth", &P::photonTraceDepth, &R::getPhotonTraceDepth),
        live("photonNoiseReductionSteps", &P::photonNoiseReductionSteps,
             &R::getPhotonNoiseReductionSteps),
        live("photonUseAutomaticRadius", &P::photonUseAutomaticRadius,
             &R::getPhotonUseAutomaticRadius),
        live("Photon Lookup Count", &P::photonLookupCount, &R::getPhotonLookupCount),
        sameAs("interactiveFinalGatherQuality", &P::interactiveFinalGatherQuality,
               &P::finalGatherQuality),
        live("finalGatherQuality", &P::finalGatherQuality, &R::getStillFrameFinalGatherQuality),
        live("finalGatherRadius", &P::finalGatherRadius, &R::getFinalGatherRadius),
        live("Use Final Gather for Glossy", &P::useFinalGatherForGlossy,
             &R::getUseFinalGatherForGlossy),
        live("indirectPhotonRadius", &P::indirectPhotonRadius, &R::getIndirectPhotonRadius),
        live("interactivePhotonCount", &P::interactivePhotonCount, &R::getInteractivePhotonCount),
        live("photonCount", &P::photonCount, &R::getStillFramePhotonCount),
        live("photonMapRefreshMode", &P::photonMapRefreshMode, &R::getPhotonMapRefreshMode),
        live("photonMapFreezeMode", &P::photonMapFreezeMode, &R::getPhotonMapFreezeMode),
        live("Illuminant", &P::illuminant, &R::getIlluminant),
        live("renderTime", &P::renderTime, &R::getRenderTimeInSeconds),
        live("useTimeLimit", &P::useTimeLimit, &R::getUseRenderTimeLimit),
        live("Use Infinite Rendering Flag", &P::useInfiniteRendering, &R::getUseInfiniteRendering),
        alwaysLive("Use Ray Splitting", &P::useRaySplitting, &R::getUseRaySplitting),
        alwaysLive("Use Two Sample MIS", &P::useTwoSampleMIS,
                   &R::getUseTwoSampleImportanceSampling),
        live("Denoise Filter Type", &P::denoiseFilterType, &R::getDenoiseFilter),
        alwaysEmpty<bool>(kOldDenoiseFlagKey),
        live("Denoiser Type", &P::denoiserType, &R::getDenoiserType),
        live("Denoiser Input", &P::denoiserInput, &R::getDenoiserInput),
        dropped("Denoise Alpha", &P::denoiseAlpha),
        constructed("filename", &P::filename),
        constructed("view", &P::view),
        constructed("pixel_width", &P::pixel_width),
        constructed("pixel_height", &P::pixel_height),
        constructed("ppi", &P::ppi),
        constructed("ssFactor", &P::ssFactor),
        constructed("use_render_region", &P::use_render_region),
        constructed("region_start_x", &P::region_start_x),
        constructed("region_start_y", &P::region_start_y),
        constructed("region_end_x", &P::region_end_x),
        constructed("region_end_y", &P::region_end_y),
        constructed("tonemap_hdr", &P::tonemap_hdr),
        constructed("alpha", &P::alpha),
        constructed("premultiply", &P::premultiply),
        constructed("tiffHDR", &P::tiffHDR),
        constructed("exrHalf", &P::exrHalf),
        constructed("multiLayer", &P::multiLayer),
        constructed("backgroundColorR", &P::backgroundColorR),
        constructed("backgroundColorG", &P::backgroundColorG),
        constructed("backgroundColorB", &P::backgroundColorB),
        constructed("iccProfileID", &P::iccProfileID),
        constructed("variantSets", &P::variantSets),
        constructed("variantSetsUsed", &P::variantSetsUsed),
        constructed("variantSetViewpointsUsed", &P::variantSetViewpointsUsed),
        constructed("renderAnimation", &P::renderAnimation),
        constructed("useClipRange", &P::useClipRange),
        constructed("clip", &P::clip),
        constructed("animationType", &P::animationType),
        constructed("exportType", &P::exportType),
        constructed("startFrame", &P::startFrame),
        constructed("stopFrame", &P::stopFrame),
        constructed("stepFrame", &P::stepFrame),
        constructed("fps", &P::fps),
        constructed(oxRenderPassMaster::column, &P::renderpasses),
    };
    for (PassFlag flag : kPassFlagColumnOrder)
        columns.push_back(
            constructed(passFlagInfo(flag).column, kPassFlagFields[static_cast<size_t>(flag)]));
    columns.push_back(constructed("metaDataFlags", &P::metaDataFlags));
    return columns;
}

template <typename T>
void writeColumn(oxMessage& message, const char* attribute, const oxPresetColumnField<T>& access,
                 const oxRenderSettingsPresets& presets)
{
    std::vector<T> values;
    if (access.field) {
        values.reserve(presets.size());
        for (const oxRenderSettingsPresetSPtr& preset : presets) {
            if (preset)
                values.push_back((*preset).*access.field);
        }
    }
    message.set(attribute, values, true);
}

template <typename T>
void readColumn(const oxMessage& message, const oxPresetColumn& column,
                const oxPresetColumnField<T>& access, oxRenderSettingsPresets& presets)
{
    // A column that is never read gives every preset the live value.
    if (column.fallback == Fallback::AlwaysLive) {
        const T value = access.live();
        for (oxRenderSettingsPresetSPtr& preset : presets)
            (*preset).*access.field = value;
        return;
    }
    // Absent or of another type (getFromMessage then complains): the column stays empty.
    std::vector<T> values;
    getFromMessage(message, column.attribute, values);
    if (column.fallback == Fallback::Dropped)
        return;
    const size_t present = std::min(values.size(), presets.size());
    for (size_t i = 0; i < present; ++i)
        (*presets[i]).*access.field = values[i];
    // The live value is taken once: it is the same for every preset of this read. SameAs
    // columns are completed after all others (completeSameAs).
    if (column.fallback == Fallback::Live && present < presets.size()) {
        const T live = access.live();
        for (size_t i = present; i < presets.size(); ++i)
            (*presets[i]).*access.field = live;
    }
}

// Gives the presets beyond the end of a SameAs column the value of the other field, once
// every column has been read, so that the other field holds its final value whichever of the
// two columns comes first.
template <typename T>
void completeSameAs(const oxMessage& message, const char* attribute,
                    const oxPresetColumnField<T>& access, oxRenderSettingsPresets& presets)
{
    // The column's length as readColumn saw it (0 when absent or of another type), without a
    // second complaint.
    const boost::any& stored = message.get(attribute);
    size_t present = 0;
    if (!stored.empty() && oxMessage::sameType(stored.type(), typeid(std::vector<T>)))
        present = boost::any_cast<const std::vector<T>&>(stored).size();
    for (size_t i = present; i < presets.size(); ++i)
        (*presets[i]).*access.field = (*presets[i]).*access.sameAs;
}

int parseVersion(const std::string& text)
{
    int version = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, version, 10);
    return result.ec == std::errc() && result.ptr == end ? version : 0;
}

oxRenderSettingsPresets readParsed(const oxMessage& message)
{
    const int version = parseVersion(message.getAttibute(kPresetVersionAttribute));
    oxRenderSettingsPreset::setLoadedFileVersion(version);
    oxLog::info(kPresetLoadedVersionMessage, version);
    return readPresetsFromMessage(message);
}

} // namespace

bool oxPresetColumn::isAlwaysEmpty() const
{
    return std::visit([](const auto& access) { return access.field == nullptr; }, access);
}

const std::vector<oxPresetColumn>& oxPresetColumns()
{
    static const std::vector<oxPresetColumn> columns = buildColumns();
    return columns;
}

oxMessage writePresetsToMessage(const oxRenderSettingsPresets& presets)
{
    oxMessage message;
    message.addAttribute(kPresetVersionAttribute,
                         std::to_string(oxRenderSettingsPreset::getCurrentFileVersion()));
    message.set(kPresetCountAttribute, static_cast<unsigned int>(presets.size()), true);
    for (const oxPresetColumn& column : oxPresetColumns()) {
        std::visit(
            [&](const auto& access) { writeColumn(message, column.attribute, access, presets); },
            column.access);
    }
    return message;
}

bool writePresetsToString(const oxRenderSettingsPresets& presets, std::string& text)
{
    return oxMessageRW::write(writePresetsToMessage(presets), text);
}

bool writePresetFile(const std::string& path, const oxRenderSettingsPresets& presets)
{
    return oxMessageRW::write(writePresetsToMessage(presets), path.c_str());
}

void savePresetFile(const oxRenderSettingsPresets& presets)
{
    const std::string folder = oxPreferences::getPreferencesDir();
    if (folder.empty())
        return;
    if (oxRenderSettingsPreset::getLoadedFileVersion() >
        oxRenderSettingsPreset::getCurrentFileVersion()) {
        oxLog::error("%s", kPresetNewerVersionMessage);
        return;
    }
    if (!writePresetFile(folder + kPresetFileName, presets))
        oxLog::error("%s", kPresetWriteFailedMessage);
}

oxRenderSettingsPresets readPresetsFromMessage(const oxMessage& message)
{
    oxRenderSettingsPresets presets;
    unsigned int count = 0;
    if (!getFromMessage(message, kPresetCountAttribute, count) || count == 0)
        return presets;

    const std::vector<oxPresetColumn>& columns = oxPresetColumns();
    // The names, not the count, decide how many presets there are.
    std::vector<std::string> names;
    if (!getFromMessage(message, columns.front().attribute, names)) {
        oxLog::error("%s", kPresetNameMissingMessage);
        return presets;
    }
    presets.reserve(names.size());
    for (const std::string& name : names) {
        auto preset = std::make_shared<oxRenderSettingsPreset>();
        preset->name = name;
        presets.push_back(std::move(preset));
    }

    for (const oxPresetColumn& column : columns) {
        if (column.fallback == Fallback::Required)
            continue;
        std::visit([&](const auto& access) { readColumn(message, column, access, presets); },
                   column.access);
    }
    for (const oxPresetColumn& column : columns) {
        if (column.fallback != Fallback::SameAs)
            continue;
        std::visit(
            [&](const auto& access) { completeSameAs(message, column.attribute, access, presets); },
            column.access);
    }
    return presets;
}

oxRenderSettingsPresets readPresetsFromFile(const std::string& path)
{
    oxMessage message;
    if (!oxMessageRW::read(message, path.c_str(), std::string()))
        return {};
    return readParsed(message);
}

oxRenderSettingsPresets readPresetsFromString(const std::string& text)
{
    oxMessage message;
    if (!oxMessageRW::read(message, nullptr, text))
        return {};
    return readParsed(message);
}

oxRenderSettingsPresets readPresetFile()
{
    std::printf("%s\n", kPresetReadNotice);
    std::fflush(stdout);
    const std::string folder = oxPreferences::getPreferencesDir();
    if (folder.empty())
        return {};
    const std::string path = folder + kPresetFileName;
    if (oxFile::exists(path, true))
        return readPresetsFromFile(path);
    // Without a current file the legacy one is tried as it is: if it isn't there either, the
    // read fails and the list is empty.
    return readPresetsFromFile(folder + kLegacyPresetFileName);
}

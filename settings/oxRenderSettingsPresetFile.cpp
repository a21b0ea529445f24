#include "oxRenderSettingsPresetFile.h"

#include "oxFile.h"
#include "oxFileRescue.h"
#include "oxInputLimits.h"
#include "oxLiveParameters.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxMessageRW.h"
#include "oxPreferences.h"
#include "oxRenderSettingsKeys.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace {

using P = oxRenderSettingsPreset;
using Fallback = oxPresetColumnFallback;

template <typename T>
oxPresetColumn constructed(const char* attribute, T P::*field)
{
    return {attribute, Fallback::Constructed, oxPresetColumnField<T>{field, nullptr, nullptr}};
}

// Live columns take the live value from the store that capture reads.
template <typename T>
oxPresetColumn live(const char* attribute, T P::*field)
{
    return {attribute, Fallback::Live, oxPresetColumnField<T>{field, oxLiveGetter(field), nullptr}};
}

template <typename T>
oxPresetColumn alwaysLive(const char* attribute, T P::*field)
{
    return {attribute, Fallback::AlwaysLive,
            oxPresetColumnField<T>{field, oxLiveGetter(field), nullptr}};
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

std::vector<oxPresetColumn> buildColumns()
{
    std::vector<oxPresetColumn> columns = {
        {"name", Fallback::Required, oxPresetColumnField<std::string>{&P::name}},
        constructed("timeStamp", &P::timeStamp),
        live("filterType", &P::filterType),
        live("filterWidth", &P::filterWidth),
        live("filterHeight", &P::filterHeight),
        live("imageSamples", &P::imageSamples),
        live("samplesThreshold", &P::samplesThreshold),
        alwaysEmpty<int>("adaptiveSamples"),
        live("aaThresholdQuality", &P::aaThresholdQuality),
        live("maxReflectionDepth", &P::maxReflectionDepth),
        sameAs("stillFrameReflectionDepth", &P::stillFrameReflectionDepth, &P::maxReflectionDepth),
        live("enableClamping", &P::enableClamping),
        live("reflectionClampValue", &P::reflectionClampValue),
        live("pbParameters", &P::pbParameters),
        live("spectralRendering", &P::spectralRendering),
        live("displayLuminance", &P::displayLuminance),
        live("sim2LuminanceMapping", &P::sim2LuminanceMapping),
        live("ignoreOverrideTraceDepth", &P::ignoreOverrideTraceDepth),
        live("ignoreOverrideIlluminationMode", &P::ignoreOverrideIlluminationMode),
        live("ignoreOverrideReflectionQuality", &P::ignoreOverrideReflectionQuality),
        live("ignoreOverrideIBLQuality", &P::ignoreOverrideIBLQuality),
        live("lightOptimizationMode", &P::lightOptimizationMode),
        live("brdfMode", &P::brdfMode),
        live("interactiveQualityMode", &P::interactiveQualityMode),
        live("interactiveQuality", &P::interactiveQuality),
        live("stillQualityMode", &P::stillQualityMode),
        live("stillQuality", &P::stillQuality),
        live("environmentInteractiveQuality", &P::environmentInteractiveQuality),
        live("environmentStillQuality", &P::environmentStillQuality),
        live("photonDispersionQuality", &P::photonDispersionQuality),
        live("nurbsMode", &P::nurbsMode),
        live("nurbsEpsilon", &P::nurbsEpsilon),
        live("nurbsNewtonEpsilon", &P::nurbsNewtonEpsilon),
        live("nurbsUsePreclassification", &P::nurbsUsePreclassification),
        live("nurbsMinDepthSurface", &P::nurbsMinDepthSurface),
        live("nurbsMaxDepthSurface", &P::nurbsMaxDepthSurface),
        live("nurbsThresholdSurface", &P::nurbsThresholdSurface),
        live("nurbsMinDepthCurve", &P::nurbsMinDepthCurve),
        live("nurbsMaxDepthCurve", &P::nurbsMaxDepthCurve),
        live("nurbsThresholdCurve", &P::nurbsThresholdCurve),
        live("renderer", &P::renderer),
        live(oxSceneKey::SampleOffset, &P::sampleOffset),
        live(oxSceneKey::InteractiveTextureSharpness, &P::interactiveTextureSharpness),
        live(oxSceneKey::TextureSharpness, &P::textureSharpness),
        live(oxSceneKey::LightEvaluationThreshold, &P::lightEvaluationThreshold),
        live(oxSceneKey::HighQualityTextureFiltering, &P::highQualityTextureFiltering),
        live(oxSceneKey::StillFrameSupersampling, &P::stillFrameSupersampling),
        live("photonMode", &P::photonMode),
        live(oxSceneKey::PhotonTraceDepth, &P::photonTraceDepth),
        live("photonNoiseReductionSteps", &P::photonNoiseReductionSteps),
        live("photonUseAutomaticRadius", &P::photonUseAutomaticRadius),
        live(oxSceneKey::PhotonLookupCount, &P::photonLookupCount),
        sameAs("interactiveFinalGatherQuality", &P::interactiveFinalGatherQuality,
               &P::finalGatherQuality),
        live("finalGatherQuality", &P::finalGatherQuality),
        live("finalGatherRadius", &P::finalGatherRadius),
        live(oxSceneKey::UseFinalGatherForGlossy, &P::useFinalGatherForGlossy),
        live("indirectPhotonRadius", &P::indirectPhotonRadius),
        live("interactivePhotonCount", &P::interactivePhotonCount),
        live("photonCount", &P::photonCount),
        live("photonMapRefreshMode", &P::photonMapRefreshMode),
        live("photonMapFreezeMode", &P::photonMapFreezeMode),
        live(oxSceneKey::Illuminant, &P::illuminant),
        live("renderTime", &P::renderTime),
        live("useTimeLimit", &P::useTimeLimit),
        live(oxSceneKey::UseInfiniteRendering, &P::useInfiniteRendering),
        alwaysLive(oxSceneKey::UseRaySplitting, &P::useRaySplitting),
        alwaysLive(oxSceneKey::UseTwoSampleMIS, &P::useTwoSampleMIS),
        live(oxSceneKey::DenoiseFilterType, &P::denoiseFilterType),
        alwaysEmpty<bool>(kOldDenoiseFlagKey),
        live(oxSceneKey::DenoiserType, &P::denoiserType),
        live(oxSceneKey::DenoiserInput, &P::denoiserInput),
        dropped(oxSceneKey::DenoiseAlpha, &P::denoiseAlpha),
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

// The preset file of the preferences folder when its last read failed to parse it.
std::string& unreadablePresetFile()
{
    static std::string path;
    return path;
}

int parseVersion(const std::string& text)
{
    int version = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, version, 10);
    return result.ec == std::errc() && result.ptr == end ? version : 0;
}

template <typename T>
const std::type_info& columnType(const oxPresetColumnField<T>&)
{
    return typeid(std::vector<T>);
}

// A column of another type than the presets hold is left out with one line naming it and its
// source, rather than a complaint with a stack trace from each typed read of it.
void dropWronglyTyped(oxMessage& message, const std::string& source)
{
    auto check = [&](const char* attribute, const std::type_info& type) {
        const boost::any& stored = message.get(attribute);
        if (stored.empty() || oxMessage::sameType(stored.type(), type))
            return;
        oxLog::warning(kPresetWrongTypeMessage, source.c_str(),
                       oxInputLimits::quoted(attribute).c_str());
        message.remove(attribute);
    };
    check(kPresetCountAttribute, typeid(unsigned int));
    for (const oxPresetColumn& column : oxPresetColumns())
        std::visit([&](const auto& access) { check(column.attribute, columnType(access)); },
                   column.access);
}

oxRenderSettingsPresets readParsed(oxMessage& message, const std::string& source)
{
    dropWronglyTyped(message, source);
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
    const std::string path = folder + kPresetFileName;
    if (unreadablePresetFile() == path) {
        // The presets of a file that couldn't be read are not in the list being saved: the
        // file is kept beside itself so that the user can still recover them.
        const std::string kept = oxFileRescue::keepBeside(path);
        if (!kept.empty())
            oxLog::warning(kPresetFileKeptMessage, path.c_str(), kept.c_str());
        unreadablePresetFile().clear();
    }
    if (!writePresetFile(path, presets))
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
    return readParsed(message, "'" + path + "'");
}

oxRenderSettingsPresets readPresetsFromString(const std::string& text)
{
    oxMessage message;
    if (!oxMessageRW::read(message, nullptr, text))
        return {};
    return readParsed(message, "text");
}

oxRenderSettingsPresets readPresetFile()
{
    std::printf("%s\n", kPresetReadNotice);
    std::fflush(stdout);
    const std::string folder = oxPreferences::getPreferencesDir();
    if (folder.empty())
        return {};
    const std::string path = folder + kPresetFileName;
    if (oxFile::exists(path, true)) {
        oxMessage message;
        if (oxMessageRW::read(message, path.c_str(), std::string()))
            return readParsed(message, "'" + path + "'");
        unreadablePresetFile() = path;
        return {};
    }
    // Without a current file the legacy one is tried as it is: if it isn't there either, the
    // read fails and the list is empty.
    return readPresetsFromFile(folder + kLegacyPresetFileName);
}

#include "oxRenderSettingsPreferenceDefaults.h"

#include "oxMessage.h"

using P = oxRenderSettingsPreset;

const std::vector<oxPreferenceDefault>& preferenceDefaults()
{
    // Built on first use: the rows refer to kPreferenceKeys, another file's table.
    static const std::vector<oxPreferenceDefault> table = {
        {nullptr, &P::imageSamples, 256},
        {nullptr, &P::samplesThreshold, 1},
        {nullptr, &P::useInfiniteRendering, true},
        {nullptr, &P::useRaySplitting, true},
        {nullptr, &P::denoiseFilterType, 0u},
        {nullptr, &P::denoiserType, 0u},
        {nullptr, &P::denoiserInput, 0},
        {nullptr, &P::denoiseAlpha, true},
        {nullptr, &P::useTwoSampleMIS, false},
        {kUseNVLinkTextureSharingKey, &P::useNVLinkTextureSharing, false},
        {kUseNVLinkGeometrySharingKey, &P::useNVLinkGeometrySharing, false},
        {nullptr, &P::useTimeLimit, false},
        {nullptr, &P::renderTime, 90u},
        {nullptr, &P::aaThresholdQuality, 5},
        {nullptr, &P::maxReflectionDepth, 8},
        {nullptr, &P::stillFrameReflectionDepth, 16},
        {nullptr, &P::filterType, 7},
        {nullptr, &P::filterWidth, 1.0f},
        {nullptr, &P::filterHeight, 1.0f},
        {nullptr, &P::enableClamping, true},
        {nullptr, &P::reflectionClampValue, 16.0f},
        {nullptr, &P::pbParameters, false},
        {nullptr, &P::spectralRendering, false},
        {nullptr, &P::illuminant, 1},
        {nullptr, &P::displayLuminance, 100.0f},
        {nullptr, &P::sim2LuminanceMapping, 1.0f},
        {"Dithering", {}, true},
        {nullptr, &P::nurbsMode, 0},
        {nullptr, &P::lightOptimizationMode, 1},
        {nullptr, &P::brdfMode, 2},
        {kCheckBrdfModePreference, {}, true},
        {kUpdateBrdfModePreference, {}, true},
        {nullptr, &P::interactiveQualityMode, 1},
        {nullptr, &P::interactiveQuality, 1},
        {nullptr, &P::stillQualityMode, 3},
        {nullptr, &P::stillQuality, 1},
        {nullptr, &P::environmentInteractiveQuality, 1},
        {nullptr, &P::environmentStillQuality, 1},
        {nullptr, &P::photonMode, 0},
        {nullptr, &P::photonTraceDepth, 32},
        {nullptr, &P::finalGatherQuality, 1},
        {nullptr, &P::interactiveFinalGatherQuality, 1},
        {nullptr, &P::finalGatherRadius, 25.0f},
        {nullptr, &P::useFinalGatherForGlossy, false},
        {nullptr, &P::interactivePhotonCount, 50000},
        {nullptr, &P::photonCount, 100000},
        {"Photon Caustic Radius", {}, 25.0f},
        {nullptr, &P::photonMapRefreshMode, 1},
        {nullptr, &P::startFrame, 0},
        {nullptr, &P::stopFrame, 25},
        {nullptr, &P::fps, 25},
        {nullptr, &P::pixel_width, 800},
        {nullptr, &P::pixel_height, 600},
        {kMovieExportAviPreference, {}, false},
        {"ImageExport add sig", {}, false},
        {nullptr, &P::ssFactor, 3},
        {nullptr, &P::alpha, false},
        {"ImageExport stereo mode", {}, 0},
        {"Image Export Max Framebuffer Memory", {}, 2048},
        {"MovieExport dpi", {}, 72.0f},
        {kDefaultFormatPreference, {}, std::string(kDefaultImageFormat)},
        {kSnapshotQualityPreference, {}, -1},
        {"ImageExport show image", {}, false},
        {"ImageExport single viewer", {}, true},
        {"ImageExport sig position", {}, std::vector<int>{4, 4}},
        {"ImageExport sig font size", {}, 10},
        {"ImageExport sig color", {}, std::vector<int>{255, 255, 255}},
        {"ImageExport sig comment", {}, QString()},
        {"ImageExport sig add filename", {}, true},
        {"ImageExport sig add date", {}, true},
        {"ImageExport sig add time", {}, true},
        {"ImageExport share main gl", {}, true},
        {"ImageExport ignore aspect", {}, true},
        {nullptr, &P::tiffHDR, false},
        {nullptr, &P::exrHalf, false},
        {nullptr, &P::multiLayer, false},
        {kSnapshotPathPreference, {}, std::string(kDefaultSnapshotPath)},
        {kExportClusterPreference, {}, false},
        {kExportClusterHostsPreference, {}, std::string("localhost")},
        {"Play sound", {}, true},
    };
    return table;
}

std::string oxPreferenceDefault::keyName() const
{
    if (key)
        return key;
    for (const oxSettingKey& row : kPreferenceKeys) {
        if (row.field == field)
            return settingKeyName(row);
    }
    return {};
}

void setPreferenceDefaults(oxMessage& data, bool overwrite)
{
    for (const oxPreferenceDefault& row : preferenceDefaults())
        std::visit([&](const auto& value) { data.set(row.keyName(), value, overwrite); },
                   row.value);
}

void removePreferenceDefaults(oxMessage& data)
{
    for (const oxPreferenceDefault& row : preferenceDefaults())
        data.remove(row.keyName());
}

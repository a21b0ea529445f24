#include "oxRenderSettingsPreferenceDefaults.h"

#include "oxMessage.h"

using P = oxRenderSettingsPreset;
using E = oxPreferenceEffect;

const std::vector<oxPreferenceDefault>& preferenceDefaults()
{
    // Built on first use: the rows refer to kPreferenceKeys, another file's table. The
    // indirect photon radius has an effect and a widget but no default: the page alone
    // writes it.
    static const std::vector<oxPreferenceDefault> table = {
        {nullptr, &P::imageSamples, 256, "_image_samples_spinbox", E::Live},
        {nullptr, &P::samplesThreshold, 1, "_samples_threshold", E::Live},
        {nullptr, &P::useInfiniteRendering, true, "_use_infinite_rendering", E::Live},
        {nullptr, &P::useRaySplitting, true, "_use_ray_splitting", E::Live},
        {nullptr, &P::denoiseFilterType, 0u, "_denoiser_filter", E::DenoiseFilter},
        {nullptr, &P::denoiserType, 0u, "_denoiser_type", E::Live},
        {nullptr, &P::denoiserInput, 0, "_denoiser_input", E::Live},
        {nullptr, &P::denoiseAlpha, true, "_denoise_alpha"},
        {nullptr, &P::useTwoSampleMIS, false, "_use_two_sample_mis", E::Live},
        {kUseNVLinkTextureSharingKey, &P::useNVLinkTextureSharing, false, "_use_texture_sharing",
         E::Live},
        {kUseNVLinkGeometrySharingKey, &P::useNVLinkGeometrySharing, false, "_use_geometry_sharing",
         E::Live},
        {nullptr, &P::useTimeLimit, false, "_use_image_samples", E::Live},
        {nullptr, &P::renderTime, 90u, "_time_hours", E::Live},
        {nullptr, &P::aaThresholdQuality, 5, "_aa_threshold_quality", E::Live},
        {nullptr, &P::maxReflectionDepth, 8, "_interactive_depth_slider", E::Live},
        {nullptr, &P::stillFrameReflectionDepth, 16, "_stillframe_depth_slider", E::Live},
        {nullptr, &P::filterType, 7, "Image_Filter_Type", E::ImageFilter},
        {nullptr, &P::filterWidth, 1.0f, "Image_Filter_Width", E::ImageFilter},
        {nullptr, &P::filterHeight, 1.0f, "Image_Filter_Width", E::ImageFilter},
        {nullptr, &P::enableClamping, true, "_clamping_group_box", E::Live},
        {nullptr, &P::reflectionClampValue, 16.0f, "_reflection_clamp_value", E::Live},
        {nullptr, &P::pbParameters, false, "_enable_PBParameters"},
        {nullptr, &P::spectralRendering, false, "_enable_spectral_raytracing", E::Spectral},
        {nullptr, &P::illuminant, 1, "_spectral_illuminant", E::Live},
        {nullptr, &P::displayLuminance, 100.0f, "_displayLuminanceSlider"},
        {nullptr, &P::sim2LuminanceMapping, 1.0f, "_sim2LuminanceMappingSlider"},
        {"Dithering", {}, true, "_dithering", E::Dithering},
        {nullptr, &P::nurbsMode, 0, "_enable_nurbs_raytracing", E::Live},
        {nullptr, &P::lightOptimizationMode, 1, "_optimize_lights", E::Live},
        {nullptr, &P::brdfMode, 2, "_brdf_mode", E::BrdfMode},
        {kCheckBrdfModePreference, {}, true, "_checkBrdfMode"},
        {kUpdateBrdfModePreference, {}, true, "_updateBrdfMode"},
        {nullptr, &P::interactiveQualityMode, 1, "_interactiveQualityMode", E::Live},
        {nullptr, &P::interactiveQuality, 1, "_interactiveQuality", E::Live},
        {nullptr, &P::stillQualityMode, 3, "_stillFrameQualityMode", E::Live},
        {nullptr, &P::stillQuality, 1, "_stillFrameQuality", E::Live},
        {nullptr, &P::environmentInteractiveQuality, 1, "_environmentInteractiveQuality", E::Live},
        {nullptr, &P::environmentStillQuality, 1, "_environmentStillFrameQuality", E::Live},
        {nullptr, &P::photonMode, 0, "_photon_mode", E::Live},
        {nullptr, &P::photonTraceDepth, 32, "_photon_trace_depth_spinbox", E::Live},
        {nullptr, &P::finalGatherQuality, 1, "_finalgather_quality_spinbox", E::Live},
        {nullptr, &P::interactiveFinalGatherQuality, 1, "_interactive_finalgather_quality_spinbox",
         E::Live},
        {nullptr, &P::finalGatherRadius, 25.0f, "_final_gather_radius", E::Live},
        {nullptr, &P::useFinalGatherForGlossy, false, "_use_final_gather_for_glossy", E::Live},
        {nullptr, &P::interactivePhotonCount, 50000, "_interactive_photon_count", E::Live},
        {nullptr, &P::photonCount, 100000, "_stillframe_photon_count", E::Live},
        {"Photon Caustic Radius", {}, 25.0f},
        {nullptr, &P::indirectPhotonRadius, 25.0f, "_indirect_radius", E::Live, false},
        {nullptr, &P::photonMapRefreshMode, 1, "_photon_refresh_mode", E::Live},
        {nullptr, &P::startFrame, 0, "_start"},
        {nullptr, &P::stopFrame, 25, "_stop"},
        {nullptr, &P::fps, 25, "_fps"},
        {nullptr, &P::pixel_width, 800, "_iwidth"},
        {nullptr, &P::pixel_height, 600, "_iheight"},
        {kMovieExportAviPreference, {}, false, "_exportType"},
        {"ImageExport add sig", {}, false, "_add_image_signature"},
        {nullptr, &P::ssFactor, 3, "_ssfactor"},
        {nullptr, &P::alpha, false, "_alpha"},
        {"ImageExport stereo mode", {}, 0, "_image_stereo"},
        {"Image Export Max Framebuffer Memory", {}, 2048, "_framebuffer_memory_limit"},
        {"MovieExport dpi", {}, 72.0f, "_dpi"},
        {kDefaultFormatPreference, {}, std::string(kDefaultImageFormat), "_default_format"},
        {kSnapshotQualityPreference, {}, -1, "_image_quality"},
        {"ImageExport show image", {}, false, "_show_image"},
        {"ImageExport single viewer", {}, true, "_single_viewer"},
        {"ImageExport sig position", {}, std::vector<int>{4, 4}, "_xpos"},
        {"ImageExport sig font size", {}, 10, "_font_size"},
        {"ImageExport sig color", {}, std::vector<int>{255, 255, 255}, "_scolor"},
        {"ImageExport sig comment", {}, QString(), "_comment"},
        {"ImageExport sig add filename", {}, true, "_add_filename"},
        {"ImageExport sig add date", {}, true, "_add_date"},
        {"ImageExport sig add time", {}, true, "_add_time"},
        {"ImageExport share main gl", {}, true, "_share_main_gl"},
        {"ImageExport ignore aspect", {}, true, "_ignore_aspect"},
        {nullptr, &P::tiffHDR, false, "_tiff_hdr"},
        {nullptr, &P::exrHalf, false, "_exr_half"},
        {nullptr, &P::multiLayer, false, "_use_multi_layer"},
        {kSnapshotPathPreference, {}, std::string(kDefaultSnapshotPath), "_snapshot_path"},
        {kExportClusterPreference, {}, false, "_cluster"},
        {kExportClusterHostsPreference, {}, std::string("localhost"), "_cluster_hosts"},
        {"Play sound", {}, true, "_play_sound", E::PlaySound},
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
    for (const oxPreferenceDefault& row : preferenceDefaults()) {
        if (row.hasDefault)
            std::visit([&](const auto& value) { data.set(row.keyName(), value, overwrite); },
                       row.value);
    }
}

void removePreferenceDefaults(oxMessage& data)
{
    for (const oxPreferenceDefault& row : preferenceDefaults())
        data.remove(row.keyName());
}

#pragma once

#include "oxRenderAutomationVariantSetGroup.h"
#include "oxRenderPasses.h"
#include "oxSceneGraph.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

using oxVariantSetGroups = std::vector<oxRenderAutomationVariantSetGroup>;

// The record's fields before the pass flags, in their order: X(type, field, constructed value).
// A constructed record has every number 0, every flag false and every text and list empty, but
// for ray splitting and alpha denoising, which are on.
#define OX_PRESET_FIELDS(X)                                                                        \
    X(std::string, name, {})                                                                       \
    X(bool, timeStamp, false)                                                                      \
    X(int, filterType, 0)                                                                          \
    X(float, filterWidth, 0.0f)                                                                    \
    X(float, filterHeight, 0.0f)                                                                   \
    X(int, imageSamples, 0)                                                                        \
    X(int, samplesThreshold, 0)                                                                    \
    X(unsigned int, renderTime, 0u)                                                                \
    X(bool, useTimeLimit, false)                                                                   \
    X(bool, useInfiniteRendering, false)                                                           \
    X(unsigned int, denoiseFilterType, 0u)                                                         \
    X(bool, useRaySplitting, true)                                                                 \
    X(unsigned int, denoiserType, 0u)                                                              \
    X(int, denoiserInput, 0)                                                                       \
    X(bool, denoiseAlpha, true)                                                                    \
    X(bool, useTwoSampleMIS, false)                                                                \
    X(bool, useNVLinkTextureSharing, false)                                                        \
    X(bool, useNVLinkGeometrySharing, false)                                                       \
    X(bool, pbParameters, false)                                                                   \
    X(bool, spectralRendering, false)                                                              \
    X(float, displayLuminance, 0.0f)                                                               \
    X(float, sim2LuminanceMapping, 0.0f)                                                           \
    X(bool, ignoreOverrideTraceDepth, false)                                                       \
    X(bool, ignoreOverrideIlluminationMode, false)                                                 \
    X(bool, ignoreOverrideReflectionQuality, false)                                                \
    X(bool, ignoreOverrideIBLQuality, false)                                                       \
    X(int, lightOptimizationMode, 0)                                                               \
    X(int, brdfMode, 0)                                                                            \
    X(float, lightEvaluationThreshold, 0.0f)                                                       \
    X(int, aaThresholdQuality, 0)                                                                  \
    X(int, maxReflectionDepth, 0)                                                                  \
    X(int, stillFrameReflectionDepth, 0)                                                           \
    X(bool, enableClamping, false)                                                                 \
    X(float, reflectionClampValue, 0.0f)                                                           \
    X(int, interactiveQualityMode, 0)                                                              \
    X(int, stillQualityMode, 0)                                                                    \
    X(int, interactiveQuality, 0)                                                                  \
    X(int, stillQuality, 0)                                                                        \
    X(int, environmentInteractiveQuality, 0)                                                       \
    X(int, environmentStillQuality, 0)                                                             \
    X(int, photonDispersionQuality, 0)                                                             \
    X(int, nurbsMode, 0)                                                                           \
    X(float, nurbsEpsilon, 0.0f)                                                                   \
    X(float, nurbsNewtonEpsilon, 0.0f)                                                             \
    X(int, nurbsMinDepthSurface, 0)                                                                \
    X(int, nurbsMaxDepthSurface, 0)                                                                \
    X(float, nurbsThresholdSurface, 0.0f)                                                          \
    X(int, nurbsMinDepthCurve, 0)                                                                  \
    X(int, nurbsMaxDepthCurve, 0)                                                                  \
    X(float, nurbsThresholdCurve, 0.0f)                                                            \
    X(bool, nurbsUsePreclassification, false)                                                      \
    X(int, renderer, 0)                                                                            \
    X(float, interactiveTextureSharpness, 0.0f)                                                    \
    X(float, textureSharpness, 0.0f)                                                               \
    X(bool, highQualityTextureFiltering, false)                                                    \
    X(int, stillFrameSupersampling, 0)                                                             \
    X(int, sampleOffset, 0)                                                                        \
    X(int, photonMode, 0)                                                                          \
    X(int, photonTraceDepth, 0)                                                                    \
    X(int, photonNoiseReductionSteps, 0)                                                           \
    X(bool, photonUseAutomaticRadius, false)                                                       \
    X(int, photonLookupCount, 0)                                                                   \
    X(int, interactiveFinalGatherQuality, 0)                                                       \
    X(int, finalGatherQuality, 0)                                                                  \
    X(float, indirectPhotonRadius, 0.0f)                                                           \
    X(float, finalGatherRadius, 0.0f)                                                              \
    X(bool, useFinalGatherForGlossy, false)                                                        \
    X(int, interactivePhotonCount, 0)                                                              \
    X(int, photonCount, 0)                                                                         \
    X(int, photonMapRefreshMode, 0)                                                                \
    X(int, photonMapFreezeMode, 0)                                                                 \
    X(int, illuminant, 0)                                                                          \
    X(std::string, view, {})                                                                       \
    X(std::string, filename, {})                                                                   \
    X(float, pixel_width, 0.0f)                                                                    \
    X(float, pixel_height, 0.0f)                                                                   \
    X(float, printWidth, 0.0f)                                                                     \
    X(float, printHeight, 0.0f)                                                                    \
    X(float, ppi, 0.0f)                                                                            \
    X(int, ssFactor, 0)                                                                            \
    X(bool, use_render_region, false)                                                              \
    X(int, region_start_x, 0)                                                                      \
    X(int, region_start_y, 0)                                                                      \
    X(int, region_end_x, 0)                                                                        \
    X(int, region_end_y, 0)                                                                        \
    X(bool, tonemap_hdr, false)                                                                    \
    X(bool, alpha, false)                                                                          \
    X(bool, premultiply, false)                                                                    \
    X(bool, tiffHDR, false)                                                                        \
    X(bool, exrHalf, false)                                                                        \
    X(bool, multiLayer, false)                                                                     \
    X(float, backgroundColorR, 0.0f)                                                               \
    X(float, backgroundColorG, 0.0f)                                                               \
    X(float, backgroundColorB, 0.0f)                                                               \
    X(int, iccProfileID, 0)                                                                        \
    X(int, metaDataFlags, 0)                                                                       \
    X(bool, variantSetsUsed, false)                                                                \
    X(bool, variantSetViewpointsUsed, false)                                                       \
    X(oxVariantSetGroups, variantSets, {})                                                         \
    X(bool, renderAnimation, false)                                                                \
    X(bool, useClipRange, false)                                                                   \
    X(std::string, clip, {})                                                                       \
    X(int, animationType, 0)                                                                       \
    X(int, exportType, 0)                                                                          \
    X(int, startFrame, 0)                                                                          \
    X(int, stopFrame, 0)                                                                           \
    X(int, stepFrame, 0)                                                                           \
    X(int, fps, 0)                                                                                 \
    X(bool, renderpasses, false)

/// One complete set of render settings: what is rendered, where it goes and how the raytracer
/// is set. A plain value: copying copies every field. The raytracing fields are a copy of the
/// host's live values; the output fields have no other owner.
class oxRenderSettingsPreset {
public:
    /// What a merge of one record into another keeps of the target (bits, combined).
    enum ApplyPresetMode : int {
        ApplyAll = 1,
        KeepSpectral = 2,
        ApplyBit4 = 4,
        KeepFilename = 8,
        KeepClip = 16,
        KeepVariantSets = 32,
        KeepPhotometric = 64,
        ClearName = 128,
    };

    /// The first, last and step frame of an animation and the id of its animation object
    /// (0 when none).
    struct AnimationRange {
        unsigned int firstFrame = 0;
        unsigned int lastFrame = 0;
        unsigned int step = 0;
        unsigned int animationId = 0;
    };

#define OX_PRESET_FIELD_DECLARE(type, field, constructed) type field = constructed;
    OX_PRESET_FIELDS(OX_PRESET_FIELD_DECLARE)
#undef OX_PRESET_FIELD_DECLARE
#define OX_PRESET_PASS_FIELD_DECLARE(enumName, field, ...) bool field = false;
    OX_RENDER_PASS_FLAGS(OX_PRESET_PASS_FIELD_DECLARE)
#undef OX_PRESET_PASS_FIELD_DECLARE

    /// True when every field, pass flags included, equals that of other.
    bool operator==(const oxRenderSettingsPreset& other) const;
    bool operator!=(const oxRenderSettingsPreset& other) const { return !(*this == other); }

    /// The extension of filename, with a leading "." when withDot is set ("" when none).
    std::string getFileExtension(bool withDot) const;

    /// The node of view below the camera pool's root: found by its unique path, else by the
    /// path's leaf name when exactly one node bears it. Null (the current view) for an empty
    /// view and, with an error logged, for a name that is missing or ambiguous.
    osg::NodePtr getViewNode() const;
    bool isViewMissing() const;
    /// The view is a camera track.
    bool isCameraTrackView() const;
    /// The view is a camera track and a single image is rendered.
    bool isStillCameraTrackView() const;
    /// Variant sets are rendered: chosen, and the view is no camera track.
    bool usesVariantSets() const;
    /// The view comes from the variant sets.
    bool usesVariantSetViewpoints() const;
    /// The frames to render: the record's range, replaced by the clip's when the clip range is
    /// used, and by the camera track's when the view is a camera track; a movie has step 1.
    AnimationRange getAnimationRange() const;

    /// A movie is exported: the animation is rendered and its export type is Movie.
    bool isMovieExport() const;

    /// The image size: the float size plus 0.5, truncated.
    int getPixelWidth() const;
    int getPixelHeight() const;
    /// The print resolution truncated to an integer (no rounding, unlike the size).
    int getPixelsPerInch() const;

    /// The value of a pass flag, and a writable reference to it.
    bool getPassFlag(PassFlag flag) const;
    bool& passFlag(PassFlag flag);

    /// True when passes are exported, the host raytraces and a pass flag other than the
    /// specular light flag is set.
    bool hasSelectedRenderPass() const;
    /// The flags by pass id (kPassCount entries), or {true} for the beauty image alone when
    /// passes are off, the host doesn't raytrace or no pass is selected.
    std::vector<bool> getRenderPassFlags() const;
    /// The ids of the set entries of getRenderPassFlags, rising; empty unless passes are
    /// exported and the host raytraces.
    std::vector<unsigned int> getRenderPassIds() const;
    size_t getRenderPassCount() const;

    /// The version written into every preset file.
    static int getCurrentFileVersion();
    /// The version of the last preset file or text read in this process (0 before any).
    static int getLoadedFileVersion();
    /// Set by the preset file store after each successful parse.
    static void setLoadedFileVersion(int version);
};

using oxRenderSettingsPresetSPtr = std::shared_ptr<oxRenderSettingsPreset>;
/// Presets in insertion order, looked up by name (case-sensitive); may hold null entries.
using oxRenderSettingsPresets = std::vector<oxRenderSettingsPresetSPtr>;

/// The member pointer of each pass flag, indexed by PassFlag.
extern const std::array<bool oxRenderSettingsPreset::*, kPassFlagCount> kPassFlagFields;

/// An entry of a value table: a setting's value and its label.
struct oxPresetValueName {
    int value;
    const char* label;
};

/// Pixel filter types (filterType).
extern const std::array<oxPresetValueName, 10> kPixelFilterTypes;
/// Illumination modes (interactiveQualityMode, stillQualityMode).
extern const std::array<oxPresetValueName, 5> kIlluminationModes;
/// Adaptive antialiasing quality levels (aaThresholdQuality); the highest switches adaptive
/// antialiasing off.
extern const std::array<oxPresetValueName, 6> kAdaptiveQualityLevels;
/// Denoise filters (denoiseFilterType).
extern const std::array<oxPresetValueName, 3> kDenoiseFilters;
/// The legacy CPU denoiser, which turns into the AI denoiser for still frames wherever it
/// arrives.
constexpr unsigned int kLegacyDenoiseFilter = 1;
constexpr unsigned int kDenoiseFilterStillFrames = 2;
constexpr const char* kLegacyDenoiserMessage =
    "Legacy CPU denoiser no longer supported. AI denoiser will be used";
/// Colour profiles (iccProfileID).
extern const std::array<oxPresetValueName, 5> kIccProfiles;
/// The label of a value in a table, or null when the table has no such value.
template <size_t N>
const char* oxPresetValueLabel(const std::array<oxPresetValueName, N>& table, int value)
{
    for (const oxPresetValueName& entry : table) {
        if (entry.value == value)
            return entry.label;
    }
    return nullptr;
}

/// The bits of metaDataFlags.
enum oxMetaDataFlag : int {
    CAMERA_DATA = 1 << 0,
    SCENEGRAPH_VISIBILITY_STATE = 1 << 1,
    SCENEGRAPH_SWITCH_CHOICE_STATE = 1 << 2,
    FILEOUTPUT_IMAGE_SETTINGS = 1 << 3,
    FILEOUTPUT_ANIMATION_SETTINGS = 1 << 4,
    FILEOUTPUT_RENDERPASSES_SETTINGS = 1 << 5,
    RAYTRACING_SETTINGS = 1 << 6,
    SWITCH_MATERIAL_CHOICE_STATE = 1 << 7,
};
/// Each metadata bit with its name, in bit order.
extern const std::array<oxPresetValueName, 8> kMetaDataFlags;
/// The metadata flags of the default settings: camera, image, animation, render pass and
/// raytracing settings.
constexpr int kDefaultMetaDataFlags = CAMERA_DATA | FILEOUTPUT_IMAGE_SETTINGS |
                                      FILEOUTPUT_ANIMATION_SETTINGS |
                                      FILEOUTPUT_RENDERPASSES_SETTINGS | RAYTRACING_SETTINGS;

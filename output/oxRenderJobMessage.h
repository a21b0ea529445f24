#pragma once

#include "oxRenderSettingsKeys.h"
#include "oxRenderSettingsPreset.h"

#include <boost/any.hpp>

#include <array>
#include <optional>
#include <string>
#include <variant>

class oxMessage;

// The render job record: what the render queue gets of a job, and what it hands back when a
// job's settings return to the window. Key texts are the queue's contract, misspellings
// included; those the scene keys share come from there.
namespace oxJobKey {
constexpr const char* VariantSetsUsed = oxSceneKey::VariantSetsUsed;
constexpr const char* RenderAnimation = oxSceneKey::RenderAnimation;
constexpr const char* Clip = oxSceneKey::Clip;
constexpr const char* Filename = oxSceneKey::Filename;
constexpr const char* FloatWidth = oxSceneKey::FloatWidth;
constexpr const char* FloatHeight = oxSceneKey::FloatHeight;
constexpr const char* Alpha = oxSceneKey::Alpha;
constexpr const char* TiffHDR = oxSceneKey::TiffHDR;
constexpr const char* ExrHalf = oxSceneKey::ExrHalf;
constexpr const char* MultiLayer = oxSceneKey::MultiLayer;
constexpr const char* SsFactor = oxSceneKey::SsFactor;
constexpr const char* PremultiplyRed = oxSceneKey::PremultiplyRed;
constexpr const char* PremultiplyGreen = oxSceneKey::PremultiplyGreen;
constexpr const char* PremultiplyBlue = oxSceneKey::PremultiplyBlue;
constexpr const char* Ppi = oxSceneKey::Ppi;
constexpr const char* Premultiply = oxSceneKey::Premultiply;
constexpr const char* TonemapHDR = oxSceneKey::TonemapHDR;
constexpr const char* ImageSamples = oxSceneKey::ImageSamples;
constexpr const char* StillQualityMode = oxSceneKey::StillQualityMode;
constexpr const char* RenderTime = oxSceneKey::RenderTime;
constexpr const char* UseTimeLimit = oxSceneKey::UseTimeLimit;
constexpr const char* UseInfiniteRendering = oxSceneKey::UseInfiniteRendering;
constexpr const char* UseRaySplitting = oxSceneKey::UseRaySplitting;
constexpr const char* UseTwoSampleMIS = oxSceneKey::UseTwoSampleMIS;
constexpr const char* UseNVLinkTextureSharing = kUseNVLinkTextureSharingKey;
constexpr const char* UseNVLinkGeometrySharing = kUseNVLinkGeometrySharingKey;
constexpr const char* DenoiseFilterType = oxSceneKey::DenoiseFilterType;
constexpr const char* UseDenoiseFilterFlag = kOldDenoiseFlagKey;
constexpr const char* DenoiserType = oxSceneKey::DenoiserType;
constexpr const char* DenoiserInput = oxSceneKey::DenoiserInput;
constexpr const char* DenoiseAlpha = oxSceneKey::DenoiseAlpha;
constexpr const char* Fps = oxSceneKey::Fps;
constexpr const char* StartFrame = oxSceneKey::StartFrame;
constexpr const char* StopFrame = oxSceneKey::StopFrame;
constexpr const char* StepFrame = oxSceneKey::StepFrame;
constexpr const char* ImageSizePreset = "Image Size Preset String";
constexpr const char* AnimationFormat = oxSceneKey::AnimationFormat;
constexpr const char* UseClipRange = oxSceneKey::UseClipRange;
constexpr const char* TotalRenders = "ImageExport statistics total renders";
constexpr const char* Viewpoints = "ImageExport statistics viewpoints";
constexpr const char* RenderPasses = "ImageExport statistics renderpasses";
constexpr const char* AnimationRenders = "ImageExport statistics animation renders";
constexpr const char* VariantSets = "ImageExport statistics variantsets";
constexpr const char* VariantSetRenders = "ImageExport statistics variantset renders";
constexpr const char* TotalFiles = "ImageExport statistics toal files";
constexpr const char* ClusterHosts = kExportClusterHostsPreference;
} // namespace oxJobKey

/// What a job record takes from the window beside the window's settings: the image size
/// preset it shows, the counts of its render statistics, and the cluster hosts (empty when
/// the cluster is off).
struct oxRenderJobWindowValues {
    std::string imageSizePreset;
    int totalRenders = 0;
    int viewpoints = 0;
    int renderPasses = 0;
    int animationRenders = 0;
    int variantSets = 0;
    int variantSetRenders = 0;
    int totalFiles = 0;
    std::string clusterHosts;
};

/// One attribute of the job record before the pass keys: its key and how its value (typed as
/// the queue expects it) comes from the window's settings and values.
struct oxRenderJobAttribute {
    const char* key;
    boost::any (*value)(const oxRenderSettingsPreset& record,
                        const oxRenderJobWindowValues& window);
};

/// The attributes before the pass keys, in the order they are set. The record goes on with
/// the scene's pass keys ("MovieExport renderpasses", then every pass flag in scene key
/// order) and ends with oxJobKey::ClusterHosts.
extern const std::array<oxRenderJobAttribute, 35> kRenderJobAttributes;

/// The job record (id 0) of the window's settings record and its values.
oxMessage makeRenderJobMessage(const oxRenderSettingsPreset& record,
                               const oxRenderJobWindowValues& window);

/// How a job's value comes back into a record field.
enum class oxJobReadRule {
    Plain,         ///< stored as it is
    PrintSize,     ///< print resolution: the print sizes follow from it
    Supersampling, ///< stored as 3 when above 0, else as 0
    DenoiseType,   ///< the type; 1 reads as 2 unless the old flag decides
    DenoiseFlag,   ///< the old flag: when true the type is 2
};

using oxJobFieldTarget =
    std::variant<bool oxRenderSettingsPreset::*, int oxRenderSettingsPreset::*,
                 unsigned int oxRenderSettingsPreset::*, float oxRenderSettingsPreset::*,
                 std::string oxRenderSettingsPreset::*>;

/// One key a returning job is read by: the field it goes to (ignored by DenoiseFlag) and the
/// rule.
struct oxRenderJobReadKey {
    const char* key;
    oxJobFieldTarget field;
    oxJobReadRule rule;
};

/// The keys a returning job is read by, in reading order; the pass keys follow.
extern const std::array<oxRenderJobReadKey, 36> kRenderJobReadKeys;

/// Reads a returning job into record by kRenderJobReadKeys and the pass keys; keys the job
/// lacks leave their fields as they are. The result holds the job's cluster hosts (possibly
/// none), or nothing when the job doesn't name them.
std::optional<std::string> readRenderJobMessage(const oxMessage& job,
                                                oxRenderSettingsPreset& record);

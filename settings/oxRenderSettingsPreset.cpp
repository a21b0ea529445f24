#include "oxRenderSettingsPreset.h"

#include "oxFile.h"
#include "oxLog.h"
#include "oxOSGWidget.h"
#include "oxSceneServices.h"

namespace {

const int kCurrentFileVersion = 1;
// Process-wide: every successful read of a preset file or text sets it, and saving the
// template file is refused while it is newer than kCurrentFileVersion.
int gLoadedFileVersion = 0;

} // namespace

const std::array<bool oxRenderSettingsPreset::*, kPassFlagCount> kPassFlagFields = {{
#define OX_PRESET_PASS_FIELD_POINTER(enumName, field, ...) &oxRenderSettingsPreset::field,
    OX_RENDER_PASS_FLAGS(OX_PRESET_PASS_FIELD_POINTER)
#undef OX_PRESET_PASS_FIELD_POINTER
}};

const std::array<oxPresetValueName, 10> kPixelFilterTypes = {{
    {0, "Box"},
    {1, "Triangle"},
    {2, "Gaussian"},
    {3, "Mitchell Netravali"},
    {4, "Lanczos"},
    {5, "BSpline"},
    {6, "Catmull Rom"},
    {7, "Sharp Triangle"},
    {8, "Sharp Gaussian"},
    {9, "Sharp BSpline"},
}};

const std::array<oxPresetValueName, 5> kIlluminationModes = {{
    {-1, "Precomputed"},
    {0, "Precomputed + Reflections"},
    {1, "Precomputed + Shadows"},
    {2, "Precomputed + IBL"},
    {3, "Full Global Illumination"},
}};

const std::array<oxPresetValueName, 6> kAdaptiveQualityLevels = {{
    {0, "Preview Quality"},
    {1, "Low Quality"},
    {2, "Medium Quality"},
    {3, "High Quality"},
    {4, "Ultra High Quality"},
    {5, "Highest Quality"},
}};

const std::array<oxPresetValueName, 3> kDenoiseFilters = {{
    {0, "Off"},
    {2, "AI Denoiser stillframe only"},
    {3, "AI Denoiser Always"},
}};

const std::array<oxPresetValueName, 5> kIccProfiles = {{
    {0, "Current Settings"},
    {1, "sRGB IEC 61966-21"},
    {2, "Adobe RGB 98"},
    {3, "Monitor ICC Profile"},
    {4, "Image ICC Profile"},
}};

const std::array<oxPresetValueName, 8> kMetaDataFlags = {{
    {CAMERA_DATA, "CAMERA_DATA"},
    {SCENEGRAPH_VISIBILITY_STATE, "SCENEGRAPH_VISIBILITY_STATE"},
    {SCENEGRAPH_SWITCH_CHOICE_STATE, "SCENEGRAPH_SWITCH_CHOICE_STATE"},
    {FILEOUTPUT_IMAGE_SETTINGS, "FILEOUTPUT_IMAGE_SETTINGS"},
    {FILEOUTPUT_ANIMATION_SETTINGS, "FILEOUTPUT_ANIMATION_SETTINGS"},
    {FILEOUTPUT_RENDERPASSES_SETTINGS, "FILEOUTPUT_RENDERPASSES_SETTINGS"},
    {RAYTRACING_SETTINGS, "RAYTRACING_SETTINGS"},
    {SWITCH_MATERIAL_CHOICE_STATE, "SWITCH_MATERIAL_CHOICE_STATE"},
}};

bool oxRenderSettingsPreset::operator==(const oxRenderSettingsPreset& other) const
{
#define OX_PRESET_FIELD_EQUAL(type, field, constructed)                                            \
    if (!(field == other.field))                                                                   \
        return false;
    OX_PRESET_FIELDS(OX_PRESET_FIELD_EQUAL)
#undef OX_PRESET_FIELD_EQUAL
    for (bool oxRenderSettingsPreset::*flag : kPassFlagFields) {
        if (this->*flag != other.*flag)
            return false;
    }
    return true;
}

std::string oxRenderSettingsPreset::getFileExtension(bool withDot) const
{
    const std::string extension = oxFile::getExtension(filename);
    return withDot ? "." + extension : extension;
}

osg::NodePtr oxRenderSettingsPreset::getViewNode() const
{
    if (view.empty())
        return nullptr;
    const oxUberCameraPool* pool = oxUberCameraPool::the();
    const osg::NodePtr root = pool ? pool->getRoot() : nullptr;
    if (osg::NodePtr node = oxScenegraph::findUniquePath(root, view))
        return node;
    // A view stored by name alone, or whose path changed, is still found when its name is
    // unique among the cameras.
    const std::string leaf = oxScenegraph::getUniquePathLeaf(view);
    const std::vector<osg::NodePtr> matches = oxNodeUtils::findNodes(root, leaf);
    if (matches.empty()) {
        oxLog::error("oxRenderSettingsPreset: Unable to find view '%s'.", leaf.c_str());
        return nullptr;
    }
    if (matches.size() > 1) {
        oxLog::error("oxRenderSettingsPreset: Ambiguous view name '%s'. Using current view.",
                     leaf.c_str());
        return nullptr;
    }
    return matches.front();
}

bool oxRenderSettingsPreset::isViewMissing() const { return getViewNode() == nullptr; }

bool oxRenderSettingsPreset::isCameraTrackView() const
{
    return oxNodeUtils::isCameraTrack(getViewNode());
}

bool oxRenderSettingsPreset::isStillCameraTrackView() const
{
    return isCameraTrackView() && !renderAnimation;
}

bool oxRenderSettingsPreset::usesVariantSets() const
{
    return variantSetsUsed && !isCameraTrackView();
}

bool oxRenderSettingsPreset::usesVariantSetViewpoints() const
{
    return usesVariantSets() && variantSetViewpointsUsed;
}

oxRenderSettingsPreset::AnimationRange oxRenderSettingsPreset::getAnimationRange() const
{
    int first = startFrame;
    int last = stopFrame;
    unsigned int animationId = 0;
    oxAnimManager* animations = oxAnimManager::the();
    if (animationType == 0 && !clip.empty()) {
        if (osg::NodePtr clipNode = animations->findClip(clip)) {
            animationId = clipNode->getId();
            if (useClipRange)
                animations->getFrameBounds(clipNode, first, last);
        }
    }
    // The view is looked up once, so that a missing view is reported once.
    const osg::NodePtr viewNode = getViewNode();
    if (oxNodeUtils::isCameraTrack(viewNode)) {
        if (osg::NodePtr block = animations->getCameraTrackBlock(viewNode)) {
            animationId = block->getId();
            animations->getFrameBounds(block, first, last);
        }
    }
    AnimationRange range;
    range.firstFrame = static_cast<unsigned int>(first);
    range.lastFrame = static_cast<unsigned int>(last);
    range.step = static_cast<unsigned int>(renderAnimation && exportType == 1 ? 1 : stepFrame);
    range.animationId = animationId;
    return range;
}

bool oxRenderSettingsPreset::isMovieExport() const { return exportType == 1 && renderAnimation; }

int oxRenderSettingsPreset::getPixelWidth() const { return static_cast<int>(pixel_width + 0.5f); }
int oxRenderSettingsPreset::getPixelHeight() const { return static_cast<int>(pixel_height + 0.5f); }
int oxRenderSettingsPreset::getPixelsPerInch() const { return static_cast<int>(ppi); }

bool oxRenderSettingsPreset::getPassFlag(PassFlag flag) const
{
    return this->*kPassFlagFields[static_cast<size_t>(flag)];
}

bool& oxRenderSettingsPreset::passFlag(PassFlag flag)
{
    return this->*kPassFlagFields[static_cast<size_t>(flag)];
}

bool oxRenderSettingsPreset::hasSelectedRenderPass() const
{
    if (!renderpasses || !oxOSGWidget::getRaytracing())
        return false;
    // The specular light flag selects no pass the host renders (it has no pass id).
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        if (info.hasPassId() && getPassFlag(info.flag))
            return true;
    }
    return false;
}

std::vector<bool> oxRenderSettingsPreset::getRenderPassFlags() const
{
    if (!hasSelectedRenderPass())
        return {true};
    std::vector<bool> flags(kPassCount, false);
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        for (unsigned i = 0; i < info.idCount; ++i)
            flags[info.firstId + i] = getPassFlag(info.flag);
    }
    return flags;
}

std::vector<unsigned int> oxRenderSettingsPreset::getRenderPassIds() const
{
    std::vector<unsigned int> ids;
    if (!renderpasses || !oxOSGWidget::getRaytracing())
        return ids;
    const std::vector<bool> flags = getRenderPassFlags();
    for (unsigned int id = 0; id < flags.size(); ++id) {
        if (flags[id])
            ids.push_back(id);
    }
    return ids;
}

size_t oxRenderSettingsPreset::getRenderPassCount() const { return getRenderPassIds().size(); }

int oxRenderSettingsPreset::getCurrentFileVersion() { return kCurrentFileVersion; }
int oxRenderSettingsPreset::getLoadedFileVersion() { return gLoadedFileVersion; }
void oxRenderSettingsPreset::setLoadedFileVersion(int version) { gLoadedFileVersion = version; }

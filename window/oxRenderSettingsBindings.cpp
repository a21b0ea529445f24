// The window's setting bindings: each widget writes its setting into the store where the setting
// lives (the host's services or the current record), and updateGUI brings every widget back
// from those stores.

#include "oxRenderSettings.h"

#include "QOXColorManipulator.h"
#include "QOXMultiLevelComboBox.h"
#include "QOXSlider.h"
#include "QOXVec2Control.h"
#include "QOXWheelPrec.h"
#include "oxController.h"
#include "oxFile.h"
#include "oxImageMetaData.h"
#include "oxLog.h"
#include "oxMaterialInterface.h"
#include "oxMessage.h"
#include "oxOSGWidget.h"
#include "oxPixelfilterFactory.h"
#include "oxPreferencesService.h"
#include "oxRaytracer.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"
#include "oxScene.h"
#include "oxSceneServices.h"
#include "oxTBBInit.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCoreApplication>
#include <QSignalBlocker>
#include <QTreeWidget>

#include <algorithm>
#include <array>

namespace {

// The quality presets' sample counts, by _quality_preset index; the entry after them is
// "Custom".
constexpr std::array<int, 4> kQualityPresetSamples = {{32, 128, 512, 2048}};
// The illumination mode combo boxes list the modes from -1 up: the index of mode m is the
// entry m + 1.
constexpr std::array<int, 5> kIlluminationModeIndex = {{0, 1, 2, 3, 4}};
constexpr int kCostVisualizationRenderer = 5;
// Metadata: the four single flags and the raytracing settings group (image, animation, passes,
// raytracing).
constexpr int kEmbedRenderSettingsMask = 120;

// Writes to a widget without letting it signal back into a slot.
template <typename W, typename F>
void quiet(W* widget, F&& write)
{
    widget->blockSignals(true);
    write(widget);
    widget->blockSignals(false);
}

void quietChecked(QAbstractButton* button, bool on)
{
    quiet(button, [on](QAbstractButton* b) { b->setChecked(on); });
}

void quietEnabled(QWidget* widget, bool on)
{
    quiet(widget, [on](QWidget* w) { w->setEnabled(on); });
}

void quietVisible(QWidget* widget, bool on)
{
    quiet(widget, [on](QWidget* w) { w->setVisible(on); });
}

void quietIndex(QComboBox* box, int index)
{
    quiet(box, [index](QComboBox* b) { b->setCurrentIndex(index); });
}

void quietValue(QSpinBox* box, int value)
{
    quiet(box, [value](QSpinBox* b) { b->setValue(value); });
}

// A slider that can't hold the value is widened to it; sliders are never narrowed.
void quietSlider(QSlider* slider, int value, bool widen = true)
{
    quiet(slider, [value, widen](QSlider* s) {
        if (widen && value > s->maximum())
            s->setMaximum(value);
        s->setValue(value);
    });
}

int illuminationModeIndex(int mode)
{
    const int entry = mode + 1;
    if (entry < 0 || entry >= int(kIlluminationModeIndex.size()))
        return 0;
    return kIlluminationModeIndex[size_t(entry)];
}

int currentData(QComboBox* box, int index)
{
    const QVariant data = box->itemData(index);
    return data.isValid() ? data.toInt() : index;
}

unsigned int replaceLegacyDenoiser(unsigned int filter)
{
    if (filter != kLegacyDenoiseFilter)
        return filter;
    oxLog::info("%s", kLegacyDenoiserMessage);
    return kDenoiseFilterStillFrames;
}

// Hours, minutes and seconds to seconds: only the minutes' carry goes into the hours, the
// seconds keep their full value.
unsigned int renderTimeSum(int hours, int minutes, int seconds)
{
    const unsigned int h = unsigned(std::max(0, hours));
    const unsigned int m = unsigned(std::max(0, minutes));
    const unsigned int s = unsigned(std::max(0, seconds));
    const unsigned int carry = (s / 60 + m) / 60;
    return (h + carry) * 3600 + s + (m - carry * 60) * 60;
}

// Host callbacks reach the window through its singleton.
void updateCB(oxMessage&)
{
    if (oxRenderSettings* window = oxRenderSettings::instance())
        window->refreshHostParameters();
}

void clipListCB(oxMessage&)
{
    if (oxRenderSettings* window = oxRenderSettings::instance())
        window->updateClipList();
}

void renderRegionChangedCB(oxMessage&)
{
    if (oxRenderSettings* window = oxRenderSettings::instance())
        window->adoptViewportRegion();
}

void updateRenderModeButtonCB(oxMessage&)
{
    if (oxRenderSettings* window = oxRenderSettings::instance())
        window->updateRenderStatistics();
}

struct oxWindowCallback {
    const char* name;
    oxController::Callback function;
};

const std::array<oxWindowCallback, 6> kWindowCallbacks = {{
    {"oxRenderSettings::update", &updateCB},
    {"blockCreated", &clipListCB},
    {"clipCreated", &clipListCB},
    {"deletedAnimationObject", &clipListCB},
    {"renderRegionChanged", &renderRegionChangedCB},
    {"updateRenderModeButton", &updateRenderModeButtonCB},
}};

// Under which XMP property the image metadata writer stores each settings key of the record's
// message form.
struct oxXmpProperty {
    const char* xmp;
    const char* messageKey;
};

const std::array<oxXmpProperty, 26> kXmpProperties = {{
    {"pixelWidth", "ImageExport floatwidth"},
    {"pixelHeight", "ImageExport floatheight"},
    {"ppi", "MovieExport ppi"},
    {"useRenderRegion", "ImageExport use region render"},
    {"renderRegionStartX", "ImageExport region start x"},
    {"renderRegionStartY", "ImageExport region start y"},
    {"renderRegionEndX", "ImageExport region end x"},
    {"renderRegionEndY", "ImageExport region end y"},
    {"ssFactor", "MovieExport ssfactor"},
    {"tonemapHDR", "MovieExport tonemap hdr"},
    {"exportAlphaChannel", "MovieExport alpha"},
    {"premultiplyAlpha", "MovieExport Premultiply"},
    {"backgroundColorR", "MovieExport Premultiply Red"},
    {"backgroundColorG", "MovieExport Premultiply Green"},
    {"backgroundColorB", "MovieExport Premultiply Blue"},
    {"iccProfileID", "MovieExport ICC Profile"},
    {"metaDataFlags", "ImageExport Embed MetaData Flags"},
    {"animationEnabled", "MovieExport Render Animation"},
    {"animationType", "MovieExport Animation Type"},
    {"animationExportType", "MovieExport Animation Format"},
    {"animationClip", "MovieExport Clip"},
    {"useClipRange", "MovieExport Use Clip Range"},
    {"startFrame", "MovieExport start frame"},
    {"stopFrame", "MovieExport stop frame"},
    {"stepFrame", "MovieExport step frame"},
    {"animationFps", "MovieExport fps"},
}};

} // namespace

void oxRenderSettings::connectBindings()
{
    using Self = oxRenderSettings;
    const auto activated = QOverload<int>::of(&QComboBox::activated);
    const auto spinChanged = QOverload<int>::of(&QSpinBox::valueChanged);
    const auto doubleSpinChanged = QOverload<double>::of(&QDoubleSpinBox::valueChanged);

    // Combo boxes whose slot takes the item's user data rather than its index.
    connect(_filtertype, activated, this,
            [this](int index) { changedImageFilter(currentData(_filtertype, index)); });
    connect(_interactiveQualityMode, activated, this, [this](int index) {
        changedInteractiveQualityMode(currentData(_interactiveQualityMode, index));
    });
    connect(_stillFrameQualityMode, activated, this, [this](int index) {
        changedStillFrameQualityMode(currentData(_stillFrameQualityMode, index));
    });
    connect(_render_mode, activated, this,
            [this](int index) { changedRenderMode(currentData(_render_mode, index)); });
    connect(_denoiser_filter, activated, this,
            [this](int index) { changedDenoiseFilter(currentData(_denoiser_filter, index)); });

    connect(_aa_threshold_quality, activated, this, &Self::changedAAThresholdQuality);
    connect(_filtersize, &QOXSlider::valueChanged, this, &Self::changedFilterWidth);
    connect(_filtersize, &QOXSlider::valueChanged, this, &Self::changedFilterHeight);

    // Slider and spin box pairs: both write the same setting.
    struct Pair {
        QSlider* slider;
        QSpinBox* spinBox;
        void (Self::*slot)(int);
    };
    const Pair pairs[] = {
        {_interactive_depth_slider, _interactive_depth_spinbox,
         &Self::changedInteractiveReflectionDepth},
        {_stillframe_depth_slider, _stillframe_depth_spinbox,
         &Self::changedStillFrameReflectionDepth},
        {_interactiveQuality, _interactiveQualitySpinbox, &Self::changedInteractiveQuality},
        {_stillFrameQuality, _stillFrameQualitySpinbox, &Self::changedStillFrameQuality},
        {_environmentInteractiveQuality, _environmentInteractiveQualitySpinbox,
         &Self::changedEnvironmentInteractiveQuality},
        {_environmentStillFrameQuality, _environmentStillFrameQualitySpinbox,
         &Self::changedEnvironmentStillQuality},
        {_photonDispersionQuality, _photonDispersionQualitySpinbox,
         &Self::changedPhotonDispersionQuality},
        {_photon_trace_depth_slider, _photon_trace_depth_spinbox, &Self::changedPhotonTraceDepth},
        {_interactive_finalgather_quality_slider, _interactive_finalgather_quality_spinbox,
         &Self::changedInteractiveFinalGatherQuality},
        {_finalgather_quality_slider, _finalgather_quality_spinbox,
         &Self::changedStillFrameFinalGatherQuality},
        {_image_samples_slider, _image_samples_spinbox, &Self::changedImageSamples},
    };
    for (const Pair& pair : pairs) {
        connect(pair.slider, &QSlider::valueChanged, this, pair.slot);
        connect(pair.spinBox, spinChanged, this, pair.slot);
    }

    struct Toggle {
        QAbstractButton* button;
        void (Self::*slot)(bool);
    };
    const Toggle toggles[] = {
        {_clamping_group_box, &Self::changedClamping},
        {_use_automatic_photon_radius, &Self::changedPhotonUseAutomaticRadius},
        {_use_final_gather_for_glossy, &Self::changedUseFinalGatherForGlossy},
        {_freeze_update, &Self::changedPhotonMapFreezeMode},
        {_allowOverrideIBLQuality, &Self::changedOverrideIBLQuality},
        {_allowOverrideIlluminationMode, &Self::changedOverrideIlluminationMode},
        {_allowOverrideReflectionQuality, &Self::changedOverrideReflectionQuality},
        {_allowOverrideTraceDepth, &Self::changedOverrideTraceDepth},
        {_enable_nurbs_raytracing, &Self::changedNURBSMode},
        {_enable_cost_visualization, &Self::changedCostVisualizationMode},
        {_optimize_lights, &Self::changedLightOptimizationMode},
        {_use_ray_splitting, &Self::changedUseRaySplitting},
        {_denoise_alpha, &Self::changedDenoiseAlpha},
        {_use_two_sample_mis, &Self::changedUseTwoSampleImportanceSampling},
        {_enable_spectral_raytracing, &Self::changedSpectralRaytracing},
        {_dynToneMap, &Self::changedDynamicTonemapping},
        {_enable_dithering, &Self::changedDithering},
        {_histGroupBox, &Self::changedHistogramEnabled},
        {_histLogScale, &Self::changedHistogramLogScale},
        {_histRed, &Self::changedHistogramRedEnabled},
        {_histGreen, &Self::changedHistogramGreenEnabled},
        {_histBlue, &Self::changedHistogramBlueEnabled},
        {_histLum, &Self::changedHistogramLumEnabled},
        {_timeStamp, &Self::changedUseTimestamp},
        {_renderAnimation, &Self::changedRenderAnimation},
        {_use_clip_range, &Self::changedUseClipRange},
        {_tonemap_hdr, &Self::changedTonemapHDR},
        {_alpha, &Self::changedAlpha},
        {_tiff_hdr, &Self::changedTiffHDR},
        {_exr_half, &Self::changedExrHalf},
        {_premultiply, &Self::changedPremultiply},
        {_use_multi_layer, &Self::changedUseMultiLayer},
        {_snapshot_frame, &Self::changedSnapshotFrame},
        {_snapshot_rule_of_thirds, &Self::changedSnapshotRuleOfThirds},
        {_snapshot_inner_frame, &Self::changedSnapshotInnerFrameEnable},
        {_snapshot_render_region_frame, &Self::changedSnapshotRenderRegionFrameEnabled},
    };
    for (const Toggle& toggle : toggles)
        connect(toggle.button, &QAbstractButton::toggled, this, toggle.slot);
    // _export_renderpasses is a checkable group box, not a button.
    connect(_export_renderpasses, &QGroupBox::toggled, this, &Self::changedExportRenderpasses);

    struct Choice {
        QComboBox* box;
        void (Self::*slot)(int);
    };
    const Choice choices[] = {
        {_photon_mode, &Self::changedPhotonMode},
        {_photon_refresh_mode, &Self::changedPhotonMapRefreshMode},
        {_spectral_illuminant, &Self::changedIlluminant},
        {_denoiser_type, &Self::changedDenoiserType},
        {_denoiser_input, &Self::changedDenoiserInput},
        {_display_colorspace, &Self::changedDisplayColorspace},
        {_quality_preset, &Self::changedQualityPreset},
        {_animType, &Self::changedAnimationType},
        {_animFormatCB, &Self::changedAnimationFormat},
        {_ssfactor, &Self::changedSSFactor},
        {_icc_profile, &Self::changedICCProfile},
        {_inner_type, &Self::changedInnerFrame},
    };
    for (const Choice& choice : choices)
        connect(choice.box, activated, this, choice.slot);
    connect(_animationCB, &QComboBox::textActivated, this, &Self::changedClip);

    struct Number {
        QSpinBox* box;
        void (Self::*slot)(int);
    };
    const Number numbers[] = {
        {_interactive_photon_count, &Self::changedInteractivePhotonCount},
        {_stillframe_photon_count, &Self::changedStillFramePhotonCount},
        {_samples_threshold, &Self::changedSamplesThreshold},
        {_raytracing_cores_limit, &Self::changedNumCoresLimit},
        {_time_hours, &Self::changedRenderTime},
        {_time_minutes, &Self::changedRenderTime},
        {_time_seconds, &Self::changedRenderTime},
        {_start, &Self::changedStart},
        {_stop, &Self::changedStop},
        {_frame_step, &Self::changedFrameStep},
        {_fps, &Self::changedFPS},
        {_left, &Self::changedInnerFrame},
        {_right, &Self::changedInnerFrame},
        {_bottom, &Self::changedInnerFrame},
        {_top, &Self::changedInnerFrame},
    };
    for (const Number& number : numbers)
        connect(number.box, spinChanged, this, number.slot);

    connect(_reflection_clamp_value, doubleSpinChanged, this, &Self::changedReflectionClampValue);
    connect(_final_gather_radius, &QOXWheelPrec::valueChanged, this,
            &Self::changedFinalGatherRadius);
    connect(_indirect_radius, &QOXWheelPrec::valueChanged, this,
            &Self::changedIndirectPhotonRadius);
    connect(_gammaSlider, &QOXWheelPrec::valueChanged, this, &Self::changedGamma);
    connect(_displayLuminanceSlider, &QOXWheelPrec::valueChanged, this,
            &Self::changedDisplayLuminance);
    connect(_sim2LuminanceMappingSlider, &QOXWheelPrec::valueChanged, this,
            &Self::changedSim2LuminanceMapping);

    connect(_use_infinite_rendering, &QCheckBox::stateChanged, this,
            &Self::changedUseInfiniteRendering);
    connect(_time_or_samples_group, &QButtonGroup::idPressed, this,
            &Self::changedRenderingFinishMode);
    connect(_quickFilename, &QLineEdit::editingFinished, this, &Self::changedFilename);
    connect(_alpha_color, &QOXColorManipulator::colorChanged, this, &Self::changedBackgroundColor);

    // The pass check boxes, from the pass table; a twin follows its partner through the
    // form's own link, so only the first box of a flag is connected.
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        if (!info.widget)
            continue;
        auto* box = findChild<QAbstractButton*>(QLatin1String(info.widget));
        if (!box) {
            oxLog::error("oxRenderSettings: the form has no pass check box '%s'.", info.widget);
            continue;
        }
        const PassFlag flag = info.flag;
        connect(box, &QAbstractButton::toggled, this,
                [this, flag](bool on) { changedExportPass(flag, on); });
    }

    // The metadata slots stay unconnected where the writer can't embed metadata; the window
    // then hides the section.
    const Toggle embeds[] = {
        {_embed_camera, &Self::changedEmbedCamera},
        {_embed_node_visibilities, &Self::changedEmbedNodeVisibilities},
        {_embed_switch_node_choices, &Self::changedEmbedSwitchNodeChoices},
        {_embed_switch_material_choices, &Self::changedEmbedSwitchMaterialChoices},
        {_embed_render_settings, &Self::changedEmbedRenderSettings},
        {_embed_all, &Self::changedEmbedAll},
    };
    if (oxImageMetaData::isXMPSupported()) {
        for (const Toggle& toggle : embeds)
            connect(toggle.button, &QAbstractButton::toggled, this, toggle.slot);
        auto& map = oxImageMetaData::getRenderSettingsXMPToMsgMap();
        if (map.empty()) {
            for (const oxXmpProperty& property : kXmpProperties)
                map[property.xmp] = property.messageKey;
        }
    } else {
        _metaDataCF->hide();
    }

    connect(&variantGuiTimer, &QTimer::timeout, this, &Self::refreshVariantSetGui);
    connect(&statisticsTimer, &QTimer::timeout, this, &Self::refreshRenderStatistics);
    connect(&variantListTimer, &QTimer::timeout, this, &Self::readBackVariantSetTree);
    if (oxPreferencesService* preferences = oxPreferencesService::the())
        connect(preferences, &oxPreferencesService::preferencesChanged, this,
                &Self::updateRenderStatistics);

    for (const oxWindowCallback& callback : kWindowCallbacks)
        oxController::addCB(callback.name, callback.function);

    connectImageSize();
}

void oxRenderSettings::disconnectBindings()
{
    for (const oxWindowCallback& callback : kWindowCallbacks)
        oxController::subCB(callback.name, callback.function);
}

// ---------------------------------------------------------------------------------------------
// Refresh patterns

void oxRenderSettings::refreshLive()
{
    updateGUI();
    oxController::updateRender();
    oxController::setModified(true);
}

// ---------------------------------------------------------------------------------------------
// Live raytracing settings: host setter, updateGUI, render update, modified

void oxRenderSettings::changedAAThresholdQuality(int index)
{
    oxRenderParameter::setAdaptiveAAThresholdQuality(index);
    refreshLive();
}

void oxRenderSettings::changedImageFilter(int type)
{
    oxPixelfilterFactory::setPixelFilterType(type);
    // The raytracer renders with the filter it took over last, so hand it the new one before
    // the window reads it back.
    if (oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils())
        utils->updatePixelFilter();
    refreshLive();
}

void oxRenderSettings::changedFilterWidth(double width)
{
    oxPixelfilterFactory::setPixelFilterWidth(float(width));
    if (oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils())
        utils->updatePixelFilter();
    refreshLive();
}

void oxRenderSettings::changedFilterHeight(double height)
{
    oxPixelfilterFactory::setPixelFilterHeight(float(height));
    if (oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils())
        utils->updatePixelFilter();
    refreshLive();
}

#define OX_LIVE_SLOT(slot, type, setter)                                                           \
    void oxRenderSettings::slot(type value)                                                        \
    {                                                                                              \
        oxRenderParameter::setter(value);                                                          \
        refreshLive();                                                                             \
    }
OX_LIVE_SLOT(changedInteractiveReflectionDepth, int, setInteractiveReflectionDepth)
OX_LIVE_SLOT(changedStillFrameReflectionDepth, int, setStillFrameReflectionDepth)
OX_LIVE_SLOT(changedClamping, bool, setClamping)
OX_LIVE_SLOT(changedInteractiveQualityMode, int, setInteractiveQualityMode)
OX_LIVE_SLOT(changedInteractiveQuality, int, setInteractiveQuality)
OX_LIVE_SLOT(changedRenderMode, int, setStillFrameQualityMode)
OX_LIVE_SLOT(changedStillFrameQuality, int, setStillFrameQuality)
OX_LIVE_SLOT(changedEnvironmentInteractiveQuality, int, setEnvironmentInteractiveQuality)
OX_LIVE_SLOT(changedEnvironmentStillQuality, int, setEnvironmentStillQuality)
OX_LIVE_SLOT(changedPhotonDispersionQuality, int, setPhotonDispersionQuality)
OX_LIVE_SLOT(changedRenderer, int, setRenderer)
OX_LIVE_SLOT(changedPhotonMode, int, setPhotonMode)
OX_LIVE_SLOT(changedPhotonTraceDepth, int, setPhotonTraceDepth)
OX_LIVE_SLOT(changedPhotonNoiseReductionSteps, int, setPhotonNoiseReductionSteps)
OX_LIVE_SLOT(changedPhotonUseAutomaticRadius, bool, setPhotonUseAutomaticRadius)
OX_LIVE_SLOT(changedPhotonLookupCount, int, setPhotonLookupCount)
OX_LIVE_SLOT(changedUseFinalGatherForGlossy, bool, setUseFinalGatherForGlossy)
OX_LIVE_SLOT(changedInteractivePhotonCount, int, setInteractivePhotonCount)
OX_LIVE_SLOT(changedStillFramePhotonCount, int, setStillFramePhotonCount)
OX_LIVE_SLOT(changedInteractiveFinalGatherQuality, int, setInteractiveFinalGatherQuality)
OX_LIVE_SLOT(changedStillFrameFinalGatherQuality, int, setStillFrameFinalGatherQuality)
OX_LIVE_SLOT(changedPhotonMapRefreshMode, int, setPhotonMapRefreshMode)
#undef OX_LIVE_SLOT

void oxRenderSettings::changedReflectionClampValue(double value)
{
    currentPreset.reflectionClampValue = float(value);
    oxRenderParameter::setReflectionClampValue(float(value));
    refreshLive();
}

void oxRenderSettings::changedStillFrameQualityMode(int mode)
{
    currentPreset.stillQualityMode = mode;
    oxRenderParameter::setStillFrameQualityMode(mode);
    refreshLive();
}

void oxRenderSettings::changedFinalGatherRadius(double radius)
{
    // The widget shows four times the host's radius.
    oxRenderParameter::setFinalGatherRadius(float(radius * 0.25));
    refreshLive();
}

void oxRenderSettings::changedIndirectPhotonRadius(double radius)
{
    oxRenderParameter::setIndirectPhotonRadius(float(radius));
    refreshLive();
}

void oxRenderSettings::changedPhotonMapFreezeMode(bool on)
{
    oxRenderParameter::setPhotonMapFreezeMode(on ? 1 : 0);
    refreshLive();
}

void oxRenderSettings::changedIlluminant(int illuminant)
{
    currentPreset.illuminant = illuminant;
    oxRenderParameter::setIlluminant(illuminant);
    refreshLive();
}

// ---------------------------------------------------------------------------------------------
// Host setter and updateGUI

void oxRenderSettings::changedUseInfiniteRendering(int on)
{
    currentPreset.useInfiniteRendering = on != 0;
    oxRenderParameter::setUseInfiniteRendering(on != 0);
    updateGUI();
}

void oxRenderSettings::changedRenderingFinishMode(int mode)
{
    // Button ids: 0 render time, 1 image samples.
    if (mode != 0 && mode != 1)
        return;
    currentPreset.useTimeLimit = !mode;
    oxRenderParameter::setUseRenderTimeLimit(!mode);
    updateGUI();
}

void oxRenderSettings::changedSamplesThreshold(int threshold)
{
    oxOSGWidget::setSamplesThreshold(threshold);
    currentPreset.samplesThreshold = threshold;
    updateGUI();
}

// The check boxes say "allow", the host's flags say "ignore".
#define OX_OVERRIDE_SLOT(name)                                                                     \
    void oxRenderSettings::changedOverride##name(bool on)                                          \
    {                                                                                              \
        oxRenderParameter::setIgnoreOverride##name(!on);                                           \
        updateGUI();                                                                               \
    }
OX_OVERRIDE_SLOT(IBLQuality)
OX_OVERRIDE_SLOT(IlluminationMode)
OX_OVERRIDE_SLOT(ReflectionQuality)
OX_OVERRIDE_SLOT(TraceDepth)
#undef OX_OVERRIDE_SLOT

void oxRenderSettings::changedNURBSMode(bool on)
{
    if (oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils())
        utils->setNurbsMode(on ? 1 : 0);
    updateGUI();
}

void oxRenderSettings::changedCostVisualizationMode(bool on)
{
    oxRenderParameter::setRenderer(on ? kCostVisualizationRenderer : 0);
    updateGUI();
}

void oxRenderSettings::changedLightOptimizationMode(bool on)
{
    oxRenderParameter::setLightOptimizationMode(on);
    updateGUI();
}

void oxRenderSettings::changedNumCoresLimit(int cores)
{
    oxTBBInit::the().setCoreUsageLimit(cores < 1 ? oxTBBInit::noLimit : cores);
    updateGUI();
}

void oxRenderSettings::changedUseRaySplitting(bool on)
{
    currentPreset.useRaySplitting = on;
    oxRenderParameter::setUseRaySplitting(on);
    updateGUI();
}

void oxRenderSettings::changedDenoiserType(int type)
{
    currentPreset.denoiserType = unsigned(type);
    oxRenderParameter::setDenoiserType(unsigned(type));
    updateGUI();
}

void oxRenderSettings::changedDenoiserInput(int input)
{
    currentPreset.denoiserInput = input;
    oxRenderParameter::setDenoiserInput(input);
    updateGUI();
}

void oxRenderSettings::changedDenoiseAlpha(bool on)
{
    currentPreset.denoiseAlpha = on;
    oxRenderParameter::setDenoiseAlpha(on);
    updateGUI();
}

void oxRenderSettings::changedUseTwoSampleImportanceSampling(bool on)
{
    currentPreset.useTwoSampleMIS = on;
    if (oxRaytracingManager::getRaytracingUtils())
        oxRenderParameter::setUseTwoSampleImportanceSampling(on);
    updateGUI();
}

// GPU memory sharing has no store in this host's raytracer: there is nothing to set.
void oxRenderSettings::changedUseTextureSharing(bool) { updateGUI(); }

void oxRenderSettings::changedUseGeometrySharing(bool) { updateGUI(); }

void oxRenderSettings::changedDenoiseFilter(int filter)
{
    const unsigned int value = replaceLegacyDenoiser(unsigned(std::max(0, filter)));
    currentPreset.denoiseFilterType = value;
    oxRenderParameter::setDenoiseFilter(value);
    updateGUI();
}

void oxRenderSettings::changedEnableDenoise(bool on)
{
    const unsigned int value = on ? kDenoiseFilterStillFrames : 0u;
    currentPreset.denoiseFilterType = value;
    oxRenderParameter::setDenoiseFilter(value);
    updateGUI();
}

void oxRenderSettings::changedDisplayColorspace(int index)
{
    oxOSGWidget::setDisplayColorspace(index);
    updateGUI();
}

void oxRenderSettings::changedUseHighQualityTextureFiltering(bool on)
{
    oxRenderParameter::setUseHighQualityTextureFiltering(on);
    updateGUI();
}

void oxRenderSettings::changedStillFrameSupersampling(int factor)
{
    oxRenderParameter::setStillFrameSupersampling(factor);
    updateGUI();
}

void oxRenderSettings::changedSpectralRaytracing(bool on)
{
    if (oxRaytracingManager::isSpectralRaytracingEnable() != on) {
        // The switch takes long: let the check box paint first.
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        oxRenderParameter::setSpectralRaytracing(on);
        const oxRenderSettingsPresetSPtr captured = getCurrentRenderSettings();
        oxOSGWidget::setRaytracingMode(on, oxRaytracingManager::isGpuRaytracingEnable());
        // The mode change may reset the switch.
        oxRenderParameter::setSpectralRaytracing(on);
        if (captured) {
            // The switch may have changed other parameters; bring the captured values back,
            // with one refresh at the end.
            guiUpdateLock = true;
            applyPreset(*captured, oxRenderSettingsPreset::ApplyPresetMode(
                                       oxRenderSettingsPreset::KeepSpectral |
                                       oxRenderSettingsPreset::ApplyBit4));
            guiUpdateLock = false;
            updateGUI();
        }
    }
    updateGUI();
}

// ---------------------------------------------------------------------------------------------
// Host setter and modified

void oxRenderSettings::changedImageSamples(int samples)
{
    oxRenderParameter::setImageSamples(samples);
    oxOSGWidget::setImageSamples(samples);
    oxController::setModified(true);
    currentPreset.imageSamples = samples;
    updateGUI();
}

void oxRenderSettings::changedQualityPreset(int index)
{
    if (index >= 0 && index < int(kQualityPresetSamples.size())) {
        const int samples = kQualityPresetSamples[size_t(index)];
        oxRenderParameter::setImageSamples(samples);
        oxOSGWidget::setImageSamples(samples);
    }
    oxController::setModified(true);
    updateGUI();
}

void oxRenderSettings::changedRenderTime(int)
{
    const unsigned int total =
        renderTimeSum(_time_hours->value(), _time_minutes->value(), _time_seconds->value());
    currentPreset.renderTime = total;
    oxRenderParameter::setRenderTimeInSeconds(total);
    oxController::setModified(true);
    updateGUI();
    updateGUI();
}

void oxRenderSettings::changedRenderTime(int hours, int minutes, int seconds)
{
    const unsigned int total = renderTimeSum(hours, minutes, seconds);
    currentPreset.renderTime = total;
    oxRenderParameter::setRenderTimeInSeconds(total);
    oxController::setModified(true);
    updateGUI();
}

void oxRenderSettings::changedGamma(double gamma)
{
    const float g = float(gamma);
    oxOSGWidget::setDisplayGamma({{g, g, g}});
    oxController::setModified(true);
}

void oxRenderSettings::changedDisplayLuminance(double value)
{
    if (!oxRenderParameter::getPBParameters())
        return;
    currentPreset.displayLuminance = float(value);
    oxOSGWidget::setDisplayLuminance(float(value));
    oxRenderParameter::setDisplayLuminance(float(value));
    oxController::setModified(true);
}

void oxRenderSettings::changedSim2LuminanceMapping(double value)
{
    if (!oxRenderParameter::getPBParameters())
        return;
    currentPreset.sim2LuminanceMapping = float(value);
    oxRenderParameter::setSim2LuminanceMapping(float(value));
    oxOSGWidget::setSim2LuminanceMapping(float(value));
    oxController::setModified(true);
}

void oxRenderSettings::sendPostprocessingFlags(QAbstractButton* changed, bool on)
{
    // The host takes all ten flags at once; the one that just changed may not show its new
    // state yet when the slot is called from a script.
    auto flag = [changed, on](QAbstractButton* box) {
        return box == changed ? on : box->isChecked();
    };
    oxOSGWidget::setPostprocessingFlags(flag(_enable_dithering), flag(_dynToneMap), true, true,
                                        flag(_histGroupBox), flag(_histLogScale), flag(_histRed),
                                        flag(_histGreen), flag(_histBlue), flag(_histLum));
}

void oxRenderSettings::changedDynamicTonemapping(bool on)
{
    sendPostprocessingFlags(_dynToneMap, on);
    oxController::setModified(true);
}

void oxRenderSettings::changedDithering(bool on)
{
    sendPostprocessingFlags(_enable_dithering, on);
    oxController::setModified(true);
}

void oxRenderSettings::changedHistogramEnabled(bool on)
{
    sendPostprocessingFlags(_histGroupBox, on);
    oxController::setModified(true);
}

// The histogram's display options are no change of the scene.
void oxRenderSettings::changedHistogramLogScale(bool on)
{
    sendPostprocessingFlags(_histLogScale, on);
}

void oxRenderSettings::changedHistogramRedEnabled(bool on)
{
    sendPostprocessingFlags(_histRed, on);
}

void oxRenderSettings::changedHistogramGreenEnabled(bool on)
{
    sendPostprocessingFlags(_histGreen, on);
}

void oxRenderSettings::changedHistogramBlueEnabled(bool on)
{
    sendPostprocessingFlags(_histBlue, on);
}

void oxRenderSettings::changedHistogramLumEnabled(bool on)
{
    sendPostprocessingFlags(_histLum, on);
}

// ---------------------------------------------------------------------------------------------
// Output settings in the current record

void oxRenderSettings::changedUseTimestamp(bool on)
{
    currentPreset.timeStamp = on;
    updateGUI();
}

void oxRenderSettings::changedFilename()
{
    currentPreset.filename = _quickFilename->text().toUtf8().toStdString();
    updateGUI();
}

void oxRenderSettings::changedRenderAnimation(bool on)
{
    currentPreset.renderAnimation = on;
    updateGUI();
}

void oxRenderSettings::changedUseClipRange(bool on)
{
    currentPreset.useClipRange = on;
    updateGUI();
}

void oxRenderSettings::changedAnimationType(int type)
{
    currentPreset.animationType = type;
    updateGUI();
}

void oxRenderSettings::changedAnimationFormat(int format)
{
    currentPreset.exportType = format;
    updateGUI();
}

void oxRenderSettings::changedClip(const QString& clip)
{
    currentPreset.clip = clip.toUtf8().toStdString();
    updateGUI();
}

void oxRenderSettings::changedStart(int frame)
{
    currentPreset.startFrame = frame;
    updateRenderStatistics();
}

void oxRenderSettings::changedStop(int frame)
{
    currentPreset.stopFrame = frame;
    updateRenderStatistics();
}

void oxRenderSettings::changedFrameStep(int step)
{
    currentPreset.stepFrame = step;
    updateRenderStatistics();
}

void oxRenderSettings::changedFPS(int fps) { currentPreset.fps = fps; }

void oxRenderSettings::changedSSFactor(int index) { currentPreset.ssFactor = index != 0 ? 3 : 0; }

void oxRenderSettings::changedTonemapHDR(bool on) { currentPreset.tonemap_hdr = on; }

void oxRenderSettings::changedAlpha(bool on) { currentPreset.alpha = on; }

void oxRenderSettings::changedBackgroundColor(float r, float g, float b)
{
    currentPreset.backgroundColorR = r;
    currentPreset.backgroundColorG = g;
    currentPreset.backgroundColorB = b;
}

void oxRenderSettings::changedTiffHDR(bool on) { currentPreset.tiffHDR = on; }

void oxRenderSettings::changedExrHalf(bool on) { currentPreset.exrHalf = on; }

void oxRenderSettings::changedICCProfile(int index) { currentPreset.iccProfileID = index; }

void oxRenderSettings::changedPremultiply(bool on)
{
    currentPreset.premultiply = on;
    oxRaytracer::setPremultiply(on);
}

void oxRenderSettings::changedUseMultiLayer(bool on)
{
    currentPreset.multiLayer = on;
    updateRenderStatistics();
}

void oxRenderSettings::setMetaDataFlag(int mask, bool on)
{
    if (on)
        currentPreset.metaDataFlags |= mask;
    else
        currentPreset.metaDataFlags &= ~mask;
}

void oxRenderSettings::changedEmbedCamera(bool on) { setMetaDataFlag(CAMERA_DATA, on); }

void oxRenderSettings::changedEmbedNodeVisibilities(bool on)
{
    setMetaDataFlag(SCENEGRAPH_VISIBILITY_STATE, on);
}

void oxRenderSettings::changedEmbedSwitchNodeChoices(bool on)
{
    setMetaDataFlag(SCENEGRAPH_SWITCH_CHOICE_STATE, on);
}

void oxRenderSettings::changedEmbedSwitchMaterialChoices(bool on)
{
    setMetaDataFlag(SWITCH_MATERIAL_CHOICE_STATE, on);
}

void oxRenderSettings::changedEmbedRenderSettings(bool on)
{
    setMetaDataFlag(kEmbedRenderSettingsMask, on);
}

void oxRenderSettings::changedEmbedAll(bool on)
{
    for (int mask :
         {int(CAMERA_DATA), int(SCENEGRAPH_VISIBILITY_STATE), int(SCENEGRAPH_SWITCH_CHOICE_STATE),
          kEmbedRenderSettingsMask, int(SWITCH_MATERIAL_CHOICE_STATE)})
        setMetaDataFlag(mask, on);
    updateGUI();
}

void oxRenderSettings::changedExportRenderpasses(bool on)
{
    currentPreset.renderpasses = on;
    updateRenderStatistics();
}

void oxRenderSettings::changedExportPass(PassFlag flag, bool on)
{
    currentPreset.passFlag(flag) = on;
    updateRenderStatistics();
}

void oxRenderSettings::changedExportSpecularLightPass(bool on)
{
    changedExportPass(PassFlag::SpecularLight, on);
}

void oxRenderSettings::changedAdaptiveAASamples(int) {}

void oxRenderSettings::changedCausticPhotonRadius(double) {}

void oxRenderSettings::clickedMore() {}

// ---------------------------------------------------------------------------------------------
// Snapshot overlays: sent to the render view at once, no refresh and no scene change

namespace {

void sendInnerFrame(const Ui_oxRenderSettingsGUI& ui)
{
    oxOSGWidget::setSnapshotInnerFrame(ui._snapshot_inner_frame->isChecked(), ui._left->value(),
                                       ui._right->value(), ui._bottom->value(), ui._top->value(),
                                       ui._inner_type->currentIndex() == 1);
}

void sendRegionFrame(const Ui_oxRenderSettingsGUI& ui)
{
    oxOSGWidget::setSnapshotRenderRegionFrame(
        ui._snapshot_render_region_frame->isChecked(), ui._region_start_x->value(),
        ui._region_end_x->value(), ui._region_start_y->value(), ui._region_end_y->value());
}

} // namespace

void oxRenderSettings::changedSnapshotFrame(bool on)
{
    sendInnerFrame(*this);
    sendRegionFrame(*this);
    oxOSGWidget::setSnapshotFrame(on, currentPreset.getPixelWidth(),
                                  currentPreset.getPixelHeight());
}

void oxRenderSettings::changedSnapshotRuleOfThirds(bool on)
{
    oxOSGWidget::setSnapshotRuleOfThirds(on);
    oxOSGWidget::setSnapshotFrame(_snapshot_frame->isChecked(), currentPreset.getPixelWidth(),
                                  currentPreset.getPixelHeight());
}

void oxRenderSettings::changedSnapshotInnerFrameEnable(bool)
{
    sendInnerFrame(*this);
    oxOSGWidget::setSnapshotFrame(_snapshot_frame->isChecked(), currentPreset.getPixelWidth(),
                                  currentPreset.getPixelHeight());
}

void oxRenderSettings::changedSnapshotRenderRegionFrameEnabled(bool)
{
    sendRegionFrame(*this);
    oxOSGWidget::setSnapshotFrame(_snapshot_frame->isChecked(), currentPreset.getPixelWidth(),
                                  currentPreset.getPixelHeight());
}

void oxRenderSettings::changedInnerFrame(int)
{
    changedSnapshotFrame(_snapshot_frame->isChecked());
}

// ---------------------------------------------------------------------------------------------
// Refresh of all widgets from their stores

void oxRenderSettings::updateGUI()
{
    if (guiUpdateLock)
        return;
    quietVisible(RenderSettingsTabWidget, true);
    updateClipList();
    updateVariantSetGUI();
    updateOutputWidgets();
    syncImageSizeAndFrames();
    updateRaytracingWidgets();
    updatePhotonWidgets();
    updateDisplayWidgets();
    _view->update();
}

void oxRenderSettings::updateClipList()
{
    const QString remembered = _animationCB->currentText();
    _animationCB->clear();
    quiet(_animationCB, [&remembered](QComboBox* box) {
        box->addItem(QString());
        if (oxAnimManager* manager = oxAnimManager::the()) {
            if (osg::NodePtr root = manager->clipStructureRoot()) {
                for (size_t i = 0; i < root->getNChildren(); ++i) {
                    if (osg::NodePtr clip = root->getChild(i))
                        box->addItem(QString::fromStdString(oxNodeUtils::getName(clip)));
                }
            }
        }
        const int found = box->findText(remembered);
        box->setCurrentIndex(found >= 0 ? found : 0);
    });
}

void oxRenderSettings::updateOutputWidgets()
{
    const oxRenderSettingsPreset& p = currentPreset;
    quiet(_quickFilename, [&p](QLineEdit* edit) {
        edit->setText(QString::fromStdString(oxFile::convertSeparators(p.filename)));
    });
    quietChecked(_timeStamp, p.timeStamp);
    quietChecked(_renderAnimation, p.renderAnimation);
    quietChecked(_use_clip_range, p.useClipRange);
    quietIndex(_animType, p.animationType);
    quietIndex(_animFormatCB, p.exportType);
    const int clip = _animationCB->findText(QString::fromStdString(p.clip), Qt::MatchCaseSensitive);
    if (clip >= 0)
        quietIndex(_animationCB, clip);
    quietValue(_start, p.startFrame);
    quietValue(_stop, p.stopFrame);
    quietValue(_frame_step, p.stepFrame);
    quietValue(_fps, p.fps);

    // The view chooser shows the record's view; a view that is gone shows "Current".
    const osg::NodePtr viewNode = p.view.empty() ? nullptr : p.getViewNode();
    const bool track = viewNode && oxNodeUtils::isCameraTrack(viewNode);
    {
        const bool blocked = _view->blockSignals(true);
        if (!viewNode)
            _view->reset();
        _view->blockSignals(blocked);
    }

    const bool animation = p.renderAnimation;
    const bool timeline = animation && !track;
    const bool clipType = _animType->currentIndex() == 0;
    for (QWidget* w : {static_cast<QWidget*>(_animType), static_cast<QWidget*>(_typeLabel)})
        quietEnabled(w, timeline);
    for (QWidget* w : std::initializer_list<QWidget*>{_animationCB, _labelClip, _use_clip_range})
        quietEnabled(w, timeline && clipType);
    for (QWidget* w : std::initializer_list<QWidget*>{_labelFormat, _animFormatCB})
        quietEnabled(w, animation);
    const bool rangeFromClip = clipType && _use_clip_range->isChecked();
    for (QWidget* w : std::initializer_list<QWidget*>{_start, _startLabel, _stop, _stopLabel})
        quietEnabled(w, !track && !rangeFromClip && animation);
    for (QWidget* w : std::initializer_list<QWidget*>{_framestepLabel, _frame_step})
        quietEnabled(w, animation && _animFormatCB->currentIndex() == 0);
    for (QWidget* w : std::initializer_list<QWidget*>{_fps, _fpsLabel})
        quietEnabled(w, animation && _animFormatCB->currentIndex() == 1);

    quietValue(_dpi, p.getPixelsPerInch());
    quiet(_pixel_size, [&p](QOXVec2Control* c) {
        c->setX(p.pixel_width);
        c->setY(p.pixel_height);
    });
    quiet(_print_size, [&p](QOXVec2Control* c) {
        c->setX(p.printWidth);
        c->setY(p.printHeight);
    });

    const bool region = p.use_render_region;
    quietChecked(_use_region_region, region);
    for (QWidget* w : std::initializer_list<QWidget*>{
             _use_viewport_region, _region_start_label, _region_end_label, _region_start_x,
             _region_start_y, _region_end_x, _region_end_y})
        quietEnabled(w, region);
    quietValue(_region_start_x, p.region_start_x);
    quietValue(_region_start_y, p.region_start_y);
    quietValue(_region_end_x, p.region_end_x);
    quietValue(_region_end_y, p.region_end_y);

    quietIndex(_ssfactor, p.ssFactor != 0 ? 1 : 0);
    quietChecked(_tonemap_hdr, p.tonemap_hdr);
    quietChecked(_alpha, p.alpha);
    quiet(_alpha_color, [&p](QOXColorManipulator* c) {
        c->setColor(p.backgroundColorR, p.backgroundColorG, p.backgroundColorB);
    });
    quiet(_premultiply, [&p](QCheckBox* box) {
        box->setEnabled(p.alpha);
        box->setChecked(p.premultiply);
    });
    quietChecked(_tiff_hdr, p.tiffHDR);
    quietChecked(_exr_half, p.exrHalf);
    quietChecked(_use_multi_layer, p.multiLayer);
    quietIndex(_icc_profile, p.iccProfileID);

    const int flags = p.metaDataFlags;
    const std::pair<QCheckBox*, bool> embeds[] = {
        {_embed_camera, (flags & CAMERA_DATA) != 0},
        {_embed_node_visibilities, (flags & SCENEGRAPH_VISIBILITY_STATE) != 0},
        {_embed_switch_node_choices, (flags & SCENEGRAPH_SWITCH_CHOICE_STATE) != 0},
        {_embed_switch_material_choices, (flags & SWITCH_MATERIAL_CHOICE_STATE) != 0},
        {_embed_render_settings, (flags & kEmbedRenderSettingsMask) != 0},
    };
    bool all = true;
    for (const auto& embed : embeds)
        all = all && embed.second;
    quietChecked(_embed_all, all);
    for (const auto& embed : embeds) {
        quiet(embed.first, [&embed, all](QCheckBox* box) {
            box->setChecked(embed.second);
            box->setEnabled(!all);
        });
    }

    quiet(_export_renderpasses, [&p](QGroupBox* box) { box->setChecked(p.renderpasses); });
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        for (const char* name : {info.widget, info.twinWidget}) {
            if (!name)
                continue;
            if (auto* box = findChild<QAbstractButton*>(QLatin1String(name)))
                quietChecked(box, p.getPassFlag(info.flag));
        }
    }
}

void oxRenderSettings::updateRaytracingWidgets()
{
    const int samples = oxRenderParameter::getImageSamples();
    const auto preset =
        std::find(kQualityPresetSamples.begin(), kQualityPresetSamples.end(), samples);
    quietIndex(_quality_preset, int(preset - kQualityPresetSamples.begin()));

    quietChecked(_snapshot_frame, oxOSGWidget::getSnapshotFrame());
    quietChecked(_snapshot_rule_of_thirds, oxOSGWidget::getSnapshotRuleOfThirds());
    quietChecked(_snapshot_inner_frame, oxOSGWidget::getSnapshotInnerFrame());
    quietChecked(_snapshot_render_region_frame, oxOSGWidget::getSnapshotRenderRegionFrame());
    // The overlays follow the current image size.
    changedSnapshotFrame(oxOSGWidget::getSnapshotFrame());

    quietIndex(_filtertype, oxPixelfilterFactory::getPixelFilterType());
    quiet(_filtersize, [](QOXSlider* slider) {
        slider->setValue(std::max(oxPixelfilterFactory::getPixelFilterWidth(),
                                  oxPixelfilterFactory::getPixelFilterHeight()));
    });

    quietChecked(_use_infinite_rendering, oxRenderParameter::getUseInfiniteRendering());
    const unsigned int denoise = oxRenderParameter::getDenoiseFilter();
    const int denoiseIndex = _denoiser_filter->findData(int(denoise));
    quietIndex(_denoiser_filter, denoiseIndex >= 0 ? denoiseIndex : 0);
    quietEnabled(_aa_threshold_quality_label, true);
    quietEnabled(_aa_threshold_quality, true);
    for (QWidget* w :
         std::initializer_list<QWidget*>{_denoiser_type_label, _denoiser_type,
                                         _denoiser_input_label, _denoiser_input, _denoise_alpha})
        quietVisible(w, denoise != 0);

    const bool timeLimit = oxRenderParameter::getUseRenderTimeLimit();
    quietChecked(_use_time, timeLimit);
    quietChecked(_use_image_samples, !timeLimit);
    for (QWidget* w : std::initializer_list<QWidget*>{_time_hours, _time_minutes, _time_seconds,
                                                      _time_hours_label, _time_minutes_label,
                                                      _time_seconds_label})
        quietEnabled(w, timeLimit);
    const unsigned int total = oxRenderParameter::getRenderTimeInSeconds();
    quietValue(_time_hours, int(total / 3600));
    quietValue(_time_minutes, int((total % 3600) / 60));
    quietValue(_time_seconds, int((total % 3600) % 60));
    quietEnabled(_image_samples_spinbox, !timeLimit);
    quietEnabled(_image_samples_slider, !timeLimit);
    quietValue(_image_samples_spinbox, samples);
    quietValue(_samples_threshold, oxOSGWidget::getSamplesThreshold());
    quiet(_image_samples_slider, [samples](QSlider* slider) {
        if (unsigned(samples) >= unsigned(slider->maximum()))
            slider->setMaximum(samples);
        slider->setValue(samples);
    });

    quietIndex(_aa_threshold_quality, oxRenderParameter::getAdaptiveAAThresholdQuality());

    const int interactiveDepth = oxRenderParameter::getInteractiveReflectionDepth();
    const int stillDepth = oxRenderParameter::getStillFrameReflectionDepth();
    const int maxDepth = int(std::max(unsigned(interactiveDepth), unsigned(stillDepth)));
    quietSlider(_max_trace_depth_slider, maxDepth, false);
    quietValue(_max_trace_depth_spinbox, maxDepth);
    quietValue(_interactive_depth_spinbox, interactiveDepth);
    quietSlider(_interactive_depth_slider, interactiveDepth);
    quietValue(_stillframe_depth_spinbox, stillDepth);
    quietSlider(_stillframe_depth_slider, stillDepth);

    const bool spectral = oxRaytracingManager::isSpectralRaytracingEnable();
    const bool clamping = oxRenderParameter::getClamping();
    quiet(_clamping_group_box, [spectral, clamping](QCheckBox* box) {
        box->setEnabled(!spectral);
        box->setChecked(clamping);
    });
    quiet(_reflection_clamp_value, [spectral, clamping](QDoubleSpinBox* box) {
        box->setEnabled(!spectral && clamping);
        box->setValue(double(oxRenderParameter::getReflectionClampValue()));
    });

    quietChecked(_enable_PBParameters, oxRenderParameter::getPBParameters());
    quietChecked(_enable_spectral_raytracing, spectral);
    quietIndex(_spectral_illuminant, oxRenderParameter::getIlluminant());
    quietChecked(_optimize_lights, oxRenderParameter::getLightOptimizationMode());
    oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils();
    quietChecked(_enable_nurbs_raytracing, utils && utils->getNurbsMode() != 0);
    quietChecked(_enable_cost_visualization,
                 oxRenderParameter::getRenderer() == kCostVisualizationRenderer);

    // The BRDF mode's re-assertion on all materials belongs to the BRDF switch, which reads
    // the combo box; the refresh only shows the host's mode.
    quietIndex(_brdf_mode, oxRenderParameter::getBrdfMode());

    quietChecked(_use_ray_splitting, oxRenderParameter::getUseRaySplitting());
    quietIndex(_denoiser_type, int(oxRenderParameter::getDenoiserType()));
    quietIndex(_denoiser_input, oxRenderParameter::getDenoiserInput());
    quietChecked(_denoise_alpha, oxRenderParameter::getDenoiseAlpha());
    quietChecked(_use_two_sample_mis, oxRenderParameter::getUseTwoSampleImportanceSampling());

    const oxTBBInit& tbb = oxTBBInit::the();
    quietValue(_raytracing_cores_limit,
               tbb.getCoreUsageLimit() >= tbb.getNumLogicalCores() ? 0 : tbb.getCoreUsageLimit());

    quietIndex(_interactiveQualityMode,
               illuminationModeIndex(oxRenderParameter::getInteractiveQualityMode()));
    const int stillMode = illuminationModeIndex(oxRenderParameter::getStillFrameQualityMode());
    quietIndex(_stillFrameQualityMode, stillMode);
    quietIndex(_render_mode, stillMode);

    const int interactive = oxRenderParameter::getInteractiveQuality();
    const int still = oxRenderParameter::getStillFrameQuality();
    quietSlider(_interactiveQuality, interactive);
    quietValue(_interactiveQualitySpinbox, interactive);
    quietSlider(_basic_interactiveQuality, interactive, false);
    quietValue(_basic_interactiveQualitySpinbox, interactive);
    quietSlider(_basic_stillFrameQuality, still, false);
    quietValue(_basic_stillFrameQualitySpinbox, still);
    // The still frame slider is widened when the value passes the interactive slider's
    // maximum, the way the window has always done it.
    quiet(_stillFrameQuality, [this, still](QSlider* slider) {
        if (still > _interactiveQuality->maximum())
            slider->setMaximum(still);
        slider->setValue(still);
    });
    quietValue(_stillFrameQualitySpinbox, still);
    const int envInteractive = oxRenderParameter::getEnvironmentInteractiveQuality();
    const int envStill = oxRenderParameter::getEnvironmentStillQuality();
    quietSlider(_environmentInteractiveQuality, envInteractive);
    quietValue(_environmentInteractiveQualitySpinbox, envInteractive);
    quiet(_environmentStillFrameQuality, [envInteractive, envStill](QSlider* slider) {
        if (envStill > slider->maximum())
            slider->setMaximum(envInteractive);
        slider->setValue(envStill);
    });
    quietValue(_environmentStillFrameQualitySpinbox, envStill);
}

void oxRenderSettings::updatePhotonWidgets()
{
    const int mode = oxRenderParameter::getPhotonMode();
    const bool photons = mode > 0;
    const bool spectral = oxRaytracingManager::isSpectralRaytracingEnable();
    quietIndex(_photon_mode, mode);

    const int dispersion = oxRenderParameter::getPhotonDispersionQuality();
    for (QWidget* w :
         std::initializer_list<QWidget*>{_photonDispersionQuality, _photonDispersionQualitySpinbox,
                                         _photonDispersionQualityLabel}) {
        quiet(w, [photons, spectral](QWidget* widget) {
            widget->setEnabled(photons);
            widget->setVisible(spectral);
        });
    }
    quietSlider(_photonDispersionQuality, dispersion, false);
    quietValue(_photonDispersionQualitySpinbox, dispersion);

    for (QWidget* w : std::initializer_list<QWidget*>{
             _photon_trace_depth_slider, _photon_trace_depth_spinbox, _photon_trace_depth_label})
        quietEnabled(w, photons);
    const int depth = oxRenderParameter::getPhotonTraceDepth();
    quiet(_photon_trace_depth_slider, [depth](QSlider* slider) {
        if (depth > slider->maximum())
            slider->setMaximum(depth / 32 * 32 + 32);
        slider->setValue(depth);
    });
    quietValue(_photon_trace_depth_spinbox, depth);

    const bool automatic = oxRenderParameter::getPhotonUseAutomaticRadius();
    quiet(_use_automatic_photon_radius, [photons, automatic](QCheckBox* box) {
        box->setEnabled(photons);
        box->setChecked(automatic);
    });
    for (QWidget* w : std::initializer_list<QWidget*>{_indirect_radius_label, _indirect_radius}) {
        quiet(w, [photons, automatic](QWidget* widget) {
            widget->setEnabled(photons && !automatic);
            widget->setVisible(!automatic);
        });
    }
    quiet(_indirect_radius, [](QOXWheelPrec* wheel) {
        wheel->setValue(double(oxRenderParameter::getIndirectPhotonRadius()));
    });

    for (QWidget* w :
         std::initializer_list<QWidget*>{_interactive_photon_count_label, _interactive_photon_count,
                                         _stillframe_photon_count_label, _stillframe_photon_count})
        quietEnabled(w, photons);
    quietValue(_interactive_photon_count, oxRenderParameter::getInteractivePhotonCount());
    quietValue(_stillframe_photon_count, oxRenderParameter::getStillFramePhotonCount());

    for (QWidget* w : std::initializer_list<QWidget*>{
             _interactive_finalgather_quality_label, _interactive_finalgather_quality_slider,
             _interactive_finalgather_quality_spinbox, _finalgather_quality_label,
             _finalgather_quality_slider, _finalgather_quality_spinbox})
        quietEnabled(w, photons);
    const int interactiveGather = oxRenderParameter::getInteractiveFinalGatherQuality();
    const int stillGather = oxRenderParameter::getStillFrameFinalGatherQuality();
    quietSlider(_interactive_finalgather_quality_slider, interactiveGather);
    quietValue(_interactive_finalgather_quality_spinbox, interactiveGather);
    quietSlider(_finalgather_quality_slider, stillGather);
    quietValue(_finalgather_quality_spinbox, stillGather);

    const bool gather = photons && (interactiveGather > 0 || stillGather > 0);
    for (QWidget* w : std::initializer_list<QWidget*>{_photon_refresh_mode, _refresh_mode_label,
                                                      _use_final_gather_for_glossy})
        quietEnabled(w, gather);
    quietIndex(_photon_refresh_mode, oxRenderParameter::getPhotonMapRefreshMode());
    quietChecked(_use_final_gather_for_glossy, oxRenderParameter::getUseFinalGatherForGlossy());
    for (QWidget* w :
         std::initializer_list<QWidget*>{_final_gather_radius_label, _final_gather_radius}) {
        quiet(w, [gather, automatic](QWidget* widget) {
            widget->setVisible(!automatic);
            widget->setEnabled(gather && !automatic);
        });
    }
    quiet(_final_gather_radius, [](QOXWheelPrec* wheel) {
        wheel->setValue(double(oxRenderParameter::getFinalGatherRadius()) * 4.0);
    });

    quiet(_freeze_update, [photons](QCheckBox* box) {
        box->setEnabled(photons);
        box->setChecked(oxRenderParameter::getPhotonMapFreezeMode() != 0);
    });
}

void oxRenderSettings::updateDisplayWidgets()
{
    quiet(_gammaSlider,
          [](QOXWheelPrec* wheel) { wheel->setValue(double(oxOSGWidget::getDisplayGamma()[0])); });
    const int post = oxOSGWidget::getPostprocessingFlags();
    quietChecked(_dynToneMap, (post & (1 << 1)) != 0);
    quietChecked(_enable_dithering, (post & (1 << 0)) != 0);
    quiet(_displayLuminanceSlider, [](QOXWheelPrec* wheel) {
        wheel->setValue(double(oxRenderParameter::getDisplayLuminance()));
    });

    const std::pair<QCheckBox*, bool> overrides[] = {
        {_allowOverrideIBLQuality, !oxRenderParameter::getIgnoreOverrideIBLQuality()},
        {_allowOverrideIlluminationMode, !oxRenderParameter::getIgnoreOverrideIlluminationMode()},
        {_allowOverrideReflectionQuality, !oxRenderParameter::getIgnoreOverrideReflectionQuality()},
        {_allowOverrideTraceDepth, !oxRenderParameter::getIgnoreOverrideTraceDepth()},
    };
    bool any = false;
    for (const auto& entry : overrides) {
        quietChecked(entry.first, entry.second);
        any = any || entry.second;
    }
    quietChecked(_allowMaterialOverrides, any);

    quiet(_sim2LuminanceMappingSlider, [](QOXWheelPrec* wheel) {
        wheel->setValue(double(oxRenderParameter::getSim2LuminanceMapping()));
    });

    // The photometric display controls show while the scene is photometric.
    const oxSceneData* data = oxSceneDataManager::getSceneData(0);
    const bool photometric = data && data->getPhotometric() != 0;
    for (QWidget* w : std::initializer_list<QWidget*>{_displayLuminanceLabel,
                                                      _displayLuminanceSlider, _sim2CF, _clampUnit})
        quietVisible(w, photometric);

    const int colorspace = oxOSGWidget::getDisplayColorspace();
    for (QWidget* w :
         std::initializer_list<QWidget*>{_display_colorspaceLabel, _display_colorspace})
        quietEnabled(w, !oxOSGWidget::getRGB16F());
    quietIndex(_display_colorspace, colorspace);
    const bool simpleGamma = colorspace < 1 || colorspace > 3;
    for (QWidget* w : std::initializer_list<QWidget*>{_simpleGammaLabel, _gammaSlider})
        quietVisible(w, simpleGamma);

    const std::pair<QCheckBox*, int> histogram[] = {
        {_histGroupBox, 4}, {_histLogScale, 5}, {_histRed, 6},
        {_histGreen, 7},    {_histBlue, 8},     {_histLum, 9},
    };
    for (const auto& entry : histogram)
        quietChecked(entry.first, (post & (1 << entry.second)) != 0);
}

// ---------------------------------------------------------------------------------------------
// Refreshes requested through the timers and by the host

void oxRenderSettings::refreshVariantSetGui()
{
    // The variant set display is built by the variant selection; until then the tree shows
    // what it holds.
    variantSetTree->viewport()->update();
}

void oxRenderSettings::refreshRenderStatistics()
{
    // The statistics text is written by the statistics display, which isn't part of this
    // window yet; the request has been consumed.
}

void oxRenderSettings::readBackVariantSetTree()
{
    // Reading the tree's check states back into the record belongs to the variant selection.
}

void oxRenderSettings::refreshHostParameters()
{
    guiUpdateLock = true;
    if (oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils())
        utils->updatePixelFilter();
    oxOSGWidget::setImageSamples(oxRenderParameter::getImageSamples());
    const bool photometric = oxRenderParameter::getPBParameters();
    if (oxSceneData* data = oxSceneDataManager::getSceneData(0))
        data->setPhotometric(photometric ? 1 : 0);
    if (oxMaterialInterface* materials = oxInterfaceFactory::getMaterialInterface())
        materials->setPhotometricMode(photometric);
    oxOSGWidget::setDisplayLuminance(oxRenderParameter::getDisplayLuminance());
    oxOSGWidget::setSim2LuminanceMapping(oxRenderParameter::getSim2LuminanceMapping());

    // Each value goes through its setter again so that the setters' side effects run for the
    // values the scene brought.
    oxRenderParameter::setPhotonMode(oxRenderParameter::getPhotonMode());
    oxRenderParameter::setPhotonNoiseReductionSteps(
        oxRenderParameter::getPhotonNoiseReductionSteps());
    oxRenderParameter::setPhotonUseAutomaticRadius(
        oxRenderParameter::getPhotonUseAutomaticRadius());
    oxRenderParameter::setAdaptiveAAThresholdQuality(
        oxRenderParameter::getAdaptiveAAThresholdQuality());
    oxRenderParameter::setInteractiveTextureSharpness(
        oxRenderParameter::getInteractiveTextureSharpness());
    oxRenderParameter::setStillFrameTextureSharpness(
        oxRenderParameter::getStillFrameTextureSharpness());
    oxRenderParameter::setLightEvaluationThreshold(
        oxRenderParameter::getLightEvaluationThreshold());
    oxRenderParameter::setRenderer(oxRenderParameter::getRenderer());
    if (oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils()) {
#define OX_REASSERT_UTILS(type, name, start) utils->set##name(utils->get##name());
        OX_RAYTRACING_NURBS_SETTINGS(OX_REASSERT_UTILS)
#undef OX_REASSERT_UTILS
    }
    guiUpdateLock = false;
    updateGUI();
}

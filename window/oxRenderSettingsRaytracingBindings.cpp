// The General Settings tab: samples and time, antialiasing, clamping, denoising, the pixel
// filter and the raytracer's features, with the file tab's quality preset. Each setting lives
// in the host's services; some are mirrored into the current record as well.

#include "oxRenderSettingsBindingSupport.h"

#include "QOXSlider.h"
#include "oxController.h"
#include "oxLog.h"
#include "oxOSGWidget.h"
#include "oxPixelfilterFactory.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"
#include "oxTBBInit.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>

#include <algorithm>
#include <array>

using namespace oxBindings;

namespace {

using P = oxRenderSettingsPreset;

// The quality presets' sample counts, by _quality_preset index; the entry after them is
// "Custom".
constexpr std::array<int, 4> kQualityPresetSamples = {{32, 128, 512, 2048}};
constexpr int kCostVisualizationRenderer = 5;

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

std::vector<Toggle<oxLiveField>> liveToggles(Self& w)
{
    return {
        {w._enable_PBParameters, &Self::changedPBParameters, &P::pbParameters},
        {w._optimize_lights, &Self::changedLightOptimizationMode, &P::lightOptimizationMode},
        {w._enable_nurbs_raytracing, &Self::changedNURBSMode, &P::nurbsMode},
        {w._use_ray_splitting, &Self::changedUseRaySplitting, &P::useRaySplitting},
        {w._denoise_alpha, &Self::changedDenoiseAlpha, &P::denoiseAlpha},
        {w._use_two_sample_mis, &Self::changedUseTwoSampleImportanceSampling, &P::useTwoSampleMIS},
    };
}

std::vector<Choice<oxLiveField>> liveChoices(Self& w)
{
    return {
        {w._aa_threshold_quality, &Self::changedAAThresholdQuality, &P::aaThresholdQuality},
        {w._spectral_illuminant, &Self::changedIlluminant, &P::illuminant},
        {w._brdf_mode, &Self::changedBrdfMode, &P::brdfMode},
        {w._denoiser_type, &Self::changedDenoiserType, &P::denoiserType},
        {w._denoiser_input, &Self::changedDenoiserInput, &P::denoiserInput},
    };
}

std::vector<Number<oxLiveField>> liveNumbers(Self& w)
{
    return {{w._samples_threshold, &Self::changedSamplesThreshold, &P::samplesThreshold}};
}

} // namespace

void oxRenderSettings::connectRaytracingBindings()
{
    const auto activated = QOverload<int>::of(&QComboBox::activated);
    const auto spinChanged = QOverload<int>::of(&QSpinBox::valueChanged);

    connectRows(this, liveToggles(*this));
    connectRows(this, liveChoices(*this));
    connectRows(this, liveNumbers(*this));

    // Combo boxes whose slot takes the item's user data rather than its index.
    connect(_filtertype, activated, this,
            [this](int index) { changedImageFilter(currentData(_filtertype, index)); });
    connect(_denoiser_filter, activated, this,
            [this](int index) { changedDenoiseFilter(currentData(_denoiser_filter, index)); });
    connect(_filtersize, &QOXSlider::valueChanged, this, &Self::changedFilterWidth);
    connect(_filtersize, &QOXSlider::valueChanged, this, &Self::changedFilterHeight);

    connect(_image_samples_slider, &QSlider::valueChanged, this, &Self::changedImageSamples);
    connect(_image_samples_spinbox, spinChanged, this, &Self::changedImageSamples);
    connect(_quality_preset, activated, this, &Self::changedQualityPreset);
    for (QSpinBox* box : {_time_hours, _time_minutes, _time_seconds})
        connect(box, spinChanged, this, QOverload<int>::of(&Self::changedRenderTime));
    connect(_time_or_samples_group, &QButtonGroup::idPressed, this,
            &Self::changedRenderingFinishMode);
    connect(_use_infinite_rendering, &QCheckBox::stateChanged, this,
            &Self::changedUseInfiniteRendering);

    connect(_clamping_group_box, &QAbstractButton::toggled, this, &Self::changedClamping);
    connect(_reflection_clamp_value, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            &Self::changedReflectionClampValue);
    connect(_enable_spectral_raytracing, &QAbstractButton::toggled, this,
            &Self::changedSpectralRaytracing);
    connect(_enable_cost_visualization, &QAbstractButton::toggled, this,
            &Self::changedCostVisualizationMode);
    connect(_raytracing_cores_limit, spinChanged, this, &Self::changedNumCoresLimit);
}

// ---------------------------------------------------------------------------------------------
// Live settings: host store, updateGUI, render update, modified

void oxRenderSettings::changedAAThresholdQuality(int index)
{
    writeLiveParameter(&P::aaThresholdQuality, index);
    refreshLive();
}

// The raytracer renders with the filter it took over last, so it gets the new one before the
// window reads it back.
void oxRenderSettings::changedImageFilter(int type)
{
    writeLiveParameter(&P::filterType, type);
    if (oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils())
        utils->updatePixelFilter();
    refreshLive();
}

void oxRenderSettings::changedFilterWidth(double width)
{
    writeLiveParameter(&P::filterWidth, float(width));
    if (oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils())
        utils->updatePixelFilter();
    refreshLive();
}

void oxRenderSettings::changedFilterHeight(double height)
{
    writeLiveParameter(&P::filterHeight, float(height));
    if (oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils())
        utils->updatePixelFilter();
    refreshLive();
}

void oxRenderSettings::changedClamping(bool on)
{
    writeLiveParameter(&P::enableClamping, on);
    refreshLive();
}

void oxRenderSettings::changedReflectionClampValue(double value)
{
    writeLiveAndRecord(currentPreset, &P::reflectionClampValue, float(value));
    refreshLive();
}

void oxRenderSettings::changedRenderer(int renderer)
{
    writeLiveParameter(&P::renderer, renderer);
    refreshLive();
}

void oxRenderSettings::changedIlluminant(int illuminant)
{
    writeLiveAndRecord(currentPreset, &P::illuminant, illuminant);
    refreshLive();
}

// ---------------------------------------------------------------------------------------------
// Host store and updateGUI

void oxRenderSettings::changedUseInfiniteRendering(int on)
{
    writeLiveAndRecord(currentPreset, &P::useInfiniteRendering, on != 0);
    updateGUI();
}

void oxRenderSettings::changedRenderingFinishMode(int mode)
{
    // Button ids: 0 render time, 1 image samples.
    if (mode != 0 && mode != 1)
        return;
    writeLiveAndRecord(currentPreset, &P::useTimeLimit, !mode);
    updateGUI();
}

void oxRenderSettings::changedSamplesThreshold(int threshold)
{
    writeLiveAndRecord(currentPreset, &P::samplesThreshold, threshold);
    updateGUI();
}

void oxRenderSettings::changedNURBSMode(bool on)
{
    writeLiveParameter(&P::nurbsMode, on ? 1 : 0);
    updateGUI();
}

void oxRenderSettings::changedCostVisualizationMode(bool on)
{
    writeLiveParameter(&P::renderer, on ? kCostVisualizationRenderer : 0);
    updateGUI();
}

void oxRenderSettings::changedLightOptimizationMode(bool on)
{
    writeLiveParameter(&P::lightOptimizationMode, on ? 1 : 0);
    updateGUI();
}

void oxRenderSettings::changedNumCoresLimit(int cores)
{
    oxTBBInit::the().setCoreUsageLimit(cores < 1 ? oxTBBInit::noLimit : cores);
    updateGUI();
}

void oxRenderSettings::changedUseRaySplitting(bool on)
{
    writeLiveAndRecord(currentPreset, &P::useRaySplitting, on);
    updateGUI();
}

void oxRenderSettings::changedDenoiserType(int type)
{
    writeLiveAndRecord(currentPreset, &P::denoiserType, unsigned(type));
    updateGUI();
}

void oxRenderSettings::changedDenoiserInput(int input)
{
    writeLiveAndRecord(currentPreset, &P::denoiserInput, input);
    updateGUI();
}

void oxRenderSettings::changedDenoiseAlpha(bool on)
{
    writeLiveAndRecord(currentPreset, &P::denoiseAlpha, on);
    updateGUI();
}

// Two-sample importance sampling reaches the host only where a raytracer takes it.
void oxRenderSettings::changedUseTwoSampleImportanceSampling(bool on)
{
    currentPreset.useTwoSampleMIS = on;
    if (oxRaytracingManager::getRaytracingUtils())
        writeLiveParameter(&P::useTwoSampleMIS, on);
    updateGUI();
}

// GPU memory sharing has no store in this host's raytracer: there is nothing to set.
void oxRenderSettings::changedUseTextureSharing(bool) { updateGUI(); }

void oxRenderSettings::changedUseGeometrySharing(bool) { updateGUI(); }

void oxRenderSettings::changedDenoiseFilter(int filter)
{
    writeLiveAndRecord(currentPreset, &P::denoiseFilterType,
                       replaceLegacyDenoiser(unsigned(std::max(0, filter))));
    updateGUI();
}

void oxRenderSettings::changedEnableDenoise(bool on)
{
    writeLiveAndRecord(currentPreset, &P::denoiseFilterType, on ? kDenoiseFilterStillFrames : 0u);
    updateGUI();
}

void oxRenderSettings::changedUseHighQualityTextureFiltering(bool on)
{
    writeLiveParameter(&P::highQualityTextureFiltering, on);
    updateGUI();
}

void oxRenderSettings::changedStillFrameSupersampling(int factor)
{
    writeLiveParameter(&P::stillFrameSupersampling, factor);
    updateGUI();
}

// Switching the raytracing mode may reset other parameters: the live values are captured
// before and applied again after it. Inside an apply, the apply's lock stays held throughout.
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
        applyPreset(*captured,
                    oxRenderSettingsPreset::ApplyPresetMode(oxRenderSettingsPreset::KeepSpectral |
                                                            oxRenderSettingsPreset::ApplyBit4));
        updateGUI();
    }
    updateGUI();
}

// ---------------------------------------------------------------------------------------------
// Host store and modified

void oxRenderSettings::changedImageSamples(int samples)
{
    writeLiveParameter(&P::imageSamples, samples);
    oxOSGWidget::setImageSamples(samples);
    oxController::setModified(true);
    currentPreset.imageSamples = samples;
    updateGUI();
}

void oxRenderSettings::changedQualityPreset(int index)
{
    if (index >= 0 && index < int(kQualityPresetSamples.size())) {
        const int samples = kQualityPresetSamples[size_t(index)];
        writeLiveParameter(&P::imageSamples, samples);
        oxOSGWidget::setImageSamples(samples);
    }
    oxController::setModified(true);
    updateGUI();
}

void oxRenderSettings::changedRenderTime(int)
{
    changedRenderTime(_time_hours->value(), _time_minutes->value(), _time_seconds->value());
    updateGUI();
}

void oxRenderSettings::changedRenderTime(int hours, int minutes, int seconds)
{
    writeLiveAndRecord(currentPreset, &P::renderTime, renderTimeSum(hours, minutes, seconds));
    oxController::setModified(true);
    updateGUI();
}

// Kept for scripts and old connections; they do nothing.
void oxRenderSettings::changedAdaptiveAASamples(int) {}

void oxRenderSettings::changedCausticPhotonRadius(double) {}

void oxRenderSettings::clickedMore() {}

// ---------------------------------------------------------------------------------------------
// Refresh

void oxRenderSettings::updateRaytracingWidgets()
{
    refreshRows(liveToggles(*this), live);
    refreshRows(liveChoices(*this), live);
    refreshRows(liveNumbers(*this), live);

    const int samples = oxRenderParameter::getImageSamples();
    const auto preset =
        std::find(kQualityPresetSamples.begin(), kQualityPresetSamples.end(), samples);
    quietIndex(_quality_preset, int(preset - kQualityPresetSamples.begin()));

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
    quiet(_image_samples_slider, [samples](QSlider* slider) {
        if (unsigned(samples) >= unsigned(slider->maximum()))
            slider->setMaximum(samples);
        slider->setValue(samples);
    });

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
    quietChecked(_enable_spectral_raytracing, spectral);
    quietChecked(_enable_cost_visualization,
                 oxRenderParameter::getRenderer() == kCostVisualizationRenderer);

    const oxTBBInit& tbb = oxTBBInit::the();
    quietValue(_raytracing_cores_limit,
               tbb.getCoreUsageLimit() >= tbb.getNumLogicalCores() ? 0 : tbb.getCoreUsageLimit());
}

// The Raytracing Quality tab: illumination modes, quality levels, trace depths, photon mapping
// and the material overrides. Each setting lives in the host's render parameters.

#include "oxRenderSettingsBindingSupport.h"

#include "QOXWheelPrec.h"
#include "oxRaytracingManager.h"
#include "oxRenderParameter.h"

#include <QCheckBox>
#include <QLabel>

#include <algorithm>
#include <array>

using namespace oxBindings;

namespace {

using P = oxRenderSettingsPreset;

// The illumination mode combo boxes list the modes from -1 up: the index of mode m is the
// entry m + 1.
constexpr std::array<int, 5> kIlluminationModeIndex = {{0, 1, 2, 3, 4}};

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

std::vector<Pair<oxLiveField>> livePairs(Self& w)
{
    using L = Pair<oxLiveField>;
    return {
        {w._interactive_depth_slider, w._interactive_depth_spinbox,
         &Self::changedInteractiveReflectionDepth, &P::maxReflectionDepth},
        {w._stillframe_depth_slider, w._stillframe_depth_spinbox,
         &Self::changedStillFrameReflectionDepth, &P::stillFrameReflectionDepth},
        {w._interactiveQuality, w._interactiveQualitySpinbox, &Self::changedInteractiveQuality,
         &P::interactiveQuality},
        {w._stillFrameQuality, w._stillFrameQualitySpinbox, &Self::changedStillFrameQuality,
         &P::stillQuality, L::Own},
        {w._environmentInteractiveQuality, w._environmentInteractiveQualitySpinbox,
         &Self::changedEnvironmentInteractiveQuality, &P::environmentInteractiveQuality},
        {w._environmentStillFrameQuality, w._environmentStillFrameQualitySpinbox,
         &Self::changedEnvironmentStillQuality, &P::environmentStillQuality, L::Own},
        {w._photonDispersionQuality, w._photonDispersionQualitySpinbox,
         &Self::changedPhotonDispersionQuality, &P::photonDispersionQuality, L::Keep},
        {w._photon_trace_depth_slider, w._photon_trace_depth_spinbox,
         &Self::changedPhotonTraceDepth, &P::photonTraceDepth, L::Own},
        {w._interactive_finalgather_quality_slider, w._interactive_finalgather_quality_spinbox,
         &Self::changedInteractiveFinalGatherQuality, &P::interactiveFinalGatherQuality},
        {w._finalgather_quality_slider, w._finalgather_quality_spinbox,
         &Self::changedStillFrameFinalGatherQuality, &P::finalGatherQuality},
    };
}

std::vector<Toggle<oxLiveField>> liveToggles(Self& w)
{
    return {
        {w._use_automatic_photon_radius, &Self::changedPhotonUseAutomaticRadius,
         &P::photonUseAutomaticRadius},
        {w._use_final_gather_for_glossy, &Self::changedUseFinalGatherForGlossy,
         &P::useFinalGatherForGlossy},
        {w._freeze_update, &Self::changedPhotonMapFreezeMode, &P::photonMapFreezeMode},
    };
}

// The check boxes say "allow", the host's flags say "ignore".
std::array<Toggle<oxLiveField>, 4> overrides(Self& w)
{
    return {{
        {w._allowOverrideIBLQuality, &Self::changedOverrideIBLQuality, &P::ignoreOverrideIBLQuality,
         true},
        {w._allowOverrideIlluminationMode, &Self::changedOverrideIlluminationMode,
         &P::ignoreOverrideIlluminationMode, true},
        {w._allowOverrideReflectionQuality, &Self::changedOverrideReflectionQuality,
         &P::ignoreOverrideReflectionQuality, true},
        {w._allowOverrideTraceDepth, &Self::changedOverrideTraceDepth, &P::ignoreOverrideTraceDepth,
         true},
    }};
}

std::vector<Choice<oxLiveField>> liveChoices(Self& w)
{
    return {
        {w._photon_mode, &Self::changedPhotonMode, &P::photonMode},
        {w._photon_refresh_mode, &Self::changedPhotonMapRefreshMode, &P::photonMapRefreshMode},
    };
}

std::vector<Number<oxLiveField>> liveNumbers(Self& w)
{
    return {
        {w._interactive_photon_count, &Self::changedInteractivePhotonCount,
         &P::interactivePhotonCount},
        {w._stillframe_photon_count, &Self::changedStillFramePhotonCount, &P::photonCount},
    };
}

} // namespace

void oxRenderSettings::connectQualityBindings()
{
    const auto activated = QOverload<int>::of(&QComboBox::activated);
    // Combo boxes whose slot takes the item's user data rather than its index.
    connect(_interactiveQualityMode, activated, this, [this](int index) {
        changedInteractiveQualityMode(currentData(_interactiveQualityMode, index));
    });
    connect(_stillFrameQualityMode, activated, this, [this](int index) {
        changedStillFrameQualityMode(currentData(_stillFrameQualityMode, index));
    });
    connect(_render_mode, activated, this,
            [this](int index) { changedRenderMode(currentData(_render_mode, index)); });

    connectRows(this, livePairs(*this));
    connectRows(this, liveToggles(*this));
    connectRows(this, overrides(*this));
    connectRows(this, liveChoices(*this));
    connectRows(this, liveNumbers(*this));
    connect(_final_gather_radius, &QOXWheelPrec::valueChanged, this,
            &Self::changedFinalGatherRadius);
    connect(_indirect_radius, &QOXWheelPrec::valueChanged, this,
            &Self::changedIndirectPhotonRadius);
}

// ---------------------------------------------------------------------------------------------
// Live settings: host store, updateGUI, render update, modified

#define OX_LIVE_SLOT(slot, type, field)                                                            \
    void oxRenderSettings::slot(type value)                                                        \
    {                                                                                              \
        writeLiveParameter(&P::field, value);                                                      \
        refreshLive();                                                                             \
    }
OX_LIVE_SLOT(changedInteractiveReflectionDepth, int, maxReflectionDepth)
OX_LIVE_SLOT(changedStillFrameReflectionDepth, int, stillFrameReflectionDepth)
OX_LIVE_SLOT(changedInteractiveQualityMode, int, interactiveQualityMode)
OX_LIVE_SLOT(changedInteractiveQuality, int, interactiveQuality)
OX_LIVE_SLOT(changedRenderMode, int, stillQualityMode)
OX_LIVE_SLOT(changedStillFrameQuality, int, stillQuality)
OX_LIVE_SLOT(changedEnvironmentInteractiveQuality, int, environmentInteractiveQuality)
OX_LIVE_SLOT(changedEnvironmentStillQuality, int, environmentStillQuality)
OX_LIVE_SLOT(changedPhotonDispersionQuality, int, photonDispersionQuality)
OX_LIVE_SLOT(changedPhotonMode, int, photonMode)
OX_LIVE_SLOT(changedPhotonTraceDepth, int, photonTraceDepth)
OX_LIVE_SLOT(changedPhotonNoiseReductionSteps, int, photonNoiseReductionSteps)
OX_LIVE_SLOT(changedPhotonUseAutomaticRadius, bool, photonUseAutomaticRadius)
OX_LIVE_SLOT(changedPhotonLookupCount, int, photonLookupCount)
OX_LIVE_SLOT(changedUseFinalGatherForGlossy, bool, useFinalGatherForGlossy)
OX_LIVE_SLOT(changedInteractivePhotonCount, int, interactivePhotonCount)
OX_LIVE_SLOT(changedStillFramePhotonCount, int, photonCount)
OX_LIVE_SLOT(changedInteractiveFinalGatherQuality, int, interactiveFinalGatherQuality)
OX_LIVE_SLOT(changedStillFrameFinalGatherQuality, int, finalGatherQuality)
OX_LIVE_SLOT(changedPhotonMapRefreshMode, int, photonMapRefreshMode)
OX_LIVE_SLOT(changedPhotonMapFreezeMode, bool, photonMapFreezeMode)
#undef OX_LIVE_SLOT

void oxRenderSettings::changedStillFrameQualityMode(int mode)
{
    writeLiveAndRecord(currentPreset, &P::stillQualityMode, mode);
    refreshLive();
}

void oxRenderSettings::changedFinalGatherRadius(double radius)
{
    // The widget shows four times the host's radius.
    writeLiveParameter(&P::finalGatherRadius, float(radius * 0.25));
    refreshLive();
}

void oxRenderSettings::changedIndirectPhotonRadius(double radius)
{
    writeLiveParameter(&P::indirectPhotonRadius, float(radius));
    refreshLive();
}

// ---------------------------------------------------------------------------------------------
// Host store and updateGUI

#define OX_OVERRIDE_SLOT(name)                                                                     \
    void oxRenderSettings::changedOverride##name(bool on)                                          \
    {                                                                                              \
        writeLiveParameter(&P::ignoreOverride##name, !on);                                         \
        updateGUI();                                                                               \
    }
OX_OVERRIDE_SLOT(IBLQuality)
OX_OVERRIDE_SLOT(IlluminationMode)
OX_OVERRIDE_SLOT(ReflectionQuality)
OX_OVERRIDE_SLOT(TraceDepth)
#undef OX_OVERRIDE_SLOT

// ---------------------------------------------------------------------------------------------
// Refresh

void oxRenderSettings::updateQualityWidgets()
{
    refreshRows(livePairs(*this), live);
    refreshRows(liveToggles(*this), live);
    refreshRows(liveChoices(*this), live);
    refreshRows(liveNumbers(*this), live);

    const int interactiveDepth = oxRenderParameter::getInteractiveReflectionDepth();
    const int stillDepth = oxRenderParameter::getStillFrameReflectionDepth();
    const int maxDepth = int(std::max(unsigned(interactiveDepth), unsigned(stillDepth)));
    quietSlider(_max_trace_depth_slider, maxDepth, false);
    quietValue(_max_trace_depth_spinbox, maxDepth);

    quietIndex(_interactiveQualityMode,
               illuminationModeIndex(oxRenderParameter::getInteractiveQualityMode()));
    const int stillMode = illuminationModeIndex(oxRenderParameter::getStillFrameQualityMode());
    quietIndex(_stillFrameQualityMode, stillMode);
    quietIndex(_render_mode, stillMode);

    const int interactive = oxRenderParameter::getInteractiveQuality();
    const int still = oxRenderParameter::getStillFrameQuality();
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
    quiet(_environmentStillFrameQuality, [envInteractive, envStill](QSlider* slider) {
        if (envStill > slider->maximum())
            slider->setMaximum(envInteractive);
        slider->setValue(envStill);
    });
    quietValue(_environmentStillFrameQualitySpinbox, envStill);

    bool any = false;
    for (const Toggle<oxLiveField>& row : overrides(*this)) {
        refreshRow(row, live);
        any = any || row.widget->isChecked();
    }
    quietChecked(_allowMaterialOverrides, any);

    updatePhotonWidgets();
}

void oxRenderSettings::updatePhotonWidgets()
{
    const int mode = oxRenderParameter::getPhotonMode();
    const bool photons = mode > 0;
    const bool spectral = oxRaytracingManager::isSpectralRaytracingEnable();

    for (QWidget* w :
         std::initializer_list<QWidget*>{_photonDispersionQuality, _photonDispersionQualitySpinbox,
                                         _photonDispersionQualityLabel}) {
        quiet(w, [photons, spectral](QWidget* widget) {
            widget->setEnabled(photons);
            widget->setVisible(spectral);
        });
    }

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
    quietEnabled(_use_automatic_photon_radius, photons);
    for (QWidget* w : std::initializer_list<QWidget*>{_indirect_radius_label, _indirect_radius}) {
        quiet(w, [photons, automatic](QWidget* widget) {
            widget->setEnabled(photons && !automatic);
            widget->setVisible(!automatic);
        });
    }
    quiet(_indirect_radius, [](QOXWheelPrec* wheel) {
        wheel->setValue(double(oxRenderParameter::getIndirectPhotonRadius()));
    });

    for (QWidget* w : std::initializer_list<QWidget*>{
             _interactive_photon_count_label, _interactive_photon_count,
             _stillframe_photon_count_label, _stillframe_photon_count,
             _interactive_finalgather_quality_label, _interactive_finalgather_quality_slider,
             _interactive_finalgather_quality_spinbox, _finalgather_quality_label,
             _finalgather_quality_slider, _finalgather_quality_spinbox, _freeze_update})
        quietEnabled(w, photons);

    const bool gather = photons && (oxRenderParameter::getInteractiveFinalGatherQuality() > 0 ||
                                    oxRenderParameter::getStillFrameFinalGatherQuality() > 0);
    for (QWidget* w : std::initializer_list<QWidget*>{_photon_refresh_mode, _refresh_mode_label,
                                                      _use_final_gather_for_glossy})
        quietEnabled(w, gather);
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
}

// The window's bindings: each widget writes its store with its refresh class, and updateGUI
// brings every widget back from the stores.

#include "oxImageMetaData.h"
#include "oxMaterialInterface.h"
#include "oxMessage.h"
#include "oxRaytracer.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderPasses.h"
#include "oxScene.h"
#include "oxSceneServices.h"

#include "oxWindowBindingSupport.h"

#include <QSignalSpy>

#include <functional>
#include <string>
#include <vector>

namespace {

using BindingTest = oxWindowBindingTest;

// One binding: how the user changes the widget, and whether the new value reached its store.
struct Binding {
    const char* widget;
    std::function<void(oxRenderSettings&)> change;
    std::function<bool(oxRenderSettings&)> landed;
};

std::vector<Binding> liveBindings()
{
    using P = oxRenderParameter;
    using W = oxRenderSettings;
    return {
        {"_aa_threshold_quality", [](W& w) { choose(w._aa_threshold_quality, 2); },
         [](W&) { return P::getAdaptiveAAThresholdQuality() == 2; }},
        {"_filtertype", [](W& w) { choose(w._filtertype, w._filtertype->findData(3)); },
         [](W&) {
             return oxPixelfilterFactory::getPixelFilterType() == 3 &&
                    oxRaytracingManager::getRaytracingUtils()->getActivePixelFilter().type == 3;
         }},
        {"_filtersize", [](W& w) { w._filtersize->setValue(2.5); },
         [](W&) {
             return oxPixelfilterFactory::getPixelFilterWidth() == 2.5f &&
                    oxRaytracingManager::getRaytracingUtils()->getActivePixelFilter().width == 2.5f;
         }},
        {"_interactive_depth_slider", [](W& w) { w._interactive_depth_slider->setValue(5); },
         [](W& w) {
             return P::getInteractiveReflectionDepth() == 5 &&
                    w._interactive_depth_spinbox->value() == 5;
         }},
        {"_stillframe_depth_spinbox", [](W& w) { w._stillframe_depth_spinbox->setValue(7); },
         [](W& w) {
             return P::getStillFrameReflectionDepth() == 7 &&
                    w._stillframe_depth_slider->value() == 7;
         }},
        {"_clamping_group_box", [](W& w) { w._clamping_group_box->setChecked(false); },
         [](W&) { return !P::getClamping(); }},
        {"_reflection_clamp_value", [](W& w) { w._reflection_clamp_value->setValue(4.0); },
         [](W& w) {
             return P::getReflectionClampValue() == 4.0f &&
                    w.getCurrentPreset().reflectionClampValue == 4.0f;
         }},
        {"_interactiveQualityMode", [](W& w) { choose(w._interactiveQualityMode, 4); },
         [](W&) { return P::getInteractiveQualityMode() == 3; }},
        {"_stillFrameQualityMode", [](W& w) { choose(w._stillFrameQualityMode, 0); },
         [](W& w) {
             return P::getStillFrameQualityMode() == -1 &&
                    w.getCurrentPreset().stillQualityMode == -1;
         }},
        {"_render_mode", [](W& w) { choose(w._render_mode, 2); },
         [](W& w) {
             return P::getStillFrameQualityMode() == 1 &&
                    w._stillFrameQualityMode->currentIndex() == 2;
         }},
        {"_interactiveQualitySpinbox", [](W& w) { w._interactiveQualitySpinbox->setValue(3); },
         [](W& w) {
             return P::getInteractiveQuality() == 3 && w._interactiveQuality->value() == 3;
         }},
        {"_stillFrameQuality", [](W& w) { w._stillFrameQuality->setValue(2); },
         [](W&) { return P::getStillFrameQuality() == 2; }},
        {"_environmentInteractiveQuality",
         [](W& w) { w._environmentInteractiveQuality->setValue(2); },
         [](W&) { return P::getEnvironmentInteractiveQuality() == 2; }},
        {"_environmentStillFrameQualitySpinbox",
         [](W& w) { w._environmentStillFrameQualitySpinbox->setValue(3); },
         [](W&) { return P::getEnvironmentStillQuality() == 3; }},
        {"_photon_mode", [](W& w) { choose(w._photon_mode, 2); },
         [](W& w) { return P::getPhotonMode() == 2 && w._photon_trace_depth_slider->isEnabled(); }},
        {"_photon_trace_depth_spinbox", [](W& w) { w._photon_trace_depth_spinbox->setValue(40); },
         [](W&) { return P::getPhotonTraceDepth() == 40; }},
        {"_use_automatic_photon_radius",
         [](W& w) { w._use_automatic_photon_radius->setChecked(true); },
         [](W&) { return P::getPhotonUseAutomaticRadius(); }},
        {"_final_gather_radius", [](W& w) { w._final_gather_radius->setValue(10.0); },
         [](W&) { return P::getFinalGatherRadius() == 2.5f; }},
        {"_indirect_radius", [](W& w) { w._indirect_radius->setValue(10.0); },
         [](W&) { return P::getIndirectPhotonRadius() == 10.0f; }},
        {"_interactive_photon_count", [](W& w) { w._interactive_photon_count->setValue(12); },
         [](W&) { return P::getInteractivePhotonCount() == 12; }},
        {"_stillframe_photon_count", [](W& w) { w._stillframe_photon_count->setValue(21); },
         [](W&) { return P::getStillFramePhotonCount() == 21; }},
        {"_finalgather_quality_slider", [](W& w) { w._finalgather_quality_slider->setValue(3); },
         [](W&) { return P::getStillFrameFinalGatherQuality() == 3; }},
        {"_interactive_finalgather_quality_spinbox",
         [](W& w) { w._interactive_finalgather_quality_spinbox->setValue(2); },
         [](W&) { return P::getInteractiveFinalGatherQuality() == 2; }},
        {"_photon_refresh_mode", [](W& w) { choose(w._photon_refresh_mode, 0); },
         [](W&) { return P::getPhotonMapRefreshMode() == 0; }},
        {"_freeze_update", [](W& w) { w._freeze_update->setChecked(true); },
         [](W&) { return P::getPhotonMapFreezeMode() == 1; }},
        {"_spectral_illuminant", [](W& w) { choose(w._spectral_illuminant, 0); },
         [](W& w) { return P::getIlluminant() == 0 && w.getCurrentPreset().illuminant == 0; }},
    };
}

// Widgets that only refresh: the host's stores change but neither the scene nor the render.
std::vector<Binding> refreshOnlyBindings()
{
    using P = oxRenderParameter;
    using W = oxRenderSettings;
    return {
        {"_use_infinite_rendering", [](W& w) { w._use_infinite_rendering->setChecked(false); },
         [](W& w) {
             return !P::getUseInfiniteRendering() && !w.getCurrentPreset().useInfiniteRendering;
         }},
        {"_use_time", [](W& w) { w._time_or_samples_group->idPressed(0); },
         [](W& w) {
             return P::getUseRenderTimeLimit() && w.getCurrentPreset().useTimeLimit &&
                    w._time_hours->isEnabled() && !w._image_samples_spinbox->isEnabled();
         }},
        {"_samples_threshold", [](W& w) { w._samples_threshold->setValue(9); },
         [](W& w) {
             return oxOSGWidget::getSamplesThreshold() == 9 &&
                    w.getCurrentPreset().samplesThreshold == 9;
         }},
        {"_allowOverrideIBLQuality", [](W& w) { w._allowOverrideIBLQuality->setChecked(false); },
         [](W&) { return P::getIgnoreOverrideIBLQuality(); }},
        {"_allowOverrideTraceDepth", [](W& w) { w._allowOverrideTraceDepth->setChecked(false); },
         [](W&) { return P::getIgnoreOverrideTraceDepth(); }},
        {"_enable_nurbs_raytracing", [](W& w) { w._enable_nurbs_raytracing->setChecked(true); },
         [](W&) { return oxRaytracingManager::getRaytracingUtils()->getNurbsMode() != 0; }},
        {"_enable_cost_visualization", [](W& w) { w._enable_cost_visualization->setChecked(true); },
         [](W&) { return P::getRenderer() == 5; }},
        {"_optimize_lights", [](W& w) { w._optimize_lights->setChecked(false); },
         [](W&) { return !P::getLightOptimizationMode(); }},
        {"_raytracing_cores_limit", [](W& w) { w._raytracing_cores_limit->setValue(1); },
         [](W&) { return oxTBBInit::the().getCoreUsageLimit() == 1; }},
        {"_use_ray_splitting", [](W& w) { w._use_ray_splitting->setChecked(false); },
         [](W& w) { return !P::getUseRaySplitting() && !w.getCurrentPreset().useRaySplitting; }},
        {"_denoiser_filter", [](W& w) { choose(w._denoiser_filter, 2); },
         [](W& w) {
             return P::getDenoiseFilter() == 3 && w.getCurrentPreset().denoiseFilterType == 3 &&
                    !w._denoiser_type->isHidden();
         }},
        {"_use_two_sample_mis", [](W& w) { w._use_two_sample_mis->setChecked(true); },
         [](W& w) {
             return P::getUseTwoSampleImportanceSampling() && w.getCurrentPreset().useTwoSampleMIS;
         }},
        {"_display_colorspace", [](W& w) { choose(w._display_colorspace, 1); },
         [](W& w) {
             return oxOSGWidget::getDisplayColorspace() == 1 && w._gammaSlider->isHidden();
         }},
    };
}

TEST_F(BindingTest, LiveWidgetsUpdateTheRenderAndMarkTheSceneRefreshOnlyOnesDoNot)
{
    for (const bool live : {true, false}) {
        for (const Binding& binding : live ? liveBindings() : refreshOnlyBindings()) {
            SCOPED_TRACE(binding.widget);
            resetWindowHostState();
            window->updateGUI();
            oxController::setModified(false);

            // The render update must see the new value.
            int updates = 0;
            bool landedBeforeUpdate = false;
            QMetaObject::Connection probe = QObject::connect(
                oxController::instance(), &oxController::renderUpdateRequested, [&]() {
                    if (updates++ == 0)
                        landedBeforeUpdate = binding.landed(*window);
                });
            binding.change(*window);
            QObject::disconnect(probe);

            EXPECT_TRUE(binding.landed(*window));
            EXPECT_EQ(updates > 0, live);
            EXPECT_EQ(landedBeforeUpdate, live);
            EXPECT_EQ(oxController::isModified(), live);
        }
    }
    // One filter size makes a square filter.
    window->_filtersize->setValue(3.0);
    EXPECT_EQ(oxPixelfilterFactory::getPixelFilterHeight(), 3.0f);
    EXPECT_EQ(oxRaytracingManager::getRaytracingUtils()->getActivePixelFilter().height, 3.0f);
}

TEST_F(BindingTest, SamplesTimeAndDisplayMarkTheSceneWithoutRenderUpdate)
{
    const uint64_t updates = oxController::getRenderUpdateCount();

    window->_image_samples_spinbox->setValue(700);
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 700);
    EXPECT_EQ(oxOSGWidget::getImageSamples(), 700);
    EXPECT_EQ(record().imageSamples, 700);
    EXPECT_EQ(window->_quality_preset->currentIndex(), 4);
    EXPECT_TRUE(oxController::isModified());

    // A preset sets both sample stores; "Custom" sets nothing but still marks the scene.
    choose(window->_quality_preset, 2);
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 512);
    EXPECT_EQ(oxOSGWidget::getImageSamples(), 512);
    oxController::setModified(false);
    choose(window->_quality_preset, 4);
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 512);
    EXPECT_TRUE(oxController::isModified());

    // The spin boxes are summed; only the minutes' carry folds into the hours, so 59 min 90 s
    // is 3600 + 90 - 60 seconds.
    window->_time_hours->setValue(2);
    window->_time_minutes->setValue(5);
    EXPECT_EQ(oxRenderParameter::getRenderTimeInSeconds(), 2u * 3600 + 5 * 60 + 30);
    window->changedRenderTime(0, 59, 90);
    EXPECT_EQ(oxRenderParameter::getRenderTimeInSeconds(), 3630u);
    EXPECT_EQ(record().renderTime, 3630u);
    EXPECT_EQ(window->_time_hours->value(), 1);
    EXPECT_EQ(window->_time_minutes->value(), 0);
    EXPECT_EQ(window->_time_seconds->value(), 30);
    window->changedRenderTime(-2, 1, 5);
    EXPECT_EQ(oxRenderParameter::getRenderTimeInSeconds(), 65u);

    window->_gammaSlider->setValue(1.8);
    EXPECT_EQ(oxOSGWidget::getDisplayGamma(), (std::array<float, 3>{{1.8f, 1.8f, 1.8f}}));

    // Display luminance is a photometric setting: ignored while the scene isn't photometric.
    const float nonPhotometric = oxRenderParameter::getDisplayLuminance();
    window->changedDisplayLuminance(500.0);
    EXPECT_EQ(oxRenderParameter::getDisplayLuminance(), nonPhotometric);
    oxRenderParameter::setPBParameters(true);
    window->changedDisplayLuminance(500.0);
    EXPECT_EQ(oxRenderParameter::getDisplayLuminance(), 500.0f);
    EXPECT_EQ(oxOSGWidget::getDisplayLuminance(), 500.0f);
    EXPECT_EQ(record().displayLuminance, 500.0f);
    window->changedSim2LuminanceMapping(3.0);
    EXPECT_EQ(oxRenderParameter::getSim2LuminanceMapping(), 3.0f);
    EXPECT_EQ(oxOSGWidget::getSim2LuminanceMapping(), 3.0f);

    EXPECT_EQ(oxController::getRenderUpdateCount(), updates);
}

TEST_F(BindingTest, RejectedValuesChangeNothing)
{
    // Only the two buttons of the finish mode exist.
    record().useTimeLimit = true;
    window->changedRenderingFinishMode(2);
    EXPECT_TRUE(record().useTimeLimit);
    EXPECT_FALSE(oxRenderParameter::getUseRenderTimeLimit());

    // The legacy denoiser becomes the AI denoiser, with a note.
    window->changedDenoiseFilter(1);
    EXPECT_EQ(oxRenderParameter::getDenoiseFilter(), 2u);
    EXPECT_EQ(record().denoiseFilterType, 2u);
    EXPECT_TRUE(log().contains(oxLog::Info, kLegacyDenoiserMessage));

    // A core limit of 0 means no limit, and no limit shows as 0.
    window->_raytracing_cores_limit->setValue(1);
    EXPECT_EQ(oxTBBInit::the().getCoreUsageLimit(), 1);
    window->changedNumCoresLimit(0);
    EXPECT_EQ(oxTBBInit::the().getCoreUsageLimit(), oxTBBInit::noLimit);
    oxTBBInit::the().setCoreUsageLimit(oxTBBInit::the().getNumLogicalCores());
    window->updateGUI();
    EXPECT_EQ(window->_raytracing_cores_limit->value(), 0);
}

TEST_F(BindingTest, PostProcessingSendsAllFlagsAndOnlyVisibleOnesMarkTheScene)
{
    window->_histGroupBox->setChecked(true);
    EXPECT_TRUE(oxController::isModified());
    oxController::setModified(false);
    window->_histRed->setChecked(true);
    window->_histLum->setChecked(true);
    EXPECT_FALSE(oxController::isModified());
    window->_enable_dithering->setChecked(false);

    const int flags = oxOSGWidget::getPostprocessingFlags();
    EXPECT_EQ(flags, (1 << 2) | (1 << 3) | (1 << 4) | (1 << 6) | (1 << 9));

    // A script call carries the new state in its argument, before the box shows it.
    window->changedDynamicTonemapping(true);
    EXPECT_TRUE(oxOSGWidget::getPostprocessingFlags() & (1 << 1));
    EXPECT_FALSE(window->_dynToneMap->isChecked());
    window->updateGUI();
    EXPECT_TRUE(window->_dynToneMap->isChecked());
    EXPECT_TRUE(window->_histLum->isChecked());
    EXPECT_FALSE(window->_histBlue->isChecked());
}

TEST_F(BindingTest, OutputWidgetsWriteOnlyTheRecord)
{
    window->_quickFilename->setText(QStringLiteral("C:/renders/ünicode.png"));
    emit window->_quickFilename->editingFinished();
    EXPECT_EQ(record().filename, "C:/renders/ünicode.png");

    window->_timeStamp->setChecked(true);
    window->_renderAnimation->setChecked(true);
    choose(window->_animFormatCB, 1);
    window->_fps->setValue(30);
    choose(window->_ssfactor, 1);
    window->_alpha->setChecked(true);
    window->_tiff_hdr->setChecked(true);
    choose(window->_icc_profile, 2);
    window->_alpha_color->setColor(0.25f, 0.5f, 0.75f);

    EXPECT_TRUE(record().timeStamp);
    EXPECT_TRUE(record().renderAnimation);
    EXPECT_EQ(record().exportType, 1);
    EXPECT_EQ(record().fps, 30);
    EXPECT_EQ(record().ssFactor, 3);
    EXPECT_TRUE(record().alpha);
    EXPECT_FALSE(record().premultiply) << "alpha leaves the premultiply flag alone";
    EXPECT_TRUE(record().tiffHDR);
    EXPECT_EQ(record().iccProfileID, 2);
    EXPECT_EQ(record().backgroundColorG, 0.5f);
    // A movie is exported at a frame rate, images with a frame step.
    EXPECT_TRUE(window->_fps->isEnabled());
    EXPECT_FALSE(window->_frame_step->isEnabled());

    window->_premultiply->setChecked(true);
    EXPECT_TRUE(record().premultiply);
    EXPECT_TRUE(oxRaytracer::getPremultiply());
    window->_premultiply->setChecked(false);

    EXPECT_FALSE(oxController::isModified());
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 256);
}

TEST_F(BindingTest, MetadataBoxesSetTheirBitsAndEmbedAllSetsEvery)
{
    record().metaDataFlags = 0;
    window->updateGUI();
    window->_embed_camera->setChecked(true);
    window->_embed_switch_material_choices->setChecked(true);
    EXPECT_EQ(record().metaDataFlags, CAMERA_DATA | SWITCH_MATERIAL_CHOICE_STATE);
    window->_embed_render_settings->setChecked(true);
    EXPECT_EQ(record().metaDataFlags & 120, 120);

    window->_embed_all->setChecked(true);
    EXPECT_EQ(record().metaDataFlags, 255);
    EXPECT_FALSE(window->_embed_camera->isEnabled());
    window->_embed_all->setChecked(false);
    EXPECT_EQ(record().metaDataFlags, 0);
    EXPECT_TRUE(window->_embed_camera->isEnabled());
    EXPECT_FALSE(window->_embed_camera->isChecked());
}

TEST_F(BindingTest, EveryPassBoxSetsItsFlagAndTheTwinsFollow)
{
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        if (!info.widget)
            continue;
        SCOPED_TRACE(info.widget);
        auto* box = window->findChild<QAbstractButton*>(QLatin1String(info.widget));
        ASSERT_NE(box, nullptr);
        box->setChecked(!box->isChecked());
        EXPECT_EQ(record().getPassFlag(info.flag), box->isChecked());
        EXPECT_TRUE(window->getStatisticsTimer().isActive());
        QCoreApplication::processEvents();

        // From the record back: the box and its twin show the flag.
        record().passFlag(info.flag) = false;
        window->updateGUI();
        EXPECT_FALSE(box->isChecked());
        if (info.twinWidget) {
            auto* twin = window->findChild<QAbstractButton*>(QLatin1String(info.twinWidget));
            ASSERT_NE(twin, nullptr);
            twin->setChecked(true);
            EXPECT_TRUE(record().getPassFlag(info.flag));
        }
    }
    window->changedExportSpecularLightPass(true);
    EXPECT_TRUE(record().specular_light_pass);
}

TEST_F(BindingTest, RefreshShowsTheHostStoresAndNeverCallsASlot)
{
    // The host store wins over the record's mirror.
    record().imageSamples = 5;
    record().stillQualityMode = 0;
    oxRenderParameter::setImageSamples(5000);
    oxRenderParameter::setStillFrameQualityMode(2);
    oxRenderParameter::setFinalGatherRadius(3.0f);
    oxRenderParameter::setInteractiveReflectionDepth(3);
    oxRenderParameter::setStillFrameReflectionDepth(20);
    oxRenderParameter::setSpectralRaytracing(true);
    oxRenderParameter::setClamping(true);
    oxRenderParameter::setPhotonMode(1);
    oxRenderParameter::setPhotonTraceDepth(70);
    oxRenderParameter::setPhotonUseAutomaticRadius(true);
    oxRenderParameter::setIgnoreOverrideIBLQuality(true);
    oxRenderParameter::setDenoiseFilter(0);
    oxPixelfilterFactory::setPixelFilterWidth(1.5f);
    oxPixelfilterFactory::setPixelFilterHeight(2.0f);
    oxOSGWidget::setSamplesThreshold(12);
    const int samplesMaximum = window->_image_samples_slider->maximum();
    const uint64_t updates = oxController::getRenderUpdateCount();
    oxController::setModified(false);

    window->updateGUI();

    EXPECT_EQ(window->_image_samples_spinbox->value(), 5000);
    EXPECT_EQ(window->_image_samples_slider->value(), 5000);
    EXPECT_GE(window->_image_samples_slider->maximum(), std::max(samplesMaximum, 5000));
    EXPECT_EQ(window->_samples_threshold->value(), 12);
    EXPECT_EQ(window->_stillFrameQualityMode->currentIndex(), 3);
    EXPECT_EQ(window->_render_mode->currentIndex(), 3);
    EXPECT_DOUBLE_EQ(window->_final_gather_radius->value(), 12.0);
    EXPECT_EQ(window->_max_trace_depth_spinbox->value(), 20);
    EXPECT_EQ(window->_stillframe_depth_slider->value(), 20);
    // Spectral rendering disables clamping, which still shows the host's state.
    EXPECT_FALSE(window->_clamping_group_box->isEnabled());
    EXPECT_TRUE(window->_clamping_group_box->isChecked());
    EXPECT_TRUE(window->_photon_trace_depth_slider->isEnabled());
    EXPECT_GE(window->_photon_trace_depth_slider->maximum(), 70);
    EXPECT_TRUE(window->_indirect_radius->isHidden());
    EXPECT_FALSE(window->_allowOverrideIBLQuality->isChecked());
    EXPECT_TRUE(window->_allowMaterialOverrides->isChecked());
    EXPECT_TRUE(window->_denoiser_type->isHidden());
    EXPECT_DOUBLE_EQ(window->_filtersize->value(), 2.0);

    // Widgets were written with their signals blocked: no slot ran and wrote back.
    EXPECT_EQ(record().imageSamples, 5);
    EXPECT_EQ(record().stillQualityMode, 0);
    EXPECT_FALSE(oxController::isModified());
    EXPECT_EQ(oxController::getRenderUpdateCount(), updates);

    // Sliders widen but never narrow again.
    oxRenderParameter::setImageSamples(16);
    window->updateGUI();
    EXPECT_GE(window->_image_samples_slider->maximum(), 5000);
}

// A raytracer whose pixel filter hand-over asks the window for a refresh, as a host might
// while the window is re-reading its parameters.
class RefreshingUtils : public oxRaytracingUtilsBase {
public:
    explicit RefreshingUtils(oxRenderSettings* w) : window(w) {}
    void updatePixelFilter() override
    {
        oxRaytracingUtilsBase::updatePixelFilter();
        locked = window->isGuiUpdateLocked();
        window->updateGUI();
        samplesDuringLock = window->_image_samples_spinbox->value();
    }
    oxRenderSettings* window;
    bool locked = false;
    int samplesDuringLock = 0;
};

TEST_F(BindingTest, HostParameterReloadRefreshesOnceAfterItsLock)
{
    RefreshingUtils utils(window.get());
    oxRaytracingManager::setRaytracingUtils(&utils);
    const int before = window->_image_samples_spinbox->value();
    oxRenderParameter::setImageSamples(999);

    oxMessage message;
    ASSERT_TRUE(oxController::call("oxRenderSettings::update", message));

    EXPECT_TRUE(utils.locked);
    EXPECT_EQ(utils.samplesDuringLock, before) << "a refresh inside the lock does nothing";
    EXPECT_FALSE(window->isGuiUpdateLocked());
    EXPECT_EQ(window->_image_samples_spinbox->value(), 999);
    EXPECT_EQ(oxOSGWidget::getImageSamples(), 999);
    oxRaytracingManager::resetRaytracingUtils();

    // A photometric scene's flag goes to the scene data and the materials, and the
    // photometric display controls show.
    oxSceneData* data = oxSceneDataManager::getSceneData(0);
    ASSERT_NE(data, nullptr);
    EXPECT_TRUE(window->_sim2CF->isHidden());
    oxRenderParameter::setPBParameters(true);
    ASSERT_TRUE(oxController::call("oxRenderSettings::update", message));
    EXPECT_EQ(data->getPhotometric(), 1);
    EXPECT_TRUE(oxInterfaceFactory::getMaterialInterface()->getPhotometricMode());
    EXPECT_FALSE(window->_sim2CF->isHidden());
    EXPECT_FALSE(window->_displayLuminanceSlider->isHidden());
    data->setPhotometric(0);
    oxInterfaceFactory::getMaterialInterface()->setPhotometricMode(false);
}

TEST_F(BindingTest, SpectralSwitchChangesTheRaytracingModeAndLocksClamping)
{
    window->_enable_spectral_raytracing->setChecked(true);
    EXPECT_TRUE(oxRenderParameter::getSpectralRaytracing());
    EXPECT_TRUE(oxOSGWidget::getSpectralRaytracingMode());
    EXPECT_FALSE(window->isGuiUpdateLocked());
    EXPECT_FALSE(window->_clamping_group_box->isEnabled());
    EXPECT_FALSE(window->_reflection_clamp_value->isEnabled());

    window->_enable_spectral_raytracing->setChecked(false);
    EXPECT_FALSE(oxRenderParameter::getSpectralRaytracing());
    EXPECT_FALSE(oxOSGWidget::getSpectralRaytracingMode());
    EXPECT_TRUE(window->_clamping_group_box->isEnabled());
}

TEST_F(BindingTest, RefreshRequestsFromAllSourcesCoalesce)
{
    QSignalSpy statistics(&window->getStatisticsTimer(), &QTimer::timeout);
    QSignalSpy variants(&window->getVariantGuiTimer(), &QTimer::timeout);

    window->_start->setValue(3);
    window->_stop->setValue(30);
    window->_frame_step->setValue(2);
    window->_use_multi_layer->setChecked(true);
    window->_export_renderpasses->setChecked(true);
    oxMessage message;
    ASSERT_TRUE(oxController::call("updateRenderModeButton", message));
    for (int i = 0; i < 5; ++i)
        window->updateGUI();
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();

    EXPECT_EQ(statistics.count(), 1);
    EXPECT_EQ(variants.count(), 1);
    EXPECT_EQ(record().stopFrame, 30);
    // A request in a later turn runs again.
    window->updateRenderStatistics();
    QCoreApplication::processEvents();
    EXPECT_EQ(statistics.count(), 2);
}

TEST_F(BindingTest, SnapshotOverlaysFollowTheImageSize)
{
    record().pixel_width = 800.4f;
    record().pixel_height = 600.6f;
    window->_snapshot_frame->setChecked(true);
    EXPECT_TRUE(oxOSGWidget::getSnapshotFrame());
    window->_snapshot_rule_of_thirds->setChecked(true);
    EXPECT_TRUE(oxOSGWidget::getSnapshotRuleOfThirds());
    window->_snapshot_inner_frame->setChecked(true);
    EXPECT_TRUE(oxOSGWidget::getSnapshotInnerFrame());
    EXPECT_FALSE(oxController::isModified());

    oxOSGWidget::setSnapshotRuleOfThirds(false);
    window->updateGUI();
    EXPECT_FALSE(window->_snapshot_rule_of_thirds->isChecked());
    EXPECT_TRUE(window->_snapshot_frame->isChecked());
}

} // namespace

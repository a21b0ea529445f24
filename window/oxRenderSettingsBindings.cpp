// The window's setting bindings: each widget writes its setting into the store where the setting
// lives (the host's services or the current record), and updateGUI brings every widget back
// from those stores. The widgets of each tab are bound in a file of their own; this one ties
// them together with the host's callbacks and the refresh requests.

#include "oxRenderSettingsBindingSupport.h"

#include "QOXMultiLevelComboBox.h"
#include "oxController.h"
#include "oxMaterialInterface.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxOSGWidget.h"
#include "oxPreferencesService.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"
#include "oxSceneServices.h"

#include <QTabWidget>

#include <array>

using namespace oxBindings;

namespace {

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

const std::array<oxNamedCallback, 6> kWindowCallbacks = {{
    {"oxRenderSettings::update", &updateCB},
    {"blockCreated", &clipListCB},
    {"clipCreated", &clipListCB},
    {"deletedAnimationObject", &clipListCB},
    {"renderRegionChanged", &renderRegionChangedCB},
    {"updateRenderModeButton", &updateRenderModeButtonCB},
}};

} // namespace

void oxRenderSettings::connectBindings()
{
    connectOutputBindings();
    connectRaytracingBindings();
    connectQualityBindings();
    connectDisplayBindings();

    connect(&variantGuiTimer, &QTimer::timeout, this, &Self::refreshVariantSetGui);
    connect(&statisticsTimer, &QTimer::timeout, this, &Self::refreshRenderStatistics);
    connect(&variantListTimer, &QTimer::timeout, this, &Self::readBackVariantSetTree);
    if (oxPreferencesService* preferences = oxPreferencesService::the())
        connect(preferences, &oxPreferencesService::preferencesChanged, this,
                &Self::updateRenderStatistics);

    addCallbacks(kWindowCallbacks);

    connectImageSize();
    connectVariantSets();
    connectView();
}

void oxRenderSettings::disconnectBindings()
{
    disconnectVariantSets();
    removeCallbacks(kWindowCallbacks);
}

void oxRenderSettings::refreshLive()
{
    updateGUI();
    oxController::updateRender();
    oxController::setModified(true);
}

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
    updateQualityWidgets();
    updateDisplayWidgets();
    _view->update();
    // Every refresh re-asserts the BRDF mode on the materials; that costs one comparison
    // unless the mode changed (a scene loaded, a preset applied).
    switchBrdfMode(oxRenderParameter::getBrdfMode(), false);
}

// ---------------------------------------------------------------------------------------------
// Refreshes requested through the timers and by the host

void oxRenderSettings::refreshHostParameters()
{
    {
        const oxScopedFlag lock(guiUpdateLock);
        reassertHostParameters();
    }
    updateGUI();
}

// The scene replaced the host's parameters: each value goes through its setter again so that
// the setters' side effects run for the values the scene brought.
void oxRenderSettings::reassertHostParameters()
{
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
}

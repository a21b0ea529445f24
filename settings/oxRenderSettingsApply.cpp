#include "oxRenderSettingsApply.h"

#include "oxMaterialInterface.h"
#include "oxOSGWidget.h"
#include "oxPixelfilterFactory.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"
#include "oxSceneServices.h"

using RP = oxRenderParameter;

oxRenderSettingsPreset captureRenderSettings(const oxRenderSettingsPreset& record)
{
    oxRenderSettingsPreset p = record;
    p.filterType = oxPixelfilterFactory::getPixelFilterType();
    p.filterWidth = oxPixelfilterFactory::getPixelFilterWidth();
    p.filterHeight = oxPixelfilterFactory::getPixelFilterHeight();
    p.imageSamples = RP::getImageSamples();
    p.samplesThreshold = oxOSGWidget::getSamplesThreshold();
    p.renderTime = RP::getRenderTimeInSeconds();
    p.useTimeLimit = RP::getUseRenderTimeLimit();
    p.useInfiniteRendering = RP::getUseInfiniteRendering();
    p.denoiseFilterType = RP::getDenoiseFilter();
    p.useRaySplitting = RP::getUseRaySplitting();
    p.denoiserType = RP::getDenoiserType();
    p.denoiserInput = RP::getDenoiserInput();
    p.denoiseAlpha = RP::getDenoiseAlpha();
    p.useTwoSampleMIS = RP::getUseTwoSampleImportanceSampling();
    p.pbParameters = RP::getPBParameters();
    p.spectralRendering = RP::getSpectralRaytracing();
    p.displayLuminance = RP::getDisplayLuminance();
    p.sim2LuminanceMapping = RP::getSim2LuminanceMapping();
    p.ignoreOverrideTraceDepth = RP::getIgnoreOverrideTraceDepth();
    p.ignoreOverrideIlluminationMode = RP::getIgnoreOverrideIlluminationMode();
    p.ignoreOverrideReflectionQuality = RP::getIgnoreOverrideReflectionQuality();
    p.ignoreOverrideIBLQuality = RP::getIgnoreOverrideIBLQuality();
    p.lightOptimizationMode = RP::getLightOptimizationMode() ? 1 : 0;
    p.brdfMode = RP::getBrdfMode();
    p.aaThresholdQuality = RP::getAdaptiveAAThresholdQuality();
    p.maxReflectionDepth = RP::getInteractiveReflectionDepth();
    p.stillFrameReflectionDepth = RP::getStillFrameReflectionDepth();
    p.enableClamping = RP::getClamping();
    p.reflectionClampValue = RP::getReflectionClampValue();
    p.interactiveQualityMode = RP::getInteractiveQualityMode();
    p.interactiveQuality = RP::getInteractiveQuality();
    p.stillQualityMode = RP::getStillFrameQualityMode();
    p.stillQuality = RP::getStillFrameQuality();
    p.environmentInteractiveQuality = RP::getEnvironmentInteractiveQuality();
    p.environmentStillQuality = RP::getEnvironmentStillQuality();
    p.photonDispersionQuality = RP::getPhotonDispersionQuality();
    // Without raytracing utilities there are no live NURBS values; the record's stand.
    if (const oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils()) {
        p.nurbsMode = utils->getNurbsMode();
        p.nurbsEpsilon = utils->getNurbsEpsilon();
        p.nurbsNewtonEpsilon = utils->getNurbsNewtonEpsilon();
        p.nurbsUsePreclassification = utils->getNurbsUsePreclassification();
        p.nurbsMinDepthSurface = utils->getNurbsMinDepthSurface();
        p.nurbsMaxDepthSurface = utils->getNurbsMaxDepthSurface();
        p.nurbsThresholdSurface = utils->getNurbsThresholdSurface();
        p.nurbsMinDepthCurve = utils->getNurbsMinDepthCurve();
        p.nurbsMaxDepthCurve = utils->getNurbsMaxDepthCurve();
        p.nurbsThresholdCurve = utils->getNurbsThresholdCurve();
    }
    p.renderer = RP::getRenderer();
    p.sampleOffset = RP::getRaytracingSampleOffset();
    p.interactiveTextureSharpness = RP::getInteractiveTextureSharpness();
    p.textureSharpness = RP::getStillFrameTextureSharpness();
    p.lightEvaluationThreshold = RP::getLightEvaluationThreshold();
    p.highQualityTextureFiltering = RP::getUseHighQualityTextureFiltering();
    p.stillFrameSupersampling = RP::getStillFrameSupersampling();
    p.photonMode = RP::getPhotonMode();
    p.photonTraceDepth = RP::getPhotonTraceDepth();
    p.photonNoiseReductionSteps = RP::getPhotonNoiseReductionSteps();
    p.photonUseAutomaticRadius = RP::getPhotonUseAutomaticRadius();
    p.photonLookupCount = RP::getPhotonLookupCount();
    p.interactiveFinalGatherQuality = RP::getInteractiveFinalGatherQuality();
    p.finalGatherQuality = RP::getStillFrameFinalGatherQuality();
    p.finalGatherRadius = RP::getFinalGatherRadius();
    p.useFinalGatherForGlossy = RP::getUseFinalGatherForGlossy();
    p.indirectPhotonRadius = RP::getIndirectPhotonRadius();
    p.interactivePhotonCount = RP::getInteractivePhotonCount();
    p.photonCount = RP::getStillFramePhotonCount();
    p.photonMapRefreshMode = RP::getPhotonMapRefreshMode();
    p.photonMapFreezeMode = RP::getPhotonMapFreezeMode();
    p.illuminant = RP::getIlluminant();
    return p;
}

void mergeRenderSettings(oxRenderSettingsPreset& target, const oxRenderSettingsPreset& source,
                         int mode)
{
    const std::string clip = target.clip;
    const std::string filename = target.filename;
    const oxVariantSetGroups variantSets = target.variantSets;
    const bool pbParameters = target.pbParameters;
    const bool spectralRendering = target.spectralRendering;
    const float displayLuminance = target.displayLuminance;
    const float sim2LuminanceMapping = target.sim2LuminanceMapping;
    const float reflectionClampValue = target.reflectionClampValue;

    if (&target != &source)
        target = source;
    if (mode & oxRenderSettingsPreset::ClearName)
        target.name.clear();
    if (mode & oxRenderSettingsPreset::KeepClip)
        target.clip = clip;
    if (mode & oxRenderSettingsPreset::KeepFilename)
        target.filename = filename;
    if (mode & oxRenderSettingsPreset::KeepVariantSets)
        target.variantSets = variantSets;
    if (mode & oxRenderSettingsPreset::KeepSpectral)
        target.spectralRendering = spectralRendering;
    if (mode & oxRenderSettingsPreset::KeepPhotometric) {
        target.pbParameters = pbParameters;
        target.displayLuminance = displayLuminance;
        target.sim2LuminanceMapping = sim2LuminanceMapping;
        target.reflectionClampValue = reflectionClampValue;
    }
}

namespace {

// The scene's photometric flag decides which display values reach the services: a record's
// luminances only count while photometric parameters are on.
void pushPhotometric(const oxRenderSettingsPreset& p)
{
    bool photometric = p.pbParameters;
    if (oxSceneData* sceneData = oxSceneDataManager::getSceneData(0)) {
        sceneData->setPhotometric(p.pbParameters ? 1 : 0);
        photometric = sceneData->getPhotometric() != 0;
    }
    oxMaterialInterface* materials = oxInterfaceFactory::getMaterialInterface();
    float sim2 = kStandardSim2LuminanceMapping;
    if (photometric) {
        RP::setDisplayLuminance(p.displayLuminance);
        RP::setSim2LuminanceMapping(p.sim2LuminanceMapping);
        materials->setPhotometricMode(true);
        oxOSGWidget::setDisplayLuminance(p.displayLuminance);
        sim2 = p.sim2LuminanceMapping;
    } else {
        RP::setDisplayLuminance(kStandardDisplayLuminance);
        materials->setPhotometricMode(false);
        RP::setSim2LuminanceMapping(kStandardSim2LuminanceMapping);
        oxOSGWidget::setDisplayLuminance(kStandardDisplayLuminance);
    }
    oxOSGWidget::setSim2LuminanceMapping(sim2);
}

} // namespace

void pushRenderSettings(const oxRenderSettingsPreset& p)
{
    RP::setDenoiseFilter(p.denoiseFilterType);
    RP::setUseRaySplitting(p.useRaySplitting);
    RP::setDenoiserType(p.denoiserType);
    RP::setDenoiserInput(p.denoiserInput);
    RP::setDenoiseAlpha(p.denoiseAlpha);
    RP::setUseTwoSampleImportanceSampling(p.useTwoSampleMIS);

    pushPhotometric(p);

    oxPixelfilterFactory::setPixelFilterType(p.filterType);
    oxPixelfilterFactory::setPixelFilterWidth(p.filterWidth);
    oxPixelfilterFactory::setPixelFilterHeight(p.filterHeight);

    oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils();
    oxOSGWidget::setImageSamples(p.imageSamples);
    oxOSGWidget::setSamplesThreshold(p.samplesThreshold);
    if (!utils)
        return;
    utils->updatePixelFilter();

    RP::setInteractiveReflectionDepth(p.maxReflectionDepth);
    RP::setStillFrameReflectionDepth(p.stillFrameReflectionDepth);
    RP::setImageSamples(p.imageSamples);
    RP::setAdaptiveAAThresholdQuality(p.aaThresholdQuality);
    RP::setClamping(p.enableClamping);
    RP::setReflectionClampValue(p.reflectionClampValue);
    RP::setLightOptimizationMode(p.lightOptimizationMode != 0);
    RP::setBrdfMode(p.brdfMode);
    RP::setPBParameters(p.pbParameters);
    RP::setUseHighQualityTextureFiltering(p.highQualityTextureFiltering);
    RP::setStillFrameSupersampling(p.stillFrameSupersampling);
    RP::setIgnoreOverrideTraceDepth(p.ignoreOverrideTraceDepth);
    RP::setIgnoreOverrideIlluminationMode(p.ignoreOverrideIlluminationMode);
    RP::setIgnoreOverrideReflectionQuality(p.ignoreOverrideReflectionQuality);
    RP::setIgnoreOverrideIBLQuality(p.ignoreOverrideIBLQuality);
    RP::setInteractiveQualityMode(p.interactiveQualityMode);
    RP::setInteractiveQuality(p.interactiveQuality);
    RP::setStillFrameQualityMode(p.stillQualityMode);
    RP::setStillFrameQuality(p.stillQuality);
    RP::setEnvironmentInteractiveQuality(p.environmentInteractiveQuality);
    RP::setEnvironmentStillQuality(p.environmentStillQuality);
    RP::setPhotonDispersionQuality(p.photonDispersionQuality);
    RP::setRenderTimeInSeconds(p.renderTime);
    RP::setUseRenderTimeLimit(p.useTimeLimit);
    RP::setUseInfiniteRendering(p.useInfiniteRendering);
    // Again at the end: the quality and time settings above may have switched it.
    RP::setDenoiseFilter(p.denoiseFilterType);

    utils->setNurbsMode(p.nurbsMode);
    utils->setNurbsEpsilon(p.nurbsEpsilon);
    utils->setNurbsNewtonEpsilon(p.nurbsNewtonEpsilon);
    utils->setNurbsMinDepthSurface(p.nurbsMinDepthSurface);
    utils->setNurbsMaxDepthSurface(p.nurbsMaxDepthSurface);
    utils->setNurbsThresholdSurface(p.nurbsThresholdSurface);
    utils->setNurbsMinDepthCurve(p.nurbsMinDepthCurve);
    utils->setNurbsMaxDepthCurve(p.nurbsMaxDepthCurve);
    utils->setNurbsThresholdCurve(p.nurbsThresholdCurve);
    utils->setNurbsUsePreclassification(p.nurbsUsePreclassification);

    RP::setRenderer(p.renderer);
    RP::setPhotonMode(p.photonMode);
    RP::setPhotonTraceDepth(p.photonTraceDepth);
    RP::setPhotonNoiseReductionSteps(p.photonNoiseReductionSteps);
    RP::setPhotonUseAutomaticRadius(p.photonUseAutomaticRadius);
    RP::setInteractiveFinalGatherQuality(p.interactiveFinalGatherQuality);
    RP::setStillFrameFinalGatherQuality(p.finalGatherQuality);
    RP::setFinalGatherRadius(p.finalGatherRadius);
    RP::setUseFinalGatherForGlossy(p.useFinalGatherForGlossy);
    RP::setIndirectPhotonRadius(p.indirectPhotonRadius);
    RP::setInteractivePhotonCount(p.interactivePhotonCount);
    RP::setStillFramePhotonCount(p.photonCount);
    RP::setPhotonMapRefreshMode(p.photonMapRefreshMode);
    RP::setPhotonMapFreezeMode(p.photonMapFreezeMode);
    RP::setPhotonLookupCount(p.photonLookupCount);
    RP::setRaytracingSampleOffset(p.sampleOffset);
    RP::setInteractiveTextureSharpness(p.interactiveTextureSharpness);
    RP::setStillFrameTextureSharpness(p.textureSharpness);
    RP::setLightEvaluationThreshold(p.lightEvaluationThreshold);
    RP::setIlluminant(p.illuminant);
}

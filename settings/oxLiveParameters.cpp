#include "oxLiveParameters.h"

#include "oxOSGWidget.h"
#include "oxPixelfilterFactory.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"

namespace {

using P = oxRenderSettingsPreset;
using R = oxRenderParameter;
using U = oxRaytracingUtilsBase;
using F = oxPixelfilterFactory;
using S = oxLiveStage;

// The field alone decides T, so that an accessor of another signature (a lambda) converts.
template <typename T>
oxLiveParameter row(S stage, T P::*field, oxNonDeduced<T> (*get)(), void (*set)(oxNonDeduced<T>))
{
    return {stage, oxLiveAccess<T>{field, get, set}};
}

// The NURBS settings live on the raytracer's utilities, which may be missing: reads then give
// the constructed value, writes go nowhere.
template <typename T, T (U::*get)() const>
T nurbsGet()
{
    const U* utils = oxRaytracingManager::getRaytracingUtils();
    return utils ? (utils->*get)() : T();
}

template <typename T, void (U::*set)(T)>
void nurbsSet(T value)
{
    if (U* utils = oxRaytracingManager::getRaytracingUtils())
        (utils->*set)(value);
}

#define OX_NURBS_ROW(type, field, Name)                                                            \
    row(S::Nurbs, &P::field, &nurbsGet<type, &U::get##Name>, &nurbsSet<type, &U::set##Name>)

std::vector<oxLiveParameter> buildParameters()
{
    return {
        row(S::Denoise, &P::denoiseFilterType, &R::getDenoiseFilter, &R::setDenoiseFilter),
        row(S::Denoise, &P::useRaySplitting, &R::getUseRaySplitting, &R::setUseRaySplitting),
        row(S::Denoise, &P::denoiserType, &R::getDenoiserType, &R::setDenoiserType),
        row(S::Denoise, &P::denoiserInput, &R::getDenoiserInput, &R::setDenoiserInput),
        row(S::Denoise, &P::denoiseAlpha, &R::getDenoiseAlpha, &R::setDenoiseAlpha),
        row(S::Denoise, &P::useTwoSampleMIS, &R::getUseTwoSampleImportanceSampling,
            &R::setUseTwoSampleImportanceSampling),

        row(S::PixelFilter, &P::filterType, &F::getPixelFilterType, &F::setPixelFilterType),
        row(S::PixelFilter, &P::filterWidth, &F::getPixelFilterWidth, &F::setPixelFilterWidth),
        row(S::PixelFilter, &P::filterHeight, &F::getPixelFilterHeight, &F::setPixelFilterHeight),

        // The render view's copy of the samples; capture reads the raytracer's.
        row(S::View, &P::imageSamples, nullptr, &oxOSGWidget::setImageSamples),
        row(S::View, &P::samplesThreshold, &oxOSGWidget::getSamplesThreshold,
            &oxOSGWidget::setSamplesThreshold),

        row(S::Raytracing, &P::maxReflectionDepth, &R::getInteractiveReflectionDepth,
            &R::setInteractiveReflectionDepth),
        row(S::Raytracing, &P::stillFrameReflectionDepth, &R::getStillFrameReflectionDepth,
            &R::setStillFrameReflectionDepth),
        row(S::Raytracing, &P::imageSamples, &R::getImageSamples, &R::setImageSamples),
        row(S::Raytracing, &P::aaThresholdQuality, &R::getAdaptiveAAThresholdQuality,
            &R::setAdaptiveAAThresholdQuality),
        row(S::Raytracing, &P::enableClamping, &R::getClamping, &R::setClamping),
        row(S::Raytracing, &P::reflectionClampValue, &R::getReflectionClampValue,
            &R::setReflectionClampValue),
        // The host holds the light optimisation as a switch, the record as a number.
        row(
            S::Raytracing, &P::lightOptimizationMode,
            +[]() -> int { return R::getLightOptimizationMode() ? 1 : 0; },
            +[](int mode) { R::setLightOptimizationMode(mode != 0); }),
        row(S::Raytracing, &P::brdfMode, &R::getBrdfMode, &R::setBrdfMode),
        row(S::Raytracing, &P::pbParameters, &R::getPBParameters, &R::setPBParameters),
        row(S::Raytracing, &P::highQualityTextureFiltering, &R::getUseHighQualityTextureFiltering,
            &R::setUseHighQualityTextureFiltering),
        row(S::Raytracing, &P::stillFrameSupersampling, &R::getStillFrameSupersampling,
            &R::setStillFrameSupersampling),
        row(S::Raytracing, &P::ignoreOverrideTraceDepth, &R::getIgnoreOverrideTraceDepth,
            &R::setIgnoreOverrideTraceDepth),
        row(S::Raytracing, &P::ignoreOverrideIlluminationMode,
            &R::getIgnoreOverrideIlluminationMode, &R::setIgnoreOverrideIlluminationMode),
        row(S::Raytracing, &P::ignoreOverrideReflectionQuality,
            &R::getIgnoreOverrideReflectionQuality, &R::setIgnoreOverrideReflectionQuality),
        row(S::Raytracing, &P::ignoreOverrideIBLQuality, &R::getIgnoreOverrideIBLQuality,
            &R::setIgnoreOverrideIBLQuality),
        row(S::Raytracing, &P::interactiveQualityMode, &R::getInteractiveQualityMode,
            &R::setInteractiveQualityMode),
        row(S::Raytracing, &P::interactiveQuality, &R::getInteractiveQuality,
            &R::setInteractiveQuality),
        row(S::Raytracing, &P::stillQualityMode, &R::getStillFrameQualityMode,
            &R::setStillFrameQualityMode),
        row(S::Raytracing, &P::stillQuality, &R::getStillFrameQuality, &R::setStillFrameQuality),
        row(S::Raytracing, &P::environmentInteractiveQuality, &R::getEnvironmentInteractiveQuality,
            &R::setEnvironmentInteractiveQuality),
        row(S::Raytracing, &P::environmentStillQuality, &R::getEnvironmentStillQuality,
            &R::setEnvironmentStillQuality),
        row(S::Raytracing, &P::photonDispersionQuality, &R::getPhotonDispersionQuality,
            &R::setPhotonDispersionQuality),
        row(S::Raytracing, &P::renderTime, &R::getRenderTimeInSeconds, &R::setRenderTimeInSeconds),
        row(S::Raytracing, &P::useTimeLimit, &R::getUseRenderTimeLimit, &R::setUseRenderTimeLimit),
        row(S::Raytracing, &P::useInfiniteRendering, &R::getUseInfiniteRendering,
            &R::setUseInfiniteRendering),

        OX_NURBS_ROW(int, nurbsMode, NurbsMode),
        OX_NURBS_ROW(float, nurbsEpsilon, NurbsEpsilon),
        OX_NURBS_ROW(float, nurbsNewtonEpsilon, NurbsNewtonEpsilon),
        OX_NURBS_ROW(int, nurbsMinDepthSurface, NurbsMinDepthSurface),
        OX_NURBS_ROW(int, nurbsMaxDepthSurface, NurbsMaxDepthSurface),
        OX_NURBS_ROW(float, nurbsThresholdSurface, NurbsThresholdSurface),
        OX_NURBS_ROW(int, nurbsMinDepthCurve, NurbsMinDepthCurve),
        OX_NURBS_ROW(int, nurbsMaxDepthCurve, NurbsMaxDepthCurve),
        OX_NURBS_ROW(float, nurbsThresholdCurve, NurbsThresholdCurve),
        OX_NURBS_ROW(bool, nurbsUsePreclassification, NurbsUsePreclassification),

        row(S::Photons, &P::renderer, &R::getRenderer, &R::setRenderer),
        row(S::Photons, &P::photonMode, &R::getPhotonMode, &R::setPhotonMode),
        row(S::Photons, &P::photonTraceDepth, &R::getPhotonTraceDepth, &R::setPhotonTraceDepth),
        row(S::Photons, &P::photonNoiseReductionSteps, &R::getPhotonNoiseReductionSteps,
            &R::setPhotonNoiseReductionSteps),
        row(S::Photons, &P::photonUseAutomaticRadius, &R::getPhotonUseAutomaticRadius,
            &R::setPhotonUseAutomaticRadius),
        row(S::Photons, &P::interactiveFinalGatherQuality, &R::getInteractiveFinalGatherQuality,
            &R::setInteractiveFinalGatherQuality),
        row(S::Photons, &P::finalGatherQuality, &R::getStillFrameFinalGatherQuality,
            &R::setStillFrameFinalGatherQuality),
        row(S::Photons, &P::finalGatherRadius, &R::getFinalGatherRadius, &R::setFinalGatherRadius),
        row(S::Photons, &P::useFinalGatherForGlossy, &R::getUseFinalGatherForGlossy,
            &R::setUseFinalGatherForGlossy),
        row(S::Photons, &P::indirectPhotonRadius, &R::getIndirectPhotonRadius,
            &R::setIndirectPhotonRadius),
        row(S::Photons, &P::interactivePhotonCount, &R::getInteractivePhotonCount,
            &R::setInteractivePhotonCount),
        row(S::Photons, &P::photonCount, &R::getStillFramePhotonCount,
            &R::setStillFramePhotonCount),
        row(S::Photons, &P::photonMapRefreshMode, &R::getPhotonMapRefreshMode,
            &R::setPhotonMapRefreshMode),
        row(S::Photons, &P::photonMapFreezeMode, &R::getPhotonMapFreezeMode,
            &R::setPhotonMapFreezeMode),
        row(S::Photons, &P::photonLookupCount, &R::getPhotonLookupCount, &R::setPhotonLookupCount),
        row(S::Photons, &P::sampleOffset, &R::getRaytracingSampleOffset,
            &R::setRaytracingSampleOffset),
        row(S::Photons, &P::interactiveTextureSharpness, &R::getInteractiveTextureSharpness,
            &R::setInteractiveTextureSharpness),
        row(S::Photons, &P::textureSharpness, &R::getStillFrameTextureSharpness,
            &R::setStillFrameTextureSharpness),
        row(S::Photons, &P::lightEvaluationThreshold, &R::getLightEvaluationThreshold,
            &R::setLightEvaluationThreshold),
        row(S::Photons, &P::illuminant, &R::getIlluminant, &R::setIlluminant),

        row<bool>(S::CaptureOnly, &P::spectralRendering, &R::getSpectralRaytracing, nullptr),
        row<float>(S::CaptureOnly, &P::displayLuminance, &R::getDisplayLuminance, nullptr),
        row<float>(S::CaptureOnly, &P::sim2LuminanceMapping, &R::getSim2LuminanceMapping, nullptr),
    };
}

#undef OX_NURBS_ROW

// The row of field that capture reads, or null.
template <typename T>
const oxLiveAccess<T>* capturedAccess(T P::*field)
{
    for (const oxLiveParameter& parameter : oxLiveParameters()) {
        const auto* access = std::get_if<oxLiveAccess<T>>(&parameter.access);
        if (access && access->field == field && access->get)
            return access;
    }
    return nullptr;
}

} // namespace

const std::vector<oxLiveParameter>& oxLiveParameters()
{
    static const std::vector<oxLiveParameter> parameters = buildParameters();
    return parameters;
}

template <typename T>
T (*oxLiveGetter(T P::*field))
()
{
    const oxLiveAccess<T>* access = capturedAccess(field);
    return access ? access->get : nullptr;
}

template <typename T>
T readLiveParameter(T P::*field)
{
    return capturedAccess(field)->get();
}

template <typename T>
void writeLiveParameter(T P::*field, oxNonDeduced<T> value)
{
    capturedAccess(field)->set(value);
}

int readLiveInt(const oxLiveField& field)
{
    return std::visit([](auto f) { return static_cast<int>(readLiveParameter(f)); }, field);
}

#define OX_LIVE_INSTANTIATE(T)                                                                     \
    template T (*oxLiveGetter(T P::*))();                                                          \
    template T readLiveParameter(T P::*);                                                          \
    template void writeLiveParameter(T P::*, oxNonDeduced<T>);
OX_LIVE_INSTANTIATE(bool)
OX_LIVE_INSTANTIATE(int)
OX_LIVE_INSTANTIATE(unsigned int)
OX_LIVE_INSTANTIATE(float)
#undef OX_LIVE_INSTANTIATE

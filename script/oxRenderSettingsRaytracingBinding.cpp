// The raytracing family of oxRenderSettings. Its commands reach the host's render state: the
// parameter store, the render view, the pixel filter, the raytracer's utilities and the core
// limit. The window's form (and, for a few settings, its record) only follows.
//
// Most commands share one shape per kind and are made from templates over the host call:
// a Parameter setter writes the store and refreshes the form; a Direct setter writes the
// store and asks for a new image, as these settings have no widget; a Utility setter goes to
// the raytracer's utilities, then refreshes both. Getters are the host's getters themselves.
// The commands of their own kind are the functions below the templates.

#include "oxRenderSettingsRaytracingBinding.h"

#include "oxScriptBinding.h"

#include <boost/python/object/add_to_namespace.hpp>

#include "oxRenderSettingsRaytracingBindingDocs.h"

#include "oxController.h"
#include "oxDeprecatedSettings.h"
#include "oxLog.h"
#include "oxOSGImage.h"
#include "oxOSGWidget.h"
#include "oxPixelfilterFactory.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"
#include "oxRenderSettings.h"
#include "oxSceneGraph.h"
#include "oxSceneServices.h"
#include "oxTBBInit.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <tuple>
#include <vector>

using namespace boost::python;

namespace {

using R = oxRenderParameter;
using U = oxRaytracingUtilsBase;

// ---------------------------------------------------------------------------------------------
// Refreshes

// The form follows the stores; without the window (the plug-in's module alone) there is
// nothing to show.
void refreshForm()
{
    if (oxRenderSettings* window = oxRenderSettings::instance())
        window->updateGUI();
}

void refreshRender()
{
    oxController::updateRender();
    oxController::setModified(true);
}

// ---------------------------------------------------------------------------------------------
// The kinds, over the host call they wrap

template <typename F>
struct Signature;
template <typename Result, typename... Args>
struct Signature<Result (*)(Args...)> {
    static constexpr std::size_t arity = sizeof...(Args);
    using First = std::tuple_element_t<0, std::tuple<Args..., void>>;
};
template <typename Class, typename Result, typename Arg>
struct Signature<Result (Class::*)(Arg)> {
    using First = Arg;
};
template <auto function>
using ArgumentOf = typename Signature<decltype(function)>::First;

// Arg is the type scripts pass, where it differs from the store's.
template <auto set, typename Arg = ArgumentOf<set>>
void parameterSetter(Arg value)
{
    set(static_cast<ArgumentOf<set>>(value));
    refreshForm();
}

template <auto set, typename Arg = ArgumentOf<set>>
void directSetter(Arg value)
{
    set(static_cast<ArgumentOf<set>>(value));
    refreshRender();
}

template <auto set>
void utilitySetter(ArgumentOf<set> value)
{
    if (U* utilities = oxRaytracingManager::getRaytracingUtils())
        (utilities->*set)(value);
    refreshForm();
    refreshRender();
}

// ---------------------------------------------------------------------------------------------
// Retired commands, kept so that old scripts run. The silent ones share one empty function and
// one constant getter; the sample counts warn (oxDeprecatedSettings).

template <typename T>
void ignored(T)
{}

template <typename T>
T nothing()
{
    return T();
}

// ---------------------------------------------------------------------------------------------
// Commands of their own

void setCores(int cores)
{
    // The host's limit takes anything below 1 as no limit.
    oxTBBInit::the().setCoreUsageLimit(cores);
    refreshForm();
}

int getCores() { return oxTBBInit::the().getCoreUsageLimit(); }

void setImageSamples(int samples)
{
    R::setImageSamples(samples);
    oxOSGWidget::setImageSamples(samples);
    refreshForm();
}

void setImageFilter(int id, float width, float height)
{
    oxPixelfilterFactory::setPixelFilterType(id);
    oxPixelfilterFactory::setPixelFilterWidth(width);
    oxPixelfilterFactory::setPixelFilterHeight(height);
    if (U* utilities = oxRaytracingManager::getRaytracingUtils())
        utilities->updatePixelFilter();
    refreshForm();
    refreshRender();
}

void setFinalGathering(int quality)
{
    R::setInteractiveFinalGatherQuality(quality);
    R::setStillFrameFinalGatherQuality(quality);
    refreshForm();
}

// The caustic and indirect radius are one since caustics are gathered with the indirect light.
void setPhotonRadius(float radius)
{
    R::setIndirectPhotonRadius(radius);
    refreshForm();
}

void setSpectralRaytracing(bool on)
{
    if (oxRenderSettings* window = oxRenderSettings::instance()) {
        // The window's switch also carries the other settings across the mode change.
        window->changedSpectralRaytracing(on);
        return;
    }
    if (oxRaytracingManager::isSpectralRaytracingEnable() == on)
        return;
    R::setSpectralRaytracing(on);
    oxOSGWidget::setRaytracingMode(on, oxRaytracingManager::isGpuRaytracingEnable());
    // The mode change may reset the switch.
    R::setSpectralRaytracing(on);
}

void setRaytracingMode(int mode)
{
    const bool gpu = mode != 0;
    if (gpu != oxRaytracingManager::isGpuRaytracingEnable()) {
        // The switch takes long: let the window paint first.
        QCoreApplication::processEvents();
        R::setGpuRaytracing(gpu);
        // Capturing reads every live value once more before the mode change; the record
        // itself isn't needed.
        if (oxRenderSettings* window = oxRenderSettings::instance())
            window->getCurrentRenderSettings();
        oxOSGWidget::setRaytracingMode(oxRaytracingManager::isSpectralRaytracingEnable(), gpu);
        // The renderer has the last word on whether it runs on the GPU.
        R::setGpuRaytracing(oxRaytracingManager::isGpuRaytracingEnable());
    }
    refreshForm();
}

int getRaytracingMode() { return oxOSGWidget::getGpuRaytracing() ? 1 : 0; }

void setUseTwoSampleImportanceSampling(bool on)
{
    R::setUseTwoSampleImportanceSampling(on);
    if (U* utilities = oxRaytracingManager::getRaytracingUtils())
        utilities->updatePixelFilter();
    refreshForm();
}

void setNurbsRaytracing(bool on)
{
    U* utilities = oxRaytracingManager::getRaytracingUtils();
    if (utilities) {
        utilities->setNurbsMode(on ? 1 : 0);
        if (oxRenderSettings* window = oxRenderSettings::instance())
            window->getCurrentPreset().nurbsMode = utilities->getNurbsMode();
    }
    refreshForm();
    refreshRender();
}

bool getNurbsRaytracing()
{
    const U* utilities = oxRaytracingManager::getRaytracingUtils();
    return utilities && utilities->getNurbsMode() != 0;
}

void setBrdfMode(int mode)
{
    oxRenderSettings::switchBrdfMode(mode);
    refreshForm();
}

void disableRaytracingOverrides()
{
    std::vector<std::shared_ptr<osg::Material>> materials;
    oxMaterials::getAllMaterials(oxScenegraph::getRoot(), materials, 1);
    for (const std::shared_ptr<osg::Material>& material : materials) {
        auto* uber = dynamic_cast<osg::UberMaterial*>(material.get());
        if (!uber || !uber->getRaytracingAttachment())
            continue;
#define OX_DISABLE_OVERRIDE(Setting, start) uber->setOverride##Setting(false);
        OX_RAYTRACING_OVERRIDES(OX_DISABLE_OVERRIDE)
#undef OX_DISABLE_OVERRIDE
    }
    refreshRender();
}

// The corners come as x begin, y begin, x end, y end, relative to the image, in any order.
void setRenderRegion(float xBegin, float yBegin, float xEnd, float yEnd)
{
    oxOSGWidget* view = oxOSGWidget::getMGLW(-1);
    if (!view)
        return;
    const auto [startX, endX] = std::minmax(xBegin, xEnd);
    const auto [startY, endY] = std::minmax(yBegin, yEnd);
    // The full frame is no region at all.
    const bool active = startX > 0.0f || startY > 0.0f || endX < 1.0f || endY < 1.0f;
    auto unit = [](float value) { return std::clamp(value, 0.0f, 1.0f); };
    view->setRenderRegion(active, unit(startX), unit(startY), unit(endX), unit(endY));
    refreshRender();
}

void setPNGQuality(unsigned int quality) { osg::PNGImageFileType::the().setQuality(quality); }

unsigned int getPNGQuality() { return osg::PNGImageFileType::the().getQuality(); }

bool generateRayFile(const char* filename, unsigned int numPhotons, unsigned int maxDepth)
{
    U* utilities = oxRaytracingManager::getRaytracingUtils();
    if (!utilities) {
        oxLog::error("Can't write the ray file '%s': no raytracer is active.",
                     filename ? filename : "");
        return false;
    }
    return utilities->generateRayFile(filename, numPhotons, maxDepth, {}, false);
}

void addPreset(const char* name)
{
    if (oxRenderSettings* window = oxRenderSettings::instance())
        window->addRQPreset(name);
}

void applyPreset(const char* name)
{
    if (oxRenderSettings* window = oxRenderSettings::instance())
        window->applyRQPresetByName(name);
}

void setDenoiseFilter(unsigned int filter)
{
    if (filter == kLegacyDenoiseFilter) {
        oxLog::info("%s", kLegacyDenoiserMessage);
        filter = kDenoiseFilterStillFrames;
    }
    if (oxRenderSettings* window = oxRenderSettings::instance())
        window->getCurrentPreset().denoiseFilterType = filter;
    R::setDenoiseFilter(filter);
    refreshForm();
}

// The switch of old scripts: on is the denoiser for still frames.
void setEnableDenoiseFilter(bool on)
{
    const unsigned int filter = on ? kDenoiseFilterStillFrames : 0u;
    if (oxRenderSettings* window = oxRenderSettings::instance())
        window->getCurrentPreset().denoiseFilterType = filter;
    R::setDenoiseFilter(filter);
    refreshForm();
}

// ---------------------------------------------------------------------------------------------
// The command table

// One command: its name, the keywords of its arguments and how its callable is made. Fewer
// keywords than arguments name the last ones (the others stay positional).
struct Command {
    const char* name;
    std::array<const char*, 3> keywords;
    object (*make)(const char* const* keywords);
};

template <auto function, typename... Names>
Command command(const char* name, Names... keywords)
{
    constexpr std::size_t count = sizeof...(Names);
    constexpr std::size_t arity = Signature<decltype(function)>::arity;
    static_assert(count <= arity, "more keywords than arguments");
    return {name, {{keywords...}}, [](const char* const* names) -> object {
                if constexpr (count == 0) {
                    return make_function(function);
                } else {
                    const char* given[count];
                    std::copy(names, names + count, given);
                    return make_function(function, default_call_policies(),
                                         oxScriptBinding::trailingKeywords<arity>(given));
                }
            }};
}

template <auto set, typename Arg = ArgumentOf<set>>
Command parameter(const char* name, const char* keyword)
{
    return command<&parameterSetter<set, Arg>>(name, keyword);
}

template <auto set, typename Arg = ArgumentOf<set>>
Command direct(const char* name, const char* keyword)
{
    return command<&directSetter<set, Arg>>(name, keyword);
}

template <auto set>
Command utility(const char* name, const char* keyword)
{
    return command<&utilitySetter<set>>(name, keyword);
}

template <auto get>
Command getter(const char* name)
{
    return command<get>(name);
}

// Every command of the family, in the order of registration: each setter is followed by its
// getter where it has one.
std::vector<Command> commands()
{
    using F = oxPixelfilterFactory;
    return {
        command<&setCores>("setRaytracingCores", "numCores"),
        getter<&getCores>("getRaytracingCores"),
        command<&setImageSamples>("setRaytracingImageSamples", "samples"),
        getter<&R::getImageSamples>("getRaytracingImageSamples"),
        parameter<&oxOSGWidget::setSamplesThreshold>("setRaytracingSamplesThreshold", "samples"),
        getter<&oxOSGWidget::getSamplesThreshold>("getRaytracingSamplesThreshold"),
        command<&setInitialAASamples>("setRaytracingAAInitialSamples", "samples"),
        command<&setAdaptiveAASamples>("setRaytracingAAAdaptiveSamples", "samples"),
        parameter<&R::setRenderTimeInSeconds, int>("setRenderTimeInSeconds", "timeInSeconds"),
        getter<&R::getRenderTimeInSeconds>("getRenderTimeInSeconds"),
        parameter<&R::setUseRenderTimeLimit>("setUseRenderTimeLimit", "state"),
        getter<&R::getUseRenderTimeLimit>("getUseRenderTimeLimit"),
        parameter<&R::setUseInfiniteRendering>("setUseInfiniteRenderInViewport", "state"),
        getter<&R::getUseInfiniteRendering>("getUseInfiniteRenderInViewport"),
        command<&ignored<float>>("setRaytracingAAThreshold", "threshold"),
        parameter<&R::setAdaptiveAAThresholdQuality>("setRaytracingAAThresholdQuality",
                                                     "threshold"),
        getter<&R::getAdaptiveAAThresholdQuality>("getRaytracingAAThresholdQuality"),
        command<&setImageFilter>("setRaytracingAAImageFilter", "id", "width", "height"),
        getter<&F::getPixelFilterType>("getRaytracingAAImageFilterType"),
        getter<&F::getPixelFilterWidth>("getRaytracingAAImageFilterWidth"),
        getter<&F::getPixelFilterHeight>("getRaytracingAAImageFilterHeight"),
        parameter<&R::setClamping>("setRaytracingClampingEnable", "state"),
        getter<&R::getClamping>("getRaytracingClampingEnable"),
        parameter<&R::setReflectionClampValue>("setRaytracingClampValue", "value"),
        getter<&R::getReflectionClampValue>("getRaytracingClampValue"),
        command<&ignored<bool>>("setRaytracingMotionBlurEnable", "state"),
        command<&ignored<bool>>("setRaytracingDOFEnable", "state"),
        parameter<&R::setInteractiveQualityMode>("setRaytracingInteractiveQualityMode", "mode"),
        getter<&R::getInteractiveQualityMode>("getRaytracingInteractiveQualityMode"),
        parameter<&R::setInteractiveQuality>("setRaytracingInteractiveQuality", "quality"),
        getter<&R::getInteractiveQuality>("getRaytracingInteractiveQuality"),
        parameter<&R::setStillFrameQualityMode>("setRaytracingStillFrameQualityMode", "mode"),
        getter<&R::getStillFrameQualityMode>("getRaytracingStillFrameQualityMode"),
        parameter<&R::setStillFrameQuality>("setRaytracingStillFrameQuality", "quality"),
        getter<&R::getStillFrameQuality>("getRaytracingStillFrameQuality"),
        parameter<&R::setEnvironmentInteractiveQuality>("setRaytracingInteractiveIBLQuality",
                                                        "quality"),
        getter<&R::getEnvironmentInteractiveQuality>("getRaytracingInteractiveIBLQuality"),
        parameter<&R::setEnvironmentStillQuality>("setRaytracingStillFrameIBLQuality", "quality"),
        getter<&R::getEnvironmentStillQuality>("getRaytracingStillFrameIBLQuality"),
        parameter<&R::setInteractiveReflectionDepth>("setRaytracingInteractiveTraceDepth", "depth"),
        getter<&R::getInteractiveReflectionDepth>("getRaytracingInteractiveTraceDepth"),
        parameter<&R::setStillFrameReflectionDepth>("setRaytracingStillFrameTraceDepth", "depth"),
        getter<&R::getStillFrameReflectionDepth>("getRaytracingStillFrameTraceDepth"),
        parameter<&R::setPhotonMode>("setRaytracingPhotonMode", "mode"),
        getter<&R::getPhotonMode>("getRaytracingPhotonMode"),
        parameter<&R::setInteractivePhotonCount>("setRaytracingInteractivePhotonCount", "count"),
        getter<&R::getInteractivePhotonCount>("getRaytracingInteractivePhotonCount"),
        parameter<&R::setStillFramePhotonCount>("setRaytracingStillFramePhotonCount", "count"),
        getter<&R::getStillFramePhotonCount>("getRaytracingStillFramePhotonCount"),
        parameter<&R::setPhotonLookupCount>("setRaytracingPhotonLookupCount", "count"),
        getter<&R::getPhotonLookupCount>("getRaytracingPhotonLookupCount"),
        command<&setFinalGathering>("setRaytracingFinalGathering", "quality"),
        parameter<&R::setInteractiveFinalGatherQuality>(
            "setRaytracingInteractiveFinalGatherQuality", "quality"),
        getter<&R::getInteractiveFinalGatherQuality>("getRaytracingInteractiveFinalGatherQuality"),
        parameter<&R::setStillFrameFinalGatherQuality>("setRaytracingStillFrameFinalGatherQuality",
                                                       "quality"),
        getter<&R::getStillFrameFinalGatherQuality>("getRaytracingStillFrameFinalGatherQuality"),
        parameter<&R::setFinalGatherRadius>("setRaytracingFinalGatherRadius", "radius"),
        getter<&R::getFinalGatherRadius>("getRaytracingFinalGatherRadius"),
        parameter<&R::setUseFinalGatherForGlossy>("setRaytracingUseFinalGatherForGlossy", "state"),
        getter<&R::getUseFinalGatherForGlossy>("getRaytracingUseFinalGatherForGlossy"),
        parameter<&R::setPhotonMapRefreshMode>("setRaytracingPhotonMapRefreshMode", "mode"),
        getter<&R::getPhotonMapRefreshMode>("getRaytracingPhotonMapRefreshMode"),
        parameter<&R::setPhotonMapFreezeMode>("setRaytracingPhotonMapFreezeMode", "mode"),
        getter<&R::getPhotonMapFreezeMode>("getRaytracingPhotonMapFreezeMode"),
        command<&setPhotonRadius>("setRaytracingCausticPhotonRadius", "radius"),
        command<&setPhotonRadius>("setRaytracingIndirectPhotonRadius", "radius"),
        command<&setPhotonRadius>("setRaytracingPhotonRadius", "radius"),
        getter<&R::getIndirectPhotonRadius>("getRaytracingPhotonRadius"),
        utility<&U::setNurbsEpsilon>("setRaytracingNURBSEpsilon", "epsilon"),
        utility<&U::setNurbsNewtonEpsilon>("setRaytracingNURBSNewtonEpsilon", "epsilon"),
        utility<&U::setNurbsUsePreclassification>("setRaytracingNURBSUsePreclassification",
                                                  "enable"),
        utility<&U::setNurbsMinDepthSurface>("setRaytracingNURBSMinDepthSurface", "depth"),
        utility<&U::setNurbsMaxDepthSurface>("setRaytracingNURBSMaxDepthSurface", "depth"),
        utility<&U::setNurbsThresholdSurface>("setRaytracingNURBSThresholdSurface", "threshold"),
        utility<&U::setNurbsMinDepthCurve>("setRaytracingNURBSMinDepthCurve", "depth"),
        utility<&U::setNurbsMaxDepthCurve>("setRaytracingNURBSMaxDepthCurve", "depth"),
        utility<&U::setNurbsThresholdCurve>("setRaytracingNURBSThresholdCurve", "threshold"),
        direct<&R::setRaytracingSampleOffset>("setRaytracingSampleOffset", "samplingOffset"),
        getter<&R::getRaytracingSampleOffset>("getRaytracingSampleOffset"),
        direct<&R::setInteractiveTextureSharpness>("setRaytracingInteractiveTextureSharpness",
                                                   "sharpness"),
        getter<&R::getInteractiveTextureSharpness>("getRaytracingInteractiveTextureSharpness"),
        direct<&R::setStillFrameTextureSharpness>("setRaytracingStillFrameTextureSharpness",
                                                  "sharpness"),
        getter<&R::getStillFrameTextureSharpness>("getRaytracingStillFrameTextureSharpness"),
        direct<&R::setLightEvaluationThreshold>("setRaytracingLightEvaluationThreshold",
                                                "threshold"),
        getter<&R::getLightEvaluationThreshold>("getRaytracingLightEvaluationThreshold"),
        parameter<&R::setRenderer>("setRaytracingRenderer", "mode"),
        command<&setSpectralRaytracing>("setSpectralRaytracing", "on"),
        getter<&oxRaytracingManager::isSpectralRaytracingEnable>("getSpectralRaytracing"),
        command<&setRaytracingMode>("setRaytracingMode", "mode"),
        getter<&getRaytracingMode>("getRaytracingMode"),
        command<&oxOSGWidget::setActiveGpuRaytracingMask>("setActiveGPUMask", "mask"),
        parameter<&R::setUseRaySplitting>("setUseRaySplitting", "on"),
        parameter<&R::setDenoiserInput>("setDenoiserInput", "type"),
        command<&setUseTwoSampleImportanceSampling>("setUseTwoSampleImportanceSampling", "on"),
        command<&oxRaytracingManager::setMaxClusterTileSize>("setMaxClusterTileSize", "tilesize"),
        parameter<&R::setIlluminant>("setIlluminant", "illuminant"),
        getter<&R::getIlluminant>("getIlluminant"),
        parameter<&R::setUseHighQualityTextureFiltering>(
            "setRaytracingUseHighQualityTextureFiltering", "enable"),
        getter<&R::getUseHighQualityTextureFiltering>(
            "getRaytracingUseHighQualityTextureFiltering"),
        parameter<&R::setStillFrameSupersampling>("setRaytracingStillFrameSupersampling", "factor"),
        getter<&R::getStillFrameSupersampling>("getRaytracingStillFrameSupersampling"),
        command<&setNurbsRaytracing>("setNURBSRaytracing", "on"),
        getter<&getNurbsRaytracing>("getNURBSRaytracing"),
        command<&setBrdfMode>("setBrdfMode", "mode"),
        getter<&R::getBrdfMode>("getBrdfMode"),
        command<&disableRaytracingOverrides>("disableRaytracingOverrides"),
        // One name for four arguments: the trailing alignment gives it to the last, so that
        // scripts pass the corners by position.
        command<&setRenderRegion>("setRaytracingRenderRegion", "xBegin, xEnd, yBegin, yEnd"),
        command<&setPNGQuality>("setRenderPNGQuality", "quality"),
        getter<&getPNGQuality>("getRenderPNGQuality"),
        command<&generateRayFile>("generateRayFile", "filename", "numPhotons", "maxDepth"),
        command<&addPreset>("addPreset", "name"),
        command<&applyPreset>("applyPreset", "name"),
        command<&setDenoiseFilter>("setDenoiseFilter", "filterType"),
        getter<&R::getDenoiseFilter>("getDenoiseFilter"),
        parameter<&R::setDenoiserType, int>("setDenoiserType", "denoiserType"),
        getter<&R::getDenoiserType>("getDenoiserType"),
        command<&R::setDenoiserModel>("setDenoiserModel", "model"),
        getter<&R::getDenoiserModel>("getDenoiserModel"),
        command<&R::setDenoiseAlpha>("setDenoiseAlpha", "model"),
        getter<&R::getDenoiseAlpha>("getDenoiseAlpha"),
        command<&setEnableDenoiseFilter>("setEnableDenoiseFilter", "on"),
        getter<&nothing<bool>>("getEnableDenoiseFilter"),
        command<&ignored<double>>("setDenoiseFilterThreshold", "value"),
        getter<&nothing<double>>("getDenoiseFilterThreshold"),
    };
}

} // namespace

void bindRenderSettingsRaytracing()
{
    for (const Command& entry : commands())
        objects::add_to_namespace(scope(), entry.name, entry.make(entry.keywords.data()),
                                  renderSettingsRaytracingDoc(entry.name));
}

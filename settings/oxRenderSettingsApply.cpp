#include "oxRenderSettingsApply.h"

#include "oxLiveParameters.h"
#include "oxMaterialInterface.h"
#include "oxOSGWidget.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"
#include "oxSceneServices.h"

using RP = oxRenderParameter;

oxRenderSettingsPreset captureRenderSettings(const oxRenderSettingsPreset& record)
{
    oxRenderSettingsPreset p = record;
    // Without raytracing utilities there are no live NURBS values; the record's stand.
    const bool utils = oxRaytracingManager::getRaytracingUtils() != nullptr;
    for (const oxLiveParameter& parameter : oxLiveParameters()) {
        if (parameter.stage == oxLiveStage::Nurbs && !utils)
            continue;
        std::visit(
            [&p](const auto& access) {
                if (access.get)
                    p.*access.field = access.get();
            },
            parameter.access);
    }
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

namespace {

void pushStage(const oxRenderSettingsPreset& p, oxLiveStage stage)
{
    for (const oxLiveParameter& parameter : oxLiveParameters()) {
        if (parameter.stage != stage)
            continue;
        std::visit(
            [&p](const auto& access) {
                if (access.set)
                    access.set(p.*access.field);
            },
            parameter.access);
    }
}

} // namespace

void pushRenderSettings(const oxRenderSettingsPreset& p)
{
    pushStage(p, oxLiveStage::Denoise);
    pushPhotometric(p);
    pushStage(p, oxLiveStage::PixelFilter);

    oxRaytracingUtilsBase* utils = oxRaytracingManager::getRaytracingUtils();
    pushStage(p, oxLiveStage::View);
    if (!utils)
        return;
    utils->updatePixelFilter();

    pushStage(p, oxLiveStage::Raytracing);
    // Again: the quality and time settings above may have switched it.
    RP::setDenoiseFilter(p.denoiseFilterType);
    pushStage(p, oxLiveStage::Nurbs);
    pushStage(p, oxLiveStage::Photons);
}

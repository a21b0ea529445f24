// The scene's photometric mode as far as loading and resetting settings need it: the flag in
// all its stores, and the headlight and default environment that follow it.

#include "oxRenderSettings.h"

#include "oxMaterialInterface.h"
#include "oxRenderParameter.h"
#include "oxSceneGraph.h"
#include "oxSceneServices.h"

void oxRenderSettings::applyHeadlightPhotometric(bool on)
{
    oxScenegraph::resetHeadlight();
    const osg::NodePtr headlight = oxScenegraph::getHeadlightNode();
    oxLights::setIsPhysicallyBased(headlight, on);
    // A photometric headlight shines as bright as the display is set to show white.
    oxLights::setLightValue(headlight, on ? oxRenderParameter::getDisplayLuminance() : 1.0f);
    osg::USphereEnvironmentMaterial::resetDefaultEnvironment(on);
}

void oxRenderSettings::switchPhotometricFlag(bool on)
{
    currentPreset.pbParameters = on;
    oxRenderParameter::setPBParameters(on);
    if (oxSceneData* sceneData = oxSceneDataManager::getSceneData(0))
        sceneData->setPhotometric(on ? 1 : 0);
    oxMaterialInterface* materials = oxInterfaceFactory::getMaterialInterface();
    materials->setPhotometricMode(on);
    materials->materialsChanged();
    updateGUI();
}

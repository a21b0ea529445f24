#include "oxRaytracingManager.h"

#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"

namespace {

oxRaytracingUtilsBase& ownUtilities()
{
    static oxRaytracingUtilsBase utilities;
    return utilities;
}

oxRaytracingUtilsBase*& activeUtilities()
{
    static oxRaytracingUtilsBase* active = &ownUtilities();
    return active;
}

} // namespace

oxRaytracingUtilsBase* oxRaytracingManager::getRaytracingUtils() { return activeUtilities(); }

void oxRaytracingManager::setRaytracingUtils(oxRaytracingUtilsBase* utilities)
{
    activeUtilities() = utilities;
}

void oxRaytracingManager::resetRaytracingUtils()
{
    ownUtilities().resetToDefaults();
    activeUtilities() = &ownUtilities();
}

bool oxRaytracingManager::isSpectralRaytracingEnable()
{
    return oxRenderParameter::getSpectralRaytracing();
}

bool oxRaytracingManager::isGpuRaytracingEnable() { return oxRenderParameter::getGpuRaytracing(); }

#include "oxRaytracingManager.h"

#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"
#include "oxRenderServiceSupport.h"

#include <algorithm>

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

int& tileSize()
{
    static int size = oxRaytracingManager::defaultTileSize;
    return size;
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
    tileSize() = defaultTileSize;
}

bool oxRaytracingManager::isSpectralRaytracingEnable()
{
    return oxRenderParameter::getSpectralRaytracing();
}

bool oxRaytracingManager::isGpuRaytracingEnable() { return oxRenderParameter::getGpuRaytracing(); }

void oxRaytracingManager::setMaxClusterTileSize(int size)
{
    oxTraceCall("oxRaytracingManager::setMaxClusterTileSize", size);
    tileSize() = std::clamp(size, minTileSize, maxTileSize);
}

int oxRaytracingManager::getMaxClusterTileSize() { return tileSize(); }

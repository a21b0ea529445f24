#include "oxRaytracingUtilsBase.h"

#include "oxFile.h"
#include "oxLog.h"
#include "oxPixelfilterFactory.h"
#include "oxRayFile.h"
#include "oxScene.h"

#define OX_RAYTRACING_UTILS_DEFINE(type, name, start)                                              \
    type oxRaytracingUtilsBase::get##name() const { return m_##name; }                             \
    void oxRaytracingUtilsBase::set##name(type value)                                              \
    {                                                                                              \
        oxTraceCall("oxRaytracingUtilsBase::set" #name, value);                                    \
        if (m_##name == value)                                                                     \
            return;                                                                                \
        m_##name = value;                                                                          \
        m_listeners.notify(#name);                                                                 \
    }
OX_RAYTRACING_NURBS_SETTINGS(OX_RAYTRACING_UTILS_DEFINE)
#undef OX_RAYTRACING_UTILS_DEFINE

void oxRaytracingUtilsBase::updatePixelFilter()
{
    oxTraceCall("oxRaytracingUtilsBase::updatePixelFilter");
    m_activeFilter.type = oxPixelfilterFactory::getPixelFilterType();
    m_activeFilter.width = oxPixelfilterFactory::getPixelFilterWidth();
    m_activeFilter.height = oxPixelfilterFactory::getPixelFilterHeight();
    m_listeners.notify("PixelFilter");
}

bool oxRaytracingUtilsBase::generateRayFile(const char* filename, unsigned numPhotons,
                                            unsigned maxDepth,
                                            const std::vector<const osg::Node*>& lights,
                                            bool everyHit)
{
    const std::string name = filename ? filename : "";
    oxTraceCall("oxRaytracingUtilsBase::generateRayFile", name, numPhotons, maxDepth, everyHit);
    if (name.empty()) {
        oxLog::error("Ray file: no file name was given; name the file to write.");
        return false;
    }
    oxRay::RayFileRequest request;
    request.photons = numPhotons;
    request.maxDepth = maxDepth;
    request.lights = lights;
    request.everyHit = everyHit;
    std::vector<oxRay::RayFileRay> rays;
    std::string error;
    if (!oxRay::traceRayFile(oxScene::current(), request, rays, error)) {
        oxLog::error("Can't write the ray file '%s': %s.", name.c_str(), error.c_str());
        return false;
    }
    if (!oxFile::writeAtomically(oxFile::expandFilename(name), oxRay::formatRayFile(request, rays),
                                 &error)) {
        oxLog::error("Can't write the ray file '%s': %s (check the folder and its permissions).",
                     name.c_str(), error.c_str());
        return false;
    }
    oxLog::info("Wrote %zu rays of %u photons to the ray file '%s'.", rays.size(), numPhotons,
                name.c_str());
    return true;
}

void oxRaytracingUtilsBase::resetToDefaults()
{
#define OX_RAYTRACING_UTILS_RESET(type, name, start) m_##name = start;
    OX_RAYTRACING_NURBS_SETTINGS(OX_RAYTRACING_UTILS_RESET)
#undef OX_RAYTRACING_UTILS_RESET
    m_activeFilter = PixelFilter();
}

int oxRaytracingUtilsBase::addListener(oxServiceListeners::Listener listener)
{
    return m_listeners.add(std::move(listener));
}

void oxRaytracingUtilsBase::removeListener(int handle) { m_listeners.remove(handle); }

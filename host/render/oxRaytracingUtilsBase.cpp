#include "oxRaytracingUtilsBase.h"

#include "oxPixelfilterFactory.h"

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

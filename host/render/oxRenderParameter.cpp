#include "oxRenderParameter.h"

namespace {

struct Values {
#define OX_RENDER_PARAMETER_MEMBER(type, name, start) type name = start;
    OX_RENDER_PARAMETERS(OX_RENDER_PARAMETER_MEMBER)
#undef OX_RENDER_PARAMETER_MEMBER
};

Values& values()
{
    static Values v;
    return v;
}

oxServiceListeners& listeners()
{
    static oxServiceListeners l;
    return l;
}

} // namespace

#define OX_RENDER_PARAMETER_DEFINE(type, name, start)                                              \
    type oxRenderParameter::get##name() { return values().name; }                                  \
    void oxRenderParameter::set##name(type value)                                                  \
    {                                                                                              \
        oxTraceCall("oxRenderParameter::set" #name, value);                                        \
        if (values().name == value)                                                                \
            return;                                                                                \
        values().name = value;                                                                     \
        listeners().notify(#name);                                                                 \
    }
OX_RENDER_PARAMETERS(OX_RENDER_PARAMETER_DEFINE)
#undef OX_RENDER_PARAMETER_DEFINE

void oxRenderParameter::resetToDefaults() { values() = Values(); }

int oxRenderParameter::addListener(oxServiceListeners::Listener listener)
{
    return listeners().add(std::move(listener));
}

void oxRenderParameter::removeListener(int handle) { listeners().remove(handle); }

#include "oxPixelfilterFactory.h"

namespace {

struct Filter {
    int type = 7;
    float width = 1.0f;
    float height = 1.0f;
};

Filter& filter()
{
    static Filter f;
    return f;
}

oxServiceListeners& listeners()
{
    static oxServiceListeners l;
    return l;
}

} // namespace

int oxPixelfilterFactory::getPixelFilterType() { return filter().type; }
float oxPixelfilterFactory::getPixelFilterWidth() { return filter().width; }
float oxPixelfilterFactory::getPixelFilterHeight() { return filter().height; }

void oxPixelfilterFactory::setPixelFilterType(int type)
{
    oxTraceCall("oxPixelfilterFactory::setPixelFilterType", type);
    listeners().assign(filter().type, type, "PixelFilterType");
}

void oxPixelfilterFactory::setPixelFilterWidth(float width)
{
    oxTraceCall("oxPixelfilterFactory::setPixelFilterWidth", width);
    listeners().assign(filter().width, width, "PixelFilterWidth");
}

void oxPixelfilterFactory::setPixelFilterHeight(float height)
{
    oxTraceCall("oxPixelfilterFactory::setPixelFilterHeight", height);
    listeners().assign(filter().height, height, "PixelFilterHeight");
}

void oxPixelfilterFactory::resetToDefaults() { filter() = Filter(); }

int oxPixelfilterFactory::addListener(oxServiceListeners::Listener listener)
{
    return listeners().add(std::move(listener));
}

void oxPixelfilterFactory::removeListener(int handle) { listeners().remove(handle); }

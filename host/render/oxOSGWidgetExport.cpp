// The render view's side of an export: what a render to file asks of the view before it
// starts and what it restores afterwards.

#include "oxOSGWidget.h"
#include "oxRenderParameter.h"

void oxOSGWidget::setRenderRegion(bool enabled, float x0, float y0, float x1, float y1)
{
    oxTraceCall("oxOSGWidget::setRenderRegion", enabled, x0, y0, x1, y1);
    // The raytracer reads its region from the parameter store; off means the whole image.
    oxRenderParameter::setRaytracingRenderRegion(enabled ? oxRenderRegion{x0, y0, x1, y1}
                                                         : oxRenderRegion{0.0f, 0.0f, 1.0f, 1.0f});
}

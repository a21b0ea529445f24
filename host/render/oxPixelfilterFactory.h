#pragma once

#include "oxRenderServiceSupport.h"

/// The host's pixel filter: the filter type id (0 box ... 9 sharp B-spline) and its size in
/// pixels. The raytracer takes a changed filter over when the raytracing utilities' pixel filter
/// update runs. Setters record their call in oxCallTrace and tell the listeners of a change
/// ("PixelFilterType", "PixelFilterWidth", "PixelFilterHeight").
class oxPixelfilterFactory {
public:
    static int getPixelFilterType();
    static float getPixelFilterWidth();
    static float getPixelFilterHeight();
    static void setPixelFilterType(int type);
    static void setPixelFilterWidth(float width);
    static void setPixelFilterHeight(float height);

    /// Back to the start filter (type 7, 1 x 1 pixel), without trace and without notice.
    static void resetToDefaults();

    static int addListener(oxServiceListeners::Listener listener);
    static void removeListener(int handle);
};

#pragma once

#include <vector>

#include "oxImageSource.h"

/// The image writer's renderer: the host's raytracer on the current scene, with the settings of
/// the host's parameter store. Animated requests first set the scene's clips to the frame.
class oxRaytracerSource : public oxImageSource {
public:
    /// The source the host makes current at start.
    static oxRaytracerSource& the();

    /// Renders the current scene; with request.tonemapHDR the beauty is tone mapped with the
    /// active camera's white point.
    bool render(const oxRenderRequest& request, oxRenderedImage& image,
                std::string& error) override;

    /// Tone maps RGBA floats in place: a value at whitepoint becomes 1, alpha stays.
    static void tonemap(std::vector<float>& rgba, float whitepoint);
};

#pragma once

#include "oxImageSource.h"

/// The image writer's renderer: the host's raytracer on the current scene, with the settings of
/// the host's parameter store. Animated requests first set the scene's clips to the frame.
class oxRaytracerSource : public oxImageSource {
public:
    /// The source the host makes current at start.
    static oxRaytracerSource& the();

    bool render(const oxRenderRequest& request, oxRenderedImage& image,
                std::string& error) override;
};

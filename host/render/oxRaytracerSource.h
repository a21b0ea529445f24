#pragma once

#include <vector>

#include "oxImageSource.h"

class oxAnimClip;

/// The image writer's renderer: the host's raytracer on the current scene, with the settings of
/// the host's parameter store. Animated requests first set the scene's clips to the frame.
///
/// Motion blur: an animated request blurs the motion of one clip, the one that the request's
/// motionBlurObjectId names (a clip node's id), else the one of oxAnimManager's motion blur
/// object; the shutter is open from the frame for oxRaytracer::motionBlurShutter frames. The
/// render view's motion blur switch (oxOSGWidget::getMotionBlur) turns it off. An id that is
/// no clip (a camera track block, say) blurs nothing.
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

    /// The clip whose motion an animated request blurs, or null.
    static const oxAnimClip* motionBlurClip(const oxRenderRequest& request);
};

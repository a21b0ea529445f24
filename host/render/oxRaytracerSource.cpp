#include "oxRaytracerSource.h"

#include "oxImagePasses.h"
#include "oxOSGWidget.h"
#include "oxRaytracer.h"
#include "oxScene.h"
#include "oxSceneServices.h"

#include <algorithm>
#include <cstdint>

oxRaytracerSource& oxRaytracerSource::the()
{
    static oxRaytracerSource source;
    return source;
}

bool oxRaytracerSource::render(const oxRenderRequest& request, oxRenderedImage& image,
                               std::string& error)
{
    oxScene& scene = oxScene::current();
    if (request.animation) {
        osg::NodePtr clips = scene.getClipRoot();
        for (size_t i = 0; i < clips->getNChildren(); ++i)
            if (auto* clip = clips->getChild(i)->getCoreAs<oxAnimClip>())
                clip->evaluate(float(request.frame));
    }
    oxRaytracer::Settings settings =
        oxRaytracer::Settings::fromHost(request.width, request.height, request.supersampling > 0);
    settings.passIds = request.passIds;
    settings.alpha = request.alpha;
    settings.alphaColor = {request.alphaColor[0], request.alphaColor[1], request.alphaColor[2]};
    settings.motionClip = motionBlurClip(request);
    settings.motionFrame = float(request.frame);
    if (request.onRound)
        settings.onRound = [&request](int done, int rounds, const oxRenderedImage&) {
            return request.onRound(done, rounds);
        };
    if (!oxRaytracer::the().render(scene, settings, image, error))
        return false;
    if (request.tonemapHDR) {
        float whitepoint = 1.0f;
        if (osg::NodePtr camera = scene.getActiveCamera())
            if (const auto* core = camera->getCoreAs<osg::UberCameraBase>())
                if (const osg::TonemappingSettingsBase* tonemapping =
                        core->getTonemappingSettings())
                    whitepoint = tonemapping->getWhitepoint();
        for (oxRenderedPass& pass : image.passes)
            if (pass.passId == oxImagePasses::Beauty)
                oxRaytracerSource::tonemap(pass.rgba, whitepoint);
    }
    return true;
}

const oxAnimClip* oxRaytracerSource::motionBlurClip(const oxRenderRequest& request)
{
    if (!request.animation || !oxOSGWidget::getMotionBlur())
        return nullptr;
    const int64_t id = request.motionBlurObjectId > 0
                           ? request.motionBlurObjectId
                           : int64_t(oxAnimManager::the()->getMotionBlurObjectID());
    if (id <= 0 || id > int64_t(UINT32_MAX))
        return nullptr;
    auto* node =
        dynamic_cast<osg::Node*>(osg::FieldContainerFactory::the()->getContainer(osg::UInt32(id)));
    // Only clips below the current scene's clip root: an id may outlive its scene.
    if (!node || node->getParent() != oxScene::current().getClipRoot())
        return nullptr;
    return node->getCoreAs<oxAnimClip>();
}

void oxRaytracerSource::tonemap(std::vector<float>& rgba, float whitepoint)
{
    // Extended Reinhard: values at the camera's white point map to 1, so a high dynamic range
    // file holds what the display shows. Colours are mapped before their alpha is applied.
    const float white2 = std::max(whitepoint, 1e-4f) * std::max(whitepoint, 1e-4f);
    for (size_t i = 0; i + 3 < rgba.size(); i += 4) {
        const float alpha = rgba[i + 3];
        const float cover = alpha > 0.0f ? alpha : 1.0f;
        for (size_t c = 0; c < 3; ++c) {
            const float value = std::max(rgba[i + c] / cover, 0.0f);
            rgba[i + c] = value * (1.0f + value / white2) / (1.0f + value) * cover;
        }
    }
}

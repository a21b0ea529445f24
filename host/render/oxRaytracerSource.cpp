#include "oxRaytracerSource.h"

#include "oxRaytracer.h"
#include "oxScene.h"

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
    return oxRaytracer::the().render(scene, settings, image, error);
}

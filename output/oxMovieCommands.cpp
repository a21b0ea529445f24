#include "oxMovieCommands.h"

#include "oxController.h"
#include "oxImageRenderWidget.h"
#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxOutputHost.h"
#include "oxRaytracer.h"
#include "oxSceneGraph.h"
#include "oxSceneServices.h"
#include "oxSnapshots.h"

#include <QStringList>

#include <algorithm>
#include <cstdint>

namespace {

// The export type that writes one AVI movie; every other value writes image files.
constexpr int kExportTypeAVI = 1;

// The arguments that every form comes down to.
struct AnimationExport {
    int width = 0;
    int height = 0;
    int fps = 0;
    int startFrame = 0;
    int stopFrame = 0;
    int ssf = 0;
    bool alpha = false;
    float alphaColor[3] = {0.0f, 0.0f, 0.0f};
    bool overwrite = false;
    bool alphaPremultiply = false;
    int step = 1;
    bool tonemapHDR = false;
    bool useClipRange = false;
    int exportType = 0;
};

void exportUnnamed(const char* filename, const AnimationExport& a)
{
    if (!filename)
        return;
    oxImageWriter* writer = oxOutputHost::writerFor("createMovie");
    if (!writer)
        return;
    const oxBusyGuard busy;
    oxRaytracer::setPremultiply(a.alphaPremultiply);
    writer->setAlphaColor(a.alphaColor[0], a.alphaColor[1], a.alphaColor[2]);
    writer->setNoOverwriteMessage(a.overwrite);
    writer->exportImages(QString::fromUtf8(filename), a.width, a.height, a.fps, a.startFrame,
                         a.stopFrame, supersamplingMode(a.ssf), a.alpha ? 1 : 0,
                         oxImageRenderWidget::hasActiveRenderPasses(), -1, QString(),
                         std::max(1, a.step), a.tonemapHDR);
    writer->setAlphaColor(1.0f, 1.0f, 1.0f);
    oxRaytracer::setPremultiply(false);
}

void exportNamed(const char* command, const char* movie, const char* filename, AnimationExport a)
{
    if (!movie || !filename)
        return;
    oxImageWriter* writer = oxOutputHost::writerFor(command);
    if (!writer)
        return;
    a.step = std::max(1, a.step);
    const int mode = supersamplingMode(a.ssf);

    // An unknown animation is no error: the range is rendered as given, without an object.
    oxAnimManager* animations = oxAnimManager::the();
    unsigned objectId = 0;
    if (osg::NodePtr animation = animations->find(movie)) {
        objectId = animation->getId();
        if (a.useClipRange)
            animations->getFrameBounds(animation, a.startFrame, a.stopFrame);
    }

    const oxBusyGuard busy;
    oxRaytracer::setPremultiply(a.alphaPremultiply);
    animations->setMotionBlurObjectID(objectId);
    writer->setAlphaColor(a.alphaColor[0], a.alphaColor[1], a.alphaColor[2]);
    writer->setNoOverwriteMessage(a.overwrite);

    // "NAME,HOST" is the only way to give a cluster host here; other comma counts are part of
    // the file name.
    QString target = QString::fromUtf8(filename);
    QString clusterHost;
    const QStringList parts = target.split(QLatin1Char(','));
    if (parts.size() == 2) {
        target = parts[0];
        clusterHost = parts[1];
    }
    if (a.exportType == kExportTypeAVI)
        writer->exportAVI(target, a.width, a.height, a.fps, a.startFrame, a.stopFrame, mode,
                          int64_t(objectId), clusterHost, true);
    else
        writer->exportImages(target, a.width, a.height, a.fps, a.startFrame, a.stopFrame, mode,
                             a.alpha ? 1 : 0, oxImageRenderWidget::hasActiveRenderPasses(),
                             int64_t(objectId), clusterHost, a.step, a.tonemapHDR);

    // Mid grey on this route, unlike the unnamed one: scripts of animations expect it.
    writer->setAlphaColor(0.5f, 0.5f, 0.5f);
    animations->resetMotionBlurObjectID();
    oxRaytracer::setPremultiply(false);
}

AnimationExport frameRange(int width, int height, int fps, int startFrame, int stopFrame, int ssf,
                           bool alpha, bool overwrite)
{
    AnimationExport a;
    a.width = width;
    a.height = height;
    a.fps = fps;
    a.startFrame = startFrame;
    a.stopFrame = stopFrame;
    a.ssf = ssf;
    a.alpha = alpha;
    a.overwrite = overwrite;
    return a;
}

AnimationExport withColour(AnimationExport a, float red, float green, float blue)
{
    a.alphaColor[0] = red;
    a.alphaColor[1] = green;
    a.alphaColor[2] = blue;
    return a;
}

AnimationExport withColour(AnimationExport a, const char* alphaRGB)
{
    parseAlphaRGB(alphaRGB, a.alphaColor[0], a.alphaColor[1], a.alphaColor[2]);
    return a;
}

AnimationExport unnamed(int width, int height, int fps, int startFrame, int stopFrame, int ssf,
                        bool alpha, float alphaRed, float alphaGreen, float alphaBlue,
                        bool overwrite, bool alphaPremultiply, int step, bool tonemapHDR)
{
    AnimationExport a =
        withColour(frameRange(width, height, fps, startFrame, stopFrame, ssf, alpha, overwrite),
                   alphaRed, alphaGreen, alphaBlue);
    a.alphaPremultiply = alphaPremultiply;
    a.step = step;
    a.tonemapHDR = tonemapHDR;
    return a;
}

AnimationExport named(int width, int height, int fps, int startFrame, int stopFrame, int ssf,
                      bool alpha, const char* alphaRGB, bool overwrite, bool alphaPremultiply,
                      int step, bool tonemapHDR, bool useClipRange, int exportType)
{
    AnimationExport a = withColour(
        frameRange(width, height, fps, startFrame, stopFrame, ssf, alpha, overwrite), alphaRGB);
    a.alphaPremultiply = alphaPremultiply;
    a.step = step;
    a.tonemapHDR = tonemapHDR;
    a.useClipRange = useClipRange;
    a.exportType = exportType;
    return a;
}

} // namespace

void parseAlphaRGB(const char* alphaRGB, float& red, float& green, float& blue)
{
    const QStringList parts = QString::fromUtf8(alphaRGB ? alphaRGB : "").split(QLatin1Char(','));
    if (parts.size() != 3) {
        red = green = blue = 0.0f;
        return;
    }
    red = parts[0].toFloat();
    green = parts[1].toFloat();
    blue = parts[2].toFloat();
}

void createMovie(const char* filename, int width, int height, int fps, int startFrame,
                 int stopFrame, int ssf, bool alpha, float alphaRed, float alphaGreen,
                 float alphaBlue, bool overwrite)
{
    exportUnnamed(filename, unnamed(width, height, fps, startFrame, stopFrame, ssf, alpha, alphaRed,
                                    alphaGreen, alphaBlue, overwrite, false, 1, false));
}

void createMovie(const char* filename, int width, int height, int fps, int startFrame,
                 int stopFrame, int ssf, bool alpha, float alphaRed, float alphaGreen,
                 float alphaBlue, bool overwrite, bool alphaPremultiply)
{
    exportUnnamed(filename, unnamed(width, height, fps, startFrame, stopFrame, ssf, alpha, alphaRed,
                                    alphaGreen, alphaBlue, overwrite, alphaPremultiply, 1, false));
}

void createMovie(const char* filename, int width, int height, int fps, int startFrame,
                 int stopFrame, int ssf, bool alpha, float alphaRed, float alphaGreen,
                 float alphaBlue, bool overwrite, bool alphaPremultiply, int step)
{
    exportUnnamed(filename,
                  unnamed(width, height, fps, startFrame, stopFrame, ssf, alpha, alphaRed,
                          alphaGreen, alphaBlue, overwrite, alphaPremultiply, step, false));
}

void createMovie(const char* filename, int width, int height, int fps, int startFrame,
                 int stopFrame, int ssf, bool alpha, float alphaRed, float alphaGreen,
                 float alphaBlue, bool overwrite, bool alphaPremultiply, int step, bool tonemapHDR)
{
    exportUnnamed(filename,
                  unnamed(width, height, fps, startFrame, stopFrame, ssf, alpha, alphaRed,
                          alphaGreen, alphaBlue, overwrite, alphaPremultiply, step, tonemapHDR));
}

void createMovie(const char* movie, const char* filename, int width, int height, int fps,
                 int startFrame, int stopFrame, int ssf, bool alpha, const char* alphaRGB,
                 bool overwrite, bool alphaPremultiply, int step, bool useClipRange, int exportType)
{
    exportNamed("createMovie", movie, filename,
                named(width, height, fps, startFrame, stopFrame, ssf, alpha, alphaRGB, overwrite,
                      alphaPremultiply, step, false, useClipRange, exportType));
}

void createMovie(const char* movie, const char* filename, float width, float height, int fps,
                 int startFrame, int stopFrame, int ssf, bool alpha, const char* alphaRGB,
                 bool overwrite, bool alphaPremultiply, int step, bool useClipRange, int exportType)
{
    createMovie(movie, filename, int(width), int(height), fps, startFrame, stopFrame, ssf, alpha,
                alphaRGB, overwrite, alphaPremultiply, step, useClipRange, exportType);
}

void createMovie(const char* movie, const char* filename, int width, int height, int fps,
                 int startFrame, int stopFrame, int ssf, bool alpha, const char* alphaRGB,
                 bool overwrite, bool alphaPremultiply, int step, bool tonemapHDR,
                 bool useClipRange, int exportType)
{
    exportNamed("createMovie", movie, filename,
                named(width, height, fps, startFrame, stopFrame, ssf, alpha, alphaRGB, overwrite,
                      alphaPremultiply, step, tonemapHDR, useClipRange, exportType));
}

void createMovie(const char* movie, const char* filename, float width, float height, int fps,
                 int startFrame, int stopFrame, int ssf, bool alpha, const char* alphaRGB,
                 bool overwrite, bool alphaPremultiply, int step, bool tonemapHDR,
                 bool useClipRange, int exportType)
{
    createMovie(movie, filename, int(width), int(height), fps, startFrame, stopFrame, ssf, alpha,
                alphaRGB, overwrite, alphaPremultiply, step, tonemapHDR, useClipRange, exportType);
}

void renderAnimation(const char* animation, const char* filename, int width, int height, int fps,
                     int startFrame, int stopFrame, int ssf, bool alpha, float alphaRed,
                     float alphaGreen, float alphaBlue, bool overwrite, bool alphaPremultiply)
{
    renderAnimation(animation, filename, width, height, fps, startFrame, stopFrame, ssf, alpha,
                    alphaRed, alphaGreen, alphaBlue, overwrite, alphaPremultiply, false);
}

void renderAnimation(const char* animation, const char* filename, int width, int height, int fps,
                     int startFrame, int stopFrame, int ssf, bool alpha, float alphaRed,
                     float alphaGreen, float alphaBlue, bool overwrite, bool alphaPremultiply,
                     bool tonemapHDR)
{
    exportNamed("renderAnimation", animation, filename,
                unnamed(width, height, fps, startFrame, stopFrame, ssf, alpha, alphaRed, alphaGreen,
                        alphaBlue, overwrite, alphaPremultiply, 1, tonemapHDR));
}

void renderStepAnimation(const char* animation, const char* filename, int width, int height,
                         int fps, int startFrame, int stopFrame, int ssf, bool alpha,
                         float alphaRed, float alphaGreen, float alphaBlue, bool overwrite,
                         bool alphaPremultiply, int step)
{
    exportNamed("renderStepAnimation", animation, filename,
                unnamed(width, height, fps, startFrame, stopFrame, ssf, alpha, alphaRed, alphaGreen,
                        alphaBlue, overwrite, alphaPremultiply, step, false));
}

#include "oxOSGWidget.h"

#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxRenderParameter.h"

namespace {

struct State {
#define OX_OSG_WIDGET_MEMBER(type, name, start) type name = start;
    OX_OSG_WIDGET_STATE(OX_OSG_WIDGET_MEMBER)
#undef OX_OSG_WIDGET_MEMBER
    bool stillDOF = true;
    bool gpu = false;
    bool spectral = false;
    // All GPUs, as a fresh installation has it.
    unsigned gpuMask = ~0u;
    std::array<float, 3> gamma{{2.2f, 2.2f, 2.2f}};
    // Dithering and the two fixed stages are on in a fresh view.
    int postprocessing = (1 << 0) | (1 << 2) | (1 << 3);
    bool snapshotFrame = false;
    bool snapshotInnerFrame = false;
    bool snapshotRegionFrame = false;
    bool snapshotRuleOfThirds = false;
    int snapshotWidth = 0;
    int snapshotHeight = 0;
    std::array<int, 5> innerFrame{{0, 0, 0, 0, 0}};
    std::array<int, 4> regionFrame{{0, 0, 0, 0}};
    bool regionValid = false;
    std::array<float, 4> region{{0.0f, 0.0f, 0.0f, 0.0f}};
    bool regionHelpText = false;
};

State& state()
{
    static State s;
    return s;
}

oxServiceListeners& listeners()
{
    static oxServiceListeners l;
    return l;
}

} // namespace

#define OX_OSG_WIDGET_DEFINE(type, name, start)                                                    \
    type oxOSGWidget::get##name() { return state().name; }                                         \
    void oxOSGWidget::set##name(type value)                                                        \
    {                                                                                              \
        oxTraceCall("oxOSGWidget::set" #name, value);                                              \
        listeners().assign(state().name, value, #name);                                            \
    }
OX_OSG_WIDGET_STATE(OX_OSG_WIDGET_DEFINE)
#undef OX_OSG_WIDGET_DEFINE

void oxOSGWidget::enableStillDOF(bool enable)
{
    oxTraceCall("oxOSGWidget::enableStillDOF", enable);
    listeners().assign(state().stillDOF, enable, "StillDOF");
}

bool oxOSGWidget::isStillDOFEnabled() { return state().stillDOF; }

void oxOSGWidget::setRaytracingMode(bool spectral, bool gpu)
{
    oxTraceCall("oxOSGWidget::setRaytracingMode", spectral, gpu);
    // The spectral switch passes the GPU state along unchanged: only a switch-on is news.
    if (gpu && !state().gpu)
        oxLog::info("Render view: GPU raytracing was chosen, but this host has no GPU raytracer; "
                    "rendering stays on the CPU.");
    listeners().assign(state().spectral, spectral, "SpectralRaytracingMode");
    listeners().assign(state().gpu, gpu, "GpuRaytracing");
}

void oxOSGWidget::setActiveGpuRaytracingMask(unsigned mask)
{
    oxTraceCall("oxOSGWidget::setActiveGpuRaytracingMask", mask);
    listeners().assign(state().gpuMask, mask, "ActiveGpuRaytracingMask");
}

unsigned oxOSGWidget::getActiveGpuRaytracingMask() { return state().gpuMask; }

bool oxOSGWidget::getGpuRaytracing() { return state().gpu; }
bool oxOSGWidget::getSpectralRaytracingMode() { return state().spectral; }

void oxOSGWidget::setDisplayGamma(const std::array<float, 3>& gamma)
{
    oxTraceCall("oxOSGWidget::setDisplayGamma", gamma[0], gamma[1], gamma[2]);
    listeners().assign(state().gamma, gamma, "DisplayGamma");
}

std::array<float, 3> oxOSGWidget::getDisplayGamma() { return state().gamma; }

void oxOSGWidget::setPostprocessingFlags(bool dithering, bool dynamicToneMapping, bool stage2,
                                         bool stage3, bool histogram, bool histogramLog, bool red,
                                         bool green, bool blue, bool luminance)
{
    oxTraceCall("oxOSGWidget::setPostprocessingFlags", dithering, dynamicToneMapping, stage2,
                stage3, histogram, histogramLog, red, green, blue, luminance);
    const bool flags[] = {dithering, dynamicToneMapping, stage2, stage3,
                          histogram, histogramLog,       red,    green,
                          blue,      luminance};
    int bits = 0;
    for (int i = 0; i < 10; ++i)
        bits |= flags[i] ? 1 << i : 0;
    listeners().assign(state().postprocessing, bits, "PostprocessingFlags");
}

int oxOSGWidget::getPostprocessingFlags() { return state().postprocessing; }

void oxOSGWidget::setSnapshotFrame(bool enabled, int width, int height)
{
    oxTraceCall("oxOSGWidget::setSnapshotFrame", enabled, width, height);
    State& s = state();
    s.snapshotWidth = width;
    s.snapshotHeight = height;
    listeners().assign(s.snapshotFrame, enabled, "SnapshotFrame");
}

void oxOSGWidget::setSnapshotInnerFrame(bool enabled, int left, int right, int bottom, int top,
                                        bool relative)
{
    oxTraceCall("oxOSGWidget::setSnapshotInnerFrame", enabled, left, right, bottom, top, relative);
    state().innerFrame = {{left, right, bottom, top, relative ? 1 : 0}};
    listeners().assign(state().snapshotInnerFrame, enabled, "SnapshotInnerFrame");
}

void oxOSGWidget::setSnapshotRenderRegionFrame(bool enabled, int x0, int x1, int y0, int y1)
{
    oxTraceCall("oxOSGWidget::setSnapshotRenderRegionFrame", enabled, x0, x1, y0, y1);
    state().regionFrame = {{x0, x1, y0, y1}};
    listeners().assign(state().snapshotRegionFrame, enabled, "SnapshotRenderRegionFrame");
}

void oxOSGWidget::setSnapshotRuleOfThirds(bool enabled)
{
    oxTraceCall("oxOSGWidget::setSnapshotRuleOfThirds", enabled);
    listeners().assign(state().snapshotRuleOfThirds, enabled, "SnapshotRuleOfThirds");
}

bool oxOSGWidget::getSnapshotFrame() { return state().snapshotFrame; }
std::array<int, 2> oxOSGWidget::getSnapshotFrameSize()
{
    return {{state().snapshotWidth, state().snapshotHeight}};
}
std::array<int, 5> oxOSGWidget::getSnapshotInnerFrameInsets() { return state().innerFrame; }
bool oxOSGWidget::getSnapshotInnerFrame() { return state().snapshotInnerFrame; }
bool oxOSGWidget::getSnapshotRenderRegionFrame() { return state().snapshotRegionFrame; }
bool oxOSGWidget::getSnapshotRuleOfThirds() { return state().snapshotRuleOfThirds; }

void oxOSGWidget::setUserDefinedRenderRegion(oxOSGWidget* widget,
                                             const std::array<float, 4>& region, int viewWidth,
                                             int viewHeight)
{
    oxTraceCall("oxOSGWidget::setUserDefinedRenderRegion", region, viewWidth, viewHeight);
    if (!widget)
        return;
    // The region is kept in the view's own pixels; a caller that measured another view size
    // is scaled onto this one.
    const float sx = viewWidth > 0 ? float(getViewWidth()) / float(viewWidth) : 1.0f;
    const float sy = viewHeight > 0 ? float(getViewHeight()) / float(viewHeight) : 1.0f;
    State& s = state();
    s.region = {{region[0] * sx, region[1] * sy, region[2] * sx, region[3] * sy}};
    listeners().assign(s.regionValid, true, "RenderRegion");
}

bool oxOSGWidget::hasValidRegion() { return state().regionValid; }

std::array<float, 4> oxOSGWidget::getUserDefinedRenderRegion() { return state().region; }

void oxOSGWidget::getResizedRenderRegion(oxOSGWidget* widget, int width, int height, int& x0,
                                         int& x1, int& y0, int& y1)
{
    const State& s = state();
    if (!widget || !s.regionValid || getViewWidth() <= 0 || getViewHeight() <= 0) {
        x0 = x1 = y0 = y1 = 0;
        return;
    }
    const double sx = double(width) / getViewWidth();
    const double sy = double(height) / getViewHeight();
    x0 = int(s.region[0] * sx + 0.5);
    y0 = int(s.region[1] * sy + 0.5);
    x1 = int(s.region[2] * sx + 0.5);
    y1 = int(s.region[3] * sy + 0.5);
}

void oxOSGWidget::updateRenderRegion(oxOSGWidget* widget)
{
    oxTraceCall("oxOSGWidget::updateRenderRegion");
    if (!widget)
        return;
    // The raytracer takes the region relative to the view.
    const State& s = state();
    if (!s.regionValid || getViewWidth() <= 0 || getViewHeight() <= 0) {
        oxRenderParameter::setRaytracingRenderRegion({{0.0f, 0.0f, 1.0f, 1.0f}});
        return;
    }
    const float w = float(getViewWidth());
    const float h = float(getViewHeight());
    oxRenderParameter::setRaytracingRenderRegion(
        {{s.region[0] / w, s.region[1] / h, s.region[2] / w, s.region[3] / h}});
}

void oxOSGWidget::invalidateRenderRegion(oxOSGWidget* widget)
{
    oxTraceCall("oxOSGWidget::invalidateRenderRegion");
    if (!widget)
        return;
    listeners().assign(state().regionValid, false, "RenderRegion");
    oxRenderParameter::setRaytracingRenderRegion({{0.0f, 0.0f, 1.0f, 1.0f}});
}

void oxOSGWidget::displayRegionRenderHelpText(int index, int show)
{
    oxTraceCall("oxOSGWidget::displayRegionRenderHelpText", index, show);
    state().regionHelpText = show != 0;
}

void oxOSGWidget::resetToDefaults() { state() = State(); }

int oxOSGWidget::addListener(oxServiceListeners::Listener listener)
{
    return listeners().add(std::move(listener));
}

void oxOSGWidget::removeListener(int handle) { listeners().remove(handle); }

void oxOSGWidget::cancelAntialiasing()
{
    oxTraceCall("oxOSGWidget::cancelAntialiasing");
    // The view listens and stops its refinement; an export then has the raytracer to itself.
    listeners().notify(cancelAntialiasingNotice);
}

oxOSGWidget* oxOSGWidget::getMGLW(int index)
{
    // The main view has no state of its own beyond the statics above; one object stands for it.
    static oxOSGWidget mainView;
    return (index == -1 || index == 0) ? &mainView : nullptr;
}

bool oxOSGWidget::writeImage(oxOSGWidget* widget, const QString& fileName)
{
    oxTraceCall("oxOSGWidget::writeImage", fileName.toStdString());
    if (!widget) {
        oxLog::error("Render view: no view to write '%s' from.", fileName.toUtf8().constData());
        return false;
    }
    // The view's own image: its size, its full sample count, no passes and no dialogs.
    oxImageWriter writer;
    writer.setNoOverwriteMessage(true);
    writer.setNoShowImage(true);
    writer.setNoProgress(true);
    if (getRGB16F())
        writer.setExportExrHalf(true);
    return writer.exportImage(fileName, getViewWidth(), getViewHeight(), 3, 0, -1.0f, false,
                              QString(), false, false);
}

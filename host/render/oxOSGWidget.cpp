#include "oxOSGWidget.h"

#include "oxImageWriter.h"
#include "oxLog.h"

namespace {

struct State {
#define OX_OSG_WIDGET_MEMBER(type, name, start) type name = start;
    OX_OSG_WIDGET_STATE(OX_OSG_WIDGET_MEMBER)
#undef OX_OSG_WIDGET_MEMBER
    bool stillDOF = true;
    bool gpu = false;
    bool spectral = false;
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
    listeners().assign(state().spectral, spectral, "SpectralRaytracingMode");
    listeners().assign(state().gpu, gpu, "GpuRaytracing");
}

bool oxOSGWidget::getGpuRaytracing() { return state().gpu; }
bool oxOSGWidget::getSpectralRaytracingMode() { return state().spectral; }

void oxOSGWidget::resetToDefaults() { state() = State(); }

int oxOSGWidget::addListener(oxServiceListeners::Listener listener)
{
    return listeners().add(std::move(listener));
}

void oxOSGWidget::removeListener(int handle) { listeners().remove(handle); }

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

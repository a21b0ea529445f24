#pragma once

#include "oxRenderSettingsPreset.h"

#include <QString>

class QWidget;
class oxImageWriter;

/// What the output commands reach of the loaded plug-in: its image writer and the window's
/// settings. The plug-in's module is the implementation; it is current while it lives, so a
/// command called before the plug-in is up, or after it went, finds none.
class oxOutputHost {
public:
    /// The living implementation, or null.
    static oxOutputHost* current();
    /// The writer of the current host, or null after one error line that names command and
    /// says that nothing was exported.
    static oxImageWriter* writerFor(const char* command);

    virtual oxImageWriter* getImageWriter() const = 0;
    /// The window's settings frozen into a new record; null without a window.
    virtual oxRenderSettingsPresetSPtr captureWindowSettings() = 0;
    /// The window's own record, for changes the window then shows with refreshWindow; null
    /// without a window.
    virtual oxRenderSettingsPreset* windowSettings() = 0;
    virtual void refreshWindow() = 0;
    /// Starts a fast snapshot series of that size, at once or when the render view is ready.
    virtual void initFastSnapshots(int width, int height, int supersamplingMode) = 0;

protected:
    oxOutputHost();
    virtual ~oxOutputHost();
    oxOutputHost(const oxOutputHost&) = delete;
    oxOutputHost& operator=(const oxOutputHost&) = delete;
};

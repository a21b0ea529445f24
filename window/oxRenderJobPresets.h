#pragma once

#include "oxMessageHelpers.h"

#include <array>

class oxMessage;

// Render job presets: the window's list rqPresets, which the render queue fills, reads and
// stores in the project through these named callbacks. The window's slots addRQPreset,
// deleteRQPreset, getRQPreset, applyRQPresetByName and receiveRenderSettingsFromRenderQueue
// do the work.

/// The project attribute that holds the whole list as text.
constexpr const char* kRenderJobsPresetsAttribute = "RenderJobsPresets";
/// Message attributes of the callbacks.
constexpr const char* kRQPresetAttribute = "preset";
constexpr const char* kRQPresetsAttribute = "presets";
constexpr const char* kRQPresetXmlAttribute = "xml";

/// The callbacks, in registration order. Each does nothing while there is no window.
extern const std::array<oxNamedCallback, 9> kRenderJobPresetCallbacks;

/// Registers every callback of kRenderJobPresetCallbacks once (a second call changes
/// nothing); the window does this at construction.
void registerRenderJobPresetCallbacks();
/// Removes them again; the window does this at destruction.
void unregisterRenderJobPresetCallbacks();
/// Registers "getRQPresetNames" alone unless it is there; the window leaves it behind at
/// destruction, answering no names while there is no window.
void registerRQPresetNamesCallback();

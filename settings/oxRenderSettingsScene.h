#pragma once

#include "oxRenderSettingsPreset.h"

#include <functional>

class oxMessage;

// The settings record in a scene's project record, in the preferences and in the messages of
// other modules: every key comes from the key tables, with its fallback and its rule.

/// Reads the scene keys of project into record, then the render view's own settings into the
/// view. The BRDF key is decided by decideBrdfMode, which gets the record's mode from before
/// the read and returns the mode to take.
void readSceneSettings(const oxMessage& project, oxRenderSettingsPreset& record,
                       const std::function<int(int reference)>& decideBrdfMode);
/// Writes record under the scene keys, and the render view's own settings, into project.
void writeSceneSettings(oxMessage& project, const oxRenderSettingsPreset& record);
/// The default settings of a new scene from the preferences: output keys, then what a scene
/// chooses (view, animation, variant sets, passes) cleared, then the raytracing keys; the
/// render view's own settings go to the view.
void readDefaultSettings(const oxMessage& preferences, oxRenderSettingsPreset& record);
/// The output keys that another module hands in, as far as message has them, and the pass
/// switches it names.
void readHandedInSettings(const oxMessage& message, oxRenderSettingsPreset& record);

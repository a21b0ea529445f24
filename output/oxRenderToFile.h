#pragma once

#include "oxRenderSettingsPreset.h"

#include <QString>

class oxImageWriter;

/// Renders the whole job of record to files through writer and restores the render state
/// afterwards (render region, passes, premultiplication, the writer's switches, simulation);
/// true when it was cancelled. windowSettings, when given, describe the images in their
/// metadata; clusterHosts is handed to each export.
bool renderPresetToFile(oxImageWriter& writer, const oxRenderSettingsPresetSPtr& record,
                        const oxRenderSettingsPreset* windowSettings, const QString& clusterHosts);

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

/// Renders record's job for a script, without dialogs. Unless alwaysOverride, files of the job
/// that exist already stop it before anything is written (an error line lists them); files
/// that can't be written are listed in a warning and the job goes on. A stream output renders
/// without these checks. The writer's own overwrite question is off for the job. Nothing
/// happens for a null record.
void startRenderToFile(oxImageWriter& writer, const oxRenderSettingsPresetSPtr& record,
                       const oxRenderSettingsPreset* windowSettings, const QString& clusterHosts,
                       bool alwaysOverride);

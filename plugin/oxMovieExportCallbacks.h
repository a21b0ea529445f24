#pragma once

#include "oxMessageHelpers.h"

// The module's named callbacks. Each is a plain function that reaches the module through
// theMovieExport; the module registers them in the order of kMovieExportCallbacks.

/// "checkFileWritingForPresets": settles the output files of several render queue presets.
void checkFileWritingForPresetsCB(oxMessage& message);
/// "checkFileWritingForPreset": settles the output files of one render queue preset.
void checkFileWritingForPresetCB(oxMessage& message);
/// "oxMovieExport::exportMovie": takes a start frame and a frame rate into the window.
void exportMovieCB(oxMessage& message);
/// "oxMovieExport::exportSnapshot": writes a fast snapshot for another module.
void exportSnapshotCB(oxMessage& message);
/// "oxMovieExport::clickedAddToRenderQueue": the render queue button, for other modules.
void clickedAddToRenderQueueCB(oxMessage& message);

/// "oxMovieExport::listOutputFiles": the files ("files", string list) a render to file of the
/// window's settings, or of the preset "preset" taken into the window, would write.
void listOutputFilesCB(oxMessage& message);
/// "oxMovieExport::renderOutputFiles": renders them; existing files stop the job unless
/// "overwrite". Sets "files" when every file was written, else "error" (string).
void renderOutputFilesCB(oxMessage& message);

/// The callbacks in registration order.
inline constexpr oxNamedCallback kMovieExportCallbacks[] = {
    {"checkFileWritingForPresets", checkFileWritingForPresetsCB},
    {"checkFileWritingForPreset", checkFileWritingForPresetCB},
    {"oxMovieExport::exportMovie", exportMovieCB},
    {"oxMovieExport::exportSnapshot", exportSnapshotCB},
    {"oxMovieExport::clickedAddToRenderQueue", clickedAddToRenderQueueCB},
    {"oxMovieExport::listOutputFiles", listOutputFilesCB},
    {"oxMovieExport::renderOutputFiles", renderOutputFilesCB},
};

#pragma once

/// Registers getLastRenderTime and the image writer's export format switches (TIFF/PSD in HDR,
/// EXR in half float, TIFF/PSD with a layer per pass), each with a setter and a getter.
void bindExportFormat();

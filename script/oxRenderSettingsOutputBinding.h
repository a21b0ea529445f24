#pragma once

/// The output family of the oxRenderSettings script module: view, file name, variant sets,
/// size, region, colour output, passes, metadata, animation and the start of a render.
void bindRenderSettingsOutput();

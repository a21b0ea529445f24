#pragma once

/// The docstring of the output command of the oxRenderSettings script module of that name, or
/// null for a command that has none.
const char* oxRenderSettingsOutputDoc(const char* command);

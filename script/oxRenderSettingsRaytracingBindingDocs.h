#pragma once

/// The docstring of the raytracing command of oxRenderSettings of that name, or null for a
/// command that has none.
const char* renderSettingsRaytracingDoc(const char* command);

#pragma once

/// The raytracing family of the oxRenderSettings script module.
void bindRenderSettingsRaytracing();

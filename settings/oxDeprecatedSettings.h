#pragma once

// Settings the raytracer no longer has. Old scripts still set them, so the commands stay and
// only tell on standard output that the value is ignored.

/// The initial and the adaptive antialiasing sample counts: ignored, with a warning.
void setInitialAASamples(int samples);
void setAdaptiveAASamples(int samples);

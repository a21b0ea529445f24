#pragma once

/// How the raytracer integrates glossy reflection of the environment: 0 samples the compact
/// Phong-like lobe, 2 the wide-tailed GGX lobe. Materials choose their lobe for lights by
/// their own render mode bits; this setting is the scene-wide counterpart for reflections.
class oxBrdfIntegration {
public:
    /// type 2 selects GGX integration, every other value the compact lobe.
    static void setBrdfType(int type);
    static int getBrdfType();
};

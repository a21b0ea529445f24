#pragma once

#include <array>

namespace osg {
class Material;
}

/// The material system's interface to modules: scene-wide modes that every material honours.
/// Reached through oxInterfaceFactory; the host's own implementation keeps the modes and a
/// deriving material system may act on them.
class oxMaterialInterface {
public:
    oxMaterialInterface() = default;
    virtual ~oxMaterialInterface() = default;
    oxMaterialInterface(const oxMaterialInterface&) = delete;
    oxMaterialInterface& operator=(const oxMaterialInterface&) = delete;

    /// Whether materials take their light and colour values as photometric quantities.
    /// Records the call in oxCallTrace.
    virtual void setPhotometricMode(bool photometric);
    virtual bool getPhotometricMode() const { return m_photometric; }
    /// Tells the material system that materials changed and must be prepared again. Records
    /// the call in oxCallTrace.
    virtual void materialsChanged();

    /// A BRDF material's incandescence made photometrically consistent: in photometric mode
    /// its colour is scaled to luminance 1 (by the luminance weights) and the colour's former
    /// luminance moves into the intensity, so the emitted light stays the same; a black
    /// colour, another kind of material and standard mode leave it alone. Records the call.
    virtual void convertBrdfMaterial(osg::Material* material);
    /// An auxiliary BRDF material's glow follows the mode: intensity = photometric scale in
    /// photometric mode, 1 in standard mode (black colours stay dark). Records the call.
    virtual void adjustAuxiliaryMaterial(osg::Material* material);
    /// Weights of red, green and blue in the luminance of a colour.
    virtual void setLuminanceWeights(float red, float green, float blue);
    const std::array<float, 3>& getLuminanceWeights() const { return m_weights; }
    /// The factor of the last value conversion between the modes.
    virtual void setPhotometricScale(float scale);
    float getPhotometricScale() const { return m_scale; }

    /// Back to the start state (standard values), without trace.
    virtual void resetToDefaults()
    {
        m_photometric = false;
        m_weights = {0.2126f, 0.7152f, 0.0722f};
        m_scale = 1.0f;
    }

private:
    bool m_photometric = false;
    std::array<float, 3> m_weights{0.2126f, 0.7152f, 0.0722f};
    float m_scale = 1.0f;
};

/// The host's factory of interfaces of its subsystems.
class oxInterfaceFactory {
public:
    /// The material interface; never null.
    static oxMaterialInterface* getMaterialInterface();
    /// Makes materials (not owned; null for the host's own) the interface handed out.
    static void setMaterialInterface(oxMaterialInterface* materials);
};

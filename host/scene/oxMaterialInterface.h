#pragma once

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

    /// Back to the start state (standard values), without trace.
    virtual void resetToDefaults() { m_photometric = false; }

private:
    bool m_photometric = false;
};

/// The host's factory of interfaces of its subsystems.
class oxInterfaceFactory {
public:
    /// The material interface; never null.
    static oxMaterialInterface* getMaterialInterface();
    /// Makes materials (not owned; null for the host's own) the interface handed out.
    static void setMaterialInterface(oxMaterialInterface* materials);
};

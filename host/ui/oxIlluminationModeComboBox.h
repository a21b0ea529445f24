#pragma once

class QComboBox;

/// Fills combo boxes with the host's illumination modes.
class oxIlluminationModeComboBox {
public:
    /// The legacy list: the five modes from "Precomputed" (-1) to "Full Global Illumination"
    /// (3), each with its mode id as user data. Replaces the box's items.
    static void initLegacy(QComboBox* box);
};

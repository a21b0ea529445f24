#pragma once

#include "oxRenderSettingsPreset.h"

#include <array>

// Form facts that code fills in or sets after setupUi: the combo boxes whose items carry user
// data, the ranges of the wheels, and the spin boxes of fixed size beside their sliders.

/// _denoiser_filter: the denoise filters as the window names them (1, the legacy CPU
/// denoiser, is gone). _filtertype shows the record's kPixelFilterTypes.
extern const std::array<oxPresetValueName, 3> kDenoiseFilterItems;

/// The range and step of a QOXWheelPrec.
struct oxFormWheelRange {
    const char* widget;
    double minimum;
    double maximum; ///< 0: the wheel keeps its own maximum
    double singleStep;
};
extern const std::array<oxFormWheelRange, 5> kWheelRanges;

/// Spin boxes beside sliders: 62 wide, 16 to 32 high, scaled by the screen's dpi.
extern const std::array<const char*, 11> kSliderSpinBoxes;
constexpr int kSliderSpinBoxWidth = 62;
constexpr int kSliderSpinBoxMinHeight = 16;
constexpr int kSliderSpinBoxMaxHeight = 32;

#pragma once

#include "oxRenderSettingsPreset.h"

#include <variant>
#include <vector>

// The host parameters a settings record mirrors, once: for each, the record field, the getter
// of the store that capture reads and the setter that the push writes. Capture, push, the live
// columns of the preset file and the window's slots all walk this table.

/// Where a parameter is written in the push. The push runs the stages in this order; the
/// photometric values go between Denoise and PixelFilter, the raytracer takes over the pixel
/// filter between View and Raytracing, and the denoise filter is written once more after
/// Raytracing.
enum class oxLiveStage {
    Denoise,     ///< first of all
    PixelFilter, ///< the pixel filter factory
    View,        ///< the render view's copies; the last stage without a raytracer
    Raytracing,  ///< quality, depths, time and overrides
    Nurbs,       ///< the raytracer's NURBS settings (none without a raytracer)
    Photons,     ///< photon mapping, textures, sample offset and illuminant
    CaptureOnly, ///< read by capture; written by code of their own (spectral switch, photometry)
};

/// How one parameter reaches its store.
template <typename T>
struct oxLiveAccess {
    T oxRenderSettingsPreset::*field = nullptr;
    /// The live value; null for a second store of a field that is read elsewhere.
    T (*get)() = nullptr;
    /// Null for CaptureOnly parameters.
    void (*set)(T) = nullptr;
};

struct oxLiveParameter {
    oxLiveStage stage;
    std::variant<oxLiveAccess<bool>, oxLiveAccess<int>, oxLiveAccess<unsigned int>,
                 oxLiveAccess<float>>
        access;
};

/// Every live parameter, in push order.
const std::vector<oxLiveParameter>& oxLiveParameters();

/// The store of field that capture reads: its getter (null when field isn't live) and its
/// value. The NURBS getters give the constructed value while the host has no raytracer.
template <typename T>
T (*oxLiveGetter(T oxRenderSettingsPreset::*field))
();
template <typename T>
T readLiveParameter(T oxRenderSettingsPreset::*field);
/// Keeps a parameter out of template deduction, so that the field alone decides the type.
template <typename T>
struct oxNonDeducedType {
    using type = T;
};
template <typename T>
using oxNonDeduced = typename oxNonDeducedType<T>::type;

/// Writes value into the store of field that capture reads, as a widget of the window does.
template <typename T>
void writeLiveParameter(T oxRenderSettingsPreset::*field, oxNonDeduced<T> value);

/// A field of a simple widget: a flag or a number shown as an integer.
using oxLiveField = std::variant<bool oxRenderSettingsPreset::*, int oxRenderSettingsPreset::*,
                                 unsigned int oxRenderSettingsPreset::*>;
/// The live value of field as an integer (flags as 0 and 1).
int readLiveInt(const oxLiveField& field);

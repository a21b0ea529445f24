#pragma once

#include <cstddef>
#include <string>

/// Checks of the numbers a scene file gives for cameras, transforms, lights and animation keys.
///
/// The ray kernel refuses rays whose origin or direction is not finite or lies beyond about
/// 1.8e18, and ends the process when it meets one. Scene values are therefore checked where
/// they are read, and the renderer checks what reaches it once more.
namespace oxSceneValues {

/// The largest coordinate, scale or light value a scene may hold, in either sign.
constexpr double kMaxMagnitude = 1.0e12;

/// True when value is finite and within ±kMaxMagnitude.
inline bool usable(double value) { return value >= -kMaxMagnitude && value <= kMaxMagnitude; }

/// The first of count values that isn't usable, as text ("nan", "inf", "1e+19"); "" when all
/// are.
std::string firstUnusable(const float* values, size_t count);
std::string firstUnusable(const double* values, size_t count);

/// What is wrong with a stored view of kViewValues floats (position 3, orientation 4, field of
/// view, field of view mode, near, far, whitepoint, glow 3, glare 3) as "position (nan)"; ""
/// when every value is usable and the orientation is no zero quaternion.
std::string checkView(const float* view);
constexpr size_t kViewValues = 18;

} // namespace oxSceneValues

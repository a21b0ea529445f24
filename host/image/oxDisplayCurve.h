#pragma once

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

/// The transfer curve that turns scene-linear values into the display-referred code values of
/// integer image files (8 and 16 bit): files of those formats are viewed as they are, so they
/// hold what a display shows. Float formats keep scene-linear values and never pass here.
///
/// The curve is a table of code values at evenly spaced linear values from 0 to 1; values in
/// between are interpolated, values outside are clamped.
class oxDisplayCurve {
public:
    /// The size of the table: fine enough that 16-bit code values step by less than one.
    static constexpr size_t tableSize = 4096;

    /// The sRGB transfer curve.
    static oxDisplayCurve sRGB();
    /// The curve of an ICC profile's red tone reproduction curve, inverted (linear -> code);
    /// sRGB when the bytes are empty or the profile has no such curve (a table-based profile).
    static oxDisplayCurve fromICCProfile(const std::string& profile);

    /// The sRGB encoding of one linear value in [0, 1].
    static float sRGBEncode(float linear)
    {
        return linear <= 0.0031308f ? linear * 12.92f
                                    : 1.055f * std::pow(linear, 1.0f / 2.4f) - 0.055f;
    }

    const std::vector<float>& table() const { return m_table; }

private:
    std::vector<float> m_table;
};

/// Applies a curve table as oxDisplayCurve::table holds it to one value.
inline float oxApplyDisplayCurve(const std::vector<float>& table, float linear)
{
    if (table.size() < 2 || !(linear > 0.0f))
        return table.empty() ? std::max(0.0f, linear) : table.front();
    const float at = std::min(linear, 1.0f) * float(table.size() - 1);
    const size_t i = std::min(size_t(at), table.size() - 2);
    const float t = at - float(i);
    return table[i] + (table[i + 1] - table[i]) * t;
}

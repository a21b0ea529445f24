#include "oxDisplayCurve.h"

#include <lcms2.h>

oxDisplayCurve oxDisplayCurve::sRGB()
{
    oxDisplayCurve curve;
    curve.m_table.resize(tableSize);
    for (size_t i = 0; i < tableSize; ++i)
        curve.m_table[i] = sRGBEncode(float(i) / float(tableSize - 1));
    return curve;
}

oxDisplayCurve oxDisplayCurve::fromICCProfile(const std::string& profile)
{
    if (profile.empty())
        return sRGB();
    cmsHPROFILE handle = cmsOpenProfileFromMem(profile.data(), cmsUInt32Number(profile.size()));
    if (!handle)
        return sRGB();
    oxDisplayCurve curve;
    // The profile's curve maps code values to linear light; the file needs the reverse.
    if (const auto* trc = static_cast<const cmsToneCurve*>(cmsReadTag(handle, cmsSigRedTRCTag))) {
        if (cmsToneCurve* reversed = cmsReverseToneCurveEx(tableSize, trc)) {
            curve.m_table.resize(tableSize);
            for (size_t i = 0; i < tableSize; ++i)
                curve.m_table[i] = std::clamp(
                    cmsEvalToneCurveFloat(reversed, float(i) / float(tableSize - 1)), 0.0f, 1.0f);
            cmsFreeToneCurve(reversed);
        }
    }
    cmsCloseProfile(handle);
    return curve.m_table.empty() ? sRGB() : curve;
}

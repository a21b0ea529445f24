#pragma once

#include <vector>

/// Writes rendered images and movies to files. This holds the export switches that stay
/// between exports; the rendering operations arrive with the raytracer.
class oxImageWriter {
public:
    oxImageWriter();
    ~oxImageWriter();
    oxImageWriter(const oxImageWriter&) = delete;
    oxImageWriter& operator=(const oxImageWriter&) = delete;

    /// Every writer alive: the host reaches them all to cancel running exports at shutdown.
    static const std::vector<oxImageWriter*>& getAll();

    /// Puts the export switches back to their start values (new scene).
    void resetExportSettings();

    /// TIFF and PSD written with floating point channels.
    void setExportTiffHDR(bool on);
    bool getExportTiffHDR() const { return m_tiffHDR; }
    /// EXR written with 16-bit instead of 32-bit floats.
    void setExportExrHalf(bool on);
    bool getExportExrHalf() const { return m_exrHalf; }
    /// Render passes written as layers of one file where the format allows it.
    void setExportMultiLayer(bool on);
    bool getExportMultiLayer() const { return m_multiLayer; }

private:
    bool m_tiffHDR = false;
    bool m_exrHalf = true;
    bool m_multiLayer = false;
};

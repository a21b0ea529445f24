#pragma once

#include <QPoint>
#include <QRect>

#include <array>

class QComboBox;

// The named image sizes: the entries of _imageSizes and the rows of the size menu of the
// preferences page.

/// One named size of _imageSizes: a pixel size at 72 dpi, or a paper size in millimetres.
struct oxImageSizeEntry {
    const char* text;
    int left; ///< width: pixels, or millimetres for paper
    int top;  ///< height, likewise
    int dpi;
    bool paper;

    /// The item's user data: left and top hold the size, width() the dpi and height() the
    /// kind (1 for pixels, 0 for paper).
    QRect rect() const
    {
        return QRect(QPoint(left, top), QPoint(left + dpi - 1, paper ? top - 1 : top));
    }
};

/// _imageSizes after "Custom" (index 0, no user data): "From Render Window" (index 1, replaced
/// by the render view's size), the A series and the pixel sizes.
extern const std::array<oxImageSizeEntry, 38> kImageSizes;
constexpr int kImageSizeCustom = 0;
constexpr int kImageSizeFromRenderWindow = 1;
constexpr const char* kImageSizeCustomText = "Custom";

/// One row of the size menu: the size in pixels at its dpi.
struct oxImageSizeMenuRow {
    const char* text;
    int width;
    int height;
    int dpi;
};
/// The A series at 300 dpi, then the pixel sizes at 72 dpi (a separator between the groups).
extern const std::array<oxImageSizeMenuRow, 14> kImageSizeMenuPaper;
extern const std::array<oxImageSizeMenuRow, 23> kImageSizeMenuPixels;
constexpr const char* kImageSizeMenuContext = "oxImageSizeGuiContext";

/// Fills box with "Custom" and kImageSizes, each with its rect as user data.
void oxFillImageSizes(QComboBox* box);

/// "Custom ...": pixels from millimetres at dpi, rounded half away from zero. The millimetre
/// is taken through a float, as sizes have always been computed.
int oxPixelsFromMillimetres(int millimetres, int dpi);

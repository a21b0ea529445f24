// Image size and print resolution: the five numbers (pixel width and height, print width and
// height in centimetres, dpi) kept consistent, the named size entry following them, and the
// render region following a size change.

#include "oxRenderSettingsImageSize.h"

#include "QOXVec2Control.h"
#include "oxOSGWidget.h"
#include "oxRenderSettings.h"

#include <QSignalBlocker>

#include <QComboBox>
#include <QCoreApplication>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>

#include <algorithm>
#include <cmath>

const std::array<oxImageSizeEntry, 38> kImageSizes = {{
    {"From Render Window", 0, 0, 72, false},
    {"A0 portrait", 841, 1189, 300, true},
    {"A0 landscape", 1189, 841, 300, true},
    {"A1 portrait", 594, 841, 300, true},
    {"A1 landscape", 841, 594, 300, true},
    {"A2 portrait", 420, 594, 300, true},
    {"A2 landscape", 594, 420, 300, true},
    {"A3 portrait", 297, 420, 300, true},
    {"A3 landscape", 420, 297, 300, true},
    {"A4 portrait", 210, 297, 300, true},
    {"A4 landscape", 297, 210, 300, true},
    {"A5 portrait", 148, 210, 300, true},
    {"A5 landscape", 210, 148, 300, true},
    {"A6 portrait", 105, 148, 300, true},
    {"A6 landscape", 148, 105, 300, true},
    {"UHDV (7680 x 4320)", 7680, 4320, 72, false},
    {"DCI 4K (4096 x 3112)", 4096, 3112, 72, false},
    {"4K (4096 x 2160)", 4096, 2160, 72, false},
    {"QSXGA (2560 x 2048)", 2560, 2048, 72, false},
    {"WQXGA (2560 x 1600)", 2560, 1600, 72, false},
    {"DCI 2K (2048 x 1556)", 2048, 1556, 72, false},
    {"QXGA (2048 x 1536)", 2048, 1536, 72, false},
    {"WUXGA (1920 x 1200)", 1920, 1200, 72, false},
    {"HD 1080 (1920 x 1080)", 1920, 1080, 72, false},
    {"WSXGA+ (1680 x 1050)", 1680, 1050, 72, false},
    {"UXGA (1600 x 1200)", 1600, 1200, 72, false},
    {"SXGA+ (1400 x 1050)", 1400, 1050, 72, false},
    {"SXGA (1280 x 1024)", 1280, 1024, 72, false},
    {"HD 720 (1280 x  720)", 1280, 720, 72, false},
    {"XGA (1024 x  768)", 1024, 768, 72, false},
    {"PAL WIDE (1024 x  576)", 1024, 576, 72, false},
    {"SVGA ( 800 x  600)", 800, 600, 72, false},
    {"WVGA ( 854 x  480)", 854, 480, 72, false},
    {"PAL ( 768 x  576)", 768, 576, 72, false},
    {"NTSC ( 720 x  480)", 720, 480, 72, false},
    {"VGA ( 640 x  480)", 640, 480, 72, false},
    {"QVGA ( 320 x  240)", 320, 240, 72, false},
    {"CGA ( 320 x  200)", 320, 200, 72, false},
}};

// The menu's pixel counts are its own: A1 carries 9333 and "4K" returns a height of 2140.
// Saved preferences hold these values, so they stay as they are.
const std::array<oxImageSizeMenuRow, 14> kImageSizeMenuPaper = {{
    {"A0 portrait  (300 dpi)", 9933, 14043, 300},
    {"A0 landscape (300 dpi)", 14043, 9933, 300},
    {"A1 portrait  (300 dpi)", 7016, 9333, 300},
    {"A1 landscape (300 dpi)", 9333, 7016, 300},
    {"A2 portrait  (300 dpi)", 4961, 7016, 300},
    {"A2 landscape (300 dpi)", 7016, 4961, 300},
    {"A3 portrait  (300 dpi)", 3508, 4961, 300},
    {"A3 landscape (300 dpi)", 4961, 3508, 300},
    {"A4 portrait  (300 dpi)", 2480, 3508, 300},
    {"A4 landscape (300 dpi)", 3508, 2480, 300},
    {"A5 portrait  (300 dpi)", 1748, 2480, 300},
    {"A5 landscape (300 dpi)", 2480, 1748, 300},
    {"A6 portrait  (300 dpi)", 1240, 1748, 300},
    {"A6 landscape (300 dpi)", 1748, 1240, 300},
}};

const std::array<oxImageSizeMenuRow, 23> kImageSizeMenuPixels = {{
    {"UHDV     (7680 x 4320)", 7680, 4320, 72}, {"DCI 4K   (4096 x 3112)", 4096, 3112, 72},
    {"4K       (4096 x 2160)", 4096, 2140, 72}, {"QSXGA    (2560 x 2048)", 2560, 2048, 72},
    {"WQXGA    (2560 x 1600)", 2560, 1600, 72}, {"DCI 2K   (2048 x 1556)", 2048, 1556, 72},
    {"QXGA     (2048 x 1536)", 2048, 1536, 72}, {"WUXGA    (1920 x 1200)", 1920, 1200, 72},
    {"HD 1080  (1920 x 1080)", 1920, 1080, 72}, {"WSXGA+   (1680 x 1050)", 1680, 1050, 72},
    {"UXGA     (1600 x 1200)", 1600, 1200, 72}, {"SXGA+    (1400 x 1050)", 1400, 1050, 72},
    {"SXGA     (1280 x 1024)", 1280, 1024, 72}, {"HD 720   (1280 x  720)", 1280, 720, 72},
    {"XGA      (1024 x  768)", 1024, 768, 72},  {"PAL WIDE (1024 x  576)", 1024, 576, 72},
    {"SVGA     ( 800 x  600)", 800, 600, 72},   {"WVGA     ( 854 x  480)", 854, 480, 72},
    {"PAL      ( 768 x  576)", 768, 576, 72},   {"NTSC     ( 720 x  480)", 720, 480, 72},
    {"VGA      ( 640 x  480)", 640, 480, 72},   {"QVGA     ( 320 x  240)", 320, 240, 72},
    {"CGA      ( 320 x  200)", 320, 200, 72},
}};

namespace {

constexpr double kCmPerInch = 2.54;
constexpr const char* kNoRegionTitle = "RenderSettings";
constexpr const char* kNoRegionText =
    "You haven't set a valid region in the render window yet.\n- Set a region by activating "
    "Region Rendering via the toolbar\n  or by shortcut R in the render window.\n- Then hold "
    "key R and drag with the left mouse button to select a region.";
constexpr const char* kCustomMenuText = "Custom ...";
constexpr const char* kCustomTitle = "Custom Image Size";

int rounded(float value) { return int(value + 0.5f); }

// Print size in centimetres from pixels; a dpi of 0 has no print size.
float printFromPixels(double pixels, double dpi)
{
    return dpi > 0.0 ? float(pixels / dpi * kCmPerInch) : 0.0f;
}

float pixelsFromPrint(double centimetres, double dpi)
{
    return float(centimetres / kCmPerInch * dpi);
}

// The render view the region belongs to; null when there is none.
oxOSGWidget* renderWindow() { return oxOSGWidget::getMGLW(-1); }

template <typename W, typename F>
void quiet(W* widget, F&& write)
{
    const QSignalBlocker blocker(widget);
    write(widget);
}

} // namespace

void oxFillImageSizes(QComboBox* box)
{
    box->clear();
    box->addItem(QCoreApplication::translate("oxRenderSettings", kImageSizeCustomText));
    for (const oxImageSizeEntry& entry : kImageSizes)
        box->addItem(QCoreApplication::translate("oxRenderSettings", entry.text), entry.rect());
}

int oxPixelsFromMillimetres(int millimetres, int dpi)
{
    const double mmPerInch = double(25.4f);
    return int(std::lround(double(millimetres) / mmPerInch * double(dpi)));
}

void oxRenderSettings::fillImageSizes() { oxFillImageSizes(_imageSizes); }

void oxRenderSettings::connectImageSize()
{
    using Self = oxRenderSettings;
    const auto spinChanged = QOverload<int>::of(&QSpinBox::valueChanged);
    fillImageSizes();
    connect(_imageSizes, QOverload<int>::of(&QComboBox::activated), this, &Self::changedImageSize);
    connect(_pixel_size, &QOXVec2Control::changedX, this, &Self::changedPixelWidth);
    connect(_pixel_size, &QOXVec2Control::changedY, this, &Self::changedPixelHeight);
    connect(_print_size, &QOXVec2Control::changedX, this, &Self::changedPrintWidth);
    connect(_print_size, &QOXVec2Control::changedY, this, &Self::changedPrintHeight);
    connect(_dpi, spinChanged, this, &Self::changedDpi);
    connect(_region_start_x, spinChanged, this, &Self::changedRegionStartX);
    connect(_region_start_y, spinChanged, this, &Self::changedRegionStartY);
    connect(_region_end_x, spinChanged, this, &Self::changedRegionEndX);
    connect(_region_end_y, spinChanged, this, &Self::changedRegionEndY);
    connect(_use_region_region, &QAbstractButton::toggled, this, &Self::changedUseRenderRegion);
    connect(_use_viewport_region, &QAbstractButton::toggled, this, &Self::changedUseViewportRegion);
}

void oxRenderSettings::changedImageSize(int index)
{
    // "Custom" keeps the numbers; it is only shown.
    if (index <= kImageSizeCustom || index >= _imageSizes->count())
        return;
    const QRect rect = _imageSizes->itemData(index).toRect();
    oxRenderSettingsPreset& p = currentPreset;
    const float oldWidth = p.pixel_width;
    const float oldHeight = p.pixel_height;
    const bool wholeImage = p.region_start_x == 0 && p.region_start_y == 0 &&
                            p.region_end_x == p.getPixelWidth() &&
                            p.region_end_y == p.getPixelHeight();

    const float dpi = float(rect.width());
    float pixelWidth = 0.0f;
    float pixelHeight = 0.0f;
    float printWidth = 0.0f;
    float printHeight = 0.0f;
    if (rect.height() < 1) {
        printWidth = float(rect.left()) * 0.1f;
        printHeight = float(rect.top()) * 0.1f;
        pixelWidth = pixelsFromPrint(printWidth, dpi);
        pixelHeight = pixelsFromPrint(printHeight, dpi);
    } else {
        pixelWidth = float(rect.left());
        pixelHeight = float(rect.top());
        if (index == kImageSizeFromRenderWindow) {
            pixelWidth = float(oxOSGWidget::getViewWidth());
            pixelHeight = float(oxOSGWidget::getViewHeight());
        }
        printWidth = printFromPixels(pixelWidth, dpi);
        printHeight = printFromPixels(pixelHeight, dpi);
    }

    {
        const oxScopedFlag lock(regionSyncLock);
        quiet(_dpi, [dpi](QSpinBox* box) { box->setValue(int(dpi)); });
        quiet(_pixel_size, [=](QOXVec2Control* c) {
            c->setX(pixelWidth);
            c->setY(pixelHeight);
        });
        quiet(_print_size, [=](QOXVec2Control* c) {
            c->setX(printWidth);
            c->setY(printHeight);
        });
    }

    // A region over the whole image keeps its ends; one that follows the render view's region
    // is taken over below instead.
    if (!wholeImage && !_use_viewport_region->isChecked())
        rescaleRenderRegion(oldWidth, oldHeight, pixelWidth, pixelHeight);

    p.pixel_width = pixelWidth;
    p.pixel_height = pixelHeight;
    p.printWidth = printWidth;
    p.printHeight = printHeight;
    p.ppi = dpi;
    adoptViewportRegion();
}

void oxRenderSettings::followRegionEndX(float oldWidth, float newWidth)
{
    const int edge = rounded(newWidth);
    int& end = currentPreset.region_end_x;
    if (end == rounded(oldWidth) || edge < end)
        end = edge;
}

void oxRenderSettings::followRegionEndY(float oldHeight, float newHeight)
{
    const int edge = rounded(newHeight);
    int& end = currentPreset.region_end_y;
    if (end == rounded(oldHeight) || edge < end)
        end = edge;
}

void oxRenderSettings::changedPixelWidth(double width)
{
    oxRenderSettingsPreset& p = currentPreset;
    const float w = float(width);
    const float oldWidth = p.pixel_width;
    rescaleRenderRegion(oldWidth, p.pixel_height, w, p.pixel_height);
    followRegionEndX(oldWidth, w);
    p.pixel_width = w;
    p.printWidth = printFromPixels(width, p.ppi);
    syncImageSizeAndFrames();
    updateGUI();
}

void oxRenderSettings::changedPixelHeight(double height)
{
    oxRenderSettingsPreset& p = currentPreset;
    const float h = float(height);
    const float oldHeight = p.pixel_height;
    rescaleRenderRegion(p.pixel_width, oldHeight, p.pixel_width, h);
    followRegionEndY(oldHeight, h);
    p.pixel_height = h;
    p.printHeight = printFromPixels(height, p.ppi);
    syncImageSizeAndFrames();
    updateGUI();
}

void oxRenderSettings::changedPrintWidth(double width)
{
    oxRenderSettingsPreset& p = currentPreset;
    p.printWidth = float(width);
    const float w = pixelsFromPrint(width, p.ppi);
    const float oldWidth = p.pixel_width;
    rescaleRenderRegion(oldWidth, p.pixel_height, w, p.pixel_height);
    followRegionEndX(oldWidth, w);
    p.pixel_width = w;
    syncImageSizeAndFrames();
    updateGUI();
}

void oxRenderSettings::changedPrintHeight(double height)
{
    oxRenderSettingsPreset& p = currentPreset;
    p.printHeight = float(height);
    const float h = pixelsFromPrint(height, p.ppi);
    const float oldHeight = p.pixel_height;
    rescaleRenderRegion(p.pixel_width, oldHeight, p.pixel_width, h);
    followRegionEndY(oldHeight, h);
    p.pixel_height = h;
    syncImageSizeAndFrames();
    updateGUI();
}

void oxRenderSettings::changedDpi(int dpi)
{
    // The print size stays; the pixels follow the new resolution.
    const float w = pixelsFromPrint(currentPreset.printWidth, dpi);
    const float h = pixelsFromPrint(currentPreset.printHeight, dpi);
    setPixelResolution(w, h, float(dpi));
    syncImageSizeAndFrames();
}

void oxRenderSettings::setPixelResolution(float width, float height, float dpi)
{
    oxRenderSettingsPreset& p = currentPreset;
    const float oldWidth = p.pixel_width;
    const float oldHeight = p.pixel_height;
    rescaleRenderRegion(oldWidth, oldHeight, width, height);
    followRegionEndX(oldWidth, width);
    followRegionEndY(oldHeight, height);
    p.pixel_width = width;
    p.pixel_height = height;
    p.ppi = dpi;
    p.printWidth = printFromPixels(width, dpi);
    p.printHeight = printFromPixels(height, dpi);
    syncImageSizeAndFrames();
    updateGUI();
}

void oxRenderSettings::setPrintResolution(float width, float height, float dpi)
{
    setPixelResolution(pixelsFromPrint(width, dpi), pixelsFromPrint(height, dpi), dpi);
}

void oxRenderSettings::selectImageSizeEntry()
{
    const oxRenderSettingsPreset& p = currentPreset;
    const int dpi = int(p.ppi);
    for (int i = 0; i < _imageSizes->count(); ++i) {
        const QVariant data = _imageSizes->itemData(i);
        if (!data.isValid())
            continue;
        const QRect rect = data.toRect();
        if (rect.width() != dpi)
            continue;
        const bool match =
            rect.height() > 0 ? p.getPixelWidth() == rect.left() && p.getPixelHeight() == rect.top()
                              : std::fabs(rect.left() * 0.1 - double(p.printWidth)) < 0.0001 &&
                                    std::fabs(rect.top() * 0.1 - double(p.printHeight)) < 0.0001;
        if (match) {
            quiet(_imageSizes, [i](QComboBox* box) { box->setCurrentIndex(i); });
            return;
        }
    }
    if (!renderWindow())
        return;
    const bool viewSize = p.getPixelWidth() == oxOSGWidget::getViewWidth() &&
                          p.getPixelHeight() == oxOSGWidget::getViewHeight();
    const int index = viewSize ? kImageSizeFromRenderWindow : kImageSizeCustom;
    quiet(_imageSizes, [index](QComboBox* box) { box->setCurrentIndex(index); });
}

void oxRenderSettings::syncImageSizeAndFrames()
{
    selectImageSizeEntry();
    oxOSGWidget::setSnapshotInnerFrame(_snapshot_inner_frame->isChecked(), _left->value(),
                                       _right->value(), _bottom->value(), _top->value(),
                                       _inner_type->currentIndex() == 1);
    oxOSGWidget::setSnapshotRenderRegionFrame(_snapshot_render_region_frame->isChecked(),
                                              _region_start_x->value(), _region_end_x->value(),
                                              _region_start_y->value(), _region_end_y->value());
    oxOSGWidget::setSnapshotFrame(_snapshot_frame->isChecked(), currentPreset.getPixelWidth(),
                                  currentPreset.getPixelHeight());
}

void oxRenderSettings::mapRegionToImage(int oldW, int oldH, int newW, int newH, int& x1, int& y1,
                                        int& x2, int& y2) const
{
    // The field of view is kept along the camera's fov axis: horizontal fov scales with the
    // width, vertical with the height.
    const bool horizontal = renderWindow() && oxOSGWidget::getFovMode() != 0;
    double scale = 1.0;
    if (horizontal && oldW != 0)
        scale = double(newW) / oldW;
    else if (!horizontal && oldH != 0)
        scale = double(newH) / oldH;

    const oxRenderSettingsPreset& p = currentPreset;
    x1 = std::max(0, std::min(p.region_start_x, p.region_end_x));
    x2 = std::max(0, std::max(p.region_start_x, p.region_end_x));
    y1 = std::max(0, std::min(p.region_start_y, p.region_end_y));
    y2 = std::max(0, std::max(p.region_start_y, p.region_end_y));
    auto map = [scale](int v, int oldSize, int newSize) {
        return int((v - oldSize / 2) * scale + newSize / 2);
    };
    x1 = map(x1, oldW, newW);
    x2 = map(x2, oldW, newW);
    y1 = map(y1, oldH, newH);
    y2 = map(y2, oldH, newH);
}

void oxRenderSettings::rescaleRenderRegion(float oldWidth, float oldHeight, float newWidth,
                                           float newHeight)
{
    if (regionSyncLock)
        return;
    int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    mapRegionToImage(rounded(oldWidth), rounded(oldHeight), rounded(newWidth), rounded(newHeight),
                     x1, y1, x2, y2);
    oxRenderSettingsPreset& p = currentPreset;
    // The record still holds the old size here: the callers store the new one afterwards and
    // let a region end on the edge follow it.
    p.region_start_x = std::max(0, x1);
    updateGUI();
    p.region_start_y = std::max(0, y1);
    updateGUI();
    p.region_end_x = std::min(p.getPixelWidth(), x2);
    updateGUI();
    p.region_end_y = std::min(p.getPixelHeight(), y2);
    updateGUI();
}

void oxRenderSettings::changedUseRenderRegion(bool on)
{
    currentPreset.use_render_region = on;
    updateGUI();
}

void oxRenderSettings::changedRegionStartX(int x)
{
    currentPreset.region_start_x = std::max(0, x);
    updateGUI();
}

void oxRenderSettings::changedRegionStartY(int y)
{
    currentPreset.region_start_y = std::max(0, y);
    updateGUI();
}

void oxRenderSettings::changedRegionEndX(int x)
{
    currentPreset.region_end_x = std::min(currentPreset.getPixelWidth(), x);
    updateGUI();
}

void oxRenderSettings::changedRegionEndY(int y)
{
    currentPreset.region_end_y = std::min(currentPreset.getPixelHeight(), y);
    updateGUI();
}

void oxRenderSettings::changedUseViewportRegion(bool on)
{
    if (!on || !renderWindow())
        return;
    if (oxOSGWidget::hasValidRegion()) {
        adoptViewportRegion();
        return;
    }
    QMessageBox::information(this, tr(kNoRegionTitle), tr(kNoRegionText), QMessageBox::Ok);
    // Not blocked: the unchecking is a change like any other.
    _use_viewport_region->setChecked(false);
}

void oxRenderSettings::adoptViewportRegion()
{
    oxOSGWidget* window = renderWindow();
    if (!currentPreset.use_render_region || !_use_viewport_region->isChecked() || !window)
        return;
    oxRenderSettingsPreset& p = currentPreset;
    const int width = p.getPixelWidth();
    const int height = p.getPixelHeight();
    int x0 = 0, x1 = 0, y0 = 0, y1 = 0;
    oxOSGWidget::getResizedRenderRegion(window, width, height, x0, x1, y0, y1);
    if (x0 == 0 && x1 == 0 && y0 == 0 && y1 == 0)
        return;
    p.region_start_x = std::max(0, x0);
    updateGUI();
    p.region_start_y = std::max(0, y0);
    updateGUI();
    p.region_end_x = std::min(x1, width);
    updateGUI();
    p.region_end_y = std::min(y1, height);
    updateGUI();
}

void oxRenderSettings::applyRenderRegion()
{
    oxOSGWidget* window = renderWindow();
    const oxRenderSettingsPreset& p = currentPreset;
    const int width = p.getPixelWidth();
    const int height = p.getPixelHeight();
    auto uncheckViewportRegion = [this]() {
        quiet(_use_viewport_region, [](QPushButton* b) { b->setChecked(false); });
    };
    const bool wholeImage = p.region_start_x == 0 && p.region_start_y == 0 &&
                            p.region_end_x == width && p.region_end_y == height;
    if (wholeImage || !p.use_render_region || !window) {
        if (window)
            oxOSGWidget::invalidateRenderRegion(window);
        uncheckViewportRegion();
        return;
    }

    const int viewWidth = oxOSGWidget::getViewWidth();
    const int viewHeight = oxOSGWidget::getViewHeight();
    int x1 = p.region_start_x, y1 = p.region_start_y, x2 = p.region_end_x, y2 = p.region_end_y;
    if (viewWidth != width || viewHeight != height)
        mapRegionToImage(width, height, viewWidth, viewHeight, x1, y1, x2, y2);
    const std::array<float, 4> rect = {
        {float(std::max(0, std::min(x1, x2))), float(std::max(0, std::min(y1, y2))),
         float(std::max(0, std::max(x1, x2))), float(std::max(0, std::max(y1, y2)))}};
    oxOSGWidget::setUserDefinedRenderRegion(window, rect, viewWidth, viewHeight);
    oxOSGWidget::updateRenderRegion(window);
    oxOSGWidget::displayRegionRenderHelpText(0, 1);
    uncheckViewportRegion();
}

bool oxRenderSettings::showImageSizeMenu(QWidget* parent, const QPoint& position, int& width,
                                         int& height, double& dpi)
{
    auto text = [](const char* source) {
        return QCoreApplication::translate(kImageSizeMenuContext, source);
    };
    QMenu menu(parent);
    auto addRows = [&menu, &text](const auto& rows) {
        for (const oxImageSizeMenuRow& row : rows) {
            QAction* action = menu.addAction(text(row.text));
            action->setData(QVariant::fromValue(QRect(0, 0, row.width, row.height)));
            action->setProperty("dpi", row.dpi);
        }
    };
    addRows(kImageSizeMenuPaper);
    menu.addSeparator();
    addRows(kImageSizeMenuPixels);
    menu.addSeparator();
    QAction* custom = menu.addAction(text(kCustomMenuText));

    QAction* chosen = menu.exec(position);
    if (!chosen)
        return false;
    if (chosen != custom) {
        const QRect size = chosen->data().toRect();
        width = size.width();
        height = size.height();
        dpi = chosen->property("dpi").toInt();
        return true;
    }

    bool ok = false;
    const QString title = text(kCustomTitle);
    const int mmWidth =
        QInputDialog::getInt(parent, title, text("Width in millimeter"), 210, 1, 1000000, 1, &ok);
    if (!ok)
        return false;
    const int mmHeight =
        QInputDialog::getInt(parent, title, text("Height in millimeter"), 297, 1, 1000000, 1, &ok);
    if (!ok)
        return false;
    const int customDpi = QInputDialog::getInt(parent, title, text("Dpi"), 300, 1, 1000000, 1, &ok);
    if (!ok)
        return false;
    width = oxPixelsFromMillimetres(mmWidth, customDpi);
    height = oxPixelsFromMillimetres(mmHeight, customDpi);
    dpi = customDpi;
    return true;
}

// Image size, print resolution and the render region that follows them.

#include "oxDialogResponder.h"
#include "oxMessage.h"
#include "oxRenderSettingsImageSize.h"

#include "oxWindowBindingSupport.h"

#include <QPushButton>

namespace {

class ImageSizeTest : public oxWindowBindingTest {
protected:
    void SetUp() override
    {
        oxWindowBindingTest::SetUp();
        // A view size that no named entry has, so "From Render Window" can be told apart.
        oxOSGWidget::setViewWidth(1000);
        oxOSGWidget::setViewHeight(700);
        oxDialogResponder::clear();
    }
    void TearDown() override
    {
        oxDialogResponder::clear();
        oxWindowBindingTest::TearDown();
    }

    void setSize(float width, float height, float dpi)
    {
        window->setPixelResolution(width, height, dpi);
    }
    void setRegion(bool use, int x0, int y0, int x1, int y1)
    {
        record().use_render_region = use;
        record().region_start_x = x0;
        record().region_start_y = y0;
        record().region_end_x = x1;
        record().region_end_y = y1;
        window->updateGUI();
    }
    std::array<int, 4> region() const
    {
        const oxRenderSettingsPreset& p = window->getCurrentPreset();
        return {{p.region_start_x, p.region_start_y, p.region_end_x, p.region_end_y}};
    }
    int entry(const char* text) const { return window->_imageSizes->findText(text); }
};

TEST_F(ImageSizeTest, EveryNamedSizeIsOfferedAndFoundAgainFromItsNumbers)
{
    ASSERT_EQ(window->_imageSizes->count(), int(kImageSizes.size()) + 1);
    EXPECT_EQ(window->_imageSizes->itemText(0), kImageSizeCustomText);
    EXPECT_FALSE(window->_imageSizes->itemData(0).isValid());

    for (int index = 2; index < window->_imageSizes->count(); ++index) {
        const oxImageSizeEntry& row = kImageSizes[size_t(index - 1)];
        SCOPED_TRACE(row.text);
        const QRect rect = window->_imageSizes->itemData(index).toRect();
        EXPECT_EQ(rect.width(), row.dpi);
        EXPECT_EQ(rect.height() < 1, row.paper);

        setSize(10, 10, 72);
        choose(window->_imageSizes, index);
        EXPECT_EQ(record().ppi, float(row.dpi));
        if (row.paper) {
            EXPECT_FLOAT_EQ(record().printWidth, row.left * 0.1f);
            EXPECT_FLOAT_EQ(record().printHeight, row.top * 0.1f);
        } else {
            EXPECT_EQ(record().getPixelWidth(), row.left);
            EXPECT_EQ(record().getPixelHeight(), row.top);
        }
        // The numbers alone find the entry again.
        window->_imageSizes->setCurrentIndex(0);
        window->selectImageSizeEntry();
        EXPECT_EQ(window->_imageSizes->currentIndex(), index);
    }
}

TEST_F(ImageSizeTest, PaperSizesKeepFractionalPixels)
{
    choose(window->_imageSizes, entry("A4 portrait"));
    EXPECT_NEAR(record().pixel_width, 2480.315f, 0.001f);
    EXPECT_NEAR(record().pixel_height, 3507.874f, 0.001f);
    EXPECT_EQ(record().getPixelWidth(), 2480);
    EXPECT_EQ(record().getPixelHeight(), 3508);
    EXPECT_FLOAT_EQ(record().printWidth, 21.0f);
    EXPECT_FLOAT_EQ(record().printHeight, 29.7f);
    EXPECT_EQ(record().ppi, 300.0f);
    window->updateGUI();
    EXPECT_EQ(window->_imageSizes->currentText(), "A4 portrait");
    EXPECT_EQ(window->_dpi->value(), 300);

    // Typed in rather than chosen, the same print size at the same dpi is still that paper.
    window->setPrintResolution(21.0f, 29.7f, 300.0f);
    EXPECT_EQ(window->_imageSizes->currentText(), "A4 portrait");
}

TEST_F(ImageSizeTest, PixelPrintAndDpiStayConsistent)
{
    setSize(1920, 1080, 72);
    EXPECT_EQ(window->_imageSizes->currentText(), "HD 1080 (1920 x 1080)");
    EXPECT_FLOAT_EQ(record().printWidth, float(1920.0 / 72 * 2.54));

    window->_pixel_size->setX(1000);
    EXPECT_EQ(record().pixel_width, 1000.0f);
    EXPECT_FLOAT_EQ(record().printWidth, float(1000.0 / 72 * 2.54));
    EXPECT_EQ(window->_imageSizes->currentIndex(), kImageSizeCustom);

    window->_print_size->setY(10.0);
    EXPECT_FLOAT_EQ(record().printHeight, 10.0f);
    EXPECT_FLOAT_EQ(record().pixel_height, float(10.0 / 2.54 * 72));

    // A new dpi keeps the print size and changes the pixels.
    const float printWidth = record().printWidth;
    const float printHeight = record().printHeight;
    window->_dpi->setValue(144);
    EXPECT_EQ(record().ppi, 144.0f);
    EXPECT_FLOAT_EQ(record().printWidth, printWidth);
    EXPECT_FLOAT_EQ(record().printHeight, printHeight);
    EXPECT_NEAR(record().pixel_width, 2000.0f, 0.01f);

    // A pixel row is left as soon as the dpi leaves 72.
    setSize(1920, 1080, 72);
    window->_dpi->setValue(96);
    EXPECT_EQ(window->_imageSizes->currentIndex(), kImageSizeCustom);
    EXPECT_FALSE(oxController::isModified()) << "the size is an output setting";
}

TEST_F(ImageSizeTest, FromRenderWindowFollowsTheView)
{
    setSize(320, 200, 72);
    choose(window->_imageSizes, kImageSizeFromRenderWindow);
    EXPECT_EQ(record().getPixelWidth(), 1000);
    EXPECT_EQ(record().getPixelHeight(), 700);
    window->updateGUI();
    EXPECT_EQ(window->_imageSizes->currentIndex(), kImageSizeFromRenderWindow);

    // Only while the view and the image have the same size.
    oxOSGWidget::setViewWidth(1200);
    window->updateGUI();
    EXPECT_EQ(window->_imageSizes->currentIndex(), kImageSizeCustom);
    oxOSGWidget::setViewWidth(1000);
    window->updateGUI();
    EXPECT_EQ(window->_imageSizes->currentIndex(), kImageSizeFromRenderWindow);
}

TEST_F(ImageSizeTest, RegionFollowsSizeChanges)
{
    // A whole-image region stays whole: its end follows the edge.
    setSize(1920, 1080, 72);
    setRegion(true, 0, 0, 1920, 1080);
    window->_pixel_size->setX(1000);
    EXPECT_EQ(region(), (std::array<int, 4>{{0, 0, 1000, 1080}}));

    // Scaled about the centre by the height for a vertical field of view; the end is limited
    // by the old width at this step.
    setSize(1000, 1000, 72);
    setRegion(true, 100, 100, 500, 500);
    window->rescaleRenderRegion(1000, 1000, 2000, 1000);
    EXPECT_EQ(region(), (std::array<int, 4>{{600, 100, 1000, 500}}));
    // An end on the old edge then follows the new edge.
    setRegion(true, 100, 100, 500, 500);
    setSize(2000, 1000, 72);
    EXPECT_EQ(region(), (std::array<int, 4>{{600, 100, 2000, 500}}));

    // A horizontal field of view scales by the width.
    oxOSGWidget::setFovMode(1);
    setSize(1000, 1000, 72);
    setRegion(true, 200, 200, 600, 600);
    setSize(500, 1000, 72);
    EXPECT_EQ(region(), (std::array<int, 4>{{100, 350, 300, 550}}));

    // Region fields are clamped to the image.
    setRegion(true, 0, 0, 10, 10);
    window->changedRegionStartX(-5);
    window->changedRegionEndY(5000);
    EXPECT_EQ(record().region_start_x, 0);
    EXPECT_EQ(record().region_end_y, record().getPixelHeight());
}

TEST_F(ImageSizeTest, NamedSizeKeepsAWholeRegionAndMovesAPartialOne)
{
    setSize(1920, 1080, 72);
    setRegion(true, 0, 0, 1920, 1080);
    choose(window->_imageSizes, entry("HD 720 (1280 x  720)"));
    EXPECT_EQ(region(), (std::array<int, 4>{{0, 0, 1920, 1080}}));
    EXPECT_FALSE(window->isRegionSyncLocked());

    // Scaled by the height, 960 to 480, about the centre.
    setSize(960, 960, 72);
    setRegion(true, 100, 100, 500, 500);
    choose(window->_imageSizes, entry("VGA ( 640 x  480)"));
    EXPECT_EQ(record().getPixelWidth(), 640);
    EXPECT_EQ(region(), (std::array<int, 4>{{130, 50, 330, 250}}));
}

TEST_F(ImageSizeTest, ViewportRegionNeedsARegionInTheView)
{
    setSize(1000, 700, 72);
    setRegion(true, 0, 0, 1000, 700);
    oxDialogResponder::queueAnswer(QStringLiteral("OK"));
    window->_use_viewport_region->setChecked(true);
    EXPECT_FALSE(window->_use_viewport_region->isChecked());
    ASSERT_EQ(oxDialogResponder::history().size(), 1);
    EXPECT_EQ(oxDialogResponder::history()[0].title, "RenderSettings");
    EXPECT_TRUE(oxDialogResponder::history()[0].question.startsWith(
        "You haven't set a valid region in the render window yet.\n"));

    // With a region drawn in the view, it is taken over at the image's size.
    oxOSGWidget::setUserDefinedRenderRegion(oxOSGWidget::getMGLW(-1), {{100, 70, 500, 350}}, 1000,
                                            700);
    setSize(2000, 1400, 72);
    window->_use_viewport_region->setChecked(true);
    EXPECT_TRUE(window->_use_viewport_region->isChecked());
    EXPECT_EQ(region(), (std::array<int, 4>{{200, 140, 1000, 700}}));

    // The host's notice of a new region in the view is followed.
    oxOSGWidget::setUserDefinedRenderRegion(oxOSGWidget::getMGLW(-1), {{0, 0, 250, 175}}, 1000,
                                            700);
    oxMessage message;
    ASSERT_TRUE(oxController::call("renderRegionChanged", message));
    EXPECT_EQ(region(), (std::array<int, 4>{{0, 0, 500, 350}}));
    oxOSGWidget::invalidateRenderRegion(oxOSGWidget::getMGLW(-1));
}

TEST_F(ImageSizeTest, ApplyRenderRegionHandsTheRegionToTheView)
{
    setSize(2000, 1400, 72);
    setRegion(true, 200, 140, 1000, 700);
    window->applyRenderRegion();
    ASSERT_TRUE(oxOSGWidget::hasValidRegion());
    // Image 2000 x 1400 onto the 1000 x 700 view, scaled by the height.
    EXPECT_EQ(oxOSGWidget::getUserDefinedRenderRegion(),
              (std::array<float, 4>{{100.0f, 70.0f, 500.0f, 350.0f}}));
    EXPECT_EQ(oxRenderParameter::getRaytracingRenderRegion(),
              (oxRenderRegion{{0.1f, 0.1f, 0.5f, 0.5f}}));

    // A region over the whole image, or one that is off, is no region.
    setRegion(true, 0, 0, 2000, 1400);
    window->applyRenderRegion();
    EXPECT_FALSE(oxOSGWidget::hasValidRegion());
    EXPECT_FALSE(window->_use_viewport_region->isChecked());
}

TEST(ImageSizeMenuTest, CustomSizesRoundHalfAwayFromZero)
{
    EXPECT_EQ(oxPixelsFromMillimetres(210, 300), 2480);
    EXPECT_EQ(oxPixelsFromMillimetres(297, 300), 3508);
    EXPECT_EQ(oxPixelsFromMillimetres(1, 1), 0);
    EXPECT_EQ(oxPixelsFromMillimetres(127, 1), 5);
}

} // namespace

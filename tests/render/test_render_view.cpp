#include "oxController.h"
#include "oxExampleScene.h"
#include "oxImageSource.h"
#include "oxImageWriter.h"
#include "oxMessage.h"
#include "oxOSGWidget.h"
#include "oxPixelfilterFactory.h"
#include "oxRaytracerSource.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"
#include "oxRenderView.h"
#include "oxScene.h"
#include "oxSceneServices.h"
#include "oxTestSupport.h"
#include "oxVariants.h"

#include <OpenImageIO/imageio.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>

#include <cmath>
#include <functional>

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;

// Runs the event loop until done() holds; false after a generous limit (a hang, not a speed
// check).
bool waitFor(const std::function<bool()>& done)
{
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > 60000)
            return false;
        QEventLoop loop;
        QTimer::singleShot(5, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

float distance(const osg::Vec3f& a, const osg::Vec3f& b)
{
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                     (a[2] - b[2]) * (a[2] - b[2]));
}

float dot(const osg::Vec3f& a, const osg::Vec3f& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

int regionCalls = 0;
void countRegionCall(oxMessage&) { ++regionCalls; }

class oxRenderViewTest : public oxTest {
protected:
    void SetUp() override
    {
        auto example = std::make_unique<oxScene>();
        std::string error;
        ASSERT_TRUE(oxExampleScene::build(*example, error)) << error;
        m_previous = oxScene::replaceCurrent(std::move(example));
        oxImageSource::setCurrent(&oxRaytracerSource::the());
        oxOSGWidget::setImageSamples(4);
        view = std::make_unique<oxRenderView>();
        const int status = view->findChild<QLabel*>("renderViewStatus")->sizeHint().height();
        view->resize(kWidth, kHeight + status);
        view->show();
        ASSERT_EQ(view->renderSize(), QSize(kWidth, kHeight));
    }

    void TearDown() override
    {
        view.reset();
        oxImageSource::setCurrent(nullptr);
        oxOSGWidget::resetToDefaults();
        oxRenderParameter::resetToDefaults();
        oxPixelfilterFactory::resetToDefaults();
        oxRaytracingManager::getRaytracingUtils()->resetToDefaults();
        oxScene::replaceCurrent(std::move(m_previous));
        oxTest::TearDown();
    }

    bool waitForStill()
    {
        return waitFor([this] { return !view->isTransitioning() && !view->isRefining(); });
    }

    void mouse(QEvent::Type type, QPoint at, Qt::MouseButton button,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QMouseEvent event(type, at, button,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton
                                                             : Qt::MouseButtons(button),
                          modifiers);
        QApplication::sendEvent(view.get(), &event);
    }

    void drag(QPoint from, QPoint to, Qt::MouseButton button,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        mouse(QEvent::MouseButtonPress, from, button, modifiers);
        mouse(QEvent::MouseMove, (from + to) / 2, button, modifiers);
        mouse(QEvent::MouseMove, to, button, modifiers);
        mouse(QEvent::MouseButtonRelease, to, button, modifiers);
    }

    void key(int code)
    {
        QKeyEvent event(QEvent::KeyPress, code, Qt::NoModifier);
        QApplication::sendEvent(view.get(), &event);
    }

    std::unique_ptr<oxRenderView> view;

private:
    std::unique_ptr<oxScene> m_previous;
};

// The still view holds the samples an export of the same camera and settings takes: the
// floats match the writer's EXR and the displayed bytes the writer's PNG.
TEST_F(oxRenderViewTest, StillViewShowsWhatTheWriterWrites)
{
    // With a box filter every sample weighs the same, so chunks add up to the export exactly.
    oxPixelfilterFactory::setPixelFilterType(0);
    oxRaytracingManager::getRaytracingUtils()->updatePixelFilter();
    oxRenderParameter::setImageSamples(4);
    oxController::updateRender(); // as the settings' live refresh asks
    ASSERT_TRUE(waitForStill());
    const oxRenderSession::Frame& frame = view->frameInfo();
    ASSERT_EQ(frame.samples, 4);
    ASSERT_EQ(frame.width, kWidth);
    EXPECT_TRUE(view->statusText().startsWith("320 x 240  |  4 of 4 samples  |  "))
        << view->statusText().toStdString();

    oxTempDir dir;
    const std::string file = dir.file("view.exr");
    oxImageWriter writer;
    writer.setNoProgress(true);
    writer.setExportExrHalf(false);
    ASSERT_TRUE(writer.exportImage(QString::fromStdString(file), kWidth, kHeight, 3, 0, 72.0f,
                                   false, "", false, false));
    auto input = OIIO::ImageInput::open(file);
    ASSERT_TRUE(input);
    const int channels = input->spec().nchannels;
    std::vector<float> written(size_t(kWidth * kHeight * channels));
    ASSERT_TRUE(input->read_image(0, 0, 0, channels, OIIO::TypeDesc::FLOAT, written.data()));
    const std::string png = dir.file("view.png");
    ASSERT_TRUE(writer.exportImage(QString::fromStdString(png), kWidth, kHeight, 3, 0, 72.0f, false,
                                   "", false, false));
    auto pngInput = OIIO::ImageInput::open(png);
    ASSERT_TRUE(pngInput);
    const int pngChannels = pngInput->spec().nchannels;
    std::vector<unsigned char> bytes(size_t(kWidth * kHeight * pngChannels));
    ASSERT_TRUE(pngInput->read_image(0, 0, 0, pngChannels, OIIO::TypeDesc::UINT8, bytes.data()));
    float worst = 0.0f;
    int bytesOff = 0;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            for (int c = 0; c < 3; ++c) {
                const float expected = written[size_t((y * kWidth + x) * channels + c)];
                const float shown = frame.rgba[size_t((y * kWidth + x) * 4 + c)];
                worst = std::max(worst, std::fabs(expected - shown));
                const QRgb pixel = view->image().pixel(x, y);
                const int byte = c == 0 ? qRed(pixel) : c == 1 ? qGreen(pixel) : qBlue(pixel);
                const int expectedByte = bytes[size_t((y * kWidth + x) * pngChannels + c)];
                bytesOff += std::abs(byte - expectedByte) > 1;
            }
    EXPECT_LT(worst, 1e-4f);
    EXPECT_EQ(bytesOff, 0);

    // Post-processing shows the luminance alone: every pixel grey.
    oxOSGWidget::setPostprocessingFlags(false, false, true, true, false, false, false, false, false,
                                        true);
    ASSERT_TRUE(waitForStill());
    const QRgb pixel = view->image().pixel(kWidth / 2, kHeight - 5);
    EXPECT_EQ(qRed(pixel), qGreen(pixel));
    EXPECT_EQ(qGreen(pixel), qBlue(pixel));
}

// Each gesture moves the active camera the way its name says, and the camera keeps the pose
// (a viewpoint stored now gets it); the scene is modified and the view renders the new pose.
TEST_F(oxRenderViewTest, GesturesMoveTheActiveCamera)
{
    ASSERT_TRUE(waitForStill());
    const QPoint centre(kWidth / 2, kHeight / 2);
    const struct {
        const char* name;
        std::function<void()> gesture;
        std::function<void(const oxViewPose& before, const oxViewPose& after)> check;
    } cases[] = {
        {"left drag orbits at the pivot's distance",
         [&] { drag(centre, centre + QPoint(40, 10), Qt::LeftButton); },
         [&](const oxViewPose& before, const oxViewPose& after) {
             EXPECT_NEAR(distance(after.position, view->pivot()),
                         distance(before.position, view->pivot()), 1e-3f);
             EXPECT_GT(distance(after.position, before.position), 0.1f);
         }},
        {"right drag down zooms towards the pivot",
         [&] { drag(centre, centre + QPoint(0, 40), Qt::RightButton); },
         [&](const oxViewPose& before, const oxViewPose& after) {
             EXPECT_LT(distance(after.position, view->pivot()),
                       distance(before.position, view->pivot()) * 0.9f);
             EXPECT_EQ(after.orientation, before.orientation);
         }},
        {"middle drag pans across the view",
         [&] { drag(centre, centre + QPoint(30, 0), Qt::MiddleButton); },
         [&](const oxViewPose& before, const oxViewPose& after) {
             const osg::Vec3f moved{after.position[0] - before.position[0],
                                    after.position[1] - before.position[1],
                                    after.position[2] - before.position[2]};
             EXPECT_LT(dot(moved, oxViewNavigation::right(before)), -0.01f); // scene follows
             EXPECT_NEAR(dot(moved, oxViewNavigation::forward(before)), 0.0f, 1e-4f);
             EXPECT_EQ(after.orientation, before.orientation);
         }},
        {"W flies forward", [&] { key(Qt::Key_W); },
         [&](const oxViewPose& before, const oxViewPose& after) {
             const osg::Vec3f moved{after.position[0] - before.position[0],
                                    after.position[1] - before.position[1],
                                    after.position[2] - before.position[2]};
             EXPECT_GT(dot(moved, oxViewNavigation::forward(before)), 0.01f);
         }},
        {"Home frames the whole model ahead", [&] { key(Qt::Key_Home); },
         [&](const oxViewPose&, const oxViewPose& after) {
             const oxViewBounds box = oxRenderView::bounds(nullptr);
             const osg::Vec3f centre = box.center();
             const osg::Vec3f toCentre{centre[0] - after.position[0], centre[1] - after.position[1],
                                       centre[2] - after.position[2]};
             const float along = dot(toCentre, oxViewNavigation::forward(after));
             EXPECT_NEAR(along, distance(centre, after.position), 1e-3f);
             EXPECT_GT(along, box.radius());
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        oxController::setModified(false);
        const QImage shown = view->image();
        const oxViewPose before = oxRenderView::cameraPose();
        c.gesture();
        c.check(before, oxRenderView::cameraPose());
        EXPECT_TRUE(oxController::isModified());
        ASSERT_TRUE(waitForStill());
        EXPECT_NE(view->image(), shown);
    }
}

// A region drawn with the tool lands in the render window's record in view pixels, scales to
// any image size from there, and follows moves and edge drags; Delete removes it.
TEST_F(oxRenderViewTest, RegionToolKeepsTheRecordsRegion)
{
    regionCalls = 0;
    oxController::addCB("renderRegionChanged", countRegionCall);
    oxOSGWidget* window = oxOSGWidget::getMGLW(-1);
    key(Qt::Key_R);
    ASSERT_TRUE(view->isRegionToolActive());

    auto expectRegion = [&](std::array<float, 4> expected) {
        ASSERT_TRUE(oxOSGWidget::hasValidRegion());
        EXPECT_EQ(oxOSGWidget::getUserDefinedRenderRegion(), expected);
    };
    const oxViewPose pose = oxRenderView::cameraPose();
    drag({20, 10}, {100, 70}, Qt::LeftButton);
    expectRegion({20, 10, 100, 70});
    int x0, x1, y0, y1;
    oxOSGWidget::getResizedRenderRegion(window, 2 * kWidth, 2 * kHeight, x0, x1, y0, y1);
    EXPECT_EQ(std::vector<int>({x0, y0, x1, y1}), std::vector<int>({40, 20, 200, 140}));

    drag({50, 40}, {60, 45}, Qt::LeftButton); // inside: moves
    expectRegion({30, 15, 110, 75});
    drag({110, 40}, {130, 40}, Qt::LeftButton); // right edge: resizes
    expectRegion({30, 15, 130, 75});
    EXPECT_EQ(regionCalls, 3);
    // The camera stays put while the tool is on.
    EXPECT_EQ(oxRenderView::cameraPose().position, pose.position);

    key(Qt::Key_Delete);
    EXPECT_FALSE(oxOSGWidget::hasValidRegion());
    EXPECT_EQ(regionCalls, 4);
    oxController::subCB("renderRegionChanged", countRegionCall);
}

// A viewpoint activated elsewhere is reached through a transition that ends exactly on the
// viewpoint; a variant set changes the image at once; an export's cancel stops refinement.
TEST_F(oxRenderViewTest, ViewpointsAndVariantSetsChangeTheView)
{
    ASSERT_TRUE(waitForStill());
    const oxViewPose start = oxRenderView::cameraPose();
    osg::NodePtr side = oxNodeUtils::findNode(oxScene::current().getCameraRoot(), "Side");
    ASSERT_NE(side, nullptr);
    ASSERT_TRUE(oxCameraService::the()->activateViewpoint(side));
    const auto* target = side->getCoreAs<osg::UberCameraBase>();
    ASSERT_TRUE(waitFor([&] { return view->isTransitioning(); }));
    ASSERT_TRUE(waitFor([&] {
        const oxViewPose now = oxRenderView::cameraPose();
        return distance(now.position, start.position) > 0.01f &&
               distance(now.position, target->position) > 0.01f;
    })) << "no pose between the start and the viewpoint was shown";
    ASSERT_TRUE(waitForStill());
    EXPECT_EQ(oxRenderView::cameraPose().position, target->position);
    EXPECT_EQ(oxRenderView::cameraPose().orientation, target->orientation);

    const QImage red = view->image();
    ASSERT_TRUE(oxVariants::selectVariantSet("Paint Blue", true));
    ASSERT_TRUE(waitFor([&] { return view->isRefining(); }));
    ASSERT_TRUE(waitForStill());
    EXPECT_NE(view->image(), red);

    oxOSGWidget::setImageSamples(4096);
    ASSERT_TRUE(waitFor(
        [&] { return view->frameInfo().targetSamples == 4096 && view->frameInfo().samples >= 2; }));
    oxOSGWidget::cancelAntialiasing();
    const int samples = view->frameInfo().samples;
    EXPECT_LT(samples, 4096);
    int turns = 0;
    waitFor([&] { return ++turns > 20; });
    EXPECT_EQ(view->frameInfo().samples, samples);
}

} // namespace

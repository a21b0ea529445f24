#include "oxImagePasses.h"
#include "oxImageSource.h"
#include "oxOSGWidget.h"
#include "oxRaytracer.h"
#include "oxRaytracerSource.h"
#include "oxRenderParameter.h"
#include "oxScene.h"
#include "oxSceneServices.h"
#include "oxTestSupport.h"

namespace {

constexpr int kWidth = 64;
constexpr int kHeight = 32;
constexpr unsigned kMask = oxImagePasses::Mask; // the coverage of each pixel

// A unit square in front of a camera at z = 5, and a clip that slides it along +x by two units
// a frame: over the half-frame shutter it moves about eight pixels of a 64 pixel wide image.
class MotionBlurTest : public oxTest {
protected:
    void SetUp() override
    {
        auto* camera = scene.getDefaultCamera()->getCoreAs<osg::UberCameraBase>();
        camera->position = {0.0f, 0.0f, 5.0f};
        camera->orientation = {0.0f, 0.0f, 0.0f, 1.0f};
        mover = scene.getRoot()->addChild(
            std::make_unique<osg::Node>(std::make_shared<osg::Transform>(), "Mover"));
        auto square = std::make_shared<osg::Geometry>();
        square->positions = {-0.5f, -0.5f, 0.0f, 0.5f,  -0.5f, 0.0f,
                             0.5f,  0.5f,  0.0f, -0.5f, 0.5f,  0.0f};
        square->indices = {0, 1, 2, 0, 2, 3};
        mover->addChild(std::make_unique<osg::Node>(square, "Square"));
        // A still square that never moves, to the left of the moving one.
        auto still = std::make_shared<osg::Geometry>();
        still->positions = {-3.0f, -0.5f, 0.0f, -2.0f, -0.5f, 0.0f,
                            -2.0f, 0.5f,  0.0f, -3.0f, 0.5f,  0.0f};
        still->indices = {0, 1, 2, 0, 2, 3};
        scene.getRoot()->addChild(std::make_unique<osg::Node>(still, "Still"));

        clip = scene.addClip("Slide");
        oxAnimChannel channel;
        channel.target = mover->getId();
        channel.path = oxAnimChannel::Translation;
        channel.frames = {0.0f, 10.0f};
        channel.values = {0.0f, 0.0f, 0.0f, 20.0f, 0.0f, 0.0f};
        clip->channels.push_back(channel);
        clip->evaluate(0.0f);
    }

    oxRaytracer::Settings settings(const oxAnimClip* motion, float frame = 0.0f) const
    {
        oxRaytracer::Settings s;
        s.width = kWidth;
        s.height = kHeight;
        s.samples = 64;
        s.passIds = {kMask, 0};
        s.motionClip = motion;
        s.motionFrame = frame;
        return s;
    }

    oxRenderedImage render(const oxRaytracer::Settings& s)
    {
        oxRenderedImage image;
        std::string error;
        EXPECT_TRUE(raytracer.render(scene, s, image, error)) << error;
        return image;
    }

    // The coverage along the middle row.
    static std::vector<float> middleRow(const oxRenderedImage& image)
    {
        std::vector<float> row;
        const oxRenderedPass* mask = image.find(kMask);
        for (int x = 0; x < image.width; ++x)
            row.push_back(mask->rgba[(size_t(kHeight / 2) * size_t(image.width) + size_t(x)) * 4]);
        return row;
    }

    // Pixels of the row in [from, to) that are neither empty nor covered.
    static int partlyCovered(const std::vector<float>& row, int from, int to)
    {
        int count = 0;
        for (int x = from; x < to; ++x)
            count += row[size_t(x)] > 0.05f && row[size_t(x)] < 0.95f;
        return count;
    }

    std::unique_ptr<oxScene> sceneOwner = std::make_unique<oxScene>();
    oxScene& scene = *sceneOwner;
    oxRaytracer raytracer;
    osg::NodePtr mover = nullptr;
    oxAnimClip* clip = nullptr;
};

} // namespace

TEST_F(MotionBlurTest, TheMovingEdgeSmearsAndTheStillOneStaysHard)
{
    const std::vector<float> sharp = middleRow(render(settings(nullptr)));
    const std::vector<float> blurred = middleRow(render(settings(clip)));
    // The still square covers columns 8 to 16, the moving one starts at columns 28 to 36.
    EXPECT_LE(partlyCovered(sharp, 20, kWidth), 4);
    EXPECT_GE(partlyCovered(blurred, 20, kWidth), 10);
    EXPECT_EQ(std::vector<float>(sharp.begin(), sharp.begin() + 20),
              std::vector<float>(blurred.begin(), blurred.begin() + 20));
    // The square moves about its own width while the shutter is open: coverage rises across
    // the columns it leaves and falls across those it reaches, beyond its sharp edge, and the
    // row's total coverage stays that of the square.
    EXPECT_LT(blurred[29], blurred[32]);
    EXPECT_LT(blurred[32], blurred[35]);
    EXPECT_GT(blurred[37], blurred[40]);
    EXPECT_GT(blurred[40], blurred[43]);
    EXPECT_EQ(sharp[40], 0.0f);
    EXPECT_GT(blurred[40], 0.05f);
    float sharpSum = 0.0f, blurredSum = 0.0f;
    for (int x = 20; x < kWidth; ++x) {
        sharpSum += sharp[size_t(x)];
        blurredSum += blurred[size_t(x)];
    }
    EXPECT_NEAR(blurredSum, sharpSum, 0.15f * sharpSum);

    // Blurring is a pure function of the state too, and the clip is left at the frame.
    EXPECT_EQ(blurred, middleRow(render(settings(clip))));
    EXPECT_EQ(mover->getCoreAs<osg::Transform>()->translation[0], 0.0f);

    // A clip that holds still during the shutter changes nothing (past its last key).
    clip->evaluate(20.0f);
    const oxRenderedImage still = render(settings(nullptr));
    const oxRenderedImage held = render(settings(clip, 20.0f));
    for (size_t i = 0; i < still.passes.size(); ++i)
        EXPECT_EQ(still.passes[i].rgba, held.passes[i].rgba);

    oxRaytracer::Settings bad = settings(clip);
    bad.shutter = -1.0f;
    oxRenderedImage image;
    std::string error;
    EXPECT_FALSE(raytracer.render(scene, bad, image, error));
    EXPECT_EQ(error, "the shutter interval of motion blur must be finite and not negative");
}

// The image writer's renderer blurs the clip that the request or the animation manager names,
// only in animated requests and only while the view's motion blur is on.
TEST_F(MotionBlurTest, TheSourceBlursTheNamedClip)
{
    std::unique_ptr<oxScene> previous = oxScene::replaceCurrent(std::move(sceneOwner));
    const osg::UInt32 clipId = scene.getClipRoot()->getChild(0)->getId();
    oxRenderParameter::setImageSamples(64);
    oxRenderRequest request;
    request.width = kWidth;
    request.height = kHeight;
    request.passIds = {kMask};
    request.supersampling = 3;
    request.animation = true;
    auto row = [](const oxRenderRequest& r) {
        oxRenderedImage image;
        std::string error;
        EXPECT_TRUE(oxRaytracerSource::the().render(r, image, error)) << error;
        return image.passes.empty() ? std::vector<float>(kWidth, -1.0f) : middleRow(image);
    };

    const std::vector<float> sharp = row(request);
    EXPECT_LE(partlyCovered(sharp, 20, kWidth), 4);
    request.motionBlurObjectId = clipId;
    const std::vector<float> named = row(request);
    EXPECT_GE(partlyCovered(named, 20, kWidth), 10);
    request.motionBlurObjectId = 0;
    oxAnimManager::the()->setMotionBlurObjectID(clipId);
    EXPECT_EQ(row(request), named);

    // No blur for stills, with the view's switch off, or for an id that is no clip.
    request.animation = false;
    EXPECT_EQ(row(request), sharp);
    request.animation = true;
    oxOSGWidget::setMotionBlur(false);
    EXPECT_EQ(row(request), sharp);
    oxOSGWidget::setMotionBlur(true);
    oxAnimManager::the()->setMotionBlurObjectID(mover->getId());
    EXPECT_EQ(row(request), sharp);

    oxAnimManager::the()->resetMotionBlurObjectID();
    oxRenderParameter::resetToDefaults();
    sceneOwner = oxScene::replaceCurrent(std::move(previous));
}

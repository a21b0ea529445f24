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

// A unit square in front of a camera at z = 5, and a clip that slides it along +x by two units
// a frame: over the half-frame shutter it moves about eight pixels of a 64 pixel wide image.
// A still square to its left never moves. The still one covers columns 8 to 16, the moving
// one starts at columns 28 to 36.
class MotionBlurTest : public oxTest {
protected:
    void SetUp() override
    {
        auto* camera = scene.getDefaultCamera()->getCoreAs<osg::UberCameraBase>();
        camera->position = {0.0f, 0.0f, 5.0f};
        camera->orientation = {0.0f, 0.0f, 0.0f, 1.0f};
        mover = scene.getRoot()->addChild(
            std::make_unique<osg::Node>(std::make_shared<osg::Transform>(), "Mover"));
        addSquare(mover, "Square", -0.5f);
        addSquare(scene.getRoot(), "Still", -3.0f);

        clip = scene.addClip("Slide");
        oxAnimChannel channel;
        channel.target = mover->getId();
        channel.path = oxAnimChannel::Translation;
        channel.frames = {0.0f, 10.0f};
        channel.values = {0.0f, 0.0f, 0.0f, 20.0f, 0.0f, 0.0f};
        clip->channels.push_back(channel);
        clip->evaluate(0.0f);
    }

    static void addSquare(osg::NodePtr parent, const char* name, float left)
    {
        auto square = std::make_shared<osg::Geometry>();
        square->positions = {left,        -0.5f, 0.0f, left + 1.0f, -0.5f, 0.0f,
                             left + 1.0f, 0.5f,  0.0f, left,        0.5f,  0.0f};
        square->indices = {0, 1, 2, 0, 2, 3};
        parent->addChild(std::make_unique<osg::Node>(square, name));
    }

    oxRenderedImage render(const oxAnimClip* motion, float frame = 0.0f)
    {
        oxRaytracer::Settings s;
        s.width = kWidth;
        s.height = kHeight;
        s.samples = 64;
        s.passIds = {oxImagePasses::Mask, oxImagePasses::Beauty};
        s.motionClip = motion;
        s.motionFrame = frame;
        oxRenderedImage image;
        std::string error;
        EXPECT_TRUE(raytracer.render(scene, s, image, error)) << error;
        return image;
    }

    // The coverage along the middle row.
    static std::vector<float> middleRow(const oxRenderedImage& image)
    {
        std::vector<float> row;
        if (const oxRenderedPass* mask = image.find(oxImagePasses::Mask))
            for (int x = 0; x < image.width; ++x)
                row.push_back(mask->rgba[(size_t(kHeight / 2) * size_t(kWidth) + size_t(x)) * 4]);
        return row;
    }

    // Pixels right of the still square that are neither empty nor covered.
    static int partlyCovered(const std::vector<float>& row)
    {
        int count = 0;
        for (size_t x = 20; x < row.size(); ++x)
            count += row[x] > 0.05f && row[x] < 0.95f;
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
    const std::vector<float> sharp = middleRow(render(nullptr));
    const std::vector<float> blurred = middleRow(render(clip));
    ASSERT_EQ(blurred.size(), size_t(kWidth));
    EXPECT_LE(partlyCovered(sharp), 4);
    EXPECT_GE(partlyCovered(blurred), 10);
    EXPECT_EQ(std::vector<float>(sharp.begin(), sharp.begin() + 20),
              std::vector<float>(blurred.begin(), blurred.begin() + 20));
    // The square moves about its own width while the shutter is open: coverage rises across
    // the columns it leaves and falls across those it reaches, beyond its sharp edge, and the
    // row's total coverage stays that of the square.
    for (size_t x : {29, 32})
        EXPECT_LT(blurred[x], blurred[x + 3]) << x;
    for (size_t x : {37, 40})
        EXPECT_GT(blurred[x], blurred[x + 3]) << x;
    EXPECT_EQ(sharp[40], 0.0f);
    EXPECT_GT(blurred[40], 0.05f);
    float sharpSum = 0.0f, blurredSum = 0.0f;
    for (size_t x = 20; x < size_t(kWidth); ++x) {
        sharpSum += sharp[x];
        blurredSum += blurred[x];
    }
    EXPECT_NEAR(blurredSum, sharpSum, 0.15f * sharpSum);

    // Blurring is a pure function of the state too, and the clip is left at the frame.
    EXPECT_EQ(blurred, middleRow(render(clip)));
    EXPECT_EQ(mover->getCoreAs<osg::Transform>()->translation[0], 0.0f);

    // A clip that holds still during the shutter changes nothing (past its last key).
    clip->evaluate(20.0f);
    const oxRenderedImage still = render(nullptr);
    const oxRenderedImage held = render(clip, 20.0f);
    for (size_t i = 0; i < still.passes.size(); ++i)
        EXPECT_EQ(still.passes[i].rgba, held.passes[i].rgba);

    oxRaytracer::Settings bad;
    bad.width = bad.height = 8;
    bad.motionClip = clip;
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
    request.passIds = {oxImagePasses::Mask};
    request.supersampling = 3;
    request.animation = true;
    auto sourceRow = [&] {
        oxRenderedImage image;
        std::string error;
        EXPECT_TRUE(oxRaytracerSource::the().render(request, image, error)) << error;
        return middleRow(image);
    };

    const std::vector<float> sharp = sourceRow();
    EXPECT_LE(partlyCovered(sharp), 4);
    request.motionBlurObjectId = clipId;
    const std::vector<float> named = sourceRow();
    EXPECT_GE(partlyCovered(named), 10);
    request.motionBlurObjectId = 0;
    oxAnimManager::the()->setMotionBlurObjectID(clipId);
    EXPECT_EQ(sourceRow(), named);

    // No blur for stills, with the view's switch off, or for an id that is no clip.
    request.animation = false;
    EXPECT_EQ(sourceRow(), sharp);
    request.animation = true;
    oxOSGWidget::setMotionBlur(false);
    EXPECT_EQ(sourceRow(), sharp);
    oxOSGWidget::setMotionBlur(true);
    oxAnimManager::the()->setMotionBlurObjectID(mover->getId());
    EXPECT_EQ(sourceRow(), sharp);

    oxAnimManager::the()->resetMotionBlurObjectID();
    oxRenderParameter::resetToDefaults();
    sceneOwner = oxScene::replaceCurrent(std::move(previous));
}

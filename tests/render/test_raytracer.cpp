#include "oxCryptomatte.h"
#include "oxExampleScene.h"
#include "oxFile.h"
#include "oxImagePasses.h"
#include "oxImageSource.h"
#include "oxPixelfilterFactory.h"
#include "oxRaytracer.h"
#include "oxRaytracerSource.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"
#include "oxScene.h"
#include "oxSceneServices.h"
#include "oxTestSupport.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

using namespace oxImagePasses;

// In the example's start view (64x48), the bottom-left corner sees open floor far from the car
// and the top-left corner sees only sky.
constexpr int kWidth = 64;
constexpr int kHeight = 48;
constexpr int kFloorX = 2, kFloorY = 45;
constexpr int kSkyX = 2, kSkyY = 2;

// Every pass of both images holds the same bits.
void expectBitIdentical(const oxRenderedImage& a, const oxRenderedImage& b)
{
    ASSERT_EQ(a.passes.size(), b.passes.size());
    for (size_t i = 0; i < a.passes.size(); ++i) {
        ASSERT_EQ(a.passes[i].rgba.size(), b.passes[i].rgba.size());
        EXPECT_EQ(0, std::memcmp(a.passes[i].rgba.data(), b.passes[i].rgba.data(),
                                 a.passes[i].rgba.size() * sizeof(float)))
            << name(a.passes[i].passId);
    }
}

class oxRaytracerTest : public oxTest {
protected:
    void SetUp() override
    {
        std::string error;
        ASSERT_TRUE(oxExampleScene::build(scene, error)) << error;
    }

    static oxRaytracer::Settings settings(std::vector<unsigned> passes, int samples = 1)
    {
        oxRaytracer::Settings result;
        result.width = kWidth;
        result.height = kHeight;
        result.samples = samples;
        result.passIds = std::move(passes);
        return result;
    }

    oxRenderedImage render(const oxRaytracer::Settings& settings)
    {
        oxRenderedImage image;
        std::string error;
        EXPECT_TRUE(raytracer.render(scene, settings, image, error)) << error;
        return image;
    }

    static const float* pixel(const oxRenderedImage& image, unsigned pass, int x, int y)
    {
        const oxRenderedPass* found = image.find(pass);
        if (!found)
            throw std::runtime_error(std::string("missing pass ") + name(pass));
        return found->rgba.data() + (size_t(y) * size_t(image.width) + size_t(x)) * 4;
    }

    // The first node named so whose core is a T.
    template <typename T>
    osg::NodePtr node(const char* nodeName) const
    {
        for (osg::NodePtr found : oxNodeUtils::findNodes(scene.getRoot(), nodeName))
            if (found->getCoreAs<T>())
                return found;
        return nullptr;
    }

    oxScene scene;
    oxRaytracer raytracer;
};

// Renders are bit-identical for the same state, and rounds only group the samples: every pass
// of every kind of sum comes out bit for bit as in one round, each round leaves a finished
// image, and a stop keeps the rounds done. The sample offset shifts the sequence.
TEST_F(oxRaytracerTest, RendersBitIdenticallyWhateverTheRounds)
{
    oxRaytracer::Settings s = settings({Beauty, Occlusion, Albedo, Depth, ViewVector,
                                        BackgroundColor, Mask, CryptoObject00, CryptoMaterial00},
                                       5);
    s.filterType = 4; // Lanczos: negative lobes exercise the signed sums
    s.filterWidth = 2.0f;
    s.sampleOffset = 3;
    s.refine = false;
    const oxRenderedImage oneGo = render(s);
    expectBitIdentical(render(s), oneGo);
    s.refine = true;
    std::vector<std::pair<int, int>> calls;
    std::vector<float> afterFourSamples;
    s.onRound = [&](int done, int rounds, const oxRenderedImage& partial) {
        calls.emplace_back(done, rounds);
        if (done == 3)
            afterFourSamples = partial.find(Beauty)->rgba;
        return true;
    };
    const oxRenderedImage refined = render(s);
    EXPECT_EQ(calls, (std::vector<std::pair<int, int>>{{1, 4}, {2, 4}, {3, 4}, {4, 4}}));
    expectBitIdentical(refined, oneGo);
    EXPECT_EQ(refined.cryptoObjectNames, oneGo.cryptoObjectNames);

    // The image after a round is the image of the samples taken so far.
    oxRaytracer::Settings four = s;
    four.passIds = {Beauty};
    four.samples = 4;
    four.refine = false;
    four.onRound = nullptr;
    EXPECT_EQ(afterFourSamples, render(four).find(Beauty)->rgba);

    // A stop after the second round leaves the two-sample image and says so.
    s.passIds = {Beauty};
    s.onRound = [](int done, int, const oxRenderedImage&) { return done < 2; };
    oxRenderedImage stoppedImage;
    std::string error;
    bool stopped = false;
    EXPECT_FALSE(raytracer.render(scene, s, stoppedImage, error, &stopped));
    EXPECT_TRUE(stopped);
    EXPECT_EQ(error, "the render was stopped after 2 of 5 samples per pixel");
    four.samples = 2;
    const std::vector<float> twoSamples = render(four).find(Beauty)->rgba;
    EXPECT_EQ(stoppedImage.find(Beauty)->rgba, twoSamples);
    // A stop asked for after the last round comes too late to stop anything.
    s.onRound = [](int, int, const oxRenderedImage&) { return false; };
    s.samples = 1;
    EXPECT_TRUE(raytracer.render(scene, s, stoppedImage, error, &stopped)) << error;
    EXPECT_FALSE(stopped);

    four.sampleOffset = 7;
    EXPECT_NE(render(four).find(Beauty)->rgba, twoSamples);
    EXPECT_EQ(raytracer.getBuildCount(), 1);
}

TEST_F(oxRaytracerTest, GeometryPassesAgreeOnTheFloor)
{
    const oxRenderedImage image =
        render(settings({Depth, Normal, Position, ViewVector, CameraNormal, Albedo, GPUDepth}));
    oxSceneSnapshot snapshot;
    scene.snapshot(snapshot);
    const oxRaytracerCamera camera = oxRaytracerCamera::fromSnapshot(snapshot, kWidth, kHeight);
    auto at = [&](unsigned pass) { return pixel(image, pass, kFloorX, kFloorY); };

    EXPECT_EQ(std::vector<float>(at(Normal), at(Normal) + 3), (std::vector<float>{0, 1, 0}));
    EXPECT_NEAR(at(Position)[1], 0.0f, 1e-3f);
    float toPoint[3], distance = 0.0f, alongAxis = 0.0f;
    for (size_t i = 0; i < 3; ++i) {
        toPoint[i] = at(Position)[i] - camera.origin[i];
        distance += toPoint[i] * toPoint[i];
        alongAxis += toPoint[i] * camera.forward[i];
    }
    EXPECT_NEAR(at(Depth)[0], alongAxis, 1e-3f);
    // The depth buffer of a rasteriser: 1 / depth mapped linearly from the near plane (0) to
    // the far plane (1); the sky is at the far plane.
    const float nearPlane = camera.nearDistance, farPlane = camera.farDistance;
    EXPECT_NEAR(at(GPUDepth)[0],
                (1.0f / nearPlane - 1.0f / alongAxis) / (1.0f / nearPlane - 1.0f / farPlane),
                1e-4f);
    EXPECT_EQ(pixel(image, GPUDepth, kSkyX, kSkyY)[0], 1.0f);
    for (size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(at(ViewVector)[i], -toPoint[i] / std::sqrt(distance), 1e-4f);
    // The floor's up vector seen from a camera looking down at it: up and towards the camera.
    const float* cameraNormal = at(CameraNormal);
    EXPECT_GT(cameraNormal[1], 0.5f);
    EXPECT_GT(cameraNormal[2], 0.0f);
    EXPECT_NEAR(std::hypot(cameraNormal[0], cameraNormal[1], cameraNormal[2]), 1.0f, 1e-4f);
    EXPECT_NEAR(at(Albedo)[0], 0.6f, 1e-4f); // the floor material's colour
}

TEST_F(oxRaytracerTest, AlphaColourAndPremultiplicationFollowTheCoverage)
{
    oxRaytracer::Settings s = settings({Beauty, Mask, BackgroundColor, Depth}, 4);
    s.alpha = true;
    const oxRenderedImage withAlpha = render(s);
    EXPECT_EQ(pixel(withAlpha, Beauty, kSkyX, kSkyY)[3], 0.0f);
    EXPECT_EQ(pixel(withAlpha, Beauty, kFloorX, kFloorY)[3], 1.0f);
    EXPECT_EQ(pixel(withAlpha, Mask, kSkyX, kSkyY)[0], 0.0f);
    EXPECT_EQ(pixel(withAlpha, Mask, kFloorX, kFloorY)[0], 1.0f);
    EXPECT_EQ(pixel(withAlpha, Depth, kSkyX, kSkyY)[3], 0.0f);
    // The environment stays visible in its own pass.
    const float* background = pixel(withAlpha, BackgroundColor, kSkyX, kSkyY);
    EXPECT_GT(background[2], 0.5f);
    EXPECT_EQ(background[3], 1.0f);

    // Edge pixels are partly covered: premultiplied colour is colour times coverage.
    s.premultiply = true;
    const std::vector<float>& straight = withAlpha.find(Beauty)->rgba;
    const std::vector<float> multiplied = render(s).find(Beauty)->rgba;
    int edges = 0;
    for (size_t i = 0; i < straight.size(); i += 4) {
        const float alpha = straight[i + 3];
        EXPECT_EQ(alpha, multiplied[i + 3]);
        if (alpha > 0.0f && alpha < 1.0f) {
            ++edges;
            EXPECT_NEAR(multiplied[i], straight[i] * alpha, 1e-4f);
        }
    }
    EXPECT_GT(edges, 0);

    // A background colour is the matte the colours are premultiplied against.
    s.alphaColor = {0.25f, 0.5f, 0.75f};
    const oxRenderedImage matted = render(s);
    const std::vector<float>& matte = matted.find(Beauty)->rgba;
    for (size_t i = 0; i < straight.size(); i += 4)
        EXPECT_NEAR(matte[i + 2], multiplied[i + 2] + 0.75f * (1.0f - straight[i + 3]), 1e-4f);

    // Without alpha the camera sees the environment past the objects, whatever the colour.
    s.alpha = false;
    const oxRenderedImage behind = render(s);
    const float* sky = pixel(behind, Beauty, kSkyX, kSkyY);
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(sky[c], background[c], 1e-5f);
    EXPECT_EQ(sky[3], 1.0f);
}

TEST_F(oxRaytracerTest, PixelsOutsideTheRegionStayEmpty)
{
    oxRaytracer::Settings s = settings({Beauty, Normal, MaterialID});
    s.region = {0.5f, 0.5f, 1.0f, 7.0f}; // the top right quarter (y runs up; clipped)
    const oxRenderedImage image = render(s);
    for (const oxRenderedPass& pass : image.passes) {
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const float* p = pass.rgba.data() + (size_t(y) * kWidth + size_t(x)) * 4;
                const bool inside = x >= kWidth / 2 && y < kHeight / 2;
                if (!inside) {
                    ASSERT_TRUE(p[0] == 0 && p[1] == 0 && p[2] == 0 && p[3] == 0)
                        << name(pass.passId) << " at " << x << "," << y;
                } else if (pass.passId == Beauty) {
                    ASSERT_EQ(p[3], 1.0f);
                }
            }
        }
    }
}

// The tile size shares the work out and never changes a bit of the image, whatever packets of
// eight pixels the tiles' widths make; the host's size is clamped into its bounds and reaches
// the raytracer through the host settings.
TEST_F(oxRaytracerTest, TileSizeChangesTheTilingButNotTheImage)
{
    for (const auto& [asked, kept] : {std::pair{1, 32}, {48, 48}, {100000, 256}}) {
        oxRaytracingManager::setMaxClusterTileSize(asked);
        EXPECT_EQ(oxRaytracer::Settings::fromHost(kWidth, kHeight, false).tileSize, kept);
    }
    oxRaytracingManager::resetRaytracingUtils();
    EXPECT_EQ(oxRaytracingManager::getMaxClusterTileSize(), oxRaytracingManager::minTileSize);

    oxRaytracer::Settings s = settings({Beauty, Occlusion, Depth, CryptoObject00}, 3);
    s.tileSize = 256;
    const oxRenderedImage whole = render(s);
    EXPECT_EQ(raytracer.getLastTileCount(), 1);
    for (int tile : {32, 7}) {
        s.tileSize = tile;
        expectBitIdentical(render(s), whole);
        const int across = (kWidth + tile - 1) / tile;
        const int down = (kHeight + tile - 1) / tile;
        EXPECT_GE(raytracer.getLastTileCount(), across * down) << tile;
    }
}

TEST_F(oxRaytracerTest, LightAndGeometryChangesShowUpAndOnlyGeometryRebuilds)
{
    const oxRaytracer::Settings s = settings({Beauty, Mask}, 2);
    auto floorBeauty = [&] { return pixel(render(s), Beauty, kFloorX, kFloorY)[0]; };
    const float before = floorBeauty();
    const osg::NodePtr sun = node<osg::Light>("Sun");
    ASSERT_NE(sun, nullptr);
    sun->getCoreAs<osg::Light>()->value *= 0.25f;
    EXPECT_LT(floorBeauty(), before - 0.05f);
    EXPECT_EQ(raytracer.getBuildCount(), 1);

    // Without lights of its own the scene is lit by the headlight, along the view: the car's
    // faces turned to the camera light up (the floor, seen grazing, hardly does).
    auto meanBeauty = [&] {
        const oxRenderedImage image = render(s);
        const std::vector<float>& rgba = image.find(Beauty)->rgba;
        double sum = 0.0;
        for (size_t i = 0; i < rgba.size(); i += 4)
            sum += rgba[i];
        return float(sum / double(rgba.size() / 4));
    };
    sun->setActive(false);
    const float headlit = meanBeauty();
    scene.getHeadlightNode()->setActive(false);
    const float skyOnly = meanBeauty();
    EXPECT_GT(headlit, skyOnly + 0.01f);
    EXPECT_GT(floorBeauty(), 0.0f);

    const osg::NodePtr floor = node<osg::Geometry>("Floor");
    ASSERT_NE(floor, nullptr);
    floor->setActive(false);
    EXPECT_EQ(pixel(render(s), Mask, kFloorX, kFloorY)[0], 0.0f);
    EXPECT_EQ(raytracer.getBuildCount(), 2);
}

TEST_F(oxRaytracerTest, OcclusionStaysInRangeAndDarkensUnderTheCar)
{
    const oxRenderedImage image = render(settings({Occlusion}, 4));
    const std::vector<float>& ao = image.find(Occlusion)->rgba;
    float darkest = 1.0f;
    for (size_t i = 0; i < ao.size(); i += 4) {
        ASSERT_GE(ao[i], 0.0f);
        ASSERT_LE(ao[i], 1.0f);
        darkest = std::min(darkest, ao[i]);
    }
    EXPECT_EQ(pixel(image, Occlusion, kFloorX, kFloorY)[0], 1.0f);
    EXPECT_LT(darkest, 0.5f);
}

TEST_F(oxRaytracerTest, MaterialAndObjectIdsAreStableAndNamed)
{
    oxRaytracer::Settings s = settings({MaterialID, CryptoObject00, CryptoMaterial00}, 2);
    const oxRenderedImage image = render(s);

    // A second, independently built scene gives the same colours: they come from the names.
    oxScene other;
    std::string error;
    ASSERT_TRUE(oxExampleScene::build(other, error)) << error;
    oxRenderedImage again;
    ASSERT_TRUE(oxRaytracer().render(other, s, again, error)) << error;
    EXPECT_EQ(image.find(MaterialID)->rgba, again.find(MaterialID)->rgba);
    const float* floorColour = pixel(image, MaterialID, kFloorX, kFloorY);
    const float* carColour = pixel(image, MaterialID, kWidth / 2, kHeight / 2);
    EXPECT_NE(floorColour[0] + 2 * floorColour[1] + 4 * floorColour[2],
              carColour[0] + 2 * carColour[1] + 4 * carColour[2]);

    const osg::NodePtr floor = node<osg::Geometry>("Floor");
    ASSERT_NE(floor, nullptr);
    const std::string floorPath = oxNodeUtils::getUniquePath(floor, scene.getRoot());
    const float* object = pixel(image, CryptoObject00, kFloorX, kFloorY);
    EXPECT_EQ(object[0], oxCryptomatte::idOf(floorPath));
    EXPECT_FLOAT_EQ(object[1], 1.0f);
    EXPECT_EQ(object[2], 0.0f); // a single object covers the pixel
    EXPECT_EQ(std::count(image.cryptoObjectNames.begin(), image.cryptoObjectNames.end(), floorPath),
              1);
    EXPECT_EQ(pixel(image, CryptoMaterial00, kFloorX, kFloorY)[0], oxCryptomatte::idOf("Floor"));
    EXPECT_EQ(std::count(image.cryptoMaterialNames.begin(), image.cryptoMaterialNames.end(),
                         std::string("Floor")),
              1);
}

TEST_F(oxRaytracerTest, BadRequestsFailAndLeaveNoImage)
{
    auto failure = [&](const oxRaytracer::Settings& s) {
        oxRenderedImage image;
        std::string error;
        EXPECT_FALSE(raytracer.render(scene, s, image, error));
        EXPECT_TRUE(image.passes.empty());
        return error;
    };
    EXPECT_EQ(failure(settings({Beauty, Fog})),
              "the render pass 'fog' is not rendered by this host yet");
    oxRaytracer::Settings s = settings({Beauty});
    s.filterType = oxRaytracer::pixelFilterCount;
    EXPECT_EQ(failure(s), "the pixel filter type 10 is unknown");
    s = settings({Beauty});
    s.filterHeight = std::numeric_limits<float>::infinity();
    EXPECT_EQ(failure(s), "the pixel filter size must be positive and finite");
    s = settings({Beauty});
    s.width = 0;
    EXPECT_EQ(failure(s), "the image size 0x48 is not positive");
}

// The writer's view: the current scene, the store's samples when supersampling is on.
TEST_F(oxRaytracerTest, SourceRendersTheCurrentSceneWithTheStoreSettings)
{
    auto example = std::make_unique<oxScene>();
    std::string error;
    ASSERT_TRUE(oxExampleScene::build(*example, error)) << error;
    std::unique_ptr<oxScene> previous = oxScene::replaceCurrent(std::move(example));

    oxRenderRequest request;
    request.width = 32;
    request.height = 24;
    request.passIds = {Beauty, Depth};
    request.alpha = true;
    oxRenderedImage image;
    EXPECT_TRUE(oxRaytracerSource::the().render(request, image, error)) << error;
    EXPECT_EQ(image.width, 32);
    ASSERT_NE(image.find(Depth), nullptr);
    EXPECT_EQ(image.find(Beauty)->rgba[3], 0.0f); // the top left corner is sky

    // Animated requests show the scene at their frame: the car turns.
    request.animation = true;
    request.passIds = {Mask};
    oxRenderedImage start, later;
    ASSERT_TRUE(oxRaytracerSource::the().render(request, start, error)) << error;
    request.frame = 30;
    ASSERT_TRUE(oxRaytracerSource::the().render(request, later, error)) << error;
    EXPECT_NE(start.passes[0].rgba, later.passes[0].rgba);

    // The store's image samples with supersampling, one without; the premultiply switch.
    oxRenderParameter::setImageSamples(6);
    EXPECT_EQ(oxRaytracer::Settings::fromHost(32, 24, true).samples, 6);
    EXPECT_EQ(oxRaytracer::Settings::fromHost(32, 24, false).samples, 1);
    // Still frames follow the store's still-frame illumination mode and trace depth.
    oxRenderParameter::setStillFrameQualityMode(1);
    oxRenderParameter::setStillFrameReflectionDepth(3);
    EXPECT_EQ(oxRaytracer::Settings::fromHost(32, 24, true).illuminationMode, 1);
    EXPECT_EQ(oxRaytracer::Settings::fromHost(32, 24, true).traceDepth, 3);
    oxRaytracer::setPremultiply(true);
    EXPECT_TRUE(oxRaytracer::Settings::fromHost(32, 24, false).premultiply);
    oxRaytracer::setPremultiply(false);
    // The store's filter counts once the raytracer took it over.
    oxRaytracingUtilsBase* utilities = oxRaytracingManager::getRaytracingUtils();
    ASSERT_NE(utilities, nullptr);
    oxPixelfilterFactory::setPixelFilterType(3);
    EXPECT_EQ(oxRaytracer::Settings::fromHost(32, 24, true).filterType, 7);
    utilities->updatePixelFilter();
    EXPECT_EQ(oxRaytracer::Settings::fromHost(32, 24, true).filterType, 3);
    oxPixelfilterFactory::resetToDefaults();
    utilities->resetToDefaults();
    oxRenderParameter::resetToDefaults();
    oxScene::replaceCurrent(std::move(previous));
}

const std::string kOxlin = std::string(OX_TEST_BINARY_DIR) + "/bin/oxlin";

// The program's --snapshot writes the image, and refuses unknown views and passes.
TEST_F(oxRaytracerTest, SnapshotCommandWritesTheImageOrRefusesAndWritesNothing)
{
    oxTempDir dir;
    auto snapshot = [&](const std::string& out, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(),
                         {"--no-gui", "--prefs-dir", dir.file("prefs"), "--snapshot", out});
        return oxRunProcess(kOxlin, arguments);
    };
    const std::string view = dir.file("view.png");
    oxProcessResult result =
        snapshot(view, {"--size", "40x30", "--samples", "2", "--view", "Side"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    auto input = OIIO::ImageInput::open(view);
    ASSERT_TRUE(input);
    EXPECT_EQ(input->spec().width, 40);
    EXPECT_EQ(input->spec().height, 30);
    // Sky behind the car is the environment's blue; the floor in front is lit and not white.
    const size_t channels = size_t(input->spec().nchannels);
    std::vector<float> pixels(40 * 30 * channels);
    ASSERT_TRUE(input->read_image(0, 0, 0, int(channels), OIIO::TypeDesc::FLOAT, pixels.data()));
    EXPECT_GT(pixels[2], pixels[0] + 0.1f);
    EXPECT_LT(pixels[(29 * 40 + 1) * channels], 1.0f);

    const std::string refused = dir.file("x.png");
    const struct {
        std::vector<std::string> arguments;
        int exitCode;
        std::string error;
    } cases[] = {
        {{"--view", "Nowhere"}, 1, "no camera or viewpoint named 'Nowhere'"},
        {{"--passes", "beauty,glitter"}, 2, "unknown render pass 'glitter'"},
        // A known pass that this host doesn't render yet fails the snapshot.
        {{"--passes", "fog"}, 1, "'fog'"},
    };
    for (const auto& c : cases) {
        result = snapshot(refused, c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode) << c.error;
        EXPECT_NE(result.err.find(c.error), std::string::npos) << result.err;
    }
    EXPECT_FALSE(oxFile::exists(refused));
    EXPECT_FALSE(oxFile::exists(dir.file("x.fog.png")));
}

} // namespace

TEST(oxRaytracerToneMapping, WhitePointMapsToOneAndAlphaStays)
{
    std::vector<float> rgba = {4.0f, 1.0f, 0.0f, 1.0f, /* half covered: */ 2.0f, 0.5f, 0.0f, 0.5f};
    oxRaytracerSource::tonemap(rgba, 4.0f);
    EXPECT_FLOAT_EQ(rgba[0], 1.0f);                                // the white point
    EXPECT_FLOAT_EQ(rgba[1], 1.0f * (1.0f + 1.0f / 16.0f) / 2.0f); // below it: compressed
    EXPECT_FLOAT_EQ(rgba[2], 0.0f);
    EXPECT_FLOAT_EQ(rgba[3], 1.0f);
    // A half covered pixel maps its colour, not its premultiplied value.
    EXPECT_FLOAT_EQ(rgba[4], 0.5f);
    EXPECT_FLOAT_EQ(rgba[7], 0.5f);
}

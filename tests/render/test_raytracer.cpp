#include "oxCallTrace.h"
#include "oxCryptomatte.h"
#include "oxExampleScene.h"
#include "oxFile.h"
#include "oxImagePasses.h"
#include "oxImageSource.h"
#include "oxOSGWidget.h"
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

#include <cmath>
#include <cstring>
#include <limits>

namespace {

// Pass ids of the host's naming table, found by name so that a renumbering can't go unnoticed.
unsigned passId(const char* name)
{
    for (unsigned id = 0; id < oxImagePasses::count; ++id)
        if (std::strcmp(oxImagePasses::names[id], name) == 0)
            return id;
    ADD_FAILURE() << "no pass named " << name;
    return 0;
}

// In the example's start view (64x48), the bottom-left corner sees open floor far from the car
// and the top-left corner sees only sky.
constexpr int kWidth = 64;
constexpr int kHeight = 48;
constexpr int kFloorX = 2, kFloorY = 45;
constexpr int kSkyX = 2, kSkyY = 2;

class oxRaytracerTest : public oxTest {
protected:
    void SetUp() override
    {
        std::string error;
        ASSERT_TRUE(oxExampleScene::build(scene, error)) << error;
    }

    oxRaytracer::Settings settings(std::vector<const char*> passes, int samples = 1) const
    {
        oxRaytracer::Settings result;
        result.width = kWidth;
        result.height = kHeight;
        result.samples = samples;
        result.passIds.clear();
        for (const char* name : passes)
            result.passIds.push_back(passId(name));
        return result;
    }

    oxRenderedImage render(const oxRaytracer::Settings& settings)
    {
        oxRenderedImage image;
        std::string error;
        EXPECT_TRUE(raytracer.render(scene, settings, image, error)) << error;
        return image;
    }

    static const float* pixel(const oxRenderedImage& image, const char* pass, int x, int y)
    {
        const oxRenderedPass* found = image.find(passId(pass));
        if (!found)
            throw std::runtime_error(std::string("missing pass ") + pass);
        return found->rgba.data() + (size_t(y) * size_t(image.width) + size_t(x)) * 4;
    }

    osg::Light* sun() const
    {
        for (osg::NodePtr node : oxNodeUtils::findNodes(scene.getRoot(), "Sun"))
            if (auto* light = node->getCoreAs<osg::Light>())
                return light;
        return nullptr;
    }

    // The node that holds the floor's triangles.
    osg::NodePtr floorGeometry() const
    {
        for (osg::NodePtr node : oxNodeUtils::findNodes(scene.getRoot(), "Floor"))
            if (node->getCoreAs<osg::Geometry>())
                return node;
        return nullptr;
    }

    oxScene scene;
    oxRaytracer raytracer;
};

TEST_F(oxRaytracerTest, RendersBitIdenticallyAndTheSampleOffsetShiftsTheSequence)
{
    oxRaytracer::Settings s = settings({"beauty", "occlusion", "depth"}, 4);
    s.filterType = 2;
    s.filterWidth = 2.0f;
    const oxRenderedImage first = render(s);
    const oxRenderedImage second = render(s);
    ASSERT_EQ(first.passes.size(), 3u);
    for (size_t i = 0; i < first.passes.size(); ++i) {
        ASSERT_EQ(first.passes[i].rgba.size(), size_t(kWidth * kHeight * 4));
        EXPECT_EQ(0, std::memcmp(first.passes[i].rgba.data(), second.passes[i].rgba.data(),
                                 first.passes[i].rgba.size() * sizeof(float)));
    }
    s.sampleOffset = 7;
    const oxRenderedImage shifted = render(s);
    EXPECT_NE(0, std::memcmp(first.passes[0].rgba.data(), shifted.passes[0].rgba.data(),
                             first.passes[0].rgba.size() * sizeof(float)));
    EXPECT_EQ(raytracer.getBuildCount(), 1);
}

// Rounds only group the samples: every pass of every kind of sum comes out bit for bit as
// in one round, each round leaves a finished image, and a stop keeps the rounds done.
TEST_F(oxRaytracerTest, RefinementRoundsGiveTheImageOfOneRound)
{
    EXPECT_EQ(oxRaytracer::refinementRounds(1), std::vector<int>{1});
    EXPECT_EQ(oxRaytracer::refinementRounds(5), (std::vector<int>{1, 2, 4, 5}));
    EXPECT_EQ(oxRaytracer::refinementRounds(8), (std::vector<int>{1, 2, 4, 8}));

    oxRaytracer::Settings s =
        settings({"beauty", "occlusion", "albedo", "depth", "view", "background_color", "mask",
                  "cryptoObject00", "cryptoMaterial00"},
                 5);
    s.filterType = 4; // Lanczos: negative lobes exercise the signed sums
    s.filterWidth = 2.0f;
    s.sampleOffset = 3;
    s.refine = false;
    const oxRenderedImage oneGo = render(s);
    s.refine = true;
    std::vector<std::pair<int, int>> calls;
    std::vector<float> afterFourSamples;
    s.onRound = [&](int done, int rounds, const oxRenderedImage& partial) {
        calls.emplace_back(done, rounds);
        if (done == 3)
            afterFourSamples = partial.find(0)->rgba;
        return true;
    };
    const oxRenderedImage refined = render(s);
    EXPECT_EQ(calls, (std::vector<std::pair<int, int>>{{1, 4}, {2, 4}, {3, 4}, {4, 4}}));
    ASSERT_EQ(refined.passes.size(), oneGo.passes.size());
    for (size_t i = 0; i < oneGo.passes.size(); ++i) {
        ASSERT_EQ(refined.passes[i].rgba.size(), oneGo.passes[i].rgba.size());
        EXPECT_EQ(0, std::memcmp(refined.passes[i].rgba.data(), oneGo.passes[i].rgba.data(),
                                 oneGo.passes[i].rgba.size() * sizeof(float)))
            << oxImagePasses::name(refined.passes[i].passId);
    }
    EXPECT_EQ(refined.cryptoObjectNames, oneGo.cryptoObjectNames);

    // The image after a round is the image of the samples taken so far.
    oxRaytracer::Settings four = settings({"beauty"}, 4);
    four.filterType = s.filterType;
    four.filterWidth = s.filterWidth;
    four.sampleOffset = s.sampleOffset;
    four.refine = false;
    EXPECT_EQ(afterFourSamples, render(four).find(0)->rgba);

    // A stop after the second round leaves the two-sample image and says so.
    s.passIds = {0};
    s.onRound = [](int done, int, const oxRenderedImage&) { return done < 2; };
    oxRenderedImage stoppedImage;
    std::string error;
    bool stopped = false;
    EXPECT_FALSE(raytracer.render(scene, s, stoppedImage, error, &stopped));
    EXPECT_TRUE(stopped);
    EXPECT_EQ(error, "the render was stopped after 2 of 5 samples per pixel");
    four.samples = 2;
    EXPECT_EQ(stoppedImage.find(0)->rgba, render(four).find(0)->rgba);
    // A stop asked for after the last round comes too late to stop anything.
    s.onRound = [](int, int, const oxRenderedImage&) { return false; };
    s.samples = 1;
    EXPECT_TRUE(raytracer.render(scene, s, stoppedImage, error, &stopped)) << error;
    EXPECT_FALSE(stopped);
}

TEST_F(oxRaytracerTest, GeometryPassesAgreeOnTheFloor)
{
    const oxRenderedImage image =
        render(settings({"depth", "normal", "position", "view", "camera_normal", "albedo"}));
    oxSceneSnapshot snapshot;
    scene.snapshot(snapshot);
    const oxRaytracerCamera camera = oxRaytracerCamera::fromSnapshot(snapshot, kWidth, kHeight);

    const float* normal = pixel(image, "normal", kFloorX, kFloorY);
    EXPECT_NEAR(normal[0], 0.0f, 1e-4f);
    EXPECT_NEAR(normal[1], 1.0f, 1e-4f);
    EXPECT_NEAR(normal[2], 0.0f, 1e-4f);
    const float* position = pixel(image, "position", kFloorX, kFloorY);
    EXPECT_NEAR(position[1], 0.0f, 1e-3f);
    float toPoint[3], distance = 0.0f, alongAxis = 0.0f;
    for (int i = 0; i < 3; ++i) {
        toPoint[i] = position[i] - camera.origin[size_t(i)];
        distance += toPoint[i] * toPoint[i];
        alongAxis += toPoint[i] * camera.forward[size_t(i)];
    }
    distance = std::sqrt(distance);
    EXPECT_NEAR(pixel(image, "depth", kFloorX, kFloorY)[0], alongAxis, 1e-3f);
    const float* view = pixel(image, "view", kFloorX, kFloorY);
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(view[i], -toPoint[i] / distance, 1e-4f);
    // The floor's up vector seen from a camera looking down at it: up and towards the camera.
    const float* cameraNormal = pixel(image, "camera_normal", kFloorX, kFloorY);
    EXPECT_GT(cameraNormal[1], 0.5f);
    EXPECT_GT(cameraNormal[2], 0.0f);
    EXPECT_NEAR(cameraNormal[0] * cameraNormal[0] + cameraNormal[1] * cameraNormal[1] +
                    cameraNormal[2] * cameraNormal[2],
                1.0f, 1e-4f);
    const float* albedo = pixel(image, "albedo", kFloorX, kFloorY);
    EXPECT_NEAR(albedo[0], 0.6f, 1e-4f); // the floor material's colour
}

TEST_F(oxRaytracerTest, AlphaColourAndPremultiplicationFollowTheCoverage)
{
    oxRaytracer::Settings s = settings({"beauty", "mask", "background_color", "depth"}, 4);
    s.alpha = true;
    const oxRenderedImage withAlpha = render(s);
    EXPECT_EQ(pixel(withAlpha, "beauty", kSkyX, kSkyY)[3], 0.0f);
    EXPECT_EQ(pixel(withAlpha, "beauty", kFloorX, kFloorY)[3], 1.0f);
    EXPECT_EQ(pixel(withAlpha, "mask", kSkyX, kSkyY)[0], 0.0f);
    EXPECT_EQ(pixel(withAlpha, "mask", kFloorX, kFloorY)[0], 1.0f);
    EXPECT_EQ(pixel(withAlpha, "depth", kSkyX, kSkyY)[3], 0.0f);
    // The environment stays visible in its own pass.
    const float* background = pixel(withAlpha, "background_color", kSkyX, kSkyY);
    EXPECT_GT(background[2], 0.5f);
    EXPECT_EQ(background[3], 1.0f);

    // Edge pixels are partly covered: premultiplied colour is colour times coverage.
    s.premultiply = true;
    const oxRenderedImage premultiplied = render(s);
    const std::vector<float>& straight = withAlpha.find(0)->rgba;
    const std::vector<float>& multiplied = premultiplied.find(0)->rgba;
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

    s.alpha = false;
    s.alphaColor = {0.25f, 0.5f, 0.75f};
    const oxRenderedImage opaque = render(s);
    const float* sky = pixel(opaque, "beauty", kSkyX, kSkyY);
    EXPECT_FLOAT_EQ(sky[0], 0.25f);
    EXPECT_FLOAT_EQ(sky[1], 0.5f);
    EXPECT_FLOAT_EQ(sky[2], 0.75f);
    EXPECT_EQ(sky[3], 1.0f);
}

TEST_F(oxRaytracerTest, PixelsOutsideTheRegionStayEmpty)
{
    oxRaytracer::Settings s = settings({"beauty", "normal", "materialID"});
    s.region = {0.5f, 0.5f, 1.0f, 7.0f}; // the top right quarter (y runs up; clipped)
    const oxRenderedImage image = render(s);
    for (const oxRenderedPass& pass : image.passes) {
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const float* p = pass.rgba.data() + (size_t(y) * kWidth + size_t(x)) * 4;
                const bool inside = x >= kWidth / 2 && y < kHeight / 2;
                if (!inside) {
                    ASSERT_TRUE(p[0] == 0 && p[1] == 0 && p[2] == 0 && p[3] == 0)
                        << oxImagePasses::name(pass.passId) << " at " << x << "," << y;
                } else if (pass.passId == 0) {
                    ASSERT_EQ(p[3], 1.0f);
                }
            }
        }
    }
}

TEST_F(oxRaytracerTest, LightAndGeometryChangesShowUpAndOnlyGeometryRebuilds)
{
    const oxRaytracer::Settings s = settings({"beauty", "mask"}, 2);
    const float before = pixel(render(s), "beauty", kFloorX, kFloorY)[0];
    ASSERT_NE(sun(), nullptr);
    sun()->value *= 0.25f;
    const float dimmer = pixel(render(s), "beauty", kFloorX, kFloorY)[0];
    EXPECT_LT(dimmer, before - 0.05f);
    EXPECT_EQ(raytracer.getBuildCount(), 1);

    // Without lights of its own the scene is lit by the headlight, along the view.
    for (osg::NodePtr node : oxNodeUtils::findNodes(scene.getRoot(), "Sun"))
        node->setActive(false);
    const float headlit = pixel(render(s), "beauty", kFloorX, kFloorY)[0];
    scene.getHeadlightNode()->setActive(false);
    const float skyOnly = pixel(render(s), "beauty", kFloorX, kFloorY)[0];
    EXPECT_GT(headlit, skyOnly + 0.01f); // grazing: the camera looks almost level
    EXPECT_GT(skyOnly, 0.0f);

    ASSERT_NE(floorGeometry(), nullptr);
    floorGeometry()->setActive(false);
    const oxRenderedImage withoutFloor = render(s);
    EXPECT_EQ(raytracer.getBuildCount(), 2);
    EXPECT_EQ(pixel(withoutFloor, "mask", kFloorX, kFloorY)[0], 0.0f);
}

TEST_F(oxRaytracerTest, OcclusionStaysInRangeAndDarkensUnderTheCar)
{
    const oxRenderedImage image = render(settings({"occlusion"}, 4));
    const std::vector<float>& ao = image.find(passId("occlusion"))->rgba;
    float darkest = 1.0f;
    for (size_t i = 0; i < ao.size(); i += 4) {
        ASSERT_GE(ao[i], 0.0f);
        ASSERT_LE(ao[i], 1.0f);
        darkest = std::min(darkest, ao[i]);
    }
    EXPECT_EQ(pixel(image, "occlusion", kFloorX, kFloorY)[0], 1.0f);
    EXPECT_LT(darkest, 0.5f);
}

TEST_F(oxRaytracerTest, MaterialAndObjectIdsAreStableAndNamed)
{
    oxRaytracer::Settings s = settings({"materialID", "cryptoObject00", "cryptoMaterial00"}, 2);
    const oxRenderedImage image = render(s);

    // A second, independently built scene gives the same colours: they come from the names.
    oxScene other;
    std::string error;
    ASSERT_TRUE(oxExampleScene::build(other, error)) << error;
    oxRenderedImage again;
    oxRaytracer second;
    ASSERT_TRUE(second.render(other, s, again, error)) << error;
    EXPECT_EQ(0, std::memcmp(image.find(passId("materialID"))->rgba.data(),
                             again.find(passId("materialID"))->rgba.data(),
                             size_t(kWidth * kHeight * 4) * sizeof(float)));
    const float* floorColour = pixel(image, "materialID", kFloorX, kFloorY);
    const float* carColour = pixel(image, "materialID", kWidth / 2, kHeight / 2);
    EXPECT_NE(floorColour[0] + 2 * floorColour[1] + 4 * floorColour[2],
              carColour[0] + 2 * carColour[1] + 4 * carColour[2]);

    osg::NodePtr floorNode = floorGeometry();
    ASSERT_NE(floorNode, nullptr);
    const std::string floorPath = oxNodeUtils::getUniquePath(floorNode, scene.getRoot());
    const float* object = pixel(image, "cryptoObject00", kFloorX, kFloorY);
    EXPECT_EQ(object[0], oxCryptomatte::idOf(floorPath));
    EXPECT_FLOAT_EQ(object[1], 1.0f);
    EXPECT_EQ(object[2], 0.0f); // a single object covers the pixel
    EXPECT_NE(std::find(image.cryptoObjectNames.begin(), image.cryptoObjectNames.end(), floorPath),
              image.cryptoObjectNames.end());
    const float* material = pixel(image, "cryptoMaterial00", kFloorX, kFloorY);
    EXPECT_EQ(material[0], oxCryptomatte::idOf("Floor"));
    EXPECT_NE(
        std::find(image.cryptoMaterialNames.begin(), image.cryptoMaterialNames.end(), "Floor"),
        image.cryptoMaterialNames.end());
}

TEST_F(oxRaytracerTest, EveryPixelFilterRendersAndBadRequestsFail)
{
    for (int type = 0; type < oxRaytracer::pixelFilterCount; ++type) {
        oxRaytracer::Settings s = settings({"beauty"}, 3);
        s.filterType = type;
        s.filterWidth = 2.5f;
        s.filterHeight = 1.5f;
        const oxRenderedImage image = render(s);
        for (float value : image.find(0)->rgba)
            ASSERT_TRUE(std::isfinite(value)) << "filter " << type;
    }

    oxRenderedImage image;
    std::string error;
    oxRaytracer::Settings s = settings({"beauty", "diffuse_ibl"});
    EXPECT_FALSE(raytracer.render(scene, s, image, error));
    EXPECT_NE(error.find("'diffuse_ibl'"), std::string::npos) << error;
    s = settings({"beauty"});
    s.filterType = 10;
    EXPECT_FALSE(raytracer.render(scene, s, image, error));
    EXPECT_NE(error.find("pixel filter type 10"), std::string::npos) << error;
    s = settings({"beauty"});
    s.filterHeight = std::numeric_limits<float>::infinity();
    EXPECT_FALSE(raytracer.render(scene, s, image, error));
    EXPECT_NE(error.find("pixel filter size"), std::string::npos) << error;
    s = settings({"beauty"});
    s.width = 0;
    EXPECT_FALSE(raytracer.render(scene, s, image, error));
    EXPECT_TRUE(image.passes.empty());
}

// The writer's view: the current scene, the store's samples when supersampling is on.
TEST_F(oxRaytracerTest, SourceRendersTheCurrentSceneWithTheStoreSettings)
{
    auto example = std::make_unique<oxScene>();
    std::string error;
    ASSERT_TRUE(oxExampleScene::build(*example, error)) << error;
    std::unique_ptr<oxScene> previous = oxScene::replaceCurrent(std::move(example));
    oxCallTrace::setEnabled(true);
    oxCallTrace::clear();
    oxRaytracer::setPremultiply(true);
    EXPECT_TRUE(oxRaytracer::getPremultiply());
    EXPECT_TRUE(oxRaytracer::Settings::fromHost(8, 8, false).premultiply);
    oxRaytracer::setPremultiply(false);
    ASSERT_EQ(oxCallTrace::calls().size(), 2u);
    EXPECT_EQ(oxCallTrace::calls()[0].name, "oxRaytracer::setPremultiply");
    EXPECT_EQ(oxCallTrace::calls()[0].arguments, "true");
    oxCallTrace::clear();
    oxCallTrace::setEnabled(false);

    oxRenderRequest request;
    request.width = 32;
    request.height = 24;
    request.passIds = {0, passId("depth")};
    request.alpha = true;
    oxRenderedImage image;
    EXPECT_TRUE(oxRaytracerSource::the().render(request, image, error)) << error;
    EXPECT_EQ(image.width, 32);
    ASSERT_NE(image.find(passId("depth")), nullptr);
    EXPECT_EQ(image.find(0)->rgba[3], 0.0f); // the top left corner is sky

    // Animated requests show the scene at their frame: the car turns.
    request.animation = true;
    request.passIds = {passId("mask")};
    oxRenderedImage start, later;
    ASSERT_TRUE(oxRaytracerSource::the().render(request, start, error)) << error;
    request.frame = 30;
    ASSERT_TRUE(oxRaytracerSource::the().render(request, later, error)) << error;
    EXPECT_NE(start.passes[0].rgba, later.passes[0].rgba);

    const oxRaytracer::Settings full = oxRaytracer::Settings::fromHost(32, 24, true);
    EXPECT_EQ(full.samples, oxRenderParameter::getImageSamples());
    EXPECT_EQ(oxRaytracer::Settings::fromHost(32, 24, false).samples, 1);

    // The filter counts once the raytracer took it over; region and clamping come from the store.
    oxRaytracingUtilsBase* utilities = oxRaytracingManager::getRaytracingUtils();
    ASSERT_NE(utilities, nullptr);
    oxPixelfilterFactory::setPixelFilterType(3);
    oxPixelfilterFactory::setPixelFilterWidth(2.0f);
    EXPECT_EQ(oxRaytracer::Settings::fromHost(32, 24, true).filterType, 7);
    utilities->updatePixelFilter();
    oxRenderParameter::setRaytracingRenderRegion({0.0f, 0.0f, 0.5f, 1.0f});
    oxRenderParameter::setClamping(false);
    const oxRaytracer::Settings changed = oxRaytracer::Settings::fromHost(32, 24, true);
    EXPECT_EQ(changed.filterType, 3);
    EXPECT_EQ(changed.filterWidth, 2.0f);
    EXPECT_EQ(changed.region[2], 0.5f);
    EXPECT_FALSE(changed.clamping);
    oxPixelfilterFactory::resetToDefaults();
    utilities->resetToDefaults();
    oxRenderParameter::resetToDefaults();
    oxScene::replaceCurrent(std::move(previous));
}

const std::string kOxlin = std::string(OX_TEST_BINARY_DIR) + "/bin/oxlin";

TEST_F(oxRaytracerTest, SnapshotCommandWritesTheImage)
{
    oxTempDir dir;
    const std::string out = dir.file("view.png");
    oxProcessResult result =
        oxRunProcess(kOxlin, {"--no-gui", "--prefs-dir", dir.file("prefs"), "--snapshot", out,
                              "--size", "40x30", "--samples", "2", "--view", "Side"});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    auto input = OIIO::ImageInput::open(out);
    ASSERT_TRUE(input);
    EXPECT_EQ(input->spec().width, 40);
    EXPECT_EQ(input->spec().height, 30);
    // Sky behind the car is the white alpha colour; the floor in front is lit and not white.
    std::vector<float> pixels(size_t(40 * 30 * input->spec().nchannels));
    ASSERT_TRUE(
        input->read_image(0, 0, 0, input->spec().nchannels, OIIO::TypeDesc::FLOAT, pixels.data()));
    const size_t channels = size_t(input->spec().nchannels);
    EXPECT_EQ(pixels[0], 1.0f);
    EXPECT_LT(pixels[(29 * 40 + 1) * channels], 1.0f);
}

TEST_F(oxRaytracerTest, SnapshotCommandRefusesUnknownViewsAndPasses)
{
    oxTempDir dir;
    oxProcessResult result;

    result = oxRunProcess(kOxlin, {"--no-gui", "--prefs-dir", dir.file("prefs"), "--snapshot",
                                   dir.file("x.png"), "--view", "Nowhere"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("no camera or viewpoint named 'Nowhere'"), std::string::npos)
        << result.err;
    result = oxRunProcess(kOxlin, {"--no-gui", "--prefs-dir", dir.file("prefs"), "--snapshot",
                                   dir.file("x.png"), "--passes", "beauty,glitter"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find("unknown render pass 'glitter'"), std::string::npos) << result.err;
}

TEST_F(oxRaytracerTest, SnapshotCommandFailsOnPassesNotRenderedYet)
{
    oxTempDir dir;
    oxProcessResult result;
    result = oxRunProcess(kOxlin, {"--no-gui", "--prefs-dir", dir.file("prefs"), "--snapshot",
                                   dir.file("x.png"), "--passes", "diffuse_ibl"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("'diffuse_ibl'"), std::string::npos) << result.err;
    EXPECT_FALSE(oxFile::exists(dir.file("x.png")));
    EXPECT_FALSE(oxFile::exists(dir.file("x.diffuse_ibl.png")));
}

} // namespace

TEST_F(oxRaytracerTest, RenderViewWritesWhatItShows)
{
    auto example = std::make_unique<oxScene>();
    std::string error;
    ASSERT_TRUE(oxExampleScene::build(*example, error)) << error;
    std::unique_ptr<oxScene> previous = oxScene::replaceCurrent(std::move(example));
    oxImageSource* previousSource = oxImageSource::current();
    oxImageSource::setCurrent(&oxRaytracerSource::the());
    oxOSGWidget::setViewWidth(40);
    oxOSGWidget::setViewHeight(30);
    oxOSGWidget::setImageSamples(2);

    oxTempDir dir;
    oxOSGWidget* view = oxOSGWidget::getMGLW(-1);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(oxOSGWidget::getMGLW(1), nullptr);
    const std::string png = dir.file("snapshot.png");
    ASSERT_TRUE(oxOSGWidget::writeImage(view, QString::fromStdString(png)));
    auto input = OIIO::ImageInput::open(png);
    ASSERT_TRUE(input);
    EXPECT_EQ(input->spec().width, 40);
    EXPECT_EQ(input->spec().height, 30);
    input->close();

    // A floating point view keeps its values in EXR.
    oxOSGWidget::setRGB16F(true);
    const std::string exr = dir.file("snapshot.exr");
    ASSERT_TRUE(oxOSGWidget::writeImage(view, QString::fromStdString(exr)));
    input = OIIO::ImageInput::open(exr);
    ASSERT_TRUE(input);
    EXPECT_EQ(input->spec().format, OIIO::TypeDesc::HALF);
    input->close();

    oxOSGWidget::resetToDefaults();
    oxImageSource::setCurrent(previousSource);
    oxScene::replaceCurrent(std::move(previous));
}

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

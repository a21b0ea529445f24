#include "oxExampleScene.h"
#include "oxImagePasses.h"
#include "oxImageSource.h"
#include "oxRaytracer.h"
#include "oxScene.h"
#include "oxSceneServices.h"
#include "oxTestSupport.h"

#include <cmath>
#include <memory>

namespace {

using namespace oxImagePasses;

constexpr int kSize = 32;

// A sphere of radius 1 at the origin seen by a camera on +z, lit only by a uniform
// environment: what a surface does with light shows without any other light in the way.
class LightTransportTest : public oxTest {
protected:
    void SetUp() override
    {
        auto* camera = scene.getDefaultCamera()->getCoreAs<osg::UberCameraBase>();
        camera->position = {0.0f, 0.0f, 4.0f};
        camera->orientation = {0.0f, 0.0f, 0.0f, 1.0f};
        scene.getHeadlightNode()->setActive(false);
        setEnvironment({1, 1, 1}, {1, 1, 1});
        material = std::make_shared<osg::UBRDFMaterialBase>();
        material->name = "Ball";
        material->diffuseColor = {1.0f, 1.0f, 1.0f};
        material->roughness = 1.0f;
        material->glossyColor = {0.04f, 0.04f, 0.04f};
    }

    void addBall(int rings = 24)
    {
        scene.getRoot()->addChild(std::make_unique<osg::Node>(sphere(material, rings), "Ball"));
    }

    void setEnvironment(osg::Vec3f sky, osg::Vec3f ground)
    {
        scene.getEnvironment()->skyColor = sky;
        scene.getEnvironment()->groundColor = ground;
    }

    // A UV sphere with outward vertex normals, counter-clockwise seen from outside.
    static std::shared_ptr<osg::Geometry> sphere(std::shared_ptr<osg::Material> material, int rings)
    {
        auto geometry = std::make_shared<osg::Geometry>();
        const int segments = rings * 2;
        for (int i = 0; i <= rings; ++i) {
            const float theta = 3.14159265f * float(i) / float(rings);
            for (int j = 0; j <= segments; ++j) {
                const float phi = 2.0f * 3.14159265f * float(j) / float(segments);
                const float p[3] = {std::sin(theta) * std::cos(phi), std::cos(theta),
                                    -std::sin(theta) * std::sin(phi)};
                geometry->positions.insert(geometry->positions.end(), p, p + 3);
                geometry->normals.insert(geometry->normals.end(), p, p + 3);
            }
        }
        for (int i = 0; i < rings; ++i)
            for (int j = 0; j < segments; ++j) {
                const uint32_t a = uint32_t(i * (segments + 1) + j);
                const uint32_t b = a + uint32_t(segments + 1);
                geometry->indices.insert(geometry->indices.end(), {a, b, a + 1, a + 1, b, b + 1});
            }
        geometry->material = std::move(material);
        return geometry;
    }

    oxRenderedImage render(int samples, std::vector<unsigned> passes = {Beauty}, int mode = 3,
                           int depth = 16, oxScene* target = nullptr)
    {
        oxRaytracer::Settings s;
        s.width = kSize;
        s.height = kSize;
        s.samples = samples;
        s.passIds = std::move(passes);
        s.illuminationMode = mode;
        s.traceDepth = depth;
        s.clamping = false;
        oxRenderedImage image;
        std::string error;
        EXPECT_TRUE(raytracer.render(target ? *target : scene, s, image, error)) << error;
        return image;
    }

    static const float* at(const oxRenderedImage& image, unsigned pass, int x, int y)
    {
        return image.find(pass)->rgba.data() + (size_t(y) * kSize + size_t(x)) * 4;
    }

    // The mean of a channel over the pixels within the sphere's middle.
    static float ballMean(const oxRenderedImage& image, int channel)
    {
        double sum = 0.0;
        int count = 0;
        for (int y = 10; y < 22; ++y)
            for (int x = 10; x < 22; ++x, ++count)
                sum += at(image, Beauty, x, y)[channel];
        return float(sum / count);
    }

    std::unique_ptr<oxScene> owner = std::make_unique<oxScene>();
    oxScene& scene = *owner;
    std::shared_ptr<osg::UBRDFMaterialBase> material;
    oxRaytracer raytracer;
};

} // namespace

// A white furnace: in a uniform white environment a white surface that loses no energy is
// as bright as the environment, whatever it is made of; one that creates energy is brighter.
TEST_F(LightTransportTest, SurfacesInAWhiteFurnaceNeitherCreateNorLoseMuchLight)
{
    const struct {
        float metallic, roughness, clearcoat, transmission;
        float low; // what single-scattering microfacets may lose
    } cases[] = {
        {0.0f, 1.0f, 0.0f, 0.0f, 0.9f},   // diffuse
        {0.0f, 0.3f, 0.0f, 0.0f, 0.9f},   // plastic
        {0.0f, 0.3f, 1.0f, 0.0f, 0.85f},  // lacquered paint
        {1.0f, 0.05f, 0.0f, 0.0f, 0.95f}, // polished metal
        {0.0f, 0.0f, 0.0f, 1.0f, 0.95f},  // clear glass
    };
    addBall();
    for (const auto& c : cases) {
        material->metallic = c.metallic;
        material->roughness = c.roughness;
        material->clearcoat = c.clearcoat;
        material->transmission = c.transmission;
        const float mean = ballMean(render(64), 1);
        EXPECT_LE(mean, 1.02f) << c.metallic << " " << c.roughness << " " << c.clearcoat;
        EXPECT_GE(mean, c.low) << c.metallic << " " << c.roughness << " " << c.clearcoat;
    }
}

// Normals are interpolated between vertices: on a coarse sphere the normal pass still points
// along the radius, which a facet's flat normal does only at its middle.
TEST_F(LightTransportTest, NormalsAreSmoothBetweenVertices)
{
    addBall(6);
    const oxRenderedImage image = render(1, {Normal, Position});
    float worst = 0.0f;
    for (int y = 8; y < 24; ++y)
        for (int x = 8; x < 24; ++x) {
            const float* n = at(image, Normal, x, y);
            const float* p = at(image, Position, x, y);
            const float length = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
            for (int c = 0; c < 3; ++c)
                worst = std::max(worst, std::fabs(n[c] - p[c] / length));
        }
    EXPECT_LT(worst, 0.05f);
}

// Sky blue above, ground red below: a mirror ball shows the sky at its top; a glass ball
// turns the world upside down, so its top shows the ground; a diffuse ball shows neither.
TEST_F(LightTransportTest, MirrorsReflectAndGlassRefractsTheEnvironment)
{
    setEnvironment({0, 0, 1}, {1, 0, 0});
    addBall();
    const int x = kSize / 2, y = 11; // above the middle of the ball
    material->roughness = 0.0f;
    material->metallic = 1.0f;
    const oxRenderedImage mirror = render(16);
    EXPECT_GT(at(mirror, Beauty, x, y)[2], 0.8f);
    EXPECT_LT(at(mirror, Beauty, x, y)[0], 0.1f);

    material->metallic = 0.0f;
    material->transmission = 1.0f;
    material->ior = 1.5f;
    const oxRenderedImage glass = render(16);
    EXPECT_GT(at(glass, Beauty, x, y)[0], 2.0f * at(glass, Beauty, x, y)[2]);
    // Without bending, the same pixel looks straight through at the sky.
    material->ior = 1.0f;
    const oxRenderedImage straight = render(16);
    EXPECT_GT(at(straight, Beauty, x, y)[2], 2.0f * at(straight, Beauty, x, y)[0]);
}

// Each illumination mode adds the light its name promises on the example, and the trace
// depth limits how far light travels between surfaces.
TEST_F(LightTransportTest, IlluminationModesAndTraceDepthChangeTheImageAsNamed)
{
    oxScene example;
    std::string error;
    ASSERT_TRUE(oxExampleScene::build(example, error)) << error;
    auto mean = [&](int mode, int depth) {
        const oxRenderedImage image = render(8, {Beauty}, mode, depth, &example);
        double sum = 0.0;
        for (float value : image.find(Beauty)->rgba)
            sum += value;
        return sum;
    };
    const double precomputed = mean(-1, 16), reflections = mean(0, 16), shadows = mean(1, 16),
                 ibl = mean(2, 16), full = mean(3, 16), direct = mean(3, 1);
    EXPECT_NE(precomputed, reflections);
    // Shadows and shadowed sky light take light away; light between surfaces adds some.
    EXPECT_LT(shadows, reflections);
    EXPECT_LT(ibl, shadows);
    EXPECT_GT(full, ibl);
    EXPECT_LT(direct, full);
}

// The light passes as compositors use them: the combined channels add up to the beauty, and
// each colour times its illumination gives its combined channel back, within each material.
TEST_F(LightTransportTest, LightPassesAddUpToTheBeautyAndFactorIntoColourAndLight)
{
    oxScene example;
    std::string error;
    ASSERT_TRUE(oxExampleScene::build(example, error)) << error;
    const unsigned combined[] = {DiffuseIBL,    DiffuseLight,       GlossyIBL,
                                 GlossyLight,   SpecularReflection, Translucency,
                                 Incandescence, DiffuseIndirect,    GlossyIndirect};
    const struct {
        unsigned colour, illumination, combined;
    } factors[] = {
        {DiffuseColor, DiffuseIBLIllumination, DiffuseIBL},
        {DiffuseColor, DiffuseLightIllumination, DiffuseLight},
        {DiffuseColor, DiffuseIndirectIllumination, DiffuseIndirect},
        {GlossyColor, GlossyIBLIllumination, GlossyIBL},
        {GlossyColor, GlossyLightIllumination, GlossyLight},
        {GlossyColor, GlossyIndirectIllumination, GlossyIndirect},
        {SpecularColor, SpecularIndirectIllumination, SpecularReflection},
    };
    std::vector<unsigned> passes = {Beauty, Mask, MaterialID};
    for (unsigned id = 0; id < count; ++id)
        if (id != Beauty && id != Mask && id != MaterialID && oxRaytracer::isHostPass(id))
            passes.push_back(id);
    EXPECT_GE(passes.size(), size_t(40));
    oxRaytracer::Settings s;
    s.width = 64;
    s.height = 48;
    s.samples = 8;
    s.filterType = 0; // a box: every sample of a pixel weighs the same
    s.clamping = false;
    s.passIds = passes;
    oxRenderedImage image;
    ASSERT_TRUE(raytracer.render(example, s, image, error)) << error;
    auto value = [&](unsigned pass, int x, int y, int c) {
        return image.find(pass)->rgba[(size_t(y) * 64 + size_t(x)) * 4 + size_t(c)];
    };
    int checked = 0, factored = 0;
    double lit = 0.0;
    for (int y = 1; y < 47; ++y)
        for (int x = 1; x < 63; ++x) {
            if (value(Mask, x, y, 0) < 1.0f)
                continue;
            ++checked;
            for (int c = 0; c < 3; ++c) {
                float sum = 0.0f;
                for (unsigned id : combined)
                    sum += value(id, x, y, c);
                ASSERT_NEAR(sum, value(Beauty, x, y, c), 1e-4f * (1.0f + sum)) << x << "," << y;
                lit += value(DiffuseLight, x, y, c) + value(GlossyIBL, x, y, c);
            }
            // Where a pixel's neighbours show the same material, its samples share its colours.
            bool inside = true;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx)
                    for (int c = 0; c < 3; ++c)
                        inside &=
                            value(MaterialID, x + dx, y + dy, c) == value(MaterialID, x, y, c);
            if (!inside)
                continue;
            ++factored;
            for (const auto& f : factors)
                for (int c = 0; c < 3; ++c)
                    ASSERT_NEAR(value(f.colour, x, y, c) * value(f.illumination, x, y, c),
                                value(f.combined, x, y, c),
                                1e-3f + 1e-3f * value(f.combined, x, y, c))
                        << name(f.illumination) << " at " << x << "," << y;
        }
    EXPECT_GT(checked, 1000);
    EXPECT_GT(factored, 500);
    EXPECT_GT(lit, 100.0); // the channels hold the light, not zeros that trivially add up
}

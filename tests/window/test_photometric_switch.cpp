// The photometric switch: the question, the conversion of the scene's lights, materials,
// clamping and environment, what the raytracer then shows, and Cancel changing nothing.

#include "oxDialogResponder.h"
#include "oxImageSource.h"
#include "oxRaytracer.h"
#include "oxRenderParameter.h"
#include "oxSettingsWindowSupport.h"

#include <numeric>

namespace {

class PhotometricSwitchTest : public oxSettingsWindowTest {
protected:
    void SetUp() override
    {
        oxSettingsWindowTest::SetUp();
        oxRenderParameter::resetToDefaults();
        // One light core shared by three nodes: it must be converted once.
        m_lamp = std::make_shared<osg::Light>();
        m_lamp->type = osg::Light::Directional;
        m_lamp->value = 2.0f;
        for (const char* name : {"Lamp A", "Lamp B", "Lamp C"})
            oxScenegraph::getRoot()->addChild(std::make_unique<osg::Node>(m_lamp, name));
        m_glowing = firstBrdfMaterial();
        m_glowing->setIncandescenceColor({0.5f, 0.5f, 0.5f, 1.0f});
        m_clamp = oxRenderParameter::getReflectionClampValue();
        oxController::setModified(false);
    }
    void TearDown() override
    {
        oxRenderParameter::resetToDefaults();
        oxSettingsWindowTest::TearDown();
    }

    static osg::UBRDFMaterialBase* firstBrdfMaterial()
    {
        for (const auto& material :
             oxMaterials::findMaterialPool(oxScenegraph::getRoot(), true, true, 0)->get()) {
            if (auto* brdf = dynamic_cast<osg::UBRDFMaterialBase*>(material.get()))
                return brdf;
        }
        return nullptr;
    }
    // The user ticks or unticks the check box and answers the question with answer.
    void toggle(const char* answer)
    {
        oxDialogResponder::queueAnswer(answer);
        window()._enable_PBParameters->click();
    }
    static float averageBeauty()
    {
        oxRenderedImage image;
        std::string error;
        EXPECT_TRUE(oxRaytracer::the().render(
            oxScene::current(), oxRaytracer::Settings::fromHost(32, 18, false), image, error))
            << error;
        const std::vector<float>& rgba = image.find(oxImagePasses::Beauty)->rgba;
        return std::accumulate(rgba.begin(), rgba.end(), 0.0f) / float(rgba.size());
    }

    std::shared_ptr<osg::Light> m_lamp;
    osg::UBRDFMaterialBase* m_glowing = nullptr;
    float m_clamp = 0.0f;
};

} // namespace

TEST_F(PhotometricSwitchTest, EnablingConvertsTheScenesValuesAndDisablingGivesThemBack)
{
    preferences().set("Display Luminance", 250.0f, true);
    toggle("Enable Photometric Mode");
    EXPECT_TRUE(oxRenderParameter::getPBParameters());
    EXPECT_TRUE(current().pbParameters);
    EXPECT_FLOAT_EQ(oxRenderParameter::getDisplayLuminance(), 250.0f);
    EXPECT_FLOAT_EQ(m_lamp->value, 500.0f) << "a shared light is converted once";
    EXPECT_TRUE(m_lamp->physicallyBased);
    EXPECT_EQ(m_lamp->attenuation, 2);
    EXPECT_FLOAT_EQ(oxRenderParameter::getReflectionClampValue(), m_clamp * 250.0f);
    EXPECT_FLOAT_EQ(oxUberMaterialUtils::getDefaultOXEnvironment()->getLuminanceMapping(), 100.0f);
    // The glow's colour now has luminance 1; its former luminance and the scale went into
    // the intensity.
    const osg::Vec4f glow = m_glowing->getIncandescenceColor();
    EXPECT_NEAR(glow[1], 1.0f, 1e-5f);
    EXPECT_NEAR(glow[3], 0.5f * 250.0f, 1e-3f);
    EXPECT_TRUE(oxController::isModified());

    toggle("Disable Photometric Mode");
    EXPECT_FALSE(oxRenderParameter::getPBParameters());
    EXPECT_FLOAT_EQ(m_lamp->value, 2.0f);
    EXPECT_FALSE(m_lamp->physicallyBased);
    EXPECT_FLOAT_EQ(oxRenderParameter::getDisplayLuminance(), 1.0f);
    EXPECT_FLOAT_EQ(oxRenderParameter::getSim2LuminanceMapping(), 2000.0f);
    EXPECT_FLOAT_EQ(oxUberMaterialUtils::getDefaultOXEnvironment()->getLuminanceMapping(), 1.0f);
    EXPECT_NEAR(m_glowing->getIncandescenceColor()[3], 0.5f, 1e-5f);
}

TEST_F(PhotometricSwitchTest, CancelLeavesTheSceneAndTheCheckBoxAsTheyWere)
{
    toggle("Cancel");
    EXPECT_FALSE(window()._enable_PBParameters->isChecked());
    EXPECT_FALSE(oxRenderParameter::getPBParameters());
    EXPECT_FLOAT_EQ(m_lamp->value, 2.0f);
    EXPECT_FALSE(m_lamp->physicallyBased);
    EXPECT_EQ(m_lamp->attenuation, 0);
    EXPECT_FLOAT_EQ(oxRenderParameter::getReflectionClampValue(), m_clamp);
    EXPECT_FALSE(oxController::isModified());
    ASSERT_EQ(oxDialogResponder::history().size(), 1);
    EXPECT_EQ(oxDialogResponder::history()[0].title, "Enable Photometric Parameters");
}

TEST_F(PhotometricSwitchTest, UnconvertedLightsAreDimmedByTheDisplayLuminanceInTheRender)
{
    const float standard = averageBeauty();
    expectLog(oxLog::Warning, "Changing photometric parameters mode without adjusting values.");
    toggle("[x] Enable Photometric Mode");
    EXPECT_TRUE(m_lamp->physicallyBased);
    EXPECT_EQ(m_lamp->attenuation, 2);
    EXPECT_FLOAT_EQ(m_lamp->value, 2.0f) << "the numbers stay";
    EXPECT_FLOAT_EQ(oxRenderParameter::getDisplayLuminance(), 100.0f);
    const float unconverted = averageBeauty();
    EXPECT_LT(unconverted, standard * 0.8f);

    // Converting the values instead brings the picture back.
    oxRenderParameter::setDisplayLuminance(100.0f);
    window().rescaleSceneValues(true);
    EXPECT_NEAR(averageBeauty(), standard, standard * 0.02f);
}

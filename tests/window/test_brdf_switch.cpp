// The BRDF mode switch moves the render parameter, the material system's mode and every
// material's BRDF bits together, and walks the scene only when the mode changes.

#include "oxImageSource.h"
#include "oxProgress.h"
#include "oxRaytracer.h"
#include "oxRenderParameter.h"
#include "oxRenderSettings.h"
#include "oxSceneIO.h"
#include "oxSceneServices.h"
#include "oxSettingsWindowSupport.h"
#include "oxTestSupport.h"

#include <memory>
#include <vector>

namespace {

class BrdfSwitchTest : public oxTest {
protected:
    void SetUp() override { oxSceneIO::newScene(); }
    void TearDown() override
    {
        oxRenderSettings::switchBrdfMode(m_mode);
        oxRenderParameter::resetToDefaults();
        oxTest::TearDown();
    }

    // The BRDF bits of every material, which must agree; -1 when they don't.
    static int materialBits()
    {
        std::vector<std::shared_ptr<osg::Material>> materials;
        oxMaterials::getAllMaterials(oxScenegraph::getRoot(), materials, 1);
        int bits = -1;
        for (const auto& material : materials) {
            const auto* uber = dynamic_cast<const osg::UberMaterialBase*>(material.get());
            const int own =
                int(uber->getRenderMode() & (osg::UberMaterial::use_ggx_brdf |
                                             osg::UberMaterial::fresnel_respects_glossy_color));
            if (bits != -1 && own != bits)
                return -1;
            bits = own;
        }
        return bits;
    }

private:
    const int m_mode = osg::UberMaterial::getBrdfMode();
};

} // namespace

TEST_F(BrdfSwitchTest, EveryMaterialFollowsAndTheSameModeTouchesNothing)
{
    constexpr int fresnel = int(osg::UberMaterial::fresnel_respects_glossy_color);
    constexpr int ggx = int(osg::UberMaterial::use_ggx_brdf);
    ASSERT_EQ(osg::UberMaterial::getBrdfMode(), 2);
    EXPECT_EQ(materialBits(), fresnel | ggx);

    for (const auto& [mode, bits] : {std::pair{0, 0}, {1, fresnel}, {2, fresnel | ggx}}) {
        EXPECT_TRUE(oxRenderSettings::switchBrdfMode(mode)) << mode;
        EXPECT_EQ(materialBits(), bits) << mode;
        EXPECT_EQ(int(osg::UberMaterial::getRenderingMode()) & (fresnel | ggx), bits) << mode;
        EXPECT_EQ(oxRenderParameter::getBrdfMode(), mode);
    }

    // A mode already in force only sets the parameter.
    osg::WinThreadBase::getCurrentChangeList()->clear();
    oxRenderParameter::setBrdfMode(0);
    EXPECT_FALSE(oxRenderSettings::switchBrdfMode(2));
    EXPECT_EQ(oxRenderParameter::getBrdfMode(), 2);
    EXPECT_TRUE(osg::WinThreadBase::getCurrentChangeList()->getChanged().empty());
}

namespace {

class BrdfComboTest : public oxSettingsWindowTest {
protected:
    void TearDown() override
    {
        oxRenderSettings::switchBrdfMode(2);
        oxSettingsWindowTest::TearDown();
    }
    static std::vector<float> beauty()
    {
        oxRenderedImage image;
        std::string error;
        EXPECT_TRUE(oxRaytracer::the().render(
            oxScene::current(), oxRaytracer::Settings::fromHost(32, 18, false), image, error))
            << error;
        return image.find(oxImagePasses::Beauty)->rgba;
    }
};

} // namespace

TEST_F(BrdfComboTest, ChoosingAModeRewritesTheMaterialsWithProgressAndChangesTheRender)
{
    const std::vector<float> ggx = beauty();
    window()._brdf_mode->setCurrentIndex(0);
    emit window()._brdf_mode->activated(0);
    EXPECT_EQ(oxRenderParameter::getBrdfMode(), 0);
    EXPECT_EQ(window()._brdf_mode->currentIndex(), 0);
    std::vector<std::shared_ptr<osg::Material>> materials;
    oxMaterials::getAllMaterials(oxScenegraph::getRoot(), materials, 1);
    EXPECT_EQ(oxProgress::the()->getText(), "Switching BRDF mode");
    EXPECT_EQ(oxProgress::the()->getDone(), materials.size());
    EXPECT_FALSE(oxProgress::the()->isActive());
    EXPECT_NE(beauty(), ggx);

    // A refresh re-asserts the host's mode on the materials.
    oxRenderParameter::setBrdfMode(2);
    window().updateGUI();
    EXPECT_EQ(window()._brdf_mode->currentIndex(), 2);
    EXPECT_EQ(beauty(), ggx);
}

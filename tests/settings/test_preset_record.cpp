#include "oxSettingsTestSupport.h"

#include <algorithm>

using RecordTest = oxSettingsTest;

namespace {

oxRenderSettingsPreset withPasses(std::initializer_list<PassFlag> flags)
{
    oxRenderSettingsPreset preset;
    preset.renderpasses = true;
    for (PassFlag flag : flags)
        preset.passFlag(flag) = true;
    return preset;
}

} // namespace

TEST_F(RecordTest, ConstructedRecordIsEmptyButForRaySplittingAndAlphaDenoising)
{
    const oxRenderSettingsPreset preset;
    oxRenderSettingsPreset expected;
#define OX_EXPECT_EMPTY(type, field, constructed) expected.field = decltype(expected.field)();
    OX_PRESET_FIELDS(OX_EXPECT_EMPTY)
#undef OX_EXPECT_EMPTY
    expected.useRaySplitting = true;
    expected.denoiseAlpha = true;
    EXPECT_EQ(preset, expected);
    for (const oxRenderPassFlagInfo& info : kPassFlags)
        EXPECT_FALSE(preset.getPassFlag(info.flag)) << info.column;
}

TEST_F(RecordTest, EqualityCoversEveryFieldAndPassFlag)
{
    const oxRenderSettingsPreset base;
    oxRenderSettingsPreset other;
    other.useNVLinkGeometrySharing = true;
    EXPECT_NE(base, other);
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        oxRenderSettingsPreset flagged;
        flagged.passFlag(info.flag) = true;
        EXPECT_NE(base, flagged) << info.column;
    }
}

TEST_F(RecordTest, SizeRoundsAndResolutionTruncates)
{
    oxRenderSettingsPreset preset;
    preset.pixel_width = 1919.5f;
    preset.pixel_height = 1079.4f;
    preset.ppi = 299.9f;
    EXPECT_EQ(preset.getPixelWidth(), 1920);
    EXPECT_EQ(preset.getPixelHeight(), 1079);
    EXPECT_EQ(preset.getPixelsPerInch(), 299);
}

TEST_F(RecordTest, FileExtensionAndMovieExport)
{
    oxRenderSettingsPreset preset;
    preset.filename = "c:\\renders\\shot.final.exr";
    EXPECT_EQ(preset.getFileExtension(false), "exr");
    EXPECT_EQ(preset.getFileExtension(true), ".exr");

    preset.exportType = 1;
    EXPECT_FALSE(preset.isMovieExport());
    preset.renderAnimation = true;
    EXPECT_TRUE(preset.isMovieExport());
    preset.exportType = 0;
    EXPECT_FALSE(preset.isMovieExport());
}

TEST_F(RecordTest, BeautyAloneUnlessAPassIsSelected)
{
    // Only the specular light flag: it stands for no pass.
    const oxRenderSettingsPreset specularLight = withPasses({PassFlag::SpecularLight});
    EXPECT_FALSE(specularLight.hasSelectedRenderPass());
    EXPECT_EQ(specularLight.getRenderPassFlags(), std::vector<bool>{true});

    const oxRenderSettingsPreset none = withPasses({});
    EXPECT_EQ(none.getRenderPassFlags(), std::vector<bool>{true});
    EXPECT_EQ(none.getRenderPassIds(), std::vector<unsigned>{0});
    EXPECT_EQ(none.getRenderPassCount(), 1u);

    oxRenderSettingsPreset off = withPasses({PassFlag::Depth});
    off.renderpasses = false;
    EXPECT_EQ(off.getRenderPassFlags(), std::vector<bool>{true});
    EXPECT_TRUE(off.getRenderPassIds().empty());

    const oxRenderSettingsPreset depth = withPasses({PassFlag::Depth});
    EXPECT_TRUE(depth.hasSelectedRenderPass());
    oxOSGWidget::setRaytracing(false);
    EXPECT_FALSE(depth.hasSelectedRenderPass());
    EXPECT_EQ(depth.getRenderPassFlags(), std::vector<bool>{true});
    EXPECT_TRUE(depth.getRenderPassIds().empty());
}

TEST_F(RecordTest, EachFlagLightsItsPassIdsInTheRaytracersOrder)
{
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        if (!info.hasPassId())
            continue;
        const oxRenderSettingsPreset preset = withPasses({info.flag});
        const std::vector<bool> flags = preset.getRenderPassFlags();
        ASSERT_EQ(flags.size(), kPassCount) << info.column;
        std::vector<unsigned> expected;
        for (unsigned i = 0; i < info.idCount; ++i)
            expected.push_back(info.firstId + i);
        EXPECT_EQ(preset.getRenderPassIds(), expected) << info.column;
        EXPECT_FALSE(flags[PassMotionVector]);
        EXPECT_FALSE(flags[PassGPUDepth]);
    }
    // Where the record's order and the raytracer's differ.
    EXPECT_EQ(withPasses({PassFlag::SpecularIBL}).getRenderPassIds(), std::vector<unsigned>{5});
    EXPECT_EQ(withPasses({PassFlag::SpecularReflection}).getRenderPassIds(),
              std::vector<unsigned>{24});
    EXPECT_EQ(withPasses({PassFlag::CryptoMaterial}).getRenderPassIds(),
              (std::vector<unsigned>{37, 38, 39}));
    EXPECT_EQ(withPasses({PassFlag::Backplate, PassFlag::CameraNormal, PassFlag::Beauty})
                  .getRenderPassIds(),
              (std::vector<unsigned>{0, 28, 44}));
}

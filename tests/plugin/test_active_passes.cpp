#include "oxActiveRenderPasses.h"
#include "oxImageRenderWidget.h"
#include "oxRenderPasses.h"

#include "oxTestSupport.h"

#include <initializer_list>

namespace {

class ActivePassesTest : public oxTest {
protected:
    void SetUp() override { oxImageRenderWidget::setActiveRenderPasses({}); }
    void TearDown() override
    {
        oxImageRenderWidget::setActiveRenderPasses({});
        oxTest::TearDown();
    }

    static const ActivePassList& active() { return oxImageRenderWidget::getActiveRenderPasses(); }

    // The ids that are set, ascending.
    static std::vector<unsigned> setIds()
    {
        std::vector<unsigned> ids;
        for (unsigned id = 0; id < active().size(); ++id)
            if (active()[id])
                ids.push_back(id);
        return ids;
    }
};

} // namespace

TEST_F(ActivePassesTest, GroupSettersPadTheListAndWriteOnlyTheirIds)
{
    setIlluminationChannelsRenderPasses(true, false, false, false, false, false, false, false, true,
                                        true);
    EXPECT_EQ(active().size(), kPassCount);
    EXPECT_EQ(setIds(), (std::vector<unsigned>{16, 24, 25}));

    setImageProcessingRenderPasses(true, true, false, false);
    EXPECT_EQ(setIds(), (std::vector<unsigned>{16, 24, 25, 26, 27}));

    setMaterialChannelsRenderPasses(false, true, false, false, true);
    EXPECT_EQ(setIds(), (std::vector<unsigned>{11, 14, 16, 24, 25, 26, 27}));

    // The short combined form turns transparency and background on.
    setCombinedChannelsRenderPasses(true, false, false, false, false, false, false, false, false,
                                    false);
    EXPECT_EQ(setIds(), (std::vector<unsigned>{0, 11, 14, 15, 16, 24, 25, 26, 27}));
    setCombinedChannelsRenderPasses(true, false, false, false, false, false, false, false, false,
                                    false, false, false);
    EXPECT_EQ(setIds(), (std::vector<unsigned>{0, 11, 16, 24, 25, 26, 27}));

    // The material setter writes incandescence last, over its own default.
    setMaterialChannelsRenderPasses(false, false, false, false, false, false, true);
    EXPECT_TRUE(active()[PassIncandescence]);
}

TEST_F(ActivePassesTest, AuxiliaryChannelsAlwaysClearAlbedoAndSetCryptomatteLayersTogether)
{
    ActivePassList withAlbedo(kPassCount, false);
    withAlbedo[PassAlbedo] = true;
    oxImageRenderWidget::setActiveRenderPasses(withAlbedo);

    setAuxiliaryChannelsRenderPasses(true, false, true, false, false, false, true, true);
    EXPECT_EQ(setIds(), (std::vector<unsigned>{30, 33, 34, 35, 36, 43}));

    setAuxiliaryChannelsRenderPasses(false, false, false, true, true, true, false, false, true);
    EXPECT_EQ(setIds(), (std::vector<unsigned>{37, 38, 39, 40, 41, 42}));
}

TEST_F(ActivePassesTest, ShortAndLongHostListsArePaddedOrKept)
{
    oxImageRenderWidget::setActiveRenderPasses({true}); // beauty only
    setImageProcessingRenderPasses(false, false, true, false);
    EXPECT_EQ(active().size(), kPassCount);
    EXPECT_EQ(setIds(), (std::vector<unsigned>{0, 28}));

    ActivePassList longer(kPassCount + 3, false);
    longer[kPassCount + 1] = true;
    oxImageRenderWidget::setActiveRenderPasses(longer);
    setImageProcessingRenderPasses(true, false, false, false);
    EXPECT_EQ(active().size(), kPassCount + 3);
    EXPECT_TRUE(active()[kPassCount + 1]);
    EXPECT_TRUE(active()[PassFog]);
}

TEST_F(ActivePassesTest, SnapshotMoviePassesReplaceEverythingUpToTheViewVector)
{
    ActivePassList all(kPassCount, true);
    oxImageRenderWidget::setActiveRenderPasses(all);
    setActiveSnapshotMovieRenderPasses(true, false, false, false, false, false, false, false, false,
                                       false, false, false, true, false, false, false, false, true,
                                       false, false, true);
    // Beauty, normal, frontplate and the material cryptomatte layers; 44 to 46 keep their value.
    EXPECT_EQ(setIds(), (std::vector<unsigned>{0, 29, 32, 37, 38, 39, 44, 45, 46}));

    // The other order: an illumination setter after it adds to the list.
    setIlluminationChannelsRenderPasses(true, false, false, false, false, false, false, false,
                                        false, false);
    EXPECT_TRUE(active()[PassDiffuseIBLIllumination]);
    setActiveSnapshotMovieRenderPasses(true, false, false, false, false, false, false, false, false,
                                       false, false, false, false, false, false);
    EXPECT_FALSE(active()[PassDiffuseIBLIllumination]);
}

TEST_F(ActivePassesTest, NoSelectedPassEndsTheOverride)
{
    setAuxiliaryChannelsRenderPasses(true, false, false, false, false, false, false);
    ASSERT_TRUE(oxImageRenderWidget::hasActiveRenderPasses());

    // Only the ignored specular light, the plates and the cryptomatte layers: no selection.
    setActiveSnapshotMovieRenderPasses(false, false, false, false, false, false, true, false, false,
                                       false, false, false, false, false, false, false, false, true,
                                       true, true, true);
    EXPECT_FALSE(oxImageRenderWidget::hasActiveRenderPasses());

    setActiveSnapshotMovieRenderPasses(false, false, false, false, false, false, false, false,
                                       false, false, false, false, false, false, false, false,
                                       true);
    EXPECT_EQ(setIds(), (std::vector<unsigned>{27}));

    resetActiveSnapshotMovieRenderPasses();
    EXPECT_TRUE(active().empty());
}

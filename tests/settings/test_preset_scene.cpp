#include "oxSettingsTestSupport.h"

#include "oxScene.h"
#include "oxSceneServices.h"

#include <memory>

namespace {

// A scene with a camera holding two viewpoints, a second camera with a viewpoint of the same
// name as the first one's, a camera track, and a clip keyed from frame 10 to 40.
class PresetSceneTest : public oxSettingsTest {
protected:
    void SetUp() override
    {
        oxSettingsTest::SetUp();
        auto scene = std::make_unique<oxScene>();
        osg::NodePtr front = scene->addCamera("Front");
        m_detail = scene->addViewpoint("Detail", front);
        scene->addViewpoint("Wheel", front);
        osg::NodePtr side = scene->addCamera("Side");
        scene->addViewpoint("Wheel", side);
        m_track = scene->addCameraTrack("Tour", front);
        scene->addViewpoint("Stop 1", m_track);
        scene->addViewpoint("Stop 2", m_track);
        oxAnimClip* clip = scene->addClip("Spin");
        oxAnimChannel channel;
        channel.frames = {10.0f, 40.0f};
        channel.values = {0, 0, 0, 1, 1, 1};
        clip->channels.push_back(channel);
        m_previous = oxScene::replaceCurrent(std::move(scene));
    }
    void TearDown() override
    {
        oxScene::replaceCurrent(std::move(m_previous));
        oxSettingsTest::TearDown();
    }

    osg::NodePtr m_detail = nullptr;
    osg::NodePtr m_track = nullptr;

private:
    std::unique_ptr<oxScene> m_previous;
};

oxRenderSettingsPreset viewing(const std::string& view)
{
    oxRenderSettingsPreset preset;
    preset.view = view;
    preset.startFrame = 3;
    preset.stopFrame = 7;
    preset.stepFrame = 2;
    return preset;
}

} // namespace

TEST_F(PresetSceneTest, ViewIsFoundByPathThenByUniqueName)
{
    const osg::NodePtr root = oxUberCameraPool::the()->getRoot();
    EXPECT_EQ(viewing("").getViewNode(), nullptr);
    EXPECT_EQ(viewing(oxNodeUtils::getUniquePath(m_detail, root)).getViewNode(), m_detail);
    // A path that no longer holds still finds a name that is unique.
    EXPECT_EQ(viewing("Moved/Detail").getViewNode(), m_detail);
    EXPECT_TRUE(log().entries().empty());

    EXPECT_TRUE(viewing("Gone/Nowhere").isViewMissing());
    expectLog(oxLog::Error, "oxRenderSettingsPreset: Unable to find view 'Nowhere'.");
    EXPECT_EQ(viewing("Wheel").getViewNode(), nullptr);
    expectLog(oxLog::Error,
              "oxRenderSettingsPreset: Ambiguous view name 'Wheel'. Using current view.");
}

TEST_F(PresetSceneTest, CameraTrackViewTurnsVariantSetsOff)
{
    oxRenderSettingsPreset preset = viewing("Tour");
    preset.variantSetsUsed = true;
    preset.variantSetViewpointsUsed = true;
    EXPECT_TRUE(preset.isCameraTrackView());
    EXPECT_TRUE(preset.isStillCameraTrackView());
    EXPECT_FALSE(preset.usesVariantSets());
    EXPECT_FALSE(preset.usesVariantSetViewpoints());
    preset.renderAnimation = true;
    EXPECT_FALSE(preset.isStillCameraTrackView());

    preset.view = "Detail";
    EXPECT_FALSE(preset.isCameraTrackView());
    EXPECT_TRUE(preset.usesVariantSets());
    EXPECT_TRUE(preset.usesVariantSetViewpoints());
}

TEST_F(PresetSceneTest, AnimationRangeFromRecordClipOrCameraTrack)
{
    oxRenderSettingsPreset preset = viewing("");
    oxRenderSettingsPreset::AnimationRange range = preset.getAnimationRange();
    EXPECT_EQ(range.firstFrame, 3u);
    EXPECT_EQ(range.lastFrame, 7u);
    EXPECT_EQ(range.step, 2u);
    EXPECT_EQ(range.animationId, 0u);

    preset.clip = "Spin";
    const osg::NodePtr clip = oxAnimManager::the()->findClip("Spin");
    ASSERT_NE(clip, nullptr);
    range = preset.getAnimationRange();
    EXPECT_EQ(range.animationId, clip->getId());
    EXPECT_EQ(range.firstFrame, 3u);
    preset.useClipRange = true;
    range = preset.getAnimationRange();
    EXPECT_EQ(range.firstFrame, 10u);
    EXPECT_EQ(range.lastFrame, 40u);

    // The timeline ignores the clip; an unknown clip leaves the record's range.
    preset.animationType = 1;
    EXPECT_EQ(preset.getAnimationRange().animationId, 0u);
    preset.animationType = 0;
    preset.clip = "Nonexistent";
    EXPECT_EQ(preset.getAnimationRange().lastFrame, 7u);

    // A camera track's block wins over the clip; a movie has no frame step.
    preset.clip = "Spin";
    preset.view = "Tour";
    preset.renderAnimation = true;
    preset.exportType = 1;
    const osg::NodePtr block = oxAnimManager::the()->getCameraTrackBlock(m_track);
    ASSERT_NE(block, nullptr);
    int first = -1, last = -1;
    ASSERT_TRUE(oxAnimManager::the()->getFrameBounds(block, first, last));
    range = preset.getAnimationRange();
    EXPECT_EQ(range.animationId, block->getId());
    EXPECT_EQ(range.firstFrame, static_cast<unsigned>(first));
    EXPECT_EQ(range.lastFrame, static_cast<unsigned>(last));
    EXPECT_EQ(range.step, 1u);
}

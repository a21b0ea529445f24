// The render statistics under the form: for each kind of job on the example scene the counts
// shown are what the job renders, and the file count is the number of files it writes.

#include "oxSettingsWindowSupport.h"

#include "oxRenderJobMessage.h"
#include "oxRenderPlan.h"
#include "oxVariantSetTree.h"

#include <functional>

namespace {

class RenderStatisticsTest : public oxSettingsWindowTest {
protected:
    void SetUp() override
    {
        oxSettingsWindowTest::SetUp();
        current().filename = dir().path() + "/out/car.png";
        current().pixel_width = 16;
        current().pixel_height = 12;
    }

    // The record changed behind the form's back: ask for the refresh a setter would.
    void refresh()
    {
        window().updateVariantSetGUI();
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
    }
    int shown(QLabel* label) { return label->text().toInt(); }
    int listedFiles()
    {
        return renderOutputFilenames(*window().getImageWriter(),
                                     window().getCurrentRenderSettings())
            .size();
    }
    void choosePasses(std::initializer_list<PassFlag> flags)
    {
        current().renderpasses = true;
        for (PassFlag flag : flags)
            current().passFlag(flag) = true;
    }
    void animate(int start, int stop, int step, int exportType)
    {
        current().renderAnimation = true;
        current().startFrame = start;
        current().stopFrame = stop;
        current().stepFrame = step;
        current().exportType = exportType;
    }
};

struct Case {
    const char* name;
    std::function<void(oxRenderSettingsPreset&)> setup;
    int variantSets, variantSetRenders, viewpoints, passes, passFiles, frames;
    int totalRenders, totalFiles;
    bool unlisted; ///< the listing differs by design (movies) or can't be made (step 0)
};

TEST_F(RenderStatisticsTest, CountsFollowTheJobAndMatchTheFilesListed)
{
    const PassFlag four[] = {PassFlag::Beauty, PassFlag::Normal, PassFlag::Depth,
                             PassFlag::Occlusion};
    auto variants = [](oxRenderSettingsPreset& r) {
        r.variantSetsUsed = true;
        r.variantSets = {oxRenderAutomationVariantSetGroup("Paint"),
                         oxRenderAutomationVariantSetGroup("Rims"),
                         oxRenderAutomationVariantSetGroup("ungrouped")};
        r.variantSets[0].setActiveVariantSetNames({"Paint Red", "Paint Blue", "Paint Silver"});
        r.variantSets[1].setActiveVariantSetNames({"Rims Sport", "Rims Classic"});
    };
    const Case cases[] = {
        {"nothing", [](auto&) {}, 0, 0, 1, 0, 0, 0, 1, 1, false},
        {"variant sets 3 x 2", [&](auto& r) { variants(r); }, 5, 6, 1, 0, 0, 0, 6, 6, false},
        {"variant sets chosen but off",
         [&](auto& r) {
             variants(r);
             r.variantSetsUsed = false;
         },
         0, 0, 1, 0, 0, 0, 1, 1, false},
        {"four passes into a multi-layer EXR, 3 frames",
         [&](auto& r) {
             choosePasses({four[0], four[1], four[2], four[3]});
             r.filename = dir().path() + "/out/car.exr";
             r.multiLayer = true;
             animate(0, 4, 2, 0);
         },
         0, 0, 1, 4, 1, 3, 3, 3, false},
        {"the same without multi layer",
         [&](auto& r) {
             choosePasses({four[0], four[1], four[2], four[3]});
             r.filename = dir().path() + "/out/car.exr";
             animate(0, 4, 2, 0);
         },
         0, 0, 1, 4, 4, 3, 3, 12, false},
        {"a movie of 100 frames with 5 passes",
         [&](auto& r) {
             choosePasses({four[0], four[1], four[2], four[3], PassFlag::Albedo});
             r.filename = dir().path() + "/out/car.avi";
             animate(1, 100, 1, 1);
         },
         0, 0, 1, 5, 5, 100, 100, 5, true},
        {"frame step 0", [&](auto&) { animate(0, 10, 0, 0); }, 0, 0, 1, 0, 0, 0, 1, 1, true},
        {"still camera track with variant sets",
         [&](auto& r) {
             variants(r);
             window().setViewByName("Turntable");
         },
         5, 6, 8, 0, 0, 0, 48, 48, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        current().variantSets.clear();
        current().variantSetsUsed = false;
        current().renderAnimation = false;
        current().renderpasses = false;
        current().multiLayer = false;
        current().view.clear();
        for (bool oxRenderSettingsPreset::*field : kPassFlagFields)
            current().*field = false;
        current().filename = dir().path() + "/out/car.png";
        c.setup(current());
        refresh();
        EXPECT_EQ(shown(window()._variantSetCount), c.variantSets);
        EXPECT_EQ(shown(window()._variantSetRenderCount), c.variantSetRenders);
        EXPECT_EQ(shown(window()._viewpointCount), c.viewpoints);
        EXPECT_EQ(shown(window()._renderPassesCount), c.passes);
        EXPECT_EQ(shown(window()._renderPassesFileCount), c.passFiles);
        EXPECT_EQ(shown(window()._animationFrameCount), c.frames);
        EXPECT_EQ(shown(window()._totalRenderCount), c.totalRenders);
        EXPECT_EQ(shown(window()._totalFileCount), c.totalFiles);
        // A movie is one file per pass in the statistics but one file in the listing; a
        // frame step of 0 lists no frames at all.
        if (!c.unlisted) {
            EXPECT_EQ(listedFiles(), c.totalFiles);
        }
    }
}

// What a render writes is what the listing names (the output suites check that); here the
// counts a queue job carries are those shown.
TEST_F(RenderStatisticsTest, JobsHandedToTheQueueCarryTheCountsShown)
{
    current().variantSetsUsed = true;
    window().setActiveVariantSets("Paint", {"Paint Red", "Paint Blue"});
    window().setActiveVariantSets("Rims", {"Rims Sport", "Rims Classic"});
    choosePasses({PassFlag::Beauty, PassFlag::Depth});
    refresh();
    ASSERT_EQ(window()._totalFileCount->text(), "8");

    static oxMessage job;
    const oxController::Callback capture = [](oxMessage& message) { job = message; };
    oxController::addCB("addRenderJobProxy", capture);
    window().buildRenderJobMessage();
    oxController::subCB("addRenderJobProxy", capture);
    const std::pair<const char*, int> counts[] = {
        {oxJobKey::TotalRenders, 4},      {oxJobKey::TotalFiles, 8},   {oxJobKey::VariantSets, 4},
        {oxJobKey::VariantSetRenders, 4}, {oxJobKey::RenderPasses, 2}, {oxJobKey::Viewpoints, 1},
    };
    for (const auto& [key, value] : counts) {
        int stored = -1;
        EXPECT_TRUE(job.get(key, stored)) << key;
        EXPECT_EQ(stored, value) << key;
    }
}

} // namespace

// Render job presets: the render queue's list of settings in the window, its named callbacks,
// and a job's settings coming back into the window.

#include "oxSettingsTestSupport.h"

#include "oxController.h"
#include "oxImageWriter.h"
#include "oxMessage.h"
#include "oxRenderJobMessage.h"
#include "oxRenderJobPresets.h"
#include "oxRenderSettings.h"
#include "oxRenderSettingsPresetFile.h"

#include <QCheckBox>
#include <QLineEdit>

#include <memory>

namespace {

class JobPresetTest : public oxSettingsTest {
protected:
    void SetUp() override
    {
        oxSettingsTest::SetUp();
        window = std::make_unique<oxRenderSettings>(QStringLiteral("Render Settings"), &writer);
        registerRenderJobPresetCallbacks();
    }
    void TearDown() override
    {
        unregisterRenderJobPresetCallbacks();
        window.reset();
        oxSettingsTest::TearDown();
    }

    oxRenderSettingsPresets& rq() { return window->getRQPresets(); }
    std::vector<std::string> names()
    {
        oxMessage message;
        oxController::call("getRQPresetNames", message, 0);
        std::vector<std::string> result;
        EXPECT_TRUE(message.get("presets", result));
        return result;
    }
    // Calls a callback of the queue with the given "preset" and, when not empty, "xml".
    oxMessage call(const char* name, const std::string& preset, const std::string& xml = {})
    {
        oxMessage message;
        message.set("preset", preset);
        if (!xml.empty())
            message.set("xml", xml);
        oxController::call(name, message, 0);
        return message;
    }

    oxImageWriter writer;
    std::unique_ptr<oxRenderSettings> window;
};

} // namespace

TEST_F(JobPresetTest, ListKeepsNamesAndOrderAsTheQueueUsesThem)
{
    EXPECT_TRUE(names().empty());
    window->getCurrentPreset().filename = "/out/a.png";
    call("addRQPreset", "job A");
    window->getCurrentPreset().filename = "/out/b.png";
    call("addRQPreset", "job B");
    const oxRenderSettingsPresetSPtr first = rq().front();

    // The same name again replaces the record in place: pointer and position stay.
    window->getCurrentPreset().filename = "/out/a2.png";
    call("addRQPreset", "job A");
    EXPECT_EQ(names(), (std::vector<std::string>{"job A", "job B"}));
    EXPECT_EQ(rq().front(), first);
    EXPECT_EQ(first->filename, "/out/a2.png");

    // One preset travels as text: only for a known name, and loaded under the queue's name,
    // appended even when that name exists; lookups then find the older one.
    EXPECT_FALSE(call("saveRenderJobPreset", "unknown").has("xml"));
    EXPECT_FALSE(call("saveRenderJobPreset", "").has("xml"));
    std::string text;
    ASSERT_TRUE(call("saveRenderJobPreset", "job A").get("xml", text));
    call("loadRenderJobPreset", "job B", text);
    EXPECT_EQ(names(), (std::vector<std::string>{"job A", "job B", "job B"}));
    EXPECT_EQ(window->getRQPreset("job B")->filename, "/out/b.png");
    EXPECT_EQ(rq().back()->filename, "/out/a2.png");

    // Deleting removes the first of the name and leaves the current settings' name alone.
    window->getCurrentPreset().name = "job B";
    call("deleteRQPreset", "job B");
    window->deleteRQPreset("");
    EXPECT_EQ(names(), (std::vector<std::string>{"job A", "job B"}));
    EXPECT_EQ(window->getRQPreset("job B")->filename, "/out/a2.png");
    EXPECT_EQ(window->getCurrentPreset().name, "job B");

    // A whole list: absent text changes nothing, unreadable text empties it.
    oxMessage absent;
    oxController::call("loadRenderJobPresets", absent, 0);
    EXPECT_EQ(rq().size(), 2u);
    oxMessage garbage;
    garbage.set("presets", std::string("<not a preset list"));
    oxController::call("loadRenderJobPresets", garbage, 0);
    EXPECT_TRUE(rq().empty());
}

TEST_F(JobPresetTest, ApplyingAJobPresetTakesItsOutputAndLeavesTheSettingsUnnamed)
{
    int applied = 0;
    QObject::connect(window.get(), &oxRenderSettings::renderQueuePresetApplied, [&] { ++applied; });
    window->getCurrentPreset().name = "Studio";
    window->getCurrentPreset().filename = "/out/job.png";
    window->getCurrentPreset().clip = "Spin";
    window->addRQPreset("job");
    window->getCurrentPreset().filename = "/out/current.png";
    window->getCurrentPreset().clip.clear();

    window->applyRQPresetByName("unknown");
    EXPECT_EQ(applied, 0);
    EXPECT_EQ(window->getCurrentPreset().name, "Studio");

    window->applyRQPresetByName("job");
    EXPECT_EQ(applied, 1);
    EXPECT_EQ(window->getCurrentPreset().name, "");
    EXPECT_EQ(window->getCurrentPreset().filename, "/out/job.png");
    EXPECT_EQ(window->getCurrentPreset().clip, "Spin");
    EXPECT_FALSE(window->isGuiUpdateLocked());
}

TEST_F(JobPresetTest, ReturningJobSettingsReachWindowAndRenderer)
{
    oxRenderSettingsPreset& preset = window->getCurrentPreset();
    preset.filename = "/out/job.exr";
    preset.pixel_width = 1920.0f;
    preset.ppi = 300.0f;
    preset.depth_pass = true;
    window->_cluster->setChecked(true);
    window->_cluster_hosts->setText(QStringLiteral("node1,node2"));
    oxMessage job =
        makeRenderJobMessage(window->getCurrentPreset(), window->renderJobWindowValues());
    job.set("MovieExport ssfactor", 1);
    job.set("Denoise Filter Type", 0u);
    job.set("Use Denoise Filter Flag", true);
    job.set("Maximum Rendering Time", 600u);
    job.set("Maximum Antialiasing Samples", 1024);

    // The window starts from other settings; a key the job lacks leaves its field.
    preset = oxRenderSettingsPreset();
    preset.iccProfileID = 7;
    window->_cluster->setChecked(false);
    window->receiveRenderSettingsFromRenderQueue(job);

    EXPECT_EQ(preset.filename, "/out/job.exr");
    EXPECT_FLOAT_EQ(preset.printWidth, 1920.0f / 300.0f * 2.54f);
    EXPECT_EQ(preset.ssFactor, 3);
    EXPECT_TRUE(preset.depth_pass);
    EXPECT_EQ(preset.iccProfileID, 7);
    EXPECT_EQ(preset.denoiseFilterType, 2u);
    EXPECT_TRUE(window->_cluster->isChecked());
    EXPECT_EQ(window->_cluster_hosts->text(), QStringLiteral("node1,node2"));
    // The renderer gets samples, time and the denoiser.
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 1024);
    EXPECT_EQ(oxRenderParameter::getRenderTimeInSeconds(), 600u);
    EXPECT_EQ(oxRenderParameter::getDenoiseFilter(), 2u);

    // An empty host list switches the cluster off; type 1 of old jobs reads as 2.
    oxMessage later;
    later.set("Export cluster hosts", std::string());
    later.set("Denoise Filter Type", 1u);
    window->receiveRenderSettingsFromRenderQueue(later);
    EXPECT_FALSE(window->_cluster->isChecked());
    EXPECT_EQ(preset.denoiseFilterType, 2u);
    EXPECT_EQ(preset.filename, "/out/job.exr");
}

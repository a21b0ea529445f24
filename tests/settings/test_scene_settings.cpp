// The current settings in a scene's project record: every key, its fallback, the older keys
// and the callbacks through which other modules hand settings in.

#include "oxSettingsWindowSupport.h"

#include "oxMessageRW.h"
#include "oxRaytracingUtilsBase.h"
#include "oxScript.h"

#include <typeinfo>

using P = oxRenderSettingsPreset;

namespace {

class SceneSettingsTest : public oxSettingsWindowTest {
protected:
    // Loads a project record into the window, with the services and the record fresh.
    void loadFresh(oxMessage& project)
    {
        resetRenderServices();
        current() = P();
        window().loadSettings(project);
    }
};

// The type a saved key must have: the type of its field.
const std::type_info& fieldType(const oxSettingField& field)
{
    return std::visit(
        [](auto member) -> const std::type_info& {
            using T = std::decay_t<decltype(std::declval<P>().*member)>;
            return typeid(T);
        },
        field);
}

void setViewSettings(int seed)
{
    oxOSGWidget::setScreenSpaceAO(true);
    oxOSGWidget::setScreenSpaceAOSamples(seed + 1);
    oxOSGWidget::setScreenSpaceAOIntensity(0.25f * static_cast<float>(seed));
    oxOSGWidget::setScreenSpaceAORadius(10.0f * static_cast<float>(seed));
    oxOSGWidget::setScreenSpaceAOBlurAmount(seed + 2);
    oxOSGWidget::setScreenSpaceAOCutoffAngle(static_cast<float>(seed) + 0.5f);
    oxOSGWidget::setScreenSpaceAOEdgePreservation(0.125f * static_cast<float>(seed));
    oxOSGWidget::setDepthPeelEnabled(true);
    oxOSGWidget::setDepthPeelNumLayers(seed + 3);
}

} // namespace

TEST_F(SceneSettingsTest, EveryKeyRoundTripsThroughAProjectFile)
{
    const P saved = distinctRecord(1);
    window().applyPreset(saved, static_cast<P::ApplyPresetMode>(P::KeepSpectral));
    setViewSettings(3);
    oxMessage project;
    window().saveSettings(project);

    // Every saved key carries the type of its field; read-only and old keys are not written.
    for (const oxSettingKey& row : kSceneKeys) {
        if (row.rule == oxKeyRule::PassFlags)
            continue;
        const bool written = row.rule != oxKeyRule::ReadOnly && row.rule != oxKeyRule::Superseded;
        EXPECT_EQ(project.has(row.key), written) << row.key;
        if (written) {
            EXPECT_STREQ(project.get(row.key).type().name(), fieldType(row.field).name())
                << row.key;
        }
    }
    EXPECT_TRUE(project.has(oxRenderPassMaster::sceneKey));
    for (const oxRenderPassFlagInfo& flag : kPassFlags)
        EXPECT_TRUE(project.has(flag.sceneKey)) << flag.sceneKey;
    for (const oxViewSettingKey& row : kViewSettingKeys)
        EXPECT_TRUE(project.has(row.key)) << row.key;
    EXPECT_EQ(project.getMap().size(),
              kSceneKeys.size() - 4 - 1 + 1 + kPassFlagCount + kViewSettingKeys.size());

    const std::string file = dir().file("settings.xml");
    ASSERT_TRUE(oxMessageRW::write(project, file.c_str()));
    oxMessage read;
    ASSERT_TRUE(oxMessageRW::read(read, file.c_str(), std::string()));
    loadFresh(read);

    P expected = saved;
    expected.photonLookupCount = 16; // read from scenes, never written to them
    expected.stillFrameSupersampling = 1;
    expected.useNVLinkTextureSharing = false;
    expected.useNVLinkGeometrySharing = false;
    expected.name.clear();
    expected.printWidth = static_cast<float>(saved.pixel_width / saved.ppi * 2.54);
    expected.printHeight = static_cast<float>(saved.pixel_height / saved.ppi * 2.54);
    EXPECT_EQ(differingFields(current(), expected), std::vector<std::string>{});
    EXPECT_EQ(differingFields(*window().getCurrentRenderSettings(), expected),
              std::vector<std::string>{});
    EXPECT_TRUE(oxOSGWidget::getDepthPeelEnabled());
    EXPECT_EQ(oxOSGWidget::getDepthPeelNumLayers(), 6);
    EXPECT_EQ(oxOSGWidget::getScreenSpaceAOBlurAmount(), 5);
    EXPECT_FLOAT_EQ(oxOSGWidget::getScreenSpaceAOEdgePreservation(), 0.375f);
    // The caustic radius key keeps the indirect radius for older readers.
    float caustic = 0.0f;
    EXPECT_TRUE(read.get("RaytracingSettings_CAUSTIC_PHOTON_RADIUS", caustic));
    EXPECT_FLOAT_EQ(caustic, saved.indirectPhotonRadius);
}

TEST_F(SceneSettingsTest, AbsentKeysGiveTheSceneFallbacks)
{
    preferences().set(kSnapshotPathPreference, std::string("/shots"));
    preferences().set(kDefaultFormatPreference, std::string("jpg"));
    setViewSettings(2);
    oxMessage empty;
    loadFresh(empty);

    const P& r = current();
    EXPECT_EQ(r.filename, "/shots\\image.jpg");
    EXPECT_FLOAT_EQ(r.pixel_width, 1920.0f);
    EXPECT_FLOAT_EQ(r.ppi, 72.0f);
    EXPECT_FLOAT_EQ(r.printWidth, static_cast<float>(1920.0 / 72.0 * 2.54));
    EXPECT_EQ(r.region_end_x, 1920);
    EXPECT_EQ(r.region_end_y, 1080);
    EXPECT_EQ(r.ssFactor, 3);
    EXPECT_EQ(r.stopFrame, 50);
    EXPECT_FALSE(r.beauty_pass);
    EXPECT_EQ(r.filterType, 7);
    // Scene fallbacks that differ on purpose from those of the preferences.
    EXPECT_FLOAT_EQ(r.displayLuminance, 1.0f);
    EXPECT_EQ(r.stillQualityMode, 1);
    EXPECT_EQ(r.illuminant, 0);
    EXPECT_EQ(r.finalGatherQuality, 1);
    // Fallbacks that take another field's value.
    EXPECT_EQ(r.stillFrameReflectionDepth, 8);
    EXPECT_EQ(r.interactiveFinalGatherQuality, 1);
    EXPECT_FLOAT_EQ(r.finalGatherRadius, 25.0f);
    // The view settings fall back in the host as well.
    EXPECT_FALSE(oxOSGWidget::getScreenSpaceAO());
    EXPECT_EQ(oxOSGWidget::getScreenSpaceAOSamples(), 2);
    EXPECT_FLOAT_EQ(oxOSGWidget::getScreenSpaceAORadius(), 750.0f);
    EXPECT_EQ(oxOSGWidget::getDepthPeelNumLayers(), 8);
    EXPECT_EQ(oxRenderParameter::getStillFrameQualityMode(), 1);
}

TEST_F(SceneSettingsTest, OlderKeysAreBroughtForward)
{
    oxMessage old;
    old.set("ImageExport width", 640);
    old.set("ImageExport height", 480);
    old.set("RaytracingSettings_renderDuration", 300u);
    old.set("RaytracingSettings_usingRenderDuration", true);
    old.set("Photon Lookup Count", 32);
    loadFresh(old);
    EXPECT_FLOAT_EQ(current().pixel_width, 640.0f);
    EXPECT_EQ(current().region_end_x, 640);
    EXPECT_EQ(current().region_end_y, 480);
    // The old render duration is always overwritten by the current keys or their fallbacks.
    EXPECT_EQ(current().renderTime, 90u);
    EXPECT_FALSE(current().useTimeLimit);
    EXPECT_EQ(current().photonLookupCount, 32);
    // ... but the lookup count isn't saved, so it doesn't survive a save and load.
    oxMessage saved;
    window().saveSettings(saved);
    loadFresh(saved);
    EXPECT_EQ(current().photonLookupCount, 16);

    struct Supersampling {
        int stored;
        int loaded;
    };
    for (const Supersampling& c : {Supersampling{2, 3}, {0, 0}, {-1, 0}, {3, 3}}) {
        oxMessage project;
        project.set("MovieExport ssfactor", c.stored);
        loadFresh(project);
        EXPECT_EQ(current().ssFactor, c.loaded) << c.stored;
    }

    struct Denoise {
        unsigned int type;
        bool hasFlag;
        bool flag;
        unsigned int loaded;
    };
    for (const Denoise& c : {Denoise{1, false, false, 2},
                             {0, true, true, 2},
                             {3, true, false, 3},
                             {3, false, false, 3},
                             {0, false, false, 0}}) {
        oxMessage project;
        project.set("Denoise Filter Type", c.type);
        if (c.hasFlag)
            project.set("Use Denoise Filter Flag", c.flag);
        loadFresh(project);
        EXPECT_EQ(current().denoiseFilterType, c.loaded) << c.type << " " << c.flag;
        EXPECT_EQ(oxRenderParameter::getDenoiseFilter(), c.loaded);
    }
}

TEST_F(SceneSettingsTest, OlderBrdfModeIsKeptOrAskedAbout)
{
    struct Case {
        const char* what;
        bool hasKey;
        int stored;
        bool script;
        const char* updatePreference; // "", "true" or "false"
        int loaded;
    };
    const Case cases[] = {
        {"absent key", false, 0, false, "", 2},
        {"newer mode", true, 3, false, "false", 3},
        {"older mode, headless, take the file's", true, 1, false, "", 1},
        {"older mode, headless, keep the latest", true, 1, false, "false", 2},
        {"older mode from a script", true, 0, true, "false", 0},
    };
    for (const Case& c : cases) {
        preferences().clear();
        if (std::string(c.updatePreference) != "")
            preferences().set(kUpdateBrdfModePreference, std::string(c.updatePreference) == "true");
        oxMessage project;
        if (c.hasKey)
            project.set("RaytracingSettings_brdfMode", c.stored);
        resetRenderServices();
        current() = P();
        current().brdfMode = 2;
        std::unique_ptr<oxScript::oxScriptRun> run;
        if (c.script)
            run = std::make_unique<oxScript::oxScriptRun>();
        window().loadSettings(project);
        EXPECT_EQ(current().brdfMode, c.loaded) << c.what;
        EXPECT_EQ(oxRenderParameter::getBrdfMode(), c.loaded) << c.what;
    }
    EXPECT_TRUE(oxDialogResponder::history().isEmpty());
}

TEST_F(SceneSettingsTest, OlderBrdfModeQuestionDecidesWithAGui)
{
    oxController::setNoGUI(false);
    oxDialogResponder::setForced(true);
    for (const char* answer : {"Yes", "No"}) {
        oxMessage project;
        project.set("RaytracingSettings_brdfMode", 1);
        current().brdfMode = 2;
        oxDialogResponder::queueAnswer(QString::fromLatin1(answer));
        window().loadSettings(project);
        EXPECT_EQ(current().brdfMode, std::string(answer) == "Yes" ? 2 : 1) << answer;
    }
    oxDialogResponder::setForced(false);
    oxController::setNoGUI(true);
    ASSERT_EQ(oxDialogResponder::history().size(), 2);
    EXPECT_EQ(oxDialogResponder::history()[0].title, QStringLiteral("BRDF Mode"));
    // The choice wasn't to be remembered: the preferences stay as they were.
    EXPECT_FALSE(preferences().has(kCheckBrdfModePreference));
}

TEST_F(SceneSettingsTest, LoadSettingsCallbackTakesOutputKeysOnly)
{
    current().fps = 12;
    current().beauty_pass = true;
    current().ppi = 300.0f;
    oxMessage message;
    message.set("ImageExport floatwidth", 640.0f);
    message.set("MovieExport ssfactor", -1);
    message.set("MovieExport beauty pass", false);
    message.set("RaytracingSettings_imageSamples", 5);
    ASSERT_TRUE(oxController::call("oxRenderSettings::loadSettings", message));
    EXPECT_FLOAT_EQ(current().pixel_width, 640.0f);
    EXPECT_FLOAT_EQ(current().printWidth, static_cast<float>(640.0 / 300.0 * 2.54));
    EXPECT_EQ(current().ssFactor, 0);
    EXPECT_FALSE(current().beauty_pass);
    EXPECT_EQ(current().fps, 12);
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 256);
    EXPECT_NE(current().imageSamples, 5);
    EXPECT_FALSE(window().isGuiUpdateLocked());

    // An empty message changes nothing at all.
    oxCallTrace::setEnabled(true);
    oxMessage empty;
    const P before = current();
    oxController::call("oxRenderSettings::loadSettings", empty);
    EXPECT_TRUE(oxCallTrace::calls().empty());
    EXPECT_EQ(differingFields(current(), before), std::vector<std::string>{});
}

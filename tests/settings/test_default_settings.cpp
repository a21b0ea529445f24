// The default settings from the preferences, as a new scene brings them through the module,
// and the settings of a project file through the host's scene load and save.

#include "oxSettingsTestSupport.h"

#include "oxController.h"
#include "oxFileIO.h"
#include "oxImageWriter.h"
#include "oxMessage.h"
#include "oxMovieExport.h"
#include "oxPreferences.h"
#include "oxRenderSettings.h"
#include "oxRenderSettingsKeys.h"
#include "oxRenderSettingsPreferenceDefaults.h"
#include "oxSceneIO.h"

#include <algorithm>
#include <type_traits>
#include <typeinfo>

extern "C" void initPlugin();

using P = oxRenderSettingsPreset;

namespace {

class DefaultSettingsTest : public oxSettingsTest {
protected:
    void SetUp() override
    {
        oxSettingsTest::SetUp();
        initPlugin();
        m_oldPreferences = oxPreferences::getData();
        oxPreferences::getData().clear();
        oxSceneIO::newScene();
        oxFileIO::clearProject();
    }
    void TearDown() override
    {
        oxPreferences::getData() = m_oldPreferences;
        oxFileIO::clearProject();
        oxSettingsTest::TearDown();
    }

    static oxRenderSettings& window() { return *theMovieExport->getRenderSettingsWindow(); }
    static P& current() { return window().getCurrentPreset(); }
    static oxMessage& preferences() { return oxPreferences::getData(); }
    static void newScene()
    {
        oxMessage message(oxController::MessageNewScene);
        theMovieExport->receivedMessage(message);
    }

private:
    oxMessage m_oldPreferences;
};

} // namespace

TEST_F(DefaultSettingsTest, NewSceneTakesThePreferencesAndForgetsTheScenesChoices)
{
    preferences().set("Maximum Antialiasing Samples", 77);
    preferences().set("ImageExport width", 640);
    preferences().set(kSnapshotPathPreference, std::string("/shots"));
    preferences().set(kDefaultFormatPreference, std::string("jpg"));
    preferences().set("MovieExport ssfactor", 0);
    preferences().set("Denoise Filter Type", 1u);
    preferences().set("Screen Space Ambient Occlusion Enabled", true);
    preferences().set(kExportClusterPreference, true);
    preferences().set(kExportClusterHostsPreference, std::string("render1"));
    current().name = "Studio";
    current().clip = "Spin";
    current().renderAnimation = true;
    current().renderpasses = true;
    current().depth_pass = true;
    current().beauty_pass = false;
    theMovieExport->getImageWriter()->setExportMultiLayer(true);

    newScene();

    const P& r = current();
    EXPECT_EQ(r.name, "");
    EXPECT_EQ(r.imageSamples, 77);
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 77);
    EXPECT_EQ(oxOSGWidget::getImageSamples(), 77);
    EXPECT_FLOAT_EQ(r.pixel_width, 640.0f);
    EXPECT_EQ(r.region_end_x, 640);
    EXPECT_FLOAT_EQ(r.pixel_height, 1080.0f);
    EXPECT_EQ(r.filename, "/shots\\image.jpg");
    EXPECT_EQ(r.ssFactor, 0);
    EXPECT_EQ(r.denoiseFilterType, 2u);
    // Fallbacks of the preferences, where they differ from a scene's.
    EXPECT_EQ(r.stillQualityMode, 3);
    EXPECT_FLOAT_EQ(r.displayLuminance, 100.0f);
    EXPECT_EQ(r.illuminant, 1);
    EXPECT_EQ(r.finalGatherQuality, 0);
    EXPECT_EQ(r.stillFrameReflectionDepth, 16);
    // What the scene chose starts afresh.
    EXPECT_EQ(r.clip, "");
    EXPECT_FALSE(r.renderAnimation);
    EXPECT_FALSE(r.renderpasses);
    EXPECT_FALSE(r.depth_pass);
    EXPECT_TRUE(r.beauty_pass);
    EXPECT_TRUE(oxOSGWidget::getScreenSpaceAO());
    EXPECT_TRUE(window()._cluster->isChecked());
    EXPECT_EQ(window()._cluster_hosts->text(), QStringLiteral("render1"));
    EXPECT_FALSE(theMovieExport->getImageWriter()->getExportMultiLayer());
    EXPECT_FALSE(window().isGuiUpdateLocked());
}

TEST_F(DefaultSettingsTest, EveryPreferenceKeyReachesItsField)
{
    // A value for every key of the table, unlike any fallback; then each field must hold it.
    int n = 1000;
    std::vector<std::pair<const oxSettingKey*, double>> numbers;
    for (const oxSettingKey& row : kPreferenceKeys) {
        const std::string key = settingKeyName(row);
        if (row.rule == oxKeyRule::IntKey) {
            preferences().set(key, ++n);
            numbers.emplace_back(&row, n);
            continue;
        }
        std::visit(
            [&](auto member) {
                using T = std::decay_t<decltype(std::declval<P>().*member)>;
                if constexpr (std::is_same_v<T, std::string>)
                    preferences().set(key, key + " value");
                else if constexpr (std::is_same_v<T, bool>)
                    preferences().set(key, row.fallback == 0.0);
                else if constexpr (std::is_arithmetic_v<T>) {
                    preferences().set(key, static_cast<T>(++n));
                    numbers.emplace_back(&row, n);
                }
            },
            row.field);
    }
    // Values with a rule of their own: supersampling is on or off, the denoiser is a filter.
    preferences().set("MovieExport ssfactor", 0);
    preferences().set("Denoise Filter Type", 3u);
    preferences().set("Physically-based Parameters", true);
    preferences().set("Spectral Rendering", false);

    window().loadDefaultSettings(true);
    const P& r = current();
    for (const auto& [row, value] : numbers) {
        const std::string key = settingKeyName(*row);
        if (key == "MovieExport ssfactor" || key == "Denoise Filter Type")
            continue;
        std::visit(
            [&](auto member) {
                using T = std::decay_t<decltype(r.*member)>;
                if constexpr (std::is_arithmetic_v<T> && !std::is_same_v<T, bool>) {
                    EXPECT_EQ(static_cast<double>(r.*member), value) << key;
                }
            },
            row->field);
    }
    EXPECT_EQ(r.filename, "MovieExport Filename value");
    EXPECT_EQ(r.ssFactor, 0);
    EXPECT_EQ(r.denoiseFilterType, 3u);
    EXPECT_TRUE(r.pbParameters);
    EXPECT_FALSE(r.enableClamping);
    EXPECT_FALSE(r.useRaySplitting);
    EXPECT_TRUE(r.useInfiniteRendering);
}

TEST_F(DefaultSettingsTest, ProjectFileKeepsTheSettingsThroughSaveAndOpen)
{
    oxTempDir dir;
    const std::string file = dir.file("scene.oxp");
    current().filename = "/renders/car.exr";
    current().pixel_width = 333.0f;
    current().clip = "Spin";
    current().depth_pass = true;
    oxRenderParameter::setImageSamples(48);
    oxRenderParameter::setIlluminant(4);
    oxOSGWidget::setDepthPeelNumLayers(3);
    ASSERT_TRUE(oxSceneIO::save(file));

    newScene();
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 256);
    ASSERT_TRUE(oxSceneIO::open(file));
    EXPECT_EQ(current().filename, "/renders/car.exr");
    EXPECT_FLOAT_EQ(current().pixel_width, 333.0f);
    EXPECT_EQ(current().clip, "Spin");
    EXPECT_TRUE(current().depth_pass);
    EXPECT_EQ(current().imageSamples, 48);
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 48);
    EXPECT_EQ(oxRenderParameter::getIlluminant(), 4);
    EXPECT_EQ(oxOSGWidget::getDepthPeelNumLayers(), 3);
}

TEST_F(DefaultSettingsTest, PreferenceDefaultsFillInWhatIsMissingAndLeaveOnUnload)
{
    oxMessage data;
    data.set("Maximum Antialiasing Samples", 64);
    setPreferenceDefaults(data, false);
    const auto& rows = preferenceDefaults();
    const auto withDefault =
        std::count_if(rows.begin(), rows.end(), [](const auto& row) { return row.hasDefault; });
    EXPECT_EQ(data.getMap().size(), static_cast<size_t>(withDefault));
    int samples = 0;
    EXPECT_TRUE(data.get("Maximum Antialiasing Samples", samples));
    EXPECT_EQ(samples, 64);
    setPreferenceDefaults(data, true);
    EXPECT_TRUE(data.get("Maximum Antialiasing Samples", samples));
    EXPECT_EQ(samples, 256);

    // A default of a record field has the type in which the default settings read it.
    for (const oxPreferenceDefault& row : preferenceDefaults()) {
        const std::string key = row.keyName();
        ASSERT_FALSE(key.empty());
        const oxSettingKey* read = nullptr;
        for (const oxSettingKey& candidate : kPreferenceKeys) {
            if (row.key == nullptr && candidate.field == row.field)
                read = &candidate;
        }
        if (!read || !row.hasDefault)
            continue;
        const bool intKey = read->rule == oxKeyRule::IntKey;
        const char* expected =
            intKey ? typeid(int).name()
                   : std::visit(
                         [](auto member) {
                             using T = std::decay_t<decltype(std::declval<P>().*member)>;
                             return typeid(T).name();
                         },
                         row.field);
        EXPECT_STREQ(data.get(key).type().name(), expected) << key;
    }

    // A new scene then starts from the defaults, which differ from the missing-key fallbacks.
    preferences() = data;
    newScene();
    EXPECT_FLOAT_EQ(current().pixel_width, 800.0f);
    EXPECT_FLOAT_EQ(current().pixel_height, 600.0f);
    EXPECT_EQ(current().stopFrame, 25);
    EXPECT_TRUE(current().useInfiniteRendering);
    EXPECT_EQ(current().finalGatherQuality, 1);
    EXPECT_EQ(current().filename, "c:\\oxlin-snapshots\\image.png");

    removePreferenceDefaults(data);
    EXPECT_TRUE(data.getMap().empty());
}

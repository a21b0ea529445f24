#include "oxSettingsTestSupport.h"

#include "oxFile.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxPreferences.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderSettingsPresetFile.h"

#include <sys/stat.h>

#include <algorithm>

namespace {

void assignDistinct(bool& value, int n) { value = n % 2 != 0; }
void assignDistinct(int& value, int n) { value = n; }
void assignDistinct(unsigned int& value, int n) { value = static_cast<unsigned int>(n) + 7u; }
void assignDistinct(float& value, int n) { value = static_cast<float>(n) + 0.1f; }
void assignDistinct(std::string& value, int n) { value = "v" + std::to_string(n); }
void assignDistinct(oxVariantSetGroups& value, int n)
{
    oxRenderAutomationVariantSetGroup group("group" + std::to_string(n));
    group.addActiveVariantSetName("set a");
    group.addActiveVariantSetName("set " + std::to_string(n));
    value = {group, oxRenderAutomationVariantSetGroup("empty")};
}

/// A preset whose every field with a column holds a value of its own, different per seed.
oxRenderSettingsPresetSPtr distinctPreset(int seed)
{
    auto preset = std::make_shared<oxRenderSettingsPreset>();
    int n = seed * 1000;
    for (const oxPresetColumn& column : oxPresetColumns()) {
        ++n;
        std::visit(
            [&](const auto& access) {
                if (access.field)
                    assignDistinct((*preset).*access.field, n);
            },
            column.access);
    }
    return preset;
}

/// What a preset reads back as: the columns that are never read or dropped don't survive.
oxRenderSettingsPreset expectedAfterRead(const oxRenderSettingsPreset& written)
{
    oxRenderSettingsPreset expected = written;
    const oxRenderSettingsPreset constructed;
    for (const oxPresetColumn& column : oxPresetColumns()) {
        std::visit(
            [&](const auto& access) {
                if (!access.field)
                    return;
                if (column.fallback == oxPresetColumnFallback::AlwaysLive)
                    expected.*access.field = access.live();
                else if (column.fallback == oxPresetColumnFallback::Dropped)
                    expected.*access.field = constructed.*access.field;
            },
            column.access);
    }
    return expected;
}

oxMessage namesOnly(const std::vector<std::string>& names, unsigned int count)
{
    oxMessage message;
    message.set(kPresetCountAttribute, count, true);
    message.set("name", names, true);
    return message;
}

} // namespace

class PresetFileTest : public oxSettingsTest {
protected:
    void SetUp() override
    {
        oxSettingsTest::SetUp();
        m_oldPreferencesDir = oxPreferences::getPreferencesDir();
        oxPreferences::setPreferencesDir(m_dir.path());
    }
    void TearDown() override
    {
        oxPreferences::setPreferencesDir(m_oldPreferencesDir);
        oxSettingsTest::TearDown();
    }
    std::string prefsFile(const char* name) const { return m_dir.file(name); }

    oxTempDir m_dir;

private:
    std::string m_oldPreferencesDir;
};

TEST_F(PresetFileTest, EveryFieldButTheDerivedOnesHasExactlyOneColumn)
{
    // A field set alone must change exactly one column of the written message.
    const oxMessage base = writePresetsToMessage({std::make_shared<oxRenderSettingsPreset>()});
    auto changedColumns = [&](const oxRenderSettingsPreset& preset) {
        const oxMessage message =
            writePresetsToMessage({std::make_shared<oxRenderSettingsPreset>(preset)});
        std::string a, b;
        std::vector<std::string> changed;
        for (const oxPresetColumn& c : oxPresetColumns()) {
            oxMessage left, right;
            left.set(c.attribute, base.get(c.attribute), true);
            right.set(c.attribute, message.get(c.attribute), true);
            oxMessageRW::write(left, a);
            oxMessageRW::write(right, b);
            if (a != b)
                changed.push_back(c.attribute);
        }
        return changed;
    };
    int n = 1;
#define OX_CHECK_FIELD(type, field, constructed)                                                   \
    {                                                                                              \
        oxRenderSettingsPreset preset;                                                             \
        assignDistinct(preset.field, ++n);                                                         \
        if (preset.field == oxRenderSettingsPreset().field)                                        \
            assignDistinct(preset.field, ++n);                                                     \
        const std::vector<std::string> changed = changedColumns(preset);                           \
        const std::string name = #field;                                                           \
        if (name == "printWidth" || name == "printHeight" || name == "useNVLinkTextureSharing" ||  \
            name == "useNVLinkGeometrySharing")                                                    \
            EXPECT_TRUE(changed.empty()) << name;                                                  \
        else                                                                                       \
            EXPECT_EQ(changed.size(), 1u) << name;                                                 \
    }
    OX_PRESET_FIELDS(OX_CHECK_FIELD)
#undef OX_CHECK_FIELD
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        oxRenderSettingsPreset preset;
        preset.passFlag(info.flag) = true;
        EXPECT_EQ(changedColumns(preset), std::vector<std::string>{info.column});
    }
}

TEST_F(PresetFileTest, FullListRoundTripsThroughTheFile)
{
    oxRenderSettingsPresets presets;
    for (int i = 1; i <= 4; ++i)
        presets.push_back(distinctPreset(i));
    presets[2]->name = "Ünïcode & <xml> \"quotes\"";
    const std::string path = m_dir.file("presets.xml");
    ASSERT_TRUE(writePresetFile(path, presets));

    const std::string text = oxReadFile(path);
    EXPECT_EQ(text.rfind("<?xml", 0), 0u) << "not plain XML";
    EXPECT_NE(text.find("rendersettings_version=\"1\""), std::string::npos);

    const oxRenderSettingsPresets read = readPresetsFromFile(path);
    ASSERT_EQ(read.size(), presets.size());
    for (size_t i = 0; i < read.size(); ++i) {
        ASSERT_TRUE(read[i]);
        EXPECT_EQ(*read[i], expectedAfterRead(*presets[i])) << "preset " << i;
    }
    // Written again, the list gives the same file.
    std::string first, second;
    ASSERT_TRUE(writePresetsToString(read, first));
    ASSERT_TRUE(writePresetsToString(readPresetsFromString(first), second));
    EXPECT_EQ(first, second);
    expectLog(oxLog::Info, "Loaded version of rendersettings presets: 1");
}

TEST_F(PresetFileTest, EmptyListAndNullEntries)
{
    const oxMessage empty = writePresetsToMessage({});
    EXPECT_EQ(empty.getAttibute(kPresetVersionAttribute), "1");
    EXPECT_EQ(oxPresetColumns().size(), 149u);
    EXPECT_EQ(empty.getMap().size(), 150u); // the count and 149 columns, each once
    EXPECT_EQ(boost::any_cast<unsigned int>(empty.get(kPresetCountAttribute)), 0u);
    for (const oxPresetColumn& c : oxPresetColumns())
        EXPECT_FALSE(empty.get(c.attribute).empty()) << c.attribute;

    const std::string path = m_dir.file("empty.xml");
    ASSERT_TRUE(writePresetFile(path, {}));
    EXPECT_TRUE(readPresetsFromFile(path).empty());
    EXPECT_TRUE(ownMessages(oxLog::Error).empty());

    // A null entry is counted but shifts the later presets down.
    oxRenderSettingsPresets withNull = {distinctPreset(1), nullptr, distinctPreset(2)};
    const oxMessage message = writePresetsToMessage(withNull);
    EXPECT_EQ(boost::any_cast<unsigned int>(message.get(kPresetCountAttribute)), 3u);
    const oxRenderSettingsPresets read = readPresetsFromMessage(message);
    ASSERT_EQ(read.size(), 2u);
    EXPECT_EQ(*read[1], expectedAfterRead(*withNull[2]));
}

TEST_F(PresetFileTest, ShortAndMissingColumnsTakeLiveValues)
{
    oxPixelfilterFactory::setPixelFilterType(4);
    oxPixelfilterFactory::setPixelFilterWidth(2.5f);
    oxPixelfilterFactory::setPixelFilterHeight(3.5f);
    oxOSGWidget::setSamplesThreshold(9);
    oxRenderParameter::setInteractiveReflectionDepth(11);
    oxRenderParameter::setStillFrameReflectionDepth(40);
    oxRenderParameter::setStillFrameFinalGatherQuality(3);
    oxRenderParameter::setInteractiveFinalGatherQuality(4);
    oxRenderParameter::setLightOptimizationMode(false);
    oxRenderParameter::setRenderTimeInSeconds(1234u);
    oxRenderParameter::setDenoiseFilter(3u);
    oxRenderParameter::setUseRaySplitting(false);
    oxRaytracingManager::getRaytracingUtils()->setNurbsNewtonEpsilon(0.5f);

    oxMessage message = namesOnly({"a", "b", "c"}, 3);
    message.set("filterType", std::vector<int>{1, 2}, true);
    message.set("maxReflectionDepth", std::vector<int>{5}, true);
    message.set("pixel_width", std::vector<float>{640.0f}, true);
    const oxRenderSettingsPresets read = readPresetsFromMessage(message);
    ASSERT_EQ(read.size(), 3u);

    EXPECT_EQ(read[1]->filterType, 2);
    EXPECT_EQ(read[2]->filterType, 4);
    const oxRenderSettingsPreset& c = *read[2];
    EXPECT_FLOAT_EQ(c.filterWidth, 2.5f);
    EXPECT_FLOAT_EQ(c.filterHeight, 3.5f);
    EXPECT_EQ(c.samplesThreshold, 9);
    EXPECT_EQ(c.lightOptimizationMode, 0);
    EXPECT_EQ(c.renderTime, 1234u);
    EXPECT_EQ(c.denoiseFilterType, 3u);
    EXPECT_FALSE(c.useRaySplitting);
    EXPECT_FLOAT_EQ(c.nurbsNewtonEpsilon, 0.5f);
    // Two columns fall back to a value the same preset just got, not to the host's.
    EXPECT_EQ(read[0]->stillFrameReflectionDepth, 5);
    EXPECT_EQ(c.maxReflectionDepth, 11);
    EXPECT_EQ(c.stillFrameReflectionDepth, 11);
    EXPECT_EQ(c.finalGatherQuality, 3);
    EXPECT_EQ(c.interactiveFinalGatherQuality, 3);
    // Output fields keep their constructed values; the derived print size stays 0.
    EXPECT_FLOAT_EQ(read[0]->pixel_width, 640.0f);
    EXPECT_FLOAT_EQ(c.pixel_width, 0.0f);
    EXPECT_FLOAT_EQ(c.printWidth, 0.0f);
    EXPECT_TRUE(c.denoiseAlpha);

    // Without utilities the NURBS fields keep their constructed values.
    oxRaytracingManager::setRaytracingUtils(nullptr);
    EXPECT_FLOAT_EQ(readPresetsFromMessage(message)[0]->nurbsNewtonEpsilon, 0.0f);
}

TEST_F(PresetFileTest, NeverReadAndDroppedColumnsIgnoreTheFile)
{
    oxMessage message = namesOnly({"a"}, 1);
    message.set("Denoise Alpha", std::vector<bool>{false}, true);
    message.set("Use Ray Splitting", std::vector<bool>{false}, true);
    message.set("Use Two Sample MIS", std::vector<bool>{true}, true);
    message.set("adaptiveSamples", std::vector<int>{64}, true);
    oxRenderParameter::setUseTwoSampleImportanceSampling(false);
    const oxRenderSettingsPresets read = readPresetsFromMessage(message);
    ASSERT_EQ(read.size(), 1u);
    EXPECT_TRUE(read[0]->denoiseAlpha);
    EXPECT_TRUE(read[0]->useRaySplitting);
    EXPECT_FALSE(read[0]->useTwoSampleMIS);

    // Whatever the presets hold, the dropped columns are written empty.
    const oxMessage written = writePresetsToMessage(read);
    EXPECT_TRUE(boost::any_cast<std::vector<int>>(written.get("adaptiveSamples")).empty());
    EXPECT_TRUE(boost::any_cast<std::vector<bool>>(written.get("Use Denoise Filter Flag")).empty());
    EXPECT_EQ(boost::any_cast<std::vector<bool>>(written.get("Denoise Alpha")).size(), 1u);
}

TEST_F(PresetFileTest, NamesNotCountDecideHowManyPresets)
{
    EXPECT_EQ(readPresetsFromMessage(namesOnly({"a", "b", "c"}, 5)).size(), 3u);
    EXPECT_EQ(readPresetsFromMessage(namesOnly({"a", "b", "c", "d", "e"}, 3)).size(), 5u);
    EXPECT_TRUE(readPresetsFromMessage(namesOnly({"a"}, 0)).empty());
    oxMessage noCount;
    noCount.set("name", std::vector<std::string>{"a"}, true);
    EXPECT_TRUE(readPresetsFromMessage(noCount).empty());
    EXPECT_TRUE(log().entries().empty());

    oxMessage noNames;
    noNames.set(kPresetCountAttribute, 2u, true);
    EXPECT_TRUE(readPresetsFromMessage(noNames).empty());
    expectLog(oxLog::Error, "Couldn't read preset!");
}

TEST_F(PresetFileTest, WrongColumnTypeIsReportedAndReadsAsEmpty)
{
    oxPixelfilterFactory::setPixelFilterType(6);
    oxMessage message = namesOnly({"a"}, 1);
    message.set("filterType", std::vector<float>{2.0f}, true);
    message.set("timeStamp", std::vector<int>{1}, true);
    testing::internal::CaptureStderr();
    const oxRenderSettingsPresets read = readPresetsFromMessage(message);
    const std::string complaints = testing::internal::GetCapturedStderr();
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0]->filterType, 6);
    EXPECT_FALSE(read[0]->timeStamp);
    EXPECT_NE(complaints.find("getFromMessage : Attribute 'filterType' has wrong type"),
              std::string::npos);
    EXPECT_NE(complaints.find("getFromMessage : Attribute 'timeStamp' has wrong type"),
              std::string::npos);

    oxMessage badNames;
    badNames.set(kPresetCountAttribute, 1u, true);
    badNames.set("name", std::string("a"), true);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(readPresetsFromMessage(badNames).empty());
    testing::internal::GetCapturedStderr();
    expectLog(oxLog::Error, "Couldn't read preset!");
}

TEST_F(PresetFileTest, PreferencesFolderPrefersTheCurrentFileOverTheLegacyOne)
{
    auto named = [](const char* name) {
        auto preset = std::make_shared<oxRenderSettingsPreset>();
        preset->name = name;
        return oxRenderSettingsPresets{preset};
    };
    // Neither file: an empty list, and no file is made.
    testing::internal::CaptureStdout();
    EXPECT_TRUE(readPresetFile().empty());
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(ownMessages(oxLog::Error).empty());
    EXPECT_FALSE(oxFile::exists(prefsFile(kPresetFileName)));

    ASSERT_TRUE(writePresetFile(prefsFile(kLegacyPresetFileName), named("legacy")));
    testing::internal::CaptureStdout();
    oxRenderSettingsPresets read = readPresetFile();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Read Preset\n");
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0]->name, "legacy");

    // The first save creates the current file beside the legacy one, which stays.
    savePresetFile(named("current"));
    EXPECT_TRUE(oxFile::exists(prefsFile(kLegacyPresetFileName)));
    testing::internal::CaptureStdout();
    read = readPresetFile();
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0]->name, "current");
    expectLog(oxLog::Info, "Loaded version of rendersettings presets: 1");
}

TEST_F(PresetFileTest, NewerFileBlocksSavingUntilAnOlderTextIsRead)
{
    const std::string current = prefsFile(kPresetFileName);
    oxMessage newer = writePresetsToMessage({distinctPreset(1)});
    newer.addAttribute(kPresetVersionAttribute, "2");
    ASSERT_TRUE(oxMessageRW::write(newer, current.c_str()));
    const std::string before = oxReadFile(current);

    EXPECT_EQ(readPresetsFromFile(current).size(), 1u);
    EXPECT_EQ(oxRenderSettingsPreset::getLoadedFileVersion(), 2);
    savePresetFile({});
    EXPECT_EQ(oxReadFile(current), before);
    expectLog(oxLog::Info, "Loaded version of rendersettings presets: 2");
    expectLog(oxLog::Error, kPresetNewerVersionMessage);

    // A render job's text of an older version lifts the block again; so does one without a
    // version, which counts as 0.
    oxMessage unversioned = writePresetsToMessage({});
    unversioned.addAttribute(kPresetVersionAttribute, "");
    std::string text;
    ASSERT_TRUE(oxMessageRW::write(unversioned, text));
    readPresetsFromString(text);
    EXPECT_EQ(oxRenderSettingsPreset::getLoadedFileVersion(), 0);
    savePresetFile({});
    EXPECT_NE(oxReadFile(current), before);
    EXPECT_TRUE(readPresetsFromFile(current).empty());
    expectLog(oxLog::Info, "Loaded version of rendersettings presets: 0");
    expectLog(oxLog::Info, "Loaded version of rendersettings presets: 1");
}

TEST_F(PresetFileTest, TextThatIsNotXmlReadsAsNothing)
{
    oxRenderSettingsPreset::setLoadedFileVersion(1);
    const std::string path = m_dir.file("broken.xml");
    ASSERT_TRUE(oxFile::writeAtomically(path, "this is not XML at all\n"));
    EXPECT_TRUE(readPresetsFromFile(path).empty());
    EXPECT_TRUE(readPresetsFromString("<oxMessage><int").empty());
    EXPECT_TRUE(readPresetsFromFile(m_dir.file("missing.xml")).empty());
    EXPECT_EQ(oxRenderSettingsPreset::getLoadedFileVersion(), 1);
    EXPECT_TRUE(ownMessages(oxLog::Error).empty());
    EXPECT_TRUE(ownMessages(oxLog::Info).empty());
}

TEST_F(PresetFileTest, FailedSaveKeepsTheOldFile)
{
    if (oxIgnoresFilePermissions())
        GTEST_SKIP() << "running as root: a read-only folder can still be written";
    const std::string current = prefsFile(kPresetFileName);
    savePresetFile({distinctPreset(1)});
    const std::string before = oxReadFile(current);
    ASSERT_FALSE(before.empty());

    ASSERT_EQ(::chmod(m_dir.path().c_str(), 0555), 0);
    savePresetFile({distinctPreset(2), distinctPreset(3)});
    ::chmod(m_dir.path().c_str(), 0755);
    EXPECT_EQ(oxReadFile(current), before);
    expectLog(oxLog::Error, kPresetWriteFailedMessage);
}

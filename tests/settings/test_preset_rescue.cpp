// A preset file that can't be read is not lost when the presets are next saved: it is kept
// beside itself, and the kept files of earlier saves stay as they are.

#include "oxSettingsTestSupport.h"

#include "oxFile.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxPreferences.h"
#include "oxRenderSettingsPresetFile.h"

#include <cstdio>

namespace {

class PresetRescueTest : public oxSettingsTest {
protected:
    void SetUp() override
    {
        oxSettingsTest::SetUp();
        m_oldPreferencesDir = oxPreferences::getPreferencesDir();
        oxPreferences::setPreferencesDir(m_dir.path());
        m_path = oxPreferences::getPreferencesDir() + kPresetFileName;
    }
    void TearDown() override
    {
        oxPreferences::setPreferencesDir(m_oldPreferencesDir);
        oxSettingsTest::TearDown();
    }

    static oxRenderSettingsPresets named(const char* name)
    {
        auto preset = std::make_shared<oxRenderSettingsPreset>();
        preset->name = name;
        return {preset};
    }

    // Reads the preset file (logging whatever a good read logs) and gives the names read.
    std::vector<std::string> readNames()
    {
        std::vector<std::string> names;
        for (const auto& preset : readPresetFile())
            names.push_back(preset->name);
        return names;
    }

    oxTempDir m_dir;
    std::string m_path;

private:
    std::string m_oldPreferencesDir;
};

TEST_F(PresetRescueTest, UnreadableFileIsKeptBesideItselfBeforeTheFirstSave)
{
    allowLogPrefix("Loaded version of rendersettings presets");
    const std::string broken[] = {"<oxMessage ox:format=\"1\"><strin", std::string(3, '\0'),
                                  "not xml at all"};
    for (size_t round = 0; round < 3; ++round) {
        ASSERT_TRUE(oxFile::writeAtomically(m_path, broken[round]));
        EXPECT_TRUE(readNames().empty());
        const std::string kept = m_path + ".bad" + (round ? "." + std::to_string(round) : "");
        expectLog(oxLog::Warning, "The preset file '" + m_path +
                                      "' couldn't be read; it is kept "
                                      "as '" +
                                      kept + "' and a new one is saved.");
        savePresetFile(named("Fresh"));
        EXPECT_EQ(oxReadFile(kept), broken[round]) << kept;
        EXPECT_EQ(readNames(), std::vector<std::string>{"Fresh"});

        // Saving again over the now readable file keeps nothing more.
        savePresetFile(named("Again"));
        EXPECT_FALSE(oxFile::exists(m_path + ".bad." + std::to_string(round + 1)));
    }
    EXPECT_EQ(oxReadFile(m_path + ".bad"), broken[0]);
    EXPECT_EQ(readNames(), std::vector<std::string>{"Again"});
}

// A column of the wrong type is one line naming it and the file; the other columns are read.
TEST_F(PresetRescueTest, WronglyTypedColumnIsOneLineAndTheRestIsRead)
{
    allowLogPrefix("Loaded version of rendersettings presets");
    auto preset = named("Studio").front();
    preset->filterWidth = 3.5f;
    ASSERT_TRUE(writePresetFile(m_path, {preset}));
    oxMessage message;
    ASSERT_TRUE(oxMessageRW::read(message, m_path.c_str(), std::string()));
    message.set("imageSamples", std::string("lots"));
    ASSERT_TRUE(oxMessageRW::write(message, m_path.c_str()));

    const oxRenderSettingsPresets presets = readPresetFile();
    expectLog(oxLog::Warning,
              "The presets of '" + m_path +
                  "': the entry 'imageSamples' has the wrong type and is left out.");
    ASSERT_EQ(presets.size(), 1u);
    EXPECT_EQ(presets[0]->name, "Studio");
    EXPECT_EQ(presets[0]->filterWidth, 3.5f);
}

} // namespace

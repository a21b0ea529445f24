#pragma once

#include "oxSettingsTestSupport.h"

#include "oxController.h"
#include "oxDialogResponder.h"
#include "oxFileIO.h"
#include "oxImageWriter.h"
#include "oxMaterialInterface.h"
#include "oxMessage.h"
#include "oxOSGWidget.h"
#include "oxPreferences.h"
#include "oxRenderSettings.h"
#include "oxRenderSettingsKeys.h"
#include "oxSceneIO.h"
#include "oxSceneServices.h"

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

/// A Render Settings window of its own over fresh render services, empty preferences and a
/// preferences folder in a temporary directory (so that preset files land there).
class oxSettingsWindowTest : public oxSettingsTest {
protected:
    void SetUp() override
    {
        oxSettingsTest::SetUp();
        m_oldPreferencesDir = oxPreferences::getPreferencesDir();
        oxPreferences::setPreferencesDir(m_dir.path());
        m_oldPreferences = oxPreferences::getData();
        oxPreferences::getData().clear();
        oxSceneIO::newScene();
        oxInterfaceFactory::getMaterialInterface()->resetToDefaults();
        m_window = std::make_unique<oxRenderSettings>(QStringLiteral("Render Settings"), &m_writer);
        registerRenderSettingsCallbacks();
    }
    void TearDown() override
    {
        unregisterRenderSettingsCallbacks();
        m_window.reset();
        oxPreferences::getData() = m_oldPreferences;
        oxPreferences::setPreferencesDir(m_oldPreferencesDir);
        oxDialogResponder::clear();
        oxSettingsTest::TearDown();
    }

    oxRenderSettings& window() { return *m_window; }
    oxRenderSettingsPreset& current() { return m_window->getCurrentPreset(); }
    const oxTempDir& dir() const { return m_dir; }
    oxMessage& preferences() { return oxPreferences::getData(); }

private:
    oxTempDir m_dir;
    std::string m_oldPreferencesDir;
    oxMessage m_oldPreferences;
    oxImageWriter m_writer;
    std::unique_ptr<oxRenderSettings> m_window;
};

/// A record whose every number differs from its field's defaults and fallbacks, and whose
/// flags are the opposite of their usual state; seed makes two such records differ.
inline oxRenderSettingsPreset distinctRecord(int seed)
{
    oxRenderSettingsPreset p;
    int n = seed * 200;
    auto next = [&n]() { return ++n; };
    auto assign = [&](auto& field, const char* name) {
        using T = std::decay_t<decltype(field)>;
        if constexpr (std::is_same_v<T, bool>)
            field = (next() % 2) == 0;
        else if constexpr (std::is_arithmetic_v<T>)
            field = static_cast<T>(next());
        else if constexpr (std::is_same_v<T, std::string>)
            field = name + std::to_string(seed);
    };
#define OX_DISTINCT_FIELD(type, field, constructed) assign(p.field, #field);
    OX_PRESET_FIELDS(OX_DISTINCT_FIELD)
#undef OX_DISTINCT_FIELD
    for (size_t i = 0; i < kPassFlagCount; ++i)
        p.*kPassFlagFields[i] = (i + static_cast<size_t>(seed)) % 3 == 0;
    p.filterWidth = 2.5f + static_cast<float>(seed);
    p.filterHeight = 3.5f + static_cast<float>(seed);
    p.lightOptimizationMode = 0;
    p.pbParameters = true;
    p.spectralRendering = false;
    p.ssFactor = 3;
    p.view.clear();
    oxRenderAutomationVariantSetGroup group("Paint" + std::to_string(seed));
    group.setActiveVariantSetNames({"Red", "Blue"});
    p.variantSets = {group};
    return p;
}

/// The names of the fields, pass flags included, in which two records differ.
inline std::vector<std::string> differingFields(const oxRenderSettingsPreset& a,
                                                const oxRenderSettingsPreset& b)
{
    std::vector<std::string> names;
#define OX_DIFFERING_FIELD(type, field, constructed)                                               \
    if (!(a.field == b.field))                                                                     \
        names.push_back(#field);
    OX_PRESET_FIELDS(OX_DIFFERING_FIELD)
#undef OX_DIFFERING_FIELD
    for (size_t i = 0; i < kPassFlagCount; ++i) {
        if (a.*kPassFlagFields[i] != b.*kPassFlagFields[i])
            names.push_back(kPassFlags[i].column);
    }
    return names;
}

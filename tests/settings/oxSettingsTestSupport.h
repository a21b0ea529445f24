#pragma once

#include "oxCallTrace.h"
#include "oxLog.h"
#include "oxOSGWidget.h"
#include "oxPixelfilterFactory.h"
#include "oxRaytracingManager.h"
#include "oxRenderParameter.h"
#include "oxRenderSettingsPreset.h"
#include "oxTestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Puts the host's render services and the loaded preset version back to their start state.
inline void resetRenderServices()
{
    oxRenderParameter::resetToDefaults();
    oxOSGWidget::resetToDefaults();
    oxPixelfilterFactory::resetToDefaults();
    oxRaytracingManager::resetRaytracingUtils();
    oxRenderSettingsPreset::setLoadedFileVersion(0);
    oxCallTrace::setEnabled(false);
    oxCallTrace::clear();
}

/// Fixture of the settings tests: fresh render services, and a log check like oxTest's.
///
/// The message layer's write failures ("oxMessageRW::write ...") are let through: it names the
/// file it couldn't write, while these tests pin down what the settings code itself reports.
class oxSettingsTest : public ::testing::Test {
protected:
    void SetUp() override { resetRenderServices(); }
    void TearDown() override
    {
        resetRenderServices();
        for (const oxLogCapture::Entry& expected : m_expected)
            EXPECT_TRUE(m_capture.contains(expected.level, expected.text))
                << "expected " << oxLog::levelName(expected.level)
                << " not logged: " << expected.text;
        for (const oxLogCapture::Entry& entry : m_capture.entries()) {
            if (entry.level > oxLog::Warning || entry.text.rfind("oxMessageRW::write", 0) == 0)
                continue;
            bool announced = false;
            for (const oxLogCapture::Entry& expected : m_expected)
                announced =
                    announced || (expected.level == entry.level && expected.text == entry.text);
            EXPECT_TRUE(announced)
                << "unexpected " << oxLog::levelName(entry.level) << ": " << entry.text;
        }
    }

    void expectLog(oxLog::Level level, const std::string& text)
    {
        m_expected.push_back({level, text});
    }
    const oxLogCapture& log() const { return m_capture; }
    /// The messages of a level that didn't come from the message layer.
    std::vector<std::string> ownMessages(oxLog::Level level) const
    {
        std::vector<std::string> result;
        for (const std::string& text : m_capture.messages(level)) {
            if (text.rfind("oxMessageRW::write", 0) != 0)
                result.push_back(text);
        }
        return result;
    }

private:
    oxLogCapture m_capture;
    std::vector<oxLogCapture::Entry> m_expected;
};

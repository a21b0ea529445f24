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

/// Fixture of the settings tests: fresh render services around the common log check.
///
/// The message layer's write failures ("oxMessageRW::write ...") are let through: it names the
/// file it couldn't write, while these tests pin down what the settings code itself reports.
class oxSettingsTest : public oxTest {
protected:
    void SetUp() override
    {
        resetRenderServices();
        allowLogPrefix("oxMessageRW::write");
    }
    void TearDown() override
    {
        resetRenderServices();
        oxTest::TearDown();
    }
};

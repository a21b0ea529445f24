#pragma once

// A bare Render Settings window on fresh host services, for the binding tests.

#include "oxController.h"
#include "oxImageWriter.h"
#include "oxOSGWidget.h"
#include "oxPixelfilterFactory.h"
#include "oxRaytracingManager.h"
#include "oxRenderParameter.h"
#include "oxRenderSettings.h"
#include "oxTBBInit.h"
#include "oxTestSupport.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCoreApplication>
#include <QSpinBox>

#include <memory>

inline void resetWindowHostState()
{
    oxRenderParameter::resetToDefaults();
    oxOSGWidget::resetToDefaults();
    oxPixelfilterFactory::resetToDefaults();
    oxRaytracingManager::resetRaytracingUtils();
    oxTBBInit::the().setCoreUsageLimit(oxTBBInit::noLimit);
    oxController::setModified(false);
}

/// What a user's choice in a combo box sends.
inline void choose(QComboBox* box, int index)
{
    box->setCurrentIndex(index);
    emit box->activated(index);
}

class oxWindowBindingTest : public oxTest {
protected:
    void SetUp() override
    {
        resetWindowHostState();
        window = std::make_unique<oxRenderSettings>(QStringLiteral("Render Settings"), &writer);
        // Let the requests of the first refresh run, so that each test starts idle.
        window->updateGUI();
        QCoreApplication::processEvents();
        oxController::setModified(false);
    }
    void TearDown() override
    {
        window.reset();
        resetWindowHostState();
        oxTest::TearDown();
    }

    oxRenderSettingsPreset& record() { return window->getCurrentPreset(); }

    oxImageWriter writer;
    std::unique_ptr<oxRenderSettings> window;
};

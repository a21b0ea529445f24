#pragma once

// The plug-in's module on the example scene, for the suites that load it.

#include "oxCallTrace.h"
#include "oxDialogResponder.h"
#include "oxExampleScene.h"
#include "oxImageSource.h"
#include "oxMainWindow.h"
#include "oxMovieExport.h"
#include "oxOSGWidget.h"
#include "oxRaytracerSource.h"
#include "oxRenderParameter.h"
#include "oxRenderSettings.h"
#include "oxScene.h"
#include "oxTestSupport.h"

#include <QCoreApplication>

#include <functional>
#include <memory>
#include <string>

/// The host's raytracer, counting its images, with a hook that runs before each.
class oxHookedRaytracerSource : public oxImageSource {
public:
    bool render(const oxRenderRequest& request, oxRenderedImage& image, std::string& error) override
    {
        ++renders;
        if (beforeRender)
            beforeRender();
        return oxRaytracerSource::the().render(request, image, error);
    }
    int renders = 0;
    std::function<void()> beforeRender;
};

/// The plug-in's module on the example scene, rendering with the host's raytracer through a
/// counting hook. The module is made by load(), in a host main window when asked for.
class oxModuleTest : public oxTest {
protected:
    void SetUp() override
    {
        oxRenderParameter::resetToDefaults();
        oxOSGWidget::resetToDefaults();
        oxDialogResponder::clear();
        auto scene = std::make_unique<oxScene>();
        std::string error;
        ASSERT_TRUE(oxExampleScene::build(*scene, error)) << error;
        previousScene = oxScene::replaceCurrent(std::move(scene));
        previousSource = oxImageSource::current();
        oxImageSource::setCurrent(&source);
    }

    void TearDown() override
    {
        EXPECT_EQ(oxDialogResponder::pendingAnswers(), 0) << "an answer was not asked for";
        oxDialogResponder::clear();
        oxCallTrace::setEnabled(false);
        oxCallTrace::clear();
        unloadModule();
        mainWindow.reset();
        oxImageSource::setCurrent(previousSource);
        if (previousScene)
            oxScene::replaceCurrent(std::move(previousScene));
        oxRenderParameter::resetToDefaults();
        oxOSGWidget::resetToDefaults();
        oxTest::TearDown();
    }

    void load(bool withMainWindow = false)
    {
        if (withMainWindow)
            mainWindow = std::make_unique<oxMainWindow>();
        module = std::make_unique<oxMovieExport>();
    }
    /// Unloads the module; gives what it said on standard output, where it says goodbye.
    std::string unloadModule()
    {
        testing::internal::CaptureStdout();
        module.reset();
        const std::string out = testing::internal::GetCapturedStdout();
        // Docks of deleted windows go at the next turn of the event loop.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return out;
    }
    oxRenderSettings* window() const { return module->getRenderSettingsWindow(); }

    oxTempDir dir;
    oxHookedRaytracerSource source;
    std::unique_ptr<oxMainWindow> mainWindow;
    std::unique_ptr<oxMovieExport> module;

private:
    oxImageSource* previousSource = nullptr;
    std::unique_ptr<oxScene> previousScene;
};

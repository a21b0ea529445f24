#pragma once

// The output tests run the real module on the example scene, rendering through the host's
// raytracer into a temporary folder at a small image size.

#include "oxCallTrace.h"
#include "oxController.h"
#include "oxDialogResponder.h"
#include "oxExampleScene.h"
#include "oxImageRenderWidget.h"
#include "oxImageWriter.h"
#include "oxMainWindow.h"
#include "oxMessage.h"
#include "oxMovieExport.h"
#include "oxOSGWidget.h"
#include "oxRaytracer.h"
#include "oxRaytracerSource.h"
#include "oxRenderParameter.h"
#include "oxRenderSettings.h"
#include "oxScene.h"
#include "oxTestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>

#include <functional>
#include <memory>

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

    void load(bool withMainWindow)
    {
        if (withMainWindow)
            mainWindow = std::make_unique<oxMainWindow>();
        module = std::make_unique<oxMovieExport>();
    }
    void unloadModule()
    {
        testing::internal::CaptureStdout(); // the module says goodbye on standard output
        module.reset();
        testing::internal::GetCapturedStdout();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
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

/// A render job's module without a main window, writing small images into the folder.
class RenderJobTest : public oxModuleTest {
protected:
    void SetUp() override
    {
        oxModuleTest::SetUp();
        load(false);
        module->getImageWriter()->setNoProgress(true);
        oxRenderSettingsPreset& preset = current();
        preset = oxRenderSettingsPreset();
        preset.filename = dir.file("car.png");
        preset.pixel_width = 32.0f;
        preset.pixel_height = 18.0f;
        preset.ppi = 72.0f;
    }

    oxRenderSettingsPreset& current() const { return window()->getCurrentPreset(); }
    /// A frozen copy of the window's settings.
    oxRenderSettingsPresetSPtr record() const
    {
        return std::make_shared<oxRenderSettingsPreset>(current());
    }
    QStringList collect(const oxRenderSettingsPresetSPtr& settings) const
    {
        QStringList names;
        module->walkRenderPlan(settings, names, PlanCollect);
        return names;
    }
    void chooseVariantSets(const std::vector<std::string>& paint,
                           const std::vector<std::string>& rims)
    {
        current().variantSetsUsed = true;
        current().variantSets = {oxRenderAutomationVariantSetGroup("Paint"),
                                 oxRenderAutomationVariantSetGroup("Rims")};
        current().variantSets[0].setActiveVariantSetNames(paint);
        current().variantSets[1].setActiveVariantSetNames(rims);
    }
    QString path(const std::string& name) const { return QString::fromStdString(dir.file(name)); }
    /// Every file below the temporary folder, sorted.
    QStringList filesOnDisk() const
    {
        QStringList files;
        QDirIterator it(path(""), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            files << QDir::cleanPath(it.next());
        files.sort();
        return files;
    }
    static QStringList cleaned(QStringList names)
    {
        for (QString& name : names)
            name = QDir::cleanPath(name);
        names.sort();
        return names;
    }
};

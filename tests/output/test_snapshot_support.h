#pragma once

// The plug-in's module on the example scene, rendering with the host's raytracer into real
// files in a temporary folder, with the host's calls traced.

#include "oxCallTrace.h"
#include "oxExampleScene.h"
#include "oxFileIO.h"
#include "oxImageOutStream.h"
#include "oxImageRenderWidget.h"
#include "oxImageSource.h"
#include "oxImageWriter.h"
#include "oxMainWindow.h"
#include "oxMessage.h"
#include "oxMovieExport.h"
#include "oxOSGWidget.h"
#include "oxPreferences.h"
#include "oxRaytracer.h"
#include "oxRaytracerSource.h"
#include "oxRenderParameter.h"
#include "oxScene.h"
#include "oxTestSupport.h"

#include <OpenImageIO/imageio.h>

#include <QCoreApplication>
#include <QDir>

#include <memory>
#include <string>
#include <vector>

class oxSnapshotModuleTest : public oxTest {
protected:
    void SetUp() override
    {
        previousSource = oxImageSource::current();
        oxImageSource::setCurrent(&oxRaytracerSource::the());
        auto scene = std::make_unique<oxScene>();
        std::string error;
        ASSERT_TRUE(oxExampleScene::build(*scene, error)) << error;
        previousScene = oxScene::replaceCurrent(std::move(scene));
        oxRenderParameter::setImageSamples(2); // renders of milliseconds
        mainWindow = std::make_unique<oxMainWindow>();
        module = std::make_unique<oxMovieExport>();
        oxCallTrace::clear();
        oxCallTrace::setEnabled(true);
    }

    void TearDown() override
    {
        oxCallTrace::setEnabled(false);
        oxCallTrace::clear();
        oxImageOutStream::resetImageWriteFunctions();
        unloadModule();
        mainWindow.reset();
        oxImageRenderWidget::setActiveRenderPasses({});
        oxRaytracer::setPremultiply(false);
        oxFileIO::setLoadingProjectWhileRunningScript(false);
        oxPreferences::getData().remove("SnapshotExport path");
        oxRenderParameter::resetToDefaults();
        oxOSGWidget::resetToDefaults();
        if (previousScene)
            oxScene::replaceCurrent(std::move(previousScene));
        oxImageSource::setCurrent(previousSource);
        oxTest::TearDown();
    }

    void unloadModule()
    {
        testing::internal::CaptureStdout(); // the module says goodbye on standard output
        module.reset();
        testing::internal::GetCapturedStdout();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// The names of the files in a folder, sorted.
    static std::vector<std::string> filesIn(const std::string& folder)
    {
        std::vector<std::string> names;
        for (const QString& name : QDir(QString::fromStdString(folder)).entryList(QDir::Files))
            names.push_back(name.toStdString());
        return names;
    }

    struct ImageInfo {
        int width = 0;
        int height = 0;
        int channels = 0;
        std::string format;
    };
    static ImageInfo readImage(const std::string& path)
    {
        auto input = OIIO::ImageInput::open(path);
        if (!input)
            return {};
        const OIIO::ImageSpec& spec = input->spec();
        return {spec.width, spec.height, spec.nchannels, input->format_name()};
    }

    oxTempDir dir;
    std::unique_ptr<oxMainWindow> mainWindow;
    std::unique_ptr<oxMovieExport> module;

private:
    oxImageSource* previousSource = nullptr;
    std::unique_ptr<oxScene> previousScene;
};

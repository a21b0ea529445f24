#pragma once

// The plug-in's module on the example scene, rendering with the host's raytracer into real
// files in a temporary folder, with the host's calls traced.

#include "oxFileIO.h"
#include "oxImageOutStream.h"
#include "oxOutputTestSupport.h"
#include "oxPreferences.h"

#include <OpenImageIO/imageio.h>

#include <QDir>

#include <memory>
#include <string>
#include <vector>

class oxSnapshotModuleTest : public oxModuleTest {
protected:
    void SetUp() override
    {
        oxModuleTest::SetUp();
        oxRenderParameter::setImageSamples(2); // renders of milliseconds
        load(true);
        oxCallTrace::clear();
        oxCallTrace::setEnabled(true);
    }

    void TearDown() override
    {
        oxImageOutStream::resetImageWriteFunctions();
        oxImageRenderWidget::setActiveRenderPasses({});
        oxRaytracer::setPremultiply(false);
        oxFileIO::setLoadingProjectWhileRunningScript(false);
        oxPreferences::getData().remove("SnapshotExport path");
        oxModuleTest::TearDown();
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
};

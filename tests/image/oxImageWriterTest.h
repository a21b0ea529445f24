#pragma once

// The image writer on a pattern renderer, writing into a temporary folder.

#include "oxImageOutStream.h"
#include "oxImageRenderWidget.h"
#include "oxImageWriter.h"
#include "oxPatternSource.h"
#include "oxTestSupport.h"

#include <QString>

#include <string>
#include <vector>

class oxImageWriterTest : public oxTest {
protected:
    void SetUp() override
    {
        oxImageRenderWidget::setActiveRenderPasses({});
        writer.setNoOverwriteMessage(true);
        writer.setNoProgress(true);
    }
    void TearDown() override
    {
        oxImageOutStream::resetImageWriteFunctions();
        oxImageOutStream::close();
        oxImageRenderWidget::setActiveRenderPasses({});
        oxTest::TearDown();
    }

    /// A still image at 72 dpi without supersampling; passes as the active passes say.
    bool still(const std::string& path, int width = 16, int height = 8, int alpha = 1,
               bool passes = false)
    {
        return writer.exportImage(QString::fromStdString(path), width, height, 0, alpha, 72.0f,
                                  passes, "", false, false);
    }
    void activate(const std::vector<unsigned>& ids)
    {
        std::vector<bool> flags(oxImagePasses::count, false);
        for (unsigned id : ids)
            flags[id] = true;
        oxImageRenderWidget::setActiveRenderPasses(flags);
    }

    oxPatternSource source;
    oxTempDir dir;
    oxImageWriter writer;
};

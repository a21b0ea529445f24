#pragma once

#include "oxClusterManagerService.h"
#include "oxController.h"
#include "oxDialogResponder.h"
#include "oxFileIO.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindow.h"
#include "oxMessage.h"
#include "oxMovieExport.h"
#include "oxRenderQueue.h"
#include "oxRenderSettings.h"
#include "oxTestSupport.h"

#include <QCoreApplication>
#include <QEvent>

#include <memory>
#include <string>
#include <vector>

/// A host with a main window, the render queue module and the cluster manager, and the
/// plug-in's module on top. Records the senders of every render notice.
class oxQueueTest : public oxTest {
protected:
    void SetUp() override
    {
        oxFileIO::clearProject();
        oxDialogResponder::clear();
        senders().clear();
        oxController::addCB("oxRenderSettings::render", recordSender);
        oxKernelServiceFactory::the()->registerService(&cluster);
    }
    void TearDown() override
    {
        module.reset();
        queue.reset();
        mainWindow.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        oxKernelServiceFactory::the()->unregisterService<oxClusterManagerService>();
        oxController::subCB("oxRenderSettings::render", recordSender);
        EXPECT_EQ(oxDialogResponder::pendingAnswers(), 0) << "a queued answer was not used";
        oxDialogResponder::clear();
        oxFileIO::clearProject();
        oxTest::TearDown();
    }

    /// Starts the host; with dockQueue false the queue exists but has no dock window.
    void start(bool dockQueue = true)
    {
        if (!dockQueue)
            queue = std::make_unique<oxRenderQueue>();
        mainWindow = std::make_unique<oxMainWindow>();
        if (dockQueue)
            queue = std::make_unique<oxRenderQueue>();
        module = std::make_unique<oxMovieExport>();
    }
    oxRenderSettings* window() const { return module->getRenderSettingsWindow(); }

    static std::vector<std::string>& senders()
    {
        static std::vector<std::string> list;
        return list;
    }

    oxClusterManagerService cluster;
    std::unique_ptr<oxMainWindow> mainWindow;
    std::unique_ptr<oxRenderQueue> queue;
    std::unique_ptr<oxMovieExport> module;

private:
    static void recordSender(oxMessage& message)
    {
        const char* sender = nullptr;
        senders().push_back(message.get("sender", sender) ? sender : "(none)");
    }
};

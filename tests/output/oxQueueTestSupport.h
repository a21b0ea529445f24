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
#include "oxOutputTestSupport.h"

#include <QCoreApplication>
#include <QEvent>

#include <memory>
#include <string>
#include <vector>

/// A host with a main window, the render queue module and the cluster manager, and the
/// plug-in's module on top, on the example scene. Records the senders of every render notice.
class oxQueueTest : public oxModuleTest {
protected:
    void SetUp() override
    {
        oxModuleTest::SetUp();
        oxFileIO::clearProject();
        senders().clear();
        oxController::addCB("oxRenderSettings::render", recordSender);
        oxKernelServiceFactory::the()->registerService(&cluster);
    }
    void TearDown() override
    {
        unloadModule();
        queue.reset();
        oxKernelServiceFactory::the()->unregisterService<oxClusterManagerService>();
        oxController::subCB("oxRenderSettings::render", recordSender);
        oxFileIO::clearProject();
        oxModuleTest::TearDown();
    }

    /// Starts the host; with dockQueue false the queue exists but has no dock window.
    void start(bool dockQueue = true)
    {
        if (!dockQueue)
            queue = std::make_unique<oxRenderQueue>();
        mainWindow = std::make_unique<oxMainWindow>();
        if (dockQueue)
            queue = std::make_unique<oxRenderQueue>();
        load(false);
    }

    static std::vector<std::string>& senders()
    {
        static std::vector<std::string> list;
        return list;
    }

    oxClusterManagerService cluster;
    std::unique_ptr<oxRenderQueue> queue;

private:
    static void recordSender(oxMessage& message)
    {
        const char* sender = nullptr;
        senders().push_back(message.get("sender", sender) ? sender : "(none)");
    }
};

// Handing a job on instead of rendering it: to the host's render queue as a job record, or to
// a cluster queue of the host's cluster manager as a copy of the scene state.

#include "oxMovieExport.h"

#include "QOXDockWindowManager.h"
#include "oxClusterManagerService.h"
#include "oxController.h"
#include "oxKernelServiceFactory.h"
#include "oxMovieExportCallbacks.h"
#include "oxPlatform.h"
#include "oxRenderSettings.h"

#include <QAction>
#include <QCursor>
#include <QMenu>
#include <QMessageBox>

#include <memory>

namespace {

// Sender texts of the render notice. The render queue path says "cluster" as well: listeners
// know the hand-off by this text.
const char kAddToRenderQueueSender[] = "Add to cluster queue";
const char kSendToClusterQueueSender[] = "Send to cluster queue";

void warnClusterJobFailed()
{
    QMessageBox::warning(
        nullptr, oxPlatform::getAppVersionName(),
        QCoreApplication::translate("oxMovieExport", "Unable to create job for cluster queue"),
        QMessageBox::Ok, QMessageBox::NoButton);
}

// Creates a job in one queue and warns when the service refuses it.
void createClusterJob(oxClusterManagerService* service, const QString& queue)
{
    if (!service->createRenderJob(nullptr, queue))
        warnClusterJobFailed();
}

} // namespace

void oxMovieExport::clickedAddToRenderQueue()
{
    if (!settledWindowSettings())
        return;
    QOXDockWindowManager* manager = oxController::getDockWindowManager();
    QOXDockWidget* dock = manager ? manager->getDockWidget(tr("Render Queue")) : nullptr;
    if (!dock)
        return;
    dock->show();
    // The scene is left in the state of the job's first render, as the queue will see it.
    applyFirstSettings();
    renderSettingsWindow->buildRenderJobMessage();
    renderSettingsWindow->notifyRenderStarted(kAddToRenderQueueSender);
}

void oxMovieExport::clickedSendToClusterQueue()
{
    oxClusterManagerService* service =
        oxKernelServiceFactory::getService<oxClusterManagerService>();
    // A host without a cluster manager has nobody to log in to: the user is told the same.
    if (!service || !service->isLoggedIn()) {
        QMessageBox box(QMessageBox::Warning, oxPlatform::getAppVersionName(),
                        tr("Please login to the cluster manager module"), QMessageBox::Ok);
        box.setDefaultButton(QMessageBox::NoButton);
        // Why the cluster manager can't log in is what the user has to fix.
        if (service && !service->getLoginProblem().empty())
            box.setInformativeText(QString::fromStdString(service->getLoginProblem()));
        box.exec();
        return;
    }
    const QStringList queues = service->getQueueNames();
    if (renderSettingsWindow)
        renderSettingsWindow->notifyRenderStarted(kSendToClusterQueueSender);
    if (queues.size() < 2) {
        applyFirstSettings();
        createClusterJob(service, QString());
        return;
    }
    // The job takes the scene as it stands: the user picks a queue from a menu at the cursor.
    const auto menu = std::make_unique<QMenu>();
    for (const QString& queue : queues) {
        QAction* action = menu->addAction(queue);
        connect(action, &QAction::triggered, menu.get(),
                [service, queue] { createClusterJob(service, queue); });
    }
    menu->exec(QCursor::pos());
}

void clickedAddToRenderQueueCB(oxMessage&)
{
    if (theMovieExport)
        theMovieExport->clickedAddToRenderQueue();
}

#include "oxMovieExport.h"

#include "oxController.h"
#include "oxFileIO.h"
#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"

#include <QAction>
#include <QMenu>

#include <cstdio>

oxMovieExport* theMovieExport = nullptr;

namespace {
// The module's flag value in the host's module registry.
constexpr uint64_t kModuleFlags = 40976;
} // namespace

oxMovieExport::oxMovieExport() : oxModuleBase("MovieExport", "IGNORE", kModuleFlags, nullptr)
{
    imageWriter = new oxImageWriter();
    theMovieExport = this;
}

oxMovieExport::~oxMovieExport()
{
    std::printf("oxMovieExport::~oxMovieExport\n");
    std::fflush(stdout);

    // The snapshot action is taken out of the "Export" menu, wherever it was put.
    if (QMenu* exportMenu = oxController::getMenu("Export")) {
        if (exportSnapshotAction)
            exportMenu->removeAction(exportSnapshotAction);
    }
    if (theMovieExport == this)
        theMovieExport = nullptr;
}

void oxMovieExport::activateModule() {}

int oxMovieExport::receivedMessage(oxMessage& message)
{
    try {
        handleMessage(message);
    } catch (...) {
        oxLog::error("oxMovieExport::receivedMessage : An unknown exception occurred!");
    }
    return 0;
}

void oxMovieExport::handleMessage(oxMessage& message)
{
    switch (message.id()) {
    case oxController::MessageProjectReadWrite: {
        bool loading = false;
        if (!getFromMessage(oxFileIO::getProject(), "_loading", loading))
            return;
        // The settings' life in the project arrives with the Render Settings window.
        return;
    }
    case oxController::MessageNewScene:
        imageWriter->resetExportSettings();
        return;
    default:
        return;
    }
}

void oxMovieExport::exportImageDialog(int) {}

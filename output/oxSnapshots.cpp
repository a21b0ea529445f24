#include "oxSnapshots.h"

#include "oxController.h"
#include "oxFile.h"
#include "oxFileIO.h"
#include "oxImageRenderWidget.h"
#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxMovieExport.h"
#include "oxMovieExportCallbacks.h"
#include "oxOSGImage.h"
#include "oxOSGWidget.h"
#include "oxPreferences.h"
#include "oxRaytracer.h"
#include "oxRenderSettings.h"

#include <QApplication>
#include <QCursor>
#include <QDateTime>
#include <QFileDialog>
#include <QTimer>

#include <iterator>
#include <memory>
#include <string>

namespace {

const char kSnapshotPathKey[] = "SnapshotExport path";
const char kDefaultSnapshotPath[] = "c:\\oxlin-snapshots";
const char kSnapshotQualityKey[] = "ImageExport quality";

// What each argument of setSnapshotEmbedMetaData adds to the writer's metadata flags, in the
// order of the arguments.
struct MetaDataChoice {
    const char* argument;
    int bits;
};
constexpr MetaDataChoice kSnapshotMetaDataChoices[] = {
    {"embedRenderSettings",
     oxImageMetaData::FILEOUTPUT_IMAGE_SETTINGS | oxImageMetaData::FILEOUTPUT_ANIMATION_SETTINGS |
         oxImageMetaData::FILEOUTPUT_RENDERPASSES_SETTINGS | oxImageMetaData::RAYTRACING_SETTINGS},
    {"embedCameraSettings", oxImageMetaData::CAMERA_SETTINGS},
    {"embedNodeVisibilities", oxImageMetaData::NODE_VISIBILITIES},
    {"embedSwitchNodeStates", oxImageMetaData::SWITCH_NODE_STATES},
    {"embedSwitchMaterialStates", oxImageMetaData::SWITCH_MATERIAL_STATES},
};

// The module's writer; scripts may call before the plug-in is up, which is reported once per
// call and makes the command fail.
oxImageWriter* moduleWriter(const char* command)
{
    if (theMovieExport && theMovieExport->getImageWriter())
        return theMovieExport->getImageWriter();
    oxLog::error("%s: the render settings module is not loaded, nothing was exported.", command);
    return nullptr;
}

QString fromUtf8(const char* text) { return QString::fromUtf8(text ? text : ""); }

void dialogSnapshot(int width, int height, int ssf, int alpha, float dpi)
{
    oxImageWriter* writer = moduleWriter("createSnapshot");
    if (!writer)
        return;
    oxController::setBusy(true, false);
    oxRenderSettings* window = theMovieExport->getRenderSettingsWindow();
    // The record only gives the dialog its start name; it lives for this call.
    const oxRenderSettingsPresetSPtr record =
        window ? window->getCurrentRenderSettings() : std::make_shared<oxRenderSettingsPreset>();
    const QString filename = theMovieExport->runImageFileDialog(record);
    if (!filename.isEmpty())
        writer->exportImage(filename, width, height, supersamplingMode(ssf), alpha, dpi, false,
                            QString(), false, false);
    oxController::setBusy(false, false);
}

bool shortSnapshot(const char* filename, int width, int height, int mode, int alpha, float dpi)
{
    if (!filename)
        return false;
    oxImageWriter* writer = moduleWriter("createSnapshot");
    if (!writer)
        return false;
    oxController::setBusy(true, false);
    oxRaytracer::setPremultiply(false);
    osg_image_file_handler_errno = 0;
    writer->exportImage(QString::fromUtf8(filename), width, height, mode, alpha, dpi,
                        oxImageRenderWidget::hasActiveRenderPasses(), QString(), false, false);
    const bool written = osg_image_file_handler_errno == 0;
    oxController::setBusy(false, false);
    return written;
}

bool longSnapshot(const char* filename, int width, int height, int ssf, bool alpha, float alphaRed,
                  float alphaGreen, float alphaBlue, float dpi, bool overwrite, bool showImage,
                  bool alphaPremultiply, bool tonemapHDR, const char* clusterHost)
{
    if (!filename)
        return false;
    oxImageWriter* writer = moduleWriter("createSnapshot");
    if (!writer)
        return false;
    oxController::setBusy(true, false);
    oxRaytracer::setPremultiply(alphaPremultiply);
    writer->setAlphaColor(alphaRed, alphaGreen, alphaBlue);
    // The overwrite and display switches outlast the call on purpose: later short forms
    // follow the last long form.
    writer->setNoOverwriteMessage(overwrite);
    writer->setNoShowImage(!showImage);
    osg_image_file_handler_errno = 0;
    writer->exportImage(QString::fromUtf8(filename), width, height, supersamplingMode(ssf),
                        alpha ? 1 : 0, dpi, oxImageRenderWidget::hasActiveRenderPasses(),
                        fromUtf8(clusterHost), false, tonemapHDR);
    const bool written = osg_image_file_handler_errno == 0;
    // White, not the colour from before the call: scripts rely on a known background.
    writer->setAlphaColor(1.0f, 1.0f, 1.0f);
    oxRaytracer::setPremultiply(false);
    oxController::setBusy(false, false);
    return written;
}

} // namespace

int supersamplingMode(int ssf) { return ssf > 0 ? 3 : 0; }

void createSnapshot(int width, int height) { dialogSnapshot(width, height, -1, -1, -1.0f); }

void createSnapshot(int width, int height, int ssf)
{
    dialogSnapshot(width, height, supersamplingMode(ssf), -1, -1.0f);
}

void createSnapshot(int width, int height, int ssf, bool alpha)
{
    dialogSnapshot(width, height, supersamplingMode(ssf), alpha ? 1 : 0, -1.0f);
}

void createSnapshot(int width, int height, int ssf, bool alpha, float dpi)
{
    dialogSnapshot(width, height, supersamplingMode(ssf), alpha ? 1 : 0, dpi);
}

bool createSnapshot(const char* filename, int width, int height)
{
    return shortSnapshot(filename, width, height, -1, -1, -1.0f);
}

bool createSnapshot(const char* filename, int width, int height, int ssf)
{
    return shortSnapshot(filename, width, height, supersamplingMode(ssf), -1, -1.0f);
}

bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha)
{
    return shortSnapshot(filename, width, height, supersamplingMode(ssf), alpha ? 1 : 0, -1.0f);
}

bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha, float dpi)
{
    return shortSnapshot(filename, width, height, supersamplingMode(ssf), alpha ? 1 : 0, dpi);
}

bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha,
                    float alphaRed, float alphaGreen, float alphaBlue, float dpi, bool overwrite,
                    bool showImage)
{
    return longSnapshot(filename, width, height, ssf, alpha, alphaRed, alphaGreen, alphaBlue, dpi,
                        overwrite, showImage, false, false, "");
}

bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha,
                    float alphaRed, float alphaGreen, float alphaBlue, float dpi, bool overwrite,
                    bool showImage, bool alphaPremultiply)
{
    return longSnapshot(filename, width, height, ssf, alpha, alphaRed, alphaGreen, alphaBlue, dpi,
                        overwrite, showImage, alphaPremultiply, false, "");
}

bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha,
                    float alphaRed, float alphaGreen, float alphaBlue, float dpi, bool overwrite,
                    bool showImage, bool alphaPremultiply, bool tonemapHDR)
{
    return longSnapshot(filename, width, height, ssf, alpha, alphaRed, alphaGreen, alphaBlue, dpi,
                        overwrite, showImage, alphaPremultiply, tonemapHDR, "");
}

bool createSnapshot(const char* filename, float width, float height, int ssf, bool alpha,
                    float alphaRed, float alphaGreen, float alphaBlue, float dpi, bool overwrite,
                    bool showImage, bool alphaPremultiply, bool tonemapHDR, const char* clusterHost)
{
    return createSnapshot(filename, int(width), int(height), ssf, alpha, alphaRed, alphaGreen,
                          alphaBlue, dpi, overwrite, showImage, alphaPremultiply, tonemapHDR,
                          clusterHost);
}

bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha,
                    float alphaRed, float alphaGreen, float alphaBlue, float dpi, bool overwrite,
                    bool showImage, bool alphaPremultiply, bool tonemapHDR, const char* clusterHost)
{
    return longSnapshot(filename, width, height, ssf, alpha, alphaRed, alphaGreen, alphaBlue, dpi,
                        overwrite, showImage, alphaPremultiply, tonemapHDR, clusterHost);
}

void createSnapshotFastInit(int width, int height) { createSnapshotFastInit(width, height, 0); }

void createSnapshotFastInit(int width, int height, int ssf)
{
    if (moduleWriter("createSnapshotFastInit"))
        theMovieExport->initFastSnapshots(width, height, supersamplingMode(ssf));
}

bool createSnapshotFast(const char* filename)
{
    if (!filename)
        return false;
    oxImageWriter* writer = moduleWriter("createSnapshotFast");
    if (!writer)
        return false;
    oxController::setBusy(true, false);
    oxRaytracer::setPremultiply(false);
    osg_image_file_handler_errno = 0;
    writer->setNoProgress(true);
    writer->setNoShowImage(true);
    writer->setNoOverwriteMessage(true);
    writer->exportImageFast(QString::fromUtf8(filename));
    // Back to false whatever they were before: a series must not leave the writer silent.
    writer->setNoProgress(false);
    writer->setNoShowImage(false);
    writer->setNoOverwriteMessage(false);
    const bool written = osg_image_file_handler_errno == 0;
    oxController::setBusy(false, false);
    return written;
}

void createSnapshotFastTerminate()
{
    if (oxImageWriter* writer = moduleWriter("createSnapshotFastTerminate"))
        writer->exportImageFastTerminate();
}

void setSnapshotQuality(int quality)
{
    oxPreferences::getData().set(kSnapshotQualityKey, quality, true);
}

void setSnapshotNoShowImage(bool state)
{
    if (oxImageWriter* writer = moduleWriter("setSnapshotNoShowImage"))
        writer->setNoShowImage(state);
}

void setSnapshotICCProfile(int profileID)
{
    if (oxImageWriter* writer = moduleWriter("setSnapshotICCProfile"))
        writer->setICCProfile(profileID);
}

int snapshotMetaDataFlags(bool embedRenderSettings, bool embedCameraSettings,
                          bool embedNodeVisibilities, bool embedSwitchNodeStates,
                          bool embedSwitchMaterialStates)
{
    const bool chosen[] = {embedRenderSettings, embedCameraSettings, embedNodeVisibilities,
                           embedSwitchNodeStates, embedSwitchMaterialStates};
    static_assert(std::size(chosen) == std::size(kSnapshotMetaDataChoices),
                  "one choice per argument");
    int flags = 0;
    for (size_t i = 0; i < std::size(chosen); ++i)
        if (chosen[i])
            flags |= kSnapshotMetaDataChoices[i].bits;
    return flags;
}

void setSnapshotEmbedMetaData(bool embedRenderSettings, bool embedCameraSettings,
                              bool embedNodeVisibilities, bool embedSwitchNodeStates,
                              bool embedSwitchMaterialStates)
{
    if (oxImageWriter* writer = moduleWriter("setSnapshotEmbedMetaData"))
        writer->setMetaDataFlags(snapshotMetaDataFlags(embedRenderSettings, embedCameraSettings,
                                                       embedNodeVisibilities, embedSwitchNodeStates,
                                                       embedSwitchMaterialStates));
}

QString oxMovieExport::runImageFileDialog(const oxRenderSettingsPresetSPtr& record)
{
    QString group = tr("All Images (");
    QString entries;
    QString singles;
    for (const std::string& format : oxImageWriter::getFormatsOpenSG()) {
        const QString extension = QString::fromStdString(format);
        entries += QStringLiteral("*.") + extension + QLatin1Char(' ');
        singles += QStringLiteral("*.") + extension + QStringLiteral(";;");
    }
    group += entries + QStringLiteral(" )");
    const QString filter = group + QStringLiteral(";;") + singles;

    QString name = QString::fromStdString(record ? record->filename : std::string());
    if (record && record->isStillCameraTrackView()) {
        // A still of a camera track renders one image per viewpoint: offer a pattern.
        name = QString::fromStdString(oxFile::getFilePath(record->filename)) + QLatin1Char('\\') +
               tr("#.png");
    } else if (name.endsWith(QStringLiteral(".avi"), Qt::CaseInsensitive)) {
        name.replace(name.lastIndexOf(QStringLiteral("avi"), -1, Qt::CaseInsensitive), 3,
                     QStringLiteral("png"));
    }
    QString selectedFilter =
        QStringLiteral("*.") +
        QString::fromStdString(record ? record->getFileExtension(false) : std::string());

    if (!oxController::isNoGUI())
        name = QFileDialog::getSaveFileName(nullptr, tr("Save Rendering(s)..."), name, filter,
                                            &selectedFilter, QFileDialog::DontConfirmOverwrite);
    if (name.isEmpty())
        return QString();
    const QString extension = QString::fromStdString(oxFile::getExtension(name.toStdString()));
    if (extension.isEmpty() || entries.contains(extension, Qt::CaseSensitive))
        return name;
    oxLog::error("Image format not supported!");
    return QString();
}

void oxMovieExport::initFastSnapshots(int width, int height, int supersamplingMode)
{
    if (!oxFileIO::isLoadingProjectWhileRunningScript()) {
        imageWriter->exportImageFastInit(width, height, supersamplingMode);
        return;
    }
    // The render view isn't ready while a project loads: start a second later, with the last
    // values asked for.
    pendingFastWidth = width;
    pendingFastHeight = height;
    pendingFastSupersampling = supersamplingMode;
    QTimer::singleShot(1000, this, &oxMovieExport::deferredCreateSnapshotFastInit);
}

void oxMovieExport::deferredCreateSnapshotFastInit()
{
    imageWriter->exportImageFastInit(pendingFastWidth, pendingFastHeight, pendingFastSupersampling);
}

void oxMovieExport::exportSnapshot()
{
    oxOSGWidget* widget = oxOSGWidget::getMGLW(-1);
    if (!widget)
        return;
    std::string path = kDefaultSnapshotPath;
    getFromMessage(oxPreferences::getData(), kSnapshotPathKey, path);
    oxFile::createPath(path);
    if (!oxFile::exists(path, false, false)) {
        oxLog::error("Snapshot: path '%s' doesn't exist!", path.c_str());
        return;
    }
    // One clock reading, so that date and time agree around midnight.
    const QDateTime now = QDateTime::currentDateTime();
    const QString fileName =
        QString::fromStdString(path) + QStringLiteral("\\snapshot-") +
        now.date().toString(QStringLiteral("dd-MM-yyyy")) + QLatin1Char('-') +
        now.time().toString(QStringLiteral("hhmmss")) +
        (oxOSGWidget::getRGB16F() ? QStringLiteral(".exr") : QStringLiteral(".png"));
    QApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
    const QByteArray shown = fileName.toUtf8();
    if (oxOSGWidget::writeImage(widget, fileName))
        oxLog::info("Snapshot: wrote '%s'.", shown.constData());
    else
        oxLog::error("Snapshot: couldn't write '%s'.", shown.constData());
    QApplication::restoreOverrideCursor();
}

void exportSnapshotCB(oxMessage& message)
{
    if (!theMovieExport)
        return;
    QString filename;
    if (!getFromMessage(message, "filename", filename) || filename.isEmpty()) {
        theMovieExport->exportSnapshot();
        return;
    }
    int width = 240;
    int height = 240;
    bool alpha = false;
    getFromMessage(message, "width", width);
    getFromMessage(message, "height", height);
    // Read for the record's sake: fast snapshots keep the writer's alpha setting.
    getFromMessage(message, "alpha", alpha);

    const bool playSound = oxController::playSoundOnExport();
    bool forceNoSound = false;
    getFromMessage(message, "forceNoSound", forceNoSound);
    if (forceNoSound)
        oxController::setPlaySoundOnExport(false);

    theMovieExport->initFastSnapshots(width, height, 0);
    createSnapshotFast(filename.toUtf8().constData());
    theMovieExport->getImageWriter()->exportImageFastTerminate();

    if (forceNoSound)
        oxController::setPlaySoundOnExport(playSound);
}

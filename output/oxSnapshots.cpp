#include "oxSnapshots.h"

#include "oxController.h"
#include "oxFile.h"
#include "oxFileIO.h"
#include "oxImageRenderWidget.h"
#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxOutputHost.h"
#include "oxOSGImage.h"
#include "oxOSGWidget.h"
#include "oxPreferences.h"
#include "oxRaytracer.h"
#include "oxRenderSettingsKeys.h"

#include <QApplication>
#include <QCoreApplication>
#include <QCursor>
#include <QDateTime>
#include <QFileDialog>
#include <QTimer>

#include <iterator>
#include <memory>
#include <string>

namespace {

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

QString translated(const char* text) { return QCoreApplication::translate("oxMovieExport", text); }

QString fromUtf8(const char* text) { return QString::fromUtf8(text ? text : ""); }

void dialogSnapshot(int width, int height, int ssf, int alpha, float dpi)
{
    oxImageWriter* writer = oxOutputHost::writerFor("createSnapshot");
    if (!writer)
        return;
    const oxBusyGuard busy;
    // The record only gives the dialog its start name; it lives for this call.
    oxRenderSettingsPresetSPtr record = oxOutputHost::current()->captureWindowSettings();
    if (!record)
        record = std::make_shared<oxRenderSettingsPreset>();
    const QString filename = runImageFileDialog(record);
    if (!filename.isEmpty())
        writer->exportImage(filename, width, height, supersamplingMode(ssf), alpha, dpi, false,
                            QString(), false, false);
}

bool shortSnapshot(const char* filename, int width, int height, int mode, int alpha, float dpi)
{
    if (!filename)
        return false;
    oxImageWriter* writer = oxOutputHost::writerFor("createSnapshot");
    if (!writer)
        return false;
    const oxBusyGuard busy;
    oxRaytracer::setPremultiply(false);
    osg_image_file_handler_errno = 0;
    writer->exportImage(QString::fromUtf8(filename), width, height, mode, alpha, dpi,
                        oxImageRenderWidget::hasActiveRenderPasses(), QString(), false, false);
    const bool written = osg_image_file_handler_errno == 0;
    return written;
}

bool longSnapshot(const char* filename, int width, int height, int ssf, bool alpha, float alphaRed,
                  float alphaGreen, float alphaBlue, float dpi, bool overwrite, bool showImage,
                  bool alphaPremultiply, bool tonemapHDR, const char* clusterHost)
{
    if (!filename)
        return false;
    oxImageWriter* writer = oxOutputHost::writerFor("createSnapshot");
    if (!writer)
        return false;
    const oxBusyGuard busy;
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
    if (oxOutputHost::writerFor("createSnapshotFastInit"))
        oxOutputHost::current()->initFastSnapshots(width, height, supersamplingMode(ssf));
}

bool createSnapshotFast(const char* filename)
{
    if (!filename)
        return false;
    oxImageWriter* writer = oxOutputHost::writerFor("createSnapshotFast");
    if (!writer)
        return false;
    const oxBusyGuard busy;
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
    return written;
}

void createSnapshotFastTerminate()
{
    if (oxImageWriter* writer = oxOutputHost::writerFor("createSnapshotFastTerminate"))
        writer->exportImageFastTerminate();
}

void setSnapshotQuality(int quality)
{
    oxPreferences::getData().set(kSnapshotQualityPreference, quality, true);
    // The preferences page, when it is up, shows the value the next image is written with.
    if (oxPreferences* page = oxPreferences::findPage(QString::fromUtf8(kPreferencesPage)))
        page->preferencesToWidgets();
}

void setSnapshotNoShowImage(bool state)
{
    if (oxImageWriter* writer = oxOutputHost::writerFor("setSnapshotNoShowImage"))
        writer->setNoShowImage(state);
}

void setSnapshotICCProfile(int profileID)
{
    if (oxImageWriter* writer = oxOutputHost::writerFor("setSnapshotICCProfile"))
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
    if (oxImageWriter* writer = oxOutputHost::writerFor("setSnapshotEmbedMetaData"))
        writer->setMetaDataFlags(snapshotMetaDataFlags(embedRenderSettings, embedCameraSettings,
                                                       embedNodeVisibilities, embedSwitchNodeStates,
                                                       embedSwitchMaterialStates));
}

QString runImageFileDialog(const oxRenderSettingsPresetSPtr& record)
{
    QString group = translated("All Images (");
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
               translated("#.png");
    } else if (name.endsWith(QStringLiteral(".avi"), Qt::CaseInsensitive)) {
        name.replace(name.lastIndexOf(QStringLiteral("avi"), -1, Qt::CaseInsensitive), 3,
                     QStringLiteral("png"));
    }
    QString selectedFilter =
        QStringLiteral("*.") +
        QString::fromStdString(record ? record->getFileExtension(false) : std::string());

    if (!oxController::isNoGUI())
        name =
            QFileDialog::getSaveFileName(nullptr, translated("Save Rendering(s)..."), name, filter,
                                         &selectedFilter, QFileDialog::DontConfirmOverwrite);
    if (name.isEmpty())
        return QString();
    const QString extension = QString::fromStdString(oxFile::getExtension(name.toStdString()));
    if (extension.isEmpty() || entries.contains(extension, Qt::CaseSensitive))
        return name;
    oxLog::error("Image format not supported!");
    return QString();
}

void exportDatedSnapshot()
{
    oxOSGWidget* widget = oxOSGWidget::getMGLW(-1);
    if (!widget)
        return;
    std::string path = kDefaultSnapshotPath;
    getFromMessage(oxPreferences::getData(), kSnapshotPathPreference, path);
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

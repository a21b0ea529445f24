#include "oxRenderToFile.h"

#include "oxActiveRenderPasses.h"
#include "oxController.h"
#include "oxFile.h"
#include "oxFileChecks.h"
#include "oxFileIO.h"
#include "oxImageRenderWidget.h"
#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxOSGWidget.h"
#include "oxRaytracer.h"
#include "oxRenderParameter.h"
#include "oxRenderPlan.h"
#include "oxSceneServices.h"

#include <algorithm>

namespace {

const char kExistingFilesMessage[] = "Files already exist. Choose another filename!\n%s\n";
const char kWriteProtectedMessage[] = "Found write protected files.\n%s\n";

QByteArray joinedLines(const QStringList& files) { return files.join(QLatin1Char('\n')).toUtf8(); }

bool coversWholeImage(const std::array<float, 4>& region)
{
    return !(region[2] < 1.0f || region[3] < 1.0f || region[0] > 0.0f || region[1] > 0.0f);
}

std::array<float, 4> applyRenderRegion(const oxRenderSettingsPresetSPtr& record)
{
    std::array<float, 4> saved{0.0f, 0.0f, 1.0f, 1.0f};
    if (!record->use_render_region)
        return saved;
    saved = oxRenderParameter::getRaytracingRenderRegion();
    const float left = float(std::min(record->region_start_x, record->region_end_x));
    const float right = float(std::max(record->region_start_x, record->region_end_x));
    const float top = float(std::min(record->region_start_y, record->region_end_y));
    const float bottom = float(std::max(record->region_start_y, record->region_end_y));
    const float width = float(record->getPixelWidth());
    const float height = float(record->getPixelHeight());
    // Pixels count from the top row, the region from the bottom.
    if (oxOSGWidget* view = oxOSGWidget::getMGLW(-1))
        view->setRenderRegion(true, std::max(left / width, 0.0f),
                              std::max(1.0f - bottom / height, 0.0f), std::min(right / width, 1.0f),
                              std::min(1.0f - top / height, 1.0f));
    return saved;
}

void pushExportSettings(oxImageWriter& writer, const oxRenderSettingsPresetSPtr& record,
                        const oxRenderSettingsPreset* windowSettings)
{
    writer.setAlphaColor(record->backgroundColorR, record->backgroundColorG,
                         record->backgroundColorB);
    writer.setICCProfile(record->iccProfileID);
    writer.setMetaDataFlags(record->metaDataFlags);

    constexpr int kFileOutputMetaData = FILEOUTPUT_IMAGE_SETTINGS | FILEOUTPUT_ANIMATION_SETTINGS |
                                        FILEOUTPUT_RENDERPASSES_SETTINGS | RAYTRACING_SETTINGS;
    oxImageMetaData* metaData = writer.getMetaData();
    if (!record->isMovieExport() && (record->metaDataFlags & kFileOutputMetaData) && metaData &&
        windowSettings) {
        // The window's own settings describe the images, not the frozen record.
        const oxRenderSettingsPreset& current = *windowSettings;
        if (record->metaDataFlags & FILEOUTPUT_IMAGE_SETTINGS) {
            metaData->setFileOutputImageSettings(
                current.pixel_width, current.pixel_height, current.ppi, current.ssFactor,
                current.tonemap_hdr, current.alpha, current.premultiply, current.backgroundColorR,
                current.backgroundColorG, current.backgroundColorB, current.iccProfileID,
                current.metaDataFlags);
            metaData->setFileOutputRegionRenderSettings(
                current.use_render_region, current.region_start_x, current.region_start_y,
                current.region_end_x, current.region_end_y);
        }
        if (record->metaDataFlags & FILEOUTPUT_ANIMATION_SETTINGS)
            metaData->setFileOutputAnimationSettings(
                current.renderAnimation, current.animationType, current.exportType, current.clip,
                current.startFrame, current.stopFrame, current.stepFrame, current.fps,
                current.useClipRange);
        if (record->metaDataFlags & FILEOUTPUT_RENDERPASSES_SETTINGS) {
            oxMessage passes;
            passes.set(oxRenderPassMaster::sceneKey, current.renderpasses);
            for (PassFlag flag : kPassFlagSceneKeyOrder)
                passes.set(passFlagInfo(flag).sceneKey, current.getPassFlag(flag));
            metaData->setFileOutputRenderPasses(passes);
        }
    }

    writer.setExportTiffHDR(record->tiffHDR);
    writer.setExportExrHalf(record->exrHalf);
    writer.setExportMultiLayer(record->multiLayer);
}

} // namespace

bool renderPresetToFile(oxImageWriter& writer, const oxRenderSettingsPresetSPtr& record,
                        const oxRenderSettingsPreset* windowSettings, const QString& clusterHosts)
{
    oxOSGWidget::cancelAntialiasing();
    const oxSimulationPause pause;
    const oxBusyGuard busy;

    const QString directory = prepareOutputDirectory(record);
    const std::string baseName = record ? oxFile::getBaseName(record->filename) : std::string();
    if (directory.isEmpty() || baseName.empty())
        return false;

    const std::array<float, 4> savedRegion = applyRenderRegion(record);
    oxImageRenderWidget::setActiveRenderPasses(record->getRenderPassFlags());
    oxRaytracer::setPremultiply(record->premultiply);
    pushExportSettings(writer, record, windowSettings);

    QStringList unused;
    const bool canceled = walkRenderPlan(writer, record, unused, PlanRender, clusterHosts);

    // The ICC profile and the format switches stay as the job set them, as do the scene's
    // last camera and variant sets.
    writer.setAlphaColor(1.0f, 1.0f, 1.0f);
    writer.setMetaDataFlags(0);
    oxRaytracer::setPremultiply(false);
    resetActiveSnapshotMovieRenderPasses();
    if (record->use_render_region) {
        if (oxOSGWidget* view = oxOSGWidget::getMGLW(-1))
            view->setRenderRegion(!coversWholeImage(savedRegion), savedRegion[0], savedRegion[1],
                                  savedRegion[2], savedRegion[3]);
    }
    return canceled;
}

void startRenderToFile(oxImageWriter& writer, const oxRenderSettingsPresetSPtr& record,
                       const oxRenderSettingsPreset* windowSettings, const QString& clusterHosts,
                       bool alwaysOverride)
{
    if (!record)
        return;
    if (!oxImageWriter::isStreamOutput()) {
        QStringList list;
        walkRenderPlan(writer, record, list, PlanCollect, clusterHosts);
        if (!alwaysOverride) {
            const QStringList existing = filterExistingFiles(list);
            if (!existing.isEmpty()) {
                oxLog::error(kExistingFilesMessage, joinedLines(existing).constData());
                return;
            }
        }
        // A script has nobody to ask: protected files are named, and the writer reports each
        // file it then fails to write.
        const QStringList unwritable = filterUnwritableFiles(list);
        if (!unwritable.isEmpty())
            oxLog::warning(kWriteProtectedMessage, joinedLines(unwritable).constData());
    }
    writer.setNoOverwriteMessage(true);
    renderPresetToFile(writer, record, windowSettings, clusterHosts);
    writer.setNoOverwriteMessage(false);
}

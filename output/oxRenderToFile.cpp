#include "oxMovieExport.h"

#include "oxActiveRenderPasses.h"
#include "oxController.h"
#include "oxFile.h"
#include "oxFileIO.h"
#include "oxImageRenderWidget.h"
#include "oxImageWriter.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxOSGWidget.h"
#include "oxRaytracer.h"
#include "oxRenderParameter.h"
#include "oxRenderSettings.h"
#include "oxRenderSettingsPresetFile.h"
#include "oxSceneServices.h"

#include <algorithm>

namespace {

bool coversWholeImage(const std::array<float, 4>& region)
{
    return !(region[2] < 1.0f || region[3] < 1.0f || region[0] > 0.0f || region[1] > 0.0f);
}

} // namespace

void oxMovieExport::clickedRender()
{
    oxRenderSettings* window = renderSettingsWindow;
    if (!window)
        return;
    const oxRenderSettingsPresetSPtr record = window->getCurrentRenderSettings();
    if (!checkOutputFiles(record, true))
        return;
    // The user has just decided about every existing file: the writer must not ask again.
    imageWriter->setNoOverwriteMessage(true);
    renderPresetToFile(record);
    // Listeners are told after the job, despite the notice's name.
    window->notifyRenderStarted("Render");
    imageWriter->setNoOverwriteMessage(false);
}

void oxMovieExport::applyFirstSettings()
{
    oxRenderSettings* window = renderSettingsWindow;
    if (!window)
        return;
    QStringList unused;
    walkRenderPlan(window->getCurrentRenderSettings(), unused, PlanApplyFirst);
}

bool oxMovieExport::renderPresetToFile(const oxRenderSettingsPresetSPtr& record)
{
    const bool wasSimulating = oxController::isSimulationEnable();
    oxOSGWidget::cancelAntialiasing();
    if (wasSimulating)
        oxController::enableSimulation(false);
    oxController::setBusy(true, false);

    const QString directory = prepareOutputDirectory(record);
    const std::string baseName = record ? oxFile::getBaseName(record->filename) : std::string();
    if (directory.isEmpty() || baseName.empty()) {
        oxController::setBusy(false, false);
        if (wasSimulating)
            oxController::enableSimulation(true);
        return false;
    }

    const std::array<float, 4> savedRegion = applyRenderRegion(record);
    applyActivePasses(record);
    oxRaytracer::setPremultiply(record->premultiply);
    pushExportSettings(record);

    QStringList unused;
    const bool canceled = walkRenderPlan(record, unused, PlanRender);

    // The ICC profile and the format switches stay as the job set them, as do the scene's
    // last camera and variant sets.
    imageWriter->setAlphaColor(1.0f, 1.0f, 1.0f);
    imageWriter->setMetaDataFlags(0);
    oxRaytracer::setPremultiply(false);
    resetActiveSnapshotMovieRenderPasses();
    if (record->use_render_region) {
        if (oxOSGWidget* view = oxOSGWidget::getMGLW(-1))
            view->setRenderRegion(!coversWholeImage(savedRegion), savedRegion[0], savedRegion[1],
                                  savedRegion[2], savedRegion[3]);
    }
    oxController::setBusy(false, false);
    if (wasSimulating)
        oxController::enableSimulation(true);
    return canceled;
}

std::array<float, 4>
oxMovieExport::applyRenderRegion(const oxRenderSettingsPresetSPtr& record) const
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

void oxMovieExport::applyActivePasses(const oxRenderSettingsPresetSPtr& record) const
{
    oxImageRenderWidget::setActiveRenderPasses(record->getRenderPassFlags());
}

void oxMovieExport::pushExportSettings(const oxRenderSettingsPresetSPtr& record) const
{
    imageWriter->setAlphaColor(record->backgroundColorR, record->backgroundColorG,
                               record->backgroundColorB);
    imageWriter->setICCProfile(record->iccProfileID);
    imageWriter->setMetaDataFlags(record->metaDataFlags);

    constexpr int kFileOutputMetaData = FILEOUTPUT_IMAGE_SETTINGS | FILEOUTPUT_ANIMATION_SETTINGS |
                                        FILEOUTPUT_RENDERPASSES_SETTINGS | RAYTRACING_SETTINGS;
    oxImageMetaData* metaData = imageWriter->getMetaData();
    if (!record->isMovieExport() && (record->metaDataFlags & kFileOutputMetaData) && metaData &&
        renderSettingsWindow) {
        // The window's own settings describe the images, not the frozen record.
        const oxRenderSettingsPreset& current = renderSettingsWindow->getCurrentPreset();
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

    imageWriter->setExportTiffHDR(record->tiffHDR);
    imageWriter->setExportExrHalf(record->exrHalf);
    imageWriter->setExportMultiLayer(record->multiLayer);
}

QString oxMovieExport::clusterHosts() const
{
    const oxRenderSettings* window = renderSettingsWindow;
    if (window && window->_cluster->isChecked())
        return window->_cluster_hosts->text();
    return QString();
}

bool oxMovieExport::walkRenderPlan(const oxRenderSettingsPresetSPtr& record, QStringList& list,
                                   PlanFlags flags)
{
    if (!record)
        return false;
    if (!validateOutputFilename(record)) {
        oxLog::error("%s", kBadFilenameMessage);
        return false;
    }
    const QString directory = prepareOutputDirectory(record);
    if (directory.isEmpty())
        return false;
    const QString baseName = QString::fromStdString(oxFile::getBaseName(record->filename));

    const oxRenderSteps cameraSteps = oxCameraRenderSettings(record).getRenderSteps();
    const oxVariantSetRenderSettings variantSettings(record);
    const uint64_t tupleCount = variantSettings.getStepCount();
    const QString extension = QString::fromStdString(record->getFileExtension(true));
    const bool exporting = (flags & PlanExport) != 0;
    oxAnimManager* animations = oxAnimManager::the();

    for (const oxRenderStepSPtr& cameraStep : cameraSteps) {
        const QString cameraName = cameraStep->decorateName(baseName);
        if (flags & PlanActivateCamera)
            cameraStep->apply();
        for (uint64_t tuple = 0; tuple < tupleCount; ++tuple) {
            const oxRenderStepSPtr variantStep = variantSettings.getStep(tuple);
            const QString name = variantStep->decorateName(cameraName);
            if (flags & PlanActivateVariantSet)
                variantStep->apply();
            QString path = directory + QLatin1Char('\\') + name + extension;
            path = oxFileIO::getLongWindowsPath(path);
            insertTimestamp(record, path);

            const int width = record->getPixelWidth();
            const int height = record->getPixelHeight();
            if (!record->renderAnimation) {
                list << imageWriter->getExportedImageFilenames(path, record->getRenderPassIds(),
                                                               record->multiLayer);
                if (exporting)
                    imageWriter->exportImage(path, width, height, record->ssFactor, record->alpha,
                                             float(record->getPixelsPerInch()),
                                             record->hasSelectedRenderPass(), clusterHosts(), false,
                                             record->tonemap_hdr);
            } else {
                const oxRenderSettingsPreset::AnimationRange range = record->getAnimationRange();
                const int start = int(range.firstFrame);
                const int stop = int(range.lastFrame);
                const int step = int(range.step);
                animations->setMotionBlurObjectID(range.animationId);
                if (!record->isMovieExport()) {
                    list << imageWriter->getExportedImageFilenames(
                        path, record->getRenderPassIds(), record->multiLayer, start, stop, step);
                    if (exporting)
                        imageWriter->exportImages(
                            path, width, height, record->fps, start, stop, record->ssFactor,
                            record->alpha, record->hasSelectedRenderPass(),
                            int64_t(range.animationId), clusterHosts(), step, record->tonemap_hdr);
                } else {
                    // Frames and passes don't multiply a movie: it is one file.
                    list << path;
                    if (exporting)
                        imageWriter->exportAVI(path, width, height, record->fps, start, stop,
                                               record->ssFactor, int64_t(range.animationId),
                                               clusterHosts(), false);
                }
                animations->resetMotionBlurObjectID();
            }
            if (flags & PlanFirstTupleOnly)
                break;
            if (exporting && imageWriter->wasExportCanceled())
                break;
        }
        if (exporting && imageWriter->wasExportCanceled())
            break;
    }
    return exporting && imageWriter->wasExportCanceled();
}

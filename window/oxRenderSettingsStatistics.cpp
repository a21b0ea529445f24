// The render statistics at the bottom of the window: how many renders and files the current
// settings make, before anything starts.

#include "oxRenderSettingsStatistics.h"

#include "oxImageWriter.h"
#include "oxRenderSettings.h"
#include "oxSceneServices.h"
#include "oxdObject.h"

namespace {

// A factor below 1 doesn't multiply. The totals wrap as 32-bit signed numbers do.
int32_t multiply(int32_t total, int factor)
{
    return int32_t(uint32_t(total) * uint32_t(factor >= 1 ? factor : 1));
}

} // namespace

oxRenderStatistics computeRenderStatistics(const oxRenderSettingsPreset& record, int viewpoints,
                                           int stereo, bool multilayerFile)
{
    oxRenderStatistics s;
    if (record.variantSetsUsed) {
        int product = 1;
        for (const oxRenderAutomationVariantSetGroup& group : record.variantSets) {
            const int count = int(group.getActiveVariantSetNames().size());
            if (count == 0)
                continue;
            s.variantSetCount += count;
            product = multiply(product, count);
        }
        s.variantSetRenders = product;
    }

    // An animated camera track is one sequence: its viewpoints don't multiply the job.
    s.viewpointCount = viewpoints;
    s.viewpointRenders = record.renderAnimation && record.isCameraTrackView() ? 1 : viewpoints;

    const bool movie = record.isMovieExport();
    s.renderPasses = int(record.getRenderPassIds().size());
    s.passRenders = s.renderPasses > 0 ? 1 : 0;
    s.passFiles =
        s.renderPasses > 0 && !movie && record.multiLayer && multilayerFile ? 1 : s.renderPasses;

    if (record.renderAnimation) {
        const oxRenderSettingsPreset::AnimationRange range = record.getAnimationRange();
        const int step = int(range.step);
        s.animationFrames =
            step != 0 ? (int(range.lastFrame) - int(range.firstFrame)) / step + 1 : 0;
    }
    s.frameFiles = movie ? 1 : s.animationFrames;

    s.stereo = stereo;
    s.stereoFiles = movie ? 1 : stereo;

    s.totalRenders = 1;
    for (int factor :
         {s.stereo, s.animationFrames, s.passRenders, s.viewpointRenders, s.variantSetRenders})
        s.totalRenders = multiply(s.totalRenders, factor);
    s.totalFiles = 1;
    for (int factor :
         {s.stereoFiles, s.frameFiles, s.passFiles, s.viewpointRenders, s.variantSetRenders})
        s.totalFiles = multiply(s.totalFiles, factor);
    return s;
}

void oxRenderSettings::refreshRenderStatistics()
{
    int viewpoints = 1;
    if (oxCameraService::the()) {
        const oxdCameraTrackNode track(currentPreset.getViewNode());
        if (track.isValid() && track.getViewpointCount() > 0)
            viewpoints = track.getViewpointCount();
    }
    const oxRenderStatistics s = computeRenderStatistics(
        currentPreset, viewpoints, imageWriter ? imageWriter->getStereoMode() : 1,
        oxImageWriter::isMultilayerSupported(QString::fromStdString(currentPreset.filename)));

    const auto show = [](QLabel* label, int value) { label->setText(QString::number(value, 10)); };
    show(_variantSetCount, s.variantSetCount);
    show(_variantSetRenderCount, s.variantSetRenders);
    show(_viewpointCount, s.viewpointCount);
    show(_renderPassesCount, s.renderPasses);
    show(_renderPassesFileCount, s.passFiles);
    show(_animationFrameCount, s.animationFrames);
    show(_stereoCount, s.stereo);
    show(_totalRenderCount, s.totalRenders);
    show(_totalFileCount, s.totalFiles);
}

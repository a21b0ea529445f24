#pragma once

#include "oxRenderSettingsPreset.h"

#include <cstdint>

/// How many renders and files a record's job makes, factor by factor, as the window's
/// statistics show them. Each factor counts for renders and for files; a factor below 1
/// counts as 1 in the totals.
struct oxRenderStatistics {
    int variantSetCount = 0;   ///< chosen sets over all groups (0 with variant sets off)
    int variantSetRenders = 0; ///< their crossing: the product of the groups' counts
    int viewpointCount = 1;    ///< viewpoints of the view
    int viewpointRenders = 1;  ///< 1 for an animated camera track, else the viewpoints
    int renderPasses = 0;      ///< passes rendered
    int passRenders = 0;       ///< 1 when any pass is rendered
    int passFiles = 0;         ///< files per image: 1 when all passes go into one file
    int animationFrames = 0;   ///< frames of the animation (0 without animation)
    int frameFiles = 0;        ///< 1 for a movie, else the frames
    int stereo = 1;            ///< images per frame
    int stereoFiles = 1;       ///< 1 for a movie, else the images per frame
    int totalRenders = 1;
    int totalFiles = 1;
};

/// The statistics of record. viewpoints is the viewpoint count of the record's view (1 when
/// it isn't a camera track with viewpoints), stereo the images per frame, multilayerFile
/// whether the record's file name takes all passes in one file.
oxRenderStatistics computeRenderStatistics(const oxRenderSettingsPreset& record, int viewpoints,
                                           int stereo, bool multilayerFile);

#pragma once

#include "oxRenderSettingsPreset.h"

#include <QString>

// Snapshot commands: one image of the current view written through the module's image writer.
// Each overload is one form of the script command of the same name, so that the script module
// can bind them one by one; their defaults differ on purpose (see each group).
//
// Common rules:
// - ssf is a supersampling factor; every form maps it to mode 3 when it is greater than 0 and
//   to 0 otherwise.
// - A null filename returns false at once, without any side effect.
// - The result is true exactly when osg_image_file_handler_errno is still 0 after the export.
// - The application is busy for the time of the export.
// - Without the module (plug-in not loaded) nothing is exported and the result is false.

/// The supersampling mode of a script's supersampling factor: 3 when ssf > 0, else 0.
int supersamplingMode(int ssf);

/// Dialog forms: the file name comes from the image file dialog (without a GUI: the window's
/// current output name). No passes, the writer's alpha (-1) and print resolution (-1.0) unless
/// given. The first form renders without supersampling.
void createSnapshot(int width, int height);
void createSnapshot(int width, int height, int ssf);
void createSnapshot(int width, int height, int ssf, bool alpha);
void createSnapshot(int width, int height, int ssf, bool alpha, float dpi);

/// Short forms: the active render pass override decides about passes, premultiplication is
/// switched off, alpha and print resolution are kept unless given. The first form keeps the
/// writer's supersampling.
bool createSnapshot(const char* filename, int width, int height);
bool createSnapshot(const char* filename, int width, int height, int ssf);
bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha);
bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha, float dpi);

/// Long forms: also set the background colour behind transparent pixels (put back to white
/// afterwards), premultiplication (off afterwards), and the writer's overwrite question and
/// image display, which stay as set until changed again.
bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha,
                    float alphaRed, float alphaGreen, float alphaBlue, float dpi, bool overwrite,
                    bool showImage);
bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha,
                    float alphaRed, float alphaGreen, float alphaBlue, float dpi, bool overwrite,
                    bool showImage, bool alphaPremultiply);
bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha,
                    float alphaRed, float alphaGreen, float alphaBlue, float dpi, bool overwrite,
                    bool showImage, bool alphaPremultiply, bool tonemapHDR);
/// width and height are truncated towards zero.
bool createSnapshot(const char* filename, float width, float height, int ssf, bool alpha,
                    float alphaRed, float alphaGreen, float alphaBlue, float dpi, bool overwrite,
                    bool showImage, bool alphaPremultiply, bool tonemapHDR,
                    const char* clusterHost);
bool createSnapshot(const char* filename, int width, int height, int ssf, bool alpha,
                    float alphaRed, float alphaGreen, float alphaBlue, float dpi, bool overwrite,
                    bool showImage, bool alphaPremultiply, bool tonemapHDR,
                    const char* clusterHost);

/// Fast snapshots: a series of small images of one size. While a script loads a project the
/// start is deferred by one second, with the last values asked for.
void createSnapshotFastInit(int width, int height);
void createSnapshotFastInit(int width, int height, int ssf);
/// One fast image, without passes, premultiplication, progress, display or overwrite
/// question; afterwards the writer shows images and asks before overwriting again.
bool createSnapshotFast(const char* filename);
void createSnapshotFastTerminate();

/// Stores the compression quality preference "ImageExport quality" (-1: the format's default)
/// and shows it on the preferences page, when there is one.
void setSnapshotQuality(int quality);
/// Passed to the writer as it is: true suppresses the display of written images.
void setSnapshotNoShowImage(bool state);
/// 0 current settings, 1 sRGB, 2 Adobe RGB (1998), 3 monitor profile, 4 image profile.
void setSnapshotICCProfile(int profileID);
/// Chooses the metadata groups embedded into written png, jpg, tif and exr images.
void setSnapshotEmbedMetaData(bool embedRenderSettings, bool embedCameraSettings,
                              bool embedNodeVisibilities, bool embedSwitchNodeStates,
                              bool embedSwitchMaterialStates);
/// The writer's metadata flags for those five choices.
int snapshotMetaDataFlags(bool embedRenderSettings, bool embedCameraSettings,
                          bool embedNodeVisibilities, bool embedSwitchNodeStates,
                          bool embedSwitchMaterialStates);

/// The image file dialog of snapshots and of the output file chooser: starts from the record's
/// file name (a "#.png" pattern for a still of a camera track), returns the chosen name, empty
/// when the user cancelled or chose a format the writer lacks. Without a GUI the record's
/// name is taken as it is.
QString runImageFileDialog(const oxRenderSettingsPresetSPtr& record);
/// Writes what the render view shows into a dated file in the snapshot folder of the
/// preferences (the "Export Snapshot" action).
void exportDatedSnapshot();

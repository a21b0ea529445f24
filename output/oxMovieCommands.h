#pragma once

// Movie and animation commands: a frame range handed to the module's image writer, outside the
// planned render job. Each overload is one form of the script command of the same name.
//
// Common rules:
// - A null movie or filename does nothing.
// - ssf > 0 gives supersampling mode 3, otherwise 0; a step below 1 counts as 1.
// - For the time of the call the application is busy and premultiplication is set; the
//   background colour behind transparent pixels and the writer's overwrite question are set
//   and left for later commands (the colour ends white after the unnamed forms, mid grey after
//   the named ones).
// - Nothing is reported to the caller; a failed frame is reported by the image writer.

/// Unnamed forms: always image files (NAME.FRAME.EXT), no animation object.
void createMovie(const char* filename, int width, int height, int fps, int startFrame,
                 int stopFrame, int ssf, bool alpha, float alphaRed, float alphaGreen,
                 float alphaBlue, bool overwrite);
void createMovie(const char* filename, int width, int height, int fps, int startFrame,
                 int stopFrame, int ssf, bool alpha, float alphaRed, float alphaGreen,
                 float alphaBlue, bool overwrite, bool alphaPremultiply);
void createMovie(const char* filename, int width, int height, int fps, int startFrame,
                 int stopFrame, int ssf, bool alpha, float alphaRed, float alphaGreen,
                 float alphaBlue, bool overwrite, bool alphaPremultiply, int step);
void createMovie(const char* filename, int width, int height, int fps, int startFrame,
                 int stopFrame, int ssf, bool alpha, float alphaRed, float alphaGreen,
                 float alphaBlue, bool overwrite, bool alphaPremultiply, int step, bool tonemapHDR);

/// Named forms: movie names a clip or camera track. With useClipRange the animation's own
/// frame range replaces startFrame..stopFrame (an unknown name keeps them and renders with
/// object id 0). alphaRGB is "red,green,blue"; anything but three parts gives black.
/// filename "NAME,HOST" sends the job with a cluster host. exportType 1 writes one AVI movie,
/// any other value image files.
void createMovie(const char* movie, const char* filename, int width, int height, int fps,
                 int startFrame, int stopFrame, int ssf, bool alpha, const char* alphaRGB,
                 bool overwrite, bool alphaPremultiply, int step, bool useClipRange,
                 int exportType);
/// width and height are truncated towards zero.
void createMovie(const char* movie, const char* filename, float width, float height, int fps,
                 int startFrame, int stopFrame, int ssf, bool alpha, const char* alphaRGB,
                 bool overwrite, bool alphaPremultiply, int step, bool useClipRange,
                 int exportType);
void createMovie(const char* movie, const char* filename, int width, int height, int fps,
                 int startFrame, int stopFrame, int ssf, bool alpha, const char* alphaRGB,
                 bool overwrite, bool alphaPremultiply, int step, bool tonemapHDR,
                 bool useClipRange, int exportType);
void createMovie(const char* movie, const char* filename, float width, float height, int fps,
                 int startFrame, int stopFrame, int ssf, bool alpha, const char* alphaRGB,
                 bool overwrite, bool alphaPremultiply, int step, bool tonemapHDR,
                 bool useClipRange, int exportType);

/// Image files of every frame of the named animation's given range (as the named createMovie
/// with step 1, no clip range, images).
void renderAnimation(const char* animation, const char* filename, int width, int height, int fps,
                     int startFrame, int stopFrame, int ssf, bool alpha, float alphaRed,
                     float alphaGreen, float alphaBlue, bool overwrite, bool alphaPremultiply);
void renderAnimation(const char* animation, const char* filename, int width, int height, int fps,
                     int startFrame, int stopFrame, int ssf, bool alpha, float alphaRed,
                     float alphaGreen, float alphaBlue, bool overwrite, bool alphaPremultiply,
                     bool tonemapHDR);
/// As renderAnimation, every step-th frame.
void renderStepAnimation(const char* animation, const char* filename, int width, int height,
                         int fps, int startFrame, int stopFrame, int ssf, bool alpha,
                         float alphaRed, float alphaGreen, float alphaBlue, bool overwrite,
                         bool alphaPremultiply, int step);

/// The three components of "red,green,blue" (QString::toFloat each, 0 for what is no number);
/// all 0 unless the text has exactly three parts.
void parseAlphaRGB(const char* alphaRGB, float& red, float& green, float& blue);

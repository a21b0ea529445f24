#pragma once

#include <functional>
#include <string>

// Image stream capture: images as data instead of files, for scripts run by remote
// evaluation. The capture uses the host's process-wide image redirection, so it can't nest.

/// Runs function and returns every image the image writer wrote meanwhile, encoded as PNG
/// whatever the file names say, one after the other without separator (empty when none).
/// Each captured image prints "oxMovieExport::imageStream: ...overwritten fn:NAME" to standard
/// output. A std::exception from function is logged and ends the capture with what was
/// written so far. Any other exception (a script error) passes on and leaves the redirection
/// in place, so that the caller's error handling sees the state the failure left behind.
std::string imageStream(const std::function<void()>& function);
/// As imageStream, the bytes in Base64 without line breaks.
std::string imageStreamBase64(const std::function<void()>& function);
/// One snapshot of width x height with supersampling, encoded in memory. mimeType names the
/// format ("png", "jpg", "image/png", ...; empty means png; any text holding "JPG" in any
/// case means JPEG). Empty or partial when the snapshot failed.
std::string createSnapshotStream(std::string mimeType, int width, int height);

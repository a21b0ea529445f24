#pragma once

/// Registers the commands that return images as data: createSnapshotStream, imageStream and
/// imageStreamBase64.
void bindStream();

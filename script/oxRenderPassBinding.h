#pragma once

/// Registers the commands that set the active render passes of the next snapshot or
/// animation: setActiveSnapshotMovieRenderPasses, the five channel group setters and
/// resetActiveSnapshotMovieRenderPasses.
void bindRenderPass();

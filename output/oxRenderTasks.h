#pragma once

#include "oxRenderSettingsPreset.h"

#include <cstdint>

// A render job split into tasks that separate processes (the nodes of a cluster) render on
// their own. A task is one unit of the walk (a camera step crossed with a variant set tuple,
// in walk order) and, for image sequences, one run of at most framesPerTask of its frames. A
// movie is one file and stays one task per unit.

/// Which task of a split job a walk is limited to.
struct oxRenderTask {
    int64_t index = 0;
    int framesPerTask = 1;
};

/// While an instance lives, walkRenderPlan walks only the files of task. Scopes nest; the
/// innermost counts.
class oxRenderTaskScope {
public:
    explicit oxRenderTaskScope(const oxRenderTask& task);
    ~oxRenderTaskScope();
    oxRenderTaskScope(const oxRenderTaskScope&) = delete;
    oxRenderTaskScope& operator=(const oxRenderTaskScope&) = delete;

private:
    const oxRenderTask* m_previous;
    oxRenderTask m_task;
};

/// The task walks are limited to, or null.
const oxRenderTask* currentRenderTask();

/// How many frame runs each unit of record's job has: 1 for stills and movies.
int64_t renderTaskFrameRuns(const oxRenderSettingsPreset& record, int framesPerTask);
/// How many tasks record's job splits into (0 when it renders nothing).
int64_t renderTaskCount(const oxRenderSettingsPresetSPtr& record, int framesPerTask);
/// The frames of run of an image sequence from first to last by step: first and last are
/// narrowed to the run; false when the run lies past the sequence.
bool renderTaskFrames(int64_t run, int framesPerTask, int& first, int& last, int step);

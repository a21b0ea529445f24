#include "oxRenderTasks.h"

#include "oxRenderPlan.h"

#include <algorithm>

namespace {

const oxRenderTask* gTask = nullptr;

int frameCount(int first, int last, int step)
{
    return last < first ? 0 : (last - first) / std::max(step, 1) + 1;
}

} // namespace

oxRenderTaskScope::oxRenderTaskScope(const oxRenderTask& task) : m_previous(gTask), m_task(task)
{
    m_task.framesPerTask = std::max(task.framesPerTask, 1);
    gTask = &m_task;
}

oxRenderTaskScope::~oxRenderTaskScope() { gTask = m_previous; }

const oxRenderTask* currentRenderTask() { return gTask; }

int64_t renderTaskFrameRuns(const oxRenderSettingsPreset& record, int framesPerTask)
{
    if (!record.renderAnimation || record.isMovieExport())
        return 1;
    const oxRenderSettingsPreset::AnimationRange range = record.getAnimationRange();
    const int frames = frameCount(int(range.firstFrame), int(range.lastFrame), int(range.step));
    const int perTask = std::max(framesPerTask, 1);
    return std::max<int64_t>((frames + perTask - 1) / perTask, 1);
}

int64_t renderTaskCount(const oxRenderSettingsPresetSPtr& record, int framesPerTask)
{
    if (!record)
        return 0;
    const auto cameraSteps = int64_t(oxCameraRenderSettings(record).getRenderSteps().size());
    const auto tuples = int64_t(oxVariantSetRenderSettings(record).getStepCount());
    return cameraSteps * tuples * renderTaskFrameRuns(*record, framesPerTask);
}

bool renderTaskFrames(int64_t run, int framesPerTask, int& first, int& last, int step)
{
    step = std::max(step, 1);
    const int64_t start = first + run * int64_t(std::max(framesPerTask, 1)) * step;
    if (start > last)
        return false;
    first = int(start);
    last = int(std::min<int64_t>(last, start + int64_t(std::max(framesPerTask, 1) - 1) * step));
    return true;
}

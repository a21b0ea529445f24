#include "oxTBBInit.h"

#include "oxRenderServiceSupport.h"

#include <tbb/global_control.h>

#include <algorithm>
#include <thread>

struct oxTBBInit::Control {
    explicit Control(size_t threads)
        : control(tbb::global_control::max_allowed_parallelism, threads)
    {}
    tbb::global_control control;
};

oxTBBInit::oxTBBInit() = default;
oxTBBInit::~oxTBBInit() = default;

oxTBBInit& oxTBBInit::the()
{
    static oxTBBInit instance;
    return instance;
}

void oxTBBInit::setCoreUsageLimit(int cores)
{
    oxTraceCall("oxTBBInit::setCoreUsageLimit", cores);
    // Only one control object of ours is alive at a time, so that the pool follows the latest
    // limit rather than the smallest one ever set.
    m_control.reset();
    if (cores < 1 || cores >= noLimit) {
        m_limit = noLimit;
        return;
    }
    m_limit = cores;
    m_control = std::make_unique<Control>(static_cast<size_t>(cores));
}

int oxTBBInit::getNumLogicalCores() const
{
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

int oxTBBInit::getActiveParallelism() const
{
    return static_cast<int>(
        tbb::global_control::active_value(tbb::global_control::max_allowed_parallelism));
}

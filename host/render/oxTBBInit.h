#pragma once

#include <memory>

/// The limit on the number of cores the raytracer's threads use. The limit is applied to the
/// thread pool of the whole process at once.
class oxTBBInit {
public:
    /// No limit: all logical cores are used.
    static constexpr int noLimit = 9999999;

    static oxTBBInit& the();

    /// Limits the thread pool to cores threads; a limit below 1 or at least noLimit means no
    /// limit, which getCoreUsageLimit then reports as noLimit. A limit above the number of
    /// logical cores is kept as given but uses all cores. Records the call in oxCallTrace.
    void setCoreUsageLimit(int cores);
    int getCoreUsageLimit() const { return m_limit; }

    /// The number of logical cores of this machine (at least 1).
    int getNumLogicalCores() const;
    /// The number of threads the pool may use now.
    int getActiveParallelism() const;

private:
    oxTBBInit();
    ~oxTBBInit();
    oxTBBInit(const oxTBBInit&) = delete;
    oxTBBInit& operator=(const oxTBBInit&) = delete;

    int m_limit = noLimit;
    struct Control;
    std::unique_ptr<Control> m_control;
};

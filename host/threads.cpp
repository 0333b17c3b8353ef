#include "host/threads.h"
#include <memory>
#include <mutex>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>

namespace host {

namespace {
std::mutex controlLock;
std::unique_ptr<tbb::global_control> control;
}  // namespace

void DoMultiProcess(int jobs, const std::function<void(int)>& fn)
{
    if (jobs <= 0) return;
    if (jobs == 1) {
        fn(0);
        return;
    }
    // Jobs are rows: small grains keep both cores busy to the last row.
    tbb::parallel_for(tbb::blocked_range<int>(0, jobs, 1), [&](const tbb::blocked_range<int>& r) {
        for (int j = r.begin(); j < r.end(); ++j) fn(j);
    });
}

void SetThreadCount(int threads)
{
    std::lock_guard<std::mutex> guard(controlLock);
    control.reset();
    if (threads > 0)
        control = std::make_unique<tbb::global_control>(
            tbb::global_control::max_allowed_parallelism, threads);
}

}  // namespace host

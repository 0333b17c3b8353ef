// The host's multi-process call: one pass of jobs on the shared thread pool.
#pragma once
#include <functional>

namespace host {

// Runs fn(job) for job in [0, jobs) on the pool and returns when all are done.
void DoMultiProcess(int jobs, const std::function<void(int)>& fn);

// Bounds the pool for the rest of the process; 0 means one per core.
void SetThreadCount(int threads);

}  // namespace host

#include "framework/lanes.h"
#include <algorithm>
#include <atomic>

namespace {
std::atomic<int> laneLimit{kLaneWidthMost};
}

int KLaneWidth()
{
#if defined(ZV_LANES)
    static const int widest = __builtin_cpu_supports("avx512f") ? kLaneWidthMost
                              : __builtin_cpu_supports("avx2") ? 8
                                                               : 4;
    const int most = std::min(widest, laneLimit.load(std::memory_order_relaxed));
    return most >= kLaneWidthMost ? kLaneWidthMost : most >= 8 ? 8 : 4;
#else
    return 1;
#endif
}

void KLimitLaneWidth(int most) { laneLimit = most; }

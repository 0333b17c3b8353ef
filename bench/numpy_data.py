#!/usr/bin/python3
"""The NumPy side of bench/data_bench.cpp: the same 1,000,000-item arrays from
the same integer hash, the same arithmetic as DataMath/1M and the argsort
(with the gather of both arrays) of DataSort/1M, single-threaded, best of runs.
Prints one line per figure and the same `check` sums as the C++ bench."""
import time

import numpy as np

ITEMS = 1_000_000


def hashed(i, c):
    with np.errstate(over="ignore"):
        h = (i * np.uint32(4) + np.uint32(c)) * np.uint32(2654435761)
        h ^= h >> np.uint32(15)
        h *= np.uint32(2246822519)
        h ^= h >> np.uint32(13)
    return (h >> np.uint32(8)).astype(np.float32) * np.float32(1.0 / 16777216.0)


def best(fn, runs=15):
    times = []
    for _ in range(runs):
        t0 = time.perf_counter()
        out = fn()
        times.append(time.perf_counter() - t0)
    return min(times) * 1e3, out


def main():
    i = np.arange(ITEMS, dtype=np.uint32)
    position = np.stack([hashed(i, c) for c in range(3)], axis=1)  # interleaved, as the channel stores it
    value = hashed(i, 3)
    f32 = np.float32

    def math():
        return (position[:, 0] + f32(0.5)) * f32(2) + (value + f32(-0.25)) * f32(3)

    def argsort():
        return np.argsort(value, kind="stable")

    def sort_and_gather():
        order = np.argsort(value, kind="stable")
        return position[order], value[order]

    ms, result = best(math)
    print(f"numpy DataMath/1M      best_ms {ms:8.3f}   check {result.astype(np.float64).sum():.6f}")
    ms_quick, _ = best(lambda: np.argsort(value))
    ms, _ = best(argsort)
    print(f"numpy argsort/1M       best_ms {ms:8.3f}   (default quicksort {ms_quick:.3f})")
    ms, (p, v) = best(sort_and_gather)
    check = (v.astype(np.float64) * np.arange(ITEMS)).sum() + p[:, 0].astype(np.float64).sum()
    print(f"numpy DataSort/1M      best_ms {ms:8.3f}   check {check:.6f}   (argsort and both gathers)")


if __name__ == "__main__":
    main()

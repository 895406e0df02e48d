#pragma once

#include <QThread>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

// Calls work(i) once for every i below `count`, in no set order, on up to four
// threads (this one among them, one per processor) once there are at least
// `worthThreads` indices; below that, here, in order. work(i) must touch only
// what index i owns: each is a unit that needs nothing from the others.
template <typename Work>
void parallelFor(size_t count, size_t worthThreads, const Work &work)
{
    constexpr int kMaxThreads = 4;
    const size_t threads = count < worthThreads ? 1 : size_t(std::clamp(QThread::idealThreadCount(), 1, kMaxThreads));
    std::atomic<size_t> next{0};
    const auto takeNext = [&] {
        for (size_t i = next++; i < count; i = next++)
            work(i);
    };
    std::vector<std::thread> helpers;
    for (size_t t = 1; t < threads && t < count; ++t)
        helpers.emplace_back(takeNext);
    takeNext();
    for (std::thread &helper : helpers)
        helper.join();
}

#pragma once

#include <QThread>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace pelorin {

// Runs work(i) for i in [0, count) on up to maxThreads threads (the calling one included),
// each taking the next index as it finishes. Batches of files go as fast as the cores allow.
template <typename Work>
void parallelFor(int count, Work work, int maxThreads = QThread::idealThreadCount())
{
    const int threads = std::clamp(std::min(maxThreads, count), 1, 16);
    std::atomic_int next{0};
    auto run = [&] {
        for (int i = next++; i < count; i = next++)
            work(i);
    };
    std::vector<std::thread> helpers;
    helpers.reserve(size_t(threads - 1));
    for (int t = 1; t < threads; ++t)
        helpers.emplace_back(run);
    run();
    for (std::thread& helper : helpers)
        helper.join();
}

}  // namespace pelorin

#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace zelct {

// Runs `work(i)` for every i below `count` on `jobs` threads and hands each result to
// `done(i, result)` on the calling thread in the order of i, as soon as it and every one
// before it are there. What is printed therefore never depends on which thread was quicker.
// The workers run at most a window of items ahead of `done`, so that a slow reader of the
// output keeps the results held in memory bounded. `work` must not throw; `done` may, and
// the workers are stopped and joined before it goes through.
template <typename Result>
void runInOrder(size_t count, unsigned jobs, const std::function<Result(size_t)>& work,
                const std::function<void(size_t, Result&)>& done) {
    if (jobs <= 1 || count <= 1) {
        for (size_t i = 0; i < count; ++i) {
            Result result = work(i);
            done(i, result);
        }
        return;
    }
    const size_t window = static_cast<size_t>(jobs) * 4;
    std::vector<std::optional<Result>> slots(count);
    std::mutex mutex;
    std::condition_variable changed;
    size_t next = 0;     // the next item a worker takes
    size_t printed = 0;  // the items handed to `done`
    bool stop = false;
    const auto worker = [&] {
        std::unique_lock<std::mutex> lock(mutex);
        while (true) {
            changed.wait(lock, [&] { return stop || next >= count || next < printed + window; });
            if (stop || next >= count) {
                return;
            }
            const size_t item = next++;
            lock.unlock();
            Result result = work(item);
            lock.lock();
            slots[item].emplace(std::move(result));
            changed.notify_all();
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::min<size_t>(jobs, count); ++i) {
        threads.emplace_back(worker);
    }
    const auto joinAll = [&] {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            stop = true;
        }
        changed.notify_all();
        for (std::thread& thread : threads) {
            thread.join();
        }
    };
    try {
        for (size_t i = 0; i < count; ++i) {
            std::unique_lock<std::mutex> lock(mutex);
            changed.wait(lock, [&] { return slots[i].has_value(); });
            Result result = std::move(*slots[i]);
            slots[i].reset();
            lock.unlock();
            done(i, result);
            lock.lock();
            printed = i + 1;
            changed.notify_all();
        }
    } catch (...) {
        joinAll();
        throw;
    }
    joinAll();
}

}  // namespace zelct

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
class InOrderRun {
public:
    InOrderRun(size_t count, unsigned jobs, const std::function<Result(size_t)>& work)
        : count_(count), window_(static_cast<size_t>(jobs) * 16), slots_(window_), work_(work) {
        for (unsigned i = 0; i < std::min<size_t>(jobs, count); ++i) {
            threads_.emplace_back([this] { runWorker(); });
        }
    }
    ~InOrderRun() { joinAll(); }
    InOrderRun(const InOrderRun&) = delete;
    InOrderRun& operator=(const InOrderRun&) = delete;

    // Each result in turn, as soon as it is there; the slot it leaves is free for a worker.
    // Waking a thread costs as much as checking a small file, so each side is woken only when
    // it waits for what the other just did.
    void handOver(const std::function<void(size_t, Result&)>& done) {
        for (size_t i = 0; i < count_; ++i) {
            std::unique_lock<std::mutex> lock(mutex_);
            std::optional<Result>& slot = slots_[i % window_];
            if (!slot.has_value()) {
                // Woken once for half a window of results rather than once for each.
                awaitedFrom_ = i;
                awaitedTo_ = std::min(i + window_ / 2, count_) - 1;
                resultReady_.wait(lock, [&] { return readyThrough(awaitedTo_); });
                awaitedFrom_ = kNone;
            }
            Result result = std::move(*slot);
            slot.reset();
            printed_ = i + 1;
            const bool wake = blockedWorkers_ > 0;
            lock.unlock();
            if (wake) {
                roomFree_.notify_all();
            }
            done(i, result);
        }
    }

private:
    // Workers stay within the window ahead of what was handed over, so that a result always
    // finds its slot of the ring free.
    void runWorker() {
        std::unique_lock<std::mutex> lock(mutex_);
        while (true) {
            ++blockedWorkers_;
            roomFree_.wait(lock,
                           [&] { return stop_ || next_ >= count_ || next_ < printed_ + window_; });
            --blockedWorkers_;
            if (stop_ || next_ >= count_) {
                return;
            }
            const size_t item = next_++;
            lock.unlock();
            Result result = work_(item);
            lock.lock();
            slots_[item % window_].emplace(std::move(result));
            if (awaitedFrom_ != kNone && readyThrough(awaitedTo_)) {
                resultReady_.notify_one();
            }
        }
    }

    // Whether the results from the awaited one through `last` are all there; the lock held.
    bool readyThrough(size_t last) const {
        for (size_t item = awaitedFrom_; item <= last; ++item) {
            if (!slots_[item % window_].has_value()) {
                return false;
            }
        }
        return true;
    }

    void joinAll() {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            stop_ = true;
        }
        roomFree_.notify_all();
        for (std::thread& thread : threads_) {
            thread.join();
        }
        threads_.clear();
    }

    const size_t count_;
    const size_t window_;
    std::vector<std::optional<Result>> slots_;  // a ring: item i in slot i % window
    const std::function<Result(size_t)>& work_;
    std::mutex mutex_;
    std::condition_variable resultReady_;  // the awaited result is there
    std::condition_variable roomFree_;     // the window moved on
    static constexpr size_t kNone = static_cast<size_t>(-1);
    size_t awaitedFrom_ = kNone;  // the results handOver waits for, from this one
    size_t awaitedTo_ = 0;        // through this one
    size_t blockedWorkers_ = 0;   // workers waiting for room
    size_t next_ = 0;             // the next item a worker takes
    size_t printed_ = 0;          // the items handed over
    bool stop_ = false;
    std::vector<std::thread> threads_;
};

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
    // The destructor stops and joins the workers, also when `done` throws.
    InOrderRun<Result> run(count, jobs, work);
    run.handOver(done);
}

}  // namespace zelct

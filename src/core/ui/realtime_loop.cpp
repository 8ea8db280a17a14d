#include "realtime_loop.h"

#include <limits>
#include <thread>

namespace velaro::ui {

RealtimeLoop::RealtimeLoop() : start_(std::chrono::steady_clock::now()) {}

int64_t RealtimeLoop::now() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_).count();
}

void RealtimeLoop::post(std::function<void()> fn) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        posted_.push_back(std::move(fn));
    }
    wake_.notify_one();
}

void RealtimeLoop::doEvents() {
    for (;;) {
        std::function<void()> fn;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (posted_.empty()) break;
            fn = std::move(posted_.front());
            posted_.pop_front();
        }
        fn();
    }
    // Each timer due now fires once.
    const int64_t t = now();
    for (;;) {
        int64_t when = std::numeric_limits<int64_t>::max();
        Timer* timer = timers_.next(t, t, when);
        if (!timer) break;
        timers_.fire(timer, now());
    }
}

void RealtimeLoop::sleep(int64_t ms) {
    if (ms > 0) std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void RealtimeLoop::waitForWork(int64_t maxMs) {
    int64_t when = std::numeric_limits<int64_t>::max();
    const int64_t t = now();
    if (timers_.next(t, t + maxMs, when)) maxMs = std::max<int64_t>(0, when - t);
    std::unique_lock<std::mutex> lock(mutex_);
    wake_.wait_for(lock, std::chrono::milliseconds(maxMs), [this] { return !posted_.empty(); });
}

void RealtimeLoop::runUntil(const std::function<bool()>& done) { run(done); }

void RealtimeLoop::run(const std::function<bool()>& done, int64_t tickMs) {
    while (!done()) {
        doEvents();
        if (done()) break;
        waitForWork(tickMs);
    }
}

void RealtimeLoop::timerChanged(Timer& timer) { timers_.changed(timer, now()); }

void RealtimeLoop::timerGone(Timer& timer) { timers_.gone(timer); }

}  // namespace velaro::ui

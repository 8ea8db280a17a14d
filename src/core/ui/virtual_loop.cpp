#include "virtual_loop.h"

#include <limits>

#include "control.h"

namespace velaro::ui {

void VirtualLoop::post(std::function<void()> fn) {
    std::lock_guard<std::mutex> lock(postMutex_);
    posted_.push_back(std::move(fn));
}

void VirtualLoop::runPosted() {
    for (;;) {
        std::function<void()> fn;
        {
            std::lock_guard<std::mutex> lock(postMutex_);
            if (posted_.empty()) return;
            fn = std::move(posted_.front());
            posted_.pop_front();
        }
        fn();
    }
}

void VirtualLoop::timerChanged(Timer& timer) { timers_.changed(timer, now_); }

void VirtualLoop::timerGone(Timer& timer) { timers_.gone(timer); }

void VirtualLoop::at(int64_t timeMs, std::function<void()> action) {
    actions_.emplace(timeMs, std::move(action));
}

void VirtualLoop::attachAudio(std::function<void(int64_t)> render, int sampleRate) {
    render_ = std::move(render);
    sampleRate_ = sampleRate;
    framesDone_ = now_ * sampleRate_ / 1000;
}

void VirtualLoop::moveClock(int64_t t) {
    if (t <= now_) return;
    now_ = t;
    if (render_ && sampleRate_ > 0) {
        int64_t target = now_ * sampleRate_ / 1000;
        if (target > framesDone_) {
            int64_t n = target - framesDone_;
            framesDone_ = target;
            render_(n);
        }
    }
}

void VirtualLoop::stepTo(int64_t target) {
    for (;;) {
        runPosted();
        // The earliest thing due: user actions first at equal times, then
        // timers by due time and the order they were started.
        int64_t when = std::numeric_limits<int64_t>::max();
        Timer* timer = timers_.next(now_, target, when);
        if (!actions_.empty()) {
            const int64_t at = std::max(actions_.begin()->first, now_);
            if (at <= target && at <= when) {
                moveClock(at);
                auto fn = std::move(actions_.begin()->second);
                actions_.erase(actions_.begin());
                fn();
                continue;
            }
        }
        if (!timer) break;
        moveClock(when);
        timers_.fire(timer, now_);
    }
    moveClock(target);
}

void VirtualLoop::doEvents() { stepTo(now_ + stepMs_); }

void VirtualLoop::sleep(int64_t ms) {
    if (ms > 0) moveClock(now_ + ms);
}

void VirtualLoop::advance(int64_t ms) { stepTo(now_ + ms); }

bool VirtualLoop::anythingScheduled() const {
    if (timers_.anyWaiting() || !actions_.empty()) return true;
    std::lock_guard<std::mutex> lock(const_cast<std::mutex&>(postMutex_));
    return !posted_.empty();
}

void VirtualLoop::runUntil(const std::function<bool()>& done) {
    while (!done()) {
        if (!anythingScheduled()) throw LoopStalled();
        doEvents();
    }
}

bool VirtualLoop::advanceUntil(const std::function<bool()>& done, int64_t limitMs) {
    int64_t end = now_ + limitMs;
    while (!done()) {
        if (now_ >= end) return false;
        stepTo(now_ + stepMs_);
    }
    return true;
}

}  // namespace velaro::ui

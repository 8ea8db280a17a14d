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

void VirtualLoop::timerChanged(Timer& timer) {
    auto it = timers_.find(&timer);
    if (!timer.active()) {
        if (it != timers_.end()) {
            // A timer stopped from inside its own handler keeps its slot until the handler ends.
            if (it->second.running) it->second.interval = 0;
            else timers_.erase(it);
        }
        return;
    }
    if (it != timers_.end() && it->second.interval == timer.interval()) return;
    Slot& s = timers_[&timer];
    s.interval = timer.interval();
    s.due = now_ + timer.interval();
    s.order = nextOrder_++;
}

void VirtualLoop::timerGone(Timer& timer) { timers_.erase(&timer); }

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
        // The earliest thing due: user actions first at equal times, then timers
        // by due time and the order they were started.
        int64_t best = std::numeric_limits<int64_t>::max();
        Timer* bestTimer = nullptr;
        uint64_t bestOrder = 0;
        for (auto& [t, s] : timers_) {
            if (s.running || s.interval <= 0) continue;
            int64_t when = std::max(s.due, now_);
            if (when < best || (when == best && s.order < bestOrder)) {
                best = when;
                bestTimer = t;
                bestOrder = s.order;
            }
        }
        bool actionFirst = false;
        if (!actions_.empty()) {
            int64_t when = std::max(actions_.begin()->first, now_);
            if (when <= best) {
                best = when;
                actionFirst = true;
            }
        }
        if (best > target) break;
        moveClock(best);
        if (actionFirst) {
            auto fn = std::move(actions_.begin()->second);
            actions_.erase(actions_.begin());
            fn();
            continue;
        }
        Slot& s = timers_[bestTimer];
        // Windows timers do not queue missed ticks: the next one is the next
        // multiple of the interval after now.
        s.due += s.interval;
        if (s.due <= now_) s.due += ((now_ - s.due) / s.interval + 1) * s.interval;
        s.running = true;
        bestTimer->fire();
        auto it = timers_.find(bestTimer);
        if (it != timers_.end()) {
            it->second.running = false;
            if (!bestTimer->active()) timers_.erase(it);
        }
    }
    moveClock(target);
}

void VirtualLoop::doEvents() { stepTo(now_ + stepMs_); }

void VirtualLoop::sleep(int64_t ms) {
    if (ms > 0) moveClock(now_ + ms);
}

void VirtualLoop::advance(int64_t ms) { stepTo(now_ + ms); }

bool VirtualLoop::anythingScheduled() const {
    for (auto& [t, s] : timers_)
        if (!s.running && s.interval > 0) return true;
    if (!actions_.empty()) return true;
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

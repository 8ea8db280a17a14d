#include "timer_schedule.h"

#include <algorithm>

#include "control.h"

namespace velaro::ui {

void TimerSchedule::changed(Timer& timer, int64_t now) {
    auto it = slots_.find(&timer);
    if (!timer.active()) {
        if (it != slots_.end()) {
            // Stopped from inside its own handler: the slot goes when the handler ends.
            if (it->second.running) it->second.interval = 0;
            else slots_.erase(it);
        }
        return;
    }
    if (it != slots_.end() && it->second.interval == timer.interval()) return;
    Slot& s = slots_[&timer];
    s.interval = timer.interval();
    s.due = now + timer.interval();
    s.order = nextOrder_++;
}

Timer* TimerSchedule::next(int64_t now, int64_t limit, int64_t& when) const {
    Timer* best = nullptr;
    uint64_t bestOrder = 0;
    for (const auto& [t, s] : slots_) {
        if (s.running || s.interval <= 0) continue;
        const int64_t at = std::max(s.due, now);
        if (at > limit) continue;
        if (!best || at < when || (at == when && s.order < bestOrder)) {
            best = t;
            when = at;
            bestOrder = s.order;
        }
    }
    return best;
}

void TimerSchedule::fire(Timer* timer, int64_t now) {
    auto it = slots_.find(timer);
    if (it == slots_.end()) return;
    Slot& s = it->second;
    s.due += s.interval;
    if (s.due <= now) s.due += ((now - s.due) / s.interval + 1) * s.interval;
    s.running = true;
    timer->fire();
    it = slots_.find(timer);
    if (it != slots_.end()) {
        it->second.running = false;
        if (!timer->active()) slots_.erase(it);
    }
}

bool TimerSchedule::anyWaiting() const {
    for (const auto& [t, s] : slots_)
        if (!s.running && s.interval > 0) return true;
    return false;
}

}  // namespace velaro::ui

#pragma once
// When each running timer is due, for the event loops. A timer is not fired
// again while its own handler runs, and ticks missed during a long handler or
// a sleep are not queued: the next one falls on the next multiple of the
// interval, as the old timers did.

#include <cstdint>
#include <map>

namespace velaro::ui {

class Timer;

class TimerSchedule {
public:
    // A timer's state changed at time `now`: start, restart or drop it.
    void changed(Timer& timer, int64_t now);
    void gone(Timer& timer) { slots_.erase(&timer); }
    // The first timer due at or before `limit`, with when it is due (never before now).
    Timer* next(int64_t now, int64_t limit, int64_t& when) const;
    // Fires `timer` at `now`: its handler runs and its next tick is set.
    void fire(Timer* timer, int64_t now);
    bool anyWaiting() const;

private:
    struct Slot {
        int64_t due = 0;
        int interval = 0;
        uint64_t order = 0;
        bool running = false;
    };
    std::map<Timer*, Slot> slots_;
    uint64_t nextOrder_ = 0;
};

}  // namespace velaro::ui

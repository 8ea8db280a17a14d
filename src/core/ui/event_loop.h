#pragma once
// The event loop the logic runs on. One thread runs all logic; other threads
// only post work to it. Handlers may let pending events run (doEvents) and
// forms may run nested loops until they close.

#include <cstdint>
#include <functional>

namespace velaro::ui {

class Timer;

class EventLoop {
public:
    virtual ~EventLoop() = default;
    // Milliseconds since the loop started.
    virtual int64_t now() const = 0;
    // Lets pending events, due timers and user actions run once.
    virtual void doEvents() = 0;
    // Queues fn to run on the logic thread. Safe from any thread.
    virtual void post(std::function<void()> fn) = 0;
    // A blocking wait: time and audio go on, no event or timer runs.
    virtual void sleep(int64_t ms) = 0;
    // A nested loop (a modal form) until done() holds.
    virtual void runUntil(const std::function<bool()>& done) = 0;

    // Bookkeeping for timer controls: called when a timer's enabled state,
    // interval or form changes, and when it is destroyed.
    virtual void timerChanged(Timer& timer) = 0;
    virtual void timerGone(Timer& timer) = 0;
};

}  // namespace velaro::ui

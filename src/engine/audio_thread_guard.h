#pragma once
// Marks the time the sound devices' callbacks run, so that test builds can
// catch an allocation, a lock or a blocking call made there (any of them can
// stall the callback past its deadline and make the sound drop out). The
// mark costs one thread-local store; test programs install the checks
// (tests/support/audio_guard.cpp), the program itself none.

namespace velaro::engine {

struct AudioThreadGuard {
    // True on a thread while it runs a device callback.
    static bool active() noexcept { return depth() > 0; }
    static int& depth() noexcept {
        static thread_local int d = 0;
        return d;
    }
};

class AudioCallbackScope {
public:
    AudioCallbackScope() noexcept { ++AudioThreadGuard::depth(); }
    ~AudioCallbackScope() { --AudioThreadGuard::depth(); }
    AudioCallbackScope(const AudioCallbackScope&) = delete;
    AudioCallbackScope& operator=(const AudioCallbackScope&) = delete;
};

}  // namespace velaro::engine

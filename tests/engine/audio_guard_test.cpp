// The audio-thread guard of the test programs catches what a callback must
// not do, and only inside a callback.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <mutex>
#include <thread>

#include "engine/audio_thread_guard.h"
#include "support/audio_guard.h"

using velaro::engine::AudioCallbackScope;
namespace t = velaro::testing;

TEST(AudioGuard, CatchesAllocationLocksAndSleepsInsideACallbackOnly) {
    std::mutex m;
    {
        // Outside a callback anything goes.
        auto p = std::make_unique<int[]>(100);
        std::lock_guard<std::mutex> lock(m);
        std::this_thread::sleep_for(std::chrono::microseconds(1));
    }
    EXPECT_EQ(t::audioGuardReport().faults, 0);
    {
        AudioCallbackScope scope;
        std::lock_guard<std::mutex> lock(m);
    }
    EXPECT_EQ(t::audioGuardReport().faults, 1);
    EXPECT_STREQ(t::audioGuardReport().first, "a mutex lock");
    {
        AudioCallbackScope scope;
        std::this_thread::sleep_for(std::chrono::microseconds(1));
    }
    EXPECT_EQ(t::audioGuardReport().faults, 2);
    if (t::audioGuardChecksAllocation()) {
        void* volatile raw = nullptr;  // kept: an unused malloc may be optimised away
        void* object = nullptr;
        {
            AudioCallbackScope scope;
            // Called as functions: a new-expression may be optimised away.
            object = ::operator new(8);
            raw = std::malloc(16);
        }
        ::operator delete(object);
        std::free(raw);
        EXPECT_EQ(t::audioGuardReport().faults, 4);
    }
    // These were on purpose: the test itself must not fail for them.
    t::resetAudioGuard();
}

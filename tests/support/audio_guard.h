#pragma once
// The audio-thread checks of a test program: while a sound device's callback
// runs, any allocation (operator new, malloc), mutex lock or sleep counts as
// a fault, and the program's tests fail at their end when one was seen.
// Linked into the test programs that play through devices.

namespace velaro::testing {

struct AudioGuardReport {
    long faults = 0;
    const char* first = nullptr;  // what the first fault was, or nullptr
};
AudioGuardReport audioGuardReport();
void resetAudioGuard();
// False under the sanitizers, which hook allocation themselves: then only
// locks and sleeps are checked.
bool audioGuardChecksAllocation();

}  // namespace velaro::testing

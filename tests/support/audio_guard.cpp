#include "audio_guard.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "engine/audio_thread_guard.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VELARO_GUARD_ALLOC 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define VELARO_GUARD_ALLOC 0
#endif
#endif
#ifndef VELARO_GUARD_ALLOC
#define VELARO_GUARD_ALLOC 1
#endif

namespace {

std::atomic<long> faults{0};
std::atomic<const char*> first{nullptr};

inline void fault(const char* what) noexcept {
    if (!velaro::engine::AudioThreadGuard::active()) return;
    const char* none = nullptr;
    first.compare_exchange_strong(none, what);
    faults.fetch_add(1, std::memory_order_relaxed);
    // For a debugger's backtrace of where it happened.
    static const bool stop = std::getenv("VELARO_AUDIO_GUARD_ABORT") != nullptr;
    if (stop) std::abort();
}

template <class F>
F next(const char* name) {
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace velaro::testing {

AudioGuardReport audioGuardReport() { return {faults.load(), first.load()}; }
void resetAudioGuard() {
    faults.store(0);
    first.store(nullptr);
}
bool audioGuardChecksAllocation() { return VELARO_GUARD_ALLOC != 0; }

}  // namespace velaro::testing

// Locks and sleeps, as every library (ours, FluidSynth, RtAudio's) calls them.
extern "C" {
int pthread_mutex_lock(pthread_mutex_t* m) {
    static auto real = next<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
    fault("a mutex lock");
    return real(m);
}
int pthread_cond_wait(pthread_cond_t* c, pthread_mutex_t* m) {
    static auto real = next<int (*)(pthread_cond_t*, pthread_mutex_t*)>("pthread_cond_wait");
    fault("a condition wait");
    return real(c, m);
}
int nanosleep(const struct timespec* req, struct timespec* rem) {
    static auto real = next<int (*)(const struct timespec*, struct timespec*)>("nanosleep");
    fault("a sleep");
    return real(req, rem);
}
int usleep(useconds_t us) {
    static auto real = next<int (*)(useconds_t)>("usleep");
    fault("a sleep");
    return real(us);
}
}

#if VELARO_GUARD_ALLOC
extern "C" void* __libc_malloc(size_t);
extern "C" void* __libc_calloc(size_t, size_t);
extern "C" void* __libc_realloc(void*, size_t);
extern "C" {
void* malloc(size_t n) {
    fault("malloc");
    return __libc_malloc(n);
}
void* calloc(size_t a, size_t b) {
    fault("calloc");
    return __libc_calloc(a, b);
}
void* realloc(void* p, size_t n) {
    fault("realloc");
    return __libc_realloc(p, n);
}
}
void* operator new(size_t n) {
    fault("operator new");
    if (void* p = __libc_malloc(n ? n : 1)) return p;
    throw std::bad_alloc();
}
void* operator new[](size_t n) {
    fault("operator new[]");
    if (void* p = __libc_malloc(n ? n : 1)) return p;
    throw std::bad_alloc();
}
void* operator new(size_t n, const std::nothrow_t&) noexcept {
    fault("operator new");
    return __libc_malloc(n ? n : 1);
}
void* operator new[](size_t n, const std::nothrow_t&) noexcept {
    fault("operator new[]");
    return __libc_malloc(n ? n : 1);
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, size_t) noexcept { std::free(p); }
void operator delete[](void* p, size_t) noexcept { std::free(p); }
#endif

namespace {

long total = 0;

// Each test starts clean; one whose callbacks did what they must not is
// named, and the program fails at its end.
class AudioGuardListener : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo&) override { velaro::testing::resetAudioGuard(); }
    void OnTestEnd(const ::testing::TestInfo& t) override {
        const auto r = velaro::testing::audioGuardReport();
        if (r.faults == 0) return;
        total += r.faults;
        std::fprintf(stderr, "audio guard: %s.%s: the audio callback made %ld forbidden calls, the first %s\n",
                     t.test_suite_name(), t.name(), r.faults, r.first ? r.first : "?");
    }
};

class AudioGuardCheck : public ::testing::Environment {
public:
    void TearDown() override { EXPECT_EQ(total, 0) << "forbidden calls in audio callbacks (see above)"; }
};

const bool installed = [] {
    ::testing::UnitTest::GetInstance()->listeners().Append(new AudioGuardListener);
    ::testing::AddGlobalTestEnvironment(new AudioGuardCheck);
    return true;
}();

}  // namespace

#pragma once
// Run-time errors of the old form runtime. Much of the program's logic runs
// with errors ignored statement by statement: a failing step throws VbError
// and the guard around that one step swallows it, so the next step runs.

#include <stdexcept>
#include <string>

namespace velaro {

enum class VbErr : int {
    InvalidCall = 5,
    Overflow = 6,
    OutOfMemory = 7,
    SubscriptOutOfRange = 9,
    DivisionByZero = 11,
    TypeMismatch = 13,
    FileNotFound = 53,
    BadFileMode = 54,
    DiskFull = 61,
    InputPastEnd = 62,
    PathFileAccess = 75,
    PathNotFound = 76,
    InvalidPropertyValue = 380,
    CancelError = 32755,
};

class VbError : public std::runtime_error {
public:
    explicit VbError(VbErr code, const std::string& what = {})
        : std::runtime_error(what.empty() ? "run-time error " + std::to_string(int(code)) : what),
          code_(code) {}
    VbErr code() const { return code_; }

private:
    VbErr code_;
};

// One statement under "errors ignored": runs fn, swallows the runtime's errors
// (and any standard failure such as a bad allocation) and says whether it ran through.
template <typename Fn>
bool resumeNext(Fn&& fn) noexcept {
    try {
        fn();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace velaro

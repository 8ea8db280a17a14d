#pragma once
// What the engine is: its version, checked at start against the one the logic expects.

#include <cstdint>

namespace velaro::engine {

// High word major, low word minor, as the audio library's version was given.
uint32_t engineVersion();

}  // namespace velaro::engine

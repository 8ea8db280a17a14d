#pragma once
// What the engine is: its version, checked at start against the one the logic expects.

#include <cstdint>

namespace velaro::engine {

// Major in the low word, minor in the high word, as the stream library packed it.
uint32_t engineVersion();

}  // namespace velaro::engine

#include "engine_info.h"

namespace velaro::engine {

// 2.1, packed as the stream library packed its version: major in the low
// word, minor in the high word.
uint32_t engineVersion() { return (1u << 16) | 2u; }

}  // namespace velaro::engine

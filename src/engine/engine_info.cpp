#include "engine_info.h"

namespace velaro::engine {

uint32_t engineVersion() { return (2u << 16) | 1u; }

}  // namespace velaro::engine

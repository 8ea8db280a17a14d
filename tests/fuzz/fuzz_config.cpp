// libFuzzer target: any bytes as config.vlr, read, then written and read
// again. (A font name holding a quote does not come back the same, as with
// the old runtime's writer: no round-trip property is asked.)
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/shell/config_vlr.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velaro;
    shell::ConfigVlr c;
    shell::readConfig(std::string_view(reinterpret_cast<const char*>(data), size), c);
    shell::ConfigVlr d;
    shell::readConfig(shell::writeConfig(c), d);
    return 0;
}

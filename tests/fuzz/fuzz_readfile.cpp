// libFuzzer target: any bytes through the song reader and the lyric layout check.
// clang++ -std=c++20 -g -O1 -fsanitize=fuzzer,address,undefined -Isrc -Itests \
//   tests/fuzz/fuzz_readfile.cpp src/core/*/*.cpp -o fuzz_readfile
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/base/paths.h"
#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velaro;
    static const std::string path = tempFolder() + "/velaro-fuzz.mid";
    writeWholeFile(path, std::string(reinterpret_cast<const char*>(data), size));
    ui::Headless ui;
    platform::InertPlatform inert;
    song::frmMain f(ui.rt, inert.get());
    f.setSongPath(path);
    f.ZeroVariables();
    f.readfile();
    f.SOLTON();
    f.senzatesto();
    return 0;
}

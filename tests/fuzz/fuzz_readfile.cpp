// libFuzzer target: any bytes through the song reader and the lyric layout check.
// Built by tests/fuzz/CMakeLists.txt: `make fuzz` fuzzes it, every other build replays its corpus.
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

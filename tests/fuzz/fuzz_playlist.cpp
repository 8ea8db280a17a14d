// libFuzzer target: any bytes as a playlist, as the remembered playlist name
// and as the window's settings file, then every sort, reverse and a save.
// Built by tests/fuzz/CMakeLists.txt: `make fuzz` fuzzes it, every other build replays its corpus.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include "core/base/paths.h"
#include "core/platform/inert.h"
#include "core/player/plist.h"
#include "core/ui/headless.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velaro;
    static const std::string dir = [] {
        const std::string d = tempFolder() + "/velaro-fuzz-playlist";
        std::filesystem::create_directories(d);
        std::filesystem::current_path(d);  // skin.ini is read from here
        return d;
    }();
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    writeWholeFile(dir + "/list.mpl", bytes);
    writeWholeFile(dir + "/songtemp.tmp", bytes);
    writeWholeFile(dir + "/skin.ini", bytes);
    ui::Headless ui;
    platform::InertPlatform inert;
    player::pList l(ui.rt, inert.get(), dir);
    l.load();  // reads songtemp.tmp
    l.LoadPlaylist(dir + "/list.mpl");
    l.LoadINIFile();
    l.mnuArtist_Click();
    l.mnuTitle_Click();
    l.mnuFilename_Click();
    l.mnuReverse_Click();
    l.WritePlaylist(dir + "/out.mpl");
    return 0;
}

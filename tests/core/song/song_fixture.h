#pragma once

#include <gtest/gtest.h>

#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/scripted_dialogs.h"
#include "core/ui/virtual_loop.h"
#include "support/song_bytes.h"

namespace velaro::testing {

struct SongFixture : ::testing::Test {
    ui::VirtualLoop loop;
    ui::ScriptedDialogs dialogs;
    ui::Runtime rt{loop, dialogs};
    platform::InertPlatform inert;
    song::frmMain f{rt, inert.get()};

    void read(const std::string& content, const std::string& name = "song.kar") {
        f.setSongPath(writeTemp(name, content));
        f.ZeroVariables();
        f.readfile();
    }
    // A format 1 file of the given track bodies (end-of-track added), division 480, tempo 500000.
    static std::string song(const std::vector<std::string>& bodies, int division = 480) {
        std::string s = smfHeader(1, static_cast<int>(bodies.size()), division);
        for (const auto& b : bodies) s += smfTrack(b + bytes({0x00, 0xFF, 0x2F, 0x00}));
        return s;
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> out;
        for (size_t i = 1; i < f.wordTable.size(); ++i)
            if (!f.wordTable[i].text.empty()) out.push_back(f.wordTable[i].text);
        return out;
    }
};

}  // namespace velaro::testing

#include "frm_main.h"

#include "../base/paths.h"

namespace velaro::song {

frmMain::frmMain(ui::Runtime& rt, platform::Platform& p)
    : ui::Form(rt, "frmMain"), platform(p), convertedPath(RPP(tempFolder()) + "converto.kar") {
    caption = "VELARO DECK";
}

}  // namespace velaro::song

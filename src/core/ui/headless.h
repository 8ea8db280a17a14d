#pragma once
// A runtime without a screen: the virtual clock and dialogs that answer from
// a script (the default button when none is queued). For the command line,
// tests and benchmarks.

#include "form.h"
#include "scripted_dialogs.h"
#include "virtual_loop.h"

namespace velaro::ui {

struct Headless {
    VirtualLoop loop;
    ScriptedDialogs dialogs;
    Runtime rt{loop, dialogs};
};

}  // namespace velaro::ui

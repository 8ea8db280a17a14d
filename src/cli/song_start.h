#pragma once
// What the window does from start to the first press of Play, shared by the
// commands that play a song: the performance is made, the song opened
// without the dialog, the sliders set.

#include <string>

#include "core/shell/frm_main.h"
#include "engine/engine_platform.h"
#include "song_options.h"

namespace velaro::cli {

// False, with the reason, when the song or the bank cannot be opened.
bool openSong(song::frmMain& f, engine::EnginePlatform& ep, const SongOptions& o, std::string& error);
// The tempo, key and volume sliders as the options set them.
void applySliders(song::frmMain& f, const SongOptions& o);

}  // namespace velaro::cli

#pragma once
// What the tag editor, the lyrics window and the players share for the whole run.

#include <string>

#include "mmp3.h"

namespace velaro::tags {

struct TagsState {
    std::string PlayerState = "false";  // "true", "false" or "pause"
    std::string PlayerFile;             // the file the skinned player holds
    bool TagEditorOpen = false;
    bool LyricsWindowOpen = false;
    bool MiniMode = false;
    Mmp3 mmp3;  // HasLyricsTag, LyricsSeen: state of the last file analysed
};

}  // namespace velaro::tags

// velaro-tx: turns a MIDI file whose words are lyric events (FF 05) into a
// karaoke file whose words are text events (FF 01) in a track named "Words",
// the form the song reader understands.
//
// usage: velaro-tx IN.mid OUT.kar      exit 0 written, 1 unreadable input, 2 usage

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "tx_convert.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: velaro-tx IN.mid OUT.kar\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    std::string s((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in.good() && !in.eof()) return 1;
    std::string out;
    if (!velaro::tools::convertLyricEvents(s, out)) {
        std::fprintf(stderr, "velaro-tx: %s is not a MIDI file\n", argv[1]);
        return 1;
    }
    std::ofstream o(argv[2], std::ios::binary | std::ios::trunc);
    o.write(out.data(), static_cast<std::streamsize>(out.size()));
    return o ? 0 : 1;
}

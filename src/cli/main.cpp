// velaro: the command line of VELARO DECK.

#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "commands.h"

namespace {

const char* kUsage =
    "usage: velaro COMMAND [ARGS]\n"
    "\n"
    "commands:\n"
    "  info FILE [--json]   read a song file (.mid, .kar) and print its model:\n"
    "                       tempo, channel rows, words and lines\n"
    "  render SONG -o OUT.wav [--bank FILE] [--tempo V] [--transpose N] [--volume V] [--rate HZ]\n"
    "                       play the song as the window does, offline, into a 16-bit stereo wave\n"
    "                       (tempo 0-127, 64 normal; transpose -10..10; volume 50-100, 75 normal)\n"
    "  play SONG [--out FILE.wav] [--sync FILE] [--bank FILE] [--tempo V] [--transpose N] [--volume V]\n"
    "                       play the song with its lyric page in the terminal; at the end the\n"
    "                       sync text; --out records what was played, --sync saves the sync text.\n"
    "                       Without a sound card (or with --no-device) it runs on the virtual clock\n"
    "  record SONG -o TAKE.wav [--mic FILE.wav] [--input NAME] [--quality ROW] [song options]\n"
    "  record --digital --seconds N -o TAKE.wav [--mic FILE.wav] [--input NAME] [--quality ROW]\n"
    "  record --audio FILE.mp3|wav -o TAKE.wav [--mic FILE.wav] [--remove-vocals] [--key N] [--speed P]\n"
    "      [backing options]\n"
    "                       a take as the Record button makes it: what plays plus the microphone,\n"
    "                       saved in the take format (ROW 1-11 of Wave Setup); --audio takes an audio\n"
    "                       backing, ending with it; --mic FILE.wav (or no\n"
    "                       sound card) makes it offline with the file as the microphone\n"
    "  calibrate [--input NAME]\n"
    "                       measure the sound card's round trip with clicks played and heard back\n"
    "                       (loop the output into the input); takes line the voice up by it\n"
    "  mp3info FILE [--json] what an MP3 file holds: MPEG facts, ID3v1 fields, Lyrics3 lyrics\n"
    "  tag FILE [--title T] [--artist A] [--album B] [--year Y] [--comment C] [--genre-pos N]\n"
    "      [--lyrics-file F | --no-lyrics]\n"
    "                       write the ID3v1 record and the Lyrics3 block as the tag editor saves\n"
    "  id3 FILE [--title T] [--artist A] [--album B] [--year Y] [--comment C]\n"
    "                       without options: the playlist's reading of the tag (JSON);\n"
    "                       with options: save as the small ID3 editor does (genre becomes 0)\n"
    "  encode IN.wav -o OUT.mp3 [--bitrate KBPS] [--quality fast|medium|high] [--channels stereo|mono]\n"
    "      [--vbr Q] [--crc] [--intensity]\n"
    "                       encode to MP3 as \"Wav to Mp3\" does (default 128 kbps constant rate,\n"
    "                       medium, stereo; --vbr 1 best to 10); Ctrl-C keeps a shorter MP3\n"
    "  normalize IN.wav -o OUT.wav [--percent P]\n"
    "                       raise the file so its peak is P% of full scale (default: the\n"
    "                       normaliser window's last percent, else 100); OUT may be IN\n"
    "  fx IN.wav -o OUT.wav --effect NAME[:FIELD=VALUE,...] [--effect ...]\n"
    "                       put effects on a wave file, in the order given, keeping their tail;\n"
    "                       NAME gargle, chorus, flanger, echo, distortion, compressor, parameq,\n"
    "                       reverb; FIELD as the effect's record names it (fWetDryMix, fLeftDelay...).\n"
    "                       render and play take the same --effect options\n"
    "  cd list [--device DEV|IMAGE.cue] [--json]\n"
    "                       the CD drives and the disc's track list, with CD-TEXT\n"
    "  cd rip --device DEV|IMAGE.cue --track N [-o OUT.wav | --wma OUT.wma --bitrate K]\n"
    "                       extract one track (from 1) to a wave file or WMA (K kbps, default 128)\n"
    "  cd play --device DEV|IMAGE.cue [--track N] [--no-device]\n"
    "                       play the disc from track N (default 1) to its end\n"
    "  playlist [FILE.mpl] [--add PATH ...] [--add-dir DIR ...] [--sort artist|title|filename]\n"
    "      [--reverse] [--shuffle SEED] [-o OUT.mpl] [--json]\n"
    "                       a playlist as the playlist window keeps it: loads FILE.mpl (a missing\n"
    "                       one is an empty list), adds files (a .mpl is appended) and folders\n"
    "                       (sub-folders first; .mp3 .mid .wav), then sorts, reverses and shuffles\n"
    "                       in that order; prints number, title, artist and path of each row.\n"
    "                       SEED sets the random source (taken modulo 2^24): the same seed gives\n"
    "                       the same order. -o saves the list as the window saves it (CR LF, Windows-1252)\n"
    "  backing FILE -o OUT.wav [--remove-vocals] [--vseq V0,...,V7] [--veq V0,...,V7] [--bass-boost V]\n"
    "      [--no-bass-boost] [--rate HZ] [--key N] [--speed P]\n"
    "                       what the backing player plays (MP3, WAV, FLAC, OGG or a module), offline:\n"
    "                       the vocal remover, its two equalisers (0-19, 10 flat), the bass stream's\n"
    "                       level (0 loudest, 10 silent), key in semitones, speed in percent\n"
    "  play FILE.mp3|wav|mod [--remove-vocals] [backing options]\n"
    "                       play an audio backing in real time\n"
    "  lyrics FILE [--json] the lyric text the tag editor loads from FILE (an MP3's Lyrics3 lyrics,\n"
    "                       or a .txt/.lrc) and the sorted entries it makes of it\n"
    "  lyrics FILE --at SECONDS[,SECONDS...]\n"
    "                       where the lyrics window's walk stands at each clock position (JSON lines)\n"
    "  karaoke FILE.mp3     play the file in the terminal with its lyrics window's lines\n"
    "  help                 this text\n";

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty()) {
        std::cerr << kUsage;
        return 2;
    }
    const std::string cmd = args.front();
    args.erase(args.begin());
    if (cmd == "--help" || cmd == "-h" || cmd == "help") {
        std::cout << kUsage;
        return 0;
    }
    try {
        if (cmd == "info") return velaro::cli::runInfo(args);
        if (cmd == "render") return velaro::cli::runRender(args);
        if (cmd == "record") return velaro::cli::runRecord(args);
        if (cmd == "calibrate") return velaro::cli::runCalibrate(args);
        if (cmd == "play") return velaro::cli::runPlay(args);
        if (cmd == "mp3info") return velaro::cli::runMp3Info(args);
        if (cmd == "tag") return velaro::cli::runTag(args);
        if (cmd == "id3") return velaro::cli::runId3(args);
        if (cmd == "encode") return velaro::cli::runEncode(args);
        if (cmd == "normalize") return velaro::cli::runNormalize(args);
        if (cmd == "fx") return velaro::cli::runFx(args);
        if (cmd == "cd") return velaro::cli::runCd(args);
        if (cmd == "playlist") return velaro::cli::runPlaylist(args);
        if (cmd == "backing") return velaro::cli::runBacking(args);
        if (cmd == "lyrics") return velaro::cli::runLyrics(args);
        if (cmd == "karaoke") return velaro::cli::runKaraoke(args);
    } catch (const std::exception& e) {
        std::cerr << "velaro " << cmd << ": " << e.what() << '\n';
        return 1;
    }
    std::cerr << "velaro: unknown command '" << cmd << "'\n" << kUsage;
    return 2;
}

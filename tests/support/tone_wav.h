#pragma once
// Wave files of sine tones written through libsndfile, for the encoder and
// normaliser tests and benchmarks, and the decoding of MP3 files back.

#include <cstdint>
#include <string>

namespace velaro::testing {

struct Tone {
    int rate = 44100;
    int channels = 2;
    int format = 0;  // libsndfile's SF_FORMAT_WAV | subtype; 0 gives 16-bit PCM WAV
    double seconds = 1.0;
    double amplitude = 0.5;  // of full scale
    double hz = 440;
};

// Writes the tone; returns the number of frames written.
int64_t writeTone(const std::string& path, const Tone& t);
// The largest absolute sample value of the file as libsndfile reads it in
// doubles (whole-number formats read as fractions of full scale), and its frames.
double peakOf(const std::string& path, int64_t* frames = nullptr);

struct Decoded {
    bool ok = false;
    long rate = 0;
    int channels = 0;
    int64_t frames = 0;
    double peak = 0;
};
// Decodes an MP3 with libmpg123 (gapless), counting its frames.
Decoded decodeMp3(const std::string& path);

// The encoder delay and padding in the LAME info frame at the start of an MP3; -1 when there is none.
struct LameTag {
    int delay = -1;
    int padding = -1;
    bool info = false;  // "Info" (constant rate) rather than "Xing"
};
LameTag lameTagOf(const std::string& path);

// The bytes of an MP3 of a 330 Hz stereo tone, encoded with LAME at 128 kbps.
std::string mp3Tone(double seconds);

}  // namespace velaro::testing

// The file decoder on files made by the tools users' files come from: lame
// for MP3, libsndfile for WAV/FLAC/OGG, and on bytes that are none of them.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include "engine/audio_file_decoder.h"
#include "support/tone_wav.h"

namespace fs = std::filesystem;
using velaro::engine::AudioFileDecoder;

namespace {

fs::path tempDir() {
    const fs::path d = fs::temp_directory_path() / ("decoder-" + std::to_string(::getpid()));
    fs::create_directories(d);
    return d;
}

// Frequency by zero crossings of the left channel.
double frequency(const std::vector<float>& frames, int channels, int rate) {
    int crossings = 0;
    for (size_t i = channels; i < frames.size(); i += channels)
        if (frames[i - channels] < 0 && frames[i] >= 0) ++crossings;
    return crossings / (double(frames.size() / channels) / rate);
}

std::vector<float> readAll(AudioFileDecoder& d) {
    std::vector<float> all, block(4096 * 2);
    for (int n; (n = d.read(block.data(), 4096)) > 0;)
        all.insert(all.end(), block.begin(), block.begin() + size_t(n) * d.channels());
    return all;
}

}  // namespace

TEST(AudioFileDecoder, WaveAndMp3DecodeToTheirOwnRateAndLength) {
    const fs::path dir = tempDir();
    const std::string wav = (dir / "tone.wav").string();
    velaro::testing::writeTone(wav, {.rate = 22050, .channels = 1, .seconds = 2.0});
    AudioFileDecoder d;
    ASSERT_TRUE(d.openStream(wav)) << d.error();
    EXPECT_EQ(d.kind(), AudioFileDecoder::Kind::SoundFile);
    EXPECT_EQ(d.rate(), 22050);
    EXPECT_EQ(d.channels(), 1);
    EXPECT_EQ(d.lengthFrames(), 44100);
    auto pcm = readAll(d);
    EXPECT_EQ(pcm.size(), 44100u);
    EXPECT_NEAR(frequency(pcm, 1, 22050), 440.0, 2.0);

    const std::string mp3 = (dir / "tone.mp3").string();
    velaro::testing::writeTone(wav, {.seconds = 3.0});
    ASSERT_EQ(std::system(("lame --quiet -b 128 '" + wav + "' '" + mp3 + "'").c_str()), 0);
    ASSERT_TRUE(d.openStream(mp3)) << d.error();
    EXPECT_EQ(d.kind(), AudioFileDecoder::Kind::Mpeg);
    EXPECT_EQ(d.rate(), 44100);
    EXPECT_EQ(d.channels(), 2);
    // Gapless: lame's padding is taken off again.
    EXPECT_NEAR(double(d.lengthFrames()), 3.0 * 44100, 1152.0);
    pcm = readAll(d);
    EXPECT_EQ(int64_t(pcm.size() / 2), d.lengthFrames());
    EXPECT_NEAR(frequency(pcm, 2, 44100), 440.0, 2.0);

    // A seek lands where asked, and reading goes on from there.
    ASSERT_TRUE(d.seek(44100));
    std::vector<float> block(1000 * 2);
    EXPECT_EQ(d.read(block.data(), 1000), 1000);
    EXPECT_EQ(d.position(), 45100);
    fs::remove_all(dir);
}

TEST(AudioFileDecoder, RefusesWhatIsNoAudioAndSaysWhy) {
    const fs::path dir = tempDir();
    AudioFileDecoder d;
    EXPECT_FALSE(d.open((dir / "missing.mp3").string()));
    EXPECT_EQ(d.streamErrorCode(), 2);
    EXPECT_EQ(d.kind(), AudioFileDecoder::Kind::None);

    std::mt19937 rng(7);
    for (int size : {0, 3, 417, 70000}) {
        const std::string junk = (dir / ("junk" + std::to_string(size) + ".mp3")).string();
        std::ofstream out(junk, std::ios::binary);
        for (int i = 0; i < size; ++i) out.put(char(rng()));
        out.close();
        EXPECT_FALSE(d.open(junk)) << size;
        EXPECT_EQ(d.streamErrorCode(), 41) << size;
        EXPECT_NE(d.moduleErrorCode(), 0) << size;
        float buf[64];
        EXPECT_EQ(d.read(buf, 32), 0);
    }
    fs::remove_all(dir);
}

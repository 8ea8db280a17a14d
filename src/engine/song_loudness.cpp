#include "song_loudness.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "song_player.h"
#include "synth.h"

namespace velaro::engine {

struct LoudnessMeter::State {
    ebur128_state* st = nullptr;
};

LoudnessMeter::LoudnessMeter(int sampleRate) : state_(new State) {
    state_->st = ebur128_init(2, static_cast<unsigned long>(sampleRate), EBUR128_MODE_I);
}

LoudnessMeter::~LoudnessMeter() {
    if (state_->st) ebur128_destroy(&state_->st);
    delete state_;
}

void LoudnessMeter::add(const float* interleaved, size_t frames) {
    if (state_->st && frames) ebur128_add_frames_float(state_->st, interleaved, frames);
}

double LoudnessMeter::integrated() const {
    double lufs = -std::numeric_limits<double>::infinity();
    if (!state_->st || ebur128_loudness_global(state_->st, &lufs) != EBUR128_SUCCESS)
        return -std::numeric_limits<double>::infinity();
    return lufs;
}

SongLoudness::SongLoudness() = default;
SongLoudness::~SongLoudness() = default;

std::unique_ptr<Synth> SongLoudness::synthFor(const std::string& bank) {
    // A fresh synthesiser each time: one that has played before keeps traces
    // (its reverb's tail among them) that would make the same song measure
    // differently. The bank's samples come from FluidSynth's cache.
    auto synth = std::make_unique<Synth>(kAnalysisRate);
    if (!bank.empty()) synth->loadBank(bank);
    return synth;
}

double SongLoudness::measure(const Segment& seg, const std::string& bank, const ChannelSetup& setup,
                             const std::atomic<bool>& cancel) {
    if (!seg.hasNotes()) return -std::numeric_limits<double>::infinity();
    std::unique_ptr<Synth> synth = synthFor(bank);
    // The song source itself walks the song, so what is measured is what plays.
    SongPlayer player(kAnalysisRate);
    player.swapSynth(synth.get());
    player.play(&seg, 0);
    LoudnessMeter meter(kAnalysisRate);
    constexpr int kBlock = 1024;
    std::vector<float> l(kBlock), r(kBlock), lr(2 * kBlock);
    // A second of ringing after the end counts too; the gate drops the silence.
    int tailBlocks = kAnalysisRate / kBlock + 1;
    // The song's first events sound, then the window's channel setup goes over them, as at Play.
    player.process(l.data(), r.data(), 1);
    for (int ch = 0; ch < 16; ++ch) {
        if (setup.program[ch] >= 0) player.sendMidi(ch, 0xC0, setup.program[ch], 0);
        if (setup.volume[ch] >= 0) player.sendMidi(ch, 0xB0, 7, setup.volume[ch]);
    }
    while (tailBlocks > 0) {
        if (cancel.load(std::memory_order_relaxed)) return std::numeric_limits<double>::quiet_NaN();
        std::fill(l.begin(), l.end(), 0.0f);
        std::fill(r.begin(), r.end(), 0.0f);
        player.process(l.data(), r.data(), kBlock);
        for (int i = 0; i < kBlock; ++i) {
            lr[2 * i] = l[i];
            lr[2 * i + 1] = r[i];
        }
        meter.add(lr.data(), kBlock);
        if (!player.playing()) --tailBlocks;
    }
    player.swapSynth(nullptr);
    player.process(l.data(), r.data(), 0);
    return meter.integrated();
}

float SongLoudness::levelFor(double lufs) {
    if (!std::isfinite(lufs) || lufs < -70.0) return 1.0f;
    const double db = std::clamp(kReferenceLufs - lufs, -24.0, 30.0);
    return static_cast<float>(std::pow(10.0, db / 20.0));
}

}  // namespace velaro::engine

#include "song_player.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <thread>

#include "synth.h"

namespace velaro::engine {

SongPlayer::SongPlayer(int sampleRate)
    : rate_(sampleRate), l_(AudioEngine::kMaxBlock), r_(AudioEngine::kMaxBlock), fx_(2 * AudioEngine::kMaxBlock) {}

SongPlayer::~SongPlayer() = default;

void SongPlayer::push(const Command& c) {
    // The ring holds 1024 commands; the audio thread empties it every block,
    // so a full ring only waits for one block.
    while (!commands_.push(c)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void SongPlayer::play(const Segment* seg, double startTicks) {
    seek_.store(startTicks, std::memory_order_release);
    playing_.store(seg != nullptr, std::memory_order_release);
    Command c;
    c.kind = Command::Play;
    c.seg = seg;
    c.start = startTicks;
    push(c);
}

void SongPlayer::stop() {
    playing_.store(false, std::memory_order_release);
    Command c;
    c.kind = Command::Stop;
    push(c);
}

void SongPlayer::sendMidi(int channel, int status, int data1, int data2) {
    Command c;
    c.kind = Command::Midi;
    c.channel = channel & 15;
    c.a = status & 0xF0;
    c.b = data1 & 0x7F;
    c.c = data2 & 0x7F;
    push(c);
}

void SongPlayer::setTranspose(int channel, int semitones) {
    Command c;
    c.kind = Command::Transpose;
    c.channel = channel & 15;
    c.a = std::clamp(semitones, -127, 127);
    push(c);
}

void SongPlayer::setMasterTempo(float factor) {
    factorShown_.store(factor, std::memory_order_relaxed);
    Command c;
    c.kind = Command::Tempo;
    c.factor = std::max(0.0f, factor);
    push(c);
}

void SongPlayer::swapSynth(Synth* synth) {
    Command c;
    c.kind = Command::Swap;
    c.synth = synth;
    push(c);
}

void SongPlayer::setLevel(float level, bool now) {
    levelTarget_.store(level, std::memory_order_relaxed);
    if (now) levelNow_.store(true, std::memory_order_release);
}

void SongPlayer::setEffectChain(std::unique_ptr<dsp::EffectChain> chain) {
    Command c;
    c.kind = Command::Chain;
    c.chain = chain.get();
    c.serial = ++chainsSent_;
    chains_.emplace_back(chainsSent_, std::move(chain));
    push(c);
    // Chains older than the one the audio thread last took up are out of its hands.
    const uint64_t taken = chainTaken_.load(std::memory_order_acquire);
    std::erase_if(chains_, [&](const auto& held) { return held.first < taken; });
}

void SongPlayer::setEffectParams(int slot, const dsp::EffectParams& p) {
    Command c;
    c.kind = Command::Params;
    c.a = slot;
    c.params = p;
    push(c);
}

void SongPlayer::silence() noexcept {
    // Released, not cut: the notes ring out through their own release. The
    // pedals come up too, or a held note would never reach its release.
    if (synth_) {
        synth_->allNotesOff();
        for (int ch = 0; ch < 16; ++ch) {
            synth_->controlChange(ch, 64, 0);
            synth_->controlChange(ch, 66, 0);
        }
    }
    std::memset(sounding_, 0, sizeof sounding_);
}

void SongPlayer::dispatch(const SeqEvent& e, bool notes) noexcept {
    if (!synth_) return;
    const int ch = e.status & 15;
    switch (e.status & 0xF0) {
        case 0x90:
            if (e.data2 > 0) {
                if (!notes) return;
                const int key = std::clamp(e.data1 + transpose_[ch], 0, 127);
                if (sounding_[ch][e.data1]) synth_->noteOff(ch, sounding_[ch][e.data1] - 1);
                sounding_[ch][e.data1] = static_cast<uint8_t>(key + 1);
                synth_->noteOn(ch, key, e.data2);
                return;
            }
            [[fallthrough]];
        case 0x80:
            if (sounding_[ch][e.data1]) {
                synth_->noteOff(ch, sounding_[ch][e.data1] - 1);
                sounding_[ch][e.data1] = 0;
            }
            return;
        case 0xA0:
            if (notes) synth_->keyPressure(ch, e.data1, e.data2);
            return;
        case 0xB0: synth_->controlChange(ch, e.data1, e.data2); return;
        case 0xC0: synth_->programChange(ch, e.data1); return;
        case 0xD0: synth_->channelPressure(ch, e.data1); return;
        case 0xE0: synth_->pitchBend(ch, (e.data2 << 7) | e.data1); return;
        default: return;
    }
}

void SongPlayer::apply(const Command& c) noexcept {
    switch (c.kind) {
        case Command::Play: {
            silence();
            seg_ = c.seg;
            running_ = seg_ != nullptr;
            if (!seg_) return;
            pos_ = std::clamp(c.start, 0.0, seg_->length);
            // Chase: what the song set up before the start point (programs,
            // controllers, bends) is in force from the first note on.
            next_ = 0;
            while (next_ < seg_->events.size() && seg_->events[next_].time < pos_) dispatch(seg_->events[next_++], false);
            tempoIndex_ = seg_->tempoIndexAt(pos_);
            return;
        }
        case Command::Stop:
            running_ = false;
            silence();
            return;
        case Command::Midi: {
            SeqEvent e{0, static_cast<uint8_t>(c.a | c.channel), static_cast<uint8_t>(c.b), static_cast<uint8_t>(c.c)};
            dispatch(e, true);
            return;
        }
        case Command::Transpose: transpose_[c.channel] = c.a; return;
        case Command::Tempo: factor_ = c.factor; return;
        case Command::Swap:
            if (synth_) synth_->allSoundsOff();
            synth_ = c.synth;
            std::memset(sounding_, 0, sizeof sounding_);
            return;
        case Command::Chain:
            chain_ = c.chain;
            chainTaken_.store(c.serial, std::memory_order_release);
            return;
        case Command::Params:
            if (chain_ && c.a >= 0 && c.a < chain_->size()) {
                dsp::Effect& e = chain_->at(c.a);
                e.setParams(c.params);
                // Nothing has sounded through it yet: no need to glide there.
                if (chain_->fresh()) e.reset();
            }
            return;
    }
}

void SongPlayer::process(float* left, float* right, int frames) noexcept {
    Command c;
    while (commands_.pop(c)) apply(c);
    const float target = levelTarget_.load(std::memory_order_relaxed);
    if (levelNow_.exchange(false, std::memory_order_acquire)) level_ = target;
    // A quarter of a second from one level to the next: no click, no jump.
    levelStep_ = level_ == target ? 0.0f : (target - level_) / (0.25f * static_cast<float>(rate_));

    int done = 0;
    while (done < frames) {
        if (running_ && seg_) {
            // What is due sounds before the frames that follow it.
            while (tempoIndex_ + 1 < seg_->tempos.size() && seg_->tempos[tempoIndex_ + 1].time <= pos_) ++tempoIndex_;
            while (next_ < seg_->events.size() && seg_->events[next_].time <= pos_) dispatch(seg_->events[next_++], true);
            if (pos_ >= seg_->length) {
                pos_ = seg_->length;
                running_ = false;
                silence();
            }
            seek_.store(pos_, std::memory_order_release);
            playing_.store(running_, std::memory_order_release);
        }
        int n = std::min(frames - done, AudioEngine::kMaxBlock);
        const bool moving = running_ && seg_;
        const double us = moving ? seg_->tempos[tempoIndex_].usPerQuarter : 500000.0;
        const double ticksPerFrame = kMusicTicksPerQuarter * factor_ * 1e6 / (us * rate_);
        if (moving && ticksPerFrame > 0) {
            // Stop the block at the next event, tempo change or the end, so
            // each lands on its own frame.
            double boundary = seg_->length;
            if (next_ < seg_->events.size()) boundary = std::min(boundary, seg_->events[next_].time);
            if (tempoIndex_ + 1 < seg_->tempos.size())
                boundary = std::min(boundary, seg_->tempos[tempoIndex_ + 1].time);
            const double until = std::max(1.0, std::ceil((boundary - pos_) / ticksPerFrame));
            if (until < n) n = static_cast<int>(until);
        }
        // The chain runs on when the synthesiser is silent: echoes and reverb ring out.
        const bool effects = chain_ && chain_->size() > 0;
        if (synth_ || effects) {
            if (synth_) {
                synth_->render(l_.data(), r_.data(), n);
            } else {
                std::fill_n(l_.data(), n, 0.0f);
                std::fill_n(r_.data(), n, 0.0f);
            }
            for (int i = 0; i < n; ++i) {
                if (levelStep_ != 0.0f) {
                    level_ += levelStep_;
                    if ((levelStep_ > 0) == (level_ >= target)) {
                        level_ = target;
                        levelStep_ = 0;
                    }
                }
                if (effects) {
                    fx_[2 * i] = l_[i] * level_;
                    fx_[2 * i + 1] = r_[i] * level_;
                } else {
                    left[done + i] += l_[i] * level_;
                    right[done + i] += r_[i] * level_;
                }
            }
            if (effects) {
                chain_->process(fx_.data(), n);
                for (int i = 0; i < n; ++i) {
                    left[done + i] += fx_[2 * i];
                    right[done + i] += fx_[2 * i + 1];
                }
            }
        }
        perf_ += n * ticksPerFrame;
        if (moving) {
            pos_ = std::min(pos_ + n * ticksPerFrame, seg_->length);
            seek_.store(pos_, std::memory_order_release);
        }
        done += n;
    }
    perfTicks_.store(perf_, std::memory_order_release);
}

}  // namespace velaro::engine

#pragma once
// The platform with the engine's real services behind it: the audio engine,
// the synthesiser performance, programs and files. Services that later work
// fills in stay inert until then.

#include <memory>

#include "audio_engine.h"
#include "cd_drives.h"
#include "cd_wma_encoder.h"
#include "engine_meter_capture.h"
#include "engine_streams.h"
#include "engine_wave_device.h"
#include "icu_collation.h"
#include "media_graph_engine.h"
#include "mp3_encoder.h"
#include "normaliser.h"
#include "core/platform/inert.h"
#include "performance_engine.h"
#include "posix_process.h"
#include "pulse_mixer.h"
#include "song_effects_engine.h"

namespace velaro::engine {

class EnginePlatform {
public:
    explicit EnginePlatform(int sampleRate = 44100);
    // The device stops first: no callback reaches a service being destroyed.
    ~EnginePlatform() { audio_.stopDevice(); }
    platform::Platform& get() { return inert_.get(); }
    AudioEngine& audio() { return audio_; }
    PerformanceEngine& performance() { return performance_; }
    EngineWaveDevice& wave() { return wave_; }
    SongEffectsEngine& songEffects() { return songEffects_; }
    EngineCdLibrary& cd() { return cd_; }
    EngineStreams& streams() { return streams_; }
    EngineMediaGraph& media() { return media_; }

private:
    AudioEngine audio_;
    PerformanceEngine performance_;
    SongEffectsEngine songEffects_;
    PosixProcess processes_;
    EngineStreams streams_{audio_};
    LameMp3Encoder mp3_;
    SndfileNormaliser normaliser_;
    IcuCollation collation_;
    EngineWaveDevice wave_{audio_};
    EngineMeterCapture meter_{audio_.mic(), audio_.sampleRate()};
    EngineCdLibrary cd_{&audio_};
    FfmpegWmaEncoder wma_;
    EngineMediaGraph media_{audio_};
    std::unique_ptr<PulseMixer> mixer_;  // none without a sound server: the inert one stays
    platform::InertPlatform inert_;
};

}  // namespace velaro::engine

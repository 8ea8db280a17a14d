#pragma once
// The outside services a form model uses, gathered in one place.

#include "audio_streams.h"
#include "cd_library.h"
#include "encoders.h"
#include "file_system.h"
#include "media_graph.h"
#include "meter_capture.h"
#include "performance.h"
#include "process_launcher.h"
#include "song_effects.h"
#include "sound_devices.h"
#include "system_mixer.h"
#include "wave_device.h"
#include "window_service.h"

namespace velaro::platform {

struct Platform {
    Performance* performance = nullptr;
    AudioStreams* streams = nullptr;
    SongEffects* songEffects = nullptr;
    SoundDevices* devices = nullptr;
    MediaGraph* media = nullptr;
    WaveDevice* wave = nullptr;
    SystemMixer* mixer = nullptr;
    MeterCapture* meter = nullptr;
    Mp3Encoder* mp3 = nullptr;
    WmaEncoder* wma = nullptr;
    Normaliser* normaliser = nullptr;
    CdLibrary* cd = nullptr;
    ProcessLauncher* processes = nullptr;
    FileSystem* files = nullptr;
    WindowService* windows = nullptr;
};

}  // namespace velaro::platform

// A disc image played through a real sound server: the CD source runs in the
// device's callback, where the test programs' audio guard watches it.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "core/platform/cd_library.h"
#include "engine/audio_engine.h"
#include "engine/cd_drives.h"
#include "support/cd_image.h"
#include "support/pulse_daemon.h"

using namespace velaro;
namespace vt = velaro::testing;

namespace {
class CdDevice : public vt::PulseServer {};
}  // namespace

TEST_F(CdDevice, ADiscPlaysThroughTheCardAndMovesOn) {
    const std::string dir = (std::filesystem::temp_directory_path() / "cd-device").string();
    std::filesystem::create_directories(dir);
    const std::string cue = vt::writeImage(dir, "dev", vt::plainDisc(2, 75));  // one second a track
    engine::AudioEngine audio(44100);
    engine::EngineCdLibrary cd(&audio, false);
    cd.addDrive(cue);
    std::string error;
    ASSERT_TRUE(audio.startDevice(error)) << error;
    const platform::CdStreamId s = cd.StreamCreate(0, 0, 0);
    ASSERT_NE(s, 0u);
    ASSERT_TRUE(cd.ChannelPlay(s, true));
    // Bounded by tries, not asserted on time: the card plays the track through.
    bool moved = false;
    for (int i = 0; i < 400 && !moved; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        moved = cd.ChannelGetPosition(s) > 4 * 2352;
    }
    EXPECT_TRUE(moved) << "the stream's position never moved on the card";
    audio.stopDevice();
    std::filesystem::remove_all(dir);
}

// Rip speed from a disc image: ten minutes of CD audio in three tracks, read
// through paranoia into the wave file as the ripper does, as a multiple of
// real time (the aim: limited by the disk, 200x or more), against reading
// the image's bytes alone; then one track to WMA.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include "core/cd/rip.h"
#include "engine/cd_drives.h"
#include "engine/cd_wma_encoder.h"
#include "support/cd_image.h"

using namespace velaro;

namespace {

double seconds(std::chrono::steady_clock::time_point from) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - from).count();
}

}  // namespace

int main() {
    const char* tmp = std::getenv("TMPDIR");
    const std::string dir = std::string(tmp ? tmp : "/tmp") + "/bench-cd";
    std::filesystem::create_directories(dir);
    velaro::testing::ImageDisc disc = velaro::testing::plainDisc(3, 75 * 200);  // 3 x 200 s
    const std::string cue = velaro::testing::writeImage(dir, "bench", disc);
    const double audioSeconds = 600.0;

    // The image read straight, as the reference of what the disk gives.
    auto t = std::chrono::steady_clock::now();
    {
        std::ifstream in(dir + "/bench.bin", std::ios::binary);
        std::vector<char> buf(1 << 20);
        while (in.read(buf.data(), static_cast<std::streamsize>(buf.size())) || in.gcount() > 0) {
        }
    }
    const double plain = seconds(t);

    engine::EngineCdLibrary cd(nullptr, false);
    cd.addDrive(cue);
    double best = 1e9;
    for (int round = 0; round < 3; ++round) {
        t = std::chrono::steady_clock::now();
        for (int track = 0; track < 3; ++track)
            cd::ripToWave(cd, 0, track, dir + "/TRACK.WAV", nullptr);
        best = std::min(best, seconds(t));
    }
    std::printf("cd rip to wave: %.0f s of audio in %.3f s = %.0fx real time (best of 3)\n", audioSeconds, best,
                audioSeconds / best);
    std::printf("  image read alone: %.3f s = %.0fx real time; rip / read = %.2f\n", plain, audioSeconds / plain,
                best / plain);

    engine::FfmpegWmaEncoder wma;
    t = std::chrono::steady_clock::now();
    cd::ripToWma(cd, wma, 0, 0, dir + "/TRACK1.WMA", 128000, nullptr, nullptr, nullptr);
    const double w = seconds(t);
    std::printf("cd rip to WMA 128 kbps: 200 s of audio in %.2f s = %.0fx real time\n", w, 200.0 / w);
    std::filesystem::remove_all(dir);
    return 0;
}

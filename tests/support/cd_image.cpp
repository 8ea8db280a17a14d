#include "cd_image.h"

#include <cmath>
#include <cstdio>
#include <fstream>

namespace velaro::testing {

std::vector<uint8_t> trackBytes(const ImageDisc& disc, int index) {
    const ImageTrack& t = disc.tracks.at(index);
    std::vector<uint8_t> bytes(static_cast<size_t>(t.sectors) * 2352);
    // A tone per track with a counter in the low bits, so that no two sectors
    // agree and a swapped byte order shows.
    for (size_t f = 0; f < bytes.size() / 4; ++f) {
        const double v = std::sin(2 * M_PI * (220.0 * (index + 1)) * static_cast<double>(f) / 44100.0);
        const auto l = static_cast<int16_t>(std::lround(v * 12000) + static_cast<int>(f % 7));
        const auto r = static_cast<int16_t>(-l + index);
        bytes[4 * f] = static_cast<uint8_t>(l & 0xFF);
        bytes[4 * f + 1] = static_cast<uint8_t>((l >> 8) & 0xFF);
        bytes[4 * f + 2] = static_cast<uint8_t>(r & 0xFF);
        bytes[4 * f + 3] = static_cast<uint8_t>((r >> 8) & 0xFF);
    }
    return bytes;
}

std::string writeImage(const std::string& dir, const std::string& name, const ImageDisc& disc) {
    const std::string bin = dir + "/" + name + ".bin";
    const std::string cue = dir + "/" + name + ".cue";
    std::ofstream b(bin, std::ios::binary | std::ios::trunc);
    std::ofstream c(cue, std::ios::binary | std::ios::trunc);
    if (disc.cdText) {
        c << "PERFORMER \"" << disc.performer << "\"\r\n";
        c << "TITLE \"" << disc.title << "\"\r\n";
    }
    c << "FILE \"" << name << ".bin\" BINARY\r\n";
    int sector = 0;
    for (size_t i = 0; i < disc.tracks.size(); ++i) {
        const ImageTrack& t = disc.tracks[i];
        char number[8];
        std::snprintf(number, sizeof number, "%02zu", i + 1);
        c << "  TRACK " << number << (t.data ? " MODE1/2352" : " AUDIO") << "\r\n";
        if (disc.cdText && !t.data) {
            c << "    TITLE \"" << t.title << "\"\r\n";
            c << "    PERFORMER \"" << t.performer << "\"\r\n";
        }
        char msf[16];
        std::snprintf(msf, sizeof msf, "%02d:%02d:%02d", sector / (75 * 60), (sector / 75) % 60, sector % 75);
        c << "    INDEX 01 " << msf << "\r\n";
        std::vector<uint8_t> bytes = trackBytes(disc, static_cast<int>(i));
        if (t.data) {
            // A plausible mode 1 sector: sync pattern, then zeros.
            for (int s = 0; s < t.sectors; ++s) {
                uint8_t* p = bytes.data() + static_cast<size_t>(s) * 2352;
                std::fill(p, p + 2352, 0);
                p[0] = 0;
                for (int k = 1; k < 11; ++k) p[k] = 0xFF;
                p[15] = 1;
            }
        }
        b.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        sector += t.sectors;
    }
    return cue;
}

ImageDisc plainDisc(int n, int sectors) {
    ImageDisc d;
    for (int i = 0; i < n; ++i) d.tracks.push_back(ImageTrack{sectors, false, "", ""});
    return d;
}

}  // namespace velaro::testing

// libFuzzer target: any bytes as a wave file for the readers of takes,
// microphone files, the encoder's and normaliser's input, and as an audio
// backing for the file decoder.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/base/paths.h"
#include "engine/audio_file_decoder.h"
#include "engine/wave_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace velaro;
    static const std::string path = tempFolder() + "/velaro-fuzz-wave.wav";
    writeWholeFile(path, std::string(reinterpret_cast<const char*>(data), size));
    std::vector<float> block(2 * 1024);
    try {
        engine::WaveReader r(path, 44100);
        // A bounded read: a header may claim hours.
        for (int i = 0; i < 64 && r.read(block.data(), 1024) > 0; ++i) {
        }
    } catch (const std::exception&) {
    }
    engine::AudioFileDecoder d;
    if (d.openStream(path)) {
        for (int i = 0; i < 64 && d.read(block.data(), 1024) > 0; ++i) {
        }
        d.seek(d.lengthFrames() / 2);
        d.read(block.data(), 1024);
    }
    return 0;
}

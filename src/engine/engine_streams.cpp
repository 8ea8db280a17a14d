#include "engine_streams.h"

#include <alsa/asoundlib.h>
#include <rtaudio/RtAudio.h>

#include "engine_info.h"

namespace velaro::engine {

namespace {
void quietAlsa(const char*, int, const char*, int, const char*, ...) {}
}  // namespace

uint32_t EngineStreams::GetVersion() { return engineVersion(); }

void EngineStreams::scan() {
    if (scanned_) return;
    scanned_ = true;
    snd_lib_error_set_handler(&quietAlsa);
    std::vector<RtAudio::Api> compiled;
    RtAudio::getCompiledApi(compiled);
    for (RtAudio::Api api : {RtAudio::LINUX_PULSE, RtAudio::LINUX_ALSA}) {
        if (std::find(compiled.begin(), compiled.end(), api) == compiled.end()) continue;
        try {
            RtAudio rt(api);
            rt.showWarnings(false);
            const unsigned n = rt.getDeviceCount();
            for (unsigned i = 0; i < n; ++i) {
                const RtAudio::DeviceInfo info = rt.getDeviceInfo(i);
                if (!info.probed || info.inputChannels == 0) continue;
                names_.push_back(info.name);
                enabled_.push_back(info.name.find("onitor") == std::string::npos);
            }
        } catch (const std::exception&) {
        }
        if (!names_.empty()) break;
    }
}

std::vector<std::string> EngineStreams::RecordInputs() {
    scan();
    return names_;
}

bool EngineStreams::RecordInputEnabled(int input) {
    scan();
    return input >= 0 && static_cast<size_t>(input) < enabled_.size() && enabled_[static_cast<size_t>(input)];
}

}  // namespace velaro::engine

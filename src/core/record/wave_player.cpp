#include "wave_player.h"

#include <cstdlib>

#include "../base/vb_number.h"
#include "../shell/frm_main.h"

namespace velaro::record {

std::string waveErrorText(platform::WaveDevice& device, int error, std::string* firstWord) {
    // The device's text comes in a 1024-character buffer and ends at its first NUL.
    std::string text = device.ErrorString(error);
    if (text.size() > 1024) text.resize(1024);
    if (size_t nul = text.find('\0'); nul != std::string::npos) text.resize(nul);
    if (!firstWord) return text;
    const size_t space = text.find(' ');
    if (space == std::string::npos) {
        *firstWord = text;
        return {};
    }
    *firstWord = text.substr(0, space);
    return text.substr(space + 1);
}

WavePlayer::WavePlayer(song::frmMain& form) : f_(form), device_(*form.platform.wave) { OpenDevice(""); }

WavePlayer::~WavePlayer() {
    try {
        CloseDevice();
    } catch (const WaveError&) {
        // Nothing is left to tell at the end of the object's life.
    }
}

void WavePlayer::fail(int error, const char* operation) {
    throw WaveError(error, std::string("WavePlayer::") + operation, waveErrorText(device_, error));
}

void WavePlayer::setWait(bool on) {
    // A Boolean True is -1: the mode becomes 2, the command interface's wait flag.
    const int32_t asBoolean = on ? -1 : 0;
    waitMode_ = 2 * std::abs(asBoolean);
}

void WavePlayer::OpenDevice(const std::string& name) {
    if (deviceId_ != 0) CloseDevice();
    uint32_t id = 0;
    if (int err = device_.Open(name, id)) fail(err, "OpenDevice");
    deviceId_ = id;
}

void WavePlayer::CloseDevice() {
    if (deviceId_ == 0) return;
    const int err = device_.Close(deviceId_);
    deviceId_ = 0;
    if (err) fail(err, "CloseDevice");
}

void WavePlayer::OpenFile(const std::string& name) { OpenDevice(name); }

int32_t WavePlayer::status(uint32_t item, const char* operation) {
    int32_t value = 0;
    const int err = device_.Status(deviceId_, item, value);
    // The property reads do not raise: a failed read gives 0.
    if (err) {
        if (operation) fail(err, operation);
        return 0;
    }
    return value;
}

void WavePlayer::ChangeSetting(uint32_t item, int32_t value) {
    if (deviceId_ == 0) return;
    platform::WaveFormat fmt;
    fmt.formatTag = status(platform::kItemFormatTag, "ChangeSetting");
    fmt.bitsPerSample = status(platform::kItemBitsPerSample, "ChangeSetting");
    fmt.channels = status(platform::kItemChannels, "ChangeSetting");
    fmt.samplesPerSec = status(platform::kItemSamplesPerSec, "ChangeSetting");
    switch (item) {
        case platform::kItemFormatTag: fmt.formatTag = value; break;
        case platform::kItemBitsPerSample: fmt.bitsPerSample = value; break;
        case platform::kItemChannels: fmt.channels = value; break;
        case platform::kItemSamplesPerSec: fmt.samplesPerSec = value; break;
        default: break;
    }
    // Every write sends the whole format, its two derived fields worked out anew.
    const double bytesPerSample = fmt.bitsPerSample / 8.0;
    fmt.avgBytesPerSec = static_cast<int32_t>(roundHalfEven(bytesPerSample * fmt.channels * fmt.samplesPerSec));
    fmt.blockAlign = static_cast<int>(roundHalfEven(bytesPerSample * fmt.channels));
    if (int err = device_.Set(deviceId_, fmt)) fail(err, "ChangeSetting");
}

namespace {
// A position outside the take starts at 0; an end not after the start, or past the take, is its end.
void clampRange(int32_t length, int32_t& from, int32_t& to) {
    if (from < 0 || from > length) from = 0;
    if (!(to > from && to <= length)) to = length;
}

bool isAudioBacking(const std::string& path) {
    if (path.size() < 3) return false;
    const std::string ext = path.substr(path.size() - 3);
    return ext == "mp3" || ext == "wav" || ext == "MP3" || ext == "WAV";
}
}  // namespace

void WavePlayer::Play(int32_t& from, int32_t& to) {
    f_.playStopFlag = false;
    if (deviceId_ == 0) return;
    try {
        const int32_t len = status(platform::kItemLength, "Play");
        clampRange(len, from, to);
        const int err = device_.Play(deviceId_, from, to);
        // The end of the sound does not end the wait: only the stop buttons do.
        do {
            f_.rt.loop.doEvents();
            if (err) fail(err, "Play");
        } while (!f_.playStopFlag);
        f_.recordStopFlag = true;
        if (int stopErr = device_.Stop(deviceId_)) fail(stopErr, "Play");
    } catch (const WaveError&) {
        f_.rt.dialogs.msgBox("Non è possibile fare il playback", ui::vbOKOnly, "VELARO DECK");
    }
}

void WavePlayer::Delete(int32_t from, int32_t to) {
    const int32_t len = status(platform::kItemLength, "Delete");
    clampRange(len, from, to);
    if (int err = device_.Delete(deviceId_, from, to)) fail(err, "Delete");
}

void WavePlayer::Record(int32_t, int32_t, bool) {
    const int err = device_.Record(deviceId_);
    // The song starts after the device, so the take holds its first note.
    if (!isAudioBacking(f_.songPath())) f_.PLAYERMIDI();
    do {
        f_.rt.loop.doEvents();
        if (f_.playStopFlag) f_.recordStopFlag = true;
        if (err) fail(err, "Record");
    } while (!f_.recordStopFlag);
    // One second more, so the last notes ring into the take.
    const int64_t start = f_.rt.loop.now();
    while (f_.rt.loop.now() - start < 1000) f_.rt.loop.doEvents();
    f_.Timer2.setEnabled(false);
    f_.Timer3.setEnabled(false);
    f_.Timer.setEnabled(false);
}

void WavePlayer::SaveAs(const std::string& name) {
    if (name.empty()) return;
    f_.mousePointer = ui::kPointerHourglass;
    if (int err = device_.Save(deviceId_, name)) fail(err, "Save");
}

void WavePlayer::Save() { SaveAs(Filename()); }

std::string WavePlayer::Filename() {
    std::string name;
    if (device_.Info(deviceId_, name)) return {};
    if (name.size() > 512) name.resize(512);
    return name;
}

int32_t WavePlayer::length() { return status(platform::kItemLength, nullptr); }

uint8_t WavePlayer::channels() { return static_cast<uint8_t>(status(platform::kItemChannels, nullptr)); }

void WavePlayer::setChannels(uint8_t v) {
    if (v != 1 && v != 2) return;
    ChangeSetting(platform::kItemChannels, v);
}

uint8_t WavePlayer::FormatTag() { return static_cast<uint8_t>(status(platform::kItemFormatTag, nullptr)); }

void WavePlayer::setFormatTag(uint8_t v) { ChangeSetting(platform::kItemFormatTag, v); }

int32_t WavePlayer::samplerate() { return status(platform::kItemSamplesPerSec, nullptr); }

void WavePlayer::setSamplerate(int32_t v) { ChangeSetting(platform::kItemSamplesPerSec, v); }

uint8_t WavePlayer::BitsPerSample() { return static_cast<uint8_t>(status(platform::kItemBitsPerSample, nullptr)); }

void WavePlayer::setBitsPerSample(uint8_t v) { ChangeSetting(platform::kItemBitsPerSample, v); }

int32_t WavePlayer::AvgBytesPerSecond() { return status(platform::kItemAvgBytesPerSec, nullptr); }

int32_t WavePlayer::Position() { return status(platform::kItemPosition, nullptr); }

void WavePlayer::StopRecording() {
    if (int err = device_.Stop(deviceId_)) fail(err, "StopRecording");
}

void WavePlayer::Reset() { OpenDevice(""); }

}  // namespace velaro::record

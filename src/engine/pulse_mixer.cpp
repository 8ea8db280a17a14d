#include "pulse_mixer.h"

#include <pulse/context.h>
#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/mainloop.h>
#include <pulse/operation.h>
#include <pulse/volume.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "audio_engine.h"
#include "mic_input.h"

namespace velaro::engine {

namespace {

constexpr auto kAnswerTime = std::chrono::seconds(2);

struct OperationUnref {
    void operator()(pa_operation* o) const { pa_operation_unref(o); }
};

int percentOf(const pa_cvolume& v) {
    const double p = std::round(double(pa_cvolume_max(&v)) * 100.0 / PA_VOLUME_NORM);
    return std::clamp(static_cast<int>(p), 0, 100);
}

pa_volume_t volumeOf(int percent) {
    return static_cast<pa_volume_t>(std::lround(std::clamp(percent, 0, 100) * double(PA_VOLUME_NORM) / 100.0));
}

// What a volume query hands back: the channels as they are, so that a new
// level keeps the balance.
struct VolumeReply {
    bool found = false;
    pa_cvolume volume{};
};

void onSink(pa_context*, const pa_sink_info* i, int eol, void* data) {
    if (eol == 0 && i) {
        auto* r = static_cast<VolumeReply*>(data);
        r->found = true;
        r->volume = i->volume;
    }
}

void onSourceVolume(pa_context*, const pa_source_info* i, int eol, void* data) {
    if (eol == 0 && i) {
        auto* r = static_cast<VolumeReply*>(data);
        r->found = true;
        r->volume = i->volume;
    }
}

struct SourceList {
    std::vector<std::pair<std::string, std::string>> inputs, monitors;
};

void onSourceList(pa_context*, const pa_source_info* i, int eol, void* data) {
    if (eol != 0 || !i) return;
    auto* r = static_cast<SourceList*>(data);
    auto& into = i->monitor_of_sink != PA_INVALID_INDEX ? r->monitors : r->inputs;
    into.emplace_back(i->name ? i->name : "", i->description ? i->description : (i->name ? i->name : ""));
}

struct Defaults {
    std::string sink, source;
};

void onServer(pa_context*, const pa_server_info* i, void* data) {
    auto* r = static_cast<Defaults*>(data);
    if (!i) return;
    r->sink = i->default_sink_name ? i->default_sink_name : "";
    r->source = i->default_source_name ? i->default_source_name : "";
}

void onSuccess(pa_context*, int success, void* data) { *static_cast<int*>(data) = success; }

}  // namespace

void PulseMixer::LoopFree::operator()(pa_mainloop* m) const { pa_mainloop_free(m); }

void PulseMixer::ContextFree::operator()(pa_context* c) const {
    pa_context_disconnect(c);
    pa_context_unref(c);
}

PulseMixer::PulseMixer(AudioEngine& audio) : audio_(audio) {}

// The context goes before its loop.
PulseMixer::~PulseMixer() { context_.reset(); }

std::unique_ptr<PulseMixer> PulseMixer::connect(AudioEngine& audio, std::string& error) {
    std::unique_ptr<PulseMixer> m(new PulseMixer(audio));
    if (!m->open(error)) return nullptr;
    return m;
}

bool PulseMixer::open(std::string& error) {
    loop_.reset(pa_mainloop_new());
    if (!loop_) {
        error = "pa_mainloop_new failed";
        return false;
    }
    context_.reset(pa_context_new(pa_mainloop_get_api(loop_.get()), "VELARO DECK mixer"));
    if (!context_) {
        error = "pa_context_new failed";
        return false;
    }
    // Never start a server of our own: no server means the machine has no mixer for us.
    if (pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        error = std::string("pa_context_connect: ") + pa_strerror(pa_context_errno(context_.get()));
        return false;
    }
    const bool ready = runUntil([&] { return pa_context_get_state(context_.get()) == PA_CONTEXT_READY; });
    if (!ready) {
        const int e = pa_context_errno(context_.get());
        error = std::string("pa_context_connect: ") + (e ? pa_strerror(e) : "the sound server did not answer");
        return false;
    }
    return true;
}

template <class Done>
bool PulseMixer::runUntil(Done done) {
    const auto deadline = std::chrono::steady_clock::now() + kAnswerTime;
    while (!done()) {
        if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context_.get()))) return false;
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(deadline -
                                                                                std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        if (pa_mainloop_prepare(loop_.get(), static_cast<int>(left.count())) < 0) return false;
        if (pa_mainloop_poll(loop_.get()) < 0) return false;
        if (pa_mainloop_dispatch(loop_.get()) < 0) return false;
    }
    return true;
}

void PulseMixer::fail(const std::string& what) {
    const int e = pa_context_errno(context_.get());
    raiseError("PulseAudio: " + what + ": " + (e ? pa_strerror(e) : "the sound server did not answer"));
}

bool PulseMixer::finish(pa_operation* raw, const char* what) {
    std::unique_ptr<pa_operation, OperationUnref> op(raw);
    if (!op) {
        fail(what);
        return false;
    }
    if (!runUntil([&] { return pa_operation_get_state(op.get()) != PA_OPERATION_RUNNING; })) {
        // Cancelled, the reply can no longer reach the caller's stack.
        pa_operation_cancel(op.get());
        fail(what);
        return false;
    }
    return true;
}

bool PulseMixer::defaults(std::string& sink, std::string& source) {
    Defaults d;
    if (!finish(pa_context_get_server_info(context_.get(), onServer, &d), "pa_context_get_server_info")) return false;
    sink = d.sink;
    source = d.source;
    return true;
}

std::vector<PulseMixer::Source> PulseMixer::sources() {
    SourceList list;
    std::vector<Source> out;
    if (!finish(pa_context_get_source_info_list(context_.get(), onSourceList, &list),
                "pa_context_get_source_info_list"))
        return out;
    // A sink's monitor is rarely what a singer means to record: those come last.
    for (const auto* group : {&list.inputs, &list.monitors})
        for (const auto& [name, description] : *group) out.push_back({name, description});
    return out;
}

int PulseMixer::MasterVolume() {
    std::string sink, source;
    if (!defaults(sink, source)) return 0;
    VolumeReply r;
    if (!finish(pa_context_get_sink_info_by_name(context_.get(), sink.c_str(), onSink, &r),
                "pa_context_get_sink_info_by_name"))
        return 0;
    return r.found ? percentOf(r.volume) : 0;
}

void PulseMixer::SetMasterVolume(int v) {
    std::string sink, source;
    if (!defaults(sink, source)) return;
    VolumeReply r;
    if (!finish(pa_context_get_sink_info_by_name(context_.get(), sink.c_str(), onSink, &r),
                "pa_context_get_sink_info_by_name") ||
        !r.found)
        return;
    pa_cvolume_scale(&r.volume, volumeOf(v));
    int ok = 0;
    if (finish(pa_context_set_sink_volume_by_name(context_.get(), sink.c_str(), &r.volume, onSuccess, &ok),
               "pa_context_set_sink_volume_by_name") &&
        !ok)
        fail("pa_context_set_sink_volume_by_name");
}

std::vector<std::string> PulseMixer::RecordSources() {
    std::vector<std::string> names;
    for (const Source& s : sources()) names.push_back(s.description);
    return names;
}

int PulseMixer::RecordSource() {
    std::string sink, source;
    if (!defaults(sink, source)) return -1;
    const std::vector<Source> all = sources();
    for (size_t i = 0; i < all.size(); ++i)
        if (all[i].name == source) return static_cast<int>(i);
    return -1;
}

void PulseMixer::SetRecordSource(int index) {
    const std::vector<Source> all = sources();
    // A source the machine lacks is refused: the default stays, and reads back.
    if (index < 0 || static_cast<size_t>(index) >= all.size()) return;
    int ok = 0;
    if (finish(pa_context_set_default_source(context_.get(), all[static_cast<size_t>(index)].name.c_str(), onSuccess,
                                             &ok),
               "pa_context_set_default_source") &&
        !ok)
        fail("pa_context_set_default_source");
}

int PulseMixer::RecordVolume() {
    std::string sink, source;
    if (!defaults(sink, source)) return 0;
    VolumeReply r;
    if (!finish(pa_context_get_source_info_by_name(context_.get(), source.c_str(), onSourceVolume, &r),
                "pa_context_get_source_info_by_name"))
        return 0;
    return r.found ? percentOf(r.volume) : 0;
}

void PulseMixer::SetRecordVolume(int v) {
    std::string sink, source;
    if (!defaults(sink, source)) return;
    VolumeReply r;
    if (!finish(pa_context_get_source_info_by_name(context_.get(), source.c_str(), onSourceVolume, &r),
                "pa_context_get_source_info_by_name") ||
        !r.found)
        return;
    pa_cvolume_scale(&r.volume, volumeOf(v));
    int ok = 0;
    if (finish(pa_context_set_source_volume_by_name(context_.get(), source.c_str(), &r.volume, onSuccess, &ok),
               "pa_context_set_source_volume_by_name") &&
        !ok)
        fail("pa_context_set_source_volume_by_name");
}

void PulseMixer::SetSelectedLine(int line) {
    // Only the two lines exist; another number leaves the selection as it was.
    if (line == kMicLine || line == kAudioLine) selectedLine_ = line;
}

int PulseMixer::LineVolume() { return selectedLine_ == kMicLine ? audio_.mic().level() : audioVolume_; }

void PulseMixer::SetLineVolume(int v) {
    v = std::clamp(v, 0, 100);
    if (selectedLine_ == kMicLine)
        audio_.setMicLevel(v);
    else
        audioVolume_ = v;
}

bool PulseMixer::LineMute() { return selectedLine_ == kMicLine ? audio_.mic().muted() : audioMute_; }

void PulseMixer::SetLineMute(bool on) {
    if (selectedLine_ == kAudioLine) {
        audioMute_ = on;
        return;
    }
    const bool was = audio_.mic().muted();
    audio_.setMicMute(on);
    if (was != on) raiseMuteChange(on);
}

}  // namespace velaro::engine

#include "cd_wma_encoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}
#include <sndfile.h>

#include <vector>

#include "core/base/cp1252.h"
#include "core/base/paths.h"
#include "core/base/safe_file.h"

namespace velaro::engine {

namespace {
constexpr int kErrorCreate = 33;  // the old library's "couldn't create the file"
constexpr int kErrorCodec = 44;   // no codec
constexpr int kErrorHandle = 5;
constexpr int kErrorWrite = 2;
}  // namespace

struct FfmpegWmaEncoder::File {
    std::string path;   // what the user asked for
    std::string temp;   // written beside it, renamed over it at the end
    AVFormatContext* oc = nullptr;
    AVCodecContext* enc = nullptr;
    AVStream* stream = nullptr;
    AVFrame* frame = nullptr;
    AVPacket* packet = nullptr;
    int channels = 2;
    bool headerWritten = false;
    bool failed = false;
    std::vector<float> pending[2];  // samples not yet in a frame, per channel
    int64_t pts = 0;

    ~File() {
        av_packet_free(&packet);
        av_frame_free(&frame);
        avcodec_free_context(&enc);
        if (oc) {
            if (oc->pb) avio_closep(&oc->pb);
            avformat_free_context(oc);
        }
    }

    bool drain() {
        while (true) {
            const int r = avcodec_receive_packet(enc, packet);
            if (r == AVERROR(EAGAIN) || r == AVERROR_EOF) return true;
            if (r < 0) return false;
            av_packet_rescale_ts(packet, enc->time_base, stream->time_base);
            packet->stream_index = stream->index;
            if (av_interleaved_write_frame(oc, packet) < 0) return false;
        }
    }

    bool ensureHeader() {
        if (headerWritten) return true;
        headerWritten = true;
        return avformat_write_header(oc, nullptr) >= 0;
    }

    bool sendFrames(bool flush) {
        const int size = enc->frame_size > 0 ? enc->frame_size : 2048;
        while (pending[0].size() >= static_cast<size_t>(size) || (flush && !pending[0].empty())) {
            const int n = std::min<int>(size, static_cast<int>(pending[0].size()));
            if (av_frame_make_writable(frame) < 0) return false;
            frame->nb_samples = size;
            for (int c = 0; c < channels; ++c) {
                auto* out = reinterpret_cast<float*>(frame->data[c]);
                std::copy(pending[c].begin(), pending[c].begin() + n, out);
                std::fill(out + n, out + size, 0.0f);
                pending[c].erase(pending[c].begin(), pending[c].begin() + n);
            }
            frame->pts = pts;
            pts += size;
            if (avcodec_send_frame(enc, frame) < 0 || !drain()) return false;
        }
        if (flush) {
            if (avcodec_send_frame(enc, nullptr) < 0 || !drain()) return false;
        }
        return true;
    }
};

FfmpegWmaEncoder::FfmpegWmaEncoder() = default;
FfmpegWmaEncoder::~FfmpegWmaEncoder() = default;

std::vector<int> FfmpegWmaEncoder::EncodeGetRates(int freq, int chans, int) {
    if (!avcodec_find_encoder(AV_CODEC_ID_WMAV2)) {
        error_ = kErrorCodec;
        return {};
    }
    if (freq != 44100 || chans < 1 || chans > 2) return {};
    // The rates the codec is offered at for CD audio, best first.
    return {320000, 256000, 192000, 160000, 128000, 96000, 80000, 64000, 48000, 32000};
}

FfmpegWmaEncoder::File* FfmpegWmaEncoder::file(uint32_t handle) {
    auto it = files_.find(handle);
    if (it == files_.end()) {
        error_ = kErrorHandle;
        return nullptr;
    }
    return it->second.get();
}

uint32_t FfmpegWmaEncoder::EncodeOpenFile(int freq, int chans, int, int bitrate, const std::string& path) {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_WMAV2);
    if (!codec) {
        error_ = kErrorCodec;
        return 0;
    }
    if (chans < 1 || chans > 2 || freq <= 0 || bitrate <= 0) {
        error_ = 20;
        return 0;
    }
    auto f = std::make_unique<File>();
    f->path = path;
    f->temp = siblingTempName(path);
    f->channels = chans;
    if (avformat_alloc_output_context2(&f->oc, nullptr, "asf", f->temp.c_str()) < 0 || !f->oc) {
        error_ = kErrorCreate;
        return 0;
    }
    // Without a packet size of its own the muxer's packets bloat at high rates.
    av_opt_set_int(f->oc->priv_data, "packet_size", 8192, 0);
    f->stream = avformat_new_stream(f->oc, nullptr);
    f->enc = avcodec_alloc_context3(codec);
    f->frame = av_frame_alloc();
    f->packet = av_packet_alloc();
    if (!f->stream || !f->enc || !f->frame || !f->packet) {
        error_ = 1;
        return 0;
    }
    f->enc->sample_fmt = AV_SAMPLE_FMT_FLTP;
    f->enc->sample_rate = freq;
    av_channel_layout_default(&f->enc->ch_layout, chans);
    f->enc->bit_rate = bitrate;
    f->enc->time_base = AVRational{1, freq};
    if (f->oc->oformat->flags & AVFMT_GLOBALHEADER) f->enc->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(f->enc, codec, nullptr) < 0 ||
        avcodec_parameters_from_context(f->stream->codecpar, f->enc) < 0) {
        error_ = kErrorCodec;
        return 0;
    }
    f->stream->time_base = f->enc->time_base;
    f->frame->format = f->enc->sample_fmt;
    av_channel_layout_copy(&f->frame->ch_layout, &f->enc->ch_layout);
    f->frame->sample_rate = freq;
    f->frame->nb_samples = f->enc->frame_size > 0 ? f->enc->frame_size : 2048;
    if (av_frame_get_buffer(f->frame, 0) < 0 || avio_open(&f->oc->pb, f->temp.c_str(), AVIO_FLAG_WRITE) < 0) {
        error_ = kErrorCreate;
        return 0;
    }
    const uint32_t h = next_++;
    files_[h] = std::move(f);
    error_ = 0;
    return h;
}

bool FfmpegWmaEncoder::EncodeSetTag(uint32_t handle, const std::string& tag, const std::string& text) {
    File* f = file(handle);
    if (!f) return false;
    if (tag.empty() && text.empty()) return true;  // the end of the tag set: the header goes with the first samples
    if (f->headerWritten) return false;
    // The five fields of the content description object go there under the muxer's
    // names; the WM/ names go as they are into the extended description.
    static const std::map<std::string, std::string> described = {
        {"Title", "title"}, {"Author", "author"}, {"Copyright", "copyright"}, {"Description", "comment"}, {"Rating", "rating"}};
    const auto it = described.find(tag);
    const std::string key = it == described.end() ? tag : it->second;
    // Tags are kept as typed (Windows-1252); the file holds Unicode.
    av_dict_set(&f->oc->metadata, key.c_str(), cp1252ToUtf8(text).c_str(), 0);
    return true;
}

bool FfmpegWmaEncoder::EncodeWrite(uint32_t handle, const void* samples, int bytes) {
    File* f = file(handle);
    if (!f) return false;
    if (f->failed || !f->ensureHeader()) {
        f->failed = true;
        error_ = kErrorWrite;
        return false;
    }
    const auto* p = static_cast<const uint8_t*>(samples);
    const int frames = bytes / (2 * f->channels);
    for (int i = 0; i < frames; ++i)
        for (int c = 0; c < f->channels; ++c) {
            const uint8_t* s = p + 2 * (i * f->channels + c);
            f->pending[c].push_back(static_cast<int16_t>(s[0] | (s[1] << 8)) / 32768.0f);
        }
    if (!f->sendFrames(false)) {
        f->failed = true;
        error_ = kErrorWrite;
        return false;
    }
    return true;
}

bool FfmpegWmaEncoder::EncodeClose(uint32_t handle) {
    File* f = file(handle);
    if (!f) return false;
    bool ok = !f->failed && f->ensureHeader() && f->sendFrames(true) && av_write_trailer(f->oc) >= 0;
    if (f->oc->pb) ok = avio_closep(&f->oc->pb) >= 0 && ok;
    if (ok) {
        ok = std::rename(f->temp.c_str(), f->path.c_str()) == 0;
    }
    if (!ok) {
        error_ = kErrorWrite;
        std::remove(f->temp.c_str());
    }
    files_.erase(handle);
    return ok;
}

int FfmpegWmaEncoder::Encode(const std::string& wavIn, const std::string& wmaOut, int bitrate,
                             const std::map<std::string, std::string>& tags, platform::Progress progress) {
    SF_INFO info{};
    SNDFILE* in = sf_open(wavIn.c_str(), SFM_READ, &info);
    if (!in) return kErrorCreate;
    const int chans = std::min(info.channels, 2);
    const uint32_t h = EncodeOpenFile(info.samplerate, chans, 0, bitrate, wmaOut);
    if (!h) {
        sf_close(in);
        return error_;
    }
    for (const auto& [k, v] : tags) EncodeSetTag(h, k, v);
    std::vector<short> block(4096 * static_cast<size_t>(info.channels));
    std::vector<uint8_t> bytes;
    sf_count_t done = 0;
    bool ok = true;
    while (ok) {
        const sf_count_t n = sf_readf_short(in, block.data(), 4096);
        if (n <= 0) break;
        bytes.clear();
        for (sf_count_t i = 0; i < n; ++i)
            for (int c = 0; c < chans; ++c) {
                const auto s = static_cast<uint16_t>(block[static_cast<size_t>(i * info.channels + c)]);
                bytes.push_back(static_cast<uint8_t>(s & 0xFF));
                bytes.push_back(static_cast<uint8_t>(s >> 8));
            }
        ok = EncodeWrite(h, bytes.data(), static_cast<int>(bytes.size()));
        done += n;
        if (progress && info.frames > 0) progress(static_cast<int>(100 * done / info.frames));
    }
    sf_close(in);
    if (!EncodeClose(h)) ok = false;
    return ok && error_ == 0 ? 0 : (error_ ? error_ : kErrorWrite);
}

}  // namespace velaro::engine

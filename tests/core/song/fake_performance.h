#pragma once
// A performance that records what the logic asks of it and plays back a
// position the test sets.

#include <string>
#include <vector>

#include "core/base/paths.h"
#include "core/base/vb_error.h"
#include "core/platform/inert.h"
#include "core/platform/performance.h"

namespace velaro::testing {

class FakePerformance : public platform::Performance {
public:
    std::vector<std::string> log;
    int32_t length = 768 * 100;
    int32_t seek = 0;
    int32_t startPoint = -1;
    float tempo = 1.0f;
    int32_t volume = 0;
    int stops = 0;
    int plays = 0;

    platform::SegmentId LoadSegment(const std::string& path) override {
        if (!fileExists(path)) throw VbError(VbErr::FileNotFound);
        return ++ids_;
    }
    platform::CollectionId LoadCollection(const std::string& path) override {
        if (!fileExists(path)) throw VbError(VbErr::FileNotFound);
        return ++ids_;
    }
    void InitAudio(int, const platform::AudioParams&, int, int) override {}
    void CloseDown() override {}
    platform::AudioPathId GetDefaultAudioPath() override { return 1; }
    platform::SegmentStateId PlaySegmentEx(platform::SegmentId, int, int64_t, platform::AudioPathId) override {
        ++plays;
        seek = startPoint < 0 ? 0 : startPoint;
        return plays;
    }
    void StopEx(platform::AudioPathId, int64_t, int) override { ++stops; }
    int32_t GetMusicTime() override { return 0; }
    double GetTempo(int32_t) override { return 120.0; }
    void SetMasterTempo(float f) override { tempo = f; }
    float GetMasterTempo() override { return tempo; }
    void SetMasterVolume(int32_t v) override { volume = v; }
    void SendMIDIPMSG(int64_t, int, int ch, int status, int b1, int b2) override {
        log.push_back("midi " + std::to_string(ch) + " " + std::to_string(status) + " " + std::to_string(b1) + " " +
                      std::to_string(b2));
    }
    void SendPatchPMSG(int64_t, int, int ch, int program, int, int) override {
        log.push_back("patch " + std::to_string(ch) + " " + std::to_string(program));
    }
    void SendTransposePMSG(int64_t, int, int ch, int semis) override {
        log.push_back("transpose " + std::to_string(ch) + " " + std::to_string(semis));
    }
    void SetStartPoint(platform::SegmentId, int32_t mt) override { startPoint = mt; }
    int32_t GetLength(platform::SegmentId) override { return length; }
    void SetStandardMidiFile(platform::SegmentId) override {}
    void Download(platform::SegmentId) override {}
    void Unload(platform::SegmentId) override {}
    void ConnectToCollection(platform::SegmentId, platform::CollectionId) override {}
    int32_t GetSeek(platform::SegmentStateId) override { return seek; }

    std::vector<std::string> take(const std::string& prefix) {
        std::vector<std::string> out;
        for (const auto& l : log)
            if (l.rfind(prefix, 0) == 0) out.push_back(l);
        log.clear();
        return out;
    }

private:
    int ids_ = 0;
};

// Inert services with the recording performance in place.
struct FakePlatform {
    platform::InertPlatform inert;
    FakePerformance perf;
    platform::Platform p = [this] {
        platform::Platform q = inert.get();
        q.performance = &perf;
        return q;
    }();
};

}  // namespace velaro::testing

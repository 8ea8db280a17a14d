// The backing player's logic against a stream library that writes down what
// it is asked: the order VocalRemove opens and plays in, the records the
// equalisers, the bass stream's volume and the gain get, the boxes, and what
// Default and StopRemover leave behind. And the vocal cut's arithmetic.

#include <gtest/gtest.h>

#include <map>
#include <vector>

#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"

using namespace velaro;
using platform::StreamId;

namespace {

// A library that opens what `streamsOpen`/`modulesOpen` say and keeps the effects' records.
struct LoggingStreams : platform::InertAudioStreams {
    bool streamsOpen = true, modulesOpen = false;
    int chans = 2;
    std::vector<std::string> log;
    StreamId next = 1;
    std::map<StreamId, bool> isModule;
    std::map<StreamId, int> bands;
    std::map<StreamId, bool> volumeOn;
    std::map<std::pair<StreamId, int>, platform::PeakEqRecord> eq;
    std::map<StreamId, platform::VolumeRecord> vol;
    std::map<StreamId, platform::GainRecord> gain;
    std::map<StreamId, int> dsps;
    platform::DspProc proc = nullptr;

    static std::string id(StreamId s) { return std::to_string(s); }
    bool SetConfig(int o, int v) override {
        log.push_back("SetConfig " + std::to_string(o) + "," + std::to_string(v));
        return true;
    }
    StreamId StreamCreateFile(bool, const std::string& path, int64_t, int64_t, uint32_t flags) override {
        log.push_back("StreamCreateFile " + path + " " + std::to_string(flags));
        if (!streamsOpen) return 0;
        isModule[next] = false;
        return next++;
    }
    StreamId MusicLoad(bool, const std::string& path, int64_t, int64_t, uint32_t flags, int) override {
        log.push_back("MusicLoad " + path + " " + std::to_string(flags));
        if (!modulesOpen) return 0;
        isModule[next] = true;
        return next++;
    }
    int ErrorGetCode() override { return 41; }
    bool StreamFree(StreamId s) override {
        log.push_back("StreamFree " + id(s));
        return isModule.count(s) && !isModule[s];
    }
    bool MusicFree(StreamId s) override {
        log.push_back("MusicFree " + id(s));
        return isModule.count(s) && isModule[s];
    }
    bool ChannelPlay(StreamId s, bool) override {
        log.push_back("ChannelPlay " + id(s));
        return isModule.count(s) != 0;
    }
    bool ChannelGetInfo(StreamId s, platform::ChannelInfo& info) override {
        if (!isModule.count(s)) return false;
        info.chans = chans;
        info.freq = 48000;
        return true;
    }
    bool ChannelGetAttributes(StreamId s, float& freq, int& volume, int& pan) override {
        if (!isModule.count(s)) return false;
        freq = 48000, volume = 100, pan = 0;
        return true;
    }
    uint32_t ChannelSetDSP(StreamId s, platform::DspProc p, void*, int) override {
        if (!isModule.count(s)) return 0;
        proc = p;
        ++dsps[s];
        return 77;
    }
    bool ChannelRemoveDSP(StreamId s, uint32_t h) override {
        if (h != 77 || dsps[s] == 0) return false;
        --dsps[s];
        return true;
    }
    bool FX_DSP_Set(StreamId s, int fx, int priority) override {
        log.push_back("FX_DSP_Set " + id(s) + " " + std::to_string(fx) + " " + std::to_string(priority));
        if (!isModule.count(s)) return false;
        if (fx == platform::kFxPeakEq) ++bands[s];
        if (fx == platform::kFxVolume) volumeOn[s] = true;
        return true;
    }
    bool FX_DSP_Remove(StreamId s, int fx) override {
        log.push_back("FX_DSP_Remove " + id(s) + " " + std::to_string(fx));
        if (fx == platform::kFxPeakEq) bands[s] = 0;
        if (fx == platform::kFxVolume) volumeOn[s] = false;
        return true;
    }
    bool FX_DSP_SetParameters(StreamId s, int fx, const platform::VolumeRecord& r) override {
        if (fx != platform::kFxVolume || !volumeOn[s]) return false;
        vol[s] = r;
        return true;
    }
    bool FX_DSP_SetParameters(StreamId s, int fx, const platform::PeakEqRecord& r) override {
        if (fx != platform::kFxPeakEq || r.band >= bands[s]) return false;
        eq[{s, r.band}] = r;
        return true;
    }
    bool FX_DSP_SetParameters(StreamId s, int fx, const platform::GainRecord& r) override {
        if (fx != platform::kFxGain) return false;
        gain[s] = r;
        return true;
    }
    bool FX_DSP_GetParameters(StreamId s, int fx, platform::VolumeRecord& r) override {
        if (fx != platform::kFxVolume || !volumeOn[s]) return false;
        r = vol[s];
        return true;
    }
    bool FX_DSP_GetParameters(StreamId s, int fx, platform::PeakEqRecord& r) override {
        if (fx != platform::kFxPeakEq || r.band >= bands[s]) return false;
        r = eq[{s, r.band}];
        return true;
    }
};

struct Backing : ::testing::Test {
    ui::Headless ui;
    platform::InertPlatform inert;
    LoggingStreams streams;
    platform::Platform p = [this] {
        platform::Platform q = inert.get();
        q.streams = &streams;
        return q;
    }();
    song::frmMain f{ui.rt, p};
    record::MainBacking& b = f.backing;

    void play(const std::string& path = "/music/song.mp3") {
        f.setSongPath(path);
        f.recording.Cmdplw_Click();
    }
    std::vector<std::string> boxes() const {
        std::vector<std::string> out;
        for (const auto& m : ui.dialogs.messageBoxes()) out.push_back(m.title + ": " + m.text);
        return out;
    }
};

}  // namespace

TEST(VocalCut, EachPairBecomesHalfTheRightLessTheLeft) {
    float buf[7] = {0.5f, 0.5f, -0.25f, 0.75f, 1.0f, -1.0f, 0.3f};
    // Three whole pairs in 24 bytes; the seventh float lies beyond `length` and is not touched.
    record::MainBacking::VocalCutCallback(1, 2, buf, 24, nullptr);
    EXPECT_EQ(std::vector<float>(buf, buf + 7), (std::vector<float>{0, 0, 0.5f, 0.5f, -1.0f, -1.0f, 0.3f}));
    // A length that ends inside a pair leaves that pair as it was.
    float odd[4] = {0.1f, 0.3f, 0.2f, 0.6f};
    record::MainBacking::VocalCutCallback(1, 2, odd, 12, nullptr);
    EXPECT_FLOAT_EQ(odd[0], 0.1f);
    EXPECT_FLOAT_EQ(odd[1], 0.1f);
    EXPECT_FLOAT_EQ(odd[2], 0.2f);
    EXPECT_FLOAT_EQ(odd[3], 0.6f);
}

TEST_F(Backing, PlayOpensTheFileTwiceWithFloatDspFirstAndMutesTheBassStream) {
    play();
    const std::vector<std::string> want = {"SetConfig 9,1",
                                           "StreamCreateFile /music/song.mp3 0",
                                           "StreamCreateFile /music/song.mp3 0",
                                           "ChannelPlay 1",
                                           "ChannelPlay 2",
                                           "FX_DSP_Set 2 4 1"};
    EXPECT_EQ(streams.log, want);
    EXPECT_EQ(b.mainStream, 1u);
    EXPECT_EQ(b.lowStream, 2u);
    EXPECT_EQ(b.sampleRate, 48000);
    // Slider3 at its design 10: the bass stream is silent until the remover is on.
    EXPECT_EQ(streams.vol[2].left, 0.0f);
    EXPECT_EQ(streams.vol[2].right, 0.0f);
    EXPECT_FALSE(b.Slider3.enabled());
    EXPECT_FALSE(f.Cmdplw.enabled());
    EXPECT_TRUE(f.cmdstw.enabled());
    EXPECT_FALSE(f.cmdrec.enabled());
    EXPECT_TRUE(boxes().empty());
}

TEST_F(Backing, AModuleOpensOnTheMainStreamAloneAndAnUnreadableFileGivesTheBox) {
    streams.streamsOpen = false;
    streams.modulesOpen = true;
    play("/music/tune.mod");
    EXPECT_EQ(streams.log[3], "MusicLoad /music/tune.mod 516");
    EXPECT_EQ(b.mainStream, 1u);
    EXPECT_EQ(b.lowStream, 0u);

    streams.modulesOpen = false;
    streams.log.clear();
    play("/music/garbage.mp3");
    EXPECT_EQ(b.lowStream, 0u);
    EXPECT_EQ(b.mainStream, 0u);
    EXPECT_EQ(b.lblPlayer.caption(), "click here to open a file && play it...");
    ASSERT_EQ(boxes().size(), 1u);
    EXPECT_EQ(boxes()[0], "Error: Selected file couldn't be loaded!\r\n\r\nBASS Error Code: 41\r\nBASS_FX Error Code: ");
    // Nothing plays after the box.
    for (const std::string& line : streams.log) EXPECT_EQ(line.find("ChannelPlay"), std::string::npos);
}

TEST_F(Backing, TheRemoverPutsTheCutAndBothEqualisersOnAtTheirDesignValues) {
    play();
    b.Chkrem.setValue(1);
    EXPECT_EQ(streams.dsps[1], 1);
    EXPECT_EQ(streams.proc, &record::MainBacking::VocalCutCallback);
    EXPECT_EQ(streams.bands[1], 8);
    EXPECT_EQ(streams.bands[2], 8);
    const float mainGain[8] = {10, 6, 6, 0, 0, 0, 0, 7};
    const float lowGain[8] = {10, 10, 1, -9, -9, -9, -9, -9};
    for (int i = 0; i < 8; ++i) {
        const auto& m = streams.eq[{1, i}];
        const auto& l = streams.eq[{2, i}];
        EXPECT_EQ(m.band, i);
        EXPECT_EQ(m.rate, 48000);
        EXPECT_EQ(m.bandwidth, 2.5f);
        EXPECT_EQ(m.q, 0.0f);
        EXPECT_EQ(m.center, record::kMainCentres[i]);
        EXPECT_EQ(l.center, record::kLowCentres[i]);
        EXPECT_EQ(m.gain, mainGain[i]) << i;
        EXPECT_EQ(l.gain, lowGain[i]) << i;
    }
    EXPECT_TRUE(b.Frame4.visible());
    EXPECT_TRUE(b.vseq(7).visible());
    // 7.5 rounded half to even: the bass stream at two tenths.
    EXPECT_EQ(b.Slider3.value(), 8);
    EXPECT_TRUE(b.Slider3.enabled());
    EXPECT_FLOAT_EQ(streams.vol[2].left, 0.2f);

    // The controls change their bands live: vseq at 0 is +10 dB, at 19 -9 dB.
    b.vseq(3).setValue(0);
    EXPECT_EQ(streams.eq[std::make_pair(StreamId(1), 3)].gain, 10.0f);
    b.Veq1(0).setValue(19);
    EXPECT_EQ(streams.eq[std::make_pair(StreamId(2), 0)].gain, -9.0f);
    b.Slider3.setValue(0);
    EXPECT_FLOAT_EQ(streams.vol[2].left, 1.0f);
    EXPECT_FLOAT_EQ(streams.vol[2].right, 1.0f);
    b.vcompr.setValue(4);
    const platform::GainRecord g = streams.gain[1];
    EXPECT_EQ(std::vector<float>({g.a, g.b, g.c, g.gain, g.e}), std::vector<float>({10, 10, 10, 6, 1000}));
}

TEST_F(Backing, UncheckingTheRemoverKeepsTheBassStreamsVolumeEffect) {
    play();
    b.Chkrem.setValue(1);
    streams.log.clear();
    b.Chkrem.setValue(0);
    EXPECT_EQ(streams.dsps[1], 0);
    EXPECT_EQ(streams.bands[1], 0);
    EXPECT_EQ(streams.bands[2], 0);
    EXPECT_TRUE(streams.volumeOn[2]);
    for (const std::string& line : streams.log) EXPECT_NE(line, "FX_DSP_Remove 2 4");
    EXPECT_FALSE(b.Frame4.visible());
    EXPECT_FALSE(b.vseq(0).visible());
    EXPECT_FALSE(b.Slider3.enabled());
    EXPECT_EQ(b.Slider3.value(), 10);
    EXPECT_EQ(b.vcompr.value(), 10);
}

TEST_F(Backing, AMonoFileGetsTheBoxAndTheCutAllTheSame) {
    streams.chans = 1;
    b.Chkrem.setValue(1);  // checked before play: the box comes when the file is open
    EXPECT_TRUE(boxes().empty());
    play("/music/mono.wav");
    ASSERT_EQ(boxes(), std::vector<std::string>{"VelaroRemover: Only Stereo "});
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].style, ui::vbOKOnly | ui::vbCritical);
    EXPECT_EQ(streams.dsps[1], 1);
    EXPECT_EQ(streams.log.back(), "FX_DSP_Set 2 4 1");
}

TEST_F(Backing, BassBoostOffTakesTheVolumeEffectAwayAndOnPutsItBack) {
    play();
    b.Chkrem.setValue(1);
    b.Chklow.setValue(0);
    EXPECT_FALSE(streams.volumeOn[2]);
    b.Slider3.setValue(5);  // nothing to set while the effect is off
    b.Chklow.setValue(1);
    EXPECT_TRUE(streams.volumeOn[2]);
    EXPECT_FLOAT_EQ(streams.vol[2].left, 0.5f);
}

TEST_F(Backing, StopFreesBothHandlesBothWaysAndGivesRecordBack) {
    play();
    streams.log.clear();
    f.recording.cmdstw_Click();
    const std::vector<std::string> want = {"FX_DSP_Remove 2 4", "StreamFree 2", "MusicFree 2", "StreamFree 1",
                                           "MusicFree 1"};
    EXPECT_EQ(streams.log, want);
    EXPECT_TRUE(f.cmdrec.enabled());
    EXPECT_TRUE(f.Cmdplw.enabled());
}

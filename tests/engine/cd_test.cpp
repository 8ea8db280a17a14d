// The CD service on BIN/CUE images written by the tests: the list with and
// without CD-TEXT, the data track, exact samples in the ripped wave, seeking,
// WMA tags read back through FFmpeg, and the disc playing on the virtual
// clock, moving on to the next track at each end.

#include <gtest/gtest.h>

extern "C" {
#include <libavformat/avformat.h>
}

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <thread>

#include "core/base/paths.h"
#include "core/cd/cd_text.h"
#include "core/cd/frm_demo.h"
#include "core/cd/rip.h"
#include "core/platform/inert.h"
#include "core/ui/headless.h"
#include "engine/audio_engine.h"
#include "engine/cd_drives.h"
#include "engine/cd_wma_encoder.h"
#include "support/cd_image.h"

using namespace velaro;
namespace vt = velaro::testing;
using vt::ImageDisc;
using vt::ImageTrack;

namespace {

std::string testDir(const std::string& name) {
    // Tests run side by side in processes of their own: the test's name keeps folders apart.
    const std::string dir = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") + "/cd-" + name + "-" +
                            ::testing::UnitTest::GetInstance()->current_test_info()->name();
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

ImageDisc textDisc() {
    ImageDisc d;
    d.cdText = true;
    d.title = "Album";
    d.performer = "Band";
    // Odd lengths: a lone sector, three seconds and seven sectors, a data track last.
    d.tracks = {{1, false, "Short", "Ann"}, {75 * 3 + 7, false, "Caf\xE9 = Bar", "Bob"}, {150, true, "", ""}};
    return d;
}

struct Window {
    ui::Headless ui;
    platform::InertPlatform inert;
    engine::FfmpegWmaEncoder wma;
    std::unique_ptr<cd::frmDemo> w;
    explicit Window(platform::CdLibrary& cd) {
        inert.get().cd = &cd;
        inert.get().wma = &wma;
        w = std::make_unique<cd::frmDemo>(ui.rt, inert.get());
        w->load();
    }
    std::vector<std::string> rows() const {
        std::vector<std::string> r;
        for (int i = 0; i < w->lstTracks.listCount(); ++i) r.push_back(w->lstTracks.list(i));
        return r;
    }
    std::vector<std::string> boxes() const {
        std::vector<std::string> b;
        for (const auto& s : ui.dialogs.messageBoxes()) b.push_back(s.text);
        return b;
    }
};

std::string readBytes(const std::string& path) { return readWholeFile(path); }

TEST(CdImage, TrackListWithCdTextAndTheDataTrackLeftOut) {
    const std::string cue = vt::writeImage(testDir("text"), "disc", textDisc());
    engine::EngineCdLibrary cd(nullptr, false);
    cd.addDrive(cue);
    Window win(cd);
    ASSERT_EQ(win.w->cmbCDDrives.listCount(), 1);
    EXPECT_EQ(win.w->cmbCDDrives.list(0), "A: Image disc.cue");
    EXPECT_EQ(win.rows(), (std::vector<std::string>{"01\tShort / Ann\t[00:00]", "02\tCaf\xE9 = Bar / Bob\t[00:03]"}));
    EXPECT_EQ(win.w->txtCDAlbum.text(), "Album");
    EXPECT_EQ(win.w->txtCDArtist.text(), "Band");
    EXPECT_EQ(win.w->chkRWFlags(9).value(), 1);   // reads CD audio
    EXPECT_EQ(win.w->chkRWFlags(11).value(), 0);  // an image has no tray
    EXPECT_FALSE(win.w->Cmdbutton(5).enabled());
    EXPECT_TRUE(win.boxes().empty());
    EXPECT_EQ(cd.GetTrackLength(0, 1), (75 * 3 + 7) * 2352);
    EXPECT_EQ(cd.GetTrackLength(0, 2), -1);
    EXPECT_EQ(cd.ErrorGetCode(), platform::kCdErrorNotAudio);
    EXPECT_EQ(cd.StreamCreate(0, 2, platform::kCdStreamDecode), 0u);
    EXPECT_FALSE(cd.Door(0, platform::kDoorOpen));  // never ejects an image
}

TEST(CdImage, WithoutCdTextTheDataTrackIsReported) {
    ImageDisc d = vt::plainDisc(2, 80);
    d.tracks.push_back(ImageTrack{100, true, "", ""});
    const std::string cue = vt::writeImage(testDir("plain"), "plain", d);
    engine::EngineCdLibrary cd(nullptr, false);
    cd.addDrive(cue);
    Window win(cd);
    EXPECT_EQ(win.rows(), (std::vector<std::string>{"01\tTrack 1\t[00:01]", "02\tTrack 2\t[00:01]"}));
    EXPECT_EQ(win.w->txtCDArtist.text(), "Unknown Artist");
    EXPECT_EQ(win.boxes(), (std::vector<std::string>{"There was an error.\r\nError Code : 17"}));
    std::string block;
    EXPECT_FALSE(cd.GetID(0, 4, block));
}

TEST(CdImage, NoDriveAndNoDisc) {
    engine::EngineCdLibrary none(nullptr, false);
    std::string s;
    EXPECT_FALSE(none.GetDriveDescription(0, s));
    EXPECT_EQ(none.GetTracks(0), -1);
    EXPECT_EQ(none.StreamCreate(0, 0, platform::kCdStreamDecode), 0u);
    Window empty(none);
    EXPECT_EQ(empty.w->cmbCDDrives.listCount(), 0);
    empty.ui.loop.advance(200);
    EXPECT_TRUE(empty.boxes().empty());

    // A sheet that names no file, and one that is not there at all.
    const std::string dir = testDir("nodisc");
    writeWholeFile(dir + "/junk.cue", "FILE \"missing.bin\" BINARY\r\n  TRACK 01 AUDIO\r\n    INDEX 01 00:00:00\r\n");
    engine::EngineCdLibrary bad(nullptr, false);
    bad.addDrive(dir + "/junk.cue");
    bad.addDrive(dir + "/absent.cue");
    EXPECT_EQ(bad.StreamCreate(1, 0, platform::kCdStreamDecode), 0u);
    Window w2(bad);
    EXPECT_EQ(w2.w->cmbCDDrives.listCount(), 2);
    EXPECT_FALSE(bad.IsReady(1));
    w2.w->cmbCDDrives.setListIndex(1);
    EXPECT_EQ(w2.w->lstTracks.listCount(), 0);
}

TEST(CdImage, JunkImagesAreNoDisc) {
    const std::string dir = testDir("junk");
    uint32_t x = 12345;
    for (const char* name : {"a.cue", "b.nrg", "c.toc", "d.bin"}) {
        std::string bytes;
        for (int i = 0; i < 5000; ++i) bytes += static_cast<char>((x = x * 1103515245 + 12345) >> 24);
        writeWholeFile(dir + "/" + name, bytes);
    }
    writeWholeFile(dir + "/e.cue", "FILE \"d.bin\" BINARY\r\n  TRACK 01 AUDIO\r\n    INDEX 01 99:99:99\r\nTITLE\r\n");
    engine::EngineCdLibrary cd(nullptr, false);
    for (const char* name : {"a.cue", "b.nrg", "c.toc", "d.bin", "e.cue"}) cd.addDrive(dir + "/" + name);
    Window win(cd);
    for (int i = 0; i < 5; ++i) {
        win.w->cmbCDDrives.setListIndex(i);
        // Random bytes are no disc; the odd sheet may give what its file holds, nothing more.
        if (i < 4) {
            EXPECT_EQ(win.w->lstTracks.listCount(), 0) << i;
        }
        for (int t = 0; t < 3; ++t) {
            const auto s = cd.StreamCreate(i, t, platform::kCdStreamDecode);
            if (i < 4) {
                EXPECT_EQ(s, 0u);
            }
            if (!s) continue;
            EXPECT_LE(cd.StreamGetLength(s), 5000);
            uint8_t buf[20000];
            while (cd.ChannelIsActive(s) && cd.ChannelGetData(s, buf, sizeof buf) > 0) {
            }
            cd.StreamFree(s);
        }
    }
}

TEST(CdImage, RippedWaveHoldsTheImagesBytesAfterTheHeader) {
    const ImageDisc disc = textDisc();
    const std::string dir = testDir("rip");
    const std::string cue = vt::writeImage(dir, "disc", disc);
    engine::EngineCdLibrary cd(nullptr, false);
    cd.addDrive(cue);
    for (int track : {0, 1}) {
        const std::string out = dir + "/t" + std::to_string(track) + ".wav";
        std::vector<int64_t> positions;
        const cd::RipResult r = cd::ripToWave(cd, 0, track, out, [&](int64_t pos, int64_t) {
            positions.push_back(pos);
            return true;
        });
        ASSERT_EQ(r.outcome, cd::RipOutcome::Done);
        const std::vector<uint8_t> want = vt::trackBytes(disc, track);
        const std::string wav = readBytes(out);
        ASSERT_EQ(wav.size(), 44 + want.size());
        EXPECT_EQ(wav.substr(0, 44), cd::waveHeader(2, 44100, 16, static_cast<uint32_t>(want.size())));
        EXPECT_TRUE(std::equal(want.begin(), want.end(), reinterpret_cast<const uint8_t*>(wav.data()) + 44));
        EXPECT_EQ(positions.back(), static_cast<int64_t>(want.size()));
        EXPECT_EQ(positions.size(), (want.size() + cd::kRipBlock - 1) / cd::kRipBlock);
    }
}

TEST(CdImage, DecodingStreamSeeksToAnyFrame) {
    const ImageDisc disc = vt::plainDisc(2, 40);
    const std::string cue = vt::writeImage(testDir("seek"), "seek", disc);
    engine::EngineCdLibrary cd(nullptr, false);
    cd.addDrive(cue);
    const auto s = cd.StreamCreate(0, 1, platform::kCdStreamDecode);
    ASSERT_NE(s, 0u);
    const std::vector<uint8_t> want = vt::trackBytes(disc, 1);
    for (int64_t at : {int64_t{0}, int64_t{2351}, int64_t{2352 * 3 + 400}, int64_t{2352 * 39 + 2348}}) {
        ASSERT_TRUE(cd.ChannelSetPosition(s, at));
        uint8_t buf[6000];
        const int got = cd.ChannelGetData(s, buf, 5999);  // whole frames only
        const int64_t from = at - at % 4;
        ASSERT_EQ(got, std::min<int64_t>(5996, static_cast<int64_t>(want.size()) - from));
        EXPECT_TRUE(std::equal(buf, buf + got, want.begin() + from)) << at;
    }
    EXPECT_EQ(cd.ChannelIsActive(s), 0);  // the last read reached the end
    EXPECT_FALSE(cd.ChannelSetPosition(s, static_cast<int64_t>(want.size()) + 4));
    EXPECT_TRUE(cd.StreamFree(s));
    EXPECT_FALSE(cd.StreamFree(s));
}

TEST(CdImage, WmaCarriesTheTagsUnderTheirNames) {
    const ImageDisc disc = textDisc();
    const std::string dir = testDir("wma");
    engine::EngineCdLibrary cd(nullptr, false);
    cd.addDrive(vt::writeImage(dir, "disc", disc));
    engine::FfmpegWmaEncoder wma;
    const std::vector<std::pair<std::string, std::string>> tags = {
        {"Title", "Caf\xE9"},  {"Author", "Bob"},       {"WM/AlbumTitle", "Album"}, {"Description", "Live"},
        {"Rating", "5"},       {"Copyright", "(c) Bob"}, {"WM/Genre", "Pop"},       {"WM/Year", "1999"}};
    const std::string out = dir + "/TRACK2.WMA";
    const cd::RipResult r = cd::ripToWma(cd, wma, 0, 1, out, 128000, &tags, nullptr, nullptr);
    ASSERT_EQ(r.outcome, cd::RipOutcome::Done);
    EXPECT_EQ(r.dataBytes, (75 * 3 + 7) * 2352);

    AVFormatContext* ic = nullptr;
    ASSERT_EQ(avformat_open_input(&ic, out.c_str(), nullptr, nullptr), 0);
    ASSERT_GE(avformat_find_stream_info(ic, nullptr), 0);
    std::map<std::string, std::string> meta;
    for (const AVDictionaryEntry* t = nullptr; (t = av_dict_get(ic->metadata, "", t, AV_DICT_IGNORE_SUFFIX));)
        meta[t->key] = t->value;
    EXPECT_EQ(std::string(ic->iformat->name), "asf");
    EXPECT_EQ(ic->streams[0]->codecpar->codec_id, AV_CODEC_ID_WMAV2);
    EXPECT_EQ(ic->streams[0]->codecpar->bit_rate, 128000);
    EXPECT_NEAR(static_cast<double>(ic->duration) / AV_TIME_BASE, (75 * 3 + 7) / 75.0, 0.1);
    avformat_close_input(&ic);
    EXPECT_EQ(meta["title"], "Caf\xC3\xA9");
    EXPECT_EQ(meta["artist"], "Bob");
    EXPECT_EQ(meta["album"], "Album");
    EXPECT_EQ(meta["comment"], "Live");
    EXPECT_EQ(meta["rating"], "5");
    EXPECT_EQ(meta["copyright"], "(c) Bob");
    EXPECT_EQ(meta["genre"], "Pop");
    EXPECT_EQ(meta["WM/Year"], "1999");
    // The WM names stand in the file itself, in UTF-16.
    const std::string bytes = readBytes(out);
    for (std::string name : {"WM/AlbumTitle", "WM/Genre", "WM/Year"}) {
        std::string wide;
        for (char c : name) wide += std::string{c, '\0'};
        EXPECT_NE(bytes.find(wide), std::string::npos) << name;
    }
}

// The window plays the disc on the virtual clock; the syncs come from the
// library's thread, so the clock is moved in small steps until they land.
struct Playing {
    ImageDisc disc = vt::plainDisc(3, 30);
    std::string cue = vt::writeImage(testDir("play"), "play", disc);
    engine::AudioEngine audio{44100};
    engine::EngineCdLibrary cd{&audio, false};
    std::vector<float> heard;
    std::unique_ptr<Window> win;

    Playing() {
        cd.addDrive(cue);
        audio.setLimiterEnabled(false);
        win = std::make_unique<Window>(cd);
        win->ui.loop.attachAudio([this](int64_t frames) { audio.render(frames); }, 44100);
        audio.setSink([this](const float* x, int n) { heard.insert(heard.end(), x, x + 2 * n); });
    }
    bool runUntil(const std::function<bool()>& done) {
        // Bounded by steps, not by time: a busy machine only makes it slower.
        for (int i = 0; i < 20000; ++i) {
            win->ui.loop.advance(5);
            if (done()) return true;
            std::this_thread::sleep_for(std::chrono::microseconds(500));
        }
        return false;
    }
};

TEST(CdPlayback, PlaysTheSamplesAndMovesOnToTheNextTrackAndRoundAgain) {
    Playing p;
    cd::frmDemo& w = *p.win->w;
    w.lstTracks.setListIndex(0);
    ASSERT_NE(w.cdStream, 0u);
    EXPECT_EQ(p.cd.ChannelIsActive(w.cdStream), 1);
    p.win->ui.loop.advance(100);
    // What the engine played is the first track, sample for sample.
    const std::vector<uint8_t> bytes = vt::trackBytes(p.disc, 0);
    ASSERT_GE(p.heard.size(), 2000u);
    for (size_t i = 0; i < 2000; ++i) {
        const auto s = static_cast<int16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
        ASSERT_NEAR(p.heard[i], s / 32768.0f, 1e-6) << i;
    }
    EXPECT_TRUE(p.runUntil([&] { return w.lstTracks.listIndex() == 1; }));
    EXPECT_TRUE(p.runUntil([&] { return w.lstTracks.listIndex() == 2; }));
    EXPECT_TRUE(p.runUntil([&] { return w.lstTracks.listIndex() == 0; }));
    EXPECT_EQ(p.cd.ChannelIsActive(w.cdStream), 1);
    EXPECT_TRUE(p.win->boxes().empty());
}

TEST(CdPlayback, FadeOutSlidesToSilenceThenTheNextTrack) {
    Playing p;
    cd::frmDemo& w = *p.win->w;
    w.lstTracks.setListIndex(1);
    p.win->ui.loop.advance(50);
    const uint32_t level = p.cd.ChannelGetLevel(w.cdStream);
    EXPECT_NE(level, 0xFFFFFFFFu);
    EXPECT_GT(level & 0xFFFF, 1000u);
    // A short slide stands in for the window's five seconds.
    p.cd.ChannelSlideAttributes(w.cdStream, -1, 0, -101, 100);
    p.win->ui.loop.advance(150);
    // Silent at the slide's end, unless the end's sync (from the library's
    // thread) has already moved the window on to the next track.
    const uint32_t faded = p.cd.ChannelGetLevel(w.cdStream);
    if (w.lstTracks.listIndex() == 1) {
        EXPECT_TRUE(faded == 0xFFFFFFFFu || (faded & 0xFFFF) < 10u) << std::hex << faded;
    }
    EXPECT_TRUE(p.runUntil([&] { return w.lstTracks.listIndex() == 2; }));
    // Pause holds the position; the timer shows it.
    w.Cmdbutton(1).userClick();
    EXPECT_EQ(p.cd.ChannelIsActive(w.cdStream), 3);
    const int64_t at = p.cd.ChannelGetPosition(w.cdStream);
    p.win->ui.loop.advance(100);
    EXPECT_EQ(p.cd.ChannelGetPosition(w.cdStream), at);
    EXPECT_EQ(w.lblTrackPosition.caption(), cd::Seconds2HMS(at / 176400.0) + " / 00:00");
    w.Cmdbutton(2).userClick();
    EXPECT_EQ(p.cd.ChannelIsActive(w.cdStream), 0);
}

}  // namespace

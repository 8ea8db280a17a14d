// The ripper window on a disc held in memory: drives, the list with and
// without CD-TEXT, the door, extraction with its messages and hand-over to
// the main window, WMA tags, and playback moving on through the syncs.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>

#include "core/base/paths.h"
#include "core/cd/frm_demo.h"
#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "core/ui/recording_canvas.h"

using namespace velaro;

namespace {

// One drive whose disc is a list of track lengths; a stream hands out a counter's bytes.
class MemoryCd : public platform::InertCdLibrary {
public:
    bool hasDrive = true, disc = true, open = false, locked = false, canLock = true;
    bool emptyStreams = false;  // streams that end before giving a byte
    std::vector<int64_t> lengths;
    std::string cdText;  // the block, empty for none
    std::vector<std::string> doorLog;
    struct Stream {
        int track;
        int64_t pos = 0, length = 0;
        bool playing = false, paused = false;
        int volume = 100;
        std::map<uint32_t, std::function<void()>> syncs;
    };
    std::map<platform::CdStreamId, Stream> streams;
    platform::CdStreamId next = 1;
    uint32_t level = 0;

    bool GetDriveDescription(int d, std::string& s) override {
        if (!hasDrive || d != 0) return false;
        s = "Memory drive";
        return true;
    }
    int GetDriveLetter(int d) override { return d + 3; }
    bool GetInfo(int, platform::CdInfo& i) override {
        i.rwflags = (1u << 0) | (1u << 20) | (1u << 24);
        i.canopen = true;
        i.canlock = canLock;
        i.maxspeed = 7056;
        i.cache = 2048;
        return true;
    }
    bool IsReady(int) override { return disc && !open; }
    int GetTracks(int) override { return disc ? static_cast<int>(lengths.size()) : -1; }
    int64_t GetTrackLength(int, int t) override {
        if (t < 0 || t >= static_cast<int>(lengths.size()) || lengths[t] <= 0) return -1;
        return lengths[t];
    }
    bool GetID(int, int, std::string& b) override {
        b = cdText;
        return !cdText.empty();
    }
    bool Door(int, int action) override {
        doorLog.push_back(std::to_string(action));
        if (action == platform::kDoorLock) locked = true;
        if (action == platform::kDoorUnlock) locked = false;
        if (action == platform::kDoorOpen) open = true;
        if (action == platform::kDoorClose) open = false;
        return true;
    }
    bool DoorIsOpen(int) override { return open; }
    bool DoorIsLocked(int) override { return locked; }
    int ErrorGetCode() override { return 13; }
    int GetVolume() override { return 80; }

    platform::CdStreamId StreamCreate(int, int t, uint32_t flags) override {
        if (!IsReady(0) || GetTrackLength(0, t) <= 0) return 0;
        if (flags & platform::kCdStreamFreeOld) streams.clear();
        streams[next] = Stream{t, 0, emptyStreams ? 0 : lengths[t]};
        return next++;
    }
    bool StreamFree(platform::CdStreamId s) override { return streams.erase(s) > 0; }
    int64_t StreamGetLength(platform::CdStreamId s) override { return streams.count(s) ? streams[s].length : -1; }
    bool ChannelGetInfo(platform::CdStreamId s, platform::CdChannelInfo& i) override {
        i = {};
        return streams.count(s) > 0;
    }
    int ChannelIsActive(platform::CdStreamId s) override {
        if (!streams.count(s)) return 0;
        Stream& st = streams[s];
        if (st.playing) return st.paused ? 3 : 1;
        return st.pos < st.length ? 1 : 0;
    }
    int ChannelGetData(platform::CdStreamId s, void* buf, int bytes) override {
        if (!streams.count(s)) return -1;
        Stream& st = streams[s];
        const int n = static_cast<int>(std::min<int64_t>(bytes, st.length - st.pos));
        auto* p = static_cast<uint8_t*>(buf);
        for (int i = 0; i < n; ++i) p[i] = static_cast<uint8_t>((st.pos + i) * 7 + st.track);
        st.pos += n;
        return n;
    }
    int64_t ChannelGetPosition(platform::CdStreamId s) override { return streams.count(s) ? streams[s].pos : -1; }
    bool ChannelSetPosition(platform::CdStreamId s, int64_t b) override {
        if (!streams.count(s)) return false;
        streams[s].pos = b;
        return true;
    }
    bool ChannelPlay(platform::CdStreamId s, bool restart) override {
        if (!streams.count(s)) return false;
        if (restart) streams[s].pos = 0;
        streams[s].playing = true;
        streams[s].paused = false;
        return true;
    }
    bool ChannelPause(platform::CdStreamId s) override {
        if (!streams.count(s)) return false;
        streams[s].paused = true;
        return true;
    }
    bool ChannelStop(platform::CdStreamId s) override {
        if (!streams.count(s)) return false;
        streams.erase(s);  // the window's streams free themselves when stopped
        return true;
    }
    bool ChannelSetAttributes(platform::CdStreamId s, int, int v, int) override {
        if (!streams.count(s)) return false;
        if (v != -1) streams[s].volume = v;
        return true;
    }
    bool ChannelSlideAttributes(platform::CdStreamId s, int, int, int, int) override {
        return streams.count(s) > 0;
    }
    uint32_t ChannelGetLevel(platform::CdStreamId s) override {
        return streams.count(s) && streams[s].playing ? level : 0xFFFFFFFFu;
    }
    uint32_t ChannelSetSync(platform::CdStreamId s, uint32_t type, std::function<void()> fn) override {
        if (!streams.count(s)) return 0;
        streams[s].syncs[type] = std::move(fn);
        return type;
    }
    // The library's thread reports a sync.
    void fire(uint32_t type) {
        for (auto& [id, st] : streams)
            if (st.syncs.count(type)) {
                auto fn = st.syncs[type];
                st.syncs.erase(type);
                fn();
                return;
            }
    }
    int playingTrack() const {
        for (auto& [id, st] : streams)
            if (st.playing) return st.track;
        return -1;
    }
};

// Tags the window gives the encoder, in order.
class TagLog : public platform::InertWmaEncoder {
public:
    std::vector<std::pair<std::string, std::string>> tags;
    int64_t written = 0;
    std::string path;
    std::vector<int> EncodeGetRates(int, int, int) override { return {192000, 128000, 64000}; }
    uint32_t EncodeOpenFile(int, int, int, int, const std::string& p) override {
        path = p;
        return 7;
    }
    bool EncodeSetTag(uint32_t, const std::string& t, const std::string& v) override {
        tags.emplace_back(t, v);
        return true;
    }
    bool EncodeWrite(uint32_t, const void*, int bytes) override {
        written += bytes;
        return true;
    }
};

struct Ripper : ::testing::Test {
    ui::Headless ui;
    platform::InertPlatform inert;
    MemoryCd cd;
    TagLog wma;
    std::unique_ptr<song::frmMain> main;
    std::unique_ptr<cd::frmDemo> w;
    std::string home;

    void SetUp() override {
        home = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") + "/ripper-home-" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name();
        std::filesystem::remove_all(home);
        if (const char* old = std::getenv("VELARO_HOME")) oldHome = old;
        setenv("VELARO_HOME", home.c_str(), 1);
        inert.get().cd = &cd;
        inert.get().wma = &wma;
        cd.lengths = {176400 * 3, 176400 * 2 + 2352, 2352 * 10};
        main = std::make_unique<song::frmMain>(ui.rt, inert.get());
    }
    void TearDown() override {
        if (oldHome) setenv("VELARO_HOME", oldHome->c_str(), 1);
        else unsetenv("VELARO_HOME");
    }
    std::optional<std::string> oldHome;
    void open() {
        w = std::make_unique<cd::frmDemo>(ui.rt, inert.get(), main.get());
        w->load();
    }
    std::vector<std::string> rows() const {
        std::vector<std::string> r;
        for (int i = 0; i < w->lstTracks.listCount(); ++i) r.push_back(w->lstTracks.list(i));
        return r;
    }
    std::vector<std::string> boxes() const {
        std::vector<std::string> b;
        for (const auto& s : ui.dialogs.messageBoxes()) b.push_back(s.title + "|" + s.text);
        return b;
    }
};

TEST_F(Ripper, ListsTheDriveItsFlagsAndTracksWithoutCdText) {
    open();
    EXPECT_EQ(w->caption, "Velaro Cd Ripper");
    ASSERT_EQ(w->cmbCDDrives.listCount(), 1);
    EXPECT_EQ(w->cmbCDDrives.list(0), "D: Memory drive");
    EXPECT_EQ(w->chkRWFlags(0).value(), 1);
    EXPECT_EQ(w->chkRWFlags(1).value(), 0);
    EXPECT_EQ(w->chkRWFlags(6).value(), 1);  // bit 20
    EXPECT_EQ(w->chkRWFlags(9).value(), 1);  // bit 24
    EXPECT_EQ(w->chkRWFlags(11).value(), 1);
    EXPECT_EQ(w->chkRWFlags(2).caption(), "Drive can read CD-R/RW media \"method 2\"");
    EXPECT_EQ(w->lblMaxReadSpeed.caption(), "7,056 Kbps");
    EXPECT_EQ(w->lblCacheSize.caption(), "2,048 Kbps");
    EXPECT_TRUE(w->Cmdbutton(3).enabled());
    EXPECT_EQ(rows(), (std::vector<std::string>{"01\tTrack 1\t[00:03]", "02\tTrack 2\t[00:02]", "03\tTrack 3\t[00:00]"}));
    EXPECT_EQ(w->txtCDArtist.text(), "Unknown Artist");
    EXPECT_EQ(w->txtCDAlbum.text(), "Unknown Album");
    EXPECT_EQ(w->SliderVolume.value(), -800);
    EXPECT_EQ(w->cmbWMAEncodingBitrate.list(0), "192 Kbps");
    EXPECT_EQ(w->cmbWMAEncodingBitrate.itemData(1), 128000);
    EXPECT_TRUE(boxes().empty());
}

TEST_F(Ripper, AWrongStreamLibraryIsToldAndTheWindowCarriesOn) {
    struct OldStreams : platform::InertAudioStreams {
        uint32_t GetVersion() override { return 2; }
    } old;
    inert.get().streams = &old;
    open();
    EXPECT_EQ(boxes(), (std::vector<std::string>{"Bass.Dll|BASS version 2.1 was not loaded"}));
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].style, ui::vbCritical);
    EXPECT_EQ(w->lstTracks.listCount(), 3);
}

TEST_F(Ripper, NoDriveNoDiscAndABadTrack) {
    cd.hasDrive = false;
    open();
    EXPECT_EQ(w->cmbCDDrives.listCount(), 0);
    EXPECT_EQ(w->lstTracks.listCount(), 0);
    ui.loop.advance(200);
    EXPECT_TRUE(boxes().empty());

    cd.hasDrive = true;
    cd.disc = false;
    open();
    ui.loop.advance(200);
    EXPECT_EQ(w->lstTracks.listCount(), 0);
    EXPECT_TRUE(boxes().empty());

    // A track of length 0 is told once and the others stay.
    cd.disc = true;
    cd.lengths = {176400, 0, 176400};
    open();
    ui.loop.advance(500);
    EXPECT_EQ(rows(), (std::vector<std::string>{"01\tTrack 1\t[00:01]", "03\tTrack 3\t[00:01]"}));
    EXPECT_EQ(boxes(), (std::vector<std::string>{"Error|There was an error.\r\nError Code : 13"}));
}

TEST_F(Ripper, CdTextFillsAlbumArtistAndLines) {
    using namespace std::string_literals;
    cd.cdText = "TITLE0=Album\0PERFORMER0=Band\0TITLE1=One\0PERFORMER1=Ann\0TITLE2=Two = 2\0\0"s;
    cd.lengths = {176400, 176400 * 2, -1};  // the third is a data track
    open();
    EXPECT_EQ(w->txtCDAlbum.text(), "Album");
    EXPECT_EQ(w->txtCDArtist.text(), "Band");
    EXPECT_EQ(rows(), (std::vector<std::string>{"01\tOne / Ann\t[00:01]", "02\tTwo = 2 / \t[00:02]"}));
    EXPECT_TRUE(boxes().empty());
}

TEST_F(Ripper, DoorButtonsAndTheTimerFollowTheTray) {
    open();
    w->lstTracks.setListIndex(0);
    ASSERT_EQ(cd.playingTrack(), 0);
    w->Cmdbutton(5).userClick();  // open
    EXPECT_TRUE(cd.open);
    EXPECT_EQ(w->lstTracks.listCount(), 0);
    EXPECT_EQ(cd.playingTrack(), -1);
    ui.loop.advance(60);
    EXPECT_EQ(w->chkRWFlags(14).value(), 1);
    w->Cmdbutton(6).userClick();  // close: the timer refills the list
    EXPECT_EQ(w->lstTracks.listCount(), 0);
    ui.loop.advance(60);
    EXPECT_EQ(w->chkRWFlags(14).value(), 0);
    EXPECT_EQ(w->lstTracks.listCount(), 3);
    w->Cmdbutton(3).userClick();
    ui.loop.advance(60);
    EXPECT_EQ(w->chkRWFlags(13).value(), 1);
    // No door stays locked behind the window.
    w->unload();
    EXPECT_FALSE(cd.locked);
    w->Cmdbutton(9).userClick();
    EXPECT_EQ(w->height, cd::frmDemo::kInfoHeight);
    EXPECT_EQ(w->Cmdbutton(9).caption(), "&Drive Info <<");
}

TEST_F(Ripper, ExtractionWritesTheWaveAndHandsItToTheMainWindow) {
    open();
    main->Cmd_Play.setEnabled(true);
    w->lstTracks.setListIndex(1);
    const std::string saved = home + "/kept.wav";
    ui.dialogs.answerMsgBox(ui::vbOK);
    ui.dialogs.answerFile(saved);
    w->Cmdbutton(7).userClick();
    const std::string wav = readWholeFile(cd::frmDemo::trackPath());
    ASSERT_EQ(wav.size(), 44u + 176400 * 2 + 2352);
    const auto u32 = [&](size_t at) {
        return static_cast<uint32_t>(static_cast<uint8_t>(wav[at]) | static_cast<uint8_t>(wav[at + 1]) << 8 |
                                     static_cast<uint8_t>(wav[at + 2]) << 16 | static_cast<uint8_t>(wav[at + 3]) << 24);
    };
    EXPECT_EQ(u32(4), wav.size() - 8);
    EXPECT_EQ(u32(40), wav.size() - 44);
    for (size_t i = 0; i < 5000; ++i) ASSERT_EQ(static_cast<uint8_t>(wav[44 + i]), static_cast<uint8_t>(i * 7 + 1));
    EXPECT_EQ(readWholeFile(saved), wav);
    EXPECT_EQ(boxes(), (std::vector<std::string>{"VELARO DECK|WAV File Encoded."}));
    EXPECT_EQ(cd.doorLog, (std::vector<std::string>{"2", "3"}));
    EXPECT_EQ(main->LabelSongLength.caption(), "    From CdAudio TRACK2");
    EXPECT_TRUE(main->CdWaveLoaded);
    EXPECT_TRUE(main->Cmdplw.visible() && main->Cmdplw.enabled());
    EXPECT_TRUE(main->cmdstw.visible() && main->cmdstw.enabled());
    EXPECT_FALSE(main->Cmd_Play.enabled());
    EXPECT_FALSE(w->visible());
    EXPECT_FALSE(w->trackSaved);
    w->unload();
    EXPECT_FALSE(main->CdWaveLoaded);
}

TEST_F(Ripper, AnEmptyStreamGivesTheBareHeaderAndCancelKeepsTheHandover) {
    open();
    cd.lengths[0] = 0;
    // The row still stands; the stream can't be made: a message and no file.
    w->ExtractAudioTrack(0);
    EXPECT_EQ(boxes(), (std::vector<std::string>{"VELARO DECK|Unable to Create CD Stream!"}));
    EXPECT_FALSE(fileExists(cd::frmDemo::trackPath()));
    EXPECT_FALSE(cd.locked);

    ui.dialogs.clearLog();
    cd.lengths[0] = 176400;
    cd.emptyStreams = true;
    ui.dialogs.answerMsgBox(ui::vbOK);
    ui.dialogs.answerCancel();
    w->ExtractAudioTrack(0);
    const std::string wav = readWholeFile(cd::frmDemo::trackPath());
    ASSERT_EQ(wav.size(), 44u);
    EXPECT_EQ(static_cast<uint8_t>(wav[4]), 36);
    EXPECT_EQ(static_cast<uint8_t>(wav[40]), 0);
    EXPECT_TRUE(main->CdWaveLoaded);
}

TEST_F(Ripper, WmaTagsOnlyFromFilledBoxesAndNoneWhenUnticked) {
    open();
    w->optExtractMode(1).userClick();
    EXPECT_TRUE(w->picWMAExtractOptions.visible());
    w->lstTracks.setListIndex(2);
    w->cmbWMAEncodingBitrate.setListIndex(1);
    w->txtWMATags(0).setText("Song");
    w->txtWMATags(6).setText("Pop");
    w->Cmdbutton(7).userClick();
    EXPECT_EQ(wma.tags, (std::vector<std::pair<std::string, std::string>>{}));
    EXPECT_EQ(wma.path, RPP(applicationFolder()) + "TRACK3.WMA");
    EXPECT_EQ(wma.written, 23520);
    ASSERT_EQ(boxes().size(), 1u);
    EXPECT_EQ(boxes()[0].rfind("WMA Encoding|WMA File Encoded. Encoding took ", 0), 0u);

    w->chkWMAFileTags.setValue(1);
    w->Cmdbutton(7).userClick();
    EXPECT_EQ(wma.tags, (std::vector<std::pair<std::string, std::string>>{
                            {"Title", "Song"}, {"WM/Genre", "Pop"}, {"", ""}}));
}

TEST_F(Ripper, PlaybackMovesOnAndGoesRoundTheDisc) {
    open();
    w->lstTracks.setListIndex(1);
    EXPECT_EQ(cd.playingTrack(), 1);
    EXPECT_TRUE(w->Cmdbutton(7).enabled());
    EXPECT_EQ(cd.streams.begin()->second.volume, 80);
    cd.fire(platform::kCdSyncEnd);  // from the library's thread: nothing runs yet
    EXPECT_EQ(cd.playingTrack(), 1);
    ui.loop.advance(1);
    EXPECT_EQ(cd.playingTrack(), 2);
    EXPECT_EQ(w->lstTracks.listIndex(), 2);
    // The fade's end on the last track goes on with the first.
    w->Cmdbutton(8).userClick();
    cd.fire(platform::kCdSyncSlide);
    ui.loop.advance(1);
    EXPECT_EQ(cd.playingTrack(), 0);
    EXPECT_EQ(w->lstTracks.listIndex(), 0);

    // Pause and resume.
    w->Cmdbutton(1).userClick();
    EXPECT_EQ(cd.ChannelIsActive(w->cdStream), 3);
    w->Cmdbutton(1).userClick();
    EXPECT_EQ(cd.ChannelIsActive(w->cdStream), 1);

    // Position, level bars.
    cd.streams[w->cdStream].pos = 176400;
    cd.level = 30000 | (15000u << 16);
    ui.loop.advance(60);
    EXPECT_EQ(w->SliderPosition.value(), 3333);
    EXPECT_EQ(w->lblTrackPosition.caption(), "00:01 / 00:03");
    auto& left = static_cast<ui::RecordingCanvas&>(w->picVUMeter(0).canvas());
    auto& right = static_cast<ui::RecordingCanvas&>(w->picVUMeter(1).canvas());
    ASSERT_EQ(left.entries().back().op, ui::RecordingCanvas::Op::FillBox);
    ASSERT_EQ(right.entries().back().op, ui::RecordingCanvas::Op::FillBox);
    EXPECT_EQ(left.entries().back().y, 0);  // 30000 is the full height
    EXPECT_EQ(right.entries().back().y, left.scaleHeight() / 2);
    EXPECT_EQ(right.entries().back().y2, right.scaleHeight());

    w->Cmdbutton(2).userClick();
    ui.loop.advance(60);
    EXPECT_EQ(w->SliderPosition.value(), 0);
    EXPECT_EQ(w->lblTrackPosition.caption(), "");
}

TEST_F(Ripper, CdErrorStopsAndEmptiesTheList) {
    open();
    w->lstTracks.setListIndex(0);
    cd.fire(platform::kCdSyncCdError);
    ui.loop.advance(1);
    EXPECT_EQ(boxes(), (std::vector<std::string>{
                           "Error|There was an error playing back and Audio CD stream. Most probable cause is the CD "
                           "drive was opened."}));
    EXPECT_EQ(w->lstTracks.listCount(), 0);
    EXPECT_EQ(cd.playingTrack(), -1);
    EXPECT_EQ(w->SliderPosition.value(), 0);
}

}  // namespace

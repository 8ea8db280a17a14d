// The skinned player: its guard, and behind it (the album counter set by the
// test) the transport, its timers on the virtual clock, the knobs, the face.

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "core/player/music_mp3.h"
#include "core/tags/frm_tags.h"
#include "core/ui/headless.h"
#include "core/ui/recording_canvas.h"
#include "support/fake_media_graph.h"

using namespace velaro;
using namespace velaro::player;
using velaro::testing::ClockGraph;

namespace {

// MPEG-1 layer III frames, 128 kbit/s at 44.1 kHz.
std::string audioFrames(int count) {
    std::string s;
    for (int i = 0; i < count; ++i) {
        std::string f(417, static_cast<char>(i * 3 + 1));
        f[0] = '\xFF', f[1] = '\xFB', f[2] = '\x90', f[3] = '\x44';
        s += f;
    }
    return s;
}

std::string field(const std::string& s, size_t n) { return (s + std::string(n, '\0')).substr(0, n); }

std::string id3(const std::string& title, const std::string& artist, const std::string& album) {
    return "TAG" + field(title, 30) + field(artist, 30) + field(album, 30) + "2001" + field("", 30) + "\x0c";
}

void putFile(const std::string& dir, const std::string& name, const std::string& content) {
    std::ofstream(dir + "/" + name, std::ios::binary) << content;
}

// A folder of its own per test process, with these files in it.
std::string albumDir(const std::string& name, const std::vector<std::string>& files) {
    const std::string dir = ::testing::TempDir() + "player-" + std::to_string(getpid()) + "-" + name;
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    for (const auto& f : files) putFile(dir, f, audioFrames(8));
    return dir;
}

struct Player {
    ui::Headless h;
    tags::TagsState state;
    settings::mConfig config;
    PlayerModule module;
    ClockGraph graph{h.loop};
    MusicMp3 p{h.rt, state, config, module, graph};
    ui::RecordingCanvas strip{6, 12, 190, 16};

    Player() {
        config.appFolder = ::testing::TempDir() + "/player-home";
        p.picScroll.attachCanvas(&strip);
        p.load();
    }
    ~Player() { p.picScroll.attachCanvas(nullptr); }
    // What the album scan would do, were there one.
    void openAlbum(const std::string& dir) {
        module.albumCount = 1;
        p.picAlbum.load(1).tag = dir;
        p.Play_Album(1);
    }
    int lastCell(ui::PictureBox& b) {
        auto& c = dynamic_cast<ui::RecordingCanvas&>(b.canvas());
        for (auto it = c.entries().rbegin(); it != c.entries().rend(); ++it)
            if (it->op == ui::RecordingCanvas::Op::PaintCell) return it->cell;
        return -1;
    }
};

}  // namespace

TEST(MusicMp3, ConvertTimeAtTheHourMarks) {
    EXPECT_EQ(Convert_Time(0), "00:00");
    EXPECT_EQ(Convert_Time(59), "00:59");
    EXPECT_EQ(Convert_Time(3599), "59:59");
    EXPECT_EQ(Convert_Time(3600), "01:00:00");
    EXPECT_EQ(Convert_Time(3661), "01:01:01");
    EXPECT_EQ(Convert_Time(36000 * 10 + 5), "100:00:05");
}

TEST(MusicMp3, WithNoAlbumTheTransportDoesNothing) {
    const std::string dir = albumDir("guard", {"one.mp3", "two.mp3"});
    Player t;
    t.p.ListaRep.setPath(dir);
    t.state.PlayerFile = dir + "/one.mp3";
    ASSERT_EQ(t.module.albumCount, 0);
    t.p.lblTiempoT.setCaption("00:07");
    t.p.Play();
    t.p.Pause_Play();
    t.p.Stop_Player();
    t.p.Form_KeyUp('X', 0);
    t.p.imgNormal_MouseDown(1, 1);
    t.h.loop.advance(1000);
    EXPECT_TRUE(t.graph.rendered.empty());
    EXPECT_EQ(t.p.playState, "false");
    EXPECT_EQ(t.p.lblTiempoT.caption(), "00:07");  // Stop_Player left before resetting it
    // A click on the list sets the state first, as designed, then Play leaves.
    t.p.ListaRep.setListIndex(1);
    EXPECT_EQ(t.p.playState, "true");
    EXPECT_EQ(t.p.lblTrackRep.caption(), "Track 2 of 2");
    EXPECT_TRUE(t.graph.rendered.empty());
}

TEST(MusicMp3, PlaysPausesAndStopsOnTheClock) {
    const std::string dir = albumDir("transport", {"b.mp3", "A.mp3", "c.wav", "skip.txt"});
    Player t;
    t.openAlbum(dir);
    ASSERT_EQ(t.p.ListaRep.listCount(), 3);
    EXPECT_EQ(t.p.ListaRep.list(0), "A.mp3");  // by name, case aside
    t.graph.duration = 3661.5;
    t.p.ListaRep.setListIndex(0);
    EXPECT_EQ(t.graph.file, dir + "/A.mp3");
    EXPECT_EQ(t.state.PlayerFile, dir + "/A.mp3");
    EXPECT_EQ(t.p.playState, "true");
    EXPECT_EQ(t.p.lblDuracion.caption(), "01:01:01");
    EXPECT_EQ(t.p.lblTrackRep.caption(), "Track 1 of 3");
    EXPECT_EQ(t.lastCell(t.p.imgNormal(1)), 1 * kBotonesColumns + 1);  // Play lit
    EXPECT_EQ(t.lastCell(t.p.imgNormal(3)), 3);

    t.h.loop.advance(2450);
    EXPECT_EQ(t.p.lblTiempoT.caption(), "00:02");
    EXPECT_EQ(t.p.imgNormal(15).left(), 1);  // 2 s of an hour is still the first pixel

    t.p.Form_KeyUp('C', 0);
    EXPECT_EQ(t.p.playState, "pause");
    EXPECT_EQ(t.graph.State(), 1);
    EXPECT_EQ(t.lastCell(t.p.imgNormal(2)), 1 * kBotonesColumns + 2);
    t.h.loop.advance(5000);
    EXPECT_EQ(t.p.lblTiempoT.caption(), "00:02");  // the timer shows nothing while paused
    t.p.Play();  // Play on a paused track resumes it
    EXPECT_EQ(t.p.playState, "true");
    EXPECT_EQ(t.graph.rendered.size(), 1u);
    t.h.loop.advance(1000);
    EXPECT_EQ(t.p.lblTiempoT.caption(), "00:03");

    t.p.imgNormal_MouseDown(3, 1);
    EXPECT_EQ(t.p.playState, "false");
    EXPECT_EQ(t.p.lblTiempoT.caption(), "00:00");
    EXPECT_EQ(t.p.frmMini.lblTiempoT.caption(), "00:00");
    EXPECT_EQ(t.p.imgNormal(15).left(), 0);
    EXPECT_TRUE(t.graph.file.empty());  // released
    EXPECT_FALSE(t.p.playTimer.enabled());
    EXPECT_EQ(t.lastCell(t.p.imgNormal(3)), 1 * kBotonesColumns + 3);

    // A file the graph cannot render stops the player without a word.
    std::filesystem::rename(dir + "/b.mp3", dir + "/broken.mp3");
    t.p.ListaRep.setPath(dir);
    t.p.ListaRep.setListIndex(1);
    EXPECT_EQ(t.graph.rendered.back(), dir + "/broken.mp3");
    EXPECT_EQ(t.p.playState, "false");
    EXPECT_FALSE(t.p.playTimer.enabled());
    EXPECT_TRUE(t.h.dialogs.messageBoxes().empty());
}

TEST(MusicMp3, TrackEndsMoveOnRepeatAndStopAtTheLast) {
    const std::string dir = albumDir("ends", {"1.mp3", "2.mp3"});
    Player t;
    t.openAlbum(dir);
    t.graph.duration = 3;
    t.p.ListaRep.setListIndex(0);
    t.h.loop.advance(3200);
    EXPECT_EQ(t.graph.file, dir + "/2.mp3");
    EXPECT_EQ(t.p.ListaRep.listIndex(), 1);
    EXPECT_EQ(t.p.playState, "true");

    t.p.Form_KeyUp('R', 0);
    EXPECT_TRUE(t.p.repeatActive);
    t.h.loop.advance(3200);
    EXPECT_EQ(t.graph.rendered, (std::vector<std::string>{dir + "/1.mp3", dir + "/2.mp3", dir + "/2.mp3"}));

    t.p.Player_Repeat();
    t.h.loop.advance(3200);
    EXPECT_EQ(t.p.playState, "false");  // the last track, and no next album
    EXPECT_EQ(t.graph.rendered.size(), 3u);
    EXPECT_FALSE(t.p.playTimer.enabled());
}

TEST(MusicMp3, TheKnobRewindsAndFiveSecondsForwardEndsTheTrack) {
    const std::string dir = albumDir("seek", {"s.mp3"});
    Player t;
    t.openAlbum(dir);
    t.graph.duration = 100;
    t.p.Five_Seg_Forward();  // stopped: nothing
    EXPECT_TRUE(t.graph.seeks.empty());
    t.p.ListaRep.setListIndex(0);
    t.h.loop.advance(40000);
    EXPECT_EQ(t.p.imgNormal(15).left(), 52);
    t.p.imgNormal(15).MouseDown(1, 0, 60, 5);
    t.p.imgNormal(15).MouseMove(1, 0, 120, 5);
    EXPECT_EQ(t.p.imgNormal(15).left(), 52);  // the knob does not follow
    t.h.loop.advance(1000);
    EXPECT_EQ(t.p.lblTiempoT.caption(), "00:40");  // the position timer waits during the drag
    t.p.imgNormal(15).MouseUp(1, 0, 120, 5);
    EXPECT_FALSE(t.p.seekDragging);
    EXPECT_DOUBLE_EQ(t.graph.seeks.back(), 0);  // nothing sets the target: back to the start
    t.h.loop.advance(1050);
    EXPECT_EQ(t.p.lblTiempoT.caption(), "00:01");

    t.graph.SetCurrentPosition(97);
    t.p.Form_KeyPress('a');
    EXPECT_DOUBLE_EQ(t.graph.seeks.back(), 92);
    t.p.Form_KeyPress('D');
    t.p.Form_KeyPress('d');
    EXPECT_DOUBLE_EQ(t.graph.seeks.back(), 100);  // no further than the end
    t.h.loop.advance(100);
    EXPECT_EQ(t.p.playState, "false");
}

TEST(MusicMp3, VolumeIsQuadraticAndMuteWaitsForTheNextStart) {
    const std::string dir = albumDir("volume", {"v.mp3"});
    Player t;
    t.p.Ajust_Volume(45);
    EXPECT_EQ(t.p.volumeLevel, -2601);
    t.p.Ajust_Volume(200);
    EXPECT_EQ(t.p.imgNormal(16).top(), 89);
    EXPECT_EQ(t.p.volumeLevel, -10000);
    t.p.Form_KeyPress('+');
    EXPECT_EQ(t.p.imgNormal(16).top(), 87);
    t.p.Ajust_Volume(-5);
    EXPECT_EQ(t.p.volumeLevel, 0);

    t.openAlbum(dir);
    t.p.Ajust_Volume(45);
    t.p.Form_KeyUp('S', 0);
    EXPECT_TRUE(t.p.muteActive);
    t.p.ListaRep.setListIndex(0);
    EXPECT_EQ(t.graph.volumes.back(), -10000);
    t.p.Player_Mute();
    EXPECT_EQ(t.graph.volumes.back(), -10000);  // no change until the next start
    // A drag on the knob: the grip stays, so the knob runs ahead of the pointer.
    t.p.imgNormal(16).MouseDown(1, 0, 4, 10);
    t.p.imgNormal(16).MouseMove(1, 0, 4, 20);
    EXPECT_EQ(t.p.imgNormal(16).top(), 55);
    t.p.imgNormal(16).MouseMove(1, 0, 4, 21);
    EXPECT_EQ(t.p.imgNormal(16).top(), 66);
    EXPECT_EQ(t.graph.volumes.back(), -(74 * 74));
    EXPECT_EQ(t.p.volumeLevel, -(74 * 74));
    t.p.imgNormal(16).MouseUp(1, 0, 4, 21);
    EXPECT_FALSE(t.p.volumeDragging);
}

TEST(MusicMp3, TheIntroScanPlaysTenSeconds) {
    const std::string dir = albumDir("intro", {"i1.mp3", "i2.mp3"});
    Player t;
    t.openAlbum(dir);
    t.p.Form_KeyUp('I', 0);
    EXPECT_TRUE(t.p.Timer_Intro.enabled());
    EXPECT_EQ(t.lastCell(t.p.imgNormal(5)), 1 * kMenuColumns + 0);
    t.p.Player_Repeat();
    t.p.ListaRep.setListIndex(0);
    t.h.loop.advance(9500);
    EXPECT_EQ(t.p.introSeconds, 9);
    EXPECT_EQ(t.graph.rendered.size(), 1u);
    t.h.loop.advance(600);
    // Ten ticks with repeat: the same track from the top.
    EXPECT_EQ(t.graph.rendered, (std::vector<std::string>{dir + "/i1.mp3", dir + "/i1.mp3"}));
    EXPECT_EQ(t.p.introSeconds, 0);
    EXPECT_LT(t.graph.CurrentPosition(), 1);
    // Pausing holds the scan's count.
    t.h.loop.advance(3000);
    t.p.Pause_Play();
    EXPECT_FALSE(t.p.Timer_Intro.enabled());
    t.h.loop.advance(20000);
    EXPECT_EQ(t.p.introSeconds, 3);
    t.p.Pause_Play();
    EXPECT_TRUE(t.p.Timer_Intro.enabled());
    // Without repeat the tenth second asks for the next track, which does nothing here.
    t.p.Player_Repeat();
    t.h.loop.advance(7000);
    EXPECT_EQ(t.p.introSeconds, 0);
    EXPECT_EQ(t.graph.rendered.size(), 2u);
    t.p.Intro();
    EXPECT_FALSE(t.p.Timer_Intro.enabled());
}

TEST(MusicMp3, TagsFillTheFaceAndOnlyAFileNameFillsTheStrip) {
    const std::string dir = albumDir("tags", {});
    putFile(dir, "tagged.mp3", audioFrames(20) + id3("Song", "The Artist", "First Album"));
    putFile(dir, "long.mp3", audioFrames(20) + id3("Song", "An Artist With A Name", "And An Album Title Too"));
    putFile(dir, "My Song.mp3", audioFrames(20));
    Player t;
    t.p.ListaRep.setPath(dir);
    t.module.scrollText = "before";

    t.state.PlayerFile = dir + "/tagged.mp3";
    t.p.Load_File_Tags();
    EXPECT_EQ(t.p.lblTrackRuta.caption(), "The Artist - First Album");
    EXPECT_EQ(t.p.lblTrackRuta.toolTipText, dir);
    EXPECT_EQ(t.p.trackArtist, "The Artist");
    EXPECT_EQ(t.p.lblBitrate.caption(), "128 Kbps");
    EXPECT_EQ(t.module.scrollText, "before");  // both tags: the strip stays as it was

    t.state.PlayerFile = dir + "/long.mp3";
    t.p.Load_File_Tags();
    EXPECT_EQ(t.p.lblTrackRuta.caption(), "An Artist With A Name - And An...");
    EXPECT_EQ(t.p.lblTrackRuta.toolTipText, "An Artist With A Name - And An Album Title Too");

    t.state.PlayerFile = dir + "/My Song.mp3";
    t.p.Load_File_Tags();
    EXPECT_EQ(t.module.scrollText, "My Song");
    EXPECT_EQ(t.p.picScroll.tag, t.state.PlayerFile);
    ASSERT_EQ(t.strip.printsSinceCls().size(), 1u);
    EXPECT_EQ(t.strip.printsSinceCls()[0].text, "My Song");
    EXPECT_EQ(t.strip.printsSinceCls()[0].x, 95 - 21);  // centred
}

TEST(MusicMp3, TheStatusStripBlanksAnOverlongTitleWhileItsTimerRuns) {
    Player t;
    t.p.Scroll_Text("short", t.p.picScroll);
    EXPECT_FALSE(t.p.Timer_Texto.enabled());
    t.p.picScroll_Click();
    EXPECT_FALSE(t.p.Timer_Texto.enabled());  // a fitting text never scrolls

    t.module.scrollText = std::string(40, 'x');  // 240 pixels in a 190 pixel strip
    t.p.Scroll_Text(t.module.scrollText, t.p.picScroll);
    EXPECT_TRUE(t.p.Timer_Texto.enabled());
    EXPECT_EQ(t.strip.printsSinceCls().size(), 1u);
    t.h.loop.advance(80);
    EXPECT_TRUE(t.strip.printsSinceCls().empty());
    for (int i = 1; i < 30; ++i) t.p.Timer_Texto_Timer();
    EXPECT_EQ(t.p.scrollPause, 0);  // the count turns over at 30
    EXPECT_FALSE(t.p.scrollStarted);
    t.p.picScroll_Click();
    EXPECT_FALSE(t.p.Timer_Texto.enabled());
    t.p.picScroll_Click();
    EXPECT_TRUE(t.p.Timer_Texto.enabled());
}

TEST(MusicMp3, TheCoverIsTheFirstFileThatMatchesAnyName) {
    Player t;
    const std::string dir = albumDir("covers", {"a_frt.jpg", "b_caratula.jpg", "song.mp3", "notes.txt"});
    t.p.Search_Caratula(dir);
    EXPECT_EQ(t.p.ImagenCaratulA.picture(), dir + "/a_frt.jpg");
    const std::string upper = albumDir("upper", {"Front.JPG", "back.bmp"});
    t.p.Search_Caratula(upper);
    EXPECT_EQ(t.p.ImagenCaratulA.picture(), upper + "/Front.JPG");
    const std::string none = albumDir("nocover", {"back.bmp", "portadaa.png"});
    t.p.Search_Caratula(none);
    EXPECT_EQ(t.p.ImagenCaratulA.picture(), "");
    t.p.Search_Caratula(dir + "/missing");
    EXPECT_EQ(t.p.ImagenCaratulA.picture(), "");

    EXPECT_FALSE(t.p.ListaRep.visible());
    t.p.Form_KeyUp('L', 0);
    EXPECT_TRUE(t.p.ListaRep.visible());
    EXPECT_FALSE(t.p.ImagenCaratulA.visible());
    EXPECT_TRUE(t.p.listShowing);
    EXPECT_EQ(t.lastCell(t.p.imgNormal(10)), 1 * kMenuColumns + 5);
}

TEST(MusicMp3, LyricsWalkTheLyricsWindowWhilePlaying) {
    const std::string dir = albumDir("lyrics", {});
    const std::string lyrics = "[00:01]one\r\n[00:03]two\r\n[00:05]three\r\n";
    std::string tail = audioFrames(30);
    // A Lyrics3 v2 block with its LYR field, then the ID3v1 record without artist.
    const std::string lyr = "LYR" + std::string(5 - std::to_string(lyrics.size()).size(), '0') +
                            std::to_string(lyrics.size()) + lyrics;
    const std::string block = "LYRICSBEGIN" + lyr;
    std::string size = std::to_string(block.size());
    tail += block + std::string(6 - size.size(), '0') + size + "LYRICS200" + id3("Sung", "", "");
    putFile(dir, "sung.mp3", tail);

    Player t;
    tags::FrmLyrics lyricsWindow(t.h.rt, t.state, t.config);
    t.p.frmLyrics = &lyricsWindow;
    lyricsWindow.show();
    t.openAlbum(dir);
    t.graph.duration = 10;
    t.p.ListaRep.setListIndex(0);
    ASSERT_EQ(t.p.LyricsRef.listCount(), 3);
    EXPECT_EQ(t.p.LyricsRef.list(0), "00:01    one");
    EXPECT_EQ(lyricsWindow.LyricsRef.listCount(), 3);
    EXPECT_TRUE(lyricsWindow.picLyrics.visible());
    EXPECT_FALSE(lyricsWindow.lblNoLyrics.visible());
    t.h.loop.advance(4500);
    EXPECT_EQ(lyricsWindow.highlightedText(), "00:03    two");
    t.h.loop.advance(2000);
    EXPECT_EQ(lyricsWindow.highlightedText(), "00:05    three");
    t.p.Stop_Player();
    EXPECT_EQ(lyricsWindow.lyricIndex, 0);  // reset with the stop
}

TEST(MusicMp3, TheEditorTakesTheFileAndGivesItBack) {
    const std::string dir = albumDir("editor", {"e.mp3"});
    Player t;
    ClockGraph editorGraph{t.h.loop};
    tags::FrmTags editor(t.h.rt, t.state, t.config, editorGraph);
    t.p.attachEditor(editor);
    editor.show();
    t.openAlbum(dir);
    t.graph.duration = 60;
    t.p.ListaRep.setListIndex(0);
    t.h.loop.advance(12300);

    editor.SuspendPlayback(dir + "/E.MP3");  // the same file, case aside
    EXPECT_EQ(t.p.playState, "false");
    EXPECT_TRUE(t.graph.file.empty());
    EXPECT_EQ(editor.savedPosition, 12);
    editor.ResumePlayback(dir + "/e.mp3");
    EXPECT_EQ(t.p.playState, "true");
    EXPECT_EQ(t.graph.file, dir + "/e.mp3");
    EXPECT_DOUBLE_EQ(t.graph.CurrentPosition(), 12);

    // The editor's own player is playing: the skinned player stops it first.
    editor.PlayFile(dir + "/e.mp3");
    EXPECT_EQ(t.state.PlayerState, "true");
    t.p.Play();
    EXPECT_EQ(t.state.PlayerState, "false");
    EXPECT_TRUE(editorGraph.file.empty());
    EXPECT_EQ(t.p.playState, "true");

    // In mini mode the editor's own clock goes to the compact face's label, as that face shows it.
    t.p.Stop_Player();
    Switch_Mini(t.p, true);
    t.h.dialogs.answerFile(dir + "/e.mp3");
    editor.btnParcourSon.userClick();
    editor.cmdPlayer(1).userClick();
    EXPECT_EQ(editorGraph.file, dir + "/e.mp3");
    t.h.loop.advance(2050);
    EXPECT_EQ(t.p.frmMini.lblTiempoT.caption(), "-00:28");
    t.p.frmMini.lblTiempoT.userClick();
    t.h.loop.advance(1000);
    EXPECT_EQ(t.p.frmMini.lblTiempoT.caption(), "00:03");
}

TEST(MusicMp3, TheAlbumShuffleDrawsAnOrderWithoutRepeats) {
    const std::string dir = albumDir("shuffle", {"s0.mp3", "s1.mp3", "s2.mp3"});
    Player t;
    std::vector<double> draws = {0.5, 0.5, 0.1, 0.9};
    size_t next = 0;
    t.p.Randomize = [] {};
    t.p.Rnd = [&] { return draws.at(next++); };
    t.openAlbum(dir);
    t.p.Randomize_Order("Album");
    // 0.5 gives 1; the second 0.5 clashes and is drawn again.
    EXPECT_EQ(t.p.shuffleOrder, (std::vector<int16_t>{1, 0, 2}));
    EXPECT_TRUE(t.p.shuffleReady);
    EXPECT_EQ(t.graph.rendered, (std::vector<std::string>{dir + "/s1.mp3"}));  // stopped: the first starts
    t.p.Randomize_Order("Album");  // the current one again: no change, no start
    EXPECT_EQ(t.graph.rendered.size(), 1u);
    t.p.Randomize_Order("Album");
    t.p.Randomize_Order("Album");
    EXPECT_EQ(t.graph.rendered, (std::vector<std::string>{dir + "/s1.mp3", dir + "/s0.mp3", dir + "/s2.mp3"}));
    EXPECT_EQ(t.p.shufflePos, 3);
    t.p.Randomize_Order("Album");  // past the end of the only album
    EXPECT_EQ(t.p.playState, "false");
    EXPECT_EQ(next, draws.size());
}

TEST(MusicMp3, TheAllAlbumShuffleNeverRepeatsAPair) {
    const std::string one = albumDir("all1", {"a.mp3", "b.mp3"});
    const std::string two = albumDir("all2", {"c.mp3"});
    Player t;
    t.module.albumCount = 2;
    t.p.picAlbum.load(1).tag = one;
    t.p.picAlbum.load(2).tag = two;
    // album 2 track 0; album 2 track 0 again (drawn anew); album 1 track 1; album 1 track 0.
    std::vector<double> draws = {0.9, 0.0, 0.9, 0.0, 0.1, 0.6, 0.1, 0.2};
    size_t next = 0;
    t.p.Rnd = [&] { return draws.at(next++); };
    t.p.Randomize_Order("All");
    EXPECT_EQ(t.graph.rendered.back(), two + "/c.mp3");
    EXPECT_EQ(t.module.currentAlbum, 2);
    t.p.Randomize_Order("All");
    EXPECT_EQ(t.graph.rendered.back(), one + "/b.mp3");
    t.p.Randomize_Order("All");
    EXPECT_EQ(t.graph.rendered.back(), one + "/a.mp3");
    EXPECT_EQ(t.p.shuffleHistory, (std::vector<std::string>{"2,0", "1,1", "1,0"}));
    EXPECT_EQ(t.p.historyCount, 3);
    t.p.Randomize_Order("All");  // every track has had its turn: no endless draw
    EXPECT_EQ(next, draws.size());
    EXPECT_EQ(t.graph.rendered.size(), 3u);
}

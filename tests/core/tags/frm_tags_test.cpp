// The tag editor at work: opening, stamping while a (fake) player plays,
// the two-pass save, the companion .lrc, the sliders and the messages.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "core/base/paths.h"
#include "core/tags/frm_tags.h"
#include "core/ui/headless.h"
#include "support/song_bytes.h"

using namespace velaro;
using namespace velaro::tags;
using velaro::testing::writeTemp;

namespace {

class FakeGraph : public platform::MediaGraph {
public:
    bool RenderFile(const std::string& path) override {
        file = path;
        ++renders;
        return true;
    }
    void Run() override { state = 2; }
    void Pause() override { state = 1; }
    void Stop() override { state = 0; }
    void Release() override {
        file.clear();
        ++releases;
    }
    double CurrentPosition() override { return position; }
    void SetCurrentPosition(double s) override { position = s; }
    double Duration() override { return file.empty() ? 0 : duration; }
    int State() override { return state; }
    void SetVolume(int v) override { volume = v; }
    int Volume() override { return volume; }
    void SetBalance(int) override {}

    std::string file;
    double position = 0, duration = 100;
    int state = 0, volume = 0, renders = 0, releases = 0;
};

// MPEG-1 layer III frames, 128 kbit/s at 44.1 kHz, 417 bytes each.
std::string audioFrames(int count) {
    std::string s;
    for (int i = 0; i < count; ++i) {
        std::string f(417, static_cast<char>(i * 7 + 1));
        f[0] = '\xFF';
        f[1] = '\xFB';
        f[2] = '\x90';
        f[3] = '\x44';
        s += f;
    }
    return s;
}

std::string readAll(const std::string& path) { return readWholeFile(path); }

struct Editor {
    ui::Headless h;
    TagsState state;
    settings::mConfig config;
    FakeGraph graph;
    FrmTags f{h.rt, state, config, graph};
    Editor() {
        config.appFolder = ::testing::TempDir() + "/tags-home";
        f.show();
    }
    void open(const std::string& path) {
        h.dialogs.answerFile(path);
        f.btnParcourSon.userClick();
    }
    std::vector<std::string> boxes() {
        std::vector<std::string> out;
        for (const auto& b : h.dialogs.messageBoxes()) out.push_back(b.text);
        return out;
    }
};

}  // namespace

TEST(TagEditor, OpensAFileAndShowsItsFields) {
    const std::string path = writeTemp("open.mp3", audioFrames(40));
    Editor e;
    EXPECT_EQ(e.f.caption, "Velaro  ID3 Tag & LyricsEditor  V.1.0");
    EXPECT_TRUE(e.state.TagEditorOpen);
    EXPECT_FALSE(e.f.cmdPlayer(1).enabled());
    e.open(path);
    EXPECT_EQ(e.f.currentFile, path);
    EXPECT_EQ(e.f.lblfile.caption(), path);
    EXPECT_TRUE(e.f.cmdPlayer(1).enabled());
    EXPECT_TRUE(e.f.btnParcourTxt.enabled());
    EXPECT_FALSE(e.f.cmdApply.enabled());
    EXPECT_EQ(e.f.cboGenre.listIndex(), 0);
    EXPECT_EQ(e.f.lblMPEGInfo.caption().rfind("<>Size:[", 0), 0u);
    EXPECT_NE(e.f.lblMPEGInfo.caption().find("\r\n<>CRCs:["), std::string::npos);
    ASSERT_EQ(e.f.listRef.size(), 1u);
    e.open(path);  // the same file again adds no second row
    EXPECT_EQ(e.f.listRef.size(), 1u);
    e.f.unload();
    EXPECT_FALSE(e.state.TagEditorOpen);
}

TEST(TagEditor, AddWhileStoppedChangesNothing) {
    const std::string path = writeTemp("stopped.mp3", audioFrames(10));
    Editor e;
    e.open(path);
    e.f.txtLyrics.setText("one\r\n");
    e.graph.position = 12;
    e.f.cmdAdd.userClick();
    EXPECT_EQ(e.f.txtLyrics.text(), "one\r\n");
    EXPECT_FALSE(e.f.cmdApply.enabled());
}

TEST(TagEditor, StampsWhilePlayingThenSavesTheMarksIntoTheFile) {
    const std::string audio = audioFrames(60);
    const std::string path = writeTemp("stamp.mp3", audio);
    Editor e;
    e.open(path);
    e.f.txtLyrics.setText("first line\r\nsecond line\r\n");
    e.f.cmdPlayer(1).userClick();
    EXPECT_EQ(e.state.PlayerState, "true");
    EXPECT_EQ(e.graph.file, path);
    e.graph.position = 3.2;
    e.f.cmdAdd.userClick();
    e.graph.position = 3723.6;  // an hour on
    e.f.cmdAdd.userClick();
    EXPECT_EQ(e.f.txtLyrics.text(), "[00:03]first line\r\n[01:02:04]second line\r\n");
    EXPECT_TRUE(e.f.cmdUndo.enabled());
    e.f.cmdUndo.userClick();
    EXPECT_EQ(e.f.txtLyrics.text(), "[00:03]first line\r\nsecond line\r\n");
    e.graph.position = 9;
    e.f.txtLyrics.selStart = 19;
    e.f.cmdAdd.userClick();

    // Saving while the music plays is refused.
    e.f.cmdApply.userClick();
    EXPECT_EQ(e.boxes(), (std::vector<std::string>{"Stop Music"}));
    EXPECT_EQ(readAll(path), audio);

    e.f.cmdPlayer(3).userClick();
    EXPECT_EQ(e.state.PlayerState, "false");
    EXPECT_TRUE(e.graph.file.empty());  // the file is let go
    e.f.txtTitle.setText("My Song");
    e.f.fieldKeyDown('g');
    ASSERT_TRUE(e.f.cmdApply.enabled());
    e.f.cmdApply.userClick();
    EXPECT_EQ(e.boxes(), (std::vector<std::string>{"Stop Music", "Done!"}));
    EXPECT_EQ(e.f.lblfile.caption(), path);

    const std::string saved = readAll(path);
    ASSERT_GT(saved.size(), audio.size());
    EXPECT_EQ(saved.substr(0, audio.size()), audio);  // the audio frames byte for byte
    Mmp3 m;
    const Mp3Info info = m.GetMp3Info(path);
    EXPECT_EQ(info.Title, "My Song");
    EXPECT_EQ(info.Lyrics, "[00:03]first line\r\n[00:09]second line\r\n");
    // A second save puts the tail in the same place.
    e.f.fieldKeyDown('x');
    e.f.cmdApply.userClick();
    EXPECT_EQ(readAll(path), saved);
}

TEST(TagEditor, SaveAsksForATitleAndLeavesAReadOnlyFileAlone) {
    const std::string audio = audioFrames(20);
    const std::string path = writeTemp("readonly.mp3", audio);
    Editor e;
    e.open(path);
    e.f.fieldKeyDown('a');
    e.f.cmdApply.userClick();
    EXPECT_EQ(e.boxes(), (std::vector<std::string>{"Insert Title"}));
    e.f.txtTitle.setText("Title");
    e.f.txtLyrics.setText("[00:01]la\r\n");
    e.f.fieldKeyDown('a');
    chmod(path.c_str(), 0444);
    e.f.cmdApply.userClick();
    chmod(path.c_str(), 0644);
    const auto boxes = e.boxes();
    ASSERT_EQ(boxes.size(), 3u);
    EXPECT_NE(boxes[1].find("Permission denied"), std::string::npos) << boxes[1];
    EXPECT_EQ(boxes[2], "Done!");
    EXPECT_EQ(readAll(path), audio);
}

TEST(TagEditor, CompanionLrcStandsInForMissingLyrics) {
    const std::string dir = ::testing::TempDir() + "/companion";
    std::filesystem::create_directories(dir);
    const std::string withLrc = dir + "/a.mp3", emptyLrc = dir + "/b.mp3";
    writeWholeFile(withLrc, audioFrames(20));
    writeWholeFile(dir + "/a.lrc", "[00:01]uno\n\n[00:02]due\n");
    writeWholeFile(emptyLrc, audioFrames(20));
    writeWholeFile(dir + "/b.lrc", "");
    Editor e;
    e.open(emptyLrc);
    EXPECT_EQ(e.f.txtLyrics.text(), "");
    EXPECT_FALSE(e.f.companionLyrics);
    e.open(withLrc);
    EXPECT_TRUE(e.f.companionLyrics);
    EXPECT_EQ(e.f.txtLyrics.text(), "[00:01]uno\r\n[00:02]due\r\n");
    // Playing shows the lyrics window with the companion's lines.
    e.f.cmdPlayer(1).userClick();
    EXPECT_TRUE(e.f.frmLyrics.loaded());
    ASSERT_EQ(e.f.LyricsRef.listCount(), 2);
    EXPECT_EQ(e.f.frmLyrics.lblLyrics(1).caption(), "due");
    e.graph.position = 1.6;
    e.h.loop.advance(100);
    EXPECT_EQ(e.f.lblTiempoT.caption(), "00:02");
    EXPECT_EQ(e.f.lyricPos, 1);
    EXPECT_TRUE(e.f.frmLyrics.lblLyrics(1).font().bold);
    e.f.cmdPlayer(3).userClick();
    EXPECT_FALSE(e.f.frmLyrics.loaded());
    EXPECT_EQ(e.f.LyricsRef.listCount(), 0);
    e.f.txtTitle.setText("Both");
    e.f.fieldKeyDown('b');
    e.f.cmdApply.userClick();
    Mmp3 m;
    EXPECT_EQ(m.GetMp3Info(withLrc).Lyrics, "[00:01]uno\r\n[00:02]due\r\n");
    // A file with lyrics of its own ignores its .lrc.
    writeWholeFile(dir + "/a.lrc", "[00:05]other\n");
    e.open(withLrc);
    EXPECT_FALSE(e.f.companionLyrics);
    EXPECT_EQ(e.f.txtLyrics.text(), "[00:01]uno\r\n[00:02]due\r\n");
}

TEST(TagEditor, SlidersAndLeaving) {
    EXPECT_EQ(thumbLeft(0, 200), 1);
    EXPECT_EQ(thumbLeft(200, 200), 129);
    EXPECT_EQ(thumbLeft(100, 200), 65);
    EXPECT_EQ(volumeForThumb(89), -5000);
    EXPECT_EQ(volumeForThumb(0), 0);
    EXPECT_EQ(volumeForThumb(44.5), -2500);
    const std::string path = writeTemp("sliders.mp3", audioFrames(10));
    Editor e;
    e.open(path);
    e.f.cmdPlayer(1).userClick();
    e.f.Ajust_Volume(89);
    EXPECT_EQ(e.graph.volume, -5000);
    e.graph.position = 50;
    e.h.loop.advance(100);
    EXPECT_EQ(e.f.imgNormal(15).left(), 65);
    // In mini mode the compact player's label shows the time, here the time left.
    std::string mini;
    e.f.skinned.setMiniTime = [&](const std::string& t) { mini = t; };
    e.f.skinned.miniShowsElapsed = [] { return false; };
    e.state.MiniMode = true;
    e.graph.position = 30.4;
    e.h.loop.advance(100);
    EXPECT_EQ(mini, "-01:10");
    EXPECT_EQ(e.f.lblTiempoT.caption(), "00:50");
    e.state.MiniMode = false;
    e.graph.position = 50;
    e.h.loop.advance(100);
    e.f.SliderReproduccioN_Down(10);
    e.f.SliderReproduccioN_Move(20);  // the thumb runs ahead of the mouse
    e.f.SliderReproduccioN_Move(20);
    EXPECT_EQ(e.f.imgNormal(15).left(), 85);
    e.f.SliderReproduccioN_Up(1);
    EXPECT_DOUBLE_EQ(e.graph.position, 65.625);
    e.f.cmdPlayer(3).userClick();
    // Leaving without a change asks nothing.
    e.f.cmdok.userClick();
    EXPECT_TRUE(e.boxes().empty());
    EXPECT_FALSE(e.f.loaded());
    Editor changed;
    changed.open(path);
    changed.f.fieldKeyDown('q');
    changed.h.dialogs.answerMsgBox(ui::vbNo);
    changed.f.cmdok.userClick();
    EXPECT_EQ(changed.boxes(), (std::vector<std::string>{"Exit ?"}));
    EXPECT_TRUE(changed.f.loaded());
}

// The playlist window's model on real files in a scratch folder: entries,
// .mpl files, picking, sorts against a literal selection sort, shuffle,
// the folder scan, the window's start and end, its settings file and looks.

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <random>

#include "core/base/cp1252.h"
#include "core/base/paths.h"
#include "core/platform/inert.h"
#include "core/player/plist.h"
#include "core/player/selection_sort.h"
#include "core/player/vb_random.h"
#include "core/ui/headless.h"

using namespace velaro;
using namespace velaro::player;
namespace fs = std::filesystem;

namespace {

std::string id3(const std::string& title, const std::string& artist) {
    std::string t = "TAG";
    for (const auto& [text, w] : {std::pair{title, 30}, {artist, 30}, {std::string(), 30}, {std::string(), 4},
                                  {std::string(), 30}}) {
        std::string f = text;
        f.resize(static_cast<size_t>(w), ' ');
        t += f;
    }
    return t + '\0';
}

class PlaylistTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string tmpl = tempFolder() + "/plistXXXXXX";
        dir = mkdtemp(tmpl.data());
        app = dir + "/app";
        fs::create_directories(app);
        std::error_code ec;
        oldCwd = fs::current_path(ec);  // may be gone when another test removed it
        if (ec) oldCwd = tempFolder();
        fs::current_path(dir);  // skin.ini lies in the current folder
        playlistSelection.clear();
    }
    void TearDown() override {
        fs::current_path(oldCwd);
        fs::remove_all(dir);
    }
    std::string file(const std::string& name, const std::string& bytes = "x") {
        const std::string p = dir + "/" + name;
        fs::create_directories(fs::path(p).parent_path());
        writeWholeFile(p, bytes);
        return p;
    }
    std::string mp3(const std::string& name, const std::string& title, const std::string& artist) {
        return file(name, std::string(400, '\0') + id3(title, artist));
    }
    std::unique_ptr<pList> make() { return std::make_unique<pList>(ui.rt, inert.get(), app); }
    void add(pList& l, const std::string& path) {
        if (l.AddEntry(path)) l.lstFilenames.addItem(path);
    }
    std::vector<std::string> paths(const pList& l) {
        std::vector<std::string> out;
        for (int i = 0; i < l.lstFilenames.listCount(); ++i) out.push_back(l.lstFilenames.list(i));
        return out;
    }
    std::vector<std::string> column(pList& l, int sub) {
        std::vector<std::string> out;
        for (int i = 1; i <= l.lstPlayList1.count(); ++i) out.push_back(l.lstPlayList1.item(i).subItems[sub - 1]);
        return out;
    }

    ui::Headless ui;
    platform::InertPlatform inert;
    std::string dir, app;
    fs::path oldCwd;
};

TEST_F(PlaylistTest, EntriesByKind) {
    auto l = make();
    const std::string tagged = mp3("m/Tagged.mp3", "Song", "Singer");
    const std::string bare = file("m/Bare.mp3", std::string(500, '\0'));
    const std::string wav = file("m/take.WAV");
    const std::string kar = file("m/duet.kar");
    EXPECT_TRUE(l->AddEntry(tagged));
    EXPECT_TRUE(l->AddEntry(bare));
    EXPECT_TRUE(l->AddEntry(wav));
    EXPECT_TRUE(l->AddEntry(kar));
    EXPECT_FALSE(l->AddEntry(dir + "/m/notes.txt"));
    EXPECT_FALSE(l->AddEntry("mp"));
    ASSERT_EQ(l->lstPlayList1.count(), 4);
    // AddEntry leaves the path list to its callers.
    EXPECT_EQ(l->lstFilenames.listCount(), 0);
    EXPECT_EQ(l->lstPlayList1.item(4).text, "4");
    EXPECT_EQ(column(*l, 1), (std::vector<std::string>{"Song", "Bare", dir + "/m/take", dir + "/m/duet"}));
    EXPECT_EQ(column(*l, 2), (std::vector<std::string>{"Singer", "", "Unknown", "Unknown"}));
}

TEST_F(PlaylistTest, LoadAndWriteMpl) {
    auto l = make();
    const std::string song = file("a/song.mid");
    // A missing file and a .txt line: the first is still listed, the second dropped; LF and CR LF both end lines.
    const std::string mpl = file("list.mpl", song + "\r\n" + dir + "/a/readme.txt\r\n" + dir + "/a/gone.mp3\n" +
                                                 dir + "/a/caf\xE9.wav\r\n");
    l->LoadPlaylist(dir + "/nothing.mpl");
    EXPECT_EQ(l->lstPlayList1.count(), 0);
    EXPECT_TRUE(ui.dialogs.shown().empty());
    l->LoadPlaylist(mpl);
    ASSERT_EQ(paths(*l), (std::vector<std::string>{song, dir + "/a/gone.mp3", dir + "/a/caf\xC3\xA9.wav"}));
    EXPECT_EQ(l->lstPlayList1.item(2).subItems[0], "gone");
    EXPECT_EQ(l->lstPlayList1.item(3).subItems[0], dir + "/a/caf\xE9");  // shown text is Windows-1252
    l->LoadPlaylist(mpl);  // appends
    EXPECT_EQ(l->lstPlayList1.count(), 6);
    EXPECT_EQ(l->lstPlayList1.item(6).text, "6");

    const std::string out = dir + "/out.mpl";
    l->WritePlaylist(out);
    const std::string once = song + "\r\n" + dir + "/a/gone.mp3\r\n" + dir + "/a/caf\xE9.wav\r\n";
    EXPECT_EQ(readWholeFile(out), once + once);

    // A file name that is not UTF-8 is already in the code page: written as it is.
    auto latin = make();
    add(*latin, dir + "/caf\xE9.mid");
    EXPECT_EQ(latin->lstPlayList1.item(1).subItems[0], dir + "/caf\xE9");
    latin->WritePlaylist(out);
    EXPECT_EQ(readWholeFile(out), dir + "/caf\xE9.mid\r\n");

    // A failed write leaves the old file as it was.
    fs::create_directories(dir + "/ro");
    const std::string kept = file("ro/keep.mpl", "old\r\n");
    fs::permissions(dir + "/ro", fs::perms::owner_read | fs::perms::owner_exec);
    if (::geteuid() != 0) {
        EXPECT_THROW(l->WritePlaylist(kept), std::exception);
        EXPECT_EQ(readWholeFile(kept), "old\r\n");
    }
    fs::permissions(dir + "/ro", fs::perms::owner_all);
}

TEST_F(PlaylistTest, DeleteRenumbersAndAsksWhenConfigured) {
    auto l = make();
    for (const char* n : {"a.mid", "b.mid", "c.mid"}) add(*l, dir + "/" + n);
    l->DeleteEntry(2);
    EXPECT_EQ(paths(*l), (std::vector<std::string>{dir + "/a.mid", dir + "/c.mid"}));
    EXPECT_EQ(l->lstPlayList1.item(2).text, "2");
    EXPECT_EQ(l->lstPlayList1.item(2).subItems[0], dir + "/c");

    l->ConfirmDelete = true;
    ui.dialogs.answerMsgBox(ui::vbNo);
    l->DeleteEntry(1);
    ASSERT_EQ(ui.dialogs.messageBoxes().size(), 1u);
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].title, "Sei sicuro?");
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].text, "Rimuovere la canzone dala lista?\r\nLista MP3:\r\n" + dir + "/a.mid");
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].style, ui::vbYesNo | ui::vbQuestion);
    EXPECT_EQ(l->lstFilenames.listCount(), 2);
    ui.dialogs.answerMsgBox(ui::vbYes);
    l->DeleteEntry(1);
    EXPECT_EQ(paths(*l), (std::vector<std::string>{dir + "/c.mid"}));

    // The Delete key and the buttons with no row selected do nothing.
    l->lstPlayList1.setSelectedItem(0);
    l->lstPlayList1_KeyDown(46);
    l->cmdDel.userClick();
    EXPECT_EQ(l->lstFilenames.listCount(), 1);
    l->lstPlayList1.setSelectedItem(1);
    ui.dialogs.answerMsgBox(ui::vbYes);
    l->lstPlayList1_KeyDown(46);
    EXPECT_EQ(l->lstFilenames.listCount(), 0);
}

TEST_F(PlaylistTest, PickingAnEntry) {
    auto l = make();
    l->PlayerTitle = "VD";
    const std::string song = file("s.kar", "MThd");
    add(*l, dir + "/missing.mid");
    add(*l, song);
    l->show();

    // A missing file: the box, the window stays, and the empty file the open made is gone again.
    l->lstPlayList1.setSelectedItem(1);
    l->lstPlayList1_DblClick();
    ASSERT_EQ(ui.dialogs.messageBoxes().size(), 1u);
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].text, "File Not Found");
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].title, "VelaroDeck");
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].style, ui::vbCritical);
    EXPECT_FALSE(fs::exists(dir + "/missing.mid"));
    EXPECT_TRUE(l->visible());
    EXPECT_EQ(playlistSelection, dir + "/missing.mid");

    l->lstPlayList1.setSelectedItem(2);
    l->lstPlayList1_DblClick();
    EXPECT_EQ(playlistSelection, song);
    EXPECT_FALSE(l->visible());
    EXPECT_EQ(l->caption, "VD - [" + dir + "/s-Unknown]  ");
    EXPECT_EQ(l->windowTitle, l->caption);
    EXPECT_TRUE(l->lstPlayList1.item(2).bold && l->lstPlayList1.item(2).subBold[1]);
    EXPECT_EQ(l->currentIndex, 2);

    // Past the end nothing happens; below 1 is entry 1.
    l->PlayEntry(7);
    EXPECT_EQ(l->currentIndex, 2);
    l->PlayEntry(-3);
    EXPECT_EQ(l->currentIndex, 1);
    EXPECT_FALSE(l->lstPlayList1.item(2).bold);
}

TEST_F(PlaylistTest, AdvancingKeepsItsQuirks) {
    auto l = make();
    add(*l, file("only.mid"));
    l->cbShuffle.setValue(1);
    l->NextEntry();  // one entry: r is 0, which falls on entry 1
    EXPECT_EQ(l->currentIndex, 1);
    EXPECT_EQ(playlistSelection, dir + "/only.mid");

    for (const char* n : {"b.mid", "c.mid", "d.mid"}) add(*l, file(n));
    for (int k = 0; k < 200; ++k) {
        l->NextEntry();
        EXPECT_NE(l->currentIndex, 4) << "the last entry is never drawn";
    }
    l->cbShuffle.setValue(0);
    l->PlayEntry(4);
    l->NextEntry();  // end of the list, no repeat: back to 1
    EXPECT_EQ(l->currentIndex, 1);
    EXPECT_TRUE(l->atEnd);
    l->PreviousEntry();  // from entry 1 to the last
    EXPECT_EQ(l->currentIndex, 4);
    l->cbRepeat.setValue(1);
    l->NextEntry();
    EXPECT_EQ(l->currentIndex, 1);
    l->lstPlayList1.setSelectedItem(3);
    l->ReplaySelected();
    EXPECT_EQ(l->currentIndex, 3);
}

// The sorts exactly as written, comparison by comparison.
struct Row {
    std::string title, artist, path;
};

void literalArtistSort(std::vector<Row>& r, const platform::TextCollation& c) {
    for (size_t i = 0; i < r.size(); ++i) {
        std::string minA = r[i].artist, minT = r[i].title;
        size_t idx = i;
        for (size_t j = i; j < r.size(); ++j) {
            if (c.compare(r[j].artist, minA) < 0) {
                minA = r[j].artist;
                minT = r[j].title;
                idx = j;
            } else if (c.compare(r[j].artist, minA) == 0 && c.compare(r[j].title, minT) < 0) {
                minT = r[j].title;
                idx = j;
            }
        }
        const Row old = r[i];
        r[i].title = minT;
        r[i].artist = minA;
        std::swap(r[i].path, r[idx].path);
        if (idx != i) {
            r[idx].title = old.title;
            r[idx].artist = old.artist;
        }
    }
}

void literalKeySort(std::vector<std::string>& keys, std::vector<Row>* rows, const platform::TextCollation& c) {
    for (size_t i = 0; i < keys.size(); ++i) {
        size_t idx = i;
        for (size_t j = i; j < keys.size(); ++j)
            if (c.compare(keys[j], keys[idx]) < 0) idx = j;
        std::swap(keys[i], keys[idx]);
        if (rows) std::swap((*rows)[i], (*rows)[idx]);
    }
}

TEST_F(PlaylistTest, SortsMatchTheSelectionSortWithTiesCaseAndAccents) {
    const std::vector<std::string> words = {"abc", "ABC", "Abc", "\xE9t\xE9", "ete", "\xC9T\xC9", "zed", "", "b", "B"};
    std::mt19937 gen(11);
    for (int round = 0; round < 12; ++round) {
        auto l = make();
        std::vector<Row> rows;
        const int n = 1 + static_cast<int>(gen() % 60);
        for (int i = 0; i < n; ++i) {
            const std::string t = words[gen() % words.size()], a = words[gen() % words.size()];
            // Paths are file-system names (UTF-8); titles and artists are Windows-1252.
            const std::string p = dir + "/" + cp1252ToUtf8(words[gen() % words.size()]) + std::to_string(i) + ".mp3";
            const int row = l->lstPlayList1.add(std::to_string(i + 1));
            l->lstPlayList1.item(row).subItems[0] = t;
            l->lstPlayList1.item(row).subItems[1] = a;
            l->lstFilenames.addItem(p);
            rows.push_back({t, a, p});
        }
        const auto& c = *inert.get().collation;

        std::vector<Row> expect = rows;
        literalArtistSort(expect, c);
        l->mnuArtist_Click();
        for (int i = 0; i < n; ++i) {
            EXPECT_EQ(l->lstPlayList1.item(i + 1).subItems[0], expect[i].title);
            EXPECT_EQ(l->lstPlayList1.item(i + 1).subItems[1], expect[i].artist);
            EXPECT_EQ(l->lstFilenames.list(i), expect[i].path);
            EXPECT_EQ(l->lstPlayList1.item(i + 1).text, std::to_string(i + 1));
        }

        rows = expect;
        std::vector<std::string> titles;
        for (const Row& r : rows) titles.push_back(r.title);
        literalKeySort(titles, &rows, c);
        l->mnuTitle_Click();
        for (int i = 0; i < n; ++i) {
            EXPECT_EQ(l->lstPlayList1.item(i + 1).subItems[0], rows[i].title);
            EXPECT_EQ(l->lstPlayList1.item(i + 1).subItems[1], rows[i].artist);
            EXPECT_EQ(l->lstFilenames.list(i), rows[i].path);
        }

        std::vector<std::string> ps;
        for (const std::string& p : paths(*l)) ps.push_back(utf8ToCp1252(p));
        literalKeySort(ps, nullptr, c);
        l->mnuFilename_Click();
        std::vector<std::string> got;
        for (const std::string& p : paths(*l)) got.push_back(utf8ToCp1252(p));
        EXPECT_EQ(got, ps);
        EXPECT_EQ(l->lstPlayList1.count(), n);  // rebuilt from the files
    }
}

TEST_F(PlaylistTest, ArtistTieKeepsTheFirstSpelling) {
    auto l = make();
    for (const auto& [t, a] : {std::pair{"zulu", "abc"}, {"alpha", "ABC"}}) {
        const int row = l->lstPlayList1.add("x");
        l->lstPlayList1.item(row).subItems[0] = t;
        l->lstPlayList1.item(row).subItems[1] = a;
        l->lstFilenames.addItem(std::string(t) + ".mid");
    }
    l->mnuArtist_Click();
    EXPECT_EQ(column(*l, 1), (std::vector<std::string>{"alpha", "zulu"}));
    EXPECT_EQ(column(*l, 2), (std::vector<std::string>{"abc", "abc"}));  // "ABC" is gone
    EXPECT_EQ(paths(*l), (std::vector<std::string>{"alpha.mid", "zulu.mid"}));
}

TEST_F(PlaylistTest, FilenameSortKeepsCaseTwinsInPlaceAndReverseRebuilds) {
    auto l = make();
    for (const char* n : {"/m/B.mid", "/m/a.MID", "/m/b.mid", "/m/A.mid"}) add(*l, dir + n);
    l->mnuFilename_Click();
    EXPECT_EQ(paths(*l), (std::vector<std::string>{dir + "/m/a.MID", dir + "/m/A.mid", dir + "/m/b.mid", dir + "/m/B.mid"}));
    l->mnuReverse_Click();
    EXPECT_EQ(paths(*l), (std::vector<std::string>{dir + "/m/B.mid", dir + "/m/b.mid", dir + "/m/A.mid", dir + "/m/a.MID"}));
    EXPECT_EQ(l->lstPlayList1.item(1).subItems[0], dir + "/m/B");
}

TEST_F(PlaylistTest, ShuffleIsTheNaiveSwapOnTheProgramsGenerator) {
    auto l = make();
    std::vector<std::string> expect;
    for (int i = 0; i < 9; ++i) {
        expect.push_back(dir + "/" + std::to_string(i) + ".wav");
        add(*l, expect.back());
    }
    programRandom().seed(1234);
    VbRandom mine;
    mine.seed(1234);
    for (size_t i = 0; i < expect.size(); ++i) {
        const int r = static_cast<int>(std::floor(expect.size() * mine.Rnd()));
        std::swap(expect[i], expect[r]);
    }
    l->mnuRandom_Click();
    EXPECT_EQ(paths(*l), expect);
    for (int i = 1; i <= 9; ++i) EXPECT_EQ(l->lstPlayList1.item(i).subItems[0] + ".wav", paths(*l)[i - 1]);
    // The generator is the old runtime's: its first draw from the start state.
    VbRandom fresh;
    EXPECT_NEAR(fresh.Rnd(), 0.7055475, 1e-7);
}

TEST_F(PlaylistTest, TwentyThousandEntriesLoadSortAndSave) {
    auto l = make();
    std::string bytes;
    std::mt19937 gen(3);
    for (int i = 0; i < 20000; ++i) bytes += dir + "/d" + std::to_string(gen() % 997) + "/s" + std::to_string(i) + ".mid\r\n";
    const std::string mpl = file("big.mpl", bytes);
    l->LoadPlaylist(mpl);
    ASSERT_EQ(l->lstPlayList1.count(), 20000);
    l->mnuFilename_Click();
    const auto& c = *inert.get().collation;
    const auto ps = paths(*l);
    for (size_t i = 1; i < ps.size(); ++i) ASSERT_LE(c.compare(ps[i - 1], ps[i]), 0);
    l->mnuTitle_Click();
    l->mnuArtist_Click();
    EXPECT_EQ(l->lstPlayList1.item(20000).text, "20000");
    l->WritePlaylist(dir + "/again.mpl");
    auto back = make();
    back->LoadPlaylist(dir + "/again.mpl");
    EXPECT_EQ(paths(*back), paths(*l));
}

TEST_F(PlaylistTest, FolderScanAndDrops) {
    file("top/z.mp3", std::string(300, '\0'));
    file("top/a.wav");
    file("top/song.kar");
    file("top/readme.txt");
    file("top/Sub2/deep/x.mid");
    file("top/sub1/y.wav");
    auto l = make();
    l->AddDirectory(dir + "/top");
    EXPECT_EQ(paths(*l), (std::vector<std::string>{dir + "/top/sub1/y.wav", dir + "/top/Sub2/deep/x.mid",
                                                   dir + "/top/a.wav", dir + "/top/z.mp3"}));
    EXPECT_EQ(l->Dir1.path(), pList::UpOneDir(dir + "/top"));

    l->cmdClear_Click();
    l->lstPlayList1_OLEDragDrop({dir + "/top/song.kar", dir + "/top/sub1", dir + "/top/readme.txt", dir + "/no_such"});
    EXPECT_EQ(paths(*l), (std::vector<std::string>{dir + "/top/song.kar", dir + "/top/sub1/y.wav"}));

    EXPECT_EQ(pList::UpOneDir("/home/sing/list"), "/home/sing");
    EXPECT_EQ(pList::UpOneDir("/home"), "/");
    EXPECT_EQ(pList::UpOneDir("/a/b"), "/a");
    EXPECT_EQ(pList::UpOneDir("music"), "/");
}

TEST_F(PlaylistTest, OpenDialogsAndTheLastPlaylist) {
    const std::string song = file("x.mid");
    const std::string mpl = file("night.mpl", song + "\r\n");
    auto l = make();
    l->load();
    EXPECT_EQ(l->caption, "Velaro PlayList");

    ui.dialogs.answerFile(mpl);
    l->CmdOpenlist_Click();
    EXPECT_EQ(paths(*l), (std::vector<std::string>{song}));
    EXPECT_EQ(l->caption, "Velaro PlayList    " + mpl);
    EXPECT_EQ(readWholeFile(app + "/songtemp.tmp"), mpl + "\r\n");
    EXPECT_EQ(ui.dialogs.shown().back().text, "PlayList (*.mpl)|*.mpl");

    // Cancelled: the list is empty and the last playlist stays named.
    ui.dialogs.answerCancel();
    l->CmdOpenlist_Click();
    EXPECT_EQ(l->lstPlayList1.count(), 0);
    EXPECT_EQ(readWholeFile(app + "/songtemp.tmp"), mpl + "\r\n");

    ui.dialogs.answerFile(song);
    l->cmdOpen_Click();
    ui.dialogs.answerFile(mpl);
    l->cmdOpen_Click();
    EXPECT_EQ(paths(*l), (std::vector<std::string>{song, song}));

    // The next start opens it again.
    l->unload();
    auto again = make();
    again->load();
    EXPECT_EQ(paths(*again), (std::vector<std::string>{song}));
    EXPECT_EQ(again->caption, "Velaro PlayList    " + mpl);

    // A comma cuts the remembered name: nothing loads, nothing is said.
    const std::string comma = file("a,b.mpl", song + "\r\n");
    writeWholeFile(app + "/songtemp.tmp", comma + "\r\n");
    auto third = make();
    third->load();
    EXPECT_EQ(third->lstPlayList1.count(), 0);
    EXPECT_TRUE(ui.dialogs.messageBoxes().empty());
}

TEST_F(PlaylistTest, SaveAndDeletePlaylistButtons) {
    auto l = make();
    add(*l, file("x.mid"));
    ui.dialogs.answerFile(dir + "/saved.mpl");
    l->cmdSave_Click();
    EXPECT_EQ(readWholeFile(dir + "/saved.mpl"), dir + "/x.mid\r\n");
    ui.dialogs.answerCancel();
    l->cmdSave_Click();  // the old name is not saved over on a cancel

    ui.dialogs.answerFile(dir + "/saved.mpl");
    ui.dialogs.answerMsgBox(ui::vbNo);
    l->CmdDelPlay_Click();
    EXPECT_EQ(l->lstPlayList1.count(), 0);
    EXPECT_TRUE(fs::exists(dir + "/saved.mpl"));
    EXPECT_EQ(ui.dialogs.messageBoxes().back().text, dir + "/saved.mpl\r\n\r\nRimuovere la Playlist?");
    EXPECT_EQ(ui.dialogs.messageBoxes().back().title, "Sei sicuro?");
    ui.dialogs.answerFile(dir + "/saved.mpl");
    ui.dialogs.answerMsgBox(ui::vbYes);
    l->CmdDelPlay_Click();
    EXPECT_FALSE(fs::exists(dir + "/saved.mpl"));
    // Anything else is added to the list, delete button or not.
    ui.dialogs.answerFile(dir + "/x.mid");
    l->CmdDelPlay_Click();
    EXPECT_EQ(paths(*l), (std::vector<std::string>{dir + "/x.mid"}));
}

TEST_F(PlaylistTest, UnloadSavesOrDeletesThePlaylistAndTheSettings) {
    auto l = make();
    l->load();
    add(*l, file("x.mid"));
    l->SavePlaylistOnExit = true;
    l->SaveSettingsOnExit = true;
    l->PlayerTitle = "Serata";
    l->cbRepeat.setValue(1);
    l->ApplyFont(2, "DejaVu Sans", 10, true, std::nullopt, 255);
    l->lstPlayList1.setBackColor(0x00FFFF);
    l->unload();
    // The controls went with the form; its options stay for the next show in this run.
    EXPECT_EQ(l->lstPlayList1.count(), 0);
    EXPECT_EQ(l->cbRepeat.value(), 0);
    EXPECT_EQ(l->lstPlayList1.font().name, "MS Sans Serif");
    EXPECT_EQ(l->PlayerTitle, "Serata");
    EXPECT_EQ(readWholeFile(app + "/playlist.mpl"), dir + "/x.mid\r\n");
    EXPECT_EQ(readWholeFile(dir + "/skin.ini"),
              "255 //Playlist Font Color\r\n"
              "0 //All Other Font Color\r\n"
              "DejaVu Sans //Playlist Font Name\r\n"
              "MS Sans Serif //Other Font Name\r\n"
              "65535 //Playlist Background Color\r\n"
              "14737632 //All Other Background Color\r\n"
              "False //Confirm Delete\r\n"
              "True //Save Playlist\r\n"
              "True //Save Settings\r\n"
              "False //Scroll Title\r\n"
              "1 //Repeat\r\n"
              "0 //Shuffle\r\n"
              "Serata //Player Title\r\n");

    // The next run starts with every option off, so its end removes both files.
    auto next = make();
    next->load();
    EXPECT_EQ(next->lstPlayList1.count(), 0);  // playlist.mpl is not opened at start
    EXPECT_FALSE(next->SaveSettingsOnExit);
    EXPECT_EQ(next->lstPlayList1.foreColor(), 0u);  // skin.ini is not applied either
    next->unload();
    EXPECT_FALSE(fs::exists(app + "/playlist.mpl"));
    EXPECT_FALSE(fs::exists(dir + "/skin.ini"));
}

TEST_F(PlaylistTest, SettingsReaderWhenCalled) {
    writeWholeFile(dir + "/skin.ini",
                   "255 //a\r\n16711680//b\r\nComic/Sans //c\r\n Arial //d\r\n65280 //e\r\n123 //f\r\n"
                   "True //g\r\n-1 //h\r\nFalse //i\r\n 0 //j\r\n 1 //k\r\n1 //l\r\nIgnored //m\r\n");
    auto l = make();
    l->LoadINIFile();
    EXPECT_EQ(l->lstPlayList1.foreColor(), 255u);
    EXPECT_EQ(l->cbShuffle.foreColor(), 16711680u);
    EXPECT_EQ(l->lstPlayList1.font().name, "Comic");  // a '/' cuts the value
    EXPECT_EQ(l->cbRepeat.font().name, "Arial");
    EXPECT_EQ(l->lstPlayList1.backColor(), 65280u);
    EXPECT_EQ(l->formBackColor, 123u);
    EXPECT_TRUE(l->ConfirmDelete);
    EXPECT_TRUE(l->SavePlaylistOnExit);
    EXPECT_FALSE(l->SaveSettingsOnExit);
    EXPECT_EQ(l->cbRepeat.value(), 1);
    EXPECT_EQ(l->cbShuffle.value(), 1);
    EXPECT_EQ(l->PlayerTitle, "");

    // Garbage stops the reading where it stands, without harm.
    writeWholeFile(dir + "/skin.ini", "77 //a\r\nno slash here\r\n");
    auto g = make();
    g->LoadINIFile();
    EXPECT_EQ(g->lstPlayList1.foreColor(), 77u);
}

TEST_F(PlaylistTest, CollapseCompactAndDrag) {
    auto l = make();
    const double h = l->Picture4.height(), formH = l->formHeight, top = l->cmdOpen.top(), lower = l->CmdOpenlist.top();
    l->mnuHidePlaylist_Click();
    EXPECT_FALSE(l->Picture4.visible());
    EXPECT_TRUE(l->cmdShowPlaylist.visible());
    EXPECT_TRUE(l->mnuHidePlaylist.checked() && l->mnuHidePlaylist2.checked());
    EXPECT_NEAR(l->cmdOpen.top(), top - h * 50 / 54, 1e-6);
    EXPECT_NEAR(l->formHeight, formH - h * 50 / 54, 1e-6);
    EXPECT_EQ(l->CmdOpenlist.top(), lower);  // in the panel: it goes with it

    l->mnuCompact_Click();  // first only the check mark
    EXPECT_TRUE(l->mnuCompact.checked());
    l->mnuFullView.userClick();
    EXPECT_FALSE(l->mnuCompact.checked());
    EXPECT_NEAR(l->formHeight, l->cbShuffle.top() + l->cbShuffle.height() + 500, 1e-6);

    l->cmdShowPlaylist.userClick();  // expands
    EXPECT_TRUE(l->Picture4.visible());
    EXPECT_FALSE(l->cmdShowPlaylist.visible());
    EXPECT_NEAR(l->cmdOpen.top(), top, 1e-6);

    l->Form_MouseMove(0, 0, 100.4, 200.6);
    l->Form_MouseDown(1, 0, 100, 200);
    const double left = l->formLeft, ftop = l->formTop;
    l->Form_MouseMove(1, 0, 130, 190);
    EXPECT_EQ(l->formLeft, left + 30);
    EXPECT_EQ(l->formTop, ftop - 11);  // 200.6 was kept as 201
    l->Form_MouseUp(1, 0, 130, 190);
    l->Form_MouseMove(0, 0, 500, 500);
    EXPECT_EQ(l->formLeft, left + 30);
}

TEST_F(PlaylistTest, FontsColoursAndOptions) {
    auto l = make();
    ui.dialogs.push(ui::Font{"Tiny", 6, true, true});
    l->mnuFont2_Click();
    EXPECT_EQ(l->cbShuffle.font().name, "Tiny");
    EXPECT_EQ(l->cbShuffle.font().size, 8);
    EXPECT_TRUE(l->cbRepeat.font().italic);
    ui.dialogs.push(uint32_t{0x123456});
    l->mnuFontColor_Click();
    EXPECT_EQ(l->listFontColor, 0x123456);
    EXPECT_EQ(l->lstPlayList1.foreColor(), 0x123456u);
    l->ApplyFont(3, "X", 20, true, true, 1);  // other kinds do nothing
    EXPECT_NE(l->lstPlayList1.font().name, "X");
    l->cmdShowPlaylist_MouseMove(0, 0, 0, 0);
    EXPECT_EQ(l->cmdShowPlaylist.foreColor(), 0x123456u);

    l->ScrollTitle = true;
    l->mnuOptions_Click();
    FrmOptions& o = l->frmOptions;
    EXPECT_TRUE(o.visible());
    EXPECT_EQ(o.cbScroll.value(), 1);
    EXPECT_EQ(o.cbSave.value(), 0);
    EXPECT_THROW(o.Text1_KeyPress('A'), std::exception);  // no row selected
    add(*l, dir + "/t.mid");
    l->lstPlayList1.setSelectedItem(1);
    o.Text1.setText("Kar");
    o.Text1_KeyPress('a');
    EXPECT_EQ(l->caption, "Kara - [" + dir + "/t-Unknown]  ");
    o.cbSave.setValue(1);
    o.cbScroll.userClick();
    EXPECT_FALSE(l->ScrollTitle);  // at once
    o.Text1.setText("");
    o.unload();
    EXPECT_TRUE(l->SaveSettingsOnExit);
    EXPECT_EQ(l->PlayerTitle, "");  // an empty box blanks the title
    l->PlayerTitle = "Serata";
    l->mnuOptions_Click();  // shown again: the boxes from the options, the title box empty
    EXPECT_EQ(o.cbSave.value(), 1);
    EXPECT_EQ(o.cbScroll.value(), 0);
    EXPECT_EQ(o.Text1.text(), "");
}

TEST_F(PlaylistTest, FileInfoReadsTheTagAgain) {
    auto l = make();
    const std::string song = mp3("t.mp3", "Old", "Band");
    add(*l, song);
    add(*l, file("k.kar"));
    l->lstPlayList1.setSelectedItem(1);
    std::string shownFor;
    l->showId3Editor = [&](tags::FrmID3& f) {
        shownFor = f.Filename;
        writeWholeFile(song, std::string(400, '\0') + id3("New", "Other"));
    };
    l->mnuFileInfo_Click();
    EXPECT_EQ(shownFor, song);
    EXPECT_EQ(column(*l, 1)[0], "New");
    EXPECT_EQ(column(*l, 2)[0], "Other");
    shownFor.clear();
    l->lstPlayList1.setSelectedItem(2);
    l->mnuFileInfo_Click();  // songs have no tag to edit
    EXPECT_TRUE(shownFor.empty());

    // A row without its path (the two lists out of step) meets the in-use box.
    l->AddEntry(file("lone.wav"));
    l->lstFilenames.removeItem(1);
    l->AddEntry(song);
    l->lstPlayList1.setSelectedItem(4);
    l->mnuFileInfo_Click();
    ASSERT_FALSE(ui.dialogs.messageBoxes().empty());
    EXPECT_EQ(ui.dialogs.messageBoxes().back().title, "Dumbass");
    EXPECT_EQ(ui.dialogs.messageBoxes().back().text, "Il File \xC3\xA8 in uso.\r\nImpossibile scrivere il TAG ID3.");
}

}  // namespace

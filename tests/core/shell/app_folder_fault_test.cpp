// The application folder when it takes no files (mounted read-only) and the
// playlist's saves on a full disk: the program starts, each save tells the
// user why it failed, and the old files stay as they were.

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>

#include "core/base/paths.h"
#include "core/platform/inert.h"
#include "core/player/plist.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "support/small_disk.h"

using namespace velaro;
using velaro::testing::fileBytes;
using velaro::testing::SmallDisk;

namespace {

bool anyBoxSays(const ui::Headless& ui, const std::string& part) {
    for (const auto& b : ui.dialogs.messageBoxes())
        if (b.text.find(part) != std::string::npos) return true;
    return false;
}

// A song of one end-of-track event, for the playlist to hold.
std::string writeTempSong() {
    const std::string path = tempFolder() + "/app-folder-fault-" + std::to_string(getpid()) + ".mid";
    writeWholeFile(path, std::string("MThd\0\0\0\6\0\0\0\1\0\x60MTrk\0\0\0\4\0\xFF\x2F\0", 26));
    return path;
}

// The current folder moves into the application folder at the start.
struct KeepCurrentFolder {
    std::string was = [] {
        std::error_code ec;
        const auto here = std::filesystem::current_path(ec);
        return ec ? tempFolder() : here.string();
    }();
    ~KeepCurrentFolder() {
        std::error_code ec;
        std::filesystem::current_path(was, ec);
    }
};

}  // namespace

TEST(ReadOnlyAppFolder, TheMainFormStartsAndItsSavesSayWhy) {
    SmallDisk d;
    if (!d.mounted()) GTEST_SKIP() << "no tmpfs can be mounted here";
    const std::string config = "\"OK\",0,32896,16744576,24,\"DejaVu Sans\",\"90\",#TRUE#,#FALSE#,#FALSE#,#FALSE#,0\r\n";
    d.put("config.vlr", config);
    ASSERT_TRUE(d.makeReadOnly());
    KeepCurrentFolder keep;
    for (const std::string& home : {d.dir(), d.path("never-made")}) {
        setenv("VELARO_HOME", home.c_str(), 1);
        ui::Headless ui;
        platform::InertPlatform inert;
        song::frmMain f(ui.rt, inert.get());
        ASSERT_NO_THROW(f.load()) << home;
        if (home == d.dir()) {
            EXPECT_EQ(f.fontSize, 24);  // what the folder holds is read
            EXPECT_EQ(f.normalizePercent, "90");
        }
        f.SaveC_Click();
        // The folder that is there cannot take the file; the one that could not be made is not there.
        EXPECT_TRUE(anyBoxSays(ui, home == d.dir() ? "Read-only file system" : "No such file or directory")) << home;
        EXPECT_EQ(ui.dialogs.messageBoxes().back().text, "Done!");
        f.mnuExit_Click();  // the default answer is Yes: the save fails again and the program still ends
        EXPECT_TRUE(f.ended);
        EXPECT_EQ(fileBytes(d.path("config.vlr")), config);
    }
    unsetenv("VELARO_HOME");
}

TEST(ReadOnlyAppFolder, ThePlaylistLeavesItsSavedListAsItWas) {
    SmallDisk d;
    if (!d.mounted()) GTEST_SKIP() << "no tmpfs can be mounted here";
    const std::string song = writeTempSong();
    d.put("playlist.mpl", "/music/old.mid\r\n");
    ASSERT_TRUE(d.makeReadOnly());
    KeepCurrentFolder keep;
    ui::Headless ui;
    platform::InertPlatform inert;
    auto l = std::make_unique<player::pList>(ui.rt, inert.get(), RPP(d.dir()));
    l->load();
    if (l->AddEntry(song)) l->lstFilenames.addItem(song);
    ASSERT_EQ(l->lstFilenames.listCount(), 1);
    l->SavePlaylistOnExit = true;
    l->unload();  // the save at the close goes quietly, as ever, and costs nothing
    EXPECT_EQ(fileBytes(d.path("playlist.mpl")), "/music/old.mid\r\n");
    std::filesystem::remove(song);
}

TEST(FullDiskPlaylist, SaveSaysWhyAndKeepsTheOldList) {
    SmallDisk d;
    if (!d.mounted()) GTEST_SKIP() << "no tmpfs can be mounted here";
    const std::string song = writeTempSong();
    const std::string saved = d.put("evening.mpl", "/music/old.mid\r\n");
    d.fill();
    KeepCurrentFolder keep;
    ui::Headless ui;
    platform::InertPlatform inert;
    auto l = std::make_unique<player::pList>(ui.rt, inert.get(), RPP(tempFolder()));
    for (int i = 0; i < 200; ++i)
        if (l->AddEntry(song)) l->lstFilenames.addItem(song);
    ui.dialogs.answerFile(saved);
    l->cmdSave_Click();
    EXPECT_TRUE(anyBoxSays(ui, "No space left on device"));
    EXPECT_EQ(fileBytes(saved), "/music/old.mid\r\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(d.dir()), {}), 2);  // the list and the filler
    std::filesystem::remove(song);
}

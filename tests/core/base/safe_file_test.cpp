// Saves on a full disk: every writer leaves the old file byte for byte and
// says that the disk is full; saves that need no new room still go through.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

#include "core/base/paths.h"
#include "core/base/safe_file.h"
#include "core/base/vb_error.h"
#include "core/platform/inert.h"
#include "core/shell/frm_main.h"
#include "core/tags/id3v1.h"
#include "core/tags/mmp3.h"
#include "core/ui/headless.h"
#include "support/small_disk.h"

using namespace velaro;
using velaro::testing::fileBytes;
using velaro::testing::SmallDisk;

namespace {

#define NEED_DISK(d)                                                          \
    if (!(d).mounted()) GTEST_SKIP() << "no tmpfs can be mounted here"

// Files in the folder other than the filler: a save must leave no leftovers.
std::vector<std::string> names(const SmallDisk& d) {
    std::vector<std::string> out;
    for (const auto& e : std::filesystem::directory_iterator(d.dir()))
        if (e.path().filename() != "filler") out.push_back(e.path().filename().string());
    std::sort(out.begin(), out.end());
    return out;
}

std::string expectDiskFull(const std::function<void()>& save) {
    try {
        save();
    } catch (const VbError& e) {
        EXPECT_EQ(e.code(), VbErr::DiskFull);
        EXPECT_NE(std::string(e.what()).find("No space left on device"), std::string::npos) << e.what();
        return e.what();
    }
    ADD_FAILURE() << "the save did not fail";
    return {};
}

// An MP3-like file: frames of bytes, a Lyrics3 block and an ID3v1 record.
std::string taggedFile(const std::string& lyrics) {
    const std::string block = "LYRICSBEGINLYR" + std::string(5 - std::to_string(lyrics.size()).size(), '0') +
                              std::to_string(lyrics.size()) + lyrics;
    const std::string size = std::to_string(block.size());
    std::string tag = "TAG" + std::string("Old title") + std::string(125 - 9, ' ');
    return std::string(6000, '\xAA') + block + std::string(6 - size.size(), '0') + size + "LYRICS200" + tag;
}

}  // namespace

TEST(SafeSave, WholeFileReplacedOnlyWhenItFits) {
    SmallDisk d;
    NEED_DISK(d);
    const std::string f = d.put("config.vlr", "old contents");
    chmod(f.c_str(), 0600);
    writeWholeFile(f, "new contents");  // room enough: replaced, mode kept
    EXPECT_EQ(fileBytes(f), "new contents");
    struct stat st{};
    stat(f.c_str(), &st);
    EXPECT_EQ(st.st_mode & 0777, 0600u);

    d.fill();
    const std::string big(64 * 1024, 'n');
    const std::string msg = expectDiskFull([&] { writeWholeFile(f, big); });
    EXPECT_NE(msg.find(f), std::string::npos);
    EXPECT_EQ(fileBytes(f), "new contents");
    EXPECT_EQ(names(d), std::vector<std::string>{"config.vlr"});
    // A new file that does not fit is not left half made either.
    expectDiskFull([&] { writeWholeFile(d.path("new.lrc"), big); });
    EXPECT_EQ(names(d), std::vector<std::string>{"config.vlr"});
}

TEST(SafeSave, ReadOnlyFilesAreRefused) {
    const std::string f = tempFolder() + "/ro-" + std::to_string(getpid()) + ".txt";
    writeWholeFile(f, "kept");
    chmod(f.c_str(), 0444);
    EXPECT_THROW(writeWholeFile(f, "changed"), VbError);
    EXPECT_THROW(writeTailInPlace(f, 0, "changed"), VbError);
    EXPECT_EQ(fileBytes(f), "kept");
    chmod(f.c_str(), 0644);
    std::filesystem::remove(f);
}

TEST(SafeSave, TagsGrowOnlyIntoReservedRoom) {
    SmallDisk d;
    NEED_DISK(d);
    const std::string song = d.put("song.mp3", taggedFile("[00:01]old words\r\n"));
    const std::string before = fileBytes(song);
    d.fill();

    tags::Mmp3 m;
    m.GetMp3Info(song);
    ASSERT_TRUE(m.HasLyricsTag);
    const std::string record = "TAG" + std::string(125, 'N');
    // Longer lyrics need blocks the disk does not have: nothing changes.
    EXPECT_FALSE(m.WriteLyricsTag(song, record, std::string(40000, 'w')));
    EXPECT_NE(m.WriteError.find("No space left on device"), std::string::npos) << m.WriteError;
    EXPECT_EQ(fileBytes(song), before);
    EXPECT_EQ(names(d), std::vector<std::string>{"song.mp3"});

    // Shorter lyrics and the ID3v1 record fit in the file's own blocks.
    m.GetMp3Info(song);
    EXPECT_TRUE(m.WriteLyricsTag(song, record, "[00:02]new\r\n")) << m.WriteError;
    m.GetMp3Info(song);
    EXPECT_EQ(m.fields.Lyrics, "[00:02]new\r\n");
    tags::WriteId3(song, tags::makeId3Fields("Title", "Artist", "", "", "", 3));
    EXPECT_EQ(m.GetMp3Info(song).Title, "Title");
    EXPECT_EQ(m.fields.Lyrics, "[00:02]new\r\n");
}

TEST(SafeSave, MainFormSavesSayWhyAndKeepTheOldFile) {
    SmallDisk d;
    NEED_DISK(d);
    setenv("VELARO_HOME", d.path("home").c_str(), 1);
    ui::Headless ui;
    platform::InertPlatform inert;
    song::frmMain f(ui.rt, inert.get());
    f.load();
    const std::string config = RPP(applicationFolder()) + "config.vlr";
    writeWholeFile(config, "OK\r\n");
    const std::string sync = d.put("song.lrc", "[00:01]stamped by hand\r\n");
    d.fill();

    f.Text2.setText(std::string(64 * 1024, 's'));
    ui.dialogs.answerFile(sync);
    f.SaveSyncro_Click();
    EXPECT_EQ(fileBytes(sync), "[00:01]stamped by hand\r\n");
    ASSERT_FALSE(ui.dialogs.messageBoxes().empty());
    EXPECT_NE(ui.dialogs.messageBoxes().back().text.find("No space left on device"), std::string::npos);

    f.SaveC_Click();
    EXPECT_EQ(fileBytes(config), "OK\r\n");
    const auto& boxes = ui.dialogs.messageBoxes();
    ASSERT_GE(boxes.size(), 2u);
    EXPECT_NE(boxes[boxes.size() - 2].text.find("No space left on device"), std::string::npos);
    EXPECT_EQ(boxes.back().text, "Done!");
    unsetenv("VELARO_HOME");
}

// The recorder's class on a wave device without sound: formats it sends,
// ranges it clamps, waits that end only through the main form's flags, the
// one-second tail of a take, and the errors it raises.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <fstream>

#include "core/base/paths.h"
#include "core/platform/inert.h"
#include "core/record/wave_player.h"
#include "core/shell/frm_main.h"
#include "core/ui/headless.h"
#include "fake_wave_form.h"

using namespace velaro;
using velaro::testing::FakeWaveDevice;

namespace {

struct WavePlayerTest : velaro::testing::FakeWaveForm {
    // A take of `ms` on the virtual clock, recorded by the device alone (Record adds its second).
    void recordTake(record::WavePlayer& w, int64_t ms) {
        ASSERT_EQ(wave.Record(w.deviceId()), 0);
        ui.loop.advance(ms);
        w.StopRecording();
    }
    // Plays a range, the stop pressed `afterMs` later; gives the range as clamped.
    std::pair<int32_t, int32_t> play(record::WavePlayer& w, int32_t from, int32_t to, int64_t afterMs = 50) {
        ui.loop.at(ui.loop.now() + afterMs, [this] { f->playStopFlag = true; });
        w.Play(from, to);
        return {from, to};
    }
};

template <class Fn>
record::WaveError errorOf(Fn fn) {
    try {
        fn();
    } catch (const record::WaveError& e) {
        return e;
    }
    ADD_FAILURE() << "no WaveError raised";
    return record::WaveError(0, "", "");
}

}  // namespace

TEST_F(WavePlayerTest, LifeOfTheObjectOpensANewBufferResetsAndCloses) {
    {
        record::WavePlayer w(*f);
        EXPECT_NE(w.deviceId(), 0u);
        EXPECT_EQ(w.Filename(), "");
        const uint32_t first = w.deviceId();
        w.Reset();
        EXPECT_NE(w.deviceId(), first);
        EXPECT_TRUE(wave.open());
    }
    EXPECT_FALSE(wave.open());
    EXPECT_EQ(wave.log, (std::vector<std::string>{"Open ", "Close", "Open ", "Close"}));
}

TEST_F(WavePlayerTest, WaitStoresTwiceTheAbsoluteValueOfTheBoolean) {
    record::WavePlayer w(*f);
    EXPECT_FALSE(w.Wait());
    w.setWait(true);
    EXPECT_TRUE(w.Wait());
    w.setWait(false);
    EXPECT_FALSE(w.Wait());
}

TEST_F(WavePlayerTest, EachPropertyWriteSendsTheWholeFormatWithDerivedFields) {
    record::WavePlayer w(*f);
    // The take format as the form sets it: channels, rate, bits.
    w.setChannels(1);
    w.setSamplerate(22050);
    w.setBitsPerSample(8);
    ASSERT_EQ(wave.formats.size(), 3u);
    EXPECT_EQ(wave.formats[0].channels, 1);
    EXPECT_EQ(wave.formats[0].samplesPerSec, 44100);
    EXPECT_EQ(wave.formats[0].avgBytesPerSec, 88200);
    EXPECT_EQ(wave.formats[0].blockAlign, 2);
    EXPECT_EQ(wave.formats[2].bitsPerSample, 8);
    EXPECT_EQ(wave.formats[2].avgBytesPerSec, 22050);
    EXPECT_EQ(wave.formats[2].blockAlign, 1);
    EXPECT_EQ(w.channels(), 1);
    EXPECT_EQ(w.samplerate(), 22050);
    EXPECT_EQ(w.BitsPerSample(), 8);
    EXPECT_EQ(w.FormatTag(), 1);
    EXPECT_EQ(w.AvgBytesPerSecond(), 22050);

    // Channels other than 1 and 2 are dropped without a word.
    w.setChannels(0);
    w.setChannels(3);
    EXPECT_EQ(wave.formats.size(), 3u);
    EXPECT_EQ(w.channels(), 1);

    // Odd sizes round halves to even; the device's refusal comes back as the setting's error.
    wave.texts[FakeWaveDevice::kBadFormat] = "The parameter is out of range.";
    auto e = errorOf([&] { w.setBitsPerSample(12); });
    EXPECT_EQ(e.number, FakeWaveDevice::kBadFormat);
    EXPECT_EQ(e.source, "WavePlayer::ChangeSetting");
    EXPECT_STREQ(e.what(), "The parameter is out of range.");
    EXPECT_EQ(wave.formats.back().avgBytesPerSec, 33075);  // 1.5 x 22050
    EXPECT_EQ(wave.formats.back().blockAlign, 2);          // 1.5 rounds to 2
    w.setSamplerate(11025);
    errorOf([&] { w.setBitsPerSample(12); });  // refused again, now 16537.5 -> 16538
    EXPECT_EQ(wave.formats.back().avgBytesPerSec, 16538);
}

TEST_F(WavePlayerTest, PlayClampsItsRangeByReferenceAndWaitsOnlyForTheStopButton) {
    record::WavePlayer w(*f);
    recordTake(w, 1000);
    ASSERT_EQ(w.length(), 1000);

    EXPECT_EQ(play(w, -5, 0), std::make_pair(0, 1000));
    EXPECT_EQ(play(w, 1200, 500), std::make_pair(0, 500));
    EXPECT_EQ(play(w, 300, 300), std::make_pair(300, 1000));
    EXPECT_EQ(play(w, 200, 2000), std::make_pair(200, 1000));
    EXPECT_EQ(play(w, 1000, 1000), std::make_pair(1000, 1000));
    EXPECT_EQ(wave.log[wave.log.size() - 2], "Play 1000 1000");

    // The sound ends after 1 s; the wait goes on until the stop, 5 s later.
    f->recordStopFlag = false;
    const int64_t start = ui.loop.now();
    int32_t from = 0, to = 0;
    int32_t positionAt3s = -1;
    ui.loop.at(start + 3000, [&] {
        positionAt3s = w.Position();
        EXPECT_FALSE(f->recordStopFlag);
    });
    ui.loop.at(start + 5000, [this] { f->playStopFlag = true; });
    w.Play(from, to);
    EXPECT_EQ(ui.loop.now(), start + 5000);
    EXPECT_EQ(positionAt3s, 1000);
    EXPECT_TRUE(f->recordStopFlag);
    EXPECT_FALSE(wave.playing());
    EXPECT_EQ(wave.log.back(), "Stop");
}

TEST_F(WavePlayerTest, PlayClearsTheStopFlagFirstAndShowsABoxOnADeviceError) {
    record::WavePlayer w(*f);
    recordTake(w, 200);
    f->playStopFlag = true;  // an old press does not end the new play
    ui.loop.at(ui.loop.now() + 40, [this] { f->playStopFlag = true; });
    const int64_t start = ui.loop.now();
    int32_t from = 0, to = 0;
    w.Play(from, to);
    EXPECT_EQ(ui.loop.now(), start + 40);

    wave.failures["Play"] = 261;
    f->playStopFlag = false;
    f->recordStopFlag = false;
    EXPECT_NO_THROW(w.Play(from, to));
    ASSERT_EQ(ui.dialogs.messageBoxes().size(), 1u);
    EXPECT_EQ(ui.dialogs.messageBoxes()[0].text, "Non è possibile fare il playback");
    EXPECT_FALSE(f->recordStopFlag);
}

TEST_F(WavePlayerTest, DeleteClampsLikePlayAndCutsThatStretchOfTheTake) {
    record::WavePlayer w(*f);
    w.setChannels(1);
    w.setSamplerate(11025);
    recordTake(w, 1000);
    const auto before = wave.buffer();
    ASSERT_EQ(before.size(), 11025u * 2);

    w.Delete(200, 500);
    EXPECT_EQ(w.length(), 700);
    const auto& after = wave.buffer();
    ASSERT_EQ(after.size(), before.size() - 3307u * 2);
    // What followed the cut now stands where it began.
    EXPECT_EQ(after[2205 * 2], before[5512 * 2]);
    EXPECT_EQ(after[2205 * 2 + 1], before[5512 * 2 + 1]);
    EXPECT_TRUE(std::equal(after.begin(), after.begin() + 2205 * 2, before.begin()));

    // A start past the end and an end before it: the whole take goes.
    w.Delete(800, 100);
    EXPECT_EQ(wave.log.back(), "Delete 0 100");
    w.Delete(-1, 0);
    EXPECT_EQ(wave.log.back(), "Delete 0 600");
    EXPECT_EQ(w.length(), 0);
}

TEST_F(WavePlayerTest, RecordOfASongStartsItAfterTheDeviceAndRunsOneSecondPastTheStop) {
    record::WavePlayer w(*f);
    std::vector<std::string> order;
    f->recorderPlay = [&] { order.push_back(wave.recording() ? "song after device" : "song before device"); };
    f->setSongPath(home + "/song.Wav");  // not a wave extension in this spelling
    f->Timer.setEnabled(true);
    f->Timer2.setEnabled(true);
    const int64_t start = ui.loop.now();
    int32_t lengthAtStop = -1;
    ui.loop.at(start + 700, [&] {
        f->playStopFlag = true;  // the stop button: the wait turns it into recordStopFlag
        lengthAtStop = w.Position();
    });
    w.Record();
    EXPECT_EQ(order, std::vector<std::string>{"song after device"});
    EXPECT_TRUE(f->recordStopFlag);
    EXPECT_EQ(ui.loop.now() - start, 1700);  // the stop, then one second
    EXPECT_EQ(lengthAtStop, 700);
    EXPECT_FALSE(f->Timer.enabled());
    EXPECT_FALSE(f->Timer2.enabled());
    EXPECT_FALSE(f->Timer3.enabled());
    EXPECT_TRUE(wave.recording());  // the form stops the device itself
    w.StopRecording();
    EXPECT_EQ(w.length(), 1700);
}

TEST_F(WavePlayerTest, RecordOverAWaveOrMp3BackingLeavesTheSongAlone) {
    int songs = 0;
    f->recorderPlay = [&] { ++songs; };
    for (const char* path : {"a.mp3", "a.wav", "a.MP3", "a.WAV", "mp3"}) {
        record::WavePlayer w(*f);
        f->setSongPath(path);
        f->recordStopFlag = false;
        ui.loop.at(ui.loop.now() + 10, [this] { f->recordStopFlag = true; });
        w.Record();
    }
    EXPECT_EQ(songs, 0);
    f->setSongPath("a.kar");
    record::WavePlayer w(*f);
    f->recordStopFlag = false;
    ui.loop.at(ui.loop.now() + 10, [this] { f->recordStopFlag = true; });
    w.Record();
    EXPECT_EQ(songs, 1);
}

TEST_F(WavePlayerTest, DeviceErrorsNameTheOperationAndCarryTheDevicesText) {
    wave.texts[300] = "The device is busy.";
    wave.failures["Open"] = 300;
    auto open = errorOf([&] { record::WavePlayer w(*f); });
    EXPECT_EQ(open.number, 300);
    EXPECT_EQ(open.source, "WavePlayer::OpenDevice");
    EXPECT_STREQ(open.what(), "The device is busy.");
    wave.failures.clear();

    record::WavePlayer w(*f);
    f->setSongPath("a.wav");
    wave.failures["Record"] = 300;
    auto rec = errorOf([&] { w.Record(); });
    EXPECT_EQ(rec.source, "WavePlayer::Record");
    EXPECT_EQ(rec.number, 300);

    const std::pair<const char*, std::function<void()>> cases[] = {
        {"Stop", [&] { w.StopRecording(); }},
        {"Save", [&] { w.SaveAs(home + "/x.wav"); }},
        {"Delete", [&] { w.Delete(0, 0); }},
        {"Close", [&] { w.Reset(); }},
    };
    const char* sources[] = {"WavePlayer::StopRecording", "WavePlayer::Save", "WavePlayer::Delete",
                             "WavePlayer::CloseDevice"};
    for (size_t i = 0; i < std::size(cases); ++i) {
        wave.failures = {{cases[i].first, 300}};
        auto e = errorOf(cases[i].second);
        EXPECT_EQ(e.source, sources[i]);
        EXPECT_STREQ(e.what(), "The device is busy.");
    }
    wave.failures.clear();
    // A failed close still leaves the object closed; property reads of a closed device give 0.
    EXPECT_EQ(w.deviceId(), 0u);
    EXPECT_EQ(w.length(), 0);
    EXPECT_EQ(w.samplerate(), 0);
    w.setChannels(1);  // nothing to set on a closed device
    EXPECT_TRUE(wave.formats.empty());
}

TEST_F(WavePlayerTest, DeviceTextStopsAtItsFirstNulAnd1024CharactersAndCanGiveItsFirstWord) {
    wave.texts[7] = std::string("MCIERR_BUSY The device is busy.\0garbage", 39);
    EXPECT_EQ(record::waveErrorText(wave, 7), "MCIERR_BUSY The device is busy.");
    std::string word;
    EXPECT_EQ(record::waveErrorText(wave, 7, &word), "The device is busy.");
    EXPECT_EQ(word, "MCIERR_BUSY");
    wave.texts[8] = std::string(2000, 'x');
    EXPECT_EQ(record::waveErrorText(wave, 8).size(), 1024u);
}

TEST_F(WavePlayerTest, SaveAsWritesTheTakeWithTheHourglassAndSaveGoesBackToTheOpenedFile) {
    record::WavePlayer w(*f);
    w.SaveAs("");
    EXPECT_EQ(f->mousePointer, ui::kPointerDefault);
    EXPECT_EQ(std::count(wave.log.begin(), wave.log.end(), std::string("Save ")), 0);
    w.Save();  // a new buffer has no name: nothing is written
    EXPECT_TRUE(std::none_of(wave.log.begin(), wave.log.end(), [](auto& s) { return s.rfind("Save", 0) == 0; }));

    w.setChannels(1);
    recordTake(w, 500);
    const std::string take = home + "/NEWWAVE.WAV";
    w.SaveAs(take);
    EXPECT_EQ(f->mousePointer, ui::kPointerHourglass);
    EXPECT_EQ(std::filesystem::file_size(take), 44u + 22050u * 2);

    w.OpenFile(take);
    EXPECT_EQ(w.Filename(), take);
    EXPECT_EQ(w.length(), 500);
    EXPECT_EQ(w.channels(), 1);
    w.Delete(0, 250);
    w.Save();
    EXPECT_EQ(std::filesystem::file_size(take), 44u + 11025u * 2);
}

#include "frm_demo.h"

#include <chrono>
#include <cmath>

#include "../base/paths.h"
#include "../base/safe_file.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../shell/frm_main.h"
#include "../platform/inert.h"
#include "cd_text.h"
#include "rip.h"

namespace velaro::cd {

namespace {

const char* kCrLf = "\r\n";

const char* kFlagCaptions[15] = {
    "Drive can read CD-R media",
    "Drive can read CD-RW media",
    "Drive can read CD-R/RW media \"method 2\"",
    "Drive can read DVD-ROM media",
    "Drive can read DVD-R media",
    "Drive can read DVD-RAM media",
    "Drive can read in \"mode 2 form 1\" format",
    "Drive can read in \"mode 2 form 2\" format",
    "Drive can read multi-session discs",
    "Drive can read CD audio",
    "Drive supports \"stream is accurate\"",
    "Drive can be opened / closed",
    "Drive can be locked",
    "Drive is locked",
    "Drive is open",
};
// The read-write flag behind boxes 0 to 10.
const int kFlagBits[11] = {0, 1, 2, 3, 4, 5, 20, 21, 22, 24, 25};

const char* kTagList = "Title,Author,WM/AlbumTitle,Description,Rating,Copyright,WM/Genre,WM/Year";
const char* kTagLabels[8] = {"Title", "Artist", "Album Title", "Description", "Rating", "Copyright", "Genre", "Year"};

std::vector<std::string> split(const std::string& s, char sep) {
    std::vector<std::string> out;
    size_t pos = 0;
    while (true) {
        const size_t next = s.find(sep, pos);
        out.push_back(s.substr(pos, next == std::string::npos ? std::string::npos : next - pos));
        if (next == std::string::npos) return out;
        pos = next + 1;
    }
}

double secondsSince(std::chrono::steady_clock::time_point t) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t).count();
}

}  // namespace

frmDemo::frmDemo(ui::Runtime& rt, platform::Platform& platform, song::frmMain* main)
    : ui::Form(rt, "frmDemo"), platform_(platform), cd_(*platform.cd), main_(main) {
    caption = "Velaro Cd Ripper";
    for (int i = 0; i < 15; ++i) chkRWFlags(i).setCaption(kFlagCaptions[i]);
    const char* buttons[10] = {"&Play",  "P&ause/Resume", "&Stop",   "&Lock",     "&Unlock",
                               "&Open",  "&Close",        "Extract", "&Fade Out", "&Drive Info >>"};
    for (int i = 0; i < 10; ++i) Cmdbutton(i).setCaption(buttons[i]);
    optExtractMode(0).setCaption("&WAV File");
    optExtractMode(1).setCaption("W&MA File");
    optExtractMode(0).setValue(true);
    picWMAExtractOptions.setVisible(false);
    chkWMAFileTags.setCaption("Write tags");
    for (int i = 0; i < 8; ++i) lblWMATags(i).setCaption(kTagLabels[i]);
    lstTracks.toolTipText = "Click Track to begin playback";
    SliderPosition.toolTipText = "Track Position";
    Cmdbutton(7).setEnabled(false);

    cmbCDDrives.Click = [this] { cmbCDDrives_Click(); };
    Cmdbutton.bind(&ui::CommandButton::Click, [this](int i) { Cmdbutton_Click(i); });
    optExtractMode(1).Click = [this] { picWMAExtractOptions.setVisible(optExtractMode(1).value()); };
    optExtractMode(0).Click = [this] { picWMAExtractOptions.setVisible(optExtractMode(1).value()); };
    lstTracks.Click = [this] {
        if (lstTracks.listIndex() >= 0) PlayTrack(lstTracks.listIndex());
    };
    SliderPosition.MouseDown = [this](int, int, double, double) { seekDragging = true; };
    SliderPosition.MouseUp = [this](int, int, double, double) { seekDragging = false; };
    SliderPosition.Scroll = [this] {
        const int64_t length = cd_.StreamGetLength(cdStream);
        if (length > 0) cd_.ChannelSetPosition(cdStream, static_cast<int64_t>(SliderPosition.value() / 10000.0 * length));
    };
    SliderVolume.Change = [this] {
        lblVolume.setCaption("Volume : " + std::to_string(volumePercent()));
        cd_.ChannelSetAttributes(cdStream, -1, volumePercent(), -101);
    };
    SliderVolume.Scroll = SliderVolume.Change;
    SliderBalance.Change = [this] {
        cd_.ChannelSetAttributes(cdStream, -1, -1, SliderBalance.value());
        lblBalance.setCaption(std::to_string(SliderBalance.value()));
    };
    SliderBalance.Scroll = SliderBalance.Change;
    tmrPlaybackPosition.Tick = [this] { tmrPlaybackPosition_Timer(); };
}

frmDemo::~frmDemo() {
    *alive_ = false;
    if (cdStream) cd_.StreamFree(cdStream);
}

int frmDemo::volumePercent() const { return std::abs(SliderVolume.value() / 10); }

std::string frmDemo::trackPath() { return RPP(applicationFolder()) + "TRACK.WAV"; }
std::string frmDemo::wmaPath(int track) { return RPP(applicationFolder()) + "TRACK" + std::to_string(track + 1) + ".WMA"; }

void frmDemo::KILLTRACK() {
    resumeNext([] { deleteFile(trackPath()); });
}

void frmDemo::ShowError(const std::string& text, int code) {
    std::string message = text;
    if (code != -1) message += kCrLf + std::string("Error Code : ") + std::to_string(code);
    rt.dialogs.msgBox(message, ui::vbCritical, "Error");
}

void frmDemo::routineFailed(const std::exception& e, const char* routine) {
    const auto* vb = dynamic_cast<const VbError*>(&e);
    const int number = vb ? static_cast<int>(vb->code()) : static_cast<int>(VbErr::InvalidCall);
    ShowError("Error #" + std::to_string(number) + kCrLf + "Error in routine : " + routine + kCrLf +
                  "in module : frmDemo",
              -1);
}

// ---- drives and the track list ----

void frmDemo::Form_Load() {
    KILLTRACK();
    if (platform_.streams && platform_.streams->GetVersion() != platform::kStreamsVersion)
        rt.dialogs.msgBox("BASS version 2.1 was not loaded", ui::vbCritical, "Bass.Dll");
    std::string description;
    for (int i = 0; cd_.GetDriveDescription(i, description); ++i) {
        cmbCDDrives.addItem(std::string(1, static_cast<char>('A' + cd_.GetDriveLetter(i))) + ": " + description);
        cmbCDDrives.setItemData(cmbCDDrives.listCount() - 1, i);
        lastDrive = i;
    }
    if (cmbCDDrives.listCount() > 0) cmbCDDrives.setListIndex(0);
    LoadWMAEncoderRates();
    tagNames = split(kTagList, ',');
    resumeNext([&] { SliderVolume.setValue(-cd_.GetVolume() * 10); });
    lblVolume.setCaption("Volume : " + std::to_string(volumePercent()));
    SliderBalance.setValue(0);
    SliderPosition.setValue(0);
}

void frmDemo::Form_Unload(int&) {
    for (int i = 0; i <= lastDrive; ++i) cd_.Door(i, platform::kDoorUnlock);
    if (main_) main_->CdWaveLoaded = false;
    if (cdStream) {
        cd_.ChannelStop(cdStream);
        cd_.StreamFree(cdStream);
        cdStream = 0;
    }
}

void frmDemo::cmbCDDrives_Click() {
    if (cmbCDDrives.listIndex() < 0) return;
    cdDrive = cmbCDDrives.itemData(cmbCDDrives.listIndex());
    emptyDisc_ = false;
    ShowDriveInfo();
    RefreshTrackList();
}

void frmDemo::ShowDriveInfo() {
    platform::CdInfo info;
    cd_.GetInfo(cdDrive, info);
    for (int i = 0; i < 11; ++i) chkRWFlags(i).setValue((info.rwflags >> kFlagBits[i]) & 1u ? 1 : 0);
    chkRWFlags(11).setValue(info.canopen ? 1 : 0);
    chkRWFlags(12).setValue(info.canlock ? 1 : 0);
    Cmdbutton(5).setEnabled(info.canopen);
    Cmdbutton(6).setEnabled(info.canopen);
    if (info.canlock) chkRWFlags(13).setValue(cd_.DoorIsLocked(cdDrive) ? 1 : 0);
    Cmdbutton(3).setEnabled(info.canlock);
    Cmdbutton(4).setEnabled(info.canlock);
    lblMaxReadSpeed.setCaption(vbFormat(info.maxspeed, "###,###") + " Kbps");
    lblCacheSize.setCaption(vbFormat(info.cache, "###,###") + " Kbps");
}

void frmDemo::RefreshTrackList() {
    lstTracks.clear();
    if (!cd_.IsReady(cdDrive)) return;
    const int tracks = cd_.GetTracks(cdDrive);
    if (tracks == -1) {
        ShowError("Error retreiving number of tracks.", -1);
        return;
    }
    std::string block;
    if (cd_.GetID(cdDrive, 4, block)) {
        LoadTrackListFromCDText(tracks, block);
        return;
    }
    txtCDArtist.setText("Unknown Artist");
    txtCDAlbum.setText("Unknown Album");
    for (int t = 1; t <= tracks; ++t) {
        const int64_t length = cd_.GetTrackLength(cdDrive, t - 1);
        if (length > 0) lstTracks.addItem(trackLine(t, length));
        else ShowError("There was an error.", cd_.ErrorGetCode());
    }
}

void frmDemo::LoadTrackListFromCDText(int tracks, const std::string& block) {
    try {
        const CdText text = parseCdText(block, tracks);
        txtCDArtist.setText(text.performers[0]);
        txtCDAlbum.setText(text.titles[0]);
        for (int t = 1; t <= tracks; ++t) {
            const int64_t length = cd_.GetTrackLength(cdDrive, t - 1);
            if (length > 0) lstTracks.addItem(trackLine(t, length, text.titles[t], text.performers[t]));
        }
    } catch (const std::exception& e) {
        routineFailed(e, "LoadTrackListFromCDText");
    }
}

// ---- buttons ----

void frmDemo::Cmdbutton_Click(int index) {
    switch (index) {
        case 0:
            if (lstTracks.listIndex() >= 0) PlayTrack(lstTracks.listIndex());
            break;
        case 1:
            if (cd_.ChannelIsActive(cdStream) == 3) cd_.ChannelPlay(cdStream, false);
            else cd_.ChannelPause(cdStream);
            break;
        case 2:
            cd_.ChannelStop(cdStream);
            if (extracting) extractStop = true;
            break;
        case 3:
            cd_.Door(cdDrive, platform::kDoorLock);
            break;
        case 4:
            cd_.Door(cdDrive, platform::kDoorUnlock);
            break;
        case 5:
            cd_.ChannelStop(cdStream);
            lstTracks.clear();
            cd_.Door(cdDrive, platform::kDoorOpen);
            break;
        case 6:
            cd_.Door(cdDrive, platform::kDoorClose);
            ShowDriveInfo();
            break;
        case 7: {
            cd_.ChannelStop(cdStream);
            const int row = lstTracks.listIndex();
            if (optExtractMode(1).value()) {
                const int rate = cmbWMAEncodingBitrate.listIndex() >= 0
                                     ? cmbWMAEncodingBitrate.itemData(cmbWMAEncodingBitrate.listIndex())
                                     : 0;
                ExtractAudioTrackToWMA(row, rate);
            } else {
                ExtractAudioTrack(row);
            }
            break;
        }
        case 8:
            FadeOut();
            break;
        case 9: {
            const bool small = height != kInfoHeight;
            height = small ? kInfoHeight : kSmallHeight;
            Cmdbutton(9).setCaption(small ? "&Drive Info <<" : "&Drive Info >>");
            break;
        }
        default:
            break;
    }
}

// ---- extraction ----

bool frmDemo::ripBlock(int64_t pos, int64_t length) {
    if (length > 0) resumeNext([&] { prgExtract.setValue(std::min(100.0, 100.0 * static_cast<double>(pos) / length)); });
    rt.loop.doEvents();
    return !extractStop;
}

void frmDemo::ExtractAudioTrack(int track) {
    bool written = false;
    extracting = true;
    extractStop = false;
    prgExtract.setValue(0);
    try {
        cd_.Door(cdDrive, platform::kDoorLock);
        const RipResult r = ripToWave(cd_, cdDrive, track, trackPath(),
                                      [this](int64_t pos, int64_t length) { return ripBlock(pos, length); });
        if (r.outcome == RipOutcome::NoStream) {
            rt.dialogs.msgBox("Unable to Create CD Stream!", ui::vbOKOnly, "VELARO DECK");
        } else {
            written = true;
            rt.dialogs.msgBox("WAV File Encoded.", ui::vbOKOnly, "VELARO DECK");
        }
    } catch (const std::exception& e) {
        routineFailed(e, "ExtractAudioTrack");
    }
    // Whatever happened, the door is not left locked.
    cd_.Door(cdDrive, platform::kDoorUnlock);
    extracting = false;
    prgExtract.setValue(0);
    if (!written) return;

    savefile();
    if (main_) {
        song::frmMain& m = *main_;
        resumeNext([&] { m.LabelSongLength.setCaption("    From CdAudio TRACK" + std::to_string(track + 1)); });
        resumeNext([&] { m.abilita(); });
        m.CdWaveLoaded = true;
        for (ui::CommandButton* b : {&m.cmdstw, &m.Cmdplw}) {
            b->setVisible(true);
            b->setEnabled(true);
        }
        m.Cmd_Play.setEnabled(false);
        resumeNext([&] { m.dismenu(); });
    }
    hide();
    trackSaved = false;
}

void frmDemo::savefile() {
    ui::FileDialogRequest req;
    req.title = "Save WAVE File As";
    req.filter = "File Wave (*.wav)|*.wav";
    req.flags = 2;  // overwrite prompt
    const ui::FileDialogResult chosen = rt.dialogs.showSave(req);
    if (chosen.cancelled || chosen.fileName.empty()) return;
    mousePointer = ui::kPointerHourglass;
    try {
        replaceFileSafely(chosen.fileName, readWholeFile(trackPath()));
        trackSaved = true;
    } catch (const std::exception& e) {
        mousePointer = ui::kPointerDefault;
        ShowError(e.what(), -1);
        return;
    }
    mousePointer = ui::kPointerDefault;
    if (main_) resumeNext([&] { main_->enamenu(); });
}

void frmDemo::ExtractAudioTrackToWMA(int track, int bitRate) {
    extracting = true;
    extractStop = false;
    prgExtract.setValue(0);
    try {
        const auto start = std::chrono::steady_clock::now();
        cd_.Door(cdDrive, platform::kDoorLock);
        std::vector<std::pair<std::string, std::string>> tags;
        if (chkWMAFileTags.value() == 1)
            for (size_t i = 0; i < tagNames.size() && i < 8; ++i)
                if (!txtWMATags(static_cast<int>(i)).text().empty())
                    tags.emplace_back(tagNames[i], txtWMATags(static_cast<int>(i)).text());
        platform::InertWmaEncoder none;
        platform::WmaEncoder& wma = platform_.wma ? *platform_.wma : none;
        const RipResult r = ripToWma(
            cd_, wma, cdDrive, track, wmaPath(track), bitRate, chkWMAFileTags.value() == 1 ? &tags : nullptr,
            [this](int64_t pos, int64_t length) { return ripBlock(pos, length); },
            [this](int code) { ShowError("An error occured while encoding WMA data.", code); });
        if (r.outcome == RipOutcome::NoStream) {
            ShowError("Unable to Create CD Stream!", r.code);
        } else if (r.outcome == RipOutcome::NoOutput) {
            ShowError("An error occured while opening output file.", r.code);
        } else {
            rt.dialogs.msgBox("WMA File Encoded. Encoding took " + vbFormat(secondsSince(start), "###.#") + " seconds.",
                              ui::vbOKOnly, "WMA Encoding");
        }
    } catch (const std::exception& e) {
        routineFailed(e, "ExtractAudioTrackToWMA");
    }
    cd_.Door(cdDrive, platform::kDoorUnlock);
    extracting = false;
    prgExtract.setValue(0);
}

void frmDemo::LoadWMAEncoderRates() {
    try {
        cmbWMAEncodingBitrate.clear();
        const std::vector<int> rates = platform_.wma ? platform_.wma->EncodeGetRates(44100, 2, 0) : std::vector<int>{};
        if (rates.empty()) {
            ShowError("Error: Can't find a codec", platform_.wma ? platform_.wma->ErrorGetCode() : -1);
            return;
        }
        for (int rate : rates) {
            cmbWMAEncodingBitrate.addItem(vbFormat(rate / 1000.0, "###,##0") + " Kbps");
            cmbWMAEncodingBitrate.setItemData(cmbWMAEncodingBitrate.listCount() - 1, rate);
        }
        cmbWMAEncodingBitrate.setListIndex(0);
    } catch (const std::exception& e) {
        routineFailed(e, "LoadWMAEncoderRates");
    }
}

// ---- playback ----

std::function<void()> frmDemo::onLoop(platform::CdStreamId stream, std::function<void()> fn) {
    std::weak_ptr<bool> alive = alive_;
    ui::EventLoop* loop = &rt.loop;
    return [alive, loop, stream, fn, this] {
        loop->post([alive, stream, fn, this] {
            auto a = alive.lock();
            if (a && *a && cdStream == stream) fn();
        });
    };
}

void frmDemo::PlayTrack(int track) {
    Cmdbutton(7).setEnabled(true);
    cd_.ChannelStop(cdStream);
    cdStream = cd_.StreamCreate(cdDrive, track, platform::kCdStreamFreeOld | platform::kCdStreamAutoFree);
    if (!cdStream) return;
    cd_.ChannelSetAttributes(cdStream, -1, volumePercent(), -101);
    cd_.ChannelPlay(cdStream, true);
    cd_.ChannelSetSync(cdStream, platform::kCdSyncEnd, onLoop(cdStream, [this, track] { PlayNextTrack(track); }));
    cd_.ChannelSetSync(cdStream, platform::kCdSyncSlide, onLoop(cdStream, [this, track] { PlayNextTrack(track); }));
    cd_.ChannelSetSync(cdStream, platform::kCdSyncCdError, onLoop(cdStream, [this] { CDError(); }));
}

void frmDemo::PlayNextTrack(int track) {
    if (lstTracks.listCount() == 0) return;
    if (track >= lstTracks.listCount() - 1) {
        // The disc repeats without end.
        lstTracks.setListIndex(0);
        PlayTrack(0);
    } else {
        lstTracks.setListIndex(track + 1);
        PlayTrack(track + 1);
    }
}

void frmDemo::CDError() {
    cd_.ChannelStop(cdStream);
    cd_.StreamFree(cdStream);
    cdStream = 0;
    rt.dialogs.msgBox(
        "There was an error playing back and Audio CD stream. Most probable cause is the CD drive was opened.",
        ui::vbCritical, "Error");
    lstTracks.clear();
    SliderPosition.setValue(0);
}

void frmDemo::FadeOut() { cd_.ChannelSlideAttributes(cdStream, -1, 0, -101, 5000); }

void frmDemo::drawLevel(ui::PictureBox& pic, uint32_t level) {
    ui::Canvas& c = pic.canvas();
    c.cls();
    const double h = c.scaleHeight();
    const double part = std::min(1.0, level / 30000.0);
    if (part > 0) c.fillBox(0, h - h * part, c.scaleWidth(), h, 0x00C000);
}

void frmDemo::tmrPlaybackPosition_Timer() {
    chkRWFlags(14).setValue(cd_.DoorIsOpen(cdDrive) ? 1 : 0);
    chkRWFlags(13).setValue(cd_.DoorIsLocked(cdDrive) ? 1 : 0);
    // A disc that gave no rows is asked again only after the tray has been open,
    // so that its messages come once, not every tick.
    if (chkRWFlags(14).value() == 0 && lstTracks.listCount() == 0 && cmbCDDrives.listCount() > 0 && !extracting &&
        !emptyDisc_) {
        RefreshTrackList();
        emptyDisc_ = lstTracks.listCount() == 0 && cd_.IsReady(cdDrive);
    }
    if (chkRWFlags(14).value() == 1) emptyDisc_ = false;
    if (chkRWFlags(14).value() == 1 && lstTracks.listCount() > 0) {
        cd_.ChannelStop(cdStream);
        lstTracks.clear();
    }
    if (cd_.ChannelIsActive(cdStream) == 0) {
        SliderPosition.setValue(0);
        lblTrackPosition.setCaption("");
        picVUMeter(0).canvas().cls();
        picVUMeter(1).canvas().cls();
        return;
    }
    const uint32_t level = cd_.ChannelGetLevel(cdStream);
    if (level == 0xFFFFFFFFu) {
        picVUMeter(0).canvas().cls();
        picVUMeter(1).canvas().cls();
    } else {
        drawLevel(picVUMeter(0), level & 0xFFFF);
        drawLevel(picVUMeter(1), level >> 16);
    }
    if (!seekDragging) {
        const int64_t length = cd_.StreamGetLength(cdStream);
        const int64_t pos = cd_.ChannelGetPosition(cdStream);
        if (length > 0) {
            SliderPosition.setValue(static_cast<int>(std::nearbyint(10000.0 * pos / length)));
            lblTrackPosition.setCaption(Seconds2HMS(pos / static_cast<double>(kBytesPerSecond)) + " / " +
                                        Seconds2HMS(length / static_cast<double>(kBytesPerSecond)));
        }
    }
}

}  // namespace velaro::cd

#include "frm_tags.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "../base/byte_text.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../ui/canvas.h"
#include "genres.h"
#include "id3v1.h"

namespace velaro::tags {

namespace {

constexpr const char* kAppTitle = "VELARO DECK";
constexpr const char* kCaption = "Velaro  ID3 Tag & LyricsEditor  V.1.0";
constexpr int kThumbMax = 129;
constexpr int kVolumeMax = 89;

bool sameFile(const std::string& a, const std::string& b) { return ucase(a) == ucase(b); }

uint8_t genreByte(int position) { return static_cast<uint8_t>(position <= 0 ? 12 : std::min(position - 1, 255)); }

std::string recordOf(const std::string& title, const std::string& artist, const std::string& album,
                     const std::string& year, const std::string& comment, uint8_t genre) {
    const Id3Fields f = makeId3Fields(title, artist, album, year, comment, genre);
    return "TAG" + std::string(f.data(), f.size());
}

// A box position kept as text in the work list.
int positionOf(const std::string& text) {
    try {
        return std::stoi(trim(text));
    } catch (...) {
        return 0;
    }
}

}  // namespace

double thumbLeft(double seconds, double duration) {
    return std::min<double>(std::floor(128 * vbDivide(seconds, duration)) + 1, kThumbMax);
}

int volumeForThumb(double top) {
    const double pos = std::clamp(top, 0.0, double(kVolumeMax));
    const int percent = static_cast<int>(roundHalfEven(pos * 100 / kVolumeMax));
    return -(percent * 50);
}

FrmTags::FrmTags(ui::Runtime& rt, TagsState& state, const settings::mConfig& config, platform::MediaGraph& graph)
    : ui::Form(rt, "frmTags"), frmLyrics(rt, state, config), state_(state), config_(config), graph_(graph) {
    caption = kCaption;
    frmLyrics.editor = this;
    btnParcourTx.setCaption("&File");
    btnParcourSon.setCaption("&Open Mp3 Audio File");
    btnParcourTxt.setCaption("&Load Text");
    cmdok.setCaption("&Exit");
    fraId3.setCaption("ID3v1");
    fraMpeg.setCaption("MPEG Info");
    const std::pair<ui::Control*, const char*> captions[] = {
        {&txtTitle, "Title:"}, {&txtArtist, "Artist:"},    {&txtAlbum, "Album:"},
        {&txtYear, "Year:"},   {&Txtcomment, "Comment:"}, {&cboGenre, "Genre:"}};
    for (const auto& [c, text] : captions) c->setCaption(text);
    cmdAdd.setCaption("Add");
    cmdUndo.setCaption("Undo");
    cmdApply.setCaption("Save");
    cmdCancel.setCaption("Cancel");
    cmdPlayer(1).setCaption("Play");
    cmdPlayer(2).setCaption("Pause");
    cmdPlayer(3).setCaption("Stop");
    imgNormal.load(15);
    imgNormal.load(16);
    LyricsRef.sorted = true;
    LyricsRef.setVisible(false);
    pbprogress.setVisible(false);
    btnParcourTxt.setEnabled(false);
    cmdPlayer(1).setEnabled(false);
    cmdUndo.setEnabled(false);
    cmdApply.setEnabled(false);

    btnParcourSon.Click = [this] { OpenFileForEdit(); };
    btnParcourTxt.Click = [this] { btnParcourTxt_Click(); };
    cmdok.Click = [this] { cmdok_Click(); };
    cmdCancel.Click = [this] { unload(); };
    cmdAdd.Click = [this] { cmdAdd_Click(); };
    cmdUndo.Click = [this] { cmdUndo_Click(); };
    cmdApply.Click = [this] { cmdApply_Click(); };
    cmdPlayer.bind(&ui::CommandButton::Click, [this](int i) { cmdPlayer_Click(i); });
    chkTags.bind(&ui::CheckBox::Click, [this](int i) { chkTags_Click(i); });
    cboGenre.Click = [this] { cboGenre_Click(); };
    playTimer.Tick = [this] { playTimer_Timer(); };
}

WorkRow* FrmTags::row(const std::string& file) {
    for (auto& r : listRef)
        if (r.file == file) return &r;
    return nullptr;
}

void FrmTags::Form_Load() {
    playFlag = "false";
    state_.PlayerState = "false";
    undo.reset();
    state_.TagEditorOpen = true;
    cboGenre.clear();
    cboGenre.addItem(std::string(1, '\0'));
    for (const auto& g : shortGenreTable()) cboGenre.addItem(g);
}

void FrmTags::Form_Unload(int&) {
    state_.TagEditorOpen = false;
    if (skinned.enamenu) skinned.enamenu();
    playTimer.setEnabled(false);
    resumeNext([&] { graph_.Stop(); });
    resumeNext([&] { graph_.Release(); });
    graphOpen = false;
    state_.PlayerState = "false";
    frmLyrics.unload();
}

void FrmTags::resetWalk() {
    lyricPos = 0;
    LyricsRef.clear();
    frmLyrics.LyricsRef.clear();
}

void FrmTags::OpenFileForEdit() {
    companionLyrics = false;
    state_.mmp3.LyricsSeen = false;
    frmLyrics.unload();
    ui::FileDialogRequest req;
    req.defaultExt = ".mp3";
    req.filter = "MP3 Audio (*.mp3)|*.MP3|Wave Files (*.wav)|*.WAV|WMA Files (*.wma)|*.WMA";
    const auto answer = rt.dialogs.showOpen(req);
    if (answer.cancelled) return;
    currentFile = answer.fileName;
    btnParcourTxt.setEnabled(true);
    cmdPlayer(1).setEnabled(true);
    if (!row(currentFile)) listRef.push_back(WorkRow{currentFile, {}});
    LoadFileFields();
    if (txtLyrics.text().empty() && currentFile.size() >= 3) {
        // A same-named .lrc beside the file stands in for missing lyrics.
        const std::string companion = currentFile.substr(0, currentFile.size() - 3) + "lrc";
        std::error_code ec;
        if (std::filesystem::is_regular_file(companion, ec) && std::filesystem::file_size(companion, ec) > 0 && !ec) {
            companionLyrics = true;
            textFile = companion;
            Chargement_Paroles();
        }
    }
}

void FrmTags::LoadFileFields() {
    resetWalk();
    if (state_.PlayerState != "false") Stop_Player();
    undo.reset();
    cmdUndo.setEnabled(false);
    ClearFields(false);
    cmdApply.setEnabled(false);
    ClearFields(true);
    const Mp3Info info = state_.mmp3.GetMp3Info(currentFile);
    txtTitle.setText(info.Title);
    txtArtist.setText(info.Artist);
    txtAlbum.setText(info.Album);
    txtYear.setText(info.Year);
    Txtcomment.setText(info.Comment);
    filling = true;
    resumeNext([&] { cboGenre.setListIndex(0); });
    if (info.Genre) resumeNext([&] { cboGenre.setListIndex(*info.Genre); });
    else resumeNext([&] { cboGenre.setEditText(""); });
    filling = false;
    lblMPEGInfo.setCaption("<>Size:[" + info.Size + "]  <>Length:[" + " " + info.Length + " ]\r\n" + "<>" +
                           info.MpegVersion + " " + info.Layer + "\r\n" + "<>" + info.BitRate + " " +
                           info.SampleRate + " " + info.ChannelMode + "\r\n" + "<>CRCs:[" + info.Crc + "]\r\n" +
                           "<>Copyrighted:[" + info.Copyrighted + "]\r\n" + "<>Original:[" + info.Original +
                           "]\r\n" + "<>Emphasis:[" + info.Emphasis + "]");
    txtLyrics.setText(info.Lyrics);
    lblfile.setCaption(currentFile);
}

void FrmTags::ClearFields(bool enabled) {
    lblfile.setCaption("");
    txtLyrics.setText("");
    lblMPEGInfo.setCaption("");
    chkTags.forEach([&](ui::CheckBox& c) { c.setValue(0); });
    chkTags.forEach([&](ui::CheckBox& c) { c.setEnabled(!enabled); });
    for (ui::Control* c : std::initializer_list<ui::Control*>{&txtTitle, &txtArtist, &txtAlbum, &txtYear, &Txtcomment,
                                                              &cboGenre, &pictab(2)})
        c->setEnabled(enabled);
}

void FrmTags::StoreFields() {
    if (currentFile.empty()) return;
    WorkRow* r = row(currentFile);
    if (!r) return;
    r->cols = {txtTitle.text(),   txtArtist.text(), txtAlbum.text(), txtYear.text(),
               std::to_string(cboGenre.listIndex()), txtLyrics.text(), Txtcomment.text()};
}

void FrmTags::Load_Album_Tags() { listRef.clear(); }

bool FrmTags::Chargement_Paroles() {
    const bool ok = tags::Chargement_Paroles(textFile, txtLyrics, lyricLines);
    if (ok) lineCount = static_cast<int32_t>(lyricLines.size());
    return ok;
}

void FrmTags::btnParcourTxt_Click() {
    ui::FileDialogRequest req;
    req.defaultExt = ".txt";
    req.filter = "Text (*.txt)|*.TXT|Lyrics (*.lrc)|*.LRC";
    const auto answer = rt.dialogs.showOpen(req);
    if (answer.cancelled) return;
    txtLyrics.setText("");
    textFile = answer.fileName;
    Chargement_Paroles();
}

void FrmTags::Show_Lyrics(const std::string&) {
    const auto entries = LyricEntries(txtLyrics.text());
    if (entries.empty()) return;  // blank, or no mark: the lists stay as they are
    for (const auto& e : entries) {
        addSorted(frmLyrics.LyricsRef, e);
        addSorted(LyricsRef, e);
    }
    if (state_.LyricsWindowOpen) frmLyrics.Order_lblLyrics();
}

void FrmTags::cmdAdd_Click() {
    if (state_.PlayerState == "false") return;
    cmdApply.setEnabled(true);
    double position = 0;
    if (!resumeNext([&] { position = graph_.CurrentPosition(); })) return;
    if (!StampLine(txtLyrics, position, undo)) return;
    cmdUndo.setEnabled(true);
    if (!trim(txtLyrics.text()).empty()) StoreFields();
}

void FrmTags::cmdUndo_Click() {
    if (!UndoStamp(txtLyrics, undo)) return;
    if (undo.undoCount == 0) cmdUndo.setEnabled(false);
}

void FrmTags::cmdApply_Click() {
    if (playFlag == "true") {
        rt.dialogs.msgBox("Stop Music", ui::vbCritical, kAppTitle);
        return;
    }
    if (currentFile.empty()) return;
    if (txtTitle.text().empty()) {
        rt.dialogs.msgBox("Insert Title", ui::vbCritical, kAppTitle);
        return;
    }
    btnParcourTxt.setEnabled(false);
    cmdApply.setEnabled(false);
    SaveTags();
}

std::string FrmTags::recordFromBoxes(const Mp3Info& info, const std::array<int, 4>& checks) const {
    // Only what is checked comes from the boxes; title and comment stay as the file has them.
    const std::string artist = checks[0] ? trim(txtArtist.text()) : info.Artist;
    const std::string album = checks[1] ? trim(txtAlbum.text()) : info.Album;
    const std::string year = checks[2] ? trim(txtYear.text()) : info.Year;
    const uint8_t genre = checks[3] ? genreByte(cboGenre.listIndex()) : genreByte(info.Genre.value_or(0));
    return recordOf(info.Title, artist, album, year, info.Comment, genre);
}

void FrmTags::SaveTags() {
    const std::string file = currentFile;
    std::array<int, 4> checks{};
    for (int i = 0; i < 4; ++i) checks[static_cast<size_t>(i)] = chkTags(i).value();
    resumeNext([&] {
        pbprogress.min = 0;
        pbprogress.setValue(0);
        pbprogress.setVisible(true);
    });
    rt.loop.doEvents();
    lblfile.setCaption("Updating file: " + file);
    std::string failure;

    // First pass: the checked fields over what the file holds, its lyrics kept.
    resumeNext([&] {
        const Mp3Info info = state_.mmp3.GetMp3Info(file);
        const std::string record = recordFromBoxes(info, checks);
        SuspendPlayback(file);
        if (!state_.mmp3.WriteLyricsTag(file, record, info.Lyrics)) failure = state_.mmp3.WriteError;
        ResumePlayback(file);
    });
    resumeNext([&] { pbprogress.setValue(50); });

    // Second pass: everything from the work list, which wins when it has a title.
    resumeNext([&] {
        WorkRow* r = row(file);
        if (!r || r->cols[kTitle].empty()) return;
        const std::string record =
            recordOf(trim(r->cols[kTitle]), trim(r->cols[kArtist]), trim(r->cols[kAlbum]), trim(r->cols[kYear]),
                     trim(r->cols[kComment]), genreByte(positionOf(r->cols[kGenre])));
        SuspendPlayback(file);
        StoreFields();
        // The first pass moved the tags: read where they stand now.
        state_.mmp3.GetMp3Info(file);
        if (!state_.mmp3.WriteLyricsTag(file, record, trim(r->cols[kLyrics])) && failure.empty())
            failure = state_.mmp3.WriteError;
        ResumePlayback(file);
        r->cols = {};
    });

    resumeNext([&] {
        pbprogress.setValue(pbprogress.max);
        pbprogress.setVisible(false);
    });
    lblfile.setCaption(file);
    if (!failure.empty()) rt.dialogs.msgBox("Cannot save " + file + ": " + failure, ui::vbCritical, kAppTitle);
    rt.dialogs.msgBox("Done!", ui::vbOKOnly, kAppTitle);
}

void FrmTags::SuspendPlayback(const std::string& path) {
    if (!state_.PlayerFile.empty() && sameFile(path, state_.PlayerFile)) {
        savedState = skinned.state ? skinned.state() : "false";
        if (savedState != "false") {
            if (skinned.position) savedPosition = roundHalfEven(skinned.position());
            if (skinned.stop) skinned.stop();
        }
    }
    if (!playingFile.empty() && sameFile(path, playingFile)) {
        savedState = state_.PlayerState;
        if (savedState != "false") {
            resumeNext([&] { savedPosition = roundHalfEven(graph_.CurrentPosition()); });
            Stop_Player();
        }
        resumeLocal = true;
    }
}

void FrmTags::ResumePlayback(const std::string& path) {
    if (resumeLocal && !playingFile.empty() && sameFile(path, playingFile)) {
        resumeLocal = false;
        if (savedState == "true" || savedState == "pause") {
            PlayFile(path);
            resumeNext([&] { graph_.SetCurrentPosition(savedPosition); });
            if (savedState == "pause") TogglePause();
        }
    } else if (!state_.PlayerFile.empty() && sameFile(path, state_.PlayerFile)) {
        if (savedState == "true" || savedState == "pause") {
            if (skinned.playAndSeek) skinned.playAndSeek(savedPosition);
            if (savedState == "pause" && skinned.pause) skinned.pause();
        } else if (skinned.refreshTag) {
            skinned.refreshTag();
        }
    }
}

void FrmTags::PlayFile(const std::string& path) {
    resumeNext([&] { graphOpen = graph_.RenderFile(path); });
    resumeNext([&] { graph_.Run(); });
    resumeNext([&] { graph_.SetVolume(skinned.volume ? skinned.volume() : 0); });
    state_.PlayerState = "true";
    playingFile = path;
}

void FrmTags::TogglePause() {
    if (state_.PlayerState == "false") return;
    if (graph_.State() != 2) {
        playTimer.setEnabled(true);
        graph_.Run();
        state_.PlayerState = "true";
    } else {
        graph_.Pause();
        state_.PlayerState = "pause";
    }
}

void FrmTags::Stop_Player() {
    playTimer.setEnabled(false);
    playFlag = "false";
    resumeNext([&] { graph_.Stop(); });
    state_.PlayerState = "false";
    // Letting go of the graph frees the file for a save.
    resumeNext([&] { graph_.Release(); });
    graphOpen = false;
}

void FrmTags::Five_Seg_Forward() {
    if (state_.PlayerState == "pause") TogglePause();
    resumeNext([&] { graph_.SetCurrentPosition(std::min(graph_.CurrentPosition() + 5, graph_.Duration())); });
}

void FrmTags::Five_Seg_Backward() {
    if (state_.PlayerState == "pause") TogglePause();
    resumeNext([&] { graph_.SetCurrentPosition(std::max(graph_.CurrentPosition() - 5, 0.0)); });
}

void FrmTags::Ajust_Volume(double pos) {
    const double top = std::clamp(pos, 0.0, double(kVolumeMax));
    imgNormal(16).move(imgNormal(16).left(), top);
    playerVolume = volumeForThumb(top);
    if (graphOpen) resumeNext([&] { graph_.SetVolume(playerVolume); });
}

void FrmTags::ShowTime(double seconds) {
    resumeNext([&] { imgNormal(15).setLeft(thumbLeft(seconds, graph_.Duration())); });
}

double FrmTags::seekTarget() const {
    double duration = 0;
    resumeNext([&] { duration = graph_.Duration(); });
    const double left = imgNormal(15).left();
    return std::max(0.0, std::floor((left - 1) / 128 * duration * 1000) / 1000);
}

void FrmTags::SliderReproduccioN_Down(double x) {
    if (playFlag == "false") return;
    dragStart = x;
    thumbStart = imgNormal(15).left();
    seeking = true;
}

void FrmTags::SliderReproduccioN_Move(double x) {
    if (playFlag == "false" || !seeking) return;
    // thumbStart follows the thumb while dragStart stays: the thumb runs ahead of the mouse.
    const double left = std::clamp(roundHalfEven(x - dragStart + thumbStart), 0.0, double(kThumbMax));
    imgNormal(15).setLeft(left);
    thumbStart = left;
    lblTiempoT.setCaption(TimeText(static_cast<int64_t>(roundHalfEven(seekTarget()))));
}

void FrmTags::SliderReproduccioN_Up(int button) {
    if (playFlag == "false" || button == 2) return;
    resumeNext([&] { graph_.SetCurrentPosition(seekTarget()); });
    seeking = false;
    if (playFlag == "pause") TogglePause();
}

void FrmTags::SliderVolume_Down(double y) {
    volumeDragging = true;
    dragStart = y;
    thumbStart = imgNormal(16).top();
}

void FrmTags::SliderVolume_Move(double y) {
    if (!volumeDragging) return;
    const double top = std::clamp(roundHalfEven(y - dragStart + thumbStart), 0.0, double(kVolumeMax));
    thumbStart = top;
    volumePos = top;
    Ajust_Volume(top);
}

void FrmTags::Load_File_Tags() {
    frmLyrics.show();
    const Mp3Info info = state_.mmp3.GetMp3Info(currentFile);
    std::string lyricText = info.Lyrics;
    if (companionLyrics) {
        state_.mmp3.HasLyricsTag = true;
        lyricText = "ZZZZ";  // only passes the test below
    }
    if (state_.mmp3.HasLyricsTag && !trim(lyricText).empty()) Show_Lyrics(lyricText);
}

void FrmTags::cmdPlayer_Click(int index) {
    playTimer.setEnabled(false);
    cmdPlayer(2).setEnabled(true);
    cmdPlayer(3).setEnabled(true);
    switch (index) {
        case 0: Five_Seg_Backward(); break;
        case 2: resumeNext([&] { TogglePause(); }); break;
        case 4: Five_Seg_Forward(); break;
        case 1:
            playFlag = "true";
            cmdPlayer(1).setEnabled(false);
            if (skinned.state && skinned.state() == "true" && skinned.stop) skinned.stop();
            state_.LyricsWindowOpen = true;
            Load_File_Tags();
            playTimer.setEnabled(true);
            PlayFile(currentFile);
            resumeNext([&] { graph_.SetVolume(playerVolume); });
            break;
        case 3:
            Stop_Player();
            playingFile.clear();
            LyricsRef.clear();
            frmLyrics.LyricsRef.clear();
            frmLyrics.unload();
            cmdPlayer(1).setEnabled(true);
            imgNormal(15).setLeft(0);
            picSliderRep.canvas().cls();
            picSliderVol.canvas().cls();
            break;
        default: break;
    }
}

void FrmTags::playTimer_Timer() {
    double duration = 0, position = 0;
    resumeNext([&] { duration = graph_.Duration(); });
    resumeNext([&] { position = graph_.CurrentPosition(); });
    lblDuracion.setCaption(TimeText(static_cast<int64_t>(roundHalfEven(duration))));
    if (playFlag == "true") {
        if (seeking) return;
        if (position >= duration) {
            Stop_Player();
            playFlag = "false";
        }
    }
    const std::string now = TimeText(static_cast<int64_t>(roundHalfEven(position)));
    if (!state_.MiniMode) {
        lblTiempoT.setCaption(now);
    } else if (skinned.setMiniTime) {
        const bool elapsed = !skinned.miniShowsElapsed || skinned.miniShowsElapsed();
        skinned.setMiniTime(elapsed ? now : "-" + TimeText(static_cast<int64_t>(roundHalfEven(duration - position))));
    }
    ShowTime(roundHalfEven(position));
    if (state_.mmp3.HasLyricsTag && state_.LyricsWindowOpen)
        resumeNext([&] {
            SyncLyrics(lblTiempoT.caption(), LyricsRef, lyricPos, [&] { frmLyrics.Move_Next_Focus_Lyrics(); },
                       [&] { frmLyrics.Move_Previous_Focus_Lyrics(); });
        });
}

void FrmTags::TabStrip_Click(int index) {
    pictab.forEach([&](ui::PictureBox& p) { p.setVisible(p.index() == index); });
}

void FrmTags::fieldKeyDown(int keyCode) {
    switch (keyCode) {
        case 13: case 16: case 17: case 20: case 37: case 38: case 39: case 40: return;
        default: break;
    }
    StoreFields();
    if (!cmdApply.enabled()) cmdApply.setEnabled(true);
}

void FrmTags::cboGenre_DropDown() { genreText = cboGenre.editText(); }

void FrmTags::cboGenre_Click() {
    if (filling || cboGenre.editText() == genreText) return;
    StoreFields();
    if (!cmdApply.enabled()) cmdApply.setEnabled(true);
    genreText.clear();
}

void FrmTags::chkTags_Click(int index) {
    ui::Control* fields[] = {&txtArtist, &txtAlbum, &txtYear, &cboGenre};
    fields[index]->setEnabled(chkTags(index).value() == 1);
    bool any = false;
    for (int i = 0; i < 4; ++i) any = any || chkTags(i).value() != 0;
    cmdApply.setEnabled(any);
}

void FrmTags::cmdok_Click() {
    if (cmdApply.enabled() && rt.dialogs.msgBox("Exit ?", ui::vbYesNo + ui::vbQuestion, "Velaro Mp3Tag Editor") == ui::vbNo)
        return;
    cmdok.setEnabled(false);
    unload();  // the unload gives the main window its menus back
}

}  // namespace velaro::tags

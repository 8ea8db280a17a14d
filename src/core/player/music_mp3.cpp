#include "music_mp3.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include "../base/byte_text.h"
#include "../base/vb_error.h"
#include "../base/vb_number.h"
#include "../tags/frm_lyrics.h"
#include "../tags/frm_tags.h"
#include "../tags/timed_lyrics.h"
#include "../ui/canvas.h"

namespace velaro::player {

namespace {

constexpr int kLeftButton = 1;
constexpr int kRightButton = 2;
constexpr int kShiftMask = 1;
// The key left of Z on European keyboards, "<" and with Shift ">".
constexpr int kKeyAngle = 226;

bool isStateButton(int index) {
    return (index >= 1 && index <= 3) || (index >= 5 && index <= 8);
}

std::string twoDigits(int32_t v) {
    char buf[16];
    std::snprintf(buf, sizeof buf, v < 0 ? "-%02d" : "%02d", v < 0 ? -v : v);
    return buf;
}

std::string fileNameOf(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

// ---------------------------------------------------------------- helpers

bool likeMatch(const std::string& text, const std::string& pattern) {
    // Iterative match with a single backtrack point for the last star.
    size_t t = 0, p = 0, star = std::string::npos, mark = 0;
    while (t < text.size()) {
        if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
            ++t, ++p;
        } else if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            mark = t;
        } else if (star != std::string::npos) {
            p = star + 1;
            t = ++mark;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}

std::string Convert_Time(int32_t seconds) {
    const int32_t hours = seconds / 3600;
    const int32_t minutes = (seconds % 3600) / 60;
    const int32_t secs = seconds % 60;
    if (hours > 0) return twoDigits(hours) + ":" + twoDigits(minutes) + ":" + twoDigits(secs);
    return twoDigits(minutes) + ":" + twoDigits(secs);
}

PatternFileList::PatternFileList(ui::Form* owner, std::string name, std::string pat)
    : ui::ListBox(owner, std::move(name)), pattern(std::move(pat)) {}

void PatternFileList::setPath(const std::string& folder) {
    path_ = folder;
    std::vector<std::string> patterns;
    for (size_t from = 0;;) {
        const size_t semi = pattern.find(';', from);
        patterns.push_back(lcase(pattern.substr(from, semi - from)));
        if (semi == std::string::npos) break;
        from = semi + 1;
    }
    std::vector<std::string> names;
    std::error_code ec;
    for (std::filesystem::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        std::error_code fe;
        if (!it->is_regular_file(fe)) continue;
        const std::string name = it->path().filename().string();
        const std::string lower = lcase(name);
        auto matches = [&](const std::string& p) { return likeMatch(lower, p); };
        if (std::any_of(patterns.begin(), patterns.end(), matches)) names.push_back(name);
    }
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        const std::string la = lcase(a), lb = lcase(b);
        return la != lb ? la < lb : a < b;
    });
    clear();
    for (auto& n : names) addItem(n);
}

void ImageBox::setPicture(std::string file) {
    if (file == picture_) return;
    picture_ = std::move(file);
    changed();
}

// ---------------------------------------------------------------- the form

MusicMp3::MusicMp3(ui::Runtime& rt, tags::TagsState& st, settings::mConfig& cfg, PlayerModule& mod,
                   platform::MediaGraph& graph)
    : ui::Form(rt, "MusicMp3"), frmMini(rt, *this), state(st), config(cfg), module(mod), graph_(graph),
      rng_(std::random_device{}()) {
    caption = "MusicMp3 1.0";
    Rnd = [this] { return std::uniform_real_distribution<double>(0.0, 1.0)(rng_); };
    Randomize = [this] { rng_.seed(static_cast<uint32_t>(this->rt.loop.now()) ^ std::random_device{}()); };

    // The face as designed, in pixels.
    PicMusic.move(0, 0), PicMusic.setWidth(360), PicMusic.setHeight(18);
    picFondo.move(0, 0), picFondo.setWidth(360), picFondo.setHeight(200);
    ImagenCaratulA.move(8, 24), ImagenCaratulA.setWidth(120), ImagenCaratulA.setHeight(120);
    ListaRep.move(8, 24), ListaRep.setWidth(120), ListaRep.setHeight(120);
    ListaRep.setVisible(false);
    lblTrackRuta.move(136, 22), lblTrackRuta.setWidth(190), lblTrackRuta.setHeight(16);
    lblTrackRep.move(136, 40), lblTrackRep.setWidth(190), lblTrackRep.setHeight(14);
    lblBitrate.move(136, 58), lblBitrate.setWidth(64), lblBitrate.setHeight(14);
    lblFreq.move(204, 58), lblFreq.setWidth(64), lblFreq.setHeight(14);
    lblTiempoT.move(136, 76), lblTiempoT.setWidth(96), lblTiempoT.setHeight(26);
    lblDuracion.move(270, 84), lblDuracion.setWidth(56), lblDuracion.setHeight(16);
    picScroll.move(136, 106), picScroll.setWidth(190), picScroll.setHeight(16);
    picSliderVol.move(336, 24), picSliderVol.setWidth(20), picSliderVol.setHeight(101);
    picBotones.setWidth(120), picBotones.setHeight(40);
    picMenu.setWidth(180), picMenu.setHeight(32);
    picDiscos.setWidth(36), picDiscos.setHeight(24);
    for (int i = 0; i <= 4; ++i) {
        imgNormal(i).move(136 + i * 26, 150), imgNormal(i).setWidth(24), imgNormal(i).setHeight(20);
    }
    for (int i = 5; i <= 11; ++i) {
        imgNormal(i).move(136 + (i - 5) * 20, 176), imgNormal(i).setWidth(18), imgNormal(i).setHeight(16);
    }
    for (int i = 12; i <= 14; ++i) {
        imgNormal(i).move(302 + (i - 12) * 19, 1), imgNormal(i).setWidth(18), imgNormal(i).setHeight(16);
    }
    // The knobs move inside their grooves: the position knob across 0..129, the volume knob down 0..89.
    imgNormal(15).move(0, 0), imgNormal(15).setWidth(12), imgNormal(15).setHeight(12);
    imgNormal(16).move(4, 0), imgNormal(16).setWidth(12), imgNormal(16).setHeight(12);

    lblBitrate.setCaption("000 kbps");
    lblFreq.setCaption("00.0 Hz");
    lblTiempoT.setCaption("00:00");
    lblDuracion.setCaption("00:00");
    lblTrackRuta.setCaption("Buscando...");
    LyricsRef.sorted = true;
    LyricsRef.setVisible(false);
    for (auto* hidden : {&fileCaratulas, &FileAleatorio, &FileSearch}) hidden->setVisible(false);
    DirSearch.setVisible(false);
    txtSTIcon.forEach([](ui::TextBox& t) { t.setVisible(false); });

    static constexpr std::array<const char*, 15> kTips = {
        "Z  Anterior Track", "X  Reproducir", "C  Pausa", "V  Detener", "B  Siguiente Track",
        "I  Intro 10 seg", "S  Silencio", "R  Repetir Track", "Orden Aleatorio", "<  Anterior Album/Folder",
        "L  Lista Rep/Caratula", ">  Siguiente Album/Folder", "Minimizar", "Mini Mascara", "Cerrar"};
    for (int i = 0; i < static_cast<int>(kTips.size()); ++i) imgNormal(i).toolTipText = kTips[i];

    imgNormal.forEach([this](ui::PictureBox& b) {
        const int i = b.index();
        b.MouseDown = [this, i](int button, int, double x, double y) {
            // A knob held shows its pressed cell until it is let go.
            if (i == 15) paintButton(15, 1), SliderReproduccioN_Down(button, float(x));
            else if (i == 16) paintButton(16, 1), SliderVolume_Down(button, float(y));
            else imgNormal_MouseDown(i, button);
        };
        b.MouseMove = [this, i](int button, int, double x, double y) {
            if (i == 15) SliderReproduccioN_Move(button, float(x));
            else if (i == 16) SliderVolume_Move(button, float(y));
        };
        b.MouseUp = [this, i](int button, int, double, double) {
            if (i >= 15 && button != kRightButton) paintButton(i, 0);
            if (i == 15) SliderReproduccioN_Up(button);
            else if (i == 16) SliderVolume_Up(button);
            else imgNormal_MouseUp(i, button);
        };
    });
    ListaRep.Click = [this] { ListaRep_Click(); };
    lblTrackRuta.Click = [this] { lblTrackRuta_Click(); };
    picScroll.Click = [this] { picScroll_Click(); };
    for (ui::Control* c : std::initializer_list<ui::Control*>{&PicMusic, &lblBitrate, &lblDuracion, &lblFreq,
                                                              &lblTiempoT, &lblTrackRep}) {
        c->MouseDown = [this](int button, int, double, double) {
            if (button == kLeftButton && windows) settings::DragWindow(*windows, *this);
        };
    }
    playTimer.Tick = [this] { playTimer_Timer(); };
    Timer_Intro.Tick = [this] { Timer_Intro_Timer(); };
    Timer_Texto.Tick = [this] { Timer_Texto_Timer(); };
}

void MusicMp3::Form_Load() {
    lyricIndex = 1;
    playState = "false";
    for (int i = 0; i <= 16; ++i) paintButton(i, 0);
}

void MusicMp3::Form_Unload(int&) {
    Stop_Player();
    releaseGraph();
    if (frmMini.loaded()) frmMini.unload();
    if (endProgram) endProgram();
}

void MusicMp3::releaseGraph() {
    if (graphLoaded) resumeNext([&] { graph_.Release(); });
    graphLoaded = false;
}

double MusicMp3::position() {
    double p = 0;
    if (graphLoaded) resumeNext([&] { p = graph_.CurrentPosition(); });
    return p;
}

// ---------------------------------------------------------------- transport

void MusicMp3::Play() {
    if (ListaRep.listCount() == 0 || module.albumCount == 0) return;
    if (introActive) {
        Timer_Intro.setEnabled(true);
        introSeconds = 0;
    }
    if (playState == "pause") {
        Pause_Play();
        return;
    }
    // The editor's own player lets go of the sound.
    if ((state.PlayerState == "true" || state.PlayerState == "pause") && frmTags) frmTags->Stop_Player();
    playTimer.setEnabled(false);
    Start_Play();
}

void MusicMp3::Start_Play() {
    try {
        // A fresh graph for every start.
        releaseGraph();
        if (!graph_.RenderFile(state.PlayerFile)) throw VbError(VbErr::FileNotFound, "cannot render");
        graphLoaded = true;
        graph_.Run();
        graph_.SetVolume(muteActive ? -10000 : volumeLevel);
        Load_File_Tags();
        ShowLyricsPanel();
        playTimer.setEnabled(true);
        lblDuracion.setCaption(Convert_Time(clng(vbFix(graph_.Duration()))));
        playState = "true";
        RefreshTransportButtons();
    } catch (const std::exception&) {
        Stop_Player();
    }
}

void MusicMp3::Stop_Player() {
    if (module.albumCount == 0) return;
    imgNormal(15).setLeft(0);
    playTimer.setEnabled(false);
    if (introActive) Timer_Intro.setEnabled(false);
    lblTiempoT.setCaption("00:00");
    frmMini.lblTiempoT.setCaption("00:00");
    playState = "false";
    RefreshTransportButtons();
    if (graphLoaded) resumeNext([&] { graph_.Stop(); });
    releaseGraph();
    if (state.mmp3.HasLyricsTag && state.LyricsWindowOpen && frmLyrics) frmLyrics->Reset_Values();
}

void MusicMp3::Pause_Play() {
    if (ListaRep.listCount() == 0 || module.albumCount == 0 || playState == "false") return;
    int s = 0;
    resumeNext([&] { s = graphLoaded ? graph_.State() : 0; });
    if (s == 2) {
        playState = "pause";
        RefreshTransportButtons();
        resumeNext([&] { graph_.Pause(); });
        if (introActive) Timer_Intro.setEnabled(false);
    } else {
        if (muteActive && graphLoaded) resumeNext([&] { graph_.SetVolume(-10000); });
        if (introActive) Timer_Intro.setEnabled(true);
        playState = "true";
        if (graphLoaded) resumeNext([&] { graph_.Run(); });
        RefreshTransportButtons();
    }
}

void MusicMp3::Five_Seg_Forward() {
    if (ListaRep.listCount() == 0 || playState != "true" || !graphLoaded) return;
    resumeNext([&] { graph_.SetCurrentPosition(std::min(graph_.CurrentPosition() + 5, graph_.Duration())); });
}

void MusicMp3::Five_Seg_Backward() {
    if (ListaRep.listCount() == 0 || playState != "true" || !graphLoaded) return;
    resumeNext([&] { graph_.SetCurrentPosition(std::max(graph_.CurrentPosition() - 5, 0.0)); });
}

void MusicMp3::playTimer_Timer() {
    if (playState != "true" || seekDragging) return;
    double duration = 0, pos = 0;
    resumeNext([&] { duration = graph_.Duration(); });
    resumeNext([&] { pos = graph_.CurrentPosition(); });
    if (!(pos < duration)) {
        // The track has ended: again, the next one, or the next album on the last.
        Stop_Player();
        playState = "false";
        if (repeatActive) {
            Play();
            return;
        }
        const int next = ListaRep.listIndex() + 1;
        if (ListaRep.listIndex() != ListaRep.listCount() - 1) resumeNext([&] { ListaRep.setListIndex(next); });
        else Next_Album();
        return;
    }
    resumeNext([&] {
        if (state.MiniMode) {
            frmMini.lblTiempoT.setCaption(frmMini.ShowElapsed ? Convert_Time(clng(pos))
                                                              : "-" + Convert_Time(clng(duration - pos)));
        } else {
            lblTiempoT.setCaption(Convert_Time(clng(pos)));
        }
    });
    resumeNext([&] { ShowTime(cint(pos)); });
    if (state.mmp3.HasLyricsTag && state.LyricsWindowOpen) resumeNext([&] { SyncLyricFocus(); });
}

void MusicMp3::ShowTime(double seconds) {
    double duration = 0;
    resumeNext([&] { duration = graph_.Duration(); });
    const double left = vbInt(vbDivide(128 * (seconds * 1000), duration * 1000)) + 1;
    imgNormal(15).setLeft(std::min(left, double(kSeekKnobMax)));
    rt.loop.doEvents();
}

void MusicMp3::ListaRep_Click() {
    if (ListaRep.listCount() == 0 || ListaRep.text().empty()) return;
    state.PlayerFile = trim(ListaRep.path()) + "/" + ListaRep.text();
    lblTrackRep.setCaption("Track " + std::to_string(ListaRep.listIndex() + 1) + " of " +
                           std::to_string(ListaRep.listCount()));
    // Set before Play on purpose: Play then finds no "pause" and starts the track.
    playState = "true";
    Play();
}

void MusicMp3::Previous_Track() {
    if (ListaRep.listCount() == 0) return;
    int index = ListaRep.listIndex();
    if (index == 0) Previous_Album();
    else index -= 1;
    if (index != ListaRep.listCount()) resumeNext([&] { ListaRep.setListIndex(index); });
}

// The album scan is not part of this program: these read a count and return.
void MusicMp3::Next_Track() { (void)ListaRep.listCount(); }
void MusicMp3::Next_Album() { (void)module.albumCount; }
void MusicMp3::Previous_Album() { (void)module.albumCount; }
void MusicMp3::Randomize_Click() {}

void MusicMp3::Intro() {
    introActive = !introActive;
    Images_Buttons(5, introActive);
    if (introActive) introSeconds = 0;
    Timer_Intro.setEnabled(introActive);
}

void MusicMp3::Timer_Intro_Timer() {
    introSeconds = add16(introSeconds, 1);
    if (introSeconds == 10) {
        if (repeatActive) Play();
        else Next_Track();
        introSeconds = 0;
    }
}

void MusicMp3::Player_Repeat() {
    repeatActive = !repeatActive;
    Images_Buttons(7, repeatActive);
}

void MusicMp3::Player_Mute() {
    // Silence waits for the next start or resume.
    muteActive = !muteActive;
    Images_Buttons(6, muteActive);
}

void MusicMp3::Minimize_Me() {
    if (state.TagEditorOpen && frmTags) frmTags->hide();
    if (state.LyricsWindowOpen && frmLyrics) frmLyrics->hide();
    if (state.MiniMode) frmMini.hide();
    hide();
}

// ---------------------------------------------------------------- knobs

void MusicMp3::Ajust_Volume(double top) {
    top = std::clamp(top, 0.0, double(kVolumeKnobMax));
    imgNormal(16).move(imgNormal(16).left(), top);
    const int32_t v = clng(top * 100 / kVolumeKnobMax);
    if (volumeDragging) picScroll.canvas().cls();
    if (graphLoaded) {
        resumeNext([&] { graph_.SetVolume(-(v * v)); });
        resumeNext([&] { volumeLevel = graph_.Volume(); });
    } else {
        volumeLevel = -(v * v);
    }
}

void MusicMp3::SliderVolume_Down(int, float y) {
    if (volumeDragging) return;
    Timer_Texto.setEnabled(false);
    if (muteActive) Player_Mute();
    dragGrip = y;
    dragOrigin = float(imgNormal(16).top());
    volumeDragging = true;
}

void MusicMp3::SliderVolume_Move(int, float y) {
    if (!volumeDragging) return;
    // The grip stays where the press was while the origin follows the knob, so the knob runs ahead.
    if (!resumeNext([&] {
            const int32_t value = std::clamp<int32_t>(clng(vbInt(y - dragGrip + dragOrigin)), 0, kVolumeKnobMax);
            dragOrigin = float(value);
            Ajust_Volume(value);
        }))
        volumeDragging = false;
}

void MusicMp3::SliderVolume_Up(int) {
    volumeDragging = false;
    Scroll_Text(module.scrollText, picScroll);
}

void MusicMp3::SliderReproduccioN_Down(int, float x) {
    if (playState == "false" || seekDragging) return;
    dragGrip = x;
    dragOrigin = float(imgNormal(15).left());
    seekDragging = true;
}

// The knob does not follow the pointer.
void MusicMp3::SliderReproduccioN_Move(int, float) {}

void MusicMp3::SliderReproduccioN_Up(int) {
    if (playState == "false") return;
    try {
        const double duration = graph_.Duration();
        double target = vbInt(((seekTarget - 1) / 128.0) * (duration * 1000)) / 1000;
        if (target < 0) target = 0;
        if (!graphLoaded) throw VbError(VbErr::InvalidCall, "no graph");
        graph_.SetCurrentPosition(target);
        seekDragging = false;
        if (playState == "pause") Pause_Play();
    } catch (const std::exception&) {
        seekDragging = false;
    }
}

// ---------------------------------------------------------------- buttons and keys

void MusicMp3::paintButton(int index, int row) {
    if (!imgNormal.exists(index)) return;
    int strip, columns, column;
    if (index <= 4) strip = kStripBotones, columns = kBotonesColumns, column = index;
    else if (index <= 14) strip = kStripMenu, columns = kMenuColumns, column = index - 5;
    else strip = kStripDiscos, columns = kDiscosColumns, column = index - 15;
    ui::Canvas& c = imgNormal(index).canvas();
    c.cls();
    c.paintCell(strip, row * columns + column, 0, 0);
}

void MusicMp3::imgNormal_MouseDown(int index, int button) {
    if (index != 10) paintButton(index, 1);
    if (isStateButton(index)) {
        (void)button;
        switch (index) {
            case 1: Play(); break;
            case 2: Pause_Play(); break;
            case 3: Stop_Player(); break;
            case 5: Intro(); break;
            case 6: Player_Mute(); break;
            case 7: Player_Repeat(); break;
            case 8: Randomize_Click(); break;
            default: break;
        }
    }
}

void MusicMp3::imgNormal_MouseUp(int index, int button) {
    if (button == kRightButton) return;
    const bool keepsLook = (index >= 1 && index <= 3) || (index >= 5 && index <= 7) || index == 10;
    if (!keepsLook) paintButton(index, 0);
    if (isStateButton(index)) return;
    switch (index) {
        case 0: Previous_Track(); break;
        case 4: Next_Track(); break;
        case 9: Previous_Album(); break;
        case 10: Front_Click(); break;
        case 11: Next_Album(); break;
        case 12: Minimize_Me(); break;
        case 13: Switch_Mini(*this, true); break;
        case 14: unload(); break;
        default: break;
    }
}

void MusicMp3::Form_KeyUp(int keyCode, int shift) {
    switch (keyCode) {
        case 'Z': Previous_Track(); break;
        case 'X': Play(); break;
        case 'C': Pause_Play(); break;
        case 'V': Stop_Player(); break;
        case 'B': Next_Track(); break;
        case 'I': Intro(); break;
        case 'S': Player_Mute(); break;
        case 'R': Player_Repeat(); break;
        case 'L': Front_Click(); break;
        case kKeyAngle:
            if (shift & kShiftMask) Next_Album();
            else Previous_Album();
            break;
        default: break;
    }
}

void MusicMp3::Form_KeyPress(char key) {
    const double top = imgNormal(16).top();
    switch (key) {
        case '-': Ajust_Volume(top + 2); break;
        case '+': Ajust_Volume(top - 2); break;
        case 'a': case 'A': Five_Seg_Backward(); break;
        case 'd': case 'D': Five_Seg_Forward(); break;
        default: break;
    }
}

// ---------------------------------------------------------------- the face

void MusicMp3::Images_Buttons(int index, bool active) {
    if (index < 5 || index > 14) return;
    paintButton(index, active ? 1 : 0);
}

void MusicMp3::RefreshTransportButtons() {
    for (int i = 1; i <= 3; ++i) {
        paintButton(i, 0);
        frmMini.Images_Buttons(i, false);
    }
    const int lit = playState == "true" ? 1 : playState == "false" ? 3 : playState == "pause" ? 2 : 0;
    if (lit == 0) return;
    paintButton(lit, 1);
    frmMini.Images_Buttons(lit, true);
}

void MusicMp3::Select_Album(int index) {
    auto paintDisc = [&](int album, int row) {
        resumeNext([&] {
            ui::Canvas& c = picAlbum(album).canvas();
            c.cls();
            c.paintCell(kStripDiscos, row * kDiscosColumns + 2, 0, 0);
        });
    };
    paintDisc(module.currentAlbum, 0);
    paintDisc(index, 1);
}

void MusicMp3::Play_Album(int index) {
    std::string dir;
    if (!resumeNext([&] { dir = picAlbum(index).tag; })) return;
    Search_Caratula(dir);
    Select_Album(index);
    module.currentAlbum = checked16(index);
    ListaRep.setPath(dir);
}

void MusicMp3::Front_Click() {
    ListaRep.setVisible(!ListaRep.visible());
    ImagenCaratulA.setVisible(!ImagenCaratulA.visible());
    listShowing = ListaRep.visible();
    paintButton(10, listShowing ? 1 : 0);
}

void MusicMp3::Search_Caratula(const std::string& path) {
    static constexpr std::array<const char*, 4> kCoverNames = {"*caratula*", "*portada*", "*front*", "*frt*"};
    fileCaratulas.setPath(path);
    for (int i = 0; i < fileCaratulas.listCount(); ++i) {
        const std::string name = lcase(trim(fileCaratulas.list(i)));
        for (const char* p : kCoverNames) {
            if (likeMatch(name, p)) {
                ImagenCaratulA.setPicture(trim(path) + "/" + fileCaratulas.list(i));
                return;
            }
        }
    }
    ImagenCaratulA.setPicture("");
}

void MusicMp3::Load_File_Tags() {
    tags::Mp3Info info;
    resumeNext([&] { info = state.mmp3.GetMp3Info(state.PlayerFile); });
    lblBitrate.setCaption(info.BitRate);
    lblFreq.setCaption(info.SampleRate);

    if (!info.Artist.empty() && !info.Album.empty()) {
        trackArtist = info.Artist;
        trackAlbum = info.Album;
        if (showFullPath) return;
        const std::string line = info.Artist + " - " + info.Album;
        if (line.size() > 33) {
            lblTrackRuta.setCaption(left(line, 30) + "...");
            lblTrackRuta.toolTipText = line;
        } else {
            lblTrackRuta.setCaption(line);
            lblTrackRuta.toolTipText = ListaRep.path();
        }
        // With both tags the strip and the lyrics stay as they were.
        return;
    }

    const std::string name = trim(fileNameOf(state.PlayerFile));
    module.scrollText = trim(left(name, std::max<int64_t>(0, int64_t(name.size()) - 4)));
    picScroll.tag = state.PlayerFile;
    if (state.MiniMode) {
        if (!showFullPath) Scroll_Text(module.scrollText, frmMini.picScroll);
    } else {
        Scroll_Text(module.scrollText, picScroll);
    }
    if (!trim(info.Lyrics).empty() && state.mmp3.HasLyricsTag) Show_Lyrics(info.Lyrics);
    else LyricsRef.clear();
}

void MusicMp3::Show_Lyrics(const std::string& text) {
    LyricsRef.clear();
    if (frmLyrics) frmLyrics->LyricsRef.clear();
    const auto entries = tags::LyricEntries(text);
    for (const auto& e : entries) {
        tags::addSorted(LyricsRef, e);
        // The lyrics window shows the lines from its own list.
        if (frmLyrics) tags::addSorted(frmLyrics->LyricsRef, e);
    }
    if (state.LyricsWindowOpen && frmLyrics) frmLyrics->Order_lblLyrics();
}

void MusicMp3::ShowLyricsPanel() {
    lyricIndex = 1;
    if (!state.LyricsWindowOpen || !frmLyrics) return;
    frmLyrics->lblAlbum.setCaption(trackAlbum);
    frmLyrics->lblArtist.setCaption(trackArtist);
    const bool any = LyricsRef.listCount() > 0;
    frmLyrics->picLyrics.setVisible(any);
    frmLyrics->lblNoLyrics.setVisible(!any);
}

void MusicMp3::SyncLyricFocus() {
    tags::SyncLyrics(
        lblTiempoT.caption(), LyricsRef, lyricIndex,
        [&] {
            if (frmLyrics) frmLyrics->Move_Next_Focus_Lyrics();
        },
        [&] {
            if (frmLyrics) frmLyrics->Move_Previous_Focus_Lyrics();
        });
}

bool MusicMp3::textFits(const std::string& text, ui::PictureBox& strip) {
    ui::Canvas& c = strip.canvas();
    return c.textWidth(text) <= c.scaleWidth();
}

void MusicMp3::Scroll_Text(const std::string& text, ui::PictureBox& strip) {
    // The strip measures in pixels.
    if (!textFits(text, strip)) {
        scrollStarted = true;  // the scroll itself was never drawn
        Timer_Texto.setEnabled(true);
    } else {
        Timer_Texto.setEnabled(false);
    }
    ui::Canvas& c = strip.canvas();
    c.cls();
    c.currentX = c.scaleWidth() / 2 - c.textWidth(text) / 2;
    c.currentY = std::max(0.0, (c.scaleHeight() - c.textHeight(text)) / 2);
    c.print(text, false);
}

void MusicMp3::Timer_Texto_Timer() {
    // Clears the strip and draws no moving text: an over-long title vanishes while this runs.
    ui::PictureBox& strip = state.MiniMode ? frmMini.picScroll : picScroll;
    strip.canvas().cls();
    scrollTicking = true;
    scrollPause = add16(scrollPause, 1);
    if (scrollPause == 30) {
        scrollPause = 0;
        scrollStarted = false;
    }
    rt.loop.doEvents();
}

void MusicMp3::picScroll_Click() {
    if (!textFits(module.scrollText, picScroll)) Timer_Texto.setEnabled(!Timer_Texto.enabled());
}

void MusicMp3::lblTrackRuta_Click() {
    if (showFullPath) showFullPath = false;
}

void MusicMp3::Randomize_Order(const std::string& mode) {
    if (mode == "Album") {
        const int count = ListaRep.listCount();
        if (!shuffleReady) {
            if (count == 0) return;
            Randomize();
            shuffleOrder.assign(count, 0);
            shuffleOrder[0] = checked16(playState == "true" ? ListaRep.listIndex() : int(vbInt(count * Rnd())));
            for (int i = 1; i < count; ++i) {
                int16_t draw;
                do {
                    draw = checked16(int(vbInt(count * Rnd())));
                    rt.loop.doEvents();
                } while (std::count(shuffleOrder.begin(), shuffleOrder.begin() + i, draw) != 0);
                shuffleOrder[i] = draw;
            }
            shuffleReady = true;
            shufflePos = 0;
            if (playState == "false") {
                resumeNext([&] { ListaRep.setListIndex(-1); });
                resumeNext([&] { ListaRep.setListIndex(shuffleOrder[0]); });
            }
            return;
        }
        if (shufflePos < count) {
            const int16_t pick = shuffleOrder[shufflePos];
            shufflePos = add16(shufflePos, 1);
            resumeNext([&] { ListaRep.setListIndex(pick); });
        } else if (module.albumCount == 1) {
            Stop_Player();
            Randomize_Click();
        } else {
            Next_Album();
        }
        return;
    }

    // Over all albums: album and track drawn until a pair not used yet comes up.
    if (module.albumCount <= 0) return;
    int total = 0;
    for (int a = 1; a <= module.albumCount; ++a) {
        resumeNext([&] {
            FileAleatorio.setPath(picAlbum(a).tag);
            total += FileAleatorio.listCount();
        });
    }
    if (static_cast<int>(shuffleHistory.size()) >= total) return;  // every track has had its turn
    historyStarted = true;
    for (;;) {
        const int album = int(vbInt(Rnd() * module.albumCount + 1));
        std::string dir;
        if (!resumeNext([&] { dir = picAlbum(album).tag; })) continue;
        FileAleatorio.setPath(dir);
        const int track = int(vbInt(FileAleatorio.listCount() * Rnd()));
        rt.loop.doEvents();
        if (FileAleatorio.listCount() == 0) continue;
        const std::string pair = std::to_string(album) + "," + std::to_string(track);
        const bool used = std::any_of(shuffleHistory.begin(), shuffleHistory.end(), [&](const std::string& h) {
            const size_t comma = h.find(',');
            return h.substr(0, comma) == std::to_string(album) &&
                   comma != std::string::npos && h.substr(comma + 1) == std::to_string(track);
        });
        if (used) continue;
        Play_Album(album);
        resumeNext([&] { ListaRep.setListIndex(track); });
        shuffleHistory.push_back(pair);
        historyCount = checked16(int(shuffleHistory.size()));
        return;
    }
}

// ---------------------------------------------------------------- the editor's hook

void MusicMp3::attachEditor(tags::FrmTags& editor) {
    frmTags = &editor;
    frmLyrics = &editor.frmLyrics;
    tags::SkinnedPlayerHook& h = editor.skinned;
    h.state = [this] { return playState; };
    h.position = [this] { return position(); };
    h.stop = [this] { Stop_Player(); };
    h.playAndSeek = [this](double seconds) {
        Start_Play();
        if (graphLoaded) resumeNext([&] { graph_.SetCurrentPosition(seconds); });
    };
    h.pause = [this] { Pause_Play(); };
    h.refreshTag = [this] { Load_File_Tags(); };
    h.volume = [this] { return volumeLevel; };
    h.setMiniTime = [this](const std::string& text) { frmMini.lblTiempoT.setCaption(text); };
    h.miniShowsElapsed = [this] { return frmMini.ShowElapsed; };
}

}  // namespace velaro::player

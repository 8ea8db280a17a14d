#include "main_window.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSlider>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QVBoxLayout>

#include "backing_panel.h"
#include "bindings.h"
#include "effect_panel_window.h"
#include "form11_window.h"
#include "form1_window.h"
#include "record_bindings.h"
#include "page_widget.h"
#include "seek_bar.h"

namespace velaro::gui {

namespace {

QLabel* caption(const char* text, QWidget* parent) {
    auto* l = new QLabel(text, parent);
    l->setAlignment(Qt::AlignCenter);
    QFont f = l->font();
    f.setPointSizeF(f.pointSizeF() * 0.9);
    l->setFont(f);
    l->setForegroundRole(QPalette::PlaceholderText);
    return l;
}

QLabel* readout(QWidget* parent, double scale = 1.6) {
    auto* l = new QLabel(parent);
    QFont f = l->font();
    f.setPointSizeF(f.pointSizeF() * scale);
    f.setBold(true);
    f.setStyleHint(QFont::Monospace);
    l->setFont(f);
    return l;
}

}  // namespace

MainWindow::MainWindow(song::frmMain& form, QWidget* parent) : QMainWindow(parent), f_(form) {
    setWindowTitle(QString::fromStdString(f_.caption).trimmed());
    setWindowIcon(QIcon::fromTheme("velaro-deck"));
    resize(1180, 820);

    // ---- menus ----
    QMenu* file = menuBar()->addMenu(QString());
    bindMenu(f_.MnuFile, file->menuAction());
    for (ui::Menu* m : {&f_.MnuOpenSong, &f_.menuwave, &f_.cdRipper, &f_.pLmenu, &f_.MnuMp3, &f_.mnew})
        action(file, *m);
    file->addSeparator();
    for (ui::Menu* m : {&f_.SaveT, &f_.SaveSyncro}) action(file, *m);
    file->addSeparator();
    action(file, f_.mnuExit);

    QMenu* tools = menuBar()->addMenu(QString());
    bindMenu(f_.mnutil, tools->menuAction());
    for (ui::Menu* m : {&f_.dlsbank, &f_.inputRec, &f_.inputmenu, &f_.MnuNorm, &f_.mnwave, &f_.Mmp3, &f_.wavp3})
        action(tools, *m);

    QMenu* effects = menuBar()->addMenu(QString());
    bindMenu(f_.Meff, effects->menuAction());
    for (ui::Menu* m : {&f_.Mchor, &f_.Mecho, &f_.Mequal, &f_.Mrev, &f_.Mnfla, &f_.Mecompr}) action(effects, *m, true);

    QMenu* options = menuBar()->addMenu(QString());
    bindMenu(f_.cvmenu, options->menuAction());
    for (ui::Menu* m : {&f_.NormMnu, &f_.loadSbank, &f_.MnuMeter}) action(options, *m, true);
    options->addSeparator();
    action(options, f_.SaveC);

    QMenu* help = menuBar()->addMenu("&Help");
    action(help, f_.Mhelp);
    action(help, f_.MnuAbout);

    // ---- the window: transport on top, the page in the middle, controls below ----
    auto* central = new QWidget(this);
    auto* column = new QVBoxLayout(central);
    column->setContentsMargins(12, 8, 12, 12);
    column->setSpacing(10);
    column->addWidget(buildTransport());

    page_ = new PageWidget(central);
    page_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    f_.Picture3.attachCanvas(page_);
    remember(f_.Picture3, page_);

    auto* lower = new QSplitter(Qt::Horizontal, central);
    lower->addWidget(buildControls());
    // The channel strips and, beside them in audio mode, the backing player.
    auto* right = new QWidget(lower);
    auto* rightRow = new QHBoxLayout(right);
    rightRow->setContentsMargins(0, 0, 0, 0);
    rightRow->addWidget(buildChannels(), 1);
    rightRow->addWidget(buildBackingPanel(f_.backing, right, [this](ui::Control& c, QWidget* w) { remember(c, w); }));
    lower->addWidget(right);
    lower->setStretchFactor(0, 1);
    lower->setStretchFactor(1, 2);

    auto* split = new QSplitter(Qt::Vertical, central);
    split->addWidget(page_);
    split->addWidget(lower);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 2);
    column->addWidget(split, 1);
    setCentralWidget(central);

    // "Wav to Mp3" and the normaliser come and go with their forms.
    new Form1Window(f_.encoding.form1, this);
    new Form11Window(f_.encoding.form11, this);
    // The eight effect panels come and go with their forms too.
    record::MainEffects& fx = f_.effects;
    for (record::EffectPanel* p : std::initializer_list<record::EffectPanel*>{
             &fx.Waves, &fx.Flanger, &fx.Echo, &fx.Distortion, &fx.Compressor, &fx.Chorus, &fx.Gargle, &fx.ParamEQ})
        new EffectPanelWindow(*p, this);
    // The form shows no encoder errors; the window's status line tells why an encode ended early.
    f_.encoding.MEnc1.encoderEnded = [this](const std::string& error) {
        if (!error.empty()) statusBar()->showMessage(QString::fromStdString("Encode Mp3: " + error));
    };
}

void MainWindow::remember(ui::Control& c, QWidget* w) { widgets_[{c.name(), c.index()}] = w; }

QWidget* MainWindow::widgetFor(const std::string& name, int index) const {
    auto it = widgets_.find({name, index});
    return it == widgets_.end() ? nullptr : it->second;
}

QAction* MainWindow::action(QMenu* menu, ui::Menu& m, bool checkable) {
    QAction* a = menu->addAction(QString());
    a->setCheckable(checkable);
    bindMenu(m, a);
    return a;
}

QWidget* MainWindow::buildTransport() {
    auto* box = new QGroupBox(this);
    bindFrame(f_.Frame8, box);
    auto* grid = new QGridLayout(box);

    auto button = [&](ui::CommandButton& c, QStyle::StandardPixmap icon, const char* tip) {
        auto* b = new QPushButton(style()->standardIcon(icon), QString(), box);
        b->setToolTip(tip);
        b->setMinimumSize(64, 40);
        b->setIconSize(QSize(24, 24));
        bindButton(c, b);
        remember(c, b);
        return b;
    };
    auto* row = new QHBoxLayout;
    row->addWidget(button(f_.Cmd_Play, QStyle::SP_MediaPlay, "Play"));
    row->addWidget(button(f_.CmdPause, QStyle::SP_MediaPause, "Pause"));
    row->addWidget(button(f_.Cmd_Stop, QStyle::SP_MediaStop, "Stop"));
    row->addSpacing(16);
    auto* position = readout(box, 2.0);
    bindLabel(f_.Label5, position);
    remember(f_.Label5, position);
    row->addWidget(position);
    auto* slash = readout(box, 2.0);
    slash->setText("/");
    row->addWidget(slash);
    auto* length = readout(box, 2.0);
    bindLabel(f_.lblTime, length);
    remember(f_.lblTime, length);
    row->addWidget(length);
    row->addSpacing(16);
    auto* song = new QLabel(box);
    song->setTextInteractionFlags(Qt::TextSelectableByMouse);
    song->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    bindLabel(f_.LabelSongLength, song);
    remember(f_.LabelSongLength, song);
    row->addWidget(song, 1);
    for (ui::Label* l : {&f_.lblM, &f_.lblS}) {
        auto* w = readout(box, 1.4);
        bindLabel(*l, w);
        remember(*l, w);
        row->addWidget(w);
    }
    grid->addLayout(row, 0, 0);
    grid->addLayout(buildRecording(box), 2, 0);
    grid->addLayout(buildEncoding(box), 3, 0);

    seek_ = new SeekBar(f_, box);
    remember(f_.Picture4, seek_);
    grid->addWidget(seek_, 1, 0);
    return box;
}

QLayout* MainWindow::buildEncoding(QWidget* box) {
    // The take to MP3: the two buttons, the bar while it runs, the bit-rate list when asked for.
    auto* row = new QHBoxLayout;
    for (ui::CommandButton* c : {&f_.cmdSave, &f_.encstop}) {
        auto* b = new QPushButton(box);
        bindButton(*c, b);
        remember(*c, b);
        row->addWidget(b);
    }
    auto* bar = new QProgressBar(box);
    bindProgress(f_.encoding.prog, bar);
    remember(f_.encoding.prog, bar);
    row->addWidget(bar, 1);
    auto* rates = new QComboBox(box);
    rates->setToolTip(QString::fromStdString(f_.encoding.Combo2.caption()));
    bindCombo(f_.encoding.Combo2, rates);
    remember(f_.encoding.Combo2, rates);
    row->addWidget(rates);
    row->addStretch();
    return row;
}

QWidget* MainWindow::buildControls() {
    auto* panel = new QWidget(this);
    auto* col = new QVBoxLayout(panel);
    col->setContentsMargins(0, 0, 0, 0);

    // Tempo, key and volume.
    auto* knobs = new QGroupBox("Tempo · Key · Volume", panel);
    auto* grid = new QGridLayout(knobs);
    auto slider = [&](ui::Slider& c, int column, const char* title, bool inverted) {
        auto* s = new QSlider(Qt::Vertical, knobs);
        s->setInvertedAppearance(inverted);
        s->setMinimumHeight(110);
        bindSlider(c, s);
        remember(c, s);
        grid->addWidget(caption(title, knobs), 0, column);
        grid->addWidget(s, 1, column, Qt::AlignHCenter);
    };
    slider(f_.vslidertempo, 0, "Tempo", false);
    auto* tempoShown = readout(knobs, 1.2);
    tempoShown->setAlignment(Qt::AlignCenter);
    bindLabel(f_.lblInfo(2), tempoShown);
    grid->addWidget(tempoShown, 2, 0);

    auto* key = new QSlider(Qt::Vertical, knobs);
    key->setMinimumHeight(110);
    bindScroll(f_.vscroll1, key);
    remember(f_.vscroll1, key);
    grid->addWidget(caption("Key", knobs), 0, 1);
    grid->addWidget(key, 1, 1, Qt::AlignHCenter);
    auto* keyShown = readout(knobs, 1.2);
    keyShown->setAlignment(Qt::AlignCenter);
    bindLabel(f_.lblInfo(0), keyShown);
    grid->addWidget(keyShown, 2, 1);

    // The volume slider's loud end is its low value.
    slider(f_.Slider1, 2, "Volume", true);
    auto* pc = new QCheckBox(knobs);
    bindCheck(f_.Check2, pc);
    remember(f_.Check2, pc);
    auto* rv = new QCheckBox(knobs);
    bindCheck(f_.Check3, rv);
    remember(f_.Check3, rv);
    grid->addWidget(pc, 2, 2);
    grid->addWidget(rv, 3, 2);
    col->addWidget(knobs);
    col->addWidget(buildMixer(panel));

    // The lyric look and the sync text.
    auto* look = new QHBoxLayout;
    for (ui::CommandButton* c : {&f_.Command4, &f_.Command5, &f_.Command6}) {
        auto* b = new QPushButton(panel);
        bindButton(*c, b);
        remember(*c, b);
        look->addWidget(b);
    }
    col->addLayout(look);
    col->addWidget(buildEffects(panel));
    auto* sync = new QPlainTextEdit(panel);
    sync->setPlaceholderText("Sync text: one stamped line for each lyric line reached");
    QFont mono("monospace");
    mono.setStyleHint(QFont::Monospace);
    sync->setFont(mono);
    bindText(f_.Text2, sync);
    remember(f_.Text2, sync);
    col->addWidget(sync, 1);
    return panel;
}

QWidget* MainWindow::buildEffects(QWidget* parent) {
    // The chain in its order (the compressor's entry is the blank line) and
    // the buttons that open the panels while the song plays.
    auto* box = new QGroupBox("Effects", parent);
    auto* grid = new QGridLayout(box);
    auto* list = new QListWidget(box);
    list->setMaximumHeight(110);
    list->setToolTip("The effects in their order; a click takes one out");
    bindList(f_.lstuse, list);
    remember(f_.lstuse, list);
    grid->addWidget(list, 0, 0, 3, 1);
    record::MainEffects& fx = f_.effects;
    int at = 0;
    auto button = [&](ui::CommandButton& c) {
        auto* b = new QPushButton(box);
        bindButton(c, b);
        remember(c, b);
        return b;
    };
    grid->addWidget(button(f_.cmdApply), 3, 0);
    for (ui::CommandButton* c : {&fx.CmdCompr, &fx.cmdecho, &fx.CmdEQ, &fx.cmdFl, &fx.cmdrev, &fx.Cmdrus}) {
        grid->addWidget(button(*c), at % 3, 1 + at / 3);
        ++at;
    }
    return box;
}

QWidget* MainWindow::buildChannels() {
    auto* box = new QGroupBox("Channels", this);
    auto* grid = new QGridLayout(box);
    grid->setHorizontalSpacing(4);
    for (int c = 0; c < 16; ++c) {
        auto* number = caption(std::to_string(c + 1).c_str(), box);
        grid->addWidget(number, 0, c);
        auto* s = new QSlider(Qt::Vertical, box);
        s->setMinimumHeight(100);
        bindSlider(f_.Slider2(c), s);
        remember(f_.Slider2(c), s);
        grid->addWidget(s, 1, c, Qt::AlignHCenter);
        auto* on = new QCheckBox(box);
        on->setToolTip("Channel on");
        bindCheck(f_.Check1(c), on);
        remember(f_.Check1(c), on);
        grid->addWidget(on, 2, c, Qt::AlignHCenter);
        auto* pick = new QRadioButton(box);
        pick->setToolTip("Choose this channel's instrument");
        bindOption(f_.Option1(c), pick);
        remember(f_.Option1(c), pick);
        grid->addWidget(pick, 3, c, Qt::AlignHCenter);
        auto* name = new QLabel(box);
        name->setWordWrap(true);
        name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        name->setMinimumWidth(44);
        name->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        QFont small = name->font();
        small.setPointSizeF(small.pointSizeF() * 0.8);
        name->setFont(small);
        bindLabel(f_.Label3(c), name);
        remember(f_.Label3(c), name);
        grid->addWidget(name, 4, c);
        grid->setColumnStretch(c, 1);
    }
    auto* list = new QListWidget(box);
    list->setMinimumWidth(170);
    bindList(f_.List3, list);
    remember(f_.List3, list);
    grid->addWidget(list, 0, 16, 5, 1);
    return box;
}

void MainWindow::closeEvent(QCloseEvent* e) {
    // The close box: the form unloads without asking and without saving.
    f_.unload();
    e->accept();
}

}  // namespace velaro::gui

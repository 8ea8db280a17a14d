#include "tags_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTextBlock>
#include <QVBoxLayout>

#include "bindings.h"
#include "core/base/cp1252.h"
#include "lyrics_window.h"

namespace velaro::gui {

int qtCaretOf(const std::string& text, int offset) {
    int pos = 0;
    for (int i = 0; i < offset && i < static_cast<int>(text.size()); ++i)
        if (!(text[size_t(i)] == '\n' && i > 0 && text[size_t(i) - 1] == '\r')) ++pos;
    return pos;
}

int modelCaretOf(const std::string& text, int qtPosition) {
    int pos = 0, i = 0;
    for (; i < static_cast<int>(text.size()) && pos < qtPosition; ++i)
        if (!(text[size_t(i)] == '\r' && i + 1 < static_cast<int>(text.size()) && text[size_t(i) + 1] == '\n')) ++pos;
    return i;
}

namespace {

// The key codes the form's handlers know, from a key going down.
int keyCode(const QKeyEvent* k) {
    switch (k->key()) {
        case Qt::Key_Return: case Qt::Key_Enter: return 13;
        case Qt::Key_Shift: return 16;
        case Qt::Key_Control: return 17;
        case Qt::Key_CapsLock: return 20;
        case Qt::Key_Left: return 37;
        case Qt::Key_Up: return 38;
        case Qt::Key_Right: return 39;
        case Qt::Key_Down: return 40;
        default: return k->key() & 0xFFFF;
    }
}

class KeyDown : public QObject {
public:
    KeyDown(QObject* parent, std::function<void(int)> fn) : QObject(parent), fn_(std::move(fn)) {}
    bool eventFilter(QObject*, QEvent* e) override {
        if (e->type() == QEvent::KeyPress) fn_(keyCode(static_cast<QKeyEvent*>(e)));
        return false;
    }

private:
    std::function<void(int)> fn_;
};

class Pressed : public QObject {
public:
    Pressed(QObject* parent, std::function<void()> fn) : QObject(parent), fn_(std::move(fn)) {}
    bool eventFilter(QObject*, QEvent* e) override {
        if (e->type() == QEvent::MouseButtonPress) fn_();
        return false;
    }

private:
    std::function<void()> fn_;
};

}  // namespace

TagsWindow::TagsWindow(tags::FrmTags& form, QWidget* parent) : FormWindow(form, parent), tags_(form) {
    auto* root = new QVBoxLayout(this);
    auto* bar = new QMenuBar(this);
    root->setMenuBar(bar);
    QMenu* file = bar->addMenu(QString::fromStdString(form.btnParcourTx.caption()));
    QAction* open = file->addAction(QString::fromStdString(form.btnParcourSon.caption()));
    QAction* text = file->addAction(QString::fromStdString(form.btnParcourTxt.caption()));
    file->addSeparator();
    QAction* exit = file->addAction(QString::fromStdString(form.cmdok.caption()));
    bindMenu(form.btnParcourSon, open);
    bindMenu(form.btnParcourTxt, text);
    QObject::connect(exit, &QAction::triggered, this, [&form] { form.cmdok.userClick(); });

    auto* tabs = new QTabWidget(this);
    root->addWidget(tabs);

    // The tags page.
    auto* tagPage = new QWidget;
    auto* tagLayout = new QHBoxLayout(tagPage);
    auto* id3 = new QGroupBox(QString::fromStdString(form.fraId3.caption()));
    auto* grid = new QGridLayout(id3);
    auto keys = new KeyDown(this, [&form](int code) { form.fieldKeyDown(code); });
    auto line = [&](ui::TextBox& box, int row, int check) {
        grid->addWidget(new QLabel(QString::fromStdString(box.caption())), row, 0);
        auto* edit = new QLineEdit;
        edit->installEventFilter(keys);
        bindLine(box, edit);
        grid->addWidget(edit, row, 1);
        if (check >= 0) {
            auto* c = new QCheckBox;
            bindCheck(form.chkTags(check), c);
            grid->addWidget(c, row, 2);
        }
    };
    line(form.txtTitle, 0, -1);
    line(form.txtArtist, 1, 0);
    line(form.txtAlbum, 2, 1);
    line(form.txtYear, 3, 2);
    line(form.Txtcomment, 4, -1);
    grid->addWidget(new QLabel(QString::fromStdString(form.cboGenre.caption())), 5, 0);
    auto* genre = new QComboBox;
    bindCombo(form.cboGenre, genre);
    genre->installEventFilter(new Pressed(this, [&form] { form.cboGenre_DropDown(); }));
    genre->installEventFilter(keys);
    grid->addWidget(genre, 5, 1);
    auto* g = new QCheckBox;
    bindCheck(form.chkTags(3), g);
    grid->addWidget(g, 5, 2);
    tagLayout->addWidget(id3, 3);
    auto* mpeg = new QGroupBox(QString::fromStdString(form.fraMpeg.caption()));
    auto* mpegLayout = new QVBoxLayout(mpeg);
    auto* info = new QLabel;
    info->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    bindLabel(form.lblMPEGInfo, info);
    mpegLayout->addWidget(info);
    tagLayout->addWidget(mpeg, 2);
    tabs->addTab(tagPage, "ID3 Tag");

    // The lyrics page.
    auto* lyricPage = new QWidget;
    auto* lyricLayout = new QVBoxLayout(lyricPage);
    lyrics_ = new QPlainTextEdit;
    lyrics_->setLineWrapMode(QPlainTextEdit::NoWrap);
    bindText(form.txtLyrics, lyrics_);
    lyrics_->installEventFilter(keys);
    QObject::connect(lyrics_, &QPlainTextEdit::cursorPositionChanged, this, [this] {
        const QTextCursor c = lyrics_->textCursor();
        const std::string& t = tags_.txtLyrics.text();
        tags_.txtLyrics.selStart = modelCaretOf(t, c.selectionStart());
        tags_.txtLyrics.selLength = modelCaretOf(t, c.selectionEnd()) - tags_.txtLyrics.selStart;
    });
    lyricLayout->addWidget(lyrics_);
    auto* stamps = new QHBoxLayout;
    for (ui::CommandButton* b : {&form.cmdAdd, &form.cmdUndo}) {
        auto* w = new QPushButton;
        bindButton(*b, w);
        // The stamp moves the form's caret: the editor follows it.
        QObject::connect(w, &QPushButton::clicked, this, [this] { caretFromForm(); });
        stamps->addWidget(w);
    }
    stamps->addStretch();
    lyricLayout->addLayout(stamps);
    tabs->addTab(lyricPage, "Lyrics");
    const auto pageEnabled = [tabs, lyricPage, &form] { tabs->setTabEnabled(tabs->indexOf(lyricPage), form.pictab(2).enabled()); };
    form.pictab(2).addObserver([pageEnabled](ui::Control&) { pageEnabled(); });
    QObject::connect(tabs, &QTabWidget::currentChanged, this, [&form](int i) { form.TabStrip_Click(i + 1); });

    // Transport: back 5 s, play, pause, stop, forward 5 s; position and volume.
    auto* transport = new QHBoxLayout;
    const char* symbols[] = {"<< 5s", nullptr, nullptr, nullptr, "5s >>"};
    for (int i = 0; i < 5; ++i) {
        auto* w = new QPushButton(symbols[i] ? symbols[i] : "");
        bindButton(form.cmdPlayer(i), w);
        QObject::connect(w, &QPushButton::clicked, this, [this] { caretFromForm(); });
        transport->addWidget(w);
    }
    auto* now = new QLabel;
    now->setMinimumWidth(70);
    now->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    bindLabel(form.lblTiempoT, now);
    transport->addWidget(now);
    position_ = new QSlider(Qt::Horizontal);
    position_->setRange(0, 129);
    transport->addWidget(position_, 1);
    auto* length = new QLabel;
    length->setMinimumWidth(70);
    bindLabel(form.lblDuracion, length);
    transport->addWidget(length);
    volume_ = new QSlider(Qt::Vertical);
    volume_->setRange(0, 89);
    volume_->setInvertedAppearance(true);  // the top is the loudest
    volume_->setFixedHeight(60);
    transport->addWidget(volume_);
    root->addLayout(transport);

    auto syncPosition = [this] {
        if (position_->isSliderDown()) return;
        QSignalBlocker block(position_);
        position_->setValue(static_cast<int>(tags_.imgNormal(15).left()));
    };
    form.imgNormal(15).addObserver([syncPosition](ui::Control&) { syncPosition(); });
    QObject::connect(position_, &QSlider::sliderPressed, this, [this] { tags_.SliderReproduccioN_Down(position_->value()); });
    QObject::connect(position_, &QSlider::sliderMoved, this, [this](int v) { tags_.SliderReproduccioN_Move(v); });
    QObject::connect(position_, &QSlider::sliderReleased, this, [this] {
        tags_.SliderReproduccioN_Up(1);
        QSignalBlocker block(position_);
        position_->setValue(static_cast<int>(tags_.imgNormal(15).left()));
    });
    form.imgNormal(16).addObserver([this](ui::Control&) {
        QSignalBlocker block(volume_);
        volume_->setValue(static_cast<int>(tags_.imgNormal(16).top()));
    });
    QObject::connect(volume_, &QSlider::valueChanged, this, [this](int v) { tags_.Ajust_Volume(v); });

    auto* status = new QHBoxLayout;
    auto* path = new QLabel;
    bindLabel(form.lblfile, path);
    status->addWidget(path, 1);
    auto* progress = new QProgressBar;
    bindProgress(form.pbprogress, progress);
    status->addWidget(progress);
    for (ui::CommandButton* b : {&form.cmdApply, &form.cmdCancel, &form.cmdok}) {
        auto* w = new QPushButton;
        bindButton(*b, w);
        status->addWidget(w);
    }
    root->addLayout(status);

    lyricsWindow_ = new LyricsWindow(form.frmLyrics, this);
    resize(760, 520);
    follow();
}

TagsWindow::~TagsWindow() = default;

void TagsWindow::caretFromForm() {
    QSignalBlocker block(lyrics_);
    QTextCursor c = lyrics_->textCursor();
    c.setPosition(std::min(qtCaretOf(tags_.txtLyrics.text(), tags_.txtLyrics.selStart),
                           static_cast<int>(lyrics_->toPlainText().size())));
    lyrics_->setTextCursor(c);
    lyrics_->setFocus();
}

}  // namespace velaro::gui

#include "cd_window.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QPointer>
#include <QRadioButton>
#include <QSlider>
#include <QVBoxLayout>

#include "bindings.h"
#include "page_widget.h"

namespace velaro::gui {

namespace {

QPushButton* button(ui::CommandButton& c, QWidget* parent) {
    auto* b = new QPushButton(parent);
    bindButtonShowingErrors(c, b);
    return b;
}

QSlider* slider(ui::Slider& c, Qt::Orientation o, QWidget* parent) {
    auto* s = new QSlider(o, parent);
    bindSlider(c, s);
    return s;
}

// The list's two tab stops: the number, then the text, then the time against the right edge.
class TrackLineDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* p, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        QStyleOptionViewItem o(option);
        initStyleOption(&o, index);
        const QStringList parts = o.text.split('\t');
        o.text.clear();
        o.widget->style()->drawControl(QStyle::CE_ItemViewItem, &o, p, o.widget);
        p->save();
        p->setPen(o.palette.color(o.state & QStyle::State_Selected ? QPalette::HighlightedText : QPalette::Text));
        const QRect r = o.rect.adjusted(4, 0, -4, 0);
        const int tab = o.fontMetrics.horizontalAdvance("0000");
        p->drawText(r, Qt::AlignVCenter | Qt::AlignLeft, parts.value(0));
        if (parts.size() > 2) {
            const QString time = parts.last();
            const int timeWidth = o.fontMetrics.horizontalAdvance(time);
            p->drawText(r, Qt::AlignVCenter | Qt::AlignRight, time);
            const QRect middle = r.adjusted(tab, 0, -timeWidth - 8, 0);
            p->drawText(middle, Qt::AlignVCenter | Qt::AlignLeft,
                        o.fontMetrics.elidedText(parts.mid(1, parts.size() - 2).join(' '), Qt::ElideRight, middle.width()));
        } else if (parts.size() == 2) {
            p->drawText(r.adjusted(tab, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, parts[1]);
        }
        p->restore();
    }
};

}  // namespace

CdWindow::CdWindow(cd::frmDemo& f, QWidget* parent) : FormWindow(f, parent), f_(f) {
    setWindowModality(Qt::ApplicationModal);  // the main window waits for it
    auto* top = new QVBoxLayout(this);

    // Drive and disc.
    auto* driveRow = new QHBoxLayout;
    auto* drives = new QComboBox(this);
    drives->setMinimumWidth(320);
    bindCombo(f.cmbCDDrives, drives);
    driveRow->addWidget(new QLabel("Drive", this));
    driveRow->addWidget(drives, 1);
    driveRow->addWidget(button(f.Cmdbutton(9), this));
    top->addLayout(driveRow);

    auto* discRow = new QGridLayout;
    auto* artist = new QLineEdit(this);
    auto* album = new QLineEdit(this);
    bindLine(f.txtCDArtist, artist);
    bindLine(f.txtCDAlbum, album);
    discRow->addWidget(new QLabel("Artist", this), 0, 0);
    discRow->addWidget(artist, 0, 1);
    discRow->addWidget(new QLabel("Album", this), 1, 0);
    discRow->addWidget(album, 1, 1);
    top->addLayout(discRow);

    // Tracks with the level bars beside them.
    auto* listRow = new QHBoxLayout;
    auto* tracks = new QListWidget(this);
    tracks->setMinimumSize(420, 180);
    tracks->setToolTip(uiText(f.lstTracks.toolTipText));
    bindList(f.lstTracks, tracks);
    tracks->setItemDelegate(new TrackLineDelegate(tracks));
    listRow->addWidget(tracks, 1);
    for (int i = 0; i < 2; ++i) {
        meters_[i] = new PageWidget(this);
        meters_[i]->setFixedWidth(14);
        meters_[i]->setMinimumHeight(120);
        f.picVUMeter(i).attachCanvas(meters_[i]);
        listRow->addWidget(meters_[i]);
    }
    top->addLayout(listRow);

    // Position and transport.
    auto* posRow = new QHBoxLayout;
    auto* position = slider(f.SliderPosition, Qt::Horizontal, this);
    // Holding the thumb keeps the timer from moving it under the mouse.
    QObject::connect(position, &QSlider::sliderPressed, this, [&f] { f.seekDragging = true; });
    // The user's moves are the slider's Scroll: a drag seeks once, where it is let go.
    QObject::connect(position, &QSlider::sliderReleased, this, [&f] {
        f.seekDragging = false;
        if (f.SliderPosition.Scroll) f.SliderPosition.Scroll();
    });
    QObject::connect(position, &QSlider::valueChanged, this, [&f, position] {
        if (!position->isSliderDown() && f.SliderPosition.Scroll) f.SliderPosition.Scroll();
    });
    posRow->addWidget(position, 1);
    auto* where = new QLabel(this);
    where->setMinimumWidth(110);
    bindLabel(f.lblTrackPosition, where);
    posRow->addWidget(where);
    top->addLayout(posRow);

    auto* transport = new QHBoxLayout;
    for (int i : {0, 1, 2, 8}) transport->addWidget(button(f.Cmdbutton(i), this));
    top->addLayout(transport);

    auto* mix = new QGridLayout;
    auto* volume = new QLabel(this);
    bindLabel(f.lblVolume, volume);
    // The slider runs from -1000 at the top; shown left to right as louder.
    auto* vol = slider(f.SliderVolume, Qt::Horizontal, this);
    vol->setInvertedAppearance(true);
    vol->setInvertedControls(true);
    mix->addWidget(volume, 0, 0);
    mix->addWidget(vol, 0, 1);
    auto* balance = new QLabel(this);
    bindLabel(f.lblBalance, balance);
    mix->addWidget(new QLabel("Balance", this), 1, 0);
    auto* bal = slider(f.SliderBalance, Qt::Horizontal, this);
    mix->addWidget(bal, 1, 1);
    mix->addWidget(balance, 1, 2);
    top->addLayout(mix);

    // Extraction.
    auto* extract = new QGroupBox("Extract", this);
    auto* ex = new QGridLayout(extract);
    for (int i = 0; i < 2; ++i) {
        auto* o = new QRadioButton(uiText(f.optExtractMode(i).caption()), extract);
        bindOption(f.optExtractMode(i), o);
        ex->addWidget(o, 0, i);
    }
    ex->addWidget(button(f.Cmdbutton(7), extract), 0, 2);
    auto* progress = new QProgressBar(extract);
    progress->setTextVisible(false);
    bindProgress(f.prgExtract, progress);
    ex->addWidget(progress, 1, 0, 1, 3);
    auto* wma = new QGroupBox(extract);
    bindFrame(f.picWMAExtractOptions, wma);
    auto* wg = new QGridLayout(wma);
    wg->addWidget(new QLabel("Bit rate", wma), 0, 0);
    auto* rates = new QComboBox(wma);
    bindCombo(f.cmbWMAEncodingBitrate, rates);
    wg->addWidget(rates, 0, 1);
    auto* tagsOn = new QCheckBox(uiText(f.chkWMAFileTags.caption()), wma);
    bindCheck(f.chkWMAFileTags, tagsOn);
    wg->addWidget(tagsOn, 0, 2, 1, 2);
    for (int i = 0; i < 8; ++i) {
        auto* l = new QLabel(wma);
        bindLabel(f.lblWMATags(i), l);
        auto* t = new QLineEdit(wma);
        bindLine(f.txtWMATags(i), t);
        wg->addWidget(l, 1 + i / 2, (i % 2) * 2);
        wg->addWidget(t, 1 + i / 2, (i % 2) * 2 + 1);
    }
    ex->addWidget(wma, 2, 0, 1, 3);
    top->addWidget(extract);

    // The drive info pane, shown at the window's tall size.
    info_ = new QGroupBox("Drive Info", this);
    auto* ig = new QGridLayout(info_);
    for (int i = 0; i < 15; ++i) {
        auto* c = new QCheckBox(uiText(f.chkRWFlags(i).caption()), info_);
        bindCheck(f.chkRWFlags(i), c);
        c->setAttribute(Qt::WA_TransparentForMouseEvents);  // the drive's facts, not choices
        c->setFocusPolicy(Qt::NoFocus);
        ig->addWidget(c, i / 2, i % 2);
    }
    auto* speed = new QLabel(info_);
    bindLabel(f.lblMaxReadSpeed, speed);
    auto* cache = new QLabel(info_);
    bindLabel(f.lblCacheSize, cache);
    ig->addWidget(new QLabel("Max read speed", info_), 8, 0);
    ig->addWidget(speed, 8, 1);
    ig->addWidget(new QLabel("Cache size", info_), 9, 0);
    ig->addWidget(cache, 9, 1);
    auto* door = new QHBoxLayout;
    for (int i : {3, 4, 5, 6}) door->addWidget(button(f.Cmdbutton(i), info_));
    ig->addLayout(door, 10, 0, 1, 2);
    top->addWidget(info_);
    info_->setVisible(f.height == cd::frmDemo::kInfoHeight);
    QPointer<CdWindow> self(this);
    f.Cmdbutton(9).addObserver([self](ui::Control&) {
        if (!self) return;
        self->info_->setVisible(self->f_.height == cd::frmDemo::kInfoHeight);
        self->adjustSize();
    });
    follow();
}

CdWindow::~CdWindow() {
    for (int i = 0; i < 2; ++i) f_.picVUMeter(i).attachCanvas(nullptr);
}

}  // namespace velaro::gui

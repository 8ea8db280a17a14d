#include "backing_panel.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollBar>
#include <QSlider>
#include <QVBoxLayout>

#include "bindings.h"

namespace velaro::gui {

namespace {

QLabel* small(const QString& text, QWidget* parent) {
    auto* l = new QLabel(text, parent);
    l->setAlignment(Qt::AlignCenter);
    QFont f = l->font();
    f.setPointSizeF(f.pointSizeF() * 0.8);
    l->setFont(f);
    return l;
}

QString hz(float v) { return v >= 1000 ? QString("%1k").arg(double(v) / 1000) : QString::number(double(v)); }

// A value shown beside its slider, kept in step with the control.
QLabel* readout(ui::Control& c, std::function<QString()> text, QWidget* parent) {
    auto* l = small(text(), parent);
    c.addObserver([l, text](ui::Control&) { l->setText(text()); });
    return l;
}

}  // namespace

QWidget* buildBackingPanel(record::MainBacking& b, QWidget* parent,
                           const std::function<void(ui::Control&, QWidget*)>& remember) {
    auto* box = new QGroupBox("Audio Player", parent);
    auto* col = new QVBoxLayout(box);

    auto* player = new QLabel(box);
    player->setWordWrap(true);
    bindLabel(b.lblPlayer, player);
    remember(b.lblPlayer, player);
    col->addWidget(player);

    auto* boxes = new QHBoxLayout;
    auto* rem = new QCheckBox(box);
    bindCheck(b.Chkrem, rem);
    remember(b.Chkrem, rem);
    auto* low = new QCheckBox(box);
    bindCheck(b.Chklow, low);
    remember(b.Chklow, low);
    boxes->addWidget(rem);
    boxes->addWidget(low);
    boxes->addStretch();
    col->addLayout(boxes);

    auto* bands = new QHBoxLayout;
    // The main stream's equaliser: 0 at the top is +10 dB, as the old sliders stood.
    auto* frame = new QGroupBox("Vocal remover EQ", box);
    bindFrame(b.Frame4, frame);
    remember(b.Frame4, frame);
    auto* mainGrid = new QGridLayout(frame);
    for (int i = 0; i < 8; ++i) {
        auto* s = new QSlider(Qt::Vertical, frame);
        s->setInvertedAppearance(true);
        s->setMinimumHeight(100);
        bindSlider(b.vseq(i), s);
        remember(b.vseq(i), s);
        mainGrid->addWidget(s, 0, i, Qt::AlignHCenter);
        mainGrid->addWidget(small(hz(record::kMainCentres[i]), frame), 1, i);
    }
    frame->setMinimumWidth(8 * 34);
    bands->addWidget(frame, 2);

    auto* lowBox = new QGroupBox("Bass stream EQ", box);
    auto* lowGrid = new QGridLayout(lowBox);
    for (int i = 0; i < 8; ++i) {
        auto* s = new QScrollBar(Qt::Vertical, lowBox);
        s->setMinimumHeight(100);
        bindScroll(b.Veq1(i), s);
        remember(b.Veq1(i), s);
        lowGrid->addWidget(s, 0, i, Qt::AlignHCenter);
        lowGrid->addWidget(small(hz(record::kLowCentres[i]), lowBox), 1, i);
    }
    lowBox->setMinimumWidth(8 * 34);
    bands->addWidget(lowBox, 2);

    auto* levels = new QGridLayout;
    auto vertical = [&](ui::Slider& c, int column) {
        auto* s = new QSlider(Qt::Vertical, box);
        s->setInvertedAppearance(true);
        s->setMinimumHeight(100);
        bindSlider(c, s);
        remember(c, s);
        levels->addWidget(small(QString::fromStdString(c.caption()), box), 0, column);
        levels->addWidget(s, 1, column, Qt::AlignHCenter);
    };
    vertical(b.Slider3, 0);
    vertical(b.vcompr, 1);
    bands->addLayout(levels);
    col->addLayout(bands);

    // Key and speed of the backing.
    auto* shift = new QGridLayout;
    auto horizontal = [&](ui::Slider& c, int row, std::function<QString()> text) {
        auto* s = new QSlider(Qt::Horizontal, box);
        bindSlider(c, s);
        remember(c, s);
        shift->addWidget(small(QString::fromStdString(c.caption()), box), row, 0);
        shift->addWidget(s, row, 1);
        shift->addWidget(readout(c, std::move(text), box), row, 2);
    };
    horizontal(b.sldKey, 0, [&b] {
        const int v = b.sldKey.value();
        return (v > 0 ? QString("+%1").arg(v) : QString::number(v)) + " st";
    });
    horizontal(b.sldSpeed, 1, [&b] { return QString("%1 %").arg(b.sldSpeed.value()); });
    col->addLayout(shift);
    col->addStretch();
    // The panel belongs to the audio backing: it comes and goes with the remover's box.
    box->setVisible(b.Chkrem.visible());
    b.Chkrem.addObserver([box, &b](ui::Control&) { box->setVisible(b.Chkrem.visible()); });
    return box;
}

}  // namespace velaro::gui

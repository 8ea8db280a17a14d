// The main window's mixer: five vertical sliders under the frame's caption
// (microphone, song, backing, record level, master), the microphone's mute,
// the record source lists and the buttons that start the volume program.

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include "bindings.h"
#include "main_window.h"
#include "record_bindings.h"

namespace velaro::gui {

QWidget* MainWindow::buildMixer(QWidget* parent) {
    song::MixerPanel& m = f_.mixer;
    auto* box = new QGroupBox("Mixer", parent);
    auto* col = new QVBoxLayout(box);

    // The caption names the columns below it, spaces and all.
    auto* heading = new QLabel(box);
    QFont mono("monospace");
    mono.setStyleHint(QFont::Monospace);
    heading->setFont(mono);
    bindLabel(m.mixerFrame, heading);
    remember(m.mixerFrame, heading);
    col->addWidget(heading);

    auto* sliders = new QHBoxLayout;
    for (ui::Slider* c : {&f_.SLDPLAYVOLUME, &f_.Slider1, &f_.Slider4, &f_.sldInputLevel, &f_.Sldmastervolume}) {
        auto* s = new QSlider(Qt::Vertical, box);
        // 0 at the top: the full level is the top of the travel.
        s->setInvertedAppearance(true);
        s->setMinimumHeight(90);
        s->setToolTip(uiText(c->toolTipText));
        bindSlider(*c, s);
        // The song's volume is already known by its place among the knobs.
        if (c != &f_.Slider1) remember(*c, s);
        sliders->addWidget(s);
    }
    col->addLayout(sliders);

    auto* mute = new QCheckBox("Mute", box);
    mute->setToolTip(uiText(f_.CHKPLAYMUTE.toolTipText));
    bindCheck(f_.CHKPLAYMUTE, mute);
    remember(f_.CHKPLAYMUTE, mute);
    col->addWidget(mute);

    for (ui::ComboBox* c : {&f_.cmbInput, &f_.cboRecSrcType, &m.cmbSoundDriver}) {
        auto* list = new QComboBox(box);
        bindCombo(*c, list);
        remember(*c, list);
        col->addWidget(list);
    }

    auto* launchers = new QHBoxLayout;
    for (ui::CommandButton* c : {&m.Cominput, &m.Comout}) {
        auto* b = new QPushButton(box);
        bindButton(*c, b);
        remember(*c, b);
        launchers->addWidget(b);
    }
    col->addLayout(launchers);
    return box;
}

}  // namespace velaro::gui

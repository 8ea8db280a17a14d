#pragma once
// The main window: frmMain's controls as widgets, bound by name. Every user
// action goes to the model as the old runtime would raise it; every change of
// the model shows here through the controls' observers.

#include <QMainWindow>

#include "core/shell/frm_main.h"

class QAction;
class QLayout;
class QMenu;

namespace velaro::gui {

class PageWidget;
class SeekBar;

class MainWindow : public QMainWindow {
public:
    explicit MainWindow(song::frmMain& form, QWidget* parent = nullptr);
    PageWidget* page() const { return page_; }
    // The widget bound to a control of the form (for tests and tools).
    QWidget* widgetFor(const std::string& name, int index = -1) const;

protected:
    void closeEvent(QCloseEvent* e) override;

private:
    QAction* action(QMenu* menu, ui::Menu& m, bool checkable = false);
    QWidget* buildTransport();
    QLayout* buildEncoding(QWidget* box);
    // The take: record, stop, the take's playback, the backing's play and stop, the lamp, the format list.
    QLayout* buildRecording(QWidget* box);
    QWidget* buildControls();
    QWidget* buildChannels();
    QWidget* buildEffects(QWidget* parent);
    // The mixer: levels of microphone, song, backing, record source and master.
    QWidget* buildMixer(QWidget* parent);
    void remember(ui::Control& c, QWidget* w);

    song::frmMain& f_;
    PageWidget* page_ = nullptr;
    SeekBar* seek_ = nullptr;
    std::map<std::pair<std::string, int>, QWidget*> widgets_;
};

}  // namespace velaro::gui

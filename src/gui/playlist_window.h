#pragma once
// "Velaro PlayList" on screen: the borderless window with the two-column
// list, its buttons, pop-up menus with their Italian captions, drops from the
// desktop, the collapse and the compact view; the options dialog beside it.

#include <QTreeWidget>

#include "core/player/plist.h"
#include "record_bindings.h"

class QMenu;

namespace velaro::gui {

class PlaylistWindow : public FormWindow {
public:
    PlaylistWindow(player::pList& form, QWidget* parent);
    QTreeWidget* list() const { return list_; }
    // Fills the list from the model now rather than on the next turn of the loop.
    void syncRows();
    QMenu* popup(ui::Menu& m) const;

protected:
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* e) override;

private:
    void applyLook();
    void scheduleRows();
    void placeControl(ui::Control& c, QWidget* w);
    player::pList& f_;
    QWidget* panel_ = nullptr;
    QTreeWidget* list_ = nullptr;
    QMenu* sortMenu_ = nullptr;
    QMenu* formMenu_ = nullptr;
    bool rowsPending_ = false;
    bool syncing_ = false;
};

class OptionsWindow : public FormWindow {
public:
    OptionsWindow(player::FrmOptions& form, QWidget* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* e) override;

private:
    player::FrmOptions& f_;
};

}  // namespace velaro::gui

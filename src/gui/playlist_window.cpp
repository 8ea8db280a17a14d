#include "playlist_window.h"

#include <QCheckBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFormLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>

#include "bindings.h"
#include "core/base/cp1252.h"
#include "core/tags/frm_id3.h"

namespace velaro::gui {

namespace {

constexpr double kTwips = player::kTwipsPerPixel;

int px(double twips) { return static_cast<int>(std::lround(twips / kTwips)); }

QColor qcolour(uint32_t c) { return QColor(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF); }

QString fromBytes(const std::string& bytes) { return QString::fromStdString(cp1252ToUtf8(bytes)); }

QFont qfont(const ui::Font& f, const QFont& base) {
    QFont q = base;
    // The designed face of the old forms is not on this desktop: keep the system's face for it.
    if (f.name != "MS Sans Serif") q.setFamily(QString::fromStdString(f.name));
    if (f.size > 0) q.setPointSizeF(f.size);
    q.setBold(f.bold);
    q.setItalic(f.italic);
    return q;
}

// The list accepts files and folders dropped from the desktop.
class DropList : public QTreeWidget {
public:
    explicit DropList(QWidget* parent) : QTreeWidget(parent) { setAcceptDrops(true); }
    std::function<void(const std::vector<std::string>&)> dropped;

protected:
    void dragEnterEvent(QDragEnterEvent* e) override {
        if (e->mimeData()->hasUrls()) e->acceptProposedAction();
    }
    void dragMoveEvent(QDragMoveEvent* e) override {
        if (e->mimeData()->hasUrls()) e->acceptProposedAction();
    }
    void dropEvent(QDropEvent* e) override {
        std::vector<std::string> names;
        for (const QUrl& u : e->mimeData()->urls())
            if (u.isLocalFile()) names.push_back(u.toLocalFile().toStdString());
        e->acceptProposedAction();
        if (dropped && !names.empty()) dropped(names);
    }
};

// "ID3 Editor" for the playlist's Info: the small dialog's texts and its two buttons.
class Id3Window : public FormWindow {
public:
    Id3Window(tags::FrmID3& f, QWidget* parent) : FormWindow(f, parent) {
        auto* form = new QFormLayout(this);
        for (ui::TextBox* t : {&f.txtFilename, &f.txtSong, &f.txtArtist, &f.txtAlbum, &f.txtYear, &f.txtGenre,
                               &f.txtComments}) {
            auto* line = new QLineEdit(this);
            line->setMinimumWidth(320);
            line->setReadOnly(t->locked || t == &f.txtFilename);
            bindLine(*t, line);
            form->addRow(fromBytes(t->caption()), line);
        }
        auto* save = new QPushButton(this);
        bindButton(f.cmdSave, save);
        auto* cancel = new QPushButton(this);
        bindButton(f.cmdCancel, cancel);
        auto* row = new QHBoxLayout;
        row->addWidget(save);
        row->addWidget(cancel);
        form->addRow(row);
        setWindowModality(Qt::ApplicationModal);
        follow();
    }
};

}  // namespace

PlaylistWindow::PlaylistWindow(player::pList& f, QWidget* parent) : FormWindow(f, parent), f_(f) {
    setObjectName("pList");
    setWindowFlag(Qt::FramelessWindowHint, true);
    setWindowModality(Qt::ApplicationModal);
    setMouseTracking(true);
    setAutoFillBackground(true);

    panel_ = new QWidget(this);
    panel_->setObjectName("Picture4");
    auto* dl = new DropList(panel_);
    list_ = dl;
    list_->setObjectName("lstPlayList1");
    list_->setColumnCount(2);
    list_->setHeaderLabels({"Number", "SongTitle"});
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setSelectionMode(QAbstractItemView::SingleSelection);
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    list_->header()->setStretchLastSection(true);
    list_->setColumnWidth(0, 60);
    list_->installEventFilter(this);
    dl->dropped = [this](const std::vector<std::string>& names) {
        f_.lstPlayList1.OLEDragDrop(names);
        syncRows();
    };

    auto button = [this](ui::CommandButton& c, QWidget* parentWidget) {
        auto* b = new QPushButton(parentWidget);
        b->setObjectName(QString::fromStdString(c.name()));
        bindButton(c, b);
        if (!c.toolTipText.empty()) b->setToolTip(QString::fromStdString(c.toolTipText));
        placeControl(c, b);
        return b;
    };
    for (ui::CommandButton* c : {&f.CmdOpenlist, &f.CmdDelPlay, &f.cmdDel}) button(*c, panel_);
    for (ui::CommandButton* c : {&f.cmdOpen, &f.cmdSave, &f.cmdClear, &f.cmdRefresh, &f.cmdShowPlaylist}) button(*c, this);
    for (ui::CheckBox* c : {&f.cbRepeat, &f.cbShuffle}) {
        auto* b = new QCheckBox(this);
        b->setObjectName(QString::fromStdString(c->name()));
        bindCheck(*c, b);
        b->setToolTip(QString::fromStdString(c->toolTipText));
        b->setAutoFillBackground(true);
        placeControl(*c, b);
    }
    placeControl(f.Picture4, panel_);
    placeControl(f.lstPlayList1, list_);
    // Pointing at "Show Playlist" takes the list's text colour.
    if (auto* show = findChild<QPushButton*>("cmdShowPlaylist")) show->installEventFilter(this);

    // The pop-ups: "Ordina" on the list, "Form" on the window's background.
    sortMenu_ = new QMenu(this);
    formMenu_ = new QMenu(this);
    auto action = [](QMenu* menu, ui::Menu& m, bool checkable = false) {
        QAction* a = menu->addAction(QString());
        a->setCheckable(checkable);
        bindMenu(m, a);
    };
    action(sortMenu_, f.mnuOpen);
    action(sortMenu_, f.mnuSave);
    action(sortMenu_, f.mnuDelete);
    action(sortMenu_, f.mnuClear);
    sortMenu_->addSeparator();
    QMenu* by = sortMenu_->addMenu(fromBytes(f.mnuSortBy.caption()));
    action(by, f.mnuArtist);
    action(by, f.mnuTitle);
    action(by, f.mnuFilename);
    action(sortMenu_, f.mnuRandom);
    action(sortMenu_, f.mnuReverse);
    sortMenu_->addSeparator();
    action(sortMenu_, f.mnuFileInfo);
    action(sortMenu_, f.mnuFont);
    action(sortMenu_, f.mnuFontColor);
    action(sortMenu_, f.mnuBackColor);
    sortMenu_->addSeparator();
    action(sortMenu_, f.mnuHidePlaylist, true);
    action(sortMenu_, f.mnuCompact, true);
    action(sortMenu_, f.mnuOptions);
    sortMenu_->addSeparator();
    action(sortMenu_, f.mnuExit);
    action(formMenu_, f.mnuHidePlaylist2, true);
    action(formMenu_, f.mnuFullView);
    formMenu_->addSeparator();
    action(formMenu_, f.mnuFont2);
    action(formMenu_, f.mnuFontColor2);
    action(formMenu_, f.mnuBackColor2);

    f.popupMenu = [this](ui::Menu& m) {
        if (QMenu* menu = popup(m)) menu->exec(QCursor::pos());
        syncRows();
    };
    f.hitTest = [this](double x, double y) {
        QTreeWidgetItem* it = list_->itemAt(px(x), px(y));
        return it ? list_->indexOfTopLevelItem(it) + 1 : 0;
    };
    f.geometryChanged = [this] { applyLook(); };
    QPointer<PlaylistWindow> self(this);
    f.showId3Editor = [self](tags::FrmID3& editor) {
        Id3Window w(editor, self);
        editor.showModal();
    };

    connect(list_, &QTreeWidget::customContextMenuRequested, this, [this](const QPoint& p) {
        f_.lstPlayList1_MouseDown(2, 0, p.x() * kTwips, p.y() * kTwips);
    });
    connect(list_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        if (syncing_ || !item) return;
        syncing_ = true;
        f_.lstPlayList1.setSelectedItem(list_->indexOfTopLevelItem(item) + 1);
        syncing_ = false;
    });
    connect(list_, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
        syncing_ = true;
        f_.lstPlayList1.setSelectedItem(list_->indexOfTopLevelItem(item) + 1);
        syncing_ = false;
        f_.lstPlayList1.DblClick();
        syncRows();
    });
    f.lstPlayList1.addObserver([this](ui::Control&) { scheduleRows(); });

    new OptionsWindow(f.frmOptions, this);

    applyLook();
    syncRows();
    follow();
}

QMenu* PlaylistWindow::popup(ui::Menu& m) const {
    if (&m == &f_.mnuSort) return sortMenu_;
    if (&m == &f_.mnuForm) return formMenu_;
    return nullptr;
}

void PlaylistWindow::placeControl(ui::Control& c, QWidget* w) {
    auto sync = [this, &c, w] {
        // Controls inside the panel are placed from its corner.
        const bool inPanel = w->parentWidget() == panel_ && &c != &f_.Picture4;
        const double ox = inPanel ? f_.Picture4.left() : 0, oy = inPanel ? f_.Picture4.top() : 0;
        w->setGeometry(px(c.left() - ox), px(c.top() - oy), px(c.width()), px(c.height()));
        w->setVisible(c.visible());
        w->setFont(qfont(c.font(), QWidget::font()));
        QPalette pal = w->palette();
        if (&c == &f_.lstPlayList1) {
            pal.setColor(QPalette::Text, qcolour(c.foreColor()));
            pal.setColor(QPalette::Base, qcolour(c.backColor()));
        } else if (dynamic_cast<ui::CheckBox*>(&c)) {
            pal.setColor(QPalette::WindowText, qcolour(c.foreColor()));
            pal.setColor(QPalette::Window, qcolour(c.backColor()));
            pal.setColor(QPalette::Button, qcolour(c.backColor()));
        } else if (&c == &f_.cmdShowPlaylist) {
            pal.setColor(QPalette::ButtonText, qcolour(c.foreColor()));
        }
        w->setPalette(pal);
    };
    sync();
    c.addObserver([sync](ui::Control&) { sync(); });
}

void PlaylistWindow::applyLook() {
    setWindowTitle(fromBytes(f_.caption).trimmed());
    QPalette pal = palette();
    pal.setColor(QPalette::Window, qcolour(f_.formBackColor));
    setPalette(pal);
    setFixedSize(px(f_.formWidth), std::max(1, px(f_.formHeight)));
    move(px(f_.formLeft), px(f_.formTop));
}

void PlaylistWindow::scheduleRows() {
    if (syncing_ || rowsPending_) return;
    rowsPending_ = true;
    QPointer<PlaylistWindow> self(this);
    QTimer::singleShot(0, this, [self] {
        if (self) self->syncRows();
    });
}

void PlaylistWindow::syncRows() {
    rowsPending_ = false;
    syncing_ = true;
    const auto& lv = f_.lstPlayList1;
    const int n = lv.count();
    list_->setUpdatesEnabled(false);
    while (list_->topLevelItemCount() > n) delete list_->takeTopLevelItem(list_->topLevelItemCount() - 1);
    QList<QTreeWidgetItem*> fresh;
    for (int i = list_->topLevelItemCount(); i < n; ++i) fresh.append(new QTreeWidgetItem);
    list_->addTopLevelItems(fresh);
    for (int i = 1; i <= n; ++i) {
        const player::ListItem& row = lv.item(i);
        QTreeWidgetItem* it = list_->topLevelItem(i - 1);
        const QString number = QString::fromStdString(row.text), title = fromBytes(row.subItems[0]);
        if (it->text(0) != number) it->setText(0, number);
        if (it->text(1) != title) it->setText(1, title);
        // The artist has no column; it shows as the title's tip.
        it->setToolTip(1, fromBytes(row.subItems[1]));
        QFont f0 = it->font(0), f1 = it->font(1);
        if (f0.bold() != row.bold || f1.bold() != row.subBold[0]) {
            f0.setBold(row.bold);
            f1.setBold(row.subBold[0]);
            it->setFont(0, f0);
            it->setFont(1, f1);
        }
    }
    const int sel = lv.selectedItem();
    if (sel >= 1 && sel <= n) list_->setCurrentItem(list_->topLevelItem(sel - 1));
    else list_->clearSelection();
    if (lv.visibleRequest() >= 1 && lv.visibleRequest() <= n) list_->scrollToItem(list_->topLevelItem(lv.visibleRequest() - 1));
    list_->setUpdatesEnabled(true);
    syncing_ = false;
}

void PlaylistWindow::mousePressEvent(QMouseEvent* e) {
    const QPointF p = e->position() * kTwips;
    const int button = e->button() == Qt::LeftButton ? 1 : e->button() == Qt::RightButton ? 2 : 4;
    f_.Form_MouseDown(button, 0, p.x(), p.y());
    applyLook();
}

void PlaylistWindow::mouseMoveEvent(QMouseEvent* e) {
    const QPointF p = e->position() * kTwips;
    f_.Form_MouseMove(e->buttons() & Qt::LeftButton ? 1 : 0, 0, p.x(), p.y());
    if (f_.dragging) applyLook();
}

void PlaylistWindow::mouseReleaseEvent(QMouseEvent* e) {
    const QPointF p = e->position() * kTwips;
    f_.Form_MouseUp(e->button() == Qt::LeftButton ? 1 : 2, 0, p.x(), p.y());
}

bool PlaylistWindow::eventFilter(QObject* watched, QEvent* e) {
    if (watched == list_ && e->type() == QEvent::KeyPress) {
        auto* k = static_cast<QKeyEvent*>(e);
        if (k->key() == Qt::Key_Delete) {
            f_.lstPlayList1.KeyDown(46);
            syncRows();
            return true;
        }
    }
    if (watched != list_ && e->type() == QEvent::MouseMove) f_.cmdShowPlaylist.MouseMove(0, 0, 0, 0);
    if (watched != list_ && e->type() == QEvent::Enter) f_.cmdShowPlaylist.MouseMove(0, 0, 0, 0);
    return FormWindow::eventFilter(watched, e);
}

OptionsWindow::OptionsWindow(player::FrmOptions& f, QWidget* parent) : FormWindow(f, parent), f_(f) {
    setObjectName("frmOptions");
    auto* box = new QVBoxLayout(this);
    for (ui::CheckBox* c : {&f.cbSavePlaylist, &f.cbDelete, &f.cbScroll, &f.cbSave}) {
        auto* b = new QCheckBox(this);
        b->setObjectName(QString::fromStdString(c->name()));
        bindCheck(*c, b);
        box->addWidget(b);
    }
    auto* row = new QHBoxLayout;
    auto* label = new QLabel(this);
    bindLabel(f.Label1, label);
    auto* text = new QLineEdit(this);
    text->setObjectName("Text1");
    bindLine(f.Text1, text);
    text->installEventFilter(this);
    row->addWidget(label);
    row->addWidget(text);
    box->addLayout(row);
    follow();
}

bool OptionsWindow::eventFilter(QObject* watched, QEvent* e) {
    if (e->type() == QEvent::KeyPress) {
        const QString typed = static_cast<QKeyEvent*>(e)->text();
        if (!typed.isEmpty()) {
            // The caption follows each key before it lands; with no row picked there is no caption to make.
            const std::string bytes = utf8ToCp1252(typed.toStdString());
            try {
                f_.Text1_KeyPress(bytes.empty() ? '?' : bytes[0]);
            } catch (const std::exception&) {
            }
        }
    }
    return FormWindow::eventFilter(watched, e);
}

}  // namespace velaro::gui

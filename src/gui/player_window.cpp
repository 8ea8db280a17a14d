#include "player_window.h"

#include <QFile>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QSvgRenderer>

#include <cmath>
#include <filesystem>

#include "bindings.h"
#include "core/base/safe_file.h"
#include "page_widget.h"

// The resources sit in a static library: naming them keeps them in the link.
// The macro declares its function where it stands, so outside any namespace.
static void initSkinResources() { Q_INIT_RESOURCE(skin); }

namespace velaro::gui {

namespace {

QPixmap render(const QString& resource) {
    QSvgRenderer svg(resource);
    QPixmap pm(svg.defaultSize());
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    svg.render(&p);
    return pm;
}

// Where the knobs run: the position groove, and the volume knob's own box.
constexpr QPoint kSeekGroove{136, 128};

}  // namespace

const SkinStrips& SkinStrips::get() {
    static const SkinStrips s = [] {
        initSkinResources();
        SkinStrips k;
        k.strips[player::kStripBotones] = {render(":/skin/strips/botones.svg"), player::kBotonesColumns};
        k.strips[player::kStripMenu] = {render(":/skin/strips/menu.svg"), player::kMenuColumns};
        k.strips[player::kStripDiscos] = {render(":/skin/strips/discos.svg"), player::kDiscosColumns};
        k.strips[player::kStripMini] = {render(":/skin/strips/mini.svg"), player::kMiniColumns};
        k.fondo = render(":/skin/strips/fondo.svg");
        k.miniFondo = render(":/skin/strips/mini_fondo.svg");
        return k;
    }();
    return s;
}

void installSkin(const settings::mConfig& config) {
    const std::string target = config.GetPath(1) + "Skin.ini";
    std::error_code ec;
    if (std::filesystem::exists(target, ec)) return;
    QFile shipped(":/skin/Staiflubra/Skins/Skin.ini");
    if (!shipped.open(QIODevice::ReadOnly)) return;
    const QByteArray bytes = shipped.readAll();
    std::filesystem::create_directories(config.GetPath(1), ec);
    try {
        replaceFileSafely(target, std::string_view(bytes.constData(), size_t(bytes.size())));
    } catch (const std::exception&) {
        // Without it the lyrics window keeps its default colours.
    }
}

int vbButton(Qt::MouseButton b) {
    switch (b) {
        case Qt::LeftButton: return 1;
        case Qt::RightButton: return 2;
        case Qt::MiddleButton: return 4;
        default: return 0;
    }
}

int vbShift(Qt::KeyboardModifiers m) {
    return (m & Qt::ShiftModifier ? 1 : 0) | (m & Qt::ControlModifier ? 2 : 0) | (m & Qt::AltModifier ? 4 : 0);
}

// A press, a move (with the left button's state) or a release, as the models take it.
void forwardMouse(const ui::MouseHandler& handler, QMouseEvent* e) {
    if (!handler) return;
    const bool move = e->type() == QEvent::MouseMove;
    const int button = move ? (e->buttons() & Qt::LeftButton ? 1 : 0) : vbButton(e->button());
    handler(button, vbShift(e->modifiers()), e->position().x(), e->position().y());
}

// ---------------------------------------------------------------- SkinCanvas

SkinCanvas::SkinCanvas(ui::PictureBox& box, QWidget* parent) : QWidget(parent), box_(box) {
    setAttribute(Qt::WA_TranslucentBackground);
    foreColor = 0x7CF0A0;  // the display's green, red in the low byte
    image_ = QImage(1, 1, QImage::Format_ARGB32_Premultiplied);
    image_.fill(Qt::transparent);
    box.attachCanvas(this);
    if (!box.toolTipText.empty()) setToolTip(QString::fromStdString(box.toolTipText));
}

SkinCanvas::~SkinCanvas() { box_.attachCanvas(nullptr); }

QFont SkinCanvas::qfont() const {
    QFont f = QWidget::font();
    f.setPixelSize(11);
    f.setBold(true);
    return f;
}

void SkinCanvas::cls() {
    if (image_.size() != size()) image_ = QImage(size().expandedTo({1, 1}), QImage::Format_ARGB32_Premultiplied);
    image_.fill(Qt::transparent);
    currentX = currentY = 0;
    update();
}

void SkinCanvas::print(std::string_view text, bool lineEnd) {
    if (image_.size() != size()) cls();
    QPainter p(&image_);
    p.setFont(qfont());
    p.setPen(qcolor(foreColor));
    const QString s = QString::fromUtf8(text.data(), int(text.size()));
    const QFontMetrics fm(qfont());
    p.drawText(QPointF(currentX, currentY + fm.ascent()), s);
    if (lineEnd) {
        currentX = 0;
        currentY += fm.height();
    } else {
        currentX += fm.horizontalAdvance(s);
    }
    update();
}

double SkinCanvas::textWidth(std::string_view text) const {
    return QFontMetrics(qfont()).horizontalAdvance(QString::fromUtf8(text.data(), int(text.size())));
}

double SkinCanvas::textHeight(std::string_view) const { return QFontMetrics(qfont()).height(); }

void SkinCanvas::line(double x1, double y1, double x2, double y2, uint32_t color) {
    QPainter p(&image_);
    p.setPen(qcolor(color));
    p.drawLine(QPointF(x1, y1), QPointF(x2, y2));
    update();
}

void SkinCanvas::fillBox(double x1, double y1, double x2, double y2, uint32_t color) {
    QPainter p(&image_);
    p.fillRect(QRectF(QPointF(x1, y1), QPointF(x2, y2)), qcolor(color));
    update();
}

void SkinCanvas::paintCell(int strip, int cell, double x, double y) {
    const auto& strips = SkinStrips::get().strips;
    auto it = strips.find(strip);
    if (it == strips.end() || it->second.pixmap.isNull()) return;
    const QPixmap& pm = it->second.pixmap;
    const int columns = it->second.columns;
    // Cells are the strip's width over its columns and its height over two rows, rounded.
    const int w = int(std::lround(double(pm.width()) / columns));
    const int h = int(std::lround(pm.height() / 2.0));
    if (image_.size() != size()) cls();
    QPainter p(&image_);
    p.drawPixmap(QPointF(x, y), pm, QRectF((cell % columns) * w, (cell / columns) * h, w, h));
    update();
}

void SkinCanvas::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.drawImage(0, 0, image_);
}

void SkinCanvas::mousePressEvent(QMouseEvent* e) {
    forwardMouse(box_.MouseDown, e);
}

void SkinCanvas::mouseMoveEvent(QMouseEvent* e) {
    forwardMouse(box_.MouseMove, e);
}

void SkinCanvas::mouseReleaseEvent(QMouseEvent* e) {
    // The model may unload the whole window in here; keep the control until done.
    ui::PictureBox& box = box_;
    const bool inside = rect().contains(e->position().toPoint());
    forwardMouse(box.MouseUp, e);
    if (inside && e->button() == Qt::LeftButton && box.Click) box.Click();
}

// ---------------------------------------------------------------- SkinLabel

SkinLabel::SkinLabel(ui::Control& c, QWidget* parent) : QLabel(parent), c_(c) {
    bindLabel(c, this);
    setToolTip(QString::fromStdString(c.toolTipText));
    c.addObserver([this](ui::Control& ctl) { setToolTip(QString::fromStdString(ctl.toolTipText)); });
}

void SkinLabel::mousePressEvent(QMouseEvent* e) {
    forwardMouse(c_.MouseDown, e);
}

void SkinLabel::mouseMoveEvent(QMouseEvent* e) {
    forwardMouse(c_.MouseMove, e);
}

void SkinLabel::mouseReleaseEvent(QMouseEvent* e) {
    forwardMouse(c_.MouseUp, e);
    if (rect().contains(e->position().toPoint()) && e->button() == Qt::LeftButton) c_.userClick();
}

void followGeometry(ui::Control& c, QWidget* w, QPoint origin) {
    auto place = [w, origin](ui::Control& ctl) {
        w->setGeometry(origin.x() + int(ctl.left()), origin.y() + int(ctl.top()), int(ctl.width()),
                       int(ctl.height()));
        w->setVisible(ctl.visible());
    };
    place(c);
    c.addObserver(place);
}

// ---------------------------------------------------------------- PlayerWindow

PlayerWindow::PlayerWindow(player::MusicMp3& p, QWidget* parent) : FormWindow(p, parent), p_(p) {
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setFixedSize(int(p.picFondo.width()), int(p.picFondo.height()));
    setWindowTitle(QString::fromStdString(p.caption));
    installSkin(p.config);

    // The title bar area: a press there moves the window.
    auto* title = new SkinCanvas(p.PicMusic, this);
    followGeometry(p.PicMusic, title);

    cover_ = new QLabel(this);
    cover_->setAlignment(Qt::AlignCenter);
    followGeometry(p.ImagenCaratulA, cover_);
    auto showCover = [this](ui::Control&) {
        const QPixmap pm(QString::fromStdString(p_.ImagenCaratulA.picture()));
        cover_->setPixmap(pm.isNull() ? QPixmap()
                                      : pm.scaled(cover_->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
    };
    showCover(p.ImagenCaratulA);
    p.ImagenCaratulA.addObserver(showCover);

    auto* list = new QListWidget(this);
    list->setStyleSheet("QListWidget{background:#0e1217;color:#c9d3df;border:1px solid #5c6878;font-size:10px}");
    followGeometry(p.ListaRep, list);
    auto syncList = [list, this](ui::Control&) {
        const int n = p_.ListaRep.listCount();
        bool same = list->count() == n;
        for (int i = 0; same && i < n; ++i)
            same = list->item(i)->text() == QString::fromStdString(p_.ListaRep.list(i));
        if (!same) {
            list->clear();
            for (int i = 0; i < n; ++i) list->addItem(QString::fromStdString(p_.ListaRep.list(i)));
        }
        list->setCurrentRow(p_.ListaRep.listIndex());
    };
    syncList(p.ListaRep);
    p.ListaRep.addObserver(syncList);
    QObject::connect(list, &QListWidget::itemClicked, list, [this, list](QListWidgetItem* item) {
        const int row = list->row(item);
        try {
            if (row == p_.ListaRep.listIndex()) p_.ListaRep_Click();
            else p_.ListaRep.setListIndex(row);
        } catch (const std::exception&) {
        }
    });

    const QString display = "color:#7cf0a0;background:transparent;";
    for (ui::Label* l : {&p.lblTrackRuta, &p.lblTrackRep, &p.lblBitrate, &p.lblFreq, &p.lblDuracion}) {
        auto* w = new SkinLabel(*l, this);
        w->setStyleSheet(display + "font-size:11px;");
        followGeometry(*l, w);
    }
    auto* time = new SkinLabel(p.lblTiempoT, this);
    time->setStyleSheet(display + "font-size:22px;font-weight:bold;");
    followGeometry(p.lblTiempoT, time);

    auto* strip = new SkinCanvas(p.picScroll, this);
    followGeometry(p.picScroll, strip);
    auto* volumeBox = new QWidget(this);
    volumeBox->setAttribute(Qt::WA_TranslucentBackground);
    followGeometry(p.picSliderVol, volumeBox);

    for (int i = 0; i <= 16; ++i) {
        QWidget* parentOf = i == 16 ? volumeBox : static_cast<QWidget*>(this);
        auto* b = new SkinCanvas(p.imgNormal(i), parentOf);
        followGeometry(p.imgNormal(i), b, i == 15 ? kSeekGroove : QPoint());
    }
    // Painted now, as the form's load would.
    for (int i = 0; i <= 16; ++i) p.paintButton(i, 0);
    p.RefreshTransportButtons();
    setFocusPolicy(Qt::StrongFocus);
    move(int(p.Left / player::kPlayerTwipsPerPixel), int(p.Top / player::kPlayerTwipsPerPixel));
    // A face that shows goes where the model put it (the swap places it in twips).
    QPointer<PlayerWindow> self(this);
    auto previous = p.rt.formStateChanged;
    p.rt.formStateChanged = [self, previous, &p](ui::Form& f) {
        // Placed before it shows, so the show reports the new place back.
        if (self && &f == &p && p.visible())
            self->move(int(p.Left / player::kPlayerTwipsPerPixel), int(p.Top / player::kPlayerTwipsPerPixel));
        if (previous) previous(f);
    };
}

void PlayerWindow::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.drawPixmap(0, 0, SkinStrips::get().fondo);
}

void PlayerWindow::moveEvent(QMoveEvent*) {
    // Only where the window really stands on screen counts.
    if (!isVisible()) return;
    p_.Left = x() * player::kPlayerTwipsPerPixel;
    p_.Top = y() * player::kPlayerTwipsPerPixel;
}

void PlayerWindow::keyReleaseEvent(QKeyEvent* e) {
    int code = e->key();
    int shift = vbShift(e->modifiers());
    // The key beside Z gives "<", and ">" with Shift: one key code for both.
    if (code == Qt::Key_Less || code == Qt::Key_Greater) {
        if (code == Qt::Key_Greater) shift |= 1;
        code = 226;
    }
    if (code >= 0 && code < 256) p_.Form_KeyUp(code, shift);
}

void PlayerWindow::keyPressEvent(QKeyEvent* e) {
    const QString t = e->text();
    if (t.size() == 1 && t[0].unicode() < 128) p_.Form_KeyPress(char(t[0].unicode()));
}

}  // namespace velaro::gui

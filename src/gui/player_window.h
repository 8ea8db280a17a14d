#pragma once
// The skinned player's two faces on Qt: borderless windows painted from our
// own strips (SVG, rendered at the sizes the faces use), each picture box a
// canvas that paints strip cells and text, every press handed to the model.

#include <QImage>
#include <QLabel>
#include <QListWidget>
#include <QPixmap>
#include <QWidget>

#include <map>

#include "core/player/music_mp3.h"
#include "core/ui/canvas.h"
#include "record_bindings.h"

namespace velaro::gui {

// The strips, rendered once from the program's resources.
struct SkinStrips {
    struct Strip {
        QPixmap pixmap;
        int columns = 1;
    };
    std::map<int, Strip> strips;
    QPixmap fondo, miniFondo;
    static const SkinStrips& get();
};

// Puts the shipped "Skin.ini" in the skin folder when there is none yet.
void installSkin(const settings::mConfig& config);

// Mouse buttons and shift keys as the models count them.
int vbButton(Qt::MouseButton b);
int vbShift(Qt::KeyboardModifiers m);
void forwardMouse(const ui::MouseHandler& handler, QMouseEvent* e);

// A picture box on screen: paints strip cells and text into a see-through image.
class SkinCanvas : public QWidget, public ui::Canvas {
public:
    SkinCanvas(ui::PictureBox& box, QWidget* parent);
    ~SkinCanvas() override;

    void cls() override;
    void print(std::string_view text, bool lineEnd) override;
    double textWidth(std::string_view text) const override;
    double textHeight(std::string_view text) const override;
    void line(double x1, double y1, double x2, double y2, uint32_t color) override;
    void fillBox(double x1, double y1, double x2, double y2, uint32_t color) override;
    void paintCell(int strip, int cell, double x, double y) override;
    double scaleWidth() const override { return width(); }
    double scaleHeight() const override { return height(); }

protected:
    void paintEvent(QPaintEvent*) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;

private:
    QFont qfont() const;
    ui::PictureBox& box_;
    QImage image_;
};

// A label that hands its presses and clicks to its control.
class SkinLabel : public QLabel {
public:
    SkinLabel(ui::Control& c, QWidget* parent);

protected:
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;

private:
    ui::Control& c_;
};

// Places a widget where its control says, and keeps it there.
void followGeometry(ui::Control& c, QWidget* w, QPoint origin = {});

class PlayerWindow : public FormWindow {
public:
    explicit PlayerWindow(player::MusicMp3& player, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent*) override;
    void keyReleaseEvent(QKeyEvent* e) override;
    void keyPressEvent(QKeyEvent* e) override;
    void moveEvent(QMoveEvent* e) override;

private:
    player::MusicMp3& p_;
    QLabel* cover_ = nullptr;
};

}  // namespace velaro::gui

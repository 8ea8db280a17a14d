#include "frm_mini.h"

#include "../base/vb_error.h"
#include "../ui/canvas.h"
#include "music_mp3.h"

namespace velaro::player {

namespace {
constexpr int kLeftButton = 1;
}

FrmMini::FrmMini(ui::Runtime& rt, MusicMp3& player) : ui::Form(rt, "frmMini"), player_(player) {
    // The face as designed, in pixels: seven buttons, the time, the strip.
    picMini.move(0, 0), picMini.setWidth(306), picMini.setHeight(22);
    picFondo.move(0, 0), picFondo.setWidth(306), picFondo.setHeight(22);
    picBotones.setWidth(126), picBotones.setHeight(32);
    for (int i = 0; i < 7; ++i) {
        picNormal(i).move(3 + i * 19, 3), picNormal(i).setWidth(18), picNormal(i).setHeight(16);
    }
    lblTiempoT.move(139, 3), lblTiempoT.setWidth(44), lblTiempoT.setHeight(16);
    picScroll.move(186, 3), picScroll.setWidth(116), picScroll.setHeight(16);
    lblTiempoT.setCaption("00:00");

    picNormal.forEach([this](ui::PictureBox& b) {
        const int i = b.index();
        b.MouseDown = [this, i](int button, int, double, double) { picNormal_MouseDown(i, button); };
        b.MouseUp = [this, i](int button, int, double, double) { picNormal_MouseUp(i, button); };
    });
    picMini.MouseDown = [this](int button, int, double x, double y) {
        // The old face scaled these by twips per pixel first.
        if (button == kLeftButton) MiniMaskDown(float(x * kPlayerTwipsPerPixel), float(y * kPlayerTwipsPerPixel));
    };
    picMini.MouseMove = [this](int, int, double x, double y) {
        MiniMaskMove(float(x * kPlayerTwipsPerPixel), float(y * kPlayerTwipsPerPixel));
    };
    lblTiempoT.MouseDown = [this](int button, int, double x, double y) {
        if (button == kLeftButton) MiniMaskDown(float(x), float(y));
    };
    lblTiempoT.MouseMove = [this](int button, int, double x, double y) {
        if (button == kLeftButton) MiniMaskMove(float(x), float(y));
    };
    picScroll.MouseDown = [this](int button, int, double x, double y) {
        if (button == kLeftButton) MiniMaskDown(float(x), float(y));
    };
    for (ui::Control* c : std::initializer_list<ui::Control*>{&picMini, &lblTiempoT, &picScroll})
        c->MouseUp = [this](int, int, double, double) { miniDragging = false; };
    lblTiempoT.Click = [this] { lblTiempoT_Click(); };
    picScroll.Click = [this] { picScroll_Click(); };
}

void FrmMini::Form_Load() {
    pixelStep = kPlayerTwipsPerPixel * 10;
    for (int i = 0; i < 7; ++i) Images_Buttons(i, false);
}

void FrmMini::Images_Buttons(int index, bool active) {
    if (!picNormal.exists(index)) return;
    ui::Canvas& c = picNormal(index).canvas();
    c.cls();
    c.paintCell(kStripMini, (active ? 1 : 0) * kMiniColumns + index, 0, 0);
}

void FrmMini::MiniMaskDown(float, float) {}
void FrmMini::MiniMaskMove(float, float) {}

void FrmMini::picNormal_MouseDown(int index, int) {
    // The first button has no pressed look.
    if (index != 0) Images_Buttons(index, true);
}

void FrmMini::picNormal_MouseUp(int index, int) {
    if (index != 0) Images_Buttons(index, false);
    switch (index) {
        case 0: player_.Previous_Track(); break;
        case 1: player_.Play(); break;
        case 2: player_.Pause_Play(); break;
        case 3: player_.Stop_Player(); break;
        case 4: player_.Next_Track(); break;
        case 5: Switch_Mini(player_, false); break;
        case 6: player_.unload(); break;
        default: break;
    }
}

void FrmMini::Form_KeyPress(char key) { player_.Form_KeyPress(key); }

void FrmMini::lblTiempoT_Click() { ShowElapsed = !ShowElapsed; }

void FrmMini::picScroll_Click() {
    if (player_.showFullPath) player_.showFullPath = false;
    ui::Canvas& c = picScroll.canvas();
    if (c.textWidth(player_.module.scrollText) > c.scaleWidth())
        player_.Timer_Texto.setEnabled(!player_.Timer_Texto.enabled());
}

void Switch_Mini(MusicMp3& player, bool toMini) {
    FrmMini& mini = player.frmMini;
    const double tx = kPlayerTwipsPerPixel, ty = kPlayerTwipsPerPixel;
    auto setMiniMode = [&](bool on) {
        player.state.MiniMode = on;
        player.config.MiniMode = on;
    };
    try {
        if (toMini) {
            setMiniMode(true);
            player.hide();
            const double x = player.imgNormal(12).left() * tx + player.Left;
            mini.Left = x - mini.picNormal(5).left() * tx + mini.picNormal(5).width() * tx;
            const double y = player.imgNormal(12).top() * ty + player.Top;
            mini.Top = y - mini.picNormal(5).top() * ty;
            mini.show();
            if (player.windows) {
                player.config.SetOnTop(*player.windows, &mini, &player);
                settings::SetTransparency(*player.windows, mini, player.config.windowAlpha);
            }
            player.Timer_Texto.setEnabled(false);
            if (!player.showFullPath) player.Scroll_Text(player.module.scrollText, mini.picScroll);
        } else {
            mini.hide();
            const double x = mini.picNormal(5).left() * tx + mini.Left;
            player.Left = x - player.imgNormal(12).left() * tx - player.imgNormal(12).width() * tx;
            const double y = mini.picNormal(5).top() * ty + mini.Top;
            player.Top = y - player.imgNormal(12).top() * ty;
            player.show();
            setMiniMode(false);
            if (player.windows) {
                player.config.SetOnTop(*player.windows, &mini, &player);
                settings::SetTransparency(*player.windows, player, player.config.windowAlpha);
            }
            player.Timer_Texto.setEnabled(false);
            player.Scroll_Text(player.module.scrollText, player.picScroll);
        }
    } catch (const std::exception&) {
        // The windows stay as far as they got.
    }
}

}  // namespace velaro::player

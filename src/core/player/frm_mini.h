#pragma once
// frmMini: the player's small face. Seven picture buttons, a time label and
// the status strip; every button forwards to MusicMp3. Switch_Mini swaps the
// faces so that the new face's button lies under the pressed one.

#include <cstdint>

#include "../ui/control_array.h"
#include "../ui/form.h"

namespace velaro::player {

class MusicMp3;

class FrmMini : public ui::Form {
public:
    FrmMini(ui::Runtime& rt, MusicMp3& player);

    ui::PictureBox picMini{this, "picMini"};
    ui::PictureBox picFondo{this, "picFondo"};
    ui::PictureBox picBotones{this, "picBotones"};
    ui::ControlArray<ui::PictureBox> picNormal{this, "picNormal", 7};
    ui::PictureBox picScroll{this, "picScroll"};
    ui::Label lblTiempoT{this, "lblTiempoT"};

    bool ShowElapsed = false;
    bool miniDragging = false;
    int32_t pixelStep = 0;  // set at load, read by nobody

    // Form position on the screen, in twips.
    double Left = 0, Top = 0;

    void Images_Buttons(int index, bool active);
    // Bodies left empty: the compact face cannot be dragged.
    void MiniMaskDown(float x, float y);
    void MiniMaskMove(float x, float y);

    void picNormal_MouseDown(int index, int button);
    void picNormal_MouseUp(int index, int button);
    void Form_KeyPress(char key);
    void lblTiempoT_Click();
    void picScroll_Click();

protected:
    void Form_Load() override;

private:
    MusicMp3& player_;
};

// Swaps the full face and the compact one, placing the new face so that its
// swap button lies where the pressed one was. Errors leave the windows as far
// as they got.
void Switch_Mini(MusicMp3& player, bool toMini);

}  // namespace velaro::player

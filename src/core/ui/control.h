#pragma once
// Controls hold the state the logic reads and writes, and raise their events
// when code changes them, as the old runtime did: a check box's value raises
// Click, an option button set to true raises Click, a list's index raises
// Click, a slider's or scroll bar's value raises Change, a text raises Change;
// each only when the value really changes.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "font.h"

namespace velaro::ui {

class Form;
class Canvas;

// Mouse pointers the logic sets.
inline constexpr int kPointerDefault = 0;
inline constexpr int kPointerHourglass = 11;

using Handler = std::function<void()>;
using MouseHandler = std::function<void(int button, int shift, double x, double y)>;

class Control {
public:
    Control(Form* owner, std::string name, int index = -1);
    virtual ~Control();
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    const std::string& name() const { return name_; }
    int index() const { return index_; }
    Form* owner() const { return owner_; }

    bool enabled() const { return enabled_; }
    virtual void setEnabled(bool on);
    bool visible() const { return visible_; }
    void setVisible(bool on);
    const std::string& caption() const { return caption_; }
    void setCaption(std::string text);
    const Font& font() const { return font_; }
    void setFont(const Font& f);
    uint32_t foreColor() const { return foreColor_; }
    void setForeColor(uint32_t c);
    uint32_t backColor() const { return backColor_; }
    void setBackColor(uint32_t c);
    std::string toolTipText;
    std::string tag;

    // Geometry the logic reads or writes (in the form's scale units).
    double left() const { return left_; }
    double top() const { return top_; }
    double width() const { return width_; }
    double height() const { return height_; }
    void move(double left, double top);
    void setLeft(double v);
    void setWidth(double v);
    void setHeight(double v);

    int mousePointer = kPointerDefault;

    // Events every control may raise on user input.
    Handler Click;
    Handler DblClick;
    MouseHandler MouseDown;
    MouseHandler MouseMove;
    MouseHandler MouseUp;

    // The user clicks (the GUI and scripted actions call this).
    virtual void userClick();

    // A view bound to this control is told of every property change.
    using Observer = std::function<void(Control&)>;
    void addObserver(Observer obs) { observers_.push_back(std::move(obs)); }

protected:
    void changed();
    static void raise(const Handler& h) {
        if (h) h();
    }

private:
    Form* owner_;
    std::string name_;
    int index_;
    bool enabled_ = true;
    bool visible_ = true;
    std::string caption_;
    Font font_;
    uint32_t foreColor_ = 0x000000;
    uint32_t backColor_ = 0xFFFFFF;
    double left_ = 0, top_ = 0, width_ = 0, height_ = 0;
    std::vector<Observer> observers_;
};

class Label : public Control {
public:
    using Control::Control;
};

class Frame : public Control {
public:
    using Control::Control;
};

class CommandButton : public Control {
public:
    using Control::Control;
    // Value = True presses the button from code.
    void setValue(bool pressed);
};

class Menu : public Control {
public:
    using Control::Control;
    bool checked() const { return checked_; }
    void setChecked(bool on);

private:
    bool checked_ = false;
};

class CheckBox : public Control {
public:
    using Control::Control;
    int value() const { return value_; }
    // 0 unchecked, 1 checked, 2 grey; anything else is an invalid property value.
    void setValue(int v);
    void userClick() override;  // toggles 0 <-> 1

private:
    int value_ = 0;
};

// Option buttons with the same group clear each other.
class OptionButton : public Control {
public:
    OptionButton(Form* owner, std::string name, int index = -1, int group = 0);
    int group() const { return group_; }
    bool value() const { return value_; }
    void setValue(bool on);
    void userClick() override;

private:
    int group_;
    bool value_ = false;
};

class TextBox : public Control {
public:
    using Control::Control;
    const std::string& text() const { return text_; }
    void setText(std::string t);
    Handler Change;
    int selStart = 0;
    int selLength = 0;
    bool locked = false;

    // The queries of a multi-line edit box, whose lines end at CR LF.
    // Line of a character position (-1: of selStart), 0-based.
    int lineFromChar(int charIndex) const;
    // First character of a line (-1: the caret's line); -1 when there is no such line.
    int lineIndex(int line) const;
    // Length, without its end, of the line that holds the character.
    int lineLength(int charIndex) const;
    int lineCount() const;
    // Puts `t` over the selection (clamped to the text) and the caret behind it.
    void replaceSel(const std::string& t);

private:
    std::string text_;
};

class ListBox : public Control {
public:
    using Control::Control;
    int listCount() const { return static_cast<int>(items_.size()); }
    // List(i): an index outside the list gives an empty text, as the runtime did.
    std::string list(int i) const;
    void setList(int i, std::string text);
    int32_t itemData(int i) const;
    void setItemData(int i, int32_t v);
    // AddItem at the end, or before `index`; an index past the end is an error.
    void addItem(std::string text, int index = -1);
    void removeItem(int index);
    void clear();
    int listIndex() const { return listIndex_; }
    // -1 clears the selection; an index outside -1..count-1 is an error.
    void setListIndex(int i);
    // Text of the selected row, "" when none.
    std::string text() const;
    bool sorted = false;

private:
    struct Item {
        std::string text;
        int32_t data = 0;
    };
    std::vector<Item> items_;
    int listIndex_ = -1;
};

// A combo box: a list with an edit part of its own.
class ComboBox : public ListBox {
public:
    using ListBox::ListBox;
    Handler Change;
    std::string editText() const;
    void setEditText(std::string t);

private:
    std::string edit_;
    bool editSet_ = false;
};

// Common slider: a value outside its range is clamped by the control.
class Slider : public Control {
public:
    Slider(Form* owner, std::string name, int index = -1, int min = 0, int max = 10);
    int value() const { return value_; }
    void setValue(int v);
    int min() const { return min_; }
    int max() const { return max_; }
    void setRange(int min, int max);
    int smallChange = 1;  // the arrow keys' step
    int largeChange = 5;  // the page keys' step
    Handler Change;
    Handler Scroll;

private:
    int min_, max_;
    int value_;
};

// Scroll bars: a value outside the range is an invalid property value.
class ScrollBar : public Control {
public:
    ScrollBar(Form* owner, std::string name, int index = -1, int min = 0, int max = 32767);
    int value() const { return value_; }
    void setValue(int v);
    int min() const { return min_; }
    int max() const { return max_; }
    void setRange(int min, int max);
    int smallChange = 1;
    int largeChange = 1;
    Handler Change;
    Handler Scroll;

private:
    int min_, max_;
    int value_;
};

// A picture box draws on a canvas: a recording one until a view attaches its own.
class PictureBox : public Control {
public:
    PictureBox(Form* owner, std::string name, int index = -1);
    ~PictureBox() override;
    Canvas& canvas() { return *canvas_; }
    void attachCanvas(Canvas* c);  // nullptr returns to the built-in one

private:
    std::unique_ptr<Canvas> own_;
    Canvas* canvas_;
};

class ProgressBar : public Control {
public:
    using Control::Control;
    double value() const { return value_; }
    void setValue(double v);
    double min = 0;
    double max = 100;

private:
    double value_ = 0;
};

class Timer : public Control {
public:
    Timer(Form* owner, std::string name, int interval = 0, bool enabled = false);
    ~Timer() override;
    int interval() const { return interval_; }
    // Setting the interval restarts the count, as it did.
    void setInterval(int ms);
    void setEnabled(bool on) override;
    // Fires only while enabled, with an interval, on a loaded form.
    bool active() const;
    Handler Tick;  // the Timer event
    void fire() { raise(Tick); }
    void formStateChanged();

private:
    int interval_;
};

}  // namespace velaro::ui

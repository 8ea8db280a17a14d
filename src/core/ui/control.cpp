#include "control.h"

#include <algorithm>

#include "../base/vb_error.h"
#include "form.h"
#include "recording_canvas.h"

namespace velaro::ui {

Control::Control(Form* owner, std::string name, int index)
    : owner_(owner), name_(std::move(name)), index_(index) {
    if (owner_) owner_->registerControl(this);
}

Control::~Control() {
    if (owner_) owner_->unregisterControl(this);
}

void Control::changed() {
    for (auto& o : observers_) o(*this);
}

void Control::setEnabled(bool on) {
    if (enabled_ == on) return;
    enabled_ = on;
    changed();
}

void Control::setVisible(bool on) {
    if (visible_ == on) return;
    visible_ = on;
    changed();
}

void Control::setCaption(std::string text) {
    if (caption_ == text) return;
    caption_ = std::move(text);
    changed();
}

void Control::setFont(const Font& f) {
    font_ = f;
    changed();
}

void Control::setForeColor(uint32_t c) {
    foreColor_ = c;
    changed();
}

void Control::setBackColor(uint32_t c) {
    backColor_ = c;
    changed();
}

void Control::move(double left, double top) {
    left_ = left;
    top_ = top;
    changed();
}

void Control::setLeft(double v) {
    left_ = v;
    changed();
}

void Control::setWidth(double v) {
    width_ = v;
    changed();
}

void Control::setHeight(double v) {
    height_ = v;
    changed();
}

void Control::userClick() {
    if (enabled_ && visible_) raise(Click);
}

void CommandButton::setValue(bool pressed) {
    if (pressed) raise(Click);
}

void Menu::setChecked(bool on) {
    if (checked_ == on) return;
    checked_ = on;
    changed();
}

void CheckBox::setValue(int v) {
    if (v < 0 || v > 2) throw VbError(VbErr::InvalidPropertyValue, "Invalid property value");
    if (v == value_) return;
    value_ = v;
    changed();
    raise(Click);
}

void CheckBox::userClick() {
    if (!enabled() || !visible()) return;
    setValue(value_ == 1 ? 0 : 1);
}

OptionButton::OptionButton(Form* owner, std::string name, int index, int group)
    : Control(owner, std::move(name), index), group_(group) {}

void OptionButton::setValue(bool on) {
    if (on == value_) return;
    value_ = on;
    if (on && owner()) {
        // Its siblings in the same group go off without events of their own.
        for (Control* c : owner()->controls()) {
            auto* o = dynamic_cast<OptionButton*>(c);
            if (o && o != this && o->group_ == group_ && o->value_) {
                o->value_ = false;
                o->changed();
            }
        }
    }
    changed();
    if (on) raise(Click);
}

void OptionButton::userClick() {
    if (!enabled() || !visible()) return;
    if (value_) raise(Click);  // clicking the chosen one still clicks
    else setValue(true);
}

void TextBox::setText(std::string t) {
    if (t == text_) return;
    text_ = std::move(t);
    changed();
    raise(Change);
}

namespace {
// Starts of the lines of an edit box's text: 0, then behind every CR LF.
std::vector<int> lineStarts(const std::string& t) {
    std::vector<int> starts{0};
    for (size_t i = 0; i + 1 < t.size(); ++i)
        if (t[i] == '\r' && t[i + 1] == '\n') starts.push_back(static_cast<int>(i + 2));
    return starts;
}
}  // namespace

int TextBox::lineFromChar(int charIndex) const {
    if (charIndex < 0) charIndex = selStart;
    const auto starts = lineStarts(text_);
    auto it = std::upper_bound(starts.begin(), starts.end(), charIndex);
    return static_cast<int>(it - starts.begin()) - 1;
}

int TextBox::lineIndex(int line) const {
    if (line < 0) line = lineFromChar(-1);
    const auto starts = lineStarts(text_);
    if (line >= static_cast<int>(starts.size())) return -1;
    return starts[static_cast<size_t>(line)];
}

int TextBox::lineLength(int charIndex) const {
    const auto starts = lineStarts(text_);
    const int line = lineFromChar(std::clamp(charIndex, 0, static_cast<int>(text_.size())));
    const size_t l = static_cast<size_t>(line);
    const int end = l + 1 < starts.size() ? starts[l + 1] - 2 : static_cast<int>(text_.size());
    return end - starts[l];
}

int TextBox::lineCount() const { return static_cast<int>(lineStarts(text_).size()); }

void TextBox::replaceSel(const std::string& t) {
    const int size = static_cast<int>(text_.size());
    const int start = std::clamp(selStart, 0, size);
    const int length = std::clamp(selLength, 0, size - start);
    std::string next = text_;
    next.replace(static_cast<size_t>(start), static_cast<size_t>(length), t);
    selStart = start + static_cast<int>(t.size());
    selLength = 0;
    setText(std::move(next));
}

std::string ListBox::list(int i) const {
    if (i < 0 || i >= listCount()) return {};
    return items_[static_cast<size_t>(i)].text;
}

void ListBox::setList(int i, std::string text) {
    if (i < 0 || i >= listCount()) throw VbError(VbErr::InvalidPropertyValue, "Invalid property array index");
    items_[static_cast<size_t>(i)].text = std::move(text);
    changed();
}

int32_t ListBox::itemData(int i) const {
    if (i < 0 || i >= listCount()) throw VbError(VbErr::InvalidPropertyValue, "Invalid property array index");
    return items_[static_cast<size_t>(i)].data;
}

void ListBox::setItemData(int i, int32_t v) {
    if (i < 0 || i >= listCount()) throw VbError(VbErr::InvalidPropertyValue, "Invalid property array index");
    items_[static_cast<size_t>(i)].data = v;
}

void ListBox::addItem(std::string text, int index) {
    if (index > listCount() || index < -1) throw VbError(VbErr::InvalidCall);
    if (index == -1 && sorted) {
        auto it = std::upper_bound(items_.begin(), items_.end(), text,
                                   [](const std::string& t, const Item& it) { return t < it.text; });
        index = static_cast<int>(it - items_.begin());
    }
    if (index == -1) index = listCount();
    items_.insert(items_.begin() + index, Item{std::move(text), 0});
    if (listIndex_ >= index && listIndex_ != -1) ++listIndex_;
    changed();
}

void ListBox::removeItem(int index) {
    if (index < 0 || index >= listCount()) throw VbError(VbErr::InvalidCall);
    items_.erase(items_.begin() + index);
    if (listIndex_ == index) listIndex_ = -1;
    else if (listIndex_ > index) --listIndex_;
    changed();
}

void ListBox::clear() {
    items_.clear();
    listIndex_ = -1;
    changed();
}

void ListBox::setListIndex(int i) {
    if (i < -1 || i >= listCount()) throw VbError(VbErr::InvalidPropertyValue, "Invalid property value");
    if (i == listIndex_) return;
    listIndex_ = i;
    changed();
    raise(Click);
}

std::string ListBox::text() const { return list(listIndex_); }

std::string ComboBox::editText() const { return editSet_ ? edit_ : text(); }

void ComboBox::setEditText(std::string t) {
    if (editSet_ && t == edit_) return;
    edit_ = std::move(t);
    editSet_ = true;
    changed();
    raise(Change);
}

Slider::Slider(Form* owner, std::string name, int index, int min, int max)
    : Control(owner, std::move(name), index), min_(min), max_(max), value_(min) {}

void Slider::setValue(int v) {
    v = std::clamp(v, std::min(min_, max_), std::max(min_, max_));
    if (v == value_) return;
    value_ = v;
    changed();
    raise(Change);
}

void Slider::setRange(int min, int max) {
    min_ = min;
    max_ = max;
    setValue(value_);
}

ScrollBar::ScrollBar(Form* owner, std::string name, int index, int min, int max)
    : Control(owner, std::move(name), index), min_(min), max_(max), value_(min) {}

void ScrollBar::setValue(int v) {
    if (v < std::min(min_, max_) || v > std::max(min_, max_))
        throw VbError(VbErr::InvalidPropertyValue, "Invalid property value");
    if (v == value_) return;
    value_ = v;
    changed();
    raise(Change);
}

void ScrollBar::setRange(int min, int max) {
    min_ = min;
    max_ = max;
    int v = std::clamp(value_, std::min(min_, max_), std::max(min_, max_));
    if (v != value_) setValue(v);
}

PictureBox::PictureBox(Form* owner, std::string name, int index)
    : Control(owner, std::move(name), index), own_(std::make_unique<RecordingCanvas>()),
      canvas_(own_.get()) {}

PictureBox::~PictureBox() = default;

void PictureBox::attachCanvas(Canvas* c) { canvas_ = c ? c : own_.get(); }

void ProgressBar::setValue(double v) {
    if (v < min || v > max) throw VbError(VbErr::InvalidPropertyValue, "Invalid property value");
    value_ = v;
    changed();
}

Timer::Timer(Form* owner, std::string name, int interval, bool enabled)
    : Control(owner, std::move(name)), interval_(interval) {
    Control::setEnabled(enabled);
}

Timer::~Timer() {
    if (owner()) owner()->rt.loop.timerGone(*this);
}

void Timer::setInterval(int ms) {
    if (ms < 0 || ms > 65535) throw VbError(VbErr::InvalidPropertyValue, "Invalid property value");
    interval_ = ms;
    formStateChanged();
}

void Timer::setEnabled(bool on) {
    Control::setEnabled(on);
    formStateChanged();
}

bool Timer::active() const {
    return enabled() && interval_ > 0 && owner() && owner()->loaded();
}

void Timer::formStateChanged() {
    if (owner()) owner()->rt.loop.timerChanged(*this);
}

}  // namespace velaro::ui

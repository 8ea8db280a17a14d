#include "form.h"

#include <algorithm>

namespace velaro::ui {

Form* FormRegistry::find(std::string_view name) const {
    for (Form* f : loaded_)
        if (f->name() == name) return f;
    return nullptr;
}

void FormRegistry::unloadOthers(const Form& keep) {
    std::vector<Form*> snapshot = loaded_;
    for (Form* f : snapshot) {
        if (f == &keep) continue;
        if (std::find(loaded_.begin(), loaded_.end(), f) != loaded_.end()) f->unload();
    }
}

Form::Form(Runtime& runtime, std::string name) : rt(runtime), name_(std::move(name)) {}

Form::~Form() {
    auto& l = rt.forms.loaded_;
    l.erase(std::remove(l.begin(), l.end(), this), l.end());
}

void Form::registerControl(Control* c) { controls_.push_back(c); }

void Form::unregisterControl(Control* c) {
    controls_.erase(std::remove(controls_.begin(), controls_.end(), c), controls_.end());
}

Control* Form::control(std::string_view name, int index) const {
    for (Control* c : controls_)
        if (c->name() == name && c->index() == index) return c;
    return nullptr;
}

void Form::notifyState() {
    for (Control* c : controls_)
        if (auto* t = dynamic_cast<Timer*>(c)) t->formStateChanged();
    if (rt.formStateChanged) rt.formStateChanged(*this);
}

void Form::load() {
    if (loaded_) return;
    loaded_ = true;
    rt.forms.loaded_.push_back(this);
    notifyState();
    Form_Load();
}

void Form::show() {
    load();
    if (!loaded_) return;  // its Load handler unloaded it again
    if (!visible_) {
        visible_ = true;
        notifyState();
    }
}

void Form::showModal() {
    show();
    if (!loaded_) return;
    ++modalDepth_;
    rt.loop.runUntil([this] { return !visible_ || !loaded_; });
    --modalDepth_;
}

void Form::hide() {
    if (!visible_) return;
    visible_ = false;
    notifyState();
}

bool Form::unload() {
    if (!loaded_) return true;
    int cancel = 0;
    Form_QueryUnload(cancel);
    if (cancel) return false;
    Form_Unload(cancel);
    if (cancel) return false;
    visible_ = false;
    loaded_ = false;
    auto& l = rt.forms.loaded_;
    l.erase(std::remove(l.begin(), l.end(), this), l.end());
    notifyState();
    return true;
}

}  // namespace velaro::ui

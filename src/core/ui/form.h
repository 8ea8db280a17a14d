#pragma once
// Forms: load, show, show modally (a nested loop until hidden or unloaded),
// hide and unload, with a registry of the loaded ones.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "control.h"
#include "dialogs.h"
#include "event_loop.h"

namespace velaro::ui {

class Form;

class FormRegistry {
public:
    const std::vector<Form*>& loaded() const { return loaded_; }
    Form* find(std::string_view name) const;
    // Unloads every loaded form but `keep`, in load order.
    void unloadOthers(const Form& keep);

private:
    friend class Form;
    std::vector<Form*> loaded_;
};

// What every form shares: the loop, the dialogs, the forms, the screen pointer.
struct Runtime {
    Runtime(EventLoop& l, Dialogs& d) : loop(l), dialogs(d) {}
    EventLoop& loop;
    Dialogs& dialogs;
    FormRegistry forms;
    int screenMousePointer = kPointerDefault;
    // A view is told when a form loads, shows, hides or unloads.
    std::function<void(Form&)> formStateChanged;
};

class Form {
public:
    Form(Runtime& rt, std::string name);
    virtual ~Form();
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    Runtime& rt;
    const std::string& name() const { return name_; }
    bool loaded() const { return loaded_; }
    bool visible() const { return visible_; }
    bool modal() const { return modalDepth_ > 0; }

    void load();
    void show();
    void showModal();
    void hide();
    // Returns false when the form cancelled its unload.
    bool unload();

    std::string caption;
    int mousePointer = kPointerDefault;

    Control* control(std::string_view name, int index = -1) const;
    const std::vector<Control*>& controls() const { return controls_; }

    // Controls register themselves with their form.
    void registerControl(Control* c);
    void unregisterControl(Control* c);

protected:
    virtual void Form_Load() {}
    virtual void Form_QueryUnload(int& cancel) {}
    virtual void Form_Unload(int& cancel) {}

private:
    void notifyState();
    std::string name_;
    bool loaded_ = false;
    bool visible_ = false;
    int modalDepth_ = 0;
    std::vector<Control*> controls_;
};

}  // namespace velaro::ui

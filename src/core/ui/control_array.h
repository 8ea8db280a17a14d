#pragma once
// Control arrays: one name, elements addressed by index; an event handler
// takes the index of the element that raised it.

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "../base/vb_error.h"
#include "control.h"

namespace velaro::ui {

template <class T>
class ControlArray {
public:
    template <class... Args>
    ControlArray(Form* owner, std::string name, int count, Args... args)
        : owner_(owner), name_(std::move(name)) {
        for (int i = 0; i < count; ++i)
            items_[i] = std::make_unique<T>(owner_, name_, i, args...);
    }

    T& operator()(int i) const { return at(i); }
    T& operator[](int i) const { return at(i); }
    T& at(int i) const {
        auto it = items_.find(i);
        if (it == items_.end()) throw VbError(VbErr::SubscriptOutOfRange, "Control array element doesn't exist");
        return *it->second;
    }
    bool exists(int i) const { return items_.count(i) != 0; }
    int count() const { return static_cast<int>(items_.size()); }
    int lbound() const { return items_.empty() ? 0 : items_.begin()->first; }
    int ubound() const { return items_.empty() ? -1 : items_.rbegin()->first; }
    const std::string& name() const { return name_; }

    // Load/Unload of single elements at run time.
    template <class... Args>
    T& load(int i, Args... args) {
        if (items_.count(i)) throw VbError(VbErr::InvalidCall, "Object already loaded");
        items_[i] = std::make_unique<T>(owner_, name_, i, args...);
        return *items_[i];
    }
    void unload(int i) { items_.erase(i); }

    // Binds one handler for an event of every element, given the index.
    template <class Member>
    void bind(Member member, std::function<void(int)> fn) {
        for (auto& [i, c] : items_) {
            int index = i;
            (static_cast<T&>(*c).*member) = [fn, index] { fn(index); };
        }
    }

    template <class F>
    void forEach(F f) const {
        for (auto& [i, c] : items_) f(*c);
    }

private:
    Form* owner_;
    std::string name_;
    std::map<int, std::unique_ptr<T>> items_;
};

}  // namespace velaro::ui

#include "list_view.h"

#include "../base/vb_error.h"

namespace velaro::player {

namespace {
// The list view's own error for an index outside its rows.
void checkIndex(int i, int count) {
    if (i < 1 || i > count) throw VbError(VbErr::InvalidPropertyValue, "Index out of bounds");
}
}  // namespace

ListItem& ListView::item(int i) {
    checkIndex(i, count());
    return rows_[i - 1];
}

const ListItem& ListView::item(int i) const {
    checkIndex(i, count());
    return rows_[i - 1];
}

int ListView::add(std::string text) {
    rows_.push_back(ListItem{std::move(text), {}, false, {false, false}});
    changed();
    return count();
}

void ListView::remove(int i) {
    checkIndex(i, count());
    rows_.erase(rows_.begin() + (i - 1));
    if (selected_ == i) selected_ = 0;
    else if (selected_ > i) --selected_;
    changed();
}

void ListView::clear() {
    rows_.clear();
    selected_ = 0;
    visibleRequest_ = 0;
    changed();
}

void ListView::setSelectedItem(int i) {
    if (i != 0) checkIndex(i, count());
    selected_ = i;
    changed();
}

std::string& ListView::subItem(int i, int n) {
    if (n < 1 || n > 2) throw VbError(VbErr::InvalidPropertyValue, "Index out of bounds");
    return item(i).subItems[n - 1];
}

void ListView::ensureVisible(int i) {
    checkIndex(i, count());
    visibleRequest_ = i;
    changed();
}

}  // namespace velaro::player

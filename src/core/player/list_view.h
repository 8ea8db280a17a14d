#pragma once
// The report-style list view: rows with a text and sub-items, each with its
// own bold flag, a selected row, column headers. Rows are 1-based, as the
// list view's items were.

#include <string>
#include <vector>

#include "../ui/control.h"

namespace velaro::player {

struct ListItem {
    std::string text;
    std::string subItems[2];  // sub-items 1 and 2
    bool bold = false;
    bool subBold[2] = {false, false};
};

class ListView : public ui::Control {
public:
    using Control::Control;

    std::vector<std::string> columnHeaders;

    int count() const { return static_cast<int>(rows_.size()); }
    // Row i (1-based); outside the list is "index out of bounds".
    ListItem& item(int i);
    const ListItem& item(int i) const;
    // Adds a row at the end and gives its index.
    int add(std::string text);
    void remove(int i);
    void clear();
    // The selected row, 0 when none.
    int selectedItem() const { return selected_; }
    void setSelectedItem(int i);
    // Sub-item n of row i (n 1 or 2) and its bold flag.
    std::string& subItem(int i, int n);
    void ensureVisible(int i);
    int visibleRequest() const { return visibleRequest_; }
    // Rows added or removed tell the view; rows changed in place show at the next refresh.
    void refresh() { changed(); }

    // Input the view forwards: the key code on key down, dropped paths in order.
    std::function<void(int keyCode)> KeyDown;
    std::function<void(const std::vector<std::string>& names)> OLEDragDrop;

private:
    std::vector<ListItem> rows_;
    int selected_ = 0;
    int visibleRequest_ = 0;
};

}  // namespace velaro::player

#pragma once

#include "platform/Control.h"

#include <cstdint>
#include <vector>

struct ListStyle {
    bool sorted = false; // regardless of ASCII case, ties by byte
    bool extended = false; // many rows may be highlighted
    std::string_view hint = {}; // shown, in grey, while the list is empty
};

// A list of texts for tens of thousands of rows. `ListIndex` is the row with the focus; with one
// highlighted row at most, that is the one. Beyond the widget, the list never selects, moves
// or clears its current row by itself: focus does not pick the first row, and when the current row is removed there is
// none. It scrolls sideways as far as its longest row. Rows keep their bytes.
//
// A sorted list sorts lazily, before the first read or paint after additions. So a read, const as it is, may put the
// additions in their places: the current and the highlighted rows stay what they were, under other numbers, and nothing
// is raised.
class ListBox : public Control {
public:
    ListBox(Container& container, std::string_view name, const Place& place, const ListStyle& style = {});

    // At the end, or at its place in a sorted list.
    void AddItem(std::string_view text);
    // Many at the end, at once; not for sorted lists.
    void AddItems(const std::vector<std::string>& texts);
    // Before row `index`; not for sorted lists.
    void InsertItem(std::string_view text, int index);
    void RemoveItem(int index);
    // Takes all highlighted rows away and gives them, in their order.
    std::vector<std::string> TakeSelected();
    void Clear();

    int ListCount() const;
    // Empty for a row that is not there. The text is the list's own, until the next change or, if it is sorted, until
    // events are let through.
    const std::string& List(int index) const;

    // -1 for none.
    int ListIndex() const;
    void SetListIndex(int index);

    void SetSelected(int index, bool selected);

    // Counts the changes of the rows, for a loop that must notice one.
    std::uint64_t Revision() const { return revision; }
    // Counts how often the list was emptied at once, for a loop that fills it.
    std::uint64_t TimesCleared() const { return timesCleared; }

    // Another row has become the current one, through the user or from code.
    std::function<void()> Click;
    // A double click on a row, or beside the rows while there is no current one, or Enter.
    std::function<void()> DblClick;
    std::function<void()> DeleteKey;

private:
    class Rows;
    class View;

    // With all additions in their places.
    View& UpToDate() const;

    ListStyle style;
    std::uint64_t revision = 0;
    std::uint64_t timesCleared = 0;
};

#pragma once

#include "platform/Control.h"

#include <vector>

// A drop-down list. Beyond the widget, it never selects, moves or clears its current row by itself: an added first row
// is not selected, and when the current row is removed none is. Click is raised whenever another row becomes the
// current one, from code too. Rows keep their bytes.
class ComboBox : public Control {
public:
    ComboBox(Container& container, std::string_view name, const Place& place,
        std::initializer_list<std::string_view> rows = {});

    void AddItem(std::string_view text);
    void RemoveItem(int index);
    int ListCount() const;

    // -1 for none.
    int ListIndex() const;
    void SetListIndex(int index);

    // The current row's text, empty without one.
    std::string Text() const;

    // Makes the first row with exactly this text the current one. False, and no change, if there is none.
    [[nodiscard]] bool SelectText(std::string_view text);

    std::function<void()> Click;

protected:
    // Before the list is opened, or a key may choose from it.
    std::function<void()> BeforeUse;

    // Other rows, one of which becomes the current one; raises nothing.
    void SetRows(const std::vector<std::string>& rows, int current);

private:
    class View;
};

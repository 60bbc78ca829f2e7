#pragma once

#include "platform/Control.h"
#include "platform/MouseEvents.h"

// A box with a caption around other controls. Places inside it count from its outer corner.
class Frame : public Control, public Container {
public:
    Frame(Container& container, std::string_view name, std::string_view caption, const Place& place);
};

enum class PanelEdge { None, Line, Sunken };

// A plain area that holds other controls, or a thin divider.
class Panel : public Control, public Container, public MouseEvents {
public:
    Panel(Container& container, std::string_view name, const Place& place, PanelEdge edge = PanelEdge::None);

    // In the desktop's colour for what is selected, or in that of the window.
    void SetHighlighted(bool highlighted);

    // Tab leads to it too; a blank is then a click, and Enter a double click.
    void TakesFocus();
};

#pragma once

#include "platform/Control.h"

#include <vector>

enum class PanelStyle {
    Text = 0,
    Time = 5,
    Date = 6,
};

// One field of a status bar. Beyond a label, it takes its text at once but paints at most every 50 milliseconds, so
// that a text that changes with every article costs nothing; a time or date shows the clock by itself.
class StatusPanel {
public:
    void SetText(std::string_view text);

    // Never taken for rich text. An empty one gives back the designed one.
    void SetToolTip(std::string_view text);

    // A padlock before the text.
    void SetPadlock(bool shown);

    void SetStyle(PanelStyle style);

    // Where the tool tip's text comes from while the mouse rests there: asked when it comes up, and each second then.
    // An empty one gives way to the designed text.
    void SetLiveToolTip(std::function<std::string()> text);

private:
    friend class StatusBar;
    class Field;
    class Row;

    explicit StatusPanel(Field* newField);

    Field* field;
};

struct StatusPanelDesign {
    std::string_view longest; // the longest text that the panel has room for; a time or date sees to that by itself
    std::string_view text;
    std::string_view toolTip = {};
    PanelStyle style = PanelStyle::Text;
    bool takesRest = false; // of the bar's width
};

enum class StatusBarPlace { AsDesigned, BottomEdge };

// A row of panels, counted from 1, in a font that is no larger than lets each show its longest text. At the bottom edge
// it follows the height of its container.
class StatusBar : public Control {
public:
    StatusBar(Container& container, std::string_view name, const Place& place,
        std::initializer_list<StatusPanelDesign> panels, StatusBarPlace where = StatusBarPlace::AsDesigned);

    StatusPanel& Panels(int number) { return panels.at(static_cast<std::size_t>(number - 1)); }

private:
    std::vector<StatusPanel> panels;
};

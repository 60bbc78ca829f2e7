#pragma once

#include "platform/Control.h"

class CommandButton;
class QString;

struct TextBoxStyle {
    std::string_view text = {};
    int maxLength = 0; // in characters; 0 is without limit
    bool masked = false; // shows "*" for each character
    bool readOnly = false;
    std::string_view hint = {}; // shown, in grey, while the field is empty
};

// A text field of one line. Beyond the widget, Change is raised whenever the text becomes another one, from code too; a
// text set from code keeps its bytes until the user edits it; and direction marks, with which a text could pass for
// another, are kept but show as the replacement character.
class TextBox : public Control {
public:
    TextBox(Container& container, std::string_view name, const Place& place, const TextBoxStyle& style = {});

    const std::string& Text() const { return text; }
    void SetText(std::string_view newText);

    void SelectAll();

    // Enter in this field presses the button; for windows that have no dialog buttons.
    void EnterPresses(const CommandButton& button);

    std::function<void()> Change;
    std::function<void()> DblClick;

private:
    void Take(std::string newText);
    void TakeEditedText();
    void Show(const QString& newText);
    QString Masked(const QString& newText) const;

    bool masked;
    std::string text;
};

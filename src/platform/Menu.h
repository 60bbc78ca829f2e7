#pragma once

#include "platform/Form.h"

class QAction;
class QMenu;

// A menu of a form's menu bar. In captions "&" marks the mnemonic.
class Menu {
public:
    Menu(Form& form, std::string_view name, std::string_view caption);

private:
    friend class MenuEntry;

    QMenu* menu;
};

// An entry of a menu. Its check mark is for the handler to set: beyond an action, a click does not change it.
class MenuEntry {
public:
    // `shortcut` is a key sequence such as "Ctrl+F", or empty. An entry without a caption is a line between others.
    MenuEntry(Menu& menu, std::string_view name, std::string_view caption = {}, std::string_view shortcut = {});
    MenuEntry(const MenuEntry&) = delete;
    MenuEntry& operator=(const MenuEntry&) = delete;

    void SetEnabled(bool enabled);

    bool Checked() const;
    void SetChecked(bool checked);

    std::function<void()> Click;

private:
    QAction* action;
};

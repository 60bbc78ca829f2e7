#include "platform/Menu.h"

#include "platform/DisplayText.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

Menu::Menu(Form& form, std::string_view name, std::string_view caption)
    : menu(form.MenuBar().addMenu(ToDisplay(caption)))
{
    menu->menuAction()->setObjectName(ToDisplay(name));
    form.Layout();
}

MenuEntry::MenuEntry(Menu& menu, std::string_view name, std::string_view caption, std::string_view shortcut)
    : action(menu.menu->addAction(ToDisplay(caption)))
{
    action->setObjectName(ToDisplay(name));
    action->setSeparator(caption.empty());
    action->setShortcut(QKeySequence(ToDisplay(shortcut)));
    QObject::connect(action, &QAction::triggered, action, [this](bool nowChecked) {
        if (action->isCheckable())
            action->setChecked(!nowChecked);
        Raise(Click);
    });
}

void MenuEntry::SetEnabled(bool enabled) { action->setEnabled(enabled); }

bool MenuEntry::Checked() const { return action->isChecked(); }

void MenuEntry::SetChecked(bool checked)
{
    action->setCheckable(true);
    action->setChecked(checked);
}

#pragma once

#include <QApplication>
#include <QWidget>

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// The program as a user has it before him: windows and controls are found by their names (the widgets' object names)
// and worked with mouse and keyboard, so that a disabled control stays as it is.
//
// A name that stands on several windows is looked for on the modal window first; "frmSetPointer/Text1" says which
// window is meant. Before a control is used, the tab that it lies on is brought to the front. What a user could not do
// (no such control, not visible, behind a modal window, no such row) throws std::runtime_error, which fails the test.

// The window of that name, visible or not, or null.
QWidget* WindowNamed(std::string_view name);

// The control of that name, visible or not, or null.
QObject* ControlNamed(std::string_view name);

template <class T> T& Find(std::string_view name)
{
    if (T* control = dynamic_cast<T*>(ControlNamed(name)))
        return *control;
    throw std::runtime_error("no such control, or of another kind: " + std::string(name));
}

// Clicks a button, a check box, an option, or whatever else.
void Click(std::string_view name);

// Clicks a check box until it is as wanted, and an option to select it.
void Check(std::string_view name, bool checked);
bool IsChecked(std::string_view name);

// Replaces the text of a field by typing; the field's limits hold.
void TypeInto(std::string_view name, std::string_view text);

// What a label, button, field or combo box shows.
std::string TextOf(std::string_view name);

// Enabled with everything that it lies in; for a menu entry too.
bool IsEnabled(std::string_view name);
bool IsVisible(std::string_view name);

// Clicks the tab, counted from 0.
void SelectTab(std::string_view tabStrip, int index);
int CurrentTab(std::string_view tabStrip);

// Chooses a menu entry. A disabled one stays untouched.
void ChooseMenu(std::string_view entry);

// Chooses an entry of a combo box from its list.
void ChooseEntry(std::string_view combo, std::string_view text);

// Clicks a stepper's arrows so many times: up for a positive number, down for a negative one.
void Step(std::string_view stepper, int times);

// Lists and combo boxes. Rows count from 0, and -1 is none.
std::vector<std::string> RowsOf(std::string_view list);
std::vector<int> HighlightedRows(std::string_view list);
int CurrentRow(std::string_view list);
void ClickRow(std::string_view list, int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
void DoubleClickRow(std::string_view list, int row);

// The text of a status bar's panel, counted from 1.
std::string PanelText(std::string_view statusBar, int panel);

// The title of a window.
std::string CaptionOf(std::string_view window);

// Delivers events until the predicate is true; false if it does not become so in time.
bool Until(const std::function<bool()>& predicate, std::chrono::milliseconds timeout = std::chrono::seconds(10));

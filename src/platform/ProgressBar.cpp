#include "platform/ProgressBar.h"

#include <QProgressBar>
#include <algorithm>

ProgressBar::ProgressBar(Container& container, std::string_view name, const Place& place)
    : Control(container, new QProgressBar, name, place)
{
    static_cast<QProgressBar*>(widget)->setTextVisible(false);
    SetValue(0);
}

void ProgressBar::SetMinimum(int minimum) { static_cast<QProgressBar*>(widget)->setMinimum(minimum); }

void ProgressBar::SetMaximum(int maximum) { static_cast<QProgressBar*>(widget)->setMaximum(maximum); }

void ProgressBar::SetValue(int value)
{
    auto* bar = static_cast<QProgressBar*>(widget);
    bar->setValue(std::clamp(value, bar->minimum(), bar->maximum()));
}

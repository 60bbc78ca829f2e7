#include "platform/ProgressBar.h"

#include <QProgressBar>
#include <algorithm>

ProgressBar::ProgressBar(Container& container, std::string_view name, const Place& place)
    : Control(container, new QProgressBar, name, place)
{
    As<QProgressBar>().setTextVisible(false);
    SetValue(0);
}

void ProgressBar::SetMinimum(int minimum) { As<QProgressBar>().setMinimum(minimum); }

void ProgressBar::SetMaximum(int maximum) { As<QProgressBar>().setMaximum(maximum); }

void ProgressBar::SetValue(int value)
{
    auto& bar = As<QProgressBar>();
    bar.setValue(std::clamp(value, bar.minimum(), bar.maximum()));
}

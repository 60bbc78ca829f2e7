#include "platform/ProgressBar.h"

#include <QProgressBar>
#include <algorithm>

ProgressBar::ProgressBar(Container& container, std::string_view name, const Place& place)
    : Control(container, new QProgressBar, name, place)
{
    As<QProgressBar>().setTextVisible(false);
    SetValue(0);
}

void ProgressBar::SetRange(int minimum, int maximum) { As<QProgressBar>().setRange(minimum, maximum); }

void ProgressBar::SetValue(int value)
{
    auto& bar = As<QProgressBar>();
    bar.setValue(std::clamp(value, bar.minimum(), bar.maximum()));
}

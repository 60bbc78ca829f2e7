#pragma once

#include "platform/Control.h"

// How far something is, between a minimum and a maximum.
class ProgressBar : public Control {
public:
    ProgressBar(Container& container, std::string_view name, const Place& place);

    void SetMinimum(int minimum);
    void SetMaximum(int maximum);

    // A value outside the range becomes its nearer end.
    void SetValue(int value);
};

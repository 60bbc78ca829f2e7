#pragma once

#include "platform/Control.h"

// How far something is, between a minimum and a maximum.
class ProgressBar : public Control {
public:
    ProgressBar(Container& container, std::string_view name, const Place& place);

    void SetRange(int minimum, int maximum);

    // A value outside the range becomes its nearer end.
    void SetValue(int value);
};

#pragma once

#include "platform/TextBox.h"

struct StepRange {
    int minimum;
    int maximum;
    int step;
};

// Two buttons that step the number in a text box up and down within a range. The text box takes the Up and Down keys
// for the same. The field is changed only when the stepper is used, and whatever it holds is read as a number then.
class Stepper : public Control {
public:
    Stepper(Container& container, std::string_view name, TextBox& buddy, const Place& place, const StepRange& range);

private:
    void Step(int direction);

    TextBox& field;
    StepRange range;
};

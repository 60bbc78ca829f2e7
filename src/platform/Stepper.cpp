#include "platform/Stepper.h"

#include "base/Text.h"

#include <QEvent>
#include <QKeyEvent>
#include <QToolButton>
#include <algorithm>
#include <cmath>

namespace {

class StepButtons : public QWidget {
public:
    explicit StepButtons(std::function<void(int)> whenStepped)
        : up(this)
        , down(this)
        , stepped(std::move(whenStepped))
    {
        for (QToolButton* button : {&up, &down}) {
            const bool isUp = button == &up;
            button->setArrowType(isUp ? Qt::UpArrow : Qt::DownArrow);
            button->setAutoRepeat(true);
            button->setFocusPolicy(Qt::NoFocus);
            button->setAccessibleName(isUp ? QStringLiteral("More") : QStringLiteral("Less"));
            connect(button, &QToolButton::clicked, this, [this, isUp] { stepped(isUp ? 1 : -1); });
        }
    }

    // The stepper's keys, for the text box.
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() != QEvent::KeyPress || !isEnabled())
            return false;
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key != Qt::Key_Up && key != Qt::Key_Down)
            return false;
        stepped(key == Qt::Key_Up ? 1 : -1);
        return true;
    }

protected:
    void resizeEvent(QResizeEvent*) override
    {
        up.setGeometry(0, 0, width(), height() / 2);
        down.setGeometry(0, height() / 2, width(), height() - height() / 2);
    }

private:
    QToolButton up;
    QToolButton down;
    std::function<void(int)> stepped;
};

}

Stepper::Stepper(
    Container& container, std::string_view name, TextBox& buddy, const Place& place, const StepRange& newRange)
    : Control(container, new StepButtons([this](int direction) { Step(direction); }), name, place)
    , field(buddy)
    , range(newRange)
{
    static_cast<Control&>(buddy).widget->installEventFilter(widget);
}

void Stepper::Step(int direction)
{
    const double stepped = std::nearbyint(Val(field.Text())) + direction * range.step;
    const double inRange = std::clamp<double>(stepped, range.minimum, range.maximum);
    field.SetText(std::to_string(static_cast<int>(inRange)));
}

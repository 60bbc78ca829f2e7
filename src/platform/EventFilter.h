#pragma once

#include <QObject>
#include <functional>

// Sees each event of an object before the object does, as long as that lives; the answer `true` keeps it away. For
// platform/ alone.
class EventFilter : public QObject {
public:
    EventFilter(QObject* watched, std::function<bool(QEvent&)> newSee)
        : QObject(watched)
        , see(std::move(newSee))
    {
        watched->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override { return see(*event); }

private:
    const std::function<bool(QEvent&)> see;
};

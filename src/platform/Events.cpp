#include "platform/Events.h"

#include "platform/EventFilter.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QPointer>
#include <algorithm>
#include <chrono>

namespace {

// One pass over what is pending. False if there was nothing.
bool DeliverPending(QEventLoop::ProcessEventsFlags flags = QEventLoop::AllEvents)
{
    // Counted, since not every dispatcher reports a pass that delivered nothing but posted events.
    static quint64 delivered = 0;
    static QPointer<EventFilter> counter;
    if (!counter)
        counter = new EventFilter(QCoreApplication::instance(), [](const QEvent&) {
            ++delivered;
            return false;
        });
    const quint64 before = delivered;
    return QCoreApplication::eventDispatcher()->processEvents(flags) || delivered != before;
}

// A server on a fast line answers within microseconds. Waking a sleeping processor takes about as long as such an
// answer, so watching for it halves the time of a command. Where the answer takes longer, on a slow line or because
// others need the processors, watching only takes away what the server could use: after each time in vain twice as many
// waits sleep at once.
class Watch {
public:
    // Delivers the first event that comes within its time. False if none has come, or if it was not worth a try.
    bool SeesEvent()
    {
        if (waitsToSleep > 0) {
            --waitsToSleep;
            return false;
        }
        const QDeadlineTimer end(std::chrono::microseconds(200));
        bool seen = false;
        do
            seen = DeliverPending();
        while (!seen && !end.hasExpired());
        // Others may have had the processor for most of the time.
        const bool paid = seen && !end.hasExpired();
        timesInVain = paid ? 0 : std::min(timesInVain + 1, mostDoublings);
        waitsToSleep = paid ? 0 : 1 << timesInVain;
        return seen;
    }

private:
    static constexpr int mostDoublings = 6;

    int timesInVain = 0; // in a row
    int waitsToSleep = 0;
};

}

void DoEvents()
{
    constexpr int mostPasses = 16;
    for (int pass = 0; pass < mostPasses && DeliverPending(); ++pass) { }
}

void WaitForEvents()
{
    static Watch watch;
    if (!watch.SeesEvent())
        DeliverPending(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

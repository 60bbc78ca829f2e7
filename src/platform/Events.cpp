#include "platform/Events.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>

namespace {

// Counts what is delivered, since not every dispatcher reports a pass that delivered nothing but posted events.
class Deliveries : public QObject {
public:
    Deliveries()
        : QObject(QCoreApplication::instance())
    {
        parent()->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent*) override
    {
        ++count;
        return false;
    }

    quint64 count = 0;
};

// A server on a fast line answers within this time. Waking a sleeping processor takes about as long as such an
// answer, so watching for it halves the time of a command.
constexpr qint64 watchNanoseconds = 200'000;

}

void DoEvents() { QCoreApplication::processEvents(QEventLoop::AllEvents); }

void WaitForEvents()
{
    static QPointer<Deliveries> deliveries;
    if (!deliveries)
        deliveries = new Deliveries;
    const quint64 before = deliveries->count;
    QAbstractEventDispatcher* dispatcher = QCoreApplication::eventDispatcher();
    QElapsedTimer watch;
    watch.start();
    do {
        if (dispatcher->processEvents(QEventLoop::AllEvents) || deliveries->count != before)
            return;
    } while (watch.nsecsElapsed() < watchNanoseconds);
    dispatcher->processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

#include "platform/Events.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>

namespace {

// A server on a fast line answers within this time. Waking a sleeping processor takes about as long as such an
// answer, so watching for it halves the time of a command.
constexpr qint64 watchNanoseconds = 200'000;

}

void DoEvents() { QCoreApplication::processEvents(QEventLoop::AllEvents); }

void WaitForEvents()
{
    QAbstractEventDispatcher* dispatcher = QCoreApplication::eventDispatcher();
    QElapsedTimer watch;
    watch.start();
    do {
        if (dispatcher->processEvents(QEventLoop::AllEvents))
            return;
    } while (watch.nsecsElapsed() < watchNanoseconds);
    dispatcher->processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

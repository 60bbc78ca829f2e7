#include "platform/Timer.h"

#include "platform/Control.h"

#include <QTimer>

Timer::Timer(std::chrono::milliseconds interval)
    : timer(std::make_unique<QTimer>())
{
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(interval);
    QObject::connect(timer.get(), &QTimer::timeout, timer.get(), [this] { Raise(Tick); });
}

Timer::~Timer() = default;

bool Timer::Enabled() const { return timer->isActive(); }

void Timer::SetEnabled(bool enabled)
{
    if (!enabled)
        timer->stop();
    else if (!timer->isActive())
        timer->start();
}

void Timer::SetInterval(std::chrono::milliseconds interval) { timer->setInterval(interval); }

#include "platform/Notification.h"

#include "platform/Control.h"
#include "platform/SessionBus.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

// The Desktop Notifications Specification, version 1.2.
const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
const QString openAction = QStringLiteral("open");

}

Notification::Notification()
{
    (void)SessionBus().connect(
        service, path, service, QStringLiteral("ActionInvoked"), this, SLOT(Invoked(uint, QString)));
}

void Notification::Show(
    const QString& title, const QString& text, const QString& button, std::function<void()> whenPressed)
{
    pressed = std::move(whenPressed);
    if (!SessionBus().isConnected())
        return;
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, service, QStringLiteral("Notify"));
    const QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("tamarack")}};
    constexpr int asTheServiceLikes = -1;
    call << QStringLiteral("Tamarack") << number << QStringLiteral("tamarack") << title << text.toHtmlEscaped()
         << QStringList{openAction, button} << hints << asTheServiceLikes;
    auto* watcher = new QDBusPendingCallWatcher(SessionBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> reply = *watcher;
        number = reply.isValid() ? reply.value() : 0;
    });
}

// Some services tell everybody of everybody's notes.
void Notification::Invoked(uint which, const QString& action)
{
    if (which == number && action == openAction)
        Raise(pressed);
}

#include "platform/Control.h"
#include "platform/Desktop.h"
#include "platform/DisplayText.h"
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

// The program's note among those that the desktop shows: one at a time, a newer one in its place.
class Notification : public QObject {
    Q_OBJECT

public:
    Notification()
    {
        (void)SessionBus().connect(
            service, path, service, QStringLiteral("ActionInvoked"), this, SLOT(Invoked(uint, QString)));
    }

    void Show(const QString& title, const QString& text, const QString& button, std::function<void()> whenPressed)
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

private slots:
    // Some services tell everybody of everybody's notes.
    void Invoked(uint which, const QString& action)
    {
        if (which == number && action == openAction)
            Raise(pressed);
    }

private:
    std::function<void()> pressed; // by its button
    uint number = 0; // by which the service knows it
};

void Desktop::Notify(
    std::string_view title, std::string_view text, std::string_view button, std::function<void()> pressed)
{
    if (!notification)
        notification = std::make_shared<Notification>();
    notification->Show(ToDisplay(title), ToDisplay(text), ToDisplay(button), std::move(pressed));
}

#include "Notification.moc"

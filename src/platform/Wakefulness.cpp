#include "platform/Desktop.h"

#include "platform/DisplayText.h"
#include "platform/SessionBus.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QList>

namespace {

// Who can be asked, and how it is told that it may let go: a call of its own, or the end of a descriptor.
struct Keeper {
    QDBusConnection (*bus)();
    QDBusMessage request;
    QDBusMessage release; // without the arguments that the reply brings
};

QDBusMessage Call(const char* service, const char* path, const char* interface, const char* method, QVariantList values)
{
    QDBusMessage message = QDBusMessage::createMethodCall(QString::fromLatin1(service), QString::fromLatin1(path),
        QString::fromLatin1(interface), QString::fromLatin1(method));
    message.setArguments(values);
    return message;
}

QList<Keeper> KeepersOf(KeptAwake what, const QString& reason)
{
    const QString program = QStringLiteral("Tamarack");
    if (what == KeptAwake::Screen) {
        constexpr const char* name = "org.freedesktop.ScreenSaver";
        constexpr const char* path = "/org/freedesktop/ScreenSaver";
        return {{SessionBus, Call(name, path, name, "Inhibit", {program, reason}),
            Call(name, path, name, "UnInhibit", {})}};
    }
    constexpr const char* portal = "org.freedesktop.portal.Desktop";
    constexpr const char* power = "org.freedesktop.PowerManagement";
    constexpr const char* powerPath = "/org/freedesktop/PowerManagement/Inhibit";
    constexpr const char* powerInhibit = "org.freedesktop.PowerManagement.Inhibit";
    constexpr unsigned suspending = 4; // of the portal's flags
    return {{SessionBus,
                Call(portal, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Inhibit", "Inhibit",
                    {QString(), suspending, QVariantMap{{QStringLiteral("reason"), reason}}}),
                Call(portal, "", "org.freedesktop.portal.Request", "Close", {})},
        {SessionBus, Call(power, powerPath, powerInhibit, "Inhibit", {program, reason}),
            Call(power, powerPath, powerInhibit, "UnInhibit", {})},
        // What is blocked is what happens when nobody does anything; who closes the lid means it.
        {QDBusConnection::systemBus,
            Call("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "Inhibit",
                {QStringLiteral("idle"), program, reason, QStringLiteral("block")}),
            {}}};
}

// Asks one after the other until one agrees. No call waits for its reply.
class Wakefulness : public QObject {
public:
    Wakefulness(KeptAwake what, const QString& reason)
        : keepers(KeepersOf(what, reason))
    {
        AskNext();
    }

    // Deletes itself, behind the reply that may still be on its way.
    void LetGo()
    {
        if (asking) {
            isWanted = false;
            return;
        }
        if (!keepers.isEmpty() && keepers.front().release.type() == QDBusMessage::MethodCallMessage)
            (void)keepers.front().bus().send(keepers.front().release);
        deleteLater();
    }

private:
    void AskNext()
    {
        while (!keepers.isEmpty() && !keepers.front().bus().isConnected())
            keepers.removeFirst();
        if (keepers.isEmpty())
            return;
        asking = true;
        auto* watcher = new QDBusPendingCallWatcher(keepers.front().bus().asyncCall(keepers.front().request), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
            watcher->deleteLater();
            Take(watcher->reply());
        });
    }

    void Take(const QDBusMessage& reply)
    {
        asking = false;
        if (reply.type() == QDBusMessage::ErrorMessage) {
            keepers.removeFirst();
            if (isWanted)
                AskNext();
            else
                keepers.clear();
        } else {
            NoteHandle(reply.arguments().value(0));
        }
        if (!isWanted && !asking)
            LetGo();
    }

    // By which the keeper knows the request again.
    void NoteHandle(const QVariant& handle)
    {
        QDBusMessage& release = keepers.front().release;
        if (handle.canConvert<QDBusUnixFileDescriptor>())
            descriptor = handle.value<QDBusUnixFileDescriptor>();
        else if (handle.canConvert<QDBusObjectPath>())
            release = QDBusMessage::createMethodCall(
                release.service(), handle.value<QDBusObjectPath>().path(), release.interface(), release.member());
        else
            release.setArguments({handle});
    }

    QList<Keeper> keepers; // the first is the one that is asked, or that has agreed
    QDBusUnixFileDescriptor descriptor;
    bool asking = false;
    bool isWanted = true;
};

}

// Whoever was asked lets go by itself when this process ends.
std::shared_ptr<void> Desktop::KeepAwake(KeptAwake what, std::string_view reason)
{
    return {new Wakefulness(what, ToDisplay(reason)), [](Wakefulness* wakefulness) { wakefulness->LetGo(); }};
}

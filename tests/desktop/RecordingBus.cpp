#include "tests/desktop/RecordingBus.h"

#include <QDBusConnectionInterface>
#include <QDBusObjectPath>
#include <stdexcept>

namespace {

QDBusConnection StartBus(QProcess& daemon)
{
    daemon.start(QStringLiteral("dbus-daemon"), {"--session", "--nofork", "--nopidfile", "--print-address"});
    if (!daemon.waitForReadyRead())
        throw std::runtime_error("dbus-daemon does not start");
    const QByteArray address = daemon.readLine().trimmed();
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    return QDBusConnection::connectToBus(QString::fromUtf8(address), QStringLiteral("recorder"));
}

std::string Text(const QDBusMessage& message)
{
    QStringList values;
    for (const QVariant& value : message.arguments()) {
        if (value.canConvert<QDBusArgument>()) {
            const QVariantMap map = qdbus_cast<QVariantMap>(value);
            for (auto entry = map.begin(); entry != map.end(); ++entry)
                values += entry.key() + '=' + entry.value().toString();
        } else {
            values += value.typeId() == QMetaType::QStringList ? value.toStringList().join('|') : value.toString();
        }
    }
    return (message.member() + '(' + values.join(QStringLiteral(", ")) + ')').toStdString();
}

}

RecordingBus::RecordingBus()
    : bus(StartBus(daemon))
{
    const bool ready = bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath)
        && bus.connect({}, {}, QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"), this,
            SLOT(Updated(QDBusMessage)));
    if (!ready)
        throw std::runtime_error("the bus cannot be used");
}

RecordingBus::~RecordingBus()
{
    daemon.kill();
    daemon.waitForFinished();
}

void RecordingBus::Offer(const char* name)
{
    if (!bus.registerService(QString::fromLatin1(name)))
        throw std::runtime_error("no such name on the bus");
}

void RecordingBus::Withdraw(const char* name) { bus.unregisterService(QString::fromLatin1(name)); }

bool RecordingBus::IsOnBus(const QString& sender) const { return bus.interface()->isServiceRegistered(sender); }

void RecordingBus::Press(uint note, const QString& action)
{
    QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("ActionInvoked"));
    bus.send(signal << note << action);
}

bool RecordingBus::handleMessage(const QDBusMessage& message, const QDBusConnection& from)
{
    record.push_back(Text(message));
    lastSender = message.service();
    const QVariant handle = message.interface().contains(QStringLiteral("portal"))
        ? QVariant::fromValue(QDBusObjectPath(QStringLiteral("/request/7")))
        : QVariant(7U);
    return from.send(message.createReply(handle));
}

void RecordingBus::Updated(const QDBusMessage& signal) { record.push_back(Text(signal)); }

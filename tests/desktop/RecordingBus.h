#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QProcess>

#include <stdexcept>
#include <string>
#include <vector>

// A session bus of the test's own, which this process and those that it starts take for that of the desktop, and on it
// the services that the desktop has: they do nothing but record what they are asked. One of a process.
class RecordingBus : public QDBusVirtualObject {
    Q_OBJECT

public:
    RecordingBus()
        : bus(StartBus())
    {
        if (!bus.registerVirtualObject("/", this, QDBusConnection::SubPath)
            || !bus.connect({}, {}, "com.canonical.Unity.LauncherEntry", "Update", this, SLOT(Record(QDBusMessage))))
            throw std::runtime_error("the bus cannot be used");
    }
    ~RecordingBus() override
    {
        daemon.kill();
        daemon.waitForFinished();
    }

    // The service of a name begins, or ends.
    void Offer(const char* name)
    {
        if (!bus.registerService(name))
            throw std::runtime_error("no such name on the bus");
    }
    void Withdraw(const char* name) { bus.unregisterService(name); }

    // What came so far, such as "Inhibit(Tamarack, Searching ...)"; the launcher's signals too.
    std::vector<std::string> record;

    // Presses a note's button.
    void Press(uint note, const QString& action)
    {
        QDBusMessage signal = QDBusMessage::createSignal(
            "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "ActionInvoked");
        bus.send(signal << note << action);
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& from) override
    {
        Record(message);
        const bool isPortal = message.interface().contains("portal");
        const auto handle = isPortal ? QVariant::fromValue(QDBusObjectPath("/request/7")) : QVariant(7U);
        return from.send(message.createReply(handle));
    }

private slots:
    void Record(const QDBusMessage& message)
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
        record.push_back((message.member() + '(' + values.join(", ") + ')').toStdString());
    }

private:
    QDBusConnection StartBus()
    {
        daemon.start("dbus-daemon", {"--session", "--nofork", "--nopidfile", "--print-address"});
        if (!daemon.waitForReadyRead())
            throw std::runtime_error("dbus-daemon does not start");
        const QByteArray address = daemon.readLine().trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        return QDBusConnection::connectToBus(address, "recorder");
    }

    QProcess daemon;
    QDBusConnection bus;
};

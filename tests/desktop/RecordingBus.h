#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>

#include <string>
#include <vector>

// A session bus of the test's own, which this process and those that it starts take for that of the desktop, and on it
// the services that the desktop has: they do nothing but record what they are asked. One of a process.
class RecordingBus : public QDBusVirtualObject {
    Q_OBJECT

public:
    RecordingBus();
    ~RecordingBus() override;

    // The service of a name begins, or ends.
    void Offer(const char* name);
    void Withdraw(const char* name);

    // What came so far, such as "Inhibit(Tamarack, Searching ...)"; the launcher's signals too.
    std::vector<std::string> record;

    // Who has called last.
    QString lastSender;
    bool IsOnBus(const QString& sender) const;

    // Presses a note's button.
    void Press(uint note, const QString& action);

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& from) override;

private slots:
    void Updated(const QDBusMessage& signal);

private:
    QProcess daemon;
    QDBusConnection bus;
};

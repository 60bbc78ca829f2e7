#include "platform/SessionBus.h"

#include <QFile>
#include <QStandardPaths>

QDBusConnection SessionBus()
{
    const QString usual = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/bus");
    const bool isThere = qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") || QFile::exists(usual);
    return isThere ? QDBusConnection::sessionBus() : QDBusConnection(QString());
}

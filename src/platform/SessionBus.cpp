#include "platform/SessionBus.h"

#include <QFile>

QDBusConnection SessionBus()
{
    const bool isThere = qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")
        || QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
    return isThere ? QDBusConnection::sessionBus() : QDBusConnection(QString());
}

#include "platform/Desktop.h"

#include "platform/SessionBus.h"

#include <QDBusMessage>

// What docks and task managers read: com.canonical.Unity.LauncherEntry, a signal from any path below
// /com/canonical/unity.
void Desktop::ShowProgress(double share)
{
    QDBusMessage update = QDBusMessage::createSignal(QStringLiteral("/com/canonical/unity/launcherentry/tamarack"),
        QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"));
    update << QStringLiteral("application://tamarack.desktop")
           << QVariantMap{{QStringLiteral("progress"), qBound(0.0, share, 1.0)},
                  {QStringLiteral("progress-visible"), share >= 0}};
    if (QDBusConnection bus = SessionBus(); bus.isConnected())
        (void)bus.send(update);
}

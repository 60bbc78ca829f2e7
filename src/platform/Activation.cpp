#include "platform/Activation.h"

#include "platform/SessionBus.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>

namespace {

// As the desktop entry is called, and the path that goes with it (Desktop Entry Specification, "D-Bus Activation").
const QString service = QStringLiteral("org.tamarack.Tamarack");
const QString path = QStringLiteral("/org/tamarack/Tamarack");
const QString interface = QStringLiteral("org.freedesktop.Application");

}

class Activation::Listener : public QDBusVirtualObject {
public:
    explicit Listener(std::function<void()> newActivated)
        : activated(std::move(newActivated))
    {
        QDBusConnection bus = SessionBus();
        if (bus.isConnected() && bus.registerVirtualObject(path, this))
            (void)bus.registerService(service);
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        if (message.interface() != interface || message.member() != QStringLiteral("Activate"))
            return false;
        (void)bus.send(message.createReply());
        QMetaObject::invokeMethod(this, activated, Qt::QueuedConnection);
        return true;
    }

private:
    const std::function<void()> activated;
};

Activation::Activation(std::function<void()> activated)
    : listener(std::make_unique<Listener>(std::move(activated)))
{
}

Activation::~Activation() = default;

void Activation::ActivateFirst()
{
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Activate"));
    call << QVariantMap();
    // None is started for it: who calls is the second one.
    call.setAutoStartService(false);
    if (QDBusConnection bus = SessionBus(); bus.isConnected())
        (void)bus.send(call);
}

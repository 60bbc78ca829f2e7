#include "platform/Activation.h"

#include "platform/SessionBus.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>

namespace {

// As the desktop entry is called, and the path that goes with it (Desktop Entry Specification, "D-Bus Activation").
const QString service = QStringLiteral("org.tamarack.Tamarack");
const QString path = QStringLiteral("/org/tamarack/Tamarack");
const QString interface = QStringLiteral("org.freedesktop.Application");

class Listener : public QDBusVirtualObject {
public:
    explicit Listener(std::function<void(const std::string&)> newActivated)
        : activated(std::move(newActivated))
    {
        QDBusConnection bus = SessionBus();
        if (bus.isConnected() && bus.registerVirtualObject(path, this))
            (void)bus.registerService(service);
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        const bool isAction = message.member() == QStringLiteral("ActivateAction");
        if (message.interface() != interface || (!isAction && message.member() != QStringLiteral("Activate")))
            return false;
        (void)bus.send(message.createReply());
        const std::string action = isAction ? message.arguments().value(0).toString().toStdString() : std::string();
        QMetaObject::invokeMethod(
            this, [this, action] { activated(action); }, Qt::QueuedConnection);
        return true;
    }

private:
    const std::function<void(const std::string&)> activated;
};

}

std::shared_ptr<void> Activation::Await(std::function<void(const std::string&)> activated)
{
    return std::make_shared<Listener>(std::move(activated));
}

void Activation::ActivateFirst()
{
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Activate"));
    call << QVariantMap();
    // None is started for it: who calls is the second one.
    call.setAutoStartService(false);
    if (QDBusConnection bus = SessionBus(); bus.isConnected())
        (void)bus.send(call);
}

#include "platform/Control.h"
#include "platform/DisplayText.h"

#include <QAbstractScrollArea>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QUrl>

namespace {

Dragged ContentOf(const QMimeData& data)
{
    Dragged content{FromDisplay(data.text()), {}};
    for (const QUrl& address : data.urls()) {
        if (address.isLocalFile())
            content.paths.push_back(QFile::encodeName(address.toLocalFile()).toStdString());
    }
    return content;
}

class DropTaker : public QObject {
public:
    DropTaker(QWidget* area, std::function<bool(const Dragged&)> newMeans, std::function<void(const Dragged&)> newTake)
        : QObject(area)
        , means(std::move(newMeans))
        , take(std::move(newTake))
    {
        area->setAcceptDrops(true);
        area->installEventFilter(this);
    }

    bool eventFilter(QObject* area, QEvent* event) override
    {
        if (event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove && event->type() != QEvent::Drop)
            return false;
        auto& drop = static_cast<QDropEvent&>(*event);
        const Dragged content = ContentOf(*drop.mimeData());
        const bool taken = static_cast<QWidget*>(area)->isEnabled() && means(content);
        // Whatever it is, it stays where it comes from.
        drop.setDropAction(Qt::CopyAction);
        drop.setAccepted(taken);
        if (taken && event->type() == QEvent::Drop)
            take(content);
        return true;
    }

private:
    const std::function<bool(const Dragged&)> means;
    const std::function<void(const Dragged&)> take;
};

}

void Control::TakeDrops(std::function<bool(const Dragged&)> means, std::function<void(const Dragged&)> take)
{
    auto* area = qobject_cast<QAbstractScrollArea*>(widget);
    new DropTaker(area != nullptr ? area->viewport() : widget, std::move(means), std::move(take));
}

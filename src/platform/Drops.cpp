#include "platform/Control.h"
#include "platform/DisplayText.h"
#include "platform/EventFilter.h"

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

}

void Control::TakeDrops(
    const std::function<bool(const Dragged&)>& means, const std::function<void(const Dragged&)>& take)
{
    auto* scrolled = qobject_cast<QAbstractScrollArea*>(widget);
    QWidget* const area = scrolled != nullptr ? scrolled->viewport() : widget;
    area->setAcceptDrops(true);
    new EventFilter(area, [=](QEvent& event) {
        if (event.type() != QEvent::DragEnter && event.type() != QEvent::DragMove && event.type() != QEvent::Drop)
            return false;
        auto& drop = static_cast<QDropEvent&>(event);
        const Dragged content = ContentOf(*drop.mimeData());
        const bool taken = area->isEnabled() && means(content);
        // Whatever it is, it stays where it comes from.
        drop.setDropAction(Qt::CopyAction);
        drop.setAccepted(taken);
        if (taken && event.type() == QEvent::Drop)
            take(content);
        return true;
    });
}

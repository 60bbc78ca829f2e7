#include "platform/Control.h"
#include "platform/DisplayText.h"
#include "platform/EventFilter.h"

#include <QAbstractScrollArea>
#include <QContextMenuEvent>
#include <QMenu>

namespace {

void Open(QWidget* area, const QPoint& place, const std::vector<ContextEntry>& offered)
{
    QMenu menu(area);
    for (const ContextEntry& entry : offered)
        menu.addAction(ToDisplay(entry.caption))->setEnabled(entry.enabled);
    const auto chosen = menu.actions().indexOf(menu.exec(place));
    if (chosen >= 0)
        offered[static_cast<std::size_t>(chosen)].chosen();
}

void OfferMenu(QWidget* area, const std::function<std::vector<ContextEntry>()>& entries)
{
    new EventFilter(area, [area, entries](const QEvent& event) {
        if (event.type() != QEvent::ContextMenu)
            return false;
        const auto& asked = static_cast<const QContextMenuEvent&>(event);
        if (!(asked.modifiers() & Qt::ControlModifier))
            Open(area, asked.globalPos(), entries());
        return true;
    });
}

}

void Control::SetContextMenu(const std::function<std::vector<ContextEntry>()>& entries)
{
    auto* area = qobject_cast<QAbstractScrollArea*>(widget);
    OfferMenu(area != nullptr ? area->viewport() : widget, entries);
    // The menu key opens it where the focus is.
    if (area != nullptr)
        OfferMenu(widget, entries);
}

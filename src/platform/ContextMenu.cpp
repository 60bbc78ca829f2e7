#include "platform/Control.h"
#include "platform/DisplayText.h"

#include <QAbstractScrollArea>
#include <QContextMenuEvent>
#include <QMenu>

namespace {

class MenuOpener : public QObject {
public:
    MenuOpener(QWidget* area, std::function<std::vector<ContextEntry>()> newEntries)
        : QObject(area)
        , entries(std::move(newEntries))
    {
        area->installEventFilter(this);
    }

    bool eventFilter(QObject* area, QEvent* event) override
    {
        if (event->type() != QEvent::ContextMenu)
            return false;
        const auto& asked = static_cast<const QContextMenuEvent&>(*event);
        if (asked.modifiers() & Qt::ControlModifier)
            return true;
        Open(static_cast<QWidget*>(area), asked.globalPos());
        return true;
    }

private:
    void Open(QWidget* area, const QPoint& place) const
    {
        QMenu menu(area);
        // Copies, since a handler may close the window.
        const std::vector<ContextEntry> offered = entries();
        for (const ContextEntry& entry : offered)
            menu.addAction(ToDisplay(entry.caption))->setEnabled(entry.enabled);
        const auto chosen = menu.actions().indexOf(menu.exec(place));
        if (chosen >= 0)
            offered[static_cast<std::size_t>(chosen)].chosen();
    }

    const std::function<std::vector<ContextEntry>()> entries;
};

}

void Control::SetContextMenu(std::function<std::vector<ContextEntry>()> entries)
{
    auto* area = qobject_cast<QAbstractScrollArea*>(widget);
    new MenuOpener(area != nullptr ? area->viewport() : widget, entries);
    // The menu key opens it where the focus is.
    if (area != nullptr)
        new MenuOpener(widget, std::move(entries));
}

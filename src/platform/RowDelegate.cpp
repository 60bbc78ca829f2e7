#include "platform/RowTip.h"

#include "platform/DisplayText.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QToolTip>

bool ShowRowTip(const QHelpEvent& event, QAbstractItemView& list, const QModelIndex& row, int width)
{
    if (event.type() != QEvent::ToolTip || !row.isValid() || width <= list.viewport()->width())
        return false;
    QToolTip::showText(event.globalPos(), ToToolTip(row.data().toString()), list.viewport(), list.visualRect(row));
    return true;
}

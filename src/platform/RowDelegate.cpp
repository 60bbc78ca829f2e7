#include "platform/RowDelegate.h"

#include "platform/DisplayText.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QToolTip>

namespace {

int Indentation(const QStyleOptionViewItem& option, const QModelIndex& row)
{
    return row.data(RowDelegate::levelRole).toInt() * option.fontMetrics.height() / 2;
}

}

QSize RowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& row) const
{
    return QStyledItemDelegate::sizeHint(option, row) + QSize(Indentation(option, row), 0);
}

bool RowDelegate::helpEvent(
    QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option, const QModelIndex& row)
{
    if (event->type() != QEvent::ToolTip || !row.isValid()
        || RowDelegate::sizeHint(option, row).width() <= view->viewport()->width())
        return QStyledItemDelegate::helpEvent(event, view, option, row);
    QToolTip::showText(event->globalPos(), ToToolTip(row.data().toString()), view->viewport(), view->visualRect(row));
    return true;
}

void RowDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& row) const
{
    QStyledItemDelegate::initStyleOption(option, row);
    option->rect.setLeft(option->rect.left() + Indentation(*option, row));
}

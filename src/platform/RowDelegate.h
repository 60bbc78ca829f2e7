#pragma once

#include "platform/DisplayText.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QStyledItemDelegate>
#include <QToolTip>

// Draws the rows of a list, each level set in a little from the one above, and tells the whole text of a row that is
// wider than the list in a tool tip. For platform/ alone.
class RowDelegate : public QStyledItemDelegate {
public:
    static constexpr int levelRole = Qt::UserRole; // of a row; 0 if it has none

    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& row) const override
    {
        return QStyledItemDelegate::sizeHint(option, row) + QSize(Indentation(option, row), 0);
    }

    bool helpEvent(
        QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option, const QModelIndex& row) override
    {
        if (event->type() != QEvent::ToolTip || !row.isValid()
            || RowDelegate::sizeHint(option, row).width() <= view->viewport()->width())
            return QStyledItemDelegate::helpEvent(event, view, option, row);
        const QString tip = ToToolTip(row.data().toString());
        QToolTip::showText(event->globalPos(), tip, view->viewport(), view->visualRect(row));
        return true;
    }

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& row) const override
    {
        QStyledItemDelegate::initStyleOption(option, row);
        option->rect.setLeft(option->rect.left() + Indentation(*option, row));
    }

private:
    static int Indentation(const QStyleOptionViewItem& option, const QModelIndex& row)
    {
        return row.data(levelRole).toInt() * option.fontMetrics.height() / 2;
    }
};

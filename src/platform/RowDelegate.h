#pragma once

#include <QStyledItemDelegate>

// Draws the rows of a list, each level set in a little from the one above, and tells the whole text of a row that is
// wider than the list in a tool tip. For platform/ alone.
class RowDelegate : public QStyledItemDelegate {
public:
    static constexpr int levelRole = Qt::UserRole; // of a row; 0 if it has none

    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& row) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
        const QModelIndex& row) override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& row) const override;
};

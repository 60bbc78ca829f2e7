#include "platform/ListBox.h"

#include "base/Text.h"
#include "platform/DisplayText.h"
#include "platform/RowDelegate.h"

#include <QAbstractListModel>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QListView>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>
#include <algorithm>
#include <chrono>

namespace {

// A sorted list that is on screen while it grows is brought up to date this often.
constexpr std::chrono::milliseconds refreshInterval{50};

const std::string noText;

}

// The rows that the view knows, and those that were added to a sorted list since.
class ListBox::Rows : public QAbstractListModel {
public:
    int rowCount(const QModelIndex& parent) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(rows.size());
    }

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (role != Qt::DisplayRole || !index.isValid())
            return {};
        return ToShow(rows.at(static_cast<std::size_t>(index.row())));
    }

    void Add(std::string_view text)
    {
        NoteLength(text);
        additions.emplace_back(text);
    }

    void Insert(std::vector<std::string> texts, int index)
    {
        for (const std::string& text : texts)
            NoteLength(text);
        beginInsertRows({}, index, index + static_cast<int>(texts.size()) - 1);
        rows.insert(rows.begin() + index, std::make_move_iterator(texts.begin()), std::make_move_iterator(texts.end()));
        endInsertRows();
    }

    void Remove(int index)
    {
        beginRemoveRows({}, index, index);
        rows.erase(rows.begin() + index);
        endRemoveRows();
    }

    // All in one pass.
    std::vector<std::string> Take(const std::vector<bool>& isTaken)
    {
        std::vector<std::string> taken, kept;
        beginResetModel();
        for (std::size_t index = 0; index < rows.size(); ++index)
            (isTaken[index] ? taken : kept).push_back(std::move(rows[index]));
        rows = std::move(kept);
        endResetModel();
        return taken;
    }

    void Clear()
    {
        beginResetModel();
        rows.clear();
        additions.clear();
        longest.clear();
        endResetModel();
    }

    // Brings the additions behind the rows, and then each of both to its place.
    void Merge()
    {
        std::sort(additions.begin(), additions.end(), SortsBefore);
        const int oldSize = rowCount({});
        Insert(std::exchange(additions, {}), oldSize);
        const auto added = rows.begin() + oldSize;
        emit layoutAboutToBeChanged();
        const QModelIndexList before = persistentIndexList();
        QModelIndexList after;
        for (const QModelIndex& row : before) {
            const std::string& text = rows[static_cast<std::size_t>(row.row())];
            const auto place = std::lower_bound(added, rows.end(), text, SortsBefore);
            after.append(index(row.row() + static_cast<int>(place - added)));
        }
        changePersistentIndexList(before, after);
        std::inplace_merge(rows.begin(), added, rows.end(), SortsBefore);
        emit layoutChanged();
    }

    std::vector<std::string> rows;
    std::vector<std::string> additions;
    std::string longest;

private:
    void NoteLength(std::string_view text)
    {
        if (text.size() > longest.size())
            longest = text;
    }
};

class ListBox::View : public QListView {
public:
    explicit View(ListBox& ownerBox)
        : box(ownerBox)
    {
        setModel(&rows);
        setItemDelegate(new UniformRowDelegate(rows, this));
        setUniformItemSizes(true);
        setEditTriggers(NoEditTriggers);
        setHorizontalScrollMode(ScrollPerPixel);
        refreshTimer.setSingleShot(true);
        connect(&refreshTimer, &QTimer::timeout, this, [this] {
            // Hidden by the program, which is filling it; not by lying on another tab.
            if (box.Visible())
                BringUpToDate();
            else
                refreshTimer.start(refreshInterval);
        });
        connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this](const QModelIndex& current) {
            if (!quiet && current.isValid())
                Raise(box.Click);
        });
        connect(this, &QListView::doubleClicked, this, [this] { Raise(box.DblClick); });
    }

    void ExpectAdditions()
    {
        if (refreshTimer.isActive())
            return;
        const bool shownJustNow = sinceRefresh.isValid() && !sinceRefresh.hasExpired(refreshInterval.count());
        refreshTimer.start(shownJustNow ? refreshInterval : std::chrono::milliseconds(0));
    }

    // Merges what was added to a sorted list, with the current and the highlighted rows kept.
    void BringUpToDate()
    {
        if (rows.additions.empty())
            return;
        sinceRefresh.start();
        rows.Merge();
        currentChanged(currentIndex(), {}); // it stays in sight
    }

    void RemoveQuietly(int index)
    {
        const bool wasCurrent = currentIndex().row() == index;
        quiet = true;
        rows.Remove(index);
        if (wasCurrent)
            selectionModel()->clearCurrentIndex();
        quiet = false;
    }

    // Each row that was highlighted by itself is a range of its own to the widget: they are taken as a whole.
    std::vector<std::string> TakeHighlightedRows()
    {
        if (!selectionModel()->hasSelection())
            return {};
        std::vector<bool> highlighted(rows.rows.size());
        for (const QItemSelectionRange& range : selectionModel()->selection())
            std::fill_n(highlighted.begin() + range.top(), range.height(), true);
        const int current = currentIndex().row();
        const int place = verticalScrollBar()->value();
        quiet = true;
        std::vector<std::string> taken = rows.Take(highlighted);
        if (current >= 0 && !highlighted[static_cast<std::size_t>(current)]) {
            const auto above = std::count(highlighted.begin(), highlighted.begin() + current, true);
            const QModelIndex row = rows.index(current - static_cast<int>(above));
            selectionModel()->setCurrentIndex(row, QItemSelectionModel::NoUpdate);
        }
        verticalScrollBar()->setValue(place);
        quiet = false;
        return taken;
    }

    Rows rows;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QListView::paintEvent(event);
        if (!rows.rows.empty() || !rows.additions.empty())
            return;
        constexpr int margin = 4;
        QPainter painter(viewport());
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(viewport()->rect().adjusted(margin, margin, -margin, -margin),
            Qt::AlignCenter | Qt::TextWordWrap, ToDisplay(box.style.hint));
    }

    void showEvent(QShowEvent* event) override
    {
        BringUpToDate();
        QListView::showEvent(event);
    }

    void focusInEvent(QFocusEvent* event) override
    {
        const bool hadCurrent = currentIndex().isValid();
        quiet = true;
        QListView::focusInEvent(event);
        if (!hadCurrent)
            selectionModel()->clearCurrentIndex();
        quiet = false;
    }

    // The widget knows double clicks on rows only, and of any button.
    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        if (event->button() != Qt::LeftButton)
            return;
        const bool onNoRow = !indexAt(event->pos()).isValid() && !currentIndex().isValid();
        QListView::mouseDoubleClickEvent(event);
        if (onNoRow)
            Raise(box.DblClick);
    }

    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            Raise(box.DblClick);
        else if (event->key() == Qt::Key_Delete && event->modifiers() == Qt::NoModifier && box.DeleteKey)
            Raise(box.DeleteKey);
        else
            QListView::keyPressEvent(event);
    }

private:
    // All rows have the height of one line and the width of the longest text, so that the view need not measure each
    // and long names can be scrolled into sight.
    class UniformRowDelegate : public RowDelegate {
    public:
        UniformRowDelegate(const Rows& allRows, QObject* parent)
            : RowDelegate(parent)
            , rows(allRows)
        {
        }

        QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override
        {
            constexpr int margin = 4;
            return {option.fontMetrics.horizontalAdvance(ToShow(rows.longest)) + 2 * margin,
                option.fontMetrics.height() + 2};
        }

    private:
        const Rows& rows;
    };

    ListBox& box;
    QTimer refreshTimer;
    QElapsedTimer sinceRefresh;
    bool quiet = false;
};

ListBox::ListBox(Container& container, std::string_view name, const Place& place, const ListStyle& newStyle)
    : Control(container, new View(*this), name, place)
    , style(newStyle)
{
    As<View>().setSelectionMode(
        style.extended ? QAbstractItemView::ExtendedSelection : QAbstractItemView::SingleSelection);
}

ListBox::View& ListBox::UpToDate() const
{
    As<View>().BringUpToDate();
    return As<View>();
}

void ListBox::AddItem(std::string_view text)
{
    if (!style.sorted) {
        InsertItem(text, ListCount());
        return;
    }
    ++revision;
    As<View>().rows.Add(text);
    As<View>().ExpectAdditions();
}

void ListBox::AddItems(const std::vector<std::string>& texts)
{
    if (texts.empty())
        return;
    ++revision;
    As<View>().rows.Insert(texts, ListCount());
}

void ListBox::InsertItem(std::string_view text, int index)
{
    ++revision;
    As<View>().rows.Insert({std::string(text)}, std::clamp(index, 0, ListCount()));
}

void ListBox::RemoveItem(int index)
{
    ++revision;
    if (UpToDate().rows.hasIndex(index, 0))
        As<View>().RemoveQuietly(index);
}

std::vector<std::string> ListBox::TakeSelected()
{
    ++revision;
    return UpToDate().TakeHighlightedRows();
}

void ListBox::Clear()
{
    ++revision;
    ++timesCleared;
    As<View>().rows.Clear();
}

int ListBox::ListCount() const
{
    const Rows& rows = As<View>().rows;
    return static_cast<int>(rows.rows.size() + rows.additions.size());
}

const std::string& ListBox::List(int index) const
{
    const Rows& rows = UpToDate().rows;
    return rows.hasIndex(index, 0) ? rows.rows[static_cast<std::size_t>(index)] : noText;
}

int ListBox::ListIndex() const { return UpToDate().currentIndex().row(); }

void ListBox::SetListIndex(int index)
{
    QItemSelectionModel& selection = *UpToDate().selectionModel();
    if (index < 0) {
        selection.clearCurrentIndex();
        if (!style.extended)
            selection.clearSelection();
    } else if (index < ListCount()) {
        selection.setCurrentIndex(As<View>().rows.index(index),
            style.extended ? QItemSelectionModel::NoUpdate : QItemSelectionModel::ClearAndSelect);
    }
}

void ListBox::SetSelected(int index, bool selected)
{
    View& view = UpToDate();
    if (!view.rows.hasIndex(index, 0))
        return;
    const QItemSelectionModel::SelectionFlags change = !selected ? QItemSelectionModel::Deselect
        : style.extended                                         ? QItemSelectionModel::Select
                                                                 : QItemSelectionModel::ClearAndSelect;
    view.selectionModel()->select(view.rows.index(index), change);
}

#include "platform/DirectoryList.h"

#include "base/Files.h"
#include "platform/DisplayText.h"
#include "platform/RowTip.h"

#include <QKeyEvent>
#include <QListWidget>
#include <QStyle>
#include <QStyledItemDelegate>
#include <filesystem>
#include <utility>

namespace {

constexpr int depthRole = Qt::UserRole;

// Each level is set in a little from the one above.
class TreeDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem indented = option;
        indented.rect.setLeft(option.rect.left() + Indentation(option, index));
        QStyledItemDelegate::paint(painter, indented, index);
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(Indentation(option, index), 0);
    }

    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
        const QModelIndex& index) override
    {
        return ShowRowTip(*event, *view, index, sizeHint(option, index).width());
    }

private:
    static int Indentation(const QStyleOptionViewItem& option, const QModelIndex& index)
    {
        return index.data(depthRole).toInt() * option.fontMetrics.height() / 2;
    }
};

std::string Cleaned(const std::string& path)
{
    std::error_code error;
    std::string clean = std::filesystem::absolute(path, error).lexically_normal().native();
    while (clean.size() > 1 && clean.ends_with('/'))
        clean.pop_back();
    return clean;
}

}

class DirectoryList::View : public QListWidget {
public:
    explicit View(DirectoryList& ownerList)
        : list(ownerList)
    {
        setItemDelegate(new TreeDelegate(this));
        setUniformItemSizes(true);
    }

    void AddRow(std::string_view name, int depth, bool open)
    {
        auto* row = new QListWidgetItem(
            style()->standardIcon(open ? QStyle::SP_DirOpenIcon : QStyle::SP_DirClosedIcon), ToShow(name), this);
        row->setData(depthRole, depth);
    }

    // Wherever the user has moved to.
    void ShowOpenRow() { setCurrentRow(OpenRow()); }

protected:
    // The second click of a double click would meet whatever row the first one has brought there.
    void mouseDoubleClickEvent(QMouseEvent*) override { secondClick = true; }

    void mouseReleaseEvent(QMouseEvent* event) override
    {
        if (std::exchange(secondClick, false))
            return;
        QListWidget::mouseReleaseEvent(event);
        if (event->button() == Qt::LeftButton && indexAt(event->pos()).isValid())
            Raise(list.Click);
    }

    void keyPressEvent(QKeyEvent* event) override
    {
        const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
        if (event->key() == Qt::Key_Backspace)
            setCurrentRow(std::max(OpenRow() - 1, 0));
        else if (!enter) {
            QListWidget::keyPressEvent(event);
            return;
        }
        if (currentRow() >= 0)
            Raise(list.Click);
    }

private:
    int OpenRow() const
    {
        return static_cast<int>(std::find(list.paths.begin(), list.paths.end(), list.path) - list.paths.begin());
    }

    DirectoryList& list;
    bool secondClick = false;
};

DirectoryList::DirectoryList(Container& container, std::string_view name, const Place& place)
    : Control(container, new View(*this), name, place)
{
    if (!SetPath(CurrentDirectory()))
        (void)SetPath("/");
}

DirectoryList::View& DirectoryList::DirectoryView() const { return *static_cast<View*>(widget); }

bool DirectoryList::SetPath(const std::string& newPath)
{
    const std::string opened = Cleaned(newPath);
    const auto names = NamesIn(opened, EntryKind::Directory);
    if (newPath.empty() || !names) {
        DirectoryView().ShowOpenRow();
        return false;
    }

    const bool another = opened != path;
    path = opened;
    paths.clear();
    View& view = DirectoryView();
    view.clear();
    int depth = 0;
    const auto add = [&](const std::string& name, const std::string& rowPath, bool open) {
        paths.push_back(rowPath);
        view.AddRow(name, depth, open);
    };
    std::string above;
    for (const std::filesystem::path& step : std::filesystem::path(opened)) {
        above = above.empty() ? step.native() : WithSeparator(above) + step.native();
        add(step.native(), above, true);
        ++depth;
    }
    view.setCurrentRow(view.count() - 1);
    for (const std::string& name : *names)
        add(name, WithSeparator(opened) + name, false);
    // The directories inside come into sight, and the open one stays there.
    view.scrollToItem(view.currentItem(), QAbstractItemView::PositionAtCenter);
    if (another)
        Raise(Change);
    return true;
}

std::string DirectoryList::List(int index) const
{
    return index >= 0 && index < ListCount() ? paths[static_cast<std::size_t>(index)] : std::string();
}

int DirectoryList::ListIndex() const { return DirectoryView().currentRow(); }

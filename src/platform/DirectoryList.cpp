#include "platform/DirectoryList.h"

#include "base/Files.h"
#include "platform/DisplayText.h"
#include "platform/RowDelegate.h"

#include <QKeyEvent>
#include <QListWidget>
#include <QStyle>
#include <filesystem>
#include <utility>

namespace {

constexpr int pathRole = RowDelegate::levelRole + 1;

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
        setItemDelegate(new RowDelegate(this));
        setUniformItemSizes(true);
    }

    void AddRow(const std::string& name, const std::string& path, int level, QStyle::StandardPixmap icon)
    {
        auto* row = new QListWidgetItem(style()->standardIcon(icon), ToShow(name), this);
        row->setData(RowDelegate::levelRole, level);
        row->setData(pathRole, QByteArray::fromStdString(path));
    }

    std::string PathOf(int row) const { return model()->index(row, 0).data(pathRole).toByteArray().toStdString(); }

    int openRow = -1;

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
            setCurrentRow(std::max(openRow - 1, 0));
        else if (!enter) {
            QListWidget::keyPressEvent(event);
            return;
        }
        if (currentRow() >= 0)
            Raise(list.Click);
    }

private:
    DirectoryList& list;
    bool secondClick = false;
};

DirectoryList::DirectoryList(Container& container, std::string_view name, const Place& place)
    : Control(container, new View(*this), name, place)
{
    if (!SetPath(CurrentDirectory()))
        (void)SetPath("/");
}

std::string DirectoryList::Path() const { return As<View>().PathOf(As<View>().openRow); }

bool DirectoryList::SetPath(const std::string& newPath)
{
    View& view = As<View>();
    const std::string opened = Cleaned(newPath);
    const auto names = NamesIn(opened, EntryKind::Directory);
    if (newPath.empty() || !names) {
        // Wherever the user has moved to.
        view.setCurrentRow(view.openRow);
        return false;
    }

    const bool another = opened != Path();
    view.clear();
    std::filesystem::path path;
    for (const std::filesystem::path& step : std::filesystem::path(opened)) {
        path /= step;
        view.AddRow(step.native(), path.native(), view.count(), QStyle::SP_DirOpenIcon);
    }
    view.openRow = view.count() - 1;
    view.setCurrentRow(view.openRow);
    for (const std::string& name : *names)
        view.AddRow(name, (path / name).native(), view.openRow + 1, QStyle::SP_DirClosedIcon);
    // The directories inside come into sight, and the open one stays there.
    view.scrollToItem(view.currentItem(), QAbstractItemView::PositionAtCenter);
    if (another)
        Raise(Change);
    return true;
}

std::string DirectoryList::List(int index) const { return As<View>().PathOf(index); }

int DirectoryList::ListIndex() const { return As<View>().currentRow(); }

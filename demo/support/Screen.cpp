#include "demo/support/Screen.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAction>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace {

QString Shown(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

[[noreturn]] void Refuse(std::string_view name, const char* reason)
{
    throw std::runtime_error(std::string(name) + " " + reason);
}

// The windows in the order in which a user would look at them: the modal one, the visible ones, the rest.
QList<QWidget*> Windows()
{
    QList<QWidget*> windows = QApplication::topLevelWidgets();
    const auto rank = [](const QWidget* window) {
        if (window == QApplication::activeModalWidget())
            return 0;
        return window->isVisible() ? 1 : 2;
    };
    std::stable_sort(windows.begin(), windows.end(), [&](auto* a, auto* b) { return rank(a) < rank(b); });
    return windows;
}

// A control may be shown and yet lie outside of the visible part of its container.
bool CanBeSeen(const QWidget& control)
{
    QRect part = control.rect();
    for (const QWidget* widget = &control; !widget->isWindow(); widget = widget->parentWidget())
        part = part.translated(widget->pos()) & widget->parentWidget()->rect();
    return control.isVisible() && !part.isEmpty();
}

// A control that the user can reach with the mouse now; its tab is brought to the front.
template <class T> T& Reach(std::string_view name)
{
    T& control = Find<T>(name);
    const QWidget* modal = QApplication::activeModalWidget();
    const QWindow* const window = control.window()->windowHandle();
    if (modal && control.window() != modal
        && !(window && modal->windowHandle()->isAncestorOf(window, QWindow::IncludeTransients)))
        Refuse(name, "lies behind a modal window");
    std::vector<std::pair<QTabWidget*, QWidget*>> tabs;
    for (QWidget* child = &control; child->parentWidget(); child = child->parentWidget()) {
        for (QWidget* above = child->parentWidget(); above; above = above->parentWidget()) {
            if (auto* strip = qobject_cast<QTabWidget*>(above); strip && strip->indexOf(child) >= 0)
                tabs.emplace_back(strip, child);
        }
    }
    for (auto tab = tabs.rbegin(); tab != tabs.rend(); ++tab)
        tab->first->setCurrentWidget(tab->second);
    if (!CanBeSeen(control))
        Refuse(name, "is not visible");
    return control;
}

// Check boxes and options take a click on their box and text only, and may be wider than that.
QPoint PlaceToClick(const QWidget& widget)
{
    const auto* button = qobject_cast<const QAbstractButton*>(&widget);
    if (!button || !button->isCheckable())
        return widget.rect().center();
    QStyleOptionButton option;
    option.initFrom(button);
    const auto part
        = qobject_cast<const QRadioButton*>(button) ? QStyle::SE_RadioButtonIndicator : QStyle::SE_CheckBoxIndicator;
    return button->style()->subElementRect(part, &option, button).center();
}

QAbstractItemModel& ModelOf(std::string_view list)
{
    QObject* control = ControlNamed(list);
    if (auto* combo = qobject_cast<QComboBox*>(control))
        return *combo->model();
    if (auto* view = qobject_cast<QAbstractItemView*>(control))
        return *view->model();
    Refuse(list, "is no list");
}

// The middle of a row's text, scrolled into view.
QPoint PlaceOfRow(QAbstractItemView& view, int row, std::string_view name)
{
    const QModelIndex index = view.model()->index(row, 0);
    if (!index.isValid())
        Refuse(name, ("has no row " + std::to_string(row)).c_str());
    view.scrollTo(index);
    const QRect place = view.visualRect(index) & view.viewport()->rect();
    return {place.left() + std::min(place.width() / 2, 20), place.center().y()};
}

}

QWidget* WindowNamed(std::string_view name)
{
    for (QWidget* window : Windows()) {
        if (window->objectName() == Shown(name))
            return window;
    }
    return nullptr;
}

QObject* ControlNamed(std::string_view name)
{
    const std::size_t slash = name.find('/');
    if (slash != name.npos) {
        QWidget* window = WindowNamed(name.substr(0, slash));
        return window ? window->findChild<QObject*>(Shown(name.substr(slash + 1))) : nullptr;
    }
    for (QWidget* window : Windows()) {
        if (window->objectName() == Shown(name))
            return window;
        if (auto* control = window->findChild<QObject*>(Shown(name)))
            return control;
    }
    return nullptr;
}

void Click(std::string_view name)
{
    auto& widget = Reach<QWidget>(name);
    QTest::mouseClick(&widget, Qt::LeftButton, {}, PlaceToClick(widget));
}

void Check(std::string_view name, bool checked)
{
    if (IsChecked(name) != checked)
        Click(name);
}

bool IsChecked(std::string_view name)
{
    QObject* control = ControlNamed(name);
    if (auto* action = qobject_cast<QAction*>(control))
        return action->isChecked();
    return Find<QAbstractButton>(name).isChecked();
}

void TypeInto(std::string_view name, std::string_view text)
{
    auto& field = Reach<QWidget>(name);
    if (!field.isEnabled())
        return;
    QTest::mouseClick(&field, Qt::LeftButton, {}, PlaceToClick(field));
    QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&field, Qt::Key_Delete);
    // keyClicks() takes Latin-1 letters only.
    for (const QChar letter : Shown(text))
        QTest::sendKeyEvent(QTest::Click, &field, Qt::Key_unknown, QString(letter), Qt::NoModifier);
}

std::string TextOf(std::string_view name)
{
    QObject* control = ControlNamed(name);
    if (auto* label = qobject_cast<QLabel*>(control))
        return label->text().toStdString();
    if (auto* button = qobject_cast<QAbstractButton*>(control))
        return button->text().toStdString();
    if (auto* field = qobject_cast<QLineEdit*>(control))
        return field->text().toStdString();
    if (auto* field = qobject_cast<QPlainTextEdit*>(control))
        return field->toPlainText().toStdString();
    if (auto* combo = qobject_cast<QComboBox*>(control))
        return combo->currentText().toStdString();
    if (auto* action = qobject_cast<QAction*>(control))
        return action->text().toStdString();
    Refuse(name, "is not found, or shows no text");
}

bool IsEnabled(std::string_view name)
{
    if (auto* action = qobject_cast<QAction*>(ControlNamed(name)))
        return action->isEnabled();
    return Find<QWidget>(name).isEnabled();
}

bool IsVisible(std::string_view name)
{
    if (auto* action = qobject_cast<QAction*>(ControlNamed(name)))
        return action->isVisible();
    auto* widget = qobject_cast<QWidget*>(ControlNamed(name));
    return widget && widget->isVisible();
}

void SelectTab(std::string_view tabStrip, int index)
{
    QTabBar& bar = *Reach<QTabWidget>(tabStrip).tabBar();
    if (index < 0 || index >= bar.count())
        Refuse(tabStrip, "has no such tab");
    QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.tabRect(index).center());
}

int CurrentTab(std::string_view tabStrip) { return Find<QTabWidget>(tabStrip).currentIndex(); }

void ChooseMenu(std::string_view entry)
{
    auto& action = Find<QAction>(entry);
    if (action.isEnabled() && action.isVisible())
        action.trigger();
}

void ChooseEntry(std::string_view name, std::string_view text)
{
    auto& combo = Reach<QComboBox>(name);
    if (!combo.isEnabled())
        return;
    const int row = combo.findText(Shown(text), Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (row < 0)
        Refuse(name, ("has no entry " + std::string(text)).c_str());
    combo.showPopup();
    combo.view()->setCurrentIndex(combo.model()->index(row, combo.modelColumn(), combo.rootModelIndex()));
    QTest::keyClick(combo.view(), Qt::Key_Return);
}

void Step(std::string_view stepper, int times)
{
    auto& widget = Reach<QWidget>(stepper);
    QList<QAbstractButton*> arrows = widget.findChildren<QAbstractButton*>();
    for (int step = 0; step < std::abs(times); ++step) {
        if (qobject_cast<QAbstractSpinBox*>(&widget)) {
            QTest::keyClick(&widget, times > 0 ? Qt::Key_Up : Qt::Key_Down);
        } else if (arrows.size() == 2) {
            std::sort(arrows.begin(), arrows.end(), [](auto* a, auto* b) { return a->y() < b->y(); });
            QAbstractButton* arrow = times > 0 ? arrows.front() : arrows.back();
            QTest::mouseClick(arrow, Qt::LeftButton, {}, arrow->rect().center());
        } else {
            Refuse(stepper, "is no stepper");
        }
    }
}

std::vector<std::string> RowsOf(std::string_view list)
{
    const QAbstractItemModel& model = ModelOf(list);
    std::vector<std::string> rows;
    for (int row = 0; row < model.rowCount(); ++row)
        rows.push_back(model.index(row, 0).data().toString().toStdString());
    return rows;
}

std::vector<int> HighlightedRows(std::string_view list)
{
    std::vector<int> rows;
    for (const QModelIndex& index : Find<QAbstractItemView>(list).selectionModel()->selectedIndexes()) {
        if (index.column() == 0)
            rows.push_back(index.row());
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

int CurrentRow(std::string_view list)
{
    if (auto* combo = qobject_cast<QComboBox*>(ControlNamed(list)))
        return combo->currentIndex();
    return Find<QAbstractItemView>(list).currentIndex().row();
}

void ClickRow(std::string_view list, int row, Qt::KeyboardModifiers modifiers)
{
    auto& view = Reach<QAbstractItemView>(list);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, modifiers, PlaceOfRow(view, row, list));
}

void DoubleClickRow(std::string_view list, int row)
{
    auto& view = Reach<QAbstractItemView>(list);
    const QPoint place = PlaceOfRow(view, row, list);
    // A double click is a click and then a second press and release, of which the press is told to be one.
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, place);
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, place);
}

std::string PanelText(std::string_view statusBar, int panel)
{
    return TextOf(std::string(statusBar) + ".Panels(" + std::to_string(panel) + ")");
}

std::string CaptionOf(std::string_view window)
{
    const QWidget* found = WindowNamed(window);
    return found ? found->windowTitle().toStdString() : std::string();
}

bool Until(const std::function<bool()>& predicate, std::chrono::milliseconds timeout)
{
    QElapsedTimer clock;
    clock.start();
    // Wakes the loop where the predicate waits for something that is no event, such as a file.
    QTimer heartbeat;
    heartbeat.start(std::chrono::milliseconds(5));
    while (!predicate()) {
        if (clock.elapsed() > timeout.count())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

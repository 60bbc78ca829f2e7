#include "platform/Form.h"

#include "platform/Buttons.h"
#include "platform/DisplayText.h"
#include "platform/MouseReporting.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEventLoop>
#include <QKeyEvent>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QTabWidget>
#include <QTimer>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <optional>

// Lays out a menu bar above the client area by hand: a layout would move the controls, whose places are given.
class Form::Window : public MouseReporting<QWidget> {
public:
    static constexpr Qt::WindowStates enlarged = Qt::WindowMaximized | Qt::WindowFullScreen;

    explicit Window(Form& ownerForm)
        : MouseReporting<QWidget>(ownerForm)
        , form(ownerForm)
        , client(this)
    {
    }

    int MenuHeight() const { return form.menuBar != nullptr ? form.menuBar->sizeHint().height() : 0; }

    void ArrangeClient()
    {
        const int menuHeight = MenuHeight();
        if (form.menuBar != nullptr)
            form.menuBar->setGeometry(0, 0, width(), menuHeight);
        client.setGeometry(0, menuHeight, width(), height() - menuHeight);
    }

    void resizeEvent(QResizeEvent*) override
    {
        ArrangeClient();
        KeepPlace();
        Raise(form.Resize);
    }

    void moveEvent(QMoveEvent*) override { KeepPlace(); }

    // What the desktop has put around the window by now. The toolkit's frameGeometry() and move() may go by what it was
    // before.
    QMargins FrameMargins() const { return windowHandle() != nullptr ? windowHandle()->frameMargins() : QMargins(); }

    QRect FramePlace() const { return geometry().marginsAdded(FrameMargins()); }

    // Where the window is, or was when it was last neither hidden nor minimised nor maximised: the corner of its frame
    // and the size within it. Once the desktop has taken a window away, its place is no longer to be had from there.
    QRect NormalPlace() const
    {
        const bool isNormal = isVisible() && !isComingBack && !(windowState() & (Qt::WindowMinimized | enlarged));
        return isNormal ? QRect(FramePlace().topLeft(), size()) : place;
    }

    void KeepPlace()
    {
        place = NormalPlace();
        QMetaObject::invokeMethod(
            this, [this] { settledPlace = place; }, Qt::QueuedConnection);
    }

    // Some desktops enlarge a window just before they say that it is maximised.
    void changeEvent(QEvent* event) override
    {
        if (event->type() == QEvent::WindowStateChange && isMaximized() && place.size() == size()
            && FramePlace().contains(screen()->availableGeometry()))
            place = settledPlace;
        if (event->type() == QEvent::WindowStateChange)
            NoteComingBack(static_cast<QWindowStateChangeEvent*>(event)->oldState());
        if (event->type() == QEvent::WindowStateChange && windowHandle() != nullptr && FollowsOnce()) {
            if (isMaximized())
                setWindowState(Qt::WindowNoState);
            else
                windowHandle()->setMaximumSize(maximumSize());
        }
        MouseReporting<QWidget>::changeEvent(event);
    }

    // A window that is no longer maximised gets its size back before its place.
    void NoteComingBack(Qt::WindowStates before)
    {
        if (!isVisible() || !(before & enlarged) || (windowState() & enlarged))
            return;
        constexpr std::chrono::milliseconds longest(500);
        isComingBack = true;
        QTimer::singleShot(longest, this, [this] {
            isComingBack = false;
            KeepPlace();
        });
    }

    void MoveTo(QPoint newCorner)
    {
        hasPlace = true;
        place.moveTopLeft(newCorner);
        if (corner)
            corner = newCorner;
        if (isVisible()) {
            const QMargins frame = FrameMargins();
            setGeometry(QRect(newCorner + QPoint(frame.left(), frame.top()), size()));
            return;
        }
        move(newCorner);
        // The toolkit passes over a move to where it believes a hidden window to be, and the desktop would then choose.
        if (windowHandle() != nullptr)
            windowHandle()->setFramePosition(newCorner);
    }

    void Appear()
    {
        if (hasPlace) {
            MoveTo(place.topLeft());
            corner = place.topLeft();
        }
        hasPlace = true;
        if (windowHandle() == nullptr && FollowsOnce())
            FollowOnce();
        setWindowState(windowState() & ~Qt::WindowMinimized);
        show();
    }

    // Wayland's frames have a button to maximise every window, and one that does not follow loses its connection, and
    // with that the program ends. So a window of a fixed size follows, and goes back.
    bool FollowsOnce() const { return form.design.border == BorderStyle::Fixed && !Screen::TellsPlaces(); }

    void FollowOnce()
    {
        create();
        QObject::connect(windowHandle(), &QWindow::windowStateChanged, this, [this](Qt::WindowState state) {
            if (state == Qt::WindowMaximized)
                windowHandle()->setMaximumSize({QWIDGETSIZE_MAX, QWIDGETSIZE_MAX});
        });
    }

    void Disappear()
    {
        place = NormalPlace();
        hide();
        // To take "minimised" from a hidden window would show it.
        if (windowState() & enlarged)
            setWindowState(windowState() & ~enlarged);
        isComingBack = false;
        resize(place.size());
    }

    void closeEvent(QCloseEvent* event) override
    {
        event->ignore();
        if (form.Unload)
            Raise(form.Unload);
        else
            Disappear();
    }

    // A window that is minimised is not done with.
    void hideEvent(QHideEvent* event) override
    {
        if (modalLoop != nullptr && !event->spontaneous())
            modalLoop->quit();
    }

    int HelpTopic() const
    {
        QVariant topic;
        const QWidget* widget = focusWidget() != nullptr && focusWidget() != this ? focusWidget() : &client;
        for (; widget != nullptr && !topic.isValid(); widget = widget->parentWidget()) {
            topic = widget->property(helpTopicProperty);
            // With the focus on a tab, the page behind it is meant.
            const auto* tabs = qobject_cast<const QTabWidget*>(widget);
            if (tabs != nullptr && !topic.isValid())
                topic = tabs->currentWidget()->property(helpTopicProperty);
        }
        return topic.toInt();
    }

    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->key() == Qt::Key_F1) {
            Raise(HelpKey, HelpTopic());
            return;
        }
        const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
        auto* focused = qobject_cast<QPushButton*>(focusWidget());
        QAbstractButton* meant = event->key() == Qt::Key_Escape ? cancelButton
            : !enter                                            ? nullptr
            : focused != nullptr                                ? focused
                                                                : acceptButton;
        if (meant != nullptr)
            meant->click();
        else if (form.closesWithEscape && event->key() == Qt::Key_Escape)
            close();
        else
            QWidget::keyPressEvent(event);
    }

    void Centre(QPoint newMiddle)
    {
        MoveMiddleTo(newMiddle);
        middle = newMiddle;
    }

    // Only a window that is on the screen has its frame, and what was reckoned before without it, or with that of the
    // last time, is put right.
    void paintEvent(QPaintEvent*) override
    {
        if (middle)
            MoveMiddleTo(*middle);
        else if (corner)
            MoveTo(*corner);
        middle.reset();
        corner.reset();
    }

    // As near to it as keeps the whole frame on the screen.
    void MoveMiddleTo(QPoint newMiddle)
    {
        QRect wanted = FramePlace();
        wanted.moveCenter(newMiddle);
        const QScreen* found = QApplication::screenAt(newMiddle);
        const QRect room = (found != nullptr ? found : QApplication::primaryScreen())->availableGeometry();
        wanted.moveBottomRight({std::min(wanted.right(), room.right()), std::min(wanted.bottom(), room.bottom())});
        wanted.moveTopLeft({std::max(wanted.left(), room.left()), std::max(wanted.top(), room.top())});
        MoveTo(wanted.topLeft());
    }

    Form& form;
    QWidget client;
    QPushButton* acceptButton = nullptr;
    QPushButton* cancelButton = nullptr;
    QEventLoop* modalLoop = nullptr;
    QRect place; // see NormalPlace
    QRect settledPlace; // the same, as it was before the events that are being delivered
    bool isComingBack = false; // from maximised: it is not yet where it was
    bool hasPlace = false; // or else the desktop finds one
    std::optional<QPoint> corner; // of the frame, or its middle, where the window is to come up
    std::optional<QPoint> middle;
};

std::function<void(int)> Form::HelpKey;

Form::Form(std::string_view name, std::string_view caption, const Design& newDesign)
    : window(std::make_unique<Window>(*this))
    , design(newDesign)
{
    content = &window->client;
    window->setObjectName(ToDisplay(name));
    SetCaption(caption);
    if (design.border == BorderStyle::Fixed)
        window->setWindowFlag(Qt::WindowMaximizeButtonHint, false);
    else if (design.border == BorderStyle::None)
        window->setWindowFlags(Qt::SplashScreen | Qt::FramelessWindowHint);
    Layout();
}

Form::~Form() = default;

void Form::SetCaption(std::string_view caption) { window->setWindowTitle(ToShow(caption)); }

double Form::Left() const { return Twips::FromPixels(window->NormalPlace().x()); }

double Form::Top() const { return Twips::FromPixels(window->NormalPlace().y()); }

double Form::Width() const
{
    return designedBorders
        + (design.border != BorderStyle::Sizable ? design.clientWidth
                                                 : Twips::FromPixels(window->NormalPlace().width()));
}

double Form::Height() const
{
    const int height = window->NormalPlace().height() - window->MenuHeight();
    return Chrome() + (design.border != BorderStyle::Sizable ? design.clientHeight : Twips::FromPixels(height));
}

double Form::Chrome() const { return menuBar != nullptr ? designedTitle + designedMenuBar : designedTitle; }

void Form::SetLeft(double left) { window->MoveTo({Twips::ToPixels(left), window->NormalPlace().y()}); }

void Form::SetTop(double top) { window->MoveTo({window->NormalPlace().x(), Twips::ToPixels(top)}); }

void Form::SetWidth(double width) { SetSize(width, Height()); }

void Form::SetHeight(double height) { SetSize(Width(), height); }

void Form::SetSize(double width, double height)
{
    design.clientWidth = width - designedBorders;
    design.clientHeight = height - Chrome();
    Layout();
}

double Form::ScaleWidth() const
{
    return design.border != BorderStyle::Sizable ? design.clientWidth : Twips::FromPixels(window->client.width());
}

double Form::ScaleHeight() const
{
    return design.border != BorderStyle::Sizable ? design.clientHeight : Twips::FromPixels(window->client.height());
}

bool Form::IsNormal() const { return !window->isMinimized() && !window->isMaximized(); }

bool Form::Visible() const { return window->isVisible(); }

void Form::SetVisible(bool visible)
{
    if (visible == window->isVisible())
        return;
    if (visible)
        window->Appear();
    else
        window->Disappear();
}

void Form::ShowModal()
{
    QEventLoop loop;
    window->modalLoop = &loop;
    window->setWindowModality(Qt::ApplicationModal);
    window->Appear();
    loop.exec(QEventLoop::DialogExec);
    window->modalLoop = nullptr;
    window->setWindowModality(Qt::NonModal);
}

void Form::CentreOnScreen() { window->Centre(QApplication::primaryScreen()->geometry().center()); }

void Form::CentreOnForm(const Form& other)
{
    if (other.Visible())
        window->Centre(other.window->FramePlace().center());
    else
        CentreOnScreen();
}

void Form::SetDialogButtons(CommandButton& accept, CommandButton& cancel)
{
    window->acceptButton = static_cast<QPushButton*>(accept.widget);
    window->cancelButton = static_cast<QPushButton*>(cancel.widget);
    window->acceptButton->setDefault(true);
    // Enter presses the button that has the focus, and only that one shows so.
    QObject::connect(qApp, &QApplication::focusChanged, window.get(), [this](QWidget*, QWidget* now) {
        if (now != nullptr && now->window() == window.get())
            window->acceptButton->setDefault(now == window->acceptButton || !qobject_cast<QPushButton*>(now));
    });
}

void Form::ClosesWithEscape() { closesWithEscape = true; }

void Form::OnKeys(std::string_view keys, std::function<void()> pressed)
{
    auto* shortcut = new QShortcut(QKeySequence(ToDisplay(keys)), window.get());
    QObject::connect(shortcut, &QShortcut::activated, shortcut, std::move(pressed));
}

void Form::BringToFront()
{
    if (window->isMinimized())
        window->setWindowState(Qt::WindowNoState);
    // While a modal form is up, only what belongs to it takes input, and that is settled when a window is shown.
    QWidget* modal = QApplication::activeModalWidget();
    if (modal != nullptr && modal != window.get()) {
        window->winId(); // makes the handle
        QWindow* handle = window->windowHandle();
        // What it belongs to stays behind it.
        if (!modal->windowHandle()->isAncestorOf(handle, QWindow::IncludeTransients)
            && !handle->isAncestorOf(modal->windowHandle(), QWindow::IncludeTransients)) {
            const Qt::WindowStates state = window->windowState();
            SetVisible(false);
            handle->setTransientParent(modal->windowHandle());
            window->setWindowState(state);
        }
    }
    SetVisible(true);
    window->raise();
    window->activateWindow();
}

bool Form::HasModalWindow() { return QApplication::activeModalWidget() != nullptr; }

void Form::AskForAttention() { QApplication::alert(window.get()); }

void Form::SetMousePointer(MousePointer pointer)
{
    if (pointer == MousePointer::Default)
        window->unsetCursor();
    else
        window->setCursor(CursorOf(pointer));
}

QMenuBar& Form::MenuBar()
{
    if (menuBar == nullptr) {
        menuBar = new QMenuBar(window.get());
        menuBar->setNativeMenuBar(false);
    }
    return *menuBar;
}

void Form::Layout()
{
    const QSize size(Twips::ToPixels(design.clientWidth), Twips::ToPixels(design.clientHeight) + window->MenuHeight());
    if (design.border != BorderStyle::Sizable)
        window->setFixedSize(size);
    else
        window->resize(size);
    window->place.setSize(size);
    window->ArrangeClient();
}

#include "platform/Form.h"

#include "platform/Buttons.h"
#include "platform/Cursors.h"
#include "platform/DisplayText.h"
#include "platform/HelpTopic.h"
#include "platform/MouseReporting.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEventLoop>
#include <QKeyEvent>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QTabWidget>
#include <QWidget>
#include <QWindow>

// Lays out a menu bar above the client area by hand: a layout would move the controls, whose places are given.
class Form::Window : public MouseReporting<QWidget> {
public:
    explicit Window(Form& ownerForm)
        : MouseReporting<QWidget>(ownerForm)
        , form(ownerForm)
        , client(this)
    {
    }

    void ArrangeClient()
    {
        const int menuHeight = form.menuBar != nullptr ? form.menuBar->sizeHint().height() : 0;
        if (form.menuBar != nullptr)
            form.menuBar->setGeometry(0, 0, width(), menuHeight);
        client.setGeometry(0, menuHeight, width(), height() - menuHeight);
    }

    void resizeEvent(QResizeEvent*) override
    {
        ArrangeClient();
        Raise(form.Resize);
    }

    void closeEvent(QCloseEvent* event) override
    {
        event->ignore();
        if (form.Unload)
            Raise(form.Unload);
        else
            hide();
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
        const QWidget* widget = focusWidget() != nullptr ? focusWidget() : &client;
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
        else
            QWidget::keyPressEvent(event);
    }

    void MoveMiddleTo(QPoint middle)
    {
        const QSize size = frameGeometry().size();
        move(middle - QPoint(size.width() / 2, size.height() / 2));
    }

    Form& form;
    QWidget client;
    QPushButton* acceptButton = nullptr;
    QPushButton* cancelButton = nullptr;
    QEventLoop* modalLoop = nullptr;
};

std::function<void(int)> Form::HelpKey;

Form::Form(std::string_view name, std::string_view caption, const Design& design)
    : window(std::make_unique<Window>(*this))
    , border(design.border)
    , clientWidth(design.clientWidth)
    , clientHeight(design.clientHeight)
{
    content = &window->client;
    window->setObjectName(ToDisplay(name));
    SetCaption(caption);
    if (border == BorderStyle::Fixed)
        window->setWindowFlag(Qt::WindowMaximizeButtonHint, false);
    else if (border == BorderStyle::None)
        window->setWindowFlags(Qt::SplashScreen | Qt::FramelessWindowHint);
    Layout();
}

Form::~Form() = default;

std::string Form::Caption() const { return FromDisplay(window->windowTitle()); }

void Form::SetCaption(std::string_view caption) { window->setWindowTitle(ToShow(caption)); }

double Form::Left() const { return Twips::FromPixels(window->x()); }

double Form::Top() const { return Twips::FromPixels(window->y()); }

double Form::Width() const { return ScaleWidth() + designedBorders; }

double Form::Height() const { return ScaleHeight() + Chrome(); }

double Form::Chrome() const { return menuBar != nullptr ? designedTitle + designedMenuBar : designedTitle; }

void Form::SetLeft(double left) { window->move(Twips::ToPixels(left), window->y()); }

void Form::SetTop(double top) { window->move(window->x(), Twips::ToPixels(top)); }

void Form::SetWidth(double width)
{
    clientHeight = ScaleHeight();
    clientWidth = width - designedBorders;
    Layout();
}

void Form::SetHeight(double height)
{
    clientWidth = ScaleWidth();
    clientHeight = height - Chrome();
    Layout();
}

double Form::ScaleWidth() const
{
    return border != BorderStyle::Sizable ? clientWidth : Twips::FromPixels(window->client.width());
}

double Form::ScaleHeight() const
{
    return border != BorderStyle::Sizable ? clientHeight : Twips::FromPixels(window->client.height());
}

WindowState Form::State() const
{
    if (window->isMinimized())
        return WindowState::Minimised;
    return window->isMaximized() ? WindowState::Maximised : WindowState::Normal;
}

void Form::SetState(WindowState state)
{
    window->setWindowState(state == WindowState::Normal ? Qt::WindowNoState
            : state == WindowState::Minimised           ? Qt::WindowMinimized
                                                        : Qt::WindowMaximized);
}

bool Form::Visible() const { return window->isVisible(); }

void Form::SetVisible(bool visible) { window->setVisible(visible); }

void Form::ShowModal()
{
    QEventLoop loop;
    window->modalLoop = &loop;
    window->setWindowModality(Qt::ApplicationModal);
    window->show();
    loop.exec(QEventLoop::DialogExec);
    window->modalLoop = nullptr;
    window->setWindowModality(Qt::NonModal);
}

void Form::CentreOnScreen() { window->MoveMiddleTo(QApplication::primaryScreen()->geometry().center()); }

void Form::CentreOnForm(const Form& other) { window->MoveMiddleTo(other.window->frameGeometry().center()); }

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

void Form::BringToFront()
{
    if (State() == WindowState::Minimised)
        SetState(WindowState::Normal);
    // While a modal form is up, only what belongs to it takes input, and that is settled when a window is shown.
    QWidget* modal = QApplication::activeModalWidget();
    if (modal != nullptr && modal != window.get()) {
        window->winId(); // makes the handle
        QWindow* handle = window->windowHandle();
        if (!modal->windowHandle()->isAncestorOf(handle, QWindow::IncludeTransients)) {
            window->hide();
            handle->setTransientParent(modal->windowHandle());
        }
    }
    window->show();
    window->raise();
    window->activateWindow();
}

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
    const int menuHeight = menuBar != nullptr ? menuBar->sizeHint().height() : 0;
    const QSize size(Twips::ToPixels(clientWidth), Twips::ToPixels(clientHeight) + menuHeight);
    if (border != BorderStyle::Sizable)
        window->setFixedSize(size);
    else
        window->resize(size);
    window->ArrangeClient();
}

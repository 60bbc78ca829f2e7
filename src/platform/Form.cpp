#include "platform/Form.h"

#include "platform/Cursors.h"
#include "platform/DisplayText.h"

#include <QCloseEvent>
#include <QEventLoop>
#include <QMenuBar>
#include <QWidget>

// Lays out a menu bar above the client area by hand: a layout would move the controls, whose places are given.
class Form::Window : public QWidget {
public:
    explicit Window(Form& ownerForm)
        : form(ownerForm)
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

    void hideEvent(QHideEvent*) override
    {
        if (modalLoop != nullptr)
            modalLoop->quit();
    }

    Form& form;
    QWidget client;
    QEventLoop* modalLoop = nullptr;
};

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
    Layout();
}

Form::~Form() = default;

std::string Form::Caption() const { return FromDisplay(window->windowTitle()); }

void Form::SetCaption(std::string_view caption) { window->setWindowTitle(ToDisplay(caption)); }

double Form::Left() const { return Twips::FromPixels(window->x()); }

double Form::Top() const { return Twips::FromPixels(window->y()); }

double Form::Width() const { return Twips::FromPixels(window->frameGeometry().width()); }

double Form::Height() const { return ScaleHeight() + designedChrome; }

void Form::SetHeight(double height)
{
    clientHeight = height - designedChrome;
    Layout();
}

double Form::ScaleWidth() const
{
    return border == BorderStyle::Fixed ? clientWidth : Twips::FromPixels(window->client.width());
}

double Form::ScaleHeight() const
{
    return border == BorderStyle::Fixed ? clientHeight : Twips::FromPixels(window->client.height());
}

WindowState Form::State() const
{
    if (window->isMinimized())
        return WindowState::Minimised;
    return window->isMaximized() ? WindowState::Maximised : WindowState::Normal;
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

void Form::BringToFront()
{
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
    if (border == BorderStyle::Fixed)
        window->setFixedSize(size);
    else
        window->resize(size);
    window->ArrangeClient();
}

#pragma once

#include "platform/Control.h"
#include "platform/MouseEvents.h"

#include <QApplication>
#include <QDrag>
#include <QFile>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

static_assert(MouseEvents::rightButton == Qt::RightButton && MouseEvents::ctrlKey == int{Qt::ControlModifier});

// A widget that reports what the mouse does on it. Nothing is passed on to the widget around it, which would report it
// once more. A blank is a click and Enter a double click.
template <class Widget> class MouseReporting : public Widget {
public:
    template <class... Arguments>
    explicit MouseReporting(MouseEvents& mouseEvents, Arguments&&... arguments)
        : Widget(std::forward<Arguments>(arguments)...)
        , events(mouseEvents)
    {
        this->setMouseTracking(true);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        pressed = event->button() == Qt::LeftButton;
        pressedAt = event->pos();
        const auto held = event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier);
        Raise(events.MouseDown, static_cast<int>(event->button()), static_cast<int>(held));
    }

    void mouseReleaseEvent(QMouseEvent* event) override
    {
        const bool clicked = pressed && event->button() == Qt::LeftButton && this->rect().contains(event->pos());
        pressed = false;
        if (clicked)
            Raise(events.Click);
    }

    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::LeftButton)
            Raise(events.DblClick);
        else
            mousePressEvent(event);
    }

    void mouseMoveEvent(QMouseEvent* event) override
    {
        Raise(events.MouseMove);
        const int distance = (event->pos() - pressedAt).manhattanLength();
        if (pressed && events.DraggedFile && distance >= QApplication::startDragDistance())
            DragOut(events.DraggedFile());
    }

    // With the keyboard focus, where a widget takes it.
    void keyPressEvent(QKeyEvent* event) override
    {
        if (this->focusPolicy() == Qt::NoFocus)
            Widget::keyPressEvent(event);
        else if (event->key() == Qt::Key_Space)
            Raise(events.Click);
        else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            Raise(events.DblClick);
        else
            Widget::keyPressEvent(event);
    }

private:
    // A press that has become a drag is no click.
    void DragOut(const std::string& path)
    {
        if (path.empty())
            return;
        pressed = false;
        auto* content = new QMimeData;
        content->setUrls({QUrl::fromLocalFile(QFile::decodeName(path.c_str()))});
        auto* drag = new QDrag(this); // deletes itself
        drag->setMimeData(content);
        drag->exec(Qt::CopyAction);
    }

    MouseEvents& events;
    bool pressed = false;
    QPoint pressedAt;
};

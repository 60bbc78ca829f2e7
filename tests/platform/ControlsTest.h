#pragma once

#include "demo/support/Screen.h"
#include "platform/Events.h"
#include "platform/Form.h"

#include <QBitmap>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// A window that a test puts its controls on before it shows it.
class ControlsTest : public testing::Test {
protected:
    void Show()
    {
        window.SetVisible(true);
        ASSERT_TRUE(Until([this] { return widget.isActiveWindow(); }));
        DoEvents();
    }

    // What is dark in a part of a widget.
    static QRegion Ink(QWidget& seen, const QRect& part)
    {
        const QImage image = seen.grab(part).toImage().convertToFormat(QImage::Format_Mono, Qt::ThresholdDither);
        return QRegion(QBitmap::fromImage(image.convertToFormat(QImage::Format_RGB32).createMaskFromColor(0xffffffff)));
    }
    static QRegion Ink(const char* control) { return Ink(Find<QWidget>(control), Find<QWidget>(control).rect()); }

    Form window{"frmTest", "Test", {.clientWidth = 6000, .clientHeight = 4500}};
    QWidget& widget = *WindowNamed("frmTest");
    int clicks = 0;
    const std::function<void()> countClick = [this] { ++clicks; };
};

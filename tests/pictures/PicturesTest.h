#pragma once

#include "demo/sample/SamplePictures.h"
#include "tests/shell/ProgramTest.h"

#include <QImage>
#include <QTest>
#include <QTimer>

#include <cmath>

// The windows with pictures, judged by what is seen there.
class PicturesTest : public ProgramTest {
protected:
    // Whether a control shows the picture with these bytes over all of its place, which has the picture's shape and
    // lies in the middle of what it is in.
    static bool Shows(const std::string& control, const std::string& picture)
    {
        QWidget& widget = Find<QWidget>(control);
        const QPoint offCentre = widget.geometry().center() - widget.parentWidget()->rect().center();
        const QImage drawn = QImage::fromData(QByteArray::fromStdString(picture));
        const double shape = static_cast<double>(drawn.width()) / drawn.height() * widget.height() / widget.width();
        return LooksLike(widget, drawn) && std::abs(shape - 1) < 0.03 && offCentre.manhattanLength() <= 2;
    }

    static bool LooksLike(QWidget& widget, const QImage& drawn)
    {
        const auto small = [](const QImage& image) {
            return image.scaled(16, 16, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                .convertToFormat(QImage::Format_RGB888);
        };
        const QImage seen = small(widget.grab().toImage()), wanted = small(drawn);
        int difference = 0;
        for (int at = 0; at < 16 * 16 * 3; ++at)
            difference += std::abs(seen.constBits()[at] - wanted.constBits()[at]);
        return difference < 16 * 16 * 12;
    }

    static bool ShowsNothing(const std::string& control)
    {
        const QImage seen = Find<QWidget>(control).grab().toImage();
        QImage blank(seen);
        blank.fill(seen.pixel(0, 0));
        return seen == blank;
    }
};

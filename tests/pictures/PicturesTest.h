#pragma once

#include "demo/sample/SamplePictures.h"
#include "tests/shell/ProgramTest.h"

#include <QImage>

#include <cmath>

// The windows with pictures, judged by what is seen there.
class PicturesTest : public ProgramTest {
protected:
    static QImage Seen(const std::string& control)
    {
        return Find<QWidget>(control).grab().toImage().convertToFormat(QImage::Format_RGB32);
    }

    // Whether a control shows the picture with these bytes over all of its place, which has the picture's shape and
    // lies in the middle of what it is in.
    static bool Shows(const std::string& control, const std::string& picture)
    {
        const QWidget& widget = Find<QWidget>(control);
        const QPoint offCentre = widget.geometry().center() - widget.parentWidget()->rect().center();
        const QImage seen = Seen(control);
        const QImage drawn = QImage::fromData(QByteArray::fromStdString(picture));
        const QImage whole = drawn.scaled(seen.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                                 .convertToFormat(QImage::Format_RGB32);
        const double shape = static_cast<double>(drawn.width()) / drawn.height() * widget.height() / widget.width();
        double difference = 0;
        for (int y = 0; y < seen.height(); ++y) {
            for (int x = 0; x < seen.width(); ++x) {
                const QColor one = seen.pixelColor(x, y), other = whole.pixelColor(x, y);
                difference += std::abs(one.red() - other.red()) + std::abs(one.green() - other.green())
                    + std::abs(one.blue() - other.blue());
            }
        }
        return difference / (seen.width() * seen.height()) < 12 && std::abs(shape - 1) < 0.03
            && offCentre.manhattanLength() <= 2;
    }

    static bool ShowsNothing(const std::string& control)
    {
        const QImage seen = Seen(control);
        for (int y = 0; y < seen.height(); ++y) {
            for (int x = 0; x < seen.width(); ++x) {
                if (seen.pixel(x, y) != seen.pixel(0, 0))
                    return false;
            }
        }
        return true;
    }

    std::string Stored(const std::string& name) const { return destination + "alt.kites/" + name; }
};

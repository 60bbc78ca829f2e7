#include "demo/sample/SamplePictures.h"

#include <QBuffer>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QRadialGradient>
#include <QRandomGenerator>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>

namespace {

// A canvas of 1000 by 1000 units over the whole picture, and the luck of the draw.
class Canvas {
public:
    Canvas(QImage& image, unsigned seed)
        : painter(&image)
        , luck(seed)
    {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(image.width() / 1000.0, image.height() / 1000.0);
        painter.setPen(Qt::NoPen);
    }

    double Between(double low, double high) { return low + luck.generateDouble() * (high - low); }

    QColor Colour(double hue, double saturation = 0.75, double value = 0.9, double alpha = 1)
    {
        return QColor::fromHsvF(static_cast<float>(hue - std::floor(hue)), static_cast<float>(saturation),
            static_cast<float>(value), static_cast<float>(alpha));
    }

    void Sky(const QColor& above, const QColor& below, double horizon = 1000)
    {
        QLinearGradient sky(0, 0, 0, horizon);
        sky.setColorAt(0, above);
        sky.setColorAt(1, below);
        painter.fillRect(QRectF(0, 0, 1000, horizon + 1), sky);
    }

    void Disc(double x, double y, double radius, const QColor& colour)
    {
        painter.setBrush(colour);
        painter.drawEllipse(QPointF(x, y), radius, radius);
    }

    // A ridge from edge to edge, filled down to the bottom.
    void Ridge(double height, double roughness, const QColor& colour)
    {
        QPolygonF ridge{QPointF(0, 1000)};
        double y = height;
        for (int x = 0; x <= 1000; x += 20) {
            y += Between(-roughness, roughness) + (height - y) * 0.08;
            ridge << QPointF(x, y);
        }
        ridge << QPointF(1000, 1000);
        painter.setBrush(colour);
        painter.drawPolygon(ridge);
    }

    QPainter painter;

private:
    QRandomGenerator luck;
};

void DrawKites(Canvas& canvas)
{
    const double hue = canvas.Between(0, 1);
    canvas.Sky(canvas.Colour(0.58, 0.7, 0.85), canvas.Colour(0.54, 0.15, 1));
    for (int cloud = 0; cloud < 5; ++cloud) {
        const double x = canvas.Between(0, 1000);
        const double y = canvas.Between(60, 500);
        for (int puff = 0; puff < 6; ++puff)
            canvas.Disc(x + canvas.Between(-90, 90), y + canvas.Between(-25, 25), canvas.Between(25, 70),
                QColor(255, 255, 255, 110));
    }
    canvas.Ridge(880, 10, canvas.Colour(0.3, 0.6, 0.55));
    for (int kite = 0; kite < 4; ++kite) {
        const double x = canvas.Between(150, 850);
        const double y = canvas.Between(120, 600);
        const double size = canvas.Between(60, 120);
        QPainterPath line(QPointF(x, y + size * 1.4));
        line.quadTo(x - 40, 800, canvas.Between(300, 700), 930);
        canvas.painter.setBrush(Qt::NoBrush);
        canvas.painter.setPen(QPen(QColor(60, 60, 60), 2));
        canvas.painter.drawPath(line);
        canvas.painter.setPen(Qt::NoPen);
        const QPointF corners[] = {{x, y - size}, {x + size * 0.7, y}, {x, y + size * 1.4}, {x - size * 0.7, y}};
        for (int face = 0; face < 4; ++face) {
            canvas.painter.setBrush(canvas.Colour(hue + kite * 0.21 + face * 0.07, 0.85, 0.95));
            canvas.painter.drawPolygon(QPolygonF{QPointF(x, y), corners[face], corners[(face + 1) % 4]});
        }
    }
}

void DrawHarbour(Canvas& canvas)
{
    const double hue = canvas.Between(0.02, 0.12);
    canvas.Sky(canvas.Colour(hue + 0.62, 0.55, 0.5), canvas.Colour(hue, 0.7, 1), 600);
    canvas.Disc(canvas.Between(200, 800), 540, 80, canvas.Colour(hue + 0.08, 0.4, 1));
    canvas.Ridge(560, 6, canvas.Colour(0.7, 0.35, 0.4));
    QLinearGradient water(0, 600, 0, 1000);
    water.setColorAt(0, canvas.Colour(hue, 0.55, 0.85));
    water.setColorAt(1, canvas.Colour(0.62, 0.75, 0.3));
    canvas.painter.fillRect(QRectF(0, 600, 1000, 400), water);
    for (int ripple = 0; ripple < 90; ++ripple) {
        const double y = canvas.Between(610, 1000);
        canvas.painter.setBrush(canvas.Colour(hue + 0.05, 0.3, 1, 0.25));
        canvas.painter.drawRect(QRectF(canvas.Between(-50, 1000), y, canvas.Between(20, (y - 550) / 2), 3));
    }
    for (int boat = 0; boat < 4; ++boat) {
        const double x = canvas.Between(100, 900);
        const double y = canvas.Between(640, 860);
        const double size = (y - 520) / 3;
        canvas.painter.setBrush(canvas.Colour(canvas.Between(0, 1), 0.7, 0.45));
        canvas.painter.drawPolygon(QPolygonF{QPointF(x - size, y), QPointF(x + size, y),
            QPointF(x + size * 0.7, y + size * 0.4), QPointF(x - size * 0.7, y + size * 0.4)});
        canvas.painter.setBrush(canvas.Colour(canvas.Between(0, 1), 0.15, 1));
        canvas.painter.drawPolygon(
            QPolygonF{QPointF(x, y - size * 0.1), QPointF(x, y - size * 2), QPointF(x + size * 0.8, y - size * 0.1)});
    }
}

void DrawMountains(Canvas& canvas)
{
    const double hue = canvas.Between(0, 1);
    canvas.Sky(canvas.Colour(hue, 0.5, 0.75), canvas.Colour(hue + 0.12, 0.3, 1));
    canvas.Disc(canvas.Between(150, 850), canvas.Between(120, 300), 55, QColor(255, 250, 220));
    for (int ridge = 0; ridge < 6; ++ridge)
        canvas.Ridge(360 + ridge * 105, 34 - ridge * 4,
            canvas.Colour(hue + 0.05 * ridge, 0.35 + 0.09 * ridge, 0.8 - 0.12 * ridge));
}

void DrawRosette(Canvas& canvas)
{
    const double hue = canvas.Between(0, 1);
    canvas.Sky(canvas.Colour(hue + 0.5, 0.3, 0.35), canvas.Colour(hue + 0.6, 0.5, 0.15));
    const int petals = static_cast<int>(canvas.Between(7, 15));
    for (int ring = 6; ring > 0; --ring) {
        for (int petal = 0; petal < petals; ++petal) {
            canvas.painter.save();
            canvas.painter.translate(500, 500);
            canvas.painter.rotate(360.0 / petals * (petal + ring % 2 * 0.5));
            canvas.painter.setBrush(canvas.Colour(hue + ring * 0.06 + petal * 0.01, 0.8, 0.95, 0.8));
            canvas.painter.drawEllipse(QPointF(0, -ring * 62), 300.0 * ring / petals, 70);
            canvas.painter.restore();
        }
    }
    canvas.Disc(500, 500, 60, canvas.Colour(hue + 0.15, 0.6, 1));
}

void DrawMosaic(Canvas& canvas)
{
    const double hue = canvas.Between(0, 1);
    constexpr int tiles = 20;
    constexpr double side = 1000.0 / tiles;
    for (int row = 0; row < tiles; ++row) {
        for (int column = 0; column < tiles; ++column) {
            const double away = std::hypot(row - tiles / 2.0, column - tiles / 2.0) / tiles;
            canvas.painter.fillRect(QRectF(column * side, row * side, side + 1, side + 1),
                canvas.Colour(hue + away * 0.7, 0.65, canvas.Between(0.55, 1)));
            canvas.Disc((column + 0.5) * side, (row + 0.5) * side, side * canvas.Between(0.15, 0.4),
                canvas.Colour(hue + 0.5 + away, 0.5, 1));
        }
    }
}

void DrawAurora(Canvas& canvas)
{
    canvas.Sky(QColor(8, 10, 40), QColor(30, 60, 90));
    for (int star = 0; star < 160; ++star)
        canvas.Disc(canvas.Between(0, 1000), canvas.Between(0, 700), canvas.Between(1, 3), QColor(255, 255, 235));
    for (int veil = 0; veil < 3; ++veil) {
        const double phase = canvas.Between(0, 2 * std::numbers::pi);
        const double hue = canvas.Between(0.3, 0.85);
        for (int x = 0; x < 1000; x += 4) {
            const double top = 150 + veil * 90 + 80 * std::sin(x / 120.0 + phase);
            QLinearGradient ray(0, top, 0, top + 320);
            ray.setColorAt(0, canvas.Colour(hue, 0.8, 1, 0));
            ray.setColorAt(0.3, canvas.Colour(hue, 0.8, 1, canvas.Between(0.25, 0.5)));
            ray.setColorAt(1, canvas.Colour(hue + 0.15, 0.8, 1, 0));
            canvas.painter.fillRect(QRectF(x, top, 4.5, 320), ray);
        }
    }
    canvas.Ridge(860, 14, QColor(10, 14, 22));
}

}

std::string DrawPicture(Scene scene, int width, int height, unsigned seed, const char* format)
{
    QImage image(width, height, QImage::Format_RGB32);
    {
        Canvas canvas(image, seed);
        switch (scene) {
        case Scene::Kites:
            DrawKites(canvas);
            break;
        case Scene::Harbour:
            DrawHarbour(canvas);
            break;
        case Scene::Mountains:
            DrawMountains(canvas);
            break;
        case Scene::Rosette:
            DrawRosette(canvas);
            break;
        case Scene::Mosaic:
            DrawMosaic(canvas);
            break;
        case Scene::Aurora:
            DrawAurora(canvas);
            break;
        }
    }
    QBuffer file;
    file.open(QIODevice::WriteOnly);
    if (!image.convertToFormat(QImage::Format_RGB888).save(&file, format, 88)) {
        std::fprintf(stderr, "Qt cannot write pictures of the kind %s here\n", format);
        std::abort();
    }
    return file.data().toStdString();
}

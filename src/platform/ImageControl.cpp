#include "platform/ImageControl.h"

#include "platform/MouseReporting.h"

#include <QImage>
#include <QLabel>
#include <QPixmap>

ImageControl::ImageControl(Container& container, std::string_view name, const Place& place)
    : Control(container, new MouseReporting<QLabel>(*this), name, place)
{
    As<QLabel>().setScaledContents(true);
    widget->setMinimumSize(1, 1);
}

void ImageControl::SetPicture(const Bitmap& newPicture)
{
    ++changes;
    picture = newPicture;
    auto& label = As<QLabel>();
    if (!picture.image) {
        label.setPixmap(QPixmap());
        return;
    }
    // Scaled here once and smoothly, rather than by the label at every paint and coarsely.
    const qreal ratio = label.devicePixelRatioF();
    const QSize size = (QSizeF(label.size()) * ratio).toSize().expandedTo({1, 1});
    QPixmap scaled = QPixmap::fromImage(picture.image->scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    scaled.setDevicePixelRatio(ratio);
    label.setPixmap(scaled);
}

bool ImageControl::Load(const std::string& path)
{
    const int change = ++changes;
    const Bitmap loaded = Bitmap::FromFile(path);
    if (loaded.Height() == 0 || changes != change)
        return false;
    SetPicture(loaded);
    return true;
}

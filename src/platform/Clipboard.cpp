#include "platform/Clipboard.h"

#include "platform/DisplayText.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>

void Clipboard::SetText(std::string_view text) { QGuiApplication::clipboard()->setText(ToDisplay(text)); }

void Clipboard::SetPicture(const Bitmap& picture)
{
    if (picture.Height() != 0)
        QGuiApplication::clipboard()->setImage(*picture.image);
}

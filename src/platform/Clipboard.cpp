#include "platform/Clipboard.h"

#include "platform/Bitmap.h"
#include "platform/DisplayText.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>

void Clipboard::SetText(std::string_view text) { QGuiApplication::clipboard()->setText(ToDisplay(text)); }

void Bitmap::CopyToClipboard() const
{
    if (image)
        QGuiApplication::clipboard()->setImage(*image);
}

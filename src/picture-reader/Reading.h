#pragma once

#include "picture-reader/Format.h"

#include <QByteArray>
#include <QImage>
#include <QSize>

// A picture, reduced to what the screen can show, and its own size; no pixels if it could not be read.
struct ReadPicture {
    QImage pixels;
    QSize size;
};

// Loads the toolkit's readers of these formats and no others, and keeps the toolkit from looking for more. To be called
// once, while files can still be opened.
void LoadReaders();

// Reads an open file, which must be at its start, of a format that is no metafile. JPEG and TIFF are turned as they
// say; of an icon file comes its largest picture, of an animation the first; of a file that is cut off, what there is
// of it if its reader can make something of that.
ReadPicture ReadPixels(int descriptor, PictureFormat format, const QSize& most);

// The parts of a PNG file that make its pixels: without its texts and colour profiles, which unpack to any size. What
// is not laid out like such a file comes back as far as it is.
QByteArray PixelParts(const QByteArray& png);

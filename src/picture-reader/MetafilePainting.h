#pragma once

#include "picture-reader/Reading.h"

// What metafiles are painted with: the fonts, without a window or screen. To be called once, while files can still be
// opened, and before LoadReaders. False if the toolkit has none of it here.
[[nodiscard]] bool LoadFonts();

// Reads an open file, which must be at its start. The libraries that read metafiles may hang, die, or leak what they
// take.
ReadPicture ReadMetafile(int descriptor, PictureFormat format, const QSize& most);

// Does this SVG document name nothing outside itself? A metafile's texts and names of fonts come into it, and not each
// of them as what it is. False also for what cannot be read.
bool NamesNoFile(const QByteArray& document);

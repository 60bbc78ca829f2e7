#pragma once

#include <memory>
#include <string>

class QImage;
class QSize;

// A picture in memory, or none. Copies share the pixels.
class Bitmap {
public:
    Bitmap() = default;

    // The drawing that was made for this program and that it carries in itself, three by two.
    static Bitmap Banner();

    // Reads a picture file: JPEG (turned as its Exif orientation says), GIF (the first frame), BMP, ICO (the largest of
    // its pictures), PNG, WebP, TIFF, WMF, EMF. The content tells which, not the name. One that is larger than the
    // screen is reduced to fit it while it is read. No picture if the file cannot be read, is none of these, or has
    // more than 64 million pixels; of a file that is cut off, what there is of it if its reader can make something of
    // that. All of that is done by a helper, which is given 2.5 seconds; events may be let through meanwhile.
    static Bitmap FromFile(const std::string& path);

    // Those of the picture itself, in pixels; 0 without a picture.
    int Width() const { return width; }
    int Height() const { return height; }

    // For the person to paste it elsewhere; nothing happens without a picture.
    void CopyToClipboard() const;

private:
    friend class ImageControl;

    // `size` is that of the picture itself, of which the pixels may be a smaller rendering.
    Bitmap(QImage pixels, const QSize& size);

    std::shared_ptr<const QImage> image;
    int width = 0;
    int height = 0;
};

#pragma once

#include <memory>
#include <string>

class QImage;

// A picture in memory, or none. Copies share the pixels.
class Picture {
public:
    Picture();
    explicit Picture(QImage pixels);

    // Reads a picture file. No picture if it cannot be read.
    static Picture FromFile(const std::string& path);

    // In pixels; 0 without a picture.
    int Width() const;
    int Height() const;

private:
    friend class ImageControl;

    std::shared_ptr<const QImage> image;
};

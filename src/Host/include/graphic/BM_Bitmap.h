// Bitmaps: images held in memory as rows of VS_RGBA pixels, and the engine that reads them from
// image files (PNG and the other raster formats Qt reads, and SVG drawn at its own size).
#pragma once

#include "base/UT_SharedPtr.h"
#include "graphic/VS_RGBA.h"

#include <QImage>
#include <QString>

class BM_Bitmap {
public:
    // An empty bitmap: 0 by 0, no pixels.
    BM_Bitmap() = default;
    // A copy of `image` as 8-bit RGBA, not premultiplied. A null image gives an empty bitmap.
    explicit BM_Bitmap(QImage const &image);

    int GetWidth() const { return image_.width(); }
    int GetHeight() const { return image_.height(); }
    bool isEmpty() const { return image_.isNull(); }

    // Width * height pixels, row after row from the top, with no padding between rows (a width of
    // four bytes per pixel is always aligned). Null for an empty bitmap.
    VS_RGBA const *GetPixels() const;
    // The pixel at column x, row y from the top; transparent black outside the bitmap.
    VS_RGBA pixel(int x, int y) const;

    // The pixels as a Qt image (Format_RGBA8888), sharing them.
    QImage const &image() const { return image_; }

private:
    QImage image_;  // null or Format_RGBA8888
};

class CELIO_BitmapEngine {
public:
    // The only depth bitmaps are read at: 8 bits for each of red, green, blue and alpha.
    static constexpr int kBitsPerChannel8 = 8;

    // Reads the image file at `path` into a bitmap of `bitsPerChannel` bits per channel. A file
    // that ends in ".svg" (any case) is drawn at the size it declares; any other file is read by
    // Qt's image readers. Gives null, and a message in `error` when given, for a depth other than
    // 8, a missing or unreadable file, or an image of no size.
    static UT_SharedPtr<BM_Bitmap> load(QString const &path, int bitsPerChannel = kBitsPerChannel8,
                                        QString *error = nullptr);
};

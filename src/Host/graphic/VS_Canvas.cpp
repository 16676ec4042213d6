#include "graphic/VS_Canvas.h"

#include <QtDebug>

#include <algorithm>
#include <cmath>

VS_Texture::VS_Texture(QImage const &image, Wrap wrapS, Wrap wrapT, Filter minFilter, Filter magFilter)
    : image_(image.convertToFormat(QImage::Format_RGBA8888)), wrapS_(wrapS), wrapT_(wrapT),
      minFilter_(minFilter), magFilter_(magFilter)
{
}

namespace {

int wrapIndex(int i, int size, VS_Texture::Wrap wrap)
{
    if (wrap == VS_Texture::Repeat)
        return ((i % size) + size) % size;
    return std::clamp(i, 0, size - 1);
}

} // namespace

VS_RGBA VS_Texture::texel(int x, int y) const
{
    x = wrapIndex(x, width(), wrapS_);
    y = wrapIndex(y, height(), wrapT_);
    return reinterpret_cast<VS_RGBA const *>(image_.constScanLine(y))[x];
}

VS_RGBA VS_Texture::sample(double u, double v, bool magnified) const
{
    // Texel centres sit at (i + 0.5) / width; rows are stored top first while v grows upwards.
    double const x = u * width() - 0.5;
    double const y = (1.0 - v) * height() - 0.5;
    if ((magnified ? magFilter_ : minFilter_) == Nearest)
        return texel(static_cast<int>(std::floor(x + 0.5)), static_cast<int>(std::floor(y + 0.5)));

    int const x0 = static_cast<int>(std::floor(x));
    int const y0 = static_cast<int>(std::floor(y));
    double const fx = x - x0;
    double const fy = y - y0;
    VS_RGBA const c00 = texel(x0, y0), c10 = texel(x0 + 1, y0), c01 = texel(x0, y0 + 1), c11 = texel(x0 + 1, y0 + 1);
    auto mix = [&](std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
        double const top = a + (b - a) * fx;
        double const bottom = c + (d - c) * fx;
        return static_cast<std::uint8_t>(std::lround(top + (bottom - top) * fy));
    };
    return VS_RGBA(mix(c00.r, c10.r, c01.r, c11.r), mix(c00.g, c10.g, c01.g, c11.g),
                   mix(c00.b, c10.b, c01.b, c11.b), mix(c00.a, c10.a, c01.a, c11.a));
}

struct VS_Canvas::Impl {
    QImage image;  // Format_ARGB32_Premultiplied
    bool antialiasing = true;
    bool picking = false;
};

VS_Canvas::VS_Canvas(int width, int height) : impl_(std::make_unique<Impl>())
{
    resize(width, height);
}

VS_Canvas::~VS_Canvas() = default;

int VS_Canvas::width() const { return impl_->image.width(); }
int VS_Canvas::height() const { return impl_->image.height(); }
QImage const &VS_Canvas::image() const { return impl_->image; }
QImage &VS_Canvas::image() { return impl_->image; }
bool VS_Canvas::antialiasing() const { return impl_->antialiasing && !impl_->picking; }
void VS_Canvas::setAntialiasing(bool on) { impl_->antialiasing = on; }
bool VS_Canvas::pickingMode() const { return impl_->picking; }
void VS_Canvas::setPickingMode(bool picking) { impl_->picking = picking; }

void VS_Canvas::resize(int width, int height)
{
    impl_->image = QImage(std::max(0, width), std::max(0, height), QImage::Format_ARGB32_Premultiplied);
    clear();
}

void VS_Canvas::clear(VS_RGBA const &color)
{
    impl_->image.fill(QColor(color.r, color.g, color.b, color.a));
}

VS_RGBA VS_Canvas::pixel(int x, int y) const
{
    if (x < 0 || y < 0 || x >= width() || y >= height())
        return VS_RGBA(0, 0, 0, 0);
    QRgb const c = qUnpremultiply(reinterpret_cast<QRgb const *>(impl_->image.constScanLine(y))[x]);
    return VS_RGBA(static_cast<std::uint8_t>(qRed(c)), static_cast<std::uint8_t>(qGreen(c)),
                   static_cast<std::uint8_t>(qBlue(c)), static_cast<std::uint8_t>(qAlpha(c)));
}

namespace {

bool isWrap(int v) { return v == VS_Texture::Repeat || v == VS_Texture::ClampToEdge; }
bool isFilter(int v) { return v == VS_Texture::Nearest || v == VS_Texture::Linear; }

} // namespace

VS_TexturePtr VS_Canvas::createTexture(int target, int internalFormat, int width, int height, int border, int format,
                                       int type, void const *pixels, int wrapS, int wrapT, int minFilter,
                                       int magFilter, int mipmaps)
{
    char const *bad = nullptr;
    if (target != kTexture2D)
        bad = "target (expected 1, a 2D texture)";
    else if (internalFormat != kFormatRGBA || format != kFormatRGBA)
        bad = "format (expected 7, RGBA bytes)";
    else if (width < 1 || height < 1)
        bad = "size (expected at least 1 by 1)";
    else if (border != 0)
        bad = "border (expected 0)";
    else if (type != kTypeUnsignedByte)
        bad = "type (expected 0, unsigned bytes)";
    else if (!pixels)
        bad = "pixels (expected non-null)";
    else if (!isWrap(wrapS) || !isWrap(wrapT))
        bad = "wrap (expected 1, repeat, or 2, clamp to edge)";
    else if (!isFilter(minFilter) || !isFilter(magFilter))
        bad = "filter (expected 1, nearest, or 2, linear)";
    else if (mipmaps != kNoMipmaps)
        bad = "mipmaps (expected 0)";
    if (bad) {
        qWarning().noquote() << "VS_Canvas::createTexture: bad" << bad;
        return nullptr;
    }
    // The QImage only borrows the pixels; the texture's constructor makes its own copy.
    QImage const borrowed(static_cast<uchar const *>(pixels), width, height, width * 4, QImage::Format_RGBA8888);
    return UT_MakeShared<VS_Texture>(borrowed.copy(), static_cast<VS_Texture::Wrap>(wrapS),
                                     static_cast<VS_Texture::Wrap>(wrapT), static_cast<VS_Texture::Filter>(minFilter),
                                     static_cast<VS_Texture::Filter>(magFilter));
}

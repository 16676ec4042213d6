// The surface a view paints on: an image in memory, and the textures that painters map on it.
//
// A canvas is either visible (colours blend, anti-aliased unless switched off) or a pick canvas
// (setPickingMode): then nothing is anti-aliased, every colour is written as it is given without blending, and
// textured quads are refused, so that each pixel holds exactly one picking id colour or the
// background.
//
// Textures are shared values: one made on a canvas stays usable after the canvas is gone and on
// any other canvas.
#pragma once

#include "base/UT_SharedPtr.h"
#include "graphic/VS_RGBA.h"

#include <QImage>

#include <memory>

// The pixels of one texture and how they are sampled.
class VS_Texture {
public:
    enum Wrap { Repeat = 1, ClampToEdge = 2 };
    enum Filter { Nearest = 1, Linear = 2 };

    // `image` must not be null; it is kept as Format_RGBA8888.
    VS_Texture(QImage const &image, Wrap wrapS, Wrap wrapT, Filter minFilter, Filter magFilter);

    int width() const { return image_.width(); }
    int height() const { return image_.height(); }
    QImage const &image() const { return image_; }

    // The colour at texture coordinates (u, v). Texture coordinates have their origin at the lower
    // left corner of the picture as it is seen, u to the right and v up, like scene space: (0, 0)
    // is the outer corner of the first pixel of the last row given when the texture was made,
    // (1, 1) that of the last pixel of the first row. `magnified` chooses the filter: true where a
    // texel covers more than one pixel.
    VS_RGBA sample(double u, double v, bool magnified) const;

private:
    VS_RGBA texel(int x, int y) const;  // x, y wrapped or clamped into the image

    QImage image_;  // Format_RGBA8888, never null
    Wrap wrapS_;    // along u
    Wrap wrapT_;    // along v
    Filter minFilter_;
    Filter magFilter_;
};

using VS_TexturePtr = UT_SharedPtr<VS_Texture const>;

class VS_Canvas {
public:
    // Constants of createTexture, by argument.
    static constexpr int kTexture2D = 1;         // target
    static constexpr int kFormatRGBA = 7;        // internal format and format: bytes r, g, b, a
    static constexpr int kTypeUnsignedByte = 0;  // type of one channel
    static constexpr int kNoMipmaps = 0;         // last argument

    // An image of width by height pixels (negative sizes count as 0), cleared to transparent black.
    VS_Canvas(int width, int height);
    ~VS_Canvas();
    VS_Canvas(VS_Canvas const &) = delete;
    VS_Canvas &operator=(VS_Canvas const &) = delete;

    int width() const;
    int height() const;
    // Changes the size and clears the image; negative sizes count as 0.
    void resize(int width, int height);
    void clear(VS_RGBA const &color = VS_RGBA(0, 0, 0, 0));

    // The pixels (Format_ARGB32_Premultiplied), to show or save. Careful: a painter may be writing
    // to them; read them between primitives only.
    QImage const &image() const;
    QImage &image();
    // The colour of pixel (x, y), transparent black outside the image. Exact for opaque colours.
    VS_RGBA pixel(int x, int y) const;

    // Anti-aliasing smooths the edges of shapes and of textures; on by default, always off on a
    // pick canvas.
    bool antialiasing() const;
    void setAntialiasing(bool on);

    bool pickingMode() const;
    void setPickingMode(bool picking);

    // Makes a texture from `width` * `height` pixels given row after row, first row first.
    // Accepted values: target kTexture2D; internal format and format kFormatRGBA; border 0; type
    // kTypeUnsignedByte; wraps VS_Texture::Wrap; filters VS_Texture::Filter (the minifying filter
    // is the one used); mipmaps kNoMipmaps. Anything else, a size below 1 or null pixels gives a
    // null texture and a warning naming the argument.
    VS_TexturePtr createTexture(int target, int internalFormat, int width, int height, int border, int format,
                                int type, void const *pixels, int wrapS, int wrapT, int minFilter, int magFilter,
                                int mipmaps);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// The painter tools and views draw with: points, lines, triangles, quads, polygons, circles, discs
// and textured quads, on the canvas of a camera chain binder.
//
// Coordinates. Every primitive takes its points in the painter's point referential, a frame of
// Math::CameraTransformChain: 6 (ModelFrame, the default) for scene coordinates under the binder's
// current model, view and projection matrices, read at the moment of drawing; 1 (ViewFrame) for
// view pixels, origin at the top left pixel, y down. Primitives never change the referential: a
// caller that switches to pixels switches back to 6 when it is done.
//
// Sizes. A point's size is always in pixels. Radii are in units of the point referential. A line
// thickness is given with its own referential (pixels by default); 0 draws no outline.
//
// State. Points fill with the point fill colour inside a one pixel rim of the point stroke colour.
// Outlines of lines, polygons and circles use the line thickness and line stroke colour. Areas
// (triangles, quads, polygons, discs) fill with the colour given, or with the point fill colour.
//
// Bad input is refused: a setter keeps its value and gives false; a primitive with a point that is
// not finite or cannot be mapped to pixels, or a non-positive radius, paints nothing and gives
// false. On a pick canvas (VS_Canvas::pickingMode) nothing is anti-aliased, colours are written
// without blending, and textured quads are refused.
#pragma once

#include "base/Math/Vector.h"
#include "graphic/VS_Canvas.h"
#include "graphic/VS_RGBA.h"

#include <memory>
#include <vector>

class CC_CameraChainTransformCanvasBinder;

// One quad of drawTexturedQuads: four corners in order around the quad, the texture coordinates
// of each corner (see VS_Texture::sample) and the colour that multiplies the texture at each
// corner. Between corners both are interpolated bilinearly.
struct VU_TexturedQuad {
    Math::Point2d corners[4];
    Math::Point2d texCoords[4] = {{0.0, 1.0}, {1.0, 1.0}, {1.0, 0.0}, {0.0, 0.0}};
    VS_RGBA tints[4] = {VS_RGBA(255, 255, 255), VS_RGBA(255, 255, 255), VS_RGBA(255, 255, 255), VS_RGBA(255, 255, 255)};
};

class VU_Painter {
public:
    enum PointShape { SquarePoint = 0, RoundPoint = 1 };
    static constexpr int kPixelReferential = 1;  // Math::CameraTransformChain::ViewFrame
    static constexpr int kSceneReferential = 6;  // Math::CameraTransformChain::ModelFrame

    // Paints on binder.canvas() (nothing if it has none). The binder must outlive the painter.
    explicit VU_Painter(CC_CameraChainTransformCanvasBinder &binder);
    ~VU_Painter();
    VU_Painter(VU_Painter const &) = delete;
    VU_Painter &operator=(VU_Painter const &) = delete;

    // While a Batch lives, the painter's primitives share one QPainter on the canvas instead of
    // opening one each, which is most of the cost of a small primitive. The pixels are the same.
    // Careful: no other painter may draw on the same canvas while it lives (a canvas takes one
    // QPainter at a time; the other's primitives would paint nothing). Batches nest.
    class Batch {
    public:
        explicit Batch(VU_Painter &painter);
        ~Batch();
        Batch(Batch const &) = delete;
        Batch &operator=(Batch const &) = delete;

    private:
        VU_Painter &painter_;
    };

    // A frame of the camera chain, 1 to 6.
    bool setPointReferential(int referential);
    int pointReferential() const;

    void setPointFillColor(VS_RGBA const &color);
    void setPointStrokeColor(VS_RGBA const &color);
    VS_RGBA pointFillColor() const;
    VS_RGBA pointStrokeColor() const;
    // SquarePoint: a square whose side is the size. RoundPoint: a disc whose diameter is the size.
    bool setPointShape(int shape);
    int pointShape() const;
    // In pixels, above 0.
    bool setPointSize(double pixels);
    double pointSize() const;

    // `thickness` >= 0, in units of the frame `referential` (1 to 6): pixels by default.
    bool setLineThickness(double thickness, int referential = kPixelReferential);
    double lineThickness() const;
    int lineThicknessReferential() const;
    void setLineStrokeColor(VS_RGBA const &color);
    VS_RGBA lineStrokeColor() const;

    bool drawPoint(Math::Point2d const &p);
    bool drawPoint(Math::Point3d const &p);
    bool drawLine(Math::Point2d const &a, Math::Point2d const &b);
    bool drawLine(Math::Point3d const &a, Math::Point3d const &b);
    // An open line through the points; fewer than two points draw nothing.
    bool drawPolyline(std::vector<Math::Point2d> const &points);
    // A closed area, filled then outlined; fewer than three points draw nothing.
    bool drawPolygon(std::vector<Math::Point2d> const &points, VS_RGBA const &fill);
    bool drawTriangle(Math::Point2d const &a, Math::Point2d const &b, Math::Point2d const &c);
    bool drawTriangle(Math::Point2d const &a, Math::Point2d const &b, Math::Point2d const &c, VS_RGBA const &fill);
    bool drawQuad(Math::Point2d const &a, Math::Point2d const &b, Math::Point2d const &c, Math::Point2d const &d);
    bool drawQuad(Math::Point2d const &a, Math::Point2d const &b, Math::Point2d const &c, Math::Point2d const &d,
                  VS_RGBA const &fill);
    // A ring: the outline of a circle.
    bool drawCircle(Math::Point2d const &centre, double radius);
    bool drawFilledDisc(Math::Point2d const &centre, double radius);
    bool drawFilledDisc(Math::Point2d const &centre, double radius, VS_RGBA const &fill);
    // Quads with `texture`; a null texture stands for plain white, so the tints alone show. All
    // quads are checked before any is painted.
    bool drawTexturedQuads(VS_TexturePtr const &texture, std::vector<VU_TexturedQuad> const &quads);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

#include "graphic/VU_Painter.h"

#include "graphic/CC_CameraChainTransformCanvasBinder.h"

#include <QPainter>
#include <QPolygonF>
#include <QTransform>

#include <algorithm>
#include <cmath>

using Math::CameraTransformChain;
using Math::Point2d;
using Math::Point3d;

namespace {

// The largest side, in pixels, of the image a textured quad is resampled into.
constexpr int kMaxTexturedQuadSide = 4096;
// How far, in pixels, the polygon that stands for a circle may come inside the true circle.
constexpr double kCircleTolerance = 0.01;
constexpr int kMinCircleVertices = 16;
constexpr int kMaxCircleVertices = 2048;
constexpr double kPi = 3.141592653589793;

QColor toQColor(VS_RGBA const &c) { return QColor(c.r, c.g, c.b, c.a); }

bool isFinite(double v) { return std::isfinite(v); }

// Bilinear mix of four corner values at (s, t): corner 0 at (0, 0), 1 at (1, 0), 2 at (1, 1), 3 at (0, 1).
double bilinear(double v0, double v1, double v2, double v3, double s, double t)
{
    return (v0 * (1.0 - s) + v1 * s) * (1.0 - t) + (v3 * (1.0 - s) + v2 * s) * t;
}

// A circle as a polygon fine enough to stay within kCircleTolerance of it. Qt's own ellipses
// are not symmetric about their centre when drawn without anti-aliasing; polygons are filled by
// pixel centres, so a point or a disc covers exactly the pixels whose centres lie inside it.
QPolygonF circlePolygon(QPointF const &centre, double radius)
{
    double const step = radius > kCircleTolerance ? 2.0 * std::acos(1.0 - kCircleTolerance / radius) : kPi / 8.0;
    int const n = std::clamp(static_cast<int>(std::ceil(2.0 * kPi / step)), kMinCircleVertices, kMaxCircleVertices);
    QPolygonF polygon;
    polygon.reserve(n);
    for (int i = 0; i < n; ++i) {
        double const a = 2.0 * kPi * i / n;
        polygon << QPointF(centre.x() + radius * std::cos(a), centre.y() + radius * std::sin(a));
    }
    return polygon;
}

} // namespace

struct VU_Painter::Impl {
    CC_CameraChainTransformCanvasBinder &binder;
    int referential = kSceneReferential;
    VS_RGBA pointFill = VS_RGBA(255, 255, 255);
    VS_RGBA pointStroke = VS_RGBA(0, 0, 0);
    int pointShape = SquarePoint;
    double pointSize = 1.0;          // pixels, > 0
    double lineThickness = 1.0;      // >= 0, in units of lineReferential
    int lineReferential = kPixelReferential;
    VS_RGBA lineStroke = VS_RGBA(0, 0, 0);

    int batchDepth = 0;                   // Batch scopes alive on this painter
    std::unique_ptr<QPainter> batched;    // open only while batchDepth > 0, on batchedImage
    QImage const *batchedImage = nullptr;
    bool batchedSmooth = false;           // the canvas's modes batched was set up for
    bool batchedPicking = false;

    explicit Impl(CC_CameraChainTransformCanvasBinder &b) : binder(b) {}

    // Sets `painter` up for the canvas's mode and for view coordinates: the point (i, j) is the
    // centre of pixel (i, j).
    static void setUp(QPainter &painter, bool smooth, bool picking)
    {
        painter.setRenderHint(QPainter::Antialiasing, smooth);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, smooth);
        if (picking)
            painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.translate(0.5, 0.5);
    }

    // The batch's QPainter, opened again when the canvas, its image or its mode changed since.
    QPainter &batchPainter(VS_Canvas &canvas)
    {
        bool const smooth = canvas.antialiasing();
        bool const picking = canvas.pickingMode();
        if (!batched || batchedImage != &canvas.image() || batchedSmooth != smooth || batchedPicking != picking) {
            batched.reset();  // ends the old one before a new one begins on the same image
            batched = std::make_unique<QPainter>(&canvas.image());
            batchedImage = &canvas.image();
            batchedSmooth = smooth;
            batchedPicking = picking;
            setUp(*batched, smooth, picking);
        }
        return *batched;
    }

    CameraTransformChain const &chain() const { return binder.cameraTransformChain(); }

    bool toPixels(Point2d const &p, QPointF &out) const
    {
        if (referential == kPixelReferential) {  // pixels need no viewport
            if (!isFinite(p.x) || !isFinite(p.y))
                return false;
            out = QPointF(p.x, p.y);
            return true;
        }
        Point2d pixel;
        if (!chain().transform(CameraTransformChain::ReferenceFrame(referential), p, CameraTransformChain::ViewFrame, pixel))
            return false;
        out = QPointF(pixel.x, pixel.y);
        return true;
    }

    bool toPixels(Point3d const &p, QPointF &out) const
    {
        if (referential == kPixelReferential)
            return isFinite(p.z) && toPixels(p.toPoint2d(), out);
        Point2d pixel;
        if (!chain().project(CameraTransformChain::ReferenceFrame(referential), p, pixel))
            return false;
        out = QPointF(pixel.x, pixel.y);
        return true;
    }

    bool toPixels(std::vector<Point2d> const &points, QPolygonF &out) const
    {
        out.clear();
        out.reserve(static_cast<int>(points.size()));
        for (Point2d const &p : points) {
            QPointF q;
            if (!toPixels(p, q))
                return false;
            out << q;
        }
        return true;
    }

    // A length of frame `frame` in pixels, or a negative value when the zoom cannot be known.
    double toPixelLength(double length, int frame) const
    {
        if (frame == kPixelReferential)
            return length;
        double const ppu = chain().pixelsPerUnit(CameraTransformChain::ReferenceFrame(frame));
        return ppu > 0.0 ? length * ppu : -1.0;
    }

    QPen linePen() const
    {
        double const width = toPixelLength(lineThickness, lineReferential);
        if (!(width > 0.0) || lineStroke.a == 0)
            return QPen(Qt::NoPen);
        QPen pen(toQColor(lineStroke), width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin);
        pen.setCosmetic(true);
        return pen;
    }

    static QBrush brush(VS_RGBA const &fill) { return fill.a == 0 ? QBrush(Qt::NoBrush) : QBrush(toQColor(fill)); }

    // Runs `paint` with a QPainter open on the canvas (see setUp). Outside a batch, one QPainter
    // per primitive, so that several painters may work on one canvas in turn. `paint` may change
    // the painter's pen, brush and transform, and must leave the transform as it found it.
    template <class Paint>
    bool paint(Paint &&paintWith)
    {
        VS_Canvas *canvas = binder.canvas();
        if (!canvas || canvas->image().isNull())
            return false;
        if (batchDepth > 0) {
            paintWith(batchPainter(*canvas));
            return true;
        }
        QPainter painter(&canvas->image());
        setUp(painter, canvas->antialiasing(), canvas->pickingMode());
        paintWith(painter);
        return true;
    }

    bool drawPointAt(QPointF const &c)
    {
        return paint([&](QPainter &painter) {
            painter.setPen(Qt::NoPen);
            double const s = pointSize;
            QRectF const outer(c.x() - s / 2.0, c.y() - s / 2.0, s, s);
            QRectF const inner = outer.adjusted(1.0, 1.0, -1.0, -1.0);
            auto shape = [&](QRectF const &r, VS_RGBA const &color) {
                if (color.a == 0)
                    return;
                painter.setBrush(toQColor(color));
                if (pointShape == RoundPoint)
                    painter.drawPolygon(circlePolygon(r.center(), r.width() / 2.0));
                else
                    painter.drawRect(r);
            };
            // With an inner area of nothing, the whole point is its rim.
            if (inner.isEmpty() || pointFill == pointStroke) {
                shape(outer, pointStroke);
                return;
            }
            shape(outer, pointStroke);
            shape(inner, pointFill);
        });
    }

    bool drawPolygonAt(QPolygonF const &polygon, VS_RGBA const &fill)
    {
        return paint([&](QPainter &painter) {
            painter.setPen(linePen());
            painter.setBrush(brush(fill));
            painter.drawPolygon(polygon);
        });
    }

    bool drawDisc(Point2d const &centre, double radius, QBrush const &fill, QPen const &outline)
    {
        QPointF c;
        double const r = toPixelLength(radius, referential);
        if (!isFinite(radius) || radius <= 0.0 || !(r > 0.0) || !toPixels(centre, c))
            return false;
        return paint([&](QPainter &painter) {
            painter.setPen(outline);
            painter.setBrush(fill);
            painter.drawPolygon(circlePolygon(c, r));
        });
    }

    // The quad resampled into a small image over its parameter square, texture times tint.
    static QImage resample(VS_Texture const *texture, VU_TexturedQuad const &quad, QPolygonF const &pixels)
    {
        auto side = [&](int a, int b) { return QLineF(pixels[a], pixels[b]).length(); };
        int const w = std::clamp(static_cast<int>(std::ceil(std::max(side(0, 1), side(3, 2)))), 1, kMaxTexturedQuadSide);
        int const h = std::clamp(static_cast<int>(std::ceil(std::max(side(0, 3), side(1, 2)))), 1, kMaxTexturedQuadSide);
        bool const magnified = texture && (w > texture->width() || h > texture->height());
        QImage image(w, h, QImage::Format_RGBA8888);
        for (int j = 0; j < h; ++j) {
            auto *row = reinterpret_cast<VS_RGBA *>(image.scanLine(j));
            double const t = (j + 0.5) / h;
            for (int i = 0; i < w; ++i) {
                double const s = (i + 0.5) / w;
                auto mix = [&](auto channel) {
                    return bilinear(channel(0), channel(1), channel(2), channel(3), s, t);
                };
                VS_RGBA texel(255, 255, 255, 255);
                if (texture) {
                    double const u = mix([&](int k) { return quad.texCoords[k].x; });
                    double const v = mix([&](int k) { return quad.texCoords[k].y; });
                    texel = texture->sample(u, v, magnified);
                }
                auto tinted = [&](std::uint8_t value, std::uint8_t VS_RGBA::*member) {
                    double const tint = mix([&](int k) { return double(quad.tints[k].*member); });
                    return static_cast<std::uint8_t>(std::lround(value * tint / 255.0));
                };
                row[i] = VS_RGBA(tinted(texel.r, &VS_RGBA::r), tinted(texel.g, &VS_RGBA::g),
                                 tinted(texel.b, &VS_RGBA::b), tinted(texel.a, &VS_RGBA::a));
            }
        }
        return image;
    }
};

VU_Painter::VU_Painter(CC_CameraChainTransformCanvasBinder &binder) : impl_(std::make_unique<Impl>(binder)) {}

VU_Painter::~VU_Painter() = default;

VU_Painter::Batch::Batch(VU_Painter &painter) : painter_(painter) { ++painter_.impl_->batchDepth; }

VU_Painter::Batch::~Batch()
{
    if (--painter_.impl_->batchDepth == 0) {
        painter_.impl_->batched.reset();
        painter_.impl_->batchedImage = nullptr;
    }
}

bool VU_Painter::setPointReferential(int referential)
{
    if (!CameraTransformChain::isReferenceFrame(referential))
        return false;
    impl_->referential = referential;
    return true;
}

int VU_Painter::pointReferential() const { return impl_->referential; }

void VU_Painter::setPointFillColor(VS_RGBA const &color) { impl_->pointFill = color; }
void VU_Painter::setPointStrokeColor(VS_RGBA const &color) { impl_->pointStroke = color; }
VS_RGBA VU_Painter::pointFillColor() const { return impl_->pointFill; }
VS_RGBA VU_Painter::pointStrokeColor() const { return impl_->pointStroke; }

bool VU_Painter::setPointShape(int shape)
{
    if (shape != SquarePoint && shape != RoundPoint)
        return false;
    impl_->pointShape = shape;
    return true;
}

int VU_Painter::pointShape() const { return impl_->pointShape; }

bool VU_Painter::setPointSize(double pixels)
{
    if (!isFinite(pixels) || pixels <= 0.0)
        return false;
    impl_->pointSize = pixels;
    return true;
}

double VU_Painter::pointSize() const { return impl_->pointSize; }

bool VU_Painter::setLineThickness(double thickness, int referential)
{
    if (!isFinite(thickness) || thickness < 0.0 || !CameraTransformChain::isReferenceFrame(referential))
        return false;
    impl_->lineThickness = thickness;
    impl_->lineReferential = referential;
    return true;
}

double VU_Painter::lineThickness() const { return impl_->lineThickness; }
int VU_Painter::lineThicknessReferential() const { return impl_->lineReferential; }
void VU_Painter::setLineStrokeColor(VS_RGBA const &color) { impl_->lineStroke = color; }
VS_RGBA VU_Painter::lineStrokeColor() const { return impl_->lineStroke; }

bool VU_Painter::drawPoint(Point2d const &p)
{
    QPointF c;
    return impl_->toPixels(p, c) && impl_->drawPointAt(c);
}

bool VU_Painter::drawPoint(Point3d const &p)
{
    QPointF c;
    return impl_->toPixels(p, c) && impl_->drawPointAt(c);
}

bool VU_Painter::drawLine(Point2d const &a, Point2d const &b)
{
    return drawPolyline({a, b});
}

bool VU_Painter::drawLine(Point3d const &a, Point3d const &b)
{
    QPointF pa, pb;
    if (!impl_->toPixels(a, pa) || !impl_->toPixels(b, pb))
        return false;
    return impl_->paint([&](QPainter &painter) {
        painter.setPen(impl_->linePen());
        painter.drawLine(pa, pb);
    });
}

bool VU_Painter::drawPolyline(std::vector<Point2d> const &points)
{
    QPolygonF line;
    if (points.size() < 2 || !impl_->toPixels(points, line))
        return false;
    return impl_->paint([&](QPainter &painter) {
        painter.setPen(impl_->linePen());
        painter.drawPolyline(line);
    });
}

bool VU_Painter::drawPolygon(std::vector<Point2d> const &points, VS_RGBA const &fill)
{
    QPolygonF polygon;
    if (points.size() < 3 || !impl_->toPixels(points, polygon))
        return false;
    return impl_->drawPolygonAt(polygon, fill);
}

bool VU_Painter::drawTriangle(Point2d const &a, Point2d const &b, Point2d const &c)
{
    return drawPolygon({a, b, c}, impl_->pointFill);
}

bool VU_Painter::drawTriangle(Point2d const &a, Point2d const &b, Point2d const &c, VS_RGBA const &fill)
{
    return drawPolygon({a, b, c}, fill);
}

bool VU_Painter::drawQuad(Point2d const &a, Point2d const &b, Point2d const &c, Point2d const &d)
{
    return drawPolygon({a, b, c, d}, impl_->pointFill);
}

bool VU_Painter::drawQuad(Point2d const &a, Point2d const &b, Point2d const &c, Point2d const &d, VS_RGBA const &fill)
{
    return drawPolygon({a, b, c, d}, fill);
}

bool VU_Painter::drawCircle(Point2d const &centre, double radius)
{
    return impl_->drawDisc(centre, radius, QBrush(Qt::NoBrush), impl_->linePen());
}

bool VU_Painter::drawFilledDisc(Point2d const &centre, double radius)
{
    return drawFilledDisc(centre, radius, impl_->pointFill);
}

bool VU_Painter::drawFilledDisc(Point2d const &centre, double radius, VS_RGBA const &fill)
{
    return impl_->drawDisc(centre, radius, Impl::brush(fill), QPen(Qt::NoPen));
}

bool VU_Painter::drawTexturedQuads(VS_TexturePtr const &texture, std::vector<VU_TexturedQuad> const &quads)
{
    VS_Canvas const *canvas = impl_->binder.canvas();
    if (!canvas || canvas->pickingMode())
        return false;

    std::vector<QPolygonF> corners(quads.size());
    for (std::size_t q = 0; q < quads.size(); ++q) {
        for (Point2d const &uv : quads[q].texCoords)
            if (!isFinite(uv.x) || !isFinite(uv.y))
                return false;
        if (!impl_->toPixels(std::vector<Point2d>(quads[q].corners, quads[q].corners + 4), corners[q]))
            return false;
    }
    return impl_->paint([&](QPainter &painter) {
        QTransform const toView = painter.transform();
        for (std::size_t q = 0; q < quads.size(); ++q) {
            QImage const image = Impl::resample(texture.get(), quads[q], corners[q]);
            QPolygonF const square(QRectF(0.0, 0.0, image.width(), image.height()));
            QTransform quadMap;
            // A quad folded onto a line or a point has no map and paints nothing.
            if (!QTransform::quadToQuad(square.mid(0, 4), corners[q], quadMap))
                continue;
            painter.setTransform(quadMap * toView);
            painter.drawImage(QPointF(0.0, 0.0), image);
        }
        painter.setTransform(toView);
    });
}

// Drawings of drawing elements: vector shapes with a bounding box, their identity (CA_CelKey)
// and the handle a module gives out for the drawing it exposes at a frame (OC_DrawingPtr).
//
// Shapes are given in the drawing's own OGL space; the element module's transform places them.
#pragma once

#include "base/Math/Shapes.h"
#include "base/UT_SharedPtr.h"

#include <QColor>
#include <QString>

#include <vector>

class CC_Transformation;
class MO_OGLContext;

// The identity of one drawing of one element: the element's name and the drawing's name.
class CA_CelKey {
public:
    CA_CelKey() = default;
    CA_CelKey(QString element, QString drawing) : element_(std::move(element)), drawing_(std::move(drawing)) {}

    // False for the empty key: one without a drawing name.
    bool isValid() const { return !drawing_.isEmpty(); }
    QString const &element() const { return element_; }
    QString const &drawing() const { return drawing_; }

    bool operator==(CA_CelKey const &o) const { return element_ == o.element_ && drawing_ == o.drawing_; }
    bool operator!=(CA_CelKey const &o) const { return !(*this == o); }
    bool operator<(CA_CelKey const &o) const
    {
        return element_ != o.element_ ? element_ < o.element_ : drawing_ < o.drawing_;
    }

private:
    QString element_;
    QString drawing_;
};

class CA_CelKeyMgr {
public:
    // The name under which the drawing appears in the element's timing; empty for an empty key.
    static QString timing(CA_CelKey const &key) { return key.drawing(); }
};

// One vector shape: an open polyline or a closed polygon. Polygons are filled with `fill`
// (a transparent fill draws nothing); both kinds are stroked with `stroke`.
struct OC_VectorShape {
    enum class Kind { Polyline, Polygon };

    Kind kind = Kind::Polyline;
    std::vector<Math::Point2d> points;
    QColor stroke = QColor(0, 0, 0);
    QColor fill = QColor(0, 0, 0, 0);
    double thickness = 1.0;  // stroke width in pixels, >= 0

    bool operator==(OC_VectorShape const &o) const
    {
        return kind == o.kind && points == o.points && stroke == o.stroke && fill == o.fill &&
               thickness == o.thickness;
    }
};

// A drawing: an ordered list of shapes, painted first to last.
class OC_Drawing {
public:
    OC_Drawing(CA_CelKey key, std::vector<OC_VectorShape> shapes);

    CA_CelKey const &celKey() const { return key_; }
    std::vector<OC_VectorShape> const &shapes() const { return shapes_; }

    // The box of all shape points in the drawing's own space; empty for a drawing without points.
    Math::Box2d const &bounds() const { return bounds_; }
    // The box of all shape points carried through matrix(true) of `transformation`.
    Math::Box3d boundingBox(CC_Transformation const &transformation) const;

    // Paints the drawing on the context's binder, under its current matrices: as it is, or in
    // the outline mode of context.internal(), every shape's outline in the outline colour and
    // thickness, unfilled. Nothing without a binder.
    void draw(MO_OGLContext &context) const;

private:
    CA_CelKey key_;
    std::vector<OC_VectorShape> shapes_;
    Math::Box2d bounds_;  // = box of every point of shapes_
};

// What an element module gives out for a frame: a drawing or nothing.
class OC_DrawingPtr {
public:
    OC_DrawingPtr() = default;
    explicit OC_DrawingPtr(UT_SharedPtr<OC_Drawing const> drawing) : drawing_(std::move(drawing)) {}

    OC_Drawing const *drawing() const { return drawing_.get(); }  // null when nothing is exposed
    UT_SharedPtr<OC_Drawing const> const &shared() const { return drawing_; }  // the same, shared
    bool isDrawing() const { return drawing_ != nullptr; }
    OC_Drawing const *operator->() const { return drawing_.get(); }

private:
    UT_SharedPtr<OC_Drawing const> drawing_;
};

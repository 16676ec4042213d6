// The chain of frames a view goes through, from a drawing's own space down to the pixels of the
// view, and the maps between any two of its frames.
//
//   ModelFrame (6)      the space of the current model matrix: a drawing's or a module's own space
//      | model matrix
//   WorldFrame (5)      scene space, in OGL units, y up
//      | view matrix    (the inverse of the camera's placement in the scene)
//   CameraFrame (4)     scene space as the camera sees it: the camera at the origin, y up
//      | projection matrix
//   NormalizedFrame (3) the view spans -1 to 1 in x and in y, y up
//      | viewport: x * (width / 2), y * (height / 2)
//   ScreenFrame (2)     pixels, origin at the centre of the view, y up
//      | flip:     x + (width - 1) / 2, (height - 1) / 2 - y
//   ViewFrame (1)       pixels, origin at the top left pixel, y down
//
// In ViewFrame the pixel (i, j) is centred on the point (i, j): a whole point is a pixel, as a
// mouse position is. The image of a view of width W spans -0.5 to W - 0.5.
//
// Points of the plane (Point2d) are mapped as the plane z = 0 of the deeper frame (the higher
// number), so that a map and its way back agree even under a tilted matrix; points of space
// (Point3d) go through the full 4x4 matrices. A map that cannot be made (a singular matrix on the
// way back, an empty viewport, a point at infinity) gives false and leaves the result untouched.
#pragma once

#include "base/Math/Matrix.h"
#include "base/Math/Vector.h"

namespace Math {

class CameraTransformChain {
public:
    enum ReferenceFrame {
        ViewFrame = 1,
        ScreenFrame = 2,
        NormalizedFrame = 3,
        CameraFrame = 4,
        WorldFrame = 5,
        ModelFrame = 6,
    };
    static bool isReferenceFrame(int frame) { return frame >= ViewFrame && frame <= ModelFrame; }

    // Identity matrices and an empty viewport: nothing maps until setViewport is called.
    CameraTransformChain() = default;

    Matrix4x4 const &modelMatrix() const { return model_; }
    Matrix4x4 const &viewMatrix() const { return view_; }
    Matrix4x4 const &projectionMatrix() const { return projection_; }
    int viewportWidth() const { return width_; }
    int viewportHeight() const { return height_; }

    // The setters refuse (false, nothing changed) a matrix with an element that is not finite and
    // a negative viewport size. A viewport of size 0 is allowed: it maps nothing.
    bool setModelMatrix(Matrix4x4 const &m);
    bool setViewMatrix(Matrix4x4 const &m);
    bool setProjectionMatrix(Matrix4x4 const &m);
    bool setViewport(int width, int height);

    // The projection of a view that shows `pixelsPerUnit` pixels for one OGL unit of the camera
    // frame, in x and in y alike, for the current viewport; the camera's origin lands at the centre
    // of the view. Refused for a non-positive or non-finite zoom and for an empty viewport.
    bool setOrthographicProjection(double pixelsPerUnit);

    // The matrix that carries points of frame `from` to frame `to` (either direction), with
    // ok = false when the way back needs an inverse that does not exist.
    Matrix4x4 matrix(ReferenceFrame from, ReferenceFrame to, bool *ok = nullptr) const;

    // Maps a point from frame `source` to frame `destination`. False, and `result` untouched, when
    // the frames are unknown, the point is not finite or the map cannot be made.
    bool transform(ReferenceFrame source, Point2d const &point, ReferenceFrame destination, Point2d &result) const;
    bool transform(ReferenceFrame source, Point3d const &point, ReferenceFrame destination, Point3d &result) const;

    // Maps a point of frame `source` to the pixels of the view (ViewFrame).
    bool project(ReferenceFrame source, Point3d const &point, Point2d &result) const;
    bool project(ReferenceFrame source, Point2d const &point, Point2d &result) const;

    // The number of view pixels that one unit along x of frame `source`, at its origin, covers: the
    // zoom a primitive needs to turn a length of that frame into pixels. 0 when it cannot be known.
    double pixelsPerUnit(ReferenceFrame source) const;

private:
    // Whether both are frames and, when pixels are involved, the viewport is not empty.
    bool canMap(int source, int destination) const;
    // The matrix one step up the chain: from `frame` to `frame - 1`.
    Matrix4x4 step(int frame) const;

    Matrix4x4 model_;
    Matrix4x4 view_;
    Matrix4x4 projection_;
    int width_ = 0;   // viewport in pixels, >= 0
    int height_ = 0;  // viewport in pixels, >= 0
};

} // namespace Math

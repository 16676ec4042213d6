#include "graphic/CameraTransformChain.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>

namespace Math {

namespace {

bool isFinite(Matrix4x4 const &m)
{
    for (int i = 0; i < 16; ++i)
        if (!std::isfinite(m.data()[i]))
            return false;
    return true;
}

bool isFinite(Point2d const &p) { return std::isfinite(p.x) && std::isfinite(p.y); }
bool isFinite(Point3d const &p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

// The plane z = 0 of a 4x4 map's source, as a 3x3 homography: rows and columns x, y and w.
Eigen::Matrix3d planeMap(Matrix4x4 const &m)
{
    static int const index[3] = {0, 1, 3};
    Eigen::Matrix3d h;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            h(r, c) = m(index[r], index[c]);
    return h;
}

} // namespace

bool CameraTransformChain::setModelMatrix(Matrix4x4 const &m)
{
    if (!isFinite(m))
        return false;
    model_ = m;
    return true;
}

bool CameraTransformChain::setViewMatrix(Matrix4x4 const &m)
{
    if (!isFinite(m))
        return false;
    view_ = m;
    return true;
}

bool CameraTransformChain::setProjectionMatrix(Matrix4x4 const &m)
{
    if (!isFinite(m))
        return false;
    projection_ = m;
    return true;
}

bool CameraTransformChain::setViewport(int width, int height)
{
    if (width < 0 || height < 0)
        return false;
    width_ = width;
    height_ = height;
    return true;
}

bool CameraTransformChain::setOrthographicProjection(double pixelsPerUnit)
{
    if (!std::isfinite(pixelsPerUnit) || pixelsPerUnit <= 0.0 || width_ == 0 || height_ == 0)
        return false;
    // The viewport multiplies by half the view's size; undo that so one unit is pixelsPerUnit.
    Matrix4x4 p;
    p.scale(2.0 * pixelsPerUnit / width_, 2.0 * pixelsPerUnit / height_, 1.0);
    projection_ = p;
    return true;
}

Matrix4x4 CameraTransformChain::step(int frame) const
{
    switch (frame) {
    case ModelFrame:
        return model_;
    case WorldFrame:
        return view_;
    case CameraFrame:
        return projection_;
    case NormalizedFrame: {
        Matrix4x4 m;
        m.scale(width_ / 2.0, height_ / 2.0, 1.0);
        return m;
    }
    case ScreenFrame: {
        Matrix4x4 m;
        m.translate((width_ - 1) / 2.0, (height_ - 1) / 2.0, 0.0).scale(1.0, -1.0, 1.0);
        return m;
    }
    default:
        return Matrix4x4();
    }
}

Matrix4x4 CameraTransformChain::matrix(ReferenceFrame from, ReferenceFrame to, bool *ok) const
{
    if (ok)
        *ok = true;
    if (from < to) {
        try {
            return matrix(to, from).getInverse();
        } catch (SingularMatrixError const &) {
            if (ok)
                *ok = false;
            return Matrix4x4();
        }
    }
    Matrix4x4 m;
    for (int f = from; f > to; --f)
        m = step(f) * m;
    return m;
}

bool CameraTransformChain::canMap(int source, int destination) const
{
    if (!isReferenceFrame(source) || !isReferenceFrame(destination))
        return false;
    // Pixels exist only once the view has a size.
    bool const viaViewport = std::min(source, destination) <= ScreenFrame;
    return !viaViewport || (width_ > 0 && height_ > 0);
}

bool CameraTransformChain::transform(ReferenceFrame source, Point2d const &point, ReferenceFrame destination,
                                     Point2d &result) const
{
    if (!canMap(source, destination) || !isFinite(point))
        return false;
    bool const down = source >= destination;  // towards the pixels
    Eigen::Matrix3d h = planeMap(matrix(down ? source : destination, down ? destination : source));
    if (!down) {
        Eigen::FullPivLU<Eigen::Matrix3d> lu(h);
        if (!lu.isInvertible())
            return false;
        h = lu.inverse();
    }
    Eigen::Vector3d const q = h * Eigen::Vector3d(point.x, point.y, 1.0);
    Point2d const mapped(q.x() / q.z(), q.y() / q.z());
    if (q.z() == 0.0 || !isFinite(mapped))
        return false;
    result = mapped;
    return true;
}

bool CameraTransformChain::transform(ReferenceFrame source, Point3d const &point, ReferenceFrame destination,
                                     Point3d &result) const
{
    if (!canMap(source, destination) || !isFinite(point))
        return false;
    bool ok = true;
    Matrix4x4 const m = matrix(source, destination, &ok);
    if (!ok)
        return false;
    Point3d const mapped = m * point;
    if (!isFinite(mapped))
        return false;
    result = mapped;
    return true;
}

bool CameraTransformChain::project(ReferenceFrame source, Point3d const &point, Point2d &result) const
{
    Point3d pixel;
    if (!transform(source, point, ViewFrame, pixel))
        return false;
    result = pixel.toPoint2d();
    return true;
}

bool CameraTransformChain::project(ReferenceFrame source, Point2d const &point, Point2d &result) const
{
    return transform(source, point, ViewFrame, result);
}

double CameraTransformChain::pixelsPerUnit(ReferenceFrame source) const
{
    Point2d o, x;
    if (!project(source, Point2d(0.0, 0.0), o) || !project(source, Point2d(1.0, 0.0), x))
        return 0.0;
    return o.GetDistance(x);
}

} // namespace Math

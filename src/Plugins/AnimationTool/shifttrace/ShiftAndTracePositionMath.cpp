#include "shifttrace/ShiftAndTracePositionMath.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kPi = 3.141592653589793;

// The factor in [lo, hi] nearest `ratio` such that both scales stay within range; 0 when none does.
double allowedRatio(AT_ShiftAndTraceUtil::PositionData const &data, double ratio)
{
    using namespace ShiftAndTraceToolUtils;
    double const ax = std::fabs(data.scaleX), ay = std::fabs(data.scaleY);
    double const lo = std::max(kMinScale / ax, kMinScale / ay);
    double const hi = std::min(kMaxScale / ax, kMaxScale / ay);
    if (!(lo <= hi))
        return 0.0;
    return std::clamp(ratio, lo, hi);
}

} // namespace

bool ShiftAndTraceToolUtils::rotationStepDegrees(Math::Vector2d prev, Math::Vector2d cur, double &degrees)
{
    if (prev.length() == 0.0 || cur.length() == 0.0)
        return false;
    prev.Normalize();
    cur.Normalize();
    // atan2 of the cross and dot products: the signed angle from prev to cur.
    double const angle = std::atan2(cur.y * prev.x - cur.x * prev.y, cur.y * prev.y + cur.x * prev.x);
    if (!std::isfinite(angle))
        return false;
    degrees = angle * 180.0 / kPi;
    return true;
}

void ShiftAndTraceToolUtils::addMove(PositionData &data, Math::Vector2d const &oglDelta,
                                     SC_SceneMetrics const &metrics)
{
    data.positionX += oglDelta.x * metrics.oglToFieldX();
    data.positionY += oglDelta.y * metrics.oglToFieldY();
}

bool ShiftAndTraceToolUtils::scaleBy(PositionData &data, double ratio)
{
    if (!std::isfinite(ratio) || ratio <= 0.0 || data.scaleX == 0.0 || data.scaleY == 0.0)
        return false;
    double const r = allowedRatio(data, ratio);
    if (r == 0.0)
        return false;
    data.scaleX *= r;
    data.scaleY *= r;
    return true;
}

void ShiftAndTraceToolUtils::movePivotKeepingImage(PositionData &data, Math::Vector2d const &fieldDelta,
                                                   SC_SceneMetrics const &metrics)
{
    Math::Point3d const origin(0.0, 0.0, 0.0);
    Math::Point3d const before = AT_ShiftAndTraceUtil::offsetMatrix(data, metrics) * origin;
    data.pivotX += fieldDelta.x;
    data.pivotY += fieldDelta.y;
    Math::Point3d const after = AT_ShiftAndTraceUtil::offsetMatrix(data, metrics) * origin;
    Math::Vector3d const back = metrics.fromOGL(before - after);
    data.positionX += back.x;
    data.positionY += back.y;
}

bool ShiftAndTraceToolUtils::applyPlaneTransform(PositionData &data, Math::Matrix2x3 const &t,
                                                 SC_SceneMetrics const &metrics)
{
    // Careful: a mirrored transform has a negative determinant; its magnitude is the area factor.
    double const det = t(0, 0) * t(1, 1) - t(0, 1) * t(1, 0);
    double const s = std::sqrt(std::fabs(det));
    if (!std::isfinite(s) || s == 0.0)
        return false;
    Math::Vector2d const axis = t.xAxis();
    double const angle = std::atan2(axis.y, axis.x) * 180.0 / kPi;
    Math::Point2d const c = shownPivotOgl(data, metrics);
    Math::Vector2d const moved = t * c - c;
    PositionData result = data;
    if (result.scaleX != 0.0 && result.scaleY != 0.0) {
        double const r = allowedRatio(result, s);
        if (r != 0.0) {
            result.scaleX *= r;
            result.scaleY *= r;
        }
    }
    result.rotation += angle;
    result.positionX += moved.x * metrics.oglToFieldX();
    result.positionY += moved.y * metrics.oglToFieldY();
    if (!result.isStorable())
        return false;
    data = result;
    return true;
}

// The arithmetic of a drawing's shift (PositionData) under the handles of the Shift and Trace tool,
// free of views and scenes so that each step can be checked by hand.
//
// Conventions. A shift maps a point x of the drawing to (p + q) + R(rotation) S(scaleX, scaleY)
// (x - p), with p the pivot and q the position in OGL units (field units times the metrics'
// fieldToOgl factors, x and y apart). Rotations are in degrees, counter-clockwise.
//
// Every result stays finite: a step that would need a division by zero, the root of a negative
// number or a scale outside [kMinScale, kMaxScale] is cut to what is allowed or not applied.
#pragma once

#include "host/HostAPI.h"

namespace ShiftAndTraceToolUtils {

using PositionData = AT_ShiftAndTraceUtil::PositionData;

// A handle never drags a scale's magnitude below or above these: a scale of 0 could never be
// dragged back, and both keep the offset matrix invertible.
constexpr double kMinScale = 1e-3;
constexpr double kMaxScale = 1e3;

// A point in field units, in OGL units.
inline Math::Point2d fieldToOgl(Math::Point2d const &field, SC_SceneMetrics const &metrics)
{
    return {field.x * metrics.fieldToOglX(), field.y * metrics.fieldToOglY()};
}
// The pivot, and the point where the shift shows it (pivot + position), in OGL units.
inline Math::Point2d pivotOgl(PositionData const &data, SC_SceneMetrics const &metrics)
{
    return fieldToOgl({data.pivotX, data.pivotY}, metrics);
}
inline Math::Point2d shownPivotOgl(PositionData const &data, SC_SceneMetrics const &metrics)
{
    return fieldToOgl({data.pivotX + data.positionX, data.pivotY + data.positionY}, metrics);
}

// The angle in degrees that turns direction `prev` onto direction `cur`, in (-180, 180]. False (and
// `degrees` untouched) when either vector has length exactly 0.
bool rotationStepDegrees(Math::Vector2d prev, Math::Vector2d cur, double &degrees);

// Adds an OGL displacement to the position.
void addMove(PositionData &data, Math::Vector2d const &oglDelta, SC_SceneMetrics const &metrics);

// Multiplies both scales by `ratio`, cut so that each magnitude stays within [kMinScale, kMaxScale].
// False, nothing changed, for a ratio that is not finite and positive, or a scale of 0 (which no
// ratio can bring back).
bool scaleBy(PositionData &data, double ratio);

// Moves the pivot by `fieldDelta` and the position so that the drawing stays where it is shown.
void movePivotKeepingImage(PositionData &data, Math::Vector2d const &fieldDelta, SC_SceneMetrics const &metrics);

// Applies a plane transform `t`, in the drawing's own OGL space, to the shift: the scales are
// multiplied by the square root of |det t| (cut as in scaleBy), the rotation grows by the angle of
// t's x axis, and the position moves by where t carries the shown pivot. The pivot stays. False,
// nothing changed, when det t is 0 or not finite, or the result could not be stored (a value not
// finite or above the storage limit).
bool applyPlaneTransform(PositionData &data, Math::Matrix2x3 const &t, SC_SceneMetrics const &metrics);

} // namespace ShiftAndTraceToolUtils

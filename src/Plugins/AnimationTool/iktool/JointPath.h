// Where a dragged joint goes at each frame of a range: the arithmetic of the four interpolation
// types, kept apart from the scene so that it can be checked by hand.
//
// A manipulation edits every frame of the active range at once. For each selected joint the tool
// keeps a JointPath: where the joint stands at the first and last frame of the range (start, end),
// at the current frame (base), and where the drag puts it at the current frame (target). The target
// of the joint at another frame f then follows from the interpolation type:
//   Altogether (0)  the current frame's position plus the delta, at every frame;
//   MoveAll (1)     the joint's own position at f plus the delta;
//   Linear (2)      on the line start -> target up to the current frame, target -> end after it;
//   Cubic (3)       on the parabola through start, target and end, the current frame at its
//                   parameter 0.5 (second degree, whatever the name says); z runs linearly from
//                   start to end and is no part of the curve.
#pragma once

#include "host/HostGeometry.h"

struct JointPath {
    Math::Point3d start;   // position in the first record of the range
    Math::Point3d end;     // position in the last record
    Math::Point3d base;    // position at the current frame
    Math::Point3d target;  // = base + the drag delta
    bool straight = false;  // no curve fits: the path is the two pieces start-target-end
    double coefficients[6] = {0, 0, 0, 0, 0, 0};  // c0x, c1x, c2x, c0y, c1y, c2y; x(u) = c0 + c1 u + c2 u^2
};

namespace IKToolUtil {

// Fits the curve through start, target and end in the plane, or marks the path straight when start
// and end are closer than 0.0001 or the target lies within one percent of the chord's length of it.
void fitPath(JointPath &path);

// The interpolation type a drag really uses: 0 while applying altogether; 1 with fewer than two
// records; a type below 2 as it is; Linear when the current frame is the first or last key (a curve
// needs a middle); else the chosen type.
int effectiveInterpolation(bool applyingAltogether, int recordCount, int interpolationType, int current,
                           int first, int last);

// The target of a joint on `path` at frame f, for type Linear or Cubic, the current frame being
// `current` and the range first..last. The straight pieces are used at either end of the range,
// for a one-frame range, a straight path or any type but Cubic.
Math::Point3d interpolatedTarget(JointPath const &path, int type, int f, int current, int first, int last);

// The drag target of a joint at frame f for the effective type `type`: `atCurrent` + `delta` for
// Altogether, `own` (its position at f) + `delta` for MoveAll, the point of `path` for Linear and
// Cubic. Careful: Linear and Cubic need the path; a null one aborts the process.
Math::Point3d dragTarget(int type, Math::Point3d const &own, Math::Point3d const &atCurrent, JointPath const *path,
                         Math::Vector3d const &delta, int f, int current, int first, int last);

} // namespace IKToolUtil

#include "iktool/JointPath.h"

#include <cmath>
#include <cstdlib>

namespace IKToolUtil {

namespace {

constexpr double kMinimumChord = 0.0001;   // start and end closer than this: no curve
constexpr double kOnChordFraction = 100.0;  // within chord / 100 of the chord: no curve

// c0, c1, c2 of the parabola with value s at 0, m at 0.5 and e at 1.
void fitAxis(double s, double m, double e, double *c)
{
    c[0] = s;
    c[2] = (e - s) * 2.0 - (m - s) * 4.0;
    c[1] = (e - s) - c[2];
}

} // namespace

void fitPath(JointPath &path)
{
    Math::Point2d const start(path.start.x, path.start.y);
    Math::Point2d const end(path.end.x, path.end.y);
    Math::Point2d const target(path.target.x, path.target.y);
    if (start.GetDistance(end) < kMinimumChord) {
        path.straight = true;
        return;
    }
    path.straight = false;
    Math::Segment2d const chord(start, end);
    double const d = std::sqrt(chord.GetDistanceSq(target));
    if (chord.length() / kOnChordFraction > d) {
        path.straight = true;
        return;
    }
    fitAxis(path.start.x, path.target.x, path.end.x, path.coefficients);
    fitAxis(path.start.y, path.target.y, path.end.y, path.coefficients + 3);
}

int effectiveInterpolation(bool applyingAltogether, int recordCount, int interpolationType, int current,
                           int first, int last)
{
    if (applyingAltogether)
        return 0;
    if (recordCount < 2)
        return 1;
    if (interpolationType < 2)
        return interpolationType;
    if (current == first || current == last)
        return 2;
    return interpolationType;
}

Math::Point3d interpolatedTarget(JointPath const &path, int type, int f, int current, int first, int last)
{
    bool const linear = current == first || current == last || first == last || path.straight || type != 3;
    if (linear) {
        if (f == current)
            return path.target;
        if (f == first)
            return path.start;
        if (f == last)
            return path.end;
        if (f > current)
            return Math::Point3d::interpolate(double(f - current) / double(last - current), path.target, path.end);
        return Math::Point3d::interpolate(double(f - first) / double(current - first), path.start, path.target);
    }
    double u = 0.5;
    if (f < current)
        u = double(f - first) / double(current - first) * 0.5;
    else if (f > current)
        u = double(f - current) * 0.5 / double(last - current) + 0.5;
    double const *c = path.coefficients;
    return Math::Point3d(c[0] + c[1] * u + c[2] * u * u, c[3] + c[4] * u + c[5] * u * u,
                         (1.0 - u) * path.start.z + u * path.end.z);
}

Math::Point3d dragTarget(int type, Math::Point3d const &own, Math::Point3d const &atCurrent, JointPath const *path,
                         Math::Vector3d const &delta, int f, int current, int first, int last)
{
    if (type == 0)
        return atCurrent + delta;
    if (type == 2 || type == 3) {
        if (!path)
            std::abort();  // every selected joint has a path once the tasks are set up
        return interpolatedTarget(*path, type, f, current, first, last);
    }
    return own + delta;
}

} // namespace IKToolUtil

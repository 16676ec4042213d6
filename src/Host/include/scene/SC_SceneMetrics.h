// Units of a scene: attribute values are in field units, scene space is in OGL units.
//
// The two axes scale differently on purpose (by default 1/12 in x and 1/16 in y, a 4:3 field),
// so that an x/y mix-up shows at once. The conversion is a pure scale: no offset, z unchanged.
#pragma once

#include "base/Math/Vector.h"

class SC_SceneMetrics {
public:
    static constexpr double kDefaultFieldToOglX = 1.0 / 12.0;
    static constexpr double kDefaultFieldToOglY = 1.0 / 16.0;

    SC_SceneMetrics() = default;

    // OGL units per field unit along x and y, and their inverses.
    double fieldToOglX() const { return toOglX_; }
    double fieldToOglY() const { return toOglY_; }
    double oglToFieldX() const { return 1.0 / toOglX_; }
    double oglToFieldY() const { return 1.0 / toOglY_; }

    // Sets both factors. Refuses (false, nothing changed) factors that are not finite and
    // strictly positive.
    bool setFieldToOgl(double x, double y);

    Math::Point3d toOGL(Math::Point3d const &p) const { return {p.x * toOglX_, p.y * toOglY_, p.z}; }
    Math::Vector3d toOGL(Math::Vector3d const &v) const { return {v.x * toOglX_, v.y * toOglY_, v.z}; }
    Math::Point2d toOGL(Math::Point2d const &p) const { return {p.x * toOglX_, p.y * toOglY_}; }
    Math::Point3d fromOGL(Math::Point3d const &p) const { return {p.x / toOglX_, p.y / toOglY_, p.z}; }
    Math::Vector3d fromOGL(Math::Vector3d const &v) const { return {v.x / toOglX_, v.y / toOglY_, v.z}; }
    Math::Point2d fromOGL(Math::Point2d const &p) const { return {p.x / toOglX_, p.y / toOglY_}; }

    bool operator==(SC_SceneMetrics const &o) const { return toOglX_ == o.toOglX_ && toOglY_ == o.toOglY_; }
    bool operator!=(SC_SceneMetrics const &o) const { return !(*this == o); }

private:
    double toOglX_ = kDefaultFieldToOglX;  // > 0 and finite
    double toOglY_ = kDefaultFieldToOglY;  // > 0 and finite
};

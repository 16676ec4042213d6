// Small value classes of the scene: metrics, transformations, drawings.
#include "scene/CA_Drawing.h"
#include "scene/CC_Transformation.h"
#include "scene/SC_SceneMetrics.h"

#include "base/UT_DynKey.h"

#include <cmath>

UT_DynKey const DeformationInformation::typeId("DeformationInformation");

DeformationInformation const *CC_Transformation::deformation(UT_DynKey const &key) const
{
    if (key != DeformationInformation::typeId || !deformation_)
        return nullptr;
    return &*deformation_;
}

bool SC_SceneMetrics::setFieldToOgl(double x, double y)
{
    if (!std::isfinite(x) || !std::isfinite(y) || x <= 0.0 || y <= 0.0)
        return false;
    toOglX_ = x;
    toOglY_ = y;
    return true;
}

OC_Drawing::OC_Drawing(CA_CelKey key, std::vector<OC_VectorShape> shapes)
    : key_(std::move(key)), shapes_(std::move(shapes))
{
    for (OC_VectorShape const &shape : shapes_)
        for (Math::Point2d const &p : shape.points)
            bounds_.Add(p);
}

Math::Box3d OC_Drawing::boundingBox(CC_Transformation const &transformation) const
{
    Math::Matrix4x4 const &m = transformation.matrix(true);
    Math::Box3d box;
    for (OC_VectorShape const &shape : shapes_)
        for (Math::Point2d const &p : shape.points)
            box.Add(m * Math::Point3d(p.x, p.y, 0.0));
    return box;
}

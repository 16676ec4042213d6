#include "scene/DeformerModules.h"

#include "OwnAttrMeta.h"
#include "base/UT_DynKey.h"
#include "scene/AT_ValueAttr.h"
#include "scene/MO_ModuleVisitor.h"
#include "scene/SC_SceneMetrics.h"

#include <cmath>

namespace {

constexpr double kDegreesToRadians = 0.017453292519943295;  // pi / 180

Math::Vector2d direction(double degrees)
{
    return {std::cos(degrees * kDegreesToRadians), std::sin(degrees * kDegreesToRadians)};
}

// The frame with origin `origin` whose x axis points along `degrees`.
Math::Matrix2x3 frameAt(Math::Point2d const &origin, double degrees)
{
    Math::Matrix2x3 m;
    m.translate(origin.x, origin.y).rotateDegrees(degrees);
    return m;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// MO_DeformerModule

MO_DeformerModule::MO_DeformerModule(QString typeKeyword) : MO_Module(std::move(typeKeyword), 1, 1)
{
    AT_AttrMeta const &offsetMeta = ownAttrMeta(QStringLiteral("offset"), QStringLiteral("Offset"));
    AT_AttrMeta const &orientationMeta = ownAttrMeta(QStringLiteral("orientation"), QStringLiteral("Orientation"));
    offset_ = addOwnAttr(std::make_unique<AT_Position2dAttr>(this, offsetMeta));
    orientation_ = addOwnAttr(std::make_unique<AT_DoubleAttr>(this, orientationMeta));
}

CC_Transformation MO_DeformerModule::compose(MO_BaseContext const &context, CC_Transformation const &parent) const
{
    Math::Matrix4x4 const &input = parent.matrix(true);
    CC_Transformation result(input * Math::Matrix4x4(ownFrame(context)), input);
    DeformationInformation info;
    if (DeformationInformation const *above = parent.deformation(DeformationInformation::typeId)) {
        info.chainLength = above->chainLength + 1;
        info.rigidMatrix = above->rigidMatrix;
    } else {
        info.rigidMatrix = input;
    }
    result.setDeformation(info);
    return result;
}

Math::Matrix2x3 MO_DeformerModule::offsetFrame(MO_BaseContext const &context) const
{
    double const frame = context.frame();
    return frameAt(sceneMetrics().toOGL(readPoint2d(offset_, frame)), readDouble(orientation_, frame));
}

// ---------------------------------------------------------------------------------------------
// Bones

BendyBoneModule::BendyBoneModule() : BendyBoneModule(Keyword()) {}

BendyBoneModule::BendyBoneModule(QString typeKeyword) : MO_DeformerModule(std::move(typeKeyword))
{
    AT_AttrMeta const &lengthMeta = ownAttrMeta(QStringLiteral("length"), QStringLiteral("Length"));
    length_ = addOwnAttr(std::make_unique<AT_DoubleAttr>(this, lengthMeta));
}

Math::Matrix2x3 BendyBoneModule::ownFrame(MO_BaseContext const &context) const
{
    Math::Matrix2x3 end = offsetFrame(context);
    end.translate(sceneMetrics().fieldToOglX() * readDouble(length_, context.frame()), 0.0);
    return end;
}

void BendyBoneModule::componentFrames(Math::Matrix2x3 const &start, double lengthOgl, MO_FramePair &offset,
                                      MO_FramePair &startPair, MO_FramePair &middle, MO_FramePair &end, bool posed)
{
    auto const put = [posed](MO_FramePair &pair, Math::Matrix2x3 const &m) { (posed ? pair.second : pair.first) = m; };
    put(offset, Math::Matrix2x3(1.0, 0.0, start(0, 2), 0.0, 1.0, start(1, 2)));
    put(startPair, start);
    Math::Matrix2x3 m = start;
    put(middle, m.translate(0.5 * lengthOgl, 0.0));
    m = start;
    put(end, m.translate(lengthOgl, 0.0));
}

void BendyBoneModule::computeComponentReference(MO_BaseContext &context, MO_FramePair &offset, MO_FramePair &start,
                                                MO_FramePair &middle, MO_FramePair &end) const
{
    SC_SceneMetrics const &metrics = sceneMetrics();
    componentFrames(frameAt(metrics.toOGL(offsetAttr()->localValue()), orientationAttr()->localValue()),
                    metrics.fieldToOglX() * length_->localValue(), offset, start, middle, end, false);
    componentFrames(offsetFrame(context), metrics.fieldToOglX() * readDouble(length_, context.frame()), offset,
                    start, middle, end, true);
}

void BendyBoneModule::accept(MO_ModuleVisitor &visitor) { visitor.visit(*this); }

GameBoneModule::GameBoneModule() : BendyBoneModule(Keyword()) {}
void GameBoneModule::accept(MO_ModuleVisitor &visitor) { visitor.visit(*this); }

// ---------------------------------------------------------------------------------------------
// CurveModule

CurveModule::CurveModule() : MO_DeformerModule(Keyword())
{
    AT_AttrMeta const &orientation1Meta =
        ownAttrMeta(QStringLiteral("orientation1"), QStringLiteral("Orientation 1"));
    AT_AttrMeta const &length0Meta = ownAttrMeta(QStringLiteral("length0"), QStringLiteral("Length 0"));
    AT_AttrMeta const &length1Meta = ownAttrMeta(QStringLiteral("length1"), QStringLiteral("Length 1"));
    orientation1_ = addOwnAttr(std::make_unique<AT_DoubleAttr>(this, orientation1Meta));
    length0_ = addOwnAttr(std::make_unique<AT_DoubleAttr>(this, length0Meta));
    length1_ = addOwnAttr(std::make_unique<AT_DoubleAttr>(this, length1Meta));
}

CurveModule::Shape CurveModule::shapeAt(double frame) const
{
    // Built in OGL units, where angles are true angles; getBeziers converts to field units.
    SC_SceneMetrics const &metrics = sceneMetrics();
    double const o0 = readDouble(orientationAttr(), frame);
    double const o1 = o0 + readDouble(orientation1_, frame);
    Shape shape;
    shape.dir0 = direction(o0);
    shape.dir1 = direction(o1);
    shape.start = metrics.toOGL(readPoint2d(offsetAttr(), frame));
    shape.elbow = shape.start + shape.dir0 * (metrics.fieldToOglX() * readDouble(length0_, frame));
    shape.end = shape.elbow + shape.dir1 * (metrics.fieldToOglX() * readDouble(length1_, frame));
    return shape;
}

bool CurveModule::getBeziers(MO_BaseContext const &context, GR_Bezier2d &first, GR_Bezier2d &second,
                             DeformationInformation const &) const
{
    if (first.degree() != 3 || first.segmentCount() != 1 || first.controlPointCount() != 4 ||
        second.degree() != 3 || second.segmentCount() != 1 || second.controlPointCount() != 4)
        return false;
    Shape const s = shapeAt(context.frame());
    Math::Vector2d elbowTangent = s.dir0 + s.dir1;
    if (elbowTangent.Normalize().lengthSq() == 0.0)
        elbowTangent = s.dir1;  // folded back on itself: no bisector, follow the second piece
    double const third0 = (s.elbow - s.start).length() / 3.0;
    double const third1 = (s.end - s.elbow).length() / 3.0;
    Math::Point2d const points[2][4] = {
        {s.start, s.start + s.dir0 * third0, s.elbow - elbowTangent * third0, s.elbow},
        {s.elbow, s.elbow + elbowTangent * third1, s.end - s.dir1 * third1, s.end},
    };
    SC_SceneMetrics const &metrics = sceneMetrics();
    for (int i = 0; i < 4; ++i) {
        first.setControlPoint(i, metrics.fromOGL(points[0][i]));
        second.setControlPoint(i, metrics.fromOGL(points[1][i]));
    }
    return true;
}

Math::Matrix2x3 CurveModule::ownFrame(MO_BaseContext const &context) const
{
    double const frame = context.frame();
    return frameAt(shapeAt(frame).elbow, readDouble(orientationAttr(), frame) + readDouble(orientation1_, frame));
}

void CurveModule::accept(MO_ModuleVisitor &visitor) { visitor.visit(*this); }

// ---------------------------------------------------------------------------------------------
// OffsetModule, MiniPegModule

OffsetModule::OffsetModule() : MO_DeformerModule(Keyword()) {}

Math::Matrix2x3 OffsetModule::ownFrame(MO_BaseContext const &context) const
{
    return offsetFrame(context);
}

void OffsetModule::accept(MO_ModuleVisitor &visitor) { visitor.visit(*this); }

MiniPegModule::MiniPegModule() : MO_DeformerModule(Keyword())
{
    AT_AttrMeta const &useLocalMeta = ownAttrMeta(QStringLiteral("useLocalReferential"),
                                                  QStringLiteral("Use Local Referential"),
                                                  AT_AttrMetaContainer::NotAnimatable);
    useLocal_ = addOwnAttr(std::make_unique<AT_BoolAttr>(this, useLocalMeta, true));
}

bool MiniPegModule::useLocalReferential() const
{
    return useLocal_->localValue();
}

Math::Matrix2x3 MiniPegModule::localReferential(MO_BaseContext const &context) const
{
    return offsetFrame(context);
}

Math::Matrix2x3 MiniPegModule::ownFrame(MO_BaseContext const &context) const
{
    return useLocalReferential() ? localReferential(context) : Math::Matrix2x3();
}

void MiniPegModule::accept(MO_ModuleVisitor &visitor) { visitor.visit(*this); }

// ---------------------------------------------------------------------------------------------
// Visitor fallbacks

void MO_AbstractModuleVisitorWithModuleFallback::visit(MO_PegModule &m) { visitModule(m); }
void MO_AbstractModuleVisitorWithModuleFallback::visit(MO_ElementModule &m) { visitModule(m); }
void MO_AbstractModuleVisitorWithModuleFallback::visit(MO_SwitchModule &m) { visitModule(m); }
void MO_AbstractModuleVisitorWithModuleFallback::visit(BendyBoneModule &m) { visitModule(m); }
void MO_AbstractModuleVisitorWithModuleFallback::visit(GameBoneModule &m) { visitModule(m); }
void MO_AbstractModuleVisitorWithModuleFallback::visit(CurveModule &m) { visitModule(m); }
void MO_AbstractModuleVisitorWithModuleFallback::visit(OffsetModule &m) { visitModule(m); }
void MO_AbstractModuleVisitorWithModuleFallback::visit(MiniPegModule &m) { visitModule(m); }

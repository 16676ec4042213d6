// Deformer modules: bones, curves, offsets and mini pegs.
//
// A deformer's attributes are given in the space of what arrives at its input (matrix(false)
// of its transformation); matrix(true) adds the deformer's own frame, which places its
// children. The maths of each kind is written down in docs/bones-and-curves.md:
//   bone    start S = offset, direction `orientation`, end E = S + length along it; children
//           hang from the end frame.
//   curve   S = offset, elbow J = S + length0 along orientation0, end E = J + length1 along
//           orientation0 + orientation1; two cubic pieces S..J and J..E; children hang from
//           the elbow frame (origin J, turned by orientation0 + orientation1).
//   offset  frame T(offset) Rz(orientation).
//   mini peg  local referential T(offset) Rz(orientation), in force only while
//           useLocalReferential is true.
// Lengths are field units measured with the x factor of the scene metrics.
#pragma once

#include "graphic/GR_Bezier2d.h"
#include "scene/MO_Module.h"

#include <utility>

// The base of the deformer kinds: each has an offset and an orientation.
class MO_DeformerModule : public MO_Module {
public:
    MO_DeformerModule(QString typeKeyword);

    AT_Position2dAttr *offsetAttr() const { return offset_; }   // field units
    AT_DoubleAttr *orientationAttr() const { return orientation_; }  // degrees

protected:
    CC_Transformation compose(MO_BaseContext const &context, CC_Transformation const &parent) const override;
    // The deformer's own frame in its input space, OGL units.
    virtual Math::Matrix2x3 ownFrame(MO_BaseContext const &context) const = 0;
    // T(offset) Rz(orientation), OGL units.
    Math::Matrix2x3 offsetFrame(MO_BaseContext const &context) const;

private:
    AT_Position2dAttr *offset_;      // owned by the node
    AT_DoubleAttr *orientation_;
};

using MO_FramePair = std::pair<Math::Matrix2x3, Math::Matrix2x3>;

class BendyBoneModule : public MO_DeformerModule {
public:
    static QString Keyword() { return QStringLiteral("BendyBoneModule"); }
    BendyBoneModule();

    AT_DoubleAttr *lengthAttr() const { return length_; }  // field units, x factor

    // The bone's component frames in its input space (OGL units), each as (rest, posed): rest
    // from the attributes' local values, posed at the context. In order: the offset point
    // T(offset); the start frame T(offset) Rz(orientation); the middle frame and the end frame,
    // half and all the length further along the bone.
    void computeComponentReference(MO_BaseContext &context, MO_FramePair &offset, MO_FramePair &start,
                                   MO_FramePair &middle, MO_FramePair &end) const;
    void accept(MO_ModuleVisitor &visitor) override;

protected:
    BendyBoneModule(QString typeKeyword);
    Math::Matrix2x3 ownFrame(MO_BaseContext const &context) const override;

private:
    // The four frames for one set of values.
    static void componentFrames(Math::Matrix2x3 const &start, double lengthOgl, MO_FramePair &offset,
                                MO_FramePair &startPair, MO_FramePair &middle, MO_FramePair &end, bool posed);
    AT_DoubleAttr *length_;  // owned by the node
};

// Same maths and attributes as the bendy bone; only the keyword differs.
class GameBoneModule : public BendyBoneModule {
public:
    static QString Keyword() { return QStringLiteral("GameBoneModule"); }
    GameBoneModule();
    void accept(MO_ModuleVisitor &visitor) override;
};

class CurveModule : public MO_DeformerModule {
public:
    static QString Keyword() { return QStringLiteral("CurveModule"); }
    CurveModule();

    AT_DoubleAttr *orientation0() const { return orientationAttr(); }  // degrees, first piece
    AT_DoubleAttr *orientation1() const { return orientation1_; }      // degrees, relative to orientation0
    AT_DoubleAttr *length0Attr() const { return length0_; }
    AT_DoubleAttr *length1Attr() const { return length1_; }

    // The two cubic pieces at the context, in the module's input space, field units:
    // `first` from the start to the elbow, `second` from the elbow to the end; the tangent at
    // the elbow bisects the two directions so that the pieces join smoothly. Curves made with
    // (3, 1, 1). False (curves untouched) when a curve is not a single cubic piece.
    bool getBeziers(MO_BaseContext const &context, GR_Bezier2d &first, GR_Bezier2d &second,
                    DeformationInformation const &info) const;
    void accept(MO_ModuleVisitor &visitor) override;

protected:
    Math::Matrix2x3 ownFrame(MO_BaseContext const &context) const override;

private:
    struct Shape {
        Math::Point2d start, elbow, end;   // field units
        Math::Vector2d dir0, dir1;         // unit directions of the two pieces, field units
    };
    Shape shapeAt(double frame) const;
    AT_DoubleAttr *orientation1_;  // owned by the node
    AT_DoubleAttr *length0_;
    AT_DoubleAttr *length1_;
};

class OffsetModule : public MO_DeformerModule {
public:
    static QString Keyword() { return QStringLiteral("OffsetModule"); }
    OffsetModule();

    AT_Position2dAttr *offset() const { return offsetAttr(); }
    AT_DoubleAttr *orientation() const { return orientationAttr(); }
    void accept(MO_ModuleVisitor &visitor) override;

protected:
    Math::Matrix2x3 ownFrame(MO_BaseContext const &context) const override;
};

class MiniPegModule : public MO_DeformerModule {
public:
    static QString Keyword() { return QStringLiteral("MiniPegModule"); }
    MiniPegModule();

    AT_BoolAttr *useLocalReferentialAttr() const { return useLocal_; }
    bool useLocalReferential() const;
    // T(offset) Rz(orientation) at the context, OGL units, whether in force or not.
    Math::Matrix2x3 localReferential(MO_BaseContext const &context) const;
    void accept(MO_ModuleVisitor &visitor) override;

protected:
    Math::Matrix2x3 ownFrame(MO_BaseContext const &context) const override;

private:
    AT_BoolAttr *useLocal_;  // owned by the node
};

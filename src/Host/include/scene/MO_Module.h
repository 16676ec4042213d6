// Modules: the nodes of the scene graph that carry a transformation.
//
// A module's transformation is its parent's (the transformation arriving at its transformation
// input, by default input 0) followed by its own. Kinds, by type keyword:
//   "PEG"   MO_PegModule      T(position) T(pivot) Rz(rotation.z) S(scale) T(-pivot)
//   "READ"  MO_ElementModule  as "PEG"; its drawings hang under it
//   "SWITCH" MO_SwitchModule  none; the input in force at a frame is chosen by an attribute
//   deformers (DeformerModules.h): bones, curves, offsets, mini pegs.
// Attribute values are field units and degrees; SC_SceneMetrics takes them to OGL units.
//
// Evaluation reads every attribute at the context's frame under its surrogate, and keeps no
// cache: a value read is never stale, whatever was changed or marked dirty before.
#pragma once

#include "scene/CA_Drawing.h"
#include "scene/CC_Transformation.h"
#include "scene/MO_Context.h"
#include "scene/MO_Node.h"

#include <map>

class AT_BoolAttr;
class AT_DoubleAttr;
class AT_IntAttr;
class AT_Position2dAttr;
class AT_Position3dAttr;
class AT_Rotation3dAttr;
class MO_ModuleVisitor;

// The base of the modules; a plain MO_Module ("MODULE") passes its parent's transformation on.
class MO_Module : public MO_Node {
public:
    MO_Module();
    MO_Module(QString typeKeyword, int inPorts, int outPorts);
    ~MO_Module() override;

    MO_Module *toModule() override { return this; }
    MO_Module const *toModule() const override { return this; }

    // The transformation at output port `port` for the context; null for a port out of range.
    MO_PortTransformPtr getPortTransformation(MO_BaseContext const &context, unsigned port = 0) const;
    // The transformation arriving at input `port`: the output transformation of the module
    // found through realSrcPort. Null for a port out of range, an unlinked port and a source
    // that is no module.
    CC_TransformationPtr computeTransformationParent(MO_BaseContext const &context, unsigned port) const;
    // The module feeding input `index` (pass-through nodes looked through), or null.
    MO_Module *inputModule(int index) const;

    // The input whose transformation is composed with this module's at `frame`.
    virtual int transformationInput(double frame) const;
    // True for a module whose transformation input changes with the frame.
    virtual bool hasSwitchedInputs() const { return false; }

    virtual void accept(MO_ModuleVisitor &visitor);

protected:
    // The whole transformation of this module given what arrives at its transformation input
    // (the identity when nothing does). The base passes matrix(true) of the parent on.
    virtual CC_Transformation compose(MO_BaseContext const &context, CC_Transformation const &parent) const;

    // Attribute values at a frame, under surrogates; the defaults for a missing attribute.
    static double readDouble(AT_DoubleAttr const *attr, double frame, double fallback = 0.0);
    static bool readBool(AT_BoolAttr const *attr, double frame, bool fallback = false);
    static int readInt(AT_IntAttr const *attr, double frame, int fallback = 0);
    static Math::Point2d readPoint2d(AT_Position2dAttr const *attr, double frame, Math::Point2d const &fallback = {});
    static Math::Point3d readPoint3d(AT_Position3dAttr const *attr, double frame, Math::Point3d const &fallback = {});
    static Math::Angle3d readAngle(AT_Rotation3dAttr const *attr, double frame);

private:
    // The transformations last given, per frame, output port and context flags, with what each
    // was made from; one is given again while the module's dirty count, its transformation input,
    // the parent's transformation (the very object, which the entry keeps alive) and the scene's
    // metrics are the same. So a chain evaluated joint after joint composes each module once.
    // Careful: compose must read nothing but this module's attributes (their changes mark the
    // module dirty), the parent's transformation, the frame and the metrics.
    struct TransformCache;
    mutable std::unique_ptr<TransformCache> transformCache_;
};

// A module with an animated transformation of its own: pegs and drawing elements.
class MO_AnimatedModule : public MO_Module {
public:
    MO_AnimatedModule(QString typeKeyword, int inPorts, int outPorts);
    ~MO_AnimatedModule() override;

    MO_AnimatedModule *toAnimatedModule() override { return this; }

    AT_Position3dAttr *positionAttr() const { return position_; }  // field units
    AT_Rotation3dAttr *rotationAttr() const { return rotation_; }  // degrees; only z turns
    AT_Position2dAttr *scaleAttr() const { return scale_; }        // factors, default (1, 1)
    AT_Position2dAttr *pivotAttr() const { return pivot_; }        // field units
    // The pivot at the context, in field units (z = 0).
    Math::Point3d pivot(MO_BaseContext const &context) const;
    // Set by the user on the node: the module is left out of automatic skeletons.
    bool isExcludedFromIK() const;

protected:
    CC_Transformation compose(MO_BaseContext const &context, CC_Transformation const &parent) const override;
    // The own part: T(position) T(pivot) Rz(rotation.z) S(scale) T(-pivot), in OGL units.
    Math::Matrix4x4 localMatrix(MO_BaseContext const &context) const;

private:
    AT_Position3dAttr *position_;  // owned by the node, like every attribute below
    AT_Rotation3dAttr *rotation_;
    AT_Position2dAttr *scale_;
    AT_Position2dAttr *pivot_;
    AT_BoolAttr *excludedFromIK_;
    AT_BoolAttr *canAnimate_;      // "CAN_ANIMATE": false keeps the module out of generated skeletons
};

// "PEG": a module that only transforms.
class MO_PegModule : public MO_AnimatedModule {
public:
    static QString Keyword() { return QStringLiteral("PEG"); }
    MO_PegModule();
    void accept(MO_ModuleVisitor &visitor) override;
};

// "READ": a drawing element. Its timing exposes, from each timing frame on, the drawing of that
// entry until the next entry (an empty name exposes nothing); before the first entry nothing is
// exposed.
class MO_ElementModule : public MO_AnimatedModule {
public:
    static QString Keyword() { return QStringLiteral("READ"); }
    MO_ElementModule();
    ~MO_ElementModule() override;
    void accept(MO_ModuleVisitor &visitor) override;

    // The element's name, the first half of its drawings' CA_CelKey. Defaults to the instance
    // name given at creation.
    QString const &elementName() const;
    void setElementName(QString const &name);

    // Drawings by name, in name order. Adding under a taken name replaces the drawing.
    void addDrawing(QString const &name, std::vector<OC_VectorShape> shapes);
    std::map<QString, UT_SharedPtr<OC_Drawing const>> const &drawings() const;
    // Timing: drawing `name` is exposed from `frame` on. Refuses (false) an unknown drawing
    // name and a frame outside SC_Frames; the empty name exposes nothing.
    bool setExposure(int frame, QString const &name);
    std::map<int, QString> const &timing() const;

    // The drawing exposed at `frame` (truncated to a whole frame), or an empty handle.
    OC_DrawingPtr oglDrawing(double frame) const;

    // The drawings and the timing together: what an edit of the element's drawings changes and
    // what its undo puts back. Cheap to copy, since drawings are shared and never changed in place.
    struct Content {
        std::map<QString, UT_SharedPtr<OC_Drawing const>> drawings;
        std::map<int, QString> timing;  // each name empty or a key of drawings
    };
    Content content() const;
    // Replaces drawings and timing. Careful: drawings keep the keys they were made with, so give
    // back only contents taken from this element.
    void setContent(Content content);
    // The name of a new drawing: one more than the greatest whole-number name, "1" for the first.
    QString nextDrawingName() const;
    // Drawings are held in memory with the scene, so loading is the same as fetching.
    OC_DrawingPtr load(MO_BaseContext const &context) const { return oglDrawing(context.frame()); }
    // Whether tools may work on the element: it exposes at least one drawing somewhere.
    virtual bool isUsable() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

// "SWITCH": several transformation inputs; the int attribute "activeInput" chooses the one in
// force at each frame (out of range: input 0). Adds no transformation of its own.
class MO_SwitchModule : public MO_Module {
public:
    static QString Keyword() { return QStringLiteral("SWITCH"); }
    explicit MO_SwitchModule(int inputCount = 2);

    AT_IntAttr *activeInputAttr() const { return active_; }
    int transformationInput(double frame) const override;
    bool hasSwitchedInputs() const override { return true; }
    void accept(MO_ModuleVisitor &visitor) override;

private:
    AT_IntAttr *active_;  // owned by the node
};

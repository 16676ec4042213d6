// The transformation a module hands to what hangs below it.
//
// A transformation carries two matrices from a module's local space to scene (OGL) space:
//   matrix(true)  the full transform, the module's own deformation included; its children
//                 are placed by it;
//   matrix(false) the transform without the module's own deformation part: for deformers
//                 (bones, curves, offsets, mini pegs) the space their attributes are given in,
//                 for pegs and drawing elements the same as matrix(true).
// Deformers also attach their DeformationInformation, found by its type key.
#pragma once

#include "base/Math/Matrix.h"
#include "base/UT_SharedPtr.h"

#include <optional>

class UT_DynKey;

// What a deformer tells about the deformation chain it belongs to.
class DeformationInformation {
public:
    static UT_DynKey const typeId;  // the key under which CC_Transformation::deformation finds it

    // Number of deformers in the chain, from the last rigid module down to this one (>= 1).
    int chainLength = 1;
    // The transform of the last rigid module above the chain (identity at the top of a scene).
    Math::Matrix4x4 rigidMatrix;
};

class CC_Transformation {
public:
    // The identity, without deformation.
    CC_Transformation() = default;
    CC_Transformation(Math::Matrix4x4 const &full, Math::Matrix4x4 const &withoutDeformation)
        : full_(full), rigid_(withoutDeformation)
    {
    }

    Math::Matrix4x4 const &matrix(bool withDeformation) const { return withDeformation ? full_ : rigid_; }

    // The deformation information filed under `key`, or null. Only DeformationInformation::typeId
    // is known, and only deformers attach it.
    DeformationInformation const *deformation(UT_DynKey const &key) const;
    void setDeformation(DeformationInformation const &info) { deformation_ = info; }
    void clearDeformation() { deformation_.reset(); }

private:
    Math::Matrix4x4 full_;
    Math::Matrix4x4 rigid_;
    std::optional<DeformationInformation> deformation_;
};

using CC_TransformationPtr = UT_SharedPtr<CC_Transformation const>;

// The transformation found at one output port of a module for one context.
class MO_PortTransform {
public:
    explicit MO_PortTransform(CC_Transformation transformation) : transformation_(std::move(transformation)) {}
    CC_Transformation const &transformation() const { return transformation_; }

private:
    CC_Transformation transformation_;
};

using MO_PortTransformPtr = UT_SharedPtr<MO_PortTransform const>;

// What a view draws for Shift and Trace over the drawings: the pegs of each drawing shown, in the
// visible and the pick pass, and the cross-hairs over the selected drawings. Private to the view
// family.
//
// Both take the matrix that places the drawing (its element's world matrix, or the drawing view's
// model matrix) without the drawing's shift, and apply the shift themselves, so that a drawing of
// another frame (onion skin) is drawn the same way with its own frame and matrix.
#pragma once

#include "base/Math/Matrix.h"

class CA_CelKey;
class CC_CameraChainTransformCanvasBinder;
class MO_ElementModule;
class VU_Painter;

namespace VW_ShiftAndTraceOverlay {

// Size of the pegs in pixels: the round centre peg and the two square side pegs.
constexpr double kCenterPegSize = 12.0;
constexpr double kSidePegSize = 9.0;
// Distance of the side pegs from the centre peg along the bar, in field units.
constexpr double kSidePegDistance = 4.0;
// Half the length of a cross-hair's arms, in pixels.
constexpr double kCrossHairArm = 8.0;

// The pegs of drawing `key` of `module` shown at `frame`, when pegs are shown. In the pick pass
// they take the colour that the registered picking handle generator gives for (module, key,
// frame), and nothing is drawn without a generator.
void drawPegs(VU_Painter &painter, CC_CameraChainTransformCanvasBinder &binder, MO_ElementModule &module,
              CA_CelKey const &key, int frame, Math::Matrix4x4 const &modelMatrix, bool pickMode);

// The cross-hairs, when they are shown and the drawing is selected for Shift and Trace. Not pickable.
void drawCrossHairs(VU_Painter &painter, CC_CameraChainTransformCanvasBinder &binder, MO_ElementModule &module,
                    CA_CelKey const &key, Math::Matrix4x4 const &modelMatrix);

}  // namespace VW_ShiftAndTraceOverlay

// Shift and Trace: per-drawing display offsets that let an animator trace one drawing over others.
//
// A shift moves, rotates and scales one drawing for display only; the animation is untouched. The
// shifts of an element's drawings live in one attribute of the element module (ShiftAndTraceAttr,
// saved with the scene, changed undoably). While Shift and Trace is on, views draw every drawing
// through its offset matrix (displayModelMatrix), and show the pegs and cross-hairs that the
// switches below ask for. What each switch shows is described in docs/shift-and-trace-display.md.
//
// Units: a shift's pivot and position are in field units, its rotation in degrees
// (counter-clockwise), its scales are factors. The offset matrix works in the drawing's own OGL
// space: a point x of the drawing goes to (p + q) + R(rotation) S(scaleX, scaleY) (x - p), with p
// the pivot and q the position converted to OGL units by the module's SC_SceneMetrics.
//
// The switches, the peg position and the cross-hair list are process-wide, held by the one
// ShiftAndTraceStateManager; none of them is saved.
#pragma once

#include "base/Math/Matrix.h"
#include "base/Math/Vector.h"
#include "graphic/VS_RGBA.h"
#include "scene/AT_Attr.h"
#include "scene/CA_Drawing.h"

#include <QObject>

#include <map>
#include <memory>
#include <vector>

class MO_ElementModule;
class SC_SceneMetrics;

namespace AT_ShiftAndTraceUtil {

// The attribute of an element module that maps each of its drawings (CA_CelKey) to a shift.
//
// Careful: removeShiftAndTrace does not take the attribute off its node; it marks it removed (and
// empty), so that undo commands recorded on it stay valid. A removed attribute is found by no
// look-up of this family and is not saved; addShiftAndTrace brings it back.
class ShiftAndTraceAttr : public AT_Attr {
public:
    // One drawing's shift, seven doubles in this order.
    struct PositionData {
        double rotation = 0.0;  // degrees, counter-clockwise
        double pivotX = 0.0;    // field units
        double pivotY = 0.0;
        double scaleX = 1.0;    // factors; negative mirrors
        double scaleY = 1.0;
        double positionX = 0.0; // field units
        double positionY = 0.0;

        bool operator==(PositionData const &o) const;
        bool operator!=(PositionData const &o) const { return !(*this == o); }
        // Every value finite and of magnitude at most kLimit, so that the offset matrix (products
        // of at most three of them and a metric factor) stays finite.
        bool isStorable() const;
    };
    static constexpr double kLimit = 1e9;

    static QString TypeString();  // "SHIFT_AND_TRACE"
    static UT_DynKey const &staticTypeKey();
    static QString Keyword();     // "shiftAndTrace": keyword and XML element of the attribute

    ShiftAndTraceAttr(AT_AttrOwner *owner, AT_AttrMeta const &meta);
    ~ShiftAndTraceAttr() override;

    // The stored shift of the drawing, or the defaults.
    PositionData positionFor(CA_CelKey const &key) const;
    bool hasPositionFor(CA_CelKey const &key) const;
    std::map<CA_CelKey, PositionData> const &positions() const;

    // Stores the shift of the drawing as one command on the owner's command manager (so inside an
    // open CO_CommandAccumScope it joins that step; without a manager it is done at once, not
    // undoable). Refuses (false, nothing changed, no command) an invalid key and data that is not
    // storable. True when stored, also when it was already so.
    bool setPositionFor(CA_CelKey const &key, PositionData const &data);
    // Forgets the drawing's shift, undoably as setPositionFor; false when there was none.
    bool clearPositionFor(CA_CelKey const &key);
    // Marks the node changed, so that views draw it again.
    void makeDirty();

    bool isRemoved() const;

    QString typeName() const override;
    UT_DynKey const &typeKey() const override;
    QString textValue(double frame) const override;  // the number of shifts
    bool isEquivalent(AT_Attr const &other) const override;
    bool isAnimatable() const override { return false; }
    // Writes nothing when removed or without shifts, so a scene without shifts saves as before.
    void writeXml(QXmlStreamWriter &writer) const override;
    std::shared_ptr<PIO_XML::ComponentReader> componentReader() override;
    std::unique_ptr<AT_AttrState> saveState() const override;
    bool restoreState(AT_AttrState const &state) override;

protected:
    void writeXmlContent(QXmlStreamWriter &writer) const override;

private:
    friend bool removeShiftAndTrace(MO_ElementModule *module);
    // Runs the change from the present state to `after` as one command; false when nothing changed.
    bool changeTo(std::unique_ptr<AT_AttrState> after);

    struct Impl;
    std::unique_ptr<Impl> d_;
};

using PositionData = ShiftAndTraceAttr::PositionData;

// Where the peg bar of every drawing stands, in the drawing's own field (field units): pegs below,
// above, left of or right of the field's centre. See getCenterPegPosition.
enum Position_t : int { PegsBottom = 0, PegsTop = 1, PegsLeft = 2, PegsRight = 3 };
constexpr int kPegPositionCount = 4;

// The object that emits the change of the enabled state, and holds every switch of this family.
class ShiftAndTraceStateManager : public QObject {
    Q_OBJECT
public:
    static ShiftAndTraceStateManager *instance();

signals:
    void onShiftAndTraceEnabledChanged();

private:
    ShiftAndTraceStateManager();
    ~ShiftAndTraceStateManager() override;
    friend struct StateAccess;
    struct Impl;
    std::unique_ptr<Impl> d_;
};

// What the host asks whether a drawing is selected for Shift and Trace (the plug-in's selection
// publishes itself with setInstance). Cross-hairs are drawn over the selected drawings.
class ShiftAndTraceAbstractSelection {
public:
    ShiftAndTraceAbstractSelection();
    virtual ~ShiftAndTraceAbstractSelection();
    virtual bool isSelected(MO_ElementModule *module, CA_CelKey const &key);

    // Null withdraws the published selection. The selection is not owned.
    static void setInstance(ShiftAndTraceAbstractSelection *selection);
    static ShiftAndTraceAbstractSelection *instance();
};

// What the host asks, in the pick pass, for the colour of the pegs of one drawing shown at a frame.
class ShiftAndTracePickingHandleGenerator {
public:
    virtual ~ShiftAndTracePickingHandleGenerator();
    virtual VS_RGBA handleColor(MO_ElementModule *module, CA_CelKey const &key, int frame) = 0;
};

// ---- switches ----
bool shiftAndTraceEnabled();
void setShiftAndTraceEnabled(bool enabled);  // a change emits onShiftAndTraceEnabledChanged
bool shiftAndTraceShowPegs();
void setShiftAndTraceShowPegs(bool show);
bool shiftAndTraceShowPegsIfSelected();
void setShiftAndTraceShowPegsIfSelected(bool toolIsCurrent);
bool shiftAndTraceShowCrossHair();
void setShiftAndTraceShowCrossHair(bool show);
Position_t shiftAndTracePegPosition();
void setShiftAndTracePegPosition(Position_t position);  // values outside 0 to 3 are ignored
// Cross-hairs in field units, in the frame of the selected drawing under its shift. Starts empty.
std::vector<Math::Point2d> &crossHairList();

// Pegs are shown while Shift and Trace is on, show pegs is on and the tool is current; cross-hairs
// while it is on and show cross-hair is on.
bool pegsShown();
bool crossHairsShown();

// ---- storage ----
// The module's attribute, or null (also for a null module and a removed attribute).
ShiftAndTraceAttr *shiftAndTraceFor(MO_ElementModule const *module);
// The attribute, made (or brought back from removal) if missing; null for a null module. Making
// it is no undo step: an attribute without shifts is not saved, so the file does not change.
ShiftAndTraceAttr *addShiftAndTrace(MO_ElementModule *module);
// Removes the attribute with all its shifts, as one undoable command; false when there was none.
bool removeShiftAndTrace(MO_ElementModule *module);

// ---- rendering ----
// Translate(pivot + position), Rotate, Scale, Translate(-pivot), in OGL units of the module's
// metrics; the identity without a stored shift.
Math::Matrix4x4 offsetMatrix(PositionData const &data, SC_SceneMetrics const &metrics);
Math::Matrix4x4 renderingOffsetMatrixForDrawing(MO_ElementModule const *module, CA_CelKey const &key);
// The same for the drawing exposed at the frame; the identity when none is.
Math::Matrix4x4 renderingOffsetMatrixForFrame(MO_ElementModule const *module, double frame);
// With a drawing exposed at the frame and an attribute, fills `data` with the drawing's shift (the
// defaults when none is stored); otherwise leaves it. True when a shift is stored for it.
bool renderingOffsetForFrame(MO_ElementModule const *module, double frame, PositionData &data);
// The model matrix under which a view draws the drawing `key` of `module` that `modelMatrix`
// places: modelMatrix times the drawing's offset while Shift and Trace is on, else modelMatrix.
Math::Matrix4x4 displayModelMatrix(MO_ElementModule const &module, CA_CelKey const &key,
                                   Math::Matrix4x4 const &modelMatrix);
// The drawing view shows a drawing without the camera and pegs above it: the identity.
Math::Matrix4x4 drawingViewModelMatrix();
// The centre peg of the peg bar that the peg position selects, in field units.
Math::Point2d getCenterPegPosition();
Math::Point2d centerPegPosition(Position_t position);
// Outlines, boxes, pegs and cross-hairs.
VS_RGBA getOutlineColour();

// The generator asked for the pick colours of pegs; null withdraws it. Not owned.
void setShiftAndTracePickingHandleGenerator(ShiftAndTracePickingHandleGenerator *generator);
ShiftAndTracePickingHandleGenerator *shiftAndTracePickingHandleGenerator();

}  // namespace AT_ShiftAndTraceUtil

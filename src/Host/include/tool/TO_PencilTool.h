// The pencil: the host's freehand drawing tool.
//
// A press, the moves that follow and the release draw one stroke, an open polyline, into the
// drawing that the first selected element (SL_SelectionUtil::getFirstElement of
// PLUG_Services::getSelection) exposes at the view's frame; where the element exposes none, the
// stroke goes into a new drawing made there (CA_DrawingCmds::addShape). Each pointer sample is
// taken from view pixels to the drawing's own space through the view's camera chain and the
// element's model matrix (VW_View::elementModelMatrix), in the camera view and the drawing view
// alike, so whatever the view's camera does (zoom, pan) the stroke lands under the pointer. The
// release adds the stroke as one undo step, "Pencil Stroke"; a stroke of fewer than two distinct
// points adds nothing.
//
// Colour and width (pixels) are preferences of tuPref, set in the tool's panel (a host panel from
// the form pencilPanel.ui) and read at each press.
#pragma once

#include "tool/CX_Context.h"
#include "tool/TO_AbstractTool.h"

#include <QColor>
#include <QString>

#include <memory>

class TO_PencilTool : public TO_Tool {
    Q_OBJECT
public:
    static QString name() { return QStringLiteral("Pencil"); }
    static QString undoName() { return QStringLiteral("Pencil Stroke"); }
    static QString colorKey() { return QStringLiteral("pencilColor"); }  // RGBA
    static QString widthKey() { return QStringLiteral("pencilWidth"); }  // double, pixels
    static constexpr QRgb kDefaultColor = 0xff202020;
    static constexpr double kDefaultWidth = 2.0;
    static constexpr double kMaxWidth = 100.0;

    // Registers the tool with TO_ToolFactory under name(), once per process; gives its identifier.
    static CX_ToolIds::ID registerTool();
    // Adds the factory of the tool's panel (TP_ToolPropertiesPanelFactory); call it again after
    // the factories were cleared.
    static void addPanelFactory();

    // The settings as stored, clamped: a width from 0 to kMaxWidth.
    static QColor color();
    static double width();

    explicit TO_PencilTool(TO_AbstractToolContext *context);
    ~TO_PencilTool() override;

    bool onMouseDown(GR_StylusPoint const &point) override;
    bool onMouseMove(std::vector<GR_StylusPoint> const &points) override;
    bool onMouseUp(GR_StylusPoint const &point) override;
    void resetTool() override;
    // The stroke under way, in the visible pass only (a stroke is not picked).
    void draw(PickMode mode) override;
    TO_Enums::Cursor getCursor(Math::Point2d const &point) override;

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

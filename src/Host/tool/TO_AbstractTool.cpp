#include "tool/TO_AbstractTool.h"

TO_AbstractTool::TO_AbstractTool(QObject *parent) : QObject(parent) {}
TO_AbstractTool::~TO_AbstractTool() = default;

bool TO_AbstractTool::onMouseDown(GR_StylusPoint const &) { return false; }
bool TO_AbstractTool::onMouseMove(std::vector<GR_StylusPoint> const &) { return false; }
bool TO_AbstractTool::onMouseUp(GR_StylusPoint const &) { return false; }
bool TO_AbstractTool::onMouseOver(GR_StylusPoint const &) { return false; }
void TO_AbstractTool::onMouseLeave() {}
bool TO_AbstractTool::onKeyUp(int) { return false; }
bool TO_AbstractTool::onKeyDown(int, bool) { return false; }
void TO_AbstractTool::resetTool() {}
void TO_AbstractTool::activateTool() {}
int TO_AbstractTool::oglScanHit(unsigned int, bool) { return -1; }
void TO_AbstractTool::draw(PickMode) {}
TO_Enums::Cursor TO_AbstractTool::getCursor(Math::Point2d const &) { return TO_Enums::Arrow; }
bool TO_AbstractTool::canBeOverridenBySelectOrTransformTool() { return true; }
bool TO_AbstractTool::shouldBeEnabledBasedOnKeyPressed() { return false; }
bool TO_AbstractTool::supportsScenePlanningPickingInDrawingView() { return false; }
void TO_AbstractTool::deleteSelection() {}
void TO_AbstractTool::deleteSelectionValidate(AC_ActionInfo *) {}

TO_Tool::TO_Tool(TO_AbstractToolContext *context, QObject *parent) : TO_AbstractTool(parent), context_(context) {}
TO_Tool::~TO_Tool() = default;

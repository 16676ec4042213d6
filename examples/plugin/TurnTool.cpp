#include "TurnTool.h"

#include "command/CO_CommandManager.h"
#include "graphic/VU_Painter.h"
#include "plugin/PLUG_Services.h"
#include "scene/AT_ValueAttr.h"
#include "scene/MO_Node.h"
#include "session/SL_Selection.h"
#include "tool/TO_AbstractToolContext.h"

namespace {

class TurnToolGenerator final : public TO_ToolFactory::ToolGenerator {
public:
    std::unique_ptr<TO_Tool> createTool(TO_AbstractToolContext *context) override
    {
        return std::make_unique<TurnTool>(context);
    }
};

VS_RGBA const kMarkColour(220, 40, 40);
double const kMarkRadius = 6.0;  // view pixels

} // namespace

TurnTool::TurnTool(TO_AbstractToolContext *context) : TO_Tool(context) {}

std::unique_ptr<TO_ToolFactory::ToolGenerator> TurnTool::createGenerator()
{
    return std::make_unique<TurnToolGenerator>();
}

bool TurnTool::onMouseDown(GR_StylusPoint const &point)
{
    mark_ = point.position();
    hasMark_ = true;
    context()->requestRedraw();

    // The session's selection is a host service; a plug-in never keeps it, as it changes with
    // the scene.
    MO_Node *node = SL_SelectionUtil::getFirstNode(PLUG_Services::getSelection());
    auto *rotation = node ? dynamic_cast<AT_Rotation3dAttr *>(node->attr(QStringLiteral("rotation"))) : nullptr;
    CO_CommandManager *manager = node ? node->attrCommandManager() : nullptr;
    if (!rotation || !manager)
        return true;  // nothing to turn: the mark alone
    // A command, never a direct change, so that undo takes it back: relative to the value at the
    // frame, on a key there (made if needed). Null, and nothing recorded, if the value is refused.
    manager->execute(rotation->setValueCmd(context()->currentFrame(), Math::Angle3d(0.0, 0.0, kStepDegrees),
                                           /*relative=*/true, /*createKeyframe=*/true),
                     QStringLiteral("Turn"));
    return true;
}

void TurnTool::draw(PickMode mode)
{
    // The mark is not something to press on: nothing is drawn in the pick pass.
    if (mode != NormalMode || !hasMark_)
        return;
    VU_Painter painter(*context()->canvasBinder());
    painter.setPointReferential(VU_Painter::kPixelReferential);
    painter.drawFilledDisc(mark_, kMarkRadius, kMarkColour);
}

void TurnTool::resetTool()
{
    hasMark_ = false;
}

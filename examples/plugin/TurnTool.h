// TurnTool: each press in the camera view turns the first selected node by 15 degrees at the
// current frame (a key, one undo step "Turn") and leaves a mark where the pointer pressed.
#pragma once

#include "tool/TO_AbstractTool.h"
#include "tool/TO_ToolFactory.h"

#include <memory>

class TurnTool : public TO_Tool {
public:
    static constexpr double kStepDegrees = 15.0;  // counter-clockwise

    explicit TurnTool(TO_AbstractToolContext *context);

    bool onMouseDown(GR_StylusPoint const &point) override;
    void draw(PickMode mode) override;
    void resetTool() override;

    // What the tool factory makes TurnTools with.
    static std::unique_ptr<TO_ToolFactory::ToolGenerator> createGenerator();

private:
    Math::Point2d mark_;    // where the pointer last pressed, in view pixels
    bool hasMark_ = false;  // false until the first press
};

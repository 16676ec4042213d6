// Undoable changes of an element's drawings: a new empty drawing exposed at a frame, and a shape
// added to the drawing exposed at a frame (made first when the frame exposes none).
//
// Both are one command, CA_ElementContentCmd, that swaps the element's whole content (drawings and
// timing, MO_ElementModule::Content) between a before and an after state. The states share the
// drawings they do not change, so a command costs a copy of two small maps, and undo gives back
// exactly the content that was there, which keeps a scene saved after undo byte for byte the same.
#pragma once

#include "command/CO_Command.h"
#include "scene/MO_Module.h"

#include <memory>

class CA_ElementContentCmd : public CO_Command {
public:
    CA_ElementContentCmd(MO_ElementModule *element, MO_ElementModule::Content before, MO_ElementModule::Content after);

    bool execute() override;    // puts `after` in place
    bool unexecute() override;  // puts `before` back

private:
    UT_SharedWeakPtr<MO_Module> element_;  // reads null once the element is gone
    MO_ElementModule::Content before_;
    MO_ElementModule::Content after_;
};

namespace CA_DrawingCmds {

// The element's content with a new empty drawing `name` exposed at `frame`; the frames after keep
// the drawing they exposed (an entry is added at frame + 1 when none is there). Null: `name` is
// taken or empty.
std::unique_ptr<MO_ElementModule::Content> withNewDrawing(MO_ElementModule const &element, int frame, QString const &name);

// A new empty drawing named MO_ElementModule::nextDrawingName, exposed at `frame` as
// withNewDrawing says; `name` (may be null) receives its name. Not yet executed.
std::unique_ptr<CO_Command> newDrawing(MO_ElementModule &element, int frame, QString *name = nullptr);

// Appends `shape` to the drawing exposed at `frame`, or, when the frame exposes none, to a new
// drawing made there as newDrawing does. Not yet executed.
std::unique_ptr<CO_Command> addShape(MO_ElementModule &element, int frame, OC_VectorShape shape);

} // namespace CA_DrawingCmds

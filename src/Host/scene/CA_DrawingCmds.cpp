#include "scene/CA_DrawingCmds.h"

#include <iterator>
#include <limits>

CA_ElementContentCmd::CA_ElementContentCmd(MO_ElementModule *element, MO_ElementModule::Content before,
                                           MO_ElementModule::Content after)
    : element_(static_cast<MO_Module *>(element)), before_(std::move(before)), after_(std::move(after))
{
}

bool CA_ElementContentCmd::execute()
{
    auto *element = dynamic_cast<MO_ElementModule *>(element_.get());
    if (!element)
        return false;
    element->setContent(after_);
    return true;
}

bool CA_ElementContentCmd::unexecute()
{
    auto *element = dynamic_cast<MO_ElementModule *>(element_.get());
    if (!element)
        return false;
    element->setContent(before_);
    return true;
}

namespace CA_DrawingCmds {

std::unique_ptr<MO_ElementModule::Content> withNewDrawing(MO_ElementModule const &element, int frame, QString const &name)
{
    auto content = std::make_unique<MO_ElementModule::Content>(element.content());
    if (name.isEmpty() || content->drawings.count(name))
        return nullptr;
    content->drawings[name] = UT_MakeShared<OC_Drawing const>(CA_CelKey(element.elementName(), name), std::vector<OC_VectorShape>());
    // Frame + 1 keeps what it showed: the drawing of the last entry at or before it, or nothing.
    std::map<int, QString> &timing = content->timing;
    if (frame < std::numeric_limits<int>::max() && !timing.count(frame + 1)) {
        auto const after = timing.upper_bound(frame + 1);
        timing[frame + 1] = after == timing.begin() ? QString() : std::prev(after)->second;
    }
    timing[frame] = name;
    return content;
}

std::unique_ptr<CO_Command> newDrawing(MO_ElementModule &element, int frame, QString *name)
{
    QString const drawingName = element.nextDrawingName();
    std::unique_ptr<MO_ElementModule::Content> after = withNewDrawing(element, frame, drawingName);
    if (!after)
        return nullptr;
    if (name)
        *name = drawingName;
    return std::make_unique<CA_ElementContentCmd>(&element, element.content(), std::move(*after));
}

std::unique_ptr<CO_Command> addShape(MO_ElementModule &element, int frame, OC_VectorShape shape)
{
    std::unique_ptr<MO_ElementModule::Content> after;
    OC_DrawingPtr const exposed = element.oglDrawing(frame);
    if (exposed.isDrawing())
        after = std::make_unique<MO_ElementModule::Content>(element.content());
    else
        after = withNewDrawing(element, frame, element.nextDrawingName());
    if (!after)
        return nullptr;
    QString const name = exposed.isDrawing() ? exposed->celKey().drawing() : after->timing.at(frame);
    UT_SharedPtr<OC_Drawing const> &drawing = after->drawings.at(name);
    std::vector<OC_VectorShape> shapes = drawing->shapes();
    shapes.push_back(std::move(shape));
    drawing = UT_MakeShared<OC_Drawing const>(drawing->celKey(), std::move(shapes));
    return std::make_unique<CA_ElementContentCmd>(&element, element.content(), std::move(*after));
}

} // namespace CA_DrawingCmds

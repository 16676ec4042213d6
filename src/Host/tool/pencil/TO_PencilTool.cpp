#include "tool/TO_PencilTool.h"

#include "command/CO_CommandManager.h"
#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "graphic/VU_Painter.h"
#include "plugin/PLUG_Services.h"
#include "preference/PR_Preference.h"
#include "scene/CA_DrawingCmds.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "tool/TO_AbstractToolContext.h"
#include "tool/TO_ToolFactory.h"
#include "view/VW_View.h"

#include <algorithm>

namespace {

class PencilGenerator : public TO_ToolFactory::ToolGenerator {
public:
    std::unique_ptr<TO_Tool> createTool(TO_AbstractToolContext *context) override
    {
        return std::make_unique<TO_PencilTool>(context);
    }
};

} // namespace

struct TO_PencilTool::Impl {
    UT_SharedWeakPtr<MO_Module> element;  // the element of the stroke under way; null between strokes
    double frame = 0.0;                    // the view's frame at the press: the stroke is mapped and drawn there
    OC_VectorShape stroke;                 // its points in the drawing's own space

    MO_ElementModule *strokeElement() const { return dynamic_cast<MO_ElementModule *>(element.get()); }
};

CX_ToolIds::ID TO_PencilTool::registerTool()
{
    TO_ToolFactory &factory = TO_ToolFactory::instance();
    CX_ToolIds::ID const known = factory.idForName(name());
    if (known != CX_ToolIds::None)
        return known;
    TO_ToolFactory::ToolDescriptor descriptor;
    descriptor.label = QObject::tr("Pencil");
    descriptor.name = name();
    return factory.registerTool(descriptor, std::make_unique<PencilGenerator>());
}

QColor TO_PencilTool::color()
{
    return QColor::fromRgba(tuPref->getRgbaValue(colorKey(), kDefaultColor));
}

double TO_PencilTool::width()
{
    return std::clamp(tuPref->getDoubleValue(widthKey(), kDefaultWidth), 0.0, kMaxWidth);
}

TO_PencilTool::TO_PencilTool(TO_AbstractToolContext *context) : TO_Tool(context), d_(std::make_unique<Impl>()) {}

TO_PencilTool::~TO_PencilTool() = default;

namespace {

// The point of the drawing's own space under a view point, as the drawing shows (shifted or not),
// or false when it cannot map.
bool drawingPoint(TO_AbstractToolContext &view, MO_ElementModule const &element, double frame, Math::Point2d const &at,
                  Math::Point2d &point)
{
    CC_CameraChainTransformCanvasBinder *binder = view.canvasBinder();
    if (!binder)
        return false;
    CC_CameraChainTransformCanvasBinder::Scope scope(*binder);
    binder->setModelMatrix(VW_View::exposedDrawingModelMatrix(element, frame, view.viewKind()));
    return binder->cameraTransformChain().transform(Math::CameraTransformChain::ViewFrame, at,
                                                    Math::CameraTransformChain::ModelFrame, point);
}

} // namespace

bool TO_PencilTool::onMouseDown(GR_StylusPoint const &point)
{
    resetTool();
    MO_ElementModule *element = SL_SelectionUtil::getFirstElement(PLUG_Services::getSelection());
    if (!element)
        return false;
    d_->frame = context()->currentFrame();
    Math::Point2d p;
    if (!drawingPoint(*context(), *element, d_->frame, point.position(), p))
        return false;
    d_->element = UT_SharedWeakPtr<MO_Module>(static_cast<MO_Module *>(element));
    d_->stroke.kind = OC_VectorShape::Kind::Polyline;
    d_->stroke.stroke = color();
    d_->stroke.thickness = width();
    d_->stroke.points.push_back(p);
    context()->requestRedraw();
    return true;
}

bool TO_PencilTool::onMouseMove(std::vector<GR_StylusPoint> const &points)
{
    MO_ElementModule *element = d_->strokeElement();
    if (!element)
        return false;
    for (GR_StylusPoint const &sample : points) {
        Math::Point2d p;
        // Repeated samples add nothing to the line.
        if (drawingPoint(*context(), *element, d_->frame, sample.position(), p) && !(p == d_->stroke.points.back()))
            d_->stroke.points.push_back(p);
    }
    context()->requestRedraw();
    return true;
}

bool TO_PencilTool::onMouseUp(GR_StylusPoint const &point)
{
    if (!d_->strokeElement())
        return false;
    onMouseMove({point});
    MO_ElementModule *element = d_->strokeElement();
    OC_VectorShape stroke = std::move(d_->stroke);
    // The drawing exposed at the whole frame, as the view shows it.
    int const frame = static_cast<int>(d_->frame);
    resetTool();
    if (stroke.points.size() < 2)
        return true;
    SC_SceneCommon *scene = element->sceneCommon();
    if (std::unique_ptr<CO_Command> command = CA_DrawingCmds::addShape(*element, frame, std::move(stroke)); command && scene)
        scene->commandManager()->execute(std::move(command), undoName());
    context()->requestRedraw();
    return true;
}

void TO_PencilTool::resetTool()
{
    d_->element = UT_SharedWeakPtr<MO_Module>();
    d_->stroke = OC_VectorShape();
}

void TO_PencilTool::draw(PickMode mode)
{
    MO_ElementModule *element = d_->strokeElement();
    CC_CameraChainTransformCanvasBinder *binder = context()->canvasBinder();
    if (mode != NormalMode || !element || !binder || d_->stroke.points.size() < 2)
        return;
    CC_CameraChainTransformCanvasBinder::Scope scope(*binder);
    binder->setModelMatrix(VW_View::exposedDrawingModelMatrix(*element, d_->frame, context()->viewKind()));
    VU_Painter painter(*binder);
    QColor const &c = d_->stroke.stroke;
    painter.setLineThickness(d_->stroke.thickness);
    painter.setLineStrokeColor(VS_RGBA(std::uint8_t(c.red()), std::uint8_t(c.green()), std::uint8_t(c.blue()), std::uint8_t(c.alpha())));
    painter.drawPolyline(d_->stroke.points);
}

TO_Enums::Cursor TO_PencilTool::getCursor(Math::Point2d const &)
{
    return TO_Enums::Crosshair;
}

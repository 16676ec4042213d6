#include "view/VW_View.h"

#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "graphic/GR_StylusPoint.h"
#include "graphic/VS_Canvas.h"
#include "graphic/VU_Painter.h"
#include "scene/MO_Module.h"
#include "scene/MO_ModuleVisitor.h"
#include "scene/SC_Frames.h"
#include "scene/TUScene.h"
#include "command/CO_CommandManager.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "session/TUSceneChangeManager.h"
#include "tool/SLB_PickEngine.h"
#include "tool/SLB_Selectable.h"
#include "tool/TO_AbstractTool.h"
#include "tool/TO_Enums.h"
#include "tool/TO_ToolFactory.h"

#include <QCursor>

#include <algorithm>
#include <cmath>
#include <map>

namespace {

// The modules of a scene in scene order (depth first, insertion order).
class ModuleCollector : public MO_AbstractModuleVisitorWithModuleFallback {
public:
    void visitModule(MO_Module &m) override
    {
        modules.push_back(&m);
        if (auto *element = dynamic_cast<MO_ElementModule *>(&m))
            elements.push_back(element);
    }

    std::vector<MO_Module *> modules;
    std::vector<MO_ElementModule *> elements;
};

VS_RGBA toRgba(QColor const &c)
{
    return VS_RGBA(static_cast<std::uint8_t>(c.red()), static_cast<std::uint8_t>(c.green()),
                   static_cast<std::uint8_t>(c.blue()), static_cast<std::uint8_t>(c.alpha()));
}

Math::Matrix4x4 worldMatrix(MO_Module const &module, double frame)
{
    MO_PortTransformPtr const t = module.getPortTransformation(MO_BaseContext(MO_FrameKey(frame)));
    return t ? t->transformation().matrix(true) : Math::Matrix4x4();
}

// Paints the shapes of a drawing; with `pickColor`, every stroke and fill in that one colour.
void paintDrawing(VU_Painter &painter, OC_Drawing const &drawing, VS_RGBA const *pickColor)
{
    for (OC_VectorShape const &shape : drawing.shapes()) {
        // Thin strokes are widened in the pick pass so that lines can be hit.
        double const thickness = pickColor ? std::max(shape.thickness, 3.0) : shape.thickness;
        painter.setLineThickness(thickness);
        painter.setLineStrokeColor(pickColor ? *pickColor : toRgba(shape.stroke));
        if (shape.kind == OC_VectorShape::Kind::Polygon)
            painter.drawPolygon(shape.points, pickColor ? *pickColor : toRgba(shape.fill));
        else
            painter.drawPolyline(shape.points);
    }
}

Qt::CursorShape cursorShape(int cursor)
{
    switch (cursor) {
    case TO_Enums::OpenHand: return Qt::OpenHandCursor;
    case TO_Enums::ClosedHand: return Qt::ClosedHandCursor;
    case TO_Enums::Cross: return Qt::CrossCursor;
    case TO_Enums::Wait: return Qt::WaitCursor;
    case TO_Enums::IBeam: return Qt::IBeamCursor;
    case TO_Enums::SizeVertical: return Qt::SizeVerCursor;
    case TO_Enums::SizeDiagonal: return Qt::SizeFDiagCursor;
    case TO_Enums::SizeHorizontal: return Qt::SizeHorCursor;
    case TO_Enums::SizeAll: case TO_Enums::Scale: return Qt::SizeAllCursor;
    case TO_Enums::PointingHand: return Qt::PointingHandCursor;
    case TO_Enums::Forbidden: return Qt::ForbiddenCursor;
    case TO_Enums::Crosshair: case TO_Enums::Rotate: return Qt::CrossCursor;
    default: return Qt::ArrowCursor;
    }
}

// Marks a render or pick pass as under way for its lifetime (or until end()).
class DrawingPass {
public:
    explicit DrawingPass(bool &flag) : flag_(flag) { flag_ = true; }
    ~DrawingPass() { flag_ = false; }
    void end() { flag_ = false; }
    DrawingPass(DrawingPass const &) = delete;
    DrawingPass &operator=(DrawingPass const &) = delete;

private:
    bool &flag_;
};

// Radius in pixels of the ring that marks a selected module's origin.
constexpr double kMarkerRadius = 6.0;

} // namespace

struct VW_View::Impl {
    SC_Session *session = nullptr;  // not owned
    int kind = CameraView;
    int width = 640;   // >= 1
    int height = 480;  // >= 1
    VS_Canvas canvas{640, 480};
    VS_Canvas pickCanvas{0, 0};
    CC_CameraChainTransformCanvasBinder binder{&canvas};
    CX_ToolIds::ID toolId = CX_ToolIds::None;
    std::unique_ptr<TO_Tool> tool;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
    bool pressed = false;
    std::map<int, std::unique_ptr<QCursor>> cursors;  // registered cursors by value
    int nextCursor = TO_Enums::CustomFirst;
    std::map<unsigned int, UT_SharedWeakPtr<MO_Module>> pickModules;  // ids of the last pick pass
    UT_SharedPtr<SLB_SelectableDescriptor> lastDescriptor;  // result of the last pick
    int lastHandle = -1;                                    // the tool's answer for its nearest id
    int dragSteps = 0;
    bool drawing = false;  // a render or pick pass is under way: the binder is set up for it

    TUScene *scene() const { return session ? session->scene() : nullptr; }
    double frame() const { return session ? session->currentFrame() : 1.0; }

    // Sets the binder's matrices for the current size, camera and frame; the model is the identity.
    void setUpCamera()
    {
        binder.setViewport(width, height);
        binder.setOrthographicProjection(std::min(width / (2.0 * kFieldHalfWidth), height / (2.0 * kFieldHalfHeight)));
        binder.setModelMatrix(Math::Matrix4x4());
        Math::Matrix4x4 view;
        if (session) {
            try {
                view = session->cameraMatrix(MO_FrameKey(frame())).getInverse();
            } catch (Math::SingularMatrixError const &) {
                // A flattened camera sees nothing sensible: show the scene as it is.
            }
        }
        binder.setViewMatrix(view);
    }

    ModuleCollector collect() const
    {
        ModuleCollector collector;
        if (TUScene *s = scene())
            s->getRootGroup()->acceptModules(collector);
        return collector;
    }

    void drawSelectionMarkers(VU_Painter &painter, std::vector<MO_Module *> const &modules)
    {
        double const f = frame();
        painter.setLineThickness(2.0);
        painter.setLineStrokeColor(kSelectionColor);
        for (MO_Module *m : modules) {
            if (!m->selected())
                continue;
            CC_CameraChainTransformCanvasBinder::Scope scope(binder);
            binder.setModelMatrix(worldMatrix(*m, f));
            // A ring of kMarkerRadius pixels around the module's origin.
            Math::Point2d origin;
            if (binder.cameraTransformChain().project(Math::CameraTransformChain::ModelFrame, Math::Point2d(0.0, 0.0), origin)) {
                painter.setPointReferential(VU_Painter::kPixelReferential);
                painter.drawCircle(origin, kMarkerRadius);
                painter.setPointReferential(VU_Painter::kSceneReferential);
            }
            if (auto *element = dynamic_cast<MO_ElementModule *>(m)) {
                OC_DrawingPtr const drawing = element->oglDrawing(f);
                if (drawing.isDrawing() && !drawing->bounds().isEmpty()) {
                    Math::Box2d const &b = drawing->bounds();
                    painter.drawPolyline({b.min(), Math::Point2d(b.max().x, b.min().y), b.max(),
                                          Math::Point2d(b.min().x, b.max().y), b.min()});
                }
            }
        }
    }
};

VW_View::VW_View(SC_Session *session, int kind, QObject *parent) : QObject(parent), d_(std::make_unique<Impl>())
{
    d_->kind = kind == DrawingView ? DrawingView : CameraView;
    setSession(session);
}

VW_View::~VW_View()
{
    // The tool goes first: it may still talk to this view while it is destroyed.
    d_->tool.reset();
}

SC_Session *VW_View::session() const
{
    return d_->session;
}

void VW_View::setSession(SC_Session *session)
{
    d_->tool.reset();
    d_->pickModules.clear();
    d_->lastDescriptor.reset();
    d_->pressed = false;
    d_->session = session;
    // Without a session there is nothing for a tool to work on; the identifier is kept for the next.
    if (session && d_->toolId != CX_ToolIds::None)
        setToolId(d_->toolId);
    requestRedraw();
}

QSize VW_View::size() const
{
    return QSize(d_->width, d_->height);
}

void VW_View::resize(int width, int height)
{
    width = std::max(1, width);
    height = std::max(1, height);
    if (width == d_->width && height == d_->height)
        return;
    d_->width = width;
    d_->height = height;
    d_->canvas.resize(width, height);
    requestRedraw();
}

bool VW_View::setToolId(CX_ToolIds::ID id)
{
    d_->pressed = false;
    if (d_->tool)
        d_->tool->resetTool();
    d_->tool.reset();
    d_->tool = TO_ToolFactory::instance().createTool(id, this);
    d_->toolId = d_->tool ? id : CX_ToolIds::None;
    if (d_->tool)
        d_->tool->activateTool();
    requestRedraw();
    return d_->tool != nullptr || id == CX_ToolIds::None;
}

CX_ToolIds::ID VW_View::toolId() const
{
    return d_->toolId;
}

TO_Tool *VW_View::tool() const
{
    return d_->tool.get();
}

QImage const &VW_View::render()
{
    Impl &d = *d_;
    if (d.drawing)
        return d.canvas.image();  // asked again from inside a pass: the pass goes on
    DrawingPass pass(d.drawing);
    d.binder.setCanvas(&d.canvas);
    d.canvas.clear(kPaperColor);
    d.setUpCamera();
    VU_Painter painter(d.binder);
    ModuleCollector const all = d.collect();
    double const f = d.frame();
    for (MO_ElementModule *element : all.elements) {
        OC_DrawingPtr const drawing = element->oglDrawing(f);
        if (!drawing.isDrawing())
            continue;
        CC_CameraChainTransformCanvasBinder::Scope scope(d.binder);
        d.binder.setModelMatrix(worldMatrix(*element, f));
        paintDrawing(painter, *drawing.drawing(), nullptr);
    }
    d.drawSelectionMarkers(painter, all.modules);
    if (d.tool) {
        CC_CameraChainTransformCanvasBinder::Scope scope(d.binder);
        d.tool->draw(TO_AbstractTool::NormalMode);
    }
    return d.canvas.image();
}

QImage const &VW_View::image() const
{
    return d_->canvas.image();
}

QImage const &VW_View::pickImage() const
{
    return d_->pickCanvas.image();
}

MO_Module *VW_View::moduleForPickId(unsigned int id) const
{
    auto const found = d_->pickModules.find(id);
    return found == d_->pickModules.end() ? nullptr : found->second.get();
}

UT_SharedPtr<SLB_SelectableDescriptor> VW_View::pick(UT_Point const &asked, bool commit, int)
{
    Impl &d = *d_;
    UT_Point const point = asked.clamped();  // the pixels around it stay within int
    if (d.drawing)
        return nullptr;  // a tool that picks while it draws finds nothing
    // The pick pass.
    DrawingPass pass(d.drawing);
    d.pickCanvas.resize(d.width, d.height);
    d.pickCanvas.setPickingMode(true);
    d.pickCanvas.clear(VS_RGBA(0, 0, 0, 0));
    d.binder.setCanvas(&d.pickCanvas);
    d.setUpCamera();
    d.pickModules.clear();
    {
        VU_Painter painter(d.binder);
        ModuleCollector const all = d.collect();
        double const f = d.frame();
        std::uint32_t const first = SLB_PickEngine::generateIdForPickingObject(static_cast<int>(all.elements.size()));
        for (std::size_t i = 0; i < all.elements.size(); ++i) {
            MO_ElementModule *element = all.elements[i];
            OC_DrawingPtr const drawing = element->oglDrawing(f);
            if (!drawing.isDrawing())
                continue;
            std::uint32_t const id = first + static_cast<std::uint32_t>(i);
            d.pickModules[id] = UT_SharedWeakPtr<MO_Module>(static_cast<MO_Module *>(element));
            VS_RGBA const color = SLB_PickEngine::idToColor(id);
            CC_CameraChainTransformCanvasBinder::Scope scope(d.binder);
            d.binder.setModelMatrix(worldMatrix(*element, f));
            paintDrawing(painter, *drawing.drawing(), &color);
        }
        if (d.tool) {
            CC_CameraChainTransformCanvasBinder::Scope scope(d.binder);
            d.tool->draw(TO_AbstractTool::PickingMode);
        }
    }
    d.binder.setCanvas(&d.canvas);
    pass.end();

    // The ids around the point, nearest first (ties in reading order), each once.
    struct Hit {
        int distance2;
        int order;
        std::uint32_t id;
    };
    std::vector<Hit> hits;
    int order = 0;
    for (int dy = -kPickRadius; dy <= kPickRadius; ++dy)
        for (int dx = -kPickRadius; dx <= kPickRadius; ++dx, ++order) {
            std::uint32_t const id = SLB_PickEngine::colorToId(d.pickCanvas.pixel(point.x + dx, point.y + dy));
            if (id != SLB_PickEngine::kNoId)
                hits.push_back({dx * dx + dy * dy, order, id});
        }
    std::sort(hits.begin(), hits.end(), [](Hit const &a, Hit const &b) {
        return a.distance2 != b.distance2 ? a.distance2 < b.distance2 : a.order < b.order;
    });
    std::vector<std::uint32_t> ids;
    for (Hit const &h : hits)
        if (std::find(ids.begin(), ids.end(), h.id) == ids.end())
            ids.push_back(h.id);

    // Only the nearest hit gives a node: a tool's joint or handle painted over a drawing, or
    // beside it within the radius, is what the user aimed at, and the drawing is not picked.
    UT_SharedPtr<SLB_SelectableDescriptor> descriptor;
    if (MO_Module *module = ids.empty() ? nullptr : moduleForPickId(ids.front()))
        descriptor = UT_MakeShared<SLB_ModuleDescriptorWithFrame>(module, SC_Frames::toInt(d.frame()));
    // Careful: the tool may change the scene or this view from oglScanHit; ids are copied above.
    int handle = -1;
    if (d.tool)
        for (auto id = ids.rbegin(); id != ids.rend(); ++id)
            handle = d.tool->oglScanHit(*id, commit);
    d.lastDescriptor = descriptor;
    d.lastHandle = handle;
    return descriptor;
}

CC_CameraChainTransformCanvasBinder *VW_View::canvasBinder()
{
    // Tools map points at any time, not only while drawing: outside a pass, bring the camera up
    // to date. Careful: never during a pass, where it would undo the model matrix the tool set.
    if (!d_->drawing)
        d_->setUpCamera();
    return &d_->binder;
}

bool VW_View::mousePress(Math::Point2d const &asked, Qt::KeyboardModifiers modifiers)
{
    Math::Point2d const point = UT_Point::clamped(asked);
    d_->modifiers = modifiers;
    d_->pressed = true;
    bool const used = d_->tool ? d_->tool->onMouseDown(GR_StylusPoint(point)) : selectAt(point);
    requestRedraw();
    return used;
}

bool VW_View::selectAt(Math::Point2d const &point)
{
    if (!d_->session)
        return false;
    auto const *hit = dynamic_cast<SLB_ModuleDescriptor *>(pick(UT_Point::fromPoint2d(point), true, 0).get());
    MO_Node *node = hit ? hit->module() : nullptr;
    SL_Selection *selection = d_->session->getSelection();
    CO_CommandManager *commands = d_->session->commandManager();
    CO_CommandAccumScope step(commands, QStringLiteral("Selection"));
    SL_SelectionCommands::Scope scope(commands, selection);
    if (!extendModifier())
        selection->set(node ? std::vector<MO_Node *>{node} : std::vector<MO_Node *>{});
    else if (node && !selection->remove(node))
        selection->add(node);
    return true;
}

bool VW_View::mouseMove(Math::Point2d const &asked, Qt::KeyboardModifiers modifiers)
{
    Math::Point2d const point = UT_Point::clamped(asked);
    d_->modifiers = modifiers;
    if (!d_->tool)
        return false;
    bool used = false;
    if (d_->pressed) {
        used = d_->tool->onMouseMove({GR_StylusPoint(point)});
        if (d_->session)
            d_->session->changeManager()->notifyInteractive();
    } else {
        used = d_->tool->onMouseOver(GR_StylusPoint(point));
    }
    requestRedraw();
    return used;
}

bool VW_View::mouseRelease(Math::Point2d const &asked, Qt::KeyboardModifiers modifiers)
{
    Math::Point2d const point = UT_Point::clamped(asked);
    d_->modifiers = modifiers;
    bool const wasPressed = d_->pressed;
    d_->pressed = false;
    bool const used = wasPressed && d_->tool && d_->tool->onMouseUp(GR_StylusPoint(point));
    if (d_->session)
        d_->session->changeManager()->notify();
    requestRedraw();
    return used;
}

void VW_View::mouseLeave()
{
    if (d_->tool)
        d_->tool->onMouseLeave();
}

bool VW_View::isPressed() const
{
    return d_->pressed;
}

bool VW_View::keyPress(int key, Qt::KeyboardModifiers modifiers, bool autoRepeat)
{
    d_->modifiers = modifiers;
    bool const used = d_->tool && d_->tool->onKeyDown(key, autoRepeat);
    if (used)
        requestRedraw();
    return used;
}

bool VW_View::keyRelease(int key, Qt::KeyboardModifiers modifiers)
{
    d_->modifiers = modifiers;
    bool const used = d_->tool && d_->tool->onKeyUp(key);
    if (used)
        requestRedraw();
    return used;
}

Qt::KeyboardModifiers VW_View::modifiers() const
{
    return d_->modifiers;
}

void VW_View::setModifiers(Qt::KeyboardModifiers modifiers)
{
    d_->modifiers = modifiers;
}

QCursor VW_View::cursorAt(Math::Point2d const &point)
{
    return cursorFor(d_->tool ? d_->tool->getCursor(point) : TO_Enums::Arrow);
}

QCursor VW_View::cursorFor(int cursor) const
{
    auto const found = d_->cursors.find(cursor);
    return found != d_->cursors.end() ? *found->second : QCursor(cursorShape(cursor));
}

bool VW_View::viewToScene(Math::Point2d const &view, Math::Point2d &scene)
{
    CC_CameraChainTransformCanvasBinder::Scope scope(*canvasBinder());
    d_->binder.setModelMatrix(Math::Matrix4x4());
    return d_->binder.cameraTransformChain().transform(Math::CameraTransformChain::ViewFrame, view,
                                                       Math::CameraTransformChain::WorldFrame, scene);
}

bool VW_View::sceneToView(Math::Point2d const &scene, Math::Point2d &view)
{
    CC_CameraChainTransformCanvasBinder::Scope scope(*canvasBinder());
    return d_->binder.cameraTransformChain().transform(Math::CameraTransformChain::WorldFrame, scene,
                                                       Math::CameraTransformChain::ViewFrame, view);
}

int VW_View::dragStepCount() const
{
    return d_->dragSteps;
}

bool VW_View::extendModifier() const
{
    return d_->modifiers.testFlag(Qt::ShiftModifier);
}

bool VW_View::keepModifier() const
{
    return d_->modifiers.testFlag(Qt::ControlModifier);
}

bool VW_View::thirdModifier() const
{
    return d_->modifiers.testFlag(Qt::AltModifier);
}

double VW_View::currentFrame() const
{
    return d_->frame();
}

void VW_View::requestRedraw()
{
    // A tool that asks from inside its draw would make every paint schedule the next one.
    if (!d_->drawing)
        emit redrawRequested();
}

int VW_View::registerCursor(QCursor *cursor)
{
    if (!cursor)
        return TO_Enums::NoCursor;
    int const value = d_->nextCursor++;
    d_->cursors[value] = std::unique_ptr<QCursor>(cursor);
    return value;
}

int VW_View::viewKind() const
{
    return d_->kind;
}

int VW_View::pickedHandle(UT_SharedPtr<SLB_SelectableDescriptor> const &descriptor)
{
    return descriptor == d_->lastDescriptor ? d_->lastHandle : -1;
}

void VW_View::dragStepDone()
{
    ++d_->dragSteps;
    emit dragStepFinished();
}

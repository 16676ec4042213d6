#include "view/VW_View.h"

#include "VW_ShiftAndTraceOverlay.h"

#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "graphic/GR_StylusPoint.h"
#include "graphic/VS_Canvas.h"
#include "graphic/VU_Painter.h"
#include "scene/AT_ShiftAndTraceUtil.h"
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
#include "view/VW_OnionSkin.h"

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

Math::Matrix4x4 worldMatrix(MO_Module const &module, double frame)
{
    MO_PortTransformPtr const t = module.getPortTransformation(MO_BaseContext(MO_FrameKey(frame)));
    return t ? t->transformation().matrix(true) : Math::Matrix4x4();
}

// A colour as `look` shows it: mixed towards the tint, its alpha scaled (the default look keeps it).
VS_RGBA lookColour(QColor const &c, VW_DrawingLook const &look)
{
    auto mix = [&look](int from, std::uint8_t to) {
        return static_cast<std::uint8_t>(std::lround(from + (to - from) * look.tintAmount));
    };
    return VS_RGBA(mix(c.red(), look.tint.r), mix(c.green(), look.tint.g), mix(c.blue(), look.tint.b),
                   static_cast<std::uint8_t>(std::lround(c.alpha() * look.alpha)));
}

// Paints the shapes of a drawing as `look` says; with `pickColor`, every stroke and fill in that
// one colour.
void paintDrawing(VU_Painter &painter, OC_Drawing const &drawing, VW_DrawingLook const &look, VS_RGBA const *pickColor)
{
    for (OC_VectorShape const &shape : drawing.shapes()) {
        // Thin strokes are widened in the pick pass so that lines can be hit.
        double const thickness = pickColor ? std::max(shape.thickness, 3.0) : shape.thickness;
        painter.setLineThickness(thickness);
        painter.setLineStrokeColor(pickColor ? *pickColor : lookColour(shape.stroke, look));
        if (shape.kind == OC_VectorShape::Kind::Polygon)
            painter.drawPolygon(shape.points, pickColor ? *pickColor : lookColour(shape.fill, look));
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

// One drawing a pass paints: an element's current drawing or one of its onion drawings.
struct DrawnDrawing {
    MO_ElementModule *element;
    UT_SharedPtr<OC_Drawing const> drawing;
    int frame;               // the frame a pick of it reports
    Math::Matrix4x4 matrix;  // its model matrix
    VW_DrawingLook look;
};

// Paints one drawing of an element under `matrix` with `look` (or in `pickColor` in a pick pass).
// Every drawing of every pass, current and onion alike, goes through here, so that what changes
// where a drawing shows changes it for all of them.
void drawElementDrawing(VU_Painter &painter, CC_CameraChainTransformCanvasBinder &binder, DrawnDrawing const &d,
                        VS_RGBA const *pickColor)
{
    CC_CameraChainTransformCanvasBinder::Scope scope(binder);
    binder.setModelMatrix(AT_ShiftAndTraceUtil::displayModelMatrix(*d.element, d.drawing->celKey(), d.matrix));
    paintDrawing(painter, *d.drawing, d.look, pickColor);
}

// Radius in pixels of the ring that marks a selected module's origin.
constexpr double kMarkerRadius = 6.0;

} // namespace

struct VW_View::Impl {
    SC_Session *session = nullptr;  // not owned
    int kind = CameraView;
    bool onionSkin = false;
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
    struct PickedDrawing {
        UT_SharedWeakPtr<MO_Module> module;
        int frame;
    };
    std::map<unsigned int, PickedDrawing> pickModules;  // ids of the last pick pass, one per drawing
    UT_SharedPtr<SLB_SelectableDescriptor> lastDescriptor;  // result of the last pick
    int lastHandle = -1;                                    // the tool's answer for its nearest id
    int dragSteps = 0;
    bool drawing = false;  // a render or pick pass is under way: the binder is set up for it

    TUScene *scene() const { return session ? session->scene() : nullptr; }
    double frame() const { return session ? session->currentFrame() : 1.0; }

    double zoom = 1.0;     // within kMinimumZoom and kMaximumZoom
    Math::Point2d centre;  // camera-space point at the centre of the view (the pan)

    // Pixels per OGL unit at zoom 1: the field fits the view.
    double fieldPixelsPerUnit() const
    {
        return std::min(width / (2.0 * kFieldHalfWidth), height / (2.0 * kFieldHalfHeight));
    }
    double pixelsPerUnit() const { return fieldPixelsPerUnit() * zoom; }

    // The scene's camera at the current frame, from scene space to camera space.
    Math::Matrix4x4 cameraInverse() const
    {
        // The drawing view shows a drawing in its own space: no camera.
        if (session && kind == CameraView) {
            try {
                return session->cameraMatrix(MO_FrameKey(frame())).getInverse();
            } catch (Math::SingularMatrixError const &) {
                // A flattened camera sees nothing sensible: show the scene as it is.
            }
        }
        return Math::Matrix4x4();
    }

    // Sets the binder's matrices for the current size, camera, zoom, pan and frame; the model is
    // the identity. The pan goes after the scene's camera, the zoom into the projection.
    void setUpCamera()
    {
        binder.setViewport(width, height);
        binder.setOrthographicProjection(pixelsPerUnit());
        binder.setModelMatrix(Math::Matrix4x4());
        Math::Matrix4x4 pan;
        pan.translate(-centre.x, -centre.y);
        binder.setViewMatrix(pan * cameraInverse());
    }

    // A view point as an offset in pixels from the centre of the view, y up.
    Math::Vector2d fromCentre(Math::Point2d const &viewPoint) const
    {
        return Math::Vector2d(viewPoint.x - (width - 1) / 2.0, (height - 1) / 2.0 - viewPoint.y);
    }

    // The box, in camera space, of the drawings exposed at the current frame; empty without any.
    Math::Box2d drawingsBox() const
    {
        Math::Box2d box;
        Math::Matrix4x4 const camera = cameraInverse();
        double const f = frame();
        for (MO_ElementModule *element : collect().elements) {
            OC_DrawingPtr const drawing = element->oglDrawing(f);
            if (!drawing.isDrawing() || drawing->bounds().isEmpty())
                continue;
            Math::Matrix4x4 const toCamera = camera * worldMatrix(*element, f);
            Math::Box2d const &b = drawing->bounds();
            for (Math::Point2d const &corner : {b.min(), Math::Point2d(b.max().x, b.min().y), b.max(), Math::Point2d(b.min().x, b.max().y)}) {
                Math::Point3d const p = toCamera * Math::Point3d(corner.x, corner.y, 0.0);
                if (std::isfinite(p.x) && std::isfinite(p.y))
                    box.Add(Math::Point2d(p.x, p.y));
            }
        }
        return box;
    }

    ModuleCollector collect() const
    {
        ModuleCollector collector;
        if (TUScene *s = scene())
            s->getRootGroup()->acceptModules(collector);
        return collector;
    }

    // The elements a pass shows: all of them in the camera view, the first selected one in the
    // drawing view.
    std::vector<MO_ElementModule *> shownElements(ModuleCollector const &all) const
    {
        if (kind == CameraView)
            return all.elements;
        MO_ElementModule *selected = session ? SL_SelectionUtil::getFirstElement(session->getSelection()) : nullptr;
        return selected ? std::vector<MO_ElementModule *>{selected} : std::vector<MO_ElementModule *>{};
    }

    // What a pass paints, in order: the onion drawings of every shown element (when onion skin is
    // on), then their current drawings, so that no onion drawing covers a current one.
    std::vector<DrawnDrawing> drawnDrawings(ModuleCollector const &all) const
    {
        std::vector<DrawnDrawing> drawn;
        std::vector<MO_ElementModule *> const elements = shownElements(all);
        double const f = frame();
        if (onionSkin) {
            VW_OnionSkinSettings const settings = VW_OnionSkinSettings::fromPreferences();
            for (MO_ElementModule *element : elements)
                for (VW_OnionDrawing const &onion : VW_onionDrawings(*element, f, settings.framesBefore, settings.framesAfter))
                    drawn.push_back({element, onion.drawing, onion.frame, VW_View::elementModelMatrix(*element, onion.frame, kind),
                                     settings.look(onion.distance)});
        }
        for (MO_ElementModule *element : elements) {
            OC_DrawingPtr const drawing = element->oglDrawing(f);
            if (drawing.isDrawing())
                drawn.push_back({element, drawing.shared(), SC_Frames::toInt(f),
                                 VW_View::elementModelMatrix(*element, f, kind), VW_DrawingLook()});
        }
        return drawn;
    }

    // Pegs over every drawing shown, onion drawings included, each at the frame a pick of it
    // reports (pickable); in the visible pass, the cross-hairs.
    void drawShiftAndTraceOverlay(VU_Painter &painter, std::vector<DrawnDrawing> const &drawn, bool pickMode)
    {
        for (DrawnDrawing const &d : drawn) {
            CA_CelKey const &key = d.drawing->celKey();
            VW_ShiftAndTraceOverlay::drawPegs(painter, binder, *d.element, key, d.frame, d.matrix, pickMode);
            if (!pickMode)
                VW_ShiftAndTraceOverlay::drawCrossHairs(painter, binder, *d.element, key, d.matrix);
        }
    }

    void drawSelectionMarkers(VU_Painter &painter, std::vector<MO_Module *> const &modules)
    {
        if (kind != CameraView)
            return;  // the drawing view shows one drawing, and no module's place
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
                    binder.setModelMatrix(VW_View::exposedDrawingModelMatrix(*element, f, CameraView));
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
    std::vector<DrawnDrawing> const drawn = d.drawnDrawings(all);
    for (DrawnDrawing const &one : drawn)
        drawElementDrawing(painter, d.binder, one, nullptr);
    d.drawShiftAndTraceOverlay(painter, drawn, false);
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
    return found == d_->pickModules.end() ? nullptr : found->second.module.get();
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
        std::vector<DrawnDrawing> const drawn = d.drawnDrawings(d.collect());
        // One id per drawing, so that a pick of an onion drawing gives its own frame.
        std::uint32_t const first = SLB_PickEngine::generateIdForPickingObject(std::max(1, static_cast<int>(drawn.size())));
        for (std::size_t i = 0; i < drawn.size(); ++i) {
            std::uint32_t const id = first + static_cast<std::uint32_t>(i);
            d.pickModules[id] = {UT_SharedWeakPtr<MO_Module>(static_cast<MO_Module *>(drawn[i].element)), drawn[i].frame};
            VS_RGBA const color = SLB_PickEngine::idToColor(id);
            drawElementDrawing(painter, d.binder, drawn[i], &color);
        }
        d.drawShiftAndTraceOverlay(painter, drawn, true);
        if (d.tool) {
            CC_CameraChainTransformCanvasBinder::Scope scope(d.binder);
            d.tool->draw(TO_AbstractTool::PickingMode);
        }
    }
    d.binder.setCanvas(&d.canvas);
    pass.end();

    // The one id the press is for. The tool's pick drawing lies over the drawings: of its ids, the
    // one under the point or else the nearest within the radius; only when it has none there, the
    // drawing under the point or else the nearest (ties in reading order). The tool hears only that
    // one, so that a press is one hit however near other things lie: a tool that edits its
    // selection in oglScanHit edits it once, and a small handle beside a drawing stays in reach.
    struct Nearest {
        std::uint32_t id = SLB_PickEngine::kNoId;
        int distance2 = 0;
        void offer(std::uint32_t candidate, int d2)
        {
            if (id == SLB_PickEngine::kNoId || d2 < distance2) {
                id = candidate;
                distance2 = d2;
            }
        }
    } tool, drawing;
    for (int dy = -kPickRadius; dy <= kPickRadius; ++dy)
        for (int dx = -kPickRadius; dx <= kPickRadius; ++dx) {
            std::uint32_t const id = SLB_PickEngine::colorToId(d.pickCanvas.pixel(point.x + dx, point.y + dy));
            if (id != SLB_PickEngine::kNoId)
                (d.pickModules.count(id) ? drawing : tool).offer(id, dx * dx + dy * dy);
        }
    std::uint32_t const nearest = tool.id != SLB_PickEngine::kNoId ? tool.id : drawing.id;

    // A drawing gives a node; where the tool's joint or handle is the id found, that is what the
    // user aimed at, and the drawing beneath or beside it is not picked.
    UT_SharedPtr<SLB_SelectableDescriptor> descriptor;
    if (MO_Module *module = nearest == SLB_PickEngine::kNoId ? nullptr : moduleForPickId(nearest))
        descriptor = UT_MakeShared<SLB_ModuleDescriptorWithFrame>(module, d.pickModules.at(nearest).frame);
    // Careful: the tool may change the scene or this view from oglScanHit.
    int handle = -1;
    if (d.tool && nearest != SLB_PickEngine::kNoId)
        handle = d.tool->oglScanHit(nearest, commit);
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
    // A key with which the tool moved something (it reported a step of a drag, as a nudge does)
    // is used, whatever the tool answers: the same key must not also step the frame or run a
    // shortcut.
    int const stepsBefore = d_->dragSteps;
    bool const answered = d_->tool && d_->tool->onKeyDown(key, autoRepeat);
    bool const used = answered || d_->dragSteps != stepsBefore;
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

double VW_View::zoom() const
{
    return d_->zoom;
}

Math::Point2d VW_View::centre() const
{
    return d_->centre;
}

bool VW_View::zoomAbout(double factor, Math::Point2d const &anchor)
{
    if (!(factor >= kMinimumZoom && factor <= kMaximumZoom) || !std::isfinite(anchor.x) || !std::isfinite(anchor.y))
        return false;
    // The camera point under the anchor, c + s / k, must stay under it: c' = c + s / k - s / k'.
    Math::Vector2d const s = d_->fromCentre(anchor);
    double const before = d_->pixelsPerUnit();
    d_->zoom = factor;
    double const after = d_->pixelsPerUnit();
    d_->centre = Math::Point2d(d_->centre.x + s.x / before - s.x / after, d_->centre.y + s.y / before - s.y / after);
    emit cameraChanged();
    requestRedraw();
    return true;
}

bool VW_View::setZoom(double factor)
{
    return zoomAbout(factor, Math::Point2d((d_->width - 1) / 2.0, (d_->height - 1) / 2.0));
}

bool VW_View::pan(double dx, double dy)
{
    if (!std::isfinite(dx) || !std::isfinite(dy))
        return false;
    // The picture follows the hand: the centre goes the other way (y of view pixels points down).
    double const k = d_->pixelsPerUnit();
    d_->centre = Math::Point2d(d_->centre.x - dx / k, d_->centre.y + dy / k);
    emit cameraChanged();
    requestRedraw();
    return true;
}

void VW_View::fitScene()
{
    Math::Box2d const box = d_->drawingsBox();
    if (box.isEmpty())
        return resetCamera();
    double const usable = 1.0 - 2.0 * kFitMargin;
    double const k = d_->fieldPixelsPerUnit();
    // A box flat in one direction is fitted by the other; a single point keeps the zoom.
    double zoom = kMaximumZoom;
    if (box.width() > 0.0)
        zoom = std::min(zoom, usable * d_->width / (box.width() * k));
    if (box.height() > 0.0)
        zoom = std::min(zoom, usable * d_->height / (box.height() * k));
    if (box.width() <= 0.0 && box.height() <= 0.0)
        zoom = d_->zoom;
    d_->zoom = std::clamp(zoom, kMinimumZoom, kMaximumZoom);
    d_->centre = box.GetCenter();
    emit cameraChanged();
    requestRedraw();
}

void VW_View::resetCamera()
{
    d_->zoom = 1.0;
    d_->centre = Math::Point2d();
    emit cameraChanged();
    requestRedraw();
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

void VW_View::setViewKind(int kind)
{
    kind = kind == DrawingView ? DrawingView : CameraView;
    if (kind == d_->kind)
        return;
    d_->kind = kind;
    emit viewKindChanged(kind);
    requestRedraw();
}

Math::Matrix4x4 VW_View::drawingViewModelMatrix()
{
    return AT_ShiftAndTraceUtil::drawingViewModelMatrix();
}

Math::Matrix4x4 VW_View::elementModelMatrix(MO_ElementModule const &element, double frame, int viewKind)
{
    return viewKind == DrawingView ? drawingViewModelMatrix() : worldMatrix(element, frame);
}

Math::Matrix4x4 VW_View::exposedDrawingModelMatrix(MO_ElementModule const &element, double frame, int viewKind)
{
    OC_DrawingPtr const drawing = element.oglDrawing(frame);
    Math::Matrix4x4 const model = elementModelMatrix(element, frame, viewKind);
    return drawing.isDrawing() ? AT_ShiftAndTraceUtil::displayModelMatrix(element, drawing->celKey(), model) : model;
}

bool VW_View::onionSkin() const
{
    return d_->onionSkin;
}

void VW_View::setOnionSkin(bool on)
{
    if (on == d_->onionSkin)
        return;
    d_->onionSkin = on;
    emit onionSkinChanged(on);
    requestRedraw();
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

// The view core: rendering a scene at a frame, the pick pass, and tools driven through the view.
#include "base/Math/Matrix.h"
#include "command/CO_CommandManager.h"
#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "graphic/VU_Painter.h"
#include "scene/MO_Module.h"
#include "scene/TUScene.h"
#include "scene/TUSceneFile.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "tool/SLB_PickEngine.h"
#include "tool/SLB_Selectable.h"
#include "tool/TO_AbstractTool.h"
#include "tool/TO_Enums.h"
#include "tool/TO_ToolFactory.h"
#include "view/VW_View.h"

#include "BoxScene.h"

#include <QCursor>
#include <QPixmap>

#include <gtest/gtest.h>

#include <cmath>

namespace {

VS_RGBA const kGreen(0, 192, 0);

std::unique_ptr<SC_Session> boxSession()
{
    QString error;
    std::unique_ptr<TUScene> scene = TUSceneFile::read(kBoxScene, QStringLiteral("box.xml"), &error);
    EXPECT_TRUE(scene) << error.toStdString();
    return std::make_unique<SC_Session>(std::move(scene));
}

VS_RGBA pixelOf(QImage const &image, int x, int y)
{
    QColor const c = image.pixelColor(x, y);
    return VS_RGBA(std::uint8_t(c.red()), std::uint8_t(c.green()), std::uint8_t(c.blue()), std::uint8_t(c.alpha()));
}

// Where a scene point lands in a W x H view, from the conventions of docs/graphics.md and the
// view's field (2 by 1.5 OGL units): k = min(W / 2, H / 1.5).
QPoint expectedPixel(double x, double y, int w, int h)
{
    double const k = std::min(w / 2.0, h / 1.5);
    return QPoint(int(std::lround((w - 1) / 2.0 + k * x)), int(std::lround((h - 1) / 2.0 - k * y)));
}

// A tool that records what reaches it and draws one handle of its own at a fixed pixel.
class ProbeTool : public TO_Tool {
public:
    struct Event {
        char kind;  // 'd' down, 'm' move, 'u' up, 'o' over
        Math::Point2d point;
        bool extend, keep, third;
    };

    explicit ProbeTool(TO_AbstractToolContext *context) : TO_Tool(context), handles(2) { last = this; }
    ~ProbeTool() override
    {
        if (last == this)
            last = nullptr;
    }

    bool onMouseDown(GR_StylusPoint const &p) override { return record('d', p); }
    bool onMouseMove(std::vector<GR_StylusPoint> const &ps) override { return record('m', ps.back()); }
    bool onMouseUp(GR_StylusPoint const &p) override { return record('u', p); }
    bool onMouseOver(GR_StylusPoint const &p) override { return record('o', p); }
    bool onKeyDown(int key, bool) override
    {
        keys.push_back(key);
        if (stepOnKey)
            context()->dragStepDone();
        return answerKeys;
    }
    void activateTool() override { ++activations; }
    int oglScanHit(unsigned int id, bool press) override
    {
        scans.emplace_back(id, press);
        int const handle = handles.handleId(id);
        return handle >= 0 ? 100 + handle : -1;
    }
    void draw(PickMode mode) override
    {
        ++(mode == PickingMode ? pickDraws : normalDraws);
        {
            // The binder keeps what the tool set while the pass lasts, however often it is asked for.
            CC_CameraChainTransformCanvasBinder &binder = *context()->canvasBinder();
            CC_CameraChainTransformCanvasBinder::Scope scope(binder);
            Math::Matrix4x4 m;
            m.translate(1.0, 2.0);
            binder.setModelMatrix(m);
            modelKept = context()->canvasBinder()->modelMatrix() == m;
            context()->requestRedraw();  // ignored during a pass
        }
        if (!drawHandle)
            return;
        VU_Painter painter(*context()->canvasBinder());
        painter.setPointReferential(VU_Painter::kPixelReferential);
        painter.setLineThickness(0.0);
        VS_RGBA const colour = mode == PickingMode ? SLB_PickEngine::idToColor(handles.pickingId() + 1) : VS_RGBA(255, 0, 0);
        painter.drawQuad({8, 8}, {12, 8}, {12, 12}, {8, 12}, colour);
        painter.setPointReferential(VU_Painter::kSceneReferential);
    }

    static ProbeTool *last;  // the tool made most recently, while it lives
    SLB_SelectablePickAdaptor handles;
    bool drawHandle = false;
    bool answerKeys = true;  // what onKeyDown answers
    bool stepOnKey = false;  // onKeyDown reports a drag step, as a nudge does
    bool modelKept = false;
    std::vector<Event> events;
    std::vector<std::pair<unsigned int, bool>> scans;
    std::vector<int> keys;
    int activations = 0, normalDraws = 0, pickDraws = 0;

private:
    bool record(char kind, GR_StylusPoint const &p)
    {
        events.push_back({kind, p.position(), context()->extendModifier(), context()->keepModifier(),
                          context()->thirdModifier()});
        return true;
    }
};
ProbeTool *ProbeTool::last = nullptr;

class ProbeGenerator : public TO_ToolFactory::ToolGenerator {
public:
    std::unique_ptr<TO_Tool> createTool(TO_AbstractToolContext *context) override
    {
        return std::make_unique<ProbeTool>(context);
    }
};

CX_ToolIds::ID probeToolId()
{
    static CX_ToolIds::ID const id = TO_ToolFactory::instance().registerTool(
        {0, QStringLiteral("Probe"), QStringLiteral("ViewTestProbe"), QString(), 0, CX_ToolIds::None},
        std::make_unique<ProbeGenerator>());
    return id;
}

// A view of 101 by 81 pixels on the box scene.
class ViewTest : public ::testing::Test {
protected:
    void SetUp() override { view.resize(101, 81); }
    // Makes the probe tool current in the view and gives it.
    ProbeTool *useProbe()
    {
        EXPECT_TRUE(view.setToolId(probeToolId()));
        EXPECT_NE(ProbeTool::last, nullptr);
        return ProbeTool::last;
    }
    MO_Node *box() const { return session->scene()->getRootGroup()->findNode(QStringLiteral("Box")); }

    std::unique_ptr<SC_Session> session = boxSession();
    VW_View view{session.get()};
};

TEST_F(ViewTest, RenderPaintsEachDrawingUnderItsWorldMatrixAtTheCurrentFrame)
{
    QImage image = view.render();
    ASSERT_EQ(image.size(), QSize(101, 81));

    QPoint const centre = expectedPixel(0.5, 0.25, 101, 81);
    EXPECT_EQ(pixelOf(image, centre.x(), centre.y()), kGreen);
    EXPECT_EQ(pixelOf(image, 50, 40), VW_View::kPaperColor);       // the scene origin: nothing there
    EXPECT_EQ(pixelOf(image, centre.x() + 6, centre.y()), VW_View::kPaperColor);  // beyond the half side of 2.5 px

    // The camera moved onto the box brings it to the centre of the view.
    Math::Matrix4x4 camera;
    camera.translate(0.5, 0.25);
    session->setCameraMatrix(camera);
    image = view.render();
    EXPECT_EQ(pixelOf(image, 50, 40), kGreen);
    EXPECT_EQ(pixelOf(image, centre.x(), centre.y()), VW_View::kPaperColor);

    // From frame 20 on the element exposes nothing.
    session->setCurrentFrame(20);
    EXPECT_EQ(pixelOf(view.render(), 50, 40), VW_View::kPaperColor);
}

TEST_F(ViewTest, TheToolDrawsAfterTheSceneAndTheViewMapsPointsBothWays)
{
    ProbeTool *tool = useProbe();
    EXPECT_EQ(tool->activations, 1);
    tool->drawHandle = true;
    int redraws = 0;
    QObject::connect(&view, &VW_View::redrawRequested, [&redraws] { ++redraws; });
    QImage const image = view.render();
    EXPECT_EQ(tool->normalDraws, 1);
    EXPECT_TRUE(tool->modelKept);
    EXPECT_EQ(redraws, 0);
    EXPECT_EQ(pixelOf(image, 10, 10), VS_RGBA(255, 0, 0));

    Math::Point2d scene;
    ASSERT_TRUE(view.viewToScene(Math::Point2d(50, 40), scene));
    EXPECT_NEAR(scene.x, 0.0, 1e-12);
    EXPECT_NEAR(scene.y, 0.0, 1e-12);
    Math::Point2d back;
    ASSERT_TRUE(view.sceneToView(Math::Point2d(0.5, 0.25), back));
    QPoint const centre = expectedPixel(0.5, 0.25, 101, 81);
    EXPECT_NEAR(back.x, centre.x(), 0.5);
    EXPECT_NEAR(back.y, centre.y(), 0.5);

    EXPECT_FALSE(view.setToolId(987654));  // unknown: no tool
    EXPECT_EQ(view.tool(), nullptr);
    EXPECT_EQ(view.toolId(), CX_ToolIds::None);
}

TEST_F(ViewTest, PickFindsTheModuleUnderThePointAndTellsTheToolItsId)
{
    ProbeTool *tool = useProbe();

    QPoint const centre = expectedPixel(0.5, 0.25, 101, 81);
    UT_SharedPtr<SLB_SelectableDescriptor> hit = view.pick(UT_Point(centre.x(), centre.y()), true, 0);
    auto *module = dynamic_cast<SLB_ModuleDescriptor *>(hit.get());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->module(), box()->toModule());
    EXPECT_EQ(tool->pickDraws, 1);
    ASSERT_EQ(tool->scans.size(), 1u);
    EXPECT_EQ(view.moduleForPickId(tool->scans[0].first), box()->toModule());
    EXPECT_TRUE(tool->scans[0].second);
    EXPECT_EQ(view.pickedHandle(hit), -1);  // the tool does not own the module's id

    // A pixel just outside the square but within the pick radius still finds it.
    tool->scans.clear();
    EXPECT_NE(view.pick(UT_Point(centre.x() + 5, centre.y()), false, 0), nullptr);
    ASSERT_EQ(tool->scans.size(), 1u);
    EXPECT_FALSE(tool->scans[0].second);

    // An empty place: no descriptor, nothing told to the tool.
    tool->scans.clear();
    EXPECT_EQ(view.pick(UT_Point(50, 40), true, 0), nullptr);
    EXPECT_TRUE(tool->scans.empty());
    // Points outside the view find nothing either.
    EXPECT_EQ(view.pick(UT_Point(-50, 4000), true, 0), nullptr);
    EXPECT_TRUE(tool->scans.empty());
}

TEST_F(ViewTest, PickTellsTheToolOneIdItsOwnBeforeADrawingsWithinTheRadius)
{
    ProbeTool *tool = useProbe();
    tool->drawHandle = true;

    UT_SharedPtr<SLB_SelectableDescriptor> hit = view.pick(UT_Point(10, 10), true, 0);
    EXPECT_EQ(hit, nullptr);
    ASSERT_EQ(tool->scans.size(), 1u);
    EXPECT_EQ(tool->scans[0].first, tool->handles.pickingId() + 1);
    EXPECT_EQ(view.pickedHandle(hit), 101);  // what oglScanHit answered
    EXPECT_EQ(view.pickImage().size(), QSize(101, 81));

    // With the camera placed so that the box's square touches the handle (the handle's pixels run
    // to x 12, the box's start beside them), both lie within the radius of the points between them.
    // The tool hears one id, once: its handle wherever the handle is within 3 pixels, even with
    // the box under the point; the box, which alone gives a descriptor, only farther away.
    Math::Matrix4x4 camera;
    double const k = std::min(101 / 2.0, 81 / 1.5);
    camera.translate(0.5 - (10 + 4 - 50) / k, 0.25 + (10 - 40) / k);  // the box centred on (14, 10)
    session->setCameraMatrix(camera);
    struct Case {
        int x;
        bool box;  // the box's id is the one found
    };
    for (Case const c : {Case{9, false}, Case{11, false}, Case{13, false}, Case{15, false}, Case{16, true}, Case{17, true}}) {
        tool->scans.clear();
        hit = view.pick(UT_Point(c.x, 10), true, 0);
        ASSERT_EQ(tool->scans.size(), 1u) << "x " << c.x;
        EXPECT_EQ(view.moduleForPickId(tool->scans[0].first) == box()->toModule(), c.box) << "x " << c.x;
        EXPECT_EQ(hit != nullptr, c.box) << "x " << c.x;
    }
}

TEST_F(ViewTest, PressMoveAndReleaseReachTheToolInViewPixelsWithModifiers)
{
    ProbeTool *tool = useProbe();
    int redraws = 0;
    QObject::connect(&view, &VW_View::redrawRequested, [&redraws] { ++redraws; });

    EXPECT_TRUE(view.mouseMove({5, 6}));  // hover
    EXPECT_TRUE(view.mousePress({10.5, 20}, Qt::ShiftModifier));
    EXPECT_TRUE(view.isPressed());
    EXPECT_TRUE(view.mouseMove({30, 40}, Qt::ControlModifier | Qt::AltModifier));
    EXPECT_TRUE(view.mouseRelease({31, 41}));
    EXPECT_FALSE(view.isPressed());
    EXPECT_FALSE(view.mouseRelease({31, 41}));  // no press under way: the tool is not told

    ASSERT_EQ(tool->events.size(), 4u);
    std::string kinds;
    for (auto const &e : tool->events)
        kinds += e.kind;
    EXPECT_EQ(kinds, "odmu");
    EXPECT_EQ(tool->events[1].point, Math::Point2d(10.5, 20));
    EXPECT_TRUE(tool->events[1].extend);
    EXPECT_FALSE(tool->events[1].keep);
    EXPECT_EQ(tool->events[2].point, Math::Point2d(30, 40));
    EXPECT_FALSE(tool->events[2].extend);
    EXPECT_TRUE(tool->events[2].keep);
    EXPECT_TRUE(tool->events[2].third);
    EXPECT_FALSE(tool->events[3].keep);
    EXPECT_GE(redraws, 4);

    EXPECT_TRUE(view.keyPress(Qt::Key_Left));
    EXPECT_EQ(tool->keys, std::vector<int>{Qt::Key_Left});

    view.dragStepDone();
    EXPECT_EQ(view.dragStepCount(), 1);
    EXPECT_DOUBLE_EQ(view.currentFrame(), 1.0);
    session->setCurrentFrame(7.5);
    EXPECT_DOUBLE_EQ(view.currentFrame(), 7.5);
}

// A tool may answer that it left a key alone and yet have moved something with it (a nudge that
// plays a drag): the key is used all the same, so that the window gives it to nothing else.
TEST_F(ViewTest, AKeyWithWhichTheToolMadeADragStepIsUsedWhateverTheToolAnswers)
{
    ProbeTool *tool = useProbe();
    tool->answerKeys = false;
    EXPECT_FALSE(view.keyPress(Qt::Key_Left));
    tool->stepOnKey = true;
    EXPECT_TRUE(view.keyPress(Qt::Key_Left));
    EXPECT_EQ(view.dragStepCount(), 1);
    tool->stepOnKey = false;
    EXPECT_FALSE(view.keyPress(Qt::Key_Right));
    EXPECT_EQ(tool->keys, (std::vector<int>{Qt::Key_Left, Qt::Key_Left, Qt::Key_Right}));
}

// Points far outside the view (a script's "press 2147483647 10") are brought within
// UT_Point::kLimit before they reach the tool or the pick pass, whose pixel arithmetic would
// otherwise overflow an int.
TEST_F(ViewTest, PointsFarOutsideTheViewAreClampedForTheToolAndThePick)
{
    ProbeTool *tool = useProbe();
    double const limit = UT_Point::kLimit;
    struct Case {
        Math::Point2d asked;
        Math::Point2d reached;
    };
    Case const cases[] = {
        {{2147483647.0, 10.0}, {limit, 10.0}},
        {{-2147483648.0, -3e9}, {-limit, -limit}},
        {{1e300, -1e300}, {limit, -limit}},
        {{std::nan(""), 5.0}, {0.0, 5.0}},
        {{limit, -limit}, {limit, -limit}},
    };
    for (Case const &c : cases) {
        tool->events.clear();
        view.mousePress(c.asked);
        view.mouseMove(c.asked);
        view.mouseRelease(c.asked);
        ASSERT_EQ(tool->events.size(), 3u);
        for (auto const &e : tool->events)
            EXPECT_EQ(e.point, c.reached) << c.asked.x << ", " << c.asked.y;
    }
    EXPECT_EQ(UT_Point::fromPoint2d({3e9, -3e9}), UT_Point(UT_Point::kLimit, -UT_Point::kLimit));
    // The pick pass looks around the point: at the ends of int it finds nothing, and no pixel
    // index overflows on the way.
    tool->scans.clear();
    EXPECT_EQ(view.pick(UT_Point(2147483647, 10), true, 0), nullptr);
    EXPECT_EQ(view.pick(UT_Point(-2147483647 - 1, -2147483647 - 1), true, 0), nullptr);
    EXPECT_TRUE(tool->scans.empty());
}

TEST_F(ViewTest, WithoutAToolAPressSelectsWhatItPicksAsOneUndoStep)
{
    QPoint const centre = expectedPixel(0.5, 0.25, 101, 81);
    SL_Selection *selection = session->getSelection();
    EXPECT_TRUE(view.mousePress(Math::Point2d(centre.x(), centre.y())));
    view.mouseRelease(Math::Point2d(centre.x(), centre.y()));
    EXPECT_EQ(selection->nodes(), std::vector<MO_Node *>{box()});
    EXPECT_EQ(session->commandManager()->undoName(), QStringLiteral("Selection"));

    view.mousePress(Math::Point2d(centre.x(), centre.y()), Qt::ShiftModifier);  // extend: toggles it out
    EXPECT_TRUE(selection->nodes().empty());
    view.mousePress(Math::Point2d(centre.x(), centre.y()), Qt::ShiftModifier);
    view.mousePress(Math::Point2d(2, 2), Qt::ShiftModifier);  // an empty place keeps an extended selection
    EXPECT_EQ(selection->nodes().size(), 1u);
    view.mousePress(Math::Point2d(2, 2));  // and clears a plain one
    EXPECT_TRUE(selection->nodes().empty());

    EXPECT_TRUE(session->commandManager()->undo());
    EXPECT_EQ(selection->nodes(), std::vector<MO_Node *>{box()});
}

TEST(ViewCursors, CustomGetValuesFromCustomFirstAndANullCursorIsRefused)
{
    VW_View view(nullptr, TO_AbstractToolContext::DrawingView);
    EXPECT_EQ(view.viewKind(), TO_AbstractToolContext::DrawingView);
    EXPECT_EQ(view.registerCursor(nullptr), TO_Enums::NoCursor);
    QPixmap pixmap(8, 8);
    pixmap.fill(Qt::red);
    int const first = view.registerCursor(new QCursor(pixmap, 1, 2));
    int const second = view.registerCursor(new QCursor(Qt::BusyCursor));
    EXPECT_EQ(first, TO_Enums::CustomFirst);
    EXPECT_EQ(second, TO_Enums::CustomFirst + 1);
    EXPECT_EQ(view.cursorFor(first).hotSpot(), QPoint(1, 2));
    EXPECT_EQ(view.cursorFor(second).shape(), Qt::BusyCursor);
    EXPECT_EQ(view.cursorFor(TO_Enums::OpenHand).shape(), Qt::OpenHandCursor);
    EXPECT_EQ(view.cursorFor(TO_Enums::CustomFirst + 50).shape(), Qt::ArrowCursor);

    // A view of no session renders paper and picks nothing.
    view.resize(0, -3);
    EXPECT_EQ(view.size(), QSize(1, 1));
    EXPECT_EQ(pixelOf(view.render(), 0, 0), VW_View::kPaperColor);
    EXPECT_EQ(view.pick(UT_Point(0, 0), true, 0), nullptr);
}

TEST_F(ViewTest, SelectedModulesAreMarked)
{
    QPoint const centre = expectedPixel(0.5, 0.25, 101, 81);
    QImage const before = view.render().copy();
    session->getSelection()->add(box());
    QImage const after = view.render();
    EXPECT_NE(before, after);
    // The drawing's box is outlined and its origin ringed; inside, the drawing still shows.
    EXPECT_EQ(pixelOf(after, centre.x(), centre.y()), kGreen);
    EXPECT_EQ(pixelOf(after, centre.x() + 6, centre.y()), VW_View::kSelectionColor);
    int outlined = 0;
    for (int dy = -3; dy <= 3; ++dy)
        for (int dx = -3; dx <= 3; ++dx)
            outlined += pixelOf(after, centre.x() + dx, centre.y() + dy) == VW_View::kSelectionColor;
    EXPECT_GT(outlined, 8);
}

} // namespace

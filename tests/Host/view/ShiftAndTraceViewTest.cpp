// What the view shows of Shift and Trace: drawings through their shift while it is on, the pegs at
// each of the four places and their pick colours, and the cross-hairs over the selected drawing.
// Default field metrics (1/12 in x, 1/16 in y), so that an x/y mix-up shows.
#include "scene/AT_ShiftAndTraceUtil.h"
#include "scene/MO_Module.h"
#include "scene/TUScene.h"
#include "scene/TUSceneFile.h"
#include "session/SC_Session.h"
#include "tool/SLB_PickEngine.h"
#include "tool/SLB_Selectable.h"
#include "tool/TO_AbstractTool.h"
#include "tool/TO_ToolFactory.h"
#include "view/VW_View.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <tuple>

using namespace AT_ShiftAndTraceUtil;

namespace {

// "Hand" stands at (6, 4) field units = (0.5, 0.25) OGL. Its drawing "1", exposed from frame 1, is a
// green square of half side 0.02 around (0.2, 0.05) in its own OGL space.
QString const kScene = QStringLiteral(ANIM_TEST_SCENES_DIR "/two-drawings.xml");

constexpr int kWidth = 201, kHeight = 151;
QColor const kGreen(0, 192, 0);
CA_CelKey const kKey(QStringLiteral("Hand"), QStringLiteral("1"));

// The pixel of a scene point in the view: k = min(W / 2, H / 1.5) pixels per OGL unit, y up.
QPoint pixelOf(double x, double y)
{
    double const k = std::min(kWidth / 2.0, kHeight / 1.5);
    return QPoint(int(std::lround((kWidth - 1) / 2.0 + k * x)), int(std::lround((kHeight - 1) / 2.0 - k * y)));
}

bool isPaper(QImage const &image, QPoint p)
{
    return image.pixelColor(p) == QColor(255, 255, 255);
}

// A tool that keeps the ids the pick pass hands it.
class ScanRecorder : public TO_Tool {
public:
    explicit ScanRecorder(TO_AbstractToolContext *context) : TO_Tool(context) { last = this; }
    ~ScanRecorder() override
    {
        if (last == this)
            last = nullptr;
    }
    int oglScanHit(unsigned int id, bool) override
    {
        ids.push_back(id);
        return -1;
    }
    static ScanRecorder *last;
    std::vector<unsigned int> ids;
};
ScanRecorder *ScanRecorder::last = nullptr;

class ScanRecorderGenerator : public TO_ToolFactory::ToolGenerator {
public:
    std::unique_ptr<TO_Tool> createTool(TO_AbstractToolContext *context) override
    {
        return std::make_unique<ScanRecorder>(context);
    }
};

CX_ToolIds::ID scanRecorderId()
{
    static CX_ToolIds::ID const id = TO_ToolFactory::instance().registerTool(
        {0, QStringLiteral("Scans"), QStringLiteral("ShiftAndTraceScanRecorder"), QString(), 0, CX_ToolIds::None},
        std::make_unique<ScanRecorderGenerator>());
    return id;
}

// Gives each (module, drawing) one picking id and remembers the frame each was last drawn at.
class RecordingGenerator : public ShiftAndTracePickingHandleGenerator {
public:
    VS_RGBA handleColor(MO_ElementModule *module, CA_CelKey const &key, int frame) override
    {
        for (auto &entry : pegs)
            if (std::get<0>(entry.second) == module && std::get<1>(entry.second) == key) {
                std::get<2>(entry.second) = frame;
                return SLB_PickEngine::idToColor(entry.first);
            }
        std::uint32_t const id = SLB_PickEngine::generateIdForPickingObject(1);
        pegs[id] = std::make_tuple(module, key, frame);
        return SLB_PickEngine::idToColor(id);
    }
    std::map<std::uint32_t, std::tuple<MO_ElementModule *, CA_CelKey, int>> pegs;
};

class SelectedDrawing : public ShiftAndTraceAbstractSelection {
public:
    bool isSelected(MO_ElementModule *module, CA_CelKey const &key) override
    {
        return module && module->instanceName() == QLatin1String("Hand") && key == kKey;
    }
};

class ShiftAndTraceView : public ::testing::Test {
protected:
    void SetUp() override
    {
        QString error;
        std::unique_ptr<TUScene> scene = TUSceneFile::readFile(kScene, &error);
        ASSERT_TRUE(scene) << error.toStdString();
        session = std::make_unique<SC_Session>(std::move(scene));
        view = std::make_unique<VW_View>(session.get());
        view->resize(kWidth, kHeight);
        hand = dynamic_cast<MO_ElementModule *>(session->scene()->getRootGroup()->findNode(QStringLiteral("Hand")));
        ASSERT_TRUE(hand);
        setShiftAndTraceEnabled(true);
        setShiftAndTraceShowPegs(true);
        setShiftAndTraceShowPegsIfSelected(false);
        setShiftAndTraceShowCrossHair(true);
        setShiftAndTracePegPosition(PegsBottom);
        crossHairList().clear();
    }
    void TearDown() override
    {
        setShiftAndTraceEnabled(false);
        setShiftAndTraceShowPegsIfSelected(false);
        setShiftAndTracePickingHandleGenerator(nullptr);
        ShiftAndTraceAbstractSelection::setInstance(nullptr);
        crossHairList().clear();
    }
    void setShift(double rotation, double px, double py, double s, double qx, double qy)
    {
        PositionData d;
        d.rotation = rotation;
        d.pivotX = px;
        d.pivotY = py;
        d.scaleX = d.scaleY = s;
        d.positionX = qx;
        d.positionY = qy;
        ASSERT_TRUE(addShiftAndTrace(hand)->setPositionFor(kKey, d));
    }

    std::unique_ptr<SC_Session> session;
    std::unique_ptr<VW_View> view;
    MO_ElementModule *hand = nullptr;
};

// Rotation 30 degrees about the pivot (1.2, 0.8) field = (0.1, 0.05) OGL, scale 2, position
// (-3, 2) field = (-0.25, 0.125) OGL. The square's centre x = (0.2, 0.05): x - p = (0.1, 0), scaled
// (0.2, 0), turned (0.2 cos 30, 0.2 sin 30) = (0.173205, 0.1), plus p + q = (-0.15, 0.175) gives
// (0.023205, 0.275), plus the element's (0.5, 0.25): (0.523205, 0.525). Unshifted it stands at (0.7, 0.3).
TEST_F(ShiftAndTraceView, ADrawingIsShownThroughItsShiftOnlyWhileShiftAndTraceIsOn)
{
    setShift(30, 1.2, 0.8, 2, -3, 2);
    QPoint const shifted = pixelOf(0.523205, 0.525);
    QPoint const unshifted = pixelOf(0.7, 0.3);

    QImage image = view->render();
    EXPECT_EQ(image.pixelColor(shifted), kGreen);
    // Scaled twice: the half side of 0.02 becomes 0.04, about 4 pixels.
    EXPECT_EQ(image.pixelColor(shifted + QPoint(3, 0)), kGreen);
    EXPECT_TRUE(isPaper(image, shifted + QPoint(7, 0)));
    EXPECT_TRUE(isPaper(image, unshifted));

    setShiftAndTraceEnabled(false);
    image = view->render();
    EXPECT_EQ(image.pixelColor(unshifted), kGreen);
    EXPECT_TRUE(isPaper(image, shifted));
}

TEST_F(ShiftAndTraceView, ThePickPassFollowsTheShift)
{
    setShift(30, 1.2, 0.8, 2, -3, 2);
    QPoint const shifted = pixelOf(0.523205, 0.525);
    auto const *hit = dynamic_cast<SLB_ModuleDescriptor *>(view->pick(UT_Point(shifted.x(), shifted.y()), true, 0).get());
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->module(), hand);

    setShiftAndTraceEnabled(false);
    EXPECT_EQ(view->pick(UT_Point(shifted.x(), shifted.y()), true, 0), nullptr);
}

// The same shift on drawing "1" seen as an onion drawing from frame 5, where drawing "2" is
// exposed: the onion drawing, its pick and its pegs all go through the shift, at frame 1.
TEST_F(ShiftAndTraceView, AnOnionDrawingIsShownPickedAndPeggedThroughItsShift)
{
    setShift(30, 1.2, 0.8, 2, -3, 2);
    session->setCurrentFrame(5);
    view->setOnionSkin(true);
    QPoint const shifted = pixelOf(0.523205, 0.525);
    QPoint const unshifted = pixelOf(0.7, 0.3);

    QImage const image = view->render();
    EXPECT_FALSE(isPaper(image, shifted));  // tinted and faded, not the drawing's own green
    EXPECT_TRUE(isPaper(image, unshifted));

    auto const *hit = dynamic_cast<SLB_ModuleDescriptorWithFrame *>(view->pick(UT_Point(shifted.x(), shifted.y()), true, 0).get());
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->module(), hand);
    EXPECT_EQ(hit->frame(), 1);

    RecordingGenerator generator;
    setShiftAndTracePickingHandleGenerator(&generator);
    setShiftAndTraceShowPegsIfSelected(true);
    view->pick(UT_Point(0, 0), false, 0);
    bool peggedAtFrameOne = false;
    for (auto const &entry : generator.pegs)
        peggedAtFrameOne = peggedAtFrameOne || (std::get<1>(entry.second) == kKey && std::get<2>(entry.second) == 1);
    EXPECT_TRUE(peggedAtFrameOne);
    view->setOnionSkin(false);
}

// The peg bar's centre peg (field units): below (0, -10), above (0, 10), left (-10, 0), right
// (10, 0). The shift turns by 180 degrees, halves, and moves by (-6, -4) field = (-0.5, -0.25) OGL,
// which cancels the element's place: a peg at P (OGL) is shown at -P / 2.
TEST_F(ShiftAndTraceView, APegOfEachPlaceIsPickedWithItsModuleDrawingAndFrame)
{
    setShift(180, 0, 0, 0.5, -6, -4);
    session->setCurrentFrame(3);
    RecordingGenerator generator;
    setShiftAndTracePickingHandleGenerator(&generator);
    setShiftAndTraceShowPegsIfSelected(true);
    ASSERT_TRUE(view->setToolId(scanRecorderId()));
    ASSERT_TRUE(ScanRecorder::last);

    struct Place {
        Position_t position;
        double x, y;  // where the centre peg is shown, OGL
    };
    Place const places[] = {{PegsBottom, 0.0, 0.3125}, {PegsTop, 0.0, -0.3125},
                            {PegsLeft, 10.0 / 24.0, 0.0}, {PegsRight, -10.0 / 24.0, 0.0}};
    for (Place const &place : places) {
        setShiftAndTracePegPosition(place.position);
        QPoint const at = pixelOf(place.x, place.y);
        ScanRecorder::last->ids.clear();
        view->pick(UT_Point(at.x(), at.y()), true, 0);
        ASSERT_FALSE(ScanRecorder::last->ids.empty()) << "place " << place.position;
        unsigned int const nearest = ScanRecorder::last->ids.back();  // handed over last
        ASSERT_EQ(generator.pegs.count(nearest), 1u) << "place " << place.position;
        EXPECT_EQ(std::get<0>(generator.pegs[nearest]), hand);
        EXPECT_EQ(std::get<1>(generator.pegs[nearest]), kKey);
        EXPECT_EQ(std::get<2>(generator.pegs[nearest]), 3);

        // Shown in the visible pass at the same place, in the outline colour.
        QImage const image = view->render();
        VS_RGBA const outline = getOutlineColour();
        EXPECT_EQ(image.pixelColor(at), QColor(outline.r, outline.g, outline.b)) << "place " << place.position;
    }
}

TEST_F(ShiftAndTraceView, PegsNeedTheToolTheSwitchAndAGeneratorToBePicked)
{
    RecordingGenerator generator;
    setShiftAndTracePickingHandleGenerator(&generator);
    ASSERT_TRUE(view->setToolId(scanRecorderId()));
    // Unshifted, the bottom centre peg stands at (0, -0.625) plus the element's (0.5, 0.25).
    QPoint const at = pixelOf(0.5, -0.375);
    VS_RGBA const outline = getOutlineColour();
    QColor const pegColour(outline.r, outline.g, outline.b);

    view->pick(UT_Point(at.x(), at.y()), true, 0);  // the tool is not current: no pegs
    EXPECT_TRUE(ScanRecorder::last->ids.empty());
    EXPECT_TRUE(isPaper(view->render(), at));

    setShiftAndTraceShowPegsIfSelected(true);
    EXPECT_EQ(view->render().pixelColor(at), pegColour);
    setShiftAndTraceShowPegs(false);
    EXPECT_TRUE(isPaper(view->render(), at));
    setShiftAndTraceShowPegs(true);
    setShiftAndTraceEnabled(false);
    EXPECT_TRUE(isPaper(view->render(), at));
    setShiftAndTraceEnabled(true);

    setShiftAndTracePickingHandleGenerator(nullptr);  // shown, but without pick colours
    view->pick(UT_Point(at.x(), at.y()), true, 0);
    EXPECT_TRUE(ScanRecorder::last->ids.empty());
    setShiftAndTracePickingHandleGenerator(&generator);
    view->pick(UT_Point(at.x(), at.y()), true, 0);
    EXPECT_EQ(ScanRecorder::last->ids.size(), 1u);
}

// A cross-hair at the field origin of the drawing, under the shift of the first test: (0, 0) - p =
// (-0.1, -0.05), scaled (-0.2, -0.1), turned (-0.123205, -0.186603), plus p + q and the element's
// place: (0.226795, 0.238397).
TEST_F(ShiftAndTraceView, CrossHairsAreDrawnOverTheSelectedDrawingUnderItsShift)
{
    setShift(30, 1.2, 0.8, 2, -3, 2);
    crossHairList().push_back(Math::Point2d(0, 0));
    QPoint const centre = pixelOf(0.226795, 0.238397);
    QPoint const arm = centre + QPoint(6, 0);

    EXPECT_TRUE(isPaper(view->render(), arm));  // no selection published
    SelectedDrawing selection;
    ShiftAndTraceAbstractSelection::setInstance(&selection);
    QImage image = view->render();
    EXPECT_FALSE(isPaper(image, arm));
    EXPECT_FALSE(isPaper(image, centre + QPoint(0, -6)));
    EXPECT_TRUE(isPaper(image, centre + QPoint(6, 6)));  // between the arms

    setShiftAndTraceShowCrossHair(false);
    EXPECT_TRUE(isPaper(view->render(), arm));
    setShiftAndTraceShowCrossHair(true);
    crossHairList().clear();
    EXPECT_TRUE(isPaper(view->render(), arm));
}

}  // namespace

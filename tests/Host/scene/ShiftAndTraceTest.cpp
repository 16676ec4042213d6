// Shift and Trace storage: the per-drawing shifts of an element module, their undo, their scene
// file form, the offset matrix, and the switches.
#include "command/CO_CommandManager.h"
#include "scene/AT_ShiftAndTraceUtil.h"
#include "scene/MO_Module.h"
#include "scene/TUScene.h"
#include "scene/TUSceneFile.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace AT_ShiftAndTraceUtil;

namespace {

// One element "Hand" with two drawings: "1" from frame 1, "2" from frame 5, nothing from 9.
// Default metrics, so that x (1/12) and y (1/16) differ.
QByteArray const kHandScene = [] {
    QFile file(QStringLiteral(ANIM_TEST_SCENES_DIR "/two-drawings.xml"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}();

CA_CelKey const kFirst(QStringLiteral("Hand"), QStringLiteral("1"));
CA_CelKey const kSecond(QStringLiteral("Hand"), QStringLiteral("2"));

PositionData shift(double rotation, double px, double py, double sx, double sy, double qx, double qy)
{
    PositionData d;
    d.rotation = rotation;
    d.pivotX = px;
    d.pivotY = py;
    d.scaleX = sx;
    d.scaleY = sy;
    d.positionX = qx;
    d.positionY = qy;
    return d;
}

class ShiftStorage : public ::testing::Test {
protected:
    void SetUp() override
    {
        QString error;
        scene = TUSceneFile::read(kHandScene, QStringLiteral("two-drawings.xml"), &error);
        ASSERT_TRUE(scene) << error.toStdString();
        scene->setCommandManager(&manager);
        hand = dynamic_cast<MO_ElementModule *>(scene->getRootGroup()->findNode(QStringLiteral("Hand")));
        ASSERT_TRUE(hand);
    }
    QByteArray saved() const { return TUSceneFile::write(*scene); }

    CO_CommandManager manager;
    std::unique_ptr<TUScene> scene;
    MO_ElementModule *hand = nullptr;
};

TEST_F(ShiftStorage, AModuleHasNoAttributeUntilOneIsAddedAndAnEmptyOneIsNotSaved)
{
    EXPECT_EQ(shiftAndTraceFor(hand), nullptr);
    EXPECT_EQ(shiftAndTraceFor(nullptr), nullptr);
    EXPECT_EQ(addShiftAndTrace(nullptr), nullptr);

    ShiftAndTraceAttr *attr = addShiftAndTrace(hand);
    ASSERT_NE(attr, nullptr);
    EXPECT_EQ(addShiftAndTrace(hand), attr);  // made once
    EXPECT_EQ(shiftAndTraceFor(hand), attr);
    EXPECT_EQ(attr->positionFor(kFirst), PositionData());  // the defaults
    EXPECT_FALSE(attr->hasPositionFor(kFirst));
    EXPECT_EQ(manager.undoCount(), 0);  // making it is no undo step
    EXPECT_EQ(saved().toStdString(), kHandScene.toStdString());
}

TEST_F(ShiftStorage, ShiftsOnTwoDrawingsRoundTripByteForByte)
{
    ShiftAndTraceAttr *attr = addShiftAndTrace(hand);
    ASSERT_TRUE(attr->setPositionFor(kFirst, shift(30, 1.5, -2, 2, 2, 0.25, 3)));
    ASSERT_TRUE(attr->setPositionFor(kSecond, shift(-12.5, 0, 0, 1, 0.5, -4, 1e-7)));
    QByteArray const written = saved();
    EXPECT_NE(written.indexOf(R"(    <CAN_ANIMATE value="true"/>
    <shiftAndTrace type="SHIFT_AND_TRACE">
     <shift element="Hand" drawing="1" rotation="30" pivotX="1.5" pivotY="-2" scaleX="2" scaleY="2" positionX="0.25" positionY="3"/>
     <shift element="Hand" drawing="2" rotation="-12.5" pivotX="0" pivotY="0" scaleX="1" scaleY="0.5" positionX="-4" positionY="1e-07"/>
    </shiftAndTrace>
   </attrs>
)"), -1) << written.toStdString();

    QString error;
    std::unique_ptr<TUScene> again = TUSceneFile::read(written, QStringLiteral("again.xml"), &error);
    ASSERT_TRUE(again) << error.toStdString();
    auto *readHand = dynamic_cast<MO_ElementModule *>(again->getRootGroup()->findNode(QStringLiteral("Hand")));
    ShiftAndTraceAttr *readAttr = shiftAndTraceFor(readHand);
    ASSERT_NE(readAttr, nullptr);
    EXPECT_EQ(readAttr->positionFor(kSecond), shift(-12.5, 0, 0, 1, 0.5, -4, 1e-7));
    // Read or made, the attribute is hidden from attribute editors.
    EXPECT_TRUE(readAttr->meta().hasFlag(AT_AttrMetaContainer::Hidden));
    EXPECT_TRUE(attr->meta().hasFlag(AT_AttrMetaContainer::Hidden));
    EXPECT_EQ(TUSceneFile::write(*again).toStdString(), written.toStdString());
}

TEST_F(ShiftStorage, SettingClearingAndRemovingUndoToTheByteAndRedo)
{
    ShiftAndTraceAttr *attr = addShiftAndTrace(hand);
    ASSERT_TRUE(attr->setPositionFor(kFirst, shift(10, 0, 0, 1, 1, 2, 0)));
    QByteArray const one = saved();
    {
        CO_CommandAccumScope step(&manager, QStringLiteral("Move Shift and Trace"));
        ASSERT_TRUE(attr->setPositionFor(kFirst, shift(20, 0, 0, 1, 1, 2, 0)));
        ASSERT_TRUE(attr->setPositionFor(kSecond, shift(0, 1, 1, 1, 1, 0, 0)));
    }
    QByteArray const two = saved();
    EXPECT_TRUE(attr->clearPositionFor(kSecond));
    EXPECT_FALSE(attr->clearPositionFor(kSecond));  // nothing left to forget
    QByteArray const cleared = saved();
    EXPECT_TRUE(removeShiftAndTrace(hand));
    EXPECT_EQ(shiftAndTraceFor(hand), nullptr);
    EXPECT_FALSE(removeShiftAndTrace(hand));
    EXPECT_EQ(saved().toStdString(), kHandScene.toStdString());
    EXPECT_EQ(manager.undoNames(), QStringList({"Shift and Trace", "Move Shift and Trace", "Shift and Trace", "Shift and Trace"}));

    std::vector<QByteArray> const states = {kHandScene, one, two, cleared};
    for (int i = 3; i >= 0; --i) {
        ASSERT_TRUE(manager.undo());
        EXPECT_EQ(saved().toStdString(), states[std::size_t(i)].toStdString()) << "after undoing to state " << i;
    }
    EXPECT_EQ(shiftAndTraceFor(hand), attr);  // still there, without shifts
    for (std::size_t i = 1; i < states.size(); ++i) {
        ASSERT_TRUE(manager.redo());
        EXPECT_EQ(saved().toStdString(), states[i].toStdString()) << "after redoing to state " << i;
    }
    ASSERT_TRUE(manager.redo());
    EXPECT_EQ(shiftAndTraceFor(hand), nullptr);
}

TEST_F(ShiftStorage, AnAttributeBroughtBackAfterRemovalStartsEmptyAndUndoStillReachesEveryState)
{
    ShiftAndTraceAttr *attr = addShiftAndTrace(hand);
    ASSERT_TRUE(attr->setPositionFor(kFirst, shift(10, 0, 0, 1, 1, 0, 0)));
    QByteArray const before = saved();
    ASSERT_TRUE(removeShiftAndTrace(hand));
    EXPECT_FALSE(attr->setPositionFor(kFirst, PositionData()));  // a removed attribute takes nothing

    EXPECT_EQ(addShiftAndTrace(hand), attr);
    EXPECT_FALSE(attr->hasPositionFor(kFirst));
    ASSERT_TRUE(attr->setPositionFor(kSecond, shift(0, 0, 0, 3, 3, 0, 0)));
    QByteArray const after = saved();

    ASSERT_TRUE(manager.undo());  // the second shift
    ASSERT_TRUE(manager.undo());  // the removal
    EXPECT_EQ(saved().toStdString(), before.toStdString());
    ASSERT_TRUE(manager.redo());
    ASSERT_TRUE(manager.redo());
    EXPECT_EQ(saved().toStdString(), after.toStdString());
}

// Each refused shift leaves the stored one, the undo stack and the file as they were.
struct RefusedShift {
    char const *name;
    CA_CelKey key;
    PositionData data;
};

void PrintTo(RefusedShift const &shift, std::ostream *os)
{
    *os << shift.name;
}

PositionData withValue(double PositionData::*field, double value)
{
    PositionData d = shift(5, 1, 1, 1, 1, 0, 0);
    d.*field = value;
    return d;
}

class RefusedShifts : public ShiftStorage, public ::testing::WithParamInterface<RefusedShift> {};

TEST_P(RefusedShifts, LeaveEverythingAsItWas)
{
    ShiftAndTraceAttr *attr = addShiftAndTrace(hand);
    PositionData const stored = shift(1, 2, 3, 4, 5, 6, 7);
    ASSERT_TRUE(attr->setPositionFor(kFirst, stored));
    QByteArray const before = saved();
    int const steps = manager.undoCount();

    EXPECT_FALSE(attr->setPositionFor(GetParam().key, GetParam().data));
    EXPECT_EQ(attr->positionFor(kFirst), stored);
    EXPECT_EQ(attr->positions().size(), 1u);
    EXPECT_EQ(manager.undoCount(), steps);
    EXPECT_EQ(saved().toStdString(), before.toStdString());
}

double const kNaN = std::numeric_limits<double>::quiet_NaN();
double const kInf = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    ShiftAndTrace, RefusedShifts,
    ::testing::Values(RefusedShift{"NaNRotation", kFirst, withValue(&PositionData::rotation, kNaN)},
                      RefusedShift{"InfinitePivotX", kFirst, withValue(&PositionData::pivotX, kInf)},
                      RefusedShift{"NegativeInfinitePivotY", kFirst, withValue(&PositionData::pivotY, -kInf)},
                      RefusedShift{"NaNScaleX", kFirst, withValue(&PositionData::scaleX, kNaN)},
                      RefusedShift{"InfiniteScaleY", kFirst, withValue(&PositionData::scaleY, kInf)},
                      RefusedShift{"NaNPositionX", kFirst, withValue(&PositionData::positionX, kNaN)},
                      RefusedShift{"HugePositionY", kFirst, withValue(&PositionData::positionY, 1.5e9)},
                      RefusedShift{"HugeNegativeScale", kFirst, withValue(&PositionData::scaleX, -1e300)},
                      RefusedShift{"EmptyKey", CA_CelKey(), PositionData()},
                      RefusedShift{"KeyWithoutDrawing", CA_CelKey(QStringLiteral("Hand"), QString()), PositionData()}),
    [](::testing::TestParamInfo<RefusedShift> const &info) { return std::string(info.param.name); });

TEST(ShiftAndTraceFile, TheAttributeIsReadUnderItsOwnNameOnDrawingElementsOnly)
{
    QByteArray renamed = kHandScene;
    renamed.replace("    <CAN_ANIMATE value=\"true\"/>\n",
                    "    <CAN_ANIMATE value=\"true\"/>\n    <shifts type=\"SHIFT_AND_TRACE\"/>\n");
    QString error;
    EXPECT_EQ(TUSceneFile::read(renamed, QStringLiteral("bad.xml"), &error), nullptr);
    EXPECT_EQ(error.toStdString(), "bad.xml:13: expected the type SHIFT_AND_TRACE on <shiftAndTrace> only, found it on <shifts>");

    QByteArray onPeg = kHandScene;
    onPeg.replace("  <node type=\"READ\" name=\"Hand\">",
                  "  <node type=\"PEG\" name=\"Peg\">\n   <attrs>\n    <shiftAndTrace type=\"SHIFT_AND_TRACE\"/>\n   </attrs>\n  </node>\n"
                  "  <node type=\"READ\" name=\"Hand\">");
    EXPECT_EQ(TUSceneFile::read(onPeg, QStringLiteral("bad.xml"), &error), nullptr);
    EXPECT_EQ(error.toStdString(), "bad.xml:7: expected <shiftAndTrace> on a drawing element only");
}

TEST(ShiftAndTraceFile, BadShiftElementsAreRefusedWithTheirLine)
{
    struct Case {
        char const *shiftLine;
        char const *message;
    };
    Case const cases[] = {
        {R"(<shift element="Hand" drawing="1" rotation="nan"/>)",
         R"(bad.xml:14: expected a finite number of magnitude at most 1e9 for "rotation" on <shift>, found "nan")"},
        {R"(<shift element="Hand" drawing="1" scaleX="2e9"/>)",
         R"(bad.xml:14: expected a finite number of magnitude at most 1e9 for "scaleX" on <shift>, found "2e9")"},
        {R"(<shift element="Hand" rotation="1"/>)", "bad.xml:14: expected a drawing name on <shift>"},
        {R"(<shift element="Hand" drawing="1" spin="1"/>)",
         R"(bad.xml:14: expected element, drawing and the seven values on <shift>, found "spin")"},
        {R"(<shift element="Hand" drawing="1"/><shift element="Hand" drawing="1"/>)",
         R"(bad.xml:14: expected one <shift> per drawing in <shiftAndTrace>, found "1" twice)"},
        {R"(<turn/>)", "bad.xml:14: expected only <shift> elements in <shiftAndTrace>"},
        {R"(<shift element="Hand" drawing="1"><shift element="Hand" drawing="2"/></shift>)",
         "bad.xml:14: expected only <shift> elements in <shiftAndTrace>"},
    };
    for (Case const &c : cases) {
        QByteArray file = kHandScene;
        ASSERT_NE(file.indexOf("    <CAN_ANIMATE value=\"true\"/>\n"), -1);
        file.replace("    <CAN_ANIMATE value=\"true\"/>\n",
                     QByteArray("    <CAN_ANIMATE value=\"true\"/>\n    <shiftAndTrace type=\"SHIFT_AND_TRACE\">\n     ") +
                         c.shiftLine + "\n    </shiftAndTrace>\n");
        QString error;
        EXPECT_EQ(TUSceneFile::read(file, QStringLiteral("bad.xml"), &error), nullptr) << c.shiftLine;
        EXPECT_EQ(error.toStdString(), c.message);
    }
}

// Where the offset matrix puts a drawing point, computed by hand: (p + q) + R S (x - p), with the
// pivot p and position q in OGL units (x times 1/12, y times 1/16).
TEST_F(ShiftStorage, TheOffsetMatrixScalesAndRotatesAboutThePivotAndMovesItByThePosition)
{
    ShiftAndTraceAttr *attr = addShiftAndTrace(hand);
    EXPECT_EQ(renderingOffsetMatrixForDrawing(hand, kFirst), Math::Matrix4x4());  // nothing stored
    ASSERT_TRUE(attr->setPositionFor(kFirst, shift(30, 1.2, 1.6, 2, 3, 2.4, -0.8)));

    Math::Matrix4x4 const m = renderingOffsetMatrixForDrawing(hand, kFirst);
    double const px = 0.1, py = 0.1, qx = 0.2, qy = -0.05;
    double const c = std::cos(M_PI / 6), s = std::sin(M_PI / 6);
    auto expected = [&](double x, double y) {
        double const dx = 2 * (x - px), dy = 3 * (y - py);
        return Math::Point2d(px + qx + c * dx - s * dy, py + qy + s * dx + c * dy);
    };
    for (Math::Point2d const x : {Math::Point2d(0, 0), Math::Point2d(0.1, 0.1), Math::Point2d(0.3, -0.2)}) {
        Math::Point3d const got = m * Math::Point3d(x.x, x.y, 0);
        EXPECT_NEAR(got.x, expected(x.x, x.y).x, 1e-12);
        EXPECT_NEAR(got.y, expected(x.x, x.y).y, 1e-12);
    }
    // The pivot lands at p + q.
    Math::Point3d const pivot = m * Math::Point3d(px, py, 0);
    EXPECT_NEAR(pivot.x, 0.3, 1e-12);
    EXPECT_NEAR(pivot.y, 0.05, 1e-12);
}

TEST_F(ShiftStorage, ByFrameTheShiftIsThatOfTheDrawingExposedThere)
{
    PositionData data = shift(7, 7, 7, 7, 7, 7, 7);
    EXPECT_FALSE(renderingOffsetForFrame(hand, 1, data));  // no attribute: left alone
    EXPECT_EQ(data, shift(7, 7, 7, 7, 7, 7, 7));

    ShiftAndTraceAttr *attr = addShiftAndTrace(hand);
    PositionData const second = shift(0, 0, 0, 1, 1, 12, 0);
    ASSERT_TRUE(attr->setPositionFor(kSecond, second));

    EXPECT_FALSE(renderingOffsetForFrame(hand, 3.9, data));  // drawing 1: defaults, none stored
    EXPECT_EQ(data, PositionData());
    EXPECT_TRUE(renderingOffsetForFrame(hand, 5, data));
    EXPECT_EQ(data, second);
    EXPECT_TRUE(renderingOffsetForFrame(hand, 8.5, data));
    data = shift(7, 7, 7, 7, 7, 7, 7);
    EXPECT_FALSE(renderingOffsetForFrame(hand, 9, data));  // nothing exposed
    EXPECT_EQ(data, shift(7, 7, 7, 7, 7, 7, 7));

    EXPECT_EQ(renderingOffsetMatrixForFrame(hand, 6), renderingOffsetMatrixForDrawing(hand, kSecond));
    EXPECT_NE(renderingOffsetMatrixForFrame(hand, 6), Math::Matrix4x4());
    EXPECT_EQ(renderingOffsetMatrixForFrame(hand, 2), Math::Matrix4x4());
    EXPECT_EQ(renderingOffsetMatrixForFrame(hand, 20), Math::Matrix4x4());
    EXPECT_EQ(renderingOffsetMatrixForFrame(nullptr, 6), Math::Matrix4x4());
}

TEST_F(ShiftStorage, TheDisplayMatrixAppliesTheShiftOnlyWhileShiftAndTraceIsOn)
{
    ASSERT_TRUE(addShiftAndTrace(hand)->setPositionFor(kFirst, shift(0, 0, 0, 1, 1, 12, 0)));
    Math::Matrix4x4 world;
    world.translate(0.5, 0.0);
    setShiftAndTraceEnabled(false);
    EXPECT_EQ(displayModelMatrix(*hand, kFirst, world), world);
    setShiftAndTraceEnabled(true);
    Math::Point3d const origin = displayModelMatrix(*hand, kFirst, world) * Math::Point3d(0, 0, 0);
    EXPECT_NEAR(origin.x, 1.5, 1e-12);  // 12 field units = 1 OGL unit, after the world's 0.5
    EXPECT_EQ(displayModelMatrix(*hand, kSecond, world), world);  // drawing 2 has no shift
    setShiftAndTraceEnabled(false);
}

TEST(ShiftAndTraceState, TheEnabledSignalComesOncePerChangeAndThePegPositionStaysInRange)
{
    int changes = 0;
    QObject::connect(ShiftAndTraceStateManager::instance(), &ShiftAndTraceStateManager::onShiftAndTraceEnabledChanged,
                     [&changes] { ++changes; });
    setShiftAndTraceEnabled(false);
    int const start = changes;
    setShiftAndTraceEnabled(true);
    setShiftAndTraceEnabled(true);
    setShiftAndTraceEnabled(false);
    EXPECT_EQ(changes - start, 2);

    setShiftAndTracePegPosition(PegsRight);
    setShiftAndTracePegPosition(static_cast<Position_t>(4));
    setShiftAndTracePegPosition(static_cast<Position_t>(-1));
    EXPECT_EQ(shiftAndTracePegPosition(), PegsRight);
    EXPECT_EQ(getCenterPegPosition(), Math::Point2d(10, 0));
    setShiftAndTracePegPosition(PegsBottom);
    EXPECT_EQ(getCenterPegPosition(), Math::Point2d(0, -10));

    // Pegs need the tool as well as the two switches; cross-hairs only the switches.
    setShiftAndTraceEnabled(true);
    setShiftAndTraceShowPegs(true);
    setShiftAndTraceShowPegsIfSelected(false);
    EXPECT_FALSE(pegsShown());
    setShiftAndTraceShowPegsIfSelected(true);
    EXPECT_TRUE(pegsShown());
    setShiftAndTraceShowCrossHair(true);
    EXPECT_TRUE(crossHairsShown());
    setShiftAndTraceEnabled(false);
    EXPECT_FALSE(pegsShown());
    EXPECT_FALSE(crossHairsShown());
    setShiftAndTraceShowPegsIfSelected(false);
}

TEST(ShiftAndTraceState, ASelectionOrGeneratorThatIsDestroyedIsWithdrawn)
{
    {
        ShiftAndTraceAbstractSelection selection;
        ShiftAndTraceAbstractSelection::setInstance(&selection);
        EXPECT_EQ(ShiftAndTraceAbstractSelection::instance(), &selection);
    }
    EXPECT_EQ(ShiftAndTraceAbstractSelection::instance(), nullptr);

    struct Generator : ShiftAndTracePickingHandleGenerator {
        VS_RGBA handleColor(MO_ElementModule *, CA_CelKey const &, int) override { return VS_RGBA(1, 2, 3); }
    };
    {
        Generator generator;
        setShiftAndTracePickingHandleGenerator(&generator);
        EXPECT_EQ(shiftAndTracePickingHandleGenerator(), &generator);
    }
    EXPECT_EQ(shiftAndTracePickingHandleGenerator(), nullptr);
}

}  // namespace

// Edits of an element's drawings: new drawings and their exposures, shapes added, undo and redo
// through the command manager, and the name a new drawing gets.
#include "command/CO_CommandManager.h"
#include "scene/CA_DrawingCmds.h"
#include "scene/MO_Module.h"

#include <gtest/gtest.h>

namespace {

using Timing = std::map<int, QString>;

OC_VectorShape line(double x0, double y0, double x1, double y1)
{
    OC_VectorShape shape;
    shape.points = {Math::Point2d(x0, y0), Math::Point2d(x1, y1)};
    return shape;
}

// An element "E" with the drawings named (each holding one line) and that timing.
UT_SharedPtr<MO_ElementModule> element(QStringList const &drawings, Timing const &timing)
{
    auto e = UT_MakeShared<MO_ElementModule>();
    e->setElementName(QStringLiteral("E"));
    for (QString const &name : drawings)
        e->addDrawing(name, {line(0, 0, 1, 1)});
    for (auto const &entry : timing)
        EXPECT_TRUE(e->setExposure(entry.first, entry.second));
    return e;
}

struct NewDrawingCase {
    char const *name;
    QStringList drawings;
    Timing before;
    int frame;
    QString expectedName;
    Timing after;
};

void PrintTo(NewDrawingCase const &c, std::ostream *os) { *os << c.name; }

class NewDrawing : public ::testing::TestWithParam<NewDrawingCase> {};

TEST_P(NewDrawing, IsExposedAtTheFrameAndTheFramesAfterKeepWhatTheyShowedUntilUndone)
{
    NewDrawingCase const &c = GetParam();
    UT_SharedPtr<MO_ElementModule> e = element(c.drawings, c.before);
    // What each frame around the edit showed before it.
    std::map<int, OC_Drawing const *> shown;
    for (int f = c.frame + 1; f <= c.frame + 12; ++f)
        shown[f] = e->oglDrawing(f).drawing();

    CO_CommandManager manager;
    QString name;
    ASSERT_TRUE(manager.execute(CA_DrawingCmds::newDrawing(*e, c.frame, &name), QStringLiteral("New Drawing")));
    EXPECT_EQ(name, c.expectedName);
    EXPECT_EQ(e->timing(), c.after);
    ASSERT_TRUE(e->oglDrawing(c.frame).isDrawing());
    EXPECT_EQ(e->oglDrawing(c.frame)->celKey(), CA_CelKey(QStringLiteral("E"), c.expectedName));
    EXPECT_TRUE(e->oglDrawing(c.frame)->shapes().empty());
    for (auto const &entry : shown)
        EXPECT_EQ(e->oglDrawing(entry.first).drawing(), entry.second) << "frame " << entry.first;
    EXPECT_EQ(e->drawings().size(), std::size_t(c.drawings.size() + 1));

    ASSERT_TRUE(manager.undo());
    EXPECT_EQ(e->timing(), c.before);
    EXPECT_EQ(e->drawings().size(), std::size_t(c.drawings.size()));
    ASSERT_TRUE(manager.redo());
    EXPECT_EQ(e->timing(), c.after);
}

QString const k1 = QStringLiteral("1"), k2 = QStringLiteral("2"), k5 = QStringLiteral("5"), k9 = QStringLiteral("9"),
              k10 = QStringLiteral("10"), kNone;

INSTANTIATE_TEST_SUITE_P(
    Timings, NewDrawing,
    ::testing::Values(
        NewDrawingCase{"BetweenTwoKeys", {k1, k9}, {{1, k1}, {9, k9}}, 5, k10, {{1, k1}, {5, k10}, {6, k1}, {9, k9}}},
        NewDrawingCase{"JustBeforeAnEntry", {k1, k9}, {{1, k1}, {9, k9}}, 8, k10, {{1, k1}, {8, k10}, {9, k9}}},
        NewDrawingCase{"InPlaceOfAnExposure", {k1}, {{5, k1}}, 5, k2, {{5, k2}, {6, k1}}},
        NewDrawingCase{"BeforeTheFirstEntry", {k1}, {{5, k1}}, 2, k2, {{2, k2}, {3, kNone}, {5, k1}}},
        NewDrawingCase{"InAGap", {k1}, {{1, k1}, {4, kNone}}, 7, k2, {{1, k1}, {4, kNone}, {7, k2}, {8, kNone}}},
        NewDrawingCase{"OnAnElementWithoutTiming", {}, {}, 3, k1, {{3, k1}, {4, kNone}}}),
    [](::testing::TestParamInfo<NewDrawingCase> const &info) { return std::string(info.param.name); });

TEST(NextDrawingName, IsOneMoreThanTheGreatestWholeNumberName)
{
    EXPECT_EQ(element({}, {})->nextDrawingName(), QStringLiteral("1"));
    EXPECT_EQ(element({QStringLiteral("a"), QStringLiteral("b")}, {})->nextDrawingName(), QStringLiteral("1"));
    EXPECT_EQ(element({k1, k9, QStringLiteral("ball"), QStringLiteral("007")}, {})->nextDrawingName(), k10);
    EXPECT_EQ(element({k5, QStringLiteral("-12")}, {})->nextDrawingName(), QStringLiteral("6"));
}

TEST(AddShape, AppendsToTheExposedDrawingAndLeavesTheOthersAsTheyWere)
{
    UT_SharedPtr<MO_ElementModule> e = element({k1, k9}, {{1, k1}, {9, k9}});
    OC_Drawing const *nine = e->drawings().at(k9).get();
    CO_CommandManager manager;
    ASSERT_TRUE(manager.execute(CA_DrawingCmds::addShape(*e, 3, line(2, 3, 4, 5)), QStringLiteral("Pencil Stroke")));
    ASSERT_EQ(e->oglDrawing(3)->shapes().size(), 2u);
    EXPECT_EQ(e->oglDrawing(3)->shapes()[1], line(2, 3, 4, 5));
    EXPECT_EQ(e->oglDrawing(3)->celKey(), CA_CelKey(QStringLiteral("E"), k1));
    EXPECT_EQ(e->oglDrawing(3)->bounds().max(), Math::Point2d(4, 5));
    EXPECT_EQ(e->drawings().at(k9).get(), nine);
    EXPECT_EQ(e->timing(), (Timing{{1, k1}, {9, k9}}));

    ASSERT_TRUE(manager.undo());
    EXPECT_EQ(e->oglDrawing(3)->shapes().size(), 1u);
    ASSERT_TRUE(manager.redo());
    EXPECT_EQ(e->oglDrawing(3)->shapes().size(), 2u);
}

TEST(AddShape, WhereNothingIsExposedMakesTheDrawingInTheSameStep)
{
    UT_SharedPtr<MO_ElementModule> e = element({k1}, {{1, k1}, {4, kNone}});
    CO_CommandManager manager;
    ASSERT_TRUE(manager.execute(CA_DrawingCmds::addShape(*e, 6, line(0, 0, 0, 1)), QStringLiteral("Pencil Stroke")));
    ASSERT_TRUE(e->oglDrawing(6).isDrawing());
    EXPECT_EQ(e->oglDrawing(6)->celKey().drawing(), k2);
    EXPECT_EQ(e->oglDrawing(6)->shapes(), std::vector<OC_VectorShape>{line(0, 0, 0, 1)});
    EXPECT_FALSE(e->oglDrawing(5).isDrawing());
    EXPECT_FALSE(e->oglDrawing(7).isDrawing());

    // One step takes away both the shape and the drawing.
    ASSERT_TRUE(manager.undo());
    EXPECT_FALSE(manager.canUndo());
    EXPECT_EQ(e->drawings().size(), 1u);
    EXPECT_EQ(e->timing(), (Timing{{1, k1}, {4, kNone}}));
}

TEST(ElementContentCmd, DoesNothingOnceTheElementIsGone)
{
    UT_SharedPtr<MO_ElementModule> e = element({k1}, {{1, k1}});
    std::unique_ptr<CO_Command> command = CA_DrawingCmds::newDrawing(*e, 2);
    ASSERT_TRUE(command);
    e.reset();
    EXPECT_FALSE(command->execute());
    EXPECT_FALSE(command->unexecute());
}

} // namespace

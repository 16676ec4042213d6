// The Shift and Trace panel built by its factory from the real form of the plug-in's resource
// folder, on the in-between example: the ball "Ball" (drawings "1", "5", "9", exposed at frames 1,
// 5 and 9) and the ground "Ground" (drawing "1" from frame 1).
#include "shifttrace/ShiftAndTraceSelection.h"
#include "shifttrace/ShiftAndTraceTool.h"
#include "shifttrace/ShiftAndTraceToolPanel.h"

#include "scene/TUSceneFile.h"

#include <QComboBox>
#include <QLabel>
#include <QToolButton>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <vector>

using AT_ShiftAndTraceUtil::PositionData;

namespace AT_ShiftAndTraceUtil {
// Shifts in failure messages, found by gtest through the type's namespace.
void PrintTo(PositionData const &d, std::ostream *os)
{
    *os << "{r " << d.rotation << ", pivot " << d.pivotX << " " << d.pivotY << ", scale " << d.scaleX << " "
        << d.scaleY << ", at " << d.positionX << " " << d.positionY << "}";
}
} // namespace AT_ShiftAndTraceUtil

namespace {

QString const kResources = QStringLiteral(ANIM_SOURCE_DIR "/resources");
QString const kScene = QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/inbetween.xml");

char const *const kEditors[] = {"position_x", "position_y", "pivot_x", "pivot_y", "scale_x", "rotation"};
// Off with Shift and Trace, beside the editors.
char const *const kSwitchedControls[] = {"showManipulator", "showPegs", "showOutline", "showCrossHair",
                                         "addCrossHair", "pegPosition"};
char const *const kButtons[] = {"enableShiftAndTrace", "clearAllShifts", "clearCurrentShift", "showManipulator",
                                "showPegs", "showOutline", "showCrossHair", "addCrossHair", "removeCrossHair"};


class ShiftAndTraceToolPanelTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        WID_IconManager::instance().addSearchDirectory(kResources);
        QString error;
        std::unique_ptr<TUScene> scene = TUSceneFile::readFile(kScene, &error);
        ASSERT_TRUE(scene) << error.toStdString();
        session = std::make_unique<SC_Session>(std::move(scene));
        PLUG_Services::setSessionContext(session.get());
        PLUG_Services::setSelection(session->getSelection());
        PLUG_Services::setCurrentFrameInterface(session.get());
        PLUG_Services::setEditionStackInterface(session.get());
        session->setCurrentFrame(5);
        ball = element("Ball");
        ground = element("Ground");
        AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(true);
        AT_ShiftAndTraceUtil::setShiftAndTraceShowPegs(true);
        AT_ShiftAndTraceUtil::setShiftAndTraceShowCrossHair(true);
        AT_ShiftAndTraceUtil::crossHairList().clear();

        receiver = std::make_unique<TP_ToolPropertiesReceiver>();
        ShiftAndTraceToolPanelFactory(kResources).create(receiver.get());
        panel = receiver->panelForTool(ShiftAndTraceTool::Id);
        ASSERT_TRUE(dynamic_cast<ShiftAndTraceToolPanel *>(panel));
        receiver->setCurrentTool(ShiftAndTraceTool::Id);
    }

    void TearDown() override
    {
        ShiftAndTraceSelection::instance().add(nullptr, 0, true);
        ShiftAndTraceSelection::instance().elements().clear();
        AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(false);
        AT_ShiftAndTraceUtil::crossHairList().clear();
        receiver.reset();
        PLUG_Services::setSelection(nullptr);
        PLUG_Services::setSessionContext(nullptr);
        PLUG_Services::setCurrentFrameInterface(nullptr);
        PLUG_Services::setEditionStackInterface(nullptr);
        session.reset();
    }

    MO_ElementModule *element(char const *name) const
    {
        for (auto it = session->scene()->subNodesBegin(); it != session->scene()->subNodesEnd(); ++it)
            if ((*it)->instanceName() == QLatin1String(name))
                return dynamic_cast<MO_ElementModule *>(&**it);
        ADD_FAILURE() << name;
        return nullptr;
    }

    void select(std::vector<MO_Node *> const &nodes) { session->getSelection()->set(nodes); }
    void store(MO_ElementModule *module, char const *drawing, PositionData const &data)
    {
        CO_CommandAccumScope step(session->commandManager(), QStringLiteral("Test"));
        ASSERT_TRUE(AT_ShiftAndTraceUtil::addShiftAndTrace(module)->setPositionFor(key(module, drawing), data));
    }
    static CA_CelKey key(MO_ElementModule *module, char const *drawing)
    {
        return CA_CelKey(module->elementName(), QLatin1String(drawing));
    }
    static PositionData stored(MO_ElementModule *module, char const *drawing)
    {
        auto *attr = AT_ShiftAndTraceUtil::shiftAndTraceFor(module);
        return attr ? attr->positionFor(key(module, drawing)) : PositionData();
    }
    // The drawings of the ball at frames 1 and 9, picked as through their pegs while frame 5 is shown.
    void pickBallKeyDrawings()
    {
        ShiftAndTraceSelection &selection = ShiftAndTraceSelection::instance();
        selection.add(ball, 1, true);
        selection.add(ball, 9, false);
        ASSERT_EQ(selection.elements().size(), 2u);
    }

    template <class W = QWidget>
    W *widget(char const *name) const
    {
        W *w = panel->contentWidget()->findChild<W *>(QLatin1String(name));
        EXPECT_TRUE(w) << name;
        return w;
    }
    UI_DoubleEditor *editor(char const *name) const { return widget<UI_DoubleEditor>(name); }
    bool enabled(char const *name) const { return widget(name)->isEnabled(); }
    bool checked(char const *name) const { return widget<QAbstractButton>(name)->isChecked(); }
    QString caption() const { return widget<QLabel>("selectedNames")->text(); }
    PositionData shown() const
    {
        return PositionData{editor("rotation")->value(),   editor("pivot_x")->value(), editor("pivot_y")->value(),
                            editor("scale_x")->value(),    editor("scale_x")->value(), editor("position_x")->value(),
                            editor("position_y")->value()};
    }
    void refresh() { panel->updateStatus(); }
    int steps() const { return session->commandManager()->undoCount(); }

    std::unique_ptr<SC_Session> session;
    std::unique_ptr<TP_ToolPropertiesReceiver> receiver;
    TP_ToolPropertiesPanel *panel = nullptr;
    MO_ElementModule *ball = nullptr;
    MO_ElementModule *ground = nullptr;
};

} // namespace

TEST_F(ShiftAndTraceToolPanelTest, TheFormHasEveryWidgetWithItsIconTipAndRange)
{
    for (char const *name : kButtons) {
        auto *button = widget<QToolButton>(name);
        ASSERT_TRUE(button);
        EXPECT_FALSE(button->icon().isNull()) << name;
        EXPECT_FALSE(button->toolTip().isEmpty()) << name;
        EXPECT_EQ(button->size(), QSize(32, 32)) << name;
    }
    EXPECT_EQ(widget<QComboBox>("pegPosition")->count(), 4);
    ASSERT_TRUE(widget<QLabel>("selectedNames"));
    struct Range {
        char const *name;
        double minimum, maximum;
    };
    for (Range const &r : {Range{"position_x", -1000, 1000}, Range{"position_y", -1000, 1000}, Range{"pivot_x", -1000, 1000},
                           Range{"pivot_y", -1000, 1000}, Range{"scale_x", 0.01, 100}, Range{"rotation", -360, 360}}) {
        UI_DoubleEditor *e = editor(r.name);
        ASSERT_TRUE(e);
        EXPECT_EQ(e->minimum(), r.minimum) << r.name;
        EXPECT_EQ(e->maximum(), r.maximum) << r.name;
        EXPECT_EQ(e->decimals(), 3) << r.name;
        EXPECT_EQ(e->step(), 0.01) << r.name;
        EXPECT_FALSE(e->toolTip().isEmpty()) << r.name;
    }
}

TEST_F(ShiftAndTraceToolPanelTest, SwitchedOffTheCaptionHidesAndOnlyTheEnableButtonStaysUsable)
{
    select({ball});
    AT_ShiftAndTraceUtil::crossHairList().push_back(Math::Point2d(1, 1));
    AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(false);  // the host's signal refreshes the panel
    EXPECT_TRUE(widget("selectedNames")->isHidden());
    for (char const *name : kEditors)
        EXPECT_FALSE(enabled(name)) << name;
    for (char const *name : kSwitchedControls)
        EXPECT_FALSE(enabled(name)) << name;
    for (char const *name : {"removeCrossHair", "clearAllShifts", "clearCurrentShift"})
        EXPECT_FALSE(enabled(name)) << name;
    EXPECT_TRUE(enabled("enableShiftAndTrace"));
    EXPECT_FALSE(checked("enableShiftAndTrace"));

    widget<QToolButton>("enableShiftAndTrace")->click();
    EXPECT_TRUE(AT_ShiftAndTraceUtil::shiftAndTraceEnabled());
    EXPECT_TRUE(checked("enableShiftAndTrace"));
    EXPECT_FALSE(widget("selectedNames")->isHidden());
    for (char const *name : kSwitchedControls)
        EXPECT_TRUE(enabled(name)) << name;
    EXPECT_TRUE(enabled("removeCrossHair"));
}

TEST_F(ShiftAndTraceToolPanelTest, ThePegPositionStaysUsableWithPegsHiddenAndSetsTheHost)
{
    widget<QToolButton>("showPegs")->click();
    EXPECT_FALSE(AT_ShiftAndTraceUtil::shiftAndTraceShowPegs());
    EXPECT_FALSE(checked("showPegs"));
    EXPECT_TRUE(enabled("pegPosition"));

    auto *combo = widget<QComboBox>("pegPosition");
    combo->setCurrentIndex(2);
    emit combo->activated(2);
    EXPECT_EQ(AT_ShiftAndTraceUtil::shiftAndTracePegPosition(), AT_ShiftAndTraceUtil::PegsLeft);
    AT_ShiftAndTraceUtil::setShiftAndTracePegPosition(AT_ShiftAndTraceUtil::PegsRight);
    refresh();
    EXPECT_EQ(combo->currentIndex(), 3);
}

TEST_F(ShiftAndTraceToolPanelTest, RemoveCrossHairsIsEnabledByAListThatIsNotEmpty)
{
    refresh();
    EXPECT_FALSE(enabled("removeCrossHair"));
    widget<QToolButton>("addCrossHair")->click();
    EXPECT_TRUE(ShiftAndTraceTool::responder()->isAddCrossHairMode());
    EXPECT_TRUE(checked("showCrossHair"));  // adding shows them

    AT_ShiftAndTraceUtil::crossHairList().push_back(Math::Point2d(1, 2));
    AT_ShiftAndTraceUtil::crossHairList().push_back(Math::Point2d(3, 4));
    refresh();
    ASSERT_TRUE(enabled("removeCrossHair"));
    widget<QToolButton>("removeCrossHair")->click();
    EXPECT_TRUE(AT_ShiftAndTraceUtil::crossHairList().empty());
    EXPECT_FALSE(enabled("removeCrossHair"));

    widget<QToolButton>("addCrossHair")->click();
    EXPECT_FALSE(ShiftAndTraceTool::responder()->isAddCrossHairMode());
    widget<QToolButton>("showCrossHair")->click();
    EXPECT_FALSE(AT_ShiftAndTraceUtil::shiftAndTraceShowCrossHair());
}

TEST_F(ShiftAndTraceToolPanelTest, TheDisplaySwitchesFollowTheResponder)
{
    ShiftAndTraceToolResponder *responder = ShiftAndTraceTool::responder();
    bool const outline = responder->isShowOutline();
    bool const manipulator = responder->isShowManipulator();
    refresh();
    EXPECT_EQ(checked("showOutline"), outline);
    widget<QToolButton>("showOutline")->click();
    EXPECT_EQ(responder->isShowOutline(), !outline);
    widget<QToolButton>("showManipulator")->click();
    EXPECT_EQ(responder->isShowManipulator(), !manipulator);
    // Put back for the other cases: the responder lives as long as the process.
    responder->onActionToggleShowOutline();
    responder->onActionToggleShowManipulator();
    EXPECT_EQ(checked("showOutline"), outline);
    EXPECT_EQ(checked("showManipulator"), manipulator);
}

TEST_F(ShiftAndTraceToolPanelTest, TheCaptionNamesTheSelectedDrawingAndTheEditorsShowItsShift)
{
    refresh();
    EXPECT_EQ(caption(), QStringLiteral("No Shifted Drawing Selected"));
    EXPECT_EQ(shown(), PositionData());
    for (char const *name : {"clearAllShifts", "clearCurrentShift"})
        EXPECT_FALSE(enabled(name)) << name;

    // A non-uniform scale shows its x factor.
    store(ball, "5", PositionData{30, 1, 2, 1.5, 0.5, -3, 4});
    select({ball});
    EXPECT_EQ(caption(), QStringLiteral("Ball:5"));
    EXPECT_EQ(shown(), (PositionData{30, 1, 2, 1.5, 1.5, -3, 4}));

    store(ball, "1", PositionData{-10, 0, 0, 2, 2, 5, 6});
    ASSERT_NO_FATAL_FAILURE(pickBallKeyDrawings());
    refresh();
    EXPECT_EQ(caption(), QStringLiteral("Multiple Selection"));
    EXPECT_EQ(shown(), (PositionData{-10, 0, 0, 2, 2, 5, 6}));  // drawing "1", first in the selection
}

TEST_F(ShiftAndTraceToolPanelTest, TheClearButtonsAreEnabledByAnySelectedElementShiftedOrNot)
{
    select({ground});
    ASSERT_EQ(AT_ShiftAndTraceUtil::shiftAndTraceFor(ground), nullptr);
    EXPECT_TRUE(ShiftAndTraceToolPanel::hasShiftAndTraceDrawingsSelected());
    EXPECT_TRUE(enabled("clearAllShifts"));
    EXPECT_TRUE(enabled("clearCurrentShift"));
    int const before = steps();
    widget<QToolButton>("clearAllShifts")->click();
    widget<QToolButton>("clearCurrentShift")->click();
    EXPECT_EQ(steps(), before);
    EXPECT_EQ(AT_ShiftAndTraceUtil::shiftAndTraceFor(ground), nullptr);
}

TEST_F(ShiftAndTraceToolPanelTest, ATypedValueRewritesTheWholeShiftOfEverySelectedDrawing)
{
    store(ball, "1", PositionData{-10, 1, 1, 2, 2, 5, 6});
    store(ball, "9", PositionData{45, 7, 8, 0.5, 3, -9, -9});
    ASSERT_NO_FATAL_FAILURE(pickBallKeyDrawings());
    refresh();
    int const before = steps();

    editor("position_x")->setValue(-2.5);
    PositionData const typed = PositionData{-10, 1, 1, 2, 2, -2.5, 6};
    EXPECT_EQ(stored(ball, "1"), typed);
    EXPECT_EQ(stored(ball, "9"), typed);  // all seven values, not only the one edited
    EXPECT_EQ(steps(), before + 1);
    EXPECT_EQ(session->commandManager()->undoName(), QStringLiteral("Shift and Trace"));

    editor("scale_x")->setValue(3);
    EXPECT_EQ(stored(ball, "9").scaleY, 3.0);  // a typed scale is uniform
    EXPECT_EQ(stored(ball, "5"), PositionData());  // the drawing shown now is not selected
}

TEST_F(ShiftAndTraceToolPanelTest, WithoutPickedDrawingsATypedValueWritesTheCurrentDrawingsOfTheSelectedElements)
{
    select({ball, ground});
    ShiftAndTraceSelection::instance().elements().clear();
    ASSERT_EQ(AT_ShiftAndTraceUtil::shiftAndTraceFor(ground), nullptr);
    editor("rotation")->setValue(90);
    EXPECT_EQ(stored(ball, "5"), (PositionData{90, 0, 0, 1, 1, 0, 0}));
    EXPECT_EQ(stored(ground, "1"), (PositionData{90, 0, 0, 1, 1, 0, 0}));  // the attribute is made
    EXPECT_EQ(stored(ball, "1"), PositionData());
}

TEST_F(ShiftAndTraceToolPanelTest, ARefreshNeverWritesAShift)
{
    store(ball, "5", PositionData{30, 1, 2, 1.5, 0.5, -3, 4});
    int const before = steps();
    // The editors go from the defaults to the shift and back, by selection and by frame.
    select({ball});
    ASSERT_EQ(shown().rotation, 30.0);
    select({ball, ground});
    refresh();
    session->setCurrentFrame(9);
    refresh();
    session->setCurrentFrame(5);
    AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(false);
    AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(true);
    ShiftAndTraceTool::responder()->emitOnShiftChange();
    EXPECT_EQ(steps(), before);
    EXPECT_EQ(stored(ball, "5"), (PositionData{30, 1, 2, 1.5, 0.5, -3, 4}));  // the y scale the editors cannot show
    EXPECT_EQ(AT_ShiftAndTraceUtil::shiftAndTraceFor(ground), nullptr);
}

TEST_F(ShiftAndTraceToolPanelTest, ClearCurrentForgetsTheSelectedDrawingsAndClearAllRemovesTheAttribute)
{
    store(ball, "1", PositionData{10, 0, 0, 1, 1, 1, 1});
    store(ball, "5", PositionData{20, 0, 0, 1, 1, 2, 2});
    store(ball, "9", PositionData{30, 0, 0, 1, 1, 3, 3});
    ASSERT_NO_FATAL_FAILURE(pickBallKeyDrawings());
    refresh();

    widget<QToolButton>("clearCurrentShift")->click();
    EXPECT_EQ(session->commandManager()->undoName(), QStringLiteral("Clear Shift and Trace Positions"));
    auto *attr = AT_ShiftAndTraceUtil::shiftAndTraceFor(ball);
    ASSERT_TRUE(attr);
    EXPECT_FALSE(attr->hasPositionFor(key(ball, "1")));
    EXPECT_FALSE(attr->hasPositionFor(key(ball, "9")));
    EXPECT_EQ(stored(ball, "5"), (PositionData{20, 0, 0, 1, 1, 2, 2}));

    // The picked drawings are still the current ones, though they have no shift left.
    int const before = steps();
    widget<QToolButton>("clearCurrentShift")->click();
    EXPECT_EQ(steps(), before);
    EXPECT_TRUE(attr->hasPositionFor(key(ball, "5")));
    // Without picked drawings, the current one is the drawing the ball shows at the frame.
    ShiftAndTraceSelection::instance().elements().clear();
    widget<QToolButton>("clearCurrentShift")->click();
    EXPECT_FALSE(attr->hasPositionFor(key(ball, "5")));
    ASSERT_TRUE(session->commandManager()->undo());
    EXPECT_TRUE(attr->hasPositionFor(key(ball, "5")));

    widget<QToolButton>("clearAllShifts")->click();
    EXPECT_EQ(session->commandManager()->undoName(), QStringLiteral("Clear all Shift and Trace Positions"));
    EXPECT_EQ(AT_ShiftAndTraceUtil::shiftAndTraceFor(ball), nullptr);
    ASSERT_TRUE(session->commandManager()->undo());
    EXPECT_EQ(stored(ball, "5"), (PositionData{20, 0, 0, 1, 1, 2, 2}));
}

TEST_F(ShiftAndTraceToolPanelTest, SwitchingShiftAndTraceMarksEveryShiftedElementChanged)
{
    store(ball, "1", PositionData{10, 0, 0, 1, 1, 1, 1});
    unsigned long const ballBefore = ball->dirtyCount();
    unsigned long const groundBefore = ground->dirtyCount();
    AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(false);
    EXPECT_EQ(ball->dirtyCount(), ballBefore + 1);
    EXPECT_EQ(ground->dirtyCount(), groundBefore);  // no shift to draw anew
}

TEST_F(ShiftAndTraceToolPanelTest, AfterThePolishTheHostMakesThePanelAndTheResetActionsClearAsItsButtonsDo)
{
    PLUG_Services::setPluginPath(QStringLiteral("AnimationTool"), QStringLiteral(ANIM_SOURCE_DIR));
    ShiftAndTraceTool::onPolish();
    ASSERT_EQ(TP_ToolPropertiesPanelFactory::panelFactoryCount(), 1);
    TP_ToolPropertiesReceiver dock;  // a dock made after the polish gets the panel too
    EXPECT_TRUE(dynamic_cast<ShiftAndTraceToolPanel *>(dock.panelForTool(ShiftAndTraceTool::Id)));

    store(ball, "1", PositionData{10, 0, 0, 1, 1, 1, 1});
    store(ball, "5", PositionData{20, 0, 0, 1, 1, 2, 2});
    select({ball});
    ShiftAndTraceTool::responder()->onActionResetCurrentShiftPosition();
    EXPECT_EQ(session->commandManager()->undoName(), QStringLiteral("Clear Shift and Trace Positions"));
    EXPECT_EQ(stored(ball, "5"), PositionData());
    EXPECT_EQ(stored(ball, "1"), (PositionData{10, 0, 0, 1, 1, 1, 1}));
    ShiftAndTraceTool::responder()->onActionResetAllShiftPositions();
    EXPECT_EQ(session->commandManager()->undoName(), QStringLiteral("Clear all Shift and Trace Positions"));
    EXPECT_EQ(AT_ShiftAndTraceUtil::shiftAndTraceFor(ball), nullptr);
    ShiftAndTraceTool::onUnpolish();
    TP_ToolPropertiesPanelFactory::clearPanelFactories();
    PLUG_Services::setPluginPath(QStringLiteral("AnimationTool"), QString());
}

TEST_F(ShiftAndTraceToolPanelTest, WithoutItsFormThePanelStaysEmptyAndEveryEntryPointIsHarmless)
{
    TP_ToolPropertiesReceiver dock;
    ShiftAndTraceToolPanelFactory(QStringLiteral("/nonexistent")).create(&dock);
    auto *empty = dynamic_cast<ShiftAndTraceToolPanel *>(dock.panelForTool(ShiftAndTraceTool::Id));
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->contentWidget(), nullptr);
    select({ball});
    AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(false);  // refreshes every panel
    for (auto slot : {&ShiftAndTraceToolPanel::onSelectionChanged, &ShiftAndTraceToolPanel::valueChanged,
                      &ShiftAndTraceToolPanel::onShowPegsChanged, &ShiftAndTraceToolPanel::onShowCrossHairChanged})
        (empty->*slot)();
    EXPECT_EQ(AT_ShiftAndTraceUtil::shiftAndTraceFor(ball), nullptr);
}

// The Shift and Trace selection: picked drawings, the toggle, and how validate keeps the set in step
// with the node selection and the frame.
#include "ShiftAndTraceTestScene.h"

#include "shifttrace/ShiftAndTraceToolUtils.h"

namespace {

using Selection = ShiftAndTraceScene;

TEST_F(Selection, AddWithoutModuleClearsOnlyWhenAsked)
{
    selection().add(hand, 1, true);
    selection().add(nullptr, 1, false);
    EXPECT_EQ(selection().elements().size(), 1u);
    EXPECT_TRUE(hand->selected());

    selection().add(nullptr, 1, true);
    EXPECT_TRUE(selection().elements().empty());
    EXPECT_TRUE(nodeSelection()->nodes().empty());
}

TEST_F(Selection, AddingAPickedDrawingAgainTogglesItAndTheLastDrawingTakesTheNodeAlong)
{
    selection().add(hand, 1, false);
    selection().add(hand, 5, false);  // the second drawing of the same module
    ASSERT_EQ(selection().elements().size(), 2u);
    EXPECT_TRUE(selection().isSelected(hand, key("Hand", "1")));
    EXPECT_TRUE(selection().isSelected(hand, key("Hand", "2")));

    selection().add(hand, 1, false);  // toggles drawing 1 out; drawing 2 keeps the node selected
    EXPECT_FALSE(selection().isSelected(hand, key("Hand", "1")));
    EXPECT_TRUE(hand->selected());

    selection().add(hand, 5, false);  // the last one: the node leaves too
    EXPECT_TRUE(selection().elements().empty());
    EXPECT_FALSE(hand->selected());
}

TEST_F(Selection, AddWithClearReplacesEverythingAndDoesNotToggle)
{
    selection().add(arm, 1, false);
    selection().add(hand, 1, false);
    selection().add(hand, 1, true);
    ASSERT_EQ(selection().elements().size(), 1u);
    auto const *element = selection().find(hand, key("Hand", "1"));
    ASSERT_NE(element, nullptr);
    EXPECT_FALSE(element->fromNodeSelection);
    EXPECT_EQ(element->frame, 1);
    EXPECT_FALSE(arm->selected());
    EXPECT_TRUE(hand->selected());
}

// Selecting the node can run code that fills the set (a listener validating it): the set is emptied
// again after the node is selected, so only the picked drawing remains.
TEST_F(Selection, AddWithClearEmptiesTheSetAgainAfterTheNodeIsSelected)
{
    struct Refill : TUListener {
        void callBack(TUTeller *) override
        {
            ShiftAndTraceSelection::instance().elements().insert(
                ShiftAndTraceSelection::SelectionElement(other, key("Arm", "a"), 1, true));
        }
        MO_ElementModule *other = nullptr;
    } refill;
    refill.other = arm;
    refill.phone(nodeSelection());
    selection().add(hand, 1, true);
    refill.hangUp(nodeSelection());

    ASSERT_EQ(selection().elements().size(), 1u);
    EXPECT_TRUE(selection().isSelected(hand, key("Hand", "1")));
}

TEST_F(Selection, AModuleWithoutADrawingAtTheFrameIsSelectedAsANodeOnly)
{
    selection().add(hand, 9, true);
    EXPECT_TRUE(selection().elements().empty());
    EXPECT_TRUE(hand->selected());
}

TEST_F(Selection, ValidateAtANewFrameRebuildsFromTheNodeSelection)
{
    selection().add(hand, 1, false);
    selection().add(arm, 1, false);
    selection().validate(5);
    ASSERT_EQ(selection().elements().size(), 2u);
    for (auto const &element : selection().elements()) {
        EXPECT_TRUE(element.fromNodeSelection);
        EXPECT_EQ(element.frame, 5);
    }
    EXPECT_TRUE(selection().isSelected(hand, key("Hand", "2")));  // the drawing of frame 5
    EXPECT_FALSE(selection().isSelected(hand, key("Hand", "1")));
    EXPECT_EQ(selection().currentSelectionFrame(), 5);
}

TEST_F(Selection, ValidateTwiceAtTheSameFrameChangesNothing)
{
    SL_SelectionUtil::addToSelection(nodeSelection(), hand);
    selection().validate(1);
    auto const before = selection().elements().size();
    auto const *element = selection().find(hand, key("Hand", "1"));
    ASSERT_NE(element, nullptr);
    selection().validate(1);
    EXPECT_EQ(selection().elements().size(), before);
    EXPECT_EQ(selection().find(hand, key("Hand", "1")), element);
}

// A drawing picked through a peg of another frame survives validate at the current frame; one made
// from the node selection at another frame does not.
TEST_F(Selection, APickedDrawingOfAnotherFrameSurvivesValidate)
{
    selection().validate(5);
    selection().add(hand, 1, true);  // picked through the peg of frame 1's onion drawing
    selection().validate(5);
    ASSERT_EQ(selection().elements().size(), 1u);
    EXPECT_TRUE(selection().isSelected(hand, key("Hand", "1")));

    selection().elements().insert(ShiftAndTraceSelection::SelectionElement(arm, key("Arm", "a"), 1, true));
    SL_SelectionUtil::addToSelection(nodeSelection(), arm);
    selection().validate(5);
    EXPECT_FALSE(selection().isSelected(arm, key("Arm", "a")));
    EXPECT_TRUE(selection().isSelected(hand, key("Hand", "1")));
}

TEST_F(Selection, ANodeSelectedWhileADrawingRemainsStaysOutOfTheSet)
{
    selection().validate(1);
    selection().add(hand, 1, true);
    SL_SelectionUtil::addToSelection(nodeSelection(), arm);
    selection().validate(1);
    EXPECT_EQ(selection().elements().size(), 1u);
    EXPECT_FALSE(selection().isSelected(arm, key("Arm", "a")));
}

TEST_F(Selection, ElementsLeaveWithTheirNodeOrModule)
{
    selection().validate(1);
    selection().add(hand, 1, false);
    selection().add(arm, 1, false);
    SL_SelectionUtil::removeFromSelection(nodeSelection(), arm);
    selection().validate(1);
    EXPECT_FALSE(selection().isSelected(arm, key("Arm", "a")));
    EXPECT_TRUE(selection().isSelected(hand, key("Hand", "1")));

    session->scene()->getRootGroup()->removeNode(hand);  // the module dies
    selection().validate(1);
    EXPECT_TRUE(selection().elements().empty());
}

TEST_F(Selection, IsPublishedToTheHost)
{
    selection().add(hand, 1, true);
    auto *published = AT_ShiftAndTraceUtil::ShiftAndTraceAbstractSelection::instance();
    ASSERT_EQ(published, &selection());
    EXPECT_TRUE(published->isSelected(hand, key("Hand", "1")));
    EXPECT_FALSE(published->isSelected(nullptr, key("Hand", "1")));
}

TEST_F(Selection, NodeSelectionHelpersKeepElementModulesOnly)
{
    auto peg = UT_MakeShared<MO_PegModule>();
    MO_Node *pegNode = session->scene()->getRootGroup()->addNode(peg);
    SL_SelectionUtil::addToSelection(nodeSelection(), pegNode);
    ShiftAndTraceToolUtils::selectElement(arm);
    ShiftAndTraceToolUtils::selectElement(nullptr);
    std::vector<MO_ElementModule *> modules{hand};
    ShiftAndTraceToolUtils::selectedElementModules(modules);
    EXPECT_EQ(modules, std::vector<MO_ElementModule *>{arm});
    ShiftAndTraceToolUtils::selectedShiftedElementModules(modules);
    EXPECT_TRUE(modules.empty());
    AT_ShiftAndTraceUtil::addShiftAndTrace(arm);
    ShiftAndTraceToolUtils::selectedShiftedElementModules(modules);
    EXPECT_EQ(modules, std::vector<MO_ElementModule *>{arm});
    EXPECT_FALSE(ShiftAndTraceToolUtils::elementIsSelected(nullptr));
    ShiftAndTraceToolUtils::deselectElement(arm);
    EXPECT_FALSE(ShiftAndTraceToolUtils::elementIsSelected(arm));
}

} // namespace

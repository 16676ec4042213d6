#include "session/SL_Selection.h"

#include "command/CO_CommandManager.h"
#include "scene/MO_Node.h"

#include <gtest/gtest.h>

namespace {

using Nodes = std::vector<MO_Node *>;

UT_SharedPtr<MO_Node> makeNode(char const *name)
{
    auto node = UT_MakeShared<MO_Node>(QStringLiteral("PEG"), 1, 1);
    node->setInstanceName(name);
    return node;
}

class CountingListener : public TUListener {
public:
    void callBack(TUTeller *) override { ++calls; }
    int calls = 0;
};

TEST(Selection, KeepsTheOrderOfAddingAndTheSelectedFlags)
{
    auto a = makeNode("a"), b = makeNode("b"), c = makeNode("c");
    SL_Selection selection;
    CountingListener listener;
    listener.phone(&selection);

    SL_SelectionUtil::addToSelection(&selection, b.get());
    SL_SelectionUtil::addToSelection(&selection, a.get());
    SL_SelectionUtil::addToSelection(&selection, b.get());  // already there
    SL_SelectionUtil::addToSelection(&selection, nullptr);
    EXPECT_EQ(SL_SelectionUtil::getNodes(&selection), (Nodes{b.get(), a.get()}));
    EXPECT_EQ(listener.calls, 2);
    EXPECT_TRUE(a->selected() && b->selected());
    EXPECT_FALSE(c->selected());
    EXPECT_EQ(SL_SelectionUtil::getFirstNode(&selection), b.get());
    EXPECT_EQ(SL_SelectionUtil::getSingleNode(&selection), nullptr);

    SL_SelectionUtil::removeFromSelection(&selection, b.get());
    SL_SelectionUtil::removeFromSelection(&selection, c.get());  // not there
    EXPECT_FALSE(b->selected());
    EXPECT_EQ(SL_SelectionUtil::getSingleNode(&selection), a.get());
    EXPECT_EQ(listener.calls, 3);

    SL_SelectionUtil::clear(&selection);
    SL_SelectionUtil::clear(&selection);
    EXPECT_EQ(listener.calls, 4);
    EXPECT_FALSE(a->selected());
    EXPECT_EQ(SL_SelectionUtil::getFirstNode(&selection), nullptr);
}

TEST(Selection, ANodeThatIsGoneDropsOutAndANullSelectionIsHarmless)
{
    auto a = makeNode("a"), b = makeNode("b");
    SL_Selection selection;
    selection.add(a.get());
    selection.add(b.get());
    a.reset();
    EXPECT_EQ(selection.nodes(), (Nodes{b.get()}));
    EXPECT_EQ(SL_SelectionUtil::getSingleNode(&selection), b.get());

    EXPECT_TRUE(SL_SelectionUtil::getNodes(nullptr).empty());
    EXPECT_EQ(SL_SelectionUtil::getSingleNode(nullptr), nullptr);
    EXPECT_EQ(SL_SelectionUtil::getFirstNode(nullptr), nullptr);
    SL_SelectionUtil::addToSelection(nullptr, b.get());
    SL_SelectionUtil::removeFromSelection(nullptr, b.get());
    SL_SelectionUtil::clear(nullptr);
    EXPECT_TRUE(b->selected());
}

TEST(SelectionCommands, AScopeMakesItsChangesOneUndoableStepThatModifiesNoScene)
{
    auto a = makeNode("a"), b = makeNode("b"), c = makeNode("c");
    CO_CommandManager manager;
    SL_Selection selection;
    selection.add(a.get());

    {
        CO_CommandAccumScope step(&manager, QStringLiteral("Selection"));
        SL_SelectionCommands::Scope scope(&manager, &selection);
        SL_SelectionUtil::clear(&selection);
        SL_SelectionUtil::addToSelection(&selection, c.get());
        SL_SelectionUtil::addToSelection(&selection, b.get());
    }
    EXPECT_EQ(manager.undoCount(), 1);
    EXPECT_EQ(manager.undoName(), "Selection");
    EXPECT_FALSE(manager.isModified());

    ASSERT_TRUE(manager.undo());
    EXPECT_EQ(selection.nodes(), (Nodes{a.get()}));
    EXPECT_TRUE(a->selected());
    EXPECT_FALSE(c->selected());
    ASSERT_TRUE(manager.redo());
    EXPECT_EQ(selection.nodes(), (Nodes{c.get(), b.get()}));

    // A scope that ends where it began, and inert scopes, record nothing.
    {
        SL_SelectionCommands::Scope scope(&manager, &selection);
        selection.add(a.get());
        selection.remove(a.get());
    }
    {
        SL_SelectionCommands::Scope noManager(nullptr, &selection);
        SL_SelectionCommands::Scope noSelection(&manager, nullptr);
        selection.add(a.get());
    }
    EXPECT_EQ(manager.undoCount(), 1);
    EXPECT_EQ(selection.nodes(), (Nodes{c.get(), b.get(), a.get()}));
}

TEST(SelectionCommands, UndoSkipsNodesThatAreGone)
{
    auto a = makeNode("a"), b = makeNode("b");
    CO_CommandManager manager;
    SL_Selection selection;
    selection.add(a.get());
    selection.add(b.get());
    {
        SL_SelectionCommands::Scope scope(&manager, &selection);
        selection.clear();
    }
    a.reset();
    ASSERT_TRUE(manager.undo());
    EXPECT_EQ(selection.nodes(), (Nodes{b.get()}));
}

} // namespace

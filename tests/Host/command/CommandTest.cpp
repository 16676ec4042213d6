#include "command/CO_Command.h"
#include "command/CO_CommandManager.h"
#include "command/SC_InteractiveDragManager.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Adds `delta` to a shared value and logs "+id" / "-id", so tests see the order of execution.
class AddCmd : public CO_Command {
public:
    AddCmd(int &value, int delta, std::vector<int> *log = nullptr, int id = 0)
        : value_(value), delta_(delta), log_(log), id_(id)
    {
    }
    bool execute() override
    {
        if (delta_ == 0)
            return false;  // nothing to do
        value_ += delta_;
        if (log_)
            log_->push_back(id_);
        return true;
    }
    bool unexecute() override
    {
        value_ -= delta_;
        if (log_)
            log_->push_back(-id_);
        return true;
    }

    bool temporary = false;
    bool undoable = true;
    bool modifies = true;
    bool isUnexecuteOnExit() const override { return temporary; }
    bool isUnexecutable() const override { return undoable; }
    bool modifyScene() const override { return modifies; }

private:
    int &value_;
    int delta_;
    std::vector<int> *log_;
    int id_;
};

std::unique_ptr<AddCmd> add(int &value, int delta, std::vector<int> *log = nullptr, int id = 0)
{
    return std::make_unique<AddCmd>(value, delta, log, id);
}

class CountingListener : public TUListener {
public:
    void callBack(TUTeller *) override { ++calls; }
    int calls = 0;
};

TEST(CommandManager, EachCommandOutsideAScopeIsANamedStep)
{
    CO_CommandManager manager;
    int value = 0;
    EXPECT_TRUE(manager.execute(add(value, 2), "First"));
    EXPECT_TRUE(manager.execute(add(value, 3), "Second"));
    EXPECT_EQ(value, 5);
    EXPECT_EQ(manager.undoNames(), (QStringList{"First", "Second"}));
    EXPECT_EQ(manager.undoName(), "Second");

    EXPECT_TRUE(manager.undo());
    EXPECT_EQ(value, 2);
    EXPECT_EQ(manager.redoName(), "Second");
    EXPECT_TRUE(manager.undo());
    EXPECT_EQ(value, 0);
    EXPECT_FALSE(manager.undo());
    EXPECT_EQ(manager.redoNames(), (QStringList{"First", "Second"}));

    EXPECT_TRUE(manager.redo());
    EXPECT_EQ(value, 2);
    // A new step drops what could be redone.
    EXPECT_TRUE(manager.execute(add(value, 10), "Third"));
    EXPECT_FALSE(manager.canRedo());
    EXPECT_EQ(manager.undoNames(), (QStringList{"First", "Third"}));
    EXPECT_EQ(value, 12);
}

TEST(CommandManager, RefusesNullAndCommandsThatDoNothing)
{
    CO_CommandManager manager;
    int value = 0;
    EXPECT_FALSE(manager.execute(nullptr, "Null"));
    EXPECT_FALSE(manager.execute(add(value, 0), "Nothing"));
    EXPECT_EQ(manager.undoCount(), 0);
    EXPECT_FALSE(manager.canUndo());
}

TEST(CommandManager, NestedScopesMakeOneStepNamedByTheOutermost)
{
    CO_CommandManager manager;
    int value = 0;
    std::vector<int> log;
    {
        CO_CommandAccumScope outer(&manager, "Outer", nullptr, 0);
        manager.execute(add(value, 1, &log, 1), "ignored");
        {
            CO_CommandAccumScope inner(&manager, "Inner", nullptr, 0);
            manager.execute(add(value, 2, &log, 2));
            EXPECT_FALSE(manager.undo());  // refused while gathering
            EXPECT_EQ(manager.accumulationDepth(), 2);
        }
        EXPECT_EQ(manager.undoCount(), 0);  // still open
        manager.execute(add(value, 4, &log, 3));
    }
    EXPECT_EQ(manager.undoNames(), (QStringList{"Outer"}));
    EXPECT_EQ(value, 7);
    EXPECT_TRUE(manager.undo());
    EXPECT_EQ(value, 0);
    EXPECT_EQ(log, (std::vector<int>{1, 2, 3, -3, -2, -1}));
    EXPECT_TRUE(manager.redo());
    EXPECT_EQ(value, 7);
}

TEST(CommandManager, EmptyScopeLeavesNoStepAndTellsNobody)
{
    CO_CommandManager manager;
    CountingListener listener;
    listener.phone(&manager);
    int value = 0;
    {
        CO_CommandAccumScope scope(&manager, "Empty", nullptr, 0);
        manager.execute(add(value, 0));  // does nothing
    }
    EXPECT_EQ(manager.undoCount(), 0);
    EXPECT_EQ(listener.calls, 0);
    {
        CO_CommandAccumScope inert(nullptr, "No manager", nullptr, 0);
    }
    manager.execute(add(value, 1), "One");
    manager.undo();
    manager.redo();
    EXPECT_EQ(listener.calls, 3);
}

TEST(CommandManager, ScopeWithAMacroGathersIntoIt)
{
    CO_CommandManager manager;
    int value = 0;
    CO_MacroCommand macro;
    {
        CO_CommandAccumScope scope(&manager, "Macro", &macro, 0);
        manager.execute(add(value, 1));
        manager.execute(add(value, 2));
    }
    EXPECT_EQ(manager.undoCount(), 0);
    EXPECT_EQ(macro.count(), 2);
    EXPECT_EQ(value, 3);
    EXPECT_TRUE(macro.unexecute());
    EXPECT_EQ(value, 0);
    EXPECT_EQ(macro.at(2), nullptr);
}

TEST(CommandManager, TemporaryCommandsAreRevertedWhenTheStepCloses)
{
    CO_CommandManager manager;
    int value = 0;
    {
        CO_CommandAccumScope scope(&manager, "Preview", nullptr, 0);
        auto preview = add(value, 100);
        preview->temporary = true;
        manager.execute(std::move(preview));
        EXPECT_EQ(value, 100);
        manager.execute(add(value, 1));
    }
    EXPECT_EQ(value, 1);
    ASSERT_TRUE(manager.undo());
    EXPECT_EQ(value, 0);
}

TEST(CommandManager, ACommandThatCannotBeUndoneClearsTheHistory)
{
    CO_CommandManager manager;
    int value = 0;
    manager.execute(add(value, 1), "One");
    auto final = add(value, 5);
    final->undoable = false;
    EXPECT_TRUE(manager.execute(std::move(final), "Final"));
    EXPECT_EQ(value, 6);
    EXPECT_FALSE(manager.canUndo());
}

TEST(CommandManager, ModifiedFollowsTheCleanPointThroughUndoAndRedo)
{
    CO_CommandManager manager;
    int value = 0;
    EXPECT_FALSE(manager.isModified());
    manager.execute(add(value, 1), "One");
    EXPECT_TRUE(manager.isModified());
    manager.setClean();
    EXPECT_FALSE(manager.isModified());
    auto view = add(value, 2);
    view->modifies = false;  // like a selection change
    manager.execute(std::move(view), "View");
    EXPECT_FALSE(manager.isModified());
    manager.undo();
    manager.undo();
    EXPECT_TRUE(manager.isModified());
    manager.redo();
    EXPECT_FALSE(manager.isModified());
    // Recording past an undone clean point makes it unreachable.
    manager.undo();
    manager.execute(add(value, 3), "Other");
    EXPECT_TRUE(manager.isModified());
}

// Logs the manager's calls of the life-cycle hooks.
class HookCmd : public CO_Command {
public:
    explicit HookCmd(QStringList &log) : log_(log) {}
    bool execute() override { return log_ << "execute", true; }
    bool unexecute() override { return log_ << "unexecute", true; }
    void store() override { log_ << "store"; }
    void restore() override { log_ << "restore"; }
    void compact() override { log_ << "compact"; }
    void reexecuteOnExit() override { log_ << "reexecuteOnExit"; }

private:
    QStringList &log_;
};

TEST(CommandManager, CallsTheHooksAtRecordCloseAndRedo)
{
    CO_CommandManager manager;
    QStringList log;
    {
        CO_CommandAccumScope scope(&manager, "Hooks", nullptr, 0);
        manager.execute(std::make_unique<HookCmd>(log));
        EXPECT_EQ(log, (QStringList{"execute", "store"}));
    }
    EXPECT_EQ(log, (QStringList{"execute", "store", "reexecuteOnExit", "compact"}));
    log.clear();
    manager.undo();
    manager.redo();
    EXPECT_EQ(log, (QStringList{"unexecute", "restore", "execute"}));
    EXPECT_TRUE(manager.clear());
    EXPECT_FALSE(manager.canUndo());
    EXPECT_FALSE(manager.canRedo());
    EXPECT_TRUE(manager.isModified());  // the clean state is gone with the history
}

TEST(InteractiveDragManager, PressMovesAndReleaseMakeOneNamedStep)
{
    CO_CommandManager manager;
    SC_InteractiveDragManager drag(&manager);
    int value = 0;
    {
        SC_InteractiveDragManager::Scope press(&drag, SC_InteractiveDragManager::PRESS_ACCUM, "IK Tool");
        manager.execute(add(value, 1));
    }
    EXPECT_TRUE(drag.isDragging());
    EXPECT_EQ(manager.undoCount(), 0);
    for (int i = 0; i < 3; ++i) {
        SC_InteractiveDragManager::Scope move(&drag, SC_InteractiveDragManager::MOVE);
        manager.execute(add(value, 10));
    }
    {
        SC_InteractiveDragManager::Scope release(&drag, SC_InteractiveDragManager::RELEASE);
        CO_CommandAccumScope named(&manager, "IK Manipulation", nullptr, 0);
        manager.execute(add(value, 100));
    }
    EXPECT_FALSE(drag.isDragging());
    EXPECT_EQ(manager.undoNames(), (QStringList{"IK Tool"}));
    EXPECT_EQ(value, 131);
    EXPECT_TRUE(manager.undo());
    EXPECT_EQ(value, 0);

    // A release with no drag open is harmless and leaves nothing.
    {
        SC_InteractiveDragManager::Scope release(&drag, SC_InteractiveDragManager::RELEASE);
    }
    EXPECT_EQ(manager.undoCount(), 0);
}

TEST(InteractiveDragManager, EmptyDragLeavesNoStepAndAMoveAloneIsItsOwnStep)
{
    CO_CommandManager manager;
    SC_InteractiveDragManager drag(&manager);
    int value = 0;
    {
        SC_InteractiveDragManager::Scope press(&drag, SC_InteractiveDragManager::PRESS_ACCUM, "Nothing");
    }
    {
        SC_InteractiveDragManager::Scope release(&drag, SC_InteractiveDragManager::RELEASE);
    }
    EXPECT_EQ(manager.undoCount(), 0);
    {
        SC_InteractiveDragManager::Scope move(&drag, SC_InteractiveDragManager::MOVE);
        manager.execute(add(value, 1));
    }
    EXPECT_EQ(manager.undoCount(), 1);
    {
        SC_InteractiveDragManager::Scope inert(nullptr, SC_InteractiveDragManager::PRESS_ACCUM, "x");
    }
    EXPECT_EQ(manager.accumulationDepth(), 0);
}

TEST(InteractiveDragManager, ASecondPressClosesTheFirstDrag)
{
    CO_CommandManager manager;
    SC_InteractiveDragManager drag(&manager);
    int value = 0;
    {
        SC_InteractiveDragManager::Scope press(&drag, SC_InteractiveDragManager::PRESS_ACCUM, "First");
        manager.execute(add(value, 1));
    }
    {
        SC_InteractiveDragManager::Scope press(&drag, SC_InteractiveDragManager::PRESS_ACCUM, "Second");
        manager.execute(add(value, 2));
    }
    {
        SC_InteractiveDragManager::Scope release(&drag, SC_InteractiveDragManager::RELEASE);
    }
    EXPECT_EQ(manager.undoNames(), (QStringList{"First", "Second"}));
}

}  // namespace

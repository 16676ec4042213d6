// Undoable commands.
//
// Every change of a scene is a CO_Command run through a CO_CommandManager, which records it in an
// undo step. A command changes the scene in execute() and puts it back in unexecute(); after
// execute() then unexecute() the scene must be exactly as before, and the pair may run any number
// of times (undo, redo, undo...). CO_MacroCommand is a list of commands run as one.
#pragma once

#include <memory>
#include <vector>

class CO_Command {
public:
    CO_Command() = default;
    virtual ~CO_Command();
    CO_Command(CO_Command const &) = delete;
    CO_Command &operator=(CO_Command const &) = delete;

    // Makes the change. False means nothing was done: the manager then drops the command.
    virtual bool execute() = 0;
    // Reverts what execute() did. False means the command could not revert.
    virtual bool unexecute() = 0;

    // Hooks around the life of a recorded command; by default they do nothing.
    // store(): called once the command is recorded after its first execute(), to keep what a
    // later redo needs. restore(): called just before each redo.
    virtual void store();
    virtual void restore();
    // Called when the step holding the command closes: drop memory that undo and redo do not need.
    virtual void compact();

    // False for commands that change no saved part of the scene (a selection, a view setting).
    virtual bool modifyScene() const;
    // False for commands that cannot be undone: recording one clears the undo history, since the
    // steps before it could no longer be undone exactly.
    virtual bool isUnexecutable() const;

    // A command whose effect lasts only while its step is open (a preview). When the outermost
    // accumulation closes, the manager calls unexecuteOnExit() (by default unexecute()) and does
    // not record the command.
    virtual bool isUnexecuteOnExit() const;
    virtual void unexecuteOnExit();
    // Called on every recorded command of a step when the step closes, after all have run, for
    // commands that must refresh from the final state; by default nothing.
    virtual void reexecuteOnExit();
};

// Commands run as one: execute in order, unexecute in reverse order.
class CO_MacroCommand : public CO_Command {
public:
    CO_MacroCommand();
    ~CO_MacroCommand() override;

    // Appends an already executed command.
    void append(std::unique_ptr<CO_Command> command);
    bool isEmpty() const;
    int count() const;
    CO_Command *at(int index) const;  // null out of range

    // Executes each command; false only if none did anything.
    bool execute() override;
    // Unexecutes in reverse order; false if one of them failed (the rest are still reverted).
    bool unexecute() override;
    void store() override;
    void restore() override;
    void compact() override;
    void reexecuteOnExit() override;
    bool modifyScene() const override;    // true if any command modifies the scene
    bool isUnexecutable() const override; // true if all can be undone

    // Removes the commands flagged isUnexecuteOnExit, after calling their unexecuteOnExit in
    // reverse order.
    void unexecuteTemporaries();

private:
    std::vector<std::unique_ptr<CO_Command>> commands_;
};

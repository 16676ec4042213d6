// The undo stack of a scene, and the scopes that gather commands into one undo step.
//
// CO_CommandManager::execute runs a command and records it. Outside any accumulation each command
// is one step named by execute's name. Inside a CO_CommandAccumScope all commands go to one step;
// scopes nest, and the outermost one names the step and closes it when it ends. An accumulation
// in which no command did anything leaves no step.
//
// The manager tells its listeners (TUTeller) whenever the stack changes: a step recorded, undone,
// redone, or the history cleared.
#pragma once

#include "base/TUTeller.h"

#include <QString>
#include <QStringList>

#include <memory>

class CO_Command;
class CO_MacroCommand;

class CO_CommandManager : public TUTeller {
public:
    CO_CommandManager();
    ~CO_CommandManager() override;

    // Runs `command` and records it; takes ownership. Returns what execute() returned; a command
    // that did nothing is dropped. Recording a step clears the redo list. A null command gives false.
    bool execute(std::unique_ptr<CO_Command> command, QString const &name = QString());

    // Undo and redo one step. Refused (false) while an accumulation is open or when there is
    // nothing to undo or redo.
    bool undo();
    bool redo();
    bool canUndo() const;
    bool canRedo() const;
    int undoCount() const;
    int redoCount() const;
    QString undoName() const;  // name of the step undo() would revert; empty when none
    QString redoName() const;
    QStringList undoNames() const;  // oldest first
    QStringList redoNames() const;  // next to redo first

    // Forgets every step. Refused while an accumulation is open.
    bool clear();

    // True once a recorded step modified the scene, until setClean(). Undoing back to the clean
    // point makes it false again.
    bool isModified() const;
    void setClean();

    bool isAccumulating() const;
    int accumulationDepth() const;

private:
    friend class CO_CommandAccumScope;
    // Opens one level. With a macro, commands of this level go to it (the caller owns it) and not
    // to the manager's step.
    void beginAccum(QString const &name, CO_MacroCommand *target);
    void endAccum();

    struct Impl;
    std::unique_ptr<Impl> d_;
};

// Gathers every command executed on `manager` during its lifetime into one undo step named
// `name` (the outermost scope's name wins). With a non-null `macro`, this scope's commands are
// appended to that macro instead; the caller records it. A null manager makes an inert scope.
class CO_CommandAccumScope {
public:
    enum Mode { Default = 0 };  // the only mode: commands run as they are executed

    CO_CommandAccumScope(CO_CommandManager *manager, QString const &name,
                         CO_MacroCommand *macro = nullptr, int mode = Default);
    ~CO_CommandAccumScope();
    CO_CommandAccumScope(CO_CommandAccumScope const &) = delete;
    CO_CommandAccumScope &operator=(CO_CommandAccumScope const &) = delete;

private:
    CO_CommandManager *manager_;  // null for an inert scope
};

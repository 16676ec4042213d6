// Undo steps of interactive drags.
//
// A drag is a press, moves and a release, each handled in a separate call of a tool. A Scope
// opened as PRESS_ACCUM with a name opens one undo step that stays open after the scope ends;
// MOVE scopes add to it; the end of a RELEASE scope closes it. Every scope also gathers what is
// done during its own lifetime, so a MOVE or RELEASE without a press still makes one step of its
// own (unnamed) or none if nothing was done.
#pragma once

#include <QString>

#include <memory>

class CO_CommandManager;

class SC_InteractiveDragManager {
public:
    enum ScopeType { PRESS_ACCUM, MOVE, RELEASE };

    // Careful: `manager` must outlive this drag manager and its scopes.
    explicit SC_InteractiveDragManager(CO_CommandManager *manager);
    ~SC_InteractiveDragManager();  // closes an open drag
    SC_InteractiveDragManager(SC_InteractiveDragManager const &) = delete;
    SC_InteractiveDragManager &operator=(SC_InteractiveDragManager const &) = delete;

    CO_CommandManager *commandManager() const;
    bool isDragging() const;  // a PRESS_ACCUM opened a step that no RELEASE has closed yet

    class Scope {
    public:
        // A PRESS_ACCUM while a drag is open first closes that drag. A null manager makes an
        // inert scope.
        Scope(SC_InteractiveDragManager *manager, ScopeType type, QString const &name = QString());
        ~Scope();
        Scope(Scope const &) = delete;
        Scope &operator=(Scope const &) = delete;

    private:
        struct Impl;
        std::unique_ptr<Impl> d_;
    };

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

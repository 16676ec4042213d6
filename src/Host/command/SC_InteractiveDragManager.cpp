#include "command/SC_InteractiveDragManager.h"

#include "command/CO_CommandManager.h"

struct SC_InteractiveDragManager::Impl {
    CO_CommandManager *manager;
    std::unique_ptr<CO_CommandAccumScope> drag;  // open from a PRESS_ACCUM to the end of a RELEASE
};

SC_InteractiveDragManager::SC_InteractiveDragManager(CO_CommandManager *manager)
    : d_(std::make_unique<Impl>(Impl{manager, nullptr}))
{
}

SC_InteractiveDragManager::~SC_InteractiveDragManager() = default;

CO_CommandManager *SC_InteractiveDragManager::commandManager() const { return d_->manager; }
bool SC_InteractiveDragManager::isDragging() const { return d_->drag != nullptr; }

struct SC_InteractiveDragManager::Scope::Impl {
    SC_InteractiveDragManager *owner;
    ScopeType type;
    std::unique_ptr<CO_CommandAccumScope> own;  // what this scope's lifetime gathers
};

SC_InteractiveDragManager::Scope::Scope(SC_InteractiveDragManager *manager, ScopeType type,
                                        QString const &name)
    : d_(std::make_unique<Impl>(Impl{manager, type, nullptr}))
{
    if (!manager)
        return;
    CO_CommandManager *commands = manager->d_->manager;
    if (type == PRESS_ACCUM) {
        manager->d_->drag.reset();
        manager->d_->drag = std::make_unique<CO_CommandAccumScope>(commands, name);
    }
    d_->own = std::make_unique<CO_CommandAccumScope>(commands, name);
}

SC_InteractiveDragManager::Scope::~Scope()
{
    d_->own.reset();
    if (d_->owner && d_->type == RELEASE)
        d_->owner->d_->drag.reset();
}

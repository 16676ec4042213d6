#include "command/CO_CommandManager.h"

#include "command/CO_Command.h"

#include <algorithm>
#include <vector>

namespace {

struct Step {
    QString name;
    std::unique_ptr<CO_MacroCommand> commands;
};

}  // namespace

struct CO_CommandManager::Impl {
    std::vector<Step> undo;  // oldest first
    std::vector<Step> redo;  // back() is the next to redo
    // Undo depth at which the scene was last saved; -1 when that state can no longer be reached.
    int cleanDepth = 0;

    int depth = 0;                              // open accumulation levels
    QString accumName;                          // name given by the outermost level
    std::unique_ptr<CO_MacroCommand> accum;     // the step being gathered while depth > 0
    std::vector<CO_MacroCommand *> targets;     // per level: the caller's macro, or null

    // The step at undo depth `index` (counted from the oldest), wherever it is now.
    Step const &stepAt(int index) const
    {
        int const n = static_cast<int>(undo.size());
        if (index < n)
            return undo[static_cast<size_t>(index)];
        return redo[redo.size() - 1 - static_cast<size_t>(index - n)];
    }

    bool record(QString const &name, std::unique_ptr<CO_MacroCommand> step);
};

CO_CommandManager::CO_CommandManager() : d_(std::make_unique<Impl>()) {}
CO_CommandManager::~CO_CommandManager() = default;

// Closes a gathered step: temporaries are reverted, the rest is recorded unless empty.
// Gives whether something was recorded or the history changed.
bool CO_CommandManager::Impl::record(QString const &name, std::unique_ptr<CO_MacroCommand> step)
{
    Impl &d = *this;
    step->unexecuteTemporaries();
    if (step->isEmpty())
        return false;
    step->reexecuteOnExit();
    step->compact();
    d.redo.clear();
    if (d.cleanDepth > static_cast<int>(d.undo.size()))
        d.cleanDepth = -1;
    if (!step->isUnexecutable()) {
        // Nothing before this step can be undone exactly any more.
        d.undo.clear();
        d.cleanDepth = -1;
        return true;
    }
    d.undo.push_back(Step{name, std::move(step)});
    return true;
}

bool CO_CommandManager::execute(std::unique_ptr<CO_Command> command, QString const &name)
{
    if (!command || !command->execute())
        return false;
    command->store();
    if (d_->depth > 0) {
        for (auto it = d_->targets.rbegin(); it != d_->targets.rend(); ++it) {
            if (*it) {
                (*it)->append(std::move(command));
                return true;
            }
        }
        d_->accum->append(std::move(command));
        return true;
    }
    auto step = std::make_unique<CO_MacroCommand>();
    step->append(std::move(command));
    if (d_->record(name, std::move(step)))
        tell();
    return true;
}

bool CO_CommandManager::undo()
{
    if (d_->depth > 0 || d_->undo.empty())
        return false;
    Step step = std::move(d_->undo.back());
    d_->undo.pop_back();
    bool const ok = step.commands->unexecute();
    d_->redo.push_back(std::move(step));
    tell();
    return ok;
}

bool CO_CommandManager::redo()
{
    if (d_->depth > 0 || d_->redo.empty())
        return false;
    Step step = std::move(d_->redo.back());
    d_->redo.pop_back();
    step.commands->restore();
    step.commands->execute();
    d_->undo.push_back(std::move(step));
    tell();
    return true;
}

bool CO_CommandManager::canUndo() const { return d_->depth == 0 && !d_->undo.empty(); }
bool CO_CommandManager::canRedo() const { return d_->depth == 0 && !d_->redo.empty(); }
int CO_CommandManager::undoCount() const { return static_cast<int>(d_->undo.size()); }
int CO_CommandManager::redoCount() const { return static_cast<int>(d_->redo.size()); }

QString CO_CommandManager::undoName() const
{
    return d_->undo.empty() ? QString() : d_->undo.back().name;
}

QString CO_CommandManager::redoName() const
{
    return d_->redo.empty() ? QString() : d_->redo.back().name;
}

QStringList CO_CommandManager::undoNames() const
{
    QStringList names;
    for (auto const &step : d_->undo)
        names << step.name;
    return names;
}

QStringList CO_CommandManager::redoNames() const
{
    QStringList names;
    for (auto it = d_->redo.rbegin(); it != d_->redo.rend(); ++it)
        names << it->name;
    return names;
}

bool CO_CommandManager::clear()
{
    if (d_->depth > 0)
        return false;
    bool const had = !d_->undo.empty() || !d_->redo.empty();
    // The clean state stays reachable only if the scene is in it now.
    d_->cleanDepth = d_->cleanDepth == static_cast<int>(d_->undo.size()) ? 0 : -1;
    d_->undo.clear();
    d_->redo.clear();
    if (had)
        tell();
    return true;
}

bool CO_CommandManager::isModified() const
{
    int const now = static_cast<int>(d_->undo.size());
    int const clean = d_->cleanDepth;
    if (clean < 0)
        return true;
    int const from = std::min(clean, now);
    int const to = std::max(clean, now);
    for (int i = from; i < to; ++i)
        if (d_->stepAt(i).commands->modifyScene())
            return true;
    return false;
}

void CO_CommandManager::setClean() { d_->cleanDepth = static_cast<int>(d_->undo.size()); }

bool CO_CommandManager::isAccumulating() const { return d_->depth > 0; }
int CO_CommandManager::accumulationDepth() const { return d_->depth; }

void CO_CommandManager::beginAccum(QString const &name, CO_MacroCommand *target)
{
    if (d_->depth == 0) {
        d_->accumName = name;
        d_->accum = std::make_unique<CO_MacroCommand>();
    }
    ++d_->depth;
    d_->targets.push_back(target);
}

void CO_CommandManager::endAccum()
{
    if (d_->depth == 0)
        return;
    --d_->depth;
    d_->targets.pop_back();
    if (d_->depth > 0)
        return;
    QString const name = d_->accumName;
    d_->accumName.clear();
    if (d_->record(name, std::move(d_->accum)))
        tell();
}

CO_CommandAccumScope::CO_CommandAccumScope(CO_CommandManager *manager, QString const &name,
                                           CO_MacroCommand *macro, int)
    : manager_(manager)
{
    if (manager_)
        manager_->beginAccum(name, macro);
}

CO_CommandAccumScope::~CO_CommandAccumScope()
{
    if (manager_)
        manager_->endAccum();
}

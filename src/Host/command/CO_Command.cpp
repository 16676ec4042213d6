#include "command/CO_Command.h"

#include <algorithm>

CO_Command::~CO_Command() = default;
void CO_Command::store() {}
void CO_Command::restore() {}
void CO_Command::compact() {}
bool CO_Command::modifyScene() const { return true; }
bool CO_Command::isUnexecutable() const { return true; }
bool CO_Command::isUnexecuteOnExit() const { return false; }
void CO_Command::unexecuteOnExit() { unexecute(); }
void CO_Command::reexecuteOnExit() {}

CO_MacroCommand::CO_MacroCommand() = default;
CO_MacroCommand::~CO_MacroCommand() = default;

void CO_MacroCommand::append(std::unique_ptr<CO_Command> command)
{
    if (command)
        commands_.push_back(std::move(command));
}

bool CO_MacroCommand::isEmpty() const { return commands_.empty(); }
int CO_MacroCommand::count() const { return static_cast<int>(commands_.size()); }

CO_Command *CO_MacroCommand::at(int index) const
{
    if (index < 0 || index >= count())
        return nullptr;
    return commands_[static_cast<size_t>(index)].get();
}

bool CO_MacroCommand::execute()
{
    bool any = false;
    for (auto &command : commands_)
        any = command->execute() || any;
    return any;
}

bool CO_MacroCommand::unexecute()
{
    bool all = true;
    for (auto it = commands_.rbegin(); it != commands_.rend(); ++it)
        all = (*it)->unexecute() && all;
    return all;
}

void CO_MacroCommand::store()
{
    for (auto &command : commands_)
        command->store();
}

void CO_MacroCommand::restore()
{
    for (auto &command : commands_)
        command->restore();
}

void CO_MacroCommand::compact()
{
    for (auto &command : commands_)
        command->compact();
}

void CO_MacroCommand::reexecuteOnExit()
{
    for (auto &command : commands_)
        command->reexecuteOnExit();
}

bool CO_MacroCommand::modifyScene() const
{
    return std::any_of(commands_.begin(), commands_.end(),
                       [](auto const &command) { return command->modifyScene(); });
}

bool CO_MacroCommand::isUnexecutable() const
{
    return std::all_of(commands_.begin(), commands_.end(),
                       [](auto const &command) { return command->isUnexecutable(); });
}

void CO_MacroCommand::unexecuteTemporaries()
{
    for (auto it = commands_.rbegin(); it != commands_.rend(); ++it)
        if ((*it)->isUnexecuteOnExit())
            (*it)->unexecuteOnExit();
    commands_.erase(std::remove_if(commands_.begin(), commands_.end(),
                                   [](auto const &command) { return command->isUnexecuteOnExit(); }),
                    commands_.end());
}

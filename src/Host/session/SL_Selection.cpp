#include "session/SL_Selection.h"

#include "command/CO_Command.h"
#include "command/CO_CommandManager.h"
#include "scene/MO_Module.h"
#include "scene/MO_Node.h"

#include <algorithm>

namespace {

using WeakNodes = std::vector<UT_SharedWeakPtr<MO_Node>>;

WeakNodes weakly(std::vector<MO_Node *> const &nodes)
{
    WeakNodes result;
    for (MO_Node *n : nodes)
        result.emplace_back(n);
    return result;
}

std::vector<MO_Node *> live(WeakNodes const &nodes)
{
    std::vector<MO_Node *> result;
    for (UT_SharedWeakPtr<MO_Node> const &n : nodes)
        if (MO_Node *node = n.get())
            result.push_back(node);
    return result;
}

// A selection change between two states; execute sets the new one, unexecute the old one. Nodes
// gone in between are skipped.
class SelectionChangeCmd : public CO_Command {
public:
    SelectionChangeCmd(SL_Selection *selection, WeakNodes before, WeakNodes after)
        : selection_(selection), before_(std::move(before)), after_(std::move(after))
    {
    }
    bool execute() override
    {
        selection_->set(live(after_));
        return true;
    }
    bool unexecute() override
    {
        selection_->set(live(before_));
        return true;
    }
    bool modifyScene() const override { return false; }

private:
    SL_Selection *selection_;  // outlives the command: the project owns both
    WeakNodes before_;
    WeakNodes after_;
};

} // namespace

struct SL_Selection::Impl {
    WeakNodes nodes;  // selection order; expired entries are dropped lazily

    void prune()
    {
        nodes.erase(std::remove_if(nodes.begin(), nodes.end(), [](auto const &n) { return !n.get(); }), nodes.end());
    }
    WeakNodes::iterator find(MO_Node const *node)
    {
        return std::find_if(nodes.begin(), nodes.end(), [node](auto const &n) { return n.get() == node; });
    }
};

SL_Selection::SL_Selection() : d_(std::make_unique<Impl>()) {}

SL_Selection::~SL_Selection() = default;

std::vector<MO_Node *> SL_Selection::nodes() const
{
    return live(d_->nodes);
}

bool SL_Selection::contains(MO_Node const *node) const
{
    return node && d_->find(node) != d_->nodes.end();
}

bool SL_Selection::add(MO_Node *node)
{
    if (!node || contains(node))
        return false;
    d_->prune();
    d_->nodes.emplace_back(node);
    node->setSelected(true);
    tell();
    return true;
}

bool SL_Selection::remove(MO_Node *node)
{
    auto const it = node ? d_->find(node) : d_->nodes.end();
    if (it == d_->nodes.end())
        return false;
    d_->nodes.erase(it);
    node->setSelected(false);
    tell();
    return true;
}

bool SL_Selection::clear()
{
    return set({});
}

bool SL_Selection::set(std::vector<MO_Node *> const &wanted)
{
    std::vector<MO_Node *> next;
    for (MO_Node *n : wanted)
        if (n && std::find(next.begin(), next.end(), n) == next.end())
            next.push_back(n);
    std::vector<MO_Node *> const current = nodes();
    if (next == current) {
        d_->prune();
        return false;
    }
    for (MO_Node *n : current)
        n->setSelected(false);
    for (MO_Node *n : next)
        n->setSelected(true);
    d_->nodes = weakly(next);
    tell();
    return true;
}

namespace SL_SelectionUtil {

std::vector<MO_Node *> getNodes(SL_Selection const *selection)
{
    return selection ? selection->nodes() : std::vector<MO_Node *>();
}

MO_Node *getSingleNode(SL_Selection const *selection)
{
    std::vector<MO_Node *> const nodes = getNodes(selection);
    return nodes.size() == 1 ? nodes.front() : nullptr;
}

MO_Node *getFirstNode(SL_Selection const *selection)
{
    std::vector<MO_Node *> const nodes = getNodes(selection);
    return nodes.empty() ? nullptr : nodes.front();
}

MO_ElementModule *getFirstElement(SL_Selection const *selection)
{
    for (MO_Node *node : getNodes(selection))
        if (auto *element = dynamic_cast<MO_ElementModule *>(node))
            return element;
    return nullptr;
}

void addToSelection(SL_Selection *selection, MO_Node *node)
{
    if (selection)
        selection->add(node);
}

void removeFromSelection(SL_Selection *selection, MO_Node *node)
{
    if (selection)
        selection->remove(node);
}

void clear(SL_Selection *selection)
{
    if (selection)
        selection->clear();
}

} // namespace SL_SelectionUtil

namespace SL_SelectionCommands {

Scope::Scope(CO_CommandManager *manager, SL_Selection *selection)
    : manager_(manager && selection ? manager : nullptr), selection_(selection)
{
    if (manager_)
        before_ = weakly(selection_->nodes());
}

Scope::~Scope()
{
    if (!manager_)
        return;
    std::vector<MO_Node *> const after = selection_->nodes();
    if (after == live(before_))
        return;
    manager_->execute(std::make_unique<SelectionChangeCmd>(selection_, std::move(before_), weakly(after)), QStringLiteral("Selection"));
}

} // namespace SL_SelectionCommands

// The node selection of a project.
//
// The selection is ordered: nodes stand in the order they were added. It refers to nodes weakly, so
// a node that is gone drops out of every answer on its own. Each node's `selected` flag follows its
// membership. The selection tells its listeners (TUTeller) after every change.
//
// Changes are undoable while an SL_SelectionCommands::Scope is open on the selection: the scope
// records the change from its opening state to its closing state as one command. Outside a scope a
// change is applied and not recorded.
#pragma once

#include "base/TUTeller.h"
#include "base/UT_SharedPtr.h"

#include <memory>
#include <vector>

class CO_CommandManager;
class MO_ElementModule;
class MO_Node;

class SL_Selection : public TUTeller {
public:
    SL_Selection();
    ~SL_Selection() override;

    // The selected nodes that still exist, in selection order.
    std::vector<MO_Node *> nodes() const;
    bool contains(MO_Node const *node) const;

    // Each returns true when the selection changed. Adding a node already selected, removing one
    // that is not, or a null node changes nothing.
    bool add(MO_Node *node);
    bool remove(MO_Node *node);
    bool clear();
    // Makes the selection exactly `nodes` (nulls and repeats skipped), in that order.
    bool set(std::vector<MO_Node *> const &nodes);

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};

namespace SL_SelectionUtil {

// All of these accept a null selection: the answers are empty and the changes do nothing.
std::vector<MO_Node *> getNodes(SL_Selection const *selection);
// The only selected node; null when none or several are selected.
MO_Node *getSingleNode(SL_Selection const *selection);
// The first selected node; null when none is.
MO_Node *getFirstNode(SL_Selection const *selection);
// The first selected drawing element, passing over other nodes; null when none is selected. The
// element that the drawing view shows and that the pencil and new drawings work on.
MO_ElementModule *getFirstElement(SL_Selection const *selection);
void addToSelection(SL_Selection *selection, MO_Node *node);
void removeFromSelection(SL_Selection *selection, MO_Node *node);
void clear(SL_Selection *selection);

} // namespace SL_SelectionUtil

namespace SL_SelectionCommands {

// Makes the selection changes of its lifetime one undoable command on `manager`, executed when the
// scope ends (nothing is recorded when the selection ends as it began). The command changes no
// saved part of the scene. A null manager or selection makes an inert scope; scopes may nest.
class Scope {
public:
    Scope(CO_CommandManager *manager, SL_Selection *selection);
    ~Scope();
    Scope(Scope const &) = delete;
    Scope &operator=(Scope const &) = delete;

private:
    CO_CommandManager *manager_;
    SL_Selection *selection_;
    std::vector<UT_SharedWeakPtr<MO_Node>> before_;  // the selection when the scope opened
};

} // namespace SL_SelectionCommands

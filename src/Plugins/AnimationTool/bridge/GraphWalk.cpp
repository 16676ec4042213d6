#include "bridge/GraphWalk.h"

#include <set>
#include <vector>

namespace {

// The work list's order: by instance name, then by address for nodes of the same name. Careful:
// the order of siblings fixes the order of the joints and of the solver's unknowns, and with it
// the rounding of every solve; by address alone it changed from run to run.
struct WalkOrder {
    bool operator()(MO_Node const *a, MO_Node const *b) const
    {
        int const byName = QString::compare(a->instanceName(), b->instanceName());
        return byName != 0 ? byName < 0 : a < b;
    }
};

} // namespace

void IKToolUtil::walkDownward(MO_Node *start, bool visitStart, std::function<void(MO_Node *)> const &visit)
{
    walkDownwardPruned(start, visitStart, [&visit](MO_Node *node) {
        visit(node);
        return true;
    });
}

void IKToolUtil::walkDownwardPruned(MO_Node *start, bool visitStart, std::function<bool(MO_Node *)> const &visit)
{
    if (!start)
        return;
    std::set<MO_Node *, WalkOrder> work{start};
    while (!work.empty()) {
        MO_Node *const node = *work.begin();
        work.erase(work.begin());
        if ((node != start || visitStart) && !visit(node))
            continue;
        if (node->nOutPorts() == 0)
            continue;
        std::vector<MO_Port *> destinations;
        node->outPort(0)->realDstPorts(destinations);
        for (MO_Port const *port : destinations)
            work.insert(port->node());
    }
}

#include "bridge/GraphWalk.h"

#include <set>
#include <vector>

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
    std::set<MO_Node *> work{start};
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

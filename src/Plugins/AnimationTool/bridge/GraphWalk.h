// The downward walk over the node graph shared by the bridge's walkers.
//
// A work list (ordered by instance name, then by address) starts with the first node. The lowest node is taken out and
// visited; if it has output ports, every node owning a real destination of its output port 0
// (pass-through nodes looked through) joins the list. The walk ends when the list is empty. Only
// output port 0 is followed. A node reached by two paths may be visited twice; the graph has no
// cycles, so the walk always ends.
#pragma once

#include "host/HostAPI.h"

#include <functional>

namespace IKToolUtil {

// Visits every node of the walk from `start`; `start` itself only with `visitStart`. A null start
// visits nothing.
void walkDownward(MO_Node *start, bool visitStart, std::function<void(MO_Node *)> const &visit);

// As above, but the walk goes on below a visited node only when `visit` gives true. `start`, when
// not visited, is always gone through.
void walkDownwardPruned(MO_Node *start, bool visitStart, std::function<bool(MO_Node *)> const &visit);

} // namespace IKToolUtil

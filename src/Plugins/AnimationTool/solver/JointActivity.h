// Which joints take part in a drag's solve.
//
// Before each problem is solved, the tool switches joints on (activity 1.0) or off (0.0) according
// to what was picked, where the blockers stand and which joints are handles. This is plain data in,
// plain data out: the caller gathers the blocker flags from its skeleton and applies the result to
// the solver's joints (joint i of the skeleton is the solver joint of the same name).
#pragma once

#include <vector>

class SkeletonDef;

namespace TIK {

// The activity of every joint of `skeleton`, in list order, for a drag of the joints at the indices
// `dragged`. `isBlocker[i]` tells whether joint i is a blocker (missing entries read false).
//   1. A pick on a bone (`pickedOnBone`): every joint is frozen, then each dragged joint that has a
//      parent, and that parent, take part.
//   2. Otherwise: from each dragged joint's parent upwards, the first blocker found is gathered
//      (the dragged joint itself is not tested). If any was gathered, every joint outside the
//      subtrees of the gathered blockers is frozen; a blocker itself takes part.
//   3. In both cases, every handle joint that is not dragged is frozen, with its parent.
// Out-of-range indices in `dragged` are ignored.
std::vector<double> jointActivities(SkeletonDef const &skeleton, std::vector<int> const &dragged,
                                    std::vector<bool> const &isBlocker, bool pickedOnBone);

} // namespace TIK

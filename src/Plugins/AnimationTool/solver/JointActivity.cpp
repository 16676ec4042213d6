#include "solver/JointActivity.h"

#include "skeleton/SkeletonDef.h"

#include <algorithm>
#include <set>

namespace TIK {

namespace {

// Index of the parent of joint i, or -1 when it has none in the skeleton.
int parentIndex(SkeletonDef const &skeleton, int i)
{
    auto const parent = skeleton.find(skeleton[static_cast<std::size_t>(i)].parentName);
    return parent == skeleton.end() ? -1 : static_cast<int>(parent - skeleton.begin());
}

// Calls visit(index) for each joint from `start` up through its parents, until visit returns true
// or the parents run out. A parent chain that loops back stops after as many steps as joints.
template <class Visit>
bool climb(SkeletonDef const &skeleton, int start, Visit visit)
{
    int steps = static_cast<int>(skeleton.size());
    for (int i = start; i >= 0 && steps-- > 0; i = parentIndex(skeleton, i))
        if (visit(i))
            return true;
    return false;
}

} // namespace

std::vector<double> jointActivities(SkeletonDef const &skeleton, std::vector<int> const &draggedIn,
                                    std::vector<bool> const &isBlocker, bool pickedOnBone)
{
    int const count = static_cast<int>(skeleton.size());
    std::vector<double> activity(skeleton.size(), 1.0);
    std::vector<int> dragged;
    std::copy_if(draggedIn.begin(), draggedIn.end(), std::back_inserter(dragged),
                 [count](int i) { return i >= 0 && i < count; });
    auto const blocker = [&](int i) { return i < static_cast<int>(isBlocker.size()) && isBlocker[static_cast<std::size_t>(i)]; };

    if (pickedOnBone) {
        std::fill(activity.begin(), activity.end(), 0.0);
        for (int d : dragged) {
            int const parent = parentIndex(skeleton, d);
            if (parent >= 0) {
                activity[static_cast<std::size_t>(d)] = 1.0;
                activity[static_cast<std::size_t>(parent)] = 1.0;
            }
        }
    } else {
        std::set<int> blockers;
        for (int d : dragged) {
            climb(skeleton, parentIndex(skeleton, d), [&](int i) {
                if (!blocker(i))
                    return false;
                blockers.insert(i);
                return true;
            });
        }
        if (!blockers.empty()) {
            for (int i = 0; i < count; ++i) {
                bool const underBlocker = climb(skeleton, i, [&](int j) { return blockers.count(j) > 0; });
                if (!underBlocker)
                    activity[static_cast<std::size_t>(i)] = 0.0;
            }
        }
    }

    for (int i = 0; i < count; ++i) {
        bool const isDragged = std::find(dragged.begin(), dragged.end(), i) != dragged.end();
        if (skeleton[static_cast<std::size_t>(i)].isHandle && !isDragged) {
            activity[static_cast<std::size_t>(i)] = 0.0;
            int const parent = parentIndex(skeleton, i);
            if (parent >= 0)
                activity[static_cast<std::size_t>(parent)] = 0.0;
        }
    }
    return activity;
}

} // namespace TIK

// The undo memory of a drag over a long range grows with the keys the drag changes. The same
// drag of the character's wrist over frames 1 to 24 and 1 to 96 writes four times the keys;
// the heap it leaves held (its undo step, counted by HeapCounter) must grow about as much. Undo
// records that copied whole curves held sixteen times as much, growing with the square of the
// range.
#include "HeapCounter.h"
#include "IKDragScene.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

struct Held {
    std::size_t bytes = 0;
    int keysChanged = 0;
};

int changedLines(std::string const &before, std::string const &after)
{
    std::istringstream a(before), b(after);
    std::string la, lb;
    int changed = 0;
    std::vector<std::string> old;
    while (std::getline(a, la))
        old.push_back(la);
    std::sort(old.begin(), old.end());
    while (std::getline(b, lb))
        if (!std::binary_search(old.begin(), old.end(), lb))
            ++changed;
    return changed;
}

Held dragOver(int frames)
{
    IKDrag::Scene scene;
    IKDrag::openCharacter(scene);
    IKDrag::setRange(scene, frames);
    scene.view->render();
    std::string const before = IKDrag::keyDump(scene);
    std::size_t const start = HeapCounter::liveBytes();
    IKDrag::drag(scene, 4);
    Held held;
    held.bytes = HeapCounter::liveBytes() - start;
    held.keysChanged = changedLines(before, IKDrag::keyDump(scene));
    return held;
}

TEST(IKToolUndoMemory, ALongRangeHoldsUndoInProportionToTheKeysItChanged)
{
    Held const shorter = dragOver(24);
    Held const longer = dragOver(96);
    ASSERT_GT(shorter.keysChanged, 24);
    double const keys = double(longer.keysChanged) / double(shorter.keysChanged);
    double const bytes = double(longer.bytes) / double(shorter.bytes);
    EXPECT_NEAR(keys, 4.0, 0.5);
    EXPECT_LT(bytes, 1.5 * keys) << shorter.bytes << " bytes for " << shorter.keysChanged << " keys, " << longer.bytes
                                 << " bytes for " << longer.keysChanged << " keys";
    EXPECT_LT(double(longer.bytes) / double(longer.keysChanged), 2048.0) << "bytes per key changed, over 4 moves";
}

} // namespace

// Counts the bytes that C++ allocations hold, for tests and benchmarks that check memory: linked
// into an executable (as the object library HeapCounter), it replaces the global operator new and
// delete with ones that keep a running total and its peak. Blocks taken with malloc directly (some
// of Qt's buffers) are not counted; every container and object of the project is.
#pragma once

#include <cstddef>

namespace HeapCounter {

// Bytes held now by blocks from operator new (their usable size, as the allocator gives it).
std::size_t liveBytes();
// The greatest liveBytes() since the last resetPeak() (or the start).
std::size_t peakBytes();
// Makes the peak the present total.
void resetPeak();

} // namespace HeapCounter

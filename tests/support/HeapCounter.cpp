#include "HeapCounter.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> live{0};
std::atomic<std::size_t> peak{0};

void *take(std::size_t size, std::size_t alignment = 0)
{
    if (size == 0)
        size = 1;
    void *p = nullptr;
    if (alignment > alignof(std::max_align_t)) {
        if (posix_memalign(&p, alignment, size) != 0)
            p = nullptr;
    } else {
        p = std::malloc(size);
    }
    if (!p)
        return nullptr;
    std::size_t const now = live.fetch_add(malloc_usable_size(p), std::memory_order_relaxed) + malloc_usable_size(p);
    std::size_t seen = peak.load(std::memory_order_relaxed);
    while (now > seen && !peak.compare_exchange_weak(seen, now, std::memory_order_relaxed)) {
    }
    return p;
}

void give(void *p) noexcept
{
    if (!p)
        return;
    live.fetch_sub(malloc_usable_size(p), std::memory_order_relaxed);
    std::free(p);
}

void *takeOrThrow(std::size_t size, std::size_t alignment = 0)
{
    if (void *p = take(size, alignment))
        return p;
    throw std::bad_alloc();
}

} // namespace

std::size_t HeapCounter::liveBytes() { return live.load(std::memory_order_relaxed); }
std::size_t HeapCounter::peakBytes() { return peak.load(std::memory_order_relaxed); }
void HeapCounter::resetPeak() { peak.store(live.load(std::memory_order_relaxed), std::memory_order_relaxed); }

void *operator new(std::size_t size) { return takeOrThrow(size); }
void *operator new[](std::size_t size) { return takeOrThrow(size); }
void *operator new(std::size_t size, std::nothrow_t const &) noexcept { return take(size); }
void *operator new[](std::size_t size, std::nothrow_t const &) noexcept { return take(size); }
void *operator new(std::size_t size, std::align_val_t a) { return takeOrThrow(size, std::size_t(a)); }
void *operator new[](std::size_t size, std::align_val_t a) { return takeOrThrow(size, std::size_t(a)); }
void operator delete(void *p) noexcept { give(p); }
void operator delete[](void *p) noexcept { give(p); }
void operator delete(void *p, std::size_t) noexcept { give(p); }
void operator delete[](void *p, std::size_t) noexcept { give(p); }
void operator delete(void *p, std::align_val_t) noexcept { give(p); }
void operator delete[](void *p, std::align_val_t) noexcept { give(p); }
void operator delete(void *p, std::size_t, std::align_val_t) noexcept { give(p); }
void operator delete[](void *p, std::size_t, std::align_val_t) noexcept { give(p); }

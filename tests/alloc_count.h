// Counts of the heap allocations a program makes, shared by the tests and
// the benchmark; linking alloc_count.cpp replaces the global operator new
// and delete. Counted are every global operator new (and the bytes asked
// for), and every malloc, calloc and realloc where the C allocator can be
// interposed (operator new goes through malloc, so that count includes the
// first). zol allocates its strings through new[] and its values through
// AsnType's own operator new, which keeps a count of its own (free lists
// serve most of them, so malloc does not see them); asn1c's runtime
// allocates only through the C calls.
#pragma once

#include <atomic>
#include <cstdint>

#include <zol/zol.h>

namespace zalloc {

extern std::atomic<uint64_t> newCount;
extern std::atomic<uint64_t> newBytes;
extern std::atomic<uint64_t> mallocCount;
// Blocks of malloc, calloc and realloc not yet given to free or realloc,
// where liveCounted: in the tests (ZOL_COUNT_LIVE_BLOCKS), not in the
// benchmark, whose instruction counts take in every free.
extern std::atomic<int64_t> liveBlocks;
extern const bool liveCounted;
// False where the C allocator cannot be interposed (sanitizer builds): the
// C counts then stay at zero.
extern const bool mallocCounted;

struct AllocDelta {
    uint64_t news = 0;     // global operator new and new[]
    uint64_t bytes = 0;    // asked for by those
    uint64_t values = 0;   // AsnType::operator new
    uint64_t mallocs = 0;  // malloc, calloc, realloc
    uint64_t zol() const { return news + values; }
};

// The allocations that one call of `f` makes.
template <class F>
AllocDelta CountAllocs(F&& f) {
    uint64_t n0 = newCount.load(std::memory_order_relaxed);
    uint64_t b0 = newBytes.load(std::memory_order_relaxed);
    uint64_t m0 = mallocCount.load(std::memory_order_relaxed);
    uint64_t v0 = AsnType::Allocations();
    f();
    AllocDelta d;
    d.news = newCount.load(std::memory_order_relaxed) - n0;
    d.bytes = newBytes.load(std::memory_order_relaxed) - b0;
    d.values = AsnType::Allocations() - v0;
    d.mallocs = mallocCount.load(std::memory_order_relaxed) - m0;
    return d;
}

}  // namespace zalloc

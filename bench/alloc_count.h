// Counts of heap allocations made by the benchmark process: every global
// operator new, and every malloc, calloc and realloc (operator new goes
// through malloc, so the second count includes the first). zol allocates
// its strings through new[] and its values through AsnType's own operator
// new, which keeps a count of its own (free lists serve most of them, so
// malloc does not see them); asn1c's runtime allocates only through the C
// calls.
#pragma once

#include <atomic>
#include <cstdint>

#include <zol/zol.h>

namespace zb {

extern std::atomic<uint64_t> newCount;
extern std::atomic<uint64_t> mallocCount;
// False where the C allocator cannot be interposed (sanitizer builds): the
// C count then stays at zero and is shown as unknown.
extern const bool mallocCounted;

struct AllocDelta {
    uint64_t news = 0;     // global operator new and new[]
    uint64_t values = 0;   // AsnType::operator new
    uint64_t mallocs = 0;  // malloc, calloc, realloc
    uint64_t zol() const { return news + values; }
};

// The allocations that one call of `f` makes.
template <class F>
AllocDelta CountAllocs(F&& f) {
    uint64_t n0 = newCount.load(std::memory_order_relaxed);
    uint64_t m0 = mallocCount.load(std::memory_order_relaxed);
    uint64_t v0 = AsnType::Allocations();
    f();
    AllocDelta d;
    d.news = newCount.load(std::memory_order_relaxed) - n0;
    d.values = AsnType::Allocations() - v0;
    d.mallocs = mallocCount.load(std::memory_order_relaxed) - m0;
    return d;
}

}  // namespace zb

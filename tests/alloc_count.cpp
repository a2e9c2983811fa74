#include "alloc_count.h"

#include <cstdlib>
#include <new>

namespace zalloc {

std::atomic<uint64_t> newCount{0};
std::atomic<uint64_t> newBytes{0};
std::atomic<uint64_t> mallocCount{0};
std::atomic<int64_t> liveBlocks{0};

}  // namespace zalloc

// The global operators, replaced for the whole program. Relaxed atomic
// increments cost a few cycles and are paid equally by every codec. They
// pair malloc with free, which GCC cannot tell once they are inlined.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif
namespace {

void* Counted(std::size_t n) noexcept {
    zalloc::newCount.fetch_add(1, std::memory_order_relaxed);
    zalloc::newBytes.fetch_add(n, std::memory_order_relaxed);
    return std::malloc(n ? n : 1);
}

void* CountedOrThrow(std::size_t n) {
    if (void* p = Counted(n))
        return p;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t n) { return CountedOrThrow(n); }
void* operator new[](std::size_t n) { return CountedOrThrow(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return Counted(n); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return Counted(n); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }

// The C allocator is interposed through glibc's own entry points, so that
// asn1c's allocations are counted too. The sanitizers bring allocators of
// their own, which this would bypass; the library's pool is off under them
// (asn_pool.h tells them apart).
#if defined(__GLIBC__) && !defined(ZOL_NO_VALUE_POOL) && !defined(ZOL_BENCH_NO_MALLOC_HOOK)
namespace {

// A block handed out, and one given back. Only the tests count them: the
// benchmark's instruction counts take in every free.
#ifdef ZOL_COUNT_LIVE_BLOCKS
void* Live(void* p) noexcept {
    if (p)
        zalloc::liveBlocks.fetch_add(1, std::memory_order_relaxed);
    return p;
}
void Gone(void* p) noexcept {
    if (p)
        zalloc::liveBlocks.fetch_sub(1, std::memory_order_relaxed);
}
const bool kLiveCounted = true;
#else
void* Live(void* p) noexcept { return p; }
void Gone(void*) noexcept {}
const bool kLiveCounted = false;
#endif

}  // namespace

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t n) noexcept {
    zalloc::mallocCount.fetch_add(1, std::memory_order_relaxed);
    return Live(__libc_malloc(n));
}
void* calloc(std::size_t n, std::size_t size) noexcept {
    zalloc::mallocCount.fetch_add(1, std::memory_order_relaxed);
    return Live(__libc_calloc(n, size));
}
// Null in, a block out: a new block. A block in and null out with size 0:
// the block is freed. Otherwise one block stands for another.
void* realloc(void* p, std::size_t n) noexcept {
    zalloc::mallocCount.fetch_add(1, std::memory_order_relaxed);
    void* q = __libc_realloc(p, n);
    if (!p)
        Live(q);
    else if (!q && n == 0)
        Gone(p);
    return q;
}
void free(void* p) noexcept {
    Gone(p);
    __libc_free(p);
}
}
const bool zalloc::mallocCounted = true;
const bool zalloc::liveCounted = kLiveCounted;
#else
const bool zalloc::mallocCounted = false;
const bool zalloc::liveCounted = false;
#endif

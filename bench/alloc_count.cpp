#include "alloc_count.h"

#include <cstdlib>
#include <new>

namespace zb {

std::atomic<uint64_t> newCount{0};
std::atomic<uint64_t> mallocCount{0};

}  // namespace zb

// The global operators, replaced for the whole program. Relaxed atomic
// increments cost a few cycles and are paid equally by every codec.
namespace {

void* CountedNew(std::size_t n) {
    zb::newCount.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(n ? n : 1))
        return p;
    throw std::bad_alloc();
}

void* CountedNewNothrow(std::size_t n) noexcept {
    zb::newCount.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(n ? n : 1);
}

}  // namespace

void* operator new(std::size_t n) { return CountedNew(n); }
void* operator new[](std::size_t n) { return CountedNew(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return CountedNewNothrow(n); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return CountedNewNothrow(n); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }

// The C allocator is interposed through glibc's own entry points, so that
// asn1c's allocations are counted too. The sanitizers bring allocators of
// their own, which this would bypass.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(ZOL_BENCH_NO_MALLOC_HOOK)
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t n) noexcept {
    zb::mallocCount.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(n);
}
void* calloc(std::size_t n, std::size_t size) noexcept {
    zb::mallocCount.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(n, size);
}
void* realloc(void* p, std::size_t n) noexcept {
    zb::mallocCount.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(p, n);
}
void free(void* p) noexcept { __libc_free(p); }
}
const bool zb::mallocCounted = true;
#else
const bool zb::mallocCounted = false;
#endif

#include "zol/ber/asn_pool.h"

#include <cstdlib>
#include <new>

#include "zol/ber/asn_type.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZOL_NO_VALUE_POOL 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
#define ZOL_NO_VALUE_POOL 1
#endif
#endif

namespace {

// Unused where the pool is off (under the sanitizers), which clang warns of.
[[maybe_unused]] const std::size_t kPoolStep = 16;     // size classes of 16, 32, ... 256 bytes
const std::size_t kPoolClasses = 16;
[[maybe_unused]] const uint32_t kPoolKeep = 1u << 14;  // blocks kept per class, beyond which they go back

struct FreeBlock {
    FreeBlock* next;
};

// Trivially destructible, so that it stays usable after the thread's
// destructors ran: blocks given back after that go straight to free().
//
// The initial-exec model puts it at a fixed offset from the thread
// pointer, one load away. The default model of a shared library calls
// __tls_get_addr on every access, which cost as much as the rest of a
// take or give.
struct Pool {
    FreeBlock* heads[kPoolClasses];
    uint32_t kept[kPoolClasses];
    bool reaperSet;
    bool dead;
    uint64_t taken;
};
thread_local Pool pool __attribute__((tls_model("initial-exec")));

// Returns the kept blocks when the thread ends.
struct PoolReaper {
    ~PoolReaper() {
        for (std::size_t c = 0; c < kPoolClasses; ++c)
            while (FreeBlock* b = pool.heads[c]) {
                pool.heads[c] = b->next;
                std::free(b);
            }
        pool.dead = true;
    }
};
thread_local PoolReaper reaper;

}  // namespace

static inline void* Take(std::size_t size) {
    ++pool.taken;
#ifndef ZOL_NO_VALUE_POOL
    std::size_t c = (size - 1) / kPoolStep;
    if (size && c < kPoolClasses && !pool.dead) {
        if (FreeBlock* b = pool.heads[c]) {
            pool.heads[c] = b->next;
            --pool.kept[c];
            return b;
        }
        if (!pool.reaperSet) {
            pool.reaperSet = true;
            (void)&reaper;  // constructs it, so that its destructor runs at thread end
        }
        return std::malloc((c + 1) * kPoolStep);
    }
#endif
    return std::malloc(size ? size : 1);
}

static inline void Give(void* p, std::size_t size) {
    if (!p)
        return;
#ifndef ZOL_NO_VALUE_POOL
    std::size_t c = (size - 1) / kPoolStep;
    if (size && c < kPoolClasses && !pool.dead && pool.kept[c] < kPoolKeep) {
        FreeBlock* b = static_cast<FreeBlock*>(p);
        b->next = pool.heads[c];
        pool.heads[c] = b;
        ++pool.kept[c];
        return;
    }
#else
    (void)size;
#endif
    std::free(p);
}

// Values and the bytes of strings take the same blocks, each with one call.

void* AsnType::operator new(std::size_t size) {
    if (void* p = Take(size))
        return p;
    throw std::bad_alloc();
}

void* AsnType::operator new(std::size_t size, const std::nothrow_t&) noexcept { return Take(size); }

void AsnType::operator delete(void* p, std::size_t size) noexcept { Give(p, size); }

// Only when a constructor throws out of a nothrow new, with the size
// unknown: every block, pooled or not, came from malloc.
void AsnType::operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }

void* AsnPoolTake(std::size_t size) { return Take(size); }

void AsnPoolGive(void* p, std::size_t size) { Give(p, size); }

uint64_t AsnPoolTaken() { return pool.taken; }

// The blocks that values, and the bytes their strings hold, live in. Blocks
// of up to 256 bytes come from free lists of this thread, which keep what
// was given back (a decoded message is freed and the next one takes the
// same blocks) and are emptied when the thread ends; larger ones, and all
// of them in sanitizer builds, come from malloc. A block is given back
// with the size it was taken with, which picks its list.
//
// A take or give from a list is a few instructions, compiled into every
// `new` and `delete` of a value: as a call it cost half as much again.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zol/ber/asn_thread.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZOL_NO_VALUE_POOL 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
#define ZOL_NO_VALUE_POOL 1
#endif
#endif

const std::size_t AsnPoolStep = 16;        // size classes of 16, 32, ... 256 bytes
const std::size_t AsnPoolClasses = 16;
const uint32_t AsnPoolKeep = 1u << 14;     // blocks kept per class, beyond which they go back

struct AsnFreeBlock {
    AsnFreeBlock* next;
};

// One thread's lists. Trivially destructible, so that it stays usable
// after the thread has ended: then every list is empty and counts as full,
// so that takes go to malloc() and gives to free(). A list also counts as
// full from the planting of a failure to its removal (AsnPoolFailAfter).
struct AsnPoolLists {
    AsnFreeBlock* heads[AsnPoolClasses];
    uint32_t kept[AsnPoolClasses];
    uint64_t taken;     // blocks taken by this thread so far
    uint64_t failAt;    // the value of `taken` whose take fails; 0: none
    AsnThreadEnd end;   // empties the lists when the thread ends
    bool ended;
};

// One load away (asn_thread.h), where the default model cost as much as the
// rest of a take or give.
extern __thread AsnPoolLists asnPool ZOL_INITIAL_EXEC;

// The other cases: a list that is empty or full, a size beyond the lists,
// the first block of a thread, and every block without the pool.
void* AsnPoolTakeSlow(std::size_t size);
void AsnPoolGiveSlow(void* p, std::size_t size);

// A block of `size` bytes, or null when the heap has none.
inline __attribute__((always_inline)) void* AsnPoolTake(std::size_t size) {
#ifndef ZOL_NO_VALUE_POOL
    const std::size_t c = (size - 1) / AsnPoolStep;  // 0 bytes wraps to no class
    if (c < AsnPoolClasses) {
        if (AsnFreeBlock* b = asnPool.heads[c]) {
            asnPool.heads[c] = b->next;
            --asnPool.kept[c];
            ++asnPool.taken;
            return b;
        }
    }
#endif
    return AsnPoolTakeSlow(size);
}

// Gives back a block of AsnPoolTake(size); null is ignored.
inline __attribute__((always_inline)) void AsnPoolGive(void* p, std::size_t size) {
    if (!p)
        return;
#ifndef ZOL_NO_VALUE_POOL
    const std::size_t c = (size - 1) / AsnPoolStep;
    if (c < AsnPoolClasses && asnPool.kept[c] < AsnPoolKeep) {
        AsnFreeBlock* b = static_cast<AsnFreeBlock*>(p);
        b->next = asnPool.heads[c];
        asnPool.heads[c] = b;
        ++asnPool.kept[c];
        return;
    }
#endif
    AsnPoolGiveSlow(p, size);
}

// The number of blocks this thread has taken so far.
inline uint64_t AsnPoolTaken() { return asnPool.taken; }

// Plants a failure: the `n`-th block that the calling thread takes from now
// on (1: the next) is not made, as when the heap is exhausted, and the take
// gives null; later takes succeed again. It serves tests of what a program
// does when memory runs out. From then on, until AsnPoolFailAfter(0), the
// thread's blocks come from malloc() and go back to free(), past its lists,
// so that every take counts and the heap shows every block in use.
void AsnPoolFailAfter(uint64_t n);

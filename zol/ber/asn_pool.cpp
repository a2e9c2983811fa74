#include "zol/ber/asn_pool.h"

#include <cstdlib>

namespace {

void EndPool(AsnThreadEnd*);

}  // namespace

__thread AsnPoolLists asnPool ZOL_INITIAL_EXEC = {{}, {}, 0, 0, {EndPool, nullptr, false}, false};

namespace {

// Frees the kept blocks and leaves every list counting as full, so that
// blocks bypass the lists.
void Bypass() {
    for (std::size_t c = 0; c < AsnPoolClasses; ++c) {
        while (AsnFreeBlock* b = asnPool.heads[c]) {
            asnPool.heads[c] = b->next;
            std::free(b);
        }
        asnPool.kept[c] = AsnPoolKeep;
    }
}

// The lists take blocks again, unless the thread has ended.
void Resume() {
    if (asnPool.ended)
        return;
    for (std::size_t c = 0; c < AsnPoolClasses; ++c)
        asnPool.kept[c] = 0;
}

void EndPool(AsnThreadEnd*) {
    asnPool.ended = true;
    Bypass();
}

}  // namespace

void* AsnPoolTakeSlow(std::size_t size) {
    if (++asnPool.taken == asnPool.failAt) {
        asnPool.failAt = 0;
        return nullptr;
    }
#ifndef ZOL_NO_VALUE_POOL
    const std::size_t c = (size - 1) / AsnPoolStep;
    if (c < AsnPoolClasses) {
        // A block of a class whose list is empty, of the size of the
        // class. The lists keep what is given back from now on, so they are
        // emptied when the thread ends.
        if (!asnPool.ended)
            AsnAtThreadEnd(asnPool.end);
        return std::malloc((c + 1) * AsnPoolStep);
    }
#endif
    return std::malloc(size ? size : 1);
}

void AsnPoolGiveSlow(void* p, std::size_t) { std::free(p); }

void AsnPoolFailAfter(uint64_t n) {
    Bypass();
    asnPool.failAt = n ? asnPool.taken + n : 0;
    if (!n)
        Resume();
}

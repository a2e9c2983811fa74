#include "zol/ber/asn_pool.h"

#include <cstdlib>

__thread AsnPoolLists asnPool __attribute__((tls_model("initial-exec")));

namespace {

// Returns the kept blocks when the thread ends, and leaves every list
// counting as full.
struct PoolReaper {
    ~PoolReaper() {
        for (std::size_t c = 0; c < AsnPoolClasses; ++c) {
            while (AsnFreeBlock* b = asnPool.heads[c]) {
                asnPool.heads[c] = b->next;
                std::free(b);
            }
            asnPool.kept[c] = AsnPoolKeep;
        }
    }
};
thread_local PoolReaper reaper;

}  // namespace

void* AsnPoolTakeSlow(std::size_t size) {
    ++asnPool.taken;
#ifndef ZOL_NO_VALUE_POOL
    const std::size_t c = (size - 1) / AsnPoolStep;
    if (c < AsnPoolClasses) {
        // A block of a class whose list is empty, of the size of the
        // class; the first makes sure the lists are emptied when the
        // thread ends.
        if (!asnPool.reaperSet) {
            asnPool.reaperSet = true;
            (void)&reaper;  // constructs it, so that its destructor runs at thread end
        }
        return std::malloc((c + 1) * AsnPoolStep);
    }
#endif
    return std::malloc(size ? size : 1);
}

void AsnPoolGiveSlow(void* p, std::size_t) { std::free(p); }

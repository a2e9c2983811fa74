#include "zol/ber/asn_type.h"

#include <cstdio>
#include <cstdlib>
#include <ostream>

#include "zol/meta/asn_desc.h"

unsigned short indentLevel = 0;
const unsigned short indentStep = 4;

const AsnTypeDesc AsnType::_desc(nullptr, nullptr, false, AsnTypeDesc::VOID, nullptr);

AsnType::~AsnType() {}

AsnType* AsnType::Clone() const { return nullptr; }

void AsnType::BDec(AsnBuf&, AsnLen&, DecodeEnv env) {
    AsnDecodeFail(env, AsnNoDecoderCode,
                  "ERROR - Attempt to decode an improperly formed ANY type (programming error).");
}

AsnLen AsnType::BEnc(AsnBuf&) const {
    AsnWarn("ERROR - Attempt to encode an improperly formed ANY type (programming error).");
    return 0;
}

void AsnType::Print(std::ostream& os) const {
    os << "ERROR - Attempt to print an improperly formed ANY type (programming error)." << std::endl;
}

const AsnTypeDesc* AsnType::_getdesc() const { return &_desc; }

AsnType* AsnType::_getref(const char*, bool) { return nullptr; }

int AsnType::BEncPdu(AsnBuf& b, AsnLen& bytesEncoded) const {
    bytesEncoded = BEnc(b);
    return b.WriteError() ? 0 : 1;
}

int AsnType::BDecPdu(AsnBuf& b, AsnLen& bytesDecoded) {
    bytesDecoded = 0;
    DecodeEnv env;
    if (setjmp(env) == 0) {
        BDec(b, bytesDecoded, env);
        return b.ReadError() ? 0 : 1;
    }
    return 0;
}

// --- allocation of values ---------------------------------------------------

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
// destructors ran: values freed after that go straight back to free().
struct Pool {
    FreeBlock* heads[kPoolClasses];
    uint32_t kept[kPoolClasses];
    bool reaperSet;
    bool dead;
    uint64_t allocations;
};
thread_local Pool pool;

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

inline void* Take(std::size_t size) {
    ++pool.allocations;
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

inline void Give(void* p, std::size_t size) {
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

}  // namespace

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

uint64_t AsnType::Allocations() { return pool.allocations; }

void Indent(std::ostream& os, unsigned short n) {
    static const char blanks[] = "                                                                ";
    const unsigned short chunk = sizeof blanks - 1;
    for (; n > chunk; n -= chunk)
        os.write(blanks, chunk);
    os.write(blanks, n);
}

std::ostream& operator<<(std::ostream& os, const AsnType& v) {
    v.Print(os);
    return os;
}

#include "zol/universal/asn_oid.h"

#include <climits>
#include <cstring>
#include <new>

#include "zol/ber/asn_print.h"

const AsnTypeDesc AsnOid::_desc(nullptr, nullptr, false, AsnTypeDesc::OBJECT_IDENTIFIER, nullptr);

namespace {

// Base-128 groups that the widest arc needs.
const size_t MaxGroups = (sizeof(unsigned long) * CHAR_BIT + 6) / 7;

// Writes `v` in base 128, high group first, the top bit on all octets but
// the last; returns the number of octets.
size_t PutSubId(unsigned long v, char* out) {
    size_t n = 1;
    for (unsigned long rest = v >> 7; rest; rest >>= 7)
        ++n;
    for (size_t i = n; i-- > 0; v >>= 7)
        out[i] = static_cast<char>((v & 0x7F) | (i + 1 < n ? 0x80 : 0));
    return n;
}

// Reads one subidentifier from `pos`: it ends at an octet with the top bit
// clear or at the end of the octets. Too long a one wraps.
unsigned long GetSubId(const char* oid, size_t len, size_t& pos) {
    unsigned long v = 0;
    while (pos < len) {
        unsigned char c = static_cast<unsigned char>(oid[pos++]);
        v = (v << 7) | (c & 0x7F);
        if (!(c & 0x80))
            break;
    }
    return v;
}

// A block of `len` octets; throws std::bad_alloc when the heap is exhausted.
char* NewOctets(size_t len) {
    if (void* p = AsnPoolTake(len))
        return static_cast<char*>(p);
    AsnThrowBadAlloc();
}

void FreeOctets(char* oid, size_t len) { AsnPoolGive(oid, len); }

}  // namespace

AsnOid::~AsnOid() { FreeOctets(oid, oidLen); }

void AsnOid::Clear() {
    FreeOctets(oid, oidLen);
    oid = nullptr;
    oidLen = 0;
}

void AsnOid::Set(const char* encoded, size_t len) {
    if (encoded == oid)
        return;
    if (!encoded) {
        oid = nullptr;
        oidLen = 0;
        return;
    }
    oid = NewOctets(len);
    if (len)
        std::memcpy(oid, encoded, len);
    oidLen = len;
}

void AsnOid::Set(const AsnOid& o) {
    if (&o != this)
        Set(o.oid, o.oidLen);
}

void AsnOid::Set(unsigned long a1, unsigned long a2, long a3, long a4, long a5, long a6, long a7,
                 long a8, long a9, long a10, long a11) {
    // The subidentifiers, then their octets, sized for the worst case of
    // eleven arcs.
    unsigned long arcWords[11];
    char arcOctets[11 * MaxGroups];
    const long rest[9] = {a3, a4, a5, a6, a7, a8, a9, a10, a11};
    size_t words = 0;
    arcWords[words++] = a1 * 40 + a2;
    for (long arc : rest) {
        if (arc <= 0)
            break;
        arcWords[words++] = static_cast<unsigned long>(arc);
    }
    size_t len = 0;
    for (size_t i = 0; i < words; ++i)
        len += PutSubId(arcWords[i], arcOctets + len);
    oid = NewOctets(len);
    std::memcpy(oid, arcOctets, len);
    oidLen = len;
}

// The new block is made before the old one is freed, so a source that lies
// inside the value's own block stays readable.
void AsnOid::ReSet(const char* encoded, size_t len) {
    if (encoded == oid)
        return;
    char* old = oid;
    size_t oldLen = oidLen;
    Set(encoded, len);
    FreeOctets(old, oldLen);
}

void AsnOid::ReSet(const AsnOid& o) {
    if (&o != this)
        ReSet(o.oid, o.oidLen);
}

void AsnOid::ReSet(unsigned long a1, unsigned long a2, long a3, long a4, long a5, long a6, long a7,
                   long a8, long a9, long a10, long a11) {
    Clear();
    Set(a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11);
}

unsigned long AsnOid::NumArcs() const {
    unsigned long n = 1;
    for (size_t pos = 0; pos < oidLen; ++n)
        GetSubId(oid, oidLen, pos);
    return n;
}

bool AsnOid::OidEquiv(const AsnOid& o) const {
    return oidLen == o.oidLen && (oidLen == 0 || std::strncmp(oid, o.oid, oidLen) == 0);
}

AsnType* AsnOid::Clone() const { return AsnClone(*this); }

const AsnTypeDesc* AsnOid::_getdesc() const { return &_desc; }

AsnLen AsnOid::BEnc(AsnBuf& b) const { return BEncLenTag(b, BEncContent(b), AsnOidTag); }

void AsnOid::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnTag tag = BDecTag(b, bytesDecoded, env);
    if (tag != AsnOidTag)
        AsnDecodeFail(env, AsnOidWrongTagCode, "AsnOid::BDec: ERROR tag on OBJECT IDENTIFIER is wrong.");
    AsnLen len = BDecLen(b, bytesDecoded, env);
    BDecContent(b, tag, len, bytesDecoded, env);
}

void AsnOid::BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
    if (size_t(b.dataEnd - b.readPos) < elmtLen)
        b.readFailed = true;
    if (b.ReadError())
        AsnDecodeFail(env, AsnOidPastEndCode, "BDecOctetString: ERROR - decoded past end of data");
    char* octets = static_cast<char*>(AsnPoolTake(elmtLen));
    if (!octets)
        AsnDecodeOutOfMemory(env);
    FreeOctets(oid, oidLen);  // held by a value decoded again, as an open type's clone
    oid = octets;
    oidLen = elmtLen;
    b.CopyOut(oid, elmtLen);
    bytesDecoded += elmtLen;
}

// The first subidentifier v holds two arcs: v / 40, taken as an unsigned
// 16-bit number and limited to 2, and the rest. An empty value prints
// nothing between the braces; a last subidentifier cut short by the end
// of the octets prints with the groups it has.
void AsnOid::PrintTo(AsnPrintOut& out) const {
    out.Put('{');
    if (!oid) {
        out.Put("-- void --");
    } else if (oidLen) {
        size_t pos = 0;
        unsigned long v = GetSubId(oid, oidLen, pos);
        unsigned long first = static_cast<unsigned short>(v / 40);
        if (first > 2)
            first = 2;
        out.Decimal(uint64_t(first));
        out.Put(' ');
        out.Decimal(uint64_t(v - 40 * first));
        while (pos < oidLen) {
            out.Put(' ');
            out.Decimal(uint64_t(GetSubId(oid, oidLen, pos)));
        }
    }
    out.Put('}');
}

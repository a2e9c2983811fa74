// OBJECT IDENTIFIER: the content octets exactly as they stand on the wire.
// Arcs are worked out only when the value is built from arcs, counted or
// printed.
#pragma once

#include <cstddef>

#include "zol/ber/asn_type.h"
#include "zol/meta/asn_desc.h"

class AsnOid : public AsnType {
public:
    // Read them freely; they change only through Set, ReSet, Clear and
    // decoding, since the block is given back by its length.
    size_t oidLen = 0;      // number of content octets
    char* oid = nullptr;    // owned block of exactly oidLen octets, no terminator, of asn_pool.h

    AsnOid() {}
    AsnOid(const char* encoded, size_t len) { Set(encoded, len); }
    AsnOid(const AsnOid& o) : AsnType() { Set(o); }
    // From arcs; the list ends at the first of a3 to a11 that is 0 or
    // negative.
    AsnOid(unsigned long a1, unsigned long a2, long a3 = -1, long a4 = -1, long a5 = -1,
           long a6 = -1, long a7 = -1, long a8 = -1, long a9 = -1, long a10 = -1, long a11 = -1) {
        Set(a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11);
    }
    ~AsnOid() override;

    // Set fills a value that holds nothing; ReSet replaces what it holds.
    // Either does nothing when given the value's own block. A null block
    // makes the value empty (no octets, null pointer).
    void Set(const char* encoded, size_t len);
    void Set(const AsnOid& o);
    // a1 * 40 + a2 must stay below 2 to the power 31.
    void Set(unsigned long a1, unsigned long a2, long a3 = -1, long a4 = -1, long a5 = -1,
             long a6 = -1, long a7 = -1, long a8 = -1, long a9 = -1, long a10 = -1, long a11 = -1);
    void ReSet(const char* encoded, size_t len);
    void ReSet(const AsnOid& o);
    void ReSet(unsigned long a1, unsigned long a2, long a3 = -1, long a4 = -1, long a5 = -1,
               long a6 = -1, long a7 = -1, long a8 = -1, long a9 = -1, long a10 = -1, long a11 = -1);

    AsnOid& operator=(const AsnOid& o) {
        ReSet(o);
        return *this;
    }
    bool operator==(const AsnOid& o) const { return OidEquiv(o); }
    bool operator!=(const AsnOid& o) const { return !OidEquiv(o); }

    operator const char*() const { return oid; }
    operator char*() { return oid; }
    const char* Str() const { return oid; }
    size_t Len() const { return oidLen; }
    // Subidentifiers plus one, since the first holds two arcs; 1 when empty.
    // A subidentifier ends at an octet with its top bit clear or at the end.
    unsigned long NumArcs() const;

    AsnType* Clone() const override;
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    AsnLen BEnc(AsnBuf& b) const override;
    void PrintTo(AsnPrintOut& out) const override;
    const AsnTypeDesc* _getdesc() const override;
    void Clear() override;

    AsnLen BEncContent(AsnBuf& b) const {
        b.PutSegRvs(oid, oidLen);
        return static_cast<AsnLen>(oidLen);
    }
    // Takes the octets as they come, proper subidentifiers or not.
    void BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);

    static const AsnTypeDesc _desc;

private:
    // Equal lengths, then the octets as strncmp compares them: two values
    // that agree up to a pair of zero octets count as equal.
    bool OidEquiv(const AsnOid& o) const;
};

// BIT STRING: a counted run of bits, most significant bit of the first
// octet first. Written primitive; read primitive or constructed.
#pragma once

#include <cstddef>

#include "zol/ber/asn_type.h"
#include "zol/meta/asn_desc.h"

class AsnBits : public AsnType {
public:
    // Read them freely; they change only through Set, ReSet, Clear and
    // decoding, since the block is given back by its length.
    size_t bitLen = 0;      // number of bits
    char* bits = nullptr;   // owned block of (bitLen + 7) / 8 octets, of asn_pool.h

    AsnBits() {}
    explicit AsnBits(size_t numBits) { Set(numBits); }
    AsnBits(const char* bitOcts, size_t numBits) { Set(bitOcts, numBits); }
    AsnBits(const AsnBits& b) : AsnType() { Set(b); }
    ~AsnBits() override;

    // Set fills a value that holds nothing; ReSet replaces what it holds.
    void Set(size_t numBits);
    void Set(const char* bitOcts, size_t numBits);
    void Set(const AsnBits& b);
    void ReSet(size_t numBits);
    void ReSet(const char* bitOcts, size_t numBits);
    void ReSet(const AsnBits& b);

    AsnBits& operator=(const AsnBits& b) {
        ReSet(b);
        return *this;
    }
    bool operator==(const AsnBits& o) const { return BitsEquiv(o); }
    bool operator!=(const AsnBits& o) const { return !BitsEquiv(o); }

    size_t BitLen() const { return bitLen; }
    void SetBit(size_t n) {
        if (n < bitLen)
            bits[n / 8] = static_cast<char>(bits[n / 8] | (0x80 >> (n % 8)));
    }
    void ClrBit(size_t n) {
        if (n < bitLen)
            bits[n / 8] = static_cast<char>(bits[n / 8] & ~(0x80 >> (n % 8)));
    }
    bool GetBit(size_t n) const { return n < bitLen && (bits[n / 8] & (0x80 >> (n % 8))) != 0; }

    AsnType* Clone() const override;
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    AsnLen BEnc(AsnBuf& b) const override;
    void PrintTo(AsnPrintOut& out) const override;
    const AsnTypeDesc* _getdesc() const override;
    void Clear() override;

    AsnLen BEncContent(AsnBuf& b) const;
    void BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);

    static const AsnNamesTypeDesc _desc;

private:
    size_t OctetLen() const { return (bitLen + 7) / 8; }
    bool BitsEquiv(const AsnBits& other) const;
    void BDecConsBits(AsnBuf& b, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);
};

// Unused bits of the latest component while a constructed value is decoded.
extern __thread unsigned short pendingUnusedBits ZOL_INITIAL_EXEC;

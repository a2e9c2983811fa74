// REAL over a 64-bit double: written in the binary form with base 2, read
// in the binary forms of bases 2, 8 and 16. The decimal form is refused.
#pragma once

#include <cstdint>
#include <cstring>

#include "zol/ber/asn_type.h"
#include "zol/meta/asn_desc.h"
#include "zol/universal/asn_int.h"

class AsnReal : public AsnType {
public:
    double value = 0.0;

    AsnReal() {}
    AsnReal(double v) : value(v) {}
    AsnReal(const AsnReal&) = default;
    AsnReal& operator=(double v) {
        value = v;
        return *this;
    }
    AsnReal& operator=(const AsnReal&) = default;
    operator double() const { return value; }

    AsnType* Clone() const override;
    void Clear() override { value = 0.0; }
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    AsnLen BEnc(AsnBuf& b) const override;
    void PrintTo(AsnPrintOut& out) const override;
    const AsnTypeDesc* _getdesc() const override;

    // Base 2, the mantissa in whole octets with the trailing zero ones
    // dropped. A normal number is taken apart here, inline; zero, NaN,
    // infinities, subnormals and a nearly full block go the long way.
    ZOL_ALWAYS_INLINE AsnLen BEncContent(AsnBuf& b) const {
        uint64_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        int biased = int((bits >> 52) & 0x7FF);
        if (__builtin_expect(biased == 0 || biased == 0x7FF || !b.HasRoom(13), 0))
            return BEncContentSlow(b);
        char* p = b.dataBegin;
        AsnLen len = PutNormal(p, bits, biased);
        b.dataBegin = p - len;
        return len;
    }
    // The whole element under `tag`, as AsnInt::BEncTLV: the content is
    // never longer than 13 octets, so the length is one octet.
    ZOL_ALWAYS_INLINE AsnLen BEncTLV(AsnBuf& b, AsnTag tag) const {
        uint64_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        int biased = int((bits >> 52) & 0x7FF);
        if (__builtin_expect(biased == 0 || biased == 0x7FF || !b.HasRoom(17), 0))
            return BEncShortLenTag(b, BEncContent(b), tag);
        char* p = b.dataBegin;
        AsnLen len = PutNormal(p, bits, biased);
        p -= len;
        *--p = static_cast<char>(len);
        b.dataBegin = BPutTagUnchecked(p, tag);
        return len + 1 + BTagLen(tag);
    }
    // A normal number in base 2, 8 or 16 with a one- or two-octet exponent
    // and a mantissa of at most 53 bits, all of it in the buffer, is put
    // together here from its octets; everything else goes the long way.
    ZOL_ALWAYS_INLINE void BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded,
                                       DecodeEnv env) {
        if (__builtin_expect(!GetNormal(b, elmtLen), 0))
            return BDecContentSlow(b, tag, elmtLen, bytesDecoded, env);
        bytesDecoded += elmtLen;
    }

    static const AsnTypeDesc _desc;

private:
    // Every value, byte by byte where the block is nearly full.
    AsnLen BEncContentSlow(AsnBuf& b) const;
    // Every form the decoder takes, octet by octet.
    void BDecContentSlow(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);

    // The value of the content at the read position when it is a normal
    // double that ldexp of the mantissa gives exactly: a mantissa of one to
    // seven octets whose set bits span at most 53, so that the long way's
    // octet-by-octet sum in a double is exact too. Its significand and
    // exponent are then built from the octets. Advances and returns true;
    // otherwise reads nothing and returns false.
    ZOL_ALWAYS_INLINE bool GetNormal(AsnBuf& b, AsnLen elmtLen) {
        if (elmtLen < 3 || elmtLen > 10 || b.readFailed || size_t(b.dataEnd - b.readPos) < elmtLen)
            return false;
        const unsigned char* s = reinterpret_cast<const unsigned char*>(b.readPos);
        unsigned first = s[0];
        if (!(first & 0x80) || (first & 0x02) || (first & 0x30) == 0x30)
            return false;
        AsnLen expLen = 1 + (first & 0x01);
        int32_t exp = static_cast<int8_t>(s[1]);
        if (expLen == 2)
            exp = exp * 256 + s[2];
        if (elmtLen - 1 - expLen > 7)
            return false;
        uint64_t mant = 0;
        AsnLen mantLen = elmtLen - 1 - expLen;
        if (size_t(b.dataEnd - b.readPos) >= 1 + expLen + 8) {
            // Eight octets lie ahead: one load, the mantissa's kept.
            std::memcpy(&mant, s + 1 + expLen, 8);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
            mant = __builtin_bswap64(mant);
#endif
            mant = mantLen ? mant >> (64 - 8 * mantLen) : 0;
        } else {
            for (AsnLen k = 1 + expLen; k < elmtLen; ++k)
                mant = (mant << 8) | s[k];
        }
        if (mant == 0 || ((mant >> __builtin_ctzll(mant)) >> 53))
            return false;
        int log2Base = (first & 0x30) == 0 ? 1 : (first & 0x30) == 0x10 ? 3 : 4;
        int lead = 63 - __builtin_clzll(mant);
        int biased = exp * log2Base + int((first >> 2) & 0x03) + lead + 1023;
        if (biased < 1 || biased > 2046)
            return false;
        uint64_t sig = lead >= 52 ? mant >> (lead - 52) : mant << (52 - lead);
        uint64_t bits = (sig & 0x000FFFFFFFFFFFFFull) | (uint64_t(biased) << 52) | (uint64_t(first & 0x40) << 57);
        std::memcpy(&value, &bits, sizeof bits);
        b.readPos += elmtLen;
        return true;
    }

    // The content of a normal number, ending at `p`, which has room for
    // 13 octets below it; returns its length. value = 0.m * 2^(biased -
    // 1022) with 0.m in [0.5, 1): the significand left-aligned in 64 bits
    // gives the mantissa octets, seven at most, the trailing zero ones
    // dropped. Seven or six of them are stored as one eight-octet word,
    // whose extra octets the exponent and the first octet overwrite.
    ZOL_ALWAYS_INLINE static AsnLen PutNormal(char* p, uint64_t bits, int biased) {
        uint64_t m = ((bits & 0x000FFFFFFFFFFFFFull) | 0x0010000000000000ull) << 11;
        AsnLen mantLen = 8 - AsnLen(__builtin_ctzll(m) >> 3);
        int32_t exp = biased - 1022 - 8 * int32_t(mantLen);
        AsnLen expLen = AsnInt::ContentLen(exp);
        uint64_t mant = m >> (64 - 8 * mantLen);
        char* q;
        if (mantLen >= 6) {
            BPut64Unchecked(p, mant);
            q = p - mantLen;
        } else {
            q = p;
            for (AsnLen i = 0; i < mantLen; ++i, mant >>= 8)
                *--q = static_cast<char>(mant);
        }
        *--q = static_cast<char>(exp);
        if (expLen > 1)
            *--q = static_cast<char>(exp >> 8);
        *--q = static_cast<char>(((bits >> 63) ? 0xC0 : 0x80) | (expLen - 1));
        return 1 + expLen + mantLen;
    }
};

extern const AsnReal PLUS_INFINITY;
extern const AsnReal MINUS_INFINITY;

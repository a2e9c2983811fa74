#include "zol/universal/asn_real.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#include "zol/ber/asn_print.h"

const AsnTypeDesc AsnReal::_desc(nullptr, nullptr, false, AsnTypeDesc::REAL, nullptr);

const AsnReal PLUS_INFINITY(std::numeric_limits<double>::infinity());
const AsnReal MINUS_INFINITY(-std::numeric_limits<double>::infinity());

AsnType* AsnReal::Clone() const { return AsnClone(*this); }

const AsnTypeDesc* AsnReal::_getdesc() const { return &_desc; }

void AsnReal::PrintTo(AsnPrintOut& out) const { out.Real(value); }

AsnLen AsnReal::BEncContentSlow(AsnBuf& b) const {
    // Zero (either sign) and NaN have empty content.
    if (value == 0.0 || std::isnan(value))
        return 0;
    if (std::isinf(value)) {
        b.PutByteRvs(value < 0 ? 0x41 : 0x40);
        return 1;
    }

    // The value as m * 2^e with m in [0.5, 1), as frexp gives it, taken
    // from the bits: m is the significand left-aligned in 64 bits.
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    uint64_t frac = bits & 0x000FFFFFFFFFFFFFull;
    int biased = int((bits >> 52) & 0x7FF);
    uint64_t m;
    int e;
    if (biased) {
        m = (frac | 0x0010000000000000ull) << 11;
        e = biased - 1022;
    } else {  // subnormal: the first set bit goes to the top
        int lz = __builtin_clzll(frac);
        m = frac << lz;
        e = -1010 - lz;
    }
    unsigned char first = (bits >> 63) ? 0xC0 : 0x80;

    // Eight mantissa octets at most; trailing zero octets are dropped.
    AsnLen mantLen = 8 - AsnLen(__builtin_ctzll(m) >> 3);

    // The mantissa octets read as one integer times 2 to this power.
    int32_t exp = e - 8 * int32_t(mantLen);
    AsnLen expLen = AsnInt::ContentLen(exp);
    first |= static_cast<unsigned char>(expLen - 1);
    uint64_t mant = m >> (64 - 8 * mantLen);

    AsnLen len = 1 + expLen + mantLen;
    uint32_t ev = static_cast<uint32_t>(exp);
    if (__builtin_expect(b.HasRoom(len), 1)) {
        char* p = b.dataBegin;
        for (AsnLen i = 0; i < mantLen; ++i, mant >>= 8)
            *--p = static_cast<char>(mant);
        for (AsnLen i = 0; i < expLen; ++i, ev >>= 8)
            *--p = static_cast<char>(ev);
        *--p = static_cast<char>(first);
        b.dataBegin = p;
        return len;
    }
    // Nearly full: the mantissa goes as one segment or not at all.
    char octs[8];
    for (AsnLen i = mantLen; i > 0; --i, mant >>= 8)
        octs[i - 1] = static_cast<char>(mant);
    b.PutSegRvs(octs, mantLen);
    for (AsnLen i = 0; i < expLen; ++i, ev >>= 8)
        b.PutByteRvs(static_cast<unsigned char>(ev));
    b.PutByteRvs(first);
    return len;
}

AsnLen AsnReal::BEnc(AsnBuf& b) const { return BEncLenTag(b, BEncContent(b), AsnRealTag); }

void AsnReal::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnDecWhole(*this, b, bytesDecoded, env, AsnRealTag, AsnRealWrongTagCode, "AsnReal::BDec: ERROR tag on REAL is wrong.");
}

// A read past the end yields zero octets and sets the buffer's read flag,
// which the next tag or length read, or the outermost frame, reports.
void AsnReal::BDecContentSlow(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
    if (elmtLen == 0) {
        value = 0.0;
        return;
    }
    unsigned char first = b.GetByte();
    if (elmtLen == 1) {
        bytesDecoded += 1;
        if (first == 0x40)
            value = PLUS_INFINITY.value;
        else if (first == 0x41)
            value = MINUS_INFINITY.value;
        else
            AsnDecodeFail(env, AsnRealOneOctetCode,
                          "AsnReal::BDecContent: ERROR - unrecognized 1 octet length real number");
        return;
    }
    if (!(first & 0x80))
        AsnDecodeFail(env, AsnRealDecimalCode,
                      "AsnReal::BDecContent: ERROR - decimal REAL form is not currently supported");

    // Exponent: one to three octets, or a count octet and that many more
    // (a count of 0 still reads one). Beyond four octets the oldest fall out.
    uint32_t exp = static_cast<uint32_t>(static_cast<int32_t>(static_cast<int8_t>(b.GetByte())));
    AsnLen i;
    switch (first & 0x03) {
    case 0:
        i = 1;
        break;
    case 1:
    case 2:
        i = AsnLen(first & 0x03) + 1;
        for (AsnLen k = 1; k < i; ++k)
            exp = (exp << 8) | b.GetByte();
        break;
    default: {
        AsnLen n = exp & 0xFFu;
        exp = static_cast<uint32_t>(static_cast<int32_t>(static_cast<int8_t>(b.GetByte())));
        for (AsnLen k = 1; k < n; ++k)
            exp = (exp << 8) | b.GetByte();
        i = n + 1;
        break;
    }
    }

    // The mantissa is what the length leaves; reading stops at the end of
    // the data, so a huge length costs no more than the bytes present.
    double mant = 0.0;
    AsnLen used = i + 1;
    for (AsnLen k = used; k < elmtLen && !b.ReadError(); ++k)
        mant = mant * 256.0 + b.GetByte();

    int scale = (first >> 2) & 0x03;
    int log2Base;
    switch (first & 0x30) {
    case 0x00:
        log2Base = 1;
        break;
    case 0x10:
        log2Base = 3;
        break;
    case 0x20:
        log2Base = 4;
        break;
    default:
        AsnDecodeFail(env, AsnRealBaseCode,
                      "AsnReal::BDecContent: ERROR - unsupported base for a binary real number.");
    }

    // base^exp * 2^scale * mant, as one exact power of two; the power is
    // clamped far outside the range of a double so the product cannot wrap.
    int64_t p = int64_t(static_cast<int32_t>(exp)) * log2Base + scale;
    if (p > 100000)
        p = 100000;
    if (p < -100000)
        p = -100000;
    value = std::ldexp(mant, static_cast<int>(p));
    if (first & 0x40)
        value = -value;
    bytesDecoded += elmtLen;
}

#include "zol/universal/asn_real.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <ostream>

const AsnTypeDesc AsnReal::_desc(nullptr, nullptr, false, AsnTypeDesc::REAL, nullptr);

const AsnReal PLUS_INFINITY(std::numeric_limits<double>::infinity());
const AsnReal MINUS_INFINITY(-std::numeric_limits<double>::infinity());

AsnType* AsnReal::Clone() const { return new (std::nothrow) AsnReal(*this); }

const AsnTypeDesc* AsnReal::_getdesc() const { return &_desc; }

void AsnReal::Print(std::ostream& os) const { os << value; }

AsnLen AsnReal::BEncContent(AsnBuf& b) const {
    // Zero (either sign) and NaN have empty content.
    if (value == 0.0 || std::isnan(value))
        return 0;
    if (std::isinf(value)) {
        b.PutByteRvs(value < 0 ? 0x41 : 0x40);
        return 1;
    }

    int e;
    double m = std::frexp(value, &e);
    unsigned char first = m < 0 ? 0xC0 : 0x80;
    m = std::fabs(m);

    // Eight mantissa octets at most; trailing zero octets are dropped.
    unsigned char mant[8];
    AsnLen mantLen = 0;
    for (int i = 0; i < 8; ++i) {
        m *= 256.0;
        unsigned d = static_cast<unsigned>(m);
        mant[i] = static_cast<unsigned char>(d);
        m -= d;
        if (d)
            mantLen = AsnLen(i + 1);
    }

    // The mantissa octets read as one integer times 2 to this power.
    int32_t exp = e - 8 * int32_t(mantLen);
    uint32_t bits = static_cast<uint32_t>(exp < 0 ? ~exp : exp);
    AsnLen expLen = 4;
    for (uint32_t mask = 0x7F800000u; expLen > 1 && !(bits & mask); --expLen, mask >>= 8) {
    }
    first |= static_cast<unsigned char>(expLen - 1);

    b.PutSegRvs(reinterpret_cast<const char*>(mant), mantLen);
    uint32_t ev = static_cast<uint32_t>(exp);
    for (AsnLen i = 0; i < expLen; ++i, ev >>= 8)
        b.PutByteRvs(static_cast<unsigned char>(ev));
    b.PutByteRvs(first);
    return 1 + expLen + mantLen;
}

AsnLen AsnReal::BEnc(AsnBuf& b) const { return BEncLenTag(b, BEncContent(b), 0x09000000u); }

void AsnReal::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnDecWhole(*this, b, bytesDecoded, env, 0x09000000u, -58, "AsnReal::BDec: ERROR tag on REAL is wrong.");
}

// A read past the end yields zero octets and sets the buffer's read flag,
// which the next tag or length read, or the outermost frame, reports.
void AsnReal::BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
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
            AsnDecodeFail(env, -18,
                          "AsnReal::BDecContent: ERROR - unrecognized 1 octet length real number");
        return;
    }
    if (!(first & 0x80))
        AsnDecodeFail(env, -20,
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
        AsnDecodeFail(env, -19,
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

// INTEGER, ENUMERATED, BOOLEAN and NULL: the smallest encodings, written
// with a raw one-octet length since their content is 0 to 4 octets.
#pragma once

#include <cstdint>

#include "zol/ber/asn_type.h"
#include "zol/meta/asn_desc.h"

class AsnInt : public AsnType {
public:
    int32_t value = 0;

    AsnInt() {}
    AsnInt(int32_t v) : value(v) {}
    AsnInt(const AsnInt&) = default;
    AsnInt& operator=(int32_t v) {
        value = v;
        return *this;
    }
    AsnInt& operator=(const AsnInt&) = default;
    operator int32_t() const { return value; }
    void Set(int32_t v) { value = v; }
    void ReSet(int32_t v) { value = v; }

    AsnType* Clone() const override;
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    AsnLen BEnc(AsnBuf& b) const override;
    void Print(std::ostream& os) const override;
    const AsnTypeDesc* _getdesc() const override;

    // Two's complement in the fewest octets, 1 to 4.
    AsnLen BEncContent(AsnBuf& b) const {
        uint32_t v = static_cast<uint32_t>(value);
        AsnLen len = 4;
        uint32_t mask = 0x7F800000u;
        for (; len > 1; --len, mask >>= 8) {
            if (value >= 0 ? (v & mask) != 0 : (v & mask) != mask)
                break;
        }
        for (AsnLen i = 0; i < len; ++i, v >>= 8)
            b.PutByteRvs(static_cast<unsigned char>(v));
        return len;
    }
    // Takes non-minimal forms; a content of 0 octets still reads one.
    void BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
        if (elmtLen > 4)
            AsnDecodeFail(env, -7, "AsnInt::BDecContent: ERROR - integer is too big to decode.");
        uint32_t v = static_cast<uint32_t>(static_cast<int32_t>(static_cast<int8_t>(b.GetByte())));
        for (AsnLen i = 1; i < elmtLen; ++i)
            v = (v << 8) | b.GetByte();
        bytesDecoded += elmtLen;
        if (b.ReadError())
            AsnDecodeFail(env, -8, "AsnInt::BDecContent: ERROR - decoded past end of data.");
        value = static_cast<int32_t>(v);
    }

    static const AsnNamesTypeDesc _desc;
};

class AsnEnum : public AsnInt {
public:
    AsnEnum() {}
    AsnEnum(int32_t v) : AsnInt(v) {}
    AsnEnum(const AsnEnum&) = default;
    AsnEnum& operator=(const AsnEnum&) = default;
    using AsnInt::operator=;

    AsnType* Clone() const override;
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    AsnLen BEnc(AsnBuf& b) const override;
    const AsnTypeDesc* _getdesc() const override;

    static const AsnEnumTypeDesc _desc;
};

class AsnBool : public AsnType {
public:
    bool value = false;

    AsnBool() {}
    AsnBool(bool v) : value(v) {}
    AsnBool(const AsnBool&) = default;
    AsnBool& operator=(bool v) {
        value = v;
        return *this;
    }
    AsnBool& operator=(const AsnBool&) = default;
    operator bool() const { return value; }

    AsnType* Clone() const override;
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    AsnLen BEnc(AsnBuf& b) const override;
    void Print(std::ostream& os) const override;
    const AsnTypeDesc* _getdesc() const override;

    AsnLen BEncContent(AsnBuf& b) const {
        b.PutByteRvs(value ? 0xFF : 0x00);
        return 1;
    }
    void BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
        if (elmtLen != 1)
            AsnDecodeFail(env, -5, "AsnBool::BDecContent: ERROR - boolean value too long.");
        unsigned char c = b.GetByte();
        ++bytesDecoded;
        if (b.ReadError())
            AsnDecodeFail(env, -6, "AsnBool::BDecContent: ERROR - decoded past end of data ");
        value = c != 0;
    }

    static const AsnTypeDesc _desc;
};

class AsnNull : public AsnType {
public:
    AsnNull() {}
    AsnNull(const AsnNull&) = default;
    AsnNull& operator=(const AsnNull&) { return *this; }

    AsnType* Clone() const override;
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    AsnLen BEnc(AsnBuf& b) const override;
    void Print(std::ostream& os) const override;
    const AsnTypeDesc* _getdesc() const override;

    AsnLen BEncContent(AsnBuf&) const { return 0; }
    void BDecContent(AsnBuf&, AsnTag, AsnLen elmtLen, AsnLen&, DecodeEnv env) {
        if (elmtLen != 0)
            AsnDecodeFail(env, -13, "AsnNull::BDecContent: ERROR - NULL values len is non-zero");
    }

    static const AsnTypeDesc _desc;
};

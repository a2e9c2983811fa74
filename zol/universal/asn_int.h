// INTEGER, ENUMERATED, BOOLEAN and NULL: the smallest encodings, written
// with a raw one-octet length since their content is 0 to 4 octets.
#pragma once

#include <cstdint>
#include <cstring>

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
    void Clear() override { value = 0; }
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    AsnLen BEnc(AsnBuf& b) const override;
    void PrintTo(AsnPrintOut& out) const override;
    const AsnTypeDesc* _getdesc() const override;

    // The number of octets of `v` in two's complement, fewest first: the
    // bits of its magnitude form plus a sign bit, rounded up to octets.
    static AsnLen ContentLen(int32_t v) {
        uint32_t u = static_cast<uint32_t>(v < 0 ? ~v : v);
        return AsnLen(40 - __builtin_clz(u | 1u)) >> 3;
    }
    // Two's complement in the fewest octets, 1 to 4.
    ZOL_ALWAYS_INLINE AsnLen BEncContent(AsnBuf& b) const {
        AsnLen len = ContentLen(value);
        if (__builtin_expect(!b.HasRoom(4), 0))
            return BEncContentSlow(b, len);
        uint32_t v = static_cast<uint32_t>(value);
        char* p = b.dataBegin;
        p[-1] = static_cast<char>(v);
        if (len > 1) {
            p[-2] = static_cast<char>(v >> 8);
            if (len > 2) {
                p[-3] = static_cast<char>(v >> 16);
                if (len > 3)
                    p[-4] = static_cast<char>(v >> 24);
            }
        }
        b.dataBegin = p - len;
        return len;
    }
    // The whole element: the identifier octets of `tag`, the one-octet
    // length and the content, after one test of the room. The content is
    // stored as two or four octets, and the length and tag overwrite what
    // lies below the content. Generated code writes its members so.
    ZOL_ALWAYS_INLINE AsnLen BEncTLV(AsnBuf& b, AsnTag tag) const {
        if (__builtin_expect(!b.HasRoom(8), 0))
            return BEncShortLenTag(b, BEncContent(b), tag);
        AsnLen len = ContentLen(value);
        uint32_t v = static_cast<uint32_t>(value);
        char* p = b.dataBegin;
        if (len <= 2)
            BPut16Unchecked(p, v);
        else
            BPut32Unchecked(p, v);
        p -= len;
        *--p = static_cast<char>(len);
        b.dataBegin = BPutTagUnchecked(p, tag);
        return len + 1 + BTagLen(tag);
    }
    // Takes non-minimal forms; a content of 0 octets still reads one. Where
    // four octets lie ahead they are loaded at once and shifted down to the
    // content's.
    ZOL_ALWAYS_INLINE void BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded,
                                       DecodeEnv env) {
        if (__builtin_expect(elmtLen - 1 < 4 && !b.readFailed && b.dataEnd - b.readPos >= 4, 1)) {
            uint32_t word;
            std::memcpy(&word, b.readPos, 4);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
            word = __builtin_bswap32(word);
#endif
            value = static_cast<int32_t>(word) >> (32 - 8 * elmtLen);
            b.readPos += elmtLen;
            bytesDecoded += elmtLen;
            return;
        }
        if (elmtLen > 4)
            AsnDecodeFail(env, AsnIntTooBigCode, "AsnInt::BDecContent: ERROR - integer is too big to decode.");
        uint32_t v = static_cast<uint32_t>(static_cast<int32_t>(static_cast<int8_t>(b.GetByte())));
        for (AsnLen i = 1; i < elmtLen; ++i)
            v = (v << 8) | b.GetByte();
        bytesDecoded += elmtLen;
        if (b.ReadError())
            AsnDecodeFail(env, AsnIntPastEndCode, "AsnInt::BDecContent: ERROR - decoded past end of data.");
        value = static_cast<int32_t>(v);
    }

    static const AsnNamesTypeDesc _desc;

private:
    // Byte by byte, for a block with less than four bytes of room.
    AsnLen BEncContentSlow(AsnBuf& b, AsnLen len) const;
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
    void Clear() override { value = false; }
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    AsnLen BEnc(AsnBuf& b) const override;
    void PrintTo(AsnPrintOut& out) const override;
    const AsnTypeDesc* _getdesc() const override;

    AsnLen BEncContent(AsnBuf& b) const {
        b.PutByteRvs(value ? 0xFF : 0x00);
        return 1;
    }
    // The whole element under `tag`, as AsnInt::BEncTLV.
    ZOL_ALWAYS_INLINE AsnLen BEncTLV(AsnBuf& b, AsnTag tag) const {
        if (__builtin_expect(!b.HasRoom(5), 0))
            return BEncShortLenTag(b, BEncContent(b), tag);
        char* p = b.dataBegin;
        p[-1] = static_cast<char>(value ? 0xFF : 0x00);
        p[-2] = 1;
        b.dataBegin = BPutTagUnchecked(p - 2, tag);
        return 2 + BTagLen(tag);
    }
    void BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
        if (elmtLen != 1)
            AsnDecodeFail(env, AsnBoolLengthCode, "AsnBool::BDecContent: ERROR - boolean value too long.");
        unsigned char c = b.GetByte();
        ++bytesDecoded;
        if (b.ReadError())
            AsnDecodeFail(env, AsnBoolPastEndCode, "AsnBool::BDecContent: ERROR - decoded past end of data ");
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
    void PrintTo(AsnPrintOut& out) const override;
    const AsnTypeDesc* _getdesc() const override;

    AsnLen BEncContent(AsnBuf&) const { return 0; }
    AsnLen BEncTLV(AsnBuf& b, AsnTag tag) const { return BEncShortLenTag(b, 0, tag); }
    void BDecContent(AsnBuf&, AsnTag, AsnLen elmtLen, AsnLen&, DecodeEnv env) {
        if (elmtLen != 0)
            AsnDecodeFail(env, AsnNullLengthCode, "AsnNull::BDecContent: ERROR - NULL values len is non-zero");
    }

    static const AsnTypeDesc _desc;
};

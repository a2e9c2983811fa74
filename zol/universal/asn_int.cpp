#include "zol/universal/asn_int.h"

#include <new>

#include "zol/ber/asn_print.h"

const AsnNamesTypeDesc AsnInt::_desc(nullptr, nullptr, false, AsnTypeDesc::INTEGER, nullptr, nullptr);
const AsnEnumTypeDesc AsnEnum::_desc(nullptr, nullptr, false, AsnTypeDesc::ENUMERATED, nullptr, nullptr);
const AsnTypeDesc AsnBool::_desc(nullptr, nullptr, false, AsnTypeDesc::BOOLEAN, nullptr);
const AsnTypeDesc AsnNull::_desc(nullptr, nullptr, false, AsnTypeDesc::NUL_, nullptr);

// INTEGER

AsnType* AsnInt::Clone() const { return AsnClone(*this); }

AsnLen AsnInt::BEncContentSlow(AsnBuf& b, AsnLen len) const {
    uint32_t v = static_cast<uint32_t>(value);
    for (AsnLen i = 0; i < len; ++i, v >>= 8)
        b.PutByteRvs(static_cast<unsigned char>(v));
    return len;
}

AsnLen AsnInt::BEnc(AsnBuf& b) const { return BEncShortLenTag(b, BEncContent(b), AsnIntegerTag); }

void AsnInt::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnDecWhole(*this, b, bytesDecoded, env, AsnIntegerTag, AsnIntWrongTagCode, "AsnInt::BDec: ERROR tag on INTEGER is wrong.");
}

void AsnInt::PrintTo(AsnPrintOut& out) const { out.Decimal(int64_t(value)); }

const AsnTypeDesc* AsnInt::_getdesc() const { return &_desc; }

// ENUMERATED

AsnType* AsnEnum::Clone() const { return AsnClone(*this); }

AsnLen AsnEnum::BEnc(AsnBuf& b) const { return BEncShortLenTag(b, BEncContent(b), AsnEnumeratedTag); }

void AsnEnum::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnDecWhole(*this, b, bytesDecoded, env, AsnEnumeratedTag, AsnEnumWrongTagCode, "AsnEnum::BDec: ERROR tag on ENUMERATED is wrong.");
}

const AsnTypeDesc* AsnEnum::_getdesc() const { return &_desc; }

// BOOLEAN

AsnType* AsnBool::Clone() const { return AsnClone(*this); }

AsnLen AsnBool::BEnc(AsnBuf& b) const { return BEncShortLenTag(b, BEncContent(b), AsnBooleanTag); }

void AsnBool::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnDecWhole(*this, b, bytesDecoded, env, AsnBooleanTag, AsnBoolWrongTagCode, "AsnBool::BDec: ERROR tag on BOOLEAN wrong.");
}

void AsnBool::PrintTo(AsnPrintOut& out) const { out.Put(value ? "TRUE" : "FALSE"); }

const AsnTypeDesc* AsnBool::_getdesc() const { return &_desc; }

// NULL

AsnType* AsnNull::Clone() const { return AsnClone(*this); }

AsnLen AsnNull::BEnc(AsnBuf& b) const { return BEncShortLenTag(b, 0, AsnNullTag); }

void AsnNull::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnDecWhole(*this, b, bytesDecoded, env, AsnNullTag, AsnNullWrongTagCode, "AsnNull::BDec: ERROR tag on NULL is wrong.");
}

void AsnNull::PrintTo(AsnPrintOut& out) const { out.Put("NULL"); }

const AsnTypeDesc* AsnNull::_getdesc() const { return &_desc; }

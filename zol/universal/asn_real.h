// REAL over a 64-bit double: written in the binary form with base 2, read
// in the binary forms of bases 2, 8 and 16. The decimal form is refused.
#pragma once

#include "zol/ber/asn_type.h"
#include "zol/meta/asn_desc.h"

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
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    AsnLen BEnc(AsnBuf& b) const override;
    void Print(std::ostream& os) const override;
    const AsnTypeDesc* _getdesc() const override;

    AsnLen BEncContent(AsnBuf& b) const;
    void BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);

    static const AsnTypeDesc _desc;
};

extern const AsnReal PLUS_INFINITY;
extern const AsnReal MINUS_INFINITY;

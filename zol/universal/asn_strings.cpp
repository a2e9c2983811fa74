#include "zol/universal/asn_strings.h"

#include <new>

// Each class differs only in its primitive tag octet and its failure code.
#define ZOL_STRING_BODY(Name, tag, code)                                          \
    AsnType* Name::Clone() const { return AsnClone(*this); }      \
    AsnLen Name::BEnc(AsnBuf& b) const { return BEncWithTag(b, tag); }           \
    void Name::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {            \
        BDecWithTag(b, bytesDecoded, env, tag, code, #Name "::BDec: ERROR - wrong tag"); \
    }

ZOL_STRING_BODY(ObjectDescriptor, 0x07, 50)
ZOL_STRING_BODY(NumericString, 0x12, 49)
ZOL_STRING_BODY(PrintableString, 0x13, 48)
ZOL_STRING_BODY(TeletexString, 0x14, 47)
ZOL_STRING_BODY(T61String, 0x14, 46)
ZOL_STRING_BODY(VideotexString, 0x15, 45)
ZOL_STRING_BODY(IA5String, 0x16, 44)
ZOL_STRING_BODY(GraphicString, 0x19, 43)
ZOL_STRING_BODY(VisibleString, 0x1A, 42)
ZOL_STRING_BODY(ISO646String, 0x1A, 41)
ZOL_STRING_BODY(GeneralString, 0x1B, 40)
ZOL_STRING_BODY(UTCTime, 0x17, 39)
ZOL_STRING_BODY(GeneralizedTime, 0x18, 38)

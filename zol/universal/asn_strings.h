// The thirteen universal character-string classes. Each is an OCTET STRING
// under its own tags; none checks its character set.
#pragma once

#include "zol/universal/asn_octs.h"

#define ZOL_STRING_CLASS(Name)                                                   \
    class Name : public AsnOcts {                                                \
    public:                                                                      \
        Name() {}                                                                \
        Name(const char* str) : AsnOcts(str) {}                                  \
        Name(const char* str, size_t len) : AsnOcts(str, len) {}                 \
        Name(const AsnOcts& o) : AsnOcts(o) {}                                   \
        Name(const Name& o) : AsnOcts(o) {}                                      \
        Name& operator=(const Name& o) {                                         \
            ReSet(o);                                                            \
            return *this;                                                        \
        }                                                                        \
        Name& operator=(const char* str) {                                       \
            ReSet(str);                                                          \
            return *this;                                                        \
        }                                                                        \
        AsnType* Clone() const override;                                         \
        AsnLen BEnc(AsnBuf& b) const override;                                   \
        void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;      \
    };

ZOL_STRING_CLASS(ObjectDescriptor)
ZOL_STRING_CLASS(NumericString)
ZOL_STRING_CLASS(PrintableString)
ZOL_STRING_CLASS(TeletexString)
ZOL_STRING_CLASS(T61String)
ZOL_STRING_CLASS(VideotexString)
ZOL_STRING_CLASS(IA5String)
ZOL_STRING_CLASS(GraphicString)
ZOL_STRING_CLASS(VisibleString)
ZOL_STRING_CLASS(ISO646String)
ZOL_STRING_CLASS(GeneralString)
ZOL_STRING_CLASS(UTCTime)
ZOL_STRING_CLASS(GeneralizedTime)

#undef ZOL_STRING_CLASS

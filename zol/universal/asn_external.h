// EXTERNAL, the ASN.1 type that carries a value of another abstract syntax,
// and its encoding choice. The protocol's own messages use neither.
#pragma once

#include <cstdint>

#include "zol/ber/asn_type.h"
#include "zol/universal/asn_bits.h"
#include "zol/universal/asn_int.h"
#include "zol/universal/asn_octs.h"
#include "zol/universal/asn_oid.h"
#include "zol/universal/asn_strings.h"

class EXTERNALChoice : public AsnType {
public:
    enum ChoiceIdEnum : int {
        single_ASN1_typeCid = 0,   // [0] the octets of one BER value, in an OCTET STRING
        octet_alignedCid = 1,      // [1] IMPLICIT OCTET STRING
        arbitraryCid = 2,          // [2] IMPLICIT BIT STRING
    };

    int choiceId;      // the alternative in force
    AsnType* value;    // an AsnOcts for 0 and 1, an AsnBits for 2; owned

    EXTERNALChoice() { ConstructHelper(); }
    EXTERNALChoice(const EXTERNALChoice& o);
    ~EXTERNALChoice() override;
    void ConstructHelper() {
        choiceId = single_ASN1_typeCid;
        value = nullptr;
    }

    // The value as its alternative's class; null when another is in force.
    AsnOcts* octets() const {
        return choiceId == single_ASN1_typeCid || choiceId == octet_alignedCid ? static_cast<AsnOcts*>(value)
                                                                               : nullptr;
    }
    AsnBits* bits() const { return choiceId == arbitraryCid ? static_cast<AsnBits*>(value) : nullptr; }

    AsnType* Clone() const override;
    void Clear() override;
    EXTERNALChoice& operator=(const EXTERNALChoice& o);
    EXTERNALChoice& operator|=(const EXTERNALChoice& o);

    // The alternative's tag is the only tag, so BEnc is BEncContent. An
    // unknown choiceId or a missing value writes nothing.
    AsnLen BEncContent(AsnBuf& b) const;
    AsnLen BEnc(AsnBuf& b) const override { return BEncContent(b); }
    // `tag` and `elmtLen` are those of the alternative's element.
    void BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    void PrintTo(AsnPrintOut& out) const override;

private:
    // A new empty value of the class of `choiceId`, or null.
    AsnType* NewValue() const;
};

class EXTERNAL : public AsnType {
public:
    AsnOid* direct_reference;                  // direct-reference OBJECT IDENTIFIER OPTIONAL  -- 06
    AsnInt* indirect_reference;                // indirect-reference INTEGER OPTIONAL  -- 02
    ObjectDescriptor* data_value_descriptor;   // data-value-descriptor ObjectDescriptor OPTIONAL  -- 07
    EXTERNALChoice* encoding;                  // encoding  -- A0, 81, 82

    EXTERNAL() { ConstructHelper(); }
    EXTERNAL(const EXTERNAL& o);
    ~EXTERNAL() override;
    void ConstructHelper() {
        direct_reference = nullptr;
        indirect_reference = nullptr;
        data_value_descriptor = nullptr;
        encoding = nullptr;
    }

    AsnType* Clone() const override;
    void Clear() override;
    EXTERNAL& operator=(const EXTERNAL& o);
    EXTERNAL& operator|=(const EXTERNAL& o);

    // `encoding` must be set.
    AsnLen BEncContent(AsnBuf& b) const;
    AsnLen BEnc(AsnBuf& b) const override;
    void BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    void PrintTo(AsnPrintOut& out) const override;
};

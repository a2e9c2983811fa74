#include "zol/universal/asn_external.h"

#include <cstring>
#include <new>

#include "zol/ber/pattern.h"

namespace {

// The tags of the encoding's alternatives: [0] holds an OCTET STRING,
// [1] and [2] are the strings themselves, in either form.
const AsnTag SingleTypeTag = 0xA0000000u;
const AsnTag OctetAlignedTag = 0x81000000u;
const AsnTag ArbitraryTag = 0x82000000u;

}  // namespace

// EXTERNALChoice

// Delegating: an allocation that fails in the copy leaves a constructed
// object, which the destructor frees.
EXTERNALChoice::EXTERNALChoice(const EXTERNALChoice& o) : EXTERNALChoice() { *this = o; }

EXTERNALChoice::~EXTERNALChoice() { delete value; }

AsnType* EXTERNALChoice::Clone() const { return AsnClone(*this); }

void EXTERNALChoice::Clear() {
    delete value;
    ConstructHelper();
}

AsnType* EXTERNALChoice::NewValue() const {
    switch (choiceId) {
    case single_ASN1_typeCid:
    case octet_alignedCid:
        return new AsnOcts;
    case arbitraryCid:
        return new AsnBits;
    default:
        return nullptr;
    }
}

EXTERNALChoice& EXTERNALChoice::operator=(const EXTERNALChoice& o) {
    if (this == &o)
        return *this;
    delete value;
    value = nullptr;
    choiceId = o.choiceId;
    if (o.value) {
        value = NewValue();
        if (AsnOcts* mine = octets())
            mine->Set(*o.octets());
        else if (AsnBits* mine = bits())
            mine->Set(*o.bits());
    }
    return *this;
}

EXTERNALChoice& EXTERNALChoice::operator|=(const EXTERNALChoice& o) {
    if (this == &o)
        return *this;
    if (choiceId != o.choiceId)
        return *this = o;
    if (!o.value)
        return *this;
    if (!value)
        value = NewValue();
    if (AsnOcts* mine = octets())
        mine->ReSet(*o.octets());
    else if (AsnBits* mine = bits())
        mine->ReSet(*o.bits());
    return *this;
}

AsnLen EXTERNALChoice::BEncContent(AsnBuf& b) const {
    if (!value)
        return 0;
    switch (choiceId) {
    case single_ASN1_typeCid:
        return BEncLenTag(b, BEncLenTag(b, octets()->BEncContent(b), AsnOctetStringTag), SingleTypeTag);
    case octet_alignedCid:
        return BEncLenTag(b, octets()->BEncContent(b), OctetAlignedTag);
    case arbitraryCid:
        return BEncLenTag(b, bits()->BEncContent(b), ArbitraryTag);
    default:
        return 0;
    }
}

void EXTERNALChoice::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnTag tag = BDecTag(b, bytesDecoded, env);
    AsnLen len = BDecLen(b, bytesDecoded, env);
    BDecContent(b, tag, len, bytesDecoded, env);
}

void EXTERNALChoice::BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded,
                                 DecodeEnv env) {
    switch (tag) {
    case SingleTypeTag: {
        AsnTag inner = BDecTag(b, bytesDecoded, env);
        if (inner != AsnOctetStringTag && inner != (AsnOctetStringTag | AsnConstructedBit))
            AsnDecodeFail(env, AsnExternalInnerTagCode, AsnUnexpectedTagText);
        AsnLen len = BDecLen(b, bytesDecoded, env);
        choiceId = single_ASN1_typeCid;
        AsnOcts* octs = AsnDecodeNew<AsnOcts>(env);
        value = octs;
        octs->BDecContent(b, inner, len, bytesDecoded, env);
        if (elmtLen == IndefiniteLen)
            BDecEoc(b, bytesDecoded, env);
        break;
    }
    case OctetAlignedTag:
    case (OctetAlignedTag | AsnConstructedBit): {
        choiceId = octet_alignedCid;
        AsnOcts* octs = AsnDecodeNew<AsnOcts>(env);
        value = octs;
        octs->BDecContent(b, tag, elmtLen, bytesDecoded, env);
        break;
    }
    case ArbitraryTag:
    case (ArbitraryTag | AsnConstructedBit): {
        choiceId = arbitraryCid;
        AsnBits* bits = AsnDecodeNew<AsnBits>(env);
        value = bits;
        bits->BDecContent(b, tag, elmtLen, bytesDecoded, env);
        break;
    }
    default:
        AsnDecodeFail(env, AsnExternalChoiceTagCode, AsnChoiceTagText);
    }
}

void EXTERNALChoice::PrintTo(AsnPrintOut& out) const {
    static const char* const names[3] = {"single-ASN1-type", "octet-aligned", "arbitrary"};
    if (choiceId >= 0 && choiceId <= 2)
        AsnPrintChoice(out, names[choiceId], std::strlen(names[choiceId]), value);
}

// EXTERNAL

EXTERNAL::EXTERNAL(const EXTERNAL& o) : EXTERNAL() { *this = o; }

EXTERNAL::~EXTERNAL() {
    delete direct_reference;
    delete indirect_reference;
    delete data_value_descriptor;
    delete encoding;
}

AsnType* EXTERNAL::Clone() const { return AsnClone(*this); }

void EXTERNAL::Clear() {
    AsnClearMember(direct_reference);
    AsnClearMember(indirect_reference);
    AsnClearMember(data_value_descriptor);
    AsnClearMember(encoding);
}

EXTERNAL& EXTERNAL::operator=(const EXTERNAL& o) {
    if (this == &o)
        return *this;
    AsnAssign(direct_reference, o.direct_reference);
    AsnAssign(indirect_reference, o.indirect_reference);
    AsnAssign(data_value_descriptor, o.data_value_descriptor);
    AsnAssign(encoding, o.encoding);
    return *this;
}

EXTERNAL& EXTERNAL::operator|=(const EXTERNAL& o) {
    if (this == &o)
        return *this;
    AsnMergeLeaf(direct_reference, o.direct_reference);
    AsnMergeLeaf(indirect_reference, o.indirect_reference);
    AsnMergeLeaf(data_value_descriptor, o.data_value_descriptor);
    AsnMerge(encoding, o.encoding);
    return *this;
}

// Backwards: the last member first.
AsnLen EXTERNAL::BEncContent(AsnBuf& b) const {
    AsnLen total = 0;
    if (encoding)
        total += encoding->BEnc(b);
    if (data_value_descriptor)
        total += BEncLenTag(b, data_value_descriptor->BEncContent(b), AsnObjectDescriptorTag);
    if (indirect_reference)
        total += BEncShortLenTag(b, indirect_reference->BEncContent(b), AsnIntegerTag);
    if (direct_reference)
        total += BEncLenTag(b, direct_reference->BEncContent(b), AsnOidTag);
    return total;
}

AsnLen EXTERNAL::BEnc(AsnBuf& b) const { return BEncLenTag(b, BEncContent(b), AsnExternalTag); }

void EXTERNAL::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnTag tag = BDecTag(b, bytesDecoded, env);
    if (tag != AsnExternalTag)
        AsnDecodeFail(env, AsnExternalWrongTagCode, "EXTERNAL::BDec: ERROR - wrong tag");
    AsnLen len = BDecLen(b, bytesDecoded, env);
    BDecContent(b, tag, len, bytesDecoded, env);
}

void EXTERNAL::BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnLen count = 0;
    AsnTag tag = BDecTag(b, count, env);
    if (tag == AsnOidTag) {
        AsnLen len = BDecLen(b, count, env);
        direct_reference = AsnDecodeNew<AsnOid>(env);
        direct_reference->BDecContent(b, tag, len, count, env);
        tag = BDecTag(b, count, env);
    }
    if (tag == AsnIntegerTag) {
        AsnLen len = BDecLen(b, count, env);
        indirect_reference = AsnDecodeNew<AsnInt>(env);
        indirect_reference->BDecContent(b, tag, len, count, env);
        tag = BDecTag(b, count, env);
    }
    if (tag == AsnObjectDescriptorTag || tag == (AsnObjectDescriptorTag | AsnConstructedBit)) {
        AsnLen len = BDecLen(b, count, env);
        data_value_descriptor = AsnDecodeNew<ObjectDescriptor>(env);
        data_value_descriptor->AsnOcts::BDecContent(b, tag, len, count, env);
        tag = BDecTag(b, count, env);
    }
    switch (tag) {
    case SingleTypeTag:
    case OctetAlignedTag:
    case (OctetAlignedTag | AsnConstructedBit):
    case ArbitraryTag:
    case (ArbitraryTag | AsnConstructedBit):
        break;
    default:
        AsnDecodeFail(env, AsnExternalMissingEncodingCode, AsnMissingElmtText);
    }
    AsnLen len = BDecLen(b, count, env);
    encoding = AsnDecodeNew<EXTERNALChoice>(env);
    encoding->BDecContent(b, tag, len, count, env);
    bytesDecoded += count;
    if (elmtLen == IndefiniteLen)
        BDecEoc(b, bytesDecoded, env);
    else if (count != elmtLen)
        AsnDecodeFail(env, AsnExternalLengthCode, AsnLengthDiscrepancyText);
}

void EXTERNAL::PrintTo(AsnPrintOut& out) const {
    AsnPrintOpen(out);
    AsnPrintMember(out, "direct-reference", direct_reference, false);
    AsnPrintMember(out, "indirect-reference", indirect_reference, false);
    AsnPrintMember(out, "data-value-descriptor", data_value_descriptor, false);
    AsnPrintMember(out, "encoding", encoding, true);
    AsnPrintClose(out);
}

#include "zol/universal/asn_external.h"

#include <new>
#include <ostream>

#include "zol/ber/pattern.h"

namespace {

// Failure codes of EXTERNAL, in the band of the string classes.
const int ExternalWrongTag = 33;
const int ExternalLengthDiscrepancy = 34;
const int ExternalMissingEncoding = 35;
const int ExternalChoiceTag = 36;
const int ExternalInnerTag = 37;

// Assignment of an optional member: present in the source, it is assigned
// into the member here, which is made if need be; absent, it goes.
template <class T>
void AssignMember(T*& mine, const T* theirs) {
    if (!theirs) {
        delete mine;
        mine = nullptr;
    } else if (mine) {
        *mine = *theirs;
    } else {
        mine = new T(*theirs);
    }
}

// A merge touches only what the source holds.
template <class T>
void MergeMember(T*& mine, const T* theirs) {
    if (!theirs)
        return;
    if (!mine)
        mine = new T;
    mine->ReSet(*theirs);
}

}  // namespace

// EXTERNALChoice

EXTERNALChoice::EXTERNALChoice(const EXTERNALChoice& o) : AsnType() {
    ConstructHelper();
    *this = o;
}

EXTERNALChoice::~EXTERNALChoice() { delete value; }

AsnType* EXTERNALChoice::Clone() const { return new (std::nothrow) EXTERNALChoice(*this); }

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
        return BEncLenTag(b, BEncLenTag(b, octets()->BEncContent(b), 0x04000000u), 0xA0000000u);
    case octet_alignedCid:
        return BEncLenTag(b, octets()->BEncContent(b), 0x81000000u);
    case arbitraryCid:
        return BEncLenTag(b, bits()->BEncContent(b), 0x82000000u);
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
    case 0xA0000000u: {
        AsnTag inner = BDecTag(b, bytesDecoded, env);
        if (inner != 0x04000000u && inner != 0x24000000u)
            AsnDecodeFail(env, ExternalInnerTag, AsnUnexpectedTagText);
        AsnLen len = BDecLen(b, bytesDecoded, env);
        choiceId = single_ASN1_typeCid;
        AsnOcts* octs = new AsnOcts;
        value = octs;
        octs->BDecContent(b, inner, len, bytesDecoded, env);
        if (elmtLen == IndefiniteLen)
            BDecEoc(b, bytesDecoded, env);
        break;
    }
    case 0x81000000u:
    case 0xA1000000u: {
        choiceId = octet_alignedCid;
        AsnOcts* octs = new AsnOcts;
        value = octs;
        octs->BDecContent(b, tag, elmtLen, bytesDecoded, env);
        break;
    }
    case 0x82000000u:
    case 0xA2000000u: {
        choiceId = arbitraryCid;
        AsnBits* bits = new AsnBits;
        value = bits;
        bits->BDecContent(b, tag, elmtLen, bytesDecoded, env);
        break;
    }
    default:
        AsnDecodeFail(env, ExternalChoiceTag, AsnChoiceTagText);
    }
}

void EXTERNALChoice::Print(std::ostream& os) const {
    static const char* const names[3] = {"single-ASN1-type", "octet-aligned", "arbitrary"};
    AsnPrintChoice(os, choiceId >= 0 && choiceId <= 2 ? names[choiceId] : nullptr, value);
}

// EXTERNAL

EXTERNAL::EXTERNAL(const EXTERNAL& o) : AsnType() {
    ConstructHelper();
    *this = o;
}

EXTERNAL::~EXTERNAL() {
    delete direct_reference;
    delete indirect_reference;
    delete data_value_descriptor;
    delete encoding;
}

AsnType* EXTERNAL::Clone() const { return new (std::nothrow) EXTERNAL(*this); }

EXTERNAL& EXTERNAL::operator=(const EXTERNAL& o) {
    if (this == &o)
        return *this;
    AssignMember(direct_reference, o.direct_reference);
    AssignMember(indirect_reference, o.indirect_reference);
    AssignMember(data_value_descriptor, o.data_value_descriptor);
    AssignMember(encoding, o.encoding);
    return *this;
}

EXTERNAL& EXTERNAL::operator|=(const EXTERNAL& o) {
    if (this == &o)
        return *this;
    MergeMember(direct_reference, o.direct_reference);
    MergeMember(indirect_reference, o.indirect_reference);
    MergeMember(data_value_descriptor, o.data_value_descriptor);
    if (o.encoding) {
        if (!encoding)
            encoding = new EXTERNALChoice;
        *encoding |= *o.encoding;
    }
    return *this;
}

// Backwards: the last member first.
AsnLen EXTERNAL::BEncContent(AsnBuf& b) const {
    AsnLen total = 0;
    if (encoding)
        total += encoding->BEnc(b);
    if (data_value_descriptor)
        total += BEncLenTag(b, data_value_descriptor->BEncContent(b), 0x07000000u);
    if (indirect_reference)
        total += BEncShortLenTag(b, indirect_reference->BEncContent(b), 0x02000000u);
    if (direct_reference)
        total += BEncLenTag(b, direct_reference->BEncContent(b), 0x06000000u);
    return total;
}

AsnLen EXTERNAL::BEnc(AsnBuf& b) const { return BEncLenTag(b, BEncContent(b), 0x28000000u); }

void EXTERNAL::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnTag tag = BDecTag(b, bytesDecoded, env);
    if (tag != 0x28000000u)
        AsnDecodeFail(env, ExternalWrongTag, "EXTERNAL::BDec: ERROR - wrong tag");
    AsnLen len = BDecLen(b, bytesDecoded, env);
    BDecContent(b, tag, len, bytesDecoded, env);
}

void EXTERNAL::BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnLen count = 0;
    AsnTag tag = BDecTag(b, count, env);
    if (tag == 0x06000000u) {
        AsnLen len = BDecLen(b, count, env);
        direct_reference = new AsnOid;
        direct_reference->BDecContent(b, tag, len, count, env);
        tag = BDecTag(b, count, env);
    }
    if (tag == 0x02000000u) {
        AsnLen len = BDecLen(b, count, env);
        indirect_reference = new AsnInt;
        indirect_reference->BDecContent(b, tag, len, count, env);
        tag = BDecTag(b, count, env);
    }
    if (tag == 0x07000000u || tag == 0x27000000u) {
        AsnLen len = BDecLen(b, count, env);
        data_value_descriptor = new ObjectDescriptor;
        data_value_descriptor->AsnOcts::BDecContent(b, tag, len, count, env);
        tag = BDecTag(b, count, env);
    }
    switch (tag) {
    case 0xA0000000u:
    case 0x81000000u:
    case 0xA1000000u:
    case 0x82000000u:
    case 0xA2000000u:
        break;
    default:
        AsnDecodeFail(env, ExternalMissingEncoding, AsnMissingElmtText);
    }
    AsnLen len = BDecLen(b, count, env);
    encoding = new EXTERNALChoice;
    encoding->BDecContent(b, tag, len, count, env);
    bytesDecoded += count;
    if (elmtLen == IndefiniteLen)
        BDecEoc(b, bytesDecoded, env);
    else if (count != elmtLen)
        AsnDecodeFail(env, ExternalLengthDiscrepancy, AsnLengthDiscrepancyText);
}

void EXTERNAL::Print(std::ostream& os) const {
    AsnPrintOpen(os);
    AsnPrintMember(os, "direct-reference", direct_reference, false);
    AsnPrintMember(os, "indirect-reference", indirect_reference, false);
    AsnPrintMember(os, "data-value-descriptor", data_value_descriptor, false);
    AsnPrintMember(os, "encoding", encoding, true);
    AsnPrintClose(os);
}

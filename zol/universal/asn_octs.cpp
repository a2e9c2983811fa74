#include "zol/universal/asn_octs.h"

#include <cctype>
#include <cstring>
#include <new>
#include <ostream>

#include "zol/universal/asn_segments.h"

const AsnTypeDesc AsnOcts::_desc(nullptr, nullptr, false, AsnTypeDesc::OCTET_STRING, nullptr);

StrStk stringStack(128, 64);

// StrStk

StrStk::StrStk(int numElmts, int growElmts)
    : stk(new Elmt[numElmts]),
      size(static_cast<uint32_t>(numElmts)),
      growth(static_cast<uint32_t>(growElmts)),
      nextFree(0),
      totalByteLen(0) {}

StrStk::~StrStk() { delete[] stk; }

// Grows by `growth` entries until the array holds sixteen steps, then by
// its whole size: a fixed step copies the array once per step, and a
// hostile string of a million one-byte pieces would take time quadratic in
// their number.
void StrStk::Grow() {
    uint32_t more = size > 16 * growth ? size : growth;
    Elmt* bigger = new Elmt[size + more];
    std::memcpy(bigger, stk, size * sizeof(Elmt));
    delete[] stk;
    stk = bigger;
    size += more;
}

void StrStk::CopyOut(char* dst) const {
    for (uint32_t i = 0; i < nextFree; ++i) {
        std::memcpy(dst, stk[i].str, stk[i].len);
        dst += stk[i].len;
    }
}

namespace {

const AsnSegmentKind kOctetPieces = {
    AsnOctetStringTag, AsnConsOctsFormCode,
    "BDecConsOctetString: ERROR - constructed OCTET STRING nested too deep",
    "BDecConsOctetString: ERROR - decoded non-OCTET STRING tag inside a constructed OCTET STRING"};

}  // namespace

// AsnOcts

AsnOcts::~AsnOcts() { delete[] octs; }

void AsnOcts::Set(const char* str, size_t len) {
    octs = new char[len + 1];
    AsnCopyBytes(octs, str, len);
    octs[len] = '\0';
    octetLen = len;
}

void AsnOcts::Set(const char* str) { Set(str, std::strlen(str)); }

void AsnOcts::Set(const AsnOcts& o) {
    if (&o != this)
        Set(o.octs, o.octetLen);
}

// The new copy is made before the old block is freed, so a source that
// lies inside the value's own block stays readable.
void AsnOcts::ReSet(const char* str, size_t len) {
    if (str == octs)
        return;
    char* old = octs;
    Set(str, len);
    delete[] old;
}

void AsnOcts::ReSet(const char* str) { ReSet(str, std::strlen(str)); }

void AsnOcts::ReSet(const AsnOcts& o) {
    if (&o != this)
        ReSet(o.octs ? o.octs : "", o.octetLen);
}

bool AsnOcts::OctsEquiv(const AsnOcts& o) const {
    return octetLen == o.octetLen && (octetLen == 0 || std::memcmp(octs, o.octs, octetLen) == 0);
}

AsnType* AsnOcts::Clone() const { return new (std::nothrow) AsnOcts(*this); }

const AsnTypeDesc* AsnOcts::_getdesc() const { return &_desc; }

AsnLen AsnOcts::BEncWithTag(AsnBuf& b, unsigned char tag) const {
    return BEncLenTag(b, BEncContent(b), AsnTag(tag) << 24);
}

void AsnOcts::BDecWithTag(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env, unsigned char tag,
                          int code, const char* wrongTagText) {
    AsnTag primitive = AsnTag(tag) << 24;
    AsnTag got = BDecTag(b, bytesDecoded, env);
    if (got != primitive && got != (primitive | AsnConstructedBit))
        AsnDecodeFail(env, code, wrongTagText);
    AsnLen len = BDecLen(b, bytesDecoded, env);
    BDecContent(b, got, len, bytesDecoded, env);
}

AsnLen AsnOcts::BEnc(AsnBuf& b) const { return BEncWithTag(b, 0x04); }

void AsnOcts::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    BDecWithTag(b, bytesDecoded, env, 0x04, AsnOctsWrongTagCode, "AsnOcts::BDec: ERROR tag on OCTET STRING is wrong.");
}

void AsnOcts::BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded,
                          DecodeEnv env) {
    if (tag & AsnConstructedBit) {
        BDecConsOcts(b, elmtLen, bytesDecoded, env);
        return;
    }
    // The length is checked against the data before anything is allocated.
    size_t n = elmtLen;
    char* src = b.GetSeg(&n);
    if (n < elmtLen || b.ReadError())
        AsnDecodeFail(env, AsnOctsPastEndCode, "BDecOctetString: ERROR - decoded past end of data");
    // A value decoded again (an open type's clone of its prototype) gives
    // up what it held; a fresh one holds nothing.
    delete[] octs;
    octs = new char[n + 1];
    AsnCopyBytes(octs, src, n);
    octs[n] = '\0';
    octetLen = n;
    bytesDecoded += elmtLen;
}

void AsnOcts::BDecConsOcts(AsnBuf& b, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
    stringStack.Reset();
    AsnWalkSegments(b, elmtLen, bytesDecoded, env, kOctetPieces, [&](AsnLen len) {
        AsnPushSegment(b, len, env, AsnConsOctsPastEndCode,
                       "BDecConsOctetString: ERROR - attempt to decode past end of data");
    });
    octetLen = stringStack.totalByteLen;
    delete[] octs;
    octs = new char[octetLen + 1];
    stringStack.CopyOut(octs);
    octs[octetLen] = '\0';
}

// The text is gathered in a local block and written a block at a time:
// one character at a time through the stream costs a sentry each. The
// opening quote goes first on its own, so that a field width set on the
// stream pads it as it always did.
void AsnOcts::Print(std::ostream& os) const {
    static const char hex[] = "0123456789abcdef";
    os << '\'';
    char out[256];
    size_t n = 0;
    auto put = [&](char c) {
        if (n == sizeof out) {
            os.write(out, std::streamsize(n));
            n = 0;
        }
        out[n++] = c;
    };
    for (size_t i = 0; i < octetLen; ++i) {
        unsigned char c = static_cast<unsigned char>(octs[i]);
        put(hex[c >> 4]);
        put(hex[c & 0x0F]);
    }
    for (const char* t = "'H  -- \""; *t; ++t)
        put(*t);
    for (size_t i = 0; i < octetLen; ++i) {
        unsigned char c = static_cast<unsigned char>(octs[i]);
        put(std::isspace(c) ? ' ' : std::isprint(c) ? static_cast<char>(c) : '.');
    }
    put('"');
    put(' ');
    put('-');
    put('-');
    os.write(out, std::streamsize(n));
}

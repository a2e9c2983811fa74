#include "zol/universal/asn_octs.h"

#include <cctype>
#include <cstring>
#include <new>

#include "zol/ber/asn_pool.h"
#include "zol/ber/asn_print.h"
#include "zol/universal/asn_segments.h"

const AsnTypeDesc AsnOcts::_desc(nullptr, nullptr, false, AsnTypeDesc::OCTET_STRING, nullptr);

// StrStk

namespace {

StrStk::Elmt* NewEntries(uint32_t n) { return static_cast<StrStk::Elmt*>(AsnPoolTake(n * sizeof(StrStk::Elmt))); }

void FreeEntries(StrStk::Elmt* stk, uint32_t n) { AsnPoolGive(stk, n * sizeof(StrStk::Elmt)); }

struct ThreadStack : StrStk {
    ThreadStack() : StrStk(128, 64) {}
};

StrStk& ThisThreadsStack() {
    if (StrStk* stack = AsnStringStack())
        return *stack;
    AsnThrowBadAlloc();
}

}  // namespace

StrStk* AsnStringStack() { return AsnPerThread<ThreadStack>::Get(); }

thread_local StrStk& stringStack = ThisThreadsStack();

StrStk::StrStk(int numElmts, int growElmts)
    : stk(NewEntries(static_cast<uint32_t>(numElmts))),
      size(stk ? static_cast<uint32_t>(numElmts) : 0),
      growth(static_cast<uint32_t>(growElmts)),
      nextFree(0),
      totalByteLen(0) {}

StrStk::~StrStk() { FreeEntries(stk, size); }

// Grows by `growth` entries until the array holds sixteen steps, then by
// its whole size: a fixed step copies the array once per step, and a
// hostile string of a million one-byte pieces would take time quadratic in
// their number.
bool StrStk::Grow() {
    uint32_t more = size > 16 * growth ? size : growth;
    Elmt* bigger = NewEntries(size + more);
    if (!bigger)
        return false;
    if (size)
        std::memcpy(bigger, stk, size * sizeof(Elmt));
    FreeEntries(stk, size);
    stk = bigger;
    size += more;
    return true;
}

void StrStk::CopyOut(char* dst, size_t n) const {
    for (uint32_t i = 0; i < nextFree && n; ++i) {
        size_t k = stk[i].len < n ? stk[i].len : n;
        std::memcpy(dst, stk[i].str, k);
        dst += k;
        n -= k;
    }
}

namespace {

const AsnSegmentKind kOctetPieces = {
    AsnOctetStringTag, AsnConsOctsFormCode,
    "BDecConsOctetString: ERROR - constructed OCTET STRING nested too deep",
    "BDecConsOctetString: ERROR - decoded non-OCTET STRING tag inside a constructed OCTET STRING"};

}  // namespace

// AsnOcts

namespace {

// The bytes of a value, octetLen of them and the NUL, live in a block of
// the value pool: a string costs what a value costs to allocate and free.
char* NewBytes(size_t len) {
    if (void* p = AsnPoolTake(len + 1))
        return static_cast<char*>(p);
    AsnThrowBadAlloc();
}

void FreeBytes(char* octs, size_t len) { AsnPoolGive(octs, len + 1); }

}  // namespace

void AsnOcts::Set(const char* str, size_t len) {
    octs = NewBytes(len);
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
    size_t oldLen = octetLen;
    Set(str, len);
    FreeBytes(old, oldLen);
}

void AsnOcts::ReSet(const char* str) { ReSet(str, std::strlen(str)); }

void AsnOcts::ReSet(const AsnOcts& o) {
    if (&o != this)
        ReSet(o.octs ? o.octs : "", o.octetLen);
}

bool AsnOcts::OctsEquiv(const AsnOcts& o) const {
    return octetLen == o.octetLen && (octetLen == 0 || std::memcmp(octs, o.octs, octetLen) == 0);
}

AsnType* AsnOcts::Clone() const { return AsnClone(*this); }

void AsnOcts::Clear() {
    FreeBytes(octs, octetLen);
    octs = nullptr;
    octetLen = 0;
}

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

void AsnOcts::BDecContentSlow(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded,
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
    AsnCopyBytes(Renew(n, env), src, n);
    bytesDecoded += elmtLen;
}

void AsnOcts::BDecConsOcts(AsnBuf& b, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
    StrStk& stack = AsnDecodeStringStack(env);
    stack.Reset();
    AsnWalkSegments(b, elmtLen, bytesDecoded, env, kOctetPieces, [&](AsnLen len) {
        AsnPushSegment(stack, b, len, env, AsnConsOctsPastEndCode,
                       "BDecConsOctetString: ERROR - attempt to decode past end of data");
    });
    stack.CopyOut(Renew(stack.totalByteLen, env));
}

// A value decoded again (an open type's clone of its prototype) gives up
// what it held; a fresh one holds nothing.
char* AsnOcts::Renew(size_t len, DecodeEnv env) {
    char* bytes = static_cast<char*>(AsnPoolTake(len + 1));
    if (!bytes)
        AsnDecodeOutOfMemory(env);
    bytes[len] = '\0';
    FreeBytes(octs, octetLen);
    octs = bytes;
    octetLen = len;
    return bytes;
}

namespace {

// How a byte shows in the text form: a blank for white space, a dot for
// what does not print, else itself, as isspace and isprint of the C
// library class it. Every locale classes the ASCII bytes alike, so those
// come from a table; the others are asked of the library.
char Shown(unsigned char c) {
    if (c >= 0x80)
        return std::isspace(c) ? ' ' : std::isprint(c) ? static_cast<char>(c) : '.';
    if (c == ' ' || (c >= '\t' && c <= '\r'))
        return ' ';
    return c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '.';
}

}  // namespace

void AsnOcts::PrintTo(AsnPrintOut& out) const {
    out.Put('\'');
    out.Hex(octs, octetLen);
    out.Put("'H  -- \"");
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(octs);
    for (size_t done = 0; done < octetLen;) {
        size_t k = octetLen - done < 256 ? octetLen - done : 256;
        char* p = out.Room(k);
        for (size_t i = 0; i < k; ++i)
            p[i] = Shown(bytes[done + i]);
        out.Took(k);
        done += k;
    }
    out.Put("\" --");
}

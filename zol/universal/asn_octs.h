// OCTET STRING, the base of every character string, and the stack through
// which constructed strings are gathered with one allocation per value.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zol/ber/asn_pool.h"
#include "zol/ber/asn_type.h"
#include "zol/meta/asn_desc.h"

// Pieces of a constructed string, pointing into the decode buffer. Copies
// nothing and owns no data, only its array of entries, a block of
// asn_pool.h.
class StrStk {
public:
    struct Elmt {
        char* str;
        size_t len;
    };

    Elmt* stk;
    uint32_t size;
    uint32_t growth;
    uint32_t nextFree;
    uint32_t totalByteLen;

    // With an array of `numElmts` entries, or none if it cannot be made.
    StrStk(int numElmts, int growElmts);
    ~StrStk();
    StrStk(const StrStk&) = delete;
    StrStk& operator=(const StrStk&) = delete;

    void Reset() {
        nextFree = 0;
        totalByteLen = 0;
    }
    // False, pushing nothing, if the array is full and cannot grow.
    bool Push(char* str, size_t len) {
        if (nextFree >= size && !Grow())
            return false;
        totalByteLen += static_cast<uint32_t>(len);
        stk[nextFree].str = str;
        stk[nextFree].len = len;
        ++nextFree;
        return true;
    }
    // Copies the pieces end to end, in pushing order; the second form stops
    // after `n` bytes.
    void CopyOut(char* dst) const { CopyOut(dst, totalByteLen); }
    void CopyOut(char* dst, size_t n) const;

private:
    bool Grow();
};

// The calling thread's string stack, through which every constructed-string
// decode of the thread gathers its pieces: 128 entries that grow by 64,
// made at the thread's first constructed string and freed when the thread
// ends. Null if it cannot be made.
StrStk* AsnStringStack();
// The same as a name; its first use on a thread throws std::bad_alloc if
// the stack cannot be made.
extern thread_local StrStk& stringStack;

class AsnOcts : public AsnType {
public:
    // Read them freely; they change only through Set, ReSet and decoding,
    // since the block is given back by its length.
    size_t octetLen = 0;    // bytes held, the terminating NUL not counted
    char* octs = nullptr;   // owned copy of octetLen bytes and a NUL, in a block of asn_pool.h

    AsnOcts() {}
    AsnOcts(const char* str) { Set(str); }
    AsnOcts(const char* str, size_t len) { Set(str, len); }
    AsnOcts(const AsnOcts& o) : AsnType() { Set(o); }
    ~AsnOcts() override { AsnPoolGive(octs, octetLen + 1); }

    // Set fills a value that holds nothing; ReSet replaces what it holds.
    void Set(const char* str, size_t len);
    void Set(const char* str);
    void Set(const AsnOcts& o);
    void ReSet(const char* str, size_t len);
    void ReSet(const char* str);
    void ReSet(const AsnOcts& o);

    AsnOcts& operator=(const AsnOcts& o) {
        ReSet(o);
        return *this;
    }
    AsnOcts& operator=(const char* str) {
        ReSet(str);
        return *this;
    }
    operator const char*() const { return octs; }
    operator char*() { return octs; }
    size_t Len() const { return octetLen; }
    bool operator==(const AsnOcts& o) const { return OctsEquiv(o); }
    bool operator!=(const AsnOcts& o) const { return !OctsEquiv(o); }

    AsnType* Clone() const override;
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    AsnLen BEnc(AsnBuf& b) const override;
    void PrintTo(AsnPrintOut& out) const override;
    const AsnTypeDesc* _getdesc() const override;
    void Clear() override;

    ZOL_ALWAYS_INLINE AsnLen BEncContent(AsnBuf& b) const {
        b.PutSegRvs(octs, octetLen);
        return static_cast<AsnLen>(octetLen);
    }
    // Primitive or constructed by the constructed bit of `tag`; the rest of
    // the tag is not looked at, so context-tagged strings use it too. A
    // primitive string whose bytes are all there is copied here, inline.
    ZOL_ALWAYS_INLINE void BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded,
                                       DecodeEnv env) {
        if (__builtin_expect(!(tag & AsnConstructedBit) && !b.readFailed &&
                                 elmtLen <= size_t(b.dataEnd - b.readPos),
                             1)) {
            AsnCopyBytes(Renew(elmtLen, env), b.readPos, elmtLen);
            b.readPos += elmtLen;
            bytesDecoded += elmtLen;
            return;
        }
        BDecContentSlow(b, tag, elmtLen, bytesDecoded, env);
    }

    static const AsnTypeDesc _desc;

protected:
    // The shared body of BEnc and BDec for every string class: the class's
    // primitive tag octet, and on decoding its own failure line and code.
    AsnLen BEncWithTag(AsnBuf& b, unsigned char tag) const;
    void BDecWithTag(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env, unsigned char tag,
                     int code, const char* wrongTagText);

private:
    bool OctsEquiv(const AsnOcts& o) const;
    // Every form, with its failures.
    void BDecContentSlow(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);
    // Holds a new block of `len` bytes and the NUL in place of the old one,
    // or fails the decode when the heap is exhausted.
    char* Renew(size_t len, DecodeEnv env);
    void BDecConsOcts(AsnBuf& b, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);
};

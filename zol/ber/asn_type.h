// The root of every value class, the print indentation and the stream
// insertion that composite printers chain.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <new>

#include "zol/ber/asn_pool.h"
#include "zol/ber/ber.h"

struct AsnTypeDesc;
class AsnPrintOut;

// Throws std::bad_alloc. Out of line and cold, so that the code around it
// stays as small as it would be without it.
[[noreturn]] __attribute__((cold)) void AsnThrowBadAlloc();

class AsnType {
public:
    virtual ~AsnType() {}
    // A new copy on the heap, owned by the caller; null if allocation fails.
    virtual AsnType* Clone() const;
    virtual void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env);
    virtual AsnLen BEnc(AsnBuf& b) const;
    // The value as indented text. The library's classes override PrintTo,
    // which gathers each line before writing it (asn_print.h); Print
    // hands it a printer of its own. A class of yours that overrides Print
    // instead is printed through it wherever it is held: the default
    // PrintTo hands the stream over to it.
    virtual void Print(std::ostream& os) const;
    virtual void PrintTo(AsnPrintOut& out) const;
    virtual const AsnTypeDesc* _getdesc() const;
    // A member by name; with `create`, an absent member is made first
    // (null if it cannot be made).
    virtual AsnType* _getref(const char* name, bool create = false);
    // Gives up what the value holds, so that it is as a new value of its
    // class; decoding into it is then decoding into a new value. It frees
    // and never allocates. A decode that runs out of memory leaves its
    // value so.
    virtual void Clear();

    // Outermost forms: 1 for success, 0 for failure.
    int BEncPdu(AsnBuf& b, AsnLen& bytesEncoded) const;
    int BDecPdu(AsnBuf& b, AsnLen& bytesDecoded);

    static const AsnTypeDesc _desc;

    // Every value of the library is allocated through these, from the
    // blocks of asn_pool.h. Ownership is unchanged: a value is deleted
    // through its virtual destructor, which passes its size back.
    static void* operator new(std::size_t size) {
        if (void* p = AsnPoolTake(size))
            return p;
        AsnThrowBadAlloc();
    }
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return AsnPoolTake(size); }
    static void* operator new(std::size_t, void* where) noexcept { return where; }
    static void operator delete(void* p, std::size_t size) noexcept { AsnPoolGive(p, size); }
    // Only when a constructor throws out of a nothrow new, with the size
    // unknown: every block, pooled or not, came from malloc.
    static void operator delete(void* p, const std::nothrow_t&) noexcept;
    static void operator delete(void*, void*) noexcept {}
    // The number of blocks this thread has allocated so far: values, and
    // the bytes of octet strings and of the character strings.
    static uint64_t Allocations();
};

// A new copy of `v`, as Clone gives it: null, with nothing left allocated,
// when the heap is exhausted.
template <class T>
inline AsnType* AsnClone(const T& v) noexcept {
    try {
        return new T(v);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// Blanks that a new printed line begins with, the calling thread's own,
// and the step of one level.
extern __thread unsigned short indentLevel ZOL_INITIAL_EXEC;
extern const unsigned short indentStep;

void Indent(std::ostream& os, unsigned short n);

std::ostream& operator<<(std::ostream& os, const AsnType& v);

// The steps that every generated sequence, choice and list shares. Encoding
// and decoding stay straight-line code in the generated classes; these are
// the small pieces they call, and the printing, copying, merging and
// by-name access that would otherwise be written out hundreds of times.
#pragma once

#include <cstring>
#include <new>

#include "zol/ber/asn_print.h"
#include "zol/ber/asn_type.h"

// Decoding texts shared by the generated classes.
extern const char* const AsnMissingElmtText;     // a required member's tag did not match
extern const char* const AsnLengthDiscrepancyText;
extern const char* const AsnUnexpectedTagText;   // explicit inner tags and list elements
extern const char* const AsnChoiceTagText;       // no alternative has the tag
extern const char* const AsnEmptySequenceText;

// Before a member of a sequence's tail: the sequence is complete when its
// definite length is used up, or when an indefinite one ends with an
// end-of-contents read as the next tag. Otherwise the next tag is read
// into `tag` and false is returned.
ZOL_ALWAYS_INLINE bool AsnSeqTailEnds(AsnBuf& b, AsnLen elmtLen, AsnLen& seqBytes, AsnLen& bytesDecoded,
                           AsnTag& tag, DecodeEnv env) {
    if (seqBytes == elmtLen) {
        bytesDecoded += seqBytes;
        return true;
    }
    tag = BDecTag(b, seqBytes, env);
    if (elmtLen == IndefiniteLen && tag == 0) {
        BDecEocSecondOctet(b, seqBytes);
        bytesDecoded += seqBytes;
        return true;
    }
    return false;
}

// After the last member of a sequence: the end-of-contents of an indefinite
// length, or the test of a definite one.
inline void AsnSeqEnd(AsnBuf& b, AsnLen elmtLen, AsnLen seqBytes, AsnLen& bytesDecoded,
                      DecodeEnv env, int discrepancyCode) {
    bytesDecoded += seqBytes;
    if (elmtLen == IndefiniteLen)
        BDecEoc(b, bytesDecoded, env);
    else if (seqBytes != elmtLen)
        AsnDecodeFail(env, discrepancyCode, AsnLengthDiscrepancyText);
}

// The whole content decoder of an empty sequence.
inline void AsnEmptySeqContent(AsnBuf& b, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env,
                               int code) {
    if (elmtLen == IndefiniteLen)
        BDecEoc(b, bytesDecoded, env);
    else if (elmtLen != 0)
        AsnDecodeFail(env, code, AsnEmptySequenceText);
}

// Printing: composite values open and close a block; each member writes
// one line, or part of one, by the layout of its row.
void AsnPrintOpen(AsnPrintOut& out);
void AsnPrintClose(AsnPrintOut& out);
void AsnPrintEmptySeq(AsnPrintOut& out);
void AsnPrintSeparator(AsnPrintOut& out);
void AsnPrintMember(AsnPrintOut& out, const char* name, size_t nameLen, const AsnType& v, bool last);
void AsnPrintMember(AsnPrintOut& out, const char* name, size_t nameLen, const AsnType* v, bool last);
void AsnPrintChoice(AsnPrintOut& out, const char* name, size_t nameLen, const AsnType* v);
// The same with a name written in the code, whose length is known.
template <size_t N>
inline void AsnPrintMember(AsnPrintOut& out, const char (&name)[N], const AsnType& v, bool last) {
    AsnPrintMember(out, name, N - 1, v, last);
}
template <size_t N>
inline void AsnPrintMember(AsnPrintOut& out, const char (&name)[N], const AsnType* v, bool last) {
    AsnPrintMember(out, name, N - 1, v, last);
}
template <size_t N>
inline void AsnPrintChoice(AsnPrintOut& out, const char (&name)[N], const AsnType* v) {
    AsnPrintChoice(out, name, N - 1, v);
}

// A new value for a decoder to attach before anything else can fail; when
// the heap is exhausted the decode fails with AsnOutOfMemoryCode.
template <class T>
ZOL_ALWAYS_INLINE T* AsnDecodeNew(DecodeEnv env) {
    void* p = AsnPoolTake(sizeof(T));
    if (__builtin_expect(!p, 0))
        AsnDecodeOutOfMemory(env);
    return ::new (p) T;
}

// Pointer members: a copy constructs each one from the source's in a new
// block (a choice's alternative always, an empty one where the source
// holds none); assignment makes the target a deep copy or deletes it;
// merge keeps what the source lacks, overwriting leaves and merging
// composites; by-name access creates on demand, giving null when the heap
// is exhausted. Copies, assignments and merges throw std::bad_alloc then,
// and leave every value whole and nothing unowned.
//
// A class with pointer members copies its embedded members in a
// constructor of its own that also sets every pointer member to null; its
// copy constructor calls that one first and copies the pointer members
// after, so that an allocation that fails there leaves an object that the
// destructor frees.
struct AsnCopyEmbedded {};

template <class T>
inline T* AsnCopy(const T* src) {
    return src ? new T(*src) : nullptr;
}

template <class T>
inline T* AsnCopyAlt(const T* src) {
    return src ? new T(*src) : new T;
}

template <class T>
inline void AsnAssign(T*& dst, const T* src) {
    if (!src) {
        delete dst;
        dst = nullptr;
    } else if (dst) {
        *dst = *src;
    } else {
        dst = new T(*src);
    }
}

template <class T>
inline void AsnMergeLeaf(T*& dst, const T* src) {
    if (!src)
        return;
    if (dst)
        *dst = *src;
    else
        dst = new T(*src);
}

// A composite merged into a new one is not always its copy: a new choice
// holds no object, which a merge of an empty alternative leaves so.
template <class T>
inline void AsnMerge(T*& dst, const T* src) {
    if (src) {
        if (!dst)
            dst = new T;
        *dst |= *src;
    }
}

template <class T>
inline AsnType* AsnRef(T*& p, bool create) {
    if (!p && create)
        p = new (std::nothrow) T;
    return p;
}

// A pointer member given up by Clear.
template <class T>
inline void AsnClearMember(T*& p) {
    delete p;
    p = nullptr;
}

template <class T>
inline AsnType* AsnCreate() {
    return new (std::nothrow) T;
}

// A choice descriptor's inForce: the id of the alternative in force.
template <class C>
inline int32_t AsnChoiceIdOf(const AsnType& choice) {
    return static_cast<const C&>(choice).choiceId;
}

inline bool AsnNameIs(const char* name, const char* member) { return std::strcmp(name, member) == 0; }

// How a list reads a name given to _getref: "insert N", "N", or neither.
enum AsnListRefKind { AsnListRefNone, AsnListRefIndex, AsnListRefInsert };
AsnListRefKind AsnListRefName(const char* name, unsigned long* n);

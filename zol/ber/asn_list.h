// The machinery of every SET OF class. A generated list class derives from
// AsnType and holds `count`, `first`, `curr` and `last` and its node record
// AsnListElmt { next, prev, elmt }; each of its operations is one call of
// these functions, which work on any class of that shape. The element
// class E is the one its nodes point to.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>

#include "zol/ber/pattern.h"

template <class L>
using AsnElmtOf = std::remove_pointer_t<decltype(L::AsnListElmt::elmt)>;

// Links a new node holding `elmt` between `before` and `after`, and
// returns `elmt`. If `elmt` is null or the node cannot be made, nothing is
// linked, `elmt` is deleted and the result is null.
template <class L>
ZOL_ALWAYS_INLINE AsnElmtOf<L>* AsnListLinkOrNull(L& l, typename L::AsnListElmt* before, typename L::AsnListElmt* after,
                                AsnElmtOf<L>* elmt) noexcept {
    if (!elmt)
        return nullptr;
    auto* node = new (std::nothrow) typename L::AsnListElmt;
    if (!node) {
        delete elmt;
        return nullptr;
    }
    node->prev = before;
    node->next = after;
    node->elmt = elmt;
    if (before)
        before->next = node;
    else
        l.first = node;
    if (after)
        after->prev = node;
    else
        l.last = node;
    ++l.count;
    return elmt;
}

// The same, throwing std::bad_alloc where that gives null.
template <class L>
AsnElmtOf<L>* AsnListLink(L& l, typename L::AsnListElmt* before, typename L::AsnListElmt* after,
                          AsnElmtOf<L>* elmt) {
    if (AsnElmtOf<L>* e = AsnListLinkOrNull(l, before, after, elmt))
        return e;
    AsnThrowBadAlloc();
}

// A node removed from the middle leaves its successor current.
template <class L>
void AsnListRemoveCurr(L& l) {
    auto* gone = l.curr;
    if (!gone)
        return;
    if (gone->prev)
        gone->prev->next = gone->next;
    else
        l.first = gone->next;
    if (gone->next)
        gone->next->prev = gone->prev;
    else
        l.last = gone->prev;
    l.curr = gone->next ? gone->next : gone->prev;
    --l.count;
    if (l.count == 0)
        l.first = l.curr = l.last = nullptr;
    delete gone->elmt;
    delete gone;
}

template <class L>
void AsnListClear(L& l) {
    for (l.curr = l.first; l.curr;)
        AsnListRemoveCurr(l);
}

template <class L>
void AsnListAssign(L& l, const L& o) {
    if (&l == &o)
        return;
    AsnListClear(l);
    for (auto* p = o.first; p; p = p->next)
        AsnListLink(l, l.last, nullptr, new AsnElmtOf<L>(*p->elmt));
    l.curr = nullptr;
}

template <class L>
void AsnListSetCurr(L& l, unsigned long index) {
    l.curr = l.first;
    for (unsigned long i = 0; l.curr && i < index && l.curr->next; ++i)
        l.curr = l.curr->next;
}

template <class L>
unsigned long AsnListCurrIndex(const L& l) {
    unsigned long i = 0;
    for (auto* p = l.first; p; p = p->next, ++i)
        if (p == l.curr)
            return i;
    return l.count;
}

// A new element between `before` and `after`, made current; null, with
// the list as it was, when the heap is exhausted.
template <class L>
ZOL_ALWAYS_INLINE AsnElmtOf<L>* AsnListInsertOrNull(L& l, typename L::AsnListElmt* before, typename L::AsnListElmt* after) {
    AsnElmtOf<L>* e = AsnListLinkOrNull(l, before, after, new (std::nothrow) AsnElmtOf<L>);
    if (e)
        l.curr = before ? before->next : l.first;
    return e;
}

// The same, throwing std::bad_alloc where that gives null.
template <class L>
AsnElmtOf<L>* AsnListInsert(L& l, typename L::AsnListElmt* before, typename L::AsnListElmt* after) {
    if (AsnElmtOf<L>* e = AsnListInsertOrNull(l, before, after))
        return e;
    AsnThrowBadAlloc();
}

// A new element before (or after) the current one, at the front (or the
// end) when none is current.
template <class L>
AsnElmtOf<L>* AsnListInsertBefore(L& l) {
    return l.curr ? AsnListInsert(l, l.curr->prev, l.curr) : AsnListInsert(l, nullptr, l.first);
}
template <class L>
AsnElmtOf<L>* AsnListInsertAfter(L& l) {
    return l.curr ? AsnListInsert(l, l.curr, l.curr->next) : AsnListInsert(l, l.last, nullptr);
}

// A copy of `elmt` before (or after) the current one; the cursor stays.
template <class L>
void AsnListCopyBefore(L& l, const AsnElmtOf<L>& elmt) {
    auto* at = l.curr ? l.curr : l.first;
    *AsnListLink(l, at ? at->prev : nullptr, at, new AsnElmtOf<L>) = elmt;
}
template <class L>
void AsnListCopyAfter(L& l, const AsnElmtOf<L>& elmt) {
    auto* at = l.curr ? l.curr : l.last;
    *AsnListLink(l, at, at ? at->next : nullptr, new AsnElmtOf<L>) = elmt;
}

// Elements stand on the wire in list order, so they are written last first.
template <class L>
AsnLen AsnListEncContent(const L& l, AsnBuf& b) {
    AsnLen len = 0;
    for (auto* p = l.last; p; p = p->prev)
        len += BEncLenTag(b, p->elmt->BEncContent(b), AsnSequenceTag);
    return len;
}

// The content of a list, whose elements must all carry AsnSequenceTag;
// another tag fails with `elmtCode`. Elements are appended as they come.
template <class L>
void AsnListDecContent(L& l, AsnBuf& b, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env, int elmtCode) {
    AsnLen listBytes = 0;
    for (;;) {
        if (elmtLen != IndefiniteLen && listBytes >= elmtLen) {
            bytesDecoded += listBytes;
            return;
        }
        AsnTag tag = BDecTag(b, listBytes, env);
        if (tag == 0 && elmtLen == IndefiniteLen) {
            BDecEocSecondOctet(b, listBytes);
            bytesDecoded += listBytes;
            return;
        }
        if (tag != AsnSequenceTag)
            AsnDecodeFail(env, elmtCode, AsnUnexpectedTagText);
        AsnLen len = BDecLen(b, listBytes, env);
        AsnElmtOf<L>* e = AsnListInsertOrNull(l, l.last, nullptr);
        if (!e)
            AsnDecodeOutOfMemory(env);
        e->BDecContent(b, tag, len, listBytes, env);
    }
}

template <class L>
void AsnListPrint(const L& l, AsnPrintOut& out) {
    out.Put("{ -- SEQUENCE/SET OF -- ");
    out.EndLine();
    indentLevel = static_cast<unsigned short>(indentLevel + indentStep);
    for (auto* p = l.first; p; p = p->next) {
        out.Blanks(indentLevel);
        p->elmt->PrintTo(out);
        if (p != l.last)
            out.Put(",");
        out.EndLine();
    }
    indentLevel = static_cast<unsigned short>(indentLevel - indentStep);
    out.Blanks(indentLevel);
    out.Put("}");
}

// "N" is the element at N; "insert N" makes a new one there (null when the
// heap is exhausted). The cursor moves to it.
template <class L>
AsnType* AsnListRef(L& l, const char* name) {
    unsigned long n;
    switch (AsnListRefName(name, &n)) {
    case AsnListRefInsert:
        if (n > l.count)
            return nullptr;
        if (n == l.count)
            return AsnListInsertOrNull(l, l.last, nullptr);
        AsnListSetCurr(l, n);
        return AsnListInsertOrNull(l, l.curr->prev, l.curr);
    case AsnListRefIndex:
        if (n >= l.count)
            return nullptr;
        AsnListSetCurr(l, n);
        return l.curr->elmt;
    default:
        return nullptr;
    }
}

// The descriptor's walk: `visit` with each element, first to last.
template <class L>
void AsnListForEach(const AsnType& list, void (*visit)(AsnType& elmt, void* context), void* context) {
    for (auto* p = static_cast<const L&>(list).first; p; p = p->next)
        visit(*p->elmt, context);
}

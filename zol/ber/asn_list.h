// The machinery of every SET OF: a doubly linked list of owned elements
// with a cursor, its copy, its encoder, its content decoder, its printer
// and its by-name access. A generated list class derives from
// AsnList<itself, its element> and adds only what differs from list to
// list: its descriptor and its failure codes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <ostream>

#include "zol/ber/pattern.h"

template <class L, class E>
class AsnList : public AsnType {
public:
    struct AsnListElmt {
        AsnListElmt* next;
        AsnListElmt* prev;
        E* elmt;  // owned
        // Nodes come and go with their elements, from the same free lists.
        static void* operator new(std::size_t size) { return AsnType::operator new(size); }
        static void operator delete(void* p, std::size_t size) noexcept { AsnType::operator delete(p, size); }
    };

    uint32_t count = 0;
    AsnListElmt* first = nullptr;
    AsnListElmt* curr = nullptr;  // the cursor; null when no element is current
    AsnListElmt* last = nullptr;

    AsnList() {}
    AsnList(const AsnList& o) : AsnType() { *this = o; }
    ~AsnList() override { Clear(); }

    AsnList& operator=(const AsnList& o) {
        if (this == &o)
            return *this;
        Clear();
        // Linked here rather than through AppendCopy, which names the
        // derived class: the copy constructor runs this before it exists.
        for (AsnListElmt* p = o.first; p; p = p->next)
            *Link(last, nullptr, new E) = *p->elmt;
        curr = nullptr;
        return *this;
    }

    AsnType* Clone() const override { return new (std::nothrow) L(Self()); }

    int32_t Count() const { return static_cast<int32_t>(count); }
    E* Curr() const { return curr ? curr->elmt : nullptr; }
    E* First() const { return count ? first->elmt : nullptr; }
    E* Last() const { return count ? last->elmt : nullptr; }
    E* Next() const { return curr && curr->next ? curr->next->elmt : nullptr; }
    E* Prev() const { return curr && curr->prev ? curr->prev->elmt : nullptr; }

    E* GoNext() {
        if (curr)
            curr = curr->next;
        return Curr();
    }

    E* GoPrev() {
        if (curr)
            curr = curr->prev;
        return Curr();
    }

    void SetCurrToFirst() { curr = first; }
    void SetCurrToLast() { curr = last; }

    void SetCurrElmt(unsigned long index) {
        curr = first;
        for (unsigned long i = 0; curr && i < index && curr->next; ++i)
            curr = curr->next;
    }

    unsigned long GetCurrElmtIndex() const {
        unsigned long i = 0;
        for (AsnListElmt* p = first; p; p = p->next, ++i)
            if (p == curr)
                return i;
        return count;
    }

    // The new element becomes current.
    E* Append() {
        Link(last, nullptr, new E);
        curr = last;
        return curr->elmt;
    }

    E* Prepend() {
        Link(nullptr, first, new E);
        curr = first;
        return curr->elmt;
    }

    E* InsertBefore() {
        if (!curr)
            return Prepend();
        AsnListElmt* at = curr;
        Link(at->prev, at, new E);
        curr = at->prev;
        return curr->elmt;
    }

    E* InsertAfter() {
        if (!curr)
            return Append();
        AsnListElmt* at = curr;
        Link(at, at->next, new E);
        curr = at->next;
        return curr->elmt;
    }

    // The copies leave the cursor where it was.
    L& AppendCopy(const E& elmt) {
        *Link(last, nullptr, new E) = elmt;
        return Self();
    }

    L& PrependCopy(const E& elmt) {
        *Link(nullptr, first, new E) = elmt;
        return Self();
    }

    L& InsertBeforeAndCopy(const E& elmt) {
        if (curr)
            *Link(curr->prev, curr, new E) = elmt;
        else
            PrependCopy(elmt);
        return Self();
    }

    L& InsertAfterAndCopy(const E& elmt) {
        if (curr)
            *Link(curr, curr->next, new E) = elmt;
        else
            AppendCopy(elmt);
        return Self();
    }

    // A node removed from the middle leaves its successor current.
    void RemoveCurrFromList() {
        if (!curr)
            return;
        AsnListElmt* gone = curr;
        if (gone->prev)
            gone->prev->next = gone->next;
        else
            first = gone->next;
        if (gone->next)
            gone->next->prev = gone->prev;
        else
            last = gone->prev;
        curr = gone->next ? gone->next : gone->prev;
        --count;
        if (count == 0)
            first = curr = last = nullptr;
        delete gone->elmt;
        delete gone;
    }

    // Elements stand on the wire in list order, so they are written last first.
    AsnLen BEncContent(AsnBuf& b) const {
        AsnLen len = 0;
        for (AsnListElmt* p = last; p; p = p->prev)
            len += BEncLenTag(b, p->elmt->BEncContent(b), AsnSequenceTag);
        return len;
    }

    AsnLen BEnc(AsnBuf& b) const override { return BEncLenTag(b, BEncContent(b), AsnSetTag); }

    void Print(std::ostream& os) const override {
        os << "{ -- SEQUENCE/SET OF -- " << std::endl;
        indentLevel = static_cast<unsigned short>(indentLevel + indentStep);
        for (AsnListElmt* p = first; p; p = p->next) {
            Indent(os, indentLevel);
            os << *p->elmt;
            if (p != last)
                os << ",";
            os << std::endl;
        }
        indentLevel = static_cast<unsigned short>(indentLevel - indentStep);
        Indent(os, indentLevel);
        os << "}";
    }

    const AsnTypeDesc* _getdesc() const override { return &L::_desc; }

    // "N" is the element at N; "insert N" makes a new one there. The cursor
    // moves to it.
    AsnType* _getref(const char* name, bool = false) override {
        unsigned long n;
        switch (AsnListRefName(name, &n)) {
        case AsnListRefInsert:
            if (n == count)
                return Append();
            if (n > count)
                return nullptr;
            SetCurrElmt(n);
            return InsertBefore();
        case AsnListRefIndex:
            if (n >= count)
                return nullptr;
            SetCurrElmt(n);
            return curr->elmt;
        default:
            return nullptr;
        }
    }

    // Calls `visit` with each element of `list`, first to last: the
    // descriptor's walk.
    static void ForEach(const AsnType& list, void (*visit)(AsnType& elmt, void* context), void* context) {
        for (AsnListElmt* p = static_cast<const L&>(list).first; p; p = p->next)
            visit(*p->elmt, context);
    }

protected:
    // The content of a list whose elements must all carry `AsnSequenceTag`;
    // another tag fails with `elmtCode`.
    void DecodeContent(AsnBuf& b, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env, int elmtCode) {
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
            Append()->BDecContent(b, tag, len, listBytes, env);
        }
    }

private:
    L& Self() { return static_cast<L&>(*this); }
    const L& Self() const { return static_cast<const L&>(*this); }

    void Clear() {
        for (curr = first; curr;)
            RemoveCurrFromList();
    }

    // Links a new node holding `elmt` between `before` and `after`.
    E* Link(AsnListElmt* before, AsnListElmt* after, E* elmt) {
        AsnListElmt* node = new AsnListElmt;
        node->prev = before;
        node->next = after;
        node->elmt = elmt;
        if (before)
            before->next = node;
        else
            first = node;
        if (after)
            after->prev = node;
        else
            last = node;
        ++count;
        return elmt;
    }
};

// A SET OF: a class of its own, derived from AsnType, whose operations
// are one call each into the runtime's list machinery (zol/ber/asn_list.h);
// what differs from list to list is its element, its failure codes and its
// descriptor.
#include "emit.h"

namespace zolc {

namespace {

const char* const kListDecls = R"(class $T : public AsnType {
public:
    struct AsnListElmt {
        AsnListElmt* next;
        AsnListElmt* prev;
        $E* elmt;  // owned
        // Nodes come and go with their elements, from the same free lists.
        static void* operator new(std::size_t size) { return AsnType::operator new(size); }
        static void* operator new(std::size_t size, const std::nothrow_t& t) noexcept {
            return AsnType::operator new(size, t);
        }
        static void operator delete(void* p, std::size_t size) noexcept { AsnType::operator delete(p, size); }
    };

    uint32_t count;
    AsnListElmt* first;
    AsnListElmt* curr;  // the cursor; null when no element is current
    AsnListElmt* last;

    $T() : count(0), first(nullptr), curr(nullptr), last(nullptr) {}
    $T(const $T& o);
    ~$T() override;
    $T& operator=(const $T& o);
    AsnType* Clone() const override;
    void Clear() override;

    int32_t Count() const { return static_cast<int32_t>(count); }
    $E* Curr() const { return curr ? curr->elmt : nullptr; }
    $E* First() const { return count ? first->elmt : nullptr; }
    $E* Last() const { return count ? last->elmt : nullptr; }
    $E* Next() const { return curr && curr->next ? curr->next->elmt : nullptr; }
    $E* Prev() const { return curr && curr->prev ? curr->prev->elmt : nullptr; }
    $E* GoNext() {
        if (curr)
            curr = curr->next;
        return Curr();
    }
    $E* GoPrev() {
        if (curr)
            curr = curr->prev;
        return Curr();
    }
    void SetCurrToFirst() { curr = first; }
    void SetCurrToLast() { curr = last; }
    void SetCurrElmt(unsigned long index);
    unsigned long GetCurrElmtIndex() const;
    $E* Append();
    $E* Prepend();
    $E* InsertBefore();
    $E* InsertAfter();
    $T& AppendCopy(const $E& elmt);
    $T& PrependCopy(const $E& elmt);
    $T& InsertBeforeAndCopy(const $E& elmt);
    $T& InsertAfterAndCopy(const $E& elmt);
    void RemoveCurrFromList();

)";

const char* const kList = R"($T::$T(const $T& o) : $T() { *this = o; }

$T::~$T() { AsnListClear(*this); }

void $T::Clear() { AsnListClear(*this); }

$T& $T::operator=(const $T& o) {
    AsnListAssign(*this, o);
    return *this;
}

AsnType* $T::Clone() const { return AsnClone(*this); }

void $T::SetCurrElmt(unsigned long index) { AsnListSetCurr(*this, index); }

unsigned long $T::GetCurrElmtIndex() const { return AsnListCurrIndex(*this); }

$E* $T::Append() { return AsnListInsert(*this, last, nullptr); }

$E* $T::Prepend() { return AsnListInsert(*this, nullptr, first); }

$E* $T::InsertBefore() { return AsnListInsertBefore(*this); }

$E* $T::InsertAfter() { return AsnListInsertAfter(*this); }

$T& $T::AppendCopy(const $E& elmt) {
    *AsnListLink(*this, last, nullptr, new $E) = elmt;
    return *this;
}

$T& $T::PrependCopy(const $E& elmt) {
    *AsnListLink(*this, nullptr, first, new $E) = elmt;
    return *this;
}

$T& $T::InsertBeforeAndCopy(const $E& elmt) {
    AsnListCopyBefore(*this, elmt);
    return *this;
}

$T& $T::InsertAfterAndCopy(const $E& elmt) {
    AsnListCopyAfter(*this, elmt);
    return *this;
}

void $T::RemoveCurrFromList() { AsnListRemoveCurr(*this); }

)";

const char* const kListCodecDecls = R"(    AsnLen BEncContent(AsnBuf& b) const;
    AsnLen BEnc(AsnBuf& b) const override;
    void BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    void PrintTo(AsnPrintOut& out) const override;
    const AsnTypeDesc* _getdesc() const override;
    AsnType* _getref(const char* name, bool create = false) override;

)";

const char* const kListCodec = R"(AsnLen $T::BEncContent(AsnBuf& b) const { return AsnListEncContent(*this, b); }

AsnLen $T::BEnc(AsnBuf& b) const { return BEncLenTag(b, BEncContent(b), $tag); }

void $T::BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnListDecContent(*this, b, elmtLen, bytesDecoded, env, $listElmtCode);
}

void $T::PrintTo(AsnPrintOut& out) const { AsnListPrint(*this, out); }

const AsnTypeDesc* $T::_getdesc() const { return &_desc; }

AsnType* $T::_getref(const char* name, bool) { return AsnListRef(*this, name); }

)";

const char* const kListDescDecls = R"(    static const AsnListTypeDesc _desc;
};
)";

const char* const kListDesc =
    R"(const AsnListTypeDesc $T::_desc(&$M, "$T", false, AsnTypeDesc::SET_OF, AsnCreate<$T>, &$E::_desc, AsnListForEach<$T>);
)";

}  // namespace

ClassText EmitList(const TypeModel& c) {
    Vars v = ClassVars(c);
    ClassText t;
    t.Both(kListDecls, kList, v);
    t.Both(kListCodecDecls, kListCodec, v);
    t.source += Fill(kDecodeWhole, v);
    t.Both(kListDescDecls, kListDesc, v);
    return t;
}

}  // namespace zolc

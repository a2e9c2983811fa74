// The generated patterns through their C++ interface, where rows of bytes
// cannot reach: a list driven by its cursor, reach by name, descriptors,
// the constructors and clones of aliases. Two kinds of rows are defined
// here (tests/rows/list.txt, alias.txt):
//
//   list          a PatList driven by one operation per check line, in
//                 order: Append N, Prepend N, InsertBefore N, InsertAfter N
//                 (a new element numbered N), AppendCopy N, PrependCopy N,
//                 InsertBeforeAndCopy N, InsertAfterAndCopy N, SetCurrElmt I,
//                 SetCurrToFirst, SetCurrToLast, Remove, copy (the list
//                 becomes a copy of itself made by its copy constructor),
//                 decode HEX (into the list);
//                 and checks: chain "0 1 2 | at 1" (the numbers, the
//                 cursor's index; the links back must mirror the links
//                 forth), curr/next/prev/first/last/GoNext/GoPrev N or
//                 "none", ref NAME => N (_getref with create: sets the
//                 number of a new element, else expects it; "none": null),
//                 walk "4 1 3" (the descriptor's walk), hex HEX
//   desc TYPE     the descriptor of TYPE: kind K (its own), resolved K
//                 (at the end of its chain), module M, chain T... (the
//                 bases of an alias), members (name, ? when optional,
//                 :class), alternatives (name=id:class), element (of a
//                 list), names (name=value), types (of its module, when
//                 TYPE names a module)
#include <cstdlib>
#include <memory>

#include "rows.h"
#include "support.h"
#include "tests/patterns.h"
#include "walk.h"

namespace {

using namespace Zol;
using zt::Row;

std::string Num(const PatElem* e) { return e ? std::to_string(e->num.value) : "none"; }

std::string Chain(const PatList& l) {
    std::string forth, back;
    int count = 0;
    for (PatList::AsnListElmt* p = l.first; p; p = p->next, ++count)
        forth += Num(p->elmt) + " ";
    for (PatList::AsnListElmt* p = l.last; p; p = p->prev)
        back = Num(p->elmt) + " " + back;
    EXPECT_EQ(back, forth) << "the links back";
    EXPECT_EQ(count, l.Count());
    return forth + "| at " + std::to_string(l.GetCurrElmtIndex());
}

PatElem Elem(const std::string& n) {
    PatElem e;
    e.num = std::atoi(n.c_str());
    return e;
}

ZT_ROW_OP(list) {
    PatList l;
    for (const Row::Check& c : row.checks) {
        SCOPED_TRACE("line " + std::to_string(c.line) + ": " + c.key + " " + c.text);
        const std::string& k = c.key;
        const int n = std::atoi(c.text.c_str());
        if (k == "Append" || k == "Prepend" || k == "InsertBefore" || k == "InsertAfter") {
            PatElem* e = k == "Append" ? l.Append() : k == "Prepend" ? l.Prepend()
                         : k == "InsertBefore" ? l.InsertBefore() : l.InsertAfter();
            e->num = n;
        } else if (k == "AppendCopy") {
            l.AppendCopy(Elem(c.text));
        } else if (k == "PrependCopy") {
            l.PrependCopy(Elem(c.text));
        } else if (k == "InsertBeforeAndCopy") {
            l.InsertBeforeAndCopy(Elem(c.text));
        } else if (k == "InsertAfterAndCopy") {
            l.InsertAfterAndCopy(Elem(c.text));
        } else if (k == "SetCurrElmt") {
            l.SetCurrElmt(static_cast<unsigned long>(n));
        } else if (k == "SetCurrToFirst") {
            l.SetCurrToFirst();
        } else if (k == "SetCurrToLast") {
            l.SetCurrToLast();
        } else if (k == "Remove") {
            l.RemoveCurrFromList();
        } else if (k == "copy") {
            PatList copy(l);
            l = copy;
        } else if (k == "decode") {
            EXPECT_EQ(zt::Decode(zt::Bytes(c.text.c_str()), l).result, 1);
        } else if (k == "chain") {
            EXPECT_EQ(Chain(l), c.text);
        } else if (k == "curr" || k == "next" || k == "prev" || k == "first" || k == "last" || k == "GoNext" ||
                   k == "GoPrev") {
            const PatElem* e = k == "curr" ? l.Curr() : k == "next" ? l.Next() : k == "prev" ? l.Prev()
                               : k == "first" ? l.First() : k == "last" ? l.Last()
                               : k == "GoNext" ? l.GoNext() : l.GoPrev();
            EXPECT_EQ(Num(e), c.text);
        } else if (k == "ref") {
            size_t arrow = c.text.find(" => ");
            ASSERT_NE(arrow, std::string::npos);
            std::string name = c.text.substr(0, arrow), want = c.text.substr(arrow + 4);
            auto* e = static_cast<PatElem*>(l._getref(name.c_str(), true));
            if (e && name.rfind("insert", 0) == 0)
                e->num = std::atoi(want.c_str());
            EXPECT_EQ(Num(e), want);
            EXPECT_TRUE(!e || e->_getdesc() == &PatElem::_desc);
        } else if (k == "walk") {
            std::string seen;
            AsnForEachElement(l, [&seen](AsnType& e) { seen += (seen.empty() ? "" : " ") + Num(&static_cast<PatElem&>(e)); });
            EXPECT_EQ(seen, c.text);
        } else if (k == "hex") {
            EXPECT_EQ(zt::Encoded(l), zt::Hex(zt::Bytes(c.text.c_str())));
        } else {
            ADD_FAILURE() << "no list operation " << k;
        }
    }
}

const char* KindName(AsnTypeDesc::Type t) { return AsnTypeDesc::typenames[t]; }

const AsnTypeDesc* Described(const std::string& name) {
    static const AsnModuleDesc* const patterns[] = {&TESTPATTERNSModule, nullptr};
    const AsnTypeDesc* d = Zol::FindType(name.c_str());
    return d ? d : AsnFindType(patterns, name.c_str());
}

ZT_ROW_OP(desc) {
    const AsnTypeDesc* d = Described(row.arg);
    const AsnModuleDesc* module = d ? nullptr : row.arg == "TESTPATTERNS" ? &TESTPATTERNSModule : nullptr;
    for (const AsnModuleDesc* const* m = Zol::AsnModules; !d && !module && *m; ++m)
        if (row.arg == (*m)->name)
            module = *m;
    ASSERT_TRUE(d || module) << "no type or module " << row.arg;
    for (const Row::Check& c : row.checks) {
        SCOPED_TRACE("line " + std::to_string(c.line) + ": " + c.key);
        std::string got;
        if (c.key == "types") {
            for (const AsnTypeDesc* const* t = module->types; *t; ++t)
                got += std::string(got.empty() ? "" : " ") + (*t)->name;
        } else if (c.key == "kind") {
            got = KindName(d->type);
        } else if (c.key == "resolved") {
            EXPECT_EQ(d->gettype(), AsnResolved(d)->type);
            got = KindName(AsnResolved(d)->type);
        } else if (c.key == "module") {
            got = d->getmodule()->name;
        } else if (c.key == "chain") {
            for (const AsnTypeDesc* b = AsnAliasBase(d); b; b = AsnAliasBase(b))
                got += std::string(got.empty() ? "" : " ") + AsnTypeName(b);
        } else if (c.key == "members") {
            for (auto* m = static_cast<const AsnSe_TypeDesc*>(AsnResolved(d))->members; m->name; ++m)
                got += std::string(got.empty() ? "" : " ") + m->name + (m->optional ? "?" : "") + ":" +
                       AsnTypeName(m->desc);
        } else if (c.key == "alternatives") {
            for (auto* m = static_cast<const AsnChoiceTypeDesc*>(AsnResolved(d))->members; m->name; ++m)
                got += std::string(got.empty() ? "" : " ") + m->name + "=" + std::to_string(m->choiceid) + ":" +
                       m->desc->name;
        } else if (c.key == "element") {
            got = static_cast<const AsnListTypeDesc*>(d)->base->name;
        } else if (c.key == "names") {
            const AsnNameDesc* n = d->getnames();
            for (; n->name; ++n)
                got += std::string(got.empty() ? "" : " ") + n->name + "=" + std::to_string(n->value);
            EXPECT_EQ(n->value, -1);
        } else {
            ADD_FAILURE() << "no descriptor check " << c.key;
            continue;
        }
        EXPECT_EQ(got, c.text);
    }
    if (d) {
        EXPECT_STREQ(AsnTypeName(d), row.arg.c_str());
        EXPECT_STREQ(d->getname(), row.arg.c_str());
        EXPECT_FALSE(d->ispdu());
        std::unique_ptr<AsnType> made(d->create());
        EXPECT_EQ(made->_getdesc(), d);
    }
}

TEST(Patterns, FindTypeAndUniversalNames) {
    EXPECT_EQ(Zol::FindType("ZolPricePoint"), &ZolPricePoint::_desc);
    EXPECT_EQ(Zol::FindType("ZolPric"), nullptr);
    EXPECT_EQ(Zol::FindType("PatVerb"), nullptr);  // not a module of the protocol
    const AsnModuleDesc* const* last = Zol::AsnModules;
    while (last[1])
        ++last;
    EXPECT_EQ(Zol::FindType((*last)->types[0]->name), (*last)->types[0]);
    EXPECT_STREQ(AsnTypeName(&AsnInt::_desc), "INTEGER");
    EXPECT_STREQ(AsnTypeName(&AsnOcts::_desc), "OCTET STRING");
    EXPECT_EQ(AsnAliasBase(&AsnFixedReal::_desc), nullptr);
    int visits = 0;
    AsnForEachElement(PatElem(), [&visits](AsnType&) { ++visits; });  // no list
    EXPECT_EQ(visits, 0);
}

TEST(PatternsDeathTest, GetnamesWithoutANamesTableAborts) {
    EXPECT_DEATH(ZolPrice::_desc.getnames(), "^SEQUENCE::getnames\\(\\) called\n");
    EXPECT_DEATH(ZolTransRep::_desc.getnames(), "^CHOICE::getnames\\(\\) called\n");
    EXPECT_DEATH(PatList::_desc.getnames(), "^SET OF::getnames\\(\\) called\n");
    EXPECT_DEATH(ZolFirmId::_desc.getnames(), "^OCTET STRING::getnames\\(\\) called\n");
}

// A sequence answers for its members by exact name; a pointer member is
// made on demand, once. A choice answers for the alternative in force
// only, with what it holds, and selects another one only when asked to
// create it.
TEST(Patterns, ReachByName) {
    ZolMarketRep rep;
    EXPECT_EQ(rep._getref("marketName", false), nullptr);
    AsnType* made = rep._getref("marketName", true);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made, rep.marketName);
    EXPECT_EQ(made->_getdesc(), &ZolMarketName::_desc);
    EXPECT_EQ(rep._getref("marketName", true), made);
    EXPECT_EQ(rep._getref("marketId"), &rep.marketId);
    EXPECT_EQ(rep._getref("MarketName", true), nullptr);
    EXPECT_EQ(rep.seqContext, nullptr);
    EXPECT_EQ(PatEmpty()._getref("x", true), nullptr);

    ZolPermissionChoice c;
    EXPECT_EQ(c._getref("boardId", true), nullptr);  // in force, holding nothing
    EXPECT_EQ(c._getref("marketId", false), nullptr);
    EXPECT_EQ(c.choiceId, ZolPermissionChoice::boardIdCid);
    AsnType* m = c._getref("marketId", true);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(m->_getdesc(), &ZolMarketId::_desc);
    EXPECT_EQ(c.choiceId, ZolPermissionChoice::marketIdCid);
    EXPECT_EQ(c._getref("marketId", true), m);
    EXPECT_EQ(c._getref("boardId", false), nullptr);
    EXPECT_EQ(c._getref("nosuch", true), nullptr);
    EXPECT_EQ(c._getref("", true), nullptr);
    EXPECT_EQ(c._getref("marketId"), m);

    EXPECT_EQ(ZolTransRep::_desc.choicebyname("replyok"), -1);
    EXPECT_EQ(ZolTransRep::_desc.choicebyvalue(19), nullptr);
    EXPECT_EQ(ZolTransRep::_desc.choicebyvalue(-1), nullptr);

    // An id of no alternative prints and encodes nothing.
    PatChoice stray;
    stray.choiceId = 99;
    EXPECT_EQ(zt::Printed(stray), "");
    EXPECT_EQ(zt::Encoded(stray), "");
}

// Aliases take what their base is made from; enumerations and named bits
// have no Clone of their own and clone into their universal base.
TEST(Patterns, AliasValuesKeepTheirClass) {
    ZolFirmId a("ABC"), b("ABC", 3), c(std::string("A\0BC", 4).c_str(), 4);
    EXPECT_TRUE(a == b);
    EXPECT_EQ(zt::Encoded(c), "04 04 41 00 42 43");
    EXPECT_EQ(ZolFirmId("A\0BC").Len(), 1u);
    EXPECT_EQ(ZolFirmId().Len(), 0u);
    char src[] = "XYZ";
    ZolFirmId d;
    d = src;
    src[0] = 'Q';
    EXPECT_EQ(std::string(d), "XYZ");
    EXPECT_EQ(std::string(ZolFirmId(static_cast<const ZolTextStr&>(d))), "XYZ");
    ZolQuantity q(5), copy(q);
    EXPECT_EQ(copy.value, 5);
    copy = 7;
    EXPECT_EQ(copy.value, 7);

    std::unique_ptr<AsnType> vc(ZolOrderVerb(ZolOrderVerb::sell).Clone());
    const AsnType& verb = *vc;
    EXPECT_EQ(typeid(verb), typeid(AsnEnum));
    EXPECT_EQ(zt::Encoded(*vc), "0A 01 01");
    ZolOrderMethods bits(size_t(12));
    bits.SetBit(ZolOrderMethods::hidden);
    std::unique_ptr<AsnType> mc(bits.Clone());
    const AsnType& methods = *mc;
    EXPECT_EQ(typeid(methods), typeid(AsnBits));
    EXPECT_EQ(zt::Encoded(*mc), "03 03 04 00 10");
}

}  // namespace

// The generated list pattern: a doubly linked chain with a cursor. The
// chain must stay whole in both directions through every insertion and
// removal, since encoding walks it backwards and printing forwards.
#include <memory>

#include "decode_rows.h"
#include "support.h"
#include "tests/patterns.h"
#include "walk.h"

namespace {

using namespace Zol;
using namespace zt;

// The element numbers front to back, then back to front, with the count
// and the cursor's index: "1 2 3 | 3 2 1 | count 3 | at 1".
std::string Chain(const PatList& l) {
    std::string out;
    for (PatList::AsnListElmt* p = l.first; p; p = p->next) {
        out += std::to_string(p->elmt->num.value) + " ";
        if (p->next && p->next->prev != p)
            out += "(broken) ";
    }
    out += "|";
    for (PatList::AsnListElmt* p = l.last; p; p = p->prev)
        out += " " + std::to_string(p->elmt->num.value);
    if (l.first && l.first->prev)
        out += " (first has prev)";
    if (l.last && l.last->next)
        out += " (last has next)";
    return out + " | count " + std::to_string(l.Count()) + " | at " + std::to_string(l.GetCurrElmtIndex());
}

PatElem Elem(int n) {
    PatElem e;
    e.num = n;
    return e;
}

TEST(List, EmptyAndInOrder) {
    ZolPricePointList prices;
    EXPECT_EQ(Encoded(prices), "31 00");
    EXPECT_EQ(Printed(prices), "{ -- SEQUENCE/SET OF -- \n}");
    ZolPricePointList back;
    ASSERT_EQ(Decode(Bytes("31 00"), back).result, 1);
    EXPECT_EQ(back.Count(), 0);
    EXPECT_EQ(back.First(), nullptr);
    EXPECT_EQ(back.Last(), nullptr);

    PatList l;
    for (int n : {1, 2, 3})
        l.Append()->num = n;
    EXPECT_EQ(Encoded(l), "31 0F 30 03 02 01 01 30 03 02 01 02 30 03 02 01 03");
    PatList d;
    ASSERT_EQ(Decode(Bytes("31 0F 30 03 02 01 01 30 03 02 01 02 30 03 02 01 03"), d).result, 1);
    EXPECT_EQ(Chain(d), "1 2 3 | 3 2 1 | count 3 | at 2");  // Append leaves the last current

    PatList two;
    two.Append()->num = 1;
    two.Append()->label = new ZolTextStr("A");
    two.Last()->num = 2;
    EXPECT_EQ(Printed(two),
              "{ -- SEQUENCE/SET OF -- \n"
              "    { -- SEQUENCE --\n"
              "        num 1,\n"
              "        label -- void --\n"
              "\n"
              "    },\n"
              "    { -- SEQUENCE --\n"
              "        num 2,\n"
              ",\n"
              "        label '41'H  -- \"A\" --\n"
              "    }\n"
              "}");
}

TEST(List, CursorOperations) {
    PatList l;
    EXPECT_EQ(l.Curr(), nullptr);
    l.SetCurrElmt(3);
    EXPECT_EQ(l.curr, nullptr);
    EXPECT_EQ(l.GetCurrElmtIndex(), 0u);  // no node: the count
    l.Append()->num = 1;
    l.AppendCopy(Elem(2));
    EXPECT_EQ(l.Curr()->num.value, 1);  // the copy leaves the cursor alone
    l.PrependCopy(Elem(0));
    EXPECT_EQ(Chain(l), "0 1 2 | 2 1 0 | count 3 | at 1");
    EXPECT_EQ(l.Next()->num.value, 2);
    EXPECT_EQ(l.Prev()->num.value, 0);

    EXPECT_EQ(l.GoNext()->num.value, 2);
    EXPECT_EQ(l.GoNext(), nullptr);  // past the end
    EXPECT_EQ(l.Curr(), nullptr);
    EXPECT_EQ(l.GetCurrElmtIndex(), 3u);
    EXPECT_EQ(l.Next(), nullptr);
    EXPECT_EQ(l.Prev(), nullptr);
    EXPECT_EQ(l.GoNext(), nullptr);
    EXPECT_EQ(l.GoPrev(), nullptr);
    l.InsertBefore()->num = -1;  // no current node: at the front
    EXPECT_EQ(Chain(l), "-1 0 1 2 | 2 1 0 -1 | count 4 | at 0");
    EXPECT_EQ(l.GoPrev(), nullptr);
    l.InsertAfter()->num = 3;  // no current node: at the end
    EXPECT_EQ(Chain(l), "-1 0 1 2 3 | 3 2 1 0 -1 | count 5 | at 4");

    l.SetCurrElmt(99);  // past the end: the last
    EXPECT_EQ(l.GetCurrElmtIndex(), 4u);
    l.SetCurrElmt(2);
    l.InsertBeforeAndCopy(Elem(10));
    l.InsertAfterAndCopy(Elem(11));
    EXPECT_EQ(Chain(l), "-1 0 10 1 11 2 3 | 3 2 11 1 10 0 -1 | count 7 | at 3");
    l.InsertAfter()->num = 12;
    l.InsertBefore()->num = 13;
    EXPECT_EQ(Chain(l), "-1 0 10 1 13 12 11 2 3 | 3 2 11 12 13 1 10 0 -1 | count 9 | at 4");
    l.Prepend()->num = -2;
    EXPECT_EQ(l.GetCurrElmtIndex(), 0u);
    l.SetCurrToLast();
    EXPECT_EQ(l.Curr()->num.value, 3);
    l.SetCurrToFirst();
    EXPECT_EQ(l.Curr()->num.value, -2);
    EXPECT_EQ(Encoded(l),
              "31 32 30 03 02 01 FE 30 03 02 01 FF 30 03 02 01 00 30 03 02 01 0A 30 03 02 01 01 "
              "30 03 02 01 0D 30 03 02 01 0C 30 03 02 01 0B 30 03 02 01 02 30 03 02 01 03");
}

TEST(List, Removal) {
    PatList l;
    l.RemoveCurrFromList();  // nothing current: nothing happens
    l.Append()->num = 1;
    l.RemoveCurrFromList();
    EXPECT_EQ(Chain(l), "| | count 0 | at 0");
    EXPECT_EQ(l.first, nullptr);
    EXPECT_EQ(l.curr, nullptr);
    EXPECT_EQ(l.last, nullptr);
    EXPECT_EQ(Encoded(l), "31 00");

    for (int n : {1, 2, 3, 4})
        l.AppendCopy(Elem(n));
    l.SetCurrToFirst();
    l.RemoveCurrFromList();
    EXPECT_EQ(Chain(l), "2 3 4 | 4 3 2 | count 3 | at 0");
    l.SetCurrToLast();
    l.RemoveCurrFromList();
    EXPECT_EQ(Chain(l), "2 3 | 3 2 | count 2 | at 1");
    l.AppendCopy(Elem(4));
    l.SetCurrElmt(1);
    l.RemoveCurrFromList();
    EXPECT_NE(l.Curr(), nullptr);
    EXPECT_EQ(Chain(l).rfind("2 4 | 4 2 | count 2 | at ", 0), 0u);
    l.RemoveCurrFromList();
    l.RemoveCurrFromList();
    EXPECT_EQ(Chain(l), "| | count 0 | at 0");
}

TEST(List, CopyAssignAndMergeAreWhole) {
    PatList a;
    for (int n : {1, 2})
        a.Append()->num = n;
    PatList b(a);
    EXPECT_EQ(Chain(b), "1 2 | 2 1 | count 2 | at 2");  // no current node
    EXPECT_NE(b.First(), a.First());
    b.First()->num = 9;
    EXPECT_EQ(a.First()->num.value, 1);
    b = a;
    EXPECT_EQ(Chain(b), "1 2 | 2 1 | count 2 | at 2");
    const PatList& same = b;
    b = same;
    EXPECT_EQ(Chain(b), "1 2 | 2 1 | count 2 | at 2");
    std::unique_ptr<AsnType> c(a.Clone());
    EXPECT_EQ(c->_getdesc(), &PatList::_desc);
    EXPECT_EQ(Encoded(*c), Encoded(a));
    b = PatList();
    EXPECT_EQ(Chain(b), "| | count 0 | at 0");
}

TEST(List, Decoding) {
    const DecodeRow rows[] = {
        // PatList: -109 wrong tag, -110 element; PatElem -106; PatListHolder -127 to -129.
        {PatList::_desc.create, "31 80 30 03 02 01 01 00 00", 1, "", 0},
        {PatList::_desc.create, "31 80 30 03 02 01 01 00 01", 1, kWarn, 0},
        {PatList::_desc.create, "31 80 30 03 02 01 01 00", 0, kWarn, 0},
        {PatList::_desc.create, "31 80 30 80 02 01 01 00 00 00 00", 1, "", 0},
        {PatList::_desc.create, "31 02 00 00", 0, kUnexpected, -110},
        {PatList::_desc.create, "31 07 30 03 02 01 01 31 00", 0, kUnexpected, -110},
        {PatList::_desc.create, "31 05 A0 03 02 01 01", 0, kUnexpected, -110},
        {PatList::_desc.create, "31 05 30 03 04 01 01", 0, kMissing, -106},
        {PatList::_desc.create, "30 00", 0, "PatList::BDec: ERROR - wrong tag\n", -109},
        {PatList::_desc.create, "31 03 30 03 02 01 01", 1, "", 0},  // the list itself takes the overrun
        {PatListHolder::_desc.create, "30 07 31 05 30 03 02 01 01", 1, "", 0, true},
        {PatListHolder::_desc.create, "30 05 31 03 30 03 02 01 01", 0, kLength, -128},
        {PatListHolder::_desc.create, "30 05 04 01 41 05 00", 0, kMissing, -127},
        {PatListHolder::_desc.create, "30 05 04 01 41 31 00", 1, "", 0, true},
    };
    CheckDecodes(rows, sizeof rows / sizeof *rows);

    // Elements are added to what the list holds.
    PatList l;
    l.Append()->num = 7;
    ASSERT_EQ(Decode(Bytes("31 05 30 03 02 01 01"), l).result, 1);
    EXPECT_EQ(Chain(l), "7 1 | 1 7 | count 2 | at 1");
}

TEST(List, ReachByPosition) {
    PatList l;
    EXPECT_EQ(l._getref("0", true), nullptr);
    AsnType* first = l._getref("insert 0", false);
    ASSERT_NE(first, nullptr);
    static_cast<PatElem*>(first)->num = 1;
    static_cast<PatElem*>(l._getref("insert 1"))->num = 2;
    EXPECT_EQ(l._getref("insert 3", true), nullptr);
    EXPECT_EQ(l.Count(), 2);
    static_cast<PatElem*>(l._getref("insert 2"))->num = 3;  // at the count: appended
    static_cast<PatElem*>(l._getref("insert 0"))->num = 0;  // before the first
    static_cast<PatElem*>(l._getref("insert 2"))->num = 5;  // before the third
    EXPECT_EQ(Chain(l), "0 1 5 2 3 | 3 2 5 1 0 | count 5 | at 2");
    EXPECT_EQ(l._getref("1"), l.first->next->elmt);
    EXPECT_EQ(l.GetCurrElmtIndex(), 1u);
    EXPECT_EQ(l._getref("4")->_getdesc(), &PatElem::_desc);
    EXPECT_EQ(l._getref("5"), nullptr);
    for (const char* bad : {"1x", "insert 1x", "insert", "", "x", "insert  ", "first"})
        EXPECT_EQ(l._getref(bad, true), nullptr) << bad;
    EXPECT_EQ(l.Count(), 5);
    EXPECT_EQ(l.GetCurrElmtIndex(), 4u);
}

// The descriptor's walk: every element once, first to last, without
// touching the cursor; nothing for an empty list or a value of no list.
TEST(List, ForEachElementWalksInOrderAndLeavesTheCursor) {
    PatList l;
    for (int n : {4, 1, 3})
        l.Append()->num = n;
    l.SetCurrElmt(1);
    std::string seen;
    AsnForEachElement(l, [&seen](AsnType& e) { seen += std::to_string(static_cast<PatElem&>(e).num.value) + " "; });
    EXPECT_EQ(seen, "4 1 3 ");
    EXPECT_EQ(l.GetCurrElmtIndex(), 1u);

    int calls = 0;
    AsnForEachElement(PatList(), [&calls](AsnType&) { ++calls; });
    AsnForEachElement(Elem(1), [&calls](AsnType&) { ++calls; });
    EXPECT_EQ(calls, 0);
}

}  // namespace

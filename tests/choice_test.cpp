// The generated choice pattern: an alternative's tag from its id and kind,
// the decoder's choice of alternative, the new state (first id, no value),
// printing on the parent's line, assignment against merge, and reach by
// name through the descriptor.
#include <memory>

#include "decode_rows.h"
#include "support.h"
#include "tests/patterns.h"
#include "walk.h"

namespace {

using namespace Zol;
using namespace zt;

const char* const kNoAlternative = "ERROR - unexpected tag in CHOICE\n";

// The value of alternative `name`, made with create. A new choice holds its
// first alternative without a value, which answers null even with create,
// so another alternative is selected first.
AsnType* Pick(AsnType& c, const char* name) {
    AsnType* v = c._getref(name, true);
    if (!v) {
        c._getref(static_cast<const AsnChoiceTypeDesc*>(c._getdesc())->members[1].name, true);
        v = c._getref(name, true);
    }
    return v;
}

TEST(Choice, EachAlternativeUnderItsTag) {
    const struct {
        const char* name;
        const char* hex;
        const char* printed;
    } rows[] = {
        {"num", "80 01 05", "num 5"},
        {"text", "81 01 41", "text '41'H  -- \"A\" --"},
        {"rec", "A2 00", "rec { -- SEQUENCE --\n    num -- void --,\n    text -- void --,\n    when -- void --\n\n}"},
        {"none", "A3 00", "none { -- SEQUENCE --\n}"},
        {"inner", "A4 03 80 01 05", "inner num 5"},
        {"wide", "9F 28 01 05", "wide 5"},
        {"wider", "9F 82 2C 01 41", "wider '41'H  -- \"A\" --"},
    };
    for (const auto& r : rows) {
        PatChoice c;
        AsnType* v = Pick(c, r.name);
        ASSERT_NE(v, nullptr) << r.name;
        EXPECT_EQ(c.choiceId, PatChoice::_desc.choicebyname(r.name));
        if (c.choiceId == PatChoice::innerCid)
            static_cast<AsnInt*>(Pick(*v, "num"))->value = 5;
        if (auto* i = dynamic_cast<AsnInt*>(v))
            i->value = 5;
        if (auto* o = dynamic_cast<AsnOcts*>(v))
            o->ReSet("A");
        EXPECT_EQ(Encoded(c), r.hex) << r.name;
        EXPECT_EQ(Printed(c), r.printed) << r.name;

        PatChoice back;
        ASSERT_EQ(Decode(Bytes(r.hex), back).result, 1) << r.name;
        EXPECT_EQ(back.choiceId, c.choiceId);
        EXPECT_EQ(back._getref(r.name)->_getdesc(), v->_getdesc()) << r.name;
        EXPECT_EQ(Printed(back), r.printed);
    }

    // An empty-sequence alternative is written without an object; a new
    // envelope reply is the null alternative.
    PatChoice none;
    none.choiceId = PatChoice::noneCid;
    EXPECT_EQ(Encoded(none), "A3 00");
    EXPECT_EQ(Encoded(ZolTransRep()), "A0 00");
    ZolPermissionChoice perm;
    static_cast<AsnOcts*>(Pick(perm, "boardId"))->ReSet("B");
    EXPECT_EQ(Encoded(perm), "80 01 42");
    perm._getref("secBoardId", true);
    perm.secBoardId->secCode = "S";
    perm.secBoardId->boardId = "B";
    EXPECT_EQ(Encoded(perm), "A4 06 04 01 53 04 01 42");
}

TEST(Choice, DecoderPicksTheAlternativeByTag) {
    const DecodeRow rows[] = {
        // PatChoice -105; its inner choice PatInner -104; PatEmpty -100.
        {PatChoice::_desc.create, "A1 03 04 01 41", 1, "", 0},
        {PatChoice::_desc.create, "BF 82 2C 03 04 01 41", 1, "", 0},
        {PatChoice::_desc.create, "A2 80 00 00", 1, "", 0},
        {PatChoice::_desc.create, "A3 80 00 00", 1, "", 0},
        {PatChoice::_desc.create, "A3 02 05 00", 0, kEmpty, -100},
        {PatChoice::_desc.create, "A4 80 80 01 05 00 00", 1, "", 0},
        {PatChoice::_desc.create, "A4 80 80 01 05 00 01", 0, kEoc, -12},
        {PatChoice::_desc.create, "A4 05 80 01 05 05 00", 1, "", 0},  // the outer length is not compared
        {PatChoice::_desc.create, "A4 03 82 01 05", 0, kNoAlternative, -104},
        {PatChoice::_desc.create, "A4 03 A0 01 05", 0, kNoAlternative, -104},
        {PatChoice::_desc.create, "A0 03 02 01 05", 0, kNoAlternative, -105},  // integer in constructed form
        {PatChoice::_desc.create, "BF 28 03 02 01 05", 0, kNoAlternative, -105},
        {PatChoice::_desc.create, "82 00", 0, kNoAlternative, -105},
        {PatChoice::_desc.create, "85 00", 0, kNoAlternative, -105},
        {PatChoice::_desc.create, "9F 82 2D 00", 0, kNoAlternative, -105},
        {PatChoice::_desc.create, "", 0, kPastEnd, -22},

        {ZolPermissionChoice::_desc.create, "80 01 42", 1, "", 0, true},
        {ZolPermissionChoice::_desc.create, "A0 03 04 01 42", 1, "", 0},
        {ZolPermissionChoice::_desc.create, "A4 06 04 01 53 04 01 42", 1, "", 0, true},
        {ZolPermissionChoice::_desc.create, "84 03 04 01 53", 0, kNoAlternative, -100},

        {ZolTransLogStepThrough::_desc.create, "80 01 05", 1, "", 0, true},
        {ZolTransLogStepThrough::_desc.create, "82 01 05", 1, "", 0, true},
        {ZolTransLogStepThrough::_desc.create, "A1 06 02 01 01 02 01 02", 1, "", 0, true},
        {ZolTransLogStepThrough::_desc.create, "A0 03 02 01 05", 0, kNoAlternative, -190},
        {ZolTransLogStepThrough::_desc.create, "A2 03 02 01 05", 0, kNoAlternative, -190},
        {ZolTransLogStepThrough::_desc.create, "81 06 02 01 01 02 01 02", 0, kNoAlternative, -190},

        {ZolTransRep::_desc.create, "B2 04 04 02 4F 4B", 1, "", 0, true},
        {ZolTransRep::_desc.create, "B1 02 04 00", 1, "", 0, true},
        {ZolTransRep::_desc.create, "A0 00", 1, "", 0, true},
        {ZolTransRep::_desc.create, "B3 04 04 02 4F 4B", 0, kNoAlternative, -111},

        {ZolNegDealCPDetails::_desc.create, "A1 00", 1, "", 0, true},
        {ZolNegDealCPDetails::_desc.create, "A2 03 04 01 55", 1, "", 0, true},
        {ZolNegDealCPDetails::_desc.create, "A0 00", 0, kNoAlternative, -125},
    };
    CheckDecodes(rows, sizeof rows / sizeof *rows);

    ZolTransRep ok;
    ASSERT_EQ(Decode(Bytes("B2 04 04 02 4F 4B"), ok).result, 1);
    EXPECT_EQ(ok.choiceId, 18);
    EXPECT_EQ(ok.replyOK->_getdesc(), &ZolReplyOK::_desc);
    EXPECT_EQ(std::string(ok.replyOK->infoMessage), "OK");
    ZolTransLogStepThrough step;
    ASSERT_EQ(Decode(Bytes("82 01 05"), step).result, 1);
    EXPECT_EQ(step.choiceId, ZolTransLogStepThrough::forTimePeriodCid);
    EXPECT_EQ(step.forTimePeriod->value, 5);
}

TEST(Choice, NewStateAndPrinting) {
    EXPECT_EQ(Printed(ZolTransRep()), "null -- void3 --\n");
    EXPECT_EQ(Printed(PatChoice()), "num -- void3 --\n");
    ZolNegDealCPDetails cp;
    EXPECT_EQ(cp.choiceId, 1);
    EXPECT_EQ(cp.negDealCrossDetails, nullptr);
    EXPECT_EQ(ZolTransRep().choiceId, 0);
    PatChoice stray;
    stray.choiceId = 99;
    EXPECT_EQ(Printed(stray), "");

    // One line, no braces and no line end of its own.
    ZolPermissionChoice perm;
    perm._getref("instrId", true);
    perm.instrId->ReSet("I");
    EXPECT_EQ(Printed(perm), "instrId '49'H  -- \"I\" --");
}

TEST(Choice, ReachByName) {
    ZolPermissionChoice c;
    EXPECT_EQ(c._getref("boardId", true), nullptr);  // the id in force answers with what it holds
    EXPECT_EQ(c.choiceId, 0);
    EXPECT_EQ(c.boardId, nullptr);
    EXPECT_EQ(c._getref("marketId", false), nullptr);
    EXPECT_EQ(c.choiceId, 0);
    AsnType* m = c._getref("marketId", true);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(m->_getdesc(), &ZolMarketId::_desc);
    EXPECT_EQ(static_cast<AsnOcts*>(m)->Len(), 0u);
    EXPECT_EQ(c.choiceId, 1);
    EXPECT_EQ(c._getref("boardId", false), nullptr);
    EXPECT_EQ(c._getref("marketId", false), m);
    EXPECT_EQ(c._getref("marketId", true), m);
    EXPECT_EQ(c._getref("nosuch", true), nullptr);
    EXPECT_EQ(c._getref("", true), nullptr);
    EXPECT_EQ(c.choiceId, 1);
    EXPECT_EQ(c._getref("marketId"), m);

    EXPECT_EQ(ZolTransRep::_desc.choicebyname("replyOK"), 18);
    EXPECT_EQ(ZolTransRep::_desc.choicebyname("replyok"), -1);
    EXPECT_EQ(ZolTransRep::_desc.choicebyname("nothing"), -1);
    EXPECT_STREQ(ZolTransRep::_desc.choicebyvalue(18), "replyOK");
    EXPECT_STREQ(ZolTransRep::_desc.choicebyvalue(0), "null");
    EXPECT_EQ(ZolTransRep::_desc.choicebyvalue(19), nullptr);
    EXPECT_EQ(ZolTransRep::_desc.choicebyvalue(-1), nullptr);
    EXPECT_EQ(PatChoice::_desc.choicebyname("wider"), 300);
    EXPECT_EQ(ZolNegDealCPDetails::_desc.choicebyvalue(0), nullptr);
}

TEST(Choice, AssignmentReplacesMergeDescendsOnlyInTheSameAlternative) {
    ZolTransRep bad, ok, ok2;
    bad._getref("replyBad", true);
    bad.replyBad->infoMessage = "no";
    ok._getref("replyOK", true);
    ok.replyOK->infoMessage = "a";
    ok.replyOK->extraInfo = new ZolTextStr("x");
    ok2._getref("replyOK", true);
    ok2.replyOK->infoMessage = "b";

    ZolTransRep t = bad;
    t |= ok;  // another id: becomes a copy
    ASSERT_EQ(t.choiceId, 18);
    EXPECT_NE(t.replyOK, ok.replyOK);
    EXPECT_EQ(Encoded(t), Encoded(ok));
    t |= ok2;  // same id: merged member by member
    EXPECT_EQ(Encoded(t), "B2 06 04 01 62 04 01 78");
    t = ok2;
    EXPECT_EQ(Encoded(t), "B2 03 04 01 62");
    const ZolTransRep& same = t;
    t = same;
    t |= same;
    EXPECT_EQ(Encoded(t), "B2 03 04 01 62");
    t = ZolTransRep();  // a source without a value in its empty alternative
    EXPECT_EQ(t.choiceId, 0);
    EXPECT_EQ(Encoded(t), "A0 00");

    // Leaves are overwritten, an inner choice merges by its own ids.
    PatChoice a, b;
    a._getref("text", true);
    a.text->ReSet("long");
    b._getref("text", true);
    b.text->ReSet("s");
    a |= b;
    EXPECT_EQ(std::string(*a.text), "s");
    Pick(*a._getref("inner", true), "when");
    static_cast<AsnInt*>(Pick(*b._getref("inner", true), "num"))->value = 3;
    a |= b;
    EXPECT_EQ(a.inner->choiceId, PatInner::numCid);
    EXPECT_EQ(Encoded(a), "A4 03 80 01 03");
    PatChoice copy(a);
    b.inner->num->value = 4;
    a |= b;
    EXPECT_EQ(Encoded(copy), "A4 03 80 01 03");
    EXPECT_EQ(Encoded(a), "A4 03 80 01 04");
    std::unique_ptr<AsnType> clone(a.Clone());
    EXPECT_EQ(clone->_getdesc(), &PatChoice::_desc);
    EXPECT_EQ(Encoded(*clone), "A4 03 80 01 04");
}

}  // namespace

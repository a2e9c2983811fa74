// The generated sequence pattern: wire forms, the strict decoder with its
// tails and end-of-contents, failure texts and codes, print layouts,
// assignment against merge, and by-name reach. The common values and the
// key records of the vocabulary are sequences of the same pattern.
#include <memory>

#include "decode_rows.h"
#include "support.h"
#include "tests/patterns.h"
#include "walk.h"

namespace {

using namespace Zol;
using namespace zt;

ZolMarketRep MarketRep(const char* name) {
    ZolMarketRep rep;
    rep.seqContext = new ZolSequenceContext;
    rep.marketId = "M1";
    if (name)
        rep.marketName = new ZolMarketName(name);
    rep.marketStatus = ZolSuspensionStatus::active;
    return rep;
}

TEST(Sequence, EncodesRowsInTableOrderSkippingAbsentOptionals) {
    EXPECT_EQ(Encoded(MarketRep(nullptr)), "30 09 30 00 04 02 4D 31 0A 01 00");
    EXPECT_EQ(Encoded(MarketRep("X")), "30 0C 30 00 04 02 4D 31 04 01 58 0A 01 00");

    ZolMarketRep back;
    ASSERT_EQ(zt::Decode(Bytes("30 09 30 00 04 02 4D 31 0A 01 00"), back).result, 1);
    EXPECT_EQ(back.marketName, nullptr);
    ASSERT_NE(back.seqContext, nullptr);
    EXPECT_EQ(back.seqContext->seqNum, nullptr);
    EXPECT_EQ(std::string(back.marketId), "M1");

    // Implicit tags replace the outer tag of a member, explicit ones wrap it,
    // and a string member written with a context tag stays primitive.
    PatHolder h;
    h.head = 1;
    h.pair = 7;
    h.pick = new PatChoice;
    h._getref("pick")->_getref("wide", true);
    h.pick->wide->value = 5;
    EXPECT_EQ(Encoded(h), "30 0C 02 01 01 A5 03 02 01 07 9F 28 01 05");
    AsnFixedReal zero;
    EXPECT_EQ(Encoded(zero), "30 02 09 00");
    AsnSequenceContext onlyRec;
    onlyRec.recNum = new AsnSequenceNumber(7);
    EXPECT_EQ(Encoded(onlyRec), "30 05 A2 03 02 01 07");
    ZolSecOptBoardId noBoard;
    noBoard.secCode = "ABC";
    EXPECT_EQ(Encoded(noBoard), "30 05 04 03 41 42 43");
    AsnDateTime midnight;
    midnight.date = 0;
    midnight.time = 0;
    EXPECT_EQ(Encoded(midnight), "30 06 02 01 00 02 01 00");
    ZolUserId nobody;
    EXPECT_EQ(Encoded(nobody), "04 00");
    EXPECT_EQ(Encoded(PatEmpty()), "30 00");
    EXPECT_EQ(Encoded(ZolNull()), "30 00");
}

TEST(Sequence, StrictDecoding) {
    const DecodeRow rows[] = {
        // ZolMarketRep: seqContext -103, marketId -104, marketStatus -105,
        // discrepancy -106, wrong tag -107.
        {ZolMarketRep::_desc.create, "30 09 30 00 04 02 4D 31 0A 01 00", 1, "", 0, true},
        {ZolMarketRep::_desc.create, "30 80 30 80 00 00 04 02 4D 31 0A 01 00 00 00", 1, "", 0},
        {ZolMarketRep::_desc.create, "30 0B 30 00 24 04 04 02 4D 31 0A 01 00", 1, "", 0},  // constructed string
        {ZolMarketRep::_desc.create, "30 07 04 02 4D 31 0A 01 00", 0, kMissing, -103},
        {ZolMarketRep::_desc.create, "30 05 30 00 0A 01 00", 0, kMissing, -104},
        {ZolMarketRep::_desc.create, "30 09 30 00 04 02 4D 31 2A 01 00", 0, kMissing, -105},  // 2A is no 0A
        {ZolMarketRep::_desc.create, "30 0B 30 00 04 02 4D 31 0A 01 00 05 00", 0, kLength, -106},
        {ZolMarketRep::_desc.create, "30 0B 30 00 04 02 4D 31 0A 01 00", 0, kLength, -106},  // long length
        {ZolMarketRep::_desc.create, "31 00", 0, "ZolMarketRep::BDec: ERROR - wrong tag\n", -107},
        // An end-of-contents where a required row is still open is a tag
        // that fits nothing.
        {ZolMarketRep::_desc.create, "30 80 30 00 04 02 4D 31 00 00", 0, kMissing, -105},
        {ZolMarketRep::_desc.create, "30 80 30 00 04 02 4D 31 0A 01 00 00 01", 0, kEoc, -12},
        {ZolMarketRep::_desc.create, "30 80 30 00 04 02 4D 31 0A 01 00", 0, kEoc, -12},

        // PatElem: num -106, discrepancy -107; label is the tail.
        {PatElem::_desc.create, "30 03 02 01 05", 1, "", 0, true},
        {PatElem::_desc.create, "30 80 02 01 05 00 00", 1, "", 0},
        {PatElem::_desc.create, "30 80 02 01 05 00 01", 1, kWarn, 0},
        {PatElem::_desc.create, "30 80 02 01 05 00", 0, kWarn, 0},  // no octet left: warns, then the read error
        {PatElem::_desc.create, "30 80 02 01 05 04 01 41 00 00", 1, "", 0},
        {PatElem::_desc.create, "30 06 02 01 05 A4 01 41", 0, kLength, -107},  // no 04/24: tag taken, no row
        {PatElem::_desc.create, "30 08 02 01 05 24 03 04 01 41", 1, "", 0},
        {PatElem::_desc.create, "30 05 02 01 05 05 00", 0, kLength, -107},
        {PatElem::_desc.create, "30 80 02 01 05 05 01 00 00 00", 0, kEoc, -12},
        {PatElem::_desc.create, "30 03 22 01 05", 0, kMissing, -106},
        {PatElem::_desc.create, "30 03 02 01", 0, "AsnInt::BDecContent: ERROR - decoded past end of data.\n", -8},
        {PatElem::_desc.create, "30 04 02 01 05", 0, kPastEnd, -22},  // length says more than there is

        // PatOpt, all optional: discrepancy -102.
        {PatOpt::_desc.create, "30 00", 1, "", 0, true},
        {PatOpt::_desc.create, "30 80 00 00", 1, "", 0},
        {PatOpt::_desc.create, "30 80 00 01", 1, kWarn, 0},
        {PatOpt::_desc.create, "30 03 22 01 05", 0, kLength, -102},  // constructed integer fits no row
        {PatOpt::_desc.create, "30 06 04 01 41 02 01 05", 0, kLength, -102},  // out of order
        {PatOpt::_desc.create, "30 0D 02 01 05 04 01 41 30 05 02 01 00 04 00", 0, kMissing, -101},  // AsnDateTime's time
        {PatOpt::_desc.create, "30 80 04 01 41 00 00", 1, "", 0},

        // AsnSequenceContext, two optional explicit pairs: -119, -120, -121.
        {AsnSequenceContext::_desc.create, "30 05 A2 03 02 01 07", 1, "", 0, true},
        {AsnSequenceContext::_desc.create, "30 0A A1 03 02 01 01 A2 03 02 01 07", 1, "", 0, true},
        {AsnSequenceContext::_desc.create, "30 07 A1 80 02 01 01 00 00", 1, "", 0},
        {AsnSequenceContext::_desc.create, "30 07 A1 80 02 01 01 00 05", 0, kEoc, -12},
        {AsnSequenceContext::_desc.create, "30 80 A1 03 02 01 01 00 00", 1, "", 0},
        {AsnSequenceContext::_desc.create, "30 80 A1 03 02 01 01 00 07", 1, kWarn, 0},
        {AsnSequenceContext::_desc.create, "30 80 A1 80 02 01 01 00 00 A2 80 02 01 02 00 00 00 00", 1, "", 0},
        {AsnSequenceContext::_desc.create, "30 05 A1 03 04 01 01", 0, kUnexpected, -119},
        {AsnSequenceContext::_desc.create, "30 05 A2 03 0A 01 01", 0, kUnexpected, -120},
        {AsnSequenceContext::_desc.create, "30 05 A3 03 02 01 01", 0, kLength, -121},
        {AsnSequenceContext::_desc.create, "30 05 81 03 02 01 01", 0, kLength, -121},  // the primitive form is no pair

        // PatHolder, a required explicit pair and choice members: -111 to -116.
        {PatHolder::_desc.create, "30 0B 02 01 01 A5 03 02 01 07 80 01 09", 1, "", 0, true},
        {PatHolder::_desc.create, "30 0E 02 01 01 A5 03 02 01 07 80 01 09 83 00", 0, kLength, -115},
        {PatHolder::_desc.create, "30 0D 02 01 01 A5 03 02 01 07 80 01 09 A3 00", 1, "", 0, true},
        {PatHolder::_desc.create, "30 06 02 01 01 80 01 09", 0, kMissing, -112},
        {PatHolder::_desc.create, "30 0B 02 01 01 A5 03 04 01 07 80 01 09", 0, kUnexpected, -113},
        {PatHolder::_desc.create, "30 0B 02 01 01 A5 03 02 01 07 85 01 09", 0, kMissing, -114},
        {PatHolder::_desc.create, "30 0B 02 01 01 A5 03 02 01 07 A0 01 09", 0, kMissing, -114},  // constructed integer
        {PatHolder::_desc.create, "30 0C 02 01 01 A5 80 02 01 07 00 00 81 00", 1, "", 0},
        {PatHolder::_desc.create, "30 0D 02 01 01 A5 03 02 01 07 A1 03 04 01 41", 1, "", 0},  // constructed text
        {PatHolder::_desc.create, "30 0F 02 01 01 A5 03 02 01 07 A2 80 02 01 05 00 00", 1, "", 0},
        {PatHolder::_desc.create, "30 0F 02 01 01 A5 03 02 01 07 A4 80 80 01 05 00 00 A3 00", 1, "", 0},
        {PatHolder::_desc.create, "30 80 02 01 01 A5 03 02 01 07 A4 80 A1 80 02 01 01 02 01 02 00 00 00 00 00 00", 1, "",
         0},
        {PatHolder::_desc.create, "30 80 02 01 01 A5 03 02 01 07 80 01 09 00 00", 1, "", 0},
        {PatHolder::_desc.create, "30 80 02 01 01 A5 03 02 01 07 80 01 09 00 02", 1, kWarn, 0},
        {PatHolder::_desc.create, "30 80 02 01 01 A5 03 02 01 07 80 01 09 81 00 00 00", 1, "", 0},

        // PatAll: every embedded kind under its own tag, and a string row in
        // constructed form.
        {PatAll::_desc.create,
         "30 23 02 01 FF 0A 01 01 01 01 FF 09 03 80 F8 80 83 01 74 03 02 04 40 A4 02 09 00 31 05 30 03 02 01 04 87 01 09",
         1, "", 0, true},
        {PatAll::_desc.create,
         "30 25 02 01 FF 0A 01 01 01 01 FF 09 03 80 F8 80 A3 03 04 01 74 03 02 04 40 A4 02 09 00 31 05 30 03 02 01 04 87 01 09",
         1, "", 0},
        {PatAll::_desc.create,
         "30 23 02 01 FF 0A 01 01 01 01 FF 09 03 80 F8 80 83 01 74 03 02 04 40 84 02 09 00 31 05 30 03 02 01 04 87 01 09",
         0, kMissing, -123},  // price in primitive form
        {PatAll::_desc.create,
         "30 1E 02 01 FF 0A 01 01 01 01 FF 09 03 80 F8 80 83 01 74 03 02 04 40 A4 02 09 00 87 01 09",
         0, kMissing, -124},  // no list
        {PatAll::_desc.create,
         "30 26 02 01 FF 0A 01 01 01 01 FF 09 03 80 F8 80 83 01 74 03 02 04 40 A4 02 09 00 04 01 6E 31 05 30 03 02 01 04 "
         "87 01 09",
         1, "", 0, true},  // an optional row inside the table
        {PatAll::_desc.create,
         "30 25 02 01 FF 0A 01 01 01 01 FF 09 03 80 F8 80 83 01 74 03 02 04 40 A4 02 09 00 31 05 30 03 02 01 04 A6 00 87 01 09",
         1, "", 0, true},
        {PatHolder::_desc.create, "30 0C 02 01 01 A5 80 02 01 07 00 09 81 00", 0, kEoc, -12},
        {PatHolder::_desc.create, "30 0C 02 01 01 A5 03 02 01 07 9F 82 2C 00", 1, "", 0, true},
        {PatHolder::_desc.create, "30 0E 02 01 01 A5 03 02 01 07 BF 82 2C 02 04 00", 1, "", 0},

        // Empty sequences: PatEmpty -100, -101.
        {PatEmpty::_desc.create, "30 00", 1, "", 0, true},
        {PatEmpty::_desc.create, "30 80 00 00", 1, "", 0},
        {PatEmpty::_desc.create, "30 80 00 01", 0, kEoc, -12},
        {PatEmpty::_desc.create, "30 02 05 00", 0, kEmpty, -100},
        {PatEmpty::_desc.create, "A0 00", 0, "PatEmpty::BDec: ERROR - wrong tag\n", -101},

        // Key records of the vocabulary.
        {ZolSecOptBoardId::_desc.create, "30 05 04 03 41 42 43", 1, "", 0, true},
        {ZolOrderId::_desc.create, "30 06 04 01 41 02 01 09", 1, "", 0, true},
        {ZolUserId::_desc.create, "04 00", 1, "", 0, true},
        {AsnLongInt::_desc.create, "30 05 09 03 80 F9 C0", 1, "", 0, true},  // 1.5 stays fractional
        {AsnFixedReal::_desc.create, "30 02 09 00", 1, "", 0, true},
    };
    CheckDecodes(rows, sizeof rows / sizeof *rows);

    // The tail is left null, and nothing behind the value is read.
    AsnBuf b;
    std::string bytes = Bytes("30 03 02 01 05 FF FF");
    b.InstallData(&bytes[0], bytes.size());
    PatElem e;
    AsnLen used = 0;
    EXPECT_EQ(e.BDecPdu(b, used), 1);
    EXPECT_EQ(used, 5u);
    EXPECT_EQ(e.label, nullptr);
    AsnLongInt li;
    ASSERT_EQ(zt::Decode(Bytes("30 05 09 03 80 F9 C0"), li).result, 1);
    EXPECT_EQ(li.value.value, 1.5);
}

TEST(Sequence, PrintLayouts) {
    AsnFixedReal fr;
    fr.value = 12.5;
    EXPECT_EQ(Printed(fr), "{ -- SEQUENCE --\n    value 12.5,\n    decimals -- void --\n\n}");
    fr.decimals = new AsnInt(2);
    EXPECT_EQ(Printed(fr), "{ -- SEQUENCE --\n    value 12.5,\n,\n    decimals 2\n}");

    AsnSequenceContext ctx;
    EXPECT_EQ(Printed(ctx), "{ -- SEQUENCE --\n    seqNum -- void --,\n    recNum -- void --\n\n}");
    ctx.recNum = new AsnSequenceNumber(2);
    EXPECT_EQ(Printed(ctx), "{ -- SEQUENCE --\n    seqNum -- void --,\n    recNum 2\n}");
    ctx.seqNum = new AsnSequenceNumber(1);
    EXPECT_EQ(Printed(ctx), "{ -- SEQUENCE --\n    seqNum 1,\n    recNum 2\n}");
    delete ctx.recNum;
    ctx.recNum = nullptr;
    EXPECT_EQ(Printed(ctx), "{ -- SEQUENCE --\n    seqNum 1    recNum -- void --\n\n}");

    AsnDateTime dt;
    dt.date = 20180215;
    dt.time = 74047;
    EXPECT_EQ(Printed(dt), "{ -- SEQUENCE --\n    date 20180215,\n    time 74047\n}");
    EXPECT_EQ(Printed(PatEmpty()), "{ -- SEQUENCE --\n}");

    // A set pointer member outside the tail runs on into the next row.
    ZolMarketRep rep = MarketRep(nullptr);
    rep.seqContext->recNum = new AsnSequenceNumber(2);
    EXPECT_EQ(Printed(rep),
              "{ -- SEQUENCE --\n"
              "    seqContext { -- SEQUENCE --\n"
              "        seqNum -- void --,\n"
              "        recNum 2\n"
              "    }    marketId '4d31'H  -- \"M1\" --,\n"
              "    marketName -- void --,\n"
              "    marketStatus 0\n"
              "}");
    ZolMarketRep noContext;
    noContext.marketId = "M";
    noContext.marketStatus = 1;
    EXPECT_EQ(Printed(noContext),
              "{ -- SEQUENCE --\n"
              "    seqContext -- void --,\n"
              "    marketId '4d'H  -- \"M\" --,\n"
              "    marketName -- void --,\n"
              "    marketStatus 1\n"
              "}");

    // All-optional: a separator only after an earlier set member.
    PatOpt opt;
    opt.text = new AsnOcts("A");
    EXPECT_EQ(Printed(opt), "{ -- SEQUENCE --\n    num -- void --,\n    text '41'H  -- \"A\" --"
                            "    when -- void --\n\n}");
    opt.num = new AsnInt(3);
    EXPECT_EQ(Printed(opt), "{ -- SEQUENCE --\n    num 3,\n    text '41'H  -- \"A\" --    when -- void --\n\n}");

    // Choices print on their parent's line; nested blocks step in by four,
    // and an empty sequence closes at its parent's level.
    PatHolder h;
    h.head = 1;
    h.pair = 7;
    h.pick = new PatChoice;
    auto* when = static_cast<ZolDateTime*>(h.pick->_getref("inner", true)->_getref("when", true));
    *static_cast<AsnDateTime*>(when) = dt;
    EXPECT_EQ(Printed(h),
              "{ -- SEQUENCE --\n"
              "    head 1,\n"
              "    pair 7,\n"
              "    pick inner when { -- SEQUENCE --\n"
              "        date 20180215,\n"
              "        time 74047\n"
              "    }    spare -- void --\n"
              "\n"
              "}");
    h.spare = new PatChoice;
    h.spare->_getref("none", true);
    h.pick->_getref("rec", true)->_getref("when", true);
    static_cast<AsnDateTime&>(*h.pick->rec->when) = dt;
    EXPECT_EQ(Printed(h),
              "{ -- SEQUENCE --\n"
              "    head 1,\n"
              "    pair 7,\n"
              "    pick rec { -- SEQUENCE --\n"
              "        num -- void --,\n"
              "        text -- void --,\n"
              "        when { -- SEQUENCE --\n"
              "            date 20180215,\n"
              "            time 74047\n"
              "        }\n"
              "    },\n"
              "    spare none { -- SEQUENCE --\n"
              "    }\n"
              "}");
    EXPECT_EQ(indentLevel, 0);

    // Every embedded kind, a list, and a tail of two.
    PatAll all;
    all.num = -1;
    all.verb = ZolOrderVerb::sell;
    all.flag = true;
    all.ratio = 0.5;
    all.text = "t";
    all.methods.Set(size_t(4));
    all.methods.SetBit(ZolOrderMethods::limit);
    all.price = new ZolPrice;
    all.points.Append()->num = 4;
    all.extra = new ZolInteger(9);
    EXPECT_EQ(Printed(all),
              "{ -- SEQUENCE --\n"
              "    num -1,\n"
              "    verb 1,\n"
              "    flag TRUE,\n"
              "    ratio 0.5,\n"
              "    text '74'H  -- \"t\" --,\n"
              "    methods '40'H  -- BIT STRING bitlen = 4 --,\n"
              "    price { -- SEQUENCE --\n"
              "        value 0,\n"
              "        decimals -- void --\n"
              "\n"
              "    }    note -- void --,\n"
              "    points { -- SEQUENCE/SET OF -- \n"
              "        { -- SEQUENCE --\n"
              "            num 4,\n"
              "            label -- void --\n"
              "\n"
              "        }\n"
              "    },\n"
              "    opt -- void --,\n"
              ",\n"
              "    extra 9\n"
              "}");
    EXPECT_EQ(Encoded(all),
              "30 23 02 01 FF 0A 01 01 01 01 FF 09 03 80 F8 80 83 01 74 03 02 04 40 A4 02 09 00 31 05 30 03 02 01 04 "
              "87 01 09");
    PatAll back;
    ASSERT_EQ(zt::Decode(Bytes(Encoded(all).c_str()), back).result, 1);
    EXPECT_EQ(Printed(back), Printed(all));
}

TEST(Sequence, AssignmentCopiesMergeKeeps) {
    ZolMarketRep held = MarketRep("old");
    ZolMarketRep report = MarketRep(nullptr);
    report.marketId = "M2";
    report.marketStatus = 1;
    report.seqContext->recNum = new AsnSequenceNumber(5);
    held.seqContext->seqNum = new AsnSequenceNumber(4);

    ZolMarketRep merged = held;
    merged |= report;
    ASSERT_NE(merged.marketName, nullptr);
    EXPECT_EQ(std::string(*merged.marketName), "old");
    EXPECT_EQ(std::string(merged.marketId), "M2");
    EXPECT_EQ(merged.marketStatus.value, 1);
    ASSERT_NE(merged.seqContext->seqNum, nullptr);  // merged one level down
    EXPECT_EQ(merged.seqContext->seqNum->value, 4);
    EXPECT_EQ(merged.seqContext->recNum->value, 5);

    ZolMarketRep assigned = held;
    assigned = report;
    EXPECT_EQ(assigned.marketName, nullptr);
    EXPECT_EQ(assigned.seqContext->seqNum, nullptr);
    EXPECT_NE(assigned.seqContext, report.seqContext);
    EXPECT_NE(assigned.seqContext->recNum, report.seqContext->recNum);

    // A set source member is copied into the target, made if missing.
    ZolMarketRep bare;
    bare.marketStatus = 0;
    bare |= held;
    ASSERT_NE(bare.marketName, nullptr);
    EXPECT_NE(bare.marketName, held.marketName);
    held.marketName->ReSet("new");
    EXPECT_EQ(std::string(*bare.marketName), "old");

    // Into itself, nothing changes.
    std::string before = Printed(held);
    held |= held;
    held = held;
    EXPECT_EQ(Printed(held), before);

    // decimals only if the source has them.
    AsnFixedReal two, none;
    two.value = 1;
    two.decimals = new AsnInt(2);
    none.value = 3;
    two |= none;
    EXPECT_EQ(two.value.value, 3);
    ASSERT_NE(two.decimals, nullptr);
    EXPECT_EQ(two.decimals->value, 2);
    ZolOrderId plain, indexed;
    plain.orderNo = "A";
    indexed.orderNo = "B";
    indexed.speedIndex = new ZolInteger(7);
    ZolOrderId gains = plain, keeps = indexed;
    gains |= indexed;
    keeps |= plain;
    EXPECT_EQ(Encoded(gains), "30 06 04 01 42 02 01 07");
    EXPECT_EQ(Encoded(keeps), "30 06 04 01 41 02 01 07");

    // Lists are replaced whole, embedded strings overwritten even by an
    // empty one, choices merged inside the same alternative only.
    PatAll a, b, c;
    a.flag = b.flag = c.flag = false;
    a.points.Append()->num = 1;
    a.points.Append()->num = 2;
    a.text = "abc";
    b.points.Append()->num = 3;
    a |= b;
    ASSERT_EQ(a.points.Count(), 1);
    EXPECT_EQ(a.points.First()->num.value, 3);
    EXPECT_EQ(a.text.Len(), 0u);
    a |= c;
    EXPECT_EQ(a.points.Count(), 0);

    PatHolder x, y;
    x.head = x.pair = y.head = y.pair = 0;
    x.pick = new PatChoice;
    x.pick->_getref("rec", true)->_getref("num", true);
    x.pick->rec->num->value = 1;
    y.pick = new PatChoice;
    y.pick->_getref("rec", true)->_getref("text", true);
    x |= y;
    ASSERT_EQ(x.pick->choiceId, PatChoice::recCid);
    EXPECT_NE(x.pick->rec->num, nullptr);
    EXPECT_NE(x.pick->rec->text, nullptr);
    y.pick->_getref("num", true);
    x |= y;
    EXPECT_EQ(x.pick->choiceId, PatChoice::numCid);
}

TEST(Sequence, ReachByName) {
    ZolMarketRep rep;
    EXPECT_EQ(rep._getref("marketName", false), nullptr);
    AsnType* made = rep._getref("marketName", true);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made, rep.marketName);
    EXPECT_EQ(made->_getdesc(), &ZolMarketName::_desc);
    EXPECT_EQ(rep._getref("marketName", true), made);
    EXPECT_EQ(rep._getref("marketId", false), &rep.marketId);
    EXPECT_EQ(rep._getref("MarketName", true), nullptr);
    EXPECT_EQ(rep._getref("nosuch", true), nullptr);
    EXPECT_EQ(rep.seqContext, nullptr);

    AsnFixedReal fr;
    EXPECT_EQ(fr._getref("value"), &fr.value);
    EXPECT_EQ(fr._getref("decimals"), nullptr);
    EXPECT_NE(fr._getref("decimals", true), nullptr);
    EXPECT_EQ(PatEmpty()._getref("x", true), nullptr);

    // An optional member of an alias type answers with the alias's descriptor.
    ZolControlEventRep ev;
    EXPECT_EQ(ev._getref("value1", true)->_getdesc(), &ZolPrice::_desc);
}

TEST(Sequence, CloneOfADecodedValuePrintsTheSame) {
    PatHolder g;
    ASSERT_EQ(zt::Decode(Bytes("30 15 02 01 01 A5 03 02 01 07 A2 06 02 01 05 04 01 41 9F 82 2C 01 42"), g).result, 1);
    std::unique_ptr<AsnType> c(g.Clone());
    EXPECT_EQ(c->_getdesc(), &PatHolder::_desc);
    EXPECT_EQ(Printed(*c), Printed(g));
    static_cast<PatHolder*>(c.get())->pick->rec->num->value = 6;
    EXPECT_EQ(g.pick->rec->num->value, 5);
    EXPECT_EQ(Encoded(*c), "30 15 02 01 01 A5 03 02 01 07 A2 06 02 01 06 04 01 41 9F 82 2C 01 42");
}

}  // namespace

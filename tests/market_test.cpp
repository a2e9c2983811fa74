// Market structure and market data: markets, boards, instruments, sectors,
// securities, security boards, indices, summaries, price parameters,
// settlement prices and trading events. Each table pins what the generic
// catalogue walk cannot see: members told apart by place alone, optional
// runs, tags that skip numbers, and the failure each wrong shape gives.
#include <memory>

#include "cases.h"

namespace {

using namespace Zol;
using zt::Case;
using zt::Discrepancy;
using zt::Encoded;
using zt::Missing;

using zt::CheckAll;

TEST(MarketStructure, MembersByPlace) {
    CheckAll({
        // marketName and marketId are both 04: the second one is the name,
        // and 0A right after marketId means there is none.
        {"ZolMarketRep", "30 0C 30 00 04 02 4D 31 04 01 4E 0A 01 00", "", "marketName"},
        {"ZolMarketRep", "30 09 30 00 04 02 4D 31 0A 01 00", "", "", "marketName"},
        {"ZolMarketRep", "30 0F 30 00 04 02 4D 31 04 01 4E 04 01 4F 0A 01 00", Missing("ZolMarketRep", -105)},
        // A report that ends on orderMethods reads no further tag: the 1F
        // behind it would start an unfinished high tag.
        {"ZolBoardRep", "30 0B 30 00 04 01 42 0A 01 00 03 01 00 | 1F", "", "", "boardName"},
        {"ZolBoardRep", "30 0E 30 00 04 01 42 0A 01 00 03 01 00 04 01 4E", "", "boardName"},
        {"ZolBoardRep", "30 0E 30 00 04 01 42 0A 01 00 04 01 4E 03 01 00", Missing("ZolBoardRep", -106)},
        // displayMode is 81 in the board messages and 0A in the others.
        {"ZolBoardSuspend", "30 06 04 01 42 0A 01 02", Discrepancy("ZolBoardSuspend", -110)},
        {"ZolBoardUnsuspend", "30 06 04 01 42 81 01 02", "", "displayMode"},
        {"ZolMarketSuspend", "30 06 04 01 4D 81 01 02", Discrepancy("ZolMarketSuspend", -112)},
        {"ZolMarketUnsuspend", "30 06 04 01 4D 0A 01 00", "", "displayMode"},
        {"ZolInstrSuspend", "30 06 04 01 49 0A 01 02", "", "displayMode"},
        {"ZolInstrUnsuspend", "30 06 04 01 49 81 01 02", Discrepancy("ZolInstrUnsuspend", -113)},
        // The spread legs are each optional; the second may come alone but
        // not before the first.
        {"ZolInstrRep", "30 0E 30 00 04 01 49 0A 01 00 0A 01 00 83 01 4C", "", "spreadLeg2InstrId",
         "instrName spreadLeg1InstrId"},
        {"ZolInstrRep", "30 14 30 00 04 01 49 81 01 4E 0A 01 00 0A 01 00 82 01 4B 83 01 4C", "",
         "instrName spreadLeg1InstrId spreadLeg2InstrId"},
        {"ZolInstrRep", "30 11 30 00 04 01 49 0A 01 00 0A 01 00 83 01 4C 82 01 4B", Discrepancy("ZolInstrRep", -107)},
        {"ZolInstrRep", "30 0B 30 00 04 01 49 0A 01 00 82 01 4B", Missing("ZolInstrRep", -106)},
    });
}

TEST(MarketStructure, EncodesAsBuilt) {
    ZolBoardRep board;
    board.seqContext = new ZolSequenceContext;
    board.boardId = "B";
    board.boardStatus = ZolSuspensionStatus::suspended;
    EXPECT_EQ(Encoded(board), "30 0B 30 00 04 01 42 0A 01 01 03 01 00");  // empty orderMethods still travels
    board.orderMethods.ReSet(size_t(12));
    board.orderMethods.SetBit(ZolOrderMethods::limit);
    board.orderMethods.SetBit(ZolOrderMethods::hidden);
    EXPECT_EQ(Encoded(board), "30 0D 30 00 04 01 42 0A 01 01 03 03 04 40 10");

    ZolBoardSuspend bs;
    bs.boardId = "B";
    bs.displayMode = new ZolDisplayMode(ZolDisplayMode::popup);
    EXPECT_EQ(Encoded(bs), "30 06 04 01 42 81 01 02");
    ZolInstrSuspend is;
    is.instrId = "B";
    is.displayMode = new ZolDisplayMode(ZolDisplayMode::popup);
    EXPECT_EQ(Encoded(is), "30 06 04 01 42 0A 01 02");
}

TEST(Securities, OptionalRunsAndPlaces) {
    CheckAll({
        {"ZolSecRep", "30 0E 30 00 04 01 53 04 01 4E 0A 01 00 04 01 49", "", "", "mainBoardId"},
        {"ZolSecRep", "30 11 30 00 04 01 53 04 01 4E 0A 01 00 81 01 42 04 01 49", "", "mainBoardId"},
        // Two 04 in a row: the second is messageText, whatever the optional
        // time before it.
        {"ZolSecChangeState", "30 06 04 01 53 04 01 54", "", "", "time displayMode secState"},
        {"ZolSecChangeState", "30 0E 04 01 53 A1 06 02 01 00 02 01 00 04 01 54", "", "time", "displayMode"},
        {"ZolSecChangeState", "30 09 04 01 53 04 01 54 83 01 58", "", "secState", "time displayMode"},
        {"ZolSecChangeState", "30 06 04 01 53 82 01 02", Missing("ZolSecChangeState", -145)},
        // foreignLimit is a bare REAL, holdingsLimit a price record: the
        // one message cannot be read as the other.
        {"ZolSecSetForeignLimit", "30 05 04 01 53 09 00"},
        {"ZolSecSetHoldingsLimit", "30 05 04 01 53 09 00", Missing("ZolSecSetHoldingsLimit", -133)},
        {"ZolSecSetHoldingsLimit", "30 07 04 01 53 30 02 09 00", "", "holdingsLimit"},
        {"ZolSecStatesTransitionRep", "30 09 30 00 02 01 00 04 00 04 00"},
    });

    ZolSecChangeState cs;
    cs.secCode = "S";
    cs.messageText = "T";
    cs.secState = new ZolSecStateId("X");
    EXPECT_EQ(Encoded(cs), "30 09 04 01 53 04 01 54 83 01 58");
    ZolSecSetForeignLimit fl;
    fl.secCode = "S";
    fl.foreignLimit = 0.0;
    EXPECT_EQ(Encoded(fl), "30 05 04 01 53 09 00");
}

// The 76 members of the dynamic record in table order, each under its own
// context number: the numbers skip, and from 31 on take two octets.
const char* const kDynamicTags =
    "81, 82, 83, 84, 85, 86, A7, A8, A9, AA, AB, 8C, B4, B6, 97, 98, 99, 9A, BB, BD, 9E, "
    "9F 1F, 9F 20, 9F 21, BF 2B, BF 2C, BF 2D, BF 2E, BF 2F, BF 30, BF 31, BF 32, BF 33, BF 34, "
    "BF 35, BF 36, BF 37, BF 38, BF 39, 9F 3A, BF 3B, BF 3C, BF 3D, BF 3E, BF 3F, BF 40, BF 41, "
    "9F 42, BF 43, BF 44, BF 45, BF 46, BF 47, BF 48, BF 49, 9F 50, 9F 51, 9F 52, BF 53, BF 54, "
    "9F 55, BF 56, 9F 57, BF 58, 9F 59, BF 5A, BF 5B, 9F 5C, BF 5D, BF 5E, BF 5F, 9F 61, BF 62, "
    "BF 63, BF 64, 9F 65";
const char* const kStaticTags =
    "04, 04, 81, 82, 04, 83, 04, A4, A5, A6, A7, A8, A9, 04, 0A, 04, 8A, 02, 02, 8B, 0A, 30, 30, "
    "8C, AD, AE, 8F, 90, B1, B2";

// A security board report with every member set.
std::unique_ptr<ZolSecBoardRep> Full(int seed) {
    std::unique_ptr<ZolSecBoardRep> rep(new ZolSecBoardRep);
    zt::Filler filler;
    filler.seed = seed;
    filler.Fill(rep.get(), &ZolSecBoardRep::_desc);
    return rep;
}

std::string Bytes(const AsnType& v) {
    return zt::Bytes(Encoded(v).c_str());
}

TEST(SecurityBoards, EveryMemberUnderItsTag) {
    std::unique_ptr<ZolSecBoardRep> rep = Full(1);
    EXPECT_EQ(zt::InnerTags(Bytes(*rep)), "30, 30, A1, A2");
    EXPECT_EQ(zt::InnerTags(Bytes(*rep->dynamics)), kDynamicTags);
    EXPECT_EQ(zt::InnerTags(Bytes(*rep->statics)), kStaticTags);
}

// The whole report fits the two-argument front door's block, and comes
// back the same.
TEST(SecurityBoards, FullReportThroughTheFrontDoor) {
    std::unique_ptr<ZolSecBoardRep> rep = Full(3);
    size_t len = 0;
    char* p = AsnBuffer::Encode(*rep, len);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p + len, AsnBuffer::data + AsnBuffer::BUFSIZE);
    std::string wire(p, len);
    EXPECT_EQ(zt::Hex(wire), Encoded(*rep));

    ZolSecBoardRep back;
    zt::Outcome o = zt::Decode(wire, back);
    ASSERT_EQ(o.result, 1) << o.err;
    EXPECT_EQ(zt::Printed(back), zt::Printed(*rep));
    ASSERT_TRUE(back.dynamics && back.statics);
    EXPECT_EQ(zt::InnerTags(Bytes(*back.dynamics)), kDynamicTags);
    EXPECT_EQ(zt::InnerTags(Bytes(*back.statics)), kStaticTags);
}

TEST(SecurityBoards, PartialRecordsOnTheWire) {
    CheckAll({
        {"ZolSecBoardRep", "30 10 30 00 30 06 04 01 53 04 01 42 A2 04 9F 52 01 07", "", "dynamics.numTrades",
         "statics dynamics.numOrders"},
        {"ZolSecBoardRep", "30 0A 30 00 30 06 04 01 53 04 01 42", "", "", "statics dynamics"},
        {"ZolSecBoardRep",
         "30 34 30 00 30 06 04 01 53 04 01 42 A1 26 04 01 4E 04 01 53 04 01 49 04 01 43 04 01 4D 0A 01 00 "
         "04 01 4A 02 01 64 02 01 02 0A 01 02 30 02 09 00 30 02 09 00 A2 00",
         "", "statics dynamics", "statics.isinCode dynamics.secRemarks"},
        {"ZolSecBoardRepDynamic", "30 00", "", "", "secRemarks tradeDate"},
        {"ZolSecBoardRepDynamic", "30 07 9F 65 04 01 34 D6 E6", "", "tradeDate", "prevDate"},
        {"ZolSecBoardRepDynamic", "30 04 9F 52 01 07", "", "numTrades", "numOpenOrders"},
        {"ZolSecBoardRepDynamic", "30 04 9F 1F 01 03", "", "impliedOfferDepth", "offerDepth"},
        {"ZolSecBoardRepDynamic", "30 03 9E 01 03", "", "offerDepth", "impliedOfferDepth"},
        {"ZolSecBoardRepDynamic", "30 05 BF 2B 02 09 00", "", "cbRefPrice", "numOffers"},
        {"ZolSecBoardRepDynamic", "30 05 BF 5F 02 09 00", "", "strikeValueToday", "prevDate"},
        {"ZolSecBoardRepDynamic", "30 04 9F 61 01 01", "", "prevDate", "strikeValueToday"},
        {"ZolSecBoardRepDynamic", "30 03 8C 01 01", "", "inheritedStatus"},
        {"ZolSecBoardRepDynamic", "30 80 9F 52 01 07 00 00", "", "numTrades", "", "30 04 9F 52 01 07"},
        {"ZolSecBoardRepDynamic", "30 80 BF 2D 80 09 00 00 00 9F 52 01 07 00 00", "", "refPrice numTrades", "",
         "30 09 BF 2D 02 09 00 9F 52 01 07"},
        // A gap in the numbers is no gap on the wire.
        {"ZolSecBoardRepDynamic", "30 09 9F 21 01 05 BF 2D 02 09 00", "", "numOffers refPrice",
         "cbRefPrice cbRefYield refYield"},
        // No row for context 13; an integer in constructed form, a record
        // in primitive form, two members out of order.
        {"ZolSecBoardRepDynamic", "30 03 8D 01 00", Discrepancy("ZolSecBoardRepDynamic", -100)},
        {"ZolSecBoardRepDynamic", "30 05 BF 52 02 01 07", Discrepancy("ZolSecBoardRepDynamic", -100)},
        {"ZolSecBoardRepDynamic", "30 05 9F 2B 02 09 00", Discrepancy("ZolSecBoardRepDynamic", -100)},
        {"ZolSecBoardRepDynamic", "30 08 9F 52 01 07 9F 21 01 05", Discrepancy("ZolSecBoardRepDynamic", -100)},
        // Without its optional run the static record goes from secShortName
        // straight to issuerId; sectorId is context 10 though 17th.
        {"ZolSecBoardRepStatic",
         "30 26 04 01 4E 04 01 53 04 01 49 04 01 43 04 01 4D 0A 01 00 04 01 4A 02 01 64 02 01 02 0A 01 02 "
         "30 02 09 00 30 02 09 00",
         "", "", "isinCode isIndex listingTypeId sectorId yieldDecimals expiryDate spreadLeg2SecBoardId"},
        {"ZolSecBoardRepStatic",
         "30 2C 04 01 4E 04 01 53 04 01 49 04 01 43 04 01 4D 0A 01 00 04 01 4A 8A 01 58 02 01 64 02 01 02 "
         "8B 01 04 0A 01 02 30 02 09 00 30 02 09 00",
         "", "sectorId yieldDecimals", "isinCode expiryDate"},
        {"ZolSecBoardRepStatic",
         "30 21 04 01 4E 04 01 53 04 01 49 04 01 43 04 01 4D 0A 01 00 04 01 4A 02 01 64 02 01 02 0A 01 02 "
         "8C 01 01",
         Missing("ZolSecBoardRepStatic", -112)},
        // A record that ends before totValue reads on into what follows it.
        {"ZolSecBoardRepStatic",
         "30 22 04 01 4E 04 01 53 04 01 49 04 01 43 04 01 4D 0A 01 00 04 01 4A 02 01 64 02 01 02 0A 01 02 "
         "30 02 09 00 | 05 00",
         Missing("ZolSecBoardRepStatic", -113)},
        // settleDate is a plain 02 between two records.
        {"ZolSecBoardConvertPriceYieldReq", "30 0C 30 06 04 01 53 04 01 42 30 02 09 00", "", "price", "settleDate"},
        {"ZolSecBoardConvertPriceYieldReq", "30 0F 30 06 04 01 53 04 01 42 02 01 05 30 02 09 00", "",
         "settleDate price"},
        {"ZolSecBoardConvertYieldPriceReq", "30 0C 30 06 04 01 53 04 01 42 30 02 09 00", "", "yield", "settleDate"},
        {"ZolSecBoardConvertYieldPriceReq", "30 0F 30 06 04 01 53 04 01 42 82 01 05 30 02 09 00",
         Missing("ZolSecBoardConvertYieldPriceReq", -152)},
        {"ZolSecBoardSetLastPriceOrLastYield", "30 08 30 06 04 01 53 04 01 42", "", "", "lastPrice lastYield"},
        {"ZolSecBoardSetLastPriceOrLastYield", "30 0C 30 06 04 01 53 04 01 42 A2 02 09 00", "", "lastYield",
         "lastPrice"},
        {"ZolSecBoardSetRefPrice", "30 0B 30 06 04 01 53 04 01 42 83 01 54", "", "messageText", "refPrice time"},
        // A snapshot of 15 members misses inheritedStatus.
        {"ZolSecBoardSnapshotRep",
         "30 3B 30 06 04 01 53 04 01 42 30 02 09 00 30 02 09 00 02 01 01 02 01 02 02 01 03 02 01 04 "
         "30 02 09 00 30 02 09 00 30 02 09 00 30 02 09 00 30 02 09 00 30 02 09 00 30 02 09 00 0A 01 00 | 05 00",
         Missing("ZolSecBoardSnapshotRep", -141)},
    });

    ZolSecBoardRepStatic st;
    zt::From(st,
             "30 26 04 01 4E 04 01 53 04 01 49 04 01 43 04 01 4D 0A 01 00 04 01 4A 02 01 64 02 01 02 0A 01 02 "
             "30 02 09 00 30 02 09 00");
    EXPECT_STREQ(st.issuerId, "I");
    EXPECT_STREQ(st.instrId, "J");
    EXPECT_EQ(st.lotSize.value, 100);
    EXPECT_EQ(st.negDealInitiator.value, ZolNegDealInitiator::either);
}

TEST(SecurityBoards, DynamicRecordsAsBuilt) {
    ZolSecBoardRepDynamic dyn;
    EXPECT_EQ(Encoded(dyn), "30 00");
    dyn.tradeDate = new ZolDate(20240102);
    EXPECT_EQ(Encoded(dyn), "30 07 9F 65 04 01 34 D6 E6");
    delete dyn.tradeDate;
    dyn.tradeDate = nullptr;
    dyn.numTrades = new ZolInteger(7);
    EXPECT_EQ(Encoded(dyn), "30 04 9F 52 01 07");

    ZolSecBoardRep rep;
    rep.seqContext = new ZolSequenceContext;
    rep.secBoardId = new ZolSecBoardId;
    rep.secBoardId->secCode = "S";
    rep.secBoardId->boardId = "B";
    rep.dynamics = new ZolSecBoardRepDynamic(dyn);
    EXPECT_EQ(Encoded(rep), "30 10 30 00 30 06 04 01 53 04 01 42 A2 04 9F 52 01 07");
}

// The report the tests merge: seqNum 9 in its context, security board S/B,
// and dynamics holding numTrades 7 alone.
const char* const kTradesOnly = "30 15 30 05 A1 03 02 01 09 30 06 04 01 53 04 01 42 A2 04 9F 52 01 07";

TEST(SecurityBoards, MergeOfDynamicsKeepsTheRest) {
    std::unique_ptr<ZolSecBoardRep> held = Full(1);
    const ZolSecBoardRepStatic* statics = held->statics;
    const std::string staticsBefore = Encoded(*statics);
    std::unique_ptr<ZolSecBoardRep> expected(static_cast<ZolSecBoardRep*>(held->Clone()));
    expected->seqContext->seqNum->value = 9;
    expected->secBoardId->secCode = "S";
    expected->secBoardId->boardId = "B";
    expected->dynamics->numTrades->value = 7;

    ZolSecBoardRep report;
    zt::From(report, kTradesOnly);
    *held |= report;
    EXPECT_EQ(held->statics, statics);
    EXPECT_EQ(Encoded(*held->statics), staticsBefore);
    EXPECT_EQ(Encoded(*held), Encoded(*expected));
    EXPECT_NE(held->dynamics->numTrades, report.dynamics->numTrades);  // a copy, not the source's object

    // A report with neither record changes the key and context alone.
    ZolSecBoardRep bare;
    zt::From(bare, "30 12 30 05 A2 03 02 01 04 30 09 04 02 53 32 04 03 42 4F 41");
    *held |= bare;
    expected->seqContext->recNum->value = 4;
    expected->secBoardId->secCode = "S2";
    expected->secBoardId->boardId = "BOA";
    EXPECT_EQ(Encoded(*held), Encoded(*expected));

    // Merging into itself changes nothing.
    *held |= *held;
    EXPECT_EQ(Encoded(*held), Encoded(*expected));
}

TEST(SecurityBoards, MergeDescendsAndAllocates) {
    ZolSecBoardRep held;
    zt::From(held, kTradesOnly);
    ASSERT_EQ(held.statics, nullptr);

    // Into a record that has no statics and a thin dynamics, a full report
    // brings everything.
    std::unique_ptr<ZolSecBoardRep> full = Full(2);
    held |= *full;
    EXPECT_EQ(Encoded(held), Encoded(*full));
    EXPECT_NE(held.statics, full->statics);

    // A price merges member by member: the value is taken, the decimals
    // are kept when the report has none.
    held.dynamics->bidPrice->value = 1.5;
    held.dynamics->bidPrice->decimals->value = 2;
    ZolSecBoardRep report;
    zt::From(report, "30 10 30 00 30 06 04 01 53 04 01 42 A2 04 B4 02 09 00");
    held |= report;
    EXPECT_EQ(held.dynamics->bidPrice->value.value, 0.0);
    ASSERT_NE(held.dynamics->bidPrice->decimals, nullptr);
    EXPECT_EQ(held.dynamics->bidPrice->decimals->value, 2);

    // Named bits are replaced whole, an empty set included; required
    // static members are overwritten, optional ones kept.
    ZolSecBoardRep other;
    zt::From(other,
             "30 37 30 00 30 06 04 01 53 04 01 42 A1 26 04 01 4E 04 01 53 04 01 49 04 01 43 04 01 4D 0A 01 00 "
             "04 01 4A 02 01 64 02 01 02 0A 01 02 30 02 09 00 30 02 09 00 A2 03 84 01 00");
    std::string isin(held.statics->isinCode->octs);
    held |= other;
    EXPECT_EQ(held.dynamics->orderMethods->BitLen(), 0u);
    EXPECT_STREQ(held.statics->secName, "N");
    EXPECT_STREQ(held.statics->issuerId, "I");
    EXPECT_EQ(held.statics->priceDecimals.value, 2);
    ASSERT_NE(held.statics->isinCode, nullptr);
    EXPECT_EQ(std::string(held.statics->isinCode->octs), isin);
    ASSERT_NE(held.statics->spreadLeg1SecBoardId, nullptr);
    EXPECT_EQ(Encoded(*held.statics->spreadLeg1SecBoardId), Encoded(*full->statics->spreadLeg1SecBoardId));
}

TEST(IndicesAndSummaries, ShapesOnTheWire) {
    CheckAll({
        {"ZolIndexValRep", "30 02 31 00"},
        {"ZolIndexValRep", "30 0C 31 0A 30 08 30 02 09 00 30 02 09 00 | 05 00", Missing("ZolIndexValRep", -102)},
        {"ZolIndexValRep", "30 0F 31 0D 30 0B 30 02 09 00 30 02 09 00 04 01 41", Missing("ZolIndexValRep", -102)},
        {"ZolIndexValRep", "30 06 31 04 31 02 05 00", "Unexpected Tag\n" + zt::DoorLine("ZolIndexValRep", -106)},
        {"ZolSummaryKey", "30 03 83 01 42", "", "boardId", "sectorId marketId"},
        {"ZolSummaryKey", "30 06 81 01 58 83 01 42", "", "sectorId boardId", "marketId"},
        {"ZolSummaryKey", "30 06 83 01 42 81 01 58", Discrepancy("ZolSummaryKey", -110)},
        {"ZolSummarySectorMarketBoardRep",
         "30 20 30 00 30 00 30 1A 02 01 00 02 01 00 02 01 00 02 01 00 02 01 00 02 01 00 30 02 09 00 30 02 09 00",
         "", "summaryKey summaryData", "summaryKey.sectorId summaryKey.marketId summaryKey.boardId"},
        {"ZolSummaryData",
         "30 17 02 01 00 02 01 00 02 01 00 02 01 00 02 01 00 30 02 09 00 30 02 09 00",
         Missing("ZolSummaryData", -105)},
        // The selectors of the by-firm and by-user requests.
        {"ZolMktSummByFirmChangeReq", "30 0B 02 01 01 A2 06 04 01 53 04 01 42", "", "secBoardId", "firmId"},
        {"ZolMktSummByFirmChangeReq", "30 0B 02 01 01 30 06 04 01 53 04 01 42",
         Discrepancy("ZolMktSummByFirmChangeReq", -111)},
        {"ZolMktSummByUserChangeReq", "30 0B 02 01 01 A3 06 04 01 53 04 01 42", "", "secBoardId", "firmId userId"},
        // A2 here is userId (82) in constructed form, the two texts joined.
        {"ZolMktSummByUserChangeReq", "30 0B 02 01 01 A2 06 04 01 53 04 01 42", "", "userId", "firmId secBoardId",
         "30 07 02 01 01 82 02 53 42"},
        {"ZolMktSummByUserChangeReq", "30 0B 02 01 01 A4 06 04 01 53 04 01 42",
         Discrepancy("ZolMktSummByUserChangeReq", -121)},
        {"ZolMktSummByUserChangeReq", "30 09 02 01 01 81 01 46 82 01 55", "", "firmId userId", "secBoardId"},
    });

    ZolSummarySectorMarketBoardRep rep;
    rep.seqContext = new ZolSequenceContext;
    rep.summaryKey = new ZolSummaryKey;
    rep.summaryData = new ZolSummaryData;
    for (ZolInteger* count : {&rep.summaryData->numOrders, &rep.summaryData->numOpenOrders, &rep.summaryData->numTrades,
                              &rep.summaryData->numPriceUp, &rep.summaryData->numPriceDown, &rep.summaryData->numNoChange})
        *count = 0;
    rep.summaryData->volume = new ZolLargeQty;
    rep.summaryData->value = new ZolLargePrice;
    EXPECT_EQ(Encoded(rep),
              "30 20 30 00 30 00 30 1A 02 01 00 02 01 00 02 01 00 02 01 00 02 01 00 02 01 00 30 02 09 00 30 02 09 00");
    rep.summaryKey->boardId = new ZolBoardId("B");
    EXPECT_EQ(Encoded(*rep.summaryKey), "30 03 83 01 42");
}

// A list is replaced whole by a merge, never element by element.
TEST(IndicesAndSummaries, MergeReplacesTheList) {
    ZolIndexValRep held, two, one, none;
    zt::Filler filler;
    filler.Fill(&two, &ZolIndexValRep::_desc);
    held = two;
    ASSERT_EQ(held.valuesList.Count(), 2);
    zt::From(one, "30 10 31 0E 30 0C 30 02 09 00 30 02 09 00 30 02 09 00");
    held |= one;
    EXPECT_EQ(held.valuesList.Count(), 1);
    EXPECT_EQ(Encoded(held), Encoded(one));
    EXPECT_NE(held.valuesList.First(), one.valuesList.First());
    held |= two;
    EXPECT_EQ(Encoded(held), Encoded(two));
    zt::From(none, "30 02 31 00");
    held |= none;
    EXPECT_EQ(held.valuesList.Count(), 0);
    EXPECT_EQ(held.valuesList.First(), nullptr);
}

TEST(PricesAndEvents, ShapesOnTheWire) {
    CheckAll({
        {"ZolPriceParamReq", "30 05 30 00 83 01 4D", "", "marketId", "secCode boardId"},
        {"ZolPriceParamRep", "30 12 30 00 30 06 04 01 53 04 01 42 04 00 02 01 01 02 01 0A"},
        {"ZolPriceParamRep", "30 12 30 00 30 06 04 01 53 04 01 42 04 00 02 01 01 04 01 0A",
         Missing("ZolPriceParamRep", -107)},
        {"ZolSecSettlePriceHistSetPrice", "30 0A 04 01 53 30 02 09 00 0A 01 00"},
        {"ZolSecSettlePriceHistSetPrice", "30 0A 04 01 53 30 02 09 00 0A 01 09"},
        // Trading events: the context numbers pass over required members.
        {"ZolTrdEventRep", "30 16 30 00 02 01 01 30 06 02 01 00 02 01 00 02 01 05 04 01 54 0A 01 00", "", "",
         "randomisedInterval actualEventTime boardId instrId secCode"},
        {"ZolTrdEventRep",
         "30 21 30 00 02 01 01 30 06 02 01 00 02 01 00 02 01 05 A2 06 02 01 00 02 01 00 04 01 54 0A 01 00 84 01 49",
         "", "actualEventTime instrId", "randomisedInterval boardId secCode"},
        {"ZolTrdEventRep", "30 19 30 00 02 01 01 30 06 02 01 00 02 01 00 02 01 05 04 01 54 0A 01 00 82 01 49",
         Discrepancy("ZolTrdEventRep", -109)},
        {"ZolTrdEventAdd", "30 06 02 01 05 04 01 54", "", "", "eventTime randomisedInterval"},
        {"ZolTrdEventAdd", "30 09 02 01 05 04 01 54 83 01 42", "", "boardId", "instrId"},
        {"ZolTrdEventAdd", "30 06 02 01 05 83 01 42", Missing("ZolTrdEventAdd", -112)},
        {"ZolTrdEventRemove", "30 00", "", "", "eventTime priority transitionId boardId instrId secCode"},
        {"ZolTrdEventRemove", "30 03 84 01 42", "", "boardId", "transitionId"},
        {"ZolTrdEventRemove", "30 03 83 01 42", "", "transitionId", "boardId"},
    });

    ZolSecSettlePriceHistSetPrice sp;
    zt::From(sp, "30 0A 04 01 53 30 02 09 00 0A 01 09");
    EXPECT_EQ(sp.priceType.value, 9);  // outside the table, kept as read

    ZolTrdEventRemove rm;
    rm.boardId = new ZolBoardId("B");
    EXPECT_EQ(Encoded(rm), "30 03 84 01 42");
    ZolTrdEventAdd add;
    add.priority = 5;
    add.transitionId = "T";
    add.boardId = new ZolBoardId("B");
    EXPECT_EQ(Encoded(add), "30 09 02 01 05 04 01 54 83 01 42");
}

}  // namespace

// The trading messages on the wire: where each member of the order, deal,
// trade, allocation and book classes stands among its neighbours, what a
// misplaced one fails with, the whole road of one order from client to host
// and back, and how reports merge into the records a client holds.
#include <memory>
#include <sstream>

#include "support.h"
#include "walk.h"

namespace {

using namespace Zol;

const char* const kMissing = "ERROR - SEQUENCE is missing non-optional elmt.";
const char* const kLength = "ERROR - Length discrepancy on sequence.";
const char* const kChoice = "ERROR - unexpected tag in CHOICE";
const char* const kListTag = "Unexpected Tag";

// The member at a dotted path ("statics.details.yield", "legList.0"), or
// null where a step is absent.
AsnType* At(AsnType& v, const std::string& path) {
    AsnType* p = &v;
    std::istringstream steps(path);
    std::string step;
    while (p && std::getline(steps, step, '.'))
        p = p->_getref(step.c_str(), false);
    return p;
}

// A member's value as the checks of a vector write it: the text of a
// string, the printed form of anything else.
std::string Shown(AsnType& v) {
    if (AsnResolved(v._getdesc())->type == AsnTypeDesc::OCTET_STRING)
        return std::string(static_cast<AsnOcts&>(v).octs, static_cast<AsnOcts&>(v).octetLen);
    return zt::Printed(v);
}

// Checks a decoded value against words such as "+price -yield type=1":
// present, absent, or present with that value.
void Expect(AsnType& v, const std::string& checks, const std::string& where) {
    std::istringstream words(checks);
    std::string w;
    while (words >> w) {
        if (w[0] == '+' || w[0] == '-') {
            EXPECT_EQ(At(v, w.substr(1)) != nullptr, w[0] == '+') << where << ": " << w;
        } else {
            size_t eq = w.find('=');
            AsnType* m = At(v, w.substr(0, eq));
            ASSERT_TRUE(m) << where << ": " << w;
            EXPECT_EQ(Shown(*m), w.substr(eq + 1)) << where << ": " << w;
        }
    }
}

// One message body of a named class: decodes with `checks` holding and
// encodes back to `again` (or to itself), or fails with `code` after the
// one line `text`. Some failing bodies carry bytes behind them, since a
// decoder that misses a required member reads the next tag wherever it is.
struct Wire {
    const char* type;
    const char* hex;
    int code;
    const char* checks;  // the failure text when code is not 0
    const char* again = nullptr;
};

const Wire kWire[] = {
    // required members alone: both optional runs absent
    {"ZolOrderEntry",
     "30 11 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03",
     0, "-visibleQuantity -price -yield -triggerPrice -minFillQuantity -expiryTime -execUserId duration=3"},
    // triggerPrice past the three absent members before it
    {"ZolOrderEntry",
     "30 15 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 A3 02 09 00 0A 01 03",
     0, "+triggerPrice -yield -price -visibleQuantity"},
    // yield travels under 30, not A3
    {"ZolOrderEntry",
     "30 15 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 30 02 09 00 0A 01 03",
     0, "+yield -triggerPrice"},
    // the whole middle run
    {"ZolOrderEntry",
     "30 23 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 81 01 03 A2 02 09 00 30 02 09 00 A3 02 09 00 84 "
     "01 02 0A 01 03",
     0, "+visibleQuantity +price +yield +triggerPrice +minFillQuantity"},
    // no duration after the middle run
    {"ZolOrderEntry",
     "30 16 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 A5 06 02 01 01 02 01 02",
     -104, kMissing},
    // constructed text members, written back primitive
    {"ZolOrderEntry",
     "30 25 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03 A6 03 04 01 58 A7 03 04 01 59 AC 03 04 "
     "01 5A AE 03 04 01 57",
     0, "trdAccId=X brokerRef=Y tradeReference=Z execUserId=W",
     "30 1D 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03 86 01 58 87 01 59 8C 01 5A 8E 01 57"},
    // an unknown tag in the end run is left over
    {"ZolOrderEntry", "30 14 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03 8F 01 00", -105, kLength},
    // the end run out of order
    {"ZolOrderEntry",
     "30 17 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03 87 01 59 86 01 58",
     -105, kLength},
    {"ZolOrderApprove", "30 00", 0, "-orderId -approveTraderId"},
    // the second 01 is replaceCurrent
    {"ZolOrderMarketMaker",
     "30 19 30 11 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03 01 01 FF 01 01 00",
     0, "-secondOrder -secondTopup firstTopup=TRUE replaceCurrent=FALSE"},
    {"ZolOrderMarketMaker",
     "30 2C 30 11 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03 01 01 FF A1 11 30 03 04 01 41 0A "
     "01 00 0A 01 00 02 01 05 0A 01 03 01 01 00",
     0, "+secondOrder -secondTopup replaceCurrent=FALSE"},
    {"ZolOrderMarketMaker",
     "30 1C 30 11 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03 01 01 00 82 01 FF 01 01 FF",
     0, "-secondOrder secondTopup=TRUE firstTopup=FALSE replaceCurrent=TRUE"},
    // no fromUserId: straight to the required 04
    {"ZolOrderTransfer", "30 03 04 01 42", 0, "-fromUserId toUserId=B"},
    {"ZolOrderWithdraw", "30 03 0A 01 00", 0, "-orderId -buySell"},
    // A2 is yield here, price in the entry
    {"ZolOrderAmend", "30 0F 30 03 04 01 31 A2 02 09 00 02 01 05 0A 01 03", 0, "+yield -price"},
    {"ZolOrderTickUpDown", "30 0B 30 06 04 01 41 04 01 42 02 01 FE", 0, "noPriceTick=-2"},
    {"ZolOrderRep", "30 02 30 00", 0, "-orderId -statics -dynamics"},
    {"ZolOrderRep", "30 0A 30 00 A2 06 0A 01 01 02 01 05", 0, "-orderId -statics +dynamics"},
    {"ZolOrderRep", "30 07 30 00 30 03 04 01 31", 0, "+orderId"},
    // a third 30 is left over
    {"ZolOrderRep", "30 09 30 00 30 03 04 01 31 30 00", -126, kLength},
    {"ZolOrderRep", "30 04 30 00 A3 00", -126, kLength},
    // statics without entryTime: the nested class's code
    {"ZolOrderRep",
     "30 27 30 00 A1 23 30 06 04 01 41 04 01 42 04 01 49 04 01 55 04 01 46 0A 01 00 0A 01 01 02 01 0A "
     "0A 01 00 0A 01 03 84 01 00",
     -122, kMissing},
    // dynamics without balance
    {"ZolOrderRep", "30 0B 30 00 A2 07 0A 01 01 A1 02 09 00", -110, kMissing},
    // A7 00 gives an empty details object
    {"ZolOrderRep",
     "30 31 30 00 A1 2D 30 06 04 01 41 04 01 42 04 01 49 04 01 55 04 01 46 0A 01 00 0A 01 01 02 01 0A "
     "0A 01 00 0A 01 03 30 09 02 01 01 02 01 02 02 01 03 A7 00",
     0, "+statics.details -statics.details.yield -statics.price"},
    {"ZolOrderTransferRep",
     "30 19 30 00 02 01 07 04 01 41 04 01 42 30 06 02 01 01 02 01 02 04 01 4F 0A 01 01",
     0, "-boardId -orderId toUserId=A fromUserId=B operatorId=O"},
    {"ZolOrderMultiLeg", "30 0D 30 03 04 01 41 0A 01 03 02 01 05 31 00", 0, "-legList.0 -purgeOnLogoff"},
    {"ZolOrderMultiLeg",
     "30 2A 30 03 04 01 41 0A 01 03 02 01 05 31 1A 30 0B 30 03 04 01 41 0A 01 00 02 01 01 30 0B 30 03 "
     "04 01 41 0A 01 00 02 01 01 88 01 FF",
     0, "+legList.1 -legList.2 +purgeOnLogoff"},
    {"ZolOrderMultiLeg", "30 0E 30 03 04 01 41 0A 01 03 02 01 05 88 01 FF", -137, kMissing},
    // purgeOnLogoff is 88, not 84
    {"ZolOrderMultiLeg", "30 10 30 03 04 01 41 0A 01 03 02 01 05 31 00 84 01 FF", -138, kLength},
    {"ZolOrderMultiLegSetOfSeq",
     "30 12 30 03 04 01 41 0A 01 00 02 01 01 A4 02 09 00 86 01 FF",
     0, "+price -yield +allowSoftQtyLimit"},
    {"ZolOrderMultiLegSetOfSeq", "30 0F 30 03 04 01 41 0A 01 00 02 01 01 A5 02 09 00", 0, "-price +yield"},
    // A5 is price in an amended leg
    {"ZolOrderMultiLegAmendSetOfSeq",
     "30 0F 30 03 04 01 31 0A 01 00 02 01 01 A5 02 09 00",
     0, "+price -yield"},
    {"ZolOrderMultiLegAmend", "30 0B 0A 01 01 0A 01 03 02 01 05 31 00", 0, "-multiLegId type=1 duration=3"},
    {"ZolOrderMultiLegRepStatic",
     "30 25 30 06 04 01 41 04 01 42 04 01 4D 04 01 55 04 01 46 02 01 05 02 01 02 30 09 02 01 01 02 01 "
     "02 02 01 03 0A 01 03",
     0, "-expiryTime -minFillQuantity numLegs=2"},
    {"ZolOrderMarketMakerBlock", "30 02 31 00", 0, "-orderNum"},
    {"ZolOrderMarketMakerBlock", "30 05 81 01 01 30 00", -114, kMissing},
    {"ZolOrderMarketMakerBlockSetOfSeq",
     "30 2C 30 11 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03 01 01 FF AF 11 30 03 04 01 41 0A "
     "01 00 0A 01 00 02 01 05 0A 01 03 01 01 00",
     0, "+secondOrder -secondTopup replaceCurrent=FALSE"},
    {"ZolOrderMarketMakerBlockSetOfSeq",
     "30 1C 30 11 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03 01 01 FF 90 01 FF 01 01 00",
     0, "-secondOrder secondTopup=TRUE"},
    {"ZolOrderMarketMakerBlockSetOfSeq",
     "30 1C 30 11 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03 01 01 FF 90 01 FF 02 01 00",
     -109, kMissing},
    // an entry's visibleQuantity (81) is no member of the block entry
    {"ZolOrderEntryBlock",
     "30 14 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 81 01 02 0A 01 03",
     -104, kMissing},
    {"ZolOrderEntryBlock",
     "30 15 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 A2 02 09 00 0A 01 03",
     -104, kMissing},
    {"ZolOrderEntryBlock",
     "30 28 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 82 01 02 A3 02 09 00 30 02 09 00 A4 02 09 00 85 "
     "01 01 0A 01 03 AF 03 04 01 57",
     0, "+visibleQuantity +price +yield +triggerPrice +minFillQuantity execUserId=W",
     "30 26 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 82 01 02 A3 02 09 00 30 02 09 00 A4 02 09 00 85 "
     "01 01 0A 01 03 8F 01 57"},
    {"ZolQuoteAdd", "30 0B 30 06 04 01 41 04 01 42 0A 01 00", 0, "-buyPrice -sellPrice -toQuoteId"},
    {"ZolQuoteAdd",
     "30 15 30 06 04 01 41 04 01 42 A4 02 09 00 85 01 05 86 01 52 0A 01 01",
     0, "-buyPrice -buyQuantity +sellPrice sellQuantity=5 sellQuoteRef=R"},
    {"ZolQuoteAdd", "30 0B 30 06 04 01 41 04 01 42 87 01 FF", -104, kMissing},
    // A5 (buyPrice of the report) before quoteType
    {"ZolQuoteAdd", "30 0F 30 06 04 01 41 04 01 42 A5 02 09 00 0A 01 00", -104, kMissing},
    // A5 after quoteType
    {"ZolQuoteAdd", "30 0F 30 06 04 01 41 04 01 42 0A 01 00 A5 02 09 00", -105, kLength},
    {"ZolQuoteId", "30 03 04 01 31", 0, "-speedIndex"},
    {"ZolQuoteId", "30 06 04 01 31 02 01 01", 0, "speedIndex=1"},
    // quoteId, the second 30, missing
    {"ZolQuoteRep", "30 05 30 00 81 01 46", -114, kMissing},
    {"ZolQuoteRep",
     "30 22 30 00 30 03 04 01 31 30 06 04 01 41 04 01 42 0A 01 00 AB 03 04 01 32 0A 01 02 30 06 02 01 "
     "01 02 01 02",
     0, "+toQuoteId quoteType=0 status=2"},
    // A1 before quantity is price, A1 last the cross details
    {"ZolNegDeal",
     "30 17 0A 01 00 30 06 04 01 41 04 01 42 A1 02 09 00 02 01 05 04 01 54 A1 00",
     0, "+price -yield +negDealCPDetails.negDealCrossDetails"},
    {"ZolNegDeal",
     "30 19 0A 01 00 30 06 04 01 41 04 01 42 02 01 05 04 01 54 A2 06 04 01 43 81 01 1E",
     0, "-price negDealCPDetails.negDealTwoSidedDetails.timeout=30"},
    {"ZolNegDeal", "30 13 0A 01 00 30 06 04 01 41 04 01 42 02 01 05 04 01 54 A3 00", -136, kMissing},
    // nothing after tradeSourceId: the next tag read is 00
    {"ZolNegDeal", "30 11 0A 01 00 30 06 04 01 41 04 01 42 02 01 05 04 01 54 00 00", -136, kMissing},
    // two-sided details need counterPartyId
    {"ZolNegDeal", "30 13 0A 01 00 30 06 04 01 41 04 01 42 02 01 05 04 01 54 A2 00 00 00", -119, kMissing},
    {"ZolNegDealCPDetails", "A0 00", -125, kChoice},
    {"ZolNegDealWithdraw", "30 00", 0, "-orderId -traderId -firmId"},
    // A2 is text here
    {"ZolNegDealWithdraw",
     "30 05 A2 03 04 01 55",
     0, "-orderId traderId=U",
     "30 03 82 01 55"},
    {"ZolNegDealRepStatic",
     "30 33 30 06 04 01 41 04 01 42 04 01 49 0A 01 00 03 01 00 04 01 55 04 01 46 30 03 04 01 32 04 01 "
     "56 04 01 47 30 06 02 01 01 02 01 02 02 01 05 85 01 1E 0A 01 00",
     0, "-settlementDate timeout=30"},
    // the second 02 is settlementDate
    {"ZolNegDealRepStatic",
     "30 33 30 06 04 01 41 04 01 42 04 01 49 0A 01 00 03 01 00 04 01 55 04 01 46 30 03 04 01 32 04 01 "
     "56 04 01 47 30 06 02 01 01 02 01 02 02 01 05 02 01 07 0A 01 00",
     0, "settlementDate=7"},
    // a third 02 fails for disseminateStatus
    {"ZolNegDealRepStatic",
     "30 36 30 06 04 01 41 04 01 42 04 01 49 0A 01 00 03 01 00 04 01 55 04 01 46 30 03 04 01 32 04 01 "
     "56 04 01 47 30 06 02 01 01 02 01 02 02 01 05 02 01 07 02 01 08 0A 01 00",
     -111, kMissing},
    {"ZolNegDealRepStatic",
     "30 3E 30 06 04 01 41 04 01 42 04 01 49 0A 01 00 03 01 00 04 01 55 04 01 46 30 03 04 01 32 04 01 "
     "56 04 01 47 30 06 02 01 01 02 01 02 02 01 05 86 01 0A 04 01 54 A7 06 02 01 01 02 01 02 0A 01 00",
     0, "tradeSourceId=T +disseminateTime -settlementDate"},
    // a last-trades body: its A1 tradeId is taken for statics
    {"ZolTradeRep", "30 07 30 00 A1 03 04 01 31", -116, kMissing},
    {"ZolTradeRepStatic",
     "30 2D 30 09 02 01 01 02 01 02 02 01 03 04 01 55 04 01 56 04 01 46 04 01 47 30 06 04 01 41 04 01 "
     "42 04 01 49 30 02 09 00 02 01 05 30 02 09 00",
     0, "-buyOrderId -sellOrderId -details buyTraderId=U sellFirmId=G"},
    {"ZolTradeRepStatic",
     "30 17 30 09 02 01 01 02 01 02 02 01 03 04 01 55 04 01 56 04 01 46 85 01 58",
     -120, kMissing},
    {"ZolTradeRepStatic",
     "30 2F 30 09 02 01 01 02 01 02 02 01 03 04 01 55 04 01 56 04 01 46 04 01 47 30 06 04 01 41 04 01 "
     "42 04 01 49 30 02 09 00 02 01 05 30 02 09 00 A9 00",
     0, "+details -details.yield"},
    {"ZolTradeRepDynamic", "30 03 0A 01 01", 0, "-amendTime"},
    {"ZolTradeRepDynamic", "30 0E 0A 01 01 30 09 02 01 01 02 01 02 02 01 03", 0, "+amendTime"},
    // an empty body still reads a tag
    {"ZolTradeCancel", "30 00 05 00", -166, kMissing},
    {"ZolTradeLastNRep", "30 0C 30 00 A1 03 04 01 31 A3 03 0A 01 01", 0, "+tradeId -statics +dynamics"},
    {"ZolTradeAllocationRep", "30 04 30 00 A2 00", -122, kMissing},
    {"ZolTradeAllocationAdd",
     "30 16 30 0B 30 03 04 01 31 0A 01 00 02 01 01 02 01 05 04 01 58 0A 01 00",
     0, "-tradeReference -brokerRef"},
    {"ZolTradeAllocationAdd",
     "30 1C 30 0B 30 03 04 01 31 0A 01 00 02 01 01 02 01 05 04 01 58 0A 01 00 81 01 52 82 01 42",
     0, "tradeReference=R brokerRef=B"},
    {"ZolTradeAllocationAdd",
     "30 1C 30 0B 30 03 04 01 31 0A 01 00 02 01 01 02 01 05 04 01 58 0A 01 00 82 01 42 81 01 52",
     -116, kLength},
    {"ZolTradeAllocationRepStatic",
     "30 19 30 03 04 01 31 02 01 05 04 01 58 0A 01 00 30 06 02 01 01 02 01 02 04 01 55",
     0, "-fromAllocationNo userId=U"},
    {"ZolOrderbookByPriceRep",
     "30 12 02 01 01 30 06 04 01 41 04 01 42 31 00 31 00 02 01 00",
     0, "-bidList.0 -offerList.0"},
    {"ZolOrderbookByPriceRep", "30 10 02 01 01 30 06 04 01 41 04 01 42 31 00 02 01 00", -122, kMissing},
    {"ZolPricePoint", "30 0A 30 02 09 00 02 01 05 01 01 00", 0, "-yield userDepth=5"},
    {"ZolPricePoint", "30 12 30 02 09 00 30 02 09 00 30 02 09 00 02 01 05 01 01 00", -101, kMissing},
    // indefinite list ends at its end-of-contents
    {"ZolPricePointList",
     "31 80 30 0A 30 02 09 00 02 01 05 01 01 00 30 0A 30 02 09 00 02 01 05 01 01 00 00 00",
     0, "+1 -2",
     "31 18 30 0A 30 02 09 00 02 01 05 01 01 00 30 0A 30 02 09 00 02 01 05 01 01 00"},
    // an end-of-contents inside a definite list is an element of no kind
    {"ZolPricePointList", "31 0E 30 0A 30 02 09 00 02 01 05 01 01 00 00 00", -114, kListTag},
    {"ZolPricePointList", "31 02 A0 00", -114, kListTag},
    {"ZolOrderbookByOrderRep", "30 05 30 00 0A 01 01", 0, "command=1 -order"},
    {"ZolOrderbookOrder",
     "30 13 0A 01 00 30 02 09 00 02 01 05 01 01 00 01 01 FF 01 01 00",
     0, "-orderId -yield implied=FALSE hidden=TRUE marketmaker=FALSE"},
    {"ZolOrderbookOrder",
     "30 1C 30 03 04 01 31 0A 01 01 30 02 09 00 30 02 09 00 02 01 05 01 01 00 01 01 00 01 01 FF",
     0, "+orderId +yield marketmaker=TRUE"},
    {"ZolPrimaryAuctionAllocReq",
     "30 1E 30 06 04 01 41 04 01 42 02 01 01 02 01 02 02 01 03 02 01 04 30 02 09 00 0A 01 02 02 01 05",
     0, "valueType=2 lastQty=3 obSeqNum=5"},
    // dynamics alone; lastTradeNo and lastOrderNo absent
    {"ZolStatsRep",
     "30 20 30 00 04 00 A2 1A 04 01 53 0A 01 01 02 01 01 0A 01 03 30 06 02 01 01 02 01 02 02 01 05 02 "
     "01 00",
     0, "-statics -dynamics.lastTradeNo dynamics.teTradingStatus=3"},
    // 24 integers, then currencyId
    {"ZolStatsRepStatic",
     "30 4B 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 "
     "02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 "
     "01 02 01 01 02 01 01 02 01 01 81 01 45",
     -124, kMissing},
    {"ZolStatsRepStatic",
     "30 54 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 "
     "02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 01 02 01 "
     "01 02 01 01 02 01 01 02 01 01 02 01 01 82 01 02 04 01 46 04 01 52",
     0, "-currencyId currDecimals=2 firmId=F"},
    {"ZolControlEventRep",
     "30 19 30 00 02 01 01 30 06 02 01 01 02 01 02 0A 01 01 04 01 55 02 01 02 0A 01 04",
     0, "-subject -value1 status=4"},
    {"ZolControlEventRep",
     "30 1D 30 00 02 01 01 30 06 02 01 01 02 01 02 0A 01 01 04 01 55 02 01 02 0A 01 04 A2 02 09 00",
     0, "-value1 +value2"},
    {"ZolTESuspend", "30 00", 0, "-time -messageText -displayMode"},
    {"ZolTESuspend", "30 03 0A 01 02", 0, "-time displayMode=2"},
    {"ZolTransLogStepThrough", "A0 03 02 01 03", -190, kChoice},
    {"ZolTransLogStepThrough", "81 03 02 01 03", -190, kChoice},
    {"ZolTransLogStepThrough", "A2 03 02 01 03", -190, kChoice},
    {"ZolTransLogStepThrough", "A1 06 02 01 01 02 01 02", 0, "+untilTime"},
    {"ZolExternalMsgAdd", "30 09 04 01 4F 82 01 55 04 01 4D", 0, "-firmId userId=U"},
    {"ZolExternalMsgReq", "30 03 02 01 01", 0, "-originator"},
};

TEST(Trading, MembersStandWhereTheirNeighboursLeaveThem) {
    for (const Wire& w : kWire) {
        const std::string where = std::string(w.type) + " " + w.hex;
        const AsnTypeDesc* d = Zol::FindType(w.type);
        ASSERT_TRUE(d) << where;
        std::unique_ptr<AsnType> v(d->create());
        zt::Outcome o = zt::Decode(zt::Bytes(w.hex), *v);
        if (w.code) {
            EXPECT_EQ(o.result, 0) << where;
            EXPECT_EQ(o.err, std::string(w.checks) + "\n" + zt::DoorLine(w.type, w.code)) << where;
            continue;
        }
        ASSERT_EQ(o.result, 1) << where << "\n" << o.err;
        EXPECT_EQ(o.err, "") << where;
        Expect(*v, w.checks, where);
        EXPECT_EQ(zt::Encoded(*v), zt::Hex(zt::Bytes(w.again ? w.again : w.hex))) << where;
    }
}

// A market order to buy 100 ABC for the day, no board named, by user U1.
const char* const kMarketOrder =
    "30 1D 04 02 55 31 BF 83 2A 15 30 13 30 05 04 03 41 42 43 0A 01 01 0A 01 00 02 01 64 0A 01 03";

TEST(Trading, RoadOfOneOrder) {
    // The client fills the request member by member ...
    ZolTransReq req;
    req.userId = "U1";
    req.upTransMsg = new ZolTransReqChoice;
    auto* order = static_cast<ZolOrder*>(req.upTransMsg->_getref("order", true));
    ASSERT_TRUE(order);
    order->order = new ZolOrderEntry;
    ZolOrderEntry& e = *order->order;
    e.secBoardId = new ZolSecOptBoardId;
    e.secBoardId->secCode = "ABC";
    e.type = ZolOrderType::market;
    e.buySell = ZolOrderVerb::buy;
    e.quantity = 100;
    e.duration = ZolOrderDuration::day;
    EXPECT_EQ(req.upTransMsg->choiceId, ZolTransReqChoice::orderCid);
    EXPECT_EQ(zt::Encoded(req), kMarketOrder);

    // ... or, knowing the message only by its names, through _getref.
    ZolTransReq named;
    static_cast<AsnOcts*>(named._getref("userId"))->ReSet("U1");
    AsnType* entry = named._getref("upTransMsg", true)->_getref("order", true)->_getref("order", true);
    static_cast<AsnOcts*>(entry->_getref("secBoardId", true)->_getref("secCode", true))->ReSet("ABC");
    static_cast<AsnInt*>(entry->_getref("type", true))->value = 1;
    static_cast<AsnInt*>(entry->_getref("buySell", true))->value = 0;
    static_cast<AsnInt*>(entry->_getref("quantity", true))->value = 100;
    static_cast<AsnInt*>(entry->_getref("duration", true))->value = 3;
    EXPECT_EQ(zt::Encoded(named), kMarketOrder);

    // The host reads it ...
    ZolTransReq got;
    ASSERT_EQ(zt::Decode(zt::Bytes(kMarketOrder), got).result, 1);
    EXPECT_STREQ(got.userId, "U1");
    ASSERT_TRUE(got.upTransMsg);
    ASSERT_EQ(got.upTransMsg->choiceId, 426);
    const ZolOrderEntry& g = *got.upTransMsg->order->order;
    EXPECT_STREQ(g.secBoardId->secCode, "ABC");
    EXPECT_EQ(g.secBoardId->boardId, nullptr);
    EXPECT_EQ(g.type.value, 1);
    EXPECT_EQ(g.buySell.value, 0);
    EXPECT_EQ(g.quantity.value, 100);
    EXPECT_EQ(g.duration.value, 3);
    EXPECT_EQ(g.price, nullptr);
    EXPECT_EQ(g.yield, nullptr);

    // ... and accepts it.
    ZolTransRep ok;
    static_cast<ZolReplyOK*>(ok._getref("replyOK", true))->infoMessage = "OK";
    EXPECT_EQ(zt::Encoded(ok), "B2 04 04 02 4F 4B");
    ZolTransRep answer;
    ASSERT_EQ(zt::Decode(zt::Bytes("B2 04 04 02 4F 4B"), answer).result, 1);
    ASSERT_EQ(answer.choiceId, ZolTransRep::replyOKCid);
    EXPECT_STREQ(answer.replyOK->infoMessage, "OK");
    EXPECT_EQ(answer.replyOK->extraInfo, nullptr);
    EXPECT_EQ(answer.replyOK->replyHint, nullptr);

    // The client asks for its orders.
    ZolQueryReq query;
    query.userId = "U1";
    query.upQueryMsg = new ZolQueryReqChoice;
    static_cast<ZolOrderReq*>(query.upQueryMsg->_getref("orderReq", true))->seqContext = new ZolSequenceContext;
    EXPECT_EQ(zt::Encoded(query), "30 0A 04 02 55 31 BF 82 1D 02 30 00");

    // The host reports the new order whole, then a fill as a dynamic part alone.
    ZolQueryRep first;
    auto* rep = static_cast<ZolOrderRep*>(first._getref("orderRep", true));
    rep->seqContext = new ZolSequenceContext;
    rep->seqContext->seqNum = new AsnSequenceNumber(1);
    rep->orderId = new ZolOrderId;
    rep->orderId->orderNo = "7";
    rep->statics = new ZolOrderRepStatic;
    ZolOrderRepStatic& s = *rep->statics;
    s.secBoardId = new ZolSecBoardId;
    s.secBoardId->secCode = "ABC";
    s.secBoardId->boardId = "B";
    s.instrId = "I";
    s.userId = "U1";
    s.firmId = "F";
    s.type = ZolOrderType::market;
    s.buySell = ZolOrderVerb::buy;
    s.quantity = 100;
    s.fillType = ZolOrderFillType::fillAny;
    s.duration = ZolOrderDuration::day;
    s.entryTime = new ZolDateTimeMS;
    s.entryTime->date = 20240105;
    s.entryTime->time = 93000;
    s.entryTime->millisec = 250;
    rep->dynamics = new ZolOrderRepDynamic;
    rep->dynamics->orderStatus = ZolOrderStatus::open;
    rep->dynamics->balance = 100;

    ZolQueryRep fill;
    auto* later = static_cast<ZolOrderRep*>(fill._getref("orderRep", true));
    later->seqContext = new ZolSequenceContext;
    later->seqContext->seqNum = new AsnSequenceNumber(2);
    later->orderId = new ZolOrderId(*rep->orderId);
    later->dynamics = new ZolOrderRepDynamic;
    later->dynamics->orderStatus = ZolOrderStatus::matched;
    later->dynamics->balance = 0;
    later->dynamics->averagePrice = new ZolPrice;
    later->dynamics->averagePrice->value = 12.5;

    // The client keeps one record for the order and merges every report in.
    ZolOrderRep held;
    for (const ZolQueryRep* sent : {&first, &fill}) {
        ZolQueryRep read;
        zt::Outcome o = zt::Decode(zt::Bytes(zt::Encoded(*sent).c_str()), read);
        ASSERT_EQ(o.result, 1) << o.err;
        ASSERT_EQ(read.choiceId, ZolQueryRep::orderRepCid);
        held |= *read.orderRep;
    }
    EXPECT_EQ(held.seqContext->seqNum->value, 2);
    EXPECT_STREQ(held.orderId->orderNo, "7");
    EXPECT_STREQ(held.statics->secBoardId->boardId, "B");
    EXPECT_EQ(held.statics->quantity.value, 100);
    EXPECT_EQ(held.statics->entryTime->millisec.value, 250);
    EXPECT_EQ(held.dynamics->orderStatus.value, ZolOrderStatus::matched);
    EXPECT_EQ(held.dynamics->balance.value, 0);
    ASSERT_TRUE(held.dynamics->averagePrice);
    EXPECT_EQ(held.dynamics->averagePrice->value.value, 12.5);

    // The reply to the single-order query differs from the first report
    // only in its tag, and holds its own alias class.
    std::string whole = zt::Bytes(zt::Encoded(first).c_str());
    ASSERT_EQ(zt::Hex(whole.substr(0, 3)), "BF 82 1D");
    whole[2] = 0x1E;
    ZolQueryRep single;
    ASSERT_EQ(zt::Decode(whole, single).result, 1);
    ASSERT_EQ(single.choiceId, ZolQueryRep::orderSingleRepCid);
    EXPECT_EQ(single.orderSingleRep->_getdesc(), &ZolOrderSingleRep::_desc);
    EXPECT_EQ(zt::Encoded(*single.orderSingleRep), zt::Encoded(*first.orderRep));
}

// Merges a report, given as the body of its class, into a held record and
// gives the record's encoding.
template <class T>
std::string Merged(const char* heldHex, const char* reportHex) {
    T held, report;
    EXPECT_EQ(zt::Decode(zt::Bytes(heldHex), held).result, 1) << heldHex;
    EXPECT_EQ(zt::Decode(zt::Bytes(reportHex), report).result, 1) << reportHex;
    held |= report;
    return zt::Encoded(held);
}

// A held order record: seqNum 1, order "1"; statics with quantity 10, a
// price of 0 shown with 2 decimals, brokerRef "B" and details holding
// triggerPrice; dynamics open, balance 10, matchValue 0.
const char* const kHeldOrder =
    "30 55 30 05 A1 03 02 01 01 30 03 04 01 31 A1 3B 30 06 04 01 41 04 01 42 04 01 49 04 01 55 04 01 46 "
    "0A 01 00 0A 01 01 02 01 0A A1 05 09 00 02 01 02 0A 01 00 0A 01 03 82 01 42 30 09 02 01 01 02 01 02 "
    "02 01 03 A7 04 A3 02 09 00 A2 0A 0A 01 01 02 01 0A A1 02 09 00";

TEST(Trading, OrderReportsMergeIntoTheHeldRecord) {
    // A change of context alone: seqNum 2, all else kept.
    EXPECT_EQ(Merged<ZolOrderRep>(kHeldOrder, "30 07 30 05 A1 03 02 01 02"),
              "30 55 30 05 A1 03 02 01 02 30 03 04 01 31 A1 3B 30 06 04 01 41 04 01 42 04 01 49 04 01 55 "
              "04 01 46 0A 01 00 0A 01 01 02 01 0A A1 05 09 00 02 01 02 0A 01 00 0A 01 03 82 01 42 30 09 "
              "02 01 01 02 01 02 02 01 03 A7 04 A3 02 09 00 A2 0A 0A 01 01 02 01 0A A1 02 09 00");
    // Dynamics alone, matched with balance 0: both overwrite, matchValue
    // stays, the statics and seqNum 1 are untouched.
    EXPECT_EQ(Merged<ZolOrderRep>(kHeldOrder, "30 0A 30 00 A2 06 0A 01 03 02 01 00"),
              "30 55 30 05 A1 03 02 01 01 30 03 04 01 31 A1 3B 30 06 04 01 41 04 01 42 04 01 49 04 01 55 "
              "04 01 46 0A 01 00 0A 01 01 02 01 0A A1 05 09 00 02 01 02 0A 01 00 0A 01 03 82 01 42 30 09 "
              "02 01 01 02 01 02 02 01 03 A7 04 A3 02 09 00 A2 0A 0A 01 03 02 01 00 A1 02 09 00");
    // Statics with quantity 12, price 1 without decimals, no brokerRef,
    // details holding yield, and execUserId "E": the quantity and the
    // price's value are taken, its decimals and the brokerRef stay, the
    // details gain yield beside triggerPrice, execUserId is added.
    EXPECT_EQ(Merged<ZolOrderRep>(kHeldOrder,
                                  "30 3F 30 00 A1 3B 30 06 04 01 41 04 01 42 04 01 49 04 01 55 04 01 46 0A 01 00 "
                                  "0A 01 01 02 01 0C A1 05 09 03 80 F9 80 0A 01 00 0A 01 03 30 09 02 01 01 02 01 "
                                  "02 02 01 03 A7 04 A2 02 09 00 88 01 45"),
              "30 5F 30 05 A1 03 02 01 01 30 03 04 01 31 A1 45 30 06 04 01 41 04 01 42 04 01 49 04 01 55 "
              "04 01 46 0A 01 00 0A 01 01 02 01 0C A1 08 09 03 80 F9 80 02 01 02 0A 01 00 0A 01 03 82 01 "
              "42 30 09 02 01 01 02 01 02 02 01 03 A7 08 A2 02 09 00 A3 02 09 00 88 01 45 A2 0A 0A 01 01 "
              "02 01 0A A1 02 09 00");
    // Statics without price and with empty details change no optional member.
    EXPECT_EQ(Merged<ZolOrderRep>(kHeldOrder,
                                  "30 31 30 00 A1 2D 30 06 04 01 41 04 01 42 04 01 49 04 01 55 04 01 46 0A 01 00 "
                                  "0A 01 01 02 01 0A 0A 01 00 0A 01 03 30 09 02 01 01 02 01 02 02 01 03 A7 00"),
              zt::Hex(zt::Bytes(kHeldOrder)));

    // A record merged with itself stays as it is.
    ZolOrderRep held;
    ASSERT_EQ(zt::Decode(zt::Bytes(kHeldOrder), held).result, 1);
    held |= held;
    EXPECT_EQ(zt::Encoded(held), zt::Hex(zt::Bytes(kHeldOrder)));
}

TEST(Trading, TradeAndDealReportsMergeIntoTheHeldRecord) {
    // Trade: quantity 5 -> 6; details {yield, buyTax} gain sellTax; the
    // status changes and the earlier amendTime stays.
    EXPECT_EQ(Merged<ZolTradeRep>(
                  "30 4B 30 00 A1 37 30 09 02 01 01 02 01 02 02 01 03 04 01 55 04 01 56 04 01 46 04 01 47 30 06 "
                  "04 01 41 04 01 42 04 01 49 30 02 09 00 02 01 05 30 02 09 00 A9 08 A1 02 09 00 A2 02 09 00 "
                  "A2 0E 0A 01 01 30 09 02 01 01 02 01 02 02 01 03",
                  "30 3C 30 00 A1 33 30 09 02 01 01 02 01 02 02 01 03 04 01 55 04 01 56 04 01 46 04 01 47 30 06 "
                  "04 01 41 04 01 42 04 01 49 30 02 09 00 02 01 06 30 02 09 00 A9 04 A3 02 09 00 A2 03 0A 01 02"),
              "30 4F 30 00 A1 3B 30 09 02 01 01 02 01 02 02 01 03 04 01 55 04 01 56 04 01 46 04 01 47 30 06 "
              "04 01 41 04 01 42 04 01 49 30 02 09 00 02 01 06 30 02 09 00 A9 0C A1 02 09 00 A2 02 09 00 "
              "A3 02 09 00 A2 0E 0A 01 02 30 09 02 01 01 02 01 02 02 01 03");

    // Deal: a dynamic part alone changes the status and nothing else.
    const char* deal =
        "30 41 30 00 30 03 04 01 31 A1 33 30 06 04 01 41 04 01 42 04 01 49 0A 01 00 03 01 00 04 01 55 04 01 "
        "46 30 03 04 01 32 04 01 56 04 01 47 30 06 02 01 01 02 01 02 02 01 05 02 01 07 0A 01 00 A2 03 0A 01 "
        "01";
    EXPECT_EQ(Merged<ZolNegDealRep>(deal, "30 07 30 00 A2 03 0A 01 04"),
              "30 41 30 00 30 03 04 01 31 A1 33 30 06 04 01 41 04 01 42 04 01 49 0A 01 00 03 01 00 04 01 55 "
              "04 01 46 30 03 04 01 32 04 01 56 04 01 47 30 06 02 01 01 02 01 02 02 01 05 02 01 07 0A 01 00 "
              "A2 03 0A 01 04");

    // Allocation: the dynamic part replaces both of its members.
    const char* allocation = "30 17 30 00 30 0B 30 03 04 01 31 0A 01 00 02 01 01 A2 06 02 01 00 0A 01 02";
    EXPECT_EQ(Merged<ZolTradeAllocationRep>(
                  "30 17 30 00 30 0B 30 03 04 01 31 0A 01 00 02 01 01 A2 06 02 01 05 0A 01 01", allocation),
              allocation);
}

TEST(Trading, ListsAreReplacedWholeByAMerge) {
    // Book by price: held bids 5 and 6, offer 7; the report's single bid 8
    // and empty offers take their place, with its seqNum, board and count.
    const char* report =
        "30 1E 02 01 02 30 06 04 01 43 04 01 42 31 0C 30 0A 30 02 09 00 02 01 08 01 01 00 31 00 02 01 00";
    EXPECT_EQ(Merged<ZolOrderbookByPriceRep>(
                  "30 36 02 01 01 30 06 04 01 41 04 01 42 31 18 30 0A 30 02 09 00 02 01 05 01 01 00 30 0A 30 02 "
                  "09 00 02 01 06 01 01 00 31 0C 30 0A 30 02 09 00 02 01 07 01 01 00 02 01 03",
                  report),
              zt::Hex(zt::Bytes(report)));
    // Multi-leg order: legs 1 and 2 give way to leg 3; trdAccId stays.
    EXPECT_EQ(Merged<ZolOrderMultiLeg>(
                  "30 2A 30 03 04 01 41 0A 01 03 02 01 05 82 01 58 31 1A 30 0B 30 03 04 01 41 0A 01 00 02 01 01 "
                  "30 0B 30 03 04 01 41 0A 01 00 02 01 02",
                  "30 1A 30 03 04 01 41 0A 01 03 02 01 06 31 0D 30 0B 30 03 04 01 41 0A 01 00 02 01 03"),
              "30 1D 30 03 04 01 41 0A 01 03 02 01 06 82 01 58 31 0D 30 0B 30 03 04 01 41 0A 01 00 02 01 03");
    // Market-maker block: orderNum stays, an empty list empties the held one.
    EXPECT_EQ(Merged<ZolOrderMarketMakerBlock>(
                  "30 20 81 01 09 31 1B 30 19 30 11 30 03 04 01 41 0A 01 00 0A 01 00 02 01 05 0A 01 03 01 01 FF "
                  "01 01 00",
                  "30 02 31 00"),
              "30 05 81 01 09 31 00");
}

TEST(Trading, CounterpartyChoiceMergesOnlyTheSameAlternative) {
    // Cross details {buyTrdAccId A, buyPositionType 0} and {sellTrdAccId B}:
    // the same alternative merges member by member.
    EXPECT_EQ(Merged<ZolNegDealCPDetails>("A1 06 81 01 41 85 01 00", "A1 03 82 01 42"),
              "A1 09 81 01 41 82 01 42 85 01 00");
    // Two-sided details replace cross details whole, and back.
    EXPECT_EQ(Merged<ZolNegDealCPDetails>("A1 06 81 01 41 85 01 00", "A2 06 04 01 43 83 01 44"),
              "A2 06 04 01 43 83 01 44");
    EXPECT_EQ(Merged<ZolNegDealCPDetails>("A2 06 04 01 43 83 01 44", "A1 00"), "A1 00");

    // A new value claims the cross details without holding them.
    ZolNegDealCPDetails fresh;
    EXPECT_EQ(fresh.choiceId, ZolNegDealCPDetails::negDealCrossDetailsCid);
    EXPECT_EQ(fresh.negDealCrossDetails, nullptr);
    EXPECT_EQ(fresh._getref("negDealCrossDetails", true), nullptr);
}

}  // namespace

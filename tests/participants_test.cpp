// Participants and market operations: users, firms, depository and trading
// accounts, cash pools, holdings, permissions, news, broadcast messages and
// audit events. The tables pin the shapes that only place tells apart,
// the optional runs and their context numbers, and the partial reports
// that a client merges into its held rows.
#include <memory>

#include "cases.h"

namespace {

using namespace Zol;
using zt::Case;
using zt::Discrepancy;
using zt::Encoded;
using zt::Missing;

using zt::CheckAll;

template <class T>
std::unique_ptr<T> Full(int seed = 1) {
    std::unique_ptr<T> v(new T);
    zt::Filler filler;
    filler.seed = seed;
    filler.Fill(v.get(), &T::_desc);
    return v;
}

TEST(Users, ShapesOnTheWire) {
    CheckAll({
        {"ZolUserLogon", "30 04 04 02 70 77", "", "", "reconnectionFlag"},
        {"ZolUserLogon", "30 07 04 02 70 77 01 01 FF", "", "reconnectionFlag"},
        {"ZolUserLogon", "30 07 01 01 FF 04 02 70 77", Missing("ZolUserLogon", -127)},
        {"ZolUserSetOrderApprovalFlag", "30 03 01 01 FF", "", "", "userId"},
        {"ZolUserSetOrderApprovalFlag", "30 07 04 02 41 42 01 01 00", "", "userId"},
        {"ZolUserSetOrderApprovalFlag", "30 07 04 02 41 42 02 01 01", Missing("ZolUserSetOrderApprovalFlag", -139)},
        // userId, statics and dynamics are all optional, in that order.
        {"ZolUserRep", "30 02 30 00", "", "", "userId statics dynamics"},
        {"ZolUserRep", "30 07 30 00 A2 03 86 01 FF", "", "dynamics.isLoggedOn", "userId statics dynamics.status"},
        {"ZolUserRep", "30 0E 30 00 04 02 41 42 A1 06 04 01 55 04 01 46", "", "userId statics",
         "dynamics statics.contactDetail statics.freeText"},
        {"ZolUserRep", "30 0E 30 00 A1 06 04 01 55 04 01 46 04 02 41 42", Discrepancy("ZolUserRep", -116)},
        // The static record has contexts 3 and 4 only.
        {"ZolUserRepStatic", "30 09 04 01 55 04 01 46 84 01 54", "", "freeText", "contactDetail"},
        {"ZolUserRepStatic", "30 09 04 01 55 04 01 46 81 01 54", Discrepancy("ZolUserRepStatic", -108)},
        {"ZolUserRepDynamic", "30 00", "", "", "defaultRole status isLoggedOn sellTradeStats"},
        {"ZolUserRepDynamic", "30 0A AA 08 30 02 09 00 30 02 09 00", "", "sellTradeStats",
         "buyOrderStats sellOrderStats buyTradeStats approveOrders"},
        // Update shifts every context one up from Add.
        {"ZolUserOrderRuleUpdate", "30 03 82 01 55", "", "userId", "firmId instrId"},
        {"ZolUserOrderRuleUpdate", "30 03 8B 01 FF", "", "lastDownPercent", "lastDownSoft"},
        {"ZolUserOrderRuleAdd", "30 06 04 01 46 81 01 55", "", "userId", "instrId"},
        {"ZolUserOrderRuleAdd", "30 06 04 01 46 8A 01 FF", "", "lastDownPercent", "userId"},
        {"ZolUserOrderRuleAdd", "30 06 04 01 46 8B 01 FF", Discrepancy("ZolUserOrderRuleAdd", -184)},
        {"ZolUserUpdateActivityStatus", "30 02 31 00"},
        {"ZolUserUpdateActivityStatus", "30 0A 31 08 30 06 02 01 01 02 01 3C"},
        // All four addresses travel, empty or not.
        {"ZolUserSetIPAddrRange", "30 0E 04 01 55 0A 01 02 04 00 04 00 04 00 04 00"},
    });
}

TEST(Users, EncodeAsBuilt) {
    ZolUserRepDynamic dyn;
    EXPECT_EQ(Encoded(dyn), "30 00");
    dyn.sellTradeStats = new ZolSurvStats;
    dyn.sellTradeStats->singleValue = new ZolLargePrice;
    dyn.sellTradeStats->totalValue = new ZolLargePrice;
    EXPECT_EQ(Encoded(dyn), "30 0A AA 08 30 02 09 00 30 02 09 00");

    ZolUserOrderRuleUpdate update;
    update.userId = new ZolUserId("U");
    EXPECT_EQ(Encoded(update), "30 03 82 01 55");
    ZolUserOrderRuleAdd add;
    add.firmId = "F";
    add.userId = new ZolUserId("U");
    EXPECT_EQ(Encoded(add), "30 06 04 01 46 81 01 55");

    ZolUserLogon logon;
    logon.loginPassword = "pw";
    EXPECT_EQ(Encoded(logon), "30 04 04 02 70 77");

    ZolUserUpdateActivityStatus activity;
    EXPECT_EQ(Encoded(activity), "30 02 31 00");
}

TEST(Users, RowsMergeIntoTheHeldRecord) {
    std::unique_ptr<ZolUserRep> held = Full<ZolUserRep>();
    std::unique_ptr<ZolUserRep> expected(static_cast<ZolUserRep*>(held->Clone()));

    // seqContext alone: nothing else changes, and recNum survives.
    ZolUserRep row;
    zt::From(row, "30 07 30 05 A1 03 02 01 0B");
    *held |= row;
    expected->seqContext->seqNum->value = 11;
    EXPECT_EQ(Encoded(*held), Encoded(*expected));

    // dynamics with isLoggedOn alone: that flag changes, its siblings stay.
    zt::From(row = ZolUserRep(), "30 07 30 00 A2 03 86 01 00");
    *held |= row;
    expected->dynamics->isLoggedOn->value = false;
    EXPECT_EQ(Encoded(*held), Encoded(*expected));

    // Into an empty record the row brings its members, newly allocated.
    ZolUserRep fresh;
    fresh |= *held;
    EXPECT_EQ(Encoded(fresh), Encoded(*held));
    EXPECT_NE(fresh.dynamics, held->dynamics);
    EXPECT_NE(fresh.statics->contactDetail, held->statics->contactDetail);
}

TEST(Users, MergeReplacesTheList) {
    std::unique_ptr<ZolUserUpdateActivityStatus> held = Full<ZolUserUpdateActivityStatus>();
    ASSERT_EQ(held->userList.Count(), 2);
    ZolUserUpdateActivityStatus one;
    zt::From(one, "30 0A 31 08 30 06 02 01 01 02 01 3C");
    *held |= one;
    EXPECT_EQ(Encoded(*held), "30 0A 31 08 30 06 02 01 01 02 01 3C");
    *held |= ZolUserUpdateActivityStatus();
    EXPECT_EQ(held->userList.Count(), 0);
    EXPECT_EQ(Encoded(*held), "30 02 31 00");
}

TEST(FirmsAndAccounts, ShapesOnTheWire) {
    CheckAll({
        {"ZolFirmRep", "30 02 30 00", "", "", "firmId statics dynamics"},
        {"ZolFirmRep", "30 10 30 00 A1 0C 04 01 46 04 01 54 0A 01 00 04 01 43", "", "statics",
         "firmId dynamics statics.contactDetail statics.freeText statics.clearingFirmName"},
        {"ZolFirmRepStatic", "30 0F 04 01 46 04 01 54 0A 01 00 83 01 47 04 01 43", "", "clearingFirmName",
         "contactDetail freeText"},
        // The dynamic record ends on a required closeOutStatus; one that
        // stops short reads on into what follows it.
        {"ZolFirmRepDynamic", "30 06 0A 01 00 0A 01 02", "", "", "usersLoggedIn buyOrderStats sellTradeStats"},
        {"ZolFirmRepDynamic", "30 10 0A 01 00 A5 08 30 02 09 00 30 02 09 00 0A 01 01", "", "sellTradeStats",
         "usersLoggedIn buyOrderStats sellOrderStats buyTradeStats"},
        {"ZolFirmRepDynamic", "30 06 0A 01 00 81 01 03 | 00 00", Missing("ZolFirmRepDynamic", -101)},
        {"ZolFirmSuspend", "30 06 04 01 46 04 01 54", "", "", "time displayMode"},
        {"ZolFirmSuspend", "30 09 04 01 46 04 01 54 82 01 02", "", "displayMode", "time"},
        {"ZolFirmUnsuspend", "30 09 04 01 46 04 01 54 0A 01 02", Discrepancy("ZolFirmUnsuspend", -122)},
        {"ZolDepAccRep", "30 09 02 01 01 04 01 44 0A 01 00"},
        {"ZolDepAccRep", "30 08 30 00 04 01 44 0A 01 00", Missing("ZolDepAccRep", -103)},
        // trdAccId is required though context-tagged, and taken constructed.
        {"ZolTrdAccDetailsReq", "30 09 02 01 01 01 01 FF 81 01 54", "", "", "firmId secCode"},
        {"ZolTrdAccDetailsReq", "30 09 02 01 01 01 01 FF 82 01 46", Missing("ZolTrdAccDetailsReq", -111)},
        {"ZolTrdAccDetailsReq", "30 0B 02 01 01 01 01 FF A1 03 04 01 54", "", "", "firmId", "30 09 02 01 01 01 01 FF 81 01 54"},
        {"ZolTrdAccDetailsRep", "30 0E 02 01 01 04 01 54 04 01 46 04 01 44 31 00"},
        // A holding one quantity short meets the next holding's 30.
        {"ZolTrdAccDetailsRep",
         "30 2D 02 01 01 04 01 54 04 01 46 04 01 44 31 1F 30 0C 04 01 53 02 01 01 02 01 02 02 01 03 "
         "30 0F 04 01 53 02 01 01 02 01 02 02 01 03 02 01 04",
         Missing("ZolTrdAccDetailsRep", -104)},
        {"ZolTrdAccRep", "30 14 30 00 04 01 54 04 01 46 0A 01 00 0A 01 02 04 01 47 04 01 58", "", "", "command"},
        {"ZolTrdAccRep", "30 17 30 00 0A 01 02 04 01 54 04 01 46 0A 01 00 0A 01 02 04 01 47 04 01 58", "", "command"},
        {"ZolTrdAccRep", "30 05 30 00 0A 01 02 | 00 00", Missing("ZolTrdAccRep", -125)},
        {"ZolTrdAccFirmCloseOutStatusUpdate", "30 06 04 01 46 0A 01 01", "", "", "trdAccId displayMode"},
        {"ZolTrdAccFirmCloseOutStatusUpdate", "30 09 04 01 46 81 01 54 0A 01 01", "", "trdAccId", "displayMode"},
        {"ZolTrdAccGrpRemove", "30 08 30 06 04 01 46 04 01 47"},
        {"ZolTrdAccGrpRemove", "30 08 30 06 04 01 46 02 01 01", Missing("ZolTrdAccGrpRemove", -147)},
        {"ZolTrdAccPositionChangeReq", "30 02 30 00", "", "", "firmId trdAccId"},
    });
}

// Required members of a merged record are always taken; optional ones only
// when the report carries them.
TEST(FirmsAndAccounts, FirmDynamicsMerge) {
    ZolFirmRep held, report;
    zt::From(held, "30 0D 30 00 A2 09 0A 01 00 81 01 05 0A 01 02");
    zt::From(report, "30 0A 30 00 A2 06 0A 01 01 0A 01 01");
    held |= report;
    EXPECT_EQ(Encoded(held), "30 0D 30 00 A2 09 0A 01 01 81 01 05 0A 01 01");
    EXPECT_EQ(held.statics, nullptr);
}

TEST(FirmsAndAccounts, MergeReplacesTheHoldings) {
    std::unique_ptr<ZolTrdAccDetailsRep> held = Full<ZolTrdAccDetailsRep>();
    ASSERT_EQ(held->holdingList.Count(), 2);
    ZolTrdAccDetailsRep none;
    zt::From(none, "30 0E 02 01 01 04 01 54 04 01 46 04 01 44 31 00");
    *held |= none;
    EXPECT_EQ(held->holdingList.Count(), 0);
    EXPECT_EQ(Encoded(*held), "30 0E 02 01 01 04 01 54 04 01 46 04 01 44 31 00");
}

TEST(CashAndHoldings, ShapesOnTheWire) {
    CheckAll({
        {"ZolCashPosChange", "30 0B 04 01 55 30 02 09 00 30 02 09 00", "", "", "openBalance hardLimit warnLimit"},
        {"ZolCashPosChange", "30 17 04 01 55 A1 02 09 00 30 02 09 00 30 02 09 00 A2 02 09 00 A3 02 09 00", "",
         "openBalance hardLimit warnLimit"},
        {"ZolCashPosChange", "30 0F 04 01 55 30 02 09 00 A1 02 09 00 30 02 09 00", Missing("ZolCashPosChange", -102)},
        // The limit record has contexts 1, 3, 4 and 6 only.
        {"ZolCashPosChangeLimit", "30 04 A4 02 09 00", "", "hardLimit", "warnLimit logWarnBreach allowHardBreach"},
        {"ZolCashPosChangeLimit", "30 03 86 01 00", "", "allowHardBreach", "hardLimit"},
        {"ZolCashPosChangeLimit", "30 04 A2 02 09 00", Discrepancy("ZolCashPosChangeLimit", -105)},
        {"ZolCashPosChangeLimit", "30 03 85 01 00", Discrepancy("ZolCashPosChangeLimit", -105)},
        {"ZolCashPosChangeLimitForFirm", "30 0A 30 06 04 01 46 04 01 50 30 00", "", "limit",
         "limit.warnLimit limit.logWarnBreach limit.hardLimit limit.allowHardBreach"},
        {"ZolCashPosLoad", "30 1B 04 01 46 01 01 00 04 01 54 30 02 09 00 30 02 09 00 01 01 00 30 02 09 00 01 01 00"},
        {"ZolCashPosChangeByUserRep",
         "30 1A 30 00 30 06 04 01 55 04 01 50 04 01 46 30 0B 04 01 55 30 02 09 00 30 02 09 00"},
        {"ZolCashPosChangeByUserRep", "30 17 30 00 30 06 04 01 55 04 01 50 30 0B 04 01 55 30 02 09 00 30 02 09 00",
         Missing("ZolCashPosChangeByUserRep", -150)},
        // Holdings: the optional members sit between texts and integers.
        {"ZolHoldingChangeRep",
         "30 23 02 01 01 04 01 46 04 01 53 02 01 0A 02 01 00 02 01 00 30 02 09 00 30 02 09 00 02 01 00 02 01 00 "
         "02 01 01",
         "", "", "settledQty"},
        {"ZolHoldingChangeRep",
         "30 26 02 01 01 04 01 46 04 01 53 81 01 05 02 01 0A 02 01 00 02 01 00 30 02 09 00 30 02 09 00 02 01 00 "
         "02 01 00 02 01 01",
         "", "settledQty"},
        {"ZolHoldingPledge", "30 0F 04 01 44 04 01 46 04 01 53 04 01 47 02 01 05", "", "", "holdingType"},
        {"ZolHoldingPledge", "30 12 04 01 44 04 01 46 04 01 53 0A 01 01 04 01 47 02 01 05", "", "holdingType"},
        {"ZolHoldingFreeze", "30 0C 04 01 44 04 01 46 04 01 53 02 01 05", "", "", "holdingType"},
        {"ZolHoldingUpdateQty", "30 0F 04 01 44 04 01 46 04 01 53 02 01 05 82 01 02", "", "qtyFrozen", "qtyPending"},
        {"ZolHoldingTransfer", "30 0F 04 01 44 04 01 46 04 01 53 04 01 45 02 01 05", Missing("ZolHoldingTransfer", -139)},
        {"ZolHoldingChangeReq", "30 03 02 01 01", "", "", "firmId secCode"},
    });

    ZolHoldingPledge pledge;
    zt::From(pledge, "30 0F 04 01 44 04 01 46 04 01 53 04 01 47 02 01 05");
    EXPECT_STREQ(pledge.fromFirmId, "F");
    EXPECT_STREQ(pledge.toFirmId, "G");

    ZolCashPosChangeLimit limit;
    limit.logWarnBreach = new ZolBoolean(true);
    EXPECT_EQ(Encoded(limit), "30 03 83 01 FF");
    delete limit.logWarnBreach;
    limit.logWarnBreach = nullptr;
    limit.hardLimit = new ZolLargePrice;
    EXPECT_EQ(Encoded(limit), "30 04 A4 02 09 00");
}

TEST(Permissions, ChoiceInItsPlace) {
    CheckAll({
        {"ZolPermissionSet", "30 0F 04 01 46 80 01 42 01 01 00 04 01 52 02 01 01", "", "permissionChoice.boardId",
         "userId"},
        {"ZolPermissionSet", "30 12 04 01 46 04 01 55 80 01 42 01 01 00 04 01 52 02 01 01", "",
         "userId permissionChoice.boardId"},
        {"ZolPermissionSet", "30 14 04 01 46 A4 06 04 01 53 04 01 42 01 01 00 04 01 52 02 01 01", "",
         "permissionChoice.secBoardId", "userId permissionChoice.boardId"},
        {"ZolPermissionDelete", "30 14 04 01 46 A5 06 04 01 49 04 01 42 01 01 FF 04 01 52 02 01 01", "",
         "permissionChoice.instrBoardId"},
        // A text alternative may come constructed; it goes back primitive.
        {"ZolPermissionSet", "30 11 04 01 46 A1 03 04 01 4D 01 01 00 04 01 52 02 01 01", "",
         "permissionChoice.marketId", "", "30 0F 04 01 46 81 01 4D 01 01 00 04 01 52 02 01 01"},
        {"ZolPermissionSet", "30 0F 04 01 46 84 01 42 01 01 00 04 01 52 02 01 01", Missing("ZolPermissionSet", -117)},
        {"ZolPermissionDelete", "30 0F 04 01 46 A6 01 42 01 01 00 04 01 52 02 01 01",
         Missing("ZolPermissionDelete", -110)},
        {"ZolPermissionChoice", "84 01 53", "ERROR - unexpected tag in CHOICE\n" + zt::DoorLine("ZolPermissionChoice", -100)},
        {"ZolPermissionChoice", "A3 03 04 01 53", "", "secCode", "", "83 01 53"},
        {"ZolPermissionChoice", "A4 06 04 01 53 04 01 42", "", "secBoardId", "boardId"},
    });

    ZolPermissionSet set;
    set.firmId = "F";
    set.permissionChoice = new ZolPermissionChoice;
    set.permissionChoice->choiceId = ZolPermissionChoice::secBoardIdCid;
    set.permissionChoice->secBoardId = new ZolSecBoardId;
    set.permissionChoice->secBoardId->secCode = "S";
    set.permissionChoice->secBoardId->boardId = "B";
    set.notFlag = false;
    set.roleId = "R";
    set.priority = 1;
    EXPECT_EQ(Encoded(set), "30 14 04 01 46 A4 06 04 01 53 04 01 42 01 01 00 04 01 52 02 01 01");
}

TEST(Permissions, ChoiceReachAndMerge) {
    ZolPermissionChoice choice;
    zt::From(choice, "80 01 42");
    EXPECT_EQ(choice._getref("marketId", false), nullptr);
    EXPECT_STREQ(*choice.boardId, "B");
    AsnType* market = choice._getref("marketId", true);
    ASSERT_NE(market, nullptr);
    EXPECT_EQ(choice.choiceId, ZolPermissionChoice::marketIdCid);
    EXPECT_EQ(static_cast<AsnType*>(choice.marketId), market);
    EXPECT_EQ(choice._getref("boardId", false), nullptr);
    EXPECT_EQ(Encoded(choice), "81 00");

    // The held entry keeps its user; another alternative replaces the
    // object, the same one merges inside it.
    ZolPermissionSet held, other, same;
    zt::From(held, "30 12 04 01 46 04 01 55 80 01 42 01 01 00 04 01 52 02 01 01");
    zt::From(other, "30 14 04 01 47 A4 06 04 01 53 04 01 42 01 01 FF 04 01 51 02 01 02");
    held |= other;
    EXPECT_EQ(Encoded(held), "30 17 04 01 47 04 01 55 A4 06 04 01 53 04 01 42 01 01 FF 04 01 51 02 01 02");
    EXPECT_NE(held.permissionChoice->secBoardId, other.permissionChoice->secBoardId);
    zt::From(same, "30 15 04 01 47 A4 07 04 02 53 32 04 01 42 01 01 FF 04 01 51 02 01 02");
    held |= same;
    EXPECT_EQ(Encoded(held), "30 18 04 01 47 04 01 55 A4 07 04 02 53 32 04 01 42 01 01 FF 04 01 51 02 01 02");
}

// The news item shared by the add, edit and header messages.
const char* const kItem = "30 0F 04 01 4E 04 01 45 04 01 54 01 01 00 04 01 46";

TEST(Operations, ShapesOnTheWire) {
    CheckAll({
        {"ZolNewsItem", kItem, "", "",
         "entryTime reSecCode newsReference releaseTime objectRef displayMode text"},
        {"ZolNewsItem", "30 12 04 01 4E 04 01 45 04 01 54 01 01 00 04 01 46 87 01 58", "", "text",
         "entryTime releaseTime displayMode"},
        {"ZolNewsItem", "30 0C 04 01 4E 04 01 45 01 01 00 04 01 46", Missing("ZolNewsItem", -102)},
        {"ZolNewsHeaderRep", "30 1C 30 00 02 01 01 04 01 55 0A 01 01 30 0F 04 01 4E 04 01 45 04 01 54 01 01 00 04 01 46",
         "", "newsItem", "newsItem.text"},
        {"ZolNewsRep", "30 05 02 01 01 04 00"},
        // Add has its flag and text in universal form, Edit in context form.
        {"ZolMessageAdd", "30 06 01 01 00 04 01 4D", "", "", "toUserId toFirmId displayMode timeToSend"},
        {"ZolMessageAdd", "30 09 81 01 55 01 01 00 04 01 4D", "", "toUserId", "toFirmId"},
        {"ZolMessageAdd", "30 03 04 01 4D", Missing("ZolMessageAdd", -108)},
        {"ZolMessageEdit", "30 06 01 01 00 04 01 4D", Missing("ZolMessageEdit", -112)},
        {"ZolMessageEdit", "30 03 02 01 07", "", "", "toUserId toFirmId displayMode timeToSend toDatafeed messageText"},
        {"ZolMessageEdit", "30 09 02 01 07 85 01 FF 86 01 4D", "", "toDatafeed messageText", "toUserId"},
        {"ZolMessageRep", "30 08 30 00 02 01 07 0A 01 01", "", "",
         "fromFirmId fromUserId toUserId toFirmId displayMode timeToSend toDatafeed messageText controlEventId"},
        {"ZolMessageRep", "30 0B 30 00 02 01 07 0A 01 01 89 01 03", "", "controlEventId", "messageText toDatafeed"},
        {"ZolMessageRep", "30 0B 30 00 02 01 07 0A 01 01 83 01 55", "", "toUserId", "fromFirmId fromUserId"},
        // Audit events: text comes last, behind the whole optional run.
        {"ZolAuditEvent", "30 16 02 01 01 30 06 02 01 01 02 01 02 30 06 02 01 00 02 01 00 04 01 54", "", "",
         "displayMode toUserId toFirmId fromUserId toWhat toWhom"},
        {"ZolAuditEvent", "30 1B 02 01 01 30 06 02 01 01 02 01 02 30 06 02 01 00 02 01 00 A5 03 0A 01 06 04 01 54", "",
         "toWhom", "toWhat"},
        {"ZolAuditEvent", "30 19 02 01 01 30 06 02 01 01 02 01 02 30 06 02 01 00 02 01 00 0A 01 02 04 01 54", "",
         "displayMode", "toUserId"},
        {"ZolAuditEvent", "30 18 02 01 01 30 06 02 01 01 02 01 02 30 06 02 01 00 02 01 00 A5 03 0A 01 06 | 00 00",
         Missing("ZolAuditEvent", -107)},
        {"ZolAuditEventRep", "30 05 30 00 02 01 01", "", "eventNum", "auditEvent"},
        {"ZolAuditEventRep", "30 02 30 00", "", "", "eventNum auditEvent"},
        {"ZolAuditEventTypeRep", "30 10 30 00 02 01 01 30 06 02 01 01 02 01 02 04 01 44", "", "", "displayMode"},
    });
}

TEST(Operations, ReportsMergeIntoHeldRows) {
    // A header without text keeps the body the held header has.
    ZolNewsHeaderRep header, update;
    zt::From(header, "30 1F 30 00 02 01 01 04 01 55 0A 01 01 30 12 04 01 4E 04 01 45 04 01 54 01 01 00 04 01 46 87 01 58");
    zt::From(update, "30 1C 30 00 02 01 01 04 01 55 0A 01 02 30 0F 04 01 4E 04 01 45 04 01 55 01 01 FF 04 01 46");
    header |= update;
    EXPECT_EQ(Encoded(header),
              "30 1F 30 00 02 01 01 04 01 55 0A 01 02 30 12 04 01 4E 04 01 45 04 01 55 01 01 FF 04 01 46 87 01 58");

    // A message row of the three required members keeps all the rest.
    std::unique_ptr<ZolMessageRep> held = Full<ZolMessageRep>();
    std::unique_ptr<ZolMessageRep> expected(static_cast<ZolMessageRep*>(held->Clone()));
    ZolMessageRep row;
    zt::From(row, "30 08 30 00 02 01 07 0A 01 01");
    *held |= row;
    expected->msgId = 7;
    expected->status = ZolBCStatus::sent;
    EXPECT_EQ(Encoded(*held), Encoded(*expected));

    // An audit row with eventNum alone keeps the event it holds.
    std::unique_ptr<ZolAuditEventRep> audit = Full<ZolAuditEventRep>();
    const std::string event = Encoded(*audit->auditEvent);
    ZolAuditEventRep numbered;
    zt::From(numbered, "30 05 30 00 02 01 2A");
    *audit |= numbered;
    EXPECT_EQ(audit->eventNum->value, 42);
    EXPECT_EQ(Encoded(*audit->auditEvent), event);
}

}  // namespace

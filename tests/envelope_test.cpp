// The four envelopes and the replies: tags outside the numbered spaces, the
// null alternative, the user id in both forms, the wrapped step-through
// choice, the reply classes' optional tails and merges, and the failure
// discipline under every truncation and every single-byte corruption.
#include <fcntl.h>
#include <unistd.h>

#include <memory>

#include "support.h"
#include "walk.h"

namespace {

using namespace Zol;

const char* const kMissing = "ERROR - SEQUENCE is missing non-optional elmt.\n";
const char* const kLength = "ERROR - Length discrepancy on sequence.\n";
const char* const kChoice = "ERROR - unexpected tag in CHOICE\n";
const char* const kEmpty = "Expected an empty sequence\n";

std::string Failed(const char* text, const char* type, int code) { return text + zt::DoorLine(type, code); }

// `30`, length, user U1, then `rest`.
std::string Request(const std::string& rest) {
    std::string body = zt::Bytes("04 02 55 31") + rest;
    return std::string(1, '\x30') + std::string(1, static_cast<char>(body.size())) + body;
}

TEST(Envelope, TagsOfNoAlternativeFailBeforeTheChoiceExists) {
    struct Row {
        const char* tag;
        bool query;  // the tag is tried in the query envelopes, else in the transaction ones
    };
    const Row rows[] = {
        {"BF 83 11", false},  // 401, never used
        {"BF 83 00", false},  // 384, below the space
        {"BF 83 76", false},  // 502, above it
        {"BF 82 1D", false},  // a query's id
        {"B2", false},        // a reply's id
        {"BF 82 10", true},   // 272, never used
        {"BF 82 50", true},   // 336, above the space
        {"BF 83 2A", true},   // a transaction's id
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.tag);
        const std::string element = zt::Bytes(r.tag) + std::string(1, '\0');
        if (r.query) {
            ZolQueryReq req;
            EXPECT_EQ(zt::Decode(Request(element), req).err, Failed(kMissing, "ZolQueryReq", -103));
            EXPECT_EQ(req.upQueryMsg, nullptr);
            ZolQueryReqChoice alone;
            EXPECT_EQ(zt::Decode(element, alone).err, Failed(kChoice, "ZolQueryReqChoice", -101));
            ZolQueryRep rep;
            EXPECT_EQ(zt::Decode(element, rep).err, Failed(kChoice, "ZolQueryRep", -106));
        } else {
            ZolTransReq req;
            EXPECT_EQ(zt::Decode(Request(element), req).err, Failed(kMissing, "ZolTransReq", -108));
            EXPECT_EQ(req.upTransMsg, nullptr);
            ZolTransReqChoice alone;
            EXPECT_EQ(zt::Decode(element, alone).err, Failed(kChoice, "ZolTransReqChoice", -100));
            EXPECT_EQ(alone.choiceId, 0);
        }
    }
    for (const char* element : {"B3 00", "A1 00", "30 00", "BF 82 1D 02 30 00"}) {
        ZolTransRep rep;
        EXPECT_EQ(zt::Decode(zt::Bytes(element), rep).err, Failed(kChoice, "ZolTransRep", -111)) << element;
    }
}

// Ids after a gap land on their own row, not on the row a dense count
// would give them.
TEST(Envelope, AlternativesAfterAGapKeepTheirIds) {
    struct Row {
        int id;
        const char* element;
        const char* type;
    };
    const Row trans[] = {
        {402, "BF 83 12 06 04 01 46 04 01 54", "ZolFirmSuspend"},
        {430, "BF 83 2E 03 0A 01 00", "ZolOrderWithdraw"},
        {438, "BF 83 36 08 30 06 04 01 41 04 01 42", "ZolSecBoardSetLastPriceOrLastYield"},
        {447, "BF 83 3F 06 04 01 46 04 01 58", "ZolTrdAccValidate"},
        {461, "BF 83 4D 03 01 01 FF", "ZolUserSetOrderApprovalFlag"},
        {478, "BF 83 5E 18 04 01 42 30 13 30 05 04 03 41 42 43 0A 01 01 0A 01 00 02 01 64 0A 01 03",
         "ZolOrderOnBehalf"},
    };
    for (const Row& r : trans) {
        ZolTransReq req;
        zt::Outcome o = zt::Decode(Request(zt::Bytes(r.element)), req);
        ASSERT_EQ(o.result, 1) << r.id << o.err;
        EXPECT_EQ(req.upTransMsg->choiceId, r.id);
        EXPECT_STREQ(req._getref("upTransMsg")->_getref(ZolTransReqChoice::_desc.choicebyvalue(r.id))->_getdesc()->name,
                     r.type);
    }
    const Row queries[] = {
        {273, "BF 82 11 02 30 00", "ZolMessageReq"},       {277, "BF 82 15 02 30 00", "ZolControlEventReq"},
        {291, "BF 82 23 02 30 00", "ZolSecReq"},           {298, "BF 82 2A 02 30 00", "ZolSummaryInstrBoardReq"},
        {301, "BF 82 2D 02 30 00", "ZolTradeLastNReq"},    {309, "BF 82 35 02 30 00", "ZolTrdAccGrpReq"},
        {312, "BF 82 38 02 30 00", "ZolTrdEventReq"},      {320, "BF 82 40 05 30 00 04 01 55", "ZolUserIpAddrReq"},
        {327, "BF 82 47 02 30 00", "ZolUserOrderRuleReq"}, {333, "BF 82 4D 02 30 00", "ZolTradeAllocationReq"},
    };
    for (const Row& r : queries) {
        ZolQueryReq req;
        zt::Outcome o = zt::Decode(Request(zt::Bytes(r.element)), req);
        ASSERT_EQ(o.result, 1) << r.id << o.err;
        EXPECT_EQ(req.upQueryMsg->choiceId, r.id);
        EXPECT_STREQ(req._getref("upQueryMsg")->_getref(ZolQueryReqChoice::_desc.choicebyvalue(r.id))->_getdesc()->name,
                     r.type);
    }
}

TEST(Envelope, NullAlternativeIsAnEmptySequence) {
    const char* const types[] = {"ZolTransReqChoice", "ZolQueryReqChoice", "ZolTransRep", "ZolQueryRep"};
    for (const char* type : types) {
        SCOPED_TRACE(type);
        const AsnTypeDesc* d = Zol::FindType(type);
        for (const char* hex : {"A0 00", "A0 80 00 00"}) {
            std::unique_ptr<AsnType> v(d->create());
            zt::Outcome o = zt::Decode(zt::Bytes(hex), *v);
            ASSERT_EQ(o.result, 1) << hex << o.err;
            EXPECT_NE(v->_getref("null"), nullptr) << hex;
            EXPECT_EQ(zt::Encoded(*v), "A0 00");
        }
        std::unique_ptr<AsnType> v(d->create());
        EXPECT_EQ(zt::Decode(zt::Bytes("A0 02 05 00"), *v).err, Failed(kEmpty, type, -217));
        // A new value claims the null alternative and holds nothing, yet encodes.
        std::unique_ptr<AsnType> fresh(d->create());
        EXPECT_EQ(fresh->_getref("null", true), nullptr);
        EXPECT_EQ(zt::Encoded(*fresh), "A0 00");
    }
    // A request around a new choice is valid on the wire, and reads back.
    ZolQueryReq req;
    req.userId = "U1";
    req.upQueryMsg = new ZolQueryReqChoice;
    EXPECT_EQ(zt::Encoded(req), "30 06 04 02 55 31 A0 00");
    ZolTransReq back;
    ASSERT_EQ(zt::Decode(Request(zt::Bytes("A0 80 00 00")), back).result, 1);
    EXPECT_EQ(back.upTransMsg->choiceId, 0);
    EXPECT_EQ(zt::Encoded(back), "30 06 04 02 55 31 A0 00");

    ZolTransRep rep;
    EXPECT_EQ(zt::Printed(rep), "null -- void3 --\n");
    ZolNull empty;
    EXPECT_EQ(zt::Encoded(empty), "30 00");
    EXPECT_EQ(zt::Decode(zt::Bytes("30 01 00"), empty).err, Failed(kEmpty, "ZolNull", -217));
}

TEST(Envelope, UserIdInConstructedFormIsWrittenBackPrimitive) {
    for (const char* userId : {"24 06 04 01 55 04 01 31", "24 80 04 01 55 04 01 31 00 00"}) {
        std::string body = zt::Bytes(userId) + zt::Bytes("BF 82 1D 02 30 00");
        ZolQueryReq req;
        zt::Outcome o = zt::Decode(std::string(1, '\x30') + std::string(1, char(body.size())) + body, req);
        ASSERT_EQ(o.result, 1) << userId << o.err;
        EXPECT_EQ(req.userId.Len(), 2u);
        EXPECT_STREQ(req.userId, "U1");
        EXPECT_EQ(zt::Encoded(req), "30 0A 04 02 55 31 BF 82 1D 02 30 00");
    }
}

TEST(Envelope, IndefiniteLengthsAtEveryLevel) {
    ZolTransReq order;
    zt::Outcome o = zt::Decode(zt::Bytes("30 80 24 80 04 01 55 04 01 31 00 00 BF 83 2A 80 30 80 30 80 04 03 41 42 43 "
                                         "00 00 0A 01 01 0A 01 00 02 01 64 0A 01 03 00 00 00 00 00 00"),
                               order);
    ASSERT_EQ(o.result, 1) << o.err;
    EXPECT_EQ(zt::Encoded(order),
              "30 1D 04 02 55 31 BF 83 2A 15 30 13 30 05 04 03 41 42 43 0A 01 01 0A 01 00 02 01 64 0A 01 03");

    ZolQueryRep report;
    o = zt::Decode(zt::Bytes("BF 82 1E 80 30 80 00 00 A2 80 0A 01 01 02 01 05 00 00 00 00"), report);
    ASSERT_EQ(o.result, 1) << o.err;
    EXPECT_EQ(report.choiceId, ZolQueryRep::orderSingleRepCid);
    EXPECT_EQ(zt::Encoded(report), "BF 82 1E 0A 30 00 A2 06 0A 01 01 02 01 05");

    ZolTransRep reply;
    ASSERT_EQ(zt::Decode(zt::Bytes("B2 80 04 02 4F 4B 00 00"), reply).result, 1);
    EXPECT_EQ(zt::Encoded(reply), "B2 04 04 02 4F 4B");
    // An indefinite request must end in its end-of-contents.
    ZolTransReq unended;
    EXPECT_EQ(zt::Decode(zt::Bytes("30 80 04 02 55 31 A0 00 05 00"), unended).err,
              "BDecEoc: ERROR - non zero byte in EOC or end of data reached\n" + zt::DoorLine("ZolTransReq", -12));
}

TEST(Envelope, BytesLeftInsideTheRequestFail) {
    ZolTransReq trans;
    EXPECT_EQ(zt::Decode(Request(zt::Bytes("A0 00 05 00")), trans).err, Failed(kLength, "ZolTransReq", -109));
    ZolQueryReq query;
    EXPECT_EQ(zt::Decode(Request(zt::Bytes("BF 82 1D 02 30 00 05 00")), query).err,
              Failed(kLength, "ZolQueryReq", -104));
    // Behind the request they are ignored.
    ZolTransReq behind;
    EXPECT_EQ(zt::Decode(Request(zt::Bytes("A0 00")) + zt::Bytes("05 00"), behind).result, 1);
}

// The step-through choice is an alternative whose type is a choice: its
// tag wraps a whole inner element, and only an indefinite outer length is
// followed by an end-of-contents of its own.
TEST(Envelope, TransLogStepThroughWrapsItsInnerElement) {
    ZolTransReq req;
    req.userId = "U1";
    AsnType* step = req._getref("upTransMsg", true)->_getref("transLogStepThrough", true);
    ASSERT_TRUE(step);
    // The first alternative is in force and empty: asking for it creates
    // nothing, so a caller passes through another one.
    EXPECT_EQ(step->_getref("numTransactions", true), nullptr);
    ASSERT_TRUE(step->_getref("untilTime", true));
    static_cast<AsnInt*>(step->_getref("numTransactions", true))->value = 3;
    EXPECT_EQ(zt::Encoded(req), "30 0B 04 02 55 31 BF 83 21 03 80 01 03");

    ZolTransReq indefinite;
    zt::Outcome o = zt::Decode(Request(zt::Bytes("BF 83 21 80 80 01 03 00 00")), indefinite);
    ASSERT_EQ(o.result, 1) << o.err;
    ASSERT_EQ(indefinite.upTransMsg->choiceId, 417);
    ZolTransLogStepThrough* got = indefinite.upTransMsg->transLogStepThrough;
    ASSERT_EQ(got->choiceId, ZolTransLogStepThrough::numTransactionsCid);
    EXPECT_EQ(got->numTransactions->value, 3);
    EXPECT_EQ(zt::Encoded(indefinite), "30 0B 04 02 55 31 BF 83 21 03 80 01 03");

    // A definite outer length reads no end-of-contents, so one standing
    // there is left over in the request.
    ZolTransReq definite;
    EXPECT_EQ(zt::Decode(Request(zt::Bytes("BF 83 21 03 80 01 03 00 00")), definite).err,
              Failed(kLength, "ZolTransReq", -109));
    ZolTransReq unended;
    EXPECT_EQ(zt::Decode(Request(zt::Bytes("BF 83 21 80 80 01 03 05 00")), unended).err,
              "BDecEoc: ERROR - non zero byte in EOC or end of data reached\n" + zt::DoorLine("ZolTransReq", -12));

    ZolTransReq until;
    o = zt::Decode(Request(zt::Bytes("BF 83 21 08 A1 06 02 01 01 02 01 02")), until);
    ASSERT_EQ(o.result, 1) << o.err;
    ASSERT_EQ(until.upTransMsg->transLogStepThrough->choiceId, ZolTransLogStepThrough::untilTimeCid);
    EXPECT_EQ(until.upTransMsg->transLogStepThrough->untilTime->time.value, 2);
    ZolTransReq inner;
    EXPECT_EQ(zt::Decode(Request(zt::Bytes("BF 83 21 03 A0 01 03")), inner).err,
              Failed(kChoice, "ZolTransReq", -190));
}

TEST(Replies, OptionalTailsAndWrongPlaces) {
    ZolTransRep bad;
    ASSERT_EQ(zt::Decode(zt::Bytes("B1 02 04 00"), bad).result, 1);
    ASSERT_EQ(bad.choiceId, ZolTransRep::replyBadCid);
    EXPECT_EQ(bad.replyBad->infoMessage.Len(), 0u);
    EXPECT_EQ(bad.replyBad->replyHint, nullptr);

    ZolTransRep hintOnly;
    ASSERT_EQ(zt::Decode(zt::Bytes("B2 07 04 02 4F 4B 0A 01 05"), hintOnly).result, 1);
    ASSERT_EQ(hintOnly.choiceId, ZolTransRep::replyOKCid);
    EXPECT_EQ(hintOnly.replyOK->extraInfo, nullptr);
    ASSERT_TRUE(hintOnly.replyOK->replyHint);
    EXPECT_EQ(hintOnly.replyOK->replyHint->value, ZolReplyHintType::price);

    ZolTransRep swapped, noMessage;
    EXPECT_EQ(zt::Decode(zt::Bytes("B2 0B 04 02 4F 4B 0A 01 05 04 02 58 58"), swapped).err,
              Failed(kLength, "ZolTransRep", -215));
    EXPECT_EQ(zt::Decode(zt::Bytes("B1 03 0A 01 00"), noMessage).err, Failed(kMissing, "ZolTransRep", -211));

    // Hints travel as plain numbers, named or not; text comes in either form.
    for (const char* hex : {"B1 07 04 02 4E 4F 0A 01 5A", "B1 07 04 02 4E 4F 0A 01 37"}) {
        ZolTransRep r;
        ASSERT_EQ(zt::Decode(zt::Bytes(hex), r).result, 1) << hex;
        EXPECT_EQ(zt::Encoded(r), hex);
    }
    ZolReplyBad unnamed;
    ASSERT_EQ(zt::Decode(zt::Bytes("30 07 04 02 4E 4F 0A 01 37"), unnamed).result, 1);
    EXPECT_EQ(zt::Printed(*unnamed.replyHint), "55");
    ZolTransRep constructed;
    ASSERT_EQ(zt::Decode(zt::Bytes("B2 08 24 06 04 01 4F 04 01 4B"), constructed).result, 1);
    EXPECT_EQ(zt::Encoded(constructed), "B2 04 04 02 4F 4B");
}

TEST(Replies, BuiltFromMembers) {
    ZolTransRep bad;
    auto* b = static_cast<ZolReplyBad*>(bad._getref("replyBad", true));
    b->infoMessage = "NO";
    b->replyHint = new ZolReplyHintType(ZolReplyHintType::price);
    EXPECT_EQ(zt::Encoded(bad), "B1 07 04 02 4E 4F 0A 01 05");

    ZolTransRep ok;
    auto* g = static_cast<ZolReplyOK*>(ok._getref("replyOK", true));
    g->infoMessage = "OK";
    g->extraInfo = new ZolTextStr("XX");
    g->replyHint = new ZolReplyHintType(ZolReplyHintType::password);
    EXPECT_EQ(zt::Encoded(ok), "B2 0B 04 02 4F 4B 04 02 58 58 0A 01 5B");
    ZolTransRep back;
    ASSERT_EQ(zt::Decode(zt::Bytes("B2 0B 04 02 4F 4B 04 02 58 58 0A 01 5B"), back).result, 1);
    EXPECT_STREQ(*back.replyOK->extraInfo, "XX");
    EXPECT_STREQ(back.replyOK->infoMessage, "OK");

    ZolTransReply whole;
    whole.transRep = 7;
    whole.successful = true;
    whole.replyText = "OK";
    EXPECT_EQ(zt::Encoded(whole), "30 0A 02 01 07 01 01 FF 04 02 4F 4B");
}

TEST(Replies, MergeKeepsWhatTheSourceLacks) {
    ZolTransRep held, later;
    ASSERT_EQ(zt::Decode(zt::Bytes("B2 0B 04 02 4F 4B 04 02 58 58 0A 01 05"), held).result, 1);
    ASSERT_EQ(zt::Decode(zt::Bytes("B2 04 04 02 4F 32"), later).result, 1);
    held |= later;
    EXPECT_EQ(zt::Encoded(held), "B2 0B 04 02 4F 32 04 02 58 58 0A 01 05");

    // Another alternative replaces the held one whole.
    ZolTransRep refused;
    ASSERT_EQ(zt::Decode(zt::Bytes("B1 02 04 00"), refused).result, 1);
    held |= refused;
    EXPECT_EQ(zt::Encoded(held), "B1 02 04 00");

    // A request takes the source's user; its choice merges by the same rule.
    ZolTransReq mine, theirs;
    ASSERT_EQ(zt::Decode(Request(zt::Bytes("BF 83 2E 06 0A 01 00 81 01 01")), mine).result, 1);
    std::string other = zt::Bytes("30 0B 04 02 55 32 BF 83 2E 03 0A 01 01");
    ASSERT_EQ(zt::Decode(other, theirs).result, 1);
    mine |= theirs;
    EXPECT_EQ(zt::Encoded(mine), "30 0E 04 02 55 32 BF 83 2E 06 0A 01 01 81 01 01");
    ZolTransReq empty;
    empty |= theirs;
    EXPECT_EQ(zt::Encoded(empty), zt::Hex(other));
}

// Standard error sent to /dev/null while it lives: the failure lines of
// a hundred thousand decodes are of no interest.
struct QuietStderr {
    int saved = dup(2);
    QuietStderr() {
        int devNull = open("/dev/null", O_WRONLY);
        dup2(devNull, 2);
        close(devNull);
    }
    ~QuietStderr() {
        dup2(saved, 2);
        close(saved);
    }
};

// Every truncation and every single-byte change of a filled envelope
// decodes to a clean 0 or 1; what decodes encodes again. The sanitizer
// build holds the decoders to releasing all they allocated and to reading
// nothing past the bytes given.
TEST(Envelope, DamagedBytesFailCleanly) {
    struct Row {
        const char* type;
        const char* alternative;
    };
    const Row rows[] = {{"ZolTransReq", "orderMarketMaker"},
                        {"ZolQueryReq", "orderbookByOrderReq"},
                        {"ZolTransRep", "replyOK"},
                        {"ZolQueryRep", "orderRep"}};
    for (const Row& r : rows) {
        const AsnTypeDesc* d = Zol::FindType(r.type);
        std::unique_ptr<AsnType> v(d->create());
        zt::Filler filler;
        filler.pick = [&](const AsnChoiceTypeDesc* c) {
            int i = 0;
            while (c->members[i].name && c->choicebyname(r.alternative) != c->members[i].choiceid)
                ++i;
            return c->members[i].name ? i : 0;
        };
        filler.Fill(v.get(), d);
        const std::string whole = zt::Bytes(zt::Encoded(*v).c_str());
        ASSERT_GT(whole.size(), 10u) << r.type;

        int decoded = 0, failed = 0, odd = 0;
        auto attempt = [&](const std::string& bytes, size_t len) {
            std::unique_ptr<char[]> exact(new char[len ? len : 1]);
            std::copy(bytes.begin(), bytes.begin() + long(len), exact.get());
            std::unique_ptr<AsnType> into(d->create());
            switch (Zol::AsnBuffer::Decode(exact.get(), len, *into)) {
            case 0:
                ++failed;
                break;
            case 1:
                ++decoded;
                odd += zt::Encoded(*into) == "<overflow>";
                break;
            default:
                ++odd;
            }
        };
        QuietStderr quiet;
        for (size_t len = 0; len < whole.size(); ++len)
            attempt(whole, len);
        EXPECT_EQ(decoded, 0) << r.type << ": a truncation decoded";
        for (size_t at = 0; at < whole.size(); ++at) {
            std::string changed = whole;
            for (int x = 1; x < 256; ++x) {
                changed[at] = static_cast<char>(whole[at] ^ x);
                attempt(changed, changed.size());
            }
        }
        EXPECT_EQ(odd, 0) << r.type;
        EXPECT_GT(decoded, 0) << r.type;
        EXPECT_GT(failed, 0) << r.type;
    }
}

}  // namespace

// The JSON form: exact texts for each kind, the failures of reading, and
// JSON -> BER -> JSON over every type of every module.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include <zol/json.h>

#include "support.h"
#include "walk.h"

namespace {

using Zol::Json;

// Decodes `hex` as type `name` and gives its JSON text.
std::string JsonOf(const char* name, const char* hex) {
    const AsnTypeDesc* d = Zol::FindType(name);
    std::unique_ptr<AsnType> v(d->create());
    EXPECT_EQ(zt::Decode(zt::Bytes(hex), *v).result, 1) << name;
    return Zol::ToJson(*v).dump();
}

// Reads `json` as type `name`; the encoding as hex, or "error: ..." text.
std::string EncodedFrom(const char* name, const char* json) {
    std::unique_ptr<AsnType> v(Zol::FindType(name)->create());
    try {
        Zol::FromJson(Json::parse(json), *v);
    } catch (const Zol::JsonError& e) {
        return std::string("error: ") + e.what();
    }
    return zt::Encoded(*v);
}

TEST(Json, EachKindHasItsForm) {
    struct Case {
        const char* type;
        const char* hex;
        const char* json;
    } cases[] = {
        // Choice, sequence with absent optional members, text.
        {"ZolTransRep", "B2 04 04 02 4F 4B", R"({"replyOK":{"infoMessage":"OK"}})"},
        {"ZolTransRep", "A0 00", R"({"null":{}})"},
        // Enumerations by name, integers, a request with its choice.
        {"ZolTransReq", "30 1D 04 02 55 31 BF 83 2A 15 30 13 30 05 04 03 41 42 43 0A 01 01 0A 01 00 02 01 64 0A 01 03",
         R"({"userId":"U1","upTransMsg":{"order":{"order":{"secBoardId":{"secCode":"ABC"},"type":"market","buySell":"buy","quantity":100,"duration":"day"}}}})"},
        // A number that no name of the enumeration has.
        {"ZolOrderVerb", "0A 01 07", "7"},
        // Octets outside 20..7E make the whole text hex; quotes stay text.
        {"ZolUserId", "04 03 00 FF 41", R"({"hex":"00FF41"})"},
        {"ZolUserId", "04 04 61 22 5C 7E", R"("a\"\\~")"},
        {"ZolUserId", "04 02 41 0A", R"({"hex":"410A"})"},
        {"ZolUserId", "04 00", R"("")"},
        // Bits one character each, bit 0 first, the length kept.
        {"ZolOrderMethods", "03 03 04 A0 10", R"("101000000001")"},
        {"ZolOrderMethods", "03 01 00", R"("")"},
        // Fixed reals with their decimals; the real infinities by name.
        {"ZolPrice", "30 09 09 04 80 F7 CA 80 02 01 02", R"({"value":101.25,"decimals":2})"},
        {"ZolPrice", "30 02 09 00", R"({"value":0.0})"},
        {"ZolPrice", "30 03 09 01 40", R"({"value":"PLUS-INFINITY"})"},
        {"ZolPrice", "30 03 09 01 41", R"({"value":"MINUS-INFINITY"})"},
        {"ZolLargeQty", "30 06 09 04 80 FE F0 A0", R"({"value":15400.0})"},
        // Explicitly tagged members, and a list.
        {"ZolSequenceContext", "30 05 A2 03 02 01 09", R"({"recNum":9})"},
        {"ZolUserUpdateActivityStatus", "30 12 31 10 30 06 02 01 01 02 01 00 30 06 02 01 02 02 01 3C",
         R"({"userList":[{"userIdx":1,"secsSinceAction":0},{"userIdx":2,"secsSinceAction":60}]})"},
        {"ZolUserUpdateActivityStatus", "30 02 31 00", R"({"userList":[]})"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(JsonOf(c.type, c.hex), c.json) << c.type << " " << c.hex;
        // And back: the same bytes, which are all in their shortest form.
        EXPECT_EQ(EncodedFrom(c.type, c.json), zt::Hex(zt::Bytes(c.hex))) << c.json;
    }
}

TEST(Json, ValuesThatNeverTravelStillHaveAForm) {
    Zol::ZolPrice p;
    p.value = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Zol::ToJson(p).dump(), R"({"value":"NOT-A-NUMBER"})");
    std::unique_ptr<AsnType> back(new Zol::ZolPrice);
    Zol::FromJson(Json::parse(R"({"value":"NOT-A-NUMBER"})"), *back);
    EXPECT_TRUE(std::isnan(static_cast<Zol::ZolPrice&>(*back).value.value));

    // A new choice holds nothing; a request without its choice leaves it out.
    Zol::ZolTransReqChoice empty;
    EXPECT_EQ(Zol::ToJson(empty).dump(), "null");
    Zol::ZolTransReq req;
    req.userId = "U1";
    EXPECT_EQ(Zol::ToJson(req).dump(), R"({"userId":"U1"})");
}

TEST(Json, ReadingAcceptsWhatWritingNeverGives) {
    // An enumeration by number, a whole number for a real, lower-case hex.
    EXPECT_EQ(EncodedFrom("ZolOrderVerb", "1"), "0A 01 01");
    EXPECT_EQ(EncodedFrom("ZolPrice", R"({"value":2})"), "30 05 09 03 80 FA 80");
    EXPECT_EQ(EncodedFrom("ZolUserId", R"({"hex":"00ff"})"), "04 02 00 FF");
    // The null alternative of a new choice, whose id it already stands on.
    EXPECT_EQ(EncodedFrom("ZolQueryReq", R"({"userId":"U1","upQueryMsg":{"null":{}}})"),
              "30 06 04 02 55 31 A0 00");
}

TEST(Json, ReadingFailsWithThePlaceAndTheFault) {
    struct Case {
        const char* type;
        const char* json;
        const char* error;
    } cases[] = {
        {"ZolTransRep", R"({"replyOK":{}})",
         "error: replyOK: the required member infoMessage of ZolReplyOK is missing"},
        {"ZolTransRep", R"({"replyOK":{"infoMessage":"x","colour":1}})",
         "error: replyOK: ZolReplyOK has no member colour"},
        {"ZolTransRep", R"({"replyGood":{}})", "error: the value: ZolTransRep has no alternative replyGood"},
        {"ZolTransRep", R"({"replyOK":{"infoMessage":"x"},"null":{}})",
         R"(error: the value: expected an object with one key, an alternative of ZolTransRep, found {"replyOK":{"infoMessage":"x"},"null"...)"},
        {"ZolTransRep", "null",
         "error: the value: expected an object with one key, an alternative of ZolTransRep, found null"},
        {"ZolTransReq", R"({"userId":"U1","upTransMsg":{"order":{"order":{"secBoardId":{"secCode":"A"},"type":"limit","buySell":"buy","quantity":"100","duration":"day"}}}})",
         R"(error: upTransMsg.order.order.quantity: expected an integer, found "100")"},
        {"ZolOrderVerb", R"("sideways")", R"(error: the value: no value named "sideways" (buy, sell, buyorsell))"},
        {"ZolOrderVerb", "1.5", "error: the value: expected a name or a number, found 1.5"},
        {"ZolQuantity", "2147483648", "error: the value: the number does not fit in 32 bits, found 2147483648"},
        {"ZolQuantity", "-2147483649", "error: the value: the number does not fit in 32 bits, found -2147483649"},
        {"ZolBoolean", "1", "error: the value: expected true or false, found 1"},
        {"ZolPrice", R"({"value":"lots"})",
         R"(error: value: expected a number, "PLUS-INFINITY", "MINUS-INFINITY" or "NOT-A-NUMBER", found "lots")"},
        {"ZolUserId", R"({"hex":"ABC"})", R"(error: the value: an odd number of hex digits, found {"hex":"ABC"})"},
        {"ZolUserId", R"({"hex":"zz"})", R"(error: the value: expected hex digits, found {"hex":"zz"})"},
        {"ZolUserId", "7", R"(error: the value: expected a string or {"hex": "..."}, found 7)"},
        {"ZolOrderMethods", R"("0120")", R"(error: the value: expected a string of 0 and 1, found "0120")"},
        {"ZolUserUpdateActivityStatus", R"({"userList":[{"userIdx":1,"secsSinceAction":0},{"userIdx":2}]})",
         "error: userList[1]: the required member secsSinceAction of ZolUserUpdateActivityStatusSetOfSeq is missing"},
        {"ZolUserUpdateActivityStatus", R"({"userList":{}})", "error: userList: expected an array, found {}"},
        {"ZolOrderRep", R"({"seqContext":[]})",
         "error: seqContext: expected an object for ZolSequenceContext, found []"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(EncodedFrom(c.type, c.json), c.error) << c.json;
}

// Every type, every alternative of every choice at the top: the value's JSON
// read back encodes to the same bytes, and those bytes decode to the same
// JSON.
TEST(Json, RoundTripsEveryTypeOfEveryModule) {
    int types = 0, values = 0;
    for (const AsnModuleDesc* const* m = Zol::AsnModules; *m; ++m)
        for (const AsnTypeDesc* const* t = (*m)->types; *t; ++t) {
            const AsnTypeDesc* r = AsnResolved(*t);
            int alternatives = 1;
            if (r->type == AsnTypeDesc::CHOICE)
                for (const AsnChoiceMemberDesc* a = static_cast<const AsnChoiceTypeDesc*>(r)->members; a->name; ++a)
                    alternatives = int(a - static_cast<const AsnChoiceTypeDesc*>(r)->members) + 1;
            ++types;
            for (int k = 0; k < alternatives; ++k) {
                zt::Filler f;
                int met = 0;
                f.pick = [&](const AsnChoiceTypeDesc* cd) {
                    int n = 0;
                    while (cd->members[n].name)
                        ++n;
                    return (k + met++) % n;
                };
                f.seed = k;
                std::unique_ptr<AsnType> v((*t)->create());
                f.Fill(v.get(), *t);
                Json j = Zol::ToJson(*v);
                std::string ber = zt::Encoded(*v);

                std::unique_ptr<AsnType> read((*t)->create());
                Zol::FromJson(j, *read);
                ASSERT_EQ(zt::Encoded(*read), ber) << (*t)->name << " " << j.dump();

                std::unique_ptr<AsnType> decoded((*t)->create());
                ASSERT_EQ(zt::Decode(zt::Bytes(ber.c_str()), *decoded).result, 1) << (*t)->name << " " << ber;
                ASSERT_EQ(Zol::ToJson(*decoded), j) << (*t)->name;
                ++values;
            }
        }
    EXPECT_GT(types, 450);
    EXPECT_GT(values, 700);
}

}  // namespace

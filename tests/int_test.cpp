// INTEGER, ENUMERATED, BOOLEAN and NULL.
#include "support.h"

#include <sstream>

namespace {

using zt::Bytes;
using zt::Decode;
using zt::DoorLine;
using zt::Encoded;

std::string Printed(const AsnType& v) {
    std::ostringstream os;
    os << v;
    return os.str();
}

// Fewest two's-complement octets, and back; ENUMERATED differs only in its tag.
TEST(AsnInt, MinimalContentAtEveryWidthBoundary) {
    const struct {
        int32_t value;
        const char* content;
    } rows[] = {
        {0, "00"},
        {1, "01"},
        {-1, "FF"},
        {127, "7F"},
        {128, "00 80"},
        {-128, "80"},
        {-129, "FF 7F"},
        {32767, "7F FF"},
        {32768, "00 80 00"},
        {-32768, "80 00"},
        {-32769, "FF 7F FF"},
        {8388607, "7F FF FF"},
        {8388608, "00 80 00 00"},
        {-8388608, "80 00 00"},
        {-8388609, "FF 7F FF FF"},
        {2147483647, "7F FF FF FF"},
        {-2147483647 - 1, "80 00 00 00"},
    };
    for (const auto& r : rows) {
        std::string content = Bytes(r.content);
        std::string len = "0" + std::to_string(content.size()) + " ";
        EXPECT_EQ(Encoded(AsnInt(r.value)), "02 " + len + r.content);
        EXPECT_EQ(Encoded(AsnEnum(r.value)), "0A " + len + r.content);

        AsnInt i;
        AsnEnum e;
        EXPECT_EQ(Decode(Bytes("02") + char(content.size()) + content, i).result, 1);
        EXPECT_EQ(Decode(Bytes("0A") + char(content.size()) + content, e).result, 1);
        EXPECT_EQ(i.value, r.value);
        EXPECT_EQ(e.value, r.value);
        EXPECT_EQ(Printed(e), std::to_string(r.value));
    }
}

TEST(AsnInt, ContentRules) {
    const char* big = "AsnInt::BDecContent: ERROR - integer is too big to decode.\n";
    const char* past = "AsnInt::BDecContent: ERROR - decoded past end of data.\n";
    const struct {
        const char* wire;
        int result;
        int32_t value;
        std::string err;
    } rows[] = {
        {"02 04 00 00 00 05", 1, 5, ""},  // non-minimal is taken
        {"02 82 00 02 FF 00", 1, -256, ""},
        {"02 05 00 00 00 00 05", 0, 0, big + DoorLine("INTEGER", -7)},
        {"02 80 05 00 00", 0, 0, big + DoorLine("INTEGER", -7)},
        {"02 03 01 02", 0, 0, past + DoorLine("INTEGER", -8)},
        {"02 01", 0, 0, past + DoorLine("INTEGER", -8)},
        {"0A 01 63", 1, 99, ""},  // any value passes as ENUMERATED
    };
    for (const auto& r : rows) {
        AsnEnum e;
        AsnInt i;
        AsnInt& v = r.wire[0] == '0' && r.wire[1] == 'A' ? e : i;
        auto o = Decode(Bytes(r.wire), v);
        EXPECT_EQ(o.result, r.result) << r.wire;
        EXPECT_EQ(o.err, r.err) << r.wire;
        if (r.result) {
            EXPECT_EQ(v.value, r.value) << r.wire;
        }
    }

    // A content of 0 octets still reads one, and counts none.
    std::string wire = Bytes("02 00 07");
    AsnBuf b;
    b.InstallData(&wire[0], wire.size());
    AsnInt i;
    AsnLen n = 0;
    EXPECT_EQ(i.BDecPdu(b, n), 1);
    EXPECT_EQ(i.value, 7);
    EXPECT_EQ(n, 2u);
    EXPECT_TRUE(b.Eod());

    // Default values are defined.
    EXPECT_EQ(AsnInt().value, 0);
    EXPECT_EQ(AsnEnum().value, 0);
    EXPECT_FALSE(AsnBool().value);
}

TEST(AsnBool, EncodeDecodeAndFailures) {
    const char* tooLong = "AsnBool::BDecContent: ERROR - boolean value too long.\n";
    const struct {
        const char* wire;
        int result;
        bool value;
        std::string err;
    } rows[] = {
        {"01 01 01", 1, true, ""},
        {"01 01 FF", 1, true, ""},
        {"01 01 00", 1, false, ""},
        {"01 02 FF FF", 0, false, tooLong + DoorLine("BOOLEAN", -5)},
        {"01 02", 0, false, tooLong + DoorLine("BOOLEAN", -5)},  // before reading content
        {"01 00", 0, false, tooLong + DoorLine("BOOLEAN", -5)},
        {"01 80 FF 00 00", 0, false, tooLong + DoorLine("BOOLEAN", -5)},
        {"01 01", 0, false,
         "AsnBool::BDecContent: ERROR - decoded past end of data \n" + DoorLine("BOOLEAN", -6)},
    };
    for (const auto& r : rows) {
        AsnBool v;
        auto o = Decode(Bytes(r.wire), v);
        EXPECT_EQ(o.result, r.result) << r.wire;
        EXPECT_EQ(o.err, r.err) << r.wire;
        EXPECT_EQ(v.value, r.value) << r.wire;
        if (r.result) {
            EXPECT_EQ(Encoded(v), r.value ? "01 01 FF" : "01 01 00");
        }
    }
    AsnBool t(true);
    EXPECT_EQ(Printed(t), "TRUE");
    t = false;
    EXPECT_EQ(Printed(t), "FALSE");
}

TEST(AsnNull, EncodeDecodeAndFailures) {
    AsnNull v;
    EXPECT_EQ(Encoded(v), "05 00");
    EXPECT_EQ(Printed(v), "NULL");
    const char* text = "AsnNull::BDecContent: ERROR - NULL values len is non-zero\n";
    for (const char* wire : {"05 80 00 00", "05 01 00", "05 81 01 00"}) {
        AsnNull n;
        auto o = Decode(Bytes(wire), n);
        EXPECT_EQ(o.result, 0);
        EXPECT_EQ(o.err, text + DoorLine("NULL", -13)) << wire;
    }
    AsnNull n;
    EXPECT_EQ(Decode(Bytes("05 00"), n).result, 1);

    // The content form reads nothing and counts nothing.
    AsnLen count = 0;
    AsnBuf after;
    EXPECT_EQ(zt::Jump(Bytes("00"), [&](AsnBuf& b, DecodeEnv env) { n.BDecContent(b, 0x05000000u, 0, count, env); },
                       nullptr, &after),
              0);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(after.readPos, after.dataBegin);
}

}  // namespace

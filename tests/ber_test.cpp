// Tags, lengths and end-of-contents: the BER primitives every decoder uses.
#include "support.h"

namespace {

using zt::Bytes;
using zt::Hex;
using zt::Jump;

TEST(BEncLen, ShortestDefiniteFormAtEveryBoundary) {
    const struct {
        AsnLen len;
        const char* wire;
    } rows[] = {
        {0, "00"},
        {127, "7F"},
        {128, "81 80"},
        {255, "81 FF"},
        {256, "82 01 00"},
        {65535, "82 FF FF"},
        {65536, "83 01 00 00"},
        {16777215, "83 FF FF FF"},
        {16777216, "84 01 00 00 00"},
        {0xFFFFFFFFu, "84 FF FF FF FF"},
    };
    for (const auto& r : rows) {
        char block[8];
        AsnBuf b;
        b.Init(block, sizeof block);
        b.ResetInWriteRvsMode();
        AsnLen n = BEncLen(b, r.len);
        EXPECT_EQ(Hex(b.DataPtr(), b.DataLen()), r.wire) << r.len;
        EXPECT_EQ(n, b.DataLen()) << r.len;
    }
    char one[2];
    AsnBuf b;
    b.Init(one, sizeof one);
    b.ResetInWriteRvsMode();
    EXPECT_EQ(BEncLen(b, 300), 3u);  // the count is returned even when it did not fit
    EXPECT_TRUE(b.WriteError());
}

// Successful reads: the value, and the octets added to a count already running.
TEST(BDecTagLen, ReadsAndCounts) {
    const struct {
        bool tag;
        const char* wire;
        uint32_t value;
        AsnLen counted;
    } rows[] = {
        {true, "02", 0x02000000u, 1},
        {true, "30", 0x30000000u, 1},
        {true, "00 00", 0, 1},
        {true, "9F 1F", 0x9F1F0000u, 2},
        {true, "1F 05 FF", 0x1F050000u, 2},  // no continuation bit: second octet ends it
        {true, "BF 83 75", 0xBF837500u, 3},
        {false, "05", 5, 1},
        {false, "81 05", 5, 2},  // long form where the short would do
        {false, "82 00 05", 5, 3},  // leading zeros
        {false, "82 01 2C", 300, 3},
        {false, "84 00 01 00 00", 65536, 5},
        {false, "80", IndefiniteLen, 1},
        {false, "84 FF FF FF FF", IndefiniteLen, 5},
    };
    for (const auto& r : rows) {
        AsnLen count = 100;
        uint32_t got = 0;
        AsnBuf after;
        int code = Jump(
            Bytes(r.wire),
            [&](AsnBuf& b, DecodeEnv env) { got = r.tag ? BDecTag(b, count, env) : BDecLen(b, count, env); },
            nullptr, &after);
        EXPECT_EQ(code, 0) << r.wire;
        EXPECT_EQ(got, r.value) << r.wire;
        EXPECT_EQ(count, 100 + r.counted) << r.wire;
        EXPECT_EQ(after.readPos - after.dataBegin, ptrdiff_t(r.counted)) << r.wire;
    }
}

enum Prim { TAG, LEN, EOC };

TEST(BDecTagLenEoc, FailuresWriteOneLineAndJump) {
    const char* pastTag = "BDecTag: ERROR - decoded past the end of data\n";
    const char* pastLen = "BDecLen: decoded past end of data\n";
    const char* eoc = "BDecEoc: ERROR - non zero byte in EOC or end of data reached\n";
    const struct {
        Prim prim;
        const char* wire;
        bool alreadyFailed;
        int code;
        const char* text;
    } rows[] = {
        {TAG, "", false, -22, pastTag},
        {TAG, "9F", false, -22, pastTag},
        {TAG, "BF 83", false, -22, pastTag},
        {TAG, "02", true, -22, pastTag},
        {TAG, "BF 83 80 01", false, -21, "BDecTag: ERROR - tag value overflow\n"},
        {LEN, "", false, -9, pastLen},
        {LEN, "05", true, -9, pastLen},
        {LEN, "82 01", false, -11, pastLen},
        {LEN, "84 00 00 00", false, -11, pastLen},
        {LEN, "85 00 00 00 00 01", false, -10, "BDecLen: ERROR - length overflow\n"},
        {LEN, "FF", false, -10, "BDecLen: ERROR - length overflow\n"},
        {EOC, "00 01", false, -12, eoc},
        {EOC, "01 00", false, -12, eoc},
        {EOC, "00", false, -12, eoc},
        {EOC, "", false, -12, eoc},
        {EOC, "00 00", true, -12, eoc},
    };
    for (const auto& r : rows) {
        std::string err;
        AsnLen count = 0;
        int code = Jump(
            Bytes(r.wire),
            [&](AsnBuf& b, DecodeEnv env) {
                b.readFailed = r.alreadyFailed;
                if (r.prim == TAG)
                    BDecTag(b, count, env);
                else if (r.prim == LEN)
                    BDecLen(b, count, env);
                else
                    BDecEoc(b, count, env);
            },
            &err);
        EXPECT_EQ(code, r.code) << r.wire;
        EXPECT_EQ(err, r.text) << r.wire;
    }
}

TEST(BDecEoc, StrictMarkerCountsTwo) {
    AsnLen count = 7;
    EXPECT_EQ(Jump(Bytes("00 00"), [&](AsnBuf& b, DecodeEnv env) { BDecEoc(b, count, env); }), 0);
    EXPECT_EQ(count, 9u);
}

// The marker found by reading a tag of 0: its second octet only warns.
TEST(BDecEoc, SecondOctetAfterATagOfZeroIsLenient) {
    const struct {
        const char* wire;
        bool warns;
    } rows[] = {{"00", false}, {"01", true}, {"", true}};
    for (const auto& r : rows) {
        AsnLen count = 0;
        std::string err;
        EXPECT_EQ(Jump(Bytes(r.wire), [&](AsnBuf& b, DecodeEnv) { BDecEocSecondOctet(b, count); }, &err), 0);
        EXPECT_EQ(count, 1u);
        EXPECT_EQ(err, r.warns ? "Warning - second octet of EOC not zero\n" : "") << r.wire;
    }
}

}  // namespace

// BIT STRING: bit access, equality, primitive and constructed decoding.
#include "support.h"

#include <sstream>

namespace {

using zt::Bytes;
using zt::Encoded;
using zt::Hex;
using zt::Jump;

std::string Repeat(const char* hex, int n) {
    std::string out;
    for (int i = 0; i < n; ++i)
        out += Bytes(hex);
    return out;
}

TEST(AsnBits, BitAccessStaysInsideBitLen) {
    AsnBits v(3);
    v.SetBit(0);
    v.SetBit(3);  // beyond bitLen: ignored
    EXPECT_EQ(Hex(v.bits, 1), "80");
    EXPECT_TRUE(v.GetBit(0));
    EXPECT_FALSE(v.GetBit(3));
    v.SetBit(2);
    v.ClrBit(0);
    v.ClrBit(100);
    EXPECT_EQ(Hex(v.bits, 1), "20");
    EXPECT_FALSE(v.GetBit(1000));

    AsnBits w("\x01\x80", 16);
    EXPECT_TRUE(w.GetBit(7));
    EXPECT_TRUE(w.GetBit(8));
    EXPECT_FALSE(w.GetBit(9));
}

TEST(AsnBits, EncodesWithTheUnusedBitCount) {
    EXPECT_EQ(Encoded(AsnBits(12)), "03 03 04 00 00");
    EXPECT_EQ(Encoded(AsnBits(16)), "03 03 00 00 00");
    EXPECT_EQ(Encoded(AsnBits()), "03 01 00");
    EXPECT_EQ(Encoded(AsnBits(size_t(0))), "03 01 00");
    EXPECT_EQ(Encoded(AsnBits("\xFF", 1)), "03 02 07 FF");  // unused bits go out as stored
    std::ostringstream os;
    os << AsnBits("\xA5\x0F", 12);
    EXPECT_EQ(os.str(), "'a50f'H  -- BIT STRING bitlen = 12 --");
}

TEST(AsnBits, EqualityIgnoresBitsBeyondBitLen) {
    const struct {
        const char* a;
        size_t aBits;
        const char* b;
        size_t bBits;
        bool equal;
    } rows[] = {
        {"\xF0", 4, "\xFF", 4, true},
        {"\xFF", 8, "\xFE", 8, false},
        {"", 0, "", 0, true},
        {"", 0, "\x00", 1, false},
        {"\x0F\xF0", 12, "\x0F\xF1", 12, true},
        {"\x0F\xF0", 12, "\x0F\xE0", 12, false},
        {"\x0F\xF0", 12, "\x1F\xF0", 12, false},
        {"\x0F\xF0", 12, "\x0F\xF0", 13, false},
    };
    for (const auto& r : rows) {
        AsnBits a(r.a, r.aBits), b(r.b, r.bBits);
        EXPECT_EQ(a == b, r.equal) << Hex(r.a, (r.aBits + 7) / 8) << "/" << r.aBits;
        EXPECT_EQ(a != b, !r.equal);
    }
    EXPECT_TRUE(AsnBits() == AsnBits(size_t(0)));
}

TEST(AsnBits, SetReSetAndAssignment) {
    AsnBits v("\xAB\xCD", 16);
    v.ReSet(v.bits, 16);  // its own block: nothing happens
    EXPECT_EQ(Hex(v.bits, 2), "AB CD");
    v.ReSet(v.bits + 1, 8);  // part of its own block, copied before the free
    EXPECT_EQ(Hex(v.bits, 1), "CD");
    EXPECT_EQ(v.BitLen(), 8u);
    AsnBits w;
    w = v;
    v = v;
    v.ClrBit(0);
    EXPECT_EQ(Hex(w.bits, 1), "CD");
    EXPECT_EQ(Hex(v.bits, 1), "4D");
    v.ReSet(size_t(5));
    EXPECT_EQ(Encoded(v), "03 02 03 00");
}

TEST(AsnBits, PrimitiveAndConstructedDecoding) {
    const char* wrongLast =
        "BDecConsBitString: ERROR - a component of a constructed BIT STRING that is not the last has "
        "non-zero unused bits\n";
    const char* deep = "BDecConsBitString: ERROR - constructed BIT STRING nested too deep\n";
    const char* past = "BDecBitString: ERROR - decoded past end of data\n";
    const char* tooMany = "BDecBitString: ERROR - more unused bits than bits held\n";
    const std::string nest64 = Repeat("23 80", 64) + Bytes("03 02 00 AA") + Repeat("00 00", 64);
    const std::string nest65 = Repeat("23 80", 65) + Bytes("03 02 00 AA") + Repeat("00 00", 65);
    const struct {
        std::string wire;
        int code;
        std::string err;
        const char* octs;
        size_t bitLen;
    } rows[] = {
        {Bytes("03 02 04 F0"), 0, "", "F0", 4},
        {Bytes("03 01 00"), 0, "", "", 0},
        {Bytes("03 02 08 FF"), 0, "", "FF", 0},  // exactly all bits unused
        {Bytes("03 03 09 FF FF"), 0, "", "FF FF", 7},  // not held to 7
        {Bytes("23 80 03 02 00 0F 03 02 04 F0 00 00"), 0, "", "0F F0", 12},
        {Bytes("23 09 03 00 03 03 00 AB CD 03 00"), 0, "", "AB CD", 16},  // length 0 adds nothing
        {Bytes("23 80 23 04 03 02 00 AA 03 02 01 BB 00 00"), 0, "", "AA BB", 15},
        {Bytes("23 80 03 02 00 0F 00 FF"), 0, "Warning - second octet of EOC not zero\n", "0F", 8},
        {nest64, 0, "", "AA", 8},
        {Bytes("03 00"), -1, "BDecBitString: ERROR - no unused-bits octet\n", nullptr, 0},
        {Bytes("03 02 09 FF"), -1, tooMany, nullptr, 0},
        {Bytes("03 01 01"), -1, tooMany, nullptr, 0},
        {Bytes("03 03 00 FF"), -1, past, nullptr, 0},
        {Bytes("03 01"), -1, past, nullptr, 0},
        {Bytes("03 84 FF FF FF FF 00 FF"), -1, past, nullptr, 0},
        {Bytes("23 80 03 02 04 0F 03 02 00 F0 00 00"), -2, wrongLast, nullptr, 0},
        {Bytes("23 03 03 01 05"), -2, "BDecConsBitString: ERROR - more unused bits than bits held\n", nullptr, 0},
        {Bytes("23 05 03 04 00 AB"), -3, "BDecConsOctetString: ERROR - expecting more data\n", nullptr, 0},
        {Bytes("23 04 02 01 05 00"), -4,
         "BDecConsBitString: ERROR - decoded non-BIT STRING tag inside a constructed BIT STRING\n", nullptr, 0},
        {nest65, -4, deep, nullptr, 0},
        {Repeat("23 80", 100000), -4, deep, nullptr, 0},
    };
    for (const auto& r : rows) {
        AsnBits v;
        AsnLen n = 0;
        std::string err;
        EXPECT_EQ(Jump(r.wire, [&](AsnBuf& b, DecodeEnv env) { v.BDec(b, n, env); }, &err), r.code)
            << Hex(r.wire.substr(0, 16));
        EXPECT_EQ(err, r.err) << Hex(r.wire.substr(0, 16));
        if (r.code)
            continue;
        EXPECT_EQ(n, r.wire.size());
        EXPECT_EQ(v.bitLen, r.bitLen);
        EXPECT_EQ(Hex(v.bits, Bytes(r.octs).size()), r.octs);
    }
}

}  // namespace

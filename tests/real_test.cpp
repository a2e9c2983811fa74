// REAL: base-2 binary form out, bases 2, 8 and 16 in.
#include "support.h"

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>

namespace {

using zt::Bytes;
using zt::Decode;
using zt::DoorLine;
using zt::Encoded;

const double inf = std::numeric_limits<double>::infinity();

TEST(AsnReal, EncodesAndDecodesBack) {
    const struct {
        double value;
        const char* wire;
        double back;
    } rows[] = {
        {0.0, "09 00", 0.0},
        {-0.0, "09 00", 0.0},
        {std::nan(""), "09 00", 0.0},
        {inf, "09 01 40", inf},
        {-inf, "09 01 41", -inf},
        {1.0, "09 03 80 F9 80", 1.0},
        {0.5, "09 03 80 F8 80", 0.5},
        {-1.0, "09 03 C0 F9 80", -1.0},
        {1.5, "09 03 80 F9 C0", 1.5},
        {300.0, "09 03 80 01 96", 300.0},  // trailing zero bits inside the last octet stay
        {1.0e-30, "09 09 81 FF 6D A2 42 5F F7 5E 15", 1.0e-30},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(Encoded(AsnReal(r.value)), r.wire) << r.value;
        AsnReal v(123.0);
        EXPECT_EQ(Decode(Bytes(r.wire), v).result, 1) << r.wire;
        EXPECT_EQ(v.value, r.back) << r.wire;
        EXPECT_FALSE(std::signbit(v.value) && r.back == 0.0);
    }
    EXPECT_EQ(PLUS_INFINITY.value, inf);
    EXPECT_EQ(MINUS_INFINITY.value, -inf);
}

// All 53 bits survive, from 1e-290 up to the largest double.
TEST(AsnReal, RoundTripIsExact) {
    uint64_t seed = 0x9E3779B97F4A7C15ull;
    auto next = [&] {
        seed ^= seed << 13;
        seed ^= seed >> 7;
        seed ^= seed << 17;
        return seed;
    };
    std::vector<double> values = {1.0e-290, -1.0e-290, DBL_MAX, -DBL_MAX, 1.0 / 3, 12345.678};
    for (int i = 0; i < 2000; ++i) {
        double m = double(next() >> 11) / double(1ull << 53);  // 53 random bits
        int e = int(next() % 1990) - 963;                     // 2^-963 > 1e-290
        values.push_back((next() & 1 ? -1 : 1) * std::ldexp(0.5 + m / 2, e));
    }
    for (double d : values) {
        char block[32];
        size_t len;
        AsnReal v(d);
        const char* p = Zol::AsnBuffer::Encode(block, sizeof block, v, len);
        ASSERT_NE(p, nullptr);
        ASSERT_LE(len, 2u + 1 + 2 + 7);
        AsnReal back;
        ASSERT_EQ(Zol::AsnBuffer::Decode(p, len, back), 1);
        ASSERT_EQ(back.value, d) << zt::Hex(p, len);
    }
}

TEST(AsnReal, ReadsOtherBasesScalesAndExponentForms) {
    const struct {
        const char* wire;
        double value;
    } rows[] = {
        {"09 03 90 01 01", 8.0},  // base 8
        {"09 03 A0 01 01", 16.0},  // base 16
        {"09 03 84 00 01", 2.0},  // scale factor 2
        {"09 03 8C 00 01", 8.0},  // scale factor 8
        {"09 03 C0 00 01", -1.0},
        {"09 04 81 FF FE 03", 0.75},  // two exponent octets, high first
        {"09 05 82 FF FF FF 04", 2.0},  // three, sign-extended
        {"09 04 83 01 00 01", 1.0},  // count form
        {"09 09 83 06 AA BB 00 00 00 02 03", 12.0},  // octets beyond four fall out
        {"09 02 80 05", 0.0},  // no mantissa octets
    };
    for (const auto& r : rows) {
        AsnReal v;
        auto o = Decode(Bytes(r.wire), v);
        EXPECT_EQ(o.result, 1) << r.wire;
        EXPECT_EQ(v.value, r.value) << r.wire;
    }

    // A count of 0 still reads one exponent octet, beyond what the length says.
    std::string wire = Bytes("09 03 83 00 01 03");
    AsnBuf b;
    b.InstallData(&wire[0], wire.size());
    AsnReal v;
    AsnLen n = 0;
    EXPECT_EQ(v.BDecPdu(b, n), 1);
    EXPECT_EQ(v.value, 6.0);
    EXPECT_EQ(n, 5u);
    EXPECT_TRUE(b.Eod());
}

TEST(AsnReal, Failures) {
    const struct {
        const char* wire;
        std::string err;
    } rows[] = {
        {"09 01 42",
         "AsnReal::BDecContent: ERROR - unrecognized 1 octet length real number\n" + DoorLine("REAL", -18)},
        {"09 02 03 31",
         "AsnReal::BDecContent: ERROR - decimal REAL form is not currently supported\n" + DoorLine("REAL", -20)},
        {"09 03 B0 01 01",
         "AsnReal::BDecContent: ERROR - unsupported base for a binary real number.\n" + DoorLine("REAL", -19)},
        // Cut inside the content: the read flag alone says so.
        {"09 05 83 01 00 01", ""},
        {"09 03 80", ""},
        {"09 80 80 00 01", ""},  // indefinite length: reading stops at the end
        {"09 84 FF FF FF F0 81 FF", ""},
    };
    for (const auto& r : rows) {
        AsnReal v;
        auto o = Decode(Bytes(r.wire), v);
        EXPECT_EQ(o.result, 0) << r.wire;
        EXPECT_EQ(o.err, r.err) << r.wire;
    }
}

TEST(AsnReal, Print) {
    std::ostringstream os;
    os << AsnReal(2.25) << ' ' << AsnReal(-1e300) << ' ' << AsnReal();
    EXPECT_EQ(os.str(), "2.25 -1e+300 0");
}

}  // namespace

// REAL has a decoder for its common forms beside the general one, and an
// encoder for normal numbers beside the one for every value: random
// values and random encodings of every form must come out the same
// either way.
#include <cmath>
#include <cstring>
#include <vector>

#include "support.h"

namespace {

struct Random {
    uint64_t seed;
    uint64_t operator()() {
        seed ^= seed << 13;
        seed ^= seed >> 7;
        seed ^= seed << 17;
        return seed;
    }
};

// All 53 bits of random doubles survive, from 1e-290 up to the largest.
TEST(FastPath, RealsRoundTripExactly) {
    Random next{0x9E3779B97F4A7C15ull};
    for (int i = 0; i < 2000; ++i) {
        double m = double(next() >> 11) / double(1ull << 53);
        double d = (next() & 1 ? -1 : 1) * std::ldexp(0.5 + m / 2, int(next() % 1990) - 963);
        char block[32];
        size_t len;
        AsnReal v(d), back;
        const char* p = Zol::AsnBuffer::Encode(block, sizeof block, v, len);
        ASSERT_NE(p, nullptr);
        ASSERT_EQ(Zol::AsnBuffer::Decode(p, len, back), 1);
        ASSERT_EQ(back.value, d) << zt::Hex(p, len);
    }
}

// The general decoding: the mantissa summed octet by octet in a double,
// then scaled by ldexp.
double LongWay(const std::vector<unsigned char>& c) {
    unsigned first = c[0];
    size_t expLen = 1 + (first & 1);
    int32_t exp = static_cast<int8_t>(c[1]);
    if (expLen == 2)
        exp = exp * 256 + c[2];
    double mant = 0;
    for (size_t k = 1 + expLen; k < c.size(); ++k)
        mant = mant * 256 + c[k];
    int log2Base = (first & 0x30) == 0 ? 1 : (first & 0x30) == 0x10 ? 3 : 4;
    double v = std::ldexp(mant, exp * log2Base + int((first >> 2) & 3));
    return first & 0x40 ? -v : v;
}

// Bases 2, 8 and 16, every scale and sign, one or two exponent octets (two
// reaching from the subnormal range to past the largest double), one to
// eight mantissa octets, with and without trailing zeros.
TEST(FastPath, RealDecodingAgreesWithTheLongWay) {
    Random next{0x243F6A8885A308D3ull};
    for (int i = 0; i < 100000; ++i) {
        unsigned twoOctets = next() % 2;
        unsigned first = 0x80 | unsigned(next() % 3) << 4 | unsigned(next() & 0x4C) | twoOctets;
        int32_t e = twoOctets ? int32_t(next() % 2401) - 1200 : int32_t(static_cast<int8_t>(next()));
        std::vector<unsigned char> c = {static_cast<unsigned char>(first)};
        if (twoOctets)
            c.push_back(static_cast<unsigned char>(e >> 8));
        c.push_back(static_cast<unsigned char>(e));
        uint64_t m = next();
        if (next() % 2)
            m &= ~0ull << (next() % 64);
        for (size_t k = 1 + next() % 8; k > 0; --k)
            c.push_back(static_cast<unsigned char>(m >> (8 * (k - 1))));
        std::string wire = zt::Bytes("09") + char(c.size()) + std::string(c.begin(), c.end());
        AsnReal v;
        ASSERT_EQ(Zol::AsnBuffer::Decode(wire.data(), wire.size(), v), 1) << zt::Hex(wire);
        double want = LongWay(c);
        ASSERT_EQ(std::memcmp(&v.value, &want, sizeof want), 0) << zt::Hex(wire) << " " << v.value << " " << want;
    }
}

}  // namespace

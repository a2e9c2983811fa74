// The encoders write a whole element after one test of the room and fall
// back to byte-by-byte writing near the floor of the block; REAL has a
// decoder for its common forms beside the general one. Each pair must
// agree byte for byte and value for value.
#include "support.h"

#include <cmath>
#include <cstring>
#include <vector>

namespace {

using zt::Bytes;

// A value whose encoding has every kind of element the fast paths write:
// integers of one to four octets and negative ones, booleans, reals with
// short and full mantissas, texts of every copy width, long lengths.
Zol::ZolOrderbookByPriceRep Book() {
    Zol::ZolOrderbookByPriceRep rep;
    rep.seqNum = -40000;
    rep.secBoardId = new Zol::ZolSecBoardId;
    rep.secBoardId->secCode = "VOD.L";
    rep.secBoardId->boardId = "A-BOARD-NAME-OF-20-B";
    const int ints[] = {0, -1, 127, 128, -129, 65535, -8388608, 2147483647};
    for (int i = 0; i < 24; ++i) {
        Zol::ZolPricePoint* p = (i % 2 ? rep.offerList : rep.bidList).Append();
        p->price = new Zol::ZolPrice;
        p->price->value = i % 3 ? 101.37 + i : 0.5 * i;
        p->price->decimals = new AsnInt(2);
        p->userDepth = ints[i % 8];
        p->userHasBest = i % 2 == 0;
        p->depth = new Zol::ZolQuantity(ints[(i + 3) % 8]);
    }
    rep.numOtherOpenOrders = 2147483647;
    return rep;
}

TEST(FastPath, EveryBlockSizeGivesTheSameBytesOrFails) {
    Zol::ZolOrderbookByPriceRep rep = Book();
    std::vector<char> roomy(4096);
    size_t full = 0;
    const char* p = Zol::AsnBuffer::Encode(roomy.data(), roomy.size(), rep, full);
    ASSERT_NE(p, nullptr);
    std::string expected(p, full);
    ASSERT_GT(full, 256u);  // a long-form length at the top
    for (size_t size = 0; size <= full + 20; ++size) {
        std::vector<char> block(size + 1);
        size_t len = 0;
        const char* q = Zol::AsnBuffer::Encode(block.data(), size, rep, len);
        EXPECT_EQ(len, full) << size;
        if (size < full) {
            EXPECT_EQ(q, nullptr) << size;
        } else {
            ASSERT_NE(q, nullptr) << size;
            EXPECT_EQ(std::string(q, len), expected) << size;
        }
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

TEST(FastPath, RealDecodingAgreesWithTheLongWay) {
    uint64_t seed = 0x243F6A8885A308D3ull;
    auto next = [&] {
        seed ^= seed << 13;
        seed ^= seed >> 7;
        seed ^= seed << 17;
        return seed;
    };
    for (int i = 0; i < 100000; ++i) {
        // Bases 2, 8 and 16, every scale and sign, one or two exponent
        // octets (two reaching from the subnormal range to past the
        // largest double), one to eight mantissa octets, with and without
        // trailing zeros.
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
        std::string wire = Bytes("09") + char(c.size()) + std::string(c.begin(), c.end());
        AsnReal v;
        ASSERT_EQ(Zol::AsnBuffer::Decode(wire.data(), wire.size(), v), 1) << zt::Hex(wire);
        double want = LongWay(c);
        ASSERT_EQ(std::memcmp(&v.value, &want, sizeof want), 0) << zt::Hex(wire) << " " << v.value << " " << want;
    }
}

}  // namespace

// Hostile input: what a sender controls (nesting, claimed lengths, element
// counts) costs the decoder bounded stack, no allocation beyond the bytes
// received, and time linear in their number. And every input the fuzzers
// ever found a fault with still decodes cleanly.
#include <dirent.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <vector>

#include "support.h"

// Every allocation of the test binary goes through these; while `armed`,
// they are counted and the largest one kept. The library's values and the
// bytes of its strings come from its own blocks, which AsnType counts;
// WatchedDecode adds them to the count. They
// pair malloc with free, which GCC cannot tell once they are inlined.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif
namespace {
struct AllocWatch {
    bool armed = false;
    size_t count = 0;
    size_t largest = 0;
} watch;

void* Allocate(std::size_t n) {
    if (watch.armed) {
        ++watch.count;
        watch.largest = std::max(watch.largest, n);
    }
    return std::malloc(n ? n : 1);
}
}  // namespace

void* operator new(std::size_t n) {
    if (void* p = Allocate(n))
        return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t n) { return operator new(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return Allocate(n); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return Allocate(n); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }

namespace {

using Make = std::function<AsnType*()>;
template <class T>
Make Of() {
    return [] { return new T; };
}

// A decode through the front door with the allocations of the decode
// alone counted (capturing standard error allocates too).
zt::Outcome WatchedDecode(const std::string& bytes, AsnType& v) {
    testing::internal::CaptureStderr();
    watch = AllocWatch();
    const uint64_t blocks = AsnType::Allocations();
    watch.armed = true;
    int r = Zol::AsnBuffer::Decode(bytes.data(), bytes.size(), v);
    watch.armed = false;
    watch.count += AsnType::Allocations() - blocks;
    std::fflush(stderr);
    return {r, testing::internal::GetCapturedStderr()};
}

// A BER definite length in its shortest form.
std::string Len(size_t n) {
    if (n < 0x80)
        return std::string(1, char(n));
    std::string out;
    for (; n; n >>= 8)
        out.insert(out.begin(), char(n & 0xFF));
    return char(0x80 | out.size()) + out;
}

// `inner` wrapped `depth` times in the constructed tag `tag`, with definite
// lengths, built from the inside out in time linear in the result.
std::string NestDefinite(unsigned char tag, unsigned depth, const std::string& inner) {
    std::vector<std::string> heads;
    size_t size = inner.size();
    for (unsigned i = 0; i < depth; ++i) {
        heads.push_back(char(tag) + Len(size));
        size += heads.back().size();
    }
    std::string out;
    out.reserve(size);
    for (auto h = heads.rbegin(); h != heads.rend(); ++h)
        out += *h;
    return out + inner;
}

// The same with indefinite lengths: `head` (tag and 80) `depth` times,
// `inner`, and as many end-of-contents.
std::string NestIndefinite(const std::string& head, unsigned depth, const std::string& inner) {
    std::string out;
    for (unsigned i = 0; i < depth; ++i)
        out += head;
    out += inner;
    return out + std::string(2 * size_t(depth), '\0');
}

const char* const OctsTooDeep = "BDecConsOctetString: ERROR - constructed OCTET STRING nested too deep\n";
const char* const BitsTooDeep = "BDecConsBitString: ERROR - constructed BIT STRING nested too deep\n";
const char* const MissingElement = "ERROR - SEQUENCE is missing non-optional elmt.\n";

// --- Stack: nesting past AsnMaxNesting is refused before recursing ---------

struct NestCase {
    const char* what;
    Make make;
    const char* door;     // name in the front door's line
    std::string bytes;
    int code;             // 0: decodes
    const char* line;     // the decoder's line on failure
};

TEST(Hostile, NestingIsBounded) {
    const unsigned deep = 100000;
    const std::string piece = zt::Bytes("04 01 41"), bitPiece = zt::Bytes("03 02 00 C0");
    const NestCase cases[] = {
        {"octets, 64 levels definite", Of<AsnOcts>(), "OCTET STRING",
         NestDefinite(0x24, AsnMaxNesting, piece), 0, ""},
        {"octets, 65 levels definite", Of<AsnOcts>(), "OCTET STRING",
         NestDefinite(0x24, AsnMaxNesting + 1, piece), -16, OctsTooDeep},
        {"octets, 64 levels indefinite", Of<AsnOcts>(), "OCTET STRING",
         NestIndefinite(zt::Bytes("24 80"), AsnMaxNesting, piece), 0, ""},
        {"octets, 65 levels indefinite", Of<AsnOcts>(), "OCTET STRING",
         NestIndefinite(zt::Bytes("24 80"), AsnMaxNesting + 1, piece), -16, OctsTooDeep},
        {"octets, 100000 levels definite", Of<AsnOcts>(), "OCTET STRING",
         NestDefinite(0x24, deep, piece), -16, OctsTooDeep},
        {"octets, 100000 levels indefinite", Of<AsnOcts>(), "OCTET STRING",
         NestIndefinite(zt::Bytes("24 80"), deep, piece), -16, OctsTooDeep},
        {"string class, 100000 levels indefinite", Of<PrintableString>(), "OCTET STRING",
         zt::Bytes("33 80") + NestIndefinite(zt::Bytes("24 80"), deep, piece) + zt::Bytes("00 00"), -16,
         OctsTooDeep},
        {"bits, 64 levels definite", Of<AsnBits>(), "BIT STRING",
         NestDefinite(0x23, AsnMaxNesting, bitPiece), 0, ""},
        {"bits, 65 levels definite", Of<AsnBits>(), "BIT STRING",
         NestDefinite(0x23, AsnMaxNesting + 1, bitPiece), -4, BitsTooDeep},
        {"bits, 100000 levels definite", Of<AsnBits>(), "BIT STRING",
         NestDefinite(0x23, deep, bitPiece), -4, BitsTooDeep},
        {"bits, 100000 levels indefinite", Of<AsnBits>(), "BIT STRING",
         NestIndefinite(zt::Bytes("23 80"), deep, bitPiece), -4, BitsTooDeep},
        // Inside a message: the user id of a transaction request.
        {"user id, 100000 levels indefinite", Of<Zol::ZolTransReq>(), "ZolTransReq",
         zt::Bytes("30 80") + NestIndefinite(zt::Bytes("24 80"), deep, piece), -16, OctsTooDeep},
        // Constructed elements of a message nest only as deep as its
        // schema; deeper hostile nesting is refused at the first
        // element of the wrong kind.
        {"request in requests, 100000 levels", Of<Zol::ZolTransReq>(), "ZolTransReq",
         NestIndefinite(zt::Bytes("30 80"), deep, ""), -107, MissingElement},
        {"reply in replies, 100000 levels", Of<Zol::ZolQueryRep>(), "ZolQueryRep",
         NestIndefinite(zt::Bytes("BF 82 1D 80"), deep, ""), -125, MissingElement},
    };
    for (const NestCase& c : cases) {
        std::unique_ptr<AsnType> v(c.make());
        zt::Outcome o = zt::Decode(c.bytes, *v);
        if (c.code == 0) {
            EXPECT_EQ(o.result, 1) << c.what << ": " << o.err;
            EXPECT_EQ(o.err, "") << c.what;
        } else {
            EXPECT_EQ(o.result, 0) << c.what;
            EXPECT_EQ(o.err, c.line + zt::DoorLine(c.door, c.code)) << c.what;
        }
    }
}

// Within the bound the pieces come out in order, whatever the nesting.
TEST(Hostile, NestedPiecesJoinInOrder) {
    AsnOcts o;
    std::string bytes = zt::Bytes("24 80 04 01 61") + NestDefinite(0x24, AsnMaxNesting - 1, zt::Bytes("04 02 62 63")) +
                        zt::Bytes("04 01 64 00 00");
    ASSERT_EQ(zt::Decode(bytes, o).result, 1);
    EXPECT_EQ(std::string(o.octs, o.octetLen), "abcd");
    AsnBits b;
    bytes = NestDefinite(0x23, AsnMaxNesting - 1, zt::Bytes("23 08 03 02 00 F0 03 02 04 A0"));
    ASSERT_EQ(zt::Decode(bytes, b).result, 1);
    EXPECT_EQ(zt::Encoded(b), "03 03 04 F0 A0");
}

// --- Memory: a claimed length allocates nothing the input does not hold ----

struct ClaimCase {
    const char* what;
    Make make;
    const char* bytes;
    const char* err;      // the whole of standard error
    size_t largest;       // the largest allocation the decode may make
};

TEST(Hostile, ClaimedLengthsAllocateNothingUnheld) {
    // Lengths of 4 GB less one, and one of 2 GB, followed by a few bytes.
    const ClaimCase cases[] = {
        {"primitive octets", Of<AsnOcts>(), "04 84 FF FF FF FE 41 42 43",
         "BDecOctetString: ERROR - decoded past end of data\nDecode for OCTET STRING failed with code:(-14)\n\n", 0},
        {"primitive string class", Of<PrintableString>(), "13 84 80 00 00 00 41",
         "BDecOctetString: ERROR - decoded past end of data\nDecode for OCTET STRING failed with code:(-14)\n\n", 0},
        {"piece of a constructed string", Of<AsnOcts>(), "24 80 04 84 FF FF FF FE 41",
         "BDecConsOctetString: ERROR - attempt to decode past end of data\n"
         "Decode for OCTET STRING failed with code:(-15)\n\n", 0},
        {"constructed string", Of<AsnOcts>(), "24 84 FF FF FF FE 04 01 41",
         "BDecTag: ERROR - decoded past the end of data\nDecode for OCTET STRING failed with code:(-22)\n\n", 0},
        {"primitive bits", Of<AsnBits>(), "03 84 FF FF FF FE 00 FF",
         "BDecBitString: ERROR - decoded past end of data\nDecode for BIT STRING failed with code:(-1)\n\n", 0},
        {"piece of constructed bits", Of<AsnBits>(), "23 80 03 84 FF FF FF FE 00 FF",
         "BDecConsOctetString: ERROR - expecting more data\nDecode for BIT STRING failed with code:(-3)\n\n", 0},
        {"real", Of<AsnReal>(), "09 84 FF FF FF FE 80 00 01", "", 0},
        {"object identifier", Of<AsnOid>(), "06 84 FF FF FF FE 2A 86 48",
         "BDecOctetString: ERROR - decoded past end of data\nDecode for OBJECT IDENTIFIER failed with code:(-17)\n\n",
         0},
        {"user id of a request", Of<Zol::ZolTransReq>(), "30 84 FF FF FF FE 04 84 FF FF FF FE 55 31",
         "BDecOctetString: ERROR - decoded past end of data\nDecode for ZolTransReq failed with code:(-14)\n\n",
         0},
        // A list takes one element object per element present.
        {"price points of a book", Of<Zol::ZolQueryRep>(),
         "BF 82 20 84 FF FF FF FE 02 01 01 30 06 04 01 41 04 01 42 31 84 FF FF FF FE "
         "30 0A 30 02 09 00 02 01 00 01 01 00 30",
         "BDecLen: decoded past end of data\nDecode for ZolQueryRep failed with code:(-9)\n\n", 256},
    };
    for (const ClaimCase& c : cases) {
        std::unique_ptr<AsnType> v(c.make());
        zt::Outcome o = WatchedDecode(zt::Bytes(c.bytes), *v);
        EXPECT_EQ(o.result, 0) << c.what;
        EXPECT_EQ(o.err, c.err) << c.what;
        EXPECT_LE(watch.largest, c.largest) << c.what;
        if (c.largest == 0) {
            EXPECT_EQ(watch.count, 0u) << c.what;
        }
    }
}

// The watch sees the library's allocations: a string that is held takes
// one block, gathered pieces one block in all.
TEST(Hostile, AllocationWatchSeesTheLibrary) {
    AsnOcts held;
    EXPECT_EQ(WatchedDecode(zt::Bytes("04 03 41 42 43"), held).result, 1);
    EXPECT_EQ(watch.count, 1u);
    AsnOcts gathered;
    EXPECT_EQ(WatchedDecode(zt::Bytes("24 80 04 02 41 42 04 03 43 44 45 00 00"), gathered).result, 1);
    EXPECT_EQ(watch.count, 1u);
}

// --- Time: decoding is linear in the number of elements ---------------------

// The processor time of this thread, in seconds: a busy machine that
// preempts the test does not count against the decoder.
double ThreadSeconds() {
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

// The best of a few runs, in seconds.
double Seconds(const std::string& bytes, const Make& make, int runs) {
    double best = 1e9;
    for (int i = 0; i < runs; ++i) {
        std::unique_ptr<AsnType> v(make());
        double start = ThreadSeconds();
        int r = Zol::AsnBuffer::Decode(bytes.data(), bytes.size(), *v);
        best = std::min(best, ThreadSeconds() - start);
        EXPECT_EQ(r, 1);
    }
    return best;
}

// Ten times the elements may take ten times as long, and a few times that
// once they outgrow the caches or a run is preempted; a quadratic cost
// takes a hundred times. Each size is timed at its best of a few runs.
void ExpectLinear(const char* what, const std::function<std::string(size_t)>& build, const Make& make,
                  int runs) {
    std::string small = build(100000), large = build(1000000);
    double ratio = Seconds(large, make, runs) / Seconds(small, make, runs + 1);
    EXPECT_LT(ratio, 50.0) << what << ": 10^6 elements took " << ratio << " times as long as 10^5";
}

TEST(Hostile, DecodingIsLinear) {
    // The list with the lightest elements: two integers each.
    ExpectLinear(
        "list elements",
        [](size_t n) {
            std::string elmt = zt::Bytes("30 06 02 01 07 02 01 2A"), content;
            content.reserve(n * elmt.size());
            for (size_t i = 0; i < n; ++i)
                content += elmt;
            return zt::Bytes("31") + Len(content.size()) + content;
        },
        Of<Zol::ZolUserUpdateActivityStatusSetOf>(), 2);
    ExpectLinear(
        "constructed string pieces",
        [](size_t n) {
            std::string content = zt::Bytes("24 80");
            content.reserve(3 * n + 4);
            for (size_t i = 0; i < n; ++i)
                content += zt::Bytes("04 01 5A");
            return content + std::string(2, '\0');
        },
        Of<AsnOcts>(), 3);
}

// --- Every input a fuzzer ever found a fault with ---------------------------

// Each file of fuzz/repro decodes as each envelope and each class under
// fuzzing to a clean 0 or 1; what decodes encodes to bytes that decode and
// encode to the same bytes again.
TEST(Hostile, FuzzReproducersDecodeCleanly) {
    const std::pair<const char*, Make> types[] = {
        {"ZolTransReq", Of<Zol::ZolTransReq>()},   {"ZolTransRep", Of<Zol::ZolTransRep>()},
        {"ZolQueryReq", Of<Zol::ZolQueryReq>()},   {"ZolQueryRep", Of<Zol::ZolQueryRep>()},
        {"ZolOrderEntry", Of<Zol::ZolOrderEntry>()}, {"AsnOcts", Of<AsnOcts>()},
        {"PrintableString", Of<PrintableString>()}, {"AsnBits", Of<AsnBits>()},
        {"AsnReal", Of<AsnReal>()},                 {"AsnOid", Of<AsnOid>()},
    };
    std::vector<std::string> files;
    if (DIR* d = opendir(ZOL_REPRO)) {
        while (dirent* e = readdir(d))
            if (e->d_name[0] != '.')
                files.push_back(std::string(ZOL_REPRO "/") + e->d_name);
        closedir(d);
    }
    ASSERT_FALSE(files.empty()) << ZOL_REPRO;
    for (const std::string& file : files) {
        std::ifstream in(file, std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        for (const auto& t : types) {
            std::unique_ptr<AsnType> v(t.second());
            zt::Outcome o = zt::Decode(bytes, *v);
            ASSERT_TRUE(o.result == 0 || o.result == 1) << file << " as " << t.first;
            if (o.result == 0)
                continue;
            std::string first = zt::Encoded(*v);
            std::unique_ptr<AsnType> again(t.second());
            ASSERT_EQ(zt::Decode(zt::Bytes(first.c_str()), *again).result, 1) << file << " as " << t.first;
            EXPECT_EQ(zt::Encoded(*again), first) << file << " as " << t.first;
        }
    }
}

}  // namespace

// Hostile input, beyond the rows of hostile.txt (nesting, claimed
// lengths): element counts cost allocations linear in their number, and
// every input the fuzzers ever found a fault with still decodes cleanly.

#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "alloc_count.h"
#include "rows.h"
#include "support.h"

namespace {

using zt::Bytes;

// The allocations of a decode through the front door (capturing standard
// error allocates too).
zalloc::AllocDelta CountedDecode(const std::string& bytes, AsnType& v) {
    testing::internal::CaptureStderr();
    zalloc::AllocDelta d = zalloc::CountAllocs([&] { Zol::AsnBuffer::Decode(bytes.data(), bytes.size(), v); });
    testing::internal::GetCapturedStderr();
    return d;
}

// What decoding n elements allocates, at n = 10^5 and 10^6: a fixed count
// and size per element for a list; for the pieces of a string, the stack
// of pieces, which grows by doubling (at most four entries per piece over
// all its growth), and the string itself. A decoder that copied its
// elements or its pieces again as they came would allocate quadratically
// many bytes.
TEST(Hostile, AllocationsAreLinearInTheElements) {
    auto list = [](size_t n) {
        std::string elmt = Bytes("30 06 02 01 07 02 01 2A"), content;
        content.reserve(n * elmt.size());
        for (size_t i = 0; i < n; ++i)
            content += elmt;
        size_t len = content.size();
        return Bytes("31 84") + char(len >> 24) + char(len >> 16) + char(len >> 8) + char(len) + content;
    };
    auto decodeList = [&](size_t n) {
        Zol::ZolUserUpdateActivityStatusSetOf v;
        zalloc::AllocDelta d = CountedDecode(list(n), v);
        EXPECT_EQ(v.count, n);
        return d;
    };
    const zalloc::AllocDelta one = decodeList(1), two = decodeList(2);
    EXPECT_GT(two.zol(), one.zol());
    for (size_t n : {100000, 1000000}) {
        zalloc::AllocDelta d = decodeList(n);
        EXPECT_EQ(d.zol(), one.zol() + (n - 1) * (two.zol() - one.zol())) << n;
        EXPECT_EQ(d.bytes, one.bytes + (n - 1) * (two.bytes - one.bytes)) << n;

        std::string pieces = Bytes("24 80");
        pieces.reserve(3 * n + 4);
        for (size_t i = 0; i < n; ++i)
            pieces += Bytes("04 01 5A");
        AsnOcts v;
        d = CountedDecode(pieces + Bytes("00 00"), v);
        EXPECT_EQ(v.octetLen, n);
        EXPECT_LE(d.news, 40u) << n;
        EXPECT_LE(d.bytes, (4 * sizeof(StrStk::Elmt) + 1) * n) << n;
    }
}

// Each file of fuzz/repro decodes as each envelope and each class under
// fuzzing to a clean 0 or 1; what decodes encodes to bytes that decode and
// encode to the same bytes again.
TEST(Hostile, FuzzReproducersDecodeCleanly) {
    const char* const types[] = {"ZolTransReq", "ZolTransRep", "ZolQueryReq",     "ZolQueryRep", "ZolOrderEntry",
                                 "AsnOcts",     "AsnBits",     "PrintableString", "AsnReal",     "AsnOid"};
    std::vector<std::string> files = zt::FilesIn(ZOL_REPRO);
    ASSERT_FALSE(files.empty()) << ZOL_REPRO;
    for (const std::string& file : files) {
        std::string bytes = zt::FileBytes(ZOL_REPRO "/" + file);
        for (const char* type : types) {
            std::unique_ptr<AsnType> v = zt::Make(type);
            zt::Outcome o = zt::Decode(bytes, *v);
            ASSERT_TRUE(o.result == 0 || o.result == 1) << file;
            if (o.result == 0)
                continue;
            std::string first = zt::Encoded(*v);
            std::unique_ptr<AsnType> again = zt::Make(type);
            ASSERT_EQ(zt::Decode(Bytes(first.c_str()), *again).result, 1) << file;
            EXPECT_EQ(zt::Encoded(*again), first) << file;
        }
    }
}

}  // namespace

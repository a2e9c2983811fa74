// Every prefix and many single-octet changes of valid encodings of every
// alternative of the four envelopes, and of the test patterns, decode to a
// clean 0 or 1: no crash and no read outside the bytes given; a prefix
// never decodes; what decodes encodes, prints and clones. The sanitizer
// build adds that nothing a failed decode had allocated and attached is
// lost, since the value's destructor must reach all of it.
#include <algorithm>
#include <memory>
#include <vector>

#include "support.h"
#include "tests/patterns.h"
#include "walk.h"

namespace {

using namespace Zol;

// Decodes `n` octets from a heap block of exactly that size, so that a read
// past them is a sanitizer error; a value that decoded is encoded, printed
// and cloned too.
int DecodeExact(const AsnTypeDesc* d, const char* bytes, size_t n) {
    std::unique_ptr<char[]> block(new char[n ? n : 1]);
    std::copy(bytes, bytes + n, block.get());
    std::unique_ptr<AsnType> v(d->create());
    int r = AsnBuffer::Decode(block.get(), n, *v);
    if (r == 1) {
        if (zt::Encoded(*v) == "<overflow>")
            return 2;
        zt::Printed(*v);
        delete v->Clone();
    }
    return r;
}

struct Sample {
    const AsnTypeDesc* desc;
    std::string bytes;
};

// A value of `d` filled through its descriptors; the choice `top` takes
// its alternative `alt`, every other one its first.
Sample Filled(const AsnTypeDesc* d, const AsnChoiceTypeDesc* top, int alt, int seed = 1) {
    std::unique_ptr<AsnType> v(d->create());
    zt::Filler f;
    f.seed = seed;
    f.pick = [&](const AsnChoiceTypeDesc* c) { return c == top ? alt : 0; };
    f.Fill(v.get(), d);
    return {d, zt::Bytes(zt::Encoded(*v).c_str())};
}

TEST(Damage, EveryTruncationAndSingleOctetChangeDecodesCleanly) {
    std::vector<Sample> samples = {Filled(&ZolSecBoardRep::_desc, nullptr, 0), Filled(&PatAll::_desc, nullptr, 0),
                                   Filled(&PatHolder::_desc, nullptr, 0, 2)};
    for (int alt : {2, 4}) {
        samples.push_back(Filled(&PatHolder::_desc, &PatChoice::_desc, alt));
        samples.push_back(Filled(&PatChoice::_desc, &PatChoice::_desc, alt));
    }
    const std::pair<const AsnTypeDesc*, const AsnChoiceTypeDesc*> envelopes[] = {
        {&ZolTransReq::_desc, &ZolTransReqChoice::_desc},
        {&ZolQueryReq::_desc, &ZolQueryReqChoice::_desc},
        {&ZolTransRep::_desc, &ZolTransRep::_desc},
        {&ZolQueryRep::_desc, &ZolQueryRep::_desc},
    };
    for (const auto& e : envelopes)
        for (int i = 0; e.second->members[i].name; ++i)
            samples.push_back(Filled(e.first, e.second, i));

    int decoded = 0, failed = 0;
    for (const Sample& s : samples) {
        SCOPED_TRACE(zt::Hex(s.bytes.substr(0, 8)));
        ASSERT_EQ(DecodeExact(s.desc, s.bytes.data(), s.bytes.size()), 1);
        int other = 0;
        {
            testing::internal::CaptureStderr();  // thousands of failure lines
            for (size_t n = 0; n < s.bytes.size(); ++n)
                other += DecodeExact(s.desc, s.bytes.data(), n) != 0;
            std::string bad = s.bytes;
            for (size_t i = 0; i < bad.size(); ++i) {
                unsigned char was = static_cast<unsigned char>(bad[i]);
                for (unsigned char to : {was ^ 0xFF, was ^ 0x20, was ^ 0x80, was + 1, was - 1, 0x00, 0x80, 0x1F, 0xFF}) {
                    if (to == was)
                        continue;
                    bad[i] = static_cast<char>(to);
                    int r = DecodeExact(s.desc, bad.data(), bad.size());
                    (r == 1 ? decoded : r == 0 ? failed : other)++;
                }
                bad[i] = static_cast<char>(was);
            }
            testing::internal::GetCapturedStderr();
        }
        EXPECT_EQ(other, 0) << "a prefix decoded, or a result other than 0 and 1";
        EXPECT_EQ(indentLevel, 0);
    }
    EXPECT_GT(decoded, 0);
    EXPECT_GT(failed, 0);
}

}  // namespace

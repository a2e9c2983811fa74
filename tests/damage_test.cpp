// Every prefix and every single-octet change of large valid encodings must
// decode to a clean 0 or 1: no crash and no read outside the bytes given.
// The sanitizer build adds that nothing a failed decode had allocated and
// attached is lost, since the value's destructor must reach all of it.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "support.h"
#include "tests/patterns.h"
#include "walk.h"

namespace {

using namespace Zol;

std::string Encode(const AsnType& v) {
    static char block[1 << 16];
    size_t len = 0;
    char* p = AsnBuffer::Encode(block, sizeof block, v, len);
    return p ? std::string(p, len) : std::string();
}

// A value of `d` filled through its descriptors; a choice takes the
// alternative `alt` at the top and its first one below.
std::string Filled(const AsnTypeDesc* d, int alt = 0, int seed = 1) {
    std::unique_ptr<AsnType> v(d->create());
    zt::Filler f;
    f.seed = seed;
    f.pick = [alt](const AsnChoiceTypeDesc* c) {
        return c == &ZolTransReqChoice::_desc || c == &PatChoice::_desc ? alt : 0;
    };
    f.Fill(v.get(), d);
    return Encode(*v);
}

// Standard error goes nowhere while thousands of decodes fail.
class Quiet {
public:
    Quiet() : saved_(dup(2)) {
        std::fflush(stderr);
        int null = open("/dev/null", O_WRONLY);
        dup2(null, 2);
        close(null);
    }
    ~Quiet() {
        std::fflush(stderr);
        dup2(saved_, 2);
        close(saved_);
    }

private:
    int saved_;
};

struct Tally {
    int ok = 0, failed = 0, other = 0;
};

// Decodes `n` octets from a heap block of exactly that size, so that a read
// past them is a sanitizer error; a value that decoded is encoded, printed
// and cloned too.
int DecodeExact(const AsnTypeDesc* d, const char* bytes, size_t n) {
    std::unique_ptr<char[]> block(new char[n ? n : 1]);
    std::copy(bytes, bytes + n, block.get());
    std::unique_ptr<AsnType> v(d->create());
    int r = AsnBuffer::Decode(block.get(), n, *v);
    if (r == 1) {
        Encode(*v);
        zt::Printed(*v);
        delete v->Clone();
    }
    return r;
}

TEST(Damage, EveryTruncationAndSingleOctetChangeDecodesCleanly) {
    struct Sample {
        const AsnTypeDesc* desc;
        std::string bytes;
    };
    std::vector<Sample> samples = {
        {&ZolSecBoardRep::_desc, Filled(&ZolSecBoardRep::_desc)},
        {&PatAll::_desc, Filled(&PatAll::_desc)},
        {&PatHolder::_desc, Filled(&PatHolder::_desc, 0, 2)},
    };
    for (int alt : {2, 4}) {
        samples.push_back({&PatHolder::_desc, Filled(&PatHolder::_desc, alt)});
        samples.push_back({&PatChoice::_desc, Filled(&PatChoice::_desc, alt)});
    }
    // The three largest transactions.
    std::vector<std::pair<size_t, int>> sizes;
    for (int i = 0; ZolTransReqChoice::_mdescs[i].name; ++i)
        sizes.push_back({Filled(&ZolTransReq::_desc, i).size(), i});
    std::sort(sizes.rbegin(), sizes.rend());
    for (int k = 0; k < 3; ++k)
        samples.push_back({&ZolTransReq::_desc, Filled(&ZolTransReq::_desc, sizes[k].second)});

    for (const Sample& s : samples) {
        const char* name = s.desc->name;
        ASSERT_GT(s.bytes.size(), 2u) << name;
        ASSERT_EQ(DecodeExact(s.desc, s.bytes.data(), s.bytes.size()), 1) << name;
        Tally t;
        {
            Quiet quiet;
            for (size_t n = 0; n < s.bytes.size(); ++n)
                if (DecodeExact(s.desc, s.bytes.data(), n) != 0)
                    ++t.other;
            std::string bad = s.bytes;
            for (size_t i = 0; i < bad.size(); ++i) {
                unsigned char was = static_cast<unsigned char>(bad[i]);
                for (unsigned char to : {was ^ 0xFF, was ^ 0x20, was ^ 0x80, was + 1, was - 1, 0x00, 0x80, 0x1F, 0xFF}) {
                    if (to == was)
                        continue;
                    bad[i] = static_cast<char>(to);
                    int r = DecodeExact(s.desc, bad.data(), bad.size());
                    (r == 1 ? t.ok : r == 0 ? t.failed : t.other)++;
                }
                bad[i] = static_cast<char>(was);
            }
        }
        EXPECT_EQ(t.other, 0) << name << ": a prefix decoded, or a result other than 0 and 1";
        EXPECT_GT(t.failed, 0) << name;
        EXPECT_EQ(indentLevel, 0);
    }
}

}  // namespace

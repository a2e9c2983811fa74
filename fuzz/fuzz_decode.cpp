// One libFuzzer target per class: ZOL_FUZZ_TYPE names the class whose
// decoder is fed the fuzzer's bytes. A value that decodes must survive the
// whole life of a received message unchanged: encoding, decoding again,
// Clone, assignment and merge. Any difference aborts, and so the fuzzer
// keeps the input as a finding.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <zol/zol.h>

#ifndef ZOL_FUZZ_TYPE
#error "ZOL_FUZZ_TYPE names the class under test"
#endif

namespace {

typedef ZOL_FUZZ_TYPE T;

// Decoders write a line for every refused input. The fuzz scripts close
// standard error (-close_fd_mask=2) to keep the logs small, so findings of
// this file go to a copy of it taken before that.
int reportFd = 2;

[[noreturn]] void Finding(const char* what, const std::string& a, const std::string& b) {
    std::string text = std::string("zol fuzz finding: ") + what + "\n--- first\n" + a +
                       "\n--- second\n" + b + "\n";
    if (write(reportFd, text.data(), text.size()) < 0) {
    }
    std::abort();
}

// The printed text, with negative zero folded into zero: the protocol
// writes -0.0 as the empty REAL, which reads back as 0.0, so a decoded -0.0
// legitimately prints differently after one round trip. A REAL prints as a
// bare number, so only "-0" standing alone between separators is folded.
std::string Printed(const AsnType& v) {
    std::ostringstream os;
    os << v;
    std::string s = os.str(), out;
    out.reserve(s.size());
    for (size_t i = 0; i < s.size(); ++i) {
        bool alone = s[i] == '-' && i + 1 < s.size() && s[i + 1] == '0' && (i == 0 || s[i - 1] == ' ') &&
                     (i + 2 == s.size() || std::strchr(",\n }", s[i + 2]));
        if (!alone)
            out += s[i];
    }
    return out;
}

void Same(const char* what, const std::string& printed, const AsnType& v) {
    if (Printed(v) != printed)
        Finding(what, printed, Printed(v));
}

std::string Hex(const std::string& bytes) {
    std::string out;
    for (unsigned char c : bytes)
        out += "0123456789ABCDEF"[c >> 4] + std::string(1, "0123456789ABCDEF"[c & 15]) + ' ';
    return out;
}

// The encoding of `v` in a block of exactly `size` bytes on the heap, so
// that a write below the block is caught; empty if it did not fit.
bool EncodeIn(const AsnType& v, size_t size, std::string& out) {
    std::vector<char> block(size ? size : 1);
    size_t len = 0;
    char* p = Zol::AsnBuffer::Encode(block.data(), size, v, len);
    if (!p)
        return false;
    out.assign(p, len);
    return true;
}

// `v` encodes into a block of exactly the size of `enc` to `enc` itself.
void SameBytes(const char* what, const AsnType& v, const std::string& enc) {
    std::string out;
    if (!EncodeIn(v, enc.size(), out) || out != enc)
        Finding(what, Hex(enc), Hex(out));
}

template <class U, class = void>
struct HasMerge : std::false_type {};
template <class U>
struct HasMerge<U, decltype(void(std::declval<U&>() |= std::declval<const U&>()))> : std::true_type {};

// Merge of a value into a copy of itself gives the value itself; merged
// into a new value, it gives the same encoding. (Not the same print: a new
// choice stands on its first alternative with no object, and merging an
// empty-sequence alternative such as `null` into it leaves it so, which
// prints as "-- void3 --" but encodes the same.) The universal classes
// have no merge.
template <class U>
void CheckMerge([[maybe_unused]] const U& v, [[maybe_unused]] const U& copy,
                [[maybe_unused]] const std::string& printed, [[maybe_unused]] const std::string& enc) {
    if constexpr (HasMerge<U>::value) {
        U merged(copy);
        merged |= v;
        Same("merge into a copy changed the value", printed, merged);
        U fresh;
        fresh |= v;
        SameBytes("merge into a new value encodes differently", fresh, enc);
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    int fd = dup(2);
    if (fd >= 0)
        reportFd = fd;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The decoder reads through a copy of exactly the input's size.
    std::vector<char> in(data, data + size);
    T v;
    if (!Zol::AsnBuffer::Decode(in.data(), in.size(), v))
        return 0;
    std::string printed = Printed(v);

    // Encoding: a REAL may grow from its shortest forms to at most ten
    // octets, so eight times the input is room enough.
    std::string enc;
    if (!EncodeIn(v, 8 * size + 64, enc))
        Finding("a decoded value does not encode", printed, "");
    SameBytes("encoding into a block of its own size differs", v, enc);
    std::string tooSmall;
    if (!enc.empty() && EncodeIn(v, enc.size() - 1, tooSmall))
        Finding("encoding fits into a block one byte short", Hex(enc), Hex(tooSmall));

    // Decoding the encoding gives the same value, whose encoding is the
    // same again.
    T again;
    if (!Zol::AsnBuffer::Decode(enc.data(), enc.size(), again))
        Finding("the encoding of a decoded value does not decode", printed, Hex(enc));
    Same("decode, encode, decode changed the value", printed, again);
    SameBytes("the encoding is not stable", again, enc);

    // Clone, then assignment from the clone, over an empty value and over
    // one that holds the value already.
    std::unique_ptr<AsnType> clone(v.Clone());
    if (!clone)
        Finding("Clone gave nothing", printed, "");
    Same("Clone differs", printed, *clone);
    const T& cloned = static_cast<const T&>(*clone);
    T assigned;
    assigned = cloned;
    Same("assignment differs", printed, assigned);
    again = cloned;
    Same("assignment over a value differs", printed, again);

    CheckMerge(v, assigned, printed, enc);
    return 0;
}

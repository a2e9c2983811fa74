// Helpers shared by the tests: files and folders read, hex text both ways,
// encoding through the front door, and decoding with standard error
// captured.
#pragma once

#include <gtest/gtest.h>

#include <dirent.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <zol/zol.h>

namespace zt {

// The bytes of a file; empty when it cannot be read.
inline std::string FileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The names in the folder `dir` that end in `suffix`, sorted; names that
// begin with a dot are left out.
inline std::vector<std::string> FilesIn(const std::string& dir, const std::string& suffix = "") {
    std::vector<std::string> out;
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            std::string name = e->d_name;
            if (name[0] != '.' && name.size() >= suffix.size() &&
                name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
                out.push_back(name);
        }
        closedir(d);
    }
    std::sort(out.begin(), out.end());
    return out;
}

// "30 0A 04 02" -> the bytes; all but hex digits is ignored.
inline std::string Bytes(const char* hex) {
    std::string digits, out;
    for (const char* p = hex; *p; ++p)
        if (std::isxdigit(static_cast<unsigned char>(*p)))
            digits += *p;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        out += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return out;
}

// The bytes as upper-case hex octets separated by blanks.
inline std::string Hex(const char* data, size_t len) {
    std::string out;
    char buf[4];
    for (size_t i = 0; i < len; ++i) {
        std::snprintf(buf, sizeof buf, i ? " %02X" : "%02X", static_cast<unsigned char>(data[i]));
        out += buf;
    }
    return out;
}
inline std::string Hex(const std::string& s) { return Hex(s.data(), s.size()); }

// The encoding of `v` through the four-argument front door, as hex.
inline std::string Encoded(const AsnType& v) {
    static char block[1 << 16];
    size_t len = 0;
    char* p = Zol::AsnBuffer::Encode(block, sizeof block, v, len);
    return p ? Hex(p, len) : "<overflow>";
}

// Encodes through `encode(block, size, length)`, shaped as the front
// door's Encode, into blocks of every size from none to a few octets
// beyond `want`: each time the length is that of the whole encoding, null
// comes back exactly when it does not fit, and otherwise the encoding is
// `want` at the top of the block. The encoders' fast paths, which test the
// room once, and their byte-by-byte ones near the floor must agree.
template <class F>
void ExpectEveryBlock(const std::string& want, F encode) {
    std::string block(want.size() + 8, '?');
    for (size_t size = 0; size <= block.size(); ++size) {
        size_t len = 0;
        const char* p = encode(&block[0], size, len);
        EXPECT_EQ(len, want.size()) << "block of " << size;
        EXPECT_EQ(p == nullptr, size < want.size()) << "block of " << size;
        if (p) {
            EXPECT_EQ(Hex(p, size_t(&block[0] + size - p)), Hex(want)) << "block of " << size;
        }
    }
}

// What a decode through the front door returned and wrote to standard error.
struct Outcome {
    int result;
    std::string err;
};

inline Outcome Decode(const std::string& bytes, AsnType& v) {
    testing::internal::CaptureStderr();
    int r = Zol::AsnBuffer::Decode(bytes.data(), bytes.size(), v);
    std::fflush(stderr);
    return {r, testing::internal::GetCapturedStderr()};
}

// The front door's line for a failure of `name` with `code`, as it appears
// after the failing decoder's own line.
inline std::string DoorLine(const char* name, int code) {
    return std::string("Decode for ") + name + " failed with code:(" + std::to_string(code) + ")\n\n";
}

// Runs `decode` against bytes under a jump environment, capturing stderr;
// returns the long-jump code (0 when it returned normally).
template <class F>
int Jump(const std::string& bytes, F decode, std::string* err = nullptr, AsnBuf* out = nullptr) {
    static std::string keep;
    keep = bytes;
    // Static, so that its positions survive the long jump unchanged.
    static AsnBuf b;
    b.InstallData(keep.empty() ? nullptr : &keep[0], keep.size());
    testing::internal::CaptureStderr();
    DecodeEnv env;
    int code = setjmp(env);
    if (code == 0)
        decode(b, env);
    std::fflush(stderr);
    std::string e = testing::internal::GetCapturedStderr();
    if (err)
        *err = e;
    if (out)
        *out = b;
    return code;
}

}  // namespace zt

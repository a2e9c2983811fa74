// Table-driven decoding of catalogue messages by type name. A row gives the
// octets, the verdict with the exact text of a failure, the members that
// decoding sets or leaves absent, and what the value encodes back to.
#pragma once

#include <initializer_list>

#include <memory>
#include <sstream>
#include <string>

#include "support.h"
#include "walk.h"

namespace zt {

inline std::string Missing(const char* type, int code) {
    return "ERROR - SEQUENCE is missing non-optional elmt.\n" + DoorLine(type, code);
}

inline std::string Discrepancy(const char* type, int code) {
    return "ERROR - Length discrepancy on sequence.\n" + DoorLine(type, code);
}

// The member at a dotted path such as "dynamics.numTrades", creating
// nothing; null when any step is absent.
inline AsnType* At(AsnType* v, const std::string& path) {
    std::istringstream steps(path);
    std::string name;
    while (v && std::getline(steps, name, '.'))
        v = v->_getref(name.c_str(), false);
    return v;
}

// The identifier octets of the elements inside the outermost element, as
// "30, 9F 52, BF 2D".
inline std::string InnerTags(const std::string& enc) {
    AsnTlv outer, inner;
    AsnReadTlv(enc.data(), enc.size(), outer);
    std::string out;
    for (size_t i = outer.headerSize; i < outer.totalSize; i += inner.totalSize) {
        if (AsnReadTlv(enc.data() + i, outer.totalSize - i, inner) != AsnTlvComplete)
            return out + " <malformed>";
        out += (out.empty() ? "" : ", ") + Hex(enc.data() + i, BTagLen(inner.tag));
    }
    return out;
}

struct Case {
    const char* type;
    const char* wire;         // the value; octets after a '|' follow it in the input
    std::string err = "";           // empty when the value decodes
    const char* set = nullptr;      // blank-separated paths that decoding sets
    const char* unset = nullptr;    // paths that stay absent
    const char* again = nullptr;    // the encoding of the decoded value, if not `wire`
};

inline void Check(const Case& c) {
    SCOPED_TRACE(std::string(c.type) + ": " + c.wire);
    const AsnTypeDesc* d = Zol::FindType(c.type);
    ASSERT_TRUE(d);
    std::unique_ptr<AsnType> v(d->create());
    std::string wire = c.wire;
    std::string value = Bytes(wire.substr(0, wire.find('|')).c_str());
    Outcome o = Decode(Bytes(wire.c_str()), *v);
    EXPECT_EQ(o.err, c.err);
    EXPECT_EQ(o.result, c.err.empty() ? 1 : 0);
    if (c.err.empty()) {
        EXPECT_EQ(Encoded(*v), Hex(c.again ? Bytes(c.again) : value));
    }
    std::istringstream set(c.set ? c.set : ""), unset(c.unset ? c.unset : "");
    for (std::string path; set >> path;)
        EXPECT_NE(At(v.get(), path), nullptr) << path;
    for (std::string path; unset >> path;)
        EXPECT_EQ(At(v.get(), path), nullptr) << path;
}

// Decodes `hex` into `v`, which must succeed.
template <class T>
void From(T& v, const char* hex) {
    Outcome o = Decode(Bytes(hex), v);
    ASSERT_EQ(o.result, 1) << hex << "\n" << o.err;
}

// Checks every case of a table.
inline void CheckAll(std::initializer_list<Case> cases) {
    for (const Case& c : cases)
        Check(c);
}

}  // namespace zt

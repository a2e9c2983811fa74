// Decoding tables shared by the pattern tests: one row per input, run
// through the front door into a new value of the row's class, with the
// exact error text and code expected.
#pragma once

#include <memory>
#include <string>

#include "support.h"

namespace zt {

inline const char* const kMissing = "ERROR - SEQUENCE is missing non-optional elmt.\n";
inline const char* const kLength = "ERROR - Length discrepancy on sequence.\n";
inline const char* const kEmpty = "Expected an empty sequence\n";
inline const char* const kUnexpected = "Unexpected Tag\n";
inline const char* const kWarn = "Warning - second octet of EOC not zero\n";
inline const char* const kEoc = "BDecEoc: ERROR - non zero byte in EOC or end of data reached\n";
inline const char* const kPastEnd = "BDecTag: ERROR - decoded past the end of data\n";

// One decode through the front door into a new value made by `create`.
struct DecodeRow {
    AsnTypeDesc::CreateFn create;
    const char* hex;
    int result;
    const char* text;  // the failing decoder's line, or a warning, or ""
    int code;          // the front door's code when result is 0 and text is a failure
    bool same = false;  // encodes back to the same bytes
};

inline void CheckDecodes(const DecodeRow* rows, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        const DecodeRow& r = rows[i];
        std::unique_ptr<AsnType> v(r.create());
        const char* name = v->_getdesc()->name;
        zt::Outcome o = zt::Decode(Bytes(r.hex), *v);
        std::string err = r.text;
        if (r.code)
            err += zt::DoorLine(name, r.code);
        EXPECT_EQ(o.result, r.result) << name << ": " << r.hex;
        EXPECT_EQ(o.err, err) << name << ": " << r.hex;
        if (r.same) {
            EXPECT_EQ(Encoded(*v), zt::Hex(Bytes(r.hex))) << name;
        }
    }
}

}  // namespace zt

// How zoldump shows a decoded message: a head line and the library's
// Print, a head line and one line per member (--brief), or one JSON object.
#pragma once

#include <cstdint>
#include <string>

#include "options.h"

class AsnType;

namespace ZolDump {

// Where a message stood: `file` is null when there is only one input.
struct Place {
    const char* file;
    uint64_t offset;
    size_t length;
};

// Appends `message` in `form` to `out`; `first` tells whether it is the
// first message shown.
void Show(Form form, const Place& place, AsnType& message, bool first, std::string& out);

// A line of zoldump's own on standard error, "zoldump: " first, after
// what was shown.
void Say(const std::string& line);

}  // namespace ZolDump

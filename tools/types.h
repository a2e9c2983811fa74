// The types that zoldump can read a message as: every type of every module,
// found by name, listed, and guessed at when a name is mistyped.
#pragma once

#include <string>

struct AsnTypeDesc;

namespace ZolDump {

// The type named `name`; throws UsageError naming the nearest names when
// there is none.
const AsnTypeDesc* TypeNamed(const char* name);

// One line per type whose name or module holds `filter` (any case; null
// lists all): the type's name, then its module. Empty when none does.
std::string TypeList(const char* filter);

}  // namespace ZolDump

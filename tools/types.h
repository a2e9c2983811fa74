// The types that a message can be read as: every type of every module,
// found by name, listed, and guessed at when a name is mistyped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct AsnTypeDesc;

namespace ZolDump {

// The type named `name`, or null; a lookup in a table made once, so that
// callers that name a type for every message pay little for it.
const AsnTypeDesc* FindTypeNamed(std::string_view name);

// "no type named NAME; did you mean A, B or C?": the names nearest to
// `name` in any case, at most three, all as near as the nearest and within
// a third of its length; without the question when none is.
std::string NoTypeNamed(const std::string& name);

// Every type whose name or module holds `filter` (any case; null: all),
// modules in the library's order and types in their modules' order.
std::vector<const AsnTypeDesc*> TypesMatching(const char* filter);

// One line per type of TypesMatching: the type's name, then its module.
std::string TypeList(const char* filter);

}  // namespace ZolDump

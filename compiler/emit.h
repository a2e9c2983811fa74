// Small pieces the two emitters share.
#pragma once

#include <cstdio>
#include <sstream>
#include <string>

#include "model.h"

namespace zolc {

// A tag word as a C++ constant.
inline std::string TagConst(uint32_t tag) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%08Xu", tag);
    return buf;
}

// The descriptor object of a member's class.
inline std::string DescOf(const MemberModel& m) { return "&" + m.className + "::_desc"; }

// Integers, enumerations, booleans, reals and nulls have short content,
// whose length is one raw octet.
inline bool ShortContent(Kind k) {
    return k == Kind::Int || k == Kind::Enum || k == Kind::Bool || k == Kind::Real || k == Kind::Null;
}

// Strings and bit strings also arrive in constructed form.
inline bool TakesConstructed(Kind k) { return k == Kind::Octs || k == Kind::Bits; }

// A member as generated code names it: members that share a name with a
// parameter or local of the generated functions are reached through this.
inline std::string Mem(const std::string& name) {
    static const char* const locals[] = {"b", "tag", "len", "env", "elmtLen", "seqBytes", "bytesDecoded",
                                         "o", "os", "name", "create", "outerLen", "anySet", "id"};
    for (const char* l : locals)
        if (name == l)
            return "this->" + name;
    return name;
}

inline std::string ModuleDescName(const std::string& module) { return module + "Module"; }

// The last path component of a stem, for guards and comments.
inline std::string BaseName(const std::string& stem) {
    size_t slash = stem.rfind('/');
    return slash == std::string::npos ? stem : stem.substr(slash + 1);
}

}  // namespace zolc

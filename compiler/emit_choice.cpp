// A CHOICE: the ids and the union of its alternatives, construction, copy
// and merge, its encoder and decoder, which switch on the alternative, its
// printer, its by-name access and its descriptor.
#include "emit.h"

#include <cstdio>

namespace zolc {

namespace {

using Alt = MemberModel;

// The case of a tag in the choice's switch: the octets left after the
// shift, two hex digits each (0xA0u, 0xBF8200u).
std::string TagCase(uint32_t tag, int shift) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%0*Xu", 2 * (4 - shift / 8), tag >> shift);
    return buf;
}

// The decoding of an alternative once its tag matched.
std::string DecodeAlt(const Alt& m, const Vars& v, int shift) {
    std::string cases;
    for (uint32_t tag : m.accepts)
        cases += (cases.empty() ? "    case " : ":\n    case ") + TagCase(tag, shift);
    std::string out = cases + Fill(R"(:  // $text
        choiceId = $cid;
        $m = AsnDecodeNew<$cls>(env);
)", v);
    // An alternative that is itself a choice is wrapped in its own tag.
    if (m.explicitPair)
        out += Fill(R"(        {
            AsnTag innerTag = BDecTag(b, bytesDecoded, env);
            AsnLen innerLen = BDecLen(b, bytesDecoded, env);
            ${at}BDecContent(b, innerTag, innerLen, bytesDecoded, env);
        }
        if (elmtLen == IndefiniteLen)
            BDecEoc(b, bytesDecoded, env);
)", v);
    else
        out += Fill("        ${at}BDecContent(b, tag, elmtLen, bytesDecoded, env);\n", v);
    return out + "        break;\n";
}

}  // namespace

ClassText EmitChoice(const TypeModel& c) {
    Vars v = ClassVars(c);
    v.emplace_back("first", c.members.front().name);
    ClassText t;
    t.header = Fill("class $T : public AsnType {\npublic:\n    enum ChoiceIdEnum : int32_t {\n", v) +
               ForMembers("        $cid = $id,\n", c, v) +
               "    };\n\n    int32_t choiceId;  // the alternative in force\n    union {\n" +
               ForMembers(c, v, [](const Alt& m, const Vars&) {
                   return MemberLine("        " + m.className + "* " + m.name + ";", m, 52);
               }) +
               "    };\n\n";

    // A copy holds an object of the source's alternative, an empty one
    // where the source holds none, as Select makes one.
    v.insert(v.end(), {{"destroy", " { delete Current(); }"},
                       {"construct", Fill("        choiceId = ${first}Cid;\n        this->$first = nullptr;\n", v)},
                       {"o", " o"},
                       {"copyFrom", "AsnType(), choiceId(o.choiceId)"},
                       {"copyEmbedded", ""},
                       {"clear", "    delete Current();\n    ConstructHelper();\n"},
                       {"copy", "    switch (choiceId) {\n" +
                                    ForMembers("    case $cid:\n        $m = AsnCopyAlt(o.$name);\n        break;\n", c, v) +
                                    Fill("    default:\n        this->$first = nullptr;\n    }\n", v)}});
    t.Both(kConstructionDecls, kConstruction, v);

    // A copy selects the source's alternative and copies its value; a merge
    // of the same alternative merges the values.
    auto holds = [](const Alt& m) { return m.merge != Alt::Merge::None; };
    v.emplace_back("copies", ForMembers(c, v, [&](const Alt& m, const Vars& mv) {
                       return Fill(holds(m) ? "    case $cid:\n        if (o.$name)\n            *$m = *o.$name;\n        break;\n"
                                            : "    case $cid:\n        break;\n",
                                   mv);
                   }));
    v.emplace_back("merges", ForMembers("    case $cid:\n        $merge;\n        break;\n", c, v, holds));
    t.Both(kCopyDecls, R"($T& $T::operator=(const $T& o) {
    if (this == &o)
        return *this;
    Select(o.choiceId);
    if (!Current() && o.Current())
        AsnThrowBadAlloc();
    switch (choiceId) {
$copies    }
    return *this;
}

$T& $T::operator|=(const $T& o) {
    if (this == &o)
        return *this;
    if (choiceId != o.choiceId)
        return *this = o;
    switch (choiceId) {
$merges    }
    return *this;
}

)",
           v);

    v.emplace_back("encode", ForMembers("    case $cid:\n        return $encode;\n", c, v));
    t.Both(kEncodeDecls, R"(AsnLen $T::BEncContent(AsnBuf& b) const {
    switch (choiceId) {
$encode    default:
        return 0;
    }
}

AsnLen $T::BEnc(AsnBuf& b) const { return BEncContent(b); }

)",
           v);

    v.emplace_back("shift", std::to_string(c.tagShift));
    v.emplace_back("decode", ForMembers(c, v, [&](const Alt& m, const Vars& mv) { return DecodeAlt(m, mv, c.tagShift); }));
    t.Both(kDecodeDecls, R"(void $T::BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
    switch (tag >> $shift) {
$decode    default:
        AsnDecodeFail(env, $choiceCode, AsnChoiceTagText);
    }
}

void $T::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnTag tag = BDecTag(b, bytesDecoded, env);
    AsnLen len = BDecLen(b, bytesDecoded, env);
    BDecContent(b, tag, len, bytesDecoded, env);
}

)",
           v);

    v.emplace_back("print", ForMembers("    case $cid:\n        AsnPrintChoice(out, \"$name\", $m);\n        break;\n", c, v));
    t.Both(kPrintDecls, R"(void $T::PrintTo(AsnPrintOut& out) const {
    switch (choiceId) {
$print    }
}

const AsnTypeDesc* $T::_getdesc() const { return &_desc; }

)",
           v);

    t.Both("    AsnType* _getref(const char* name, bool create = false) override;\n\n", R"(AsnType* $T::_getref(const char* name, bool create) {
    int32_t id = _desc.choicebyname(name);
    if (id < 0)
        return nullptr;
    if (id == choiceId)
        return Current();
    if (!create)
        return nullptr;
    Select(id);
    return Current();
}

)",
           v);

    std::string accepts;
    for (const Alt& m : c.members)
        for (uint32_t tag : m.accepts)
            accepts += "        case " + TagCase(tag, c.tagShift) + ":\n";
    v.emplace_back("accepts", accepts);
    t.header += Fill(R"(    // Whether an element with this tag is one of the alternatives.
    static bool AcceptsTag(AsnTag tag) {
        switch (tag >> $shift) {
$accepts            return true;
        default:
            return false;
        }
    }

)",
                     v);

    v.insert(v.end(), {{"mdescs", ForMembers("    AsnChoiceMemberDesc(\"$name\", &${cls}::_desc, $id),\n", c, v)},
                       {"D", "AsnChoiceTypeDesc"},
                       {"MD", "AsnChoiceMemberDesc"},
                       {"K", "CHOICE"},
                       {"inForce", Fill(", AsnChoiceIdOf<$T>", v)}});
    t.Both(kMembersDescDecls, kMembersDesc, v);

    v.emplace_back("current", ForMembers("    case $cid:\n        return $m;\n", c, v));
    v.emplace_back("select", ForMembers("    case $cid:\n        $m = new (std::nothrow) $cls;\n        break;\n", c, v));
    t.Both(R"(
private:
    // The value of the alternative in force, or null.
    AsnType* Current() const;
    // Deletes the value held and holds a new empty one of alternative `id`,
    // or none when the heap is exhausted. Not inlined: its constructors
    // inlined into a merge had their set-up paid on every call.
    __attribute__((noinline)) void Select(int32_t id);
};
)",
           R"(
AsnType* $T::Current() const {
    switch (choiceId) {
$current    default:
        return nullptr;
    }
}

void $T::Select(int32_t id) {
    delete Current();
    choiceId = id;
    this->$first = nullptr;
    switch (id) {
$select    }
}
)",
           v);
    return t;
}

}  // namespace zolc

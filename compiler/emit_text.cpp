// The templating of the emitters and the pieces of text every shape shares.
#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "emit.h"

namespace zolc {

namespace {

// The test of `tag` against the tags a member takes.
std::string AcceptsTest(const MemberModel& m) {
    if (m.accepts.empty())
        return m.className + "::AcceptsTag(tag)";
    std::string test;
    for (uint32_t t : m.accepts)
        test += (test.empty() ? "tag == " : " || tag == ") + TagConst(t);
    return test;
}

// The expression that writes a member's element, reached through `at`
// ("this->x." or "this->x->"), as its form and tags decide.
std::string EncodeExpr(const MemberModel& m, const std::string& at) {
    uint32_t tag = m.explicitPair ? m.innerTag : m.tag;
    std::string e;
    switch (m.encode) {
    case MemberModel::Encode::Tlv: e = at + "BEncTLV(b, " + TagConst(tag) + ")"; break;
    case MemberModel::Encode::ContentLen: e = "BEncLenTag(b, " + at + "BEncContent(b), " + TagConst(tag) + ")"; break;
    case MemberModel::Encode::Choice: e = at + "BEncContent(b)"; break;
    case MemberModel::Encode::Empty: e = "BEncLenTag(b, 0, " + TagConst(tag) + ")"; break;
    }
    return m.explicitPair ? "BEncLenTag(b, " + e + ", " + TagConst(m.tag) + ")" : e;
}

}  // namespace

std::string Fill(const char* text, const Vars& vars) {
    std::string out;
    for (const char* p = text; *p;) {
        if (*p != '$') {
            out += *p++;
            continue;
        }
        // `$name`, or `${name}` where letters follow the hole.
        bool braced = *++p == '{';
        const char* start = braced ? ++p : p;
        while (std::isalnum(static_cast<unsigned char>(*p)) || *p == '_')
            ++p;
        std::string name(start, p);
        if (braced && *p++ != '}')
            name += " (unclosed)";
        const std::string* value = nullptr;
        for (const auto& v : vars)
            if (v.first == name)
                value = &v.second;
        if (!value) {
            std::fprintf(stderr, "zolc: template hole $%s has no value\n", name.c_str());
            std::abort();
        }
        out += *value;
    }
    return out;
}

std::string ForMembers(const TypeModel& c, const Vars& vars,
                       const std::function<std::string(const MemberModel&, const Vars&)>& each) {
    std::string out;
    for (const MemberModel& m : c.members) {
        Vars all = vars;
        for (auto& v : MemberVars(m))
            all.push_back(v);
        out += each(m, all);
    }
    return out;
}

std::string ForMembers(const char* each, const TypeModel& c, const Vars& vars,
                       const std::function<bool(const MemberModel&)>& when) {
    return ForMembers(c, vars, [&](const MemberModel& m, const Vars& v) {
        return !when || when(m) ? Fill(each, v) : std::string();
    });
}

std::string Indented(const std::string& text) {
    std::string out;
    bool lineStart = true;
    for (char ch : text) {
        if (lineStart && ch != '\n')
            out += "    ";
        out += ch;
        lineStart = ch == '\n';
    }
    return out;
}

Vars ClassVars(const TypeModel& c) {
    return {{"T", c.name},
            {"M", ModuleDescName(c.module)},
            {"E", c.baseClass},
            {"tag", TagConst(c.tag)},
            {"wrongTagCode", std::to_string(c.wrongTagCode)},
            {"discrepancyCode", std::to_string(c.discrepancyCode)},
            {"emptyCode", std::to_string(c.emptyCode)},
            {"choiceCode", std::to_string(c.choiceCode)},
            {"listElmtCode", std::to_string(c.listElmtCode)}};
}

// The merge statement that brings the member from `o`, as its merge rule
// decides.
std::string MergeFrom(const MemberModel& m, const std::string& self) {
    switch (m.merge) {
    case MemberModel::Merge::Assign: return self + " = o." + m.name;
    case MemberModel::Merge::Leaf: return "AsnMergeLeaf(" + self + ", o." + m.name + ")";
    case MemberModel::Merge::Deep: return "AsnMerge(" + self + ", o." + m.name + ")";
    case MemberModel::Merge::None: break;
    }
    return "";
}

Vars MemberVars(const MemberModel& m) {
    std::string self = "this->" + m.name;
    std::string at = self + (m.pointer ? "->" : ".");
    return {{"name", m.name},
            {"cls", m.className},
            {"m", self},
            {"at", at},
            {"cid", m.name + "Cid"},
            {"text", m.text},
            {"octets", m.tagOctets},
            {"inner", TagConst(m.innerTag)},
            {"id", std::to_string(m.id)},
            {"optional", m.optional ? "true" : "false"},
            {"last", m.last ? "true" : "false"},
            {"accepts", AcceptsTest(m)},
            {"encode", EncodeExpr(m, at)},
            {"assign", m.pointer ? "AsnAssign(" + self + ", o." + m.name + ")" : self + " = o." + m.name},
            {"merge", MergeFrom(m, self)},
            {"ref", m.pointer ? "AsnRef(" + self + ", create)" : "&" + self},
            {"missing", std::to_string(m.missingCode)},
            {"explicitCode", std::to_string(m.explicitCode)}};
}

std::string TagConst(uint32_t tag) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%08Xu", tag);
    return buf;
}

const char* const kConstructionDecls = R"(    $T() { ConstructHelper(); }
    $T(const $T& o);
    ~$T() override;
    void ConstructHelper() {
$construct    }
    AsnType* Clone() const override;
    void Clear() override;
)";
const char* const kConstruction = R"($T::$T(const $T&$o) : $copyFrom {
$copy}
$copyEmbedded
$T::~$T()$destroy

AsnType* $T::Clone() const { return AsnClone(*this); }

void $T::Clear() {
$clear}

)";
const char* const kCopyDecls = R"(    $T& operator=(const $T& o);
    $T& operator|=(const $T& o);
)";
const char* const kMembersDescDecls = R"(    static const $D _desc;
    static const $MD _mdescs[];
)";
const char* const kMembersDesc = R"(const $MD $T::_mdescs[] = {
$mdescs    $MD(),
};
const $D $T::_desc(&$M, "$T", false, AsnTypeDesc::$K, AsnCreate<$T>, $T::_mdescs$inForce);
)";
const char* const kEncodeDecls = R"(    AsnLen BEncContent(AsnBuf& b) const;
    AsnLen BEnc(AsnBuf& b) const override;
)";
const char* const kDecodeDecls =
    R"(    void BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
)";
const char* const kDecodeWhole = R"(void $T::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnDecWhole(*this, b, bytesDecoded, env, $tag, $wrongTagCode, "$T::BDec: ERROR - wrong tag");
}

)";
const char* const kPrintDecls = R"(    void PrintTo(AsnPrintOut& out) const override;
    const AsnTypeDesc* _getdesc() const override;
)";

std::string MemberLine(const std::string& decl, const MemberModel& m, size_t column) {
    std::string line = decl;
    if (line.size() < column)
        line.resize(column, ' ');
    else
        line += " ";
    return line + "// " + m.text + "  -- " + m.tagOctets + "\n";
}

}  // namespace zolc

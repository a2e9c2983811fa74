// A SEQUENCE: its members, construction, copy and merge, its straight-line
// encoder and decoder, its printer, its by-name access and its descriptor.
#include "emit.h"

namespace zolc {

namespace {

using Row = MemberModel;

// The decoding of one row whose tag is in `tag`, then of the next tag.
std::string DecodeRow(const Row& m, const Vars& v) {
    std::string body;
    if (m.explicitPair)
        body += Fill(R"(    AsnLen outerLen = BDecLen(b, seqBytes, env);
    tag = BDecTag(b, seqBytes, env);
    if (tag != $inner)
        AsnDecodeFail(env, $explicitCode, AsnUnexpectedTagText);
)", v);
    body += Fill("    len = BDecLen(b, seqBytes, env);\n", v);
    if (m.pointer)
        body += Fill("    $m = AsnDecodeNew<$cls>(env);\n", v);
    body += Fill("    ${at}BDecContent(b, tag, len, seqBytes, env);\n", v);
    if (m.explicitPair)
        body += "    if (outerLen == IndefiniteLen)\n        BDecEoc(b, seqBytes, env);\n";
    switch (m.next) {
    case Row::Next::ReadTag: body += "    tag = BDecTag(b, seqBytes, env);\n"; break;
    case Row::Next::TailMayEnd:
        body += "    if (AsnSeqTailEnds(b, elmtLen, seqBytes, bytesDecoded, tag, env))\n        return;\n";
        break;
    case Row::Next::End: break;
    }

    std::string row = Fill("\n    // $text  -- $octets\n", v);
    if (m.optional)
        return row + Fill("    if ($accepts) {\n", v) + Indented(body) + "    }\n";
    row += Fill("    if (!($accepts))\n        AsnDecodeFail(env, $missing, AsnMissingElmtText);\n", v);
    if (m.explicitPair)
        return row + "    {\n" + Indented(body) + "    }\n";
    return row + body;
}

std::string PrintRow(const Row& m, const Vars& v) {
    std::string out;
    if (m.separator == Row::Separator::IfSet)
        out += Fill("    if ($m)\n        AsnPrintSeparator(out);\n", v);
    if (m.separator == Row::Separator::IfSetAfterAny)
        out += Fill("    if ($m && anySet)\n        AsnPrintSeparator(out);\n", v);
    out += Fill("    AsnPrintMember(out, \"$name\", $m, $last);\n", v);
    if (m.noteSet)
        out += Fill("    anySet = anySet || $m;\n", v);
    return out;
}

}  // namespace

ClassText EmitSequence(const TypeModel& c) {
    Vars v = ClassVars(c);
    bool empty = c.members.empty();
    ClassText t;
    t.header = Fill("class $T : public AsnType {\npublic:\n", v) +
               ForMembers(c, v, [](const Row& m, const Vars&) {
                   return MemberLine("    " + m.className + (m.pointer ? "* " : " ") + m.name + ";", m, 48);
               }) +
               (empty ? "" : "\n");

    v.emplace_back("destroy", " {\n" + ForMembers("    delete $m;\n", c, v, IsPointer) + "}");
    v.emplace_back("construct", ForMembers("        $m = nullptr;\n", c, v, IsPointer));
    // A copy constructs each member from the source's: embedded ones in
    // place, pointer ones into one new block each. With two pointer members
    // or more, a first step copies the embedded members and the first
    // pointer and sets the others to null, so that when a later copy fails
    // the object is whole and its destructor frees what was copied.
    v.emplace_back("o", empty ? "" : " o");
    std::string copyInit = ForMembers(", $name(o.$name)", c, v, [](const Row& m) { return !m.pointer; });
    std::vector<const Row*> pointers;
    for (const Row& m : c.members)
        if (m.pointer)
            pointers.push_back(&m);
    bool copyStep = pointers.size() >= 2;
    auto copyOne = [](const Row& m) { return Fill("    $m = AsnCopy(o.$name);\n", MemberVars(m)); };
    std::string copy, step;
    for (const Row* m : pointers) {
        bool first = m == pointers.front();
        if (copyStep)
            step += first ? copyOne(*m) : Fill("    $m = nullptr;\n", MemberVars(*m));
        if (!copyStep || !first)
            copy += copyOne(*m);
    }
    v.emplace_back("copyFrom", copyStep ? Fill("$T(o, AsnCopyEmbedded())", v) : "AsnType()" + copyInit);
    v.emplace_back("copyEmbedded",
                   copyStep ? Fill("\n$T::$T(const $T& o, AsnCopyEmbedded) : AsnType()", v) + copyInit + " {\n" + step + "}\n"
                            : "");
    v.emplace_back("copy", copy);
    v.emplace_back("clear", ForMembers(c, v, [](const Row& m, const Vars& mv) {
                       return Fill(m.pointer ? "    AsnClearMember($m);\n" : "    ${m}.Clear();\n", mv);
                   }));
    t.Both(kConstructionDecls, kConstruction, v);

    // Assignment makes a deep copy; the merge keeps what the source lacks.
    v.emplace_back("assign", empty ? "    (void)o;\n" : "    if (this != &o) {\n" + ForMembers("        $assign;\n", c, v) + "    }\n");
    v.emplace_back("merge", !c.hasPointer ? "    return *this = o;\n"
                                          : "    if (this != &o) {\n" + ForMembers("        $merge;\n", c, v) +
                                                "    }\n    return *this;\n");
    t.Both(kCopyDecls, R"($T& $T::operator=(const $T& o) {
$assign    return *this;
}

$T& $T::operator|=(const $T& o) {
$merge}

)",
           v);

    // Rows are written last first, since the buffer grows towards the front.
    std::string rows;
    for (auto m = c.members.rbegin(); m != c.members.rend(); ++m) {
        Vars mv = MemberVars(*m);
        rows += Fill(m->optional ? "    // $text\n    if ($m)\n        len += $encode;\n"
                                 : "    // $text\n    len += $encode;\n",
                     mv);
    }
    v.emplace_back("encode", empty ? "    (void)b;\n    return 0;\n" : "    AsnLen len = 0;\n" + rows + "    return len;\n");
    t.Both(kEncodeDecls, R"(AsnLen $T::BEncContent(AsnBuf& b) const {
$encode}

AsnLen $T::BEnc(AsnBuf& b) const { return BEncLenTag(b, BEncContent(b), $tag); }

)",
           v);

    std::string decode;
    if (empty) {
        decode = Fill("    AsnEmptySeqContent(b, elmtLen, bytesDecoded, env, $emptyCode);\n", v);
    } else {
        decode = "    AsnLen seqBytes = 0;\n    AsnLen len;\n";
        if (c.allOptional)
            decode += "    if (elmtLen == 0)\n        return;\n";
        decode += "    AsnTag tag = BDecTag(b, seqBytes, env);\n";
        if (c.allOptional)
            decode += R"(    if (elmtLen == IndefiniteLen && tag == 0) {
        BDecEocSecondOctet(b, seqBytes);
        bytesDecoded += seqBytes;
        return;
    }
)";
        decode += ForMembers(c, v, DecodeRow) +
                  Fill("\n    AsnSeqEnd(b, elmtLen, seqBytes, bytesDecoded, env, $discrepancyCode);\n", v);
    }
    v.emplace_back("decode", decode);
    t.Both(kDecodeDecls, R"(void $T::BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
$decode}

)",
           v);
    t.source += Fill(kDecodeWhole, v);

    v.emplace_back("print", empty ? "    AsnPrintEmptySeq(out);\n"
                                  : std::string("    AsnPrintOpen(out);\n") +
                                        (c.tracksSet ? "    bool anySet = false;\n" : "") +
                                        ForMembers(c, v, PrintRow) + "    AsnPrintClose(out);\n");
    t.Both(kPrintDecls, R"(void $T::PrintTo(AsnPrintOut& out) const {
$print}

const AsnTypeDesc* $T::_getdesc() const { return &_desc; }

)",
           v);

    if (!empty) {
        v.emplace_back("create", c.hasPointer ? " create" : "");
        v.emplace_back("refs", ForMembers("    if (AsnNameIs(name, \"$name\"))\n        return $ref;\n", c, v));
        t.Both("    AsnType* _getref(const char* name, bool create = false) override;\n",
               "AsnType* $T::_getref(const char* name, bool$create) {\n$refs    return nullptr;\n}\n\n", v);
    }

    v.insert(v.end(), {{"mdescs", ForMembers("    AsnSe_MemberDesc(\"$name\", &${cls}::_desc, $optional),\n", c, v)},
                       {"D", "AsnSe_TypeDesc"},
                       {"MD", "AsnSe_MemberDesc"},
                       {"K", "SEQUENCE"},
                       {"inForce", ""}});
    t.header += "\n";
    t.Both(kMembersDescDecls, kMembersDesc, v);
    if (copyStep)
        t.header += Fill("\nprivate:\n    // The first step of the copy: the embedded members and the first\n"
                         "    // pointer; the other pointers null.\n"
                         "    $T(const $T& o, AsnCopyEmbedded);\n",
                         v);
    t.header += "};\n";
    return t;
}

}  // namespace zolc

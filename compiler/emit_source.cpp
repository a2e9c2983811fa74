// Prints the source of one module: for every class its construction, copy
// and merge, its straight-line encoder and decoder, its printer, its
// by-name access, and its descriptor; then the module's descriptor.
#include "emit.h"

namespace zolc {

namespace {

// The test of the current tag against what a member takes.
std::string Accepts(const MemberModel& m) {
    if (m.kind == Kind::Choice && !m.explicitPair)
        return m.className + "::AcceptsTag(tag)";
    if (TakesConstructed(m.kind) && !m.explicitPair)
        return "tag == " + TagConst(m.tag) + " || tag == " + TagConst(m.tag | 0x20000000u);
    return "tag == " + TagConst(m.tag);
}

// The member reached through `obj` ("x." or "x->") written under `tag`:
// integers, enumerations, booleans, reals and nulls write their whole
// element in one step; other kinds write their content, then its length
// and the tag in front of it.
std::string Wrap(Kind k, const std::string& obj, uint32_t tag) {
    if (ShortContent(k))
        return obj + "BEncTLV(b, " + TagConst(tag) + ")";
    return "BEncLenTag(b, " + obj + "BEncContent(b), " + TagConst(tag) + ")";
}

std::string Ref(const MemberModel& m) { return Mem(m.name) + (m.pointer ? "->" : "."); }

// --- sequences -------------------------------------------------------------

void SeqBasics(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    out << n << "::" << n << "() { ConstructHelper(); }\n\n"
        << n << "::" << n << "(const " << n << "& o) : AsnType() {\n"
        << "    ConstructHelper();\n    *this = o;\n}\n\n"
        << n << "::~" << n << "() {\n";
    for (const MemberModel& m : c.members)
        if (m.pointer)
            out << "    delete " << Mem(m.name) << ";\n";
    out << "}\n\n"
        << "void " << n << "::ConstructHelper() {\n";
    for (const MemberModel& m : c.members)
        if (m.pointer)
            out << "    " << Mem(m.name) << " = nullptr;\n";
    out << "}\n\n"
        << "AsnType* " << n << "::Clone() const { return new (std::nothrow) " << n << "(*this); }\n\n";

    // Assignment makes a deep copy; the merge keeps what the source lacks.
    out << n << "& " << n << "::operator=(const " << n << "& o) {\n";
    if (!c.members.empty()) {
        out << "    if (this != &o) {\n";
        for (const MemberModel& m : c.members)
            out << (m.pointer ? "        AsnAssign(" + Mem(m.name) + ", o." + m.name + ");\n"
                              : "        " + Mem(m.name) + " = o." + m.name + ";\n");
        out << "    }\n";
    } else {
        out << "    (void)o;\n";
    }
    out << "    return *this;\n}\n\n";
    out << n << "& " << n << "::operator|=(const " << n << "& o) {\n";
    if (!c.hasPointer) {
        out << "    return *this = o;\n}\n\n";
    } else {
        out << "    if (this != &o) {\n";
        for (const MemberModel& m : c.members) {
            if (!m.pointer)
                out << "        " << Mem(m.name) << " = o." << m.name << ";\n";
            else if (m.kind == Kind::Seq || m.kind == Kind::Choice)
                out << "        AsnMerge(" << Mem(m.name) << ", o." << m.name << ");\n";
            else
                out << "        AsnMergeLeaf(" << Mem(m.name) << ", o." << m.name << ");\n";
        }
        out << "    }\n    return *this;\n}\n\n";
    }
}

void SeqEncode(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    out << "AsnLen " << n << "::BEncContent(AsnBuf& b) const {\n";
    if (c.members.empty()) {
        out << "    (void)b;\n    return 0;\n}\n\n";
    } else {
        out << "    AsnLen len = 0;\n";
        for (auto it = c.members.rbegin(); it != c.members.rend(); ++it) {
            const MemberModel& m = *it;
            std::string stmt;
            if (m.kind == Kind::Choice)
                stmt = "len += " + Ref(m) + "BEncContent(b);";
            else if (m.explicitPair)
                stmt = "len += BEncLenTag(b, " + Wrap(m.kind, Ref(m), m.innerTag) + ", " + TagConst(m.tag) + ");";
            else
                stmt = "len += " + Wrap(m.kind, Ref(m), m.tag) + ";";
            out << "    // " << m.text << "\n";
            if (m.optional)
                out << "    if (" << Mem(m.name) << ")\n        " << stmt << "\n";
            else
                out << "    " << stmt << "\n";
        }
        out << "    return len;\n}\n\n";
    }
    out << "AsnLen " << n << "::BEnc(AsnBuf& b) const { return BEncLenTag(b, BEncContent(b), 0x30000000u); }\n\n";
}

// The decoding of one matched member, at `ind`.
void DecodeMember(std::ostream& out, const MemberModel& m, const std::string& ind) {
    if (m.explicitPair) {
        out << ind << "AsnLen outerLen = BDecLen(b, seqBytes, env);\n"
            << ind << "tag = BDecTag(b, seqBytes, env);\n"
            << ind << "if (tag != " << TagConst(m.innerTag) << ")\n"
            << ind << "    AsnDecodeFail(env, " << m.explicitCode << ", AsnUnexpectedTagText);\n";
    }
    out << ind << "len = BDecLen(b, seqBytes, env);\n";
    if (m.pointer)
        out << ind << Mem(m.name) << " = new " << m.className << ";\n";
    out << ind << Ref(m) << "BDecContent(b, tag, len, seqBytes, env);\n";
    if (m.explicitPair)
        out << ind << "if (outerLen == IndefiniteLen)\n"
            << ind << "    BDecEoc(b, seqBytes, env);\n";
}

void SeqDecode(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    out << "void " << n << "::BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {\n";
    if (c.members.empty()) {
        out << "    AsnEmptySeqContent(b, elmtLen, bytesDecoded, env, " << c.emptyCode << ");\n}\n\n";
    } else {
        out << "    AsnLen seqBytes = 0;\n    AsnLen len;\n";
        if (c.allOptional)
            out << "    if (elmtLen == 0)\n        return;\n";
        out << "    AsnTag tag = BDecTag(b, seqBytes, env);\n";
        if (c.allOptional)
            out << "    if (elmtLen == IndefiniteLen && tag == 0) {\n"
                << "        BDecEocSecondOctet(b, seqBytes);\n"
                << "        bytesDecoded += seqBytes;\n"
                << "        return;\n    }\n";
        for (size_t i = 0; i < c.members.size(); ++i) {
            const MemberModel& m = c.members[i];
            bool last = i + 1 == c.members.size();
            out << "\n    // " << m.text << "  -- " << m.tagOctets << "\n";
            std::string ind = "    ";
            if (m.optional) {
                out << "    if (" << Accepts(m) << ") {\n";
                ind = "        ";
            } else {
                out << "    if (!(" << Accepts(m) << "))\n"
                    << "        AsnDecodeFail(env, " << m.missingCode << ", AsnMissingElmtText);\n";
            }
            if (m.explicitPair && !m.optional) {
                out << "    {\n";
                ind += "    ";
            }
            DecodeMember(out, m, ind);
            if (!last) {
                if (i + 1 >= c.tailStart)
                    out << ind << "if (AsnSeqTailEnds(b, elmtLen, seqBytes, bytesDecoded, tag, env))\n"
                        << ind << "    return;\n";
                else
                    out << ind << "tag = BDecTag(b, seqBytes, env);\n";
            }
            if (m.explicitPair && !m.optional)
                out << "    }\n";
            if (m.optional)
                out << "    }\n";
        }
        out << "\n    AsnSeqEnd(b, elmtLen, seqBytes, bytesDecoded, env, " << c.discrepancyCode << ");\n}\n\n";
    }
    out << "void " << n << "::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {\n"
        << "    AsnDecWhole(*this, b, bytesDecoded, env, 0x30000000u, " << c.wrongTagCode << ", \"" << n
        << "::BDec: ERROR - wrong tag\");\n}\n\n";
}

void SeqPrintAndReach(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    out << "void " << n << "::Print(std::ostream& os) const {\n";
    if (c.members.empty()) {
        out << "    AsnPrintEmptySeq(os);\n}\n\n";
    } else {
        out << "    AsnPrintOpen(os);\n";
        bool track = c.allOptional && c.members.size() > 1;
        if (track)
            out << "    bool anySet = false;\n";
        for (size_t i = 0; i < c.members.size(); ++i) {
            const MemberModel& m = c.members[i];
            bool last = i + 1 == c.members.size();
            if (i >= c.tailStart && i > 0)
                out << "    if (" << Mem(m.name) << (c.allOptional ? " && anySet" : "") << ")\n"
                    << "        AsnPrintSeparator(os);\n";
            out << "    AsnPrintMember(os, \"" << m.name << "\", " << Mem(m.name) << ", " << (last ? "true" : "false")
                << ");\n";
            if (track && !last)
                out << "    anySet = anySet || " << Mem(m.name) << ";\n";
        }
        out << "    AsnPrintClose(os);\n}\n\n";
    }
    out << "const AsnTypeDesc* " << n << "::_getdesc() const { return &_desc; }\n\n";
    if (!c.members.empty()) {
        out << "AsnType* " << n << "::_getref(const char* name, bool" << (c.hasPointer ? " create" : "") << ") {\n";
        for (const MemberModel& m : c.members)
            out << "    if (AsnNameIs(name, \"" << m.name << "\"))\n        return "
                << (m.pointer ? "AsnRef(" + Mem(m.name) + ", create)" : "&" + Mem(m.name)) << ";\n";
        out << "    return nullptr;\n}\n\n";
    }
}

void SeqDesc(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    out << "const AsnSe_MemberDesc " << n << "::_mdescs[] = {\n";
    for (const MemberModel& m : c.members)
        out << "    AsnSe_MemberDesc(\"" << m.name << "\", " << DescOf(m) << ", "
            << (m.optional ? "true" : "false") << "),\n";
    out << "    AsnSe_MemberDesc(),\n};\n"
        << "const AsnSe_TypeDesc " << n << "::_desc(&" << ModuleDescName(c.module) << ", \"" << n
        << "\", false, AsnTypeDesc::SEQUENCE, AsnCreate<" << n << ">, " << n << "::_mdescs);\n";
}

// --- choices ---------------------------------------------------------------

void ChoiceSource(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    const MemberModel& firstAlt = c.members.front();
    out << n << "::" << n << "() { ConstructHelper(); }\n\n"
        << n << "::" << n << "(const " << n << "& o) : AsnType() {\n"
        << "    ConstructHelper();\n    *this = o;\n}\n\n"
        << n << "::~" << n << "() { delete Current(); }\n\n"
        << "void " << n << "::ConstructHelper() {\n"
        << "    choiceId = " << firstAlt.name << "Cid;\n"
        << "    " << firstAlt.name << " = nullptr;\n}\n\n"
        << "AsnType* " << n << "::Clone() const { return new (std::nothrow) " << n << "(*this); }\n\n";

    out << "AsnType* " << n << "::Current() const {\n    switch (choiceId) {\n";
    for (const MemberModel& m : c.members)
        out << "    case " << m.name << "Cid:\n        return " << Mem(m.name) << ";\n";
    out << "    default:\n        return nullptr;\n    }\n}\n\n";

    out << "void " << n << "::Select(int32_t id) {\n    delete Current();\n    choiceId = id;\n    switch (id) {\n";
    for (const MemberModel& m : c.members)
        out << "    case " << m.name << "Cid:\n        " << Mem(m.name) << " = new " << m.className
            << ";\n        break;\n";
    out << "    }\n}\n\n";

    out << n << "& " << n << "::operator=(const " << n << "& o) {\n"
        << "    if (this == &o)\n        return *this;\n"
        << "    Select(o.choiceId);\n    switch (choiceId) {\n";
    for (const MemberModel& m : c.members) {
        out << "    case " << m.name << "Cid:\n";
        if (!m.emptySeq)
            out << "        if (o." << m.name << ")\n            *" << Mem(m.name) << " = *o." << m.name << ";\n";
        out << "        break;\n";
    }
    out << "    }\n    return *this;\n}\n\n";

    out << n << "& " << n << "::operator|=(const " << n << "& o) {\n"
        << "    if (this == &o)\n        return *this;\n"
        << "    if (choiceId != o.choiceId)\n        return *this = o;\n"
        << "    switch (choiceId) {\n";
    for (const MemberModel& m : c.members) {
        if (m.emptySeq)
            continue;
        out << "    case " << m.name << "Cid:\n        "
            << (m.kind == Kind::Seq || m.kind == Kind::Choice ? "AsnMerge(" : "AsnMergeLeaf(") << Mem(m.name) << ", o."
            << m.name << ");\n        break;\n";
    }
    out << "    }\n    return *this;\n}\n\n";

    // An empty sequence needs no object to be written.
    out << "AsnLen " << n << "::BEncContent(AsnBuf& b) const {\n    switch (choiceId) {\n";
    for (const MemberModel& m : c.members) {
        out << "    case " << m.name << "Cid:\n        return ";
        if (m.emptySeq)
            out << "BEncLenTag(b, 0, " << TagConst(m.tag) << ");\n";
        else
            out << Wrap(m.kind, Mem(m.name) + "->", m.tag) << ";\n";
    }
    out << "    default:\n        return 0;\n    }\n}\n\n"
        << "AsnLen " << n << "::BEnc(AsnBuf& b) const { return BEncContent(b); }\n\n";

    out << "void " << n << "::BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {\n"
        << "    switch (tag) {\n";
    for (const MemberModel& m : c.members) {
        out << "    case " << TagConst(m.tag) << ":";
        if (TakesConstructed(m.kind))
            out << "\n    case " << TagConst(m.tag | 0x20000000u) << ":";
        out << "  // " << m.text << "\n";
        out << "        choiceId = " << m.name << "Cid;\n"
            << "        " << Mem(m.name) << " = new " << m.className << ";\n";
        if (m.explicitPair) {
            // A CHOICE alternative is wrapped in its own tag.
            out << "        {\n"
                << "            AsnTag innerTag = BDecTag(b, bytesDecoded, env);\n"
                << "            AsnLen innerLen = BDecLen(b, bytesDecoded, env);\n"
                << "            " << Mem(m.name) << "->BDecContent(b, innerTag, innerLen, bytesDecoded, env);\n"
                << "        }\n"
                << "        if (elmtLen == IndefiniteLen)\n"
                << "            BDecEoc(b, bytesDecoded, env);\n";
        } else {
            out << "        " << Mem(m.name) << "->BDecContent(b, tag, elmtLen, bytesDecoded, env);\n";
        }
        out << "        break;\n";
    }
    out << "    default:\n        AsnDecodeFail(env, " << c.choiceCode << ", AsnChoiceTagText);\n    }\n}\n\n"
        << "void " << n << "::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {\n"
        << "    AsnTag tag = BDecTag(b, bytesDecoded, env);\n"
        << "    AsnLen len = BDecLen(b, bytesDecoded, env);\n"
        << "    BDecContent(b, tag, len, bytesDecoded, env);\n}\n\n";

    out << "void " << n << "::Print(std::ostream& os) const {\n    switch (choiceId) {\n";
    for (const MemberModel& m : c.members)
        out << "    case " << m.name << "Cid:\n        AsnPrintChoice(os, \"" << m.name << "\", " << Mem(m.name)
            << ");\n        break;\n";
    out << "    }\n}\n\n"
        << "const AsnTypeDesc* " << n << "::_getdesc() const { return &_desc; }\n\n"
        << "AsnType* " << n << "::_getref(const char* name, bool create) {\n"
        << "    int32_t id = _desc.choicebyname(name);\n"
        << "    if (id < 0)\n        return nullptr;\n"
        << "    if (id == choiceId)\n        return Current();\n"
        << "    if (!create)\n        return nullptr;\n"
        << "    Select(id);\n    return Current();\n}\n\n";

    out << "const AsnChoiceMemberDesc " << n << "::_mdescs[] = {\n";
    for (const MemberModel& m : c.members)
        out << "    AsnChoiceMemberDesc(\"" << m.name << "\", " << DescOf(m) << ", " << m.id << "),\n";
    out << "    AsnChoiceMemberDesc(),\n};\n"
        << "const AsnChoiceTypeDesc " << n << "::_desc(&" << ModuleDescName(c.module) << ", \"" << n
        << "\", false, AsnTypeDesc::CHOICE, AsnCreate<" << n << ">, " << n << "::_mdescs);\n";
}

// --- lists -----------------------------------------------------------------

// The list machinery is the same for every element class: $L is the list,
// $E the element, $W the wrong-tag code and $U the element code.
const char* kListSource = R"(
$L::$L() : count(0), first(nullptr), curr(nullptr), last(nullptr) {}

$L::$L(const $L& o) : AsnType(), count(0), first(nullptr), curr(nullptr), last(nullptr) { *this = o; }

$L::~$L() {
    for (curr = first; curr;)
        RemoveCurrFromList();
}

$L& $L::operator=(const $L& o) {
    if (this == &o)
        return *this;
    for (curr = first; curr;)
        RemoveCurrFromList();
    for (AsnListElmt* p = o.first; p; p = p->next)
        AppendCopy(*p->elmt);
    curr = nullptr;
    return *this;
}

AsnType* $L::Clone() const { return new (std::nothrow) $L(*this); }

$E* $L::GoNext() {
    if (curr)
        curr = curr->next;
    return Curr();
}

$E* $L::GoPrev() {
    if (curr)
        curr = curr->prev;
    return Curr();
}

void $L::SetCurrElmt(unsigned long index) {
    curr = first;
    for (unsigned long i = 0; curr && i < index && curr->next; ++i)
        curr = curr->next;
}

unsigned long $L::GetCurrElmtIndex() const {
    unsigned long i = 0;
    for (AsnListElmt* p = first; p; p = p->next, ++i)
        if (p == curr)
            return i;
    return count;
}

$E* $L::Link(AsnListElmt* before, AsnListElmt* after, $E* elmt) {
    AsnListElmt* node = new AsnListElmt;
    node->prev = before;
    node->next = after;
    node->elmt = elmt;
    if (before)
        before->next = node;
    else
        first = node;
    if (after)
        after->prev = node;
    else
        last = node;
    ++count;
    return elmt;
}

$E* $L::Append() {
    Link(last, nullptr, new $E);
    curr = last;
    return curr->elmt;
}

$E* $L::Prepend() {
    Link(nullptr, first, new $E);
    curr = first;
    return curr->elmt;
}

$E* $L::InsertBefore() {
    if (!curr)
        return Prepend();
    AsnListElmt* at = curr;
    Link(at->prev, at, new $E);
    curr = at->prev;
    return curr->elmt;
}

$E* $L::InsertAfter() {
    if (!curr)
        return Append();
    AsnListElmt* at = curr;
    Link(at, at->next, new $E);
    curr = at->next;
    return curr->elmt;
}

$L& $L::AppendCopy(const $E& elmt) {
    *Link(last, nullptr, new $E) = elmt;
    return *this;
}

$L& $L::PrependCopy(const $E& elmt) {
    *Link(nullptr, first, new $E) = elmt;
    return *this;
}

$L& $L::InsertBeforeAndCopy(const $E& elmt) {
    if (curr)
        *Link(curr->prev, curr, new $E) = elmt;
    else
        PrependCopy(elmt);
    return *this;
}

$L& $L::InsertAfterAndCopy(const $E& elmt) {
    if (curr)
        *Link(curr, curr->next, new $E) = elmt;
    else
        AppendCopy(elmt);
    return *this;
}

// A node removed from the middle leaves its successor current.
void $L::RemoveCurrFromList() {
    if (!curr)
        return;
    AsnListElmt* gone = curr;
    if (gone->prev)
        gone->prev->next = gone->next;
    else
        first = gone->next;
    if (gone->next)
        gone->next->prev = gone->prev;
    else
        last = gone->prev;
    curr = gone->next ? gone->next : gone->prev;
    --count;
    if (count == 0)
        first = curr = last = nullptr;
    delete gone->elmt;
    delete gone;
}

// Elements stand on the wire in list order, so they are written last first.
AsnLen $L::BEncContent(AsnBuf& b) const {
    AsnLen len = 0;
    for (AsnListElmt* p = last; p; p = p->prev)
        len += BEncLenTag(b, p->elmt->BEncContent(b), 0x30000000u);
    return len;
}

AsnLen $L::BEnc(AsnBuf& b) const { return BEncLenTag(b, BEncContent(b), 0x31000000u); }

void $L::BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnLen listBytes = 0;
    for (;;) {
        if (elmtLen != IndefiniteLen && listBytes >= elmtLen) {
            bytesDecoded += listBytes;
            return;
        }
        AsnTag tag = BDecTag(b, listBytes, env);
        if (tag == 0 && elmtLen == IndefiniteLen) {
            BDecEocSecondOctet(b, listBytes);
            bytesDecoded += listBytes;
            return;
        }
        if (tag != 0x30000000u)
            AsnDecodeFail(env, $U, AsnUnexpectedTagText);
        AsnLen len = BDecLen(b, listBytes, env);
        Append()->BDecContent(b, tag, len, listBytes, env);
    }
}

void $L::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnDecWhole(*this, b, bytesDecoded, env, 0x31000000u, $W, "$L::BDec: ERROR - wrong tag");
}

void $L::Print(std::ostream& os) const {
    os << "{ -- SEQUENCE/SET OF -- " << std::endl;
    indentLevel = static_cast<unsigned short>(indentLevel + indentStep);
    for (AsnListElmt* p = first; p; p = p->next) {
        Indent(os, indentLevel);
        os << *p->elmt;
        if (p != last)
            os << ",";
        os << std::endl;
    }
    indentLevel = static_cast<unsigned short>(indentLevel - indentStep);
    Indent(os, indentLevel);
    os << "}";
}

const AsnTypeDesc* $L::_getdesc() const { return &_desc; }

// "N" is the element at N; "insert N" makes a new one there. The cursor
// moves to it.
AsnType* $L::_getref(const char* name, bool) {
    unsigned long n;
    switch (AsnListRefName(name, &n)) {
    case AsnListRefInsert:
        if (n == count)
            return Append();
        if (n > count)
            return nullptr;
        SetCurrElmt(n);
        return InsertBefore();
    case AsnListRefIndex:
        if (n >= count)
            return nullptr;
        SetCurrElmt(n);
        return curr->elmt;
    default:
        return nullptr;
    }
}

void $L::ForEach(const AsnType& list, AsnListTypeDesc::VisitFn visit, void* context) {
    for (AsnListElmt* p = static_cast<const $L&>(list).first; p; p = p->next)
        visit(*p->elmt, context);
}

const AsnListTypeDesc $L::_desc(&$M, "$L", false, AsnTypeDesc::SET_OF, AsnCreate<$L>, &$E::_desc, $L::ForEach);
)";

void Replace(std::string& s, const std::string& from, const std::string& to) {
    for (size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size()))
        s.replace(at, from.size(), to);
}

void ListSource(std::ostream& out, const ClassModel& c) {
    std::string s = kListSource;
    Replace(s, "$L", c.name);
    Replace(s, "$E", c.baseClass);
    Replace(s, "$M", ModuleDescName(c.module));
    Replace(s, "$W", std::to_string(c.wrongTagCode));
    Replace(s, "$U", std::to_string(c.listElmtCode));
    out << s.substr(1);
}

// --- aliases, enumerations, named bits -------------------------------------

void AliasSource(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    out << n << "::~" << n << "() {}\n"
        << "AsnType* " << n << "::Clone() const { return new (std::nothrow) " << n << "(*this); }\n"
        << "const AsnTypeDesc* " << n << "::_getdesc() const { return &_desc; }\n"
        << "const AsnAliasTypeDesc " << n << "::_desc(&" << ModuleDescName(c.module) << ", \"" << n
        << "\", false, AsnTypeDesc::ALIAS, AsnCreate<" << n << ">, &" << c.baseClass << "::_desc);\n";
}

void NamesSource(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    bool isEnum = c.shape == ClassModel::Enum;
    out << n << "::~" << n << "() {}\n"
        << "const AsnTypeDesc* " << n << "::_getdesc() const { return &_desc; }\n"
        << "const AsnNameDesc " << n << "::_nmdescs[] = {\n";
    for (const TypeExpr::Named& v : c.names)
        out << "    {\"" << v.name << "\", " << v.value << "},\n";
    out << "    {nullptr, -1},\n};\n"
        << "const " << (isEnum ? "AsnEnumTypeDesc " : "AsnNamesTypeDesc ") << n << "::_desc(&"
        << ModuleDescName(c.module) << ", \"" << n << "\", false, AsnTypeDesc::"
        << (isEnum ? "ENUMERATED" : "BIT_STRING") << ", AsnCreate<" << n << ">, " << n << "::_nmdescs);\n";
}

}  // namespace

std::string EmitSource(const Schema&, const ModuleModel& mod) {
    std::ostringstream out;
    out << "// Generated by zolc from " << mod.path << " (module " << mod.name
        << "). Do not edit: change the module or the compiler.\n"
        << "#include \"" << mod.stem << ".h\"\n\n"
        << "#include <new>\n#include <ostream>\n\n"
        << "namespace Zol {\n";
    for (const ClassModel* c : mod.classes) {
        out << "\n// " << c->name << "\n\n";
        switch (c->shape) {
        case ClassModel::Sequence:
            SeqBasics(out, *c);
            SeqEncode(out, *c);
            SeqDecode(out, *c);
            SeqPrintAndReach(out, *c);
            SeqDesc(out, *c);
            break;
        case ClassModel::Choice: ChoiceSource(out, *c); break;
        case ClassModel::List: ListSource(out, *c); break;
        case ClassModel::Alias: AliasSource(out, *c); break;
        case ClassModel::Enum:
        case ClassModel::NamedBits: NamesSource(out, *c); break;
        }
    }
    std::string types = mod.name + "Types";
    out << "\n// The module's types in the order of their definition.\n"
        << "static const AsnTypeDesc* const " << types << "[] = {\n";
    for (const ClassModel* c : mod.classes)
        out << "    &" << c->name << "::_desc,\n";
    out << "    nullptr,\n};\n"
        << "const AsnModuleDesc " << ModuleDescName(mod.name) << " = {\"" << mod.name << "\", " << types
        << "};\n\n}  // namespace Zol\n";
    return out.str();
}

std::string EmitModulesSource(const Schema& schema, const std::string& indexStem) {
    std::ostringstream out;
    out << "// Generated by zolc: every module of the protocol. Do not edit.\n"
        << "#include \"" << indexStem << ".h\"\n\n"
        << "namespace Zol {\n\n"
        << "const AsnModuleDesc* const AsnModules[] = {\n";
    for (const ModuleModel& m : schema.modules)
        out << "    &" << ModuleDescName(m.name) << ",\n";
    out << "    nullptr,\n};\n\n}  // namespace Zol\n";
    return out.str();
}

}  // namespace zolc

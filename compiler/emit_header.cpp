// Prints the header of one module: forward declarations, then each class
// after the classes it embeds or derives from, with every member echoing
// its schema line.
#include <functional>
#include <map>
#include <set>

#include "emit.h"

namespace zolc {

namespace {

const char* kCodecDecls =
    "    AsnLen BEncContent(AsnBuf& b) const;\n"
    "    AsnLen BEnc(AsnBuf& b) const override;\n"
    "    void BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env);\n"
    "    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;\n"
    "    void Print(std::ostream& os) const override;\n"
    "    const AsnTypeDesc* _getdesc() const override;\n";

void Comment(std::ostream& out, const ClassModel& c) {
    std::istringstream lines(c.comment);
    std::string line;
    while (std::getline(lines, line))
        out << "// " << line << "\n";
}

void MemberLine(std::ostream& out, const std::string& decl, const MemberModel& m) {
    std::string line = "    " + decl + ";";
    if (line.size() < 48)
        line.resize(48, ' ');
    else
        line += " ";
    out << line << "// " << m.text << "  -- " << m.tagOctets << "\n";
}

void Sequence(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    out << "class " << n << " : public AsnType {\npublic:\n";
    for (const MemberModel& m : c.members)
        MemberLine(out, m.className + (m.pointer ? "* " : " ") + m.name, m);
    if (!c.members.empty())
        out << "\n";
    out << "    " << n << "();\n"
        << "    " << n << "(const " << n << "& o);\n"
        << "    ~" << n << "() override;\n"
        << "    void ConstructHelper();\n"
        << "    AsnType* Clone() const override;\n"
        << "    " << n << "& operator=(const " << n << "& o);\n"
        << "    " << n << "& operator|=(const " << n << "& o);\n"
        << kCodecDecls;
    if (!c.members.empty())
        out << "    AsnType* _getref(const char* name, bool create = false) override;\n";
    out << "\n    static const AsnSe_TypeDesc _desc;\n"
        << "    static const AsnSe_MemberDesc _mdescs[];\n};\n";
}

void Choice(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    out << "class " << n << " : public AsnType {\npublic:\n"
        << "    enum ChoiceIdEnum : int32_t {\n";
    for (const MemberModel& m : c.members)
        out << "        " << m.name << "Cid = " << m.id << ",\n";
    out << "    };\n\n"
        << "    int32_t choiceId;  // the alternative in force\n"
        << "    union {\n";
    for (const MemberModel& m : c.members) {
        std::string line = "        " + m.className + "* " + m.name + ";";
        if (line.size() < 52)
            line.resize(52, ' ');
        else
            line += " ";
        out << line << "// " << m.text << "  -- " << m.tagOctets << "\n";
    }
    out << "    };\n\n"
        << "    " << n << "();\n"
        << "    " << n << "(const " << n << "& o);\n"
        << "    ~" << n << "() override;\n"
        << "    void ConstructHelper();\n"
        << "    AsnType* Clone() const override;\n"
        << "    " << n << "& operator=(const " << n << "& o);\n"
        << "    " << n << "& operator|=(const " << n << "& o);\n"
        << kCodecDecls
        << "    AsnType* _getref(const char* name, bool create = false) override;\n\n"
        << "    // Whether an element with this tag is one of the alternatives.\n"
        << "    static bool AcceptsTag(AsnTag tag) {\n"
        << "        switch (tag) {\n";
    for (const MemberModel& m : c.members) {
        out << "        case " << TagConst(m.tag) << ":\n";
        if (TakesConstructed(m.kind) && !m.explicitPair)
            out << "        case " << TagConst(m.tag | 0x20000000u) << ":\n";
    }
    out << "            return true;\n"
        << "        default:\n"
        << "            return false;\n"
        << "        }\n"
        << "    }\n\n"
        << "    static const AsnChoiceTypeDesc _desc;\n"
        << "    static const AsnChoiceMemberDesc _mdescs[];\n\n"
        << "private:\n"
        << "    // The value of the alternative in force, or null.\n"
        << "    AsnType* Current() const;\n"
        << "    // Deletes the value held and holds a new empty one of alternative `id`.\n"
        << "    void Select(int32_t id);\n"
        << "};\n";
}

void List(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    const std::string& e = c.baseClass;
    out << "class " << n << " : public AsnType {\npublic:\n"
        << "    struct AsnListElmt {\n"
        << "        AsnListElmt* next;\n"
        << "        AsnListElmt* prev;\n"
        << "        " << e << "* elmt;  // owned\n"
        << "        // Nodes come and go with their elements, from the same free lists.\n"
        << "        static void* operator new(std::size_t size) { return AsnType::operator new(size); }\n"
        << "        static void operator delete(void* p, std::size_t size) noexcept { AsnType::operator delete(p, size); }\n"
        << "    };\n\n"
        << "    uint32_t count;\n"
        << "    AsnListElmt* first;\n"
        << "    AsnListElmt* curr;  // the cursor; null when no element is current\n"
        << "    AsnListElmt* last;\n\n"
        << "    " << n << "();\n"
        << "    " << n << "(const " << n << "& o);\n"
        << "    ~" << n << "() override;\n"
        << "    " << n << "& operator=(const " << n << "& o);\n"
        << "    AsnType* Clone() const override;\n\n"
        << "    int32_t Count() const { return static_cast<int32_t>(count); }\n"
        << "    " << e << "* Curr() const { return curr ? curr->elmt : nullptr; }\n"
        << "    " << e << "* First() const { return count ? first->elmt : nullptr; }\n"
        << "    " << e << "* Last() const { return count ? last->elmt : nullptr; }\n"
        << "    " << e << "* Next() const { return curr && curr->next ? curr->next->elmt : nullptr; }\n"
        << "    " << e << "* Prev() const { return curr && curr->prev ? curr->prev->elmt : nullptr; }\n"
        << "    " << e << "* GoNext();\n"
        << "    " << e << "* GoPrev();\n"
        << "    void SetCurrToFirst() { curr = first; }\n"
        << "    void SetCurrToLast() { curr = last; }\n"
        << "    void SetCurrElmt(unsigned long index);\n"
        << "    unsigned long GetCurrElmtIndex() const;\n"
        << "    " << e << "* Append();\n"
        << "    " << e << "* Prepend();\n"
        << "    " << e << "* InsertBefore();\n"
        << "    " << e << "* InsertAfter();\n"
        << "    " << n << "& AppendCopy(const " << e << "& elmt);\n"
        << "    " << n << "& PrependCopy(const " << e << "& elmt);\n"
        << "    " << n << "& InsertBeforeAndCopy(const " << e << "& elmt);\n"
        << "    " << n << "& InsertAfterAndCopy(const " << e << "& elmt);\n"
        << "    void RemoveCurrFromList();\n\n"
        << kCodecDecls
        << "    AsnType* _getref(const char* name, bool create = false) override;\n\n"
        << "    static const AsnListTypeDesc _desc;\n"
        << "    // Calls `visit` with each element of `list`, first to last: the descriptor's walk.\n"
        << "    static void ForEach(const AsnType& list, AsnListTypeDesc::VisitFn visit, void* context);\n\n"
        << "private:\n"
        << "    // Links a new node holding `elmt` between `before` and `after`.\n"
        << "    " << e << "* Link(AsnListElmt* before, AsnListElmt* after, " << e << "* elmt);\n"
        << "};\n";
}


void Alias(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    const std::string& b = c.baseClass;
    out << "struct " << n << " : public " << b << " {\n"
        << "    " << n << "() {}\n";
    Kind k = c.kind;
    if (k == Kind::Octs) {
        out << "    " << n << "(const char* str) : " << b << "(str) {}\n"
            << "    " << n << "(const char* str, size_t len) : " << b << "(str, len) {}\n"
            << "    " << n << "(const " << b << "& o) : " << b << "(o) {}\n"
            << "    " << n << "(const " << n << "& o) : " << b << "(o) {}\n"
            << "    " << n << "& operator=(const " << n << "& o) {\n"
            << "        ReSet(o);\n        return *this;\n    }\n"
            << "    " << n << "& operator=(const char* str) {\n"
            << "        ReSet(str);\n        return *this;\n    }\n";
    } else if (k == Kind::Int || k == Kind::Enum || k == Kind::Bool) {
        out << "    " << n << "(" << (k == Kind::Bool ? "bool" : "int32_t") << " v) : " << b << "(v) {}\n"
            << "    " << n << "(const " << n << "& o) : " << b << "(o) {}\n"
            << "    " << n << "& operator=(const " << n << "& o) {\n"
            << "        " << b << "::operator=(o);\n        return *this;\n    }\n"
            << "    using " << b << "::operator=;\n";
    } else {
        out << "    " << n << "(const " << n << "& o) : " << b << "(o) {}\n"
            << "    " << n << "& operator=(const " << n << "& o) {\n"
            << "        " << b << "::operator=(o);\n        return *this;\n    }\n";
    }
    out << "    ~" << n << "() override;\n"
        << "    AsnType* Clone() const override;\n"
        << "    const AsnTypeDesc* _getdesc() const override;\n\n"
        << "    static const AsnAliasTypeDesc _desc;\n};\n";
}

void Names(std::ostream& out, const ClassModel& c) {
    out << "    enum : int32_t {\n";
    for (const TypeExpr::Named& v : c.names)
        out << "        " << v.name << " = " << v.value << ",\n";
    out << "    };\n\n";
}

void Enum(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    out << "class " << n << " : public AsnEnum {\npublic:\n";
    Names(out, c);
    out << "    " << n << "() {}\n"
        << "    " << n << "(int32_t v) : AsnEnum(v) {}\n"
        << "    " << n << "(const " << n << "& o) : AsnEnum(o) {}\n"
        << "    " << n << "& operator=(const " << n << "& o) {\n"
        << "        AsnEnum::operator=(o);\n        return *this;\n    }\n"
        << "    using AsnEnum::operator=;\n"
        << "    ~" << n << "() override;\n"
        << "    const AsnTypeDesc* _getdesc() const override;\n\n"
        << "    static const AsnEnumTypeDesc _desc;\n"
        << "    static const AsnNameDesc _nmdescs[];\n};\n";
}

void NamedBits(std::ostream& out, const ClassModel& c) {
    const std::string& n = c.name;
    out << "class " << n << " : public AsnBits {\npublic:\n";
    Names(out, c);
    out << "    " << n << "() {}\n"
        << "    explicit " << n << "(size_t numBits) : AsnBits(numBits) {}\n"
        << "    " << n << "(const char* bitOcts, size_t numBits) : AsnBits(bitOcts, numBits) {}\n"
        << "    " << n << "(const AsnBits& b) : AsnBits(b) {}\n"
        << "    " << n << "(const " << n << "& b) : AsnBits(b) {}\n"
        << "    " << n << "& operator=(const " << n << "& b) {\n"
        << "        AsnBits::operator=(b);\n        return *this;\n    }\n"
        << "    ~" << n << "() override;\n"
        << "    const AsnTypeDesc* _getdesc() const override;\n\n"
        << "    static const AsnNamesTypeDesc _desc;\n"
        << "    static const AsnNameDesc _nmdescs[];\n};\n";
}

const char* ShapeText(const ClassModel& c) {
    switch (c.shape) {
    case ClassModel::Sequence: return "SEQUENCE";
    case ClassModel::Choice: return "CHOICE";
    case ClassModel::List: return "SET OF";
    case ClassModel::Enum: return "ENUMERATED";
    case ClassModel::NamedBits: return "BIT STRING";
    case ClassModel::Alias: return nullptr;
    }
    return nullptr;
}

}  // namespace

std::string EmitHeader(const Schema&, const ModuleModel& mod) {
    std::ostringstream out;
    out << "// Generated by zolc from " << mod.path << " (module " << mod.name
        << "). Do not edit: change the module or the compiler.\n"
        << "#pragma once\n\n"
        << "#include <cstddef>\n#include <cstdint>\n#include <iosfwd>\n\n"
        << "#include \"zol/ber/pattern.h\"\n"
        << "#include \"zol/meta/asn_desc.h\"\n"
        << "#include \"zol/universal/asn_bits.h\"\n"
        << "#include \"zol/universal/asn_int.h\"\n"
        << "#include \"zol/universal/asn_octs.h\"\n"
        << "#include \"zol/universal/asn_real.h\"\n";
    for (const std::string& imp : mod.imports)
        out << "#include \"" << imp << ".h\"\n";
    out << "\nnamespace Zol {\n\n"
        << "extern const AsnModuleDesc " << ModuleDescName(mod.name) << ";\n\n";
    for (const ClassModel* c : mod.classes)
        out << (c->shape == ClassModel::Alias ? "struct " : "class ") << c->name << ";\n";

    // A class follows the classes of this module that it derives from or
    // holds by value; everything else it needs is declared above.
    std::set<const ClassModel*> done;
    std::function<void(const ClassModel*)> emit = [&](const ClassModel* c) {
        if (done.count(c))
            return;
        done.insert(c);
        std::vector<const ClassModel*> needs;
        if (c->shape == ClassModel::Alias && c->base)
            needs.push_back(c->base);
        for (const MemberModel& m : c->members)
            if (!m.pointer && m.type && c->shape == ClassModel::Sequence)
                needs.push_back(m.type);
        for (const ClassModel* d : needs)
            if (d->module == mod.name)
                emit(d);
        out << "\n";
        Comment(out, *c);
        if (const char* shape = ShapeText(*c))
            out << "// " << c->name << " ::= " << shape << "\n";
        else
            out << "// " << c->name << " ::= " << (c->base ? c->baseClass : KindText(c->kind)) << "\n";
        switch (c->shape) {
        case ClassModel::Sequence: Sequence(out, *c); break;
        case ClassModel::Choice: Choice(out, *c); break;
        case ClassModel::List: List(out, *c); break;
        case ClassModel::Alias: Alias(out, *c); break;
        case ClassModel::Enum: Enum(out, *c); break;
        case ClassModel::NamedBits: NamedBits(out, *c); break;
        }
    };
    for (const ClassModel* c : mod.classes)
        emit(c);
    out << "\n}  // namespace Zol\n";
    return out.str();
}

std::string EmitModulesHeader(const Schema& schema) {
    std::ostringstream out;
    out << "// Generated by zolc: every module of the protocol. Do not edit.\n"
        << "#pragma once\n\n";
    for (const ModuleModel& m : schema.modules)
        out << "#include \"" << m.stem << ".h\"\n";
    out << "\nnamespace Zol {\n\n"
        << "// The descriptors of all modules, in an order where each module follows\n"
        << "// those it imports from; the array ends with a null pointer.\n"
        << "extern const AsnModuleDesc* const AsnModules[];\n\n"
        << "}  // namespace Zol\n";
    return out.str();
}

}  // namespace zolc

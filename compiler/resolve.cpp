// Builds the model of every type once: alias chains followed to their end,
// and every decision about a member that the generated code carries out:
// storage, accepted tags, how it is written, merged and printed, what the
// decoder does after it, and the failure codes, numbered per module from
// AsnFirstGeneratedCode downward in definition order.
#include <functional>
#include <map>
#include <set>

#include "model.h"
#include "zol/ber/asn_constants.h"

namespace zolc {

namespace {

const std::set<std::string> kCppWords = {
    "alignas", "alignof", "and", "and_eq", "asm", "auto", "bitand", "bitor", "bool", "break",
    "case", "catch", "char", "class", "compl", "const", "constexpr", "const_cast", "continue",
    "decltype", "default", "delete", "do", "double", "dynamic_cast", "else", "enum", "explicit",
    "export", "extern", "false", "float", "for", "friend", "goto", "if", "inline", "int", "long",
    "mutable", "namespace", "new", "noexcept", "not", "not_eq", "nullptr", "operator", "or",
    "or_eq", "private", "protected", "public", "register", "reinterpret_cast", "return", "short",
    "signed", "sizeof", "static", "static_assert", "static_cast", "struct", "switch", "template",
    "this", "thread_local", "throw", "true", "try", "typedef", "typeid", "typename", "union",
    "unsigned", "using", "virtual", "void", "volatile", "wchar_t", "while", "xor", "xor_eq"};

// Names a class of the runtime already uses for its own members.
const std::set<std::string> kValueMemberNames = {"value", "bitLen", "bits", "Set", "ReSet",
                                                 "Clone", "Print", "PrintTo", "BEnc", "BDec", "_desc",
                                                 "_nmdescs", "_getdesc", "_getref"};

// Names the runtime declares outside the namespace and the generated code
// uses unqualified: a generated class of the same name would hide them.
const std::set<std::string> kRuntimeNames = {
    "AsnType", "AsnInt", "AsnEnum", "AsnBool", "AsnNull", "AsnReal", "AsnOcts", "AsnBits",
    "AsnOid", "AsnAny", "AsnBuf", "AsnTag", "AsnLen", "DecodeEnv", "IndefiniteLen",
    "AsnTypeDesc", "AsnNamesTypeDesc", "AsnEnumTypeDesc", "AsnNameDesc", "AsnMemberDesc",
    "AsnChoiceMemberDesc", "AsnSe_MemberDesc", "AsnMembersTypeDesc", "AsnChoiceTypeDesc",
    "AsnSe_TypeDesc", "AsnListTypeDesc", "AsnAliasTypeDesc", "AsnModuleDesc", "AsnModules",
    "AsnBuffer", "Indent", "BDecTag", "BDecLen", "BDecEoc", "BDecEocSecondOctet", "BEncLen",
    "BEncTag", "BEncLenTag", "BEncShortLenTag", "AsnDecodeFail", "AsnWarn", "AsnSeqTailEnds",
    "AsnSeqEnd", "AsnEmptySeqContent", "AsnDecWhole", "AsnPrintOpen", "AsnPrintClose",
    "AsnPrintEmptySeq", "AsnPrintSeparator", "AsnPrintMember", "AsnPrintChoice", "AsnAssign",
    "AsnMergeLeaf", "AsnMerge", "AsnCopy", "AsnCopyAlt", "AsnRef", "AsnCreate", "AsnChoiceIdOf", "AsnNameIs", "AsnListRefName",
    "AsnListRefKind", "AsnListRefNone", "AsnListRefIndex", "AsnListRefInsert",
    "AsnMissingElmtText", "AsnLengthDiscrepancyText", "AsnUnexpectedTagText", "AsnChoiceTagText",
    "AsnEmptySequenceText", "AsnConstructedBit", "AsnElmtOf", "AsnListLink", "AsnListRemoveCurr",
    "AsnListClear", "AsnListAssign", "AsnListSetCurr", "AsnListCurrIndex", "AsnListInsert",
    "AsnListInsertBefore", "AsnListInsertAfter", "AsnListCopyBefore", "AsnListCopyAfter",
    "AsnListEncContent", "AsnListDecContent", "AsnListPrint", "AsnListRef", "AsnListForEach",
    "AsnPrintOut", "AsnDecodeNew", "AsnDecodeOutOfMemory", "AsnClone", "AsnClearMember", "AsnCopyEmbedded",
    "AsnListLinkOrNull", "AsnListInsertOrNull", "AsnThrowBadAlloc"};

void CheckCppName(const Where& where, const std::string& name, const char* what) {
    if (kCppWords.count(name))
        SchemaError(where, std::string(what) + " '" + name + "' is a C++ keyword");
    if (kRuntimeNames.count(name))
        SchemaError(where, std::string(what) + " '" + name + "' is a name of the runtime");
}

uint32_t UniversalTag(Kind k) {
    switch (k) {
    case Kind::Int: return AsnIntegerTag;
    case Kind::Enum: return AsnEnumeratedTag;
    case Kind::Bool: return AsnBooleanTag;
    case Kind::Real: return AsnRealTag;
    case Kind::Null: return AsnNullTag;
    case Kind::Octs: return AsnOctetStringTag;
    case Kind::Bits: return AsnBitStringTag;
    case Kind::Seq: return AsnSequenceTag;
    case Kind::List: return AsnSetTag;
    case Kind::Choice: return 0;
    }
    return 0;
}

// A context-specific tag as its identifier octets, left-justified: the
// number in the first octet, or in one or two octets after a first one
// whose number bits are all set.
uint32_t ContextTag(const Where& where, long number, bool constructed) {
    const uint32_t context = 0x80000000u, longForm = 0x1F000000u, more = 0x80u;
    uint32_t first = context | (constructed ? AsnConstructedBit : 0);
    if (number < 0)
        SchemaError(where, "a tag number cannot be negative");
    if (number < 31)
        return first | uint32_t(number) << 24;
    if (number < 128)
        return first | longForm | uint32_t(number) << 16;
    if (number < 16384)
        return first | longForm | (more | uint32_t(number >> 7)) << 16 | uint32_t(number & 0x7F) << 8;
    SchemaError(where, "tag number " + std::to_string(number) + " is too large for three octets");
}

bool Constructed(Kind k) { return k == Kind::Seq || k == Kind::List || k == Kind::Choice; }

// Integers, enumerations, booleans, reals and nulls have short content,
// whose length is one raw octet: the whole element is written in one step.
bool ShortContent(Kind k) {
    return k == Kind::Int || k == Kind::Enum || k == Kind::Bool || k == Kind::Real || k == Kind::Null;
}

// The tags a member takes: strings and bit strings also arrive in
// constructed form; an untagged CHOICE takes what its alternatives take.
std::vector<uint32_t> Accepts(const MemberModel& r) {
    if (r.kind == Kind::Choice && !r.explicitPair)
        return {};
    if ((r.kind == Kind::Octs || r.kind == Kind::Bits) && !r.explicitPair)
        return {r.tag, r.tag | AsnConstructedBit};
    return {r.tag};
}

const char* UniversalClass(TypeExpr::Kind k, Kind* kind) {
    *kind = Kind::Int;
    switch (k) {
    case TypeExpr::Integer: *kind = Kind::Int; return "AsnInt";
    case TypeExpr::Boolean: *kind = Kind::Bool; return "AsnBool";
    case TypeExpr::Real: *kind = Kind::Real; return "AsnReal";
    case TypeExpr::Null: *kind = Kind::Null; return "AsnNull";
    case TypeExpr::OctetString: *kind = Kind::Octs; return "AsnOcts";
    case TypeExpr::BitString: *kind = Kind::Bits; return "AsnBits";
    default: return nullptr;
    }
}

class Resolver {
public:
    explicit Resolver(std::vector<Module>& modules) : modules_(modules) {}

    Schema Run() {
        IndexTypes();
        for (Module& m : modules_)
            for (TypeAssignment& t : m.types)
                KindOf(m, t);
        for (Module& m : modules_)
            for (TypeAssignment& t : m.types)
                BuildClass(m, t);
        for (Module& m : modules_)
            NumberCodes(m);
        OrderModules();
        return std::move(schema_);
    }

private:
    struct Entry {
        Module* module;
        TypeAssignment* type;
        TypeModel* model;
        int state = 0;  // 0 unvisited, 1 resolving, 2 done
    };

    void IndexTypes() {
        for (Module& m : modules_) {
            if (byModule_.count(m.name))
                SchemaError(m.where, "module " + m.name + " is defined twice");
            byModule_[m.name] = &m;
            for (TypeAssignment& t : m.types) {
                auto found = byName_.find(t.name);
                if (found != byName_.end())
                    SchemaError(t.where, "type " + t.name + " is already defined at " +
                                             found->second.type->where.file + ":" +
                                             std::to_string(found->second.type->where.line));
                schema_.store.emplace_back(new TypeModel());
                TypeModel* c = schema_.store.back().get();
                c->name = t.name;
                c->module = m.name;
                c->comment = t.comment;
                c->where = t.where;
                byName_[t.name] = {&m, &t, c};
            }
        }
        for (Module& m : modules_) {
            std::set<std::string>& visible = visible_[m.name];
            for (TypeAssignment& t : m.types)
                visible.insert(t.name);
            for (Import& imp : m.imports) {
                auto mod = byModule_.find(imp.module);
                if (mod == byModule_.end())
                    SchemaError(imp.where, "module " + imp.module + " is not among the modules given");
                for (const std::string& n : imp.names) {
                    auto e = byName_.find(n);
                    if (e == byName_.end() || e->second.module != mod->second)
                        SchemaError(imp.where, "module " + imp.module + " defines no type " + n);
                    if (!visible.insert(n).second)
                        SchemaError(imp.where, "type " + n + " is already visible in " + m.name);
                }
            }
        }
    }

    Entry& Lookup(const Module& from, const std::string& name, const Where& where) {
        if (!visible_[from.name].count(name))
            SchemaError(where, "unknown type " + name + " (neither defined in " + from.name +
                                   " nor imported)");
        return byName_[name];
    }

    // The kind at the end of the alias chain; alias cycles are errors.
    Kind KindOf(Module& m, TypeAssignment& t) {
        Entry& e = byName_[t.name];
        if (e.state == 2)
            return e.model->kind;
        if (e.state == 1)
            SchemaError(t.where, "type " + t.name + " is defined in terms of itself");
        e.state = 1;
        TypeModel* c = e.model;
        const TypeExpr& x = t.type;
        Kind universal = Kind::Int;
        switch (x.kind) {
        case TypeExpr::Sequence: c->shape = TypeModel::Sequence; c->kind = Kind::Seq; c->tag = AsnSequenceTag; break;
        case TypeExpr::Choice: c->shape = TypeModel::Choice; c->kind = Kind::Choice; break;
        case TypeExpr::SetOf: c->shape = TypeModel::List; c->kind = Kind::List; c->tag = AsnSetTag; break;
        case TypeExpr::Enumerated: c->shape = TypeModel::Enum; c->kind = Kind::Enum; break;
        case TypeExpr::Ref: {
            Entry& base = Lookup(m, x.refName, x.where);
            c->shape = TypeModel::Alias;
            c->kind = KindOf(*base.module, *base.type);
            c->baseClass = base.model->name;
            c->base = base.model;
            break;
        }
        default:
            if (x.kind == TypeExpr::BitString && !x.names.empty()) {
                c->shape = TypeModel::NamedBits;
                c->kind = Kind::Bits;
            } else {
                c->shape = TypeModel::Alias;
                c->baseClass = UniversalClass(x.kind, &universal);
                c->kind = universal;
            }
        }
        e.state = 2;
        return c->kind;
    }

    MemberModel Member(Module& m, const TypeExpr::Member& mm, bool inChoice) {
        MemberModel r;
        r.name = mm.name;
        r.text = mm.text;
        r.optional = mm.optional;
        CheckCppName(mm.where, mm.name, inChoice ? "alternative name" : "member name");
        bool emptySeq = false;  // the type is an empty sequence (a choice's `null`)
        if (mm.type.kind == TypeExpr::Ref) {
            Entry& e = Lookup(m, mm.type.refName, mm.type.where);
            r.className = e.model->name;
            r.type = e.model;
            r.kind = e.model->kind;
            const TypeModel* end = e.model;
            while (end->shape == TypeModel::Alias && end->base)
                end = end->base;
            emptySeq = end->IsEmptySequence();
        } else {
            r.className = UniversalClass(mm.type.kind, &r.kind);
            r.type = nullptr;
        }
        // A choice holds its alternatives by pointer in a union; a sequence
        // holds optional rows and composites by pointer, the rest embedded.
        r.pointer = inChoice || r.optional || r.kind == Kind::Seq || r.kind == Kind::Choice;
        if (r.kind == Kind::List && r.optional)
            SchemaError(mm.where, "a list member cannot be OPTIONAL: lists are held by value");

        bool isExplicit = mm.tagged && (mm.tagging == TypeExpr::Member::Explicit ||
                                        (mm.tagging == TypeExpr::Member::Default && m.explicitTags) ||
                                        r.kind == Kind::Choice);
        if (!mm.tagged) {
            r.tag = UniversalTag(r.kind);
        } else if (isExplicit) {
            if (r.kind == Kind::Choice && !inChoice)
                SchemaError(mm.where, "a tagged CHOICE member of a SEQUENCE is not taken");
            if (r.kind != Kind::Choice && inChoice)
                SchemaError(mm.where, "an EXPLICIT alternative is not taken");
            r.explicitPair = true;
            r.tag = ContextTag(mm.where, mm.tagNumber, true);
            r.innerTag = UniversalTag(r.kind);
        } else {
            r.tag = ContextTag(mm.where, mm.tagNumber, Constructed(r.kind));
        }
        r.id = mm.tagNumber;
        r.tagOctets = HexTag(r.tag);
        if (r.explicitPair && r.innerTag)
            r.tagOctets += " " + HexTag(r.innerTag);
        r.accepts = Accepts(r);

        // An empty sequence alternative needs no object to be written or copied.
        using M = MemberModel;
        bool emptyAlternative = inChoice && emptySeq;
        bool composite = r.kind == Kind::Seq || r.kind == Kind::Choice;
        r.encode = emptyAlternative           ? M::Encode::Empty
                   : r.kind == Kind::Choice   ? M::Encode::Choice
                   : ShortContent(r.kind)     ? M::Encode::Tlv
                                              : M::Encode::ContentLen;
        r.merge = emptyAlternative ? M::Merge::None
                  : !r.pointer     ? M::Merge::Assign
                  : composite      ? M::Merge::Deep
                                   : M::Merge::Leaf;
        return r;
    }

    void BuildClass(Module& m, TypeAssignment& t) {
        TypeModel* c = byName_[t.name].model;
        CheckCppName(t.where, t.name, "type name");
        switch (c->shape) {
        case TypeModel::Sequence:
        case TypeModel::Choice: {
            std::set<std::string> names;
            std::map<uint32_t, std::string> tags;
            std::map<long, std::string> ids;
            for (const TypeExpr::Member& mm : t.type.members) {
                if (!names.insert(mm.name).second)
                    SchemaError(mm.where, "'" + mm.name + "' is already a member of " + t.name);
                MemberModel r = Member(m, mm, c->shape == TypeModel::Choice);
                if (c->shape == TypeModel::Choice) {
                    // The class holds `choiceId` and names each id `<alternative>Cid`.
                    if (mm.name == "choiceId")
                        SchemaError(mm.where, "alternative name 'choiceId' is the member that holds the id");
                    for (const MemberModel& other : c->members) {
                        bool longer = mm.name == other.name + "Cid";
                        if (longer || other.name == mm.name + "Cid")
                            SchemaError(mm.where, "the id constant of '" + (longer ? other.name : mm.name) +
                                                      "' would be named like the alternative '" +
                                                      (longer ? mm.name : other.name) + "'");
                    }
                    if (!ids.emplace(r.id, r.name).second)
                        SchemaError(mm.where, "id " + std::to_string(r.id) + " is already that of '" +
                                                  ids[r.id] + "'");
                }
                c->hasPointer = c->hasPointer || r.pointer;
                c->members.push_back(r);
            }
            if (c->shape == TypeModel::Sequence)
                PlaceRows(c);
            else
                c->tagShift = TagShift(*c);
            break;
        }
        case TypeModel::List: {
            Entry& e = Lookup(m, t.type.refName, t.type.where);
            if (e.model->kind != Kind::Seq)
                SchemaError(t.type.where, "the elements of a SET OF must be a SEQUENCE type");
            c->baseClass = e.model->name;
            c->base = e.model;
            break;
        }
        case TypeModel::Enum:
        case TypeModel::NamedBits: {
            std::set<std::string> names;
            std::map<long, std::string> values;
            for (const TypeExpr::Named& n : t.type.names) {
                CheckCppName(n.where, n.name, "name");
                if (kValueMemberNames.count(n.name))
                    SchemaError(n.where, "name '" + n.name + "' clashes with a member of the value class");
                if (!names.insert(n.name).second)
                    SchemaError(n.where, "name '" + n.name + "' is given twice");
                if (c->shape == TypeModel::NamedBits && n.value < 0)
                    SchemaError(n.where, "a bit position cannot be negative");
                if (!values.emplace(n.value, n.name).second)
                    SchemaError(n.where, std::string(c->shape == TypeModel::NamedBits ? "bit " : "value ") +
                                             std::to_string(n.value) + " is already that of '" + values[n.value] + "'");
            }
            c->names = t.type.names;
            break;
        }
        case TypeModel::Alias:
            break;
        }
    }

    // The shift of a choice's tag switch. Its cases are then small numbers
    // close together, which the C++ compiler makes a jump table of, where
    // whole tag words (0xBF830100, 0xBF830200, ...) became a tree of
    // comparisons. A tag read maps to an alternative's case only if it is
    // that tag: the bits shifted out are zero in every tag of one or two
    // octets, and a longer tag read keeps a continuation bit above the
    // shift, which no alternative of one or two octets has.
    static int TagShift(const TypeModel& c) {
        int shift = 24;
        for (const MemberModel& m : c.members)
            for (uint32_t tag : m.accepts)
                while (shift > 8 && (tag & ((1u << shift) - 1)))
                    shift -= 8;
        return shift;
    }

    // The decisions that follow from a row's place in its sequence: the
    // rows of the trailing optional run may each end the sequence and
    // print their separator only when set.
    static void PlaceRows(TypeModel* c) {
        size_t n = c->members.size();
        size_t tail = n;
        while (tail > 0 && c->members[tail - 1].optional)
            --tail;
        c->allOptional = tail == 0 && n > 0;
        c->tracksSet = c->allOptional && n > 1;
        for (size_t i = 0; i < n; ++i) {
            MemberModel& r = c->members[i];
            r.last = i + 1 == n;
            if (r.last)
                r.next = MemberModel::Next::End;
            else if (i + 1 >= tail)
                r.next = MemberModel::Next::TailMayEnd;
            else
                r.next = MemberModel::Next::ReadTag;
            if (i >= tail && i > 0)
                r.separator = c->allOptional ? MemberModel::Separator::IfSetAfterAny : MemberModel::Separator::IfSet;
            r.noteSet = c->tracksSet && !r.last;
        }
    }

    void NumberCodes(Module& m) {
        int next = AsnFirstGeneratedCode;
        for (TypeAssignment& t : m.types) {
            TypeModel* c = byName_[t.name].model;
            switch (c->shape) {
            case TypeModel::Sequence:
                if (c->members.empty()) {
                    c->emptyCode = next--;
                } else {
                    for (MemberModel& r : c->members) {
                        if (!r.optional)
                            r.missingCode = next--;
                        if (r.explicitPair)
                            r.explicitCode = next--;
                    }
                    c->discrepancyCode = next--;
                }
                c->wrongTagCode = next--;
                break;
            case TypeModel::Choice:
                c->choiceCode = next--;
                break;
            case TypeModel::List:
                c->wrongTagCode = next--;
                c->listElmtCode = next--;
                break;
            default:
                break;
            }
        }
    }

    // Modules in an order where each follows those it imports from.
    void OrderModules() {
        std::map<std::string, int> state;
        std::function<void(Module&)> visit = [&](Module& m) {
            int& s = state[m.name];
            if (s == 2)
                return;
            if (s == 1)
                SchemaError(m.where, "module " + m.name + " imports from itself through a cycle");
            s = 1;
            ModuleModel mm;
            for (Import& imp : m.imports) {
                visit(*byModule_[imp.module]);
                mm.imports.push_back(imp.module);
            }
            mm.name = m.name;
            mm.path = m.path;
            mm.stem = m.path.substr(0, m.path.rfind('.'));
            for (TypeAssignment& t : m.types)
                mm.classes.push_back(byName_[t.name].model);
            schema_.modules.push_back(mm);
            s = 2;
        };
        for (Module& m : modules_)
            visit(m);
        for (ModuleModel& mm : schema_.modules)
            for (std::string& imp : mm.imports)
                for (ModuleModel& other : schema_.modules)
                    if (other.name == imp)
                        imp = other.stem;
    }

    std::vector<Module>& modules_;
    Schema schema_;
    std::map<std::string, Module*> byModule_;
    std::map<std::string, Entry> byName_;
    std::map<std::string, std::set<std::string>> visible_;
};

}  // namespace

Schema Resolve(std::vector<Module>& modules) { return Resolver(modules).Run(); }

std::string HexTag(uint32_t tag) {
    static const char hex[] = "0123456789ABCDEF";
    if (tag == 0)
        return "-";
    std::string out;
    int octets = 1;
    if ((tag & 0x1F000000u) == 0x1F000000u)
        octets = (tag & 0x00800000u) ? 3 : 2;
    for (int i = 0; i < octets; ++i) {
        unsigned v = (tag >> (24 - 8 * i)) & 0xFF;
        if (i)
            out += ' ';
        out += hex[v >> 4];
        out += hex[v & 15];
    }
    return out;
}

const char* KindText(Kind k) {
    switch (k) {
    case Kind::Int: return "INTEGER";
    case Kind::Enum: return "ENUMERATED";
    case Kind::Bool: return "BOOLEAN";
    case Kind::Real: return "REAL";
    case Kind::Null: return "NULL";
    case Kind::Octs: return "OCTET STRING";
    case Kind::Bits: return "BIT STRING";
    case Kind::Seq: return "SEQUENCE";
    case Kind::Choice: return "CHOICE";
    case Kind::List: return "SET OF";
    }
    return "";
}

}  // namespace zolc

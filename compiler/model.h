// The resolved model of every type: what each class is, and for each member
// every decision the generated code carries out (how it is stored, which
// tags it takes, how it is written, copied, merged and printed, and which
// failure codes it owns). Built once by the resolver; the emitters only
// print it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ast.h"

namespace zolc {

// What a type is at the end of its alias chain.
enum class Kind { Int, Enum, Bool, Real, Null, Octs, Bits, Seq, Choice, List };

struct TypeModel;

struct MemberModel {
    // How the member's element is written.
    enum class Encode {
        Tlv,         // short content: the whole element in one step
        ContentLen,  // the content, then its length and tag in front of it
        Choice,      // a CHOICE writes its own element
        Empty,       // an empty sequence alternative: a zero length under its tag, no object
    };
    // How merging a value into the owner treats the member.
    enum class Merge {
        Assign,  // embedded: the source's value replaces it
        Leaf,    // pointer to a leaf: a set source replaces it
        Deep,    // pointer to a sequence or choice: a set source is merged into it
        None,    // an empty sequence alternative holds nothing to copy or merge
    };
    // What a sequence's decoder does after the member.
    enum class Next {
        ReadTag,     // read the tag of the next member
        TailMayEnd,  // the sequence may end here; otherwise read the next tag
        End,         // the last member: the sequence's end follows
    };
    // What a sequence's printer writes before the member.
    enum class Separator {
        None,           // the row before ended its own line
        IfSet,          // a set optional member ends the line before it
        IfSetAfterAny,  // the same, when some member before it was set
    };

    std::string name;
    std::string className;    // the class of the member's own type
    const TypeModel* type;    // its type model, null for a universal class
    Kind kind;                // resolved kind
    bool optional = false;
    bool pointer = false;     // owned pointer rather than embedded value
    bool explicitPair = false;
    uint32_t tag = 0;         // tag word on the wire (outer tag of an explicit pair)
    uint32_t innerTag = 0;    // explicit pair: the universal tag inside
    // The tag words the member's element may arrive with; empty for an
    // untagged CHOICE, whose own alternatives decide.
    std::vector<uint32_t> accepts;
    Encode encode = Encode::Tlv;
    Merge merge = Merge::Assign;
    Next next = Next::End;
    Separator separator = Separator::None;
    bool last = false;        // the last row: its printed line ends without a comma
    bool noteSet = false;     // the printer remembers whether this row was set
    std::string tagOctets;    // the identifier octets as hex text, for comments
    int missingCode = 0;      // required row: tag did not match
    int explicitCode = 0;     // explicit pair: inner tag did not match
    long id = 0;              // choice alternative: its id
    std::string text;         // the schema line, echoed in comments
};

struct TypeModel {
    enum Shape { Sequence, Choice, List, Alias, Enum, NamedBits } shape;
    std::string name;
    std::string module;
    std::string comment;
    Where where;
    Kind kind;                       // resolved kind of the class itself
    uint32_t tag = 0;                // the class's own tag word: sequences and lists

    // Sequence and choice.
    std::vector<MemberModel> members;
    bool allOptional = false;
    bool hasPointer = false;
    bool tracksSet = false;          // the printer remembers whether a member was set
    // Choice: its switch on a tag takes the tag shifted right by this many
    // bits, past the low octets that are zero in every alternative's tag.
    int tagShift = 0;

    // List: the element class. Alias: the direct base class.
    std::string baseClass;
    const TypeModel* base = nullptr;  // null when the base is a universal class

    // Enumerations and named bits.
    std::vector<TypeExpr::Named> names;

    // Failure codes owned by the class (0 where it has none).
    int discrepancyCode = 0;   // sequence: length discrepancy
    int emptyCode = 0;         // empty sequence: "Expected an empty sequence"
    int wrongTagCode = 0;      // sequence and list BDec
    int choiceCode = 0;        // choice: no alternative has the tag
    int listElmtCode = 0;      // list content: "Unexpected Tag"

    bool IsEmptySequence() const { return shape == Sequence && members.empty(); }
};

struct ModuleModel {
    std::string name;
    std::string path;              // e.g. messages/zolorder.asn
    std::string stem;              // e.g. messages/zolorder
    std::vector<std::string> imports;  // modules whose headers are needed
    std::vector<TypeModel*> classes;   // definition order
};

struct Schema {
    std::vector<ModuleModel> modules;            // in dependency order
    std::vector<std::unique_ptr<TypeModel>> store;
};

Schema Resolve(std::vector<Module>& modules);

// The header and the source of one module, and of the list of all modules.
struct Emitted {
    std::string header;
    std::string source;
};
Emitted EmitModule(const ModuleModel& m);
Emitted EmitIndex(const Schema& schema, const std::string& indexStem);

// The types a message on the wire may be: those a client sends, and those
// the host answers with, each in the order a reader tries them.
struct Envelopes {
    std::vector<std::string> requests;
    std::vector<std::string> replies;
};
// The Wireshark dissector: the types of all modules as Lua tables, the
// envelopes, then `runtime`, its hand-written part.
std::string EmitLua(const Schema& schema, const Envelopes& envelopes, const std::string& runtime);

// The identifier octets of a tag word as hex text, for comments.
std::string HexTag(uint32_t tag);
const char* KindText(Kind k);

}  // namespace zolc

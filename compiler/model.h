// The resolved model of every type: what each class is, how each member is
// stored, which tags it takes and which failure codes it owns. Built once
// by the resolver; the emitters only print it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ast.h"

namespace zolc {

// What a type is at the end of its alias chain.
enum class Kind { Int, Enum, Bool, Real, Null, Octs, Bits, Seq, Choice, List };

struct ClassModel;

struct MemberModel {
    std::string name;
    std::string className;    // the class of the member's own type
    const ClassModel* type;   // its class model, null for a universal class
    Kind kind;                // resolved kind
    bool optional = false;
    bool pointer = false;     // owned pointer rather than embedded value
    bool explicitPair = false;
    uint32_t tag = 0;         // tag word on the wire (outer tag of an explicit pair)
    uint32_t innerTag = 0;    // explicit pair: the universal tag inside
    std::string tagOctets;    // the identifier octets as hex text, for comments
    bool emptySeq = false;    // the type is an empty sequence (a choice's `null`)
    int missingCode = 0;      // required row: tag did not match
    int explicitCode = 0;     // explicit pair: inner tag did not match
    long id = 0;              // choice alternative: its id
    std::string text;         // the schema line, echoed in comments
};

struct ClassModel {
    enum Shape { Sequence, Choice, List, Alias, Enum, NamedBits } shape;
    std::string name;
    std::string module;
    std::string comment;
    Where where;
    Kind kind;                       // resolved kind of the class itself

    // Sequence and choice.
    std::vector<MemberModel> members;
    size_t tailStart = 0;            // first row of the trailing optional run
    bool allOptional = false;
    bool hasPointer = false;

    // List: the element class. Alias: the direct base class.
    std::string baseClass;
    const ClassModel* base = nullptr;  // null when the base is a universal class

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
    std::vector<ClassModel*> classes;  // definition order
};

struct Schema {
    std::vector<ModuleModel> modules;            // in dependency order
    std::vector<std::unique_ptr<ClassModel>> store;
};

Schema Resolve(std::vector<Module>& modules);

// Emitters: the header and the source of one module, and the list of all.
std::string EmitHeader(const Schema& schema, const ModuleModel& m);
std::string EmitSource(const Schema& schema, const ModuleModel& m);
std::string EmitModulesHeader(const Schema& schema);
std::string EmitModulesSource(const Schema& schema, const std::string& indexStem);

// Helpers the emitters share.
std::string HexTag(uint32_t tag);
const char* KindText(Kind k);

}  // namespace zolc

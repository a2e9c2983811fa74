// The schema as written: modules, type assignments and members, each with
// the file and line it came from. The parser builds it; the resolver reads
// it and builds the model that the emitters print.
#pragma once

#include <string>
#include <vector>

namespace zolc {

struct Where {
    std::string file;
    int line = 0;
};

// A type as it stands on the right of `::=` or after a member name.
struct TypeExpr {
    enum Kind {
        Ref,          // a type reference: `refName`
        Integer,
        Boolean,
        Real,
        Null,
        OctetString,
        BitString,    // `names` may hold named bits
        Enumerated,   // `names` holds the values
        Sequence,     // `members`
        Choice,       // `members`, each with a tag
        SetOf,        // `refName` is the element
    };
    struct Named {
        std::string name;
        long value = 0;
        Where where;
    };
    struct Member;

    Kind kind = Ref;
    std::string refName;
    std::vector<Named> names;
    std::vector<Member> members;
    Where where;
};

struct TypeExpr::Member {
    std::string name;
    bool tagged = false;
    long tagNumber = 0;
    enum Tagging { Default, Implicit, Explicit } tagging = Default;
    TypeExpr type;  // a reference or a universal type, never a constructed one
    bool optional = false;
    Where where;
    std::string text;  // the member's line as written, for the generated comment
};

struct TypeAssignment {
    std::string name;
    TypeExpr type;
    std::string comment;  // the comment lines written just above it
    Where where;
};

struct Import {
    std::vector<std::string> names;
    std::string module;
    Where where;
};

struct Module {
    std::string name;
    std::string path;  // as given on the command line, e.g. messages/zolorder.asn
    bool explicitTags = false;
    std::vector<Import> imports;
    std::vector<TypeAssignment> types;
    Where where;
};

// Reads one module file; reports a schema error and exits on anything it
// does not take.
Module ParseModule(const std::string& path, const std::string& shownAs);

// Reports "file:line: error: message" on standard error and exits with 1.
[[noreturn]] void SchemaError(const Where& where, const std::string& message);

}  // namespace zolc

// How the emitters write text: templates with named holes, filled from the
// model. Every shape writes its class into two texts at once, the
// declaration into the header and the definitions into the source, so
// that a pattern's two halves are one edit.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "model.h"

namespace zolc {

// The values of a template's holes: `$name` (or `${name}` where letters
// follow) stands for the value of `name`.
using Vars = std::vector<std::pair<std::string, std::string>>;

// `text` with every `$name` replaced; a hole without a value is a bug of
// the compiler and aborts.
std::string Fill(const char* text, const Vars& vars);

// The text `each` filled once for every member (or every one `when`
// takes), with the holes of `vars` and those of the member (MemberVars),
// joined. The second form lets the member's model choose the text.
std::string ForMembers(const char* each, const TypeModel& c, const Vars& vars,
                       const std::function<bool(const MemberModel&)>& when = nullptr);
std::string ForMembers(const TypeModel& c, const Vars& vars,
                       const std::function<std::string(const MemberModel&, const Vars&)>& each);
inline bool IsPointer(const MemberModel& m) { return m.pointer; }

// `text` with every line that is not empty moved four blanks right.
std::string Indented(const std::string& text);

// The holes every template of a class may use: $T the class, $M the
// module's descriptor, $E the element or base class, the failure codes.
Vars ClassVars(const TypeModel& c);

// The holes of one member: $name, $cls its class, $m the member as the
// class's code reaches it (always through this->, so that no local or
// parameter of the generated code can hide it), $at $m followed by -> or .,
// $cid its id constant, $text its schema line, $octets, $inner,
// $id, $optional, $last, $missing, $explicitCode, $accepts the test of
// `tag`, $encode the expression that writes it; as its storage and merge
// rule decide, $assign the copy from `o`, $merge the merge from `o`,
// $ref its address for by-name access.
Vars MemberVars(const MemberModel& m);

// A class as its two halves: its declaration for the header, its member
// definitions for the source.
struct ClassText {
    std::string header;
    std::string source;

    // A concept whose declaration and definition are written together.
    void Both(const char* decl, const char* defn, const Vars& vars) {
        header += Fill(decl, vars);
        source += Fill(defn, vars);
    }
};

// Each shape of class, in emit_<shape>.cpp.
ClassText EmitSequence(const TypeModel& c);
ClassText EmitChoice(const TypeModel& c);
ClassText EmitList(const TypeModel& c);
ClassText EmitAlias(const TypeModel& c);
ClassText EmitNames(const TypeModel& c);  // enumerations and named bits

// A tag word as a C++ constant.
std::string TagConst(uint32_t tag);

// Construction, destruction, cloning and clearing of sequences and
// choices: their destructor's body is $destroy, their ConstructHelper's
// $construct (in the class, with the default constructor, so that a
// decoder's `new` compiles into it); the copy constructor's parameter is
// $o (empty where unused), its initializers $copyFrom and its body $copy,
// followed by the constructor that copies the embedded members,
// $copyEmbedded, where there is one; Clear's body is $clear.
extern const char* const kConstructionDecls;
extern const char* const kConstruction;
// Assignment and merge.
extern const char* const kCopyDecls;
// The descriptor of a sequence or choice, of type $D, and its members,
// of type $MD, listed in $mdescs.
extern const char* const kMembersDescDecls;
extern const char* const kMembersDesc;
// The shared declarations of the value classes' codec and printer.
extern const char* const kEncodeDecls;
extern const char* const kDecodeDecls;
extern const char* const kPrintDecls;
// The whole decoder of a sequence or list: its own tag, then its content.
extern const char* const kDecodeWhole;

// A member's declaration padded to `column`, then the comment that echoes
// its schema line.
std::string MemberLine(const std::string& decl, const MemberModel& m, size_t column);

inline std::string ModuleDescName(const std::string& module) { return module + "Module"; }

}  // namespace zolc

#include "types.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include <zol/zol.h>

#include "options.h"

namespace ZolDump {

namespace {

std::string Lower(const char* s) {
    std::string out(s);
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

// Every type of every module, modules in the library's order.
std::vector<const AsnTypeDesc*> AllTypes() {
    std::vector<const AsnTypeDesc*> all;
    for (const AsnModuleDesc* const* m = Zol::AsnModules; *m; ++m)
        for (const AsnTypeDesc* const* t = (*m)->types; *t; ++t)
            all.push_back(*t);
    return all;
}

// Edits (insertions, deletions, replacements) between two names.
size_t Distance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            size_t above = row[j];
            row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// "; did you mean A, B or C?": the names nearest to `name` in any case,
// at most three, all as near as the nearest and within a third of its length.
std::string Nearest(const char* name) {
    std::string wanted = Lower(name);
    size_t best = std::max<size_t>(2, wanted.size() / 3);
    std::vector<const char*> near;
    for (const AsnTypeDesc* t : AllTypes()) {
        size_t d = Distance(wanted, Lower(t->name));
        if (d < best)
            near.clear();
        if (d <= best && near.size() < 3) {
            best = d;
            near.push_back(t->name);
        }
    }
    std::string text;
    for (size_t i = 0; i < near.size(); ++i)
        text += (i == 0 ? "" : i + 1 == near.size() ? " or " : ", ") + std::string(near[i]);
    return text.empty() ? "" : "; did you mean " + text + "?";
}

}  // namespace

const AsnTypeDesc* TypeNamed(const char* name) {
    if (const AsnTypeDesc* t = Zol::FindType(name))
        return t;
    throw UsageError{std::string("no type named ") + name + Nearest(name), "--list-types"};
}

std::string TypeList(const char* filter) {
    std::string wanted = filter ? Lower(filter) : "";
    std::vector<const AsnTypeDesc*> listed;
    size_t width = 0;
    for (const AsnTypeDesc* t : AllTypes())
        if (Lower(t->name).find(wanted) != std::string::npos ||
            Lower(t->module->name).find(wanted) != std::string::npos) {
            listed.push_back(t);
            width = std::max(width, std::string(t->name).size());
        }
    std::string out;
    for (const AsnTypeDesc* t : listed)
        out += t->name + std::string(width + 2 - std::string(t->name).size(), ' ') + t->module->name + "\n";
    return out;
}

}  // namespace ZolDump

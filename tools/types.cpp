#include "types.h"

#include <algorithm>
#include <cctype>
#include <unordered_map>

#include <zol/zol.h>

namespace ZolDump {

namespace {

std::string Lower(const char* s) {
    std::string out(s);
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

// Every type of every module, modules in the library's order.
const std::vector<const AsnTypeDesc*>& AllTypes() {
    static const std::vector<const AsnTypeDesc*> all = [] {
        std::vector<const AsnTypeDesc*> types;
        for (const AsnModuleDesc* const* m = Zol::AsnModules; *m; ++m)
            for (const AsnTypeDesc* const* t = (*m)->types; *t; ++t)
                types.push_back(*t);
        return types;
    }();
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

}  // namespace

const AsnTypeDesc* FindTypeNamed(std::string_view name) {
    static const std::unordered_map<std::string_view, const AsnTypeDesc*> byName = [] {
        std::unordered_map<std::string_view, const AsnTypeDesc*> map;
        for (const AsnTypeDesc* t : AllTypes())
            map.emplace(t->name, t);
        return map;
    }();
    auto it = byName.find(name);
    return it == byName.end() ? nullptr : it->second;
}

std::string NoTypeNamed(const std::string& name) {
    std::string wanted = Lower(name.c_str());
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
    return "no type named " + name + (text.empty() ? "" : "; did you mean " + text + "?");
}

std::vector<const AsnTypeDesc*> TypesMatching(const char* filter) {
    std::string wanted = filter ? Lower(filter) : "";
    std::vector<const AsnTypeDesc*> matching;
    for (const AsnTypeDesc* t : AllTypes())
        if (Lower(t->name).find(wanted) != std::string::npos ||
            Lower(t->module->name).find(wanted) != std::string::npos)
            matching.push_back(t);
    return matching;
}

std::string TypeList(const char* filter) {
    std::vector<const AsnTypeDesc*> listed = TypesMatching(filter);
    size_t width = 0;
    for (const AsnTypeDesc* t : listed)
        width = std::max(width, std::string(t->name).size());
    std::string out;
    for (const AsnTypeDesc* t : listed)
        out += t->name + std::string(width + 2 - std::string(t->name).size(), ' ') + t->module->name + "\n";
    return out;
}

}  // namespace ZolDump

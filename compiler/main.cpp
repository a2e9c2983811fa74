// zolc: the schema compiler. Reads the protocol's ASN.1 modules and writes
// one C++ header and source per module, or the Wireshark dissector.
//
//   zolc --root DIR -o OUT [-i FILE]... [--index STEM] FILE...
//   zolc --root DIR --lua FILE --lua-runtime FILE --requests T,... --replies T,... FILE...
//
// Every FILE is emitted as OUT/<its path below DIR, without .asn>.{h,cpp};
// files given with -i are read so that imports resolve, but not emitted.
// --index writes OUT/STEM.{h,cpp} listing the descriptors of all emitted
// modules. --lua writes the dissector of all modules: their types, the
// envelopes (the types named by --requests and --replies) and the
// dissector's hand-written part, read from --lua-runtime.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sys/stat.h>

#include "model.h"

namespace {

void Usage() {
    std::fprintf(stderr,
                 "usage: zolc --root DIR -o OUT [-i FILE]... [--index STEM] FILE...\n"
                 "       zolc --root DIR --lua FILE --lua-runtime FILE --requests T,... --replies T,... FILE...\n");
    std::exit(2);
}

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "zolc: cannot read %s\n", path.c_str());
        std::exit(1);
    }
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::vector<std::string> CommaList(const std::string& text) {
    std::vector<std::string> names;
    for (size_t at = 0; at <= text.size();) {
        size_t end = std::min(text.find(',', at), text.size());
        names.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return names;
}

// Each envelope must be a sequence or choice of the schema.
void CheckEnvelopes(const zolc::Schema& schema, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        const zolc::TypeModel* found = nullptr;
        for (const auto& t : schema.store)
            if (t->name == name)
                found = t.get();
        if (!found || (found->shape != zolc::TypeModel::Sequence && found->shape != zolc::TypeModel::Choice)) {
            std::fprintf(stderr, "zolc: envelope %s is no SEQUENCE or CHOICE of the modules given\n", name.c_str());
            std::exit(1);
        }
    }
}

void MakeDirs(const std::string& path) {
    for (size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1))
        mkdir(path.substr(0, at).c_str(), 0777);
}

// Writes only when the text changed, so that unchanged modules do not
// trigger rebuilds.
void Write(const std::string& path, const std::string& text) {
    std::ifstream old(path, std::ios::binary);
    if (old) {
        std::string was((std::istreambuf_iterator<char>(old)), std::istreambuf_iterator<char>());
        if (was == text)
            return;
    }
    MakeDirs(path);
    std::ofstream out(path, std::ios::binary);
    out << text;
    if (!out) {
        std::fprintf(stderr, "zolc: cannot write %s\n", path.c_str());
        std::exit(1);
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::string root, outDir, index, lua, luaRuntime;
    zolc::Envelopes envelopes;
    std::vector<std::pair<std::string, bool>> files;  // path, emitted
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto next = [&]() -> std::string {
            if (i + 1 >= argc)
                Usage();
            return argv[++i];
        };
        if (a == "--root")
            root = next();
        else if (a == "-o")
            outDir = next();
        else if (a == "-i")
            files.emplace_back(next(), false);
        else if (a == "--index")
            index = next();
        else if (a == "--lua")
            lua = next();
        else if (a == "--lua-runtime")
            luaRuntime = next();
        else if (a == "--requests")
            envelopes.requests = CommaList(next());
        else if (a == "--replies")
            envelopes.replies = CommaList(next());
        else if (!a.empty() && a[0] == '-')
            Usage();
        else
            files.emplace_back(a, true);
    }
    if (root.empty() || (outDir.empty() && lua.empty()) || files.empty())
        Usage();
    if (!lua.empty() && (luaRuntime.empty() || envelopes.requests.empty() || envelopes.replies.empty()))
        Usage();
    if (root.back() != '/')
        root += '/';

    // Paths below the root name the modules' headers and appear in errors.
    std::vector<zolc::Module> modules;
    std::set<std::string> emitted;
    for (auto& f : files) {
        std::string rel = f.first.compare(0, root.size(), root) == 0 ? f.first.substr(root.size()) : f.first;
        zolc::Module m = zolc::ParseModule(f.first, rel);
        if (f.second)
            emitted.insert(m.name);
        modules.push_back(std::move(m));
    }
    zolc::Schema schema = zolc::Resolve(modules);

    if (!lua.empty()) {
        CheckEnvelopes(schema, envelopes.requests);
        CheckEnvelopes(schema, envelopes.replies);
        Write(lua, zolc::EmitLua(schema, envelopes, ReadText(luaRuntime)));
    }
    if (outDir.empty())
        return 0;

    zolc::Schema listed;
    for (const zolc::ModuleModel& m : schema.modules) {
        if (!emitted.count(m.name))
            continue;
        zolc::Emitted text = zolc::EmitModule(m);
        Write(outDir + "/" + m.stem + ".h", text.header);
        Write(outDir + "/" + m.stem + ".cpp", text.source);
        listed.modules.push_back(m);
    }
    if (!index.empty()) {
        zolc::Emitted text = zolc::EmitIndex(listed, index);
        Write(outDir + "/" + index + ".h", text.header);
        Write(outDir + "/" + index + ".cpp", text.source);
    }
    return 0;
}

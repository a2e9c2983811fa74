// zolc: the schema compiler. Reads the protocol's ASN.1 modules and writes
// one C++ header and source per module.
//
//   zolc --root DIR -o OUT [-i FILE]... [--index STEM] FILE...
//
// Every FILE is emitted as OUT/<its path below DIR, without .asn>.{h,cpp};
// files given with -i are read so that imports resolve, but not emitted.
// --index writes OUT/STEM.{h,cpp} listing the descriptors of all emitted
// modules.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sys/stat.h>

#include "model.h"

namespace {

void Usage() {
    std::fprintf(stderr, "usage: zolc --root DIR -o OUT [-i FILE]... [--index STEM] FILE...\n");
    std::exit(2);
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
    std::string root, outDir, index;
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
        else if (!a.empty() && a[0] == '-')
            Usage();
        else
            files.emplace_back(a, true);
    }
    if (root.empty() || outDir.empty() || files.empty())
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

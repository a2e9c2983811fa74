// zolc against small modules (tests/rows/zolc.txt): each schema error
// names its file and line with the exact text. A row
//
//   zolc sub/m.asn:4: error: unknown type Foo ...
//     common          COMMONTYPES given with -i
//     module M        writes sub/m.asn: the head of module M, then the block
//     |A ::= ...
//     arg sub/x.asn   a further argument, relative to the root
//     status 2        the exit status, when not 1
//
// runs zolc --root DIR -o DIR/out over the modules in their order and
// expects the row's text as the whole of standard error (nothing is
// compared when the row gives none).
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "rows.h"

namespace {

std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

ZT_ROW_OP(zolc) {
    char tmpl[] = "/tmp/zolc_test_XXXXXX";
    ASSERT_TRUE(mkdtemp(tmpl));
    const std::string dir = tmpl;
    // COMMONTYPES below the root, so that its header is named by the same
    // path as in the library.
    for (const char* sub : {"/sub", "/zol", "/zol/values"})
        mkdir((dir + sub).c_str(), 0777);
    const std::string common = dir + "/zol/values/commontypes.asn";
    std::ofstream(common, std::ios::binary) << Slurp(ZOL_SOURCE "/zol/values/commontypes.asn");

    std::string args;
    int status = 1;
    for (const zt::Row::Check& c : row.checks) {
        if (c.key == "module") {
            std::string file = c.text;
            for (char& ch : file)
                ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
            file = dir + "/sub/" + file + ".asn";
            std::ofstream(file, std::ios::binary)
                << c.text << " DEFINITIONS IMPLICIT TAGS ::=\nBEGIN\n" << zt::Row::Joined(c) << "\n";
            args += " " + file;
        } else if (c.key == "common") {
            args += " -i " + common;
        } else if (c.key == "arg") {
            args += " " + dir + "/" + c.text;
        } else if (c.key == "status") {
            status = std::atoi(c.text.c_str());
        } else {
            ADD_FAILURE() << "no zolc check " << c.key;
        }
    }
    int rc = std::system((ZOLC_PATH " --root " + dir + " -o " + dir + "/out" + args + " 2>" + dir + "/err").c_str());
    EXPECT_EQ(WIFEXITED(rc) ? WEXITSTATUS(rc) : -1, status);
    if (!row.arg.empty()) {
        EXPECT_EQ(Slurp(dir + "/err"), row.arg + "\n");
    }
    std::system(("rm -rf '" + dir + "'").c_str());
}

}  // namespace

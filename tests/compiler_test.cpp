// zolc against small modules (tests/rows/zolc.txt): each schema error
// names its file and line with the exact text. A row
//
//   zolc sub/m.asn:4: error: unknown type Foo ...
//     common          COMMONTYPES given with -i
//     file m.asn      writes the block as sub/m.asn
//     |M DEFINITIONS IMPLICIT TAGS ::=
//     |...
//     arg sub/x.asn   a further argument, relative to the root
//     status 2        the exit status, when not 1
//
// runs zolc --root DIR -o DIR/out over the files in their order and
// expects the row's text as the whole of standard error (nothing is
// compared when the row gives none).
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "rows.h"
#include "support.h"

namespace {


ZT_ROW_OP(zolc) {
    char tmpl[] = "/tmp/zolc_test_XXXXXX";
    ASSERT_TRUE(mkdtemp(tmpl));
    const std::string dir = tmpl;
    mkdir((dir + "/sub").c_str(), 0777);
    std::string args;
    int status = 1;
    for (const zt::Row::Check& c : row.checks) {
        if (c.key == "file") {
            std::ofstream(dir + "/sub/" + c.text, std::ios::binary) << zt::Row::Joined(c) << "\n";
            args += " " + dir + "/sub/" + c.text;
        } else if (c.key == "common") {
            // Below the root, so that its header is named by the same path
            // as in the library.
            mkdir((dir + "/zol").c_str(), 0777);
            mkdir((dir + "/zol/values").c_str(), 0777);
            std::ofstream(dir + "/zol/values/commontypes.asn", std::ios::binary)
                << zt::FileBytes(ZOL_SOURCE "/zol/values/commontypes.asn");
            args += " -i " + dir + "/zol/values/commontypes.asn";
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
        EXPECT_EQ(zt::FileBytes(dir + "/err"), row.arg + "\n");
    }
    std::system(("rm -rf '" + dir + "'").c_str());
}

}  // namespace

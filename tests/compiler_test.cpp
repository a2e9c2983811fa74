// zolc against small modules: each schema error names its file and line
// with the exact text.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace {

struct Ran {
    int status;
    std::string err;
};

std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

class Zolc : public testing::Test {
protected:
    void SetUp() override {
        char tmpl[] = "/tmp/zolc_test_XXXXXX";
        ASSERT_TRUE(mkdtemp(tmpl));
        dir_ = tmpl;
        mkdir((dir_ + "/sub").c_str(), 0777);
        // COMMONTYPES below the root, so that its header is named by the
        // same path as in the library.
        mkdir((dir_ + "/zol").c_str(), 0777);
        mkdir((dir_ + "/zol/values").c_str(), 0777);
        commonTypes_ = dir_ + "/zol/values/commontypes.asn";
        std::ofstream(commonTypes_, std::ios::binary) << Slurp(ZOL_SOURCE "/zol/values/commontypes.asn");
    }
    void TearDown() override { std::system(("rm -rf '" + dir_ + "'").c_str()); }

    // Writes `text` as DIR/sub/<name>.asn and returns its path.
    std::string Module(const std::string& name, const std::string& text) {
        std::string path = dir_ + "/sub/" + name + ".asn";
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    // zolc --root DIR -o DIR/out <args>, with its exit status and stderr.
    Ran Zolc_(const std::string& args) {
        std::string cmd = std::string(ZOLC_PATH) + " --root " + dir_ + " -o " + dir_ + "/out " + args + " 2>" +
                          dir_ + "/err";
        int rc = std::system(cmd.c_str());
        return {WIFEXITED(rc) ? WEXITSTATUS(rc) : -1, Slurp(dir_ + "/err")};
    }

    std::string dir_;
    std::string commonTypes_;
};

const char* const kHead = "M DEFINITIONS IMPLICIT TAGS ::=\nBEGIN\n";

TEST_F(Zolc, SchemaErrorsNameFileAndLine) {
    const struct {
        const char* body;  // after the two lines of kHead; line 3 onwards
        const char* error;
        bool withCommon = false;  // COMMONTYPES given with -i
    } rows[] = {
        {"A ::= SEQUENCE {\n  x Foo\n}\nEND\n", "m.asn:4: error: unknown type Foo (neither defined in M nor imported)"},
        {"IMPORTS AsnFoo FROM COMMONTYPES;\nA ::= INTEGER\nEND\n",
         "m.asn:3: error: module COMMONTYPES defines no type AsnFoo", true},
        {"IMPORTS AsnDate FROM NOPE;\nEND\n", "m.asn:3: error: module NOPE is not among the modules given"},
        {"IMPORTS AsnDate, AsnTime,\n  AsnDate FROM COMMONTYPES;\nEND\n",
         "m.asn:3: error: type AsnDate is already visible in M", true},
        {"IMPORTS AsnDate FROM COMMONTYPES;\nAsnTime ::= INTEGER\nEND\n",
         "m.asn:4: error: type AsnTime is already defined at zol/values/commontypes.asn:11", true},
        {"A ::= INTEGER\n\nA ::= BOOLEAN\nEND\n", "m.asn:5: error: type A is already defined at sub/m.asn:3"},
        {"A ::= SEQUENCE {\n  x INTEGER,\n  x BOOLEAN\n}\nEND\n", "m.asn:5: error: 'x' is already a member of A"},
        {"A ::= CHOICE {\n  x [1] INTEGER,\n  y [1] BOOLEAN\n}\nEND\n", "m.asn:5: error: id 1 is already that of 'x'"},
        {"A ::= CHOICE {\n  x [0] INTEGER,\n  y BOOLEAN\n}\nEND\n",
         "m.asn:5: error: alternative 'y' needs a tag [n] whose number is its id"},
        {"A ::= SEQUENCE {\n  x SEQUENCE { y INTEGER }\n}\nEND\n",
         "m.asn:4: error: SEQUENCE inside a member is not taken: name it as a type of its own"},
        {"A ::= SEQUENCE {\n  x CHOICE { y [0] INTEGER }\n}\nEND\n",
         "m.asn:4: error: CHOICE inside a member is not taken: name it as a type of its own"},
        {"A ::= SEQUENCE {\n  x ENUMERATED { a(1) }\n}\nEND\n",
         "m.asn:4: error: an ENUMERATED must be a type of its own, referenced by name"},
        {"A ::= SEQUENCE OF INTEGER\nEND\n", "m.asn:3: error: SEQUENCE OF is not taken: the protocol's lists are SET OF"},
        {"A ::= SET { x INTEGER }\nEND\n",
         "m.asn:3: error: SET is not taken: the protocol's compound types are SEQUENCE and SET OF"},
        {"A ::= INTEGER (0..5)\nEND\n", "m.asn:3: error: constraints are not taken"},
        {"A ::= SEQUENCE {\n  x OCTET STRING (SIZE(1..8))\n}\nEND\n", "m.asn:4: error: constraints are not taken"},
        {"A ::= SEQUENCE {\n  x INTEGER,\n  ...\n}\nEND\n", "m.asn:5: error: extension markers are not taken"},
        {"A ::= ENUMERATED { a(0), ... }\nEND\n", "m.asn:3: error: extension markers are not taken"},
        {"A ::= SEQUENCE {\n  x INTEGER DEFAULT 5\n}\nEND\n", "m.asn:4: error: DEFAULT is not taken"},
        {"A ::= CHOICE {\n  x [0] INTEGER OPTIONAL\n}\nEND\n",
         "m.asn:4: error: an alternative of a CHOICE cannot be OPTIONAL"},
        {"Order-Id ::= INTEGER\nEND\n",
         "m.asn:3: error: 'Order-Id': names with hyphens are not taken, since every name becomes a C++ identifier"},
        {"A ::= SEQUENCE {\n  order-no INTEGER\n}\nEND\n",
         "m.asn:4: error: 'order-no': names with hyphens are not taken, since every name becomes a C++ identifier"},
        {"A ::= SEQUENCE {\n  class INTEGER\n}\nEND\n", "m.asn:4: error: member name 'class' is a C++ keyword"},
        {"A ::= CHOICE {\n  delete [0] INTEGER\n}\nEND\n", "m.asn:4: error: alternative name 'delete' is a C++ keyword"},
        {"A ::= ENUMERATED { int(0) }\nEND\n", "m.asn:3: error: name 'int' is a C++ keyword"},
        {"A ::= ENUMERATED { value(0) }\nEND\n", "m.asn:3: error: name 'value' clashes with a member of the value class"},
        {"A ::= ENUMERATED { a(1), b(1) }\nEND\n", "m.asn:3: error: value 1 is already that of 'a'"},
        {"A ::= BIT STRING { a(3),\n  b(3) }\nEND\n", "m.asn:4: error: bit 3 is already that of 'a'"},
        {"A ::= CHOICE {\n  choiceId [0] INTEGER\n}\nEND\n",
         "m.asn:4: error: alternative name 'choiceId' is the member that holds the id"},
        {"A ::= CHOICE {\n  x [0] INTEGER,\n  xCid [1] INTEGER\n}\nEND\n",
         "m.asn:5: error: the id constant of 'x' would be named like the alternative 'xCid'"},
        {"AsnInt ::= SEQUENCE { x INTEGER }\nEND\n", "m.asn:3: error: type name 'AsnInt' is a name of the runtime"},
        {"A ::= B\nB ::= C\nC ::= A\nEND\n", "m.asn:3: error: type A is defined in terms of itself"},
        {"A ::= INTEGER\n", "m.asn:4: error: module is not closed by END"},
        {"A ::= INTEGER\nEND\nB ::= INTEGER\n", "m.asn:5: error: text after END"},
        {"/* open\nA ::= INTEGER\nEND\n", "m.asn:3: error: comment is not closed"},
        {"E ::= INTEGER\nL ::= SET OF E\nEND\n", "m.asn:4: error: the elements of a SET OF must be a SEQUENCE type"},
        {"E ::= SEQUENCE { x INTEGER }\nL ::= SET OF E\nA ::= SEQUENCE {\n  l L OPTIONAL\n}\nEND\n",
         "m.asn:6: error: a list member cannot be OPTIONAL: lists are held by value"},
        {"C ::= CHOICE { a [0] INTEGER }\nA ::= SEQUENCE {\n  c [1] C\n}\nEND\n",
         "m.asn:5: error: a tagged CHOICE member of a SEQUENCE is not taken"},
        {"A ::= CHOICE {\n  x [1] EXPLICIT INTEGER\n}\nEND\n", "m.asn:4: error: an EXPLICIT alternative is not taken"},
        {"A ::= CHOICE {\n  x [16384] INTEGER\n}\nEND\n", "m.asn:4: error: tag number 16384 is too large for three octets"},
        {"A ::= SEQUENCE {\n  x [UNIVERSAL 2] INTEGER\n}\nEND\n", "m.asn:4: error: only context-specific tags are taken"},
        {"A ::= INTEGER { a(1) }\nEND\n", "m.asn:3: error: named numbers on INTEGER are not taken; use ENUMERATED"},
        {"A ::= CHOICE { }\nEND\n", "m.asn:3: error: a CHOICE needs at least one alternative"},
        {"a ::= INTEGER\nEND\n", "m.asn:3: error: type name 'a' must begin with a capital letter"},
        {"A ::= SEQUENCE {\n  X INTEGER\n}\nEND\n", "m.asn:4: error: member name 'X' must begin with a small letter"},
        {"A ::= OBJECT IDENTIFIER\nEND\n", "m.asn:3: error: the type 'OBJECT' is not taken"},
        {"A ::= INTEGER\nEND\n@\n", "m.asn:5: error: unexpected character '@'"},
    };
    for (const auto& r : rows) {
        std::string file = Module("m", std::string(kHead) + r.body);
        Ran run = Zolc_((r.withCommon ? "-i " + commonTypes_ + " " : std::string()) + file);
        EXPECT_EQ(run.status, 1) << r.body;
        EXPECT_EQ(run.err, std::string("sub/") + r.error + "\n") << r.body;
    }
}

TEST_F(Zolc, ErrorsBetweenModules) {
    std::string a = Module("a", "A DEFINITIONS IMPLICIT TAGS ::=\nBEGIN\nIMPORTS Y FROM B;\nX ::= INTEGER\nEND\n");
    std::string b = Module("b", "B DEFINITIONS IMPLICIT TAGS ::=\nBEGIN\nIMPORTS X FROM A;\nY ::= INTEGER\nEND\n");
    EXPECT_EQ(Zolc_(a + " " + b).err, "sub/a.asn:1: error: module A imports from itself through a cycle\n");

    std::string c = Module("c", "C DEFINITIONS IMPLICIT TAGS ::=\nBEGIN\nX ::= BOOLEAN\nEND\n");
    std::string d = Module("d", "D DEFINITIONS IMPLICIT TAGS ::=\nBEGIN\n\nX ::= INTEGER\nEND\n");
    EXPECT_EQ(Zolc_(c + " " + d).err, "sub/d.asn:4: error: type X is already defined at sub/c.asn:3\n");
    EXPECT_EQ(Zolc_(c + " " + c).err, "sub/c.asn:1: error: module C is defined twice\n");

    Ran missing = Zolc_(dir_ + "/sub/none.asn");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "sub/none.asn:0: error: cannot read the file\n");
    EXPECT_EQ(Zolc_("").status, 2);
}

}  // namespace

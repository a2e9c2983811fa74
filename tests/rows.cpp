// Runs each row of the files of tests/rows/ (read by row_files.cpp)
// through the handler of its operation; one test per file. The operations on values of any
// type live here too:
//
//   decode TYPE HEX [| HEX]   decodes the octets (those after '|' follow
//                             the value) into a new value; [HEX]*N in
//                             them stands for N copies of HEX
//   value TYPE JSON           fills a new value from its JSON form
//
// and then, in their order, checks on the value:
//
//   err TEXT      a line on standard error (decode; in order)
//   code N        the decode long-jumped with N: it failed, and the front
//                 door wrote its own line
//   result 0      the decode failed without a jump
//   allocates N B the decode makes at most N allocations (values and
//                 blocks), of at most B bytes in all (blocks)
//   used N        a decode that succeeds counts N octets; without this
//                 check, those of the value (before '|')
//   hex HEX       the value encodes to these octets, into a block of any
//                 size; a decoded value with no hex check must encode to
//                 its input
//   print [SETTING...] + |...
//                 the value prints as these lines into a stream with
//                 these settings (see SetUp), which it leaves as they were
//   json TEXT     the value's JSON form
//   set PATH...   members present (dotted paths through _getref)
//   unset PATH... members absent
//   with HEX      the value merges a value of its type decoded from HEX
//                 ("self": the value itself)
//   assign HEX    the value is assigned one decoded from HEX (or "self")
//   clone         the value is replaced by its Clone
//   clear         the value is emptied by its Clear
#include "rows.h"

#include <algorithm>
#include <cstdio>
#include <iomanip>
#include <locale>
#include <map>
#include <sstream>

#include <zol/json.h>

#include "alloc_count.h"
#include "support.h"

namespace zt {

namespace {

std::map<std::string, RowOp>& Ops() {
    static std::map<std::string, RowOp> ops;
    return ops;
}

class RowFile : public testing::TestWithParam<std::string> {};

TEST_P(RowFile, EveryRowHolds) {
    std::vector<Row> rows = ReadRows(std::string(ZOL_ROWS "/") + GetParam());
    EXPECT_FALSE(rows.empty());
    for (const Row& r : rows) {
        SCOPED_TRACE(r.file + ":" + std::to_string(r.line) + ": " + r.op + " " + r.arg);
        auto op = Ops().find(r.op);
        if (op == Ops().end())
            ADD_FAILURE() << "no operation " << r.op;
        else
            op->second(r);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, RowFile, testing::ValuesIn(RowFiles()),
                         [](const testing::TestParamInfo<std::string>& p) {
                             std::string name = p.param.substr(0, p.param.size() - 4);
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

std::unique_ptr<AsnType> DecodedAs(const std::string& type, const std::string& hex) {
    std::unique_ptr<AsnType> v = Make(type);
    Outcome o = Decode(Bytes(hex.c_str()), *v);
    EXPECT_EQ(o.result, 1) << type << " " << hex << "\n" << o.err;
    return v;
}

AsnType* At(AsnType* v, const std::string& path) {
    std::istringstream steps(path);
    std::string name;
    while (v && std::getline(steps, name, '.'))
        v = v->_getref(name.c_str(), false);
    return v;
}

// A locale that groups digits in threes with '.', as de_DE does.
struct GroupedThousands : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

// The stream settings that a print check names: hex (with base and upper
// case), oct, showpos, grouping, and width (6, or N for widthN, filled
// with '*') adjusted right unless left or internal is named.
void SetUp(std::ostream& os, const std::string& settings) {
    std::istringstream in(settings);
    for (std::string s; in >> s;) {
        if (s == "hex")
            os << std::hex << std::showbase << std::uppercase;
        else if (s == "grouping")
            os.imbue(std::locale(os.getloc(), new GroupedThousands));
        else if (s.compare(0, 5, "width") == 0)
            os << std::setfill('*') << std::setw(s.size() > 5 ? std::stoi(s.substr(5)) : 6);
        else
            os.setf(s == "oct" ? std::ios_base::oct : s == "showpos" ? std::ios_base::showpos
                    : s == "left" ? std::ios_base::left : std::ios_base::internal);
    }
}

// The encoding through the front door, into blocks of every size.
void ExpectEncoding(const AsnType& v, const std::string& bytes) {
    EXPECT_EQ(Encoded(v), Hex(bytes));
    ExpectEveryBlock(bytes, [&](char* block, size_t size, size_t& len) {
        return Zol::AsnBuffer::Encode(block, size, v, len);
    });
}

}  // namespace

std::string Errors(const Row& row) {
    std::string err;
    for (const Row::Check& c : row.checks)
        if (c.key == "err")
            err += c.text + "\n";
    return err;
}

void Expect(const Row& row, const char* key, const std::string& actual) {
    for (const Row::Check& c : row.checks)
        if (c.key == key)
            return Expect(row, c, actual, c.text);
}

void Expect(const Row& row, const Row::Check& c, const std::string& actual, const std::string& expected) {
    if (c.text == "?" || expected == "?") {
        std::printf("ZT-FILL %s:%d %s\n%s\nZT-END\n", row.file.c_str(), c.line, c.key.c_str(), actual.c_str());
        return;
    }
    EXPECT_EQ(actual, expected);
}

void CheckValue(const Row& row, const std::string& type, std::unique_ptr<AsnType>& v,
                const std::vector<std::string>& skip) {
    for (const Row::Check& c : row.checks) {
        SCOPED_TRACE("line " + std::to_string(c.line) + ": " + c.key);
        if (std::find(skip.begin(), skip.end(), c.key) != skip.end())
            continue;
        if (c.key == "hex") {
            if (c.text == "?")
                Expect(row, c, Encoded(*v), "");
            else
                ExpectEncoding(*v, Bytes(Expanded(c.text).c_str()));
        } else if (c.key == "print") {
            std::ostringstream os;
            SetUp(os, c.text);
            const std::ios_base::fmtflags flags = os.flags();
            os << *v;
            Expect(row, c, os.str(), Row::Joined(c));
            EXPECT_EQ(os.flags(), flags);
            EXPECT_EQ(os.width(), 0);
            EXPECT_EQ(indentLevel, 0);
        } else if (c.key == "json") {
            Expect(row, c, Zol::ToJson(*v).dump(), c.text);
        } else if (c.key == "set" || c.key == "unset") {
            std::istringstream paths(c.text);
            for (std::string path; paths >> path;)
                EXPECT_EQ(At(v.get(), path) != nullptr, c.key == "set") << path;
        } else if (c.key == "with" || c.key == "assign") {
            const Copier* copier = FindCopier(type);
            ASSERT_NE(copier, nullptr) << "no merge or assignment for " << type << " in row_files.cpp";
            std::unique_ptr<AsnType> other = c.text == "self" ? nullptr : DecodedAs(type, c.text);
            (c.key == "with" ? copier->merge : copier->assign)(*v, other ? *other : *v);
        } else if (c.key == "clear") {
            v->Clear();
        } else if (c.key == "clone") {
            std::unique_ptr<AsnType> copy(v->Clone());
            ASSERT_TRUE(copy);
            EXPECT_EQ(copy->_getdesc(), v->_getdesc());
            v = std::move(copy);
        } else {
            ADD_FAILURE() << "no check " << c.key;
        }
    }
}

const std::string* Row::Get(const char* key) const {
    for (const Check& c : checks)
        if (c.key == key)
            return &c.text;
    return nullptr;
}

std::string Row::Joined(const Check& c) {
    std::string out;
    for (size_t i = 0; i < c.block.size(); ++i)
        out += (i ? "\n" : "") + c.block[i];
    return out;
}

bool RegisterRowOp(const char* op, RowOp fn) { return Ops().emplace(op, fn).second; }

ZT_ROW_OP(decode) {
    size_t blank = row.arg.find(' ');
    std::string type = row.arg.substr(0, blank);
    std::string wire = Expanded(row.arg.substr(blank + 1));
    std::string bytes = Bytes(wire.c_str());
    std::unique_ptr<AsnType> v = Make(type);
    std::string err = Errors(row);
    if (const std::string* code = row.Get("code"))
        err += DoorLine(AsnTypeName(v->_getdesc()), std::stoi(*code));
    testing::internal::CaptureStderr();
    int result = 0;
    zalloc::AllocDelta allocated =
        zalloc::CountAllocs([&] { result = Zol::AsnBuffer::Decode(bytes.data(), bytes.size(), *v); });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), err);
    EXPECT_EQ(result, row.Get("code") || row.Get("result") ? 0 : 1);
    if (const std::string* limit = row.Get("allocates")) {
        std::istringstream in(*limit);
        uint64_t count = 0, size = 0;
        in >> count >> size;
        EXPECT_LE(allocated.zol(), count);
        EXPECT_LE(allocated.bytes, size);
    }
    // The outermost frame agrees, and gives the count.
    AsnBuf b;
    b.InstallData(&bytes[0], bytes.size());
    std::unique_ptr<AsnType> again = Make(type);
    AsnLen used = 99;  // the frame starts its own count
    testing::internal::CaptureStderr();
    EXPECT_EQ(again->BDecPdu(b, used), result);
    testing::internal::GetCapturedStderr();
    if (!result)
        return;
    const std::string value = Bytes(wire.substr(0, wire.find('|')).c_str());
    const std::string* expected = row.Get("used");
    EXPECT_EQ(used, expected ? std::stoul(*expected) : value.size());
    if (!row.Get("hex"))
        ExpectEncoding(*v, value);
    CheckValue(row, type, v, {"err", "code", "result", "used", "allocates"});
}

ZT_ROW_OP(value) {
    size_t blank = row.arg.find(' ');
    std::string type = row.arg.substr(0, blank);
    std::unique_ptr<AsnType> v = Make(type);
    Zol::FromJson(Zol::Json::parse(row.arg.substr(blank + 1)), *v);
    CheckValue(row, type, v);
}

}  // namespace zt

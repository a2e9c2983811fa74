// Reads the row files of tests/rows/ and runs each row through the handler
// of its operation; one test per file. The operations on values of any
// type live here too:
//
//   decode TYPE HEX [| HEX]   decodes the octets (those after '|' follow
//                             the value) into a new value
//   value TYPE JSON           fills a new value from its JSON form
//
// and then, in their order, checks on the value:
//
//   err TEXT      a line on standard error (decode; in order)
//   code N        the decode long-jumped with N: it failed, and the front
//                 door wrote its own line
//   result 0      the decode failed without a jump
//   hex HEX       the value encodes to these octets; a decoded value with
//                 no hex check must encode to its input
//   print + |...  the value prints as these lines
//   json TEXT     the value's JSON form
//   set PATH...   members present (dotted paths through _getref)
//   unset PATH... members absent
//   with HEX      the value merges a value of its type decoded from HEX
//                 ("self": the value itself)
//   assign HEX    the value is assigned one decoded from HEX (or "self")
//   clone         the value is replaced by its Clone
#include "rows.h"

#include <dirent.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>

#include <zol/json.h>

#include "support.h"
#include "tests/collisions.h"
#include "tests/patterns.h"

namespace zt {

namespace {

std::map<std::string, RowOp>& Ops() {
    static std::map<std::string, RowOp> ops;
    return ops;
}

std::vector<Row> ReadRows(const std::string& path) {
    std::ifstream in(path);
    std::vector<Row> rows;
    std::string line;
    for (int n = 1; std::getline(in, line); ++n) {
        size_t text = line.find_first_not_of(' ');
        if (text == std::string::npos || line[text] == '#')
            continue;
        if (text == 0) {
            Row r;
            r.file = path.substr(path.rfind('/') + 1);
            r.line = n;
            size_t blank = line.find(' ');
            r.op = line.substr(0, blank);
            r.arg = blank == std::string::npos ? "" : line.substr(blank + 1);
            rows.push_back(r);
        } else if (rows.empty()) {
            ADD_FAILURE() << path << ":" << n << ": a check before any row";
        } else if (line[text] == '|') {
            if (rows.back().checks.empty())
                ADD_FAILURE() << path << ":" << n << ": a '|' line before any check";
            else
                rows.back().checks.back().block.push_back(line.substr(text + 1));
        } else {
            Row::Check c;
            size_t blank = line.find(' ', text);
            c.key = line.substr(text, blank == std::string::npos ? std::string::npos : blank - text);
            c.text = blank == std::string::npos ? "" : line.substr(blank + 1);
            c.line = n;
            rows.back().checks.push_back(c);
        }
    }
    return rows;
}

std::vector<std::string> RowFiles() {
    std::vector<std::string> out;
    if (DIR* d = opendir(ZOL_ROWS)) {
        while (dirent* e = readdir(d)) {
            std::string name = e->d_name;
            if (name.size() > 4 && name.compare(name.size() - 4, 4, ".txt") == 0)
                out.push_back(name);
        }
        closedir(d);
    }
    std::sort(out.begin(), out.end());
    return out;
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

// --- values of any type ------------------------------------------------------

template <class T>
std::unique_ptr<AsnType> New() {
    return std::unique_ptr<AsnType>(new T);
}

const std::map<std::string, std::function<std::unique_ptr<AsnType>()>>& Universal() {
    static const std::map<std::string, std::function<std::unique_ptr<AsnType>()>> classes = {
        {"AsnInt", New<AsnInt>},
        {"AsnEnum", New<AsnEnum>},
        {"AsnBool", New<AsnBool>},
        {"AsnNull", New<AsnNull>},
        {"AsnReal", New<AsnReal>},
        {"AsnOcts", New<AsnOcts>},
        {"AsnBits", New<AsnBits>},
        {"AsnOid", New<AsnOid>},
        {"EXTERNAL", New<EXTERNAL>},
        {"ObjectDescriptor", New<ObjectDescriptor>},
        {"NumericString", New<NumericString>},
        {"PrintableString", New<PrintableString>},
        {"TeletexString", New<TeletexString>},
        {"T61String", New<T61String>},
        {"VideotexString", New<VideotexString>},
        {"IA5String", New<IA5String>},
        {"GraphicString", New<GraphicString>},
        {"VisibleString", New<VisibleString>},
        {"ISO646String", New<ISO646String>},
        {"GeneralString", New<GeneralString>},
        {"UTCTime", New<UTCTime>},
        {"GeneralizedTime", New<GeneralizedTime>},
    };
    return classes;
}

// Merging and assigning are not virtual: each type that rows merge or
// assign is named here.
struct Copier {
    void (*merge)(AsnType&, const AsnType&);
    void (*assign)(AsnType&, const AsnType&);
};
template <class T>
Copier CopierOf() {
    return {[](AsnType& a, const AsnType& b) { static_cast<T&>(a) |= static_cast<const T&>(b); },
            [](AsnType& a, const AsnType& b) { static_cast<T&>(a) = static_cast<const T&>(b); }};
}
const std::map<std::string, Copier>& Copiers() {
    using namespace Zol;
    static const std::map<std::string, Copier> copiers = {
        {"ZolMarketRep", CopierOf<ZolMarketRep>()},
        {"AsnFixedReal", CopierOf<AsnFixedReal>()},
        {"ZolOrderId", CopierOf<ZolOrderId>()},
        {"ZolOrderRep", CopierOf<ZolOrderRep>()},
        {"ZolSecBoardRep", CopierOf<ZolSecBoardRep>()},
        {"ZolTransRep", CopierOf<ZolTransRep>()},
        {"ZolTransReq", CopierOf<ZolTransReq>()},
        {"ZolTradeRep", CopierOf<ZolTradeRep>()},
        {"ZolNegDealRep", CopierOf<ZolNegDealRep>()},
        {"ZolNegDealCPDetails", CopierOf<ZolNegDealCPDetails>()},
        {"ZolTradeAllocationRep", CopierOf<ZolTradeAllocationRep>()},
        {"ZolOrderbookByPriceRep", CopierOf<ZolOrderbookByPriceRep>()},
        {"ZolOrderMultiLeg", CopierOf<ZolOrderMultiLeg>()},
        {"ZolOrderMarketMakerBlock", CopierOf<ZolOrderMarketMakerBlock>()},
        {"ZolUserRep", CopierOf<ZolUserRep>()},
        {"ZolFirmRep", CopierOf<ZolFirmRep>()},
        {"ZolMessageRep", CopierOf<ZolMessageRep>()},
        {"ZolAuditEventRep", CopierOf<ZolAuditEventRep>()},
        {"ZolNewsHeaderRep", CopierOf<ZolNewsHeaderRep>()},
        {"ZolPermissionSet", CopierOf<ZolPermissionSet>()},
        {"PatAll", CopierOf<PatAll>()},
        {"PatHolder", CopierOf<PatHolder>()},
        {"PatChoice", CopierOf<PatChoice>()},
        {"PatList", {nullptr, [](AsnType& a, const AsnType& b) {
                         static_cast<PatList&>(a) = static_cast<const PatList&>(b);
                     }}},
        {"EXTERNAL", CopierOf<EXTERNAL>()},
    };
    return copiers;
}

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

std::string Printed(const AsnType& v) {
    std::ostringstream os;
    os << v;
    return os.str();
}

// An expected text of "?" is a place to fill: the actual text is written
// to standard output for the one who writes the row, and nothing fails.
void Expect(const Row& row, const Row::Check& c, const std::string& actual, const std::string& expected) {
    if (c.text == "?") {
        std::printf("ZT-FILL %s:%d %s\n%s\nZT-END\n", row.file.c_str(), c.line, c.key.c_str(), actual.c_str());
        return;
    }
    EXPECT_EQ(actual, expected);
}

}  // namespace

void CheckValue(const Row& row, const std::string& type, std::unique_ptr<AsnType>& v,
                const std::vector<std::string>& skip) {
    for (const Row::Check& c : row.checks) {
        SCOPED_TRACE("line " + std::to_string(c.line) + ": " + c.key);
        if (std::find(skip.begin(), skip.end(), c.key) != skip.end())
            continue;
        if (c.key == "hex") {
            Expect(row, c, Encoded(*v), Hex(Bytes(c.text.c_str())));
        } else if (c.key == "print") {
            Expect(row, c, Printed(*v), Row::Joined(c));
            EXPECT_EQ(indentLevel, 0);
        } else if (c.key == "json") {
            Expect(row, c, Zol::ToJson(*v).dump(), c.text);
        } else if (c.key == "set" || c.key == "unset") {
            std::istringstream paths(c.text);
            for (std::string path; paths >> path;)
                EXPECT_EQ(At(v.get(), path) != nullptr, c.key == "set") << path;
        } else if (c.key == "with" || c.key == "assign") {
            auto copier = Copiers().find(type);
            ASSERT_NE(copier, Copiers().end()) << "no merge or assignment for " << type << " in rows.cpp";
            std::unique_ptr<AsnType> other = c.text == "self" ? nullptr : DecodedAs(type, c.text);
            (c.key == "with" ? copier->second.merge : copier->second.assign)(*v, other ? *other : *v);
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

std::unique_ptr<AsnType> Make(const std::string& name) {
    static const AsnModuleDesc* const patterns[] = {&Zol::TESTPATTERNSModule, &Zol::TESTCOLLISIONSModule, nullptr};
    const AsnTypeDesc* d = Zol::FindType(name.c_str());
    if (!d)
        d = AsnFindType(patterns, name.c_str());
    if (d)
        return std::unique_ptr<AsnType>(d->create());
    auto u = Universal().find(name);
    if (u != Universal().end())
        return u->second();
    ADD_FAILURE() << "no type " << name;
    return std::unique_ptr<AsnType>(new AsnNull);
}

ZT_ROW_OP(decode) {
    size_t blank = row.arg.find(' ');
    std::string type = row.arg.substr(0, blank);
    std::string wire = row.arg.substr(blank + 1);
    std::unique_ptr<AsnType> v = Make(type);
    Outcome o = Decode(Bytes(wire.c_str()), *v);
    std::string err;
    int result = 1;
    for (const Row::Check& c : row.checks) {
        if (c.key == "err")
            err += c.text + "\n";
        else if (c.key == "result")
            result = std::stoi(c.text);
    }
    if (const std::string* code = row.Get("code")) {
        result = 0;
        err += DoorLine(AsnTypeName(v->_getdesc()), std::stoi(*code));
    }
    EXPECT_EQ(o.err, err);
    EXPECT_EQ(o.result, result);
    if (!o.result)
        return;
    if (!row.Get("hex")) {
        EXPECT_EQ(Encoded(*v), Hex(Bytes(wire.substr(0, wire.find('|')).c_str())));
    }
    CheckValue(row, type, v, {"err", "code", "result"});
}

ZT_ROW_OP(value) {
    size_t blank = row.arg.find(' ');
    std::string type = row.arg.substr(0, blank);
    std::unique_ptr<AsnType> v = Make(type);
    Zol::FromJson(Zol::Json::parse(row.arg.substr(blank + 1)), *v);
    CheckValue(row, type, v);
}

}  // namespace zt

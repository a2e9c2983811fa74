// Reading the row files of tests/rows/, and making values of the types
// they name; shared by the rows' own test and the thread stress test.
#include <algorithm>
#include <fstream>
#include <functional>
#include <map>

#include "rows.h"
#include "support.h"
#include "tests/collisions.h"
#include "tests/patterns.h"

namespace zt {

namespace {

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
        {"ZolTransReqChoice", CopierOf<ZolTransReqChoice>()},
        {"ZolQueryReq", CopierOf<ZolQueryReq>()},
        {"ZolQueryReqChoice", CopierOf<ZolQueryReqChoice>()},
        {"ZolQueryRep", CopierOf<ZolQueryRep>()},
        {"ZolOrderEntry", CopierOf<ZolOrderEntry>()},
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

}  // namespace

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

std::vector<std::string> RowFiles() { return FilesIn(ZOL_ROWS, ".txt"); }

std::string Expanded(const std::string& hex) {
    std::string out;
    size_t at = 0;
    for (size_t open; (open = hex.find('[', at)) != std::string::npos;) {
        size_t close = hex.find("]*", open), digits = 0;
        unsigned long n = std::stoul(hex.substr(close + 2), &digits);
        out += hex.substr(at, open - at);
        for (unsigned long i = 0; i < n; ++i)
            out += hex.substr(open + 1, close - open - 1) + " ";
        at = close + 2 + digits;
    }
    return out + hex.substr(at);
}

const Copier* FindCopier(const std::string& type) {
    auto c = Copiers().find(type);
    return c == Copiers().end() ? nullptr : &c->second;
}

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

}  // namespace zt

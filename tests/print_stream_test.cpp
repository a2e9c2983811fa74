// What printing does to the stream: each line is handed over whole and
// the stream synced where the format ends a line with std::endl, a stream
// that fails or throws ends up as the stream's own insertions left it,
// and numbers read as the stream writes them.
#include "support.h"

#include <cmath>
#include <cstring>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>
#include <stdexcept>

namespace {

// Records what reaches it, with '|' for every sync.
struct LogBuf : std::streambuf {
    std::string log;
    int overflow(int c) override {
        if (c != EOF)
            log += char(c);
        return c == EOF ? 0 : c;
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        log.append(s, size_t(n));
        return n;
    }
    int sync() override {
        log += '|';
        return 0;
    }
};

// Takes three bytes, then no more.
struct ShortBuf : LogBuf {
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        std::streamsize k = std::min<std::streamsize>(n, std::streamsize(3 - std::min<size_t>(log.size(), 3)));
        log.append(s, size_t(k));
        return k;
    }
    int overflow(int) override { return EOF; }
};

struct ThrowBuf : std::streambuf {
    std::streamsize xsputn(const char*, std::streamsize) override { throw std::runtime_error("full"); }
    int overflow(int) override { throw std::runtime_error("full"); }
};

// A class of a user's that prints itself, ending a line of its own.
struct Shout : AsnType {
    void Print(std::ostream& os) const override { os << "LOUD" << std::endl << "x"; }
};

Zol::ZolSecBoardId BoardId() {
    Zol::ZolSecBoardId id;
    id.secCode = "AB";
    id.boardId = "N";
    return id;
}

TEST(PrintStream, LinesAreSyncedWhereTheFormatEndsThem) {
    Zol::ZolOrderbookByPriceRep book;
    book.seqNum = 7;
    book.secBoardId = new Zol::ZolSecBoardId(BoardId());
    Zol::ZolPricePoint* p = book.bidList.Append();
    p->price = new Zol::ZolPrice;
    p->price->value = 101.25;
    p->userDepth = 5;
    p->userHasBest = true;
    p->numOrders = new Zol::ZolInteger(3);
    book.numOtherOpenOrders = -2;
    Zol::ZolTransRep fresh;  // a choice without an object ends its line unsynced
    Shout shout;
    AsnAny any;
    any.value = &shout;
    EXTERNAL external;
    external.direct_reference = new AsnOid(1, 2, 3);
    external.encoding = new EXTERNALChoice;
    external.encoding->value = new Shout;
    AsnType root;

    const struct {
        const char* name;
        const AsnType& value;
        const char* log;
    } rows[] = {
        {"book", book,
         "{ -- SEQUENCE --\n|    seqNum 7,\n|    secBoardId { -- SEQUENCE --\n|        secCode '4142'H  -- \"AB\" --,\n|"
         "        boardId '4e'H  -- \"N\" --\n|    }    bidList { -- SEQUENCE/SET OF -- \n|        { -- SEQUENCE --\n|"
         "            price { -- SEQUENCE --\n|                value 101.25,\n|                decimals -- void --\n|\n|"
         "            }            yield -- void --,\n|            userDepth 5,\n|            userHasBest TRUE,\n|"
         "            depth -- void --,\n|,\n|            numOrders 3            numFirms -- void --,\n|"
         "            hasMarketMaker -- void --,\n|            hasHiddenDepth -- void --\n|\n|        }\n|    },\n|"
         "    offerList { -- SEQUENCE/SET OF -- \n|    },\n|    numOtherOpenOrders -2\n|}"},
        {"new choice", fresh, "null -- void3 --\n"},
        {"user's class in an ANY", any, "LOUD\n|x"},
        {"user's class in an EXTERNAL", external,
         "{ -- SEQUENCE --\n|    direct-reference {1 2 3}    indirect-reference -- void --,\n|"
         "    data-value-descriptor -- void --,\n|    encoding single-ASN1-type LOUD\n|x\n|}"},
        {"the root class", root, "ERROR - Attempt to print an improperly formed ANY type (programming error).\n|"},
    };
    for (const auto& r : rows) {
        LogBuf buf;
        std::ostream os(&buf);
        os << r.value;
        EXPECT_EQ(buf.log, r.log) << r.name;
        EXPECT_TRUE(os.good()) << r.name;
    }
}

TEST(PrintStream, AFailingStreamEndsAsItsInsertionsLeftIt) {
    const Zol::ZolSecBoardId id = BoardId();
    const std::ios_base::iostate badAndFailed = std::ios_base::badbit | std::ios_base::failbit;

    LogBuf buf;
    std::ostream bad(&buf);
    bad.setstate(std::ios_base::badbit);
    bad << id;
    EXPECT_EQ(buf.log, "");
    EXPECT_EQ(bad.rdstate(), badAndFailed);

    // Text does not use up the width of a failed stream; a number does.
    std::ostream failed(&buf);
    failed.setstate(std::ios_base::failbit);
    failed.width(7);
    failed << AsnOcts("x") << id;
    EXPECT_EQ(failed.width(), 7);
    failed << AsnInt(5);
    EXPECT_EQ(failed.width(), 0);
    EXPECT_EQ(buf.log, "");

    ShortBuf full;
    std::ostream shortWrite(&full);
    shortWrite << id;
    EXPECT_EQ(full.log, "{ -");
    EXPECT_EQ(shortWrite.rdstate(), badAndFailed);

    // An exception of the buffer sets badbit, and goes on only if the
    // stream throws on badbit.
    ThrowBuf throwing;
    std::ostream quiet(&throwing);
    quiet << id;
    EXPECT_EQ(quiet.rdstate(), badAndFailed);
    std::ostream loud(&throwing);
    loud.exceptions(std::ios_base::badbit);
    EXPECT_THROW(loud << id, std::runtime_error);
    EXPECT_EQ(loud.rdstate(), std::ios_base::badbit);
}

TEST(PrintStream, FieldWidthPadsTheFirstPiece) {
    const struct {
        std::ios_base::fmtflags adjust;
        std::streamsize width;
        const AsnType& value;
        const char* printed;
    } rows[] = {
        {std::ios_base::right, 20, BoardId(),
         "****{ -- SEQUENCE --\n    secCode '4142'H  -- \"AB\" --,\n    boardId '4e'H  -- \"N\" --\n}|"},
        {std::ios_base::left, 5, AsnOcts("x"), "'****78'H  -- \"x\" --|"},
        {std::ios_base::internal, 8, AsnReal(-1.5), "-****1.5|"},
        {std::ios_base::internal, 8, AsnReal(-std::numeric_limits<double>::infinity()), "-****inf|"},
        {std::ios_base::right, 8, AsnReal(0.25), "****0.25|"},
    };
    for (const auto& r : rows) {
        std::ostringstream os;
        os.setf(r.adjust, std::ios_base::adjustfield);
        os << std::setfill('*') << std::setw(int(r.width)) << r.value << '|';
        EXPECT_EQ(os.str(), r.printed);
    }
}

// A REAL prints as a stream with default settings writes the double:
// around every power of ten that decides the form, at halves of the sixth
// digit, at the ends of the range, and at random bit patterns.
TEST(PrintStream, RealsPrintAsAStreamWritesTheDouble) {
    std::vector<double> values = {0.0, -0.0, 5e-324, 2.2250738585072014e-308, 1.7976931348623157e308,
                                  std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                                  std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::quiet_NaN(),
                                  101.37, 0.1234565, 999999.5, 9999995.0, 1234565.0, 0.000123456789};
    for (int e = -6; e <= 8; ++e) {
        const double p = std::pow(10.0, e);
        for (double d : {p, std::nextafter(p, 0.0), std::nextafter(p, 1e300), p * (1 - 5e-7), p * (1 + 5e-7),
                         p * 1.234565, p * 9.999995, p * 9.9999949999})
            values.push_back(d);
    }
    std::mt19937_64 rng(15);
    for (int i = 0; i < 20000; ++i) {
        uint64_t bits = rng();
        double d;
        std::memcpy(&d, &bits, sizeof d);
        values.push_back(d);
        values.push_back(double(int64_t(rng() % 2000000000) - 1000000000) / std::pow(10.0, double(rng() % 12)));
    }
    for (double d : values) {
        std::ostringstream expected, printed;
        expected << d;
        printed << AsnReal(d);
        ASSERT_EQ(printed.str(), expected.str()) << std::hexfloat << d;
    }
}

}  // namespace

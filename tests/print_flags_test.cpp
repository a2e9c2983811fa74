// Numbers in printed values are decimal whatever the caller's stream is set
// to, and printing leaves the stream's settings as it found them.
#include "support.h"

#include <iomanip>
#include <locale>
#include <sstream>

namespace {

// A locale that groups digits in threes with '.', as de_DE does.
struct GroupedThousands : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(PrintFlags, NumbersAreDecimalWhateverTheStreamIsSetTo) {
    const AsnInt negative(-1234567), positive(100);
    const AsnOid oid(1, 2, 840, 113549);
    AsnBits bits;
    bits.Set(12);
    const struct {
        const AsnType& value;
        const char* printed;
    } values[] = {
        {negative, "-1234567"},
        {positive, "100"},
        {oid, "{1 2 840 113549}"},
        {bits, "'0000'H  -- BIT STRING bitlen = 12 --"},
    };
    const struct {
        const char* name;
        void (*set)(std::ostream&);
    } settings[] = {
        {"hex", [](std::ostream& os) { os << std::hex << std::showbase << std::uppercase; }},
        {"oct", [](std::ostream& os) { os << std::oct; }},
        {"showpos", [](std::ostream& os) { os << std::showpos; }},
        {"grouping", [](std::ostream& os) { os.imbue(std::locale(os.getloc(), new GroupedThousands)); }},
    };
    for (const auto& s : settings) {
        for (const auto& v : values) {
            std::ostringstream os;
            s.set(os);
            const std::ios_base::fmtflags flags = os.flags();
            os << v.value;
            EXPECT_EQ(os.str(), v.printed) << s.name;
            EXPECT_EQ(os.flags(), flags) << s.name;
        }
    }
}

// A field width pads the first thing written, as it does for a number or
// a character inserted alone, and is then used up.
TEST(PrintFlags, FieldWidthPadsTheFirstThingWritten) {
    const struct {
        std::ios_base::fmtflags adjust;
        const AsnType& value;
        const char* printed;
    } rows[] = {
        {std::ios_base::right, AsnInt(-42), "***-42|"},
        {std::ios_base::left, AsnInt(-42), "-42***|"},
        {std::ios_base::internal, AsnInt(-42), "-***42|"},
        {std::ios_base::internal, AsnInt(42), "****42|"},
        {std::ios_base::right, AsnInt(1234567), "1234567|"},
        {std::ios_base::right, AsnOid(1, 2), "*****{1 2}|"},
    };
    for (const auto& r : rows) {
        std::ostringstream os;
        os.setf(r.adjust, std::ios_base::adjustfield);
        os << std::setfill('*') << std::setw(6) << r.value << '|';
        EXPECT_EQ(os.str(), r.printed);
    }
}

}  // namespace

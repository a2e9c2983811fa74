// Display texts of the protocol's values under the locale that the
// environment names, the locale services beneath them and the conversions
// of dates, times and long integers, as rows of tests/rows/format.txt:
//
//   env LC_ALL=de_DE.UTF-8        the locale variables for the calls below
//     KEY ARGS => TEXT            a call and the text it gives
//
//   fixed V [d=N] [zero] [plain]  ZolFormat::FixedReal (d=N: its decimals;
//   int V [zero] [plain]          zero: showZero; plain: without the locale)
//   long V [zero] [plain]         and Integer, LongInt
//   date D, datetime D T [MS]     ZolFormat::Date, DateTime (MS: with millisec)
//   day Y M D, time H M S MS [size=N]   Platform::DateFormat, TimeFormat
//   settings                      the number settings read from the locale
//   item N                        Platform::LocaleInfo
//   fmt DIGITS LEAD GROUPING NEG DEC THOU   the settings of the number rows
//   number PLAIN [size=N]         Platform::NumberFormat with them
//   record DEC THOU GROUPING DIGITS NEG     put into ZolFormat's own settings
//   int64 V                       ZolConvert::Int64
//   unpack D [T [MS]]             ZolConvert to the time record: Y M D h m s ms
//   pack Y M D h m s ms           and back: D T MS
//
// A service that fails gives "fails". A separator of '' is empty, of - null.
// A row that names a locale the machine lacks, in any variable, is skipped
// with a line that names it, unless the row's check "absent NAME..." names
// it too: those locales must be missing. LOCPATH=$LOCALES finds the tests'
// own locale, tests/zt_ZT.locale, built into the build tree.
#include <locale.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "rows.h"

namespace {

using namespace Zol;

// The variables that name the user's locale; the environment's own are
// put aside for each row. LOCPATH, where locales are looked for, is the
// machine's and stays unless a row sets it.
const char* const kVars[] = {"LC_ALL", "LC_NUMERIC", "LC_MONETARY", "LC_TIME", "LANG"};

// The locale variables of a row for its length; what was there comes back.
struct Environment {
    std::vector<std::string> set;
    std::vector<std::pair<std::string, std::string>> saved;
    explicit Environment(const std::vector<std::string>& assignments) {
        for (const char* var : kVars)
            Clear(var);
        for (const std::string& a : assignments) {
            std::string var = a.substr(0, a.find('=')), value = a.substr(a.find('=') + 1);
            Clear(var);
            setenv(var.c_str(), value == "$LOCALES" ? ZOL_LOCALES : value.c_str(), 1);
        }
        ZolFormat::GetNumberLocaleInfo();
    }
    ~Environment() {
        for (const std::string& var : set)
            unsetenv(var.c_str());
        for (const auto& v : saved)
            setenv(v.first.c_str(), v.second.c_str(), 1);
        ZolFormat::GetNumberLocaleInfo();
    }
    void Clear(const std::string& var) {
        if (std::find(set.begin(), set.end(), var) != set.end())
            return;
        set.push_back(var);
        if (const char* v = std::getenv(var.c_str()))
            saved.emplace_back(var, v);
        unsetenv(var.c_str());
    }
};

// Whether the machine has the locale `name`, decided as the library decides
// it: one that newlocale cannot load is missing, and the library reads "C"
// in its place.
bool Installed(const std::string& name) {
    locale_t l = newlocale(LC_ALL_MASK, name.c_str(), locale_t{});
    return l && (freelocale(l), true);
}

std::vector<std::string> Words(const std::string& s) {
    std::istringstream in(s);
    std::vector<std::string> out;
    for (std::string w; in >> w;)
        out.push_back(w == "''" ? "" : w);
    return out;
}

// A service's text: "fails" when it returned 0, which must leave the
// empty text; otherwise its count must be the text's length and the NUL.
std::string Service(int n, const char* out) {
    if (n == 0)
        return *out ? "fails, not emptied" : "fails";
    EXPECT_EQ(size_t(n), std::strlen(out) + 1);
    return out;
}

// Every ZolFormat result is the one shared buffer.
std::string Shown(const char* text) {
    EXPECT_EQ(text, ZolFormat::result);
    return text;
}

// A time record's fields: year, month, day, hour, minute, second, milliseconds.
std::vector<uint16_t*> FieldsOf(SYSTEMTIME& t) {
    return {&t.wYear, &t.wMonth, &t.wDay, &t.wHour, &t.wMinute, &t.wSecond, &t.wMilliseconds};
}
std::string Fields(SYSTEMTIME t) {
    std::string s;
    for (uint16_t* f : FieldsOf(t))
        s += (s.empty() ? "" : " ") + std::to_string(*f);
    return s;
}
SYSTEMTIME Record(const std::vector<std::string>& a, size_t from) {
    SYSTEMTIME t{};
    for (size_t i = 0; i < a.size(); ++i)
        *FieldsOf(t).at(from + i) = uint16_t(std::stoi(a[i]));
    return t;
}

struct Call {
    NUMBERFMTA fmt{};
    std::string seps[2];  // the number rows' separators

    std::string Run(const std::string& key, std::vector<std::string> a) {
        bool zero = false, locale = true;
        int decimals = -100, size = key == "item" ? 10 : 1000;
        auto flag = [&](const std::string& w) {
            if (w == "zero" || w == "plain")
                (w == "zero" ? zero : locale) = w == "zero";
            else if (w.compare(0, 2, "d=") == 0 || w.compare(0, 5, "size=") == 0)
                (w[0] == 'd' ? decimals : size) = std::stoi(w.substr(w.find('=') + 1));
            return w == "zero" || w == "plain" || w.find('=') != std::string::npos;
        };
        a.erase(std::remove_if(a.begin(), a.end(), flag), a.end());
        auto num = [&](size_t i) { return std::strtod(a.at(i).c_str(), nullptr); };
        auto whole = [&](size_t i) { return int32_t(std::stol(a.at(i))); };
        char out[1000];
        std::memset(out, 'x', sizeof out);
        if (key == "fixed") {
            ZolFixedReal r;
            r.value = num(0);
            if (decimals != -100)
                r.decimals = new AsnInt(decimals);
            return Shown(ZolFormat::FixedReal(r, zero, locale, 0));
        }
        if (key == "int")
            return Shown(ZolFormat::Integer(ZolInteger(whole(0)), zero, locale, 0));
        if (key == "long" || key == "int64") {
            ZolLongInt r;
            r.value = num(0);
            return key == "long" ? Shown(ZolFormat::LongInt(r, zero, locale, 0))
                                 : std::to_string(ZolConvert::Int64(r));
        }
        if (key == "date")
            return Shown(ZolFormat::Date(ZolDate(whole(0))));
        if (key == "datetime" || key == "unpack") {
            ZolDateTimeMS ms;
            ZolDateTime dt;
            dt.date = ms.date = whole(0);
            dt.time = ms.time = a.size() > 1 ? whole(1) : 0;
            ms.millisec = a.size() > 2 ? whole(2) : 0;
            if (key == "datetime")
                return Shown(a.size() > 2 ? ZolFormat::DateTime(ms) : ZolFormat::DateTime(dt));
            return Fields(a.size() > 2   ? ZolConvert::DateTime(ms)
                          : a.size() > 1 ? ZolConvert::DateTime(dt)
                                         : ZolConvert::Date(ZolDate(dt.date)));
        }
        if (key == "pack") {
            SYSTEMTIME t = Record(a, 0);
            ZolDateTimeMS ms = ZolConvert::DateTimeMS(t);
            ZolDateTime dt = ZolConvert::DateTime(t);
            EXPECT_EQ(ZolConvert::Date(t).value, ms.date.value);
            EXPECT_EQ(dt.date.value, ms.date.value);
            EXPECT_EQ(dt.time.value, ms.time.value);
            return std::to_string(ms.date.value) + ' ' + std::to_string(ms.time.value) + ' ' +
                   std::to_string(ms.millisec.value);
        }
        if (key == "settings") {
            const NUMBERFMTA& n = ZolFormat::numberFormat;
            EXPECT_EQ(n.lpDecimalSep, ZolFormat::decimalSep);
            EXPECT_EQ(n.lpThousandSep, ZolFormat::thousandSep);
            std::ostringstream s;
            s << "dec '" << n.lpDecimalSep << "' thou '" << n.lpThousandSep << "' grouping " << n.Grouping
              << " digits " << n.NumDigits << " lead " << n.LeadingZero << " neg " << n.NegativeOrder;
            return s.str();
        }
        if (key == "day")
            return Service(Platform::DateFormat(Record(a, 0), out, size), out);
        if (key == "time")
            return Service(Platform::TimeFormat(Record(a, 3), out, size), out);
        if (key == "item")
            return Service(Platform::LocaleInfo(unsigned(whole(0)), out, size), out);
        if (key == "number")
            return Service(Platform::NumberFormat(a.empty() ? "" : a[0].c_str(), fmt, out, size), out);
        if (key == "fmt") {
            seps[0] = a.at(4), seps[1] = a.at(5);
            fmt = {unsigned(whole(0)), unsigned(whole(1)), unsigned(whole(2)), seps[0] == "-" ? nullptr : &seps[0][0],
                   seps[1] == "-" ? nullptr : &seps[1][0], unsigned(whole(3))};
            return "";
        }
        if (key == "record") {
            std::strcpy(ZolFormat::decimalSep, a.at(0).c_str());
            std::strcpy(ZolFormat::thousandSep, a.at(1).c_str());
            ZolFormat::numberFormat.Grouping = unsigned(whole(2));
            ZolFormat::numberFormat.NumDigits = unsigned(whole(3));
            ZolFormat::numberFormat.NegativeOrder = unsigned(whole(4));
            return "";
        }
        ADD_FAILURE() << "no call " << key;
        return "";
    }
};

ZT_ROW_OP(env) {
    std::vector<std::string> assignments = Words(row.arg);
    Environment env(assignments);
    // The locales that the row's "absent" check names must be missing; any
    // other that a variable names (LANG, LC_ALL, any LC_*) must be there, or
    // the row is skipped with a line that says which.
    const std::string* absent = row.Get("absent");
    std::vector<std::string> missing = absent ? Words(*absent) : std::vector<std::string>{};
    for (const std::string& name : missing)
        EXPECT_FALSE(Installed(name)) << name << " is installed";
    std::string lacking;
    for (const std::string& a : assignments) {
        std::string var = a.substr(0, a.find('=')), name = a.substr(a.find('=') + 1);
        if ((var == "LANG" || var.compare(0, 3, "LC_") == 0) && !Installed(name) &&
            std::find(missing.begin(), missing.end(), name) == missing.end())
            lacking += (lacking.empty() ? " " : ", ") + name + " (named by " + var + ")";
    }
    if (!lacking.empty()) {
        std::printf("%s:%d: skipped, the machine lacks the locale%s\n", row.file.c_str(), row.line, lacking.c_str());
        return;
    }
    Call call;
    for (const zt::Row::Check& c : row.checks) {
        if (c.key == "absent")
            continue;
        SCOPED_TRACE("line " + std::to_string(c.line));
        size_t arrow = c.text.find("=>");
        std::string args = c.text.substr(0, arrow);
        std::string actual = call.Run(c.key, Words(args));
        if (arrow != std::string::npos) {
            std::string want = c.text.substr(std::min(arrow + 3, c.text.size()));
            zt::Expect(row, c, args + "=> " + actual, want == "?" ? want : args + "=> " + want);
        }
    }
}

// Run alone, as ctest runs each test, this sees what the library's own
// object read while the library loaded: every locale has a decimal
// separator.
TEST(ZolFormat, SettingsAreReadWhenTheLibraryLoads) {
    EXPECT_EQ(ZolFormat::numberFormat.lpDecimalSep, ZolFormat::decimalSep);
    EXPECT_NE(ZolFormat::decimalSep[0], '\0');
    EXPECT_EQ(ZolFormat::numberFormat.LeadingZero, 1u);
}

}  // namespace

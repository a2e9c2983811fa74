// Display text of the protocol's values, the conversions of dates, times
// and long integers, and the locale services beneath them.
#include "support.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace {

using Zol::NUMBERFMTA;
using Zol::SYSTEMTIME;
using Zol::ZolConvert;
using Zol::ZolFormat;
namespace Platform = Zol::Platform;

// Runs each test under the locale variables it asks for, and puts the
// environment and the number settings back afterwards.
class Locale : public testing::Test {
protected:
    static constexpr const char* vars[] = {"LC_ALL", "LC_NUMERIC", "LC_MONETARY", "LC_TIME", "LANG"};
    std::string saved[5];
    bool had[5] = {};

    void SetUp() override {
        for (int i = 0; i < 5; ++i) {
            const char* v = std::getenv(vars[i]);
            had[i] = v != nullptr;
            saved[i] = v ? v : "";
            unsetenv(vars[i]);
        }
        Use("C");
    }
    void TearDown() override {
        for (int i = 0; i < 5; ++i) {
            if (had[i])
                setenv(vars[i], saved[i].c_str(), 1);
            else
                unsetenv(vars[i]);
        }
        ZolFormat::GetNumberLocaleInfo();
    }
    static void Use(const char* locale) {
        setenv("LC_ALL", locale, 1);
        ZolFormat::GetNumberLocaleInfo();
    }
};

Zol::ZolFixedReal Fixed(double v, const int* decimals = nullptr) {
    Zol::ZolFixedReal r;
    r.value = v;
    if (decimals)
        r.decimals = new AsnInt(*decimals);
    return r;
}

Zol::ZolLongInt Long(double v) {
    Zol::ZolLongInt r;
    r.value = v;
    return r;
}

Zol::ZolDateTime At(int32_t date, int32_t time) {
    Zol::ZolDateTime dt;
    dt.date = date;
    dt.time = time;
    return dt;
}

// A number service call: the result text, or "<failed>" with a check that
// the failure left the empty text.
std::string Rewrite(const char* plain, const NUMBERFMTA& fmt, int size = 1000) {
    char out[1000];
    std::memset(out, 'x', sizeof out);
    int n = Platform::NumberFormat(plain, fmt, out, size);
    if (n == 0)
        return out[0] == '\0' ? "<failed>" : "<failed, not emptied>";
    EXPECT_EQ(size_t(n), std::strlen(out) + 1);
    return out;
}

// Run alone, as ctest runs each test, this sees what the object built
// when the library loaded has read: every locale has a decimal separator.
TEST(ZolFormat, SettingsAreReadWhenTheLibraryLoads) {
    EXPECT_EQ(ZolFormat::numberFormat.lpDecimalSep, ZolFormat::decimalSep);
    EXPECT_EQ(ZolFormat::numberFormat.lpThousandSep, ZolFormat::thousandSep);
    EXPECT_NE(ZolFormat::decimalSep[0], '\0');
    EXPECT_EQ(ZolFormat::numberFormat.LeadingZero, 1u);
}

TEST_F(Locale, FixedRealPlainForms) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const int two = 2, zero = 0, twelve = 12, minus = -3;
    const struct {
        double v;
        const int* decimals;
        bool showZero;
        const char* text;
    } rows[] = {
        {0, nullptr, false, ""},
        {0, &two, true, "0.00"},
        {0, nullptr, true, "0.000000000"},
        {1e-9, nullptr, false, ""},          // under 1e-8 counts as zero
        {-1e-9, nullptr, false, ""},
        {1e-9, nullptr, true, "0.000000001"},
        {1e-8, nullptr, false, "0.000000010"},   // at least 1e-8 shows
        {2e-8, nullptr, false, "0.000000020"},
        {-2e-8, nullptr, false, "-0.000000020"},
        {nan, nullptr, false, ""},
        {12.5, nullptr, false, "12.500000000"},
        {12.5, &twelve, false, "12.500000000"},  // at most 9 places
        {12.5, &two, false, "12.50"},
        {-1234567.891, &two, false, "-1234567.89"},
        {2.5, &zero, false, "2"},                // printf's rounding: to even
        {3.5, &zero, false, "4"},
        {12.5, &minus, false, "12"},             // a negative count shows no places
        {1e20, &two, false, "100000000000000000000.00"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_STREQ(ZolFormat::FixedReal(Fixed(r.v, r.decimals), r.showZero, false, 0), r.text);
        // The "C" locale has a point, no grouping and the minus in front.
        EXPECT_STREQ(ZolFormat::FixedReal(Fixed(r.v, r.decimals), r.showZero, true, 0), r.text);
    }
    EXPECT_STREQ(ZolFormat::FixedReal(Fixed(nan), true, false, 0), "nan");
    EXPECT_STREQ(ZolFormat::FixedReal(Fixed(nan), true, true, 0), "");  // the service refuses it
}

TEST_F(Locale, IntegerAndLongIntPlainForms) {
    const struct {
        int32_t v;
        bool showZero;
        const char* text;
    } ints[] = {
        {0, false, ""}, {0, true, "0"}, {-1234567, false, "-1234567"}, {INT32_MIN, false, "-2147483648"},
    };
    for (const auto& r : ints) {
        EXPECT_STREQ(ZolFormat::Integer(Zol::ZolInteger(r.v), r.showZero, false, 0), r.text);
        EXPECT_STREQ(ZolFormat::Integer(Zol::ZolInteger(r.v), r.showZero, true, 0), r.text);
    }

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double v;
        bool showZero;
        const char* text;
    } longs[] = {
        {-1.9, false, "-1"},
        {1.9, false, "1"},
        {0.5, false, "0"},   // not under 1e-8, so it shows, truncated
        {1e-9, false, ""},
        {1e-9, true, "0"},
        {nan, false, ""},
        {nan, true, "0"},
        {9007199254740992.0, false, "9007199254740992"},
        {1e19, false, "9223372036854775807"},
        {-1e19, false, "-9223372036854775808"},
    };
    for (const auto& r : longs) {
        EXPECT_STREQ(ZolFormat::LongInt(Long(r.v), r.showZero, false, 0), r.text) << r.v;
        EXPECT_STREQ(ZolFormat::LongInt(Long(r.v), r.showZero, true, 0), r.text) << r.v;
    }
}

TEST_F(Locale, EveryResultIsTheOneSharedBuffer) {
    const char* first = ZolFormat::Integer(Zol::ZolInteger(42), false, false, 0);
    EXPECT_STREQ(first, "42");
    const char* second = ZolFormat::LongInt(Long(7), false, true, 0);
    EXPECT_EQ(first, second);
    EXPECT_STREQ(first, "7");
    EXPECT_EQ(ZolFormat::Date(Zol::ZolDate(20180215)), first);
    EXPECT_EQ(ZolFormat::DateTime(At(20180215, 74047)), first);
    EXPECT_EQ(first, ZolFormat::result);
    // A value shown as nothing empties what was there.
    EXPECT_STREQ(ZolFormat::Integer(Zol::ZolInteger(0), false, false, 0), "");
}

TEST_F(Locale, SettingsOfTheCLocale) {
    EXPECT_EQ(ZolFormat::numberFormat.lpDecimalSep, ZolFormat::decimalSep);
    EXPECT_EQ(ZolFormat::numberFormat.lpThousandSep, ZolFormat::thousandSep);
    EXPECT_STREQ(ZolFormat::decimalSep, ".");
    EXPECT_STREQ(ZolFormat::thousandSep, "");
    EXPECT_EQ(ZolFormat::numberFormat.Grouping, 0u);
    EXPECT_EQ(ZolFormat::numberFormat.NumDigits, 0u);
    EXPECT_EQ(ZolFormat::numberFormat.LeadingZero, 1u);
    EXPECT_EQ(ZolFormat::numberFormat.NegativeOrder, 1u);

    const struct {
        unsigned item;
        const char* text;
    } items[] = {{14, "."}, {15, ""}, {16, "0"}, {17, "0"}, {18, "1"}, {4112, "1"}, {19, nullptr}};
    for (const auto& r : items) {
        char out[10] = "x";
        int n = Platform::LocaleInfo(r.item, out, sizeof out);
        EXPECT_STREQ(out, r.text ? r.text : "") << r.item;
        EXPECT_EQ(n, r.text ? int(std::strlen(r.text)) + 1 : 0) << r.item;
    }
    char tiny[1] = {'x'};
    EXPECT_EQ(Platform::LocaleInfo(14, tiny, 1), 0);  // "." and its NUL need 2
    EXPECT_EQ(tiny[0], '\0');
}

TEST_F(Locale, DatesAndTimesInTheCLocale) {
    EXPECT_STREQ(ZolFormat::Date(Zol::ZolDate(20180215)), "02/15/18");
    EXPECT_STREQ(ZolFormat::Date(Zol::ZolDate(20000229)), "02/29/00");
    // Time first, one blank, then the date.
    EXPECT_STREQ(ZolFormat::DateTime(At(20180215, 74047)), "07:40:47 02/15/18");
    Zol::ZolDateTimeMS ms;
    ms.date = 20180215;
    ms.time = 235959;
    ms.millisec = 999;
    EXPECT_STREQ(ZolFormat::DateTime(ms), "23:59:59 02/15/18");
    // A day or a time that does not exist shows as nothing.
    EXPECT_STREQ(ZolFormat::Date(Zol::ZolDate(20180230)), "");
    EXPECT_STREQ(ZolFormat::Date(Zol::ZolDate(20181315)), "");
    EXPECT_STREQ(ZolFormat::Date(Zol::ZolDate(19000229)), "");
    EXPECT_STREQ(ZolFormat::DateTime(At(20180230, 74047)), "07:40:47 ");
    EXPECT_STREQ(ZolFormat::DateTime(At(20180215, 246000)), " 02/15/18");
}

TEST(ZolConvert, PackedNumbersAndTheTimeRecord) {
    SYSTEMTIME t = ZolConvert::Date(Zol::ZolDate(20180215));
    EXPECT_EQ(t.wYear, 2018);
    EXPECT_EQ(t.wMonth, 2);
    EXPECT_EQ(t.wDay, 15);
    EXPECT_EQ(t.wHour + t.wMinute + t.wSecond + t.wMilliseconds, 0);
    EXPECT_EQ(ZolConvert::Date(t).value, 20180215);

    t = ZolConvert::DateTime(At(20180215, 74047));
    EXPECT_EQ(t.wHour, 7);
    EXPECT_EQ(t.wMinute, 40);
    EXPECT_EQ(t.wSecond, 47);
    EXPECT_EQ(t.wMilliseconds, 0);
    t.wMilliseconds = 321;
    Zol::ZolDateTime dt = ZolConvert::DateTime(t);
    EXPECT_EQ(dt.date.value, 20180215);
    EXPECT_EQ(dt.time.value, 74047);
    Zol::ZolDateTimeMS dms = ZolConvert::DateTimeMS(t);
    EXPECT_EQ(dms.time.value, 74047);
    EXPECT_EQ(dms.millisec.value, 321);
    dms.millisec = 1234;
    EXPECT_EQ(ZolConvert::DateTime(dms).wMilliseconds, 234);

    // Nothing is validated; the year is taken modulo 10000.
    t = ZolConvert::Date(Zol::ZolDate(20181399));
    EXPECT_EQ(t.wMonth, 13);
    EXPECT_EQ(t.wDay, 99);
    EXPECT_EQ(ZolConvert::Date(Zol::ZolDate(123456789)).wYear, 2345);
    t = ZolConvert::DateTime(At(0, 995960));
    EXPECT_EQ(t.wHour, 99);
    EXPECT_EQ(t.wMinute, 59);
    EXPECT_EQ(t.wSecond, 60);

    EXPECT_EQ(ZolConvert::Int64(Long(-1.9)), -1);
    EXPECT_EQ(ZolConvert::Int64(Long(4503599627370497.0)), 4503599627370497LL);
    EXPECT_EQ(ZolConvert::Int64(Long(9223372036854775808.0)), INT64_MAX);
    EXPECT_EQ(ZolConvert::Int64(Long(-9223372036854775808.0)), INT64_MIN);
    EXPECT_EQ(ZolConvert::Int64(Long(-INFINITY)), INT64_MIN);
    EXPECT_EQ(ZolConvert::Int64(Long(std::nan(""))), 0);
}

TEST(NumberService, RewritesPlainText) {
    char dot[] = ".", comma[] = ",", none[] = "", nnbsp[] = "\xE2\x80\xAF";
    const NUMBERFMTA de = {2, 1, 3, comma, dot, 1};
    const NUMBERFMTA en = {2, 1, 3, dot, comma, 1};
    auto with = [](NUMBERFMTA f, unsigned digits, unsigned grouping, unsigned lz, unsigned neg) {
        f.NumDigits = digits;
        f.Grouping = grouping;
        f.LeadingZero = lz;
        f.NegativeOrder = neg;
        return f;
    };
    const struct {
        const char* plain;
        NUMBERFMTA fmt;
        const char* text;
    } rows[] = {
        {"-1234.5", de, "-1.234,50"},
        {"1234567.891", de, "1.234.567,89"},
        {"123", de, "123,00"},
        {"1234", with(en, 0, 3, 1, 1), "1,234"},
        {"0.125", en, "0.13"},                         // half away from zero
        {"-0.125", en, "-0.13"},
        {"9.995", en, "10.00"},
        {"999.9", with(en, 0, 3, 1, 1), "1,000"},      // the carry makes a new group
        {"0.004", en, "0.00"},
        {".5", en, "0.50"},
        {"5.", en, "5.00"},
        {"0.5", with(en, 2, 3, 0, 1), ".50"},
        {"0", with(en, 0, 3, 0, 1), "0"},              // no places: the zero stays
        {"007", with(en, 0, 3, 1, 1), "7"},
        {"123456789", with(en, 0, 32, 1, 1), "12,34,56,789"},
        {"123456789", with(en, 0, 30, 1, 1), "123456,789"},
        {"123456789", with(en, 0, 0, 1, 1), "123456789"},
        {"123456789", with(en, 0, 1, 1, 1), "1,2,3,4,5,6,7,8,9"},
        {"-1.5", with(en, 1, 3, 1, 0), "(1.5)"},
        {"-1.5", with(en, 1, 3, 1, 2), "- 1.5"},
        {"-1.5", with(en, 1, 3, 1, 3), "1.5-"},
        {"-1.5", with(en, 1, 3, 1, 4), "1.5 -"},
        {"-0.5", with(en, 1, 3, 0, 0), "(.5)"},
        {"1234567", NUMBERFMTA{0, 1, 3, comma, nnbsp, 1}, "1\xE2\x80\xAF" "234\xE2\x80\xAF" "567"},
        {"1234567.5", NUMBERFMTA{1, 1, 3, dot, none, 1}, "1234567.5"},
        {"1e5", en, nullptr},
        {"", en, nullptr},
        {"-", en, nullptr},
        {".", en, nullptr},
        {"1.2.3", en, nullptr},
        {" 1", en, nullptr},
        {"nan", en, nullptr},
        {"1", with(en, 0, 3, 1, 5), nullptr},
    };
    for (const auto& r : rows)
        EXPECT_EQ(Rewrite(r.plain, r.fmt), r.text ? r.text : "<failed>") << r.plain;

    // The text and its NUL must fit.
    EXPECT_EQ(Rewrite("1234", with(en, 0, 0, 1, 1), 4), "<failed>");
    EXPECT_EQ(Rewrite("1234", with(en, 0, 0, 1, 1), 5), "1234");
}

// Settings put into the record directly, as another locale would give
// them: the test does not depend on the locales of the machine.
TEST_F(Locale, NumbersThroughOtherSettings) {
    std::strcpy(ZolFormat::decimalSep, ",");
    std::strcpy(ZolFormat::thousandSep, ".");
    ZolFormat::numberFormat.Grouping = 3;
    ZolFormat::numberFormat.NumDigits = 7;
    ZolFormat::numberFormat.NegativeOrder = 3;
    const int two = 2;
    EXPECT_STREQ(ZolFormat::FixedReal(Fixed(-1234567.891, &two), false, true, 0), "1.234.567,89-");
    EXPECT_STREQ(ZolFormat::FixedReal(Fixed(-1234567.891, &two), false, false, 0), "-1234567.89");
    EXPECT_STREQ(ZolFormat::FixedReal(Fixed(0.5), false, true, 0), "0,500000000");
    EXPECT_STREQ(ZolFormat::Integer(Zol::ZolInteger(1234567), false, true, 0), "1.234.567");
    EXPECT_STREQ(ZolFormat::LongInt(Long(-1234567.9), false, true, 0), "1.234.567-");
    // The count of places is the call's own and the saved one comes back.
    EXPECT_EQ(ZolFormat::numberFormat.NumDigits, 7u);
}

// The same through a real locale, where the machine has one.
TEST_F(Locale, GermanLocaleFromTheEnvironment) {
    Use("de_DE.UTF-8");
    if (std::strcmp(ZolFormat::decimalSep, ",") != 0)
        GTEST_SKIP() << "de_DE.UTF-8 is not installed (locale-gen de_DE.UTF-8)";
    EXPECT_STREQ(ZolFormat::thousandSep, ".");
    EXPECT_EQ(ZolFormat::numberFormat.Grouping, 3u);
    EXPECT_EQ(ZolFormat::numberFormat.NumDigits, 2u);
    char text[10];
    Platform::LocaleInfo(16, text, sizeof text);
    EXPECT_STREQ(text, "3;3;0");
    const int two = 2;
    EXPECT_STREQ(ZolFormat::FixedReal(Fixed(-1234567.891, &two), false, true, 0), "-1.234.567,89");
    EXPECT_STREQ(ZolFormat::FixedReal(Fixed(-1234567.891, &two), false, false, 0), "-1234567.89");
    EXPECT_STREQ(ZolFormat::Date(Zol::ZolDate(20180215)), "15.02.2018");
    EXPECT_STREQ(ZolFormat::DateTime(At(20180215, 74047)), "07:40:47 15.02.2018");

    // Per category: the numbers may come from one locale, the dates from another.
    unsetenv("LC_ALL");
    setenv("LC_NUMERIC", "C", 1);
    setenv("LANG", "de_DE.UTF-8", 1);
    ZolFormat::GetNumberLocaleInfo();
    EXPECT_STREQ(ZolFormat::decimalSep, ".");
    EXPECT_STREQ(ZolFormat::Date(Zol::ZolDate(20180215)), "15.02.2018");
    // A locale the machine lacks counts as "C".
    Use("xx_XX.UTF-8");
    EXPECT_STREQ(ZolFormat::decimalSep, ".");
    EXPECT_STREQ(ZolFormat::Date(Zol::ZolDate(20180215)), "02/15/18");
}

}  // namespace

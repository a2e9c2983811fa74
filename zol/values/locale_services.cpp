#include "zol/values/locale_services.h"

#include <climits>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <langinfo.h>
#include <locale.h>

#include "zol/ber/asn_thread.h"

namespace Zol {
namespace Platform {

namespace {

void FreeUserLocale(AsnThreadEnd*);

// The calling thread's user locale, loaded on its first use and freed when
// the thread ends. Zero until then.
struct UserLocale {
    AsnThreadEnd end;
    locale_t loc;
};
__thread UserLocale user ZOL_INITIAL_EXEC = {{FreeUserLocale, nullptr, false}, locale_t{}};

void FreeUserLocale(AsnThreadEnd*) {
    if (user.loc)
        freelocale(user.loc);
    user.loc = locale_t{};
}

locale_t Current() {
    if (!user.loc)
        LoadUserLocale();
    return user.loc;
}

// Copies `text` into `out` if it fits with its NUL.
int Put(const char* text, char* out, int size) {
    size_t n = std::strlen(text);
    if (n + 1 > static_cast<size_t>(size)) {
        out[0] = '\0';
        return 0;
    }
    std::memcpy(out, text, n + 1);
    return static_cast<int>(n + 1);
}

// The C library's grouping ("\3\3": threes, the last repeated; "\3\x7f":
// one three, then none) in the Windows form: sizes joined by ';', with a
// closing ";0" when the last size repeats. No grouping is "0".
void GroupingText(const char* g, char* text, size_t cap) {
    size_t n = 0;
    const char* p = g;
    for (; *p && *p != CHAR_MAX && *p > 0 && n + 4 < cap; ++p) {
        if (n)
            text[n++] = ';';
        text[n++] = static_cast<char>('0' + (*p > 9 ? 9 : *p));
    }
    if (n == 0) {
        text[n++] = '0';
    } else if (*p == '\0') {
        text[n++] = ';';
        text[n++] = '0';
    }
    text[n] = '\0';
}

// Appends within the caller's block, keeping room for the NUL; remembers
// that something did not fit.
struct Writer {
    char* out;
    size_t cap;
    size_t len;
    bool full;

    void Add(const char* s, size_t n) {
        if (full || n > cap - 1 - len) {
            full = true;
            return;
        }
        std::memcpy(out + len, s, n);
        len += n;
    }
    void Add(const char* s) { Add(s, std::strlen(s)); }
    void Add(char c) { Add(&c, 1); }
    int Finish() {
        if (full) {
            out[0] = '\0';
            return 0;
        }
        out[len] = '\0';
        return static_cast<int>(len + 1);
    }
};

const size_t MaxDigits = 512;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsLeap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

int DaysInMonth(int y, int m) {
    static const int days[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && IsLeap(y) ? 29 : days[m - 1];
}

// Day of the week of a Gregorian date, 0 for Sunday.
int WeekDay(int y, int m, int d) {
    static const int t[12] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
    if (m < 3)
        --y;
    return (y + y / 4 - y / 100 + y / 400 + t[m - 1] + d) % 7;
}

int YearDay(int y, int m, int d) {
    int n = d - 1;
    for (int i = 1; i < m; ++i)
        n += DaysInMonth(y, i);
    return n;
}

int Strftime(nl_item form, const std::tm& v, char* out, int size) {
    locale_t loc = Current();
    if (!loc)
        return 0;
    size_t n = strftime_l(out, static_cast<size_t>(size), nl_langinfo_l(form, loc), &v, loc);
    if (n == 0) {
        out[0] = '\0';
        return 0;
    }
    return static_cast<int>(n + 1);
}

}  // namespace

void LoadUserLocale() {
    locale_t loc = newlocale(LC_ALL_MASK, "C", locale_t{});
    if (!loc)
        return;
    // Category by category, so that one locale missing from the machine
    // leaves the others as the environment names them.
    static const int masks[] = {LC_NUMERIC_MASK, LC_MONETARY_MASK, LC_TIME_MASK};
    for (int mask : masks) {
        locale_t more = newlocale(mask, "", loc);
        if (more)
            loc = more;  // newlocale took over the old object
    }
    if (user.loc)
        freelocale(user.loc);
    user.loc = loc;
    AsnAtThreadEnd(user.end);
}

int LocaleInfo(unsigned item, char* out, int size) {
    if (size <= 0)
        return 0;
    out[0] = '\0';
    locale_t loc = Current();
    if (!loc)
        return 0;
    char text[32] = "";
    bool known = true;
    // Read from the user's locale itself: localeconv would fill one
    // structure that every thread of the process shares, and that others
    // (a JSON writer, a stream) fill at the same time.
    switch (item) {
    case LocaleDecimalSep:
    case LocaleThousandSep: {
        const char* sep = nl_langinfo_l(item == LocaleDecimalSep ? RADIXCHAR : THOUSEP, loc);
        if (std::strlen(sep) < sizeof text)
            std::strcpy(text, sep);
        else
            known = false;
        break;
    }
    case LocaleGrouping:
        GroupingText(nl_langinfo_l(GROUPING, loc), text, sizeof text);
        break;
    case LocaleFracDigits: {
        // The C library keeps a count of places for money only; "C" has
        // none (CHAR_MAX).
        int digits = nl_langinfo_l(FRAC_DIGITS, loc)[0];
        text[0] = static_cast<char>('0' + (digits >= 0 && digits <= 9 ? digits : 0));
        text[1] = '\0';
        break;
    }
    case LocaleLeadingZero:      // the C library always writes the zero
    case LocaleNegativeOrder:    // and the minus in front
        std::strcpy(text, "1");
        break;
    default:
        known = false;
    }
    return known ? Put(text, out, size) : 0;
}

int NumberFormat(const char* plain, const NUMBERFMTA& fmt, char* out, int size) {
    if (size <= 0)
        return 0;
    out[0] = '\0';
    if (!plain || fmt.NegativeOrder > 4)
        return 0;

    const char* p = plain;
    bool negative = *p == '-';
    if (negative)
        ++p;
    const char* intBegin = p;
    while (IsDigit(*p))
        ++p;
    size_t intLen = size_t(p - intBegin);
    const char* fracBegin = p;
    size_t fracLen = 0;
    if (*p == '.') {
        fracBegin = ++p;
        while (IsDigit(*p))
            ++p;
        fracLen = size_t(p - fracBegin);
    }
    size_t places = fmt.NumDigits;
    if (*p || intLen + fracLen == 0 || intLen > MaxDigits || places > MaxDigits)
        return 0;

    // The integer digits behind one spare digit for a carry, then exactly
    // `places` fraction digits, rounded half away from zero.
    char digits[2 * MaxDigits + 1];
    digits[0] = '0';
    std::memcpy(digits + 1, intBegin, intLen);
    size_t intEnd = 1 + intLen;
    for (size_t i = 0; i < places; ++i)
        digits[intEnd + i] = i < fracLen ? fracBegin[i] : '0';
    size_t end = intEnd + places;
    if (fracLen > places && fracBegin[places] >= '5') {
        for (size_t i = end; i-- > 0;) {
            if (digits[i] != '9') {
                ++digits[i];
                break;
            }
            digits[i] = '0';
        }
    }
    size_t intStart = 0;
    while (intStart < intEnd && digits[intStart] == '0')
        ++intStart;
    size_t shown = intEnd - intStart;

    // Where separators go: after the digit that has `k` digits to its right.
    bool sepAt[MaxDigits + 2] = {};
    char sizes[12];
    int nSizes = 0;
    for (unsigned g = fmt.Grouping; g; g /= 10)
        ++nSizes;
    for (unsigned g = fmt.Grouping, i = unsigned(nSizes); i-- > 0; g /= 10)
        sizes[i] = static_cast<char>(g % 10);
    for (size_t k = 0, i = 0; nSizes > 0;) {
        size_t step = size_t(i < size_t(nSizes) ? sizes[i] : sizes[nSizes - 1]);
        if (step == 0)
            break;
        k += step;
        if (k >= shown)
            break;
        sepAt[k] = true;
        ++i;
    }

    Writer w{out, static_cast<size_t>(size), 0, false};
    if (negative) {
        static const char* const before[5] = {"(", "-", "- ", "", ""};
        w.Add(before[fmt.NegativeOrder]);
    }
    if (shown == 0) {
        if (fmt.LeadingZero || places == 0)
            w.Add('0');
    } else {
        for (size_t i = intStart; i < intEnd; ++i) {
            w.Add(digits[i]);
            size_t right = intEnd - 1 - i;
            if (right && sepAt[right] && fmt.lpThousandSep)
                w.Add(fmt.lpThousandSep);
        }
    }
    if (places) {
        if (fmt.lpDecimalSep)
            w.Add(fmt.lpDecimalSep);
        w.Add(digits + intEnd, places);
    }
    if (negative) {
        static const char* const after[5] = {")", "", "", "-", " -"};
        w.Add(after[fmt.NegativeOrder]);
    }
    return w.Finish();
}

int DateFormat(const SYSTEMTIME& t, char* out, int size) {
    if (size <= 0)
        return 0;
    out[0] = '\0';
    int y = t.wYear, m = t.wMonth, d = t.wDay;
    if (y < 1 || m < 1 || m > 12 || d < 1 || d > DaysInMonth(y, m))
        return 0;
    std::tm v{};
    v.tm_year = y - 1900;
    v.tm_mon = m - 1;
    v.tm_mday = d;
    v.tm_wday = WeekDay(y, m, d);
    v.tm_yday = YearDay(y, m, d);
    return Strftime(D_FMT, v, out, size);
}

int TimeFormat(const SYSTEMTIME& t, char* out, int size) {
    if (size <= 0)
        return 0;
    out[0] = '\0';
    if (t.wHour > 23 || t.wMinute > 59 || t.wSecond > 59 || t.wMilliseconds > 999)
        return 0;
    std::tm v{};
    v.tm_hour = t.wHour;
    v.tm_min = t.wMinute;
    v.tm_sec = t.wSecond;
    v.tm_mday = 1;
    v.tm_year = 70;
    v.tm_wday = 4;
    return Strftime(T_FMT, v, out, size);
}

}  // namespace Platform
}  // namespace Zol

// The little the display helpers need of the platform's locale support:
// the user's number settings one at a time, a plain number text rewritten
// with given settings, and the user's short date and time forms.
//
// The user's locale is the one the environment names, per category: LC_ALL,
// then LC_NUMERIC, LC_MONETARY or LC_TIME, then LANG. A locale that is not
// installed counts as "C", which gives the plain forms. Each thread reads it
// for itself, on its first use, and keeps it until it reads it again or
// ends. The process's global locale is neither read nor changed. This unit
// is the only one in the library that calls the C library's locale
// functions.
//
// Every service writes a NUL-terminated text into `out` and returns the
// number of characters written, the NUL included. On failure, or when the
// text does not fit into `size` characters, it returns 0 and leaves `out`
// holding the empty text. None of them allocates, except LoadUserLocale.
#pragma once

#include <cstdint>

namespace Zol {

// A broken-down time, in the shape of the Windows record of that name.
// wDayOfWeek is carried but neither read nor set by the library.
struct SYSTEMTIME {
    uint16_t wYear;
    uint16_t wMonth;
    uint16_t wDayOfWeek;
    uint16_t wDay;
    uint16_t wHour;
    uint16_t wMinute;
    uint16_t wSecond;
    uint16_t wMilliseconds;
};

// How a number is shown, in the shape of the Windows record of that name.
struct NUMBERFMTA {
    unsigned NumDigits;      // places behind the decimal separator
    unsigned LeadingZero;    // 0: ".5", otherwise "0.5"
    // Group sizes leftwards from the decimal separator, one decimal digit
    // each, most significant first; the last one repeats unless it is 0.
    // 0 groups nothing, 3 gives 123,456,789 and 32 gives 12,34,56,789.
    unsigned Grouping;
    char* lpDecimalSep;
    char* lpThousandSep;
    // 0 "(1.1)", 1 "-1.1", 2 "- 1.1", 3 "1.1-", 4 "1.1 -".
    unsigned NegativeOrder;
};

namespace Platform {

// The number settings, by the numbers that Windows gives its locale items.
enum LocaleItem : unsigned {
    LocaleDecimalSep = 14,     // e.g. "." or ","
    LocaleThousandSep = 15,    // e.g. "," or "." or ""
    LocaleGrouping = 16,       // e.g. "3;0" (3, repeated) or "0" (none)
    LocaleFracDigits = 17,     // e.g. "2"
    LocaleLeadingZero = 18,    // "1"
    LocaleNegativeOrder = 4112 // "1"
};

// Reads the user's locale anew from the environment, for the calling
// thread. The services below load it on the thread's first use; a caller
// runs this to pick up a changed environment.
void LoadUserLocale();

// One number setting of the user's locale as text. An unknown item, or a
// text longer than size - 1 characters, fails.
int LocaleInfo(unsigned item, char* out, int size);

// `plain` ("-1234.5": an optional minus, digits, an optional point and
// digits) rewritten with `fmt`: rounded half away from zero or padded to
// NumDigits places, grouped, with the separators and the negative form of
// `fmt`. Any other text, or a NegativeOrder above 4, fails.
int NumberFormat(const char* plain, const NUMBERFMTA& fmt, char* out, int size);

// The date of `t` in the user's short date form. A day that does not exist
// (month 13, 30 February, year 0) fails. The time fields are not read.
int DateFormat(const SYSTEMTIME& t, char* out, int size);

// The time of `t` in the user's time form, without milliseconds. An hour
// above 23, a minute or second above 59 or milliseconds above 999 fail.
// The date fields are not read.
int TimeFormat(const SYSTEMTIME& t, char* out, int size);

}  // namespace Platform
}  // namespace Zol

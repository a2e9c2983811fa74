#include "zol/values/zol_format.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "zol/ber/asn_thread.h"
#include "zol/values/zol_convert.h"

namespace Zol {

namespace {

// A thread's buffers and number settings.
struct FormatState {
    NUMBERFMTA numberFormat;
    char decimalSep[ZolFormat::SeparatorSize];
    char thousandSep[ZolFormat::SeparatorSize];
    char result[ZolFormat::ResultSize];
    char scratch[ZolFormat::ScratchSize];
    bool settingsRead;
};

void ReadSettings(FormatState& s) {
    Platform::LoadUserLocale();
    NUMBERFMTA& f = s.numberFormat;
    const int size = int(ZolFormat::SeparatorSize);
    char text[ZolFormat::SeparatorSize];
    Platform::LocaleInfo(Platform::LocaleFracDigits, text, size);
    f.NumDigits = unsigned(std::atoi(text));
    Platform::LocaleInfo(Platform::LocaleLeadingZero, text, size);
    f.LeadingZero = unsigned(std::atoi(text));
    // The first group size is all that is used, but the whole text must fit
    // (up to 15 sizes: 29 characters), or the service gives nothing.
    char grouping[32];
    Platform::LocaleInfo(Platform::LocaleGrouping, grouping, int(sizeof grouping));
    f.Grouping = unsigned(std::atoi(grouping));
    Platform::LocaleInfo(Platform::LocaleDecimalSep, s.decimalSep, size);
    Platform::LocaleInfo(Platform::LocaleThousandSep, s.thousandSep, size);
    Platform::LocaleInfo(Platform::LocaleNegativeOrder, text, size);
    f.NegativeOrder = unsigned(std::atoi(text));
    f.lpDecimalSep = s.decimalSep;
    f.lpThousandSep = s.thousandSep;
    s.settingsRead = true;
}

// The calling thread's state, its settings read when it is new.
FormatState* StateOrNull() {
    FormatState* s = AsnPerThread<FormatState>::Get();
    if (s && !s->settingsRead)
        ReadSettings(*s);
    return s;
}

FormatState& State() {
    if (FormatState* s = StateOrNull())
        return *s;
    AsnThrowBadAlloc();
}

}  // namespace

thread_local NUMBERFMTA& ZolFormat::numberFormat = State().numberFormat;
thread_local char (&ZolFormat::decimalSep)[SeparatorSize] = State().decimalSep;
thread_local char (&ZolFormat::thousandSep)[SeparatorSize] = State().thousandSep;
thread_local char (&ZolFormat::result)[ResultSize] = State().result;
thread_local char (&ZolFormat::scratch)[ScratchSize] = State().scratch;

// The library's one object: its construction reads the loading thread's
// number settings while the library loads.
static ZolFormat loadTimeSettings;

namespace {

// Text of a number into a buffer, NUL-terminated; empty if it does not fit.
// std::to_chars writes the plain forms of printf's "%.*f" and "%d" under the
// "C" locale whatever the process's locale is, so the point stays a point.
template <class... A>
void Plain(char* out, size_t size, A... args) {
    std::to_chars_result r = std::to_chars(out, out + size - 1, args...);
    *(r.ec == std::errc() ? r.ptr : out) = '\0';
}

bool CountsAsZero(double v) { return !(std::fabs(v) >= 1e-8); }

}  // namespace

ZolFormat::ZolFormat() { GetNumberLocaleInfo(); }

void ZolFormat::GetNumberLocaleInfo() {
    if (FormatState* s = AsnPerThread<FormatState>::Get())
        ReadSettings(*s);
}

// The plain text stands in the result buffer, or with `useLocale` in the
// scratch buffer, from which it is rewritten into the result buffer through
// the number settings with `places` in place of their own count.
const char* ZolFormat::Number(bool useLocale, unsigned places) {
    if (!useLocale)
        return result;
    unsigned saved = numberFormat.NumDigits;
    numberFormat.NumDigits = places;
    Platform::NumberFormat(scratch, numberFormat, result, ServiceSize);
    numberFormat.NumDigits = saved;
    return result;
}

const char* ZolFormat::FixedReal(const ZolFixedReal& v, bool showZero, bool useLocale, int) {
    result[0] = '\0';
    double value = v.value.value;
    if (!showZero && CountsAsZero(value))
        return result;
    int places = v.decimals ? v.decimals->value : 9;
    if (places > 9)
        places = 9;
    if (places < 0)
        places = 0;
    Plain(useLocale ? scratch : result, ScratchSize, value, std::chars_format::fixed, places);
    return Number(useLocale, unsigned(places));
}

const char* ZolFormat::Integer(const ZolInteger& v, bool showZero, bool useLocale, int) {
    result[0] = '\0';
    if (!showZero && v.value == 0)
        return result;
    Plain(useLocale ? scratch : result, ScratchSize, v.value);
    return Number(useLocale, 0);
}

const char* ZolFormat::LongInt(const ZolLongInt& v, bool showZero, bool useLocale, int) {
    result[0] = '\0';
    if (!showZero && CountsAsZero(v.value.value))
        return result;
    Plain(useLocale ? scratch : result, ScratchSize, ZolConvert::Int64(v));
    return Number(useLocale, 0);
}

const char* ZolFormat::Date(const ZolDate& v) {
    result[0] = '\0';
    Platform::DateFormat(ZolConvert::Date(v), result, ServiceSize);
    return result;
}

namespace {

// Time, one blank, date. The date goes through Date, which writes the
// result buffer, so its text is kept aside first.
const char* TimeAndDate(const SYSTEMTIME& t, int32_t date) {
    char dateText[1024];
    const char* d = ZolFormat::Date(ZolDate(date));
    std::memcpy(dateText, d, std::strlen(d) + 1);
    char* out = ZolFormat::result;
    out[0] = '\0';
    Platform::TimeFormat(t, out, ZolFormat::ServiceSize);
    size_t n = std::strlen(out);
    out[n++] = ' ';
    std::memcpy(out + n, dateText, std::strlen(dateText) + 1);
    return out;
}

}  // namespace

const char* ZolFormat::DateTime(const ZolDateTime& v) {
    return TimeAndDate(ZolConvert::DateTime(v), v.date.value);
}

const char* ZolFormat::DateTime(const ZolDateTimeMS& v) {
    return TimeAndDate(ZolConvert::DateTime(v), v.date.value);
}

}  // namespace Zol

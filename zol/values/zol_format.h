// Values of the protocol as display text, plain or through the user's
// number, date and time settings.
//
// Every text result points into the calling thread's result buffer and
// stays good only until the thread's next call of any of these functions:
// two results cannot be held side by side, not even as two arguments of one
// print statement. Each thread has its own buffers and number settings, on
// the heap: a thread's first call makes them and reads its settings from
// the user's locale (the thread that loads the library, while it loads),
// and they are freed when the thread ends. Nothing else here allocates; if
// a thread's buffers cannot be made, its calls throw std::bad_alloc.
#pragma once

#include <cstddef>

#include "zol/values/commontypes.h"
#include "zol/values/locale_services.h"
#include "zol/values/zoltypes.h"

namespace Zol {

class ZolFormat {
public:
    // Reads the calling thread's number settings. The library holds one
    // static object, so the loading thread's are read when it is loaded.
    ZolFormat();

    // Reads the user's locale anew from the environment and fills the
    // calling thread's numberFormat from it; a caller runs it again to pick
    // up changes. It does nothing if the thread's buffers cannot be made.
    static void GetNumberLocaleInfo();

    // A value under 1e-8 in magnitude, or a NaN, counts as zero. Zero shows
    // as the empty text unless `showZero`. The places are `decimals`, at
    // most 9, or 9 without it; a negative `decimals` shows no places. The
    // last argument has no effect.
    static const char* FixedReal(const ZolFixedReal& v, bool showZero, bool useLocale, int);
    static const char* Integer(const ZolInteger& v, bool showZero, bool useLocale, int);
    // The value truncated to a 64-bit integer; the zero test is that of
    // FixedReal, so 0.5 shows as 0 even without `showZero`.
    static const char* LongInt(const ZolLongInt& v, bool showZero, bool useLocale, int);
    // The user's short date form.
    static const char* Date(const ZolDate& v);
    // The time, one blank, then the date: time first. Milliseconds are not
    // shown.
    static const char* DateTime(const ZolDateTime& v);
    static const char* DateTime(const ZolDateTimeMS& v);

    // The sizes that the locale services are given, and of the buffers.
    static constexpr int ServiceSize = 1000;
    static constexpr size_t ResultSize = 2 * ServiceSize + 8;
    static constexpr size_t ScratchSize = 512;
    static constexpr size_t SeparatorSize = 10;

    // The calling thread's number settings; the separators point at the two
    // buffers below. NumDigits is replaced for the length of each call.
    static thread_local NUMBERFMTA& numberFormat;
    static thread_local char (&decimalSep)[SeparatorSize];
    static thread_local char (&thousandSep)[SeparatorSize];

    static thread_local char (&result)[ResultSize];    // what every function returns
    static thread_local char (&scratch)[ScratchSize];  // plain number text on its way to the formatter

private:
    static const char* Number(bool useLocale, unsigned places);
};

}  // namespace Zol

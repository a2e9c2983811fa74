// Dates, times and long integers of the protocol to and from the platform's
// forms: the packed whole numbers (yyyymmdd, hhmmss) and a broken-down time
// record, and a ZolLongInt as a 64-bit integer. No field is validated.
#pragma once

#include <cstdint>

#include "zol/values/commontypes.h"
#include "zol/values/locale_services.h"
#include "zol/values/zoltypes.h"

namespace Zol {

class ZolConvert {
public:
    static ZolDate Date(const SYSTEMTIME& t);
    // wMilliseconds is dropped.
    static ZolDateTime DateTime(const SYSTEMTIME& t);
    static ZolDateTimeMS DateTimeMS(const SYSTEMTIME& t);

    // The fields that the number does not carry are 0.
    static SYSTEMTIME Date(const ZolDate& d);
    static SYSTEMTIME DateTime(const ZolDateTime& dt);
    static SYSTEMTIME DateTime(const ZolDateTimeMS& dt);

    // Truncated toward zero. A NaN gives 0; a value beyond the 64-bit range
    // gives the nearer bound.
    static int64_t Int64(const ZolLongInt& v);
};

}  // namespace Zol

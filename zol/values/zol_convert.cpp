#include "zol/values/zol_convert.h"

#include <cmath>

namespace Zol {

namespace {

int32_t PackDate(const SYSTEMTIME& t) { return t.wYear * 10000 + t.wMonth * 100 + t.wDay; }

int32_t PackTime(const SYSTEMTIME& t) { return t.wHour * 10000 + t.wMinute * 100 + t.wSecond; }

// Whole-number division on the signed value; a negative field wraps into
// the record's unsigned 16 bits.
void UnpackDate(int32_t date, SYSTEMTIME& t) {
    t.wYear = static_cast<uint16_t>(date / 10000 % 10000);
    t.wMonth = static_cast<uint16_t>(date / 100 % 100);
    t.wDay = static_cast<uint16_t>(date % 100);
}

void UnpackTime(int32_t time, SYSTEMTIME& t) {
    t.wHour = static_cast<uint16_t>(time / 10000 % 100);
    t.wMinute = static_cast<uint16_t>(time / 100 % 100);
    t.wSecond = static_cast<uint16_t>(time % 100);
}

}  // namespace

ZolDate ZolConvert::Date(const SYSTEMTIME& t) { return ZolDate(PackDate(t)); }

ZolDateTime ZolConvert::DateTime(const SYSTEMTIME& t) {
    ZolDateTime dt;
    dt.date = PackDate(t);
    dt.time = PackTime(t);
    return dt;
}

ZolDateTimeMS ZolConvert::DateTimeMS(const SYSTEMTIME& t) {
    ZolDateTimeMS dt;
    dt.date = PackDate(t);
    dt.time = PackTime(t);
    dt.millisec = t.wMilliseconds;
    return dt;
}

SYSTEMTIME ZolConvert::Date(const ZolDate& d) {
    SYSTEMTIME t{};
    UnpackDate(d.value, t);
    return t;
}

SYSTEMTIME ZolConvert::DateTime(const ZolDateTime& dt) {
    SYSTEMTIME t{};
    UnpackDate(dt.date.value, t);
    UnpackTime(dt.time.value, t);
    return t;
}

SYSTEMTIME ZolConvert::DateTime(const ZolDateTimeMS& dt) {
    SYSTEMTIME t{};
    UnpackDate(dt.date.value, t);
    UnpackTime(dt.time.value, t);
    t.wMilliseconds = static_cast<uint16_t>(dt.millisec.value % 1000);
    return t;
}

int64_t ZolConvert::Int64(const ZolLongInt& v) {
    double d = v.value.value;
    if (std::isnan(d))
        return 0;
    // 2 to the power 63; the conversion of anything outside the range is
    // undefined in C++, so it is caught first.
    const double limit = 9223372036854775808.0;
    if (d >= limit)
        return INT64_MAX;
    if (d < -limit)
        return INT64_MIN;
    return static_cast<int64_t>(d);
}

}  // namespace Zol

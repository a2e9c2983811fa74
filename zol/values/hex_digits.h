// Hex digits read back into values: the JSON form's {"hex": ...} and the
// tools' hex input both take octets written as pairs of digits, in either
// case.
#pragma once

namespace Zol {

// The value of the hex digit `c`, or -1 if it is not one.
inline int HexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

}  // namespace Zol

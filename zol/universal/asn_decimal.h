// Numbers inside printed values (integers, the arcs of an object
// identifier, a bit count) are always decimal: they are written without the
// stream's number formatting, so its base, sign and grouping settings and
// its locale do not change them, and no setting is changed. Formatting
// the digits here is also cheaper than the stream's num_put.
#pragma once

#include <charconv>
#include <ostream>

// Writes `v` in decimal. A field width set on the stream pads it as it
// pads an inserted number (before it, after it with std::left, after the
// sign with std::internal) and is then reset to 0, as after any insertion.
template <typename Number>
void AsnPrintDecimal(std::ostream& os, Number v) {
    char digits[24];
    const char* end = std::to_chars(digits, digits + sizeof digits, v).ptr;
    const std::streamsize len = end - digits;
    const std::streamsize pad = os.width() > len ? os.width() - len : 0;
    os.width(0);
    const std::ios_base::fmtflags adjust = os.flags() & std::ios_base::adjustfield;
    const std::streamsize sign = adjust == std::ios_base::internal && digits[0] == '-' ? 1 : 0;
    const std::streamsize padBefore = adjust == std::ios_base::left ? 0 : pad;
    os.write(digits, sign);
    for (std::streamsize i = 0; i < padBefore; ++i)
        os.put(os.fill());
    os.write(digits + sign, len - sign);
    for (std::streamsize i = padBefore; i < pad; ++i)
        os.put(os.fill());
}

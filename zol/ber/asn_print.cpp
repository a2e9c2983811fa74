#include "zol/ber/asn_print.h"

#include <charconv>
#include <cmath>

void AsnPrintOut::BlanksLong(unsigned n) {
    while (n > kSize - used_) {
        size_t part = kSize - used_;
        std::memset(line_ + used_, ' ', part);
        used_ = kSize;
        Flush();
        n -= unsigned(part);
    }
    std::memset(line_ + used_, ' ', n);
    used_ += n;
}

namespace {

// "000102...ff": the two digits of byte b at 2 * b.
struct HexPairs {
    char text[512];
    constexpr HexPairs() : text() {
        const char digits[] = "0123456789abcdef";
        for (int b = 0; b < 256; ++b) {
            text[2 * b] = digits[b >> 4];
            text[2 * b + 1] = digits[b & 0x0F];
        }
    }
};
constexpr HexPairs kHexPairs;

}  // namespace

void AsnPrintOut::Hex(const char* bytes, size_t n) {
    const unsigned char* b = reinterpret_cast<const unsigned char*>(bytes);
    for (size_t done = 0; done < n;) {
        size_t k = n - done < 128 ? n - done : 128;
        char* p = Room(2 * k);
        for (size_t i = 0; i < k; ++i)
            std::memcpy(p + 2 * i, kHexPairs.text + 2 * b[done + i], 2);
        Took(2 * k);
        done += k;
    }
}

void AsnPrintOut::Decimal(int64_t v) {
    char digits[24];
    const char* end = std::to_chars(digits, digits + sizeof digits, v).ptr;
    PutNumber(digits, size_t(end - digits), Piece::Integer);
}

void AsnPrintOut::Decimal(uint64_t v) {
    char digits[24];
    const char* end = std::to_chars(digits, digits + sizeof digits, v).ptr;
    PutNumber(digits, size_t(end - digits), Piece::Integer);
}

namespace {

// "%g" of a number whose magnitude is from 1e-4 to below 1e6, where it is
// written without an exponent: six significant digits, the trailing zeros
// of the fraction and a bare point dropped. The digits are those of the
// magnitude scaled to six places before the point and rounded; the one
// rounding of the scaling moves it by under 1e-10, which can change the
// rounding to the digits only within that of a tie, and those, like every
// other number, are left to the general formatter. Returns the end of the
// text, or null.
char* FixedG6(double v, char* out) {
    static const double kPow10[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    // The smallest double of each decimal exponent, -4 to 6: 1e-4 to 0.1
    // lie just above their powers of ten, so the comparisons are exact.
    static const double kFloors[] = {1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};
    const double a = std::fabs(v);
    if (!(a >= 1e-4 && a < 1e6))
        return nullptr;
    int exp10 = 0;  // kFloors[exp10 + 4] <= a < kFloors[exp10 + 5]
    if (a >= 1.0) {
        while (a >= kFloors[exp10 + 5])
            ++exp10;
    } else {
        exp10 = -1;
        while (a < kFloors[exp10 + 4])
            --exp10;
    }
    int places = 5 - exp10;  // digits after the point before trailing zeros go
    const double scaled = a * kPow10[places];
    const double whole = std::floor(scaled);
    const double frac = scaled - whole;
    if (std::fabs(frac - 0.5) < 1e-7)
        return nullptr;
    uint32_t n = uint32_t(whole) + (frac > 0.5 ? 1 : 0);
    if (n == 1000000) {  // rounded up into the next decimal exponent
        if (exp10 == 5)
            return nullptr;
        n = 100000;
        --places;
    }
    char digits[6];
    for (int i = 5; i >= 0; --i, n /= 10)
        digits[i] = char('0' + n % 10);
    const int intDigits = 6 - places;
    int keep = 6;
    while (keep > intDigits && digits[keep - 1] == '0')
        --keep;
    char* p = out;
    if (std::signbit(v))
        *p++ = '-';
    if (intDigits > 0) {
        std::memcpy(p, digits, size_t(intDigits));
        p += intDigits;
        if (keep > intDigits) {
            *p++ = '.';
            std::memcpy(p, digits + intDigits, size_t(keep - intDigits));
            p += keep - intDigits;
        }
    } else {
        *p++ = '0';
        *p++ = '.';
        for (int i = intDigits; i < 0; ++i)
            *p++ = '0';
        std::memcpy(p, digits, size_t(keep));
        p += keep;
    }
    return p;
}

}  // namespace

// std::to_chars in the general form with a precision of 6 writes what
// printf's "%g" does, which is what a stream with default settings writes
// for a double, infinities and NaNs included; it costs some 700
// instructions a number, FixedG6 under a hundred.
void AsnPrintOut::Real(double v) {
    char text[32];
    const char* end = FixedG6(v, text);
    if (!end)
        end = std::to_chars(text, text + sizeof text, v, std::chars_format::general, 6).ptr;
    PutNumber(text, size_t(end - text), Piece::Real);
}

// The line ends as std::endl ends it: written, then the stream flushed.
// The flush is the stream's own but for its sentry, which the write just
// made: the stream is synced if the write left it good.
void AsnPrintOut::WriteLine() {
    Flush();
    if (os_.good() && os_.rdbuf()->pubsync() == -1)
        os_.setstate(std::ios_base::badbit);
}

void AsnPrintOut::Flush() {
    if (used_) {
        os_.write(line_, std::streamsize(used_));
        used_ = 0;
    }
}

// A piece longer than the room left: what is gathered goes first, then
// the piece in blocks.
void AsnPrintOut::AppendLong(const char* text, size_t n) {
    while (n > kSize - used_) {
        size_t part = kSize - used_;
        std::memcpy(line_ + used_, text, part);
        used_ = kSize;
        Flush();
        text += part;
        n -= part;
    }
    std::memcpy(line_ + used_, text, n);
    used_ += n;
}

void AsnPrintOut::PutFirst(const char* text, size_t n, Piece kind) {
    if (kind != Piece::Integer && !os_.good()) {
        Append(text, n);
        return;
    }
    const std::streamsize width = os_.width();
    os_.width(0);
    const size_t pad = width > std::streamsize(n) ? size_t(width) - n : 0;
    const std::ios_base::fmtflags adjust = os_.flags() & std::ios_base::adjustfield;
    const size_t sign = kind != Piece::Text && adjust == std::ios_base::internal && n && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    const size_t before = adjust == std::ios_base::left ? 0 : pad;
    const char fill = os_.fill();
    Append(text, sign);
    for (size_t i = 0; i < before; ++i)
        Append(&fill, 1);
    Append(text + sign, n - sign);
    for (size_t i = before; i < pad; ++i)
        Append(&fill, 1);
}

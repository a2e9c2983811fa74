#include "zol/ber/asn_print.h"

#include <charconv>
#include <cmath>
#include <exception>
#ifdef __GLIBCXX__
#include <cxxabi.h>
#endif

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

// "000102...99": the two decimal digits of n at 2 * n.
struct DecimalPairs {
    char text[200];
    constexpr DecimalPairs() : text() {
        for (int n = 0; n < 100; ++n) {
            text[2 * n] = char('0' + n / 10);
            text[2 * n + 1] = char('0' + n % 10);
        }
    }
};
constexpr DecimalPairs kDecimalPairs;

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
    char digits[48];  // more than a number needs, which GCC's bounds check of AsnCopyBytes wants
    const char* end = std::to_chars(digits, digits + sizeof digits, v).ptr;
    PutNumber(digits, size_t(end - digits), Piece::Integer);
}

void AsnPrintOut::Decimal(uint64_t v) {
    char digits[48];  // more than a number needs, which GCC's bounds check of AsnCopyBytes wants
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
    const double scaled = a * kPow10[places];     // 1e5 <= scaled <= 1e6
    const uint32_t whole = uint32_t(scaled);      // truncation: the floor
    const double frac = scaled - double(whole);
    if (std::fabs(frac - 0.5) < 1e-7)
        return nullptr;
    uint32_t n = whole + (frac > 0.5 ? 1 : 0);
    if (n == 1000000) {  // rounded up into the next decimal exponent
        if (exp10 == 5)
            return nullptr;
        n = 100000;
        --places;
    }
    char digits[6];
    const uint32_t high = n / 10000, middle = n / 100 % 100, low = n % 100;
    std::memcpy(digits, kDecimalPairs.text + 2 * high, 2);
    std::memcpy(digits + 2, kDecimalPairs.text + 2 * middle, 2);
    std::memcpy(digits + 4, kDecimalPairs.text + 2 * low, 2);
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
    char text[48];  // more than a number needs, which GCC's bounds check of AsnCopyBytes wants
    const char* end = FixedG6(v, text);
    if (!end)
        end = std::to_chars(text, text + sizeof text, v, std::chars_format::general, 6).ptr;
    PutNumber(text, size_t(end - text), Piece::Real);
}

void AsnPrintOut::Flush() {
    if (used_)
        Hand(false);
}

std::ostream& AsnPrintOut::HandOver() {
    Flush();
    checkWidth_ = true;
    return os_;
}

// The text goes to the stream's buffer as the stream's write hands it
// over, and with `sync` the buffer is then synced as the flush of
// std::endl does. What the stream's sentry does around them is done here
// once, inline, where write and flush each built one (a third of the
// cost of a printed line): a tied stream is flushed first; a stream that
// is not good takes nothing, and gains failbit if it is bad; a unitbuf
// stream is synced at the end unless an exception is on its way. A short
// write, a failed sync or an exception of the buffer sets badbit, and the
// exception goes on if the stream throws on badbit.
void AsnPrintOut::Hand(bool sync) {
    const std::streamsize n = std::streamsize(used_);
    used_ = 0;
    std::ios& ios = os_;
    if (ios.tie() && ios.good())
        ios.tie()->flush();
    if (!ios.good()) {
        if (ios.bad())
            ios.setstate(std::ios_base::failbit);
        return;
    }
    std::streambuf* buf = ios.rdbuf();
    bool bad = false;
    try {
        bad = buf->sputn(line_, n) != n || (sync && buf->pubsync() == -1);
#ifdef __GLIBCXX__
    } catch (abi::__forced_unwind&) {  // a cancelled thread's unwinding always goes on
        SetBadAndRethrow();
#endif
    } catch (...) {
        if (ios.exceptions() & std::ios_base::badbit)
            SetBadAndRethrow();
        bad = true;
    }
    if (bad)
        ios.setstate(std::ios_base::badbit);
    if ((ios.flags() & std::ios_base::unitbuf) && std::uncaught_exceptions() == 0 && buf->pubsync() == -1)
        ios.setstate(std::ios_base::badbit);
}

// Inside a handler: badbit set without the stream's own exception, then
// the handled one thrown again.
void AsnPrintOut::SetBadAndRethrow() {
    try {
        os_.setstate(std::ios_base::badbit);
    } catch (const std::ios_base::failure&) {
    }
    throw;
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
    const std::streamsize width = os_.width();
    if (width == 0 || (kind != Piece::Integer && !os_.good())) {
        checkWidth_ = width != 0;
        Append(text, n);
        return;
    }
    checkWidth_ = false;
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

// Printed text on its way to a stream. The pieces of a line (indentation,
// names, numbers, punctuation) are gathered here and the line is written
// with one call; where the format ends a line with std::endl, the stream is
// flushed right after that line's text, once, as before.
//
// Going through the stream for every piece cost a sentry each, and a
// number went through the locale's num_put. The text is the same: each
// piece is what the stream wrote for it with its settings at their
// defaults. Numbers never follow the stream's settings (base, sign,
// precision, grouping, locale). A field width set on the stream pads the
// first piece written, as the insertion of that piece did, and is then
// used up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ostream>

#include "zol/ber/asn_buf.h"

class AsnPrintOut {
public:
    explicit AsnPrintOut(std::ostream& os) : os_(os) {}
    AsnPrintOut(const AsnPrintOut&) = delete;
    AsnPrintOut& operator=(const AsnPrintOut&) = delete;

    void Put(const char* text, size_t n) {
        if (__builtin_expect(checkWidth_, 0))
            PutFirst(text, n, Piece::Text);
        else
            Append(text, n);
    }
    void Put(const char* text) { Put(text, std::strlen(text)); }
    void Put(char c) { Put(&c, 1); }
    // `n` blanks of indentation, which a field width does not pad.
    void Blanks(unsigned n) {
        if (__builtin_expect(n > kSize - used_, 0))
            return BlanksLong(n);
        for (unsigned i = 0; i < n; i += 16)
            std::memcpy(line_ + used_ + i, "                ", 16);
        used_ += n;
    }
    // Two lower-case hex digits for each of `n` bytes.
    void Hex(const char* bytes, size_t n);
    // Room for `n` bytes (at most 256) at the end of the line, which the
    // caller fills and hands over with Took: for text made a byte at a
    // time. What is gathered is written first if they do not fit.
    char* Room(size_t n) {
        if (__builtin_expect(n > kSize - used_, 0))
            Flush();
        return line_ + used_;
    }
    void Took(size_t n) { used_ += n; }
    // Numbers in decimal; a REAL as "%g" writes it: six significant digits.
    void Decimal(int64_t v);
    void Decimal(uint64_t v);
    void Real(double v);
    // A line feed, the line written and the stream flushed: std::endl.
    void EndLine() {
        line_[used_++] = '\n';
        Hand(true);
    }
    // Writes what is gathered, without flushing the stream: at the end of
    // a print.
    void Flush();
    // The stream, for a printer that writes to it directly, with what is
    // gathered written first.
    std::ostream& HandOver();

private:
    // How the stream's insertion of a piece treated a field width: text
    // and reals through a sentry, which a failed stream refuses, leaving
    // the width set; integers always use it up.
    enum class Piece { Text, Integer, Real };
    // The line holds at most kSize bytes; beyond them lie kSlack more, so
    // that a line feed always fits and blanks go in blocks of 16.
    static const size_t kSize = 512;
    static const size_t kSlack = 16;

    std::ostream& os_;
    size_t used_ = 0;
    // Whether the next piece must look at the stream's field width: until
    // a piece has used it up, and again after the stream was handed over.
    bool checkWidth_ = true;
    char line_[kSize + kSlack];

    void Append(const char* text, size_t n) {
        if (__builtin_expect(n <= kSize - used_, 1)) {
            AsnCopyBytes(line_ + used_, text, n);
            used_ += n;
        } else {
            AppendLong(text, n);
        }
    }
    void AppendLong(const char* text, size_t n);
    void BlanksLong(unsigned n);
    void Hand(bool sync);
    [[noreturn]] void SetBadAndRethrow();
    void PutNumber(const char* text, size_t n, Piece kind) {
        if (__builtin_expect(checkWidth_, 0))
            PutFirst(text, n, kind);
        else
            Append(text, n);
    }
    // Pads the piece to the field width, if one is set: before it, after
    // it with std::left, after a number's sign with std::internal.
    void PutFirst(const char* text, size_t n, Piece kind);
};

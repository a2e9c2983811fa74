// The BER primitives shared by every decoder and encoder: tags, lengths,
// end-of-contents, and the failure discipline.
//
// A decoder never returns a failure. It writes one line to standard error
// and long-jumps to the environment of the outermost decode with a non-zero
// code. No decoder frame may therefore own anything with a destructor, and
// every allocation is attached to its parent before the next call that can
// fail.
#pragma once

#include <csetjmp>

#include "zol/ber/asn_buf.h"

// The jump environment, passed by pointer as the last argument of every
// decoding call.
typedef std::jmp_buf DecodeEnv;

// Constructed strings and bit strings may nest; each level is one call
// deep. Deeper nesting than this is refused before recursing, so hostile
// input cannot exhaust the stack.
const unsigned AsnMaxNesting = 64;

// Writes `text` and a line end to standard error and long-jumps with `code`.
[[noreturn]] void AsnDecodeFail(DecodeEnv env, int code, const char* text);
// Writes `text` and a line end to standard error and returns.
void AsnWarn(const char* text);

// Reads one tag of at most three octets; a third octet with its top bit set
// announces a longer tag, which no message of the protocol has and which is
// refused.
inline AsnTag BDecTag(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnTag tag = AsnTag(b.GetByte()) << 24;
    ++bytesDecoded;
    if ((tag & 0x1F000000u) == 0x1F000000u) {
        AsnTag c = b.GetByte();
        tag |= c << 16;
        ++bytesDecoded;
        if (c & 0x80u) {
            c = b.GetByte();
            tag |= c << 8;
            ++bytesDecoded;
            if ((c & 0x80u) && !b.ReadError())
                AsnDecodeFail(env, -21, "BDecTag: ERROR - tag value overflow");
        }
    }
    if (b.ReadError())
        AsnDecodeFail(env, -22, "BDecTag: ERROR - decoded past the end of data");
    return tag;
}

// Reads one length: the definite value, or IndefiniteLen. Long forms with
// leading zeros are taken; a count of five or more octets is refused.
inline AsnLen BDecLen(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnLen c = b.GetByte();
    if (b.ReadError())
        AsnDecodeFail(env, -9, "BDecLen: decoded past end of data");
    ++bytesDecoded;
    if (c < 0x80u)
        return c;
    if (c == 0x80u)
        return IndefiniteLen;
    c &= 0x7Fu;
    if (c >= 5)
        AsnDecodeFail(env, -10, "BDecLen: ERROR - length overflow");
    bytesDecoded += c;
    AsnLen len = 0;
    while (c--)
        len = (len << 8) | b.GetByte();
    if (b.ReadError())
        AsnDecodeFail(env, -11, "BDecLen: decoded past end of data");
    return len;
}

// Reads an expected end-of-contents marker, strictly.
inline void BDecEoc(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    if (b.GetByte() != 0 || b.GetByte() != 0 || b.ReadError())
        AsnDecodeFail(env, -12, "BDecEoc: ERROR - non zero byte in EOC or end of data reached");
    bytesDecoded += 2;
}

// The second octet of an end-of-contents whose first octet was read as a
// tag of 0. Lenient: a bad octet only warns.
inline void BDecEocSecondOctet(AsnBuf& b, AsnLen& bytesDecoded) {
    if (b.GetByte() != 0 || b.ReadError())
        AsnWarn("Warning - second octet of EOC not zero");
    ++bytesDecoded;
}

// Writes `len` backwards as a definite length in its shortest form and
// returns the number of octets written (1 to 5).
inline AsnLen BEncLen(AsnBuf& b, AsnLen len) {
    if (len < 0x80u) {
        b.PutByteRvs(static_cast<unsigned char>(len));
        return 1;
    }
    AsnLen n = 0;
    for (AsnLen v = len; v; v >>= 8, ++n)
        b.PutByteRvs(static_cast<unsigned char>(v));
    b.PutByteRvs(static_cast<unsigned char>(0x80u | n));
    return n + 1;
}

// Writes the identifier octets of `tag` backwards, last octet first, and
// returns their number. The tag word is a constant at every call, so the
// tests on its octets fold away.
inline AsnLen BEncTag(AsnBuf& b, AsnTag tag) {
    if ((tag & 0x1F000000u) != 0x1F000000u) {
        b.PutByteRvs(static_cast<unsigned char>(tag >> 24));
        return 1;
    }
    if (tag & 0x00800000u) {
        b.PutByteRvs(static_cast<unsigned char>(tag >> 8));
        b.PutByteRvs(static_cast<unsigned char>(tag >> 16));
        b.PutByteRvs(static_cast<unsigned char>(tag >> 24));
        return 3;
    }
    b.PutByteRvs(static_cast<unsigned char>(tag >> 16));
    b.PutByteRvs(static_cast<unsigned char>(tag >> 24));
    return 2;
}

// Length and identifier octets in front of `contentLen` octets of content
// already written; returns the size of the whole element.
inline AsnLen BEncLenTag(AsnBuf& b, AsnLen contentLen, AsnTag tag) {
    AsnLen len = contentLen + BEncLen(b, contentLen);
    return len + BEncTag(b, tag);
}

// The same for integers, enumerations, booleans and reals, whose content
// is always shorter than 128 octets: the length is one raw octet.
inline AsnLen BEncShortLenTag(AsnBuf& b, AsnLen contentLen, AsnTag tag) {
    b.PutByteRvs(static_cast<unsigned char>(contentLen));
    return contentLen + 1 + BEncTag(b, tag);
}

// Reads the tag and length of a whole element of a class and hands the
// content to it; the tag must be `expected`.
template <class T>
inline void AsnDecWhole(T& v, AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env, AsnTag expected,
                        int code, const char* wrongTagText) {
    AsnTag tag = BDecTag(b, bytesDecoded, env);
    if (tag != expected)
        AsnDecodeFail(env, code, wrongTagText);
    AsnLen len = BDecLen(b, bytesDecoded, env);
    v.BDecContent(b, tag, len, bytesDecoded, env);
}

// The BER primitives shared by every decoder and encoder: tags, lengths,
// end-of-contents, and the failure discipline.
//
// A decoder never returns a failure. It writes one line to standard error
// (or to the thread's line sink, below) and long-jumps to the environment
// of the outermost decode with a non-zero code. No decoder frame may
// therefore own anything with a destructor, and every allocation is
// attached to its parent before the next call that can fail.
#pragma once

#include <csetjmp>

#include "zol/ber/asn_buf.h"

// The jump environment, passed by pointer as the last argument of every
// decoding call.
typedef std::jmp_buf DecodeEnv;

// Constructed strings and bit strings may nest; their walk keeps a count
// per level open, in an array of this many. Deeper nesting is refused.
const unsigned AsnMaxNesting = 64;

// Where the library's lines go: the decoders' failure lines, its warnings
// and the front door's line. By default, with `write` null, to standard
// error, each followed by a line end; a program that wants them in its
// log, or as data beside a failed decode, installs a sink of its own, which
// is given each text without that line end. Each thread has its own sink,
// which takes the lines of what that thread decodes.
struct AsnLineSink {
    void (*write)(const char* line, void* context);
    void* context;
};
// Installs `sink` for the calling thread and returns the one it replaces,
// to be put back later.
AsnLineSink AsnSetLineSink(AsnLineSink sink);
// Gives `text` to the line sink.
void AsnWriteLine(const char* text);

// Writes `text` as a line and long-jumps with `code`.
[[noreturn]] void AsnDecodeFail(DecodeEnv env, int code, const char* text);
// The failure of a decoder whose allocation found the heap exhausted:
// AsnOutOfMemoryText and AsnOutOfMemoryCode.
[[noreturn]] void AsnDecodeOutOfMemory(DecodeEnv env);
extern const char* const AsnOutOfMemoryText;
// Writes `text` as a line and returns.
void AsnWarn(const char* text);

// Reads one tag of at most three octets; a third octet with its top bit set
// announces a longer tag, which no message of the protocol has and which is
// refused.
ZOL_ALWAYS_INLINE AsnTag BDecTag(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
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
                AsnDecodeFail(env, AsnTagOverflowCode, "BDecTag: ERROR - tag value overflow");
        }
    }
    if (b.ReadError())
        AsnDecodeFail(env, AsnTagPastEndCode, "BDecTag: ERROR - decoded past the end of data");
    return tag;
}

// Reads one length: the definite value, or IndefiniteLen. Long forms with
// leading zeros are taken; a count of five or more octets is refused.
ZOL_ALWAYS_INLINE AsnLen BDecLen(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnLen c = b.GetByte();
    if (b.ReadError())
        AsnDecodeFail(env, AsnLenPastEndCode, "BDecLen: decoded past end of data");
    ++bytesDecoded;
    if (c < 0x80u)
        return c;
    if (c == 0x80u)
        return IndefiniteLen;
    c &= 0x7Fu;
    if (c >= 5)
        AsnDecodeFail(env, AsnLenOverflowCode, "BDecLen: ERROR - length overflow");
    bytesDecoded += c;
    AsnLen len = 0;
    while (c--)
        len = (len << 8) | b.GetByte();
    if (b.ReadError())
        AsnDecodeFail(env, AsnLongLenPastEndCode, "BDecLen: decoded past end of data");
    return len;
}

// Reads an expected end-of-contents marker, strictly.
inline void BDecEoc(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    if (b.GetByte() != 0 || b.GetByte() != 0 || b.ReadError())
        AsnDecodeFail(env, AsnEocCode, "BDecEoc: ERROR - non zero byte in EOC or end of data reached");
    bytesDecoded += 2;
}

// The second octet of an end-of-contents whose first octet was read as a
// tag of 0. Lenient: a bad octet only warns.
inline void BDecEocSecondOctet(AsnBuf& b, AsnLen& bytesDecoded) {
    if (b.GetByte() != 0 || b.ReadError())
        AsnWarn("Warning - second octet of EOC not zero");
    ++bytesDecoded;
}

// The number of identifier octets of `tag`: 1, 2 or 3. Tags are constants
// at every call, so this folds away.
ZOL_ALWAYS_INLINE AsnLen BTagLen(AsnTag tag) {
    if ((tag & 0x1F000000u) != 0x1F000000u)
        return 1;
    return (tag & 0x00800000u) ? 3 : 2;
}

// Stores the identifier octets of `tag` below `p`, last octet first, and
// returns the new low end. The caller has made sure that they fit.
ZOL_ALWAYS_INLINE char* BPutTagUnchecked(char* p, AsnTag tag) {
    AsnLen n = BTagLen(tag);
    if (n == 3)
        *--p = static_cast<char>(tag >> 8);
    if (n >= 2)
        *--p = static_cast<char>(tag >> 16);
    *--p = static_cast<char>(tag >> 24);
    return p;
}

// Stores `len` as a definite length in its shortest form below `p`, low
// octet first; returns the new low end. The caller has made room for five.
ZOL_ALWAYS_INLINE char* BPutLenUnchecked(char* p, AsnLen len) {
    if (len < 0x80u) {
        *--p = static_cast<char>(len);
        return p;
    }
    char* top = p;
    for (AsnLen v = len; v; v >>= 8)
        *--p = static_cast<char>(v);
    --p;
    *p = static_cast<char>(0x80u | AsnLen(top - p - 1));
    return p;
}

// Stores the low two or four octets of `v`, high octet first, ending at
// `p`. The callers store more octets than the content has only where their
// own length and identifier octets then overwrite the extra ones.
ZOL_ALWAYS_INLINE void BPut16Unchecked(char* p, uint32_t v) {
    p[-2] = static_cast<char>(v >> 8);
    p[-1] = static_cast<char>(v);
}
ZOL_ALWAYS_INLINE void BPut32Unchecked(char* p, uint32_t v) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    v = __builtin_bswap32(v);
#endif
    std::memcpy(p - 4, &v, 4);
}
ZOL_ALWAYS_INLINE void BPut64Unchecked(char* p, uint64_t v) {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    v = __builtin_bswap64(v);
#endif
    std::memcpy(p - 8, &v, 8);
}

// The byte-by-byte forms, for a block too full for the stores above: they
// write what fits and set the write flag, as PutByteRvs does.
AsnLen BEncLenSlow(AsnBuf& b, AsnLen len);
AsnLen BEncTagSlow(AsnBuf& b, AsnTag tag);

// Writes `len` backwards as a definite length in its shortest form and
// returns the number of octets written (1 to 5).
ZOL_ALWAYS_INLINE AsnLen BEncLen(AsnBuf& b, AsnLen len) {
    if (__builtin_expect(b.HasRoom(5), 1)) {
        char* p = BPutLenUnchecked(b.dataBegin, len);
        AsnLen n = AsnLen(b.dataBegin - p);
        b.dataBegin = p;
        return n;
    }
    return BEncLenSlow(b, len);
}

// Writes the identifier octets of `tag` backwards, last octet first, and
// returns their number.
ZOL_ALWAYS_INLINE AsnLen BEncTag(AsnBuf& b, AsnTag tag) {
    if (__builtin_expect(b.HasRoom(3), 1)) {
        b.dataBegin = BPutTagUnchecked(b.dataBegin, tag);
        return BTagLen(tag);
    }
    return BEncTagSlow(b, tag);
}

// Length and identifier octets in front of `contentLen` octets of content
// already written; returns the size of the whole element.
ZOL_ALWAYS_INLINE AsnLen BEncLenTag(AsnBuf& b, AsnLen contentLen, AsnTag tag) {
    if (__builtin_expect(b.HasRoom(8), 1)) {
        char* top = b.dataBegin;
        char* p = BPutTagUnchecked(BPutLenUnchecked(top, contentLen), tag);
        b.dataBegin = p;
        return contentLen + AsnLen(top - p);
    }
    AsnLen len = contentLen + BEncLenSlow(b, contentLen);
    return len + BEncTagSlow(b, tag);
}

// The same for integers, enumerations, booleans and reals, whose content
// is always shorter than 128 octets: the length is one raw octet.
ZOL_ALWAYS_INLINE AsnLen BEncShortLenTag(AsnBuf& b, AsnLen contentLen, AsnTag tag) {
    if (__builtin_expect(b.HasRoom(4), 1)) {
        char* p = b.dataBegin;
        *--p = static_cast<char>(contentLen);
        b.dataBegin = BPutTagUnchecked(p, tag);
        return contentLen + 1 + BTagLen(tag);
    }
    b.PutByteRvs(static_cast<unsigned char>(contentLen));
    return contentLen + 1 + BEncTagSlow(b, tag);
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

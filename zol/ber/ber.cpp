#include "zol/ber/ber.h"

#include <cstdio>

void AsnDecodeFail(DecodeEnv env, int code, const char* text) {
    std::fputs(text, stderr);
    std::fputc('\n', stderr);
    std::longjmp(env, code);
}

const char* const AsnOutOfMemoryText = "ERROR - out of memory while decoding";

void AsnDecodeOutOfMemory(DecodeEnv env) { AsnDecodeFail(env, AsnOutOfMemoryCode, AsnOutOfMemoryText); }

void AsnWarn(const char* text) {
    std::fputs(text, stderr);
    std::fputc('\n', stderr);
}

AsnLen BEncLenSlow(AsnBuf& b, AsnLen len) {
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

AsnLen BEncTagSlow(AsnBuf& b, AsnTag tag) {
    AsnLen n = BTagLen(tag);
    if (n == 3)
        b.PutByteRvs(static_cast<unsigned char>(tag >> 8));
    if (n >= 2)
        b.PutByteRvs(static_cast<unsigned char>(tag >> 16));
    b.PutByteRvs(static_cast<unsigned char>(tag >> 24));
    return n;
}

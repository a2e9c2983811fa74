#include "zol/ber/ber.h"

#include <cstdio>

#include "zol/ber/asn_thread.h"

namespace {

__thread AsnLineSink lineSink ZOL_INITIAL_EXEC = {nullptr, nullptr};

}  // namespace

AsnLineSink AsnSetLineSink(AsnLineSink sink) {
    AsnLineSink replaced = lineSink;
    lineSink = sink;
    return replaced;
}

void AsnWriteLine(const char* text) {
    if (lineSink.write)
        return lineSink.write(text, lineSink.context);
    std::fputs(text, stderr);
    std::fputc('\n', stderr);
}

void AsnDecodeFail(DecodeEnv env, int code, const char* text) {
    AsnWriteLine(text);
    std::longjmp(env, code);
}

const char* const AsnOutOfMemoryText = "ERROR - out of memory while decoding";

void AsnDecodeOutOfMemory(DecodeEnv env) { AsnDecodeFail(env, AsnOutOfMemoryCode, AsnOutOfMemoryText); }

void AsnWarn(const char* text) { AsnWriteLine(text); }

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

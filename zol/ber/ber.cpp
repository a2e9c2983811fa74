#include "zol/ber/ber.h"

#include <cstdio>

void AsnDecodeFail(DecodeEnv env, int code, const char* text) {
    std::fputs(text, stderr);
    std::fputc('\n', stderr);
    std::longjmp(env, code);
}

void AsnWarn(const char* text) {
    std::fputs(text, stderr);
    std::fputc('\n', stderr);
}

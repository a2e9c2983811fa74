#include "zol/ber/asn_buffer.h"

#include <cstdio>

#include "zol/ber/ber.h"
#include "zol/meta/asn_reflect.h"

namespace Zol {

AsnBuf AsnBuffer::asnBuf;
char AsnBuffer::data[AsnBuffer::BUFSIZE];

char* AsnBuffer::Encode(char* block, size_t size, const AsnType& value, size_t& length) {
    AsnBuf b;
    b.Init(block, size);
    b.ResetInWriteRvsMode();
    length = value.BEnc(b);
    if (b.WriteError())
        return nullptr;
    if (length > b.DataLen())
        length = b.DataLen();
    return b.DataPtr();
}

char* AsnBuffer::Encode(const AsnType& value, size_t& length) {
    return Encode(data, BUFSIZE, value, length);
}

int AsnBuffer::Decode(const char* bytes, size_t len, AsnType& value) {
    asnBuf.InstallData(const_cast<char*>(bytes), len);
    DecodeEnv env;
    int code = setjmp(env);
    if (code == 0) {
        AsnLen decoded = 0;
        value.BDec(asnBuf, decoded, env);
        return asnBuf.ReadError() ? 0 : 1;
    }
    // The name is that of the outermost value; a universal class's kind
    // stands in for the name it lacks ("INTEGER").
    std::snprintf(data, BUFSIZE, "Decode for %s failed with code:(%d)\n", AsnTypeName(value._getdesc()), code);
    Error(data);
    return 0;
}

void AsnBuffer::Error(const char* text) { AsnWriteLine(text); }

}  // namespace Zol
